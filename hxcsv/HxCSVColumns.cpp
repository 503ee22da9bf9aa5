// HxCSV column bindings, their storage, and the splitting and conversion of
// one record into a row.
#include "HxCSV.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

// Qt gives ±inf on overflow and the nearest value on underflow together with
// a failed flag; a value that did not convert is stored as 0.
float toFloat(const QString& field, bool& ok)
{
    const float value = field.toFloat(&ok);
    return ok ? value : 0.0f;
}

double toDouble(const QString& field, bool& ok)
{
    const double value = field.toDouble(&ok);
    return ok ? value : 0.0;
}

// Only text columns remove the quotes, and only when the field starts with
// one; the last character goes whatever it is.
McString textValue(const QString& field)
{
    if (field.startsWith(QLatin1Char('"')))
        return McString::fromQString(field.mid(1, field.size() - 2));
    return McString::fromQString(field);
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

template <class T>
void resizeZeroed(McDArray<T>* array, int rows)
{
    if (!array)
        return;
    const int oldSize = array->size();
    array->resize(rows);
    for (int i = oldSize; i < rows; ++i)
        (*array)[i] = 0;
}

void resizeRaw(const HxCSV::CSVDataColumn& column, int rows)
{
    if (!column.rawData)
        return; // a binding without a buffer only checks its column
    const size_t bytes = static_cast<size_t>(column.primType.size()) * static_cast<size_t>(rows);
    // Never ask for zero bytes: realloc(p, 0) would free the caller's buffer.
    const size_t asked = std::max<size_t>(bytes, 1);
    void* buffer = *column.rawData ? std::realloc(*column.rawData, asked) : std::malloc(asked);
    if (!buffer)
        throw std::bad_alloc();
    *column.rawData = buffer;
    std::memset(buffer, 0, bytes);
}

} // namespace

// The message is sized to fit, so a long field value is shown whole.
void HxCSV::fail(CSVException::Error code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    std::vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    throw CSVException(text.c_str(), code);
}

void HxCSV::addColumn(int columnIndex, McPrimType type)
{
    CSVDataColumn column;
    column.columnIndex = columnIndex;
    column.storageKind = RawBuffer;
    column.primType = type;
    columns.append(column);
}

void HxCSV::addColumn(int columnIndex, McPrimType type, void** buffer)
{
    addColumn(columnIndex, type);
    columns.last().rawData = buffer;
}

void HxCSV::addColumn(int columnIndex, McDArray<double>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Double;
    columns.last().doubleData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<float>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Float;
    columns.last().floatData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<McString>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Text;
    columns.last().stringData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<McVec3<double>>* array, int component)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = DoubleVectorComponent;
    columns.last().vec3dData = array;
    columns.last().component = component;
}

void HxCSV::addColumn(int columnIndex, McDArray<McVec3<float>>* array, int component)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = FloatVectorComponent;
    columns.last().vec3fData = array;
    columns.last().component = component;
}

void HxCSV::resizeDataStorage(int rows)
{
    rows = std::max(rows, 0);
    storageRows = rows;
    for (const CSVDataColumn& column : columns) {
        switch (column.storageKind) {
        case FloatVectorComponent:
            if (column.vec3fData)
                column.vec3fData->resize(rows);
            break;
        case DoubleVectorComponent:
            if (column.vec3dData)
                column.vec3dData->resize(rows);
            break;
        case Float:
            resizeZeroed(column.floatData, rows);
            break;
        case Double:
            resizeZeroed(column.doubleData, rows);
            break;
        case Text:
            if (column.stringData)
                column.stringData->resize(rows);
            break;
        case RawBuffer:
            resizeRaw(column, rows);
            break;
        }
    }
}

// At least 0, so a record always needs one field even with nothing bound.
long long HxCSV::lastBoundColumnIndex() const
{
    long long last = 0;
    for (const CSVDataColumn& column : columns)
        last = std::max<long long>(last, column.columnIndex);
    return last;
}

const QRegExp& HxCSV::fieldPattern()
{
    const QString delimiter = columnDelimiter->toQString();
    if (!patternBuilt || delimiter != patternDelimiter) {
        // "\s" is taken as the regular-expression class for white space.
        const QString escaped = delimiter == QLatin1String("\\s") ? delimiter : QRegExp::escape(delimiter);
        // A run of delimiters, followed by an even number of quotes up to the
        // end of the record: delimiters inside quotes do not split.
        fieldPatternCache = QRegExp(escaped + QLatin1String("+(?=(?:[^\"]*\"[^\"]*\")*(?![^\"]*\"))"),
                                    Qt::CaseSensitive, QRegExp::RegExp);
        patternDelimiter = delimiter;
        patternBuilt = true;
    }
    return fieldPatternCache;
}

QStringList HxCSV::splitFields(const QString& record)
{
    return record.split(fieldPattern(), Qt::SkipEmptyParts);
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
    const QStringList fields = splitFields(*record);
    if (!ignoreColumnCount && fields.size() < lastBoundColumnIndex() + 1)
        fail(CSVException::ColumnCount, "Unexpected number of columns (line %d)", rowIndex);
    for (int position = 0; position < columns.size(); ++position) {
        const CSVDataColumn& column = columns[position];
        if (column.columnIndex < 0)
            continue;
        storeField(column, pickField(fields, position, rowIndex, ignoreColumnCount), rowIndex);
    }
    return 1;
}

// With ignoreColumnCount a short record feeds its first field to the
// bindings past its end. A field that still does not exist is reported as
// a column count error rather than read.
const QString& HxCSV::pickField(const QStringList& fields, int position, int rowIndex,
                                bool ignoreColumnCount) const
{
    const int columnIndex = columns[position].columnIndex;
    const int index = (ignoreColumnCount && fields.size() <= position) ? 0 : columnIndex;
    if (index >= fields.size())
        fail(CSVException::ColumnCount, "Unexpected number of columns (line %d)", rowIndex);
    return fields[index];
}

template <class T>
T* HxCSV::rawRow(const CSVDataColumn& column, int rowIndex) const
{
    if (!column.rawData || !*column.rawData || rowIndex < 0 || rowIndex >= storageRows)
        return nullptr;
    return static_cast<T*>(*column.rawData) + rowIndex;
}

// The value is stored before its conversion is judged, so a failed row keeps
// 0 where the bad value was.
void HxCSV::storeField(const CSVDataColumn& column, const QString& field, int rowIndex)
{
    bool ok = true;
    switch (column.storageKind) {
    case FloatVectorComponent:
        storeComponent(column.vec3fData, rowIndex, column.component, toFloat(field, ok));
        break;
    case DoubleVectorComponent:
        // Double vectors go through single precision; files rely on it.
        storeComponent(column.vec3dData, rowIndex, column.component,
                       static_cast<double>(static_cast<float>(toDouble(field, ok))));
        break;
    case Float:
        store(column.floatData, rowIndex, toFloat(field, ok));
        break;
    case Double:
        store(column.doubleData, rowIndex, toDouble(field, ok));
        break;
    case Text:
        store(column.stringData, rowIndex, textValue(field));
        break;
    case RawBuffer:
        if (column.primType.getType() == McPrimType::MC_FLOAT) {
            const float value = toFloat(field, ok);
            if (float* row = rawRow<float>(column, rowIndex))
                *row = value;
        } else if (column.primType.getType() == McPrimType::MC_INT32) {
            const int32_t value = field.toInt(&ok, 10);
            if (int32_t* row = rawRow<int32_t>(column, rowIndex))
                *row = value;
        }
        break;
    }
    if (!ok)
        fail(CSVException::BadValue,
             "Could not convert the column value to a number (line %d, column value %s)", rowIndex,
             field.toLatin1().constData());
}
