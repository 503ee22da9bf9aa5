#include "ImportProgress.h"

#include <cmath>

#include "HxMessage.h"
#include "HxProgress.h"

namespace hxcsv {

ImportProgress::ImportProgress(const McString& name, long long total) : fileName(name.toQString()), total(total)
{
    theProgress->begin(QStringLiteral("Reading %1").arg(fileName));
}

ImportProgress::~ImportProgress()
{
    theProgress->end();
}

bool ImportProgress::report(long long done)
{
    nextReport = done + reportEvery;
    if (total > 0)
        return shareDone(static_cast<double>(done) / static_cast<double>(total));
    return !theProgress->stopRequested();
}

bool ImportProgress::shareDone(double share)
{
    fraction = std::fmax(fraction, std::fmin(1.0, share));
    theProgress->setFraction(fraction);
    return !theProgress->stopRequested();
}

void ImportProgress::finish()
{
    fraction = 1;
    theProgress->setFraction(1);
}

void ImportProgress::reportStopped() const
{
    theMsg->error(QStringLiteral("import of %1 stopped at %2 %").arg(fileName).arg(std::floor(fraction * 100)));
}

} // namespace hxcsv
