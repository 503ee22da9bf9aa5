// The CSV parser on any bytes with any settings. The first bytes of an input
// choose the settings, the bindings and the read-block size (so that block
// ends fall everywhere); the rest is the file. A CSVException is an answer;
// anything a sanitizer sees is a finding.
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <vector>

#include "HxCSV.h"
#include "HxCSVInput.h"
#include "MemoryFile.h"

namespace {

const char* const delimiters[] = {" ", ",", "\\s", ".", "\t", ";", "\"", "", "ab", ",,", "\n", "|"};
const char* const comments[] = {"", "#", "//", "%", "1", ","};
const char* const breaks[] = {"", "END", "-", "--", ">", "1"};

template <size_t N>
const char* pick(const char* const (&table)[N], uint8_t byte)
{
    return table[byte % N];
}

// Settings bytes, in order: delimiter, comment, break, flags, start line,
// block size, binding count, then two bytes a binding (kind, column).
struct Header {
    static constexpr size_t fixedBytes = 7;
    const uint8_t* bytes;
    size_t size;
    uint8_t at(size_t i) const { return i < size ? bytes[i] : 0; }
    bool flag(int bit) const { return at(3) >> bit & 1; }
    int bindingCount() const { return at(6) % 8; }
    size_t length() const { return std::min(size, fixedBytes + 2 * static_cast<size_t>(bindingCount())); }
    // Mostly small columns, now and then past the 64 the fast paths track.
    int column(int i) const
    {
        const uint8_t b = at(fixedBytes + 2 * i + 1);
        return (b & 0x80) ? 60 + (b & 15) : static_cast<int>(b % 12) - 1;
    }
    int kind(int i) const { return at(fixedBytes + 2 * i) % 13; }
    size_t blockSize() const { return at(5) == 0 ? size_t(1) << 20 : at(5) * 7u - 6u; }
};

// Every kind of target the parser fills, kept alive for one parse.
struct Targets {
    std::deque<void*> raw; // the parser keeps their addresses
    std::deque<McDArray<McVec3<float>>> vec3f;
    std::deque<McDArray<McVec3<double>>> vec3d;
    std::deque<McDArray<McString>> texts;
    std::deque<McDArray<float>> floats;
    std::deque<McDArray<double>> doubles;
    std::deque<HxCSV::TextNumberMisses> misses;
    std::deque<HxCSV::FloatRows> floatRows;
    std::deque<HxCSV::TextRows> textRows;
    std::vector<float> floatStorage;
    std::vector<QString> textStorage;

    ~Targets()
    {
        for (void* p : raw)
            std::free(p);
    }

    void bind(HxCSV& csv, int kind, int column)
    {
        switch (kind) {
        case 0: case 1: case 2:
            raw.push_back(nullptr);
            csv.addColumn(column, McPrimType(kind == 0 ? 3 : kind == 1 ? 2 : 4), &raw.back());
            break;
        case 3: csv.addColumn(column, McPrimType(3)); break;
        case 4: csv.addColumn(column, &vec3f.emplace_back(), column & 3); break;
        case 5: csv.addColumn(column, &vec3d.emplace_back(), column % 3); break;
        case 6: csv.addColumn(column, &texts.emplace_back()); break;
        case 7: csv.addColumn(column, &floats.emplace_back()); break;
        case 8: csv.addColumn(column, &doubles.emplace_back()); break;
        case 9: csv.addTextNumberColumn(column, &floats.emplace_back(), &misses.emplace_back()); break;
        case 10: csv.addColumn(column, &floatRows.emplace_back()); break;
        case 11: csv.addTextNumberColumn(column, &floatRows.emplace_back(), &misses.emplace_back()); break;
        default: csv.addColumn(column, &textRows.emplace_back()); break;
        }
    }

    // Storage for the caller-sized bindings: three floats a row, so a stride
    // of 3 and offsets within it.
    void size(int rows)
    {
        floatStorage.assign(3 * static_cast<size_t>(rows) + 3, 0.0f);
        textStorage.assign(static_cast<size_t>(rows), QString());
        int i = 0;
        for (HxCSV::FloatRows& r : floatRows) {
            r.first = floatStorage.data() + (i++ % 3);
            r.stride = 3;
        }
        for (HxCSV::TextRows& r : textRows)
            r.first = textStorage.data();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFile file;
    const Header h{data, size};
    const size_t headerLength = h.length();
    const std::string& path = file.hold(data + headerLength, size - headerLength);

    HxCSV csv;
    csv.setFileName(path.c_str());
    csv.setCommentMarker(pick(comments, h.at(1)));
    // The start line moves past a header only when the flag is set first.
    if (h.flag(1))
        csv.setFirstRowContainsColumnNames(h.flag(0));
    csv.setDataStartLineNum(static_cast<int>(h.at(4) % 8) - 1);
    if (!h.flag(1))
        csv.setFirstRowContainsColumnNames(h.flag(0));
    csv.setColumnDelimiter(pick(delimiters, h.at(0)));
    csv.setVerticalDelimiter(pick(breaks, h.at(2)));
    csv.setNoLineBreaks(h.flag(2));
    Targets targets;
    for (int i = 0; i < h.bindingCount(); ++i)
        targets.bind(csv, h.kind(i), h.column(i));
    csv.rowsCounted = [&targets](int rows) { targets.size(rows); };

    HxCSVInput::largestBlock = h.blockSize();
    try {
        csv.parse(h.flag(3), h.flag(4));
        for (int i = 0; i < csv.columnNames.size() + 1; ++i)
            csv.getColumnName(i);
    } catch (const CSVException&) {
    }
    return 0;
}
