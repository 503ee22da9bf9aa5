#include "DialogProgress.h"

#include <QCoreApplication>
#include <cmath>

namespace hxhost {

// A new dialog for each work: a reused one would keep the timer that shows
// it from the work before.
void DialogProgress::begun(const QString& text)
{
    mDialog = std::make_unique<QProgressDialog>(text, QStringLiteral("Cancel"), 0, kSteps);
    mDialog->setWindowTitle(QStringLiteral("Import"));
    mDialog->setWindowModality(Qt::ApplicationModal);
    mDialog->setAutoReset(false);
    mDialog->setMinimumDuration(kShowAfterMs);
    QObject::connect(mDialog.get(), &QProgressDialog::canceled, [] { theProgress->requestStop(); });
    mDialog->setValue(0);
}

void DialogProgress::progressed(double fraction)
{
    if (mDialog)
        mDialog->setValue(static_cast<int>(std::lround(fraction * kSteps)));
}

void DialogProgress::ended()
{
    mDialog.reset();
}

void DialogProgress::poll()
{
    if (mDialog)
        QCoreApplication::processEvents();
}

} // namespace hxhost
