// Point cloud import: the builder, the reader entry and replays through
// hxhost.
#include <QComboBox>
#include <QSet>

#include "HxCluster.h"
#include "ImportSupport.h"
#include "QxCSVPointClusterImport.h"

namespace {

using PointCloud = ImportTest;

QStringList columnNames(const QJsonObject& cloud, const char* kind)
{
    QStringList names;
    for (const QJsonValue& c : cloud.value(kind).toArray())
        names << c.toObject().value("name").toString();
    return names;
}

QJsonArray firstColumn(const QJsonObject& cloud, const char* kind)
{
    return cloud.value(kind).toArray()[0].toObject().value("values").toArray();
}

} // namespace

TEST_F(PointCloud, BuilderMakesPointsValuesAndLabels)
{
    struct Case {
        const char *what, *csv;
        bool header;
        std::vector<std::pair<int, int>> values; // picker entry (file column from 1, 0 = not read), type
        QStringList dataNames;
        QJsonArray data;
        QStringList labelNames;
        QJsonArray labels;
        int warnings;
    } cases[] = {
        {"no header", "1 2 3 4.5 a\n4 5 6 -1 b\n", false, {{4, 0}, {5, 1}}, {"Data0"}, {4.5, -1}, {"Label0"}, {"a", "b"}, 0},
        {"header names each column after its own file column", "x y z a b\n1 2 3 4 p\n4 5 6 5 q\n", true,
         {{5, 1}, {4, 0}}, {"a"}, {4, 5}, {"b"}, {"p", "q"}, 0},
        {"Real text that is no number", "1 2 3 abc\n4 5 6 7\n", false, {{4, 0}}, {"Data0"}, {0, 7}, {}, {}, 1},
        {"unread value column skipped", "1 2 3 9 8\n4 5 6 9 8\n", false, {{0, 0}, {5, 0}}, {"Data0"}, {8, 8}, {}, {}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        QxCSVPointClusterImport d;
        d.setFileName(write("b.csv", c.csv).toLatin1());
        d.firstLineColumnLabels->setChecked(c.header);
        for (size_t v = 0; v < c.values.size(); ++v) {
            d.setPhysicalColumnIndex(3 + v, c.values[v].first - 1);
            d.dataTypePicker(3 + v)->setCurrentIndex(c.values[v].second);
        }
        EXPECT_EQ(d.parseFile(), 1);
        const QJsonObject cloud = d.createdCluster() ? jsonOf(d.createdCluster()) : QJsonObject();
        EXPECT_EQ(cloud.value("ids").toArray(), QJsonArray({1, 2}));
        EXPECT_EQ(cloud.value("points").toArray()[1].toArray(), QJsonArray({4, 5, 6}));
        EXPECT_EQ(columnNames(cloud, "dataColumns"), c.dataNames);
        EXPECT_EQ(columnNames(cloud, "labelColumns"), c.labelNames);
        EXPECT_EQ(firstColumn(cloud, "dataColumns"), c.data);
        EXPECT_EQ(firstColumn(cloud, "labelColumns"), c.labels);
        EXPECT_EQ(consoleTexts(HxMessage::Warning).size(), c.warnings);
    }
}

TEST_F(PointCloud, ReaderEntryShowsTheDialogOrReplays)
{
    const char header[] = "x y z a b c d e f\n1 2 3 4 5 6 7 8 9\n";
    const QString block = " CSVParams %1 ";
    // Replays read the value types at index 7, the block's header flag.
    struct Case {
        const char *what, *csv;
        QString args; // after the file name
        bool dialog;
        QStringList labels;
        int dataColumns, warnings; // dataColumns -1: no cloud
        const char* error;
    } cases[] = {
        {"no -dataOnly", header, "", true, {}, -1, 0, nullptr},
        {"longer last argument", header, " -dataOnlyX", true, {}, -1, 0, nullptr},
        {"-dataOnly not last", header, " -dataOnly x", true, {}, -1, 0, nullptr},
        {"header flag 1: Value1 text, list ignored", header,
         block + "\"5 0 1 2 3 4\" \" \" \"#\" 1 1 0 \"0 1\" -dataOnly", false, {"a"}, 1, 0, nullptr},
        {"six value columns: four kept", header,
         block + "\"9 0 1 2 3 4 5 6 7 8\" \" \" \"#\" 1 1 0 \"0 0 0 0 0 0\" -dataOnly", false, {"a"}, 3, 1, nullptr},
        {"no CSVParams: the dialog's defaults", "1 2 3 4\n", " -dataOnly", false, {}, 0, 0, nullptr},
        {"X missing", header, block + "\"3 -1 1 2\" \" \" \"#\" 2 0 0 \"\" -dataOnly", false, {}, -1, 0,
         "no file column is given for \"X\""},
        {"a parse error", "1 2 3\n4 5\n", block + "\"3 0 1 2\" \" \" \"#\" 1 0 0 \"\" -dataOnly", false, {}, -1, 0,
         "Unexpected number of columns (line 1)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        const QString file = write("r.csv", c.csv);
        ModalDriver<QxCSVPointClusterImport> driver([](QxCSVPointClusterImport& d) { d.pushButtonCancel->click(); });
        const int result = callReader(hxReadCSVPointCluster, "load -point_cloud_csv " + file + c.args.arg(file));
        EXPECT_EQ(driver.opened, c.dialog);
        EXPECT_EQ(result, c.dataColumns >= 0 ? 1 : 0);
        EXPECT_EQ(consoleTexts(HxMessage::Warning).size(), c.warnings);
        EXPECT_EQ(consoleTexts(HxMessage::Error), c.error ? QStringList(file + ": " + c.error) : QStringList());
        EXPECT_EQ(HxObjectPool::instance()->objects().size(), c.dataColumns >= 0 ? 1u : 0u);
        const QJsonObject cloud = c.dataColumns >= 0 && lastObject() ? jsonOf(lastObject()) : QJsonObject();
        EXPECT_EQ(columnNames(cloud, "labelColumns"), c.labels);
        EXPECT_EQ(columnNames(cloud, "dataColumns").size(), std::max(c.dataColumns, 0));
    }
}

TEST_F(PointCloud, SurveyImportReplaysOnceButNotTwice)
{
    ModalDriver<QxCSVPointClusterImport> driver([](QxCSVPointClusterImport& d) {
        d.comboBoxColumnDelimiter->setCurrentIndex(1);
        d.firstLineColumnLabels->setChecked(true);
        d.setPhysicalColumnIndex(3, 4);
        d.setPhysicalColumnIndex(4, 3);
        d.setPhysicalColumnIndex(5, 5);
        d.dataTypePicker(3)->setCurrentIndex(QxCSVPointClusterImport::StringValues);
        d.pushButtonOK->click();
    });
    EXPECT_EQ(callReader(hxReadCSVPointCluster, "load -point_cloud_csv examples/survey_points.csv"), 1);
    ASSERT_TRUE(lastObject());
    const QJsonObject survey = jsonOf(lastObject());
    EXPECT_EQ(survey.value("ids").toArray().size(), 3000);
    EXPECT_EQ(columnNames(survey, "dataColumns"), QStringList({"intensity", "return"}));
    QSet<QString> classes;
    for (const QJsonValue& v : firstColumn(survey, "labelColumns"))
        classes << v.toString();
    EXPECT_EQ(classes, QSet<QString>({"ground", "vegetation", "building"}));
    // With a header row the replay makes Value1 text, as chosen here. The
    // replayed object's command is written from the unseen dialog's default
    // delimiter and header box and no longer reads the file.
    const QString command = loadCommandOf(lastObject());
    const QString again = expectExampleReplaysToTheSameObject();
    EXPECT_EQ(again, QString(command).replace("\",\" \"#\" 1 1 0", "\" \" \"#\" 1 0 0"));
    EXPECT_EQ(runHxhost({"-c", again}).exitCode, 1);
}
