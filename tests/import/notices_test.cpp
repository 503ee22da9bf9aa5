// Where the import rules change what a file says, the parser notes it
// (HxCSV::notices) with the line of the file, and the data stay what the
// rules make of them.
#include "HxCSV.h"
#include "ImportSupport.h"

namespace {

using Notices = ImportTest;

} // namespace

// A parse that reads one line per record (an option of the parser no
// importer uses) can run out of lines: the notice names the file's last.
TEST_F(Notices, AnEarlyEndOfFileNamesTheLastLine)
{
    HxCSV csv;
    csv.setFileName(write("e.csv", "1\naX\n").toLocal8Bit().constData());
    csv.setCommentMarker("ab");
    McDArray<float> values;
    csv.addColumn(0, &values);
    EXPECT_THROW(csv.parse(false, true), CSVException);
    const HxCSV::Notices& n = csv.notices;
    EXPECT_TRUE(n.endOfFile);
    EXPECT_EQ(n.failedRecord.line, 2);
    EXPECT_STREQ(n.failedRecord.text.getString(), "aX");
}

// Records of whole lines (the parser's other reading) are split as they
// stand: runs of the delimiter there drop empty fields too, but runs of
// white space only align columns.
TEST_F(Notices, SplitLinesLoseEmptyFieldsToRunsOfDelimiters)
{
    const struct {
        const char *delimiter, *line;
        int dropped;
    } cases[] = {
        {",", "1,,2,3", 1},
        {",", ",1,2,3", 1},
        {",", "1,2,3,,", 0},
        {",", "1,\"a,,b\",2,3", 0},
        {" ", " 1  2   3", 0},
        {"\\s", "1 \t 2  3", 0},
        {", ", "1, , 2, 3", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.delimiter) + " in " + c.line);
        HxCSV csv;
        csv.setFileName(write("s.csv", QByteArray(c.line) + "\n" + c.line + "\n").toLocal8Bit().constData());
        csv.setColumnDelimiter(c.delimiter);
        for (int i = 0; i < 3; ++i)
            csv.addColumn(i, McPrimType(1)); // counted, never converted
        csv.parse(true, true);
        EXPECT_EQ(csv.notices.collapsedFields.count, 2 * c.dropped);
        EXPECT_EQ(csv.notices.collapsedFields.line, c.dropped ? 1 : 0);
    }
}
