// HxCSV against the reference parser (tests/reference): random files and
// settings, and every example file, parsed by both. Every bound array, every
// name and field of the parser, and every exception must be the same.
//
// CI parses 1500 random files, half of them read in blocks of a few bytes
// or a few kilobytes;
// set HX_DIFFERENTIAL_FILES for more (e.g.
// HX_DIFFERENTIAL_FILES=200000 build/bin/parser_tests --gtest_filter='Differential.*').
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "HxCSV.h"
#include "Differential.h"
#include "HxCSVInput.h"
#include "NumberSpellings.h"
#include "RefHxCSV.h"

namespace {

enum Kind { Raw, FloatVector, DoubleVector, Text, Float, Double, Unbuffered };

struct Binding {
    int kind;
    int index;
    int component; // vectors
    int type;      // raw buffers
    int target;    // which of two arrays of the kind
};

struct Settings {
    std::string delimiter = ",";
    std::string comment;
    std::string breakText;
    bool header = false;
    bool headerFlagFirst = true;
    int start = 1;
    bool noLineBreaks = false;
    bool plainLines = false;
    bool ignoreColumnCount = false;
    std::vector<Binding> bindings;

    std::string describe() const
    {
        std::string s = "delimiter \"" + delimiter + "\" comment \"" + comment + "\" break \"" + breakText + "\"";
        s += " header " + std::to_string(header) + (headerFlagFirst ? " first" : " last") + " start "
             + std::to_string(start) + " noLineBreaks " + std::to_string(noLineBreaks) + " plain "
             + std::to_string(plainLines) + " ignoreCount " + std::to_string(ignoreColumnCount) + " bindings";
        for (const Binding& b : bindings)
            s += " " + std::to_string(b.kind) + ":" + std::to_string(b.index) + ":" + std::to_string(b.component)
                 + ":" + std::to_string(b.type) + ":" + std::to_string(b.target);
        return s;
    }
};

// The arrays one parse fills. Vector elements are never cleared by the
// parser, so every array starts out with room for any row count and a
// known content in it.
struct Targets {
    explicit Targets(int maxRows) : maxRows(maxRows) {}

    template <class T>
    static void prefill(McDArray<T>& array, const T& value, int rows)
    {
        array.resize(rows);
        array.fill(value);
        array.resize(0);
    }

    template <class Csv>
    void bind(Csv& csv, const std::vector<Binding>& bindings)
    {
        for (const Binding& b : bindings) {
            switch (b.kind) {
            case Raw: csv.addColumn(b.index, McPrimType(b.type), &raw[b.target]); break;
            case FloatVector:
                prefill(vf[b.target], McVec3f(-1, -2, -3), maxRows);
                csv.addColumn(b.index, &vf[b.target], b.component);
                break;
            case DoubleVector:
                prefill(vd[b.target], McVec3d(-4, -5, -6), maxRows);
                csv.addColumn(b.index, &vd[b.target], b.component);
                break;
            case Text: csv.addColumn(b.index, &t[b.target]); break;
            case Float: csv.addColumn(b.index, &f[b.target]); break;
            case Double: csv.addColumn(b.index, &d[b.target]); break;
            default: csv.addColumn(b.index, McPrimType(b.type)); break;
            }
        }
        csv.addColumn(-1, &rows); // never read; tells the row count
    }

    std::string describe(const std::vector<Binding>& bindings) const
    {
        std::string s = "rows " + std::to_string(rows.size());
        for (int i = 0; i < 2; ++i) {
            s += "\nf" + hex(f[i].dataPtr(), sizeof(float) * f[i].size());
            s += "\nd" + hex(d[i].dataPtr(), sizeof(double) * d[i].size());
            s += "\nvf" + hex(vf[i].dataPtr(), sizeof(McVec3f) * vf[i].size());
            s += "\nvd" + hex(vd[i].dataPtr(), sizeof(McVec3d) * vd[i].size());
            s += "\nt";
            for (const McString& text : t[i])
                s += std::to_string(text.length()) + ":" + text.getString() + "|";
            // The last binding of a raw buffer decides its size.
            int type = -1;
            for (const Binding& b : bindings)
                if (b.kind == Raw && b.target == i)
                    type = b.type;
            s += "\nraw";
            if (raw[i] && type >= 0)
                s += hex(raw[i], static_cast<size_t>(McPrimType(type).size()) * rows.size());
        }
        return s;
    }

    ~Targets()
    {
        std::free(raw[0]);
        std::free(raw[1]);
    }

    const int maxRows;
    McDArray<float> f[2];
    McDArray<double> d[2];
    McDArray<McString> t[2];
    McDArray<McVec3f> vf[2];
    McDArray<McVec3d> vd[2];
    void* raw[2] = {nullptr, nullptr};
    McDArray<float> rows;
};

template <class Csv>
void configure(Csv& csv, const std::string& path, const Settings& s)
{
    csv.setFileName(path.c_str());
    csv.setCommentMarker(s.comment.c_str());
    if (s.headerFlagFirst)
        csv.setFirstRowContainsColumnNames(s.header);
    csv.setDataStartLineNum(s.start);
    if (!s.headerFlagFirst)
        csv.setFirstRowContainsColumnNames(s.header);
    csv.setColumnDelimiter(s.delimiter.c_str());
    csv.setVerticalDelimiter(s.breakText.c_str());
    csv.setNoLineBreaks(s.noLineBreaks);
}

// Everything a parse leaves behind, as text.
template <class Csv, class Exception>
std::string parseAndDescribe(const std::string& path, const Settings& s, int maxRows)
{
    Csv csv;
    Targets targets(maxRows);
    configure(csv, path, s);
    targets.bind(csv, s.bindings);
    std::string out;
    try {
        out = "returned " + std::to_string(csv.parse(s.ignoreColumnCount, s.plainLines));
    } catch (const Exception& e) {
        out = "threw " + std::to_string(e.code) + " " + e.message.getString();
    }
    out += "\n" + targets.describe(s.bindings) + "\nbreaks";
    for (int row : csv.verticalDelimiterRows)
        out += " " + std::to_string(row);
    out += "\nnames";
    for (const McString& name : csv.columnNames)
        out += "|" + std::string(name.getString());
    out += "\njoined " + std::to_string(csv.joinedRecordCount) + " continued " + std::to_string(csv.recordContinued)
           + " start " + std::to_string(csv.dataStartLineNum);
    return out;
}

class Differential : public ::testing::Test {
protected:
    // Small blocks put their ends anywhere in a record.
    bool sameResults(const std::string& content, const Settings& s, size_t blockSize = 1 << 20)
    {
        const BlockSize blocks(blockSize);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        file.write(content.data(), static_cast<qint64>(content.size()));
        file.close();
        const std::string p = path.toStdString();
        const int maxRows = static_cast<int>(content.size()) + 1;
        const std::string ours = parseAndDescribe<HxCSV, CSVException>(p, s, maxRows);
        const std::string theirs = parseAndDescribe<ref::HxCSV, ref::CSVException>(p, s, maxRows);
        if (ours == theirs)
            return true;
        ADD_FAILURE() << s.describe() << "\nfile:\n" << visible(content.substr(0, 3000)) << "\n"
                      << firstDifference(ours, theirs);
        return false;
    }

    QTemporaryDir dir;
    QString path = dir.filePath("data.csv");
};

// Random files made of the pieces that matter to the parser.
class FileMaker {
public:
    explicit FileMaker(uint64_t seed) : rng(seed), numbers(seed + 1) {}

    int pick(int n) { return static_cast<int>(rng() % static_cast<uint64_t>(n)); }

    Settings settings()
    {
        static const char* delimiters[] = {",", " ", ";", "\t", "\\s", ".", "ab", "", "\"", "|", "e", "-", "\xa0", ",;"};
        static const char* comments[] = {"", "#", "//", "E", "%", "1"};
        static const char* breaks[] = {"", "END", "-", ">", "#", "E"};
        Settings s;
        s.delimiter = delimiters[pick(4) ? pick(5) : pick(14)];
        s.comment = comments[pick(6)];
        s.breakText = pick(3) ? "" : breaks[pick(6)];
        s.header = pick(4) == 0;
        s.headerFlagFirst = pick(4) != 0;
        s.start = pick(3) ? 1 : pick(6) - 1;
        s.noLineBreaks = pick(3) == 0;
        s.plainLines = pick(6) == 0;
        s.ignoreColumnCount = pick(4) == 0;
        // A raw buffer keeps one element type: bound twice with two sizes,
        // the later size would be the one allocated.
        const int rawTypes[2] = {typeCodes[pick(6)], typeCodes[pick(6)]};
        for (int i = pick(4) ? 1 + pick(5) : pick(8); i > 0; --i) {
            Binding b{pick(7), pick(8) - 1, pick(3), typeCodes[pick(6)], pick(2)};
            if (b.kind == Raw)
                b.type = rawTypes[b.target];
            s.bindings.push_back(b);
        }
        return s;
    }

    // One file in three is messy; the others mostly have the fields that
    // the bindings ask for, so that parses get far into them, and half of
    // those are plain numbers and single delimiters, the records that the
    // reader takes in one go.
    std::string file(const Settings& s)
    {
        messy = pick(3) == 0;
        plain = !messy && pick(2) == 0;
        int needed = 1;
        for (const Binding& b : s.bindings)
            needed = std::max(needed, b.index + 1);
        std::string out;
        const int lines = pick(8) == 0 ? pick(200) : pick(25);
        const int width = messy ? 1 + pick(7) : needed + (pick(2) ? 0 : pick(3));
        for (int line = 0; line < lines; ++line) {
            switch (pick(messy ? 20 : 60)) {
            case 0: out += s.comment + words(); break;
            case 1: out += s.breakText + (pick(2) ? "" : words()); break;
            case 2: break; // a blank line
            case 3: out += junkLine(); break;
            case 4: out += pick(2) ? longLine(s) : lineAtBufferSize(s, width); break;
            default: out += row(s, pick(messy ? 5 : 30) ? width : pick(9)); break;
            }
            out += lineEnd();
        }
        if (pick(4) == 0 && !out.empty())
            out.pop_back(); // no line end after the last line
        return out;
    }

    // One line of fields, or now and then of junk.
    std::string record(const Settings& s) { return pick(10) == 0 ? junkLine() : row(s, pick(9)); }

private:
    std::string delimiter(const Settings& s)
    {
        if (pick(messy ? 15 : plain ? 400 : 100) == 0)
            return std::string(1, " ,;\t.\"-"[pick(7)]);
        std::string d = s.delimiter == "\\s" ? std::string(1, " \t\v\f\xa0\x85"[pick(pick(4) ? 2 : 6)]) : s.delimiter;
        return pick(messy ? 6 : plain ? 100 : 30) == 0 ? d + d : d;
    }

    std::string field(const Settings& s)
    {
        if (plain)
            return pick(40) ? plainNumber() : nearNumber();
        if (!messy && pick(20))
            return pick(8) ? (pick(15) ? plainNumber() : nearNumber()) : words();
        switch (pick(12)) {
        case 0: return "\"" + words() + delimiter(s) + words() + "\"";
        case 1: return words();
        case 2: return "\"" + numbers.next() + (pick(2) ? "\"" : "");
        case 3: return numbers.junk();
        case 4: return std::string(1, "\"\r\0\x85"[pick(4)]);
        default: return pick(3) ? plainNumber() : numbers.next();
        }
    }

    std::string plainNumber()
    {
        char text[40];
        std::snprintf(text, sizeof text, "%.*f", pick(8), (static_cast<double>(rng() % 2000000) - 1000000) / 1000);
        return text;
    }

    // Not quite a number: what a quick look at the bytes could take for one.
    std::string nearNumber()
    {
        std::string n = plainNumber();
        const size_t at = static_cast<size_t>(pick(static_cast<int>(n.size()) + 1));
        switch (pick(6)) {
        case 0: return n.insert(at, ".");
        case 1: return n.insert(at, "-");
        case 2: return n + "e";
        case 3: return n.insert(at, "+-");
        case 4: return pick(2) ? "." : "-";
        default: return n.insert(at, 50, '0') + ".5"; // long: converted to be sure
        }
    }

    std::string row(const Settings& s, int fields)
    {
        const bool ends = pick(plain ? 40 : 8) == 0; // delimiters at the ends
        std::string out = ends ? delimiter(s) : "";
        for (int i = 0; i < fields; ++i) {
            if (i > 0)
                out += delimiter(s);
            out += field(s);
        }
        return ends ? out + delimiter(s) : out;
    }

    std::string longLine(const Settings& s)
    {
        std::string out;
        while (out.size() < 2040 + static_cast<size_t>(pick(3000)))
            out += pick(10) == 0 ? std::string(pick(300), 'x') : field(s) + delimiter(s);
        return out;
    }

    // A row of plain numbers a few bytes either side of the record buffer's
    // size, where a record stops fitting.
    std::string lineAtBufferSize(const Settings& s, int fields)
    {
        std::string out = row(s, fields);
        const size_t wanted = 2043 + static_cast<size_t>(pick(8));
        if (out.size() < wanted)
            out.insert(0, std::string(wanted - out.size(), '0')); // leading zeros keep a number
        return out;
    }

    std::string junkLine()
    {
        std::string out;
        for (int i = pick(30); i > 0; --i)
            out += static_cast<char>(pick(256));
        return out;
    }

    std::string words()
    {
        static const char* words[] = {"a", "x y", "Name", "<m>", "END", "e", "#", "--", "nan", "\"q\""};
        std::string out;
        for (int i = pick(3); i >= 0; --i)
            out += words[pick(10)];
        return out;
    }

    std::string lineEnd()
    {
        switch (pick(12)) {
        case 0: return "\r\n";
        case 1: return "\r";
        case 2: return "\n\n";
        default: return "\n";
        }
    }

    static constexpr int typeCodes[] = {0, 1, 7, 2, 3, 4};
    bool messy = false;
    bool plain = false;
    std::mt19937_64 rng;
    NumberSpellings numbers;
};

TEST_F(Differential, RandomFilesGiveTheSameResults)
{
    FileMaker maker(20240611);
    const long long n = differentialFileCount(1500);
    int failures = 0;
    for (long long i = 0; i < n && failures < 5; ++i) {
        const Settings s = maker.settings();
        const std::string content = maker.file(s);
        const size_t blockSize = maker.pick(2) ? 1 << 20 : maker.pick(2) ? 1 + maker.pick(64) : 64 + maker.pick(4096);
        if (!sameResults(content, s, blockSize))
            ++failures;
    }
}

// The record reader and the row conversion on their own, through their
// public entries, as a caller other than parse would use them.
template <class Csv>
std::string readRecords(const std::string& path, const Settings& s)
{
    Csv csv;
    configure(csv, path, s);
    Targets targets(0);
    targets.bind(csv, s.bindings);
    FILE* file = std::fopen(path.c_str(), "rb");
    std::string out;
    char buffer[HxCSV::lineBufferSize];
    int count = 0;
    for (int i = 0; i < 100000; ++i) {
        const int result = csv.csvGetLine(buffer, sizeof buffer, file, count);
        out += std::to_string(result) + " " + std::to_string(count) + " " + std::to_string(csv.joinedRecordCount)
               + (result == -1 ? "" : " " + std::string(buffer)) + "\n";
        if (result == -1)
            break;
    }
    std::fclose(file);
    return out;
}

template <class Csv, class Exception>
std::string processRecords(const std::vector<std::string>& records, const Settings& s, int rowIndex)
{
    Csv csv;
    configure(csv, "", s);
    Targets targets(4);
    targets.bind(csv, s.bindings);
    csv.resizeDataStorage(3);
    QString marker = QString::fromLatin1(s.comment.c_str());
    QString breakText = QString::fromLatin1(s.breakText.c_str());
    std::string out;
    for (const std::string& r : records) {
        QString record = QString::fromLatin1(r.data(), static_cast<int>(r.size()));
        out += csv.splitFields(record).join(QChar(0x2028)).toStdString() + "\n";
        try {
            out += std::to_string(csv.processLine(&record, &marker, &breakText, rowIndex, s.ignoreColumnCount));
        } catch (const Exception& e) {
            out += "threw " + std::to_string(e.code) + " " + e.message.getString();
        }
        out += "\n";
    }
    return out + targets.describe(s.bindings);
}

TEST_F(Differential, RecordsAreReadAndConvertedTheSameWay)
{
    FileMaker maker(99);
    const std::string p = path.toStdString();
    for (int i = 0; i < 300; ++i) {
        const Settings s = maker.settings();
        const std::string content = maker.file(s);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content.data(), static_cast<qint64>(content.size()));
        file.close();
        const std::string ours = readRecords<HxCSV>(p, s);
        const std::string theirs = readRecords<ref::HxCSV>(p, s);
        ASSERT_EQ(ours, theirs) << s.describe() << "\nfile:\n" << visible(content);

        std::vector<std::string> records;
        for (int r = maker.pick(4); r >= 0; --r)
            records.push_back(maker.record(s));
        const int rowIndex = maker.pick(3);
        ASSERT_EQ((processRecords<HxCSV, CSVException>(records, s, rowIndex)),
                  (processRecords<ref::HxCSV, ref::CSVException>(records, s, rowIndex)))
            << s.describe();
    }
}

// A text-number column holds what strtod makes of the text column at its
// side, and a column of text rows the same texts as QStrings, row by row,
// whatever else the file and the bindings do.
TEST_F(Differential, TextNumbersAndTextRowsFollowTheTextColumn)
{
    FileMaker maker(31);
    const std::string p = path.toStdString();
    for (int i = 0; i < 300; ++i) {
        Settings s = maker.settings();
        s.ignoreColumnCount = false; // else the two bindings' positions pick different fields of short records
        const std::string content = maker.file(s);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content.data(), static_cast<qint64>(content.size()));
        file.close();

        HxCSV csv;
        configure(csv, p, s);
        Targets targets(static_cast<int>(content.size()) + 1);
        targets.bind(csv, s.bindings);
        McDArray<McString> texts;
        McDArray<float> numbers;
        HxCSV::TextNumberMisses misses;
        const int index = maker.pick(4);
        csv.addColumn(index, &texts);
        csv.addTextNumberColumn(index, &numbers, &misses);
        std::vector<QString> strings;
        HxCSV::TextRows textRows;
        csv.addColumn(index, &textRows);
        csv.rowsCounted = [&](int rows) {
            strings.resize(static_cast<size_t>(rows));
            textRows.first = strings.data();
        };
        bool parsed = false;
        try {
            parsed = csv.parse(s.ignoreColumnCount, s.plainLines) == 1;
        } catch (const CSVException&) {
        }
        ASSERT_EQ(texts.size(), numbers.size());
        HxCSV::TextNumberMisses expectedMisses;
        ASSERT_EQ(static_cast<size_t>(texts.size()), strings.size());
        for (int row = 0; row < texts.size(); ++row) {
            ASSERT_EQ(texts[row].toQString(), strings[static_cast<size_t>(row)]) << s.describe() << " row " << row;
            char* end = nullptr;
            const char* text = texts[row].getString();
            const float expected = static_cast<float>(std::strtod(text, &end));
            ASSERT_EQ(hex(&expected, sizeof expected), hex(&numbers[row], sizeof(float)))
                << s.describe() << " row " << row << " text " << visible(text);
            const bool whole = end != text && end[std::strspn(end, " \t")] == '\0';
            if (!whole && expectedMisses.count++ == 0) {
                expectedMisses.firstRow = row;
                expectedMisses.firstText = texts[row];
            }
        }
        if (!parsed)
            continue; // rows never reached hold empty texts but had no text
        EXPECT_EQ(misses.count, expectedMisses.count) << s.describe();
        EXPECT_EQ(misses.firstRow, expectedMisses.firstRow);
        EXPECT_EQ(misses.firstText, expectedMisses.firstText);
    }
}

// Records that end just inside or just past the record buffer, at a
// delimiter, a line end of either kind or the end of the file.
TEST_F(Differential, RecordsAroundTheBufferSizeGiveTheSameResults)
{
    for (const char* end : {"\n", "\r\n", ",\n", ",9\n", ""})
        for (bool noLineBreaks : {false, true})
            for (int length = 2040; length < 2052; ++length) {
                std::string line = "1.5,2,3";
                line.insert(0, std::string(static_cast<size_t>(length) - line.size(), '0'));
                Settings s;
                s.noLineBreaks = noLineBreaks;
                s.bindings = {{Float, 0, 0, 3, 0}, {Text, 1, 0, 3, 0}, {Double, 2, 0, 3, 0}};
                SCOPED_TRACE(length);
                sameResults(line + end + "4,5,6\n", s);
            }
}

// Fields that are almost numbers, where a record's numbers fail their test
// and the record is joined with the next: the reader must find the same.
TEST_F(Differential, NearNumbersAreJoinedAlike)
{
    for (const char* near : {"1.2.3", "1-2", "+-1", "1e", ".", "-", "1..", "1.5e3", "0000000000000000000000000000001.5",
                             "12345678901234.5", "123456789012345.6"})
        for (bool noLineBreaks : {false, true})
            for (int kind : {Float, Double}) {
                Settings s;
                s.noLineBreaks = noLineBreaks;
                s.bindings = {{kind, 0, 0, 3, 0}, {kind, 1, 0, 3, 1}};
                SCOPED_TRACE(near);
                sameResults(std::string(near) + ",4\n5,6\n7,8\n9\n", s);
                sameResults("5," + std::string(near) + ",1\n7,8\n9,10\n11\n", s);
            }
}

// Text rows share the data of equal texts as far as the first 4096
// distinct ones; the later ones are kept all the same.
TEST_F(Differential, TextRowsShareEqualTexts)
{
    std::string content;
    for (int row = 0; row < 10000; ++row)
        content += "1,\"" + std::to_string(row % 5000) + "\"\n";
    const std::string p = path.toStdString();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content.data(), static_cast<qint64>(content.size()));
    file.close();
    HxCSV csv;
    Settings s;
    configure(csv, p, s);
    std::vector<QString> strings;
    HxCSV::TextRows textRows;
    csv.addColumn(1, &textRows);
    csv.rowsCounted = [&](int rows) {
        strings.resize(static_cast<size_t>(rows));
        textRows.first = strings.data();
    };
    ASSERT_EQ(csv.parse(false, false), 1);
    ASSERT_EQ(strings.size(), 10000u);
    for (size_t row = 0; row < strings.size(); ++row) {
        ASSERT_EQ(strings[row], QString::number(row % 5000));
        const bool shares = strings[row].constData() == strings[row % 5000].constData();
        EXPECT_EQ(shares, row < 5000 || row % 5000 < 4096) << row;
    }
}

// Runs of plain records end wherever a block ends, in both passes: the
// start of each example, read as the point cloud and the line set read it,
// and records of 16 bytes that end exactly where blocks end, followed by a
// short last block, with every small block size.
TEST_F(Differential, PlainRunsEndAtEveryBlockEnd)
{
    std::vector<std::string> contents;
    const QDir examples(HX_SOURCE_DIR "/examples");
    for (const QString& name : examples.entryList({"*.csv"}, QDir::Files)) {
        QFile file(examples.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        contents.emplace_back(bytes.constData(), static_cast<size_t>(bytes.lastIndexOf('\n', 3000) + 1));
    }
    std::string aligned = "x,y,z,val,wvals\n";
    for (int row = 0; row < 60; ++row)
        aligned += "1,2,3,4,5.67890\n";
    contents.push_back(aligned + "2.5,1,1,1,1"); // no line end: the file ends inside the last chunk
    for (const std::string& content : contents) {
        Settings cloud;
        cloud.header = true;
        for (int column = 0; column < 5; ++column)
            cloud.bindings.push_back({column < 3 ? Float : Double, column, 0, 3, column % 2});
        Settings lineSet;
        lineSet.noLineBreaks = true;
        lineSet.bindings.push_back({Float, 0, 0, 3, 0});
        for (const Settings& s : {cloud, lineSet})
            for (size_t block = 1; block <= 70; ++block)
                ASSERT_TRUE(sameResults(content, s, block)) << "block " << block;
    }
}

TEST_F(Differential, ExampleFilesGiveTheSameResults)
{
    FileMaker maker(7);
    const QDir examples(HX_SOURCE_DIR "/examples");
    const QStringList names = examples.entryList({"*.csv"}, QDir::Files);
    ASSERT_FALSE(names.isEmpty());
    for (const QString& name : names) {
        QFile file(examples.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const std::string content(bytes.constData(), static_cast<size_t>(bytes.size()));
        // The settings an importer would use, then random ones.
        for (const char* delimiter : {",", " ", "\\s", ";"}) {
            Settings s;
            s.delimiter = delimiter;
            s.header = true;
            for (int column = 0; column < 6; ++column)
                s.bindings.push_back({column < 3 ? Float : Text, column, 0, 3, column % 2});
            SCOPED_TRACE(name.toStdString());
            sameResults(content, s);
        }
        for (int i = 0; i < 20; ++i) {
            SCOPED_TRACE(name.toStdString());
            sameResults(content, maker.settings());
        }
    }
}

} // namespace
