#include <QComboBox>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "HxCSVParseParameters.h"
#include "HxCSVUtils.h"
#include "QxCSVImport.h"

namespace {

using Params = std::unique_ptr<HxCSVParseParameters>;

struct Fields {
    std::string fileName;
    std::vector<int> columns;
    std::string delimiter;
    std::string comment;
    int startLine;
    bool header;
    bool noLineBreaks;
    bool operator==(const Fields& o) const
    {
        return fileName == o.fileName && columns == o.columns && delimiter == o.delimiter && comment == o.comment
            && startLine == o.startLine && header == o.header && noLineBreaks == o.noLineBreaks;
    }
};

std::ostream& operator<<(std::ostream& out, const Fields& f)
{
    out << "{" << f.fileName << " [";
    for (int c : f.columns)
        out << c << " ";
    return out << "] '" << f.delimiter << "' '" << f.comment << "' " << f.startLine << " " << f.header << " "
               << f.noLineBreaks << "}";
}

Fields fieldsOf(const HxCSVParseParameters& p)
{
    const McDArray<int>& c = *p.columnIndices;
    return {p.fileName.getString(), std::vector<int>(c.begin(), c.end()), p.columnDelimiter->getString(),
            p.commentMarker->getString(), p.dataStartLineNum, p.firstRowContainsColumnNames, p.noLineBreaks};
}

Params recordOf(const Fields& f)
{
    Params p(new HxCSVParseParameters);
    p->fileName = f.fileName.c_str();
    for (int c : f.columns)
        p->columnIndices->append(c);
    *p->columnDelimiter = f.delimiter.c_str();
    *p->commentMarker = f.comment.c_str();
    p->dataStartLineNum = f.startLine;
    p->firstRowContainsColumnNames = f.header;
    p->noLineBreaks = f.noLineBreaks;
    return p;
}

Params read(std::vector<const char*> argv, int occurrence = 0)
{
    return Params(HxCSVUtils::getParseParameters(static_cast<int>(argv.size()), argv.data(), occurrence));
}

} // namespace

TEST(ParseParameters, TakenFromTheDialog)
{
    QxCSVImport dialog;
    Params empty(HxCSVUtils::getParseParameters(&dialog));
    EXPECT_EQ(fieldsOf(*empty), (Fields{"", {}, " ", "#", 1, false, false}));

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
    Params p(HxCSVUtils::getParseParameters(&dialog));
    EXPECT_EQ(fieldsOf(*p), (Fields{"/nonexistent/wells.csv", {2, 1, 2, -1}, "|", "%", 3, true, true}));

    dialog.comboBoxColumnDelimiter->setCurrentIndex(2);
    dialog.lineEditDataLineNum->clear();
    p.reset(HxCSVUtils::getParseParameters(&dialog));
    EXPECT_EQ(*p->columnDelimiter, "\t");
    EXPECT_EQ(p->dataStartLineNum, 0);
}

TEST(ParseParameters, WrittenAsOptionBlock)
{
    const struct {
        Fields record;
        const char* text;
    } cases[] = {
        {{"/data/wells.csv", {0, 1, 2, -1}, ",", "#", 2, true, false},
         "CSVParams \"/data/wells.csv\" \"4 0 1 2 -1\" \",\" \"#\" 2 1 0"},
        {{"f.csv", {}, " ", "#", 1, false, false}, "CSVParams \"f.csv\" \"0\" \" \" \"#\" 1 0 0"},
        {{"t.csv", {-1}, "\t", "", 7, false, true}, "CSVParams \"t.csv\" \"1 -1\" \"\t\" \"\" 7 0 1"},
        {{"q\"uote.csv", {3}, "\"", "\\\\", 1, true, true}, "CSVParams \"q\"uote.csv\" \"1 3\" \"\\\"\" \"\\\\\\\\\" 1 1 1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(HxCSVUtils::getLoadCommandString(recordOf(c.record).get())), c.text);
}

TEST(ParseParameters, ReadFromArguments)
{
    const Fields first{"a.csv", {0, 1}, ",", "#", 2, true, true};
    const Fields second{"b.csv", {5}, ";", "//", 4, false, false};
    const std::vector<const char*> twoBlocks = {"a.csv", "-opt", "CSVParams", "a.csv", "2 0 1", ",", "#", "2", "1", "1",
                                                "CSVParams", "b.csv", "1 5", ";", "//", "4", "0", "0", "-dataOnly"};
    EXPECT_EQ(fieldsOf(*read(twoBlocks, 0)), first);
    EXPECT_EQ(fieldsOf(*read(twoBlocks, 1)), second);
    EXPECT_FALSE(read(twoBlocks, 2));

    const struct {
        const char* what;
        std::vector<const char*> argv;
        Fields expected;
    } cases[] = {
        {"older command without line-break flag", {"CSVParams", "f", "0", " ", "#", "1", "1"}, {"f", {}, " ", "#", 1, true, false}},
        {"flags are 1 or nothing", {"CSVParams", "f", "0", " ", "#", "1", "true", "2"}, {"f", {}, " ", "#", 1, false, false}},
        {"double blank gives entry 0", {"CSVParams", "f", "3 7  9", ",", "#", "5x", "01", "1"}, {"f", {7, 0, 9}, ",", "#", 5, true, true}},
        {"negative count", {"CSVParams", "f", "-2 4", ",", "", "x", "0"}, {"f", {}, ",", "", 0, false, false}},
    };
    for (const auto& c : cases) {
        Params p = read(c.argv);
        ASSERT_TRUE(p) << c.what;
        EXPECT_EQ(fieldsOf(*p), c.expected) << c.what;
    }

    const std::vector<std::vector<const char*>> noRecord = {
        {},
        {"f.csv", "-dataOnly"},
        {"csvparams", "f", "0", " ", "#", "1", "0", "0"},
        {"CSVParams2", "f", "0", " ", "#", "1", "0", "0"},
        {"CSVParams", "f", "0", " ", "#", "1"},
        {"CSVParams", "f", "3 0 1", " ", "#", "1", "0"},
        {"CSVParams", "f", "99999999999 0", " ", "#", "1", "0"},
    };
    for (const auto& argv : noRecord)
        EXPECT_FALSE(read(argv)) << (argv.empty() ? "(none)" : argv[0]) << " " << argv.size();
}

TEST(ParseParameters, SurviveTheHostsSplitting)
{
    const Fields records[] = {
        {"/data/wells.csv", {0, 1, 2, -1}, ",", "#", 2, true, false},
        {"/my data/a b.csv", {}, " ", "", 1, false, true},
        {"x.csv", {4, -1, 98}, "\t", "\\", 1000000, true, true},
        {"y.csv", {0}, "\"", "a\\\"b '$`", 3, false, false},
    };
    for (const Fields& f : records) {
        const std::string line = "load -point_cloud_csv \"" + f.fileName + "\" "
            + HxCSVUtils::getLoadCommandString(recordOf(f).get()).getString() + " \"0 1\" -dataOnly";
        std::vector<std::string> words;
        std::string error;
        ASSERT_TRUE(hxhost::splitCommandLine(line, words, error)) << line << ": " << error;
        std::vector<const char*> argv;
        for (size_t i = 2; i < words.size(); ++i)
            argv.push_back(words[i].c_str());
        Params p = read(argv);
        ASSERT_TRUE(p) << line;
        EXPECT_EQ(fieldsOf(*p), f) << line;
    }
}
