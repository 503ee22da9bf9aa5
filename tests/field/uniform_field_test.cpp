// The uniform field importer in this process: dialog behaviour, reading
// and filling, and the settings text.
#include <QTimer>
#include <cmath>
#include <limits>

#include "FieldImport.h"
#include "LatticeValueConversion.h"
#include "ModalCloser.h"

namespace {

class UniformField : public FieldTest {
protected:
    // Imports content with s; the lattice values, or nothing when no field came.
    std::vector<double> import(const QByteArray& content, const FieldSettings& s, bool quiet = false)
    {
        HxRegField3* field = importField("v.csv", content, s, [quiet](auto& d) { d.setQuiet(quiet); });
        return field ? latticeValues(field->lattice()) : std::vector<double>();
    }
};

const char* const tooFew = "Warning: Requested to read %1 bytes, but file\n'v.csv' contains only %2 bytes!\n"
                           "Missing data will be padded with zero.";
const char* const tooMany = "Warning: File 'v.csv' contains %2 bytes,\nbut only %1 bytes should be read!";

} // namespace

TEST_F(UniformField, RequestedBytesFollowTypeVariablesAndFileSize)
{
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(write("v.csv", QByteArray(7000, 'x')).toLocal8Bit());
    EXPECT_EQ(dialog.windowTitle(), "Import Uniform Scalar Field");
    EXPECT_TRUE(dialog.headerTxt->isHidden() && !dialog.inputBox->isHidden());
    EXPECT_EQ(dialog.getFileSize(), 7000);
    dialog.dimsTxt0->setValue(10);
    dialog.dimsTxt1->setValue(20);
    dialog.dimsTxt2->setValue(30);
    const struct {
        int type, nDataVarIndex;
        const char* requested;
        int header;
    } cases[] = {{0, 0, "6000", 1000}, {5, 0, "48000", 0}, {1, 2, "36000", 0}};
    for (const auto& c : cases) {
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
        int nodes;
        const char *min, *voxel, *max;
    } cases[] = {{11, "0", "0.5", "5"}, {1, "2", "3", "5"}, {4, "-1", "0.1", "-0.7"}};
    for (const auto& c : cases) {
        QxCSVUniformScalarFieldImport dialog;
        dialog.dimsTxt1->setValue(c.nodes);
        dialog.bBoxTxt2->setText(c.min);
        dialog.bBoxTxt3->setText(c.voxel);
        float box[6];
        dialog.getMinMax(box);
        EXPECT_FLOAT_EQ(box[3], QString(c.max).toFloat());
        for (int clicks = 0; clicks < 2; ++clicks) // the second click changes nothing
            dialog.bBoxBtn->click();
        EXPECT_EQ(dialog.bBoxTxt3->text(), c.max);
        EXPECT_EQ(dialog.res2Lbl->text(), "Max coord:");
        dialog.voxelSizeBtn->click();
        EXPECT_EQ(dialog.bBoxTxt3->text(), c.voxel);
        EXPECT_EQ(dialog.res2Lbl->text(), "Voxel size:");
    }
}

TEST_F(UniformField, ReadsAndFillsTheLattice)
{
    const FieldSettings pair{5, 1, {2, 1, 1}}, space{5, 1, {2, 1, 1}, true, " "};
    const QByteArray sevens = QByteArray("7,").repeated(4999) + "12,3";
    const struct {
        const char* what;
        QByteArray content;
        FieldSettings settings;
        std::vector<double> values;
        QString warning;
    } cases[] = {
        {"x fastest", "1,2,3,4,5,6,7,8", {}, {1, 2, 3, 4, 5, 6, 7, 8}, ""},
        {"z fastest", "1,2,3,4,5,6,7,8", {5, 1, {2, 2, 2}, false}, {1, 5, 3, 7, 2, 6, 4, 8}, ""},
        {"too few", "1,2,3\n4,5,6,7\n", {}, {1, 2, 3, 4, 5, 6, 7, 0}, QString(tooFew).arg(64).arg(56)},
        {"too many", "1,2,3,4,5,6,7,8,9", {}, {1, 2, 3, 4, 5, 6, 7, 8}, QString(tooMany).arg(64).arg(72)},
        {"remainder dropped", "1,2,3,4,5,6,7,8,9,10", {5, 3, {2, 2, 1}}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0},
         QString(tooFew).arg(96).arg(72)},
        {"empty fields", ",1,,2,", pair, {1, 2}, ""},
        {"first line 3", "100,100\n200,200\n1,2", {5, 1, {2, 1, 1}, true, ",", "#", 3}, {1, 2}, ""},
        {"first line 0", "100,100\n200,200\n1,2", {5, 1, {2, 1, 1}, true, ",", "#", 0}, {100, 100}, QString(tooMany).arg(16).arg(48)},
        {"first line 1", "100,100\n200,200\n1,2", pair, {100, 100}, QString(tooMany).arg(16).arg(48)},
        {"comments, CR LF", "# 5,5\r\n1\r\n#6\r\n2\r\n", pair, {1, 2}, ""},
        {"runs of blanks", "  1   2  ", space, {1, 2}, ""},
    };
    for (const auto& c : cases) {
        SetUp();
        EXPECT_EQ(import(c.content, c.settings), c.values) << c.what;
        EXPECT_EQ(consoleTexts(HxMessage::Warning).join("|"), c.warning) << c.what;
    }
    // Lines come in 10000-byte pieces, each read as a line: here the piece
    // boundary falls inside "12".
    const std::vector<double> values = import(sevens, {5, 1, {5002, 1, 1}});
    EXPECT_EQ(std::vector<double>(values.end() - 4, values.end()), std::vector<double>({7, 1, 2, 3}));

    SetUp();
    EXPECT_EQ(import("1,2,3,4,5,6,7", {}, true).back(), 0);
    EXPECT_TRUE(consoleTexts(HxMessage::Warning).isEmpty()) << "quiet";
}

TEST_F(UniformField, ValuesWrapIntoTheirType)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        int type;
        QByteArray content;
        std::vector<double> values;
    } cases[] = {
        {0, "300,-1,2.9,-2.9", {44, 255, 2, 254}},
        {1, "40000,-2.9,32767,-32769", {-25536, -2, 32767, 32767}},
        {2, "-1,70000,65535,2.9", {65535, 4464, 65535, 2}},
        {3, "3e9,-2.9,nan,-2147483648.9", {-2147483648.0, -2, -2147483648.0, -2147483648.0}},
        {4, "0.1,1e300,-1e300,3.4028235e38", {0.1f, inf, -inf, 3.4028235e38f}},
        {5, "0.1,1e-300,-0,x", {0.1, 1e-300, 0, 0}},
    };
    for (const auto& c : cases) {
        SetUp();
        EXPECT_EQ(import(c.content, {c.type, 1, {4, 1, 1}}), c.values) << c.type;
    }
    EXPECT_EQ(consoleTexts(HxMessage::Info),
              QStringList("Caution: Unable to convert 'x' to Double, set default value to zero."));
    // Huge but finite doubles round as IEEE does: up to FLT_MAX, then infinity.
    EXPECT_EQ(hxcsv::roundToFloat(0x1.fffffefp127), FLT_MAX);
    EXPECT_EQ(hxcsv::roundToFloat(-0x1.ffffffp127), -inf);
    EXPECT_EQ(hxcsv::truncateToInt32(nan), std::numeric_limits<int>::min());
}

TEST_F(UniformField, FailuresAreReported)
{
    // An unreadable file still gives a field, all zeros.
    QxCSVUniformScalarFieldImport dialog;
    dialog.setFileName(dir.filePath("missing.csv").toLocal8Bit());
    theMsg->clearEntries();
    EXPECT_EQ(dialog.parseFile(), 1);
    ASSERT_TRUE(lastField());
    EXPECT_EQ(latticeValues(lastField()->lattice()), std::vector<double>(1, 0));
    EXPECT_TRUE(loadCommandOf(lastField()).startsWith("load -uniform_scalar_field_csv"));
    EXPECT_EQ(consoleTexts(HxMessage::Error).size(), 1);

    // Settings no list offers (a hand-edited replay) or too big to hold: an error, no field.
    for (const char* settings : {"CSVUniformScalarField # 1 , 9 0 1 1 1 0 0 1 1 0 0 1 0 0 0 1 1 1",
                                 "CSVUniformScalarField # 1 , 5 5 2147483647 2147483647 9 0 0 1 1 0 0 1 0 0 0 1 1 1"}) {
        QxCSVUniformScalarFieldImport bad;
        bad.loadSettingsFromLoadCommand(settings);
        EXPECT_EQ(bad.parseFile(), 0) << settings;
    }
    EXPECT_EQ(consoleTexts(HxMessage::Error).size(), 3);
    EXPECT_EQ(HxObjectPool::instance()->objects().size(), 1u);
}

TEST_F(UniformField, InteractiveSessionWarnsInABox)
{
    HxApplication::instance()->setInteractive(true);
    ModalCloser closer;
    import("1,2,3,4,5,6,7", {});
    HxApplication::instance()->setInteractive(false);
    EXPECT_EQ(closer.seen, QStringList(QString(tooFew).arg(64).arg(56)));
}

TEST_F(UniformField, SettingsTextRoundTrips)
{
    QxCSVUniformScalarFieldImport dialog;
    applySettings(dialog, {5, 1, {10, 20, 30}, true, ",", "#", 1});
    EXPECT_EQ(dialog.getSettingsText(), "CSVUniformScalarField # 1 , 5 0 10 20 30 0 0 1 1 0 0 1 0 0 0 1 1 1");

    const struct {
        const char *delimiter, *token, *readBack;
    } delimiters[] = {{" ", "Space", " "}, {"\t", "Tab", "\t"}, {"Space", "Space", " "}};
    for (const auto& d : delimiters) {
        QxCSVUniformScalarFieldImport from;
        applySettings(from, {2, 3, {4, 5, 6}, false, d.delimiter, "%", 7});
        from.bBoxBtn->click();
        from.bBoxTxt4->setText("-2.5");
        const McString text = from.getSettingsText();
        EXPECT_EQ(text.toQString().section(' ', 3, 3), d.token);
        QxCSVUniformScalarFieldImport to;
        EXPECT_EQ(to.loadSettingsFromLoadCommand(McString(text) += " -dataOnly "), 1);
        EXPECT_EQ(to.lineEditColumnDelimiter->text(), d.readBack);
        EXPECT_EQ(to.getSettingsText(), text) << d.token;
    }

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
    EXPECT_EQ(back.nDataVarOpt->currentIndex(), 0);
    EXPECT_EQ(back.dimsTxt0->value(), 1) << "the variable index 0 lands on x";
}

TEST_F(UniformField, ReaderRunsTheDialog)
{
    const QByteArray file = write("v.csv", "1 2 3 4 5 6 7 8").toLocal8Bit();
    for (bool accept : {true, false}) {
        QTimer::singleShot(50, [accept] {
            auto* d = qobject_cast<QxCSVUniformScalarFieldImport*>(QApplication::activeModalWidget());
            ASSERT_TRUE(d);
            d->dataTypeOpt->setCurrentIndex(0);
            d->dimsTxt0->setValue(8);
            (accept ? d->pushButtonOK : d->pushButtonCancel)->click();
        });
        const char* argv[] = {file.constData()};
        EXPECT_EQ(hxReadCSVUniformScalarField(1, argv), accept ? 1 : 0);
    }
    ASSERT_EQ(HxObjectPool::instance()->objects().size(), 1u);
    EXPECT_EQ(latticeValues(lastField()->lattice()), std::vector<double>({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(lastField()->lattice().primType().getType(), 0);
}
