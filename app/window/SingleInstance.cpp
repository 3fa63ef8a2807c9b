#include "SingleInstance.h"

#include <unistd.h>

#include <QDir>
#include <QStandardPaths>

namespace plattmix::window {

QString DefaultLockPath() {
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (!runtime.isEmpty())
        return runtime + QStringLiteral("/plattmix.lock");
    return QDir::tempPath() + QStringLiteral("/plattmix-%1.lock").arg(::getuid());
}

SingleInstance::SingleInstance(const QString& lockPath)
    : lock_(std::make_unique<QLockFile>(lockPath)) {
    // A lock whose owner has died is taken over at once.
    lock_->setStaleLockTime(0);
}

bool SingleInstance::TryAcquire() {
    return lock_->isLocked() || lock_->tryLock(0);
}

}  // namespace plattmix::window
