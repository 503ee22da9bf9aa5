// HxCSV's record reader. A record is made of the number of fields the bound
// columns need, not of one physical line: a line end inside a record counts
// as a delimiter, so records may wrap over lines or share one.
#include "HxCSV.h"

#include <cstring>

#include <emmintrin.h>

#include "HxCSVInput.h"
#include "HxCSVNumbers.h"

namespace {

int firstCharacter(const McString* text)
{
    return text->isEmpty() ? 0 : static_cast<unsigned char>((*text)[0]);
}

// csvGetLine's callers hand over a C stream: a library call per byte.
class StreamSource {
public:
    static constexpr bool buffered = false;
    explicit StreamSource(FILE* file) : file(file) {}
    int get() { return std::fgetc(file); }
    void unget(int c) { std::ungetc(c, file); }

private:
    FILE* file;
};

// parse reads through its own block buffer, and takes runs of plain text
// in one go.
class BlockSource {
public:
    static constexpr bool buffered = true;
    explicit BlockSource(HxCSVInput& input) : input(input) {}
    int get() { return input.get(); }
    void unget(int) { input.unget(); }

    // Copies bytes up to the first special one, at most room of them, 16 at
    // a time where there is room: a special byte is a control character up
    // to \r (which holds all line ends and dropped bytes), the quote, the
    // delimiter or the break character. Other control characters stop the
    // run too and are then taken one by one.
    int copyPlain(char* to, int room, int delimiterChar, int breakCharacter, const bool* special)
    {
        const char* from = input.available();
        const char* end = input.availableEnd();
        if (end - from > room)
            end = from + room;
        const char* p = from;
        const __m128i lastControl = _mm_set1_epi8('\r');
        const __m128i delimiter = _mm_set1_epi8(static_cast<char>(delimiterChar));
        const __m128i breakChar = _mm_set1_epi8(static_cast<char>(breakCharacter));
        const __m128i quote = _mm_set1_epi8('"');
        while (end - p >= 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lastControl), bytes);
            const __m128i stop = _mm_or_si128(
                _mm_or_si128(control, _mm_cmpeq_epi8(bytes, quote)),
                _mm_or_si128(_mm_cmpeq_epi8(bytes, delimiter), _mm_cmpeq_epi8(bytes, breakChar)));
            // The whole 16 fit into the room; what lies past the run is
            // written over later or lies past the record's end.
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + (p - from)), bytes);
            const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(stop));
            if (mask != 0) {
                p += __builtin_ctz(mask);
                input.skipTo(p);
                return static_cast<int>(p - from);
            }
            p += 16;
        }
        while (p < end && !special[static_cast<unsigned char>(*p)]) {
            to[p - from] = *p;
            ++p;
        }
        input.skipTo(p);
        return static_cast<int>(p - from);
    }

private:
    HxCSVInput& input;
};

} // namespace

// Reads one record into the caller's buffer; lives for one record.
template <class Source>
class HxCSV::RecordReader {
public:
    RecordReader(HxCSV& csv, Source& source, char* buffer, int size);
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
    bool numbersConvert(const std::vector<HxCSVField>& fields) const;
    void rejoin(const std::vector<HxCSVField>& fields);
    void discardRestOfLine();
    bool put(char c);
    void noteFieldEnd();
    void finishFields();
    long long fieldsNeeded() const { return syntax.lastIndex + 1 + csv.joinedRecordCount; }

    HxCSV& csv;
    Source& source;
    char* buffer;
    const int size;
    const RecordSyntax& syntax;

    int length = 0;
    long long delimiters = 0;
    bool lineEndPassed = false;
    Kind kind = Kind::Data;
    // With a one-character delimiter and no quote in the record, the fields
    // are what lies between the delimiters that the reader stores: noted as
    // they come, they need no split.
    bool tracking = false;
    bool fieldsFinished = false;
    int fieldBegin = 0;
    bool fieldsSplit = false; // split to test the numbers, and left as is
};

template <class Source>
HxCSV::RecordReader<Source>::RecordReader(HxCSV& csv, Source& source, char* buffer, int size)
    : csv(csv), source(source), buffer(buffer), size(size), syntax(csv.syntax)
{
}

template <class Source>
int HxCSV::RecordReader<Source>::read(int& recordCount)
{
    for (;;) {
        const End end = readRecord();
        buffer[length] = '\0';
        if (end == End::Nothing)
            return -1;
        if (tracking)
            finishFields();
        csv.fieldsOfRecordRead = tracking || fieldsSplit;
        if (end == End::FieldCount && !lineEndPassed && !csv.noLineBreaks)
            discardRestOfLine(); // fields beyond the needed ones are ignored
        if (kind == Kind::Break && recordCount == 0)
            continue; // a break before any data starts no block
        if (kind == Kind::Data)
            ++recordCount;
        return 0;
    }
}

template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::readRecord()
{
    length = 0;
    delimiters = 0;
    lineEndPassed = false;
    kind = Kind::Data;
    tracking = syntax.fieldsByDelimiter;
    fieldsFinished = false;
    fieldBegin = 0;
    fieldsSplit = false;
    csv.fields.clear();
    for (;;) {
        if constexpr (Source::buffered) {
            if (length > 0) // what starts a record is looked at byte by byte
                length += source.copyPlain(buffer + length, size - 1 - length, syntax.delimiter,
                                           syntax.breakChar, syntax.special);
        }
        const int c = source.get();
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
template <class Source>
bool HxCSV::RecordReader<Source>::isDropped(int c) const
{
    return c == '\r' || c == '\0' || (c == '\t' && syntax.delimiter != '\t');
}

// Empty lines and leading delimiters make nothing; the first character
// decides whether the record is a comment, a block break or data.
template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::startRecord(int c)
{
    if (c == '\n' || c == syntax.delimiter)
        return End::Open;
    if (c == syntax.commentChar)
        return copyComment(c);
    kind = c == syntax.breakChar ? Kind::Break : Kind::Data;
    tracking = tracking && c != '"';
    put(static_cast<char>(c)); // an empty buffer always has room
    return End::Open;
}

template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::continueRecord(int c)
{
    if (c == '\n') {
        lineEndPassed = true;
        const End end = addDelimiter(c);
        // A block break never reaches into the next line.
        return (end == End::Open && kind == Kind::Break) ? End::LineEnd : end;
    }
    if (c == syntax.delimiter)
        return addDelimiter(c);
    // Inside a break its own characters are text ("--", "==="); elsewhere the
    // break character ends the record and starts the next one.
    if (c == syntax.breakChar && kind != Kind::Break) {
        source.unget(c);
        delimiters = fieldsNeeded();
        return fieldCountReached(End::BreakCharacter);
    }
    tracking = tracking && c != '"';
    return put(static_cast<char>(c)) ? End::Open : bufferFull(c);
}

// Runs of delimiters count once.
template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::addDelimiter(int c)
{
    if (buffer[length - 1] == static_cast<char>(syntax.delimiter))
        return End::Open;
    // An empty delimiter has no character to store, but still ends a field.
    if (syntax.delimiter != 0 && !put(static_cast<char>(syntax.delimiter)))
        return bufferFull(c);
    noteFieldEnd();
    ++delimiters;
    return delimiters == fieldsNeeded() ? fieldCountReached(End::FieldCount) : End::Open;
}

// A data record whose numbers do not convert is re-joined, once per pass:
// its first field goes, the others stay as counted fields, and reading goes
// on until the record has one field more than before. Block breaks are never
// converted.
template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::fieldCountReached(End how)
{
    if (kind != Kind::Data || csv.recordContinued)
        return how;
    if (tracking)
        finishFields();
    const std::vector<HxCSVField>& fields = tracking ? csv.fields : csv.splitRecord(buffer, length);
    if (numbersConvert(fields)) {
        fieldsSplit = true;
        return how;
    }
    rejoin(fields);
    return End::Open;
}

// Only float and double columns are tried; a field the record lacks is
// left for the row conversion to report.
template <class Source>
bool HxCSV::RecordReader<Source>::numbersConvert(const std::vector<HxCSVField>& fields) const
{
    const long long count = static_cast<long long>(fields.size());
    for (const CSVDataColumn& column : csv.columns) {
        if (column.storageKind != Float && column.storageKind != Double)
            continue;
        if (column.columnIndex < 0 || column.columnIndex >= count)
            continue;
        const size_t index = static_cast<size_t>(column.columnIndex);
        const HxCSVField& field = fields[index];
        // While counting, the common case is known good without converting;
        // while reading, the row needs the values anyway.
        if (syntax.counting && HxCSVNumbers::isShortDecimal(buffer + field.begin, static_cast<size_t>(field.length)))
            continue;
        bool ok = false;
        if (column.storageKind == Float)
            csv.fieldValue<float>(buffer, index, ok);
        else
            csv.fieldValue<double>(buffer, index, ok);
        if (!ok)
            return false;
    }
    return true;
}

// The fields after the first move to the front, each followed by the
// delimiter; the text only ever gets shorter. Noted fields move along.
template <class Source>
void HxCSV::RecordReader<Source>::rejoin(const std::vector<HxCSVField>& fields)
{
    ++csv.joinedRecordCount;
    csv.recordContinued = true;
    length = 0;
    delimiters = 0;
    std::vector<HxCSVField>& noted = csv.fields; // fields itself when tracking
    for (size_t i = 1; i < fields.size(); ++i) {
        const HxCSVField field = fields[i];
        std::memmove(buffer + length, buffer + field.begin, static_cast<size_t>(field.length));
        if (tracking)
            noted[i - 1] = {length, field.length};
        length += field.length;
        if (syntax.delimiter != 0)
            buffer[length++] = static_cast<char>(syntax.delimiter);
        ++delimiters;
    }
    buffer[length] = '\0';
    if (tracking)
        noted.resize(fields.size() - 1);
    fieldBegin = length;
    fieldsFinished = false;
}

// A delimiter was just stored: the field before it is complete.
template <class Source>
void HxCSV::RecordReader<Source>::noteFieldEnd()
{
    if (!tracking)
        return;
    csv.fields.push_back({fieldBegin, length - 1 - fieldBegin});
    fieldBegin = length;
}

// The text after the last delimiter is the last field; the fields are now
// those of the record, and numbers converted before belong to other ones.
template <class Source>
void HxCSV::RecordReader<Source>::finishFields()
{
    if (fieldsFinished)
        return;
    if (length > fieldBegin)
        csv.fields.push_back({fieldBegin, length - fieldBegin});
    fieldBegin = length;
    fieldsFinished = true;
    csv.takeNewFields();
}

// A comment is kept as it stands up to its line feed; what does not fit is
// read and dropped with the rest of the line.
template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::copyComment(int c)
{
    kind = Kind::Comment;
    tracking = false;
    put(static_cast<char>(c));
    for (int next = source.get(); next != EOF; next = source.get()) {
        put(static_cast<char>(next));
        if (next == '\n')
            break;
    }
    return End::Comment;
}

// A full buffer ends the record; the character that did not fit starts the
// next one, as a long physical line is read in pieces.
template <class Source>
typename HxCSV::RecordReader<Source>::End HxCSV::RecordReader<Source>::bufferFull(int c)
{
    source.unget(c);
    return End::BufferFull;
}

template <class Source>
void HxCSV::RecordReader<Source>::discardRestOfLine()
{
    for (int c = source.get(); c != EOF && c != '\n'; c = source.get()) {
    }
}

template <class Source>
bool HxCSV::RecordReader<Source>::put(char c)
{
    if (length >= size - 1)
        return false;
    buffer[length++] = c;
    return true;
}

// The first characters of the settings, and the bytes that end a run of
// plain text inside a record: line ends, bytes that are dropped, the quote,
// the delimiter and the break character.
void HxCSV::prepareRecordSyntax(bool counting)
{
    syntax = RecordSyntax();
    syntax.counting = counting;
    syntax.delimiter = firstCharacter(columnDelimiter);
    syntax.breakChar = firstCharacter(verticalDelimiter);
    syntax.commentChar = firstCharacter(commentMarker);
    syntax.lastIndex = lastBoundColumnIndex();
    for (int c : {int('\n'), int('\r'), 0, int('\t'), int('"'), syntax.delimiter, syntax.breakChar})
        syntax.special[c] = true;
    syntax.fieldsByDelimiter = columnDelimiter->length() == 1 && syntax.delimiter != '"';
}

int HxCSV::readRecord(HxCSVInput& input, char* buffer, int& recordCount)
{
    BlockSource source(input);
    return RecordReader<BlockSource>(*this, source, buffer, lineBufferSize).read(recordCount);
}

int HxCSV::csvGetLine(char* buffer, int size, FILE* file, int& recordCount)
{
    if (!buffer || !file || size < 2)
        return -1; // no room for a single character
    prepareRecordSyntax(false); // the settings may have changed since the last call
    StreamSource source(file);
    return RecordReader<StreamSource>(*this, source, buffer, size).read(recordCount);
}
