// hxhost: loads packages, runs load commands, writes what they created.
#include <QApplication>
#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <memory>
#include <string>
#include <vector>

#include "ConsoleText.h"
#include "Host.h"
#include "HxData.h"
#include "HxMessage.h"
#include "Interrupt.h"
#include "JsonWriter.h"
#include "PackageLoader.h"
#include "VtkWriter.h"

using namespace hxhost;

static const char* kUsage =
    "usage: hxhost [-c COMMAND]... [SCRIPT...] [--json FILE|-] [--export DIR]\n"
    "              [--packages DIR] [--list] [--all-messages] [--strict]\n"
    "              [--progress] [--help]\n"
    "\n"
    "Loads every package from the package folder, runs the commands in the\n"
    "order given (-c commands and script files, one command per line, '#'\n"
    "starting a comment line), then writes what was created.\n"
    "\n"
    "Commands:\n"
    "  load -OPTION FILE [ARGS...]  import FILE with a package's reader; without\n"
    "                               a final -dataOnly the reader shows its dialog\n"
    "\n"
    "Options:\n"
    "  -c COMMAND      run one command (quote it; words split as by a shell)\n"
    "  --json FILE     write objects and console messages as JSON ('-': stdout)\n"
    "  --export DIR    write each object as a VTK XML file into DIR\n"
    "  --packages DIR  the package folder (default: ../lib beside hxhost)\n"
    "  --list          list the loaded packages and their load options\n"
    "  --all-messages  show every console message (by default a load shows 20\n"
    "                  of each kind and counts the rest)\n"
    "  --strict        fail a load that puts an error on the console\n"
    "  --progress      show the progress bar even when stderr is no terminal\n"
    "  --help          show this text\n"
    "\n"
    "Ctrl-C stops the running import and skips the remaining commands; a\n"
    "second Ctrl-C quits at once.\n"
    "\n"
    "Exit status: 0 all commands succeeded, 1 an import failed or was stopped,\n"
    "2 usage error.\n";

namespace {

struct Options {
    // A script file or a -c command, run in command-line order.
    struct Step {
        bool isScript;
        std::string text;
    };
    std::vector<Step> steps;
    std::string json;
    std::string exportDir;
    std::string packageDir;
    bool list = false;
    bool help = false;
    bool allMessages = false;
    bool strict = false;
    bool progress = false;
};

int usageError(const std::string& text)
{
    std::fprintf(stderr, "hxhost: %s\n(hxhost --help shows the usage)\n", escapeForConsole(text).c_str());
    return ExitUsage;
}

// The options that only switch something on.
bool parseFlag(const std::string& a, Options& opts)
{
    const std::pair<const char*, bool Options::*> flags[] = {
        {"-h", &Options::help},
        {"--help", &Options::help},
        {"--list", &Options::list},
        {"--all-messages", &Options::allMessages},
        {"--strict", &Options::strict},
        {"--progress", &Options::progress},
    };
    for (const auto& [name, member] : flags)
        if (a == name) {
            opts.*member = true;
            return true;
        }
    return false;
}

// Returns -1 when the arguments are fine, else the exit status.
int parseArguments(int argc, char** argv, Options& opts)
{
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return ExitUsage;
    }
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](std::string& target) {
            if (i + 1 >= argc)
                return false;
            target = argv[++i];
            return true;
        };
        if (parseFlag(a, opts))
            continue;
        if (a == "-c") {
            Options::Step step{false, {}};
            if (!value(step.text))
                return usageError("-c needs a command");
            opts.steps.push_back(step);
        } else if (a == "--json") {
            if (!value(opts.json))
                return usageError("--json needs a file name or -");
        } else if (a == "--export") {
            if (!value(opts.exportDir))
                return usageError("--export needs a folder");
        } else if (a == "--packages") {
            if (!value(opts.packageDir))
                return usageError("--packages needs a folder");
        } else if (a.size() > 1 && a[0] == '-') {
            return usageError("unknown option " + a);
        } else {
            opts.steps.push_back({true, a});
        }
    }
    return -1;
}

// Batch runs need no display: readers still create (hidden) dialogs.
void prepareEnvironment()
{
    if (!std::getenv("QT_QPA_PLATFORM") && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Qt wants a private runtime folder and complains on every run without one.
    if (!std::getenv("XDG_RUNTIME_DIR")) {
        std::string dir = "/tmp/runtime-" + std::to_string(getuid());
        mkdir(dir.c_str(), 0700);
        setenv("XDG_RUNTIME_DIR", dir.c_str(), 1);
    }
}

// Whether Qt got a screen a reader's dialog can show on.
bool platformHasDisplay()
{
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

void reportErrors(const std::vector<std::string>& errors)
{
    for (const std::string& e : errors)
        theMsg->error(QString::fromStdString("hxhost: " + e));
}

// Fills in the default package folder, which needs the running application.
bool loadPackages(PackageLoader& packages, std::string& packageDir)
{
    if (packageDir.empty())
        packageDir = QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib"))
                         .absolutePath().toStdString();
    std::vector<std::string> errors;
    const bool ok = packages.loadFolder(packageDir, errors);
    reportErrors(errors);
    return ok;
}

void listPackages(const PackageLoader& packages, const std::string& packageDir)
{
    const auto shown = [](const std::string& text) { return escapeForConsole(text); };
    for (const Package& p : packages.packages()) {
        std::printf("package %s %s (%s, built %s with %s)\n", shown(p.info->name).c_str(),
                    shown(p.info->version).c_str(), shown(p.path).c_str(), shown(p.info->buildDate).c_str(),
                    shown(p.info->compiler).c_str());
        for (const LoadOption& o : packages.options())
            if (o.package == p.name)
                std::printf("  load -%-28s %-22s %s\n", shown(o.option).c_str(), shown(o.dataKind).c_str(),
                            shown(o.description).c_str());
    }
    if (packages.packages().empty())
        std::printf("no packages in %s\n", shown(packageDir).c_str());
}

// The worst status of the steps; the first usage error stops the run.
ExitStatus runSteps(Host& host, const std::vector<Options::Step>& steps)
{
    ExitStatus status = ExitOk;
    for (const Options::Step& step : steps) {
        const ExitStatus s = step.isScript ? host.runScript(step.text) : host.runCommand(step.text, "-c");
        if (s == ExitUsage)
            return ExitUsage;
        status = worse(status, s);
    }
    return status;
}

ExitStatus writeJsonFile(const std::string& path, const std::vector<HxData*>& objects)
{
    std::FILE* out = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
    bool ok = out && writeJson(out, objects, theMsg->entries());
    if (out && out != stdout)
        ok = std::fclose(out) == 0 && ok;
    if (ok)
        return ExitOk;
    std::fprintf(stderr, "hxhost: cannot write the JSON file %s\n", escapeForConsole(path).c_str());
    return ExitFailed;
}

// VTK files first: the JSON file carries the messages their export gave.
ExitStatus writeOutputs(const Options& opts, const std::vector<HxData*>& objects)
{
    ExitStatus status = ExitOk;
    if (!opts.exportDir.empty()) {
        std::vector<std::string> errors;
        if (!exportVtk(opts.exportDir, objects, errors))
            status = ExitFailed;
        reportErrors(errors);
    }
    if (!opts.json.empty())
        status = worse(status, writeJsonFile(opts.json, objects));
    return status;
}

int terminalColumns()
{
    struct winsize size {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// Runs the steps and writes the outputs, with a progress bar on a terminal
// (or anywhere, when asked for).
ExitStatus runAndWrite(const Options& opts, const PackageLoader& packages, Console& console, bool hasDisplay)
{
    std::unique_ptr<TerminalProgress> bar;
    if (opts.progress || isatty(STDERR_FILENO)) {
        bar = std::make_unique<TerminalProgress>(Console::writeToStderr, terminalColumns());
        console.setStatusLine(bar.get());
    }
    Host host(packages, console, HostSettings{hasDisplay, opts.strict, bar.get()});
    const ExitStatus ran = runSteps(host, opts.steps);
    console.setStatusLine(nullptr);
    if (ran == ExitUsage)
        return ExitUsage;
    const ExitStatus status = worse(ran, writeOutputs(opts, HxObjectPool::instance()->objects()));
    // A Ctrl-C after the last command still tells the caller the run was cut short.
    return interruptRequested() ? worse(status, ExitFailed) : status;
}

} // namespace

int main(int argc, char** argv)
{
    Options opts;
    int early = parseArguments(argc, argv, opts);
    if (early >= 0)
        return early;
    if (opts.help) {
        std::fputs(kUsage, stdout);
        return ExitOk;
    }

    InterruptHandling interrupts;
    prepareEnvironment();
    QApplication app(argc, argv);
    const bool hasDisplay = platformHasDisplay();
    HxApplication::instance()->setInteractive(hasDisplay);
    Console console(opts.allMessages);
    console.install();

    PackageLoader packages;
    ExitStatus status = loadPackages(packages, opts.packageDir) ? ExitOk : ExitFailed;
    if (opts.list)
        listPackages(packages, opts.packageDir);

    status = worse(status, runAndWrite(opts, packages, console, hasDisplay));
    // Objects go before the application so widgets they own die with Qt alive.
    HxObjectPool::instance()->clear();
    return status;
}
