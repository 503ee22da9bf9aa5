// The CSV parser on any bytes with any settings. The first bytes of an input
// choose the settings, the bindings and the read-block size (so that block
// ends fall everywhere); the rest is the file. A CSVException is an answer;
// anything a sanitizer sees is a finding.
#include <cstdlib>
#include <deque>
#include <iterator>
#include <vector>

#include "HxCSV.h"
#include "HxCSVInput.h"
#include "MemoryFile.h"

namespace {

const char* const delimiters[] = {" ", ",", "\\s", ".", "\t", ";", "\"", "", "ab", ",,", "\n", "|"};
const char* const comments[] = {"", "#", "//", "%", "1", ","};
const char* const breaks[] = {"", "END", "-", "--", ">", "1"};

// Every kind of target the parser fills, kept alive for one parse (the
// parser keeps their addresses).
struct Targets {
    std::deque<void*> raw;
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
            csv.addColumn(column, McPrimType(kind == 0 ? 3 : kind == 1 ? 2 : 4), &raw.emplace_back());
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
        for (HxCSV::FloatRows& r : floatRows)
            r = {floatStorage.data() + (i++ % 3), 3};
        for (HxCSV::TextRows& r : textRows)
            r.first = textStorage.data();
    }
};

} // namespace

// Settings bytes, in order: delimiter, comment, break, flags, start line,
// block size, binding count, then two bytes a binding (kind, column).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFile file;
    const auto at = [&](size_t i) -> uint8_t { return i < size ? data[i] : 0; };
    const auto flag = [&](int bit) -> bool { return at(3) >> bit & 1; };
    const int bindings = at(6) % 8;
    const size_t header = std::min(size, 7 + 2 * static_cast<size_t>(bindings));
    HxCSV csv;
    csv.setFileName(file.hold(data + header, size - header).c_str());
    csv.setCommentMarker(comments[at(1) % std::size(comments)]);
    // The start line moves past a header only when the flag is set first.
    if (flag(1))
        csv.setFirstRowContainsColumnNames(flag(0));
    csv.setDataStartLineNum(static_cast<int>(at(4) % 8) - 1);
    if (!flag(1))
        csv.setFirstRowContainsColumnNames(flag(0));
    csv.setColumnDelimiter(delimiters[at(0) % std::size(delimiters)]);
    csv.setVerticalDelimiter(breaks[at(2) % std::size(breaks)]);
    csv.setNoLineBreaks(flag(2));
    Targets targets;
    for (int i = 0; i < bindings; ++i) {
        // Mostly small columns, now and then past the 64 the fast paths track.
        const uint8_t column = at(8 + 2 * i);
        targets.bind(csv, at(7 + 2 * i) % 13, (column & 0x80) ? 60 + (column & 15) : static_cast<int>(column % 12) - 1);
    }
    csv.rowsCounted = [&targets](int rows) { targets.size(rows); };

    HxCSVInput::largestBlock = at(5) == 0 ? size_t(1) << 20 : at(5) * 7u - 6u;
    try {
        csv.parse(flag(3), flag(4));
        for (int i = 0; i < csv.columnNames.size() + 1; ++i)
            csv.getColumnName(i);
    } catch (const CSVException&) {
    }
    return 0;
}
