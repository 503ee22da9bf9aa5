// Reference parser: hxcsv's HxCSV as first written (see RefHxCSV.h).
#include "RefHxCSV.h"
#include <cstring>
#include <memory>
#include <string>
#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <new>

namespace ref {
// HxCSV settings, the header line and the two-pass parse driver.


namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// One physical line without its line end; 0 at end of file. A line longer
// than size - 1 bytes comes back in pieces.
int fgetline(char* buffer, int size, FILE* file)
{
    if (!std::fgets(buffer, size, file))
        return 0;
    size_t n = std::strlen(buffer);
    while (n > 0 && (buffer[n - 1] == '\r' || buffer[n - 1] == '\n'))
        buffer[--n] = '\0';
    return 1;
}

void skipLines(FILE* file, long long n)
{
    char line[HxCSV::lineBufferSize];
    for (long long i = 0; i < n; ++i)
        if (!fgetline(line, sizeof line, file))
            return;
}

// Case-insensitive prefix test over the whole of a non-empty marker.
bool startsWithNoCase(const char* line, const McString& marker)
{
    return !marker.isEmpty() && strncasecmp(line, marker.getString(), marker.length()) == 0;
}

// Blanks go at both ends; the trailing trim never looks at the first
// character, so a name of blanks only keeps one.
McString trimBlanks(const McString& name)
{
    const char* text = name.getString();
    int end = name.length();
    while (end > 1 && text[end - 1] == ' ')
        --end;
    int begin = 0;
    while (begin < end - 1 && text[begin] == ' ')
        ++begin;
    return McString(text + begin, end - begin);
}

// Angle brackets (units such as "<m>") become blanks and quotes go away.
std::string cleanHeaderLine(const char* line)
{
    std::string text;
    for (const char* p = line; *p; ++p) {
        if (*p == '"')
            continue;
        text += (*p == '<' || *p == '>') ? ' ' : *p;
    }
    return text;
}

} // namespace

FILE* HxCSV::openFile(const char* name)
{
    FILE* file = std::fopen(name, "rb");
    if (!file)
        fail(CSVException::OpenFailed, "Could not open the file (%s)", name);
    return file;
}

int HxCSV::parse(bool ignoreColumnCount, bool plainLines)
{
    verticalDelimiterRows.clear();
    const char* name = fileName ? fileName->getString() : "";
    FilePtr file(openFile(name));
    if (firstRowContainsColumnNames)
        readHeader(file.get());
    skipLines(file.get(), dataStartLineNum - 1LL);
    const int count = plainLines ? countPlainLines(file.get()) : countRecords(file.get());

    file.reset();
    file.reset(openFile(name));
    skipLines(file.get(), dataStartLineNum - 1LL);
    resizeDataStorage(count);
    readRows(file.get(), count, ignoreColumnCount, plainLines);
    return 1;
}

// The header is split at the delimiter's first character, empty names
// included, even where data rows are split differently.
void HxCSV::readHeader(FILE* file)
{
    char line[lineBufferSize];
    columnNames.clear();
    if (fgetline(line, sizeof line, file)) {
        McString(cleanHeaderLine(line).c_str()).explode((*columnDelimiter)[0], columnNames);
        for (McString& name : columnNames)
            name = trimBlanks(name);
    }
    std::rewind(file);
}

// Both passes start from a fresh reader state so that they see the same
// records; a re-join made while counting is made again while reading.
void HxCSV::resetRecordState()
{
    joinedRecordCount = 0;
    recordContinued = false;
}

int HxCSV::countRecords(FILE* file)
{
    resetRecordState();
    char record[lineBufferSize];
    int count = 0;
    while (csvGetLine(record, sizeof record, file, count) != -1) {
    }
    return count;
}

// Blank lines count here; comment and delimiter lines are recognised by the
// whole marker, ignoring case.
int HxCSV::countPlainLines(FILE* file)
{
    char line[lineBufferSize];
    int count = 0;
    while (std::fgets(line, sizeof line, file))
        if (!startsWithNoCase(line, *commentMarker) && !startsWithNoCase(line, *verticalDelimiter))
            ++count;
    return count;
}

bool HxCSV::readOneRecord(FILE* file, char* buffer, bool plainLines, int& recordsRead)
{
    if (plainLines)
        return fgetline(buffer, lineBufferSize, file) != 0;
    return csvGetLine(buffer, lineBufferSize, file, recordsRead) != -1;
}

// Only the record's first character is compared with the marker's here.
bool HxCSV::startsComment(const char* record) const
{
    return !commentMarker->isEmpty() && record[0] == (*commentMarker)[0];
}

void HxCSV::readRows(FILE* file, int count, bool ignoreColumnCount, bool plainLines)
{
    resetRecordState();
    QString marker = commentMarker->toQString();
    QString breakText = verticalDelimiter->toQString();
    char buffer[lineBufferSize];
    int recordsRead = 0;
    long long lineNumber = dataStartLineNum - 1LL;
    for (int row = 0; row < count;) {
        ++lineNumber;
        std::memset(buffer, 0, sizeof buffer);
        if (!readOneRecord(file, buffer, plainLines, recordsRead))
            HxCSV::fail(CSVException::BadValue, "Unexpected end of file (line %lld)", lineNumber);
        if (startsComment(buffer))
            continue;
        QString record = QString::fromLatin1(buffer);
        if (processLine(&record, &marker, &breakText, row, ignoreColumnCount) != -2)
            ++row;
    }
}
// HxCSV's record reader. A record is made of the number of fields the bound
// columns need, not of one physical line: a line end inside a record counts
// as a delimiter, so records may wrap over lines or share one.

namespace {

int firstCharacter(const McString* text)
{
    return text->isEmpty() ? 0 : static_cast<unsigned char>((*text)[0]);
}

} // namespace

// Reads one record into the caller's buffer; lives for one csvGetLine call.
class HxCSV::RecordReader {
public:
    RecordReader(HxCSV& csv, char* buffer, int size, FILE* file);
    int read(int& recordCount);

private:
    enum class Kind { Data, Comment, Break };
    // Open: the record goes on; Nothing: end of file before any character.
    enum class End { Open, Nothing, FieldCount, BreakCharacter, LineEnd, BufferFull, EndOfFile, Comment };

    End readRecord();
    End startRecord(int c);
    End continueRecord(int c);
    End addDelimiter(int c);
    End fieldCountReached(End how);
    End copyComment(int c);
    End bufferFull(int c);
    bool isDropped(int c) const;
    bool numbersConvert(const QStringList& fields) const;
    void rejoin(const QStringList& fields);
    void discardRestOfLine();
    bool put(char c);
    long long fieldsNeeded() const { return lastIndex + 1 + csv.joinedRecordCount; }

    HxCSV& csv;
    char* buffer;
    const int size;
    FILE* file;
    const int delimiter;   // first character of the column delimiter, 0 for none
    const int breakChar;   // first character of the vertical delimiter
    const int commentChar; // first character of the comment marker
    const long long lastIndex;

    int length = 0;
    long long delimiters = 0;
    bool lineEndPassed = false;
    Kind kind = Kind::Data;
};

HxCSV::RecordReader::RecordReader(HxCSV& csv, char* buffer, int size, FILE* file)
    : csv(csv), buffer(buffer), size(size), file(file),
      delimiter(firstCharacter(csv.columnDelimiter)),
      breakChar(firstCharacter(csv.verticalDelimiter)),
      commentChar(firstCharacter(csv.commentMarker)),
      lastIndex(csv.lastBoundColumnIndex())
{
}

int HxCSV::RecordReader::read(int& recordCount)
{
    for (;;) {
        const End end = readRecord();
        buffer[length] = '\0';
        if (end == End::Nothing)
            return -1;
        if (end == End::FieldCount && !lineEndPassed && !csv.noLineBreaks)
            discardRestOfLine(); // fields beyond the needed ones are ignored
        if (kind == Kind::Break && recordCount == 0)
            continue; // a break before any data starts no block
        if (kind == Kind::Data)
            ++recordCount;
        return 0;
    }
}

HxCSV::RecordReader::End HxCSV::RecordReader::readRecord()
{
    length = 0;
    delimiters = 0;
    lineEndPassed = false;
    kind = Kind::Data;
    for (;;) {
        const int c = std::fgetc(file);
        if (c == EOF)
            return length == 0 ? End::Nothing : End::EndOfFile;
        if (isDropped(c))
            continue;
        const End end = length == 0 ? startRecord(c) : continueRecord(c);
        if (end != End::Open)
            return end;
    }
}

// A NUL byte cannot be held in a record; tabs only matter as delimiters.
bool HxCSV::RecordReader::isDropped(int c) const
{
    return c == '\r' || c == '\0' || (c == '\t' && delimiter != '\t');
}

// Empty lines and leading delimiters make nothing; the first character
// decides whether the record is a comment, a block break or data.
HxCSV::RecordReader::End HxCSV::RecordReader::startRecord(int c)
{
    if (c == '\n' || c == delimiter)
        return End::Open;
    if (c == commentChar)
        return copyComment(c);
    kind = c == breakChar ? Kind::Break : Kind::Data;
    put(static_cast<char>(c)); // an empty buffer always has room
    return End::Open;
}

HxCSV::RecordReader::End HxCSV::RecordReader::continueRecord(int c)
{
    if (c == '\n') {
        lineEndPassed = true;
        const End end = addDelimiter(c);
        // A block break never reaches into the next line.
        return (end == End::Open && kind == Kind::Break) ? End::LineEnd : end;
    }
    if (c == delimiter)
        return addDelimiter(c);
    // Inside a break its own characters are text ("--", "==="); elsewhere the
    // break character ends the record and starts the next one.
    if (c == breakChar && kind != Kind::Break) {
        std::ungetc(c, file);
        delimiters = fieldsNeeded();
        return fieldCountReached(End::BreakCharacter);
    }
    return put(static_cast<char>(c)) ? End::Open : bufferFull(c);
}

// Runs of delimiters count once.
HxCSV::RecordReader::End HxCSV::RecordReader::addDelimiter(int c)
{
    if (buffer[length - 1] == static_cast<char>(delimiter))
        return End::Open;
    // An empty delimiter has no character to store, but still ends a field.
    if (delimiter != 0 && !put(static_cast<char>(delimiter)))
        return bufferFull(c);
    ++delimiters;
    return delimiters == fieldsNeeded() ? fieldCountReached(End::FieldCount) : End::Open;
}

// A data record whose numbers do not convert is re-joined, once per pass:
// its first field goes, the others stay as counted fields, and reading goes
// on until the record has one field more than before. Block breaks are never
// converted.
HxCSV::RecordReader::End HxCSV::RecordReader::fieldCountReached(End how)
{
    if (kind != Kind::Data || csv.recordContinued)
        return how;
    buffer[length] = '\0';
    const QStringList fields = csv.splitFields(QString::fromLatin1(buffer, length));
    if (numbersConvert(fields))
        return how;
    rejoin(fields);
    return End::Open;
}

// Only float and double columns are tried; a field the record lacks is
// left for the row conversion to report.
bool HxCSV::RecordReader::numbersConvert(const QStringList& fields) const
{
    for (const CSVDataColumn& column : csv.columns) {
        if (column.storageKind != Float && column.storageKind != Double)
            continue;
        if (column.columnIndex < 0 || column.columnIndex >= fields.size())
            continue;
        bool ok = false;
        if (column.storageKind == Float)
            fields[column.columnIndex].toFloat(&ok);
        else
            fields[column.columnIndex].toDouble(&ok);
        if (!ok)
            return false;
    }
    return true;
}

void HxCSV::RecordReader::rejoin(const QStringList& fields)
{
    ++csv.joinedRecordCount;
    csv.recordContinued = true;
    length = 0;
    delimiters = 0;
    for (int i = 1; i < fields.size(); ++i) {
        for (char c : fields[i].toLatin1())
            put(c); // never longer than the text it came from
        if (delimiter != 0)
            put(static_cast<char>(delimiter));
        ++delimiters;
    }
    buffer[length] = '\0';
}

// A comment is kept as it stands up to its line feed; what does not fit is
// read and dropped with the rest of the line.
HxCSV::RecordReader::End HxCSV::RecordReader::copyComment(int c)
{
    kind = Kind::Comment;
    put(static_cast<char>(c));
    for (int next = std::fgetc(file); next != EOF; next = std::fgetc(file)) {
        put(static_cast<char>(next));
        if (next == '\n')
            break;
    }
    return End::Comment;
}

// A full buffer ends the record; the character that did not fit starts the
// next one, as a long physical line is read in pieces.
HxCSV::RecordReader::End HxCSV::RecordReader::bufferFull(int c)
{
    std::ungetc(c, file);
    return End::BufferFull;
}

void HxCSV::RecordReader::discardRestOfLine()
{
    for (int c = std::fgetc(file); c != EOF && c != '\n'; c = std::fgetc(file)) {
    }
}

bool HxCSV::RecordReader::put(char c)
{
    if (length >= size - 1)
        return false;
    buffer[length++] = c;
    return true;
}

int HxCSV::csvGetLine(char* buffer, int size, FILE* file, int& recordCount)
{
    if (!buffer || !file || size < 2)
        return -1; // no room for a single character
    return RecordReader(*this, buffer, size, file).read(recordCount);
}
// HxCSV column bindings, their storage, and the splitting and conversion of
// one record into a row.


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

void HxCSV::resizeDataStorage(int rows)
{
    ::HxCSV::resizeDataStorage(rows);
    storageRows = std::max(rows, 0);
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

} // namespace ref
