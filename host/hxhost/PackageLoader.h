// Finds the packages in a folder and the load options they declare.
#pragma once
#include <string>
#include <vector>

#include "HxPackage.h"

namespace hxhost {

typedef int (*ReaderEntry)(int argc, const char** argv);

// One load option a package declares in its "NAME.readers" file.
struct LoadOption {
    std::string option;      // e.g. "point_cloud_csv", used as "load -point_cloud_csv FILE"
    std::string symbol;      // the reader entry the library exports
    std::string dataKind;    // class of the object it creates, for listings
    std::string description; // one line
    std::string package;
    ReaderEntry entry = nullptr; // null when the library lacks the symbol
};

struct Package {
    std::string name;
    std::string path;
    const HxPackageInfo* info = nullptr;
    void* handle = nullptr;
};

// Loads the packages of one folder. A library "libNAME.so" is a package when
// it exports quenzpackage_NAME; others are closed again and ignored. Its load
// options come from "NAME.readers" beside it: one option a line, as
// "OPTION SYMBOL DATAKIND DESCRIPTION...", '#' starting a comment line.
class PackageLoader {
public:
    // Returns false (with messages in errors) when the folder cannot be read
    // or a package's declarations are broken; usable packages stay loaded.
    bool loadFolder(const std::string& dir, std::vector<std::string>& errors);
    const std::vector<Package>& packages() const { return mPackages; }
    const std::vector<LoadOption>& options() const { return mOptions; }
    const LoadOption* findOption(const std::string& option) const;

private:
    bool readDeclarations(const Package& pkg, const std::string& file, std::vector<std::string>& errors);
    std::vector<Package> mPackages;
    std::vector<LoadOption> mOptions;
};

} // namespace hxhost
