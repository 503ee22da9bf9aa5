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

namespace {

struct FakeDisplay : HxProgress::Display {
    std::vector<std::string> events;
    void begun(const QString& text) override { events.push_back("begun " + text.toStdString()); }
    void progressed(double f) override { events.push_back(std::to_string(static_cast<int>(f * 100)) + " %"); }
    void ended() override { events.push_back("ended"); }
};

// Runs hxhost without a display on a pseudo-terminal, returning its exit
// status and output; onOutput sees the output so far and may signal hxhost.
std::pair<int, std::string> runOnTerminal(const QStringList& args,
                                          const std::function<void(pid_t, const std::string&)>& onOutput = {})
{
    std::vector<std::string> words = {"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM",
                                      HX_BIN_DIR "/hxhost"};
    std::vector<char*> argv;
    for (const QString& a : args)
        words.push_back(a.toStdString());
    for (std::string& w : words)
        argv.push_back(&w[0]);
    argv.push_back(nullptr);
    int master = -1;
    const pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid == 0) {
        execvp(argv[0], argv.data());
        _exit(127);
    }
    std::string out;
    char buffer[4096];
    pollfd p{master, POLLIN, 0};
    for (ssize_t n; poll(&p, 1, 60000) > 0 && (n = read(master, buffer, sizeof buffer)) > 0;) { // EIO once it is gone
        out.append(buffer, static_cast<size_t>(n));
        if (onOutput)
            onOutput(pid, out);
    }
    if (poll(&p, 1, 0) == 0)
        kill(pid, SIGKILL); // silent for a minute: hung
    int status = 0;
    waitpid(pid, &status, 0);
    close(master);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

const QString kDensityReplay = QStringLiteral(
    "load -uniform_scalar_field_csv \"" HX_SOURCE_DIR "/examples/density_32x24x16.csv\" \"CSVUniformScalarField # 1 "
    ", 4 0 32 24 16 28497 0 1 1 0 0 1 0 0 0 0.5 0.5 0.5\" -dataOnly");

} // namespace

TEST(HxProgress, OnlyTheOutermostWorkIsShownAndAStopHoldsUntilItEnds)
{
    FakeDisplay display;
    theProgress->setDisplay(&display);
    const auto begin = [](const char* text) { return [=] { theProgress->begin(text); }; };
    const auto to = [](double f) { return [=] { theProgress->setFraction(f); }; };
    const std::function<void()> end = [] { theProgress->end(); }, stop = [] { theProgress->requestStop(); };
    const struct {
        std::function<void()> act;
        const char* shown;
        bool stopped;
    } steps[] = {
        {begin("outer"), "begun outer", false}, {to(0.2), "20 %", false}, {begin("inner"), "", false},
        {to(0.9), "", false}, {stop, "", true}, {end, "", true}, // held by the outer work
        {to(0.1), "", true}, {to(std::nan("")), "", true}, {to(0.5), "50 %", true}, {to(7), "100 %", true},
        {end, "ended", false}, {end, "", false}, // one end too many changes nothing
        {stop, "", true}, {begin("next"), "begun next", true}, {end, "ended", false}, // a stop outside work is for the next
    };
    for (size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE(i);
        display.events.clear();
        steps[i].act();
        EXPECT_EQ(display.events, std::vector<std::string>(*steps[i].shown ? 1 : 0, steps[i].shown));
        EXPECT_EQ(theProgress->stopRequested(), steps[i].stopped);
    }
    theProgress->setDisplay(nullptr);
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
        // 27 columns for the text and its percent: the cut falls inside the ä.
        {63, [&] { hxhost::TerminalProgress(write, 28, [] { return 0.0; }).begun(QString::fromUtf8("Reading /a/very/long/p\xc3\xa4th/to/the/file.csv")); },
         "\r...th/to/the/file.csv  0 %\x1b[K"},
    };
    for (const auto& s : steps) {
        SCOPED_TRACE(s.at);
        now = s.at;
        out.clear();
        s.act();
        EXPECT_EQ(out, s.written);
    }
}

TEST(DialogProgress, ShowsUpLateAndItsCancelAsksTheWorkToStop)
{
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
    EXPECT_TRUE(display.dialog()->isVisible());
    EXPECT_EQ(display.dialog()->value(), hxhost::DialogProgress::kSteps / 4);
    EXPECT_FALSE(theProgress->stopRequested());
    display.dialog()->findChild<QPushButton*>()->click();
    EXPECT_TRUE(theProgress->stopRequested());
    theProgress->end();
    theProgress->setDisplay(nullptr);
    EXPECT_FALSE(display.dialog());
}

// The bar on a terminal, or in a pipe when asked for: drawn with its
// percent, wiped before the lines that follow.
TEST(HxhostProgress, ABarOnlyOnATerminalOrWhenAskedFor)
{
    const QStringList args = {"-c", kDensityReplay};
    const std::pair<std::string, bool> cases[] = {
        {runOnTerminal(args).second, true},
        {runHxhost(args, false).err.toStdString(), false},
        {runHxhost(args + QStringList("--progress"), false).err.toStdString(), true},
    };
    for (const auto& [err, bar] : cases) {
        const size_t last = err.rfind("\rReading "), drawEnd = err.find("\x1b[K", last);
        ASSERT_EQ(last != std::string::npos, bar) << err;
        if (!bar) {
            EXPECT_EQ(err.find('\x1b'), std::string::npos) << err;
            continue;
        }
        EXPECT_NE(err.substr(last, drawEnd - last).find("density_32x24x16.csv  0 %"), std::string::npos) << err;
        EXPECT_EQ(err.find("\x1b[K\r\x1b[K" "created \"density"), drawEnd) << err;
    }
}

// Ctrl-C stops the running import, skips what follows and still writes the
// outputs; a reader that does not look for it finishes first. A second
// Ctrl-C quits at once.
TEST(HxhostProgress, CtrlCStopsTheRun)
{
    QTemporaryDir dir;
    const QString json = dir.filePath("out.json"), big = dir.filePath("big.csv");
    QFile f(big); // 20 million values of one digit: 40 MB, time enough for a Ctrl-C
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(QByteArray("7,").repeated(999).append("7\n").repeated(20000));
    f.close();
    const QString bigReplay = QStringLiteral("load -uniform_scalar_field_csv \"%1\" \"CSVUniformScalarField # 1 , 3 0 "
                                             "1000 1000 20 0 0 1 1 0 0 1 0 0 0 1 1 1\" -dataOnly").arg(big);
    const QStringList fake = {"--packages", HX_TEST_PACKAGES, "-c"};
    const struct {
        QStringList args;
        const char* cue; // sent once this is on the terminal
        int interrupts, status;
        const char* shown;
    } cases[] = {
        {{"-c", bigReplay, "-c", kDensityReplay}, "\rReading ", 1, 1, "stopped at"},
        {fake + QStringList{"load -fake_sleep 1 -dataOnly", "-c", "load -fake_echo a -dataOnly"}, "sleeping", 1, 1, "slept"},
        {fake + QStringList{"load -fake_sleep 60 -dataOnly"}, "sleeping", 2, 130, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        QFile::remove(json);
        int sent = 0;
        const auto start = std::chrono::steady_clock::now();
        const auto [status, out] = runOnTerminal(c.args + QStringList{"--json", json}, [&](pid_t pid, const std::string& out) {
            for (; sent < c.interrupts && out.find(c.cue) != std::string::npos; ++sent) {
                kill(pid, SIGINT);
                QThread::msleep(200); // two signals sent at once may arrive as one
            }
        });
        EXPECT_EQ(status, c.status) << out;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
        if (c.status == 130)
            continue;
        EXPECT_NE(out.find(c.shown), std::string::npos) << out;
        EXPECT_NE(out.find("the remaining commands are skipped"), std::string::npos) << out;
        QFile written(json);
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        EXPECT_EQ(QJsonDocument::fromJson(written.readAll()).object().value("objects").toArray().size(), 0);
    }
}
