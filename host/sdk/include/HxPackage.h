#pragma once

// What a package tells the host about its build. A package named NAME
// exports `extern "C" const HxPackageInfo* quenzpackage_NAME()`.
struct HxPackageInfo {
    const char* name;
    const char* version;
    const char* buildDate;
    const char* compiler;
};

#define HX_PACKAGE_ENTRY extern "C" __attribute__((visibility("default")))
