// Row conversion and storage: the last stage of a parse. Splits a record
// (HxCSVFields.h) unless its reader already knows its fields, hands each
// bound field to the number conversion (HxCSVNumbers.h) and stores the
// values in the targets that Bindings.cpp sized.
#include "HxCSV.h"

#include "HxCSVNumbers.h"
#include "Parse.h"
#include "Utf8.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

// A number, and after it blanks and tabs at most.
bool wholeNumber(const char* text, int length, size_t used)
{
    if (used == 0)
        return false;
    for (int i = static_cast<int>(used); i < length; ++i)
        if (text[i] != ' ' && text[i] != '\t')
            return false;
    return true;
}

bool startsWith(const char* record, int length, const McString& marker)
{
    return !marker.isEmpty() && length >= marker.length() && record[0] == marker[0]
           && std::memcmp(record, marker.getString(), static_cast<size_t>(marker.length())) == 0;
}

template <class T>
T* rowOf(McDArray<T>* array, int rowIndex)
{
    if (!array || rowIndex < 0 || rowIndex >= array->size())
        return nullptr;
    return &(*array)[rowIndex];
}

template <class T>
void storeComponent(McDArray<McVec3<T>>* array, int rowIndex, int component, T value)
{
    McVec3<T>* row = rowOf(array, rowIndex);
    if (row && component >= 0 && component < 3)
        (*row)[component] = value;
}

template <class T>
void store(McDArray<T>* array, int rowIndex, const T& value)
{
    if (T* row = rowOf(array, rowIndex))
        *row = value;
}

// A float column's row, in an array or in the caller's own storage.
float* floatRow(const HxCSV::CSVDataColumn& column, int rowIndex, int storageRows)
{
    if (!column.floatRows)
        return rowOf(column.floatData, rowIndex);
    if (!column.floatRows->first || rowIndex < 0 || rowIndex >= storageRows)
        return nullptr;
    return column.floatRows->first + static_cast<ptrdiff_t>(rowIndex) * column.floatRows->stride;
}

} // namespace

QStringList HxCSV::splitFields(const QString& record)
{
    const QByteArray bytes = record.toLatin1();
    QStringList parts;
    for (const HxCSVField& field : d->splitRecord(bytes.constData(), bytes.size()))
        parts.append(QString::fromLatin1(bytes.constData() + field.begin, field.length));
    return parts;
}

int HxCSV::processLine(QString* record, QString* commentMarker, QString* verticalDelimiter,
                       int rowIndex, bool ignoreColumnCount)
{
    if (commentMarker && !commentMarker->isEmpty() && record->startsWith(*commentMarker))
        return -2;
    if (verticalDelimiter && !verticalDelimiter->isEmpty() && record->startsWith(*verticalDelimiter)) {
        verticalDelimiterRows.append(rowIndex); // the index of the next data row
        return -2;
    }
    const QByteArray bytes = record->toLatin1();
    return d->storeRow(bytes.constData(), bytes.size(), rowIndex, ignoreColumnCount, false, d->lastBoundColumnIndex());
}

namespace hxcsv {

const std::vector<HxCSVField>& Parse::splitRecord(const char* record, int length)
{
    // The delimiter is a public field: look at it for every record.
    if (!splitter || !splitter->splitsAt(*csv.columnDelimiter))
        splitter.reset(new HxCSVFieldSplitter(csv.columnDelimiter->getString()));
    const bool dropped = splitter->split(record, length, fields);
    takeNewFields();
    fieldsDroppedEmpty = dropped;
    return fields;
}

void Parse::takeNewFields()
{
    ++splitNumber;
    shortDecimalFields = 0;
    fieldsDroppedEmpty = false;
    if (fieldNumbers.size() < fields.size())
        fieldNumbers.resize(fields.size());
}

template <class T>
T Parse::fieldValue(const char* record, size_t fieldIndex, bool& ok)
{
    const HxCSVField& field = fields[fieldIndex];
    const char* text = record + field.begin;
    const size_t length = static_cast<size_t>(field.length);
    // Too short to overflow either type: the narrowing is all toFloat adds.
    if (fieldIndex < 64 && (shortDecimalFields >> fieldIndex & 1)) {
        ok = true;
        return static_cast<T>(HxCSVNumbers::paddedShortDecimalToDouble(text, length));
    }
    Converted<T>& converted = std::get<Converted<T>>(fieldNumbers[fieldIndex]);
    if (converted.split != splitNumber) {
        if constexpr (std::is_same<T, float>::value)
            converted.value = HxCSVNumbers::toFloat(text, length, converted.ok);
        else
            converted.value = HxCSVNumbers::toDouble(text, length, converted.ok);
        converted.split = splitNumber;
    }
    ok = converted.ok;
    return converted.value;
}

// A field the record lacks is left for the row conversion to report.
bool Parse::numbersConvert(const char* record)
{
    const long long count = static_cast<long long>(fields.size());
    for (const HxCSV::CSVDataColumn& column : csv.columns) {
        if (column.storageKind != HxCSV::Float && column.storageKind != HxCSV::Double)
            continue;
        if (column.columnIndex < 0 || column.columnIndex >= count)
            continue;
        const size_t index = static_cast<size_t>(column.columnIndex);
        const HxCSVField& field = fields[index];
        // The common case is known good without converting; a value that
        // had to be tried is kept for the row while reading.
        if ((index < 64 && (shortDecimalFields >> index & 1))
            || (syntax.counting && HxCSVNumbers::isShortDecimal(record + field.begin, static_cast<size_t>(field.length))))
            continue;
        bool ok = false;
        if (column.storageKind == HxCSV::Float)
            fieldValue<float>(record, index, ok);
        else
            fieldValue<double>(record, index, ok);
        if (!ok)
            return false;
    }
    return true;
}

// A value that did not convert is stored as 0 (Qt gives ±inf on overflow).
template <class T>
T Parse::storedValue(const char* record, size_t fieldIndex, bool& ok)
{
    const T value = fieldValue<T>(record, fieldIndex, ok);
    return ok ? value : T(0);
}

// As processLine, without a QString.
int Parse::processRecord(const char* record, int length, int rowIndex, bool ignoreColumnCount)
{
    if (startsWith(record, length, *csv.commentMarker))
        return -2;
    if (startsWith(record, length, *csv.verticalDelimiter)) {
        csv.verticalDelimiterRows.append(rowIndex);
        return -2;
    }
    return storeRow(record, length, rowIndex, ignoreColumnCount, fieldsOfRecordRead, syntax.lastIndex);
}

int Parse::storeRow(const char* record, int length, int rowIndex, bool ignoreColumnCount, bool split,
                    long long lastIndex)
{
    if (!split)
        splitRecord(record, length);
    if (fieldsDroppedEmpty && noting)
        noteCollapsed(recordStart);
    if (!ignoreColumnCount && static_cast<long long>(fields.size()) < lastIndex + 1)
        fail(CSVException::ColumnCount, "Unexpected number of columns (line %d)", rowIndex);
    // Once per row: storing a field cannot change the bindings.
    const HxCSV::CSVDataColumn* const columns = csv.columns.dataPtr();
    const int columnCount = csv.columns.size();
    for (int position = 0; position < columnCount; ++position) {
        const HxCSV::CSVDataColumn& column = columns[position];
        if (column.columnIndex < 0)
            continue;
        storeField(column, record, pickField(position, column.columnIndex, rowIndex, ignoreColumnCount), rowIndex);
    }
    if (length == HxCSV::lineBufferSize - 1)
        noteCutText(record);
    return 1;
}

bool Parse::storeShortDecimalRow(const char* record, const HxCSVField* recordFields, size_t count,
                                 uint64_t shortDecimals, int rowIndex, bool ignoreColumnCount)
{
    if (!syntax.shortDecimalTargets)
        return false;
    // Once per row: the conversions between cannot change the bindings.
    const HxCSV::CSVDataColumn* const columns = csv.columns.dataPtr();
    const int columnCount = csv.columns.size();
    const auto fieldOf = [&](int position) {
        return (ignoreColumnCount && count <= static_cast<size_t>(position))
                   ? 0
                   : static_cast<size_t>(columns[position].columnIndex);
    };
    for (int position = 0; position < columnCount; ++position) {
        const size_t index = fieldOf(position);
        if (columns[position].columnIndex >= 0 && (index >= 64 || !(shortDecimals >> index & 1)))
            return false;
    }
    for (int position = 0; position < columnCount; ++position) {
        const HxCSV::CSVDataColumn& column = columns[position];
        if (column.columnIndex < 0)
            continue;
        const HxCSVField& field = recordFields[fieldOf(position)];
        const double value =
            HxCSVNumbers::paddedShortDecimalToDouble(record + field.begin, static_cast<size_t>(field.length));
        if (column.storageKind == HxCSV::Double)
            store(column.doubleData, rowIndex, value);
        else if (float* row = floatRow(column, rowIndex, storageRows))
            *row = static_cast<float>(value);
    }
    return true;
}

// With ignoreColumnCount a short record feeds its first field to the
// bindings past its end. A field that still does not exist is reported as
// a column count error rather than read.
size_t Parse::pickField(int position, int columnIndex, int rowIndex, bool ignoreColumnCount) const
{
    const long long count = static_cast<long long>(fields.size());
    const int index = (ignoreColumnCount && count <= position) ? 0 : columnIndex;
    if (index >= count)
        fail(CSVException::ColumnCount, "Unexpected number of columns (line %d)", rowIndex);
    return static_cast<size_t>(index);
}

template <class T>
T* Parse::rawRow(const HxCSV::CSVDataColumn& column, int rowIndex) const
{
    if (!column.rawData || !*column.rawData || rowIndex < 0 || rowIndex >= storageRows)
        return nullptr;
    return static_cast<T*>(*column.rawData) + rowIndex;
}

void Parse::storeTextNumber(const HxCSV::CSVDataColumn& column, const char* record, size_t fieldIndex, int rowIndex)
{
    if (syntax.strtodReadsShortDecimals && fieldIndex < 64 && (shortDecimalFields >> fieldIndex & 1)) {
        // A plain decimal: wholly a number, and no quote to take off.
        const HxCSVField& field = fields[fieldIndex];
        const double value =
            HxCSVNumbers::paddedShortDecimalToDouble(record + field.begin, static_cast<size_t>(field.length));
        if (float* row = floatRow(column, rowIndex, storageRows))
            *row = static_cast<float>(value);
        return;
    }
    const HxCSVField text = textOf(record, fields[fieldIndex]);
    const char* begin = record + text.begin;
    size_t used = 0;
    const double value = HxCSVNumbers::strtod(begin, static_cast<size_t>(text.length), &used);
    if (float* row = floatRow(column, rowIndex, storageRows))
        *row = static_cast<float>(value);
    HxCSV::TextNumberMisses* misses = column.textNumberMisses;
    if (!misses || wholeNumber(begin, text.length, used))
        return;
    if (misses->count++ == 0) {
        misses->firstRow = rowIndex;
        misses->firstText = McString(begin, text.length);
    }
}

// A shared text is looked at for UTF-8 when it is first met.
void Parse::storeText(const HxCSV::CSVDataColumn& column, const char* record, HxCSVField text, int rowIndex)
{
    const char* begin = record + text.begin;
    const size_t length = static_cast<size_t>(text.length);
    if (!column.textRows) {
        store(column.stringData, rowIndex, McString(begin, text.length));
        if (holdsMultiByteUtf8(begin, length))
            noteUtf8Text(begin, text.length);
        return;
    }
    if (!column.textRows->first || rowIndex < 0 || rowIndex >= storageRows)
        return;
    // Enough for the classes of a point cloud; texts past it are all kept.
    const size_t sharedLimit = 4096;
    std::unordered_map<std::string, SharedText>& shared = sharedTexts[column.textRows];
    textKey.assign(begin, length);
    const auto found = shared.find(textKey);
    QString& row = column.textRows->first[rowIndex];
    if (found != shared.end()) {
        if (found->second.utf8)
            noteUtf8Text(begin, text.length);
        row = found->second.text;
        return;
    }
    row = QString::fromLatin1(textKey.data(), text.length);
    const bool utf8 = holdsMultiByteUtf8(begin, length);
    if (utf8)
        noteUtf8Text(begin, text.length);
    if (shared.size() < sharedLimit)
        shared.emplace(textKey, SharedText{row, utf8});
}

// The value is stored before its conversion is judged, so a failed row keeps
// 0 where the bad value was.
void Parse::storeField(const HxCSV::CSVDataColumn& column, const char* record, size_t fieldIndex, int rowIndex)
{
    bool ok = true;
    switch (column.storageKind) {
    case HxCSV::FloatVectorComponent:
        storeComponent(column.vec3fData, rowIndex, column.component, storedValue<float>(record, fieldIndex, ok));
        break;
    case HxCSV::DoubleVectorComponent:
        // Double vectors go through single precision; files rely on it.
        storeComponent(column.vec3dData, rowIndex, column.component,
                       static_cast<double>(static_cast<float>(storedValue<double>(record, fieldIndex, ok))));
        break;
    case HxCSV::Float: {
        const float value = storedValue<float>(record, fieldIndex, ok);
        if (float* row = floatRow(column, rowIndex, storageRows))
            *row = value;
        break;
    }
    case HxCSV::Double:
        store(column.doubleData, rowIndex, storedValue<double>(record, fieldIndex, ok));
        break;
    case HxCSV::Text:
        storeText(column, record, textOf(record, fields[fieldIndex]), rowIndex);
        break;
    case HxCSV::TextNumber:
        storeTextNumber(column, record, fieldIndex, rowIndex);
        break;
    case HxCSV::RawBuffer:
        if (column.primType.getType() == McPrimType::MC_FLOAT) {
            const float value = storedValue<float>(record, fieldIndex, ok);
            if (float* row = rawRow<float>(column, rowIndex))
                *row = value;
        } else if (column.primType.getType() == McPrimType::MC_INT32) {
            const HxCSVField& field = fields[fieldIndex];
            const int32_t value = HxCSVNumbers::toInt(record + field.begin, static_cast<size_t>(field.length), ok);
            if (int32_t* row = rawRow<int32_t>(column, rowIndex))
                *row = value;
        }
        break;
    }
    if (!ok)
        fail(CSVException::BadValue,
             "Could not convert the column value to a number (line %d, column value %.*s)", rowIndex,
             fields[fieldIndex].length, record + fields[fieldIndex].begin);
}

} // namespace hxcsv
