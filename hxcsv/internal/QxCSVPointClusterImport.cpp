#include "QxCSVPointClusterImport.h"

#include <QComboBox>
#include <algorithm>
#include <climits>
#include <cstring>

#include "HxCSV.h"
#include "HxCSVParseParameters.h"
#include "HxCSVUtils.h"
#include "HxCluster.h"
#include "HxMessage.h"
#include "LargeArrays.h"
#include "LoadCommand.h"

namespace {

using hxcsv::coordinateCount;
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
    : QxCSVImport(parent, flags)
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

void QxCSVPointClusterImport::setParseParameters(HxCSVParseParameters* p)
{
    if (p != params.get())
        params.reset(p);
}

void QxCSVPointClusterImport::takeReplayArguments(int argc, const char** argv)
{
    setParseParameters(HxCSVUtils::getParseParameters(argc, argv, 0));
    // A command too short to reach the index gives no value types.
    valueTypeList = hxcsv::argumentOrEmpty(argc, argv, replayValueTypeArgument);
}

void QxCSVPointClusterImport::setupLoadCommand()
{
    if (!params)
        return;
    McString command;
    command.printf("load -point_cloud_csv \"%s\" %s \"%s\" -dataOnly", params->fileName.getString(),
                   HxCSVUtils::getLoadCommandString(params.get()).getString(),
                   getPointClusterParamsFromDialog().getString());
    hxcsv::attachLoadCommand(createdData, command);
}

HxCSVParseParameters* QxCSVPointClusterImport::currentParseParameters()
{
    if (!params)
        params.reset(HxCSVUtils::getParseParameters(this));
    return params.get();
}

// The parser writes coordinates and numeric values into the cluster itself,
// sized once the rows are counted: no second copy of a large file.
int QxCSVPointClusterImport::parseFile()
{
    HxCSVParseParameters* p = currentParseParameters();
    if (!hxcsv::coordinatesGiven(*p))
        return 0;
    HxCSV csv;
    hxcsv::configureParser(csv, *p, *this, true, p->noLineBreaks);
    ClusterRows rows;
    for (int a = 0; a < coordinateCount; ++a)
        csv.addColumn((*p->columnIndices)[a], &rows.xyz[a]);
    applyReplayChoices(*p);
    McDArray<ValueBinding> data, labels;
    bindValueColumns(csv, rows, data, labels);

    std::unique_ptr<HxCluster> cluster(HxCluster::createInstance());
    csv.rowsCounted = [&](int n) { sizeCluster(*cluster, n, rows, data, labels); };
    int result = 0;
    if (!hxcsv::parseReportingErrors(csv, p->fileName, radioButtonNumberOfPoints->isChecked(), result))
        return 0;
    finishCluster(*cluster, csv, data, labels);
    createdData = cluster.release();
    HxData::registerData(createdData, p->fileName.toQString());
    return result;
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
            const long type = std::strtol(types[v].toLatin1().constData(), nullptr, 10);
            dataTypePicker(c)->setCurrentIndex(type == StringValues ? StringValues : RealValues);
        }
    }
}

// "Real" value columns are read as text converted with strtod, so a stray
// word gives 0 instead of failing the whole parse.
void QxCSVPointClusterImport::bindValueColumns(HxCSV& csv, ClusterRows& rows, McDArray<ValueBinding>& data,
                                               McDArray<ValueBinding>& labels)
{
    for (int c = firstValueColumn; c < tableWidgetColumnIndexes->columnCount(); ++c) {
        const int file = getPhysicalColumnIndex(c);
        if (file < 0)
            continue;
        const int v = c - firstValueColumn;
        const QComboBox* type = dataTypePicker(c);
        const bool text = type && type->currentIndex() == StringValues;
        if (text)
            csv.addColumn(file, &rows.labels[v]);
        else
            csv.addTextNumberColumn(file, &rows.values[v], &numberMisses[v]);
        (text ? labels : data).append({v, file});
    }
}

void QxCSVPointClusterImport::sizeCluster(HxCluster& cluster, int n, ClusterRows& rows,
                                          const McDArray<ValueBinding>& data, const McDArray<ValueBinding>& labels)
{
    static_assert(sizeof(McVec3f) == 3 * sizeof(float), "points are three floats in a row");
    // The cluster counts the bytes of a value column in an int.
    if (n > INT_MAX / static_cast<int>(sizeof(float))) {
        McString text;
        text.printf("Too many rows for one point cloud (%d)", n);
        throw CSVException(text.getString(), CSVException::BadValue);
    }
    cluster.setNumDataColumns(data.size(), McPrimType(3));
    cluster.setNumLabelColumns(labels.size());
    hxcsv::reserveFinalSize(cluster.points, n);
    hxcsv::reserveFinalSize(cluster.ids, n);
    for (HxCluster::DataColumn& column : cluster.dataColumns)
        hxcsv::reserveFinalSize(column.bytes, n * column.primType.size());
    cluster.resize(n);
    float* points = n > 0 ? &cluster.points[0][0] : nullptr;
    for (int a = 0; a < coordinateCount; ++a)
        rows.xyz[a] = {points ? points + a : nullptr, coordinateCount};
    for (int d = 0; d < data.size(); ++d)
        rows.values[data[d].valueColumn] = {cluster.dataColumns[d].floatData(), 1};
    for (int l = 0; l < labels.size(); ++l)
        rows.labels[labels[l].valueColumn] = {cluster.labelColumns[l].labels.dataPtr()};
}

void QxCSVPointClusterImport::finishCluster(HxCluster& cluster, HxCSV& csv, const McDArray<ValueBinding>& data,
                                            const McDArray<ValueBinding>& labels)
{
    const int n = cluster.getNumPoints();
    for (int i = 0; i < n; ++i)
        cluster.ids[i] = i + 1;
    const bool named = params && params->firstRowContainsColumnNames;
    for (int d = 0; d < data.size(); ++d) {
        warnTextInNumbers(data[d]);
        if (named)
            cluster.dataColumns[d].name = csv.getColumnName(data[d].fileColumn);
    }
    for (int l = 0; l < labels.size() && named; ++l)
        cluster.labelColumns[l].name = csv.getColumnName(labels[l].fileColumn);
    cluster.computeBounds();
}

// Text that is not a number becomes 0 (or its leading number); the console
// says how often that happened and where first, so it is not lost unseen.
void QxCSVPointClusterImport::warnTextInNumbers(const ValueBinding& b)
{
    const HxCSV::TextNumberMisses& misses = numberMisses[b.valueColumn];
    if (misses.count == 0)
        return;
    theMsg->warning(tr("%1: file column %2 holds %3 value(s) that are not numbers, read as 0 or as their leading "
                       "number (first in data row %4: \"%5\"); choose \"String\" to keep them as text")
                        .arg(params ? params->fileName.toQString() : QString())
                        .arg(b.fileColumn + 1)
                        .arg(misses.count)
                        .arg(misses.firstRow + 1)
                        .arg(misses.firstText.toQString()));
}

extern "C" HXCSV_API int hxReadCSVPointCluster(int argc, const char** argv)
{
    return hxcsv::readCSV<QxCSVPointClusterImport>(argc, argv);
}
