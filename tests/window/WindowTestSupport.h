// What the window tests share: a scratch settings folder per test, disc images in the
// "Abbilder" section, a recorder for message boxes, scripted dialog answers, a wait for the
// first drive list and a way to act while a job runs.
#pragma once

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Dialogs.h"
#include "DiscWriter.h"
#include "MsgBox.h"
#include "Startup.h"
#include "clsSPTI.h"
#include "common/ScratchFolder.h"
#include "frmMain.h"
#include "imagedrive/clsImageDrive.h"
#include "modSettings.h"

namespace plattmix::window::test {

struct RecordedBox {
    QString text;
    MsgBoxStyle style;
    QString title;
};

// A disc written by the generator into folder: what it holds, and its CUE sheet.
discgen::DiscDescription DiscOf(const std::string& fixture, const std::filesystem::path& folder);
std::string WriteDisc(const std::string& fixture, const std::filesystem::path& folder);

// A scratch world for one start of the program: APPDATA, the lock, the language folder and a
// machine without optical drives, so only the disc images can stand in for drives.
class WindowTest : public ::testing::Test {
  protected:
    WindowTest();
    ~WindowTest() override;

    void SetUp() override {
        root = plattmix::test::ScratchFolder("window");
        appData = root / "appdata";
        std::filesystem::create_directories(appData);
        ::setenv("APPDATA", appData.c_str(), 1);
        languages = root / "Languages";
        std::filesystem::create_directories(languages);
        std::filesystem::create_directories(root / "sys");
    }

    std::filesystem::path SettingsFile() const { return appData / "Trovalis" / "Diskolo.ini"; }
    // A value of the window's section in the settings file; "<fehlt>" when there is none.
    std::string Setting(const std::string& key) const;

    StartupOptions Options() const {
        StartupOptions options;
        options.lockPath = QString::fromStdString((root / "plattmix.lock").string());
        options.window.languagesFolder = languages.string() + "/";
        const std::string sys = (root / "sys").string();
        const std::string dev = (root / "dev").string();
        options.window.firstTransport = [sys, dev] {
            return std::make_unique<scsi::clsSPTI>(sys, dev);
        };
        // The fall-back over the machine's SCSI generic devices would see real drives; these
        // tests want a machine without any (the test bed checks the fall-back itself).
        options.window.fallbackTransport = [] { return std::unique_ptr<scsi::ISCSI>(); };
        return options;
    }

    // The disc images the program loads when no drive transport works.
    void UseImages(const std::vector<std::string>& images) {
        std::filesystem::create_directories(SettingsFile().parent_path());
        shell::WriteIniSection(SettingsFile().string(), "Abbilder", images);
    }

    // Starts the program; nothing when it ended at once.
    frmMain* Start() {
        startup = std::make_unique<Startup>(Options());
        return startup->Start();
    }

    // Starts with options, waits for the first drive list and shows the window.
    frmMain* StartShown(const StartupOptions& options) {
        startup = std::make_unique<Startup>(options);
        frmMain* window = startup->Start();
        if (window != nullptr) {
            WaitForDriveList(*window);
            window->show();
        }
        return window;
    }

    frmMain* StartShown() { return StartShown(Options()); }

    static void WaitForDriveList(frmMain& window) {
        if (!window.isLoading)
            return;
        QEventLoop loop;
        QObject::connect(&window, &frmMain::DriveListFilled, &loop, &QEventLoop::quit);
        // Only a guard against hanging; the list comes after 100 ms.
        QTimer::singleShot(60000, &loop, &QEventLoop::quit);
        loop.exec();
        ASSERT_FALSE(window.isLoading) << "the drive list was never filled";
    }

    std::filesystem::path root, appData, languages;
    // The message boxes shown, recorded instead; questions take the scripted answers (No when
    // none).
    std::vector<RecordedBox> boxes;
    std::deque<int> boxAnswers;
    // The dialogs asked for; each takes the next scripted paths (Cancel when none).
    std::vector<DialogRequest> dialogs;
    std::deque<QStringList> dialogAnswers;
    std::unique_ptr<Startup> startup;
};

// Runs what once, at the job's next yield, the first time condition holds after sender's signal:
// what a person does during a job reaches the window between two of its steps.
template <typename Sender, typename Signal>
void OnceWhen(frmMain* window, Sender* sender, Signal signal, std::function<bool()> condition,
              std::function<void()> what) {
    auto done = std::make_shared<bool>(false);
    QObject::connect(sender, signal, window, [=] {
        if (*done || !condition())
            return;
        *done = true;
        QMetaObject::invokeMethod(window, what, Qt::QueuedConnection);
    });
}

// The image drive that stands in for the machine's drives, and the handle of its first drive.
scsi::imagedrive::clsImageDrive& ImageDriveOf(frmMain& window);
std::string FirstDrive(frmMain& window);

// Writes text into path, making its folders.
void WriteFile(const std::filesystem::path& path, const std::string& text);
// An ISO image of folder named volume, made by the image job.
std::string MakeIsoImage(const std::filesystem::path& folder, const std::string& volume,
                         const std::filesystem::path& image);

// Writes picture as name into the folders the run asks pictures for (PLATTMIX_SCREENSHOT_OUT,
// set by the run under a real X server, and PLATTMIX_SCREENSHOT_DIR); nothing when none is set.
void SavePicture(const QImage& picture, const QString& name);

}  // namespace plattmix::window::test
