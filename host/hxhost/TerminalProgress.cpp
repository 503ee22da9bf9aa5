#include "TerminalProgress.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "ConsoleText.h"

namespace hxhost {

namespace {

const char kWipe[] = "\r\033[K";

std::string timeLeft(double seconds)
{
    const long long s = std::llround(seconds);
    char text[48];
    if (s < 60)
        std::snprintf(text, sizeof text, "%lld s left", s);
    else if (s < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld left", s / 60, s % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld left", s / 3600, s / 60 % 60, s % 60);
    return text;
}

} // namespace

TerminalProgress::TerminalProgress(Console::Writer write, int columns, Clock clock)
    : mWrite(std::move(write)), mColumns(columns), mClock(std::move(clock))
{
}

double TerminalProgress::steadySeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void TerminalProgress::begun(const QString& text)
{
    mText = escapeForConsole(text);
    mStart = mClock();
    mFraction = 0;
    mActive = true;
    draw();
}

void TerminalProgress::progressed(double fraction)
{
    mFraction = fraction;
    show();
}

void TerminalProgress::ended()
{
    hide();
    mActive = false;
    mBytes = 0;
}

void TerminalProgress::hide()
{
    if (mDrawn)
        mWrite(kWipe);
    mDrawn = false;
}

void TerminalProgress::show()
{
    if (mActive && mClock() - mLastDraw >= kRedrawEvery)
        draw();
}

void TerminalProgress::draw()
{
    mLastDraw = mClock();
    mWrite("\r" + line() + "\033[K");
    mDrawn = true;
}

// Percent, and once a little time has passed the speed and the time left.
std::string TerminalProgress::stats(double elapsed) const
{
    std::string text = "  " + std::to_string(static_cast<int>(std::floor(mFraction * 100))) + " %";
    if (elapsed < 0.05 || mFraction <= 0)
        return text;
    char speed[48];
    if (mBytes > 0) {
        std::snprintf(speed, sizeof speed, "  %.1f MB/s", mFraction * static_cast<double>(mBytes) / elapsed / 1e6);
        text += speed;
    }
    return text + "  " + timeLeft(elapsed * (1 - mFraction) / mFraction);
}

// The text gives way from its start (the end of a path is what tells
// files apart) so the line never reaches the terminal's last column.
std::string TerminalProgress::line() const
{
    const std::string tail = stats(mClock() - mStart);
    const long long room = static_cast<long long>(mColumns) - 1 - static_cast<long long>(tail.size());
    if (room >= static_cast<long long>(mText.size()))
        return mText + tail;
    if (room < 4)
        return tail.substr(tail.find_first_not_of(' '));
    size_t from = mText.size() - static_cast<size_t>(room - 3);
    while (from < mText.size() && (static_cast<unsigned char>(mText[from]) & 0xc0) == 0x80)
        ++from; // not inside a UTF-8 sequence
    return "..." + mText.substr(from) + tail;
}

} // namespace hxhost
