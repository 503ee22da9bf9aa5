// HxCSV's record reader. A record is made of the number of fields the bound
// columns need, not of one physical line: a line end inside a record counts
// as a delimiter, so records may wrap over lines or share one.
#include "HxCSV.h"

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
