#pragma once
#include <QString>
#include <atomic>

#include "HxSdkApi.h"

// Progress of long work, and the user's wish to stop it. A package calls
// begin, then setFraction and stopRequested from its reading loop, and end
// on every path out. The host shows the progress through a Display (a
// terminal bar, a progress dialog) and asks for a stop (Ctrl-C, a Cancel
// button) with requestStop.
//
// Work may nest (an import inside a script): only the outermost begin/end
// pair and its fractions reach the display; a stop request reaches every
// level and holds until the outermost work ends; one made outside any work
// holds for the next.
class HXSDK_API HxProgress {
public:
    class Display {
    public:
        virtual ~Display() = default;
        virtual void begun(const QString& text) = 0;
        // fraction in [0, 1], never lower than the one before.
        virtual void progressed(double fraction) = 0;
        virtual void ended() = 0;
        // Called when a package asks whether to stop: a display with a
        // Cancel button lets it be pressed here.
        virtual void poll() {}
    };

    static HxProgress* instance();

    void begin(const QString& text);
    void setFraction(double fraction);
    bool stopRequested();
    void end();

    // The host's side. The display is not owned; null shows nothing.
    void setDisplay(Display* display) { mDisplay = display; }
    Display* display() const { return mDisplay; }
    // Safe to call from a signal handler.
    void requestStop() { mStop.store(true); }
    // The fraction last reported by the outermost work; 0 outside work.
    double fraction() const { return mFraction; }
    int depth() const { return mDepth; }

private:
    Display* mDisplay = nullptr;
    int mDepth = 0;
    double mFraction = 0;
    std::atomic<bool> mStop{false};
    static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets the stop flag");
};

#define theProgress (HxProgress::instance())
