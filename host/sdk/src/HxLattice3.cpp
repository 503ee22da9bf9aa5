// Regular lattices and the fields on them.
#include "HxLattice3.h"

#include <cstring>
#include <new>

#include "McMalloc.h"

void HxUniformCoord3::getBoundingBox(float box[6]) const
{
    std::memcpy(box, mBox.b, sizeof mBox.b);
}

HxLattice3::HxLattice3(const McDim3l& dims, int nDataVar, McPrimType primType, HxCoordType,
                       void* data)
    : mDims(dims), mNDataVar(nDataVar), mPrimType(primType), mCoords(new HxUniformCoord3),
      mData(data), mOwnsData(data == nullptr)
{
    for (int a = 0; a < 3; ++a)
        if (mDims[a] < 0)
            mDims[a] = 0;
    if (mNDataVar < 0)
        mNDataVar = 0;
    if (mOwnsData) {
        long long bytes = dataBytes();
        mData = bytes > 0 ? std::calloc(static_cast<size_t>(bytes), 1) : nullptr;
        if (bytes > 0 && !mData)
            throw std::bad_alloc();
    }
}

HxLattice3::~HxLattice3()
{
    if (mOwnsData)
        mcfree(mData);
}

long long HxLattice3::dataBytes() const
{
    return mDims.nbVoxel() * mNDataVar * mPrimType.size();
}

HxRegField3::HxRegField3(HxLattice3* lattice) : mLattice(lattice) {}

HxRegField3::~HxRegField3()
{
    delete mLattice;
}
