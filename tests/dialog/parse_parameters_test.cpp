// The parse parameter record: taken from a dialog, written as a "CSVParams"
// option block and read back from a command's arguments. Records are
// compared by the text the writer makes of them.
#include <QComboBox>
#include <memory>

#include "HxCSVParseParameters.h"
#include "HxCSVUtils.h"
#include "ImportSupport.h"
#include "QxCSVImport.h"

namespace {

struct Fields {
    std::string fileName;
    std::vector<int> columns;
    std::string delimiter, comment;
    int startLine;
    bool header, noLineBreaks;
};

std::string textOf(HxCSVParseParameters* p)
{
    std::unique_ptr<HxCSVParseParameters> owned(p);
    return p ? HxCSVUtils::getLoadCommandString(p).getString() : "(none)";
}

std::string textOf(const Fields& f)
{
    auto* p = new HxCSVParseParameters;
    p->fileName = f.fileName.c_str();
    for (int c : f.columns)
        p->columnIndices->append(c);
    *p->columnDelimiter = f.delimiter.c_str();
    *p->commentMarker = f.comment.c_str();
    p->dataStartLineNum = f.startLine;
    p->firstRowContainsColumnNames = f.header;
    p->noLineBreaks = f.noLineBreaks;
    return textOf(p);
}

std::string read(std::vector<const char*> argv, int occurrence = 0)
{
    return textOf(HxCSVUtils::getParseParameters(static_cast<int>(argv.size()), argv.data(), occurrence));
}

} // namespace

TEST(ParseParameters, TakenFromTheDialog)
{
    QxCSVImport dialog;
    EXPECT_EQ(textOf(HxCSVUtils::getParseParameters(&dialog)), "CSVParams \"\" \"0\" \" \" \"#\" 1 0 0");

    dialog.setFileName("/nonexistent/wells.csv");
    for (const char* name : {"X", "Y", "Z", "Value1"})
        dialog.addColumn(name, name[1] == 0);
    dialog.setPhysicalColumnIndex(0, 2);
    dialog.setPhysicalColumnIndex(3, -1);
    dialog.comboBoxColumnDelimiter->setCurrentIndex(4);
    dialog.setColumnDelimiter("|");
    dialog.setCommentMarker("%");
    dialog.setDataStartLineNum(3);
    dialog.firstLineColumnLabels->setChecked(true); // hidden, yet read
    dialog.noLineBreaks->setChecked(true);
    EXPECT_EQ(textOf(HxCSVUtils::getParseParameters(&dialog)),
              "CSVParams \"/nonexistent/wells.csv\" \"4 2 1 2 -1\" \"|\" \"%\" 3 1 1");
    dialog.lineEditDataLineNum->clear(); // reads as 0
    EXPECT_EQ(std::unique_ptr<HxCSVParseParameters>(HxCSVUtils::getParseParameters(&dialog))->dataStartLineNum, 0);
}

// Written exactly so, and read back from the words hxhost splits a LoadCmd
// holding it into.
TEST(ParseParameters, WrittenAndReadBackThroughTheHostsSplitting)
{
    const struct {
        Fields record;
        const char* text;
        bool splits; // a quote in a file name is written as it is
    } cases[] = {
        {{"/data/wells.csv", {0, 1, 2, -1}, ",", "#", 2, true, false},
         "CSVParams \"/data/wells.csv\" \"4 0 1 2 -1\" \",\" \"#\" 2 1 0", true},
        {{"f.csv", {}, " ", "#", 1, false, false}, "CSVParams \"f.csv\" \"0\" \" \" \"#\" 1 0 0", true},
        {{"/my data/t.csv", {-1}, "\t", "", 1000000, false, true},
         "CSVParams \"/my data/t.csv\" \"1 -1\" \"\t\" \"\" 1000000 0 1", true},
        {{"q\"uote.csv", {3}, "\"", "\\\\", 1, true, true},
         "CSVParams \"q\"uote.csv\" \"1 3\" \"\\\"\" \"\\\\\\\\\" 1 1 1", false},
        {{"y.csv", {4, -1, 98}, "\"", "a\\\"b '$`", 3, false, false},
         "CSVParams \"y.csv\" \"3 4 -1 98\" \"\\\"\" \"a\\\\\\\"b '$`\" 3 0 0", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(textOf(c.record), c.text);
        if (!c.splits)
            continue;
        const std::string command = "load -point_cloud_csv \"" + c.record.fileName + "\" " + c.text;
        EXPECT_EQ(read(Args(QString::fromStdString(command + " \"0 1\" -dataOnly")).argv), c.text);
    }
}

TEST(ParseParameters, ReadFromArguments)
{
    const std::vector<const char*> twoBlocks = {"a.csv", "-opt", "CSVParams", "a.csv", "2 0 1", ",", "#", "2", "1", "1",
                                                "CSVParams", "b.csv", "1 5", ";", "//", "4", "0", "0", "-dataOnly"};
    const struct {
        const char* what;
        std::vector<const char*> argv;
        const char* expected;
        int occurrence = 0;
    } cases[] = {
        {"first block", twoBlocks, "CSVParams \"a.csv\" \"2 0 1\" \",\" \"#\" 2 1 1"},
        {"second block", twoBlocks, "CSVParams \"b.csv\" \"1 5\" \";\" \"//\" 4 0 0", 1},
        {"no third block", twoBlocks, "(none)", 2},
        {"older command without line-break flag", {"CSVParams", "f", "0", " ", "#", "1", "1"},
         "CSVParams \"f\" \"0\" \" \" \"#\" 1 1 0"},
        {"flags are 1 or nothing", {"CSVParams", "f", "0", " ", "#", "1", "true", "2"},
         "CSVParams \"f\" \"0\" \" \" \"#\" 1 0 0"},
        {"double blank gives entry 0; numbers read like strtol", {"CSVParams", "f", "3 7  9", ",", "#", "5x", "01", "1"},
         "CSVParams \"f\" \"3 7 0 9\" \",\" \"#\" 5 1 1"},
        {"negative count", {"CSVParams", "f", "-2 4", ",", "", "x", "0"}, "CSVParams \"f\" \"0\" \",\" \"\" 0 0 0"},
        // Nothing to read: no block, a marker of another case or name, too
        // few words after it, fewer columns than counted, a count too big.
        {"no words", {}, "(none)"},
        {"no block", {"f.csv", "-dataOnly"}, "(none)"},
        {"lower case marker", {"csvparams", "f", "0", " ", "#", "1", "0", "0"}, "(none)"},
        {"longer marker", {"CSVParams2", "f", "0", " ", "#", "1", "0", "0"}, "(none)"},
        {"five words", {"CSVParams", "f", "0", " ", "#", "1"}, "(none)"},
        {"columns short of the count", {"CSVParams", "f", "3 0 1", " ", "#", "1", "0"}, "(none)"},
        {"count too big", {"CSVParams", "f", "99999999999 0", " ", "#", "1", "0"}, "(none)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(read(c.argv, c.occurrence), c.expected);
    }
}
