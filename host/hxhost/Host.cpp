// Checks a command's words and calls the reader entry a load option names;
// every problem becomes a console error naming where the command came from.
#include "Host.h"

#include <QString>
#include <chrono>
#include <exception>
#include <fstream>
#include <sys/stat.h>

#include "CommandLine.h"
#include "HxData.h"
#include "HxMessage.h"
#include "Interrupt.h"
#include "ObjectSummary.h"

namespace hxhost {

static void report(const std::string& text)
{
    theMsg->error(QString::fromLocal8Bit(text.c_str()));
}

static bool isReplay(const std::vector<std::string>& words)
{
    return words.back() == "-dataOnly";
}

ExitStatus Host::runCommand(const std::string& line, const std::string& where)
{
    if (interruptRequested())
        return skipped();
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

ExitStatus Host::skipped()
{
    if (!mSkipReported)
        report("hxhost: interrupted: the remaining commands are skipped");
    mSkipReported = true;
    return ExitFailed;
}

// Whether a LoadCmd replays as the command that was run: the same words.
// The package keeps texts as Latin-1, other packages may not.
static bool sameCommand(const QString& loadCmd, const std::vector<std::string>& words)
{
    for (const QByteArray& bytes : {loadCmd.toLatin1(), loadCmd.toUtf8()}) {
        std::vector<std::string> cmdWords;
        std::string error;
        if (splitCommandLine(bytes.toStdString(), cmdWords, error) && cmdWords == words)
            return true;
    }
    return false;
}

// Tells the user what a load created and how to repeat it. A replay that
// stored a LoadCmd of its own is flagged: it is not the command that worked.
void Host::announceNewObjects(size_t from, const std::vector<std::string>& words, double seconds)
{
    const std::vector<HxData*>& objects = HxObjectPool::instance()->objects();
    for (size_t i = from; i < objects.size(); ++i) {
        theMsg->printf(QStringLiteral("created \"%1\" (%2)")
                           .arg(objects[i]->getName(), QString::fromLatin1(objects[i]->getClassName())));
        mConsole.print(QStringLiteral("  ") + summarizeObject(*objects[i], seconds));
        auto* cmd = dynamic_cast<HxParameter*>(objects[i]->parameters().find(QStringLiteral("LoadCmd")));
        if (!cmd)
            continue;
        const QString line = QStringLiteral("  LoadCmd: ") + cmd->getString();
        if (isReplay(words) && !sameCommand(cmd->getString(), words))
            mConsole.infoShownAs(line, line + QStringLiteral(" (differs from the command that was run: rebuilt "
                                                             "from the importer's defaults, it may not replay "
                                                             "this import)"));
        else
            theMsg->printf(line);
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
    // Without -dataOnly a reader asks the user through its dialog.
    if (!mSettings.hasDisplay && !isReplay(words)) {
        report("hxhost: " + where + ": 'load -" + option + " " + words[2] +
               "' opens an import dialog, which needs a display, and there is none "
               "(set DISPLAY, or replay a stored LoadCmd ending in -dataOnly)");
        return ExitFailed;
    }
    return runReader(*opt, words, where);
}

// An interactive load shows its progress beside its dialog, a replay on the
// terminal (its MB/s from the size of the file it names).
HxProgress::Display* Host::progressDisplay(const std::vector<std::string>& words)
{
    if (!isReplay(words)) {
        if (!mDialogProgress)
            mDialogProgress = std::make_unique<DialogProgress>();
        return mDialogProgress.get();
    }
    if (mSettings.bar) {
        struct stat st {};
        mSettings.bar->expectBytes(stat(words[2].c_str(), &st) == 0 ? st.st_size : 0);
    }
    return mSettings.bar;
}

// The reader's result; none when it threw, which is reported.
std::optional<int> Host::callReader(const LoadOption& opt, const std::vector<std::string>& words)
{
    std::vector<const char*> argv;
    for (size_t i = 2; i < words.size(); ++i)
        argv.push_back(words[i].c_str());
    theProgress->setDisplay(progressDisplay(words));
    std::optional<int> result;
    try {
        result = opt.entry(static_cast<int>(argv.size()), argv.data());
    } catch (const std::exception& e) {
        report("hxhost: the reader for -" + opt.option + " failed: " + e.what());
    } catch (...) {
        report("hxhost: the reader for -" + opt.option + " failed with an unknown exception");
    }
    theProgress->setDisplay(nullptr);
    return result;
}

static bool errorsSince(size_t first)
{
    const std::vector<HxMessage::Entry>& entries = theMsg->entries();
    for (size_t i = first; i < entries.size(); ++i)
        if (entries[i].level == HxMessage::Error)
            return true;
    return false;
}

ExitStatus Host::runReader(const LoadOption& opt, const std::vector<std::string>& words, const std::string& where)
{
    const size_t objectsBefore = HxObjectPool::instance()->objects().size();
    const size_t messagesBefore = theMsg->entries().size();
    mConsole.beginLoad();
    const auto start = std::chrono::steady_clock::now();
    const std::optional<int> result = callReader(opt, words);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    mConsole.endLoad();
    if (!result)
        return ExitFailed;
    announceNewObjects(objectsBefore, words, seconds);
    const std::string what = "load -" + opt.option + " " + words[2];
    if (*result != 1) {
        report("hxhost: " + where + ": " + what + " created nothing");
        return ExitFailed;
    }
    if (mSettings.strict && errorsSince(messagesBefore)) {
        mConsole.print(QString::fromLocal8Bit(("hxhost: " + where + ": " + what +
                                               " put errors on the console (--strict)").c_str()));
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
