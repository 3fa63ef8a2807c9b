#include "WindowTestSupport.h"

#include <QDir>
#include <fstream>

#include "Fixtures.h"
#include "IsoImage.h"
#include "modProfile.h"

namespace plattmix::window::test {

namespace {

template <typename T>
T Next(std::deque<T>& queue, T none) {
    if (queue.empty())
        return none;
    T next = std::move(queue.front());
    queue.pop_front();
    return next;
}

}  // namespace

WindowTest::WindowTest() {
    SetMsgBoxAnswerer([this](const QString& text, MsgBoxStyle style, const QString& title) {
        boxes.push_back({text, style, title});
        return style == MsgBoxStyle::QuestionYesNo ? Next(boxAnswers, int{vbNo}) : int{vbOK};
    });
    SetDialogAnswerer([this](DialogRequest& request) {
        dialogs.push_back(request);
        return Next(dialogAnswers, QStringList());
    });
}

WindowTest::~WindowTest() {
    startup.reset();  // a window that closes now may still ask
    SetMsgBoxAnswerer({});
    SetDialogAnswerer({});
}

discgen::DiscDescription DiscOf(const std::string& fixture, const std::filesystem::path& folder) {
    const auto which = discgen::FixtureByName(fixture);
    EXPECT_TRUE(which.has_value()) << fixture;
    const auto written = discgen::WriteDisc(discgen::FixtureSpec(*which), folder);
    EXPECT_TRUE(written.ok()) << written.error;
    return written.ok() ? *written.value : discgen::DiscDescription();
}

std::string WriteDisc(const std::string& fixture, const std::filesystem::path& folder) {
    return DiscOf(fixture, folder).cuePath.string();
}

void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string MakeIsoImage(const std::filesystem::path& folder, const std::string& volume,
                         const std::filesystem::path& image) {
    authoring::FolderListing listing;
    authoring::ShowOrdnerInhalt(folder.string(), listing, {});
    const auto made =
        authoring::CreateIsoImage({folder.string(), volume, image.string()}, listing, {});
    EXPECT_EQ(made.outcome, authoring::IsoOutcome::Done) << image;
    return image.string();
}

void SavePicture(const QImage& picture, const QString& name) {
    for (const char* variable : {"PLATTMIX_SCREENSHOT_OUT", "PLATTMIX_SCREENSHOT_DIR"}) {
        const QString folder = qEnvironmentVariable(variable);
        if (folder.isEmpty())
            continue;
        QDir().mkpath(folder);
        EXPECT_TRUE(picture.save(folder + QLatin1Char('/') + name)) << name.toStdString();
    }
}

scsi::imagedrive::clsImageDrive& ImageDriveOf(frmMain& window) {
    return dynamic_cast<scsi::imagedrive::clsImageDrive&>(*window.Transport());
}

std::string FirstDrive(frmMain& window) {
    int16_t first = 1;
    return ImageDriveOf(window).DriveHandle(first);
}

std::string WindowTest::Setting(const std::string& key) const {
    return shell::modProfile::GetPrivateProfileString("Diskolo", key, "<fehlt>",
                                                      SettingsFile().string(), 1024);
}

}  // namespace plattmix::window::test
