#include "Startup.h"

#include <QApplication>

#include "KeyState.h"
#include "MsgBox.h"
#include "modSettings.h"

namespace plattmix::window {

StartupOptions DefaultStartupOptions() {
    return {DefaultLockPath(), DefaultWindowOptions()};
}

Startup::Startup(StartupOptions options)
    : options_(std::move(options)), instance_(options_.lockPath) {}

Startup::~Startup() = default;

frmMain* Startup::Start() {
    if (!instance_.TryAcquire()) {
        MsgBox(nullptr, kAlreadyRunningMessage, MsgBoxStyle::Exclamation, kAppTitle);
        return nullptr;
    }
    const shell::SettingsPaths paths = shell::ComputeSettingsPaths();
    shell::EnsureSettingsFile(paths);
    window_ = std::make_unique<frmMain>(paths, options_.window);
    if (!window_->Form_Load()) {
        window_.reset();
        return nullptr;
    }
    return window_.get();
}

int RunPlattmix(const StartupOptions& options) {
    EscapeKeyFilter escape;
    qApp->installEventFilter(&escape);
    Startup startup(options);
    frmMain* window = startup.Start();
    if (window == nullptr)
        return 0;
    window->show();
    return QApplication::exec();
}

}  // namespace plattmix::window
