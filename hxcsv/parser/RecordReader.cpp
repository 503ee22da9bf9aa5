// Record reading: one record at a time into a record buffer, byte by byte
// by every rule, after the plain-record fast path (PlainRecords.cpp) has
// had its try. Hands the record, and often its fields (Parse::fields), to
// the row storage (Rows.cpp) through the driver.
//
// A record is made of the number of fields the bound columns need, not of
// one physical line: a line end inside a record counts as a delimiter, so
// records may wrap over lines or share one.
#include "HxCSV.h"

#include <cstring>

#include "HxCSVInput.h"
#include "Parse.h"
#include "PlainRecords.h"

namespace hxcsv {
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
    long long offsetOfLast() const { return -1; } // not noted

private:
    FILE* file;
};

// parse reads through its own block buffer, and takes runs of plain text
// in one go.
class BlockSource {
public:
    static constexpr bool buffered = true;
    BlockSource(HxCSVInput& input, const Stops& stops) : input(input), stops(stops) {}
    int get() { return input.get(); }
    void unget(int) { input.unget(); }
    // Where the byte that get() returned last lies in the file.
    long long offsetOfLast() const { return input.offset() - 1; }

    // Copies the bytes up to the first that stops a run, at most room of
    // them, 16 at a time while they fit.
    int copyPlain(char* to, int room)
    {
        const char* from = input.available();
        const char* end = input.availableEnd();
        if (end - from > room)
            end = from + room;
        const char* p = from;
        for (; end - p >= 16; p += 16) {
            // What lies past the run is written over later or lies past
            // the record's end.
            std::memcpy(to + (p - from), p, 16);
            if (const unsigned mask = stops.in16(p)) {
                p += __builtin_ctz(mask);
                input.skipTo(p);
                return static_cast<int>(p - from);
            }
        }
        for (; p < end && !stops.stops(*p); ++p)
            to[p - from] = *p;
        input.skipTo(p);
        return static_cast<int>(p - from);
    }

    HxCSVInput& input;
    const Stops& stops;
};

// Reads one record into the caller's buffer; lives for one record.
template <class Source>
class RecordReader {
public:
    RecordReader(Parse& parse, Source& source, char* buffer, int size);
    // The record's length, or -1 at end of file.
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
    void rejoin(const std::vector<HxCSVField>& fields);
    void discardRestOfLine();
    bool put(char c);
    void noteFieldEnd();
    void finishFields();
    long long fieldsNeeded() const { return syntax.lastIndex + 1 + csv.joinedRecordCount; }
    void noteDroppedField();
    void noteShortLine();
    void noteContinuation();
    void noteRecordEnd();

    HxCSV& csv;
    Parse& parse;
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

    // For the notices, in the storing pass only (offsets in the file, -1
    // for none).
    const bool noting;
    long long start = -1;     // the record's first byte
    long long dropped = -1;   // the first delimiter that dropped an empty field
    long long shortLine = -1; // the line end of a line with too few fields...
    long long neededThen = 0; // ... the fields needed there,
    long long fieldsThen = 0; // ... those it had,
    int lengthThen = 0;       // ... and the record's length after it
    bool continued = false;   // noted as going on past a short line
};

template <class Source>
RecordReader<Source>::RecordReader(Parse& parse, Source& source, char* buffer, int size)
    : csv(parse.csv), parse(parse), source(source), buffer(buffer), size(size), syntax(parse.syntax),
      noting(Source::buffered && parse.noting)
{
}

template <class Source>
int RecordReader<Source>::read(int& recordCount)
{
    for (;;) {
        // The common record is taken in one go, straight from the block.
        if constexpr (Source::buffered) {
            if (syntax.plainRecords) {
                PlainRecords plain(parse, source.input, source.stops, buffer, size);
                if (syntax.counting && plain.count(recordCount))
                    return 0;
                if (plain.readOne(recordCount, length))
                    return length;
            }
        }
        const End end = readRecord();
        buffer[length] = '\0';
        if (end == End::Nothing)
            return -1;
        if (noting)
            noteRecordEnd();
        if (tracking)
            finishFields();
        parse.fieldsOfRecordRead = tracking || fieldsSplit;
        if (end == End::FieldCount && !lineEndPassed && !csv.noLineBreaks)
            discardRestOfLine(); // fields beyond the needed ones are ignored
        if (kind == Kind::Break && recordCount == 0)
            continue; // a break before any data starts no block
        if (kind == Kind::Data)
            ++recordCount;
        return length;
    }
}

template <class Source>
typename RecordReader<Source>::End RecordReader<Source>::readRecord()
{
    length = 0;
    delimiters = 0;
    lineEndPassed = false;
    kind = Kind::Data;
    tracking = syntax.fieldsByDelimiter;
    fieldsFinished = false;
    fieldBegin = 0;
    fieldsSplit = false;
    start = dropped = shortLine = -1;
    continued = false;
    parse.fields.clear();
    for (;;) {
        if constexpr (Source::buffered) {
            if (length > 0) // what starts a record is looked at byte by byte
                length += source.copyPlain(buffer + length, size - 1 - length);
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
bool RecordReader<Source>::isDropped(int c) const
{
    return c == '\r' || c == '\0' || (c == '\t' && syntax.delimiter != '\t');
}

// Empty lines and leading delimiters make nothing; the first character
// decides whether the record is a comment, a block break or data.
template <class Source>
typename RecordReader<Source>::End RecordReader<Source>::startRecord(int c)
{
    if (c == '\n' || c == syntax.delimiter) {
        if (c == '\n')
            dropped = -1; // a line of delimiters alone is a blank line
        else
            noteDroppedField();
        return End::Open;
    }
    if (start < 0) // a record re-joined down to nothing starts again
        start = source.offsetOfLast();
    if (c == syntax.commentChar)
        return copyComment(c);
    kind = c == syntax.breakChar ? Kind::Break : Kind::Data;
    tracking = tracking && c != '"';
    put(static_cast<char>(c)); // an empty buffer always has room
    return End::Open;
}

template <class Source>
typename RecordReader<Source>::End RecordReader<Source>::continueRecord(int c)
{
    if (shortLine >= 0 && length > lengthThen)
        noteContinuation();
    if (c == '\n') {
        lineEndPassed = true;
        const int joined = csv.joinedRecordCount;
        const End end = addDelimiter(c);
        if (end == End::Open && joined == csv.joinedRecordCount)
            noteShortLine();
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
typename RecordReader<Source>::End RecordReader<Source>::addDelimiter(int c)
{
    if (buffer[length - 1] == static_cast<char>(syntax.delimiter)) {
        if (c == syntax.delimiter)
            noteDroppedField();
        return End::Open;
    }
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
typename RecordReader<Source>::End RecordReader<Source>::fieldCountReached(End how)
{
    if (kind != Kind::Data || csv.recordContinued)
        return how;
    if (tracking)
        finishFields();
    const std::vector<HxCSVField>& fields = tracking ? parse.fields : parse.splitRecord(buffer, length);
    if (parse.numbersConvert(buffer)) {
        fieldsSplit = true;
        return how;
    }
    rejoin(fields);
    return End::Open;
}

// The fields after the first move to the front, each followed by the
// delimiter; the text only ever gets shorter. Noted fields move along.
template <class Source>
void RecordReader<Source>::rejoin(const std::vector<HxCSVField>& fields)
{
    ++csv.joinedRecordCount;
    csv.recordContinued = true;
    length = 0;
    delimiters = 0;
    std::vector<HxCSVField>& noted = parse.fields; // fields itself when tracking
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
void RecordReader<Source>::noteFieldEnd()
{
    if (!tracking)
        return;
    parse.fields.push_back({fieldBegin, length - 1 - fieldBegin});
    fieldBegin = length;
}

// The text after the last delimiter is the last field; the fields are now
// those of the record, and numbers converted before belong to other ones.
template <class Source>
void RecordReader<Source>::finishFields()
{
    if (fieldsFinished)
        return;
    if (length > fieldBegin)
        parse.fields.push_back({fieldBegin, length - fieldBegin});
    fieldBegin = length;
    fieldsFinished = true;
    parse.takeNewFields();
}

// A comment is kept as it stands up to its line feed; what does not fit is
// read and dropped with the rest of the line.
template <class Source>
typename RecordReader<Source>::End RecordReader<Source>::copyComment(int c)
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
typename RecordReader<Source>::End RecordReader<Source>::bufferFull(int c)
{
    if (noting) {
        parse.cutAt = source.offsetOfLast();
        parse.cutRecordStart = start;
    }
    source.unget(c);
    return End::BufferFull;
}

template <class Source>
void RecordReader<Source>::discardRestOfLine()
{
    if constexpr (Source::buffered) {
        for (const char* p = source.input.available(); p != source.input.availableEnd();
             p = source.input.available()) {
            const char* end = source.input.availableEnd();
            const void* lineFeed = std::memchr(p, '\n', static_cast<size_t>(end - p));
            source.input.skipTo(lineFeed ? static_cast<const char*>(lineFeed) + 1 : end);
            if (lineFeed)
                return;
        }
    } else {
        for (int c = source.get(); c != EOF && c != '\n'; c = source.get()) {
        }
    }
}

// Noted at the delimiter of a run after the first, or at one before the
// first field (but for the byte that a record cut short left over); it
// counts if the record is data.
template <class Source>
void RecordReader<Source>::noteDroppedField()
{
    if (noting && syntax.dropsEmptyFields && dropped < 0 && source.offsetOfLast() != parse.cutAt)
        dropped = source.offsetOfLast();
}

// A line end left the data record short: the record goes on into the next
// line, if anything of it comes. Where records may share lines, a record
// going on into the next line is what was asked for; the rest of a line
// that a cut left over is told of with the cut.
template <class Source>
void RecordReader<Source>::noteShortLine()
{
    if (!noting || kind != Kind::Data || csv.noLineBreaks || shortLine >= 0 || continued || start == parse.cutAt)
        return;
    shortLine = source.offsetOfLast();
    neededThen = fieldsNeeded();
    fieldsThen = delimiters;
    lengthThen = length;
}

// Bytes past the short line joined the record: once a record.
template <class Source>
void RecordReader<Source>::noteContinuation()
{
    parse.noteContinued(shortLine, source.offsetOfLast(), fieldsThen, neededThen);
    shortLine = -1;
    continued = true;
}

template <class Source>
void RecordReader<Source>::noteRecordEnd()
{
    if (shortLine >= 0 && length > lengthThen)
        noteContinuation();
    if (kind == Kind::Data && dropped >= 0)
        parse.noteCollapsed(dropped);
    parse.recordStart = start;
}

template <class Source>
bool RecordReader<Source>::put(char c)
{
    if (length >= size - 1)
        return false;
    buffer[length++] = c;
    return true;
}

} // namespace

// The first characters of the settings, and the bytes that end a run of
// plain text inside a record: line ends, bytes that are dropped, the quote,
// the delimiter and the break character.
void Parse::prepareRecordSyntax(bool counting)
{
    syntax = RecordSyntax();
    syntax.counting = counting;
    syntax.delimiter = firstCharacter(csv.columnDelimiter);
    syntax.breakChar = firstCharacter(csv.verticalDelimiter);
    syntax.commentChar = firstCharacter(csv.commentMarker);
    syntax.lastIndex = lastBoundColumnIndex();
    syntax.strtodReadsShortDecimals = HxCSVNumbers::strtodReadsShortDecimals();
    syntax.shortDecimalTargets = true;
    for (const HxCSV::CSVDataColumn& column : csv.columns) {
        const bool number = column.storageKind == HxCSV::Float || column.storageKind == HxCSV::Double
                            || (column.storageKind == HxCSV::TextNumber && syntax.strtodReadsShortDecimals);
        if (column.columnIndex >= 0 && !number)
            syntax.shortDecimalTargets = false;
    }
    for (const HxCSV::CSVDataColumn& column : csv.columns) {
        if ((column.storageKind != HxCSV::Float && column.storageKind != HxCSV::Double) || column.columnIndex < 0)
            continue;
        if (column.columnIndex < 64)
            syntax.testedFields |= uint64_t(1) << column.columnIndex;
        else
            syntax.testsAll64 = false;
    }
    for (int c : {int('\n'), int('\r'), 0, int('\t'), int('"'), syntax.delimiter, syntax.breakChar})
        syntax.special[c] = true;
    syntax.fieldsByDelimiter = csv.columnDelimiter->length() == 1 && syntax.delimiter != '"';
    // A delimiter that is a line end, or dropped, reads differently.
    syntax.plainRecords = syntax.fieldsByDelimiter && syntax.delimiter != '\n' && syntax.delimiter != '\r';
    syntax.dropsEmptyFields = syntax.plainRecords && syntax.delimiter != ' ';
}

int Parse::readRecord(HxCSVInput& input, char* buffer, int& recordCount)
{
    const Stops stops(syntax);
    BlockSource source(input, stops);
    return RecordReader<BlockSource>(*this, source, buffer, HxCSV::lineBufferSize).read(recordCount);
}

} // namespace hxcsv

int HxCSV::csvGetLine(char* buffer, int size, FILE* file, int& recordCount)
{
    using hxcsv::RecordReader;
    using hxcsv::StreamSource;
    if (!buffer || !file || size < 2)
        return -1; // no room for a single character
    d->prepareRecordSyntax(false); // the settings may have changed since the last call
    StreamSource source(file);
    return RecordReader<StreamSource>(*d, source, buffer, size).read(recordCount) < 0 ? -1 : 0;
}
