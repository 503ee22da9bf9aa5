// Ctrl-C during a run of hxhost.
#pragma once

namespace hxhost {

// While it lives, the first SIGINT asks the running import to stop
// (HxProgress::requestStop) and hxhost to skip the remaining commands; the
// second ends hxhost at once with status 130. Its end restores the default.
class InterruptHandling {
public:
    InterruptHandling();
    ~InterruptHandling();
    InterruptHandling(const InterruptHandling&) = delete;
    InterruptHandling& operator=(const InterruptHandling&) = delete;
};

// Whether a SIGINT came while InterruptHandling was in place.
bool interruptRequested();

} // namespace hxhost
