// Where the import rules change what a file says, the console tells the
// user once per import, naming the file's line; the data stay what the
// rules make of them.
#include "Differential.h"
#include "HxCSV.h"
#include "ImportSupport.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"

namespace {

using Notices = ImportTest;

// After CSVParams "FILE": X, Y, Z from the first three columns; the same and
// a label (under a header the first value column is text); a line set's x,
// y, z and one value.
const char* const xyz = "\"3 0 1 2\" \",\" \"#\" 1 0 0";
const char* const labelled = "\"4 0 1 2 3\" \",\" \"#\" 1 1 0";
const char* const vertices = "\"4 0 1 2 3\" \",\" \"#\" 1 0 0";

struct Row {
    const char* what;
    QByteArray content;
    const char* params;
    bool lineSet; // read as one line
    QString notice; // the text after "FILE: ", or its start; empty: none
    QString points; // as JSON; empty: the import fails, the notice beside its error
    QString values; // labels (point cloud) or vertex values (line set) as JSON; or the error
};

const Row rows[] = {
    {"plain lines, CRLF, a comment and a blank line", "# c\r\n1,2,3\r\n\r\n4,5,6\r\n", xyz, false, "",
     "[[1,2,3],[4,5,6]]", ""},
    {"blanks that align columns", "  1   2  3\n 4 5   6\n", "\"3 0 1 2\" \" \" \"#\" 1 0 0", false, "",
     "[[1,2,3],[4,5,6]]", ""},
    {"quoted delimiters past the columns read", "1,2,3,\"a,b\"\n4,5,6,\"c,,d\"\n", xyz, false, "",
     "[[1,2,3],[4,5,6]]", ""},
    {"Latin-1 text", "x,y,z,city\n1,2,3,Z\xfcrich\n", labelled, false, "", "[[1,2,3]]", "[\"Z\u00fcrich\"]"},
    {"a short line takes the next", "1,2,3\n4,5\n6\n7,8,9\n", xyz, false,
     "line 2 (\"4,5\") has 2 fields where 3 are read; the record continued on line 3, so later rows may be "
     "shifted (1 record like this)",
     "[[1,2,3],[4,5,6],[7,8,9]]", ""},
    {"runs of delimiters and a leading one", "1,,2,3\n,4,5,6\n7,8,9\n", xyz, false,
     "line 1 (\"1,,2,3\") has an empty field, which is dropped", "[[1,2,3],[4,5,6],[7,8,9]]", ""},
    {"runs of tabs", "1\t\t2\t3\n", "\"3 0 1 2\" \"\t\" \"#\" 1 0 0", false,
     "line 1 (\"1\\t\\t2\\t3\") has an empty field", "[[1,2,3]]", ""},
    {"a line set's records share lines, yet lose empty fields", "1,2,3,4\n5,,6,7,8\n", vertices, true,
     "line 2 (\"5,,6,7,8\") has an empty field", "[[1,2,3],[5,6,7]]", "[[4,8]]"},
    {"UTF-8 labels", "x,y,z,city\n1,2,3,Z\xc3\xbcrich\n4,5,6,Bern\n7,8,9,Z\xc3\xbcrich\n", labelled, false,
     "texts are read as Latin-1, so UTF-8 text looks garbled; line 2 holds \"Z\u00fcrich\", read as "
     "\"Z\u00c3\u00bcrich\" (2 texts like this)",
     "[[1,2,3],[4,5,6],[7,8,9]]", "[\"Z\u00c3\u00bcrich\",\"Bern\",\"Z\u00c3\u00bcrich\"]"},
    {"a mark before the header", "\xef\xbb\xbfx,y,z,city\n1,2,3,Bern\n", labelled, false,
     "the file starts with a UTF-8 byte-order mark, which is read as part of the first header name; texts are "
     "read as Latin-1",
     "[[1,2,3]]", "[\"Bern\"]"},
    // The first number fails, so its record is re-joined without it: every
    // later record takes two numbers and keeps the first.
    {"a mark before a line set's numbers", "\xef\xbb\xbf" "1,2,3,4\n5,6,7,8\n", vertices, true,
     "the file starts with a UTF-8 byte-order mark, which is read as part of the first value on line 1",
     "[[2,4,6]]", "[[8]]"},
    {"a mark before a point cloud's numbers", "\xef\xbb\xbf" "1.5,2,3,a\n4,5,6,b\n", xyz, false,
     "the file starts with a UTF-8 byte-order mark, which is read as part of the first value on line 1", "",
     "Could not convert the column value to a number (line 0, column value a)"},
    // The rest of the cut line re-joins without its first field.
    {"a label longer than a record", "x,y,z,name\n1,2,3," + QByteArray(3000, 'L') + "\n4,5,6,short\n", labelled,
     false, "line 2 is longer than a record may be (2047 bytes), so its text is cut there", "[[1,2,3],[4,5,6]]",
     "[\"" + QString(2041, 'L') + "\",\"short\"]"},
    {"a line set reads its numbers in order, whatever columns were chosen", "1,2,3,4\n5,6,7,8\n",
     "\"4 1 0 2 3\" \",\" \"#\" 1 0 0", true,
     "a line set takes the numbers of a row in the file's order (x, y, z, then one per value column), so the "
     "chosen file columns are not used: \"X\" is set to file column 2 but takes number 1 of the row",
     "[[1,2,3],[5,6,7]]", "[[4,8]]"},
    {"an error counts records: the record's line", "1,2,3\n\n4,\t5\r\n", xyz, false,
     "the line number above counts data records; the record starts on line 3 of the file: \"4,\\t5\\r\"", "",
     "Unexpected number of columns (line 1)"},
};

QString compact(const QJsonValue& value)
{
    return QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact);
}

} // namespace

TEST_F(Notices, EachRuleThatChangesTheDataIsToldOnce)
{
    // Lines are found by offsets in the file, which blocks of two bytes put
    // to the test.
    for (const Row& r : rows) {
        for (size_t block : {size_t(1) << 20, size_t(2)}) {
            SCOPED_TRACE(r.what + QString(" in blocks of %1 bytes").arg(block).toStdString());
            const BlockSize blocks(block);
            SetUp();
            const QString file = write("n.csv", r.content);
            const QString command = QString("load -%1 \"%2\" CSVParams \"%2\" %3 %4-dataOnly")
                                        .arg(r.lineSet ? "line_set_csv" : "point_cloud_csv", file, r.params,
                                             r.lineSet ? "-lineSetParams 0 none 0 1 " : "");
            const bool imported = !r.points.isEmpty();
            EXPECT_EQ(callReader(r.lineSet ? hxReadCSVLineSet : hxReadCSVPointCluster, command), imported ? 1 : 0);
            // After an import the notice is one warning; after an error, a line beside it.
            const QStringList warnings = consoleTexts(HxMessage::Warning);
            EXPECT_EQ(warnings.size(), imported && !r.notice.isEmpty() ? 1 : 0);
            EXPECT_EQ(warnings.filter(file + ": " + r.notice).size(), warnings.size());
            if (!imported) {
                EXPECT_EQ(consoleTexts(HxMessage::Error), QStringList(file + ": " + r.values));
                EXPECT_EQ(consoleTexts(HxMessage::Info).filter(file + ": " + r.notice).size(), 1);
                continue;
            }
            ASSERT_TRUE(lastObject());
            const QJsonObject object = jsonOf(lastObject());
            EXPECT_EQ(compact(object["points"]), r.points);
            const QJsonValue values =
                r.lineSet ? object["data"] : object["labelColumns"].toArray()[0].toObject()["values"];
            EXPECT_EQ(r.values.isEmpty() ? QString() : compact(values), r.values);
        }
    }
}

TEST_F(Notices, ManyRowsMakeOneLineWithTheirCount)
{
    QByteArray shortRows, emptyFields;
    for (int i = 0; i < 10000; ++i) {
        shortRows += QByteArray::number(i) + ",1\n2\n";
        emptyFields += QByteArray::number(i) + ",,1,2\n";
    }
    const struct {
        QByteArray content;
        const char* notice;
    } cases[] = {
        {shortRows, "line 1 (\"0,1\") has 2 fields where 3 are read; the record continued on line 2"},
        {emptyFields, "line 1 (\"0,,1,2\") has an empty field"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.notice);
        SetUp();
        const QString command = QString("load -point_cloud_csv \"%1\" CSVParams \"%1\" %2 -dataOnly");
        ASSERT_EQ(callReader(hxReadCSVPointCluster, command.arg(write("m.csv", c.content), xyz)), 1);
        const QStringList warnings = consoleTexts(HxMessage::Warning);
        EXPECT_EQ(warnings.size(), 1);
        EXPECT_EQ(warnings.filter(c.notice).filter("(10000 records like this)").size(), 1);
        EXPECT_EQ(jsonOf(lastObject())["points"].toArray().size(), 10000);
    }
}

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
