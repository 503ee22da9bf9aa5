// The uniform field importer: dialog arithmetic, the settings text, the
// reader entry, failures, and replays through hxhost to equal fields (JSON,
// LoadCmd and the exported VTK image). Reading and filling are compared
// against the rules on random files elsewhere.
#include <QProcess>

#include "FieldImport.h"
#include "VtkFile.h"

using UniformField = FieldTest;

TEST_F(UniformField, RequestedBytesFollowTypeVariablesAndFileSize)
{
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(write("v.csv", QByteArray(7000, 'x')).toLocal8Bit());
    applyLayout(dialog, FieldSettings{0, 1, {10, 20, 30}});
    const struct {
        int type, nDataVarIndex;
        const char* requested;
        int header; // the file's size less the requested bytes, not below 0
    } cases[] = {{0, 0, "6000", 1000}, {5, 0, "48000", 0}, {1, 2, "36000", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.requested);
        dialog.dataTypeOpt->setCurrentIndex(c.type);
        dialog.nDataVarOpt->setCurrentIndex(c.nDataVarIndex);
        emit dialog.dataTypeOpt->activated(c.type);
        EXPECT_EQ(dialog.requestedTxt->text(), c.requested);
        EXPECT_EQ(dialog.headerTxt->value(), c.header);
    }
}

TEST_F(UniformField, ModeSwitchConvertsVoxelSizeAndMaximum)
{
    const struct {
        const char* what;
        int nodes;
        const char *min, *voxel, *max;
    } cases[] = {{"(max - min) / (n - 1)", 11, "0", "0.5", "5"},
                 {"one node: factor 1", 1, "2", "3", "5"},
                 {"written with %g", 4, "-1", "0.1", "-0.7"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QxCSVUniformScalarFieldImport dialog;
        dialog.dimsTxt1->setValue(c.nodes);
        dialog.bBoxTxt2->setText(c.min);
        dialog.bBoxTxt3->setText(c.voxel);
        for (int clicks = 0; clicks < 2; ++clicks) // the second click changes nothing
            dialog.bBoxBtn->click();
        EXPECT_EQ(dialog.bBoxTxt3->text(), c.max);
        EXPECT_EQ(dialog.res2Lbl->text(), "Max coord:");
        dialog.voxelSizeBtn->click();
        EXPECT_EQ(dialog.bBoxTxt3->text(), c.voxel);
        EXPECT_EQ(dialog.res2Lbl->text(), "Voxel size:");
    }
}

TEST_F(UniformField, SettingsTextRoundTrips)
{
    QxCSVUniformScalarFieldImport dialog;
    applySettings(dialog, {5, 1, {10, 20, 30}, true, ",", "#", 1});
    EXPECT_EQ(dialog.getSettingsText(), "CSVUniformScalarField # 1 , 5 0 10 20 30 0 0 1 1 0 0 1 0 0 0 1 1 1");

    // Settings that replays leave at their defaults, read back past a
    // replay's tail; the word Space typed as delimiter comes back a blank.
    QxCSVUniformScalarFieldImport from;
    applySettings(from, {2, 3, {4, 5, 6}, false, "Space", "%", 7});
    from.headerTxt->setValue(12);
    from.bigEndianBtn->setChecked(true);
    from.bBoxBtn->click();
    from.bBoxTxt4->setText("-2.5");
    const McString text = from.getSettingsText();
    EXPECT_EQ(text, "CSVUniformScalarField % 7 Space 2 2 4 5 6 12 1 0 0 1 1 0 0 0 -2.5 3 4 5");
    QxCSVUniformScalarFieldImport to;
    EXPECT_EQ(to.loadSettingsFromLoadCommand(McString(text) += " -dataOnly "), 1);
    EXPECT_EQ(to.lineEditColumnDelimiter->text(), " ");
    EXPECT_EQ(to.getSettingsText(), text);

    // Too short: nothing changes.
    QxCSVUniformScalarFieldImport fresh;
    EXPECT_EQ(fresh.loadSettingsFromLoadCommand("CSVUniformScalarField # 1 , 5 0 10 20 30 0 0 1 1 0 0 1 0 0 0 1 1"), 0);
    EXPECT_EQ(fresh.dataTypeOpt->currentIndex(), 1);

    // An empty comment stays one token; one holding a blank shifts the rest.
    applySettings(fresh, {0, 1, {3, 3, 3}, true, ",", "", 1});
    QxCSVUniformScalarFieldImport back;
    back.loadSettingsFromLoadCommand(fresh.getSettingsText());
    EXPECT_EQ(back.getSettingsText(), fresh.getSettingsText());
    applySettings(fresh, {0, 1, {3, 3, 3}, true, ",", "a b", 1});
    back.loadSettingsFromLoadCommand(fresh.getSettingsText());
    EXPECT_EQ(back.lineEditCommentMarker->text(), "a");
    EXPECT_EQ(back.lineEditDataLineNum->text(), "b");
    EXPECT_EQ(back.lineEditColumnDelimiter->text(), "1");
    EXPECT_EQ(back.dimsTxt0->value(), 1) << "the variable index 0 lands on x";
}

TEST_F(UniformField, ReaderRunsTheDialogOrReplaysQuietly)
{
    const QString file = write("v.csv", "1 2 3 4 5 6 7 8");
    for (bool accept : {true, false}) {
        SCOPED_TRACE(accept);
        ModalDriver<QxCSVUniformScalarFieldImport> driver([accept](QxCSVUniformScalarFieldImport& d) {
            d.dataTypeOpt->setCurrentIndex(0);
            d.dimsTxt0->setValue(8);
            (accept ? d.pushButtonOK : d.pushButtonCancel)->click();
        });
        EXPECT_EQ(callReader(hxReadCSVUniformScalarField, "load -uniform_scalar_field_csv " + file), accept ? 1 : 0);
        EXPECT_TRUE(driver.opened);
    }
    EXPECT_EQ(HxObjectPool::instance()->objects().size(), 1u);
    ASSERT_TRUE(lastField());
    EXPECT_EQ(jsonOf(lastField())["values"].toArray(), QJsonArray({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(jsonOf(lastField())["primType"], "byte");

    // A replay shows no dialog and no size warning, though this file is one value short.
    ModalDriver<QxCSVUniformScalarFieldImport> none([](QxCSVUniformScalarFieldImport& d) { d.reject(); });
    EXPECT_EQ(callReader(hxReadCSVUniformScalarField,
                         "load -uniform_scalar_field_csv " + file
                             + " \"CSVUniformScalarField # 1 Space 0 0 9 1 1 0 0 1 1 0 0 1 0 0 0 1 1 1\" -dataOnly"),
              1);
    EXPECT_FALSE(none.opened);
    EXPECT_EQ(jsonOf(lastField())["values"].toArray(), QJsonArray({1, 2, 3, 4, 5, 6, 7, 8, 0}));
    EXPECT_TRUE(consoleTexts(HxMessage::Warning).isEmpty());
}

TEST_F(UniformField, FailuresAreReported)
{
    // An unreadable file still gives a field, all zeros, and its command.
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(dir.filePath("missing.csv").toLocal8Bit());
    theMsg->clearEntries();
    EXPECT_EQ(dialog.parseFile(), 1);
    ASSERT_TRUE(lastField());
    EXPECT_EQ(jsonOf(lastField())["values"].toArray(), QJsonArray({0}));
    EXPECT_TRUE(loadCommandOf(lastField()).startsWith("load -uniform_scalar_field_csv"));
    EXPECT_EQ(consoleTexts(HxMessage::Error).size(), 1);
    EXPECT_EQ(consoleTexts(HxMessage::Info).filter("the field holds no data from the file").size(), 1);

    // Settings no list offers (a hand-edited replay) or too big to hold: an error, no field.
    for (const char* settings : {"CSVUniformScalarField # 1 , 9 0 1 1 1 0 0 1 1 0 0 1 0 0 0 1 1 1",
                                 "CSVUniformScalarField # 1 , 5 5 2147483647 2147483647 9 0 0 1 1 0 0 1 0 0 0 1 1 1"}) {
        SCOPED_TRACE(settings);
        QxCSVUniformScalarFieldImport bad;
        bad.loadSettingsFromLoadCommand(settings);
        EXPECT_EQ(bad.parseFile(), 0);
    }
    EXPECT_EQ(consoleTexts(HxMessage::Error).size(), 3);
    EXPECT_EQ(HxObjectPool::instance()->objects().size(), 1u);

    // Replays and random files are quiet; a user at the screen sees a box.
    HxApplication::instance()->setInteractive(true);
    ModalDriver<> closer;
    importField("v.csv", "1,2,3,4,5,6,7", {});
    HxApplication::instance()->setInteractive(false);
    EXPECT_EQ(closer.seen, QStringList("Warning: Requested to read 64 bytes, but file\n'v.csv' contains only 56 "
                                       "bytes!\nMissing data will be padded with zero."));
}

TEST_F(UniformField, EveryTypeAndVariableCountReplaysToTheSameField)
{
    const char* delimiters[] = {";", "\t", " ", "\"", ","};
    const QStringList types = {"byte", "short", "ushort", "int32", "float", "double"};
    const QStringList vtkTypes = {"UInt8", "Int16", "UInt16", "Int32", "Float32", "Float64"};
    const QStringList classes = {"HxUniformScalarField3", "HxUniformComplexScalarField3", "HxUniformVectorField3",
                                 "HxUniformColorField3", "HxRegField3", "HxUniformComplexVectorField3"};
    std::vector<QJsonObject> imported;
    std::vector<QByteArray> bytes;
    QStringList args = {"--export", dir.filePath("vtk")};
    for (int i = 1; i <= 36; ++i) { // type (i - 1) / 6, nDataVar (i - 1) % 6 + 1
        const int n = (i - 1) % 6 + 1;
        const FieldSettings s{(i - 1) / 6, n, {3, 2, 1}, i % 2 == 1, delimiters[i % 5]};
        QByteArray content = "# field " + QByteArray::number(i) + "\n";
        for (int k = 0; k < 6 * n; ++k)
            content += QByteArray::number(k * 37.25 - 150) + (k % 5 == 4 ? "\n" : s.delimiter);
        // A y extent of 0 gets VTK spacing 1, as does the one-node z axis.
        const HxRegField3* f = importField(QString("t%1v%2.csv").arg(s.type).arg(n), content, s, [i](auto& d) {
            d.bBoxTxt1->setText("0.5");
            d.bBoxTxt2->setText("-1.5");
            d.bBoxTxt3->setText(i % 2 ? "0" : "0.25");
            if (i % 3 == 0)
                d.bBoxBtn->click();
        });
        imported.push_back(jsonOf(lastObject()));
        bytes.emplace_back(static_cast<const char*>(f->lattice().dataPtr().getData()), int(f->lattice().dataBytes()));
        args << "-c" << loadCommandOf(f);
    }

    const HostRun r = runHxhost(args);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    ASSERT_EQ(r.objects().size(), static_cast<int>(imported.size()));
    for (int i = 0; i < r.objects().size(); ++i) {
        const QJsonObject o = r.objects()[i].toObject();
        const QString name = imported[size_t(i)]["name"].toString();
        SCOPED_TRACE(name.toStdString());
        EXPECT_EQ(o, imported[size_t(i)]); // values, dims, bounding box and LoadCmd
        EXPECT_EQ(o["class"].toString(), classes[i % 6]);
        EXPECT_EQ(o["primType"].toString(), types[i / 6]);
        EXPECT_EQ(o["nDataVar"].toInt(), i % 6 + 1);
        EXPECT_EQ(jsonNumbers(o["dims"].toArray()), std::vector<double>({3, 2, 1}));
        const VtkFile vtk = readVtk(dir.filePath("vtk/" + name + ".vti"));
        EXPECT_EQ(vtk.attr("ImageData", "WholeExtent"), "0 2 0 1 0 0");
        EXPECT_EQ(vtk.attr("ImageData", "Origin"), "0 -1.5 0");
        EXPECT_EQ(vtk.attr("ImageData", "Spacing"), i % 2 ? "0.5 0.25 1" : "0.5 1 1");
        EXPECT_EQ(vtk.attr("PointData/values", "type"), vtkTypes[i / 6]);
        EXPECT_EQ(vtk.attr("PointData/values", "NumberOfComponents"), i % 6 ? QString::number(i % 6 + 1) : "");
        EXPECT_EQ(vtk.bytes("PointData/values"), bytes[size_t(i)]);
    }
    // Replays are quiet: the files hold exactly what was requested anyway.
    EXPECT_FALSE(r.err.contains("Warning")) << r.err.constData();
}

TEST_F(UniformField, ExampleScriptHoldsWhatTheDialogWrites)
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
