// What went wrong while the image thread read the source files: the first fault's text. The
// streams of one job share it; the job reads it from its own thread.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

namespace plattmix::authoring {

class IsoFileStreamFaults {
  public:
    void Record(const std::string& text) {
        const std::lock_guard lock(mutex_);
        if (first_.empty())
            first_ = text;
        any_ = true;
    }

    bool Any() const { return any_; }

    std::string First() const {
        const std::lock_guard lock(mutex_);
        return first_;
    }

  private:
    mutable std::mutex mutex_;
    std::string first_;
    std::atomic<bool> any_{false};
};

}  // namespace plattmix::authoring
