// Point cloud import: the dialog, the builder, the reader entry and replays
// through hxhost.
#include <QComboBox>
#include <gtest/gtest.h>

#include "HostRun.h"
#include "HxCluster.h"
#include "ImportSupport.h"
#include "QxCSVPointClusterImport.h"

namespace {

class PointCloud : public ::testing::Test {
protected:
    void SetUp() override
    {
        HxObjectPool::instance()->clear();
        theMsg->clearEntries();
    }
    QString replay(const QString& file, const QString& block)
    {
        return QString("load -point_cloud_csv \"%1\" CSVParams \"%1\" %2 -dataOnly").arg(file, block);
    }
    CsvFiles files;
};

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

int warningCount()
{
    int n = 0;
    for (const HxMessage::Entry& e : theMsg->entries())
        n += e.level == HxMessage::Warning;
    return n;
}

} // namespace

TEST_F(PointCloud, DialogOffersUpToTenTypedValueColumns)
{
    QxCSVPointClusterImport d;
    for (int i = 0; i < 7; ++i)
        d.addValuesClicked();
    d.dataTypePicker(4)->setCurrentIndex(QxCSVPointClusterImport::StringValues);
    EXPECT_EQ(d.getPointClusterParamsFromDialog(), "0 1 0 0 0 0 0 0 0 0");
    // Index 8 of a command that ends at index 7 is not there.
    const char* argv[] = {"f", "CSVParams", "f", "3 0 1 2", " ", "#", "1", "0", "1 0"};
    EXPECT_EQ(d.getPointClusterParamsFromLoadCommand(9, argv), "1 0");
    EXPECT_EQ(d.getPointClusterParamsFromLoadCommand(8, argv), "");
}

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
        {"quoted label", "1 2 3 \"ab\"\n4 5 6 c\n", false, {{4, 1}}, {}, {}, {"Label0"}, {"ab", "c"}, 0},
    };
    for (const Case& c : cases) {
        SetUp();
        QxCSVPointClusterImport d;
        d.setFileName(files.write("b.csv", c.csv).toLatin1());
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
        EXPECT_EQ(warningCount(), c.warnings) << c.what;
    }
}

TEST_F(PointCloud, ReaderShowsTheDialogUnlessTheLastArgumentIsDataOnly)
{
    const QString file = files.write("p.csv", "1 2 3\n4 5 6\n");
    struct Case {
        const char* extra;
        bool dialog;
        int result;
    } cases[] = {{"", true, 0}, {"-dataOnlyX", true, 0}, {"-dataOnly x", true, 0}, {"-dataOnly", false, 1}};
    for (const Case& c : cases) {
        int result = -1;
        const bool opened = driveDialog<QxCSVPointClusterImport>(
            [](QxCSVPointClusterImport& d) { QTest::mouseClick(d.pushButtonCancel, Qt::LeftButton); },
            [&] { result = callReader(hxReadCSVPointCluster, QString("load -point_cloud_csv %1 %2").arg(file, c.extra)); });
        EXPECT_EQ(opened, c.dialog) << c.extra;
        EXPECT_EQ(result, c.result) << c.extra;
    }
    // Only the replay created a cloud, with the dialog's defaults.
    EXPECT_EQ(objectCount(), 1);
    EXPECT_TRUE(loadCommandOf(lastObject()).endsWith("\"7 0 1 2 -1 -1 -1 -1\" \" \" \"#\" 1 0 0 \"0 0 0 0\" -dataOnly"));
}

TEST_F(PointCloud, ReplayTakesTheValueTypesFromIndexSeven)
{
    const QString file = files.write("h.csv", "x y z a b c d e f\n1 2 3 4 5 6 7 8 9\n");
    struct Case {
        const char* what;
        const char* block; // after the file name
        QStringList labels;
        int dataColumns;
        int warnings;
        int result;
    } cases[] = {
        {"header flag 1: Value1 text", "\"5 0 1 2 3 4\" \" \" \"#\" 1 1 0 \"0 0\"", {"a"}, 1, 0, 1},
        {"six value columns: four kept", "\"9 0 1 2 3 4 5 6 7 8\" \" \" \"#\" 1 1 0 \"0 0 0 0 0 0\"", {"a"}, 3, 1, 1},
        {"X missing", "\"3 -1 1 2\" \" \" \"#\" 2 0 0 \"\"", {}, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SetUp();
        ASSERT_EQ(callReader(hxReadCSVPointCluster, replay(file, c.block)), c.result) << c.what;
        EXPECT_EQ(warningCount(), c.warnings) << c.what;
        if (c.result != 1) {
            EXPECT_EQ(objectCount(), 0) << c.what;
            continue;
        }
        const QJsonObject cloud = jsonOf(lastObject());
        EXPECT_EQ(columnNames(cloud, "labelColumns"), c.labels) << c.what;
        EXPECT_EQ(columnNames(cloud, "dataColumns").size(), c.dataColumns) << c.what;
    }
}

TEST_F(PointCloud, InteractiveImportReplaysThroughHxhostToTheSameCloud)
{
    const QString file = files.write("i.csv", "# survey\n1 2 3 4.5 7\n4 5 6 -1 8.25\n");
    int result = 0;
    driveDialog<QxCSVPointClusterImport>(
        [](QxCSVPointClusterImport& d) {
            d.setPhysicalColumnIndex(3, 3);
            d.setPhysicalColumnIndex(4, 4);
            QTest::mouseClick(d.pushButtonOK, Qt::LeftButton);
        },
        [&] { result = callReader(hxReadCSVPointCluster, "load -point_cloud_csv " + file); });
    ASSERT_EQ(result, 1);
    const QJsonObject imported = jsonOf(lastObject());
    EXPECT_EQ(columnNames(imported, "dataColumns").size(), 2);

    HostRun r = runHxhost({"-c", loadCommandOf(lastObject())});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_EQ(r.objects()[0].toObject(), imported);
}

TEST_F(PointCloud, ReplayOfAHeaderFileFollowsTheArgumentPositions)
{
    const QString file = files.write("hdr.csv", "x,y,z,n,t\n1,2,3,4,a\n");
    driveDialog<QxCSVPointClusterImport>(
        [](QxCSVPointClusterImport& d) {
            d.comboBoxColumnDelimiter->setCurrentIndex(1);
            d.firstLineColumnLabels->setChecked(true);
            d.setPhysicalColumnIndex(3, 3);
            d.setPhysicalColumnIndex(4, 4);
            d.dataTypePicker(4)->setCurrentIndex(QxCSVPointClusterImport::StringValues);
            QTest::mouseClick(d.pushButtonOK, Qt::LeftButton);
        },
        [&] { callReader(hxReadCSVPointCluster, "load -point_cloud_csv " + file); });
    const QJsonObject imported = jsonOf(lastObject());
    EXPECT_EQ(columnNames(imported, "labelColumns"), QStringList({"t"}));
    const QString command = loadCommandOf(lastObject());
    EXPECT_TRUE(command.endsWith("\"7 0 1 2 3 4 -1 -1\" \",\" \"#\" 1 1 0 \"0 1 0 0\" -dataOnly")) << command.toStdString();

    // The header flag stands where the value types are read: Value1 turns
    // text and Value2 numeric; the replayed object's command keeps the
    // dialog's default delimiter and no header, and no longer replays.
    HostRun r = runHxhost({"-c", command});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const QJsonObject replayed = r.objects()[0].toObject();
    EXPECT_EQ(columnNames(replayed, "labelColumns"), QStringList({"n"}));
    EXPECT_EQ(firstColumn(replayed, "dataColumns"), QJsonArray({0}));
    EXPECT_TRUE(r.err.contains("that are not numbers")) << r.err.constData();
    const QString again = replayed.value("parameters").toObject().value("LoadCmd").toString();
    EXPECT_TRUE(again.endsWith("\" \" \"#\" 1 0 0 \"1 0 0 0\" -dataOnly")) << again.toStdString();
    EXPECT_EQ(runHxhost({"-c", again}).exitCode, 1);
}

TEST_F(PointCloud, ParseErrorEndsTheImportWithNoObject)
{
    const QString file = files.write("bad.csv", "1 2 3\n4 5\n");
    HostRun r = runHxhost({"-c", replay(file, "\"3 0 1 2\" \" \" \"#\" 1 0 0 \"\"")});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.objects().isEmpty());
    EXPECT_TRUE(r.err.contains((file + ": Unexpected number of columns (line 1)").toLatin1()))
        << r.err.constData();
}
