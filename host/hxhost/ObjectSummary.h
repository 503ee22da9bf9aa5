// The line hxhost prints about each object a load created.
#pragma once
#include <QString>

#include "HxData.h"

namespace hxhost {

// "HxCluster: 3000 points, 2 data columns (intensity, return), 1 label
// column (class); bounds [0, 1] x [0, 2] x [0, 3]; 0.012 s": the class,
// its sizes and column names, the extent of its coordinates (a field's
// bounding box) and the seconds its load took.
QString summarizeObject(const HxData& object, double seconds);

} // namespace hxhost
