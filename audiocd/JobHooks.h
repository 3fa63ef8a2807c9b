// How a long job talks to whoever runs it (the window, the command line, a test): progress,
// a yield to keep the window alive, warnings for a message box, and the abort flag it polls.
#pragma once

#include <functional>
#include <string>

namespace plattmix::audiocd {

struct JobHooks {
    std::function<void(int percent)> progress;          // 0..100
    std::function<void()> yield;                        // let the window process events
    std::function<void(const std::string& text)> warn;  // exclamation box, no title
    std::function<bool()> aborted;                      // the user asked the job to stop

    void Progress(int percent) const {
        if (progress)
            progress(percent);
    }
    void Yield() const {
        if (yield)
            yield();
    }
    void Warn(const std::string& text) const {
        if (warn)
            warn(text);
    }
    bool Aborted() const { return aborted && aborted(); }
};

}  // namespace plattmix::audiocd
