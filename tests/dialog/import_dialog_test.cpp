// The generic import dialog: its form, preview, delimiter list, column
// pickers and the checks on OK.
#include <QComboBox>
#include <QHeaderView>
#include <QIntValidator>
#include <QLayout>

#include "ImportSupport.h"
#include "ModalCloser.h"
#include "QxCSVImport.h"

namespace {

QString textOf(const QWidget* w)
{
    if (auto* box = qobject_cast<const QGroupBox*>(w))
        return box->title();
    return w->property("text").toString();
}

QStringList entriesOf(const QComboBox* box)
{
    QStringList entries;
    for (int i = 0; i < box->count(); ++i)
        entries << box->itemText(i);
    return entries;
}

QString firstWidgetIn(QLayoutItem* item)
{
    if (item->widget())
        return item->widget()->objectName();
    if (QLayout* layout = item->layout())
        for (int i = 0; i < layout->count(); ++i)
            if (QString name = firstWidgetIn(layout->itemAt(i)); !name.isEmpty())
                return name;
    return QString();
}

QStringList previewRows(const QxCSVImport& dialog)
{
    QStringList rows;
    for (int r = 0; r < dialog.tableWidgetDataPvw->rowCount(); ++r)
        rows << dialog.tableWidgetDataPvw->item(r, 0)->text();
    return rows;
}

QComboBox* picker(QxCSVImport& dialog, int column)
{
    return qobject_cast<QComboBox*>(dialog.tableWidgetColumnIndexes->cellWidget(0, column));
}

using ImportDialog = ImportTest;

} // namespace

TEST_F(ImportDialog, FormStartsAsDesigned)
{
    QxCSVImport dialog;
    EXPECT_EQ(dialog.windowTitle(), "Import Data");
    EXPECT_EQ(dialog.size(), QSize(1104, 700));

    // Spellings that look like typos are the system's own and must stay.
    const std::pair<const char*, const char*> texts[] = {
        {"label", "Property Name: "}, {"lineEditColumnDelimiter", " "}, {"lineEditCommentMarker", "#"},
        {"lineEditDataLineNum", "1"}, {"pushButtonAddValues", "Add more values.."},
        {"radioButtonNumberOfPoints", "1st value is # of points per line"}, {"radioButtonLineDelimitor", "Line delimeter"},
        {"endianBox", "Endianess"}, {"requestedTxt", "textLabel13"}, {"filesizeTxt", "textLabel15"},
        {"res1Lbl", "Min. coord:"}, {"res2Lbl", "Size:"},
    };
    for (const auto& [name, text] : texts) {
        auto* w = dialog.findChild<QWidget*>(name);
        ASSERT_TRUE(w) << name;
        EXPECT_EQ(textOf(w), text) << name;
    }

    EXPECT_EQ(entriesOf(dialog.comboBoxColumnDelimiter), QStringList({"Space", "Comma", "Tab", "Semicolon", "Other"}));
    EXPECT_EQ(dialog.comboBoxColumnDelimiter->currentIndex(), 0);
    EXPECT_EQ(entriesOf(dialog.dataTypeOpt), QStringList({"byte", "short", "ushort", "int32", "float", "double"}));
    EXPECT_EQ(dialog.dataTypeOpt->currentIndex(), 1);
    EXPECT_EQ(entriesOf(dialog.nDataVarOpt), QStringList({"1", "2", "3", "4", "5", "6"}));

    // Shown and enabled only by the importers that use them.
    for (QWidget* w : std::initializer_list<QWidget*>{
             dialog.pushButtonAddValues, dialog.radioButtonOnlyOneLine, dialog.radioButtonNumberOfPoints,
             dialog.radioButtonLineDelimitor, dialog.lineEditVerticalDelimiter, dialog.orderBox, dialog.resModeBG,
             dialog.inputBox, dialog.firstLineColumnLabels})
        EXPECT_TRUE(w->isHidden()) << w->objectName().toStdString();
    EXPECT_FALSE(dialog.checkBoxCheckShots->isHidden());
    for (QWidget* w : std::initializer_list<QWidget*>{dialog.checkBoxCheckShots, dialog.lineEditColumnDelimiter,
                                                      dialog.lineEditVerticalDelimiter})
        EXPECT_FALSE(w->isEnabled()) << w->objectName().toStdString();
    EXPECT_TRUE(dialog.radioButtonOnlyOneLine->isChecked());
    EXPECT_TRUE(dialog.pushButtonOK->isDefault());
    auto* validator = qobject_cast<const QIntValidator*>(dialog.lineEditDataLineNum->validator());
    ASSERT_TRUE(validator);
    EXPECT_EQ(std::make_pair(validator->bottom(), validator->top()), std::make_pair(1, 2000000000));

    // Rows top to bottom; the preview alone takes the spare height.
    QStringList rows;
    auto* rowsLayout = qobject_cast<QBoxLayout*>(dialog.layout());
    for (int i = 0; i < rowsLayout->count(); ++i)
        rows << firstWidgetIn(rowsLayout->itemAt(i)) + "/" + QString::number(rowsLayout->stretch(i));
    EXPECT_EQ(rows, QStringList({"label/0", "label_3/0", "radioButtonOnlyOneLine/0", "line/0", "tableWidgetDataPvw/1",
                                 "line1/0", "inputBox/0", "resModeBG/0", "pushButtonOK/0"}));
}

TEST_F(ImportDialog, PreviewShowsRawLines)
{
    QByteArray fiveHundred;
    QStringList twoHundred;
    for (int i = 1; i <= 500; ++i) {
        fiveHundred += "line " + QByteArray::number(i) + "\n";
        if (i <= 200)
            twoHundred << QString("line %1").arg(i);
    }
    struct Case {
        const char* what;
        QByteArray content;
        int maxLines; // 0: the default
        QStringList rows;
    } cases[] = {
        {"empty file", "", 0, {}},
        {"empty lines are rows", "a\n\nb\n", 0, {"a", "", "b"}},
        {"CR LF removed, last line unterminated", "a\r\nb\r\r\nc", 0, {"a", "b", "c"}},
        {"line cap", "1\n2\n3\n4\n", 2, {"1", "2"}},
        {"200 lines by default", fiveHundred, 0, twoHundred},
        {"long line in 1023-byte pieces", QByteArray(3000, 'x') + "\nz\n", 0,
         {QString(1023, 'x'), QString(1023, 'x'), QString(954, 'x'), "z"}},
        {"line that exactly fills a piece", QByteArray(1023, 'y') + "\r\n\nz\n", 0, {QString(1023, 'y'), "", "z"}},
        {"Latin-1 text", "caf\xe9\n", 0, {QString::fromUtf8("caf\u00e9")}},
    };
    for (const Case& c : cases) {
        QxCSVImport dialog;
        if (c.maxLines)
            dialog.setMaxPreviewLines(c.maxLines);
        EXPECT_TRUE(dialog.setFileName(write("preview.csv", c.content).toLocal8Bit()));
        EXPECT_EQ(previewRows(dialog), c.rows) << c.what;
        EXPECT_TRUE(dialog.tableWidgetDataPvw->horizontalHeader()->isHidden()) << c.what;
        if (!c.rows.isEmpty()) {
            EXPECT_EQ(dialog.tableWidgetDataPvw->item(0, 0)->flags(), Qt::ItemIsEnabled) << c.what;
        }
    }

    // A file that cannot be opened empties the preview and names it on the console.
    QxCSVImport dialog;
    dialog.setFileName(write("preview.csv", "a\n").toLocal8Bit());
    const QString missing = dir.filePath("missing.csv");
    EXPECT_FALSE(dialog.setFileName(missing.toLocal8Bit()));
    EXPECT_EQ(dialog.tableWidgetDataPvw->rowCount(), 0);
    ASSERT_EQ(theMsg->entries().size(), 1u);
    EXPECT_EQ(theMsg->entries()[0].level, HxMessage::Error);
    EXPECT_TRUE(theMsg->entries()[0].text.contains(missing));
    EXPECT_EQ(dialog.getFileName(), missing.toLocal8Bit().constData());
}

TEST_F(ImportDialog, DelimiterListWritesTheField)
{
    QxCSVImport dialog;
    const struct {
        int entry;
        const char* field;
        bool editable;
    } cases[] = {{4, "", true}, {1, ",", false}, {2, "\t", false}, {4, "", true}, {3, ";", false}, {0, " ", false}};
    for (const auto& c : cases) {
        dialog.comboBoxColumnDelimiter->setCurrentIndex(c.entry);
        EXPECT_EQ(dialog.getColumnDelimiter(), c.field) << c.entry;
        EXPECT_EQ(dialog.lineEditColumnDelimiter->isEnabled(), c.editable) << c.entry;
    }
    dialog.setColumnDelimiter(","); // the field alone: the list keeps its entry
    EXPECT_EQ(dialog.comboBoxColumnDelimiter->currentIndex(), 0);
}

TEST_F(ImportDialog, PickersChooseFileColumns)
{
    QxCSVImport dialog;
    ModalCloser closer;
    dialog.addColumn("X", true);
    dialog.addColumn("Value1", false);
    EXPECT_EQ(dialog.tableWidgetColumnIndexes->horizontalHeaderItem(1)->text(), "Value1");
    QStringList entries = entriesOf(picker(dialog, 0));
    EXPECT_EQ(entries.size(), 100);
    EXPECT_EQ(entries.mid(0, 3), QStringList({"Missing", "1", "2"}));
    EXPECT_EQ(entries.last(), "99");
    EXPECT_EQ(dialog.getPhysicalColumnIndex(0), 0);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(1), 1);

    // An optional column may go missing and come back.
    dialog.setPhysicalColumnIndex(1, -1);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(1), -1);
    dialog.setPhysicalColumnIndex(1, 2);
    EXPECT_EQ(picker(dialog, 1)->currentText(), "3");

    // A mandatory one refuses "Missing" once and returns to its last choice.
    dialog.setPhysicalColumnIndex(0, 4);
    picker(dialog, 0)->setFocus();
    QTest::keyClick(picker(dialog, 0), Qt::Key_Home);
    EXPECT_EQ(dialog.getPhysicalColumnIndex(0), 4);
    EXPECT_EQ(closer.seen, QStringList({"Mandatory Column: Column \"X\" is mandatory."}));

    EXPECT_EQ(dialog.getPhysicalColumnIndex(7), -1);
    for (int i = 2; i < 100; ++i)
        dialog.addColumn("V", false);
    EXPECT_EQ(picker(dialog, 99)->currentIndex(), -1); // the 100th column finds no file column
    EXPECT_EQ(dialog.getPhysicalColumnIndex(99), -1);
    EXPECT_EQ(closer.seen.size(), 1);
}

TEST_F(ImportDialog, OkChecksTheConstraints)
{
    const struct {
        const char* what;
        int entry;
        const char* field;
        bool mandatoryWithoutChoice;
        const char* warning; // null: accepted
    } cases[] = {
        {"space", 0, nullptr, false, nullptr},
        {"other, typed", 4, "|", false, nullptr},
        {"other, empty", 4, "", false, "Missing Column Delimiter: Column delimiter must be specified"},
        {"mandatory column without choice", 0, nullptr, true, "Mandatory Column: Column \"Z\" is mandatory."},
    };
    for (const auto& c : cases) {
        QxCSVImport dialog;
        ModalCloser closer;
        dialog.addColumn("Z", true);
        if (c.mandatoryWithoutChoice)
            dialog.setPhysicalColumnIndex(0, 500);
        dialog.comboBoxColumnDelimiter->setCurrentIndex(c.entry);
        if (c.field)
            QTest::keyClicks(dialog.lineEditColumnDelimiter, c.field);
        dialog.show();
        QTest::mouseClick(dialog.pushButtonOK, Qt::LeftButton);
        EXPECT_EQ(dialog.isVisible(), c.warning != nullptr) << c.what;
        EXPECT_EQ(closer.seen, c.warning ? QStringList({c.warning}) : QStringList()) << c.what;
        EXPECT_EQ(dialog.result(), c.warning ? QDialog::Rejected : QDialog::Accepted) << c.what;
    }
}
