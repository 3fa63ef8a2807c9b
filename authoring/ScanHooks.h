// How a folder walk reaches the window: the Escape key and the message loop. The window, the
// command line and the tests each hand in their own; an empty function counts as "not pressed"
// and "nothing to do".
#pragma once

#include <functional>

namespace plattmix::authoring {

struct ScanHooks {
    // True when Escape is down or was pressed since the last query.
    std::function<bool()> escapePressed;
    // Lets the window handle its pending events.
    std::function<void()> yield;
};

inline bool EscapePressed(const ScanHooks& hooks) {
    return hooks.escapePressed && hooks.escapePressed();
}

inline void YieldToWindow(const ScanHooks& hooks) {
    if (hooks.yield)
        hooks.yield();
}

}  // namespace plattmix::authoring
