#include "WindowTestSupport.h"

#include <QDir>
#include <fstream>

#include "DemoDisc.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "modProfile.h"

namespace plattmix::window::test {

std::string WriteDisc(const std::string& fixture, const std::filesystem::path& folder) {
    const auto which = discgen::FixtureByName(fixture);
    EXPECT_TRUE(which.has_value()) << fixture;
    const auto written = discgen::WriteDisc(discgen::FixtureSpec(*which), folder);
    EXPECT_TRUE(written.ok()) << written.error;
    return written.ok() ? written.value->cuePath.string() : std::string();
}

std::string DemoDiscIn(const std::filesystem::path& folder) {
    const auto disc = discgen::EnsureDisc(discgen::DemoDiscSpec(), folder);
    EXPECT_TRUE(disc.ok()) << disc.error;
    return disc.ok() ? disc.value->string() : std::string();
}

std::string DataDiscIn(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const auto path = folder / "daten.iso";
    std::ofstream out(path, std::ios::binary);
    const std::string sector(2048, '\0');
    for (int i = 0; i < 300; ++i)
        out << sector;
    return path.string();
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

std::string ReadSettingsValue(const std::filesystem::path& file, const std::string& section,
                              const std::string& key) {
    return shell::modProfile::GetPrivateProfileString(section, key, "<fehlt>", file.string(), 1024);
}

}  // namespace plattmix::window::test
