#pragma once
// Console lines about what the import rules did to a file's data.
#include "McString.h"

class HxCSV;

namespace hxcsv {

// After a parse: warns, once each, where the import rules changed what was
// read (csv.notices, and header names in UTF-8), naming the file's line.
void warnAboutNotices(const HxCSV& csv, const McString& fileName);

// After a parse error: the line of the file that the error's row count
// stands for, and a byte-order mark that was read as data; console lines
// beside the error.
void explainParseError(const HxCSV& csv, const McString& fileName);

} // namespace hxcsv
