// HxCSV against the oracle of its rules (tests/oracle/ParserOracle.h) on
// random files and settings, read in blocks of every size. The BlockEnd tests
// put every number the record reader converts in place at each of the last 32
// offsets of a block; the sanitizer builds must see no read past it.
// CI parses 1500 random files; HX_DIFFERENTIAL_FILES=200000
// build/bin/parser_tests --gtest_filter='Differential.*' runs more.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <deque>
#include <vector>

#include "Differential.h"
#include "HxCSV.h"
#include "ParserOracle.h"

namespace {

using namespace oracle;

std::string settingsText(const CsvSettings& s, size_t block)
{
    char flags[200];
    std::snprintf(flags, sizeof flags, "\" header %d (set %s) start %d noLineBreaks %d plainLines %d "
                  "ignoreColumnCount %d block %zu\nbindings {kind, index, type, component, target}:", s.header,
                  s.headerFlagFirst ? "first" : "last", s.start, s.noLineBreaks, s.plainLines, s.ignoreColumnCount,
                  block);
    std::string d = "delimiter \"" + s.delimiter + "\" comment \"" + s.comment + "\" break \"" + s.breakText + flags;
    for (const Binding& b : s.bindings)
        d += " {" + std::to_string(b.kind) + ", " + std::to_string(b.index) + ", " + std::to_string(b.type) + ", "
             + std::to_string(b.component) + ", " + std::to_string(b.target) + "}";
    return visible(d);
}

// HxCSV bound as the settings say; its targets read back as the oracle
// writes its own.
struct Parser {
    struct Target {
        McDArray<float> floats;
        McDArray<double> doubles;
        McDArray<McString> texts;
        void* raw = nullptr; // or the caller's own, which the parse must grow
        HxCSV::FloatRows rows;
        std::vector<float> rowStore;
        HxCSV::TextRows textRows;
        std::vector<QString> textStore;
        HxCSV::TextNumberMisses misses;
        ~Target() { std::free(raw); }
    };

    Parser(const std::string& path, const CsvSettings& s) : s(s), targets(s.bindings.size())
    {
        csv.setFileName(path.c_str());
        csv.setCommentMarker(s.comment.c_str());
        if (s.headerFlagFirst)
            csv.setFirstRowContainsColumnNames(s.header);
        csv.setDataStartLineNum(s.start);
        csv.setFirstRowContainsColumnNames(s.header);
        csv.setColumnDelimiter(s.delimiter.c_str());
        csv.setVerticalDelimiter(s.breakText.c_str());
        csv.setNoLineBreaks(s.noLineBreaks);
        for (size_t i = 0; i < s.bindings.size(); ++i) {
            const Binding& b = s.bindings[i];
            Target& t = targets[i];
            t.raw = b.kind == Raw && i % 2 ? std::malloc(8) : nullptr;
            switch (b.kind) {
            case Raw: csv.addColumn(b.index, McPrimType(b.type), &t.raw); break;
            case FloatVector: csv.addColumn(b.index, &vf[b.target], b.component); break;
            case DoubleVector: csv.addColumn(b.index, &vd[b.target], b.component); break;
            case Text: csv.addColumn(b.index, &t.texts); break;
            case Float: csv.addColumn(b.index, &t.floats); break;
            case Double: csv.addColumn(b.index, &t.doubles); break;
            case Unbuffered: csv.addColumn(b.index, McPrimType(b.type)); break;
            case TextNumber: csv.addTextNumberColumn(b.index, &t.floats, &t.misses); break;
            case FloatRows: csv.addColumn(b.index, &t.rows); break;
            default: csv.addColumn(b.index, &t.textRows); break;
            }
        }
        // Vectors and caller-sized rows hold `unwritten` until written.
        csv.rowsCounted = [this](int n) {
            rows = n;
            for (int a = 0; a < 2; ++a) {
                vf[a].resize(n);
                vf[a].fill(McVec3f(unwritten, unwritten, unwritten));
                vd[a].resize(n);
                vd[a].fill(McVec3d(unwritten, unwritten, unwritten));
            }
            for (size_t i = 0; i < targets.size(); ++i) {
                const int stride = 1 + this->s.bindings[i].component; // rows apart in the caller's storage
                targets[i].rowStore.assign(static_cast<size_t>(n * stride), unwritten);
                targets[i].rows = {targets[i].rowStore.data(), stride};
                targets[i].textStore.assign(static_cast<size_t>(n), QString());
                targets[i].textRows.first = targets[i].textStore.data();
            }
        };
    }

    CsvResult parse()
    {
        CsvResult r{{"outcome", {"returned 1"}}};
        try {
            csv.parse(s.ignoreColumnCount, s.plainLines);
        } catch (const CSVException& e) {
            r["outcome"] = {"threw " + std::to_string(e.code) + " " + e.message.getString()};
        }
        r["joined"] = {std::to_string(csv.joinedRecordCount), std::to_string(csv.recordContinued)};
        for (const McString& name : csv.columnNames)
            r["names"].emplace_back(name.getString(), name.length());
        return targetsInto(r);
    }

    // The targets' rows as text (arrays as long as the parser made them),
    // and the breaks.
    CsvResult targetsInto(CsvResult r) const
    {
        for (size_t i = 0; i < s.bindings.size(); ++i) {
            const Binding& b = s.bindings[i];
            const Target& t = targets[i];
            std::vector<std::string>& values = r[key(b, i)];
            values.clear();
            const int n = b.kind == FloatVector ? vf[b.target].size() : b.kind == DoubleVector ? vd[b.target].size()
                          : b.kind == Double    ? t.doubles.size()    : b.kind == Text         ? t.texts.size()
                          : b.kind == Float || b.kind == TextNumber ? t.floats.size() : rows;
            const size_t size = static_cast<size_t>(McPrimType(b.type).size());
            for (int row = 0; row < n && b.kind != Unbuffered; ++row) {
                const char* raw = t.raw ? static_cast<const char*>(t.raw) + row * size : nullptr;
                float f = 0;
                int32_t k = 0;
                if (raw && size >= 4) {
                    std::memcpy(&f, raw, 4);
                    std::memcpy(&k, raw, 4);
                }
                switch (b.kind) {
                case FloatVector: values.push_back(text(vf[b.target][row][b.component])); break;
                case DoubleVector: values.push_back(text(vd[b.target][row][b.component])); break;
                case Double: values.push_back(text(t.doubles[row])); break;
                case Text: values.emplace_back(t.texts[row].getString(), t.texts[row].length()); break;
                case TextRows: values.push_back(t.textStore[size_t(row)].toLatin1().toStdString()); break;
                case FloatRows: values.push_back(text(t.rowStore[size_t(row * t.rows.stride)])); break;
                case Raw: // float and int32 rows are written, others stay 0
                    values.push_back(b.type == 3   ? text(f)
                                     : b.type == 2 ? std::to_string(k)
                                     : raw && std::string(raw, size) == std::string(size, '\0') ? "0" : "?");
                    break;
                default: values.push_back(text(t.floats[row])); break; // Float, TextNumber
                }
            }
            if (b.kind == TextNumber)
                r[key(b, i) + " misses"] = {std::to_string(t.misses.count), std::to_string(t.misses.firstRow),
                                            t.misses.firstText.getString()};
            if (b.kind == Unbuffered)
                r.erase(key(b, i));
        }
        for (int row : csv.verticalDelimiterRows)
            r["breaks"].push_back(std::to_string(row));
        return r;
    }

    const CsvSettings& s;
    HxCSV csv;
    std::deque<Target> targets;
    McDArray<McVec3f> vf[2];
    McDArray<McVec3d> vd[2];
    int rows = 0;
};

CsvSettings randomSettings(FileMaker& m)
{
    static const char* delimiters[] = {",", " ", ";", "\t", "\\s", ".", "ab", "", "\"", "|", "e", "-", "\xa0", ",;"};
    static const char* comments[] = {"", "#", "//", "E", "%", "1"};
    static const char* breaks[] = {"END", "-", ">", "#", "E", "1"};
    static const int types[] = {0, 1, 7, 2, 3, 4};
    const bool usual = m.pick(2); // as the importers set it up
    CsvSettings s;
    s.delimiter = delimiters[usual ? m.pick(5) : m.pick(14)];
    s.comment = comments[usual ? m.pick(2) : m.pick(6)];
    s.breakText = m.pick(3) ? "" : breaks[usual ? 0 : m.pick(6)];
    s.header = m.pick(4) == 0;
    s.headerFlagFirst = m.pick(4) != 0;
    s.start = m.pick(3) ? 1 : m.pick(6) - 1;
    s.noLineBreaks = m.pick(3) == 0;
    s.plainLines = m.pick(6) == 0;
    s.ignoreColumnCount = m.pick(4) == 0;
    for (int i = m.pick(4) ? 1 + m.pick(5) : m.pick(8); i > 0; --i)
        s.bindings.push_back({m.pick(Kinds), m.pick(8) - 1, types[m.pick(6)], m.pick(3), m.pick(2)});
    return s;
}

Layout layoutFor(const CsvSettings& s, FileMaker& m, size_t block)
{
    int fields = 1;
    for (const Binding& b : s.bindings)
        fields = std::max(fields, b.index + 1);
    return {s.delimiter, s.comment, s.breakText, fields + (m.pick(3) ? 0 : m.pick(3)), block, 2047};
}

class Differential : public ::testing::Test {
protected:
    std::string write(const std::string& content)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content.data(), static_cast<qint64>(content.size()));
        return path.toStdString();
    }

    bool same(const std::string& got, const std::string& expected, const std::string& content,
              const CsvSettings& s, size_t block)
    {
        EXPECT_TRUE(got == expected) << settingsText(s, block) << "\nfile:\n" << visible(content.substr(0, 4000))
                                     << "\n" << firstDifference(got, expected);
        return got == expected;
    }

    // The parse in blocks of the size against the oracle's.
    bool agrees(const std::string& content, const CsvSettings& s, size_t block = 1 << 20)
    {
        const BlockSize blocks(block);
        return same(describe(Parser(write(content), s).parse()), describe(Csv(content, s).parse()),
                    content, s, block);
    }

    QTemporaryDir dir;
    QString path = dir.filePath("data.csv");
};

// Blocks of a few bytes, a few kilobytes and the real size; records laid
// out to end at each of the last 32 offsets of the small ones.
TEST_F(Differential, RandomFiles)
{
    FileMaker m(20240611);
    int failures = 0;
    for (long long i = runCount("HX_DIFFERENTIAL_FILES", 1500); i > 0 && failures < 5; --i) {
        const CsvSettings s = randomSettings(m);
        const size_t block = m.pick(3) == 0 ? 1 << 20 : m.pick(2) ? 1 + m.pick(64) : 64 + m.pick(4096);
        failures += !agrees(m.file(layoutFor(s, m, block)), s, block);
    }
}

// csvGetLine on a C stream, record by record, and processLine on each
// record, as callers other than parse use them.
TEST_F(Differential, RecordReaderAndRowsOnTheirOwn)
{
    const auto outcome = [](auto call) -> std::string {
        try {
            return std::to_string(call()) + "\n";
        } catch (const CSVException& e) {
            return "threw " + std::to_string(e.code) + " " + e.message.getString() + "\n";
        } catch (const Failure& f) {
            return "threw " + std::to_string(f.code) + " " + f.message + "\n";
        }
    };
    FileMaker m(99);
    for (int i = 0; i < 300; ++i) {
        const CsvSettings s = randomSettings(m);
        const std::string content = m.file(layoutFor(s, m, 1 << 20));
        Parser parser(write(content), s);
        Csv expected(content, s);
        FILE* file = std::fopen(path.toLocal8Bit().constData(), "rb");
        char buffer[HxCSV::lineBufferSize];
        std::string record, log[2]; // HxCSV's, the oracle's
        std::vector<std::string> records[2]; // and an empty one at the end of the file
        for (int side = 0; side < 2; ++side)
            for (int r = 0, count = 0; r != -1;) {
                r = side ? (expected.record(record, count) ? 0 : -1)
                         : parser.csv.csvGetLine(buffer, sizeof buffer, file, count);
                records[side].emplace_back(r == -1 ? "" : side ? record.c_str() : buffer);
                log[side] += std::to_string(r) + " " + std::to_string(count) + " "
                             + std::to_string(side ? expected.joined : parser.csv.joinedRecordCount) + " "
                             + records[side].back() + "\n";
            }
        std::fclose(file);
        const int rows = static_cast<int>(std::min(records[0].size(), records[1].size()));
        parser.csv.rowsCounted(rows);
        parser.csv.resizeDataStorage(rows);
        expected.size(rows);
        QString marker = QString::fromLatin1(s.comment.c_str()), breakText = QString::fromLatin1(s.breakText.c_str());
        for (int row = 0; row < rows; ++row) {
            QString text = QString::fromLatin1(records[0][size_t(row)].c_str());
            const bool ignore = s.ignoreColumnCount;
            log[0] += outcome([&] { return parser.csv.processLine(&text, &marker, &breakText, row, ignore); });
            log[1] += outcome([&] { return expected.store(records[1][size_t(row)], row); });
        }
        if (!same(log[0] + describe(parser.targetsInto({})), log[1] + describe(expected.result), content, s, 0))
            break;
    }
}

// Rules that random files seldom reach, and rules that surprise a reader of
// CSV, one a row.
TEST_F(Differential, RareRules)
{
    enum { Join = 1, Plain = 2, IgnoreCount = 4 };
    const std::vector<Binding> f0 = {{Float, 0, 3, 0, 0}}, f01 = {{Float, 0, 3, 0, 0}, {Float, 1, 3, 0, 0}};
    const struct {
        const char* guards; // against
        const char *content, *delimiter, *comment, *breakText;
        int flags;
        std::vector<Binding> bindings;
        size_t block = 1 << 20;
    } rows[] = {
        {"a tab after a text number taken for a miss", "1.5\t,2\n7\t\n", ",", "", "", Plain,
         {{TextNumber, 0, 3, 0, 0}}},
        {"bindings past a short record's end not given its first field", "1,2\n3,4\n", ",", "", "", IgnoreCount,
         {{Float, 1, 3, 0, 0}, {Float, 0, 3, 0, 0}, {Float, 1, 3, 0, 0}, {Double, 1, 3, 0, 0}}},
        {"the end-of-file line number (the passes test comments differently)", "1\n/x\n2\n", ",", "//", "", Plain, f0},
        {"the counting and the reading pass disagree on a comment", "1\naX\n", " ", "ab", "", Plain, f0},
        {"a short line is continued by the next", "1 2\n3\n", " ", "", "", 0, {f01[0], f01[1], {Float, 2, 3, 0, 0}}},
        {"a tab that does not delimit vanishes", "1\t2 3\n", " ", "", "", 0, f01},
        {"a field that fails the test conversion re-joins", "a 1 2 3\n", " ", "", "", Join, f0},
        {"breaks count records, as line sets need", "0 0 0 7\n1 1 1 8\nEND\n2 2 2 9\n", " ", "", "END", Join, f0},
        {"a break before any record makes none", "END\n1\n2\n", " ", "", "END", Join, f0},
        {"break text inside a line ends the record", "1 2END\n3 4\n", " ", "", "END", 0, f01},
        {"an index past a short record counts lines from 0", "1 2\n", " ", "", "", IgnoreCount,
         {f0[0], {Float, 3, 3, 0, 0}}},
        {"raw buffers of an empty file", "\n \n", " ", "", "", 0, {{Raw, 0, 3, 0, 0}, {Raw, 1, 2, 0, 0}}},
        {"a field that only a binding past the record's end names still tried", "1,x\n2,3\n4,5\n6,7\n8,9\n", ",", "",
         "", IgnoreCount, {f0[0], f0[0], f01[1]}}, // 16 bytes and more: read as plain records
        {"a ':' taken for a digit, the byte after '9'", "1,2:5\n3,4\n5,6\n7,8\n", ",", "", "", 0, f01},
        {"a line feed looked for past a CR that ends the file's last block", // a stale one lies there
         "0000000000000001\n00000000000001\n000000000000002\r", ",", "", "", 0, f0, 32},
    };
    for (const auto& row : rows) {
        CsvSettings s;
        s.delimiter = row.delimiter;
        s.comment = row.comment;
        s.breakText = row.breakText;
        s.noLineBreaks = row.flags & Join;
        s.plainLines = row.flags & Plain;
        s.ignoreColumnCount = row.flags & IgnoreCount;
        s.bindings = row.bindings;
        SCOPED_TRACE(row.guards);
        agrees(row.content, s, row.block);
    }
}

// Text rows share the data of equal texts, as far as the first 4096
// distinct ones; later ones are kept all the same.
TEST_F(Differential, TextRowsShareEqualTexts)
{
    std::string content;
    for (int row = 0; row < 10000; ++row)
        content += "1,\"" + std::to_string(row % 5000) + "\"\n";
    CsvSettings s;
    s.bindings = {{TextRows, 1, 3, 0, 0}};
    ASSERT_TRUE(agrees(content, s));
    Parser parser(write(content), s);
    parser.parse();
    const std::vector<QString>& rows = parser.targets[0].textStore;
    for (size_t row = 0; row < rows.size(); ++row)
        EXPECT_EQ(rows[row].constData() == rows[row % 5000].constData(), row < 5000 || row % 5000 < 4096) << row;
}

// Records "1,SHAPE" of the shapes given, the n-th ending n % 32 bytes
// before the end of a block, parsed with column 1 bound as a float, a
// double, caller-sized rows and a text number: the bindings the record
// reader converts in place in the block.
class BlockEnd : public Differential {
protected:
    void sweep(const std::vector<std::string>& shapes, size_t block, const std::string& lineEnd)
    {
        FileMaker m(1);
        std::string content;
        for (const std::string& shape : shapes) {
            m.alignEnd(content, shape.size() + 2 + lineEnd.size(), {",", "", "", 2, block, 2047, true});
            content += "1," + shape + lineEnd;
        }
        CsvSettings s;
        s.bindings = {{Float, 0, 3, 0, 0}, {Float, 1, 3, 0, 0}, {Double, 1, 3, 0, 0}, {FloatRows, 1, 3, 0, 0},
                      {TextNumber, 1, 3, 0, 0}};
        agrees(content + "1,-1.5\n1,-1.5\n", s, block); // no block ends with the file
    }
};

// Small blocks: a sign or none, 1 to 8 digits, no point or a point with 0
// to 8 digits, an exponent or none; LF and CRLF line ends.
TEST_F(BlockEnd, EveryShapeAtEachOfTheLast32OffsetsOfSmallBlocks)
{
    std::vector<std::string> shapes;
    for (const char* sign : {"", "-", "+"})
        for (int whole = 1; whole <= 8; ++whole)
            for (int fraction = -1; fraction <= 8; ++fraction)
                for (const char* exponent : {"", "e-3"})
                    shapes.insert(shapes.end(), 32, sign + std::string("98765432", whole)
                                  + (fraction < 0 ? "" : "." + std::string("12345678", fraction)) + exponent);
    for (size_t block : {64u, 1000u})
        for (const char* lineEnd : {"\n", "\r\n"})
            sweep(shapes, block, lineEnd);
}

// The real block: the shapes whose loads reach furthest past their end.
TEST_F(BlockEnd, WidestShapesAtEachOfTheLast32OffsetsOfRealBlocks)
{
    const std::string widest[] = {"-12345678.12345678", "+9.87654321", "-1", "5.", "-1e-3", "12345678", "1",
                                  "-98765432.1"};
    std::vector<std::string> shapes;
    for (int offset = 0; offset < 32; ++offset)
        shapes.push_back(widest[offset % 8]);
    sweep(shapes, HxCSVInput::largestBlock, "\n");
}

} // namespace
