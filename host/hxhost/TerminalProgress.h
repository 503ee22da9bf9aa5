// The progress of an import as a one-line bar on the terminal.
#pragma once
#include <functional>
#include <string>

#include "Console.h"
#include "HxProgress.h"

namespace hxhost {

// Shows the work's text, percent, MB/s and time left on one line, redrawn
// in place at most ten times a second and wiped when the work ends. As the
// console's status line it steps aside for the lines printed meanwhile.
class TerminalProgress : public HxProgress::Display, public StatusLine {
public:
    using Clock = std::function<double()>; // seconds, never going back
    static constexpr double kRedrawEvery = 0.1;

    // columns: the terminal's width (the line stays shorter).
    TerminalProgress(Console::Writer write, int columns, Clock clock = steadySeconds);

    // The bytes the next work reads, for its MB/s; 0 when unknown.
    void expectBytes(long long bytes) { mBytes = bytes; }

    void begun(const QString& text) override;
    void progressed(double fraction) override;
    void ended() override;
    void hide() override;
    void show() override;

    static double steadySeconds();

private:
    void draw();
    std::string stats(double elapsed) const;
    std::string line() const;

    Console::Writer mWrite;
    int mColumns;
    Clock mClock;
    std::string mText;
    long long mBytes = 0;
    double mStart = 0;
    double mLastDraw = 0;
    double mFraction = 0;
    bool mActive = false;
    bool mDrawn = false;
};

} // namespace hxhost
