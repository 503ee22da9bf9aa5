// The uniform field importer in this process: dialog arithmetic, the
// settings text, the reader entry and failures. Reading and filling are
// compared against the rules on random files elsewhere.
#include "FieldImport.h"

using UniformField = FieldTest;

TEST_F(UniformField, RequestedBytesFollowTypeVariablesAndFileSize)
{
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(write("v.csv", QByteArray(7000, 'x')).toLocal8Bit());
    dialog.dimsTxt0->setValue(10);
    dialog.dimsTxt1->setValue(20);
    dialog.dimsTxt2->setValue(30);
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
}

// Replays and random files are quiet; a user at the screen sees a box.
TEST_F(UniformField, InteractiveSessionWarnsInABox)
{
    HxApplication::instance()->setInteractive(true);
    ModalDriver<> closer;
    importField("v.csv", "1,2,3,4,5,6,7", {});
    HxApplication::instance()->setInteractive(false);
    EXPECT_EQ(closer.seen, QStringList("Warning: Requested to read 64 bytes, but file\n'v.csv' contains only 56 "
                                       "bytes!\nMissing data will be padded with zero."));
}
