// Checks a command's words and calls the reader entry a load option names;
// every problem becomes a console error naming where the command came from.
#include "Host.h"

#include <QString>
#include <exception>
#include <fstream>

#include "CommandLine.h"
#include "HxData.h"
#include "HxMessage.h"

namespace hxhost {

static void report(const std::string& text)
{
    theMsg->error(QString::fromLocal8Bit(text.c_str()));
}

ExitStatus Host::runCommand(const std::string& line, const std::string& where)
{
    size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#')
        return ExitOk;
    std::vector<std::string> words;
    std::string error;
    if (!splitCommandLine(line, words, error)) {
        report("hxhost: " + where + ": " + error + " in: " + line);
        return ExitUsage;
    }
    if (words.empty())
        return ExitOk;
    if (words[0] == "load")
        return load(words, where);
    report("hxhost: " + where + ": unknown command '" + words[0] + "' (the only command is 'load')");
    return ExitUsage;
}

// Tells the user what a load created and how to repeat it.
static void announceNewObjects(size_t from)
{
    const std::vector<HxData*>& objects = HxObjectPool::instance()->objects();
    for (size_t i = from; i < objects.size(); ++i) {
        theMsg->printf(QStringLiteral("created \"%1\" (%2)")
                           .arg(objects[i]->getName(), QString::fromLatin1(objects[i]->getClassName())));
        if (auto* cmd = dynamic_cast<HxParameter*>(objects[i]->parameters().find(QStringLiteral("LoadCmd"))))
            theMsg->printf(QStringLiteral("  LoadCmd: ") + cmd->getString());
    }
}

ExitStatus Host::load(const std::vector<std::string>& words, const std::string& where)
{
    if (words.size() < 2 || words[1].size() < 2 || words[1][0] != '-') {
        report("hxhost: " + where + ": usage: load -OPTION FILE [ARGS...]");
        return ExitUsage;
    }
    std::string option = words[1].substr(1);
    const LoadOption* opt = mPackages.findOption(option);
    if (!opt) {
        report("hxhost: " + where + ": unknown load option '-" + option +
               "' (hxhost --list shows the options of the loaded packages)");
        return ExitUsage;
    }
    if (words.size() < 3) {
        report("hxhost: " + where + ": load -" + option + " needs a file name");
        return ExitUsage;
    }
    if (!opt->entry) {
        report("hxhost: package " + opt->package + " declares the reader " + opt->symbol +
               " for -" + option + " but does not export it");
        return ExitFailed;
    }
    std::vector<const char*> argv;
    for (size_t i = 2; i < words.size(); ++i)
        argv.push_back(words[i].c_str());
    // Without -dataOnly a reader asks the user through its dialog.
    if (!mHasDisplay && words.back() != "-dataOnly") {
        report("hxhost: " + where + ": 'load -" + option + " " + words[2] +
               "' opens an import dialog, which needs a display, and there is none "
               "(set DISPLAY, or replay a stored LoadCmd ending in -dataOnly)");
        return ExitFailed;
    }
    const size_t before = HxObjectPool::instance()->objects().size();
    mConsole.beginLoad();
    int result = 0;
    try {
        result = opt->entry(static_cast<int>(argv.size()), argv.data());
    } catch (const std::exception& e) {
        report("hxhost: the reader for -" + option + " failed: " + e.what());
        mConsole.endLoad();
        return ExitFailed;
    } catch (...) {
        report("hxhost: the reader for -" + option + " failed with an unknown exception");
        mConsole.endLoad();
        return ExitFailed;
    }
    mConsole.endLoad();
    announceNewObjects(before);
    if (result != 1) {
        report("hxhost: " + where + ": load -" + option + " " + words[2] + " created nothing");
        return ExitFailed;
    }
    return ExitOk;
}

ExitStatus Host::runScript(const std::string& path)
{
    std::ifstream in(path);
    if (!in) {
        report("hxhost: cannot read the script " + path);
        return ExitUsage;
    }
    ExitStatus status = ExitOk;
    std::string line;
    for (int lineNo = 1; std::getline(in, line); ++lineNo) {
        ExitStatus s = runCommand(line, path + ":" + std::to_string(lineNo));
        status = worse(status, s);
        if (s == ExitUsage)
            break;
    }
    return status;
}

} // namespace hxhost
