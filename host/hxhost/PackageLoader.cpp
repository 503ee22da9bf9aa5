// Opens package libraries and reads their reader declarations.
#include "PackageLoader.h"

#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace hxhost {

bool PackageLoader::loadFolder(const std::string& dir, std::vector<std::string>& errors)
{
    DIR* d = opendir(dir.c_str());
    if (!d) {
        errors.push_back("cannot read the package folder " + dir);
        return false;
    }
    std::vector<std::string> libs;
    while (dirent* e = readdir(d)) {
        std::string f = e->d_name;
        if (f.size() > 6 && f.compare(0, 3, "lib") == 0 && f.compare(f.size() - 3, 3, ".so") == 0)
            libs.push_back(f);
    }
    closedir(d);
    std::sort(libs.begin(), libs.end());

    bool ok = true;
    for (const std::string& f : libs) {
        Package pkg;
        pkg.name = f.substr(3, f.size() - 6);
        pkg.path = dir + "/" + f;
        // RTLD_LAZY: a library that is not a package never has its symbols bound.
        pkg.handle = dlopen(pkg.path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (!pkg.handle) {
            const char* why = dlerror();
            errors.push_back("cannot load " + pkg.path + ": " + (why ? why : "unknown error"));
            ok = false;
            continue;
        }
        typedef const HxPackageInfo* (*PackageEntry)();
        std::string entryName = "quenzpackage_" + pkg.name;
        auto entry = reinterpret_cast<PackageEntry>(dlsym(pkg.handle, entryName.c_str()));
        if (!entry) {
            dlclose(pkg.handle);
            continue;
        }
        pkg.info = entry();
        mPackages.push_back(pkg);
        ok = readDeclarations(mPackages.back(), dir + "/" + pkg.name + ".readers", errors) && ok;
    }
    return ok;
}

bool PackageLoader::readDeclarations(const Package& pkg, const std::string& file,
                                     std::vector<std::string>& errors)
{
    std::ifstream in(file);
    if (!in)
        return true; // a package without readers
    bool ok = true;
    std::string line;
    for (int lineNo = 1; std::getline(in, line); ++lineNo) {
        std::istringstream words(line);
        LoadOption opt;
        if (!(words >> opt.option) || opt.option[0] == '#')
            continue;
        if (!(words >> opt.symbol >> opt.dataKind)) {
            errors.push_back(file + ":" + std::to_string(lineNo) +
                             ": expected OPTION SYMBOL DATAKIND DESCRIPTION");
            ok = false;
            continue;
        }
        std::getline(words >> std::ws, opt.description);
        opt.package = pkg.name;
        opt.entry = reinterpret_cast<ReaderEntry>(dlsym(pkg.handle, opt.symbol.c_str()));
        if (findOption(opt.option)) {
            errors.push_back(file + ":" + std::to_string(lineNo) + ": load option -" + opt.option +
                             " is already declared; ignored");
            ok = false;
            continue;
        }
        mOptions.push_back(opt);
    }
    return ok;
}

const LoadOption* PackageLoader::findOption(const std::string& option) const
{
    for (const LoadOption& o : mOptions)
        if (o.option == option)
            return &o;
    return nullptr;
}

} // namespace hxhost
