#pragma once
#include <QString>

#include "HxData.h"
#include "McDArray.h"
#include "McPrimType.h"
#include "McString.h"
#include "McVec3.h"

// A point cloud: points with 1-based ids, numeric data columns and text
// label columns, all of one length.
class HXSDK_API HxCluster : public HxData {
public:
    struct DataColumn {
        McString name;
        McPrimType primType;
        // Raw values, numPoints × primType.size() bytes.
        McDArray<unsigned char> bytes;
        float* floatData() { return reinterpret_cast<float*>(bytes.dataPtr()); }
        const float* floatData() const { return reinterpret_cast<const float*>(bytes.dataPtr()); }
        // Value i widened to double, whatever the column type.
        double value(int i) const;
    };
    struct LabelColumn {
        McString name;
        McDArray<QString> labels;
    };

    static HxCluster* createInstance() { return new HxCluster; }
    const char* getClassName() const override { return "HxCluster"; }

    // Column counts; new columns are named "Data0", "Data1", ... and
    // "Label0", ... and take the current number of points.
    void setNumDataColumns(int n, McPrimType type);
    void setNumLabelColumns(int n);
    // Sets the number of points; every column follows. New points are
    // (0,0,0) with id 0, new values 0 and new labels empty.
    void resize(int n);
    int getNumPoints() const { return points.size(); }
    // Recomputes bounds from the points (all zero for no points).
    void computeBounds();
    void getBoundingBox(float box[6]) const;

    McDArray<McVec3f> points;
    McDArray<int> ids;
    McDArray<DataColumn> dataColumns;
    McDArray<LabelColumn> labelColumns;

protected:
    HxCluster() = default;

private:
    float mBounds[6] = {0, 0, 0, 0, 0, 0};
};
