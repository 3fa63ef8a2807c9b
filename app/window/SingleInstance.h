// One running copy per user: a lock file in the user's runtime folder, held while the program
// runs and released by the system if the program dies.
#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

namespace plattmix::window {

// $XDG_RUNTIME_DIR/plattmix.lock, else the temporary folder with the user's id in the name.
QString DefaultLockPath();

class SingleInstance {
  public:
    explicit SingleInstance(const QString& lockPath);
    // True when this is the only copy (the lock is now held).
    bool TryAcquire();

  private:
    std::unique_ptr<QLockFile> lock_;
};

}  // namespace plattmix::window
