// Progress and stopping: the SDK's nesting rules, the terminal bar and the
// progress dialog on their own, and hxhost on a terminal, in a pipe and
// under Ctrl-C.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>
#include <chrono>
#include <cmath>
#include <csignal>
#include <functional>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "DialogProgress.h"
#include "HostRun.h"
#include "TerminalProgress.h"

extern char** environ;

namespace {

struct FakeDisplay : HxProgress::Display {
    std::vector<std::string> events;
    void begun(const QString& text) override { events.push_back("begun " + text.toStdString()); }
    void progressed(double f) override { events.push_back(std::to_string(static_cast<int>(f * 100)) + " %"); }
    void ended() override { events.push_back("ended"); }
};

struct TerminalRun {
    int exitCode = -1;
    std::string out;
};

// Runs hxhost on a pseudo-terminal without a display. onOutput sees the
// output so far each time more comes, and may signal hxhost.
TerminalRun runOnTerminal(const QStringList& args, const std::function<void(pid_t, const std::string&)>& onOutput = {})
{
    std::vector<std::string> words = {HX_BIN_DIR "/hxhost"}, env;
    for (const QString& a : args)
        words.push_back(a.toStdString());
    for (char** e = environ; *e; ++e)
        if (!QByteArray(*e).contains("DISPLAY=") && !QByteArray(*e).startsWith("QT_QPA_PLATFORM="))
            env.push_back(*e);
    std::vector<char*> argv, envp;
    for (std::string& w : words)
        argv.push_back(&w[0]);
    for (std::string& e : env)
        envp.push_back(&e[0]);
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    int master = -1;
    const pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid == 0) {
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    TerminalRun r;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    char buffer[4096];
    for (pollfd p{master, POLLIN, 0}; std::chrono::steady_clock::now() < deadline;) {
        if (poll(&p, 1, 100) <= 0)
            continue;
        const ssize_t n = read(master, buffer, sizeof buffer);
        if (n <= 0)
            break; // EIO: hxhost is gone
        r.out.append(buffer, static_cast<size_t>(n));
        if (onOutput)
            onOutput(pid, r.out);
    }
    if (std::chrono::steady_clock::now() >= deadline)
        kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    close(master);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

const QString kDensityReplay = QStringLiteral(
    "load -uniform_scalar_field_csv \"" HX_SOURCE_DIR "/examples/density_32x24x16.csv\" \"CSVUniformScalarField # 1 "
    ", 4 0 32 24 16 28497 0 1 1 0 0 1 0 0 0 0.5 0.5 0.5\" -dataOnly");

} // namespace

TEST(HxProgress, OnlyTheOutermostWorkReachesTheDisplay)
{
    FakeDisplay display;
    theProgress->setDisplay(&display);
    theProgress->begin("outer");
    theProgress->setFraction(0.2);
    theProgress->begin("inner");
    theProgress->setFraction(0.9);
    theProgress->end();
    for (double f : {0.1, std::nan(""), 0.5, 7.0}) // back, NaN, on, past the end
        theProgress->setFraction(f);
    theProgress->end();
    theProgress->end(); // one end too many changes nothing
    theProgress->setDisplay(nullptr);
    EXPECT_EQ(display.events, std::vector<std::string>({"begun outer", "20 %", "50 %", "100 %", "ended"}));
}

TEST(HxProgress, AStopRequestHoldsUntilTheOutermostWorkEnds)
{
    theProgress->begin("outer");
    theProgress->begin("inner");
    theProgress->requestStop();
    theProgress->end();
    EXPECT_TRUE(theProgress->stopRequested());
    theProgress->end();
    EXPECT_FALSE(theProgress->stopRequested());
    theProgress->requestStop(); // outside work: for the next
    theProgress->begin("next");
    EXPECT_TRUE(theProgress->stopRequested());
    theProgress->end();
    EXPECT_FALSE(theProgress->stopRequested());
}

TEST(TerminalProgress, RedrawsAtMostTenTimesASecondAroundConsoleLines)
{
    double now = 0;
    std::string out;
    const auto write = [&](const std::string& bytes) { out += bytes; };
    hxhost::TerminalProgress bar(write, 80, [&] { return now; });
    hxhost::Console console(false, write);
    console.setStatusLine(&bar);
    bar.expectBytes(100000000);
    const struct {
        double at;
        std::function<void()> act;
        std::string written;
    } steps[] = {
        {0, [&] { bar.begun("Reading big.csv"); }, "\rReading big.csv  0 %\x1b[K"},
        {0.05, [&] { bar.progressed(0.1); }, ""},
        {1, [&] { bar.progressed(0.25); }, "\rReading big.csv  25 %  25.0 MB/s  3 s left\x1b[K"},
        {1.05, [&] { console.print("a line"); }, "\r\x1b[Ka line\n"},
        {1.1, [&] { bar.progressed(0.3); }, "\rReading big.csv  30 %  27.3 MB/s  3 s left\x1b[K"},
        {1.15, [&] { bar.progressed(0.35); }, ""},
        {60, [&] { console.print("b"); }, "\r\x1b[Kb\n\rReading big.csv  35 %  0.6 MB/s  1:51 left\x1b[K"},
        {60, [&] { bar.progressed(0.5); }, ""},
        {61, [&] { bar.ended(); }, "\r\x1b[K"},
        {62, [&] { bar.progressed(0.9); }, ""},
    };
    for (const auto& s : steps) {
        SCOPED_TRACE(s.at);
        now = s.at;
        out.clear();
        s.act();
        EXPECT_EQ(out, s.written);
    }
}

TEST(TerminalProgress, KeepsTheEndOfALongTextWithinTheTerminal)
{
    std::string out;
    // 27 columns for the text and its percent: the cut falls inside the ä.
    hxhost::TerminalProgress bar([&](const std::string& bytes) { out += bytes; }, 28, [] { return 0.0; });
    bar.begun(QString::fromUtf8("Reading /a/very/long/p\xc3\xa4th/to/the/file.csv"));
    EXPECT_EQ(out, "\r...th/to/the/file.csv  0 %\x1b[K");
}

TEST(DialogProgress, ShowsUpLateAndItsCancelAsksTheWorkToStop)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 1;
    char name[] = "host_tests";
    char* argv[] = {name, nullptr};
    QApplication app(argc, argv);

    hxhost::DialogProgress display;
    theProgress->setDisplay(&display);
    theProgress->begin("Reading x.csv");
    ASSERT_TRUE(display.dialog());
    EXPECT_FALSE(display.dialog()->isVisible());
    QThread::msleep(hxhost::DialogProgress::kShowAfterMs + 100);
    theProgress->setFraction(0.25);
    EXPECT_FALSE(theProgress->stopRequested());
    EXPECT_TRUE(display.dialog()->isVisible());
    EXPECT_EQ(display.dialog()->value(), hxhost::DialogProgress::kSteps / 4);
    display.dialog()->findChild<QPushButton*>()->click();
    EXPECT_TRUE(theProgress->stopRequested());
    theProgress->end();
    theProgress->setDisplay(nullptr);
    EXPECT_FALSE(display.dialog());
    EXPECT_FALSE(theProgress->stopRequested());
}

// The bar on a terminal, or in a pipe when asked for: drawn with its
// percent, wiped before the lines that follow.
TEST(HxhostProgress, ABarOnlyOnATerminalOrWhenAskedFor)
{
    const struct {
        const char* what;
        bool terminal, flag, bar;
    } cases[] = {
        {"terminal", true, false, true},
        {"pipe", false, false, false},
        {"pipe, --progress", false, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QStringList args = {"-c", kDensityReplay};
        if (c.flag)
            args << "--progress";
        const std::string err = c.terminal ? runOnTerminal(args).out : runHxhost(args, false).err.toStdString();
        const size_t last = err.rfind("\rReading ");
        ASSERT_EQ(last != std::string::npos, c.bar) << err;
        if (!c.bar) {
            EXPECT_EQ(err.find('\x1b'), std::string::npos) << err;
            continue;
        }
        const size_t drawEnd = err.find("\x1b[K", last);
        ASSERT_NE(drawEnd, std::string::npos) << err;
        EXPECT_NE(err.substr(last, drawEnd - last).find("density_32x24x16.csv  0 %"), std::string::npos) << err;
        EXPECT_EQ(err.substr(drawEnd, 7), "\x1b[K\r\x1b[K") << err;
        EXPECT_EQ(err.find("created \"density"), drawEnd + 7) << err;
    }
}

namespace {

// 20 million values of one digit: 40 MB, time enough for a Ctrl-C.
QString bigLattice()
{
    static QTemporaryDir dir;
    const QString path = dir.filePath("big.csv");
    if (QFile::exists(path))
        return path;
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    QByteArray line;
    for (int i = 0; i < 1000; ++i)
        line += i == 999 ? "7\n" : "7,";
    for (int i = 0; i < 20000; ++i)
        f.write(line);
    return path;
}

} // namespace

// Ctrl-C stops the running import, skips what follows and still writes the
// outputs; a reader that does not look for it finishes first. A second
// Ctrl-C quits at once.
TEST(HxhostProgress, CtrlCStopsTheRun)
{
    QTemporaryDir dir;
    const QString json = dir.filePath("out.json");
    const QString bigReplay = QStringLiteral("load -uniform_scalar_field_csv \"%1\" \"CSVUniformScalarField # 1 , 3 0 "
                                             "1000 1000 20 0 0 1 1 0 0 1 0 0 0 1 1 1\" -dataOnly")
                                  .arg(bigLattice());
    const struct {
        const char* what;
        QStringList args;
        const char* cue; // sent once this is on the terminal
        int interrupts, status;
        const char* shown;
    } cases[] = {
        {"import stopped", {"-c", bigReplay, "-c", kDensityReplay}, "\rReading ", 1, 1, "stopped at"},
        {"reader that does not look", {"--packages", HX_TEST_PACKAGES, "-c", "load -fake_sleep 1 -dataOnly", "-c",
                                       "load -fake_echo a -dataOnly"}, "sleeping", 1, 1, "slept"},
        {"second Ctrl-C", {"--packages", HX_TEST_PACKAGES, "-c", "load -fake_sleep 60 -dataOnly"}, "sleeping", 2, 130, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(json);
        int sent = 0;
        const auto start = std::chrono::steady_clock::now();
        TerminalRun r = runOnTerminal(QStringList(c.args) << "--json" << json, [&](pid_t pid, const std::string& out) {
            for (; sent < c.interrupts && out.find(c.cue) != std::string::npos; ++sent) {
                kill(pid, SIGINT);
                QThread::msleep(200); // two signals sent at once may arrive as one
            }
        });
        EXPECT_EQ(r.exitCode, c.status) << r.out;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
        if (c.status == 130)
            continue;
        EXPECT_NE(r.out.find(c.shown), std::string::npos) << r.out;
        EXPECT_NE(r.out.find("the remaining commands are skipped"), std::string::npos) << r.out;
        QFile f(json);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        EXPECT_EQ(QJsonDocument::fromJson(f.readAll()).object().value("objects").toArray().size(), 0);
    }
}
