// Building a point cloud: the parser writes coordinates and numeric values
// straight into the cluster, which is registered once it is complete.
#include <QComboBox>
#include <climits>
#include <memory>

#include "HxCSV.h"
#include "HxCluster.h"
#include "HxMessage.h"
#include "ImportCourse.h"
#include "LargeArrays.h"
#include "QxCSVPointClusterImport.h"

using hxcsv::coordinateCount;

// The cluster is sized once the rows are counted: no second copy of a
// large file.
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
    if (!hxcsv::parseReportingErrors(csv, p->fileName, radioButtonNumberOfPoints->isChecked()))
        return 0;
    finishCluster(*cluster, csv, data, labels);
    createdData = cluster.release();
    HxData::registerData(createdData, p->fileName.toQString());
    return 1;
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
