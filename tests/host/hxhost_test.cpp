// hxhost as users run it: exit statuses, package loading, its JSON and its
// VTK export (the XML structure and the values in the appended block).
#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <cmath>

#include "HostRun.h"
#include "VtkFile.h"

namespace {

const QStringList kFake = {QStringLiteral("--packages"), QStringLiteral(HX_TEST_PACKAGES)};

HostRun exportRun(const QString& dir, const QStringList& commands)
{
    QStringList args = kFake + QStringList{"--export", dir};
    for (const QString& c : commands)
        args << "-c" << c;
    return runHxhost(args);
}

} // namespace

TEST(Hxhost, ExitStatuses)
{
    struct Case {
        const char* what;
        QStringList args;
        int status;
        const char* errorText;
    } cases[] = {
        {"unknown load option", {"-c", "load -no_such_option x.csv"}, 2, "unknown load option '-no_such_option'"},
        {"unknown command", {"-c", "import x.csv"}, 2, "unknown command 'import'"},
        {"missing file", kFake + QStringList{"-c", "load -fake_echo"}, 2, "needs a file name"},
        {"unknown hxhost option", {"--frobnicate"}, 2, "unknown option --frobnicate"},
        {"unterminated quote", {"-c", "load -x \"a"}, 2, "unterminated double quote"},
        {"missing script", {"/no/such/script.hx"}, 2, "cannot read the script"},
        {"reader returns 0", kFake + QStringList{"-c", "load -fake_echo a.csv fail -dataOnly", "-c",
                                                 "load -fake_echo b.csv -dataOnly"}, 1, "created nothing"},
        {"reader not exported", kFake + QStringList{"-c", "load -fake_missing a.csv -dataOnly"}, 1,
         "does not export it"},
        {"dialog without display", kFake + QStringList{"-c", "load -fake_echo a.csv"}, 1, "needs a display"},
        {"replay without display", kFake + QStringList{"-c", "load -fake_echo a.csv -dataOnly"}, 0, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HostRun r = runHxhost(c.args, false);
        EXPECT_EQ(r.exitCode, c.status) << r.err.constData();
        EXPECT_TRUE(r.err.contains(c.errorText)) << r.err.constData();
    }
}

TEST(Hxhost, RunsScriptsAndNamesObjectsUniquely)
{
    EXPECT_EQ(runHxhost({}).json, QJsonObject({{"objects", QJsonArray()}, {"messages", QJsonArray()}}));
    QFile f(QString::fromLatin1(HX_TEST_PACKAGES "/script.hx"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("# a comment\n\nload -fake_lineset a.csv -dataOnly\n  load -fake_lineset a.csv -dataOnly\n");
    f.close();
    HostRun r = runHxhost(kFake + QStringList{f.fileName()});
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    ASSERT_EQ(r.objects().size(), 2);
    EXPECT_EQ(r.objects()[1].toObject().value("name").toString(), "a.csv2");
}

TEST(Hxhost, ListsOnlyLibrariesWithAPackageEntry)
{
    HostRun r = runHxhost(kFake + QStringList{"--list"}, false);
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_TRUE(r.out.contains("package fakepkg 0.1")) << r.out.constData();
    EXPECT_TRUE(r.out.contains("load -fake_cluster")) << r.out.constData();
    EXPECT_FALSE(r.out.contains("notapackage")) << r.out.constData();
    EXPECT_TRUE(runHxhost({"--list"}, false).out.contains("package hxcsv"));
}

TEST(Hxhost, JsonRoundTripsEveryNumberAndText)
{
    HostRun r = runHxhost(kFake + QStringList{"-c", "load -fake_cluster /tmp/c.csv -dataOnly", "-c",
                                              "load -fake_echo \"a\tb\nc\\\\\" fail -dataOnly"});
    ASSERT_EQ(r.objects().size(), 1) << r.out.constData();
    QJsonObject c = r.objects()[0].toObject();
    EXPECT_EQ(c.value("class").toString(), "HxCluster");
    QJsonArray pts = c.value("points").toArray();
    const float xs[3] = {0.1f, -1e-38f, 3.4028235e38f};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(static_cast<float>(pts[i].toArray()[0].toDouble()), xs[i]) << i;
    // Floats are written in their own shortest form, not as widened doubles.
    EXPECT_TRUE(r.out.contains("[0.1,0,-0.3]")) << r.out.left(400).constData();
    EXPECT_EQ(c.value("dataColumns").toArray()[0].toObject().value("values").toArray(), QJsonArray({"nan", "inf", "-inf"}));
    EXPECT_EQ(c.value("labelColumns").toArray()[0].toObject().value("values").toArray()[2].toString(),
              QString::fromUtf8("läbel \"2\""));
    const QJsonArray messages = r.json.value("messages").toArray();
    EXPECT_TRUE(messages.contains(QJsonObject({{"level", "info"}, {"text", "arg[0]=<a\tb\nc\\>"}}))) << r.out.constData();
    EXPECT_TRUE(messages.last().toObject().value("level") == "error") << r.out.constData();
}

// Fields are checked on the importer's own, in the field tests.
TEST(VtkExport, ClustersAndLineSetsArePolyData)
{
    QTemporaryDir dir;
    // Both columns are named "Id" like the ids: VTK keeps one array per name.
    HostRun r = exportRun(dir.path(), {"load -fake_cluster /tmp/c.csv Id -dataOnly", "load -fake_lineset l.csv -dataOnly"});
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    VtkFile f = readVtk(dir.filePath("c.csv.vtp"));
    EXPECT_EQ(f.attr("VTKFile", "type"), "PolyData");
    EXPECT_EQ(f.attr("VTKFile", "header_type"), "UInt64");
    EXPECT_EQ(f.attr("Piece", "NumberOfVerts"), "3");
    EXPECT_EQ(f.arrays.keys(), QStringList({"PointData/Id", "PointData/Id2", "PointData/Id3", "Points/",
                                            "Verts/connectivity", "Verts/offsets"}));
    EXPECT_EQ(f.values<float>("Points/"), std::vector<float>({0.1f, 0, -0.3f, -1e-38f, 2, -0.3f,
                                                              3.4028235e38f, 4, -0.3f}));
    EXPECT_EQ(f.attr("PointData/Id", "type"), "Int32");
    EXPECT_EQ(f.values<int>("PointData/Id"), std::vector<int>({1, 2, 3}));
    EXPECT_EQ(f.attr("PointData/Id2", "type"), "Float32");
    const std::vector<float> data = f.values<float>("PointData/Id2");
    EXPECT_TRUE(data.size() == 3 && std::isnan(data[0]) && data[2] == -INFINITY);
    // Strings as VTK's own writer stores them: UTF-8, each ended by a NUL.
    EXPECT_EQ(f.attr("PointData/Id3", "tag") + " " + f.attr("PointData/Id3", "type"), "Array String");
    const char labels[] = "l\xc3\xa4" "bel \"0\"\0l\xc3\xa4" "bel \"1\"\0l\xc3\xa4" "bel \"2\"";
    EXPECT_EQ(f.bytes("PointData/Id3"), QByteArray(labels, sizeof labels));
    EXPECT_EQ(f.values<qint64>("Verts/connectivity"), std::vector<qint64>({0, 1, 2}));
    EXPECT_EQ(f.values<qint64>("Verts/offsets"), std::vector<qint64>({1, 2, 3}));

    f = readVtk(dir.filePath("l.csv.vtp"));
    EXPECT_EQ(f.attr("Piece", "NumberOfLines"), "2");
    EXPECT_EQ(f.values<qint64>("Lines/connectivity"), std::vector<qint64>({0, 1, 2}));
    EXPECT_EQ(f.values<qint64>("Lines/offsets"), std::vector<qint64>({2, 3}));
    EXPECT_EQ(f.values<float>("PointData/Data0"), std::vector<float>({0, 0.5f, 1}));
}

TEST(VtkExport, ReportsWhatCannotBeWrittenAndWritesTheRest)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("a.csv.vtp"));
    HostRun r = exportRun(dir.path(), {"load -fake_lineset a.csv -dataOnly", "load -fake_lineset b.csv -dataOnly"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.err.contains("cannot write " + dir.filePath("a.csv.vtp").toUtf8())) << r.err.constData();
    EXPECT_TRUE(QFile::exists(dir.filePath("b.csv.vtp")));
    r = exportRun(dir.filePath("b.csv.vtp"), {"load -fake_lineset c.csv -dataOnly"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.err.contains("cannot create the folder")) << r.err.constData();
}
