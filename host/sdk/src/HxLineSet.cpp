// Line sets: points, poly-lines over them and per-point data arrays.
#include "HxLineSet.h"

int HxLineSet::addPoints(const McVec3f* coords, int n)
{
    int first = mCoords.size();
    if (n <= 0)
        return first;
    mCoords.resize(first + n);
    for (int i = 0; i < n; ++i)
        mCoords[first + i] = coords[i];
    for (McDArray<float>& d : mData) {
        d.resize(mCoords.size());
        for (int i = first; i < mCoords.size(); ++i)
            d[i] = 0;
    }
    return first;
}

int HxLineSet::addLine(int n, const int* pointIndices, int pos)
{
    Line line;
    line.points.resize(n);
    for (int i = 0; i < line.points.size(); ++i)
        line.points[i] = pointIndices[i];
    if (pos < 0 || pos >= mLines.size()) {
        mLines.append(line);
        return mLines.size() - 1;
    }
    mLines.append(Line());
    for (int i = mLines.size() - 1; i > pos; --i)
        mLines[i] = std::move(mLines[i - 1]);
    mLines[pos] = std::move(line);
    return pos;
}

void HxLineSet::setNumDataValues(int n)
{
    int old = mData.size();
    mData.resize(n);
    for (int t = old; t < mData.size(); ++t) {
        mData[t].resize(mCoords.size());
        mData[t].fill(0);
    }
}
