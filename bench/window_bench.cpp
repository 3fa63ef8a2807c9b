// The window's start, from construction to the first filled drive list, side by side with a
// minimal Qt window's start to its first shown frame, in the same run. The drive list comes
// from the disc-image drive with the demo disc. Counters: vs_minimal is the window's time over
// the minimal window's as the user sees it, with the 100 ms the window waits on purpose before
// it fills the list; vs_minimal_work is the same with that wait set to 0, i.e. the work alone.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "BenchFolder.h"
#include "DemoDisc.h"
#include "frmMain.h"
#include "modSettings.h"

namespace {

using namespace plattmix;
using Clock = std::chrono::steady_clock;

shell::SettingsPaths BenchSettings() {
    const auto folder = plattmix::bench::BenchFolder("window");
    std::filesystem::remove_all(folder);
    ::setenv("APPDATA", folder.c_str(), 1);
    shell::SettingsPaths paths = shell::ComputeSettingsPaths();
    shell::EnsureSettingsFile(paths);
    const auto demo = discgen::DemoDisc();
    if (!demo.ok())
        std::abort();
    shell::WriteIniSection(paths.SettingsFile, shell::kImagesSection, {demo.value->string()});
    return paths;
}

// Runs the event loop until done() holds; seconds from start.
template <typename Done>
void SpinUntil(Done done) {
    while (!done())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

double WindowStart(const shell::SettingsPaths& paths, bool waitFirstTick) {
    const auto start = Clock::now();
    window::WindowOptions options = window::DefaultWindowOptions();
    window::frmMain form(paths, options);
    if (!waitFirstTick)
        form.Timer1->setInterval(0);
    bool filled = false;
    QObject::connect(&form, &window::frmMain::DriveListFilled, [&] { filled = true; });
    if (!form.Form_Load())
        std::abort();
    form.show();
    SpinUntil([&] { return filled; });
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double MinimalStart() {
    const auto start = Clock::now();
    QMainWindow window;
    window.setCentralWidget(new QLabel("Plattmix"));
    window.show();
    bool painted = false;
    QTimer::singleShot(0, [&] { painted = true; });
    SpinUntil([&] { return painted; });
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void BM_StartToFirstDriveList(benchmark::State& state) {
    const shell::SettingsPaths paths = BenchSettings();
    double windowSeconds = 0, workSeconds = 0, minimalSeconds = 0;
    for (auto _ : state) {
        windowSeconds += WindowStart(paths, true);
        workSeconds += WindowStart(paths, false);
        minimalSeconds += MinimalStart();
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["window_ms"] = windowSeconds / n * 1000;
    state.counters["work_ms"] = workSeconds / n * 1000;
    state.counters["minimal_ms"] = minimalSeconds / n * 1000;
    state.counters["vs_minimal"] = windowSeconds / minimalSeconds;
    state.counters["vs_minimal_work"] = workSeconds / minimalSeconds;
}
BENCHMARK(BM_StartToFirstDriveList)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

}  // namespace

int main(int argc, char** argv) {
    if (std::getenv("QT_QPA_PLATFORM") == nullptr)
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
