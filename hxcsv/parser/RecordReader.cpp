// HxCSV's record reader. A record is made of the number of fields the bound
// columns need, not of one physical line: a line end inside a record counts
// as a delimiter, so records may wrap over lines or share one.
#include "HxCSV.h"

#include <cstring>

#include <emmintrin.h>

#include "HxCSVInput.h"
#include "HxCSVNumbers.h"
#include "Parse.h"

static_assert(HxCSVInput::padding >= HxCSVNumbers::recordPadding,
              "known short decimals are converted where they lie in the input block");

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

private:
    FILE* file;
};

// The bytes that stop a run of plain text, found 16 at a time: control
// characters up to \r (all line ends and dropped bytes among them), the
// quote, the delimiter and the break character. Other control characters
// stop a run too; they are then taken one by one.
class Stops {
public:
    Stops(int delimiter, int breakChar, const bool* special)
        : delimiter(_mm_set1_epi8(static_cast<char>(delimiter))),
          breakChar(_mm_set1_epi8(static_cast<char>(breakChar))), special(special)
    {
    }

    // A bit for each of the 16 bytes at p that stops a run.
    unsigned in16(const char* p) const
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lastControl), bytes);
        const __m128i stop =
            _mm_or_si128(_mm_or_si128(control, _mm_cmpeq_epi8(bytes, quote)),
                         _mm_or_si128(_mm_cmpeq_epi8(bytes, delimiter), _mm_cmpeq_epi8(bytes, breakChar)));
        return static_cast<unsigned>(_mm_movemask_epi8(stop));
    }

    bool stops(char c) const { return special[static_cast<unsigned char>(c)]; }

    // The first stopping byte in [p, end), or end.
    const char* find(const char* p, const char* end) const
    {
        for (; end - p >= 16; p += 16)
            if (const unsigned mask = in16(p))
                return p + __builtin_ctz(mask);
        while (p < end && !stops(*p))
            ++p;
        return p;
    }

private:
    const __m128i lastControl = _mm_set1_epi8('\r');
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i delimiter;
    const __m128i breakChar;
    const bool* special;
};

// parse reads through its own block buffer, and takes runs of plain text
// in one go.
class BlockSource {
public:
    static constexpr bool buffered = true;
    BlockSource(HxCSVInput& input, const Stops& stops) : input(input), stops(stops) {}
    int get() { return input.get(); }
    void unget(int) { input.unget(); }

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
    int storePlainRecords(int row, int count, bool ignoreColumnCount, int& recordCount);
    // The next record when it is plain (see readPlainRecord), else false
    // and nothing read.
    bool readPlain(int& recordCount, int& recordLength)
    {
        if (!syntax.plainRecords || !readPlainRecord(recordCount))
            return false;
        recordLength = length;
        return true;
    }

private:
    enum class Kind { Data, Comment, Break };
    // Open: the record goes on; Nothing: end of file before any character.
    enum class End { Open, Nothing, FieldCount, BreakCharacter, LineEnd, BufferFull, EndOfFile, Comment };

    enum class RunStep { Take, TakeLast, Leave };
    template <class OnField, class OnRecord>
    int runPlainRecords(OnField onField, OnRecord onRecord);
    bool skipPlainRecords(int& recordCount);
    bool readPlainRecord(int& recordCount);
    bool startsPlainRecord(const char* start) const;
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
    uint64_t shortDecimals = 0; // fields (of the first 64) that the scan saw to be short decimals
};

template <class Source>
RecordReader<Source>::RecordReader(Parse& parse, Source& source, char* buffer, int size)
    : csv(parse.csv), parse(parse), source(source), buffer(buffer), size(size), syntax(parse.syntax)
{
}

template <class Source>
int RecordReader<Source>::read(int& recordCount)
{
    for (;;) {
        if constexpr (Source::buffered) {
            if (syntax.plainRecords && syntax.counting && skipPlainRecords(recordCount))
                return length;
            if (syntax.plainRecords && readPlainRecord(recordCount))
                return length;
        }
        const End end = readRecord();
        buffer[length] = '\0';
        if (end == End::Nothing)
            return -1;
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

// The common record in one go: it lies in the block, starts a line or
// follows the last, holds nothing but plain bytes and single delimiters, and
// ends at the delimiter that completes its fields or at a line feed (after
// a carriage return or not) that does. Anything else, and a record whose
// numbers do not convert, is left to be read byte by byte; the result is the
// same either way.
template <class Source>
bool RecordReader<Source>::readPlainRecord(int& recordCount)
{
    parse.fields.clear();
    shortDecimals = 0;
    const char* start = nullptr;
    const auto noteField = [&](const char* field, int fieldLength, long long index, bool shortDecimal) {
        if (index == 0)
            start = field;
        parse.fields.push_back({static_cast<int>(field - start), fieldLength});
        if (shortDecimal && index < 64)
            shortDecimals |= uint64_t(1) << index;
        return true;
    };
    // The record goes to the buffer; it is taken when its numbers convert,
    // else left to be re-joined.
    const auto takeConverting = [&](const char* begin, const char* textEnd) {
        lineEndPassed = *textEnd != static_cast<char>(syntax.delimiter);
        length = static_cast<int>(textEnd - begin);
        std::memcpy(buffer, begin, static_cast<size_t>(length));
        if (lineEndPassed) // the line feed is taken as a delimiter
            buffer[length++] = static_cast<char>(syntax.delimiter);
        else
            ++length; // the delimiter itself
        buffer[length] = '\0';
        parse.takeNewFields();
        parse.shortDecimalFields = shortDecimals;
        return (csv.recordContinued || numbersConvert(parse.fields)) ? RunStep::TakeLast : RunStep::Leave;
    };
    if (runPlainRecords(noteField, takeConverting) == 0)
        return false;
    ++recordCount;
    parse.fieldsOfRecordRead = true;
    return true;
}

// Goes through the plain records that come next (those readPlainRecord
// would take) straight in the block, looking at each 16 bytes once and
// carrying on in the same 16 bytes where the next record starts. Each field
// goes to onField(begin, length, index, shortDecimal), which may refuse it;
// each whole record to onRecord(begin, end), end being the delimiter that
// completes it or its line end, which takes it (Take), takes it as
// the last (TakeLast) or leaves it (Leave). The run ends there, and at
// anything that is not a plain record; reading goes on after the last
// record taken. Returns the number taken.
template <class Source>
template <class OnField, class OnRecord>
int RecordReader<Source>::runPlainRecords(OnField onField, OnRecord onRecord)
{
    const char* recordStart = source.input.available(); // refills an empty block first
    const char* const blockEnd = source.input.availableEnd();
    if (!syntax.plainRecords || !startsPlainRecord(recordStart))
        return 0;
    const long long needed = fieldsNeeded();
    const char delimiter = static_cast<char>(syntax.delimiter);
    const char* fieldStart = recordStart;
    const char* done = recordStart; // past the last record taken
    long long found = 0;
    int taken = 0;
    const auto scan = [&]() {
        for (const char* chunk = recordStart; blockEnd - chunk >= 16;) {
            const char* restart = nullptr;
            for (unsigned mask = source.stops.in16(chunk); mask != 0 && !restart; mask &= mask - 1) {
                const char* q = chunk + __builtin_ctz(mask);
                // A run of delimiters, or a record too long for the buffer.
                if (q == fieldStart || q - recordStart >= size - 1)
                    return;
                const long long k = q - fieldStart;
                // The field lies in the block, whose padding covers every
                // load of the test and of the converter behind it.
                const bool shortDecimal =
                    k < 16 && HxCSVNumbers::paddedIsShortDecimal(fieldStart, static_cast<size_t>(k));
                if (!onField(fieldStart, static_cast<int>(k), found, shortDecimal))
                    return;
                ++found;
                const char* next = q + 1;
                if (*q == delimiter) {
                    if (found < needed) {
                        fieldStart = next;
                        continue;
                    }
                    if (!csv.noLineBreaks) { // fields beyond the needed ones are ignored
                        const void* lineFeed = std::memchr(next, '\n', static_cast<size_t>(blockEnd - next));
                        if (!lineFeed)
                            return;
                        next = static_cast<const char*>(lineFeed) + 1;
                    }
                } else {
                    const char* lineFeed = (*q == '\r' && next < blockEnd) ? next : q;
                    if (*lineFeed != '\n' || found < needed)
                        return;
                    next = lineFeed + 1;
                }
                const RunStep step = onRecord(recordStart, q);
                if (step == RunStep::Leave)
                    return;
                ++taken;
                done = next;
                if (step == RunStep::TakeLast || !startsPlainRecord(next))
                    return;
                recordStart = fieldStart = next;
                found = 0;
                if (next > q + 1) // past bytes whose bits are still in the mask
                    restart = next;
            }
            chunk = restart ? restart : chunk + 16;
        }
    };
    scan();
    source.input.skipTo(done);
    return taken;
}

// While counting: the run of plain records whose tried fields are plainly
// numbers. True when the run held a record.
template <class Source>
bool RecordReader<Source>::skipPlainRecords(int& recordCount)
{
    if (!syntax.testsAll64)
        return false;
    const uint64_t tested = csv.recordContinued ? 0 : syntax.testedFields;
    const auto plainNumberWhereTried = [tested](const char* field, int k, long long index, bool shortDecimal) {
        return index >= 64 || !(tested >> index & 1) || shortDecimal
               || HxCSVNumbers::isShortDecimal(field, static_cast<size_t>(k));
    };
    const int counted = runPlainRecords(plainNumberWhereTried, [](const char*, const char*) { return RunStep::Take; });
    recordCount += counted;
    length = 0;
    buffer[0] = '\0';
    return counted > 0;
}

// While reading: the run of plain records whose bound fields are all known
// short decimals, stored straight from the block (see
// storeShortDecimalRow) from row on, up to count rows. Returns the row after
// the last stored.
template <class Source>
int RecordReader<Source>::storePlainRecords(int row, int count, bool ignoreColumnCount, int& recordCount)
{
    if (!syntax.shortDecimalTargets || fieldsNeeded() > 64 || row >= count)
        return row;
    HxCSVField found[64];
    uint64_t shortDecimals = 0;
    const char* recordStart = nullptr;
    const auto note = [&](const char* field, int k, long long index, bool shortDecimal) {
        if (index == 0) {
            recordStart = field;
            shortDecimals = 0;
        }
        found[index] = {static_cast<int>(field - recordStart), k};
        shortDecimals |= static_cast<uint64_t>(shortDecimal) << index;
        return true;
    };
    const size_t fieldCount = static_cast<size_t>(fieldsNeeded());
    // The numbers the record reader would try must convert, as they do
    // when they are short decimals; even those that no column stores.
    const uint64_t tested = csv.recordContinued ? 0 : syntax.testedFields;
    const auto store = [&](const char* record, const char*) {
        if ((shortDecimals & tested) != tested
            || !parse.storeShortDecimalRow(record, found, fieldCount, shortDecimals, row, ignoreColumnCount))
            return RunStep::Leave;
        ++row;
        return row < count ? RunStep::Take : RunStep::TakeLast;
    };
    recordCount += runPlainRecords(note, store);
    return row;
}

// A plain record starts with a byte that is neither special nor a comment.
template <class Source>
bool RecordReader<Source>::startsPlainRecord(const char* start) const
{
    return start != source.input.availableEnd() && !source.stops.stops(*start)
           && static_cast<unsigned char>(*start) != syntax.commentChar;
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
    shortDecimals = 0;
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
typename RecordReader<Source>::End RecordReader<Source>::continueRecord(int c)
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
typename RecordReader<Source>::End RecordReader<Source>::addDelimiter(int c)
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
typename RecordReader<Source>::End RecordReader<Source>::fieldCountReached(End how)
{
    if (kind != Kind::Data || csv.recordContinued)
        return how;
    if (tracking)
        finishFields();
    const std::vector<HxCSVField>& fields = tracking ? parse.fields : parse.splitRecord(buffer, length);
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
bool RecordReader<Source>::numbersConvert(const std::vector<HxCSVField>& fields) const
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
        if ((index < 64 && (shortDecimals >> index & 1))
            || (syntax.counting && HxCSVNumbers::isShortDecimal(buffer + field.begin, static_cast<size_t>(field.length))))
            continue;
        bool ok = false;
        if (column.storageKind == HxCSV::Float)
            parse.fieldValue<float>(buffer, index, ok);
        else
            parse.fieldValue<double>(buffer, index, ok);
        if (!ok)
            return false;
    }
    return true;
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
}

// Stores the plain records that come next, from row on, with one reader
// for all: such a record is never a comment or a block break, and its
// fields are known. Returns the row after the last stored; the record that
// is not plain is left for readRecord.
int Parse::storePlainRows(HxCSVInput& input, char* buffer, int row, int count, bool ignoreColumnCount,
                          long long& lineNumber, int& recordsRead)
{
    const Stops stops(syntax.delimiter, syntax.breakChar, syntax.special);
    BlockSource source(input, stops);
    RecordReader<BlockSource> reader(*this, source, buffer, HxCSV::lineBufferSize);
    int length = 0;
    for (;;) {
        const int stored = reader.storePlainRecords(row, count, ignoreColumnCount, recordsRead);
        lineNumber += stored - row;
        row = stored;
        if (row >= count || !reader.readPlain(recordsRead, length))
            return row;
        ++lineNumber;
        if (!storeShortDecimalRow(buffer, fields.data(), fields.size(), shortDecimalFields, row, ignoreColumnCount))
            storeRow(buffer, length, row, ignoreColumnCount, true, syntax.lastIndex);
        ++row;
    }
}

int Parse::readRecord(HxCSVInput& input, char* buffer, int& recordCount)
{
    const Stops stops(syntax.delimiter, syntax.breakChar, syntax.special);
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
