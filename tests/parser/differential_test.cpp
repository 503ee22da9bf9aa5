// HxCSV against the oracle of its rules (tests/oracle/ParserOracle.h) on
// random files and settings, read in blocks of every size: every bound
// target, the breaks, the header names, the exception and the record
// reader's state must agree. The BlockEnd tests put every number the record
// reader converts in place at each of the last 32 offsets of a block; the
// sanitizer builds must see no read past the block and its padding.
//
// CI parses 1500 random files; HX_DIFFERENTIAL_FILES=200000
// build/bin/parser_tests --gtest_filter='Differential.*' runs more.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "Differential.h"
#include "HxCSV.h"
#include "ParserOracle.h"

namespace {

using oracle::Binding;
using oracle::CsvSettings;

std::string describe(const oracle::CsvSettings& s, size_t block)
{
    std::string d = "delimiter \"" + s.delimiter + "\" comment \"" + s.comment + "\" break \"" + s.breakText
                    + "\" header " + std::to_string(s.header) + (s.headerFlagFirst ? " (set first)" : " (set last)")
                    + " start " + std::to_string(s.start) + " noLineBreaks " + std::to_string(s.noLineBreaks)
                    + " plainLines " + std::to_string(s.plainLines) + " ignoreColumnCount "
                    + std::to_string(s.ignoreColumnCount) + " block " + std::to_string(block)
                    + "\nbindings (kind:index:type:component:target):";
    for (const oracle::Binding& b : s.bindings)
        d += " " + std::to_string(b.kind) + ":" + std::to_string(b.index) + ":" + std::to_string(b.type) + ":"
             + std::to_string(b.component) + ":" + std::to_string(b.target);
    return visible(d);
}

struct Parser {
    struct Target {
        McDArray<float> floats;
        McDArray<double> doubles;
        McDArray<McString> texts;
        void* raw = nullptr;
        HxCSV::FloatRows rows;
        std::vector<float> rowStore;
        HxCSV::TextRows textRows;
        std::vector<QString> textStore;
        HxCSV::TextNumberMisses misses;
        ~Target() { std::free(raw); }
    };

    Parser(const std::string& path, const oracle::CsvSettings& s) : s(s), targets(s.bindings.size())
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
            const oracle::Binding& b = s.bindings[i];
            Target& t = targets[i];
            switch (b.kind) {
            case oracle::Raw: csv.addColumn(b.index, McPrimType(b.type), &t.raw); break;
            case oracle::FloatVector: csv.addColumn(b.index, &vf[b.target], b.component); break;
            case oracle::DoubleVector: csv.addColumn(b.index, &vd[b.target], b.component); break;
            case oracle::Text: csv.addColumn(b.index, &t.texts); break;
            case oracle::Float: csv.addColumn(b.index, &t.floats); break;
            case oracle::Double: csv.addColumn(b.index, &t.doubles); break;
            case oracle::Unbuffered: csv.addColumn(b.index, McPrimType(b.type)); break;
            case oracle::TextNumber: csv.addTextNumberColumn(b.index, &t.floats, &t.misses); break;
            case oracle::FloatRows: csv.addColumn(b.index, &t.rows); break;
            default: csv.addColumn(b.index, &t.textRows); break;
            }
        }
        // Vectors and caller-sized rows hold `unwritten` until written.
        csv.rowsCounted = [this](int n) {
            rows = n;
            for (int a = 0; a < 2; ++a) {
                vf[a].resize(n);
                vf[a].fill(McVec3f(oracle::unwritten, oracle::unwritten, oracle::unwritten));
                vd[a].resize(n);
                vd[a].fill(McVec3d(oracle::unwritten, oracle::unwritten, oracle::unwritten));
            }
            for (size_t i = 0; i < targets.size(); ++i) {
                const int stride = 1 + this->s.bindings[i].component; // rows apart in the caller's storage
                targets[i].rowStore.assign(static_cast<size_t>(n * stride), oracle::unwritten);
                targets[i].rows = {targets[i].rowStore.data(), stride};
                targets[i].textStore.assign(static_cast<size_t>(n), QString());
                targets[i].textRows.first = targets[i].textStore.data();
            }
        };
    }

    oracle::CsvResult parse()
    {
        oracle::CsvResult r{{"outcome", {"returned 1"}}};
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
    oracle::CsvResult targetsInto(oracle::CsvResult r) const
    {
        using oracle::text;
        for (size_t i = 0; i < s.bindings.size(); ++i) {
            const oracle::Binding& b = s.bindings[i];
            const Target& t = targets[i];
            std::vector<std::string>& values = r[oracle::key(b, i)];
            values.clear();
            const int n = b.kind == oracle::FloatVector                             ? vf[b.target].size()
                          : b.kind == oracle::DoubleVector                          ? vd[b.target].size()
                          : b.kind == oracle::Double                                ? t.doubles.size()
                          : b.kind == oracle::Text                                  ? t.texts.size()
                          : b.kind == oracle::Float || b.kind == oracle::TextNumber ? t.floats.size()
                                                                                    : rows;
            for (int row = 0; row < n && b.kind != oracle::Unbuffered; ++row) {
                const size_t size = static_cast<size_t>(McPrimType(b.type).size());
                const std::string raw = t.raw ? std::string(static_cast<const char*>(t.raw) + row * size, size) : "";
                float f = 0;
                int32_t k = 0;
                std::memcpy(&f, raw.data(), std::min(raw.size(), sizeof f));
                std::memcpy(&k, raw.data(), std::min(raw.size(), sizeof k));
                switch (b.kind) {
                case oracle::FloatVector: values.push_back(text(vf[b.target][row][b.component])); break;
                case oracle::DoubleVector: values.push_back(text(vd[b.target][row][b.component])); break;
                case oracle::Double: values.push_back(text(t.doubles[row])); break;
                case oracle::Text: values.emplace_back(t.texts[row].getString(), t.texts[row].length()); break;
                case oracle::TextRows: values.push_back(t.textStore[size_t(row)].toLatin1().toStdString()); break;
                case oracle::FloatRows: values.push_back(text(t.rowStore[size_t(row * t.rows.stride)])); break;
                case oracle::Raw: // float and int32 rows are written, others stay 0
                    values.push_back(b.type == 3 ? text(f)
                                     : b.type == 2 ? std::to_string(k)
                                     : raw == std::string(size, '\0') ? "0" : "?");
                    break;
                default: values.push_back(text(t.floats[row])); break; // Float, TextNumber
                }
            }
            if (b.kind == oracle::TextNumber)
                r[oracle::key(b, i) + " misses"] = {std::to_string(t.misses.count), std::to_string(t.misses.firstRow),
                                                    t.misses.firstText.getString()};
            if (b.kind == oracle::Unbuffered)
                r.erase(oracle::key(b, i));
        }
        for (int row : csv.verticalDelimiterRows)
            r["breaks"].push_back(std::to_string(row));
        return r;
    }

    const oracle::CsvSettings& s;
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
        s.bindings.push_back({m.pick(oracle::Kinds), m.pick(8) - 1, types[m.pick(6)], m.pick(3), m.pick(2)});
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

    // The parse in blocks of the size against the oracle's.
    bool agrees(const std::string& content, const CsvSettings& s, size_t block = 1 << 20)
    {
        const BlockSize blocks(block);
        const std::string got = oracle::describe(Parser(write(content), s).parse());
        const std::string expected = oracle::describe(oracle::Csv(content, s).parse());
        EXPECT_TRUE(got == expected) << describe(s, block) << "\nfile:\n" << visible(content.substr(0, 4000)) << "\n"
                                 << firstDifference(got, expected);
        return got == expected;
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
    const auto outcome = [](auto call) {
        try {
            return std::to_string(call()) + "\n";
        } catch (const CSVException& e) {
            return "threw " + std::to_string(e.code) + " " + e.message.getString() + "\n";
        } catch (const oracle::Failure& f) {
            return "threw " + std::to_string(f.code) + " " + f.message + "\n";
        }
    };
    FileMaker m(99);
    for (int i = 0; i < 300; ++i) {
        const CsvSettings s = randomSettings(m);
        const std::string content = m.file(layoutFor(s, m, 1 << 20));
        Parser parser(write(content), s);
        oracle::Csv expected(content, s);
        std::vector<std::string> records[2]; // HxCSV's, the oracle's
        std::string got, wanted, record;
        FILE* file = std::fopen(path.toLocal8Bit().constData(), "rb");
        char buffer[HxCSV::lineBufferSize];
        for (int r = 0, count = 0; r != -1;) {
            r = parser.csv.csvGetLine(buffer, sizeof buffer, file, count);
            records[0].emplace_back(r == -1 ? "" : buffer);
            got += std::to_string(r) + " " + std::to_string(count) + " " + std::to_string(parser.csv.joinedRecordCount)
                   + " " + records[0].back() + "\n";
        }
        std::fclose(file);
        for (int r = 0, count = 0; r != -1;) {
            r = expected.record(record, count) ? 0 : -1;
            records[1].emplace_back(r == -1 ? "" : record.c_str());
            wanted += std::to_string(r) + " " + std::to_string(count) + " " + std::to_string(expected.joined) + " "
                      + records[1].back() + "\n";
        }
        const int rows = static_cast<int>(std::min(records[0].size(), records[1].size()));
        parser.csv.rowsCounted(rows);
        parser.csv.resizeDataStorage(rows);
        expected.size(rows);
        QString marker = QString::fromLatin1(s.comment.c_str()), breakText = QString::fromLatin1(s.breakText.c_str());
        for (int row = 0; row < rows; ++row) {
            QString text = QString::fromLatin1(records[0][static_cast<size_t>(row)].c_str());
            const bool ignore = s.ignoreColumnCount;
            got += outcome([&] { return parser.csv.processLine(&text, &marker, &breakText, row, ignore); });
            wanted += outcome([&] { return expected.store(records[1][static_cast<size_t>(row)], row); });
        }
        got += oracle::describe(parser.targetsInto({}));
        wanted += oracle::describe(expected.result);
        EXPECT_TRUE(got == wanted) << describe(s, 0) << "\nfile:\n" << visible(content.substr(0, 4000)) << "\n"
                                   << firstDifference(got, wanted);
        if (got != wanted)
            break;
    }
}

// Records that end just inside, at or past the 2047 bytes a record holds,
// at a delimiter, a line end of either kind or the end of the file.
TEST_F(Differential, RecordsAroundTheBufferSize)
{
    CsvSettings s;
    s.bindings = {{oracle::Float, 0, 3, 0, 0}, {oracle::Text, 1, 3, 0, 0}, {oracle::Double, 2, 3, 0, 0}};
    for (const char* end : {"\n", "\r\n", ",\n", ",9\n", ""})
        for (bool noLineBreaks : {false, true})
            for (size_t length = 2040; length < 2052; ++length) {
                s.noLineBreaks = noLineBreaks;
                agrees(std::string(length - 7, '0') + "1.5,2,3" + end + "4,5,6\n", s);
            }
}

// Rules that random files seldom reach, one a row.
TEST_F(Differential, RareRules)
{
    using oracle::Float;
    const struct {
        const char* guards; // against
        const char* content;
        const char* comment;
        bool plainLines, ignoreColumnCount;
        std::vector<Binding> bindings;
    } rows[] = {
        {"a tab after a text number taken for a miss", "1.5\t,2\n7\t\n", "", true, false,
         {{oracle::TextNumber, 0, 3, 0, 0}}},
        {"bindings past a short record's end not given its first field", "1,2\n3,4\n", "", false, true,
         {{Float, 1, 3, 0, 0}, {Float, 0, 3, 0, 0}, {Float, 1, 3, 0, 0}, {oracle::Double, 1, 3, 0, 0}}},
        {"the end-of-file line number (the passes test comments differently)", "1\n/x\n2\n", "//", true, false,
         {{Float, 0, 3, 0, 0}}},
    };
    for (const auto& row : rows) {
        CsvSettings s;
        s.comment = row.comment;
        s.plainLines = row.plainLines;
        s.ignoreColumnCount = row.ignoreColumnCount;
        s.bindings = row.bindings;
        SCOPED_TRACE(row.guards);
        agrees(row.content, s);
    }
}

// The examples as their importers read them (a point cloud: three
// coordinates, a value and a text or number; a line set: one column and
// breaks), and runs of 16-byte plain records, in blocks of every size up
// to 70 bytes; then with random settings.
TEST_F(Differential, ExampleFilesAndPlainRunsAtEveryBlockEnd)
{
    FileMaker m(7);
    std::vector<std::string> files;
    for (const QString& name : QDir(HX_SOURCE_DIR "/examples").entryList({"*.csv"}, QDir::Files)) {
        QFile file(HX_SOURCE_DIR "/examples/" + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        files.push_back(file.readAll().toStdString());
    }
    ASSERT_EQ(files.size(), 3u);
    files.push_back("x,y,z,val,wvals\n");
    for (int row = 0; row < 60; ++row)
        files.back() += "1,2,3,4,5.67890\n";
    files.back() += "2.5,1,1,1,1"; // the file ends inside the last block's last record
    CsvSettings cloud, lineSet;
    cloud.header = true;
    cloud.comment = lineSet.comment = "#";
    using oracle::FloatVector;
    cloud.bindings = {{FloatVector, 0, 3, 0, 0}, {FloatVector, 1, 3, 1, 0}, {FloatVector, 2, 3, 2, 0},
                      {oracle::TextNumber, 3, 3, 0, 0}, {oracle::FloatRows, 4, 3, 2, 0}};
    lineSet.breakText = "END";
    lineSet.noLineBreaks = true;
    lineSet.bindings = {{oracle::Float, 0, 3, 0, 0}};
    for (const std::string& content : files) {
        SCOPED_TRACE(content.substr(0, content.find('\n')));
        for (const CsvSettings& s : {cloud, lineSet})
            for (size_t block = 1; block <= 70; ++block)
                agrees(content.substr(0, content.rfind('\n', 3000) + 1), s, block);
        cloud.bindings[4].kind = oracle::TextRows;
        for (int i = 0; i < 20; ++i)
            agrees(content, i < 2 ? (i ? cloud : lineSet) : randomSettings(m));
        cloud.bindings[4].kind = oracle::FloatRows;
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
    s.bindings = {{oracle::TextRows, 1, 3, 0, 0}};
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
        s.bindings = {{oracle::Float, 0, 3, 0, 0}, {oracle::Float, 1, 3, 0, 0}, {oracle::Double, 1, 3, 0, 0},
                      {oracle::FloatRows, 1, 3, 0, 0}, {oracle::TextNumber, 1, 3, 0, 0}};
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
