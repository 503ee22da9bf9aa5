#pragma once
#include "McDArray.h"
#include "McString.h"
#include "api.h"

// Every choice a CSV parse needs, whether it came from the import dialog or
// from a replayed load command. Created on the heap by HxCSVUtils and
// deleted by whoever asked for it.
class HXCSV_API HxCSVParseParameters {
public:
    HxCSVParseParameters();
    ~HxCSVParseParameters();
    HxCSVParseParameters(const HxCSVParseParameters&) = delete;
    HxCSVParseParameters& operator=(const HxCSVParseParameters&) = delete;

    McFilename fileName;
    // One entry per logical column of the importer, in its column order:
    // the 0-based file column that feeds it, or -1 when it is missing.
    McDArray<int>* columnIndices;
    // 1-based file line at which data begins.
    int dataStartLineNum = 0;
    McString* commentMarker;
    McString* columnDelimiter;
    bool firstRowContainsColumnNames = false;
    // Records are assembled across line breaks. Older load commands lack
    // this flag, so false must stay its default.
    bool noLineBreaks = false;
};
