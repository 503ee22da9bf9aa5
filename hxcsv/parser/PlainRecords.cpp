// The plain-record fast path: plain records taken in runs straight from
// the input block (see PlainRecords.h), stored by Rows.cpp.
#include "PlainRecords.h"

#include <cstring>

namespace hxcsv {

// Where a run stands in the block.
struct PlainRecords::Run {
    const char* const blockEnd;
    const long long needed; // fields that complete a record
    const char* recordStart;
    const char* fieldStart;
    long long found; // fields of the record so far
    const char* done; // past the last record taken
    int taken;
};

PlainRecords::PlainRecords(Parse& parse, HxCSVInput& input, const Stops& stops, char* buffer, int size)
    : csv(parse.csv), parse(parse), input(input), stops(stops), buffer(buffer), size(size), syntax(parse.syntax),
      delimiter(static_cast<char>(parse.syntax.delimiter))
{
}

bool PlainRecords::count(int& recordCount)
{
    if (!syntax.testsAll64)
        return false;
    const uint64_t tested = csv.recordContinued ? 0 : syntax.testedFields;
    const auto plainNumberWhereTried = [tested](const char* field, int length, long long index, bool shortDecimal) {
        return index >= 64 || !(tested >> index & 1) || shortDecimal
               || HxCSVNumbers::isShortDecimal(field, static_cast<size_t>(length));
    };
    const int counted = run(plainNumberWhereTried, [](const char*, const char*) { return RunStep::Take; });
    recordCount += counted;
    buffer[0] = '\0';
    return counted > 0;
}

bool PlainRecords::readOne(int& recordCount, int& length)
{
    if (!syntax.plainRecords)
        return false;
    parse.fields.clear();
    uint64_t shortDecimals = 0;
    const char* start = nullptr;
    const auto noteField = [&](const char* field, int fieldLength, long long index, bool shortDecimal) {
        if (index == 0)
            start = field;
        parse.fields.push_back({static_cast<int>(field - start), fieldLength});
        if (shortDecimal && index < 64)
            shortDecimals |= uint64_t(1) << index;
        return true;
    };
    const auto takeConverting = [&](const char* begin, const char* end) {
        length = static_cast<int>(end - begin);
        std::memcpy(buffer, begin, static_cast<size_t>(length));
        buffer[length++] = delimiter; // its own, or the line end taken as one
        buffer[length] = '\0';
        parse.takeNewFields();
        parse.shortDecimalFields = shortDecimals;
        return (csv.recordContinued || parse.numbersConvert(buffer)) ? RunStep::TakeLast : RunStep::Leave;
    };
    if (run(noteField, takeConverting) == 0)
        return false;
    parse.recordStart = input.offsetOf(start); // where its first field starts
    ++recordCount;
    parse.fieldsOfRecordRead = true;
    return true;
}

int PlainRecords::store(int row, int rows, bool ignoreColumnCount, int& recordCount)
{
    if (!syntax.shortDecimalTargets || fieldsNeeded() > 64 || row >= rows)
        return row;
    HxCSVField found[64];
    uint64_t shortDecimals = 0;
    const char* recordStart = nullptr;
    const auto note = [&](const char* field, int length, long long index, bool shortDecimal) {
        if (index == 0) {
            recordStart = field;
            shortDecimals = 0;
        }
        found[index] = {static_cast<int>(field - recordStart), length};
        shortDecimals |= static_cast<uint64_t>(shortDecimal) << index;
        return true;
    };
    const size_t fieldCount = static_cast<size_t>(fieldsNeeded());
    // The numbers the record reader would try must convert, as they do
    // when they are short decimals; even those that no column stores.
    const uint64_t tested = csv.recordContinued ? 0 : syntax.testedFields;
    const auto storeRow = [&](const char* record, const char*) {
        if ((shortDecimals & tested) != tested
            || !parse.storeShortDecimalRow(record, found, fieldCount, shortDecimals, row, ignoreColumnCount))
            return RunStep::Leave;
        ++row;
        return row < rows ? RunStep::Take : RunStep::TakeLast;
    };
    recordCount += run(note, storeRow);
    return row;
}

// Goes through the plain records that come next. Each field goes to
// onField(begin, length, index, shortDecimal), which may refuse it; each
// whole record to onRecord(begin, end), end being the delimiter that
// completes it or its line end, which takes it (Take), takes it as the last
// (TakeLast) or leaves it (Leave). The run ends there, and at anything that
// is not a plain record; reading goes on after the last record taken.
// Returns the number taken.
template <class OnField, class OnRecord>
int PlainRecords::run(OnField onField, OnRecord onRecord)
{
    const char* start = input.available(); // refills an empty block first
    const char* const blockEnd = input.availableEnd();
    if (!syntax.plainRecords || !startsPlainRecord(start))
        return 0;
    Run run{blockEnd, fieldsNeeded(), start, start, 0, start, 0};
    for (const char* chunk = start; chunk && blockEnd - chunk >= 16;)
        chunk = scanChunk(run, chunk, onField, onRecord);
    input.skipTo(run.done);
    return run.taken;
}

// Takes the fields and records that end at the stopping bytes among the 16
// at chunk. Returns the 16 bytes to look at next: those after chunk, or
// those where the next record starts when that lies beyond the bytes that
// stop in these; nullptr once the run is over.
template <class OnField, class OnRecord>
const char* PlainRecords::scanChunk(Run& run, const char* chunk, OnField& onField, OnRecord& onRecord)
{
    for (unsigned mask = stops.in16(chunk); mask != 0; mask &= mask - 1) {
        const char* end = chunk + __builtin_ctz(mask);
        if (!takeField(run, end, onField))
            return nullptr;
        if (*end == delimiter && run.found < run.needed) {
            run.fieldStart = end + 1;
            continue;
        }
        const char* next = nextRecord(run, end);
        if (!next)
            return nullptr;
        const RunStep step = onRecord(run.recordStart, end);
        if (step == RunStep::Leave)
            return nullptr;
        ++run.taken;
        run.done = next;
        if (step == RunStep::TakeLast || !startsPlainRecord(next))
            return nullptr;
        run.recordStart = run.fieldStart = next;
        run.found = 0;
        if (next > end + 1) // past bytes whose bits are still in the mask
            return next;
    }
    return chunk + 16;
}

// The field that ends at end goes to onField. False ends the run: at a run
// of delimiters, a record too long for the buffer, or a field refused.
template <class OnField>
bool PlainRecords::takeField(Run& run, const char* end, OnField& onField)
{
    if (end == run.fieldStart || end - run.recordStart >= size - 1)
        return false;
    const long long length = end - run.fieldStart;
    // The field lies in the block, whose padding covers every load of the
    // test and of the converter behind it.
    const bool shortDecimal =
        length < 16 && HxCSVNumbers::paddedIsShortDecimal(run.fieldStart, static_cast<size_t>(length));
    if (!onField(run.fieldStart, static_cast<int>(length), run.found, shortDecimal))
        return false;
    ++run.found;
    return true;
}

// Where the next record starts, given that the last field of this one ended
// at end: past the rest of the line after the delimiter that completes the
// fields (fields beyond the needed ones are ignored), unless records share
// lines; past the line feed after a line end. nullptr when the record does
// not end plainly within the block.
inline const char* PlainRecords::nextRecord(const Run& run, const char* end) const
{
    const char* next = end + 1;
    if (*end == delimiter) {
        if (csv.noLineBreaks)
            return next;
        const void* lineFeed = std::memchr(next, '\n', static_cast<size_t>(run.blockEnd - next));
        return lineFeed ? static_cast<const char*>(lineFeed) + 1 : nullptr;
    }
    const char* lineFeed = (*end == '\r' && next < run.blockEnd) ? next : end;
    if (*lineFeed != '\n' || run.found < run.needed)
        return nullptr;
    return lineFeed + 1;
}

// A plain record starts with a byte that is neither special nor a comment.
bool PlainRecords::startsPlainRecord(const char* start) const
{
    return start != input.availableEnd() && !stops.stops(*start)
           && static_cast<unsigned char>(*start) != syntax.commentChar;
}

// Stores the plain records that come next with one reader for all: such a
// record is never a comment or a block break, and its fields are known. The
// record that is not plain is left for the record reader.
int Parse::storePlainRows(HxCSVInput& input, char* buffer, int row, int count, bool ignoreColumnCount,
                          long long& lineNumber, int& recordsRead)
{
    const Stops stops(syntax);
    PlainRecords plain(*this, input, stops, buffer, HxCSV::lineBufferSize);
    int length = 0;
    for (;;) {
        const int stored = plain.store(row, count, ignoreColumnCount, recordsRead);
        lineNumber += stored - row;
        row = stored;
        if (row >= count || !plain.readOne(recordsRead, length))
            return row;
        ++lineNumber;
        if (!storeShortDecimalRow(buffer, fields.data(), fields.size(), shortDecimalFields, row, ignoreColumnCount))
            storeRow(buffer, length, row, ignoreColumnCount, true, syntax.lastIndex);
        ++row;
    }
}

} // namespace hxcsv
