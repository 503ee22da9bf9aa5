// The JSON record of a run, for tests and scripts that check what a load made.
#pragma once
#include <cstdio>
#include <vector>

#include "HxData.h"
#include "HxMessage.h"

namespace hxhost {

// Writes {"objects": [...], "messages": [...]} (schema in README.md). It
// streams, so objects of millions of values need no second copy, and
// writes each float with the shortest digits that read back to the same
// float (a double's shortest form would show its widening noise).
// Returns false when writing failed.
bool writeJson(std::FILE* out, const std::vector<HxData*>& objects,
               const std::vector<HxMessage::Entry>& messages);

} // namespace hxhost
