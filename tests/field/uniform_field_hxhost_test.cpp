// Fields imported through the dialog replay through hxhost to equal fields:
// JSON values, LoadCmd and the exported VTK image.
#include <QProcess>

#include "FieldImport.h"
#include "VtkFile.h"

namespace {

struct Imported {
    QString name, loadCmd, spacing;
    std::vector<double> values;
    QByteArray bytes;
};

using UniformFieldReplay = FieldTest;

} // namespace

TEST_F(UniformFieldReplay, EveryTypeAndVariableCountReplaysToTheSameField)
{
    const char* delimiters[] = {";", "\t", " ", "\"", ","};
    const QString types[] = {"byte", "short", "ushort", "int32", "float", "double"};
    const QString vtkTypes[] = {"UInt8", "Int16", "UInt16", "Int32", "Float32", "Float64"};
    const QString classes[] = {"HxUniformScalarField3", "HxUniformComplexScalarField3", "HxUniformVectorField3",
                               "HxUniformColorField3",  "HxRegField3",                  "HxUniformComplexVectorField3"};
    std::vector<Imported> imported;
    QStringList args = {"--export", dir.filePath("vtk")};
    for (int type = 0; type < 6; ++type)
        for (int n = 1; n <= 6; ++n) {
            const int i = type * 6 + n;
            const FieldSettings s{type, n, {3, 2, 1}, i % 2 == 1, delimiters[i % 5]};
            QByteArray content = "# field " + QByteArray::number(i) + "\n";
            for (int k = 0; k < 6 * n; ++k)
                content += QByteArray::number(k * 37.25 - 150) + (k % 5 == 4 ? "\n" : s.delimiter);
            // A y extent of 0 gets VTK spacing 1, as does the one-node z axis.
            const HxRegField3* f = importField(QString("t%1v%2.csv").arg(type).arg(n), content, s, [i](auto& d) {
                d.bBoxTxt1->setText("0.5");
                d.bBoxTxt2->setText("-1.5");
                d.bBoxTxt3->setText(i % 2 ? "0" : "0.25");
                if (i % 3 == 0)
                    d.bBoxBtn->click();
            });
            const HxLattice3& l = f->lattice();
            imported.push_back({f->getName(), loadCommandOf(f), i % 2 ? "0.5 1 1" : "0.5 0.25 1",
                                jsonNumbers(jsonOf(lastObject())["values"].toArray()),
                                QByteArray(static_cast<const char*>(l.dataPtr().getData()), int(l.dataBytes()))});
            args << "-c" << imported.back().loadCmd;
        }

    const HostRun r = runHxhost(args);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const QJsonArray objects = r.objects();
    ASSERT_EQ(objects.size(), static_cast<int>(imported.size()));
    for (size_t i = 0; i < imported.size(); ++i) {
        const Imported& expected = imported[i];
        SCOPED_TRACE(expected.loadCmd.toStdString());
        const QJsonObject o = objects[static_cast<int>(i)].toObject();
        EXPECT_EQ(o["name"].toString(), expected.name);
        EXPECT_EQ(o["class"].toString(), classes[i % 6]);
        EXPECT_EQ(o["primType"].toString(), types[i / 6]);
        EXPECT_EQ(o["nDataVar"].toInt(), int(i % 6) + 1);
        EXPECT_EQ(jsonNumbers(o["dims"].toArray()), std::vector<double>({3, 2, 1}));
        EXPECT_EQ(jsonNumbers(o["values"].toArray()), expected.values);
        EXPECT_EQ(o["parameters"].toObject()["LoadCmd"].toString(), expected.loadCmd);
        const VtkFile vtk = readVtk(dir.filePath("vtk/" + expected.name + ".vti"));
        EXPECT_EQ(vtk.attr("ImageData", "WholeExtent"), "0 2 0 1 0 0");
        EXPECT_EQ(vtk.attr("ImageData", "Origin"), "0 -1.5 0");
        EXPECT_EQ(vtk.attr("ImageData", "Spacing"), expected.spacing);
        EXPECT_EQ(vtk.attr("PointData/values", "type"), vtkTypes[i / 6]);
        EXPECT_EQ(vtk.attr("PointData/values", "NumberOfComponents"), i % 6 ? QString::number(i % 6 + 1) : "");
        EXPECT_EQ(vtk.bytes("PointData/values"), expected.bytes);
    }
    // Replays are quiet: the files hold exactly what was requested anyway.
    EXPECT_FALSE(r.err.contains("Warning")) << r.err.constData();
}

TEST_F(UniformFieldReplay, ExampleScriptHoldsWhatTheDialogWrites)
{
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName("examples/density_32x24x16.csv");
    applySettings(dialog, {4, 1, {32, 24, 16}, true, ",", "#", 1});
    for (QxLineEdit* voxel : {dialog.bBoxTxt1, dialog.bBoxTxt3, dialog.bBoxTxt5})
        voxel->setText("0.5");
    const QString command = dialog.getLoadCommandFromDialog().toQString();
    EXPECT_TRUE(exampleScriptHolds(command)) << command.toStdString();
    const HostRun r = runHxhost({"-c", command, "--export", dir.path()});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const QJsonObject o = r.objects()[0].toObject();
    const std::vector<double> values = jsonNumbers(o["values"].toArray());
    ASSERT_EQ(values.size(), 32u * 24 * 16);
    EXPECT_EQ(static_cast<float>(values.front()), 2.1f);
    EXPECT_EQ(static_cast<float>(values.back()), 4.07f);
    EXPECT_EQ(jsonNumbers(o["bbox"].toArray()), std::vector<double>({0, 15.5, 0, 11.5, 0, 7.5}));

    // VTK itself opens the image when its Python module is installed.
    QProcess python;
    python.start("/usr/bin/python3", {"-c",
                                      "import sys, vtk\n"
                                      "r = vtk.vtkXMLImageDataReader(); r.SetFileName(sys.argv[1]); r.Update()\n"
                                      "i = r.GetOutput(); a = i.GetPointData().GetArray('values')\n"
                                      "print(i.GetDimensions(), i.GetSpacing(), a.GetNumberOfTuples(), "
                                      "round(a.GetValue(0), 2))",
                                      dir.filePath("density_32x24x16.csv.vti")});
    if (!python.waitForFinished() || python.exitCode() != 0)
        GTEST_SKIP() << "no VTK module for python3: " << python.readAllStandardError().constData();
    EXPECT_EQ(python.readAllStandardOutput().trimmed(), "(32, 24, 16) (0.5, 0.5, 0.5) 12288 2.1");
}
