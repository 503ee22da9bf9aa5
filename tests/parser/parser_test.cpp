#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "HxCSV.h"

namespace {

using Rows = std::vector<std::vector<float>>;

// Parser settings, applied in the order the importers use.
struct Opts {
    const char* delimiter = " ";
    const char* comment = "";
    const char* breakText = "";
    bool header = false;
    int start = 1;
    bool noLineBreaks = false;
    bool plainLines = false;
    bool ignoreColumnCount = false;

    Opts& delim(const char* d) { delimiter = d; return *this; }
    Opts& marker(const char* m) { comment = m; return *this; }
    Opts& breaks(const char* b) { breakText = b; return *this; }
    Opts& headerLine() { header = true; return *this; }
    Opts& startAt(int n) { start = n; return *this; }
    Opts& joinLines() { noLineBreaks = true; return *this; }
    Opts& plain() { plainLines = true; return *this; }
    Opts& ignoreCount() { ignoreColumnCount = true; return *this; }
};

class Parser : public ::testing::Test {
protected:
    QString write(const QByteArray& content)
    {
        const QString path = dir.filePath(QString("f%1.csv").arg(files++));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    void configure(HxCSV& csv, const QByteArray& content, const Opts& s)
    {
        csv.setFileName(write(content).toLocal8Bit().constData());
        csv.setCommentMarker(s.comment);
        csv.setFirstRowContainsColumnNames(s.header);
        csv.setDataStartLineNum(s.start);
        csv.setColumnDelimiter(s.delimiter);
        csv.setVerticalDelimiter(s.breakText);
        csv.setNoLineBreaks(s.noLineBreaks);
    }

    // Parses with one float array per index; rows of the result are records.
    Rows parseFloats(const QByteArray& content, const Opts& s, const std::vector<int>& indices,
                     std::vector<int>* breaks = nullptr)
    {
        HxCSV csv;
        configure(csv, content, s);
        std::vector<McDArray<float>> arrays(indices.size());
        for (size_t i = 0; i < indices.size(); ++i)
            csv.addColumn(indices[i], &arrays[i]);
        csv.parse(s.ignoreColumnCount, s.plainLines);
        Rows rows(arrays.empty() ? 0 : arrays[0].size());
        for (size_t r = 0; r < rows.size(); ++r)
            for (const McDArray<float>& a : arrays)
                rows[r].push_back(a[r]);
        if (breaks)
            breaks->assign(csv.verticalDelimiterRows.begin(), csv.verticalDelimiterRows.end());
        return rows;
    }

    QTemporaryDir dir;
    int files = 0;
};

TEST_F(Parser, ReadsRecordsIntoFloatColumns)
{
    struct Case {
        const char* why;
        QByteArray content;
        Opts setup;
        std::vector<int> columns;
        Rows rows;
        std::vector<int> breaks;
    } cases[] = {
        {"fields past the needed ones are dropped", "1 2 3 4 5 6\n", Opts(), {0, 1, 2}, {{1, 2, 3}}, {}},
        {"one line may hold many records", "1 2 3 4 5 6\n", Opts().joinLines(), {0, 1, 2}, {{1, 2, 3}, {4, 5, 6}}, {}},
        {"a record wraps over lines", "1 2\n3\n", Opts(), {0, 1, 2}, {{1, 2, 3}}, {}},
        {"blank lines, CRLF, no final line feed", "1 2 3\r\n\r\n\n  4  5   6", Opts(), {0, 1, 2}, {{1, 2, 3}, {4, 5, 6}}, {}},
        {"comments skipped in both passes", "# c\n1 2\n#9 9\n3 4\n", Opts().marker("#"), {0, 1}, {{1, 2}, {3, 4}}, {}},
        {"plain-line comments", "1\n#c\n2\n", Opts().marker("#").plain(), {0}, {{1}, {2}}, {}},
        {"empty fields vanish", "1,,2\n", Opts().delim(","), {0, 1}, {{1, 2}}, {}},
        {"an escaped delimiter", "1.5.2\n", Opts().delim("."), {0, 2}, {{1, 2}}, {}},
        {"tab delimiter", "1\t2\n", Opts().delim("\t"), {0, 1}, {{1, 2}}, {}},
        {"tabs vanish unless they delimit", "1\t2 3\n", Opts(), {0, 1}, {{12, 3}}, {}},
        {"white-space delimiter on plain lines", " 1.5\t 2.5 \n", Opts().delim("\\s").plain(), {0, 1}, {{1.5f, 2.5f}}, {}},
        {"start line skips lines", "a b\nc d\n1 2\n", Opts().startAt(3), {0, 1}, {{1, 2}}, {}},
        {"header skipped with start line 1", "x y\n1 2\n", Opts().headerLine(), {0, 1}, {{1, 2}}, {}},
        {"a failed test conversion re-joins", "a 1 2 3\n", Opts().joinLines(), {0}, {{1}, {3}}, {}},
        {"block breaks between numbers", "0 0 0 7\n1 1 1 8\nEND\n2 2 2 9\n", Opts().joinLines().breaks("END"), {0},
         {{0}, {0}, {0}, {7}, {1}, {1}, {1}, {8}, {2}, {2}, {2}, {9}}, {8}},
        {"a break on a record line", "1 2\nEND\n3 4\n", Opts().breaks("END"), {0, 1}, {{1, 2}, {3, 4}}, {1}},
        {"a leading break makes none", "END\n1\n2\n", Opts().joinLines().breaks("END"), {0}, {{1}, {2}}, {}},
        {"a break character ends a record", "1 2END\n3 4\n", Opts().breaks("END"), {0, 1}, {{1, 2}, {3, 4}}, {1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        std::vector<int> breaks;
        EXPECT_EQ(parseFloats(c.content, c.setup, c.columns, &breaks), c.rows);
        EXPECT_EQ(breaks, c.breaks);
    }
}

TEST_F(Parser, ReportsErrorsWithCodeTextAndRow)
{
    struct Case {
        const char* why;
        QByteArray content;
        Opts setup;
        std::vector<int> columns;
        CSVException::Error code;
        std::string message;
    } cases[] = {
        {"too few fields", "1 2 3\n4 5\n", Opts(), {0, 1, 2}, CSVException::ColumnCount, "Unexpected number of columns (line 1)"},
        {"passes disagree", "1\naX\n", Opts().marker("ab").plain(), {0}, CSVException::BadValue, "Unexpected end of file (line 3)"},
        {"index past a short record", "1 2\n", Opts().ignoreCount(), {0, 3}, CSVException::ColumnCount,
         "Unexpected number of columns (line 0)"},
        {"no fields at all", "\n", Opts().plain().ignoreCount(), {0}, CSVException::ColumnCount, "Unexpected number of columns (line 0)"},
        {"a header line read as data", "x y\n1 2\n", Opts(), {0, 1}, CSVException::BadValue,
         "Could not convert the column value to a number (line 0, column value y)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        try {
            parseFloats(c.content, c.setup, c.columns);
            ADD_FAILURE() << "no exception";
        } catch (const CSVException& e) {
            EXPECT_EQ(e.code, c.code);
            EXPECT_EQ(e.message.getString(), c.message);
        }
    }
}

TEST_F(Parser, StartLineMovesOnlyWhenTheHeaderFlagCameFirst)
{
    HxCSV csv;
    csv.setDataStartLineNum(1);
    csv.setFirstRowContainsColumnNames(true);
    EXPECT_EQ(csv.dataStartLineNum, 1);
    csv.setDataStartLineNum(1);
    EXPECT_EQ(csv.dataStartLineNum, 2);
    csv.setDataStartLineNum(5);
    EXPECT_EQ(csv.dataStartLineNum, 5);
}

TEST_F(Parser, KeepsRowsBeforeAFailureAndZeroAtIt)
{
    HxCSV csv;
    configure(csv, "1 2\n3 x\n5 6\n", Opts());
    McDArray<float> a;
    void* b = nullptr; // a raw column is not test-converted, so the bad row stays in place
    csv.addColumn(0, &a);
    csv.addColumn(1, McPrimType(3), &b);
    try {
        csv.parse(false, false);
        ADD_FAILURE() << "no exception";
    } catch (const CSVException& e) {
        EXPECT_EQ(e.code, CSVException::BadValue);
        EXPECT_STREQ(e.message.getString(), "Could not convert the column value to a number (line 1, column value x)");
    }
    ASSERT_EQ(a.size(), 3);
    const float* raw = static_cast<float*>(b);
    EXPECT_EQ((std::vector<float>{a[0], a[1], a[2], raw[0], raw[1], raw[2]}), (std::vector<float>{1, 3, 0, 2, 0, 0}));
    std::free(b);
}

TEST_F(Parser, NamesColumnsFromTheHeader)
{
    HxCSV csv;
    configure(csv, "a <m>,\"b\",   ,\n1,2\n", Opts().delim(",").headerLine().startAt(1));
    McDArray<float> x;
    csv.addColumn(0, &x);
    csv.parse(false, false);
    std::vector<std::string> names;
    for (int i = 0; i < csv.columnNames.size(); ++i)
        names.push_back(csv.getColumnName(i).getString());
    EXPECT_EQ(names, (std::vector<std::string>{"a  m", "b", " ", ""}));
    EXPECT_STREQ(csv.getColumnName(9).getString(), "");
    EXPECT_EQ(x.size(), 1);
}

TEST_F(Parser, SplitsQuoteAwareAndStoresTextAndVectors)
{
    HxCSV csv;
    configure(csv, "\"a,b\",0.1,2\n", Opts().delim(","));
    McDArray<McString> text;
    McDArray<McVec3d> vd;
    McDArray<McVec3f> vf;
    csv.addColumn(0, &text);
    csv.addColumn(1, &vd, 0);
    csv.addColumn(2, &vf, 2);
    csv.parse(false, true); // the record reader would count the quoted comma as a delimiter
    EXPECT_STREQ(text[0].getString(), "a,b");
    EXPECT_EQ(vd[0][0], static_cast<double>(0.1f)); // double vectors pass through single precision
    EXPECT_EQ(vf[0][2], 2.0f);

    struct Split {
        const char* delimiter;
        QString record;
        QStringList fields;
    } splits[] = {
        {",", "1,,2,", {"1", "2"}},
        {",", "\"a,b\",3", {"\"a,b\"", "3"}},
        {"\\s", "  1.5\t 2.5  ", {"1.5", "2.5"}},
        {"", "1 2", {"1 2"}}, // no delimiter: one field
    };
    for (const Split& s : splits) {
        csv.setColumnDelimiter(s.delimiter);
        EXPECT_EQ(csv.splitFields(s.record), s.fields) << s.delimiter;
    }

    HxCSV numbers; // quotes keep a number from converting
    McDArray<float> f;
    numbers.addColumn(0, &f);
    numbers.resizeDataStorage(1);
    QString record("\"1\" 2"), none;
    EXPECT_THROW(numbers.processLine(&record, &none, &none, 0, false), CSVException);
}

TEST_F(Parser, FillsRawBuffersAndHandlesEmptyFiles)
{
    for (const QByteArray& content : {QByteArray("1.5 7 9\n2.5 -8 9\n"), QByteArray(""), QByteArray("\n  \n\n")}) {
        HxCSV csv;
        configure(csv, content, Opts());
        void* floats = nullptr;
        void* ints = std::malloc(64); // an existing buffer is grown, not leaked
        void* bytes = nullptr;
        McDArray<double> doubles;
        csv.addColumn(0, McPrimType(3), &floats);
        csv.addColumn(1, McPrimType(2), &ints);
        csv.addColumn(2, McPrimType(0), &bytes);
        csv.addColumn(0, &doubles);
        EXPECT_EQ(csv.parse(false, false), 1);
        ASSERT_TRUE(floats && ints && bytes);
        if (content.startsWith('1')) {
            EXPECT_EQ(static_cast<float*>(floats)[1], 2.5f);
            EXPECT_EQ(static_cast<int32_t*>(ints)[1], -8);
            EXPECT_EQ(static_cast<unsigned char*>(bytes)[1], 0); // other types are never written
            EXPECT_EQ(doubles.size(), 2);
        } else {
            EXPECT_EQ(doubles.size(), 0);
        }
        std::free(floats);
        std::free(ints);
        std::free(bytes);
    }
}

TEST_F(Parser, ReadsLinesLongerThanTheBufferInPieces)
{
    // The comment at the end has no line feed and overflows the buffer too;
    // plain lines cut it as well, and its second piece is data.
    const QByteArray content = QByteArray(3000, 'A') + "\n#" + QByteArray(3000, 'c');
    const struct {
        Opts setup;
        std::vector<int> lengths;
    } cases[] = {{Opts().marker("#"), {2047, 953}}, {Opts().marker("#").plain(), {2047, 953, 954}}};
    for (const auto& c : cases) {
        HxCSV csv;
        configure(csv, content, c.setup);
        McDArray<McString> text;
        csv.addColumn(0, &text);
        csv.parse(false, c.setup.plainLines);
        std::vector<int> lengths;
        for (const McString& t : text)
            lengths.push_back(t.length());
        EXPECT_EQ(lengths, c.lengths);
    }
}

// Random bytes and settings: parse must return or throw CSVException, and
// the sanitizers watch every buffer on the way.
TEST_F(Parser, SurvivesRandomFiles)
{
    std::mt19937 rng(20240611);
    auto pick = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const char* delimiters[] = {" ", ",", "\\s", "", "\t", "ab"};
    const char* markers[] = {"", "#", "E"};
    const char alphabet[] = "0123456789 ,.-eE\"#\t\r\n\n\nENDab";
    for (int round = 0; round < 3000; ++round) {
        QByteArray content;
        const int length = pick(8) == 0 ? 2000 + pick(3000) : pick(120);
        for (int i = 0; i < length; ++i)
            content += pick(10) == 0 ? static_cast<char>(pick(256)) : alphabet[pick(sizeof alphabet - 1)];
        Opts s = Opts().delim(delimiters[pick(6)]).marker(markers[pick(3)]).startAt(pick(4));
        s.breakText = pick(2) ? "END" : markers[pick(3)];
        s.header = pick(2);
        s.noLineBreaks = pick(2);
        s.plainLines = pick(4) == 0;
        s.ignoreColumnCount = pick(2);

        HxCSV csv;
        configure(csv, content, s);
        McDArray<float> f;
        McDArray<double> d;
        McDArray<McString> t;
        McDArray<McVec3f> vf;
        McDArray<McVec3d> vd;
        void* raw = nullptr;
        const int columns = pick(5);
        for (int c = 0; c < columns; ++c) {
            const int index = pick(6) - 1;
            switch (pick(6)) {
            case 0: csv.addColumn(index, &f); break;
            case 1: csv.addColumn(index, &d); break;
            case 2: csv.addColumn(index, &t); break;
            case 3: csv.addColumn(index, &vf, pick(3)); break;
            case 4: csv.addColumn(index, &vd, pick(3)); break;
            default: csv.addColumn(index, McPrimType(pick(2) ? 2 : 3), &raw); break;
            }
        }
        try {
            EXPECT_EQ(csv.parse(s.ignoreColumnCount, s.plainLines), 1);
        } catch (const CSVException&) {
        }
        std::free(raw);
    }
}

} // namespace
