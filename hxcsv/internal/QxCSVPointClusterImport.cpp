// The point cloud dialog: its value columns and their types, the replay
// arguments and the LoadCmd.
#include "QxCSVPointClusterImport.h"

#include <QComboBox>

#include "HxCSVParseParameters.h"
#include "HxCSVUtils.h"
#include "HxCluster.h"
#include "ImportCourse.h"

namespace {

const int initialValueColumns = 4;
const int columnTableHeight = 75;

// Stored commands are replayed with their value types taken from index 7.
// In a command written by setupLoadCommand that is the header flag of the
// CSVParams block, so a header row turns Value1 into a text column on
// replay and the other value columns stay "Real".
const int replayValueTypeArgument = 7;
// Where getPointClusterParamsFromLoadCommand looks instead.
const int loadCommandValueTypeArgument = 8;

} // namespace

QxCSVPointClusterImport::QxCSVPointClusterImport(QWidget* parent, Qt::WindowFlags flags)
    : QxCSVParsedImport(parent, flags)
{
    setWindowTitle(tr("Import Point Cloud with Values"));
    // Row 0: the column pickers; row 1: the value columns' type pickers.
    tableWidgetColumnIndexes->setRowCount(2);
    hxcsv::addCoordinateColumns(*this);
    for (int i = 0; i < initialValueColumns; ++i)
        addValuesClicked();

    pushButtonAddValues->show();
    checkBoxCheckShots->hide();
    firstLineColumnLabels->show();
    label->setText(tr("Data Name"));
    // The blank lines put each caption beside its table row.
    label_2->setText(tr("Column #: \n\nData Type :"));
    connect(pushButtonAddValues, &QPushButton::clicked, this, &QxCSVPointClusterImport::addValuesClicked);
    noLineBreaks->setToolTip(tr("Use this option if one line in the file does not represent one data row\n"
                                "(i.e. all data is stored in one line of the file)."));
    tableWidgetColumnIndexes->setFixedHeight(columnTableHeight);
}

QxCSVPointClusterImport::~QxCSVPointClusterImport() = default;

QComboBox* QxCSVPointClusterImport::createColumnDataTypePicker()
{
    auto* picker = new QComboBox;
    picker->addItem(tr("Real"));
    picker->addItem(tr("String"));
    return picker;
}

QComboBox* QxCSVPointClusterImport::dataTypePicker(int c) const
{
    if (c < firstValueColumn || c >= tableWidgetColumnIndexes->columnCount())
        return nullptr;
    return qobject_cast<QComboBox*>(tableWidgetColumnIndexes->cellWidget(1, c));
}

int QxCSVPointClusterImport::valueColumnCount() const
{
    return tableWidgetColumnIndexes->columnCount() - firstValueColumn;
}

void QxCSVPointClusterImport::addValuesClicked()
{
    const int c = hxcsv::addValueColumn(*this, valueColumnCounter);
    if (c < 0)
        return;
    QComboBox* type = createColumnDataTypePicker();
    type->setCurrentIndex(RealValues);
    columns[c].dataType = RealValues;
    connect(type, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this, c](int index) { columns[c].dataType = index; });
    tableWidgetColumnIndexes->setCellWidget(1, c, type);
    addToTabOrder(type);
    tableWidgetColumnIndexes->resizeRowsToContents();
    tableWidgetColumnIndexes->setMinimumWidth(tableWidgetColumnIndexes->columnWidth(0) * columns.size() + 1);
}

McString QxCSVPointClusterImport::getPointClusterParamsFromDialog()
{
    QString list;
    for (int c = firstValueColumn; c < tableWidgetColumnIndexes->columnCount(); ++c)
        if (const QComboBox* type = dataTypePicker(c))
            list += QString::asprintf("%d ", type->currentIndex());
    return McString::fromQString(list.trimmed());
}

McString QxCSVPointClusterImport::getPointClusterParamsFromLoadCommand(int argc, const char** argv)
{
    // With exactly eight arguments index 8 lies past the end: absent.
    return McString(hxcsv::argumentOrEmpty(argc, argv, loadCommandValueTypeArgument));
}

void QxCSVPointClusterImport::takeReplayArguments(int argc, const char** argv)
{
    setParseParameters(HxCSVUtils::getParseParameters(argc, argv, 0));
    // A command too short to reach the index gives no value types.
    valueTypeList = hxcsv::argumentOrEmpty(argc, argv, replayValueTypeArgument);
}

McString QxCSVPointClusterImport::loadCommand()
{
    McString command;
    command.printf("load -point_cloud_csv \"%s\" %s \"%s\" -dataOnly", params->fileName.getString(),
                   HxCSVUtils::getLoadCommandString(params.get()).getString(),
                   getPointClusterParamsFromDialog().getString());
    return command;
}

// Puts the record's column choices into the pickers and, on a replay, the
// value types into the type pickers. An interactive record came from the
// pickers and has no value types, so this changes nothing there.
void QxCSVPointClusterImport::applyReplayChoices(const HxCSVParseParameters& p)
{
    const QStringList types = valueTypeList.toQString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    while (valueColumnCount() < types.size() && valueColumnCounter <= maxValueColumns)
        addValuesClicked();

    const McDArray<int>& indices = *p.columnIndices;
    const int tableColumns = tableWidgetColumnIndexes->columnCount();
    hxcsv::warnUnusedColumns(p, tableColumns);
    for (int c = 0; c < tableColumns && c < indices.size(); ++c) {
        setPhysicalColumnIndex(c, indices[c]);
        const int v = c - firstValueColumn;
        if (v >= 0 && v < types.size()) {
            const int type = hxcsv::readInt(types[v].toLatin1().constData());
            dataTypePicker(c)->setCurrentIndex(type == StringValues ? StringValues : RealValues);
        }
    }
}
