// plattmix-cli rip --secure against a local server holding the disc's AccurateRip record: the
// verdict beside each track, Rip.log and Rip.cue in the target folder, the drive's offset from
// the settings and --offset over it; without --secure nobody is asked and no log is written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "CliRun.h"
#include "DiscWriter.h"
#include "DriveList.h"
#include "Fixtures.h"
#include "common/LocalHttpServer.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modSettings.h"

using namespace plattmix;
using plattmix::clitest::RunCommandWords;
namespace fs = std::filesystem;

TEST(CliSecureRip, EveryTrackMatchesTheRecordWithTheRightOffset) {
    const fs::path folder = test::ScratchFolder("cli");
    ::setenv("APPDATA", (folder / "appdata").c_str(), 1);
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();
    const auto response = discgen::AccurateRipResponseOf(*disc.value, 12);
    ASSERT_TRUE(response.ok()) << response.error;
    test::LocalHttpServer server;
    server.Set("/" + audiocd::AccurateRipRecordPath(response.value->ids),
               {200, discgen::MakeAccurateRipFile({&*response.value, 1})});

    // The server, and a wrong offset kept for the image drive.
    const auto paths = shell::ComputeSettingsPaths();
    shell::EnsureSettingsFile(paths);
    shell::WriteIni(paths, "Diskolo", "AccurateRip", server.Url());
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(cue);
    ASSERT_TRUE(handle.ok()) << handle.Error();
    shell::WriteIni(paths, "Laufwerksversatz", audiocd::DriveIdentification(drive, handle.Value()),
                    "+30");
    const auto rip = [&](const std::string& out, std::vector<std::string> extra) {
        std::vector<std::string> words = {"--drive",  cue,   "--out", (folder / out).string(),
                                          "--format", "flac"};
        words.insert(words.end(), extra.begin(), extra.end());
        return RunCommandWords("rip", words);
    };

    const auto shifted = rip("versetzt", {"--secure"});
    EXPECT_NE(shifted.out.find("Track01.flac -->Fertig (AccurateRip: abweichend)"),
              std::string::npos)
        << shifted.out << shifted.err;

    const auto exact = rip("genau", {"--secure", "--offset", "0"});
    EXPECT_EQ(exact.code, cli::kExitDone) << exact.out << exact.err;
    for (const char* file : {"Track01.flac", "Track02.flac", "Track03.flac"}) {
        EXPECT_NE(
            exact.out.find(std::string(file) + " -->Fertig (AccurateRip: übereinstimmend, 12)"),
            std::string::npos)
            << file << '\n'
            << exact.out;
    }
    EXPECT_TRUE(fs::exists(folder / "genau" / "Rip.log"));
    EXPECT_TRUE(fs::exists(folder / "genau" / "Rip.cue"));
    EXPECT_EQ(server.Requests().size(), 2u);

    // Plain, as ever: no request, no log.
    const auto plain = rip("schlicht", {});
    EXPECT_EQ(plain.code, cli::kExitDone) << plain.err;
    EXPECT_NE(plain.out.find("Track01.flac -->Fertig\n"), std::string::npos) << plain.out;
    EXPECT_FALSE(fs::exists(folder / "schlicht" / "Rip.log"));
    EXPECT_EQ(server.Requests().size(), 2u);
    EXPECT_EQ(rip("x", {"--offset", "5"}).code, cli::kExitUsage);  // only with --secure
    ::unsetenv("APPDATA");
}
