#pragma once

#include "HxData.h"
#include "McBox3f.h"
#include "McDim3l.h"
#include "McHandle.h"
#include "McPrimType.h"

enum HxCoordType {
    C_UNIFORM = 1,
    C_STACKED = 2,
    C_RECTILINEAR = 3,
    C_CURVILINEAR = 4,
};

// Coordinates of a lattice. Only uniform coordinates exist in this host.
class HXSDK_API HxCoord3 : public McInterface {
public:
    virtual HxCoordType coordType() const = 0;
    virtual void setBoundingBox(const McBox3f& box) = 0;
    virtual void getBoundingBox(float box[6]) const = 0;
};

class HXSDK_API HxUniformCoord3 : public HxCoord3 {
public:
    HxCoordType coordType() const override { return C_UNIFORM; }
    void setBoundingBox(const McBox3f& box) override { mBox = box; }
    void getBoundingBox(float box[6]) const override;

private:
    McBox3f mBox{0, 1, 0, 1, 0, 1};
};

// A pointer with the primitive type of what it points to.
class McTypedPointer {
public:
    McTypedPointer(void* data, McPrimType type) : mData(data), mType(type) {}
    void* getData() const { return mData; }
    McPrimType primType() const { return mType; }

private:
    void* mData;
    McPrimType mType;
};

// A 3D lattice of nodes with nDataVar values of one primitive type each.
// The data block is laid out x fastest, then y, then z; all values of a node
// are adjacent.
class HXSDK_API HxLattice3 {
public:
    // With data null the lattice allocates and zeroes its own block. Other
    // coordinate types than C_UNIFORM are not supported by this host and
    // are treated as uniform.
    HxLattice3(const McDim3l& dims, int nDataVar, McPrimType primType, HxCoordType coordType,
               void* data);
    ~HxLattice3();
    HxLattice3(const HxLattice3&) = delete;
    HxLattice3& operator=(const HxLattice3&) = delete;

    const McDim3l& getDims() const { return mDims; }
    int nDataVar() const { return mNDataVar; }
    McPrimType primType() const { return mPrimType; }
    McHandle<HxCoord3> coords() const { return mCoords; }
    McTypedPointer dataPtr() const { return McTypedPointer(mData, mPrimType); }
    long long numNodes() const { return mDims.nbVoxel(); }
    // Size of the data block in bytes.
    long long dataBytes() const;

private:
    McDim3l mDims;
    int mNDataVar;
    McPrimType mPrimType;
    McHandle<HxCoord3> mCoords;
    void* mData;
    bool mOwnsData;
};

// A field on a uniform lattice. It takes ownership of the lattice. The
// classes below differ in the number of data variables they are meant for.
class HXSDK_API HxRegField3 : public HxData {
public:
    explicit HxRegField3(HxLattice3* lattice);
    ~HxRegField3() override;
    const char* getClassName() const override { return "HxRegField3"; }
    HxLattice3& lattice() { return *mLattice; }
    const HxLattice3& lattice() const { return *mLattice; }

private:
    HxLattice3* mLattice;
};

#define HX_DECLARE_FIELD_CLASS(Name)                                        \
    class HXSDK_API Name : public HxRegField3 {                             \
    public:                                                                 \
        explicit Name(HxLattice3* lattice) : HxRegField3(lattice) {}        \
        const char* getClassName() const override { return #Name; }        \
    };

HX_DECLARE_FIELD_CLASS(HxUniformScalarField3)
HX_DECLARE_FIELD_CLASS(HxUniformComplexScalarField3)
HX_DECLARE_FIELD_CLASS(HxUniformVectorField3)
HX_DECLARE_FIELD_CLASS(HxUniformColorField3)
HX_DECLARE_FIELD_CLASS(HxUniformComplexVectorField3)

#undef HX_DECLARE_FIELD_CLASS
