#include "Interrupt.h"

#include <csignal>
#include <unistd.h>

#include "HxProgress.h"

namespace hxhost {

namespace {

volatile std::sig_atomic_t gInterrupts = 0;
// Taken before the handler is installed: the first call of instance() is
// not safe inside a signal handler.
HxProgress* gProgress = nullptr;

void onInterrupt(int)
{
    if (gInterrupts != 0)
        _exit(130);
    gInterrupts = 1;
    gProgress->requestStop();
}

void setHandler(void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    // Reads in progress carry on: the reader looks for the stop itself.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

} // namespace

InterruptHandling::InterruptHandling()
{
    gProgress = HxProgress::instance();
    setHandler(onInterrupt);
}

InterruptHandling::~InterruptHandling()
{
    setHandler(SIG_DFL);
}

bool interruptRequested()
{
    return gInterrupts != 0;
}

} // namespace hxhost
