// The three reader entries replayed as the host calls them. An input is
//   READER COUNT ARG NUL ... ARG NUL FILE-CONTENTS
// READER (one byte) picks the entry; COUNT (one byte) arguments follow the
// file name, and an argument "@" stands for the file's path, as in a
// CSVParams block.
// "-dataOnly" is always appended: a dialog would wait for a user.
#include <QApplication>
#include <QDialog>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "HxData.h"
#include "HxMessage.h"
#include "MemoryFile.h"

extern "C" int hxReadCSVPointCluster(int argc, const char** argv);
extern "C" int hxReadCSVLineSet(int argc, const char** argv);
extern "C" int hxReadCSVUniformScalarField(int argc, const char** argv);

// Impossible lattice sizes fail to allocate at once instead of zero-filling
// gigabytes; the readers must take the failure.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=256"; }

// What Qt and the font system keep for the life of the process.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libQt5Core\nleak:libQt5Gui\nleak:libQt5Widgets\nleak:libdbus\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(*argc, *argv); // lives as long as the process
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFile file;
    static int (*const readers[])(int, const char**) = {hxReadCSVPointCluster, hxReadCSVLineSet,
                                                        hxReadCSVUniformScalarField};
    if (size < 2)
        return 0;
    const char* p = reinterpret_cast<const char*>(data) + 2;
    const char* end = reinterpret_cast<const char*>(data) + size;
    std::vector<std::string> words;
    for (int i = 0; i < data[1] && p < end; ++i) {
        const char* nul = static_cast<const char*>(std::memchr(p, '\0', end - p));
        words.emplace_back(p, nul ? nul : end);
        p = nul ? nul + 1 : end;
    }
    const std::string& path = file.hold(p, end - p); // the rest is the file
    std::vector<const char*> argv = {path.c_str()};
    for (const std::string& w : words)
        argv.push_back(w == "@" ? path.c_str() : w.c_str());
    argv.push_back("-dataOnly");
    const int result = readers[data[0] % 3](static_cast<int>(argv.size()), argv.data());
    if (std::getenv("HX_FUZZ_VERBOSE")) // to see what a seed does
        std::fprintf(stderr, "reader %d returned %d, %zu objects\n", data[0] % 3, result,
                     HxObjectPool::instance()->objects().size());
    // The dialogs a reader left behind, and what it registered or printed.
    for (QWidget* w : QApplication::topLevelWidgets())
        if (!w->parentWidget() && qobject_cast<QDialog*>(w))
            delete w;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    HxObjectPool::instance()->clear();
    theMsg->clearEntries();
    return 0;
}
