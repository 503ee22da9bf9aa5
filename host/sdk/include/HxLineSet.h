#pragma once

#include "HxData.h"
#include "McDArray.h"
#include "McVec3.h"

// A set of poly-lines over shared points. Per-point data: a number of float
// arrays, each holding one value per point (indexed by point index).
class HXSDK_API HxLineSet : public HxData {
public:
    struct Line {
        McDArray<int> points; // indices into the point list
    };

    static HxLineSet* createInstance() { return new HxLineSet; }
    const char* getClassName() const override { return "HxLineSet"; }

    // Appends n points; returns the index of the first one. Data arrays grow
    // with them (new values 0).
    virtual int addPoints(const McVec3f* coords, int n);
    // Appends (pos -1) or inserts at pos a line of n point indices; returns
    // its line number.
    virtual int addLine(int n, const int* pointIndices, int pos = -1);
    // Sets the number of per-point data arrays, each sized to the points.
    virtual void setNumDataValues(int n);

    int getNumPoints() const { return mCoords.size(); }
    const McVec3f* getCoords() const { return mCoords.dataPtr(); }
    int getNumLines() const { return mLines.size(); }
    int getLineLength(int line) const { return mLines[line].points.size(); }
    // The point index stored for vertex v of the given line.
    int getLineVertex(int line, int v) const { return mLines[line].points[v]; }
    int getNumDataValues() const { return mData.size(); }
    // Data array t, one value per point.
    float* getData(int t) { return mData[t].dataPtr(); }
    const float* getData(int t) const { return mData[t].dataPtr(); }

protected:
    HxLineSet() = default;

private:
    McDArray<McVec3f> mCoords;
    McDArray<Line> mLines;
    McDArray<McDArray<float>> mData;
};
