// Parser rules that surprise a reader of CSV, and faults that random files
// seldom reach. Plain splitting, conversion, comments, breaks and header
// names are compared against the rules on random files elsewhere.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <vector>

#include "HxCSV.h"

namespace {

using Rows = std::vector<std::vector<float>>;

class Parser : public ::testing::Test {
protected:
    void configure(HxCSV& csv, const QByteArray& content, const char* comment = "", const char* breakText = "",
                   bool noLineBreaks = false)
    {
        const QString path = dir.filePath(QString("f%1.csv").arg(files++));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        csv.setFileName(path.toLocal8Bit().constData());
        csv.setCommentMarker(comment);
        csv.setColumnDelimiter(" ");
        csv.setVerticalDelimiter(breakText);
        csv.setNoLineBreaks(noLineBreaks);
    }

    QTemporaryDir dir;
    int files = 0;
};

TEST_F(Parser, SurprisingRules)
{
    enum { Join = 1, Plain = 2, IgnoreCount = 4 };
    // breaks: records read before each break line; error: the exception's text.
    struct Case {
        const char *why, *content, *comment, *breakText;
        int flags;
        std::vector<int> columns;
        Rows rows;
        std::vector<int> breaks;
        const char* error;
    } cases[] = {
        {"a short line is continued by the next", "1 2\n3\n", "", "", 0, {0, 1, 2}, {{1, 2, 3}}, {}, nullptr},
        {"a tab that does not delimit vanishes", "1\t2 3\n", "", "", 0, {0, 1}, {{12, 3}}, {}, nullptr},
        {"a field that fails the test conversion re-joins", "a 1 2 3\n", "", "", Join, {0}, {{1}, {3}}, {}, nullptr},
        {"breaks count records, as line sets need", "0 0 0 7\n1 1 1 8\nEND\n2 2 2 9\n", "", "END", Join, {0},
         {{0}, {0}, {0}, {7}, {1}, {1}, {1}, {8}, {2}, {2}, {2}, {9}}, {8}, nullptr},
        {"a break before any record makes none", "END\n1\n2\n", "", "END", Join, {0}, {{1}, {2}}, {}, nullptr},
        {"break text inside a line ends the record", "1 2END\n3 4\n", "", "END", 0, {0, 1}, {{1, 2}, {3, 4}}, {1},
         nullptr},
        {"the counting and the reading pass disagree on a comment", "1\naX\n", "ab", "", Plain, {0}, {}, {},
         "Unexpected end of file (line 3)"},
        {"an index past a short record counts lines from 0", "1 2\n", "", "", IgnoreCount, {0, 3}, {}, {},
         "Unexpected number of columns (line 0)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        HxCSV csv;
        configure(csv, c.content, c.comment, c.breakText, c.flags & Join);
        std::vector<McDArray<float>> arrays(c.columns.size());
        for (size_t i = 0; i < c.columns.size(); ++i)
            csv.addColumn(c.columns[i], &arrays[i]);
        try {
            csv.parse(c.flags & IgnoreCount, c.flags & Plain);
            EXPECT_EQ(c.error, nullptr);
        } catch (const CSVException& e) {
            EXPECT_STREQ(e.message.getString(), c.error);
            continue;
        }
        Rows rows(arrays[0].size());
        for (size_t r = 0; r < rows.size(); ++r)
            for (const McDArray<float>& a : arrays)
                rows[r].push_back(a[r]);
        EXPECT_EQ(rows, c.rows);
        EXPECT_EQ(std::vector<int>(csv.verticalDelimiterRows.begin(), csv.verticalDelimiterRows.end()), c.breaks);
    }
}

// The importers set the header flag first for this reason.
TEST_F(Parser, StartLineMovesPastTheHeaderOnlyWhenTheFlagCameFirst)
{
    HxCSV csv;
    csv.setDataStartLineNum(1);
    csv.setFirstRowContainsColumnNames(true);
    EXPECT_EQ(csv.dataStartLineNum, 1);
    csv.setDataStartLineNum(1);
    EXPECT_EQ(csv.dataStartLineNum, 2);
}

// Random files start from null buffers. A caller's buffer must be grown
// (the sanitizer build sees a leak otherwise), and an empty file still
// leaves buffers to free.
TEST_F(Parser, RawBuffersAreGrownAndAlwaysAllocated)
{
    HxCSV csv;
    configure(csv, "\n \n");
    void* floats = nullptr;
    void* ints = std::malloc(64);
    csv.addColumn(0, McPrimType(3), &floats);
    csv.addColumn(1, McPrimType(2), &ints);
    EXPECT_EQ(csv.parse(false, false), 1);
    EXPECT_TRUE(floats && ints);
    std::free(floats);
    std::free(ints);
}

} // namespace
