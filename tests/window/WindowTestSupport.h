// What the window tests share: a scratch settings folder per test, disc images in the
// "Abbilder" section, a recorder for message boxes, scripted dialog answers and a wait for the
// first drive list.
#pragma once

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Dialogs.h"
#include "MsgBox.h"
#include "Startup.h"
#include "TransportChoice.h"
#include "clsSPTI.h"
#include "common/ScratchFolder.h"
#include "frmMain.h"
#include "modSettings.h"

namespace plattmix::window::test {

struct RecordedBox {
    QString text;
    MsgBoxStyle style;
    QString title;
};

// Records every box instead of showing it; questions get the scripted answers (No when none).
class MsgBoxRecorder {
  public:
    MsgBoxRecorder() {
        previous_ =
            SetMsgBoxAnswerer([this](const QString& text, MsgBoxStyle style, const QString& title) {
                boxes.push_back({text, style, title});
                if (style != MsgBoxStyle::QuestionYesNo)
                    return vbOK;
                if (answers.empty())
                    return vbNo;
                const int answer = answers.front();
                answers.pop_front();
                return answer;
            });
    }
    ~MsgBoxRecorder() { SetMsgBoxAnswerer(previous_); }
    MsgBoxRecorder(const MsgBoxRecorder&) = delete;
    MsgBoxRecorder& operator=(const MsgBoxRecorder&) = delete;

    std::vector<RecordedBox> boxes;
    std::deque<int> answers;

  private:
    MsgBoxAnswerer previous_;
};

// Answers the dialogs from a queue of paths (Cancel when empty) and keeps the requests.
class DialogScript {
  public:
    DialogScript() {
        previous_ = SetDialogAnswerer([this](DialogRequest& request) {
            requests.push_back(request);
            if (answers.empty())
                return QStringList();
            QStringList answer = answers.front();
            answers.pop_front();
            return answer;
        });
    }
    ~DialogScript() { SetDialogAnswerer(previous_); }
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    std::deque<QStringList> answers;
    std::vector<DialogRequest> requests;

  private:
    DialogAnswerer previous_;
};

// A disc written by the generator into folder; its CUE sheet.
std::string WriteDisc(const std::string& fixture, const std::filesystem::path& folder);

// A scratch world for one start of the program: APPDATA, the lock, the language folder and a
// machine without optical drives, so only the disc images can stand in for drives.
class WindowTest : public ::testing::Test {
  protected:
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
    std::filesystem::path SuiteOptionsFile() const { return appData / "Trovalis" / "Opt.ini"; }
    shell::SettingsPaths Paths() const { return shell::ComputeSettingsPaths(); }

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

    // Starts, and waits for the first drive list.
    frmMain* StartAndFill() {
        frmMain* window = Start();
        if (window != nullptr)
            WaitForDriveList(*window);
        return window;
    }

    // Starts with the disc the generator writes for fixture in the image drive, waits for the
    // first drive list and shows the window.
    frmMain* StartShownWith(const std::string& fixture) {
        UseImages({WriteDisc(fixture, root / "disc")});
        frmMain* window = StartAndFill();
        if (window != nullptr)
            window->show();
        return window;
    }

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
    std::unique_ptr<Startup> startup;
};

// The demo disc, generated into folder.
std::string DemoDiscIn(const std::filesystem::path& folder);
// An image of a data disc: an ISO file of zeroed sectors.
std::string DataDiscIn(const std::filesystem::path& folder);

// Writes picture as name into the folders the run asks pictures for (PLATTMIX_SCREENSHOT_OUT,
// set by the run under a real X server, and PLATTMIX_SCREENSHOT_DIR); nothing when none is set.
void SavePicture(const QImage& picture, const QString& name);

std::string ReadSettingsValue(const std::filesystem::path& file, const std::string& section,
                              const std::string& key);

}  // namespace plattmix::window::test
