// The entry by which the host recognises this library as a package.
#include "HxPackage.h"

#ifndef HXCSV_VERSION
#define HXCSV_VERSION "unknown"
#endif

static const HxPackageInfo buildInfo = {
    "hxcsv",
    HXCSV_VERSION,
    __DATE__ " " __TIME__,
    "g++ " __VERSION__,
};

HX_PACKAGE_ENTRY const HxPackageInfo* quenzpackage_hxcsv()
{
    return &buildInfo;
}
