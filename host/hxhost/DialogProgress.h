// The progress of an interactive import in a progress dialog.
#pragma once
#include <QProgressDialog>
#include <memory>

#include "HxProgress.h"

namespace hxhost {

// A modal progress dialog whose Cancel button asks the work to stop. It
// shows up only once the work has lasted kShowAfterMs; the package's looks
// for a stop let it process its events, so Cancel can be pressed.
class DialogProgress : public HxProgress::Display {
public:
    static constexpr int kShowAfterMs = 500;
    static constexpr int kSteps = 1000;

    void begun(const QString& text) override;
    void progressed(double fraction) override;
    void ended() override;
    void poll() override;

    // The dialog of the running work; null outside work.
    QProgressDialog* dialog() const { return mDialog.get(); }

private:
    std::unique_ptr<QProgressDialog> mDialog;
};

} // namespace hxhost
