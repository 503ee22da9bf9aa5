// Point cloud import: the builder, the reader entry and replays through
// hxhost.
#include <QComboBox>

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
    struct Value {
        int entry; // picker entry: file column counted from 1, 0 = not read
        int type;
    };
    struct Case {
        const char* what;
        const char* csv;
        bool header;
        std::vector<Value> values;
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
        SetUp();
        QxCSVPointClusterImport d;
        d.setFileName(write("b.csv", c.csv).toLatin1());
        d.firstLineColumnLabels->setChecked(c.header);
        for (size_t v = 0; v < c.values.size(); ++v) {
            d.setPhysicalColumnIndex(3 + v, c.values[v].entry - 1);
            d.dataTypePicker(3 + v)->setCurrentIndex(c.values[v].type);
        }
        ASSERT_EQ(d.parseFile(), 1) << c.what;
        const QJsonObject cloud = jsonOf(d.createdCluster());
        EXPECT_EQ(cloud.value("ids").toArray(), QJsonArray({1, 2})) << c.what;
        EXPECT_EQ(cloud.value("points").toArray()[1].toArray(), QJsonArray({4, 5, 6})) << c.what;
        EXPECT_EQ(columnNames(cloud, "dataColumns"), c.dataNames) << c.what;
        EXPECT_EQ(columnNames(cloud, "labelColumns"), c.labelNames) << c.what;
        EXPECT_EQ(firstColumn(cloud, "dataColumns"), c.data) << c.what;
        EXPECT_EQ(firstColumn(cloud, "labelColumns"), c.labels) << c.what;
        EXPECT_EQ(consoleTexts(HxMessage::Warning).size(), c.warnings) << c.what;
    }
}

TEST_F(PointCloud, ReaderEntryShowsTheDialogOrReplays)
{
    const char header[] = "x y z a b c d e f\n1 2 3 4 5 6 7 8 9\n";
    const QString block = " CSVParams %1 ";
    // Replays read the value types at index 7, the block's header flag.
    struct Case {
        const char* what;
        const char* csv;
        QString args; // after the file name
        bool dialog;
        int result;
        QStringList labels;
        int dataColumns;
        int warnings;
    } cases[] = {
        {"no -dataOnly", header, "", true, 0, {}, 0, 0},
        {"longer last argument", header, " -dataOnlyX", true, 0, {}, 0, 0},
        {"-dataOnly not last", header, " -dataOnly x", true, 0, {}, 0, 0},
        {"header flag 1: Value1 text, list ignored", header,
         block + "\"5 0 1 2 3 4\" \" \" \"#\" 1 1 0 \"0 1\" -dataOnly", false, 1, {"a"}, 1, 0},
        {"six value columns: four kept", header,
         block + "\"9 0 1 2 3 4 5 6 7 8\" \" \" \"#\" 1 1 0 \"0 0 0 0 0 0\" -dataOnly", false, 1, {"a"}, 3, 1},
        {"X missing", header, block + "\"3 -1 1 2\" \" \" \"#\" 2 0 0 \"\" -dataOnly", false, 0, {}, 0, 0},
        {"no CSVParams: the dialog's defaults", "1 2 3 4\n", " -dataOnly", false, 1, {}, 0, 0},
    };
    for (const Case& c : cases) {
        SetUp();
        const QString file = write("r.csv", c.csv);
        int result = -1;
        const bool opened = driveDialog<QxCSVPointClusterImport>(
            [](QxCSVPointClusterImport& d) { QTest::mouseClick(d.pushButtonCancel, Qt::LeftButton); },
            [&] { result = callReader(hxReadCSVPointCluster, "load -point_cloud_csv " + file + c.args.arg(file)); });
        EXPECT_EQ(opened, c.dialog) << c.what;
        ASSERT_EQ(result, c.result) << c.what;
        EXPECT_EQ(consoleTexts(HxMessage::Warning).size(), c.warnings) << c.what;
        ASSERT_EQ(HxObjectPool::instance()->objects().size(), size_t(c.result)) << c.what;
        if (c.result == 1) {
            const QJsonObject cloud = jsonOf(lastObject());
            EXPECT_EQ(columnNames(cloud, "labelColumns"), c.labels) << c.what;
            EXPECT_EQ(columnNames(cloud, "dataColumns").size(), c.dataColumns) << c.what;
        }
    }
}

TEST_F(PointCloud, InteractiveImportReplaysThroughHxhostToTheSameCloud)
{
    const QString file = write("i.csv", "# survey\n1 2 3 4.5 7\n4 5 6 -1 8.25\n");
    driveDialog<QxCSVPointClusterImport>(
        [](QxCSVPointClusterImport& d) {
            d.setPhysicalColumnIndex(3, 3);
            d.setPhysicalColumnIndex(4, 4);
            QTest::mouseClick(d.pushButtonOK, Qt::LeftButton);
        },
        [&] { ASSERT_EQ(callReader(hxReadCSVPointCluster, "load -point_cloud_csv " + file), 1); });
    const QJsonObject imported = jsonOf(lastObject());
    EXPECT_EQ(columnNames(imported, "dataColumns").size(), 2);

    HostRun r = runHxhost({"-c", loadCommandOf(lastObject())});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_EQ(r.objects()[0].toObject(), imported);
}

TEST_F(PointCloud, SurveyImportReplaysOnceButNotTwice)
{
    inSourceDir([] {
        driveDialog<QxCSVPointClusterImport>(
            [](QxCSVPointClusterImport& d) {
                d.comboBoxColumnDelimiter->setCurrentIndex(1);
                d.firstLineColumnLabels->setChecked(true);
                const int picks[][2] = {{3, 4}, {4, 3}, {5, 5}};
                for (const auto& p : picks)
                    d.setPhysicalColumnIndex(p[0], p[1]);
                d.dataTypePicker(3)->setCurrentIndex(QxCSVPointClusterImport::StringValues);
                QTest::mouseClick(d.pushButtonOK, Qt::LeftButton);
            },
            [] { callReader(hxReadCSVPointCluster, "load -point_cloud_csv examples/survey_points.csv"); });
    });
    // With a header row the replay makes Value1 text, as chosen here. The
    // replayed object's command is written from the unseen dialog's default
    // delimiter and header box and no longer reads the file.
    const QString command = loadCommandOf(lastObject());
    const QString again = expectExampleReplaysToTheSameObject();
    EXPECT_EQ(again, QString(command).replace("\",\" \"#\" 1 1 0", "\" \" \"#\" 1 0 0"));
    EXPECT_EQ(runHxhost({"-c", again}, true, HX_SOURCE_DIR).exitCode, 1);
}

TEST_F(PointCloud, ParseErrorEndsTheImportWithNoObject)
{
    const QString file = write("bad.csv", "1 2 3\n4 5\n");
    HostRun r = runHxhost({"-c", QString("load -point_cloud_csv %1 CSVParams %1 \"3 0 1 2\" \" \" \"#\" 1 0 0 \"\" "
                                         "-dataOnly").arg(file)});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.objects().isEmpty());
    const QString text = file + ": Unexpected number of columns (line 1)";
    EXPECT_TRUE(r.err.contains(text.toLatin1())) << r.err.constData();
    EXPECT_TRUE(r.json["messages"].toArray().contains(QJsonObject({{"level", "error"}, {"text", text}})))
        << r.out.constData();
}
