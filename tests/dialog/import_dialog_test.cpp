// The generic import dialog: its preview, lists, column pickers and the
// checks on OK.
#include <QComboBox>

#include "ImportSupport.h"
#include "QxCSVImport.h"

namespace {

QStringList entriesOf(const QComboBox* box)
{
    QStringList entries;
    for (int i = 0; i < box->count(); ++i)
        entries << box->itemText(i);
    return entries;
}

QComboBox* picker(QxCSVImport& dialog, int column)
{
    return qobject_cast<QComboBox*>(dialog.tableWidgetColumnIndexes->cellWidget(0, column));
}

using ImportDialog = ImportTest;

} // namespace

TEST_F(ImportDialog, PreviewShowsRawLines)
{
    struct Case {
        const char* what;
        QByteArray content;
        int maxLines; // 0: the default
        QStringList rows;
    } cases[] = {
        {"empty file", "", 0, {}},
        {"an empty line is a row", "a\n\nb\n", 0, {"a", "", "b"}},
        {"CR and LF removed, last line unterminated", "a\r\nb\r\r\nc", 0, {"a", "b", "c"}},
        {"the cap counts rows", "1\n2\n\n4\n", 3, {"1", "2", ""}},
        {"a long line goes on in the next rows; an exact fit leaves no empty row",
         QByteArray(2046, 'x') + "\r\n\nz\n", 0, {QString(1023, 'x'), QString(1023, 'x'), "", "z"}},
        {"Latin-1 text", "caf\xe9\n", 0, {QString::fromUtf8("caf\u00e9")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QxCSVImport dialog;
        if (c.maxLines)
            dialog.setMaxPreviewLines(c.maxLines);
        EXPECT_TRUE(dialog.setFileName(write("preview.csv", c.content).toLocal8Bit()));
        QStringList rows;
        for (int r = 0; r < dialog.tableWidgetDataPvw->rowCount(); ++r)
            rows << dialog.tableWidgetDataPvw->item(r, 0)->text();
        EXPECT_EQ(rows, c.rows);
    }

    // A file that cannot be opened empties the preview and is named on the console.
    QxCSVImport dialog;
    dialog.setFileName(write("preview.csv", "a\n").toLocal8Bit());
    const QString missing = dir.filePath("missing.csv");
    EXPECT_FALSE(dialog.setFileName(missing.toLocal8Bit()));
    EXPECT_EQ(dialog.tableWidgetDataPvw->rowCount(), 0);
    EXPECT_EQ(consoleTexts(HxMessage::Error).filter(missing).size(), 1);
}

TEST_F(ImportDialog, ListsAndPickersChooseFileColumns)
{
    QxCSVImport dialog;
    ModalDriver<> closer;
    // Entry indices are what the importers and their commands store.
    EXPECT_EQ(entriesOf(dialog.comboBoxColumnDelimiter), QStringList({"Space", "Comma", "Tab", "Semicolon", "Other"}));
    EXPECT_EQ(entriesOf(dialog.dataTypeOpt), QStringList({"byte", "short", "ushort", "int32", "float", "double"}));
    EXPECT_TRUE(dialog.radioButtonOnlyOneLine->isChecked()); // a line set's mode when the user picks none
    dialog.addColumn("X", true);
    dialog.addColumn("Value1", false);
    EXPECT_EQ(dialog.tableWidgetColumnIndexes->horizontalHeaderItem(1)->text(), "Value1");
    EXPECT_EQ(entriesOf(picker(dialog, 0)).mid(0, 3), QStringList({"Missing", "1", "2"}));
    EXPECT_EQ(dialog.getPhysicalColumnIndex(1), 1); // column c reads file column c

    // An optional column may go missing and come back.
    dialog.setPhysicalColumnIndex(1, -1);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(1), -1);
    dialog.setPhysicalColumnIndex(1, 2);
    EXPECT_EQ(picker(dialog, 1)->currentText(), "3");
    // A picker left without an entry, and a column that does not exist, read as missing.
    dialog.setPhysicalColumnIndex(1, 500);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(1), -1);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(7), -1);

    // A mandatory one refuses "Missing" once and returns to its last choice.
    dialog.setPhysicalColumnIndex(0, 4);
    picker(dialog, 0)->setFocus();
    QTest::keyClick(picker(dialog, 0), Qt::Key_Home);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(0), 4);
    EXPECT_EQ(closer.seen, QStringList({"Mandatory Column: Column \"X\" is mandatory."}));
}

TEST_F(ImportDialog, OkChecksTheConstraints)
{
    const struct {
        const char* what;
        int entry;
        const char* typed;
        bool mandatoryWithoutChoice;
        const char* warning; // null: accepted
    } cases[] = {
        {"space", 0, nullptr, false, nullptr},
        {"other, typed", 4, "|", false, nullptr},
        {"other, empty", 4, "", false, "Missing Column Delimiter: Column delimiter must be specified"},
        {"mandatory column without choice", 0, nullptr, true, "Mandatory Column: Column \"Z\" is mandatory."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QxCSVImport dialog;
        ModalDriver<> closer;
        dialog.addColumn("Z", true);
        if (c.mandatoryWithoutChoice)
            dialog.setPhysicalColumnIndex(0, 500);
        dialog.comboBoxColumnDelimiter->setCurrentIndex(c.entry);
        if (c.typed)
            QTest::keyClicks(dialog.lineEditColumnDelimiter, c.typed);
        dialog.show();
        QTest::mouseClick(dialog.pushButtonOK, Qt::LeftButton);
        EXPECT_EQ(dialog.isVisible(), c.warning != nullptr);
        EXPECT_EQ(closer.seen, c.warning ? QStringList({c.warning}) : QStringList());
        EXPECT_EQ(dialog.result(), c.warning ? QDialog::Rejected : QDialog::Accepted);
    }
}
