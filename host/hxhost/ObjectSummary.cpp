#include "ObjectSummary.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

#include "ExportedClasses.h"

namespace hxhost {

namespace {

QString counted(long long n, const char* one, const char* many)
{
    return QStringLiteral("%1 %2").arg(n).arg(QLatin1String(n == 1 ? one : many));
}

// "[xmin, xmax] x [ymin, ymax] x [zmin, zmax]"
QString boxText(const float box[6])
{
    QStringList axes;
    for (int a = 0; a < 3; ++a)
        axes << QStringLiteral("[%1, %2]").arg(box[2 * a]).arg(box[2 * a + 1]);
    return axes.join(QStringLiteral(" x "));
}

// The extent of the points, NaN coordinates left out.
QString pointBounds(const McVec3f* points, long long n)
{
    float box[6];
    for (int a = 0; a < 3; ++a) {
        box[2 * a] = std::numeric_limits<float>::infinity();
        box[2 * a + 1] = -std::numeric_limits<float>::infinity();
    }
    for (long long i = 0; i < n; ++i)
        for (int a = 0; a < 3; ++a)
            if (!std::isnan(points[i][a])) {
                box[2 * a] = std::min(box[2 * a], points[i][a]);
                box[2 * a + 1] = std::max(box[2 * a + 1], points[i][a]);
            }
    if (n == 0 || box[0] > box[1])
        return QStringLiteral("no bounds");
    return QStringLiteral("bounds ") + boxText(box);
}

template <class Column>
QString columns(const McDArray<Column>& list, const char* one, const char* many)
{
    QStringList names;
    for (const Column& c : list)
        names << c.name.toQString();
    QString text = counted(list.size(), one, many);
    return names.isEmpty() ? text : text + QStringLiteral(" (%1)").arg(names.join(QStringLiteral(", ")));
}

QString clusterSummary(const HxCluster& c)
{
    return QStringLiteral("%1, %2, %3; %4")
        .arg(counted(c.getNumPoints(), "point", "points"), columns(c.dataColumns, "data column", "data columns"),
             columns(c.labelColumns, "label column", "label columns"),
             pointBounds(c.points.dataPtr(), c.getNumPoints()));
}

QString lineSetSummary(const HxLineSet& s)
{
    return QStringLiteral("%1, %2, %3 per vertex; %4")
        .arg(counted(s.getNumLines(), "line", "lines"), counted(s.getNumPoints(), "vertex", "vertices"),
             counted(s.getNumDataValues(), "data value", "data values"),
             pointBounds(s.getCoords(), s.getNumPoints()));
}

QString fieldSummary(const HxRegField3& f)
{
    const HxLattice3& lat = f.lattice();
    const McDim3l& dims = lat.getDims();
    float box[6];
    lat.coords()->getBoundingBox(box);
    return QStringLiteral("%1x%2x%3 nodes, %4 per node, %5; bounding box %6")
        .arg(QString::number(dims.nx), QString::number(dims.ny), QString::number(dims.nz),
             counted(lat.nDataVar(), "value", "values"), QLatin1String(lat.primType().getName()), boxText(box));
}

} // namespace

QString summarizeObject(const HxData& object, double seconds)
{
    QString what;
    const bool known = visitExported(
        &object, [&](const HxCluster& c) { what = clusterSummary(c); },
        [&](const HxLineSet& s) { what = lineSetSummary(s); }, [&](const HxRegField3& f) { what = fieldSummary(f); });
    if (!known)
        what = QStringLiteral("not a point cloud, line set or field");
    return QStringLiteral("%1: %2; %3 s")
        .arg(QLatin1String(object.getClassName()), what, QString::number(seconds, 'f', 3));
}

} // namespace hxhost
