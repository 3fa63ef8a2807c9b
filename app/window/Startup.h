// From process start to the shown window: one copy per user, the settings file, the window and
// its load.
#pragma once

#include <QString>
#include <memory>

#include "SingleInstance.h"
#include "frmMain.h"

namespace plattmix::window {

inline const QString kAlreadyRunningMessage =
    QStringLiteral("Diese Anwendung ist bereits geladen und kann nur einmal gestartet werden!");

struct StartupOptions {
    QString lockPath;
    WindowOptions window;
};
StartupOptions DefaultStartupOptions();

class Startup {
  public:
    explicit Startup(StartupOptions options);
    ~Startup();
    Startup(const Startup&) = delete;
    Startup& operator=(const Startup&) = delete;

    // The loaded window (not yet shown), or nothing when the program ends at once: another copy
    // runs, or no transport works. The user has been told either way.
    frmMain* Start();
    frmMain* Window() const { return window_.get(); }

  private:
    StartupOptions options_;
    SingleInstance instance_;
    std::unique_ptr<frmMain> window_;
};

// The whole program: start, show, run the event loop. Returns the process's exit code.
int RunPlattmix(const StartupOptions& options);

}  // namespace plattmix::window
