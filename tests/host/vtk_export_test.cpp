// hxhost --export: the VTK XML structure and the values in the appended block.
#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <cmath>
#include <cstring>
#include <vector>

#include "HostRun.h"
#include "VtkFile.h"

namespace {

HostRun exportRun(const QString& dir, const QStringList& commands)
{
    QStringList args = {"--packages", HX_TEST_PACKAGES, "--export", dir};
    for (const QString& c : commands)
        args << "-c" << c;
    return runHxhost(args);
}

} // namespace

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
    EXPECT_EQ(f.attr("PointData/Id3", "tag"), "Array");
    EXPECT_EQ(f.attr("PointData/Id3", "type"), "String");
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

    HostRun notAFolder = exportRun(dir.filePath("b.csv.vtp"), {"load -fake_lineset c.csv -dataOnly"});
    EXPECT_EQ(notAFolder.exitCode, 1);
    EXPECT_TRUE(notAFolder.err.contains("cannot create the folder")) << notAFolder.err.constData();
}
