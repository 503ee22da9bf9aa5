#pragma once
// An import's progress on the host's display, and the user's wish to stop
// it. The readers report bytes as they read them; only every few megabytes
// does that reach the host, so a fast loop pays one comparison.
#include <QString>

#include "McString.h"

namespace hxcsv {

class ImportProgress {
public:
    // Bytes between two reports to the host (and two looks for a stop).
    static constexpr long long reportEvery = 4 << 20;

    // Work on fileName begins; total is the number of bytes that make 100 %
    // (0 when unknown: then only stop requests are looked at).
    ImportProgress(const McString& fileName, long long total);
    ~ImportProgress();
    ImportProgress(const ImportProgress&) = delete;
    ImportProgress& operator=(const ImportProgress&) = delete;

    // done bytes of total are read; false when the user asked to stop.
    bool step(long long done)
    {
        return done < nextReport || report(done);
    }
    // For readers that count their own way: the share done, 0 to 1; false
    // when the user asked to stop.
    bool shareDone(double share);
    // The work is complete: 100 %.
    void finish();
    // "import of FILE stopped at 37 %" on the console.
    void reportStopped() const;

private:
    bool report(long long done);

    QString fileName;
    long long total;
    long long nextReport = 0;
    double fraction = 0;
};

} // namespace hxcsv
