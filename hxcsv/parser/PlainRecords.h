#pragma once
// The fast path of record reading: the common record taken straight from
// the input block, many at a time. Hands each record's fields, and which of
// them are known short decimals, to the row storage (Rows.cpp) or, one
// record at a time, to the record reader (RecordReader.cpp). What is not a
// plain record is left to the record reader; the result is the same either
// way.
#include <cstdint>

#include <emmintrin.h>

#include "HxCSVInput.h"
#include "HxCSVNumbers.h"
#include "Parse.h"

static_assert(HxCSVInput::padding >= HxCSVNumbers::recordPadding,
              "known short decimals are converted where they lie in the input block");

namespace hxcsv {

// The bytes that stop a run of plain text, found 16 at a time: control
// characters up to \r (all line ends and dropped bytes among them), the
// quote, the delimiter and the break character. Other control characters
// stop a run too; they are then taken one by one.
class Stops {
public:
    explicit Stops(const RecordSyntax& syntax)
        : delimiter(_mm_set1_epi8(static_cast<char>(syntax.delimiter))),
          breakChar(_mm_set1_epi8(static_cast<char>(syntax.breakChar))), special(syntax.special)
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

private:
    const __m128i lastControl = _mm_set1_epi8('\r');
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i delimiter;
    const __m128i breakChar;
    const bool* special;
};

// A plain record lies in the block, starts a line or follows the last,
// holds nothing but plain bytes and single delimiters, and ends at the
// delimiter that completes its fields or at a line feed (after a carriage
// return or not) that does. Each 16 bytes of a run are looked at once.
class PlainRecords {
public:
    // buffer, of size bytes and padded: where readOne puts a record.
    PlainRecords(Parse& parse, HxCSVInput& input, const Stops& stops, char* buffer, int size);

    // While counting: the run of plain records whose tried fields are
    // plainly numbers. True when the run held a record.
    bool count(int& recordCount);

    // The next record when it is plain and its numbers convert: copied into
    // the buffer, its fields in parse.fields, its length in length. Else
    // false, and it is left to be read byte by byte (and re-joined).
    bool readOne(int& recordCount, int& length);

    // While reading: the run of plain records whose bound fields are all
    // known short decimals, stored straight from the block (see
    // Parse::storeShortDecimalRow) from row on, up to rows. Returns the row
    // after the last stored.
    int store(int row, int rows, bool ignoreColumnCount, int& recordCount);

private:
    // What onRecord tells a run to do with a record.
    enum class RunStep { Take, TakeLast, Leave };
    struct Run;

    template <class OnField, class OnRecord>
    int run(OnField onField, OnRecord onRecord);
    template <class OnField, class OnRecord>
    const char* scanChunk(Run& run, const char* chunk, OnField& onField, OnRecord& onRecord);
    template <class OnField>
    bool takeField(Run& run, const char* end, OnField& onField);
    const char* nextRecord(const Run& run, const char* end) const;
    bool startsPlainRecord(const char* start) const;
    long long fieldsNeeded() const { return syntax.lastIndex + 1 + csv.joinedRecordCount; }

    HxCSV& csv;
    Parse& parse;
    HxCSVInput& input;
    const Stops& stops;
    char* buffer;
    const int size;
    const RecordSyntax& syntax;
    const char delimiter;
};

} // namespace hxcsv
