// Tab walks each importer's dialog in the order of its rows, top to bottom,
// and leaves the column table after its last picker, so OK, Cancel and the
// delimiter are reachable by keyboard.
#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <functional>
#include <memory>

#include "ImportSupport.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

// Names of the widgets Tab visits from the first one until it comes back;
// a picker is named after its table cell. Stops after limit presses.
QStringList tabOrder(QxCSVImport& dialog, int limit = 200)
{
    dialog.show();
    dialog.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
    dialog.lineEditCommentMarker->setFocus();
    QStringList names;
    QWidget* first = QApplication::focusWidget();
    for (QWidget* w = first; w && names.size() < limit;) {
        QString name = w->objectName();
        for (int r = 0; r < dialog.tableWidgetColumnIndexes->rowCount(); ++r)
            for (int c = 0; c < dialog.tableWidgetColumnIndexes->columnCount(); ++c)
                if (dialog.tableWidgetColumnIndexes->cellWidget(r, c) == w)
                    name = QString("picker %1,%2").arg(r).arg(c);
        names << name;
        QTest::keyClick(w, Qt::Key_Tab);
        w = QApplication::focusWidget();
        if (w == first)
            break;
    }
    return names;
}

} // namespace

TEST(Keyboard, TabVisitsEveryRowOnceInOrder)
{
    const QStringList settings = {"lineEditCommentMarker", "lineEditDataLineNum", "comboBoxColumnDelimiter"};
    const QStringList buttons = {"tableWidgetDataPvw", "pushButtonOK", "pushButtonCancel"};
    struct Row {
        const char* importer;
        std::function<QxCSVImport*()> make;
        QStringList expected; // from the comment marker on
    };
    const Row rows[] = {
        {"point cloud",
         [] {
             auto* d = new QxCSVPointClusterImport;
             d->addValuesClicked(); // a picker added later comes after the others
             return d;
         },
         settings + QStringList{"firstLineColumnLabels", "noLineBreaks", "pushButtonAddValues"} + buttons
             + QStringList{"picker 0,0", "picker 0,1", "picker 0,2", "picker 0,3", "picker 1,3", "picker 0,4",
                           "picker 1,4", "picker 0,5", "picker 1,5", "picker 0,6", "picker 1,6", "picker 0,7",
                           "picker 1,7"}},
        {"line set", [] { return new QxCSVLineSetImport; },
         settings + QStringList{"pushButtonAddValues", "radioButtonOnlyOneLine"} + buttons
             + QStringList{"picker 0,0", "picker 0,1", "picker 0,2", "picker 0,3"}},
        {"uniform field", [] { return new QxCSVUniformScalarFieldImport; },
         settings
             + QStringList{"noLineBreaks", "tableWidgetDataPvw", "dataTypeOpt", "nDataVarOpt", "dimsTxt0", "dimsTxt1",
                           "dimsTxt2", "xFastestBtn", "bBoxBtn", "bBoxTxt0", "bBoxTxt2", "bBoxTxt4", "bBoxTxt1",
                           "bBoxTxt3", "bBoxTxt5", "pushButtonOK", "pushButtonCancel"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.importer);
        std::unique_ptr<QxCSVImport> dialog(row.make());
        EXPECT_EQ(tabOrder(*dialog).join(", ").toStdString(), row.expected.join(", ").toStdString());
    }
}
