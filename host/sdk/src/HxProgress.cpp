#include "HxProgress.h"

#include <algorithm>

HxProgress* HxProgress::instance()
{
    static HxProgress progress;
    return &progress;
}

void HxProgress::begin(const QString& text)
{
    if (mDepth++ > 0)
        return;
    mFraction = 0;
    if (mDisplay)
        mDisplay->begun(text);
}

void HxProgress::setFraction(double fraction)
{
    if (mDepth != 1)
        return;
    // NaN and steps back are ignored: a display only ever moves forward.
    if (!(fraction > mFraction))
        return;
    mFraction = std::min(fraction, 1.0);
    if (mDisplay)
        mDisplay->progressed(mFraction);
}

bool HxProgress::stopRequested()
{
    if (mDisplay)
        mDisplay->poll();
    return mStop.load();
}

void HxProgress::end()
{
    if (mDepth == 0 || --mDepth > 0)
        return;
    if (mDisplay)
        mDisplay->ended();
    mFraction = 0;
    mStop.store(false);
}
