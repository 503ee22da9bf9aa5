// The VTK export of a run, to look at what a load made in a VTK viewer.
#pragma once
#include <string>
#include <vector>

#include "HxData.h"

namespace hxhost {

// Writes each object as a VTK XML file in dir, creating dir when missing:
// point clouds and line sets as PolyData (NAME.vtp), fields as ImageData
// (NAME.vti). Objects of other classes are skipped. Returns false with
// messages in errors when an object or file could not be written; the
// others are still written.
bool exportVtk(const std::string& dir, const std::vector<HxData*>& objects,
               std::vector<std::string>& errors);

} // namespace hxhost
