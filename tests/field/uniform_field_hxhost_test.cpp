// Fields imported through the dialog replay through hxhost to equal fields:
// JSON values, LoadCmd and the exported VTK image.
#include <QDir>
#include <QJsonArray>
#include <QProcess>
#include <gtest/gtest.h>

#include "FieldImport.h"
#include "HostRun.h"
#include "VtkFile.h"

namespace {

struct Imported {
    QString name, loadCmd;
    std::vector<double> values;
    QByteArray bytes;
};

// Imports content through the dialog in this process.
Imported importInProcess(const QString& path, const QByteArray& content, const FieldSettings& s, bool boxMode)
{
    writeFile(path, content);
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(path.toLocal8Bit());
    applySettings(dialog, s);
    dialog.bBoxTxt2->setText("-1.5");
    if (boxMode)
        dialog.bBoxBtn->click();
    EXPECT_EQ(dialog.parseFile(), 1);
    const HxRegField3* f = lastField();
    const HxLattice3& l = f->lattice();
    return {f->getName(), loadCmdOf(*f), latticeValues(l),
            QByteArray(static_cast<const char*>(l.dataPtr().getData()), static_cast<int>(l.dataBytes()))};
}

std::vector<double> jsonNumbers(const QJsonArray& a)
{
    std::vector<double> v;
    for (const QJsonValue& x : a)
        v.push_back(x.toDouble());
    return v;
}

} // namespace

TEST(UniformFieldReplay, EveryTypeAndVariableCountReplaysToTheSameField)
{
    HxObjectPool::instance()->clear();
    QTemporaryDir dir;
    const char* delimiters[] = {";", "\t", " ", "\"", ","};
    const char* types[] = {"byte", "short", "ushort", "int32", "float", "double"};
    const char* classes[] = {"HxUniformScalarField3", "HxUniformComplexScalarField3", "HxUniformVectorField3",
                             "HxUniformColorField3",  "HxRegField3",                  "HxUniformComplexVectorField3"};
    std::vector<Imported> imported;
    QStringList args = {"--export", dir.filePath("vtk")};
    for (int type = 0; type < 6; ++type)
        for (int n = 1; n <= 6; ++n) {
            const int i = type * 6 + n;
            FieldSettings s;
            s.type = type;
            s.nDataVar = n;
            s.dims[0] = 3;
            s.dims[2] = 1;
            s.xFastest = i % 2;
            s.delimiter = delimiters[i % 5];
            QByteArray content = "# field " + QByteArray::number(i) + "\n";
            for (int k = 0; k < 6 * n; ++k)
                content += QByteArray::number(k * 37.25 - 150) + (k % 5 == 4 ? "\n" : s.delimiter);
            imported.push_back(importInProcess(dir.filePath(QString("t%1v%2.csv").arg(type).arg(n)), content, s, i % 3 == 0));
            args << "-c" << imported.back().loadCmd;
        }
    HxObjectPool::instance()->clear();

    const HostRun r = runHxhost(args);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const QJsonArray objects = r.objects();
    ASSERT_EQ(objects.size(), static_cast<int>(imported.size()));
    for (size_t i = 0; i < imported.size(); ++i) {
        const Imported& expected = imported[i];
        const QJsonObject o = objects[static_cast<int>(i)].toObject();
        const std::string what = expected.loadCmd.toStdString();
        EXPECT_EQ(o["name"].toString(), expected.name) << what;
        EXPECT_EQ(o["class"].toString(), classes[i % 6]) << what;
        EXPECT_EQ(o["primType"].toString(), types[i / 6]) << what;
        EXPECT_EQ(jsonNumbers(o["dims"].toArray()), std::vector<double>({3, 2, 1})) << what;
        EXPECT_EQ(jsonNumbers(o["values"].toArray()), expected.values) << what;
        EXPECT_EQ(o["parameters"].toObject()["LoadCmd"].toString(), expected.loadCmd) << what;
        const VtkFile vtk = readVtk(dir.filePath("vtk/" + expected.name + ".vti"));
        EXPECT_EQ(vtk.attr("ImageData", "WholeExtent"), "0 2 0 1 0 0") << what;
        EXPECT_EQ(vtk.bytes("PointData/values"), expected.bytes) << what;
    }
    // Replays are quiet: the files hold exactly what was requested anyway.
    EXPECT_FALSE(r.err.contains("Warning")) << r.err.constData();
}

TEST(UniformFieldReplay, ExampleScriptHoldsWhatTheDialogWrites)
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(HX_SOURCE_DIR);
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName("examples/density_32x24x16.csv");
    applySettings(dialog, {4, 1, {32, 24, 16}, true, ",", "#", 1});
    for (QxLineEdit* voxel : {dialog.bBoxTxt1, dialog.bBoxTxt3, dialog.bBoxTxt5})
        voxel->setText("0.5");
    const QString command = dialog.getLoadCommandFromDialog().toQString();
    QTemporaryDir dir;
    const HostRun r = runHxhost({"-c", command, "--export", dir.path()});
    QDir::setCurrent(before);
    QFile script(HX_SOURCE_DIR "/examples/examples.hx");
    ASSERT_TRUE(script.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString::fromLatin1(script.readAll()).split('\n').contains(command)) << command.toStdString();
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const QJsonObject o = r.objects()[0].toObject();
    const std::vector<double> values = jsonNumbers(o["values"].toArray());
    ASSERT_EQ(values.size(), 32u * 24 * 16);
    EXPECT_EQ(static_cast<float>(values.front()), 2.1f);
    EXPECT_EQ(static_cast<float>(values.back()), 4.07f);
    EXPECT_EQ(jsonNumbers(o["bbox"].toArray()), std::vector<double>({0, 15.5, 0, 11.5, 0, 7.5}));
    EXPECT_EQ(readVtk(dir.filePath("density_32x24x16.csv.vti")).attr("ImageData", "Spacing"), "0.5 0.5 0.5");

    // VTK itself opens the image when its Python module is installed.
    QProcess python;
    python.start("/usr/bin/python3", {"-c",
                                      "import sys, vtk\n"
                                      "r = vtk.vtkXMLImageDataReader(); r.SetFileName(sys.argv[1]); r.Update()\n"
                                      "i = r.GetOutput(); a = i.GetPointData().GetArray('values')\n"
                                      "print(i.GetDimensions(), a.GetNumberOfTuples(), round(a.GetValue(0), 2))",
                                      dir.filePath("density_32x24x16.csv.vti")});
    if (!python.waitForFinished() || python.exitCode() != 0)
        GTEST_SKIP() << "no VTK module for python3: " << python.readAllStandardError().constData();
    EXPECT_EQ(python.readAllStandardOutput().trimmed(), "(32, 24, 16) 12288 2.1");
}
