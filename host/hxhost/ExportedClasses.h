// The object classes hxhost writes out in full. Both writers tell them apart
// here, so a class cannot be written by one and silently skipped by the other.
#pragma once
#include "HxCluster.h"
#include "HxData.h"
#include "HxLattice3.h"
#include "HxLineSet.h"

namespace hxhost {

// Calls the callable for obj's class: a point cloud, a line set or a field.
// Returns false, calling none, for any other class.
template <class OnCluster, class OnLineSet, class OnField>
bool visitExported(const HxData* obj, OnCluster onCluster, OnLineSet onLineSet, OnField onField)
{
    if (auto* c = dynamic_cast<const HxCluster*>(obj))
        onCluster(*c);
    else if (auto* s = dynamic_cast<const HxLineSet*>(obj))
        onLineSet(*s);
    else if (auto* f = dynamic_cast<const HxRegField3*>(obj))
        onField(*f);
    else
        return false;
    return true;
}

} // namespace hxhost
