// The commands hxhost runs, from -c options and script files.
#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Console.h"
#include "DialogProgress.h"
#include "PackageLoader.h"
#include "TerminalProgress.h"

namespace hxhost {

enum ExitStatus { ExitOk = 0, ExitFailed = 1, ExitUsage = 2 };

// Statuses are ordered by how bad they are; a run reports its worst.
inline ExitStatus worse(ExitStatus a, ExitStatus b)
{
    return a > b ? a : b;
}

struct HostSettings {
    // Qt has a screen for the readers' dialogs.
    bool hasDisplay = false;
    // A load that puts an error on the console fails, whatever its reader returns.
    bool strict = false;
    // Shows the progress of replays; null shows none. Interactive loads
    // show theirs in a progress dialog.
    TerminalProgress* bar = nullptr;
};

// Runs host commands against the loaded packages. The only command is
//   load -OPTION FILE [ARGS...]
// which calls the option's reader entry with argv = {FILE, ARGS...}.
class Host {
public:
    Host(const PackageLoader& packages, Console& console, const HostSettings& settings)
        : mPackages(packages), mConsole(console), mSettings(settings) {}

    // Runs one command line; `where` names its origin for messages
    // ("-c", "script.hx:3"). Blank lines and '#' comment lines do nothing.
    // After a Ctrl-C no command runs: each fails.
    ExitStatus runCommand(const std::string& line, const std::string& where);
    // Runs every line of a script file; stops at the first usage error.
    ExitStatus runScript(const std::string& path);

private:
    ExitStatus load(const std::vector<std::string>& words, const std::string& where);
    ExitStatus runReader(const LoadOption& opt, const std::vector<std::string>& words, const std::string& where);
    std::optional<int> callReader(const LoadOption& opt, const std::vector<std::string>& words);
    HxProgress::Display* progressDisplay(const std::vector<std::string>& words);
    void announceNewObjects(size_t from, const std::vector<std::string>& words, double seconds);
    ExitStatus skipped();

    const PackageLoader& mPackages;
    Console& mConsole;
    HostSettings mSettings;
    std::unique_ptr<DialogProgress> mDialogProgress;
    bool mSkipReported = false;
};

} // namespace hxhost
