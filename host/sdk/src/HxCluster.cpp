// Point clouds: every column follows the number of points.
#include "HxCluster.h"

#include <cstring>

double HxCluster::DataColumn::value(int i) const
{
    const unsigned char* p = bytes.dataPtr() + static_cast<size_t>(i) * primType.size();
    switch (primType.getType()) {
    case McPrimType::MC_UINT8: { unsigned char v; std::memcpy(&v, p, 1); return v; }
    case McPrimType::MC_INT16: { short v; std::memcpy(&v, p, 2); return v; }
    case McPrimType::MC_UINT16: { unsigned short v; std::memcpy(&v, p, 2); return v; }
    case McPrimType::MC_INT32: { int v; std::memcpy(&v, p, 4); return v; }
    case McPrimType::MC_FLOAT: { float v; std::memcpy(&v, p, 4); return v; }
    case McPrimType::MC_DOUBLE: { double v; std::memcpy(&v, p, 8); return v; }
    default: return 0;
    }
}

void HxCluster::setNumDataColumns(int n, McPrimType type)
{
    int old = dataColumns.size();
    dataColumns.resize(n);
    for (int i = 0; i < dataColumns.size(); ++i) {
        DataColumn& c = dataColumns[i];
        if (i >= old) {
            c.name.printf("Data%d", i);
            c.primType = type;
            c.bytes.resize(points.size() * type.size());
            if (c.bytes.size() > 0)
                std::memset(c.bytes.dataPtr(), 0, c.bytes.size());
        }
    }
}

void HxCluster::setNumLabelColumns(int n)
{
    int old = labelColumns.size();
    labelColumns.resize(n);
    for (int i = old; i < labelColumns.size(); ++i) {
        labelColumns[i].name.printf("Label%d", i);
        labelColumns[i].labels.resize(points.size());
    }
}

void HxCluster::resize(int n)
{
    if (n < 0)
        n = 0;
    int old = points.size();
    points.resize(n);
    ids.resize(n);
    for (int i = old; i < n; ++i) {
        points[i] = McVec3f(0, 0, 0);
        ids[i] = 0;
    }
    for (DataColumn& c : dataColumns) {
        int oldBytes = c.bytes.size();
        c.bytes.resize(n * c.primType.size());
        if (c.bytes.size() > oldBytes)
            std::memset(c.bytes.dataPtr() + oldBytes, 0, c.bytes.size() - oldBytes);
    }
    for (LabelColumn& c : labelColumns)
        c.labels.resize(n);
}

void HxCluster::computeBounds()
{
    if (points.size() == 0) {
        for (float& b : mBounds)
            b = 0;
        return;
    }
    for (int a = 0; a < 3; ++a)
        mBounds[2 * a] = mBounds[2 * a + 1] = points[0][a];
    for (const McVec3f& p : points) {
        for (int a = 0; a < 3; ++a) {
            if (p[a] < mBounds[2 * a])
                mBounds[2 * a] = p[a];
            if (p[a] > mBounds[2 * a + 1])
                mBounds[2 * a + 1] = p[a];
        }
    }
}

void HxCluster::getBoundingBox(float box[6]) const
{
    std::memcpy(box, mBounds, sizeof mBounds);
}
