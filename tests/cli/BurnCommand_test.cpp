// plattmix-cli burn and erase on libburn's "stdio:" pseudo-drives: images and compilations
// written and read back, a further session only with --multisession, erase only with an answer;
// usage errors.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "BurnCommand.h"
#include "BurnService.h"
#include "CliRun.h"
#include "CompilationList.h"
#include "FolderListing.h"
#include "IsoImage.h"
#include "IsoTreeReader.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using plattmix::clitest::CliRun;

CliRun RunCli(const std::string& command, std::map<std::string, std::string> options,
              std::vector<std::string> paths = {}) {
    CliArgs args;
    args.command = command;
    args.options = std::move(options);
    args.positional = std::move(paths);
    std::ostringstream out, err;
    const int code = command == "burn" ? RunBurnCommand(args, out, err, false)
                                       : RunEraseCommand(args, out, err, false);
    return {code, out.str(), err.str()};
}

std::string Bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string ReadBack(const fs::path& disc, const std::string& path) {
    const authoring::IsoTreeReader reader(disc.string());
    std::string bytes;
    if (!reader.ok() || !reader.ReadFile(path, [&](const char* data, size_t size) {
            bytes.append(data, size);
            return true;
        }))
        return "(nicht lesbar)";
    return bytes;
}

class BurnCommandTest : public ::testing::Test {
  protected:
    fs::path root = plattmix::test::ScratchFolder("cli");
    std::string drive = "stdio:" + (root / "disk.iso").string();

    void SetUp() override {
        fs::create_directories(root / "Fotos");
        std::ofstream(root / "Fotos" / "bild.jpg") << std::string(3000, 'j');
        std::ofstream(root / "notiz.txt") << "Notiz";
        std::ofstream(root / "spaeter.txt") << "später";
    }

    // An ISO image of the Fotos folder; empty when it could not be made.
    fs::path FotosImage() const {
        authoring::FolderListing listing;
        authoring::ShowOrdnerInhalt((root / "Fotos").string(), listing, {});
        const fs::path image = root / "fotos.iso";
        const auto made =
            authoring::CreateIsoImage({(root / "Fotos").string(), "", image.string()}, listing, {});
        return made.outcome == authoring::IsoOutcome::Done ? image : fs::path();
    }
};

TEST_F(BurnCommandTest, UsageErrors) {
    EXPECT_EQ(RunCli("burn", {}, {"x"}).code, kExitUsage);             // no drive
    EXPECT_EQ(RunCli("burn", {{"--drive", drive}}).code, kExitUsage);  // nothing to burn
    EXPECT_EQ(RunCli("burn", {{"--drive", drive}, {"--image", "a.iso"}, {"--list", "l.txt"}}).code,
              kExitUsage);
    EXPECT_EQ(RunCli("burn", {{"--drive", drive}, {"--image", "a.iso"}}, {"x"}).code, kExitUsage);
    EXPECT_EQ(RunCli("burn", {{"--drive", drive}, {"--tracks", "1"}}, {"x"}).code, kExitUsage);
    EXPECT_EQ(RunCli("erase", {}).code, kExitUsage);
    EXPECT_EQ(RunCli("erase", {{"--drive", drive}}, {"x"}).code, kExitUsage);
    EXPECT_FALSE(fs::exists(root / "disk.iso"));
}

TEST_F(BurnCommandTest, ImageIsBurntAsItIs) {
    const fs::path image = FotosImage();
    ASSERT_FALSE(image.empty());
    const CliRun run = RunCli("burn", {{"--drive", drive}, {"--image", image.string()}});
    EXPECT_EQ(run.code, kExitDone) << run.err;
    EXPECT_NE(run.out.find("Brennen erfolgreich!"), std::string::npos) << run.out;
    EXPECT_EQ(Bytes(root / "disk.iso"), Bytes(image));

    // Not an image: refused before anything is written.
    const CliRun text = RunCli("burn", {{"--drive", "stdio:" + (root / "zwei.iso").string()},
                                        {"--image", (root / "notiz.txt").string()}});
    EXPECT_EQ(text.code, kExitFailed);
    EXPECT_NE(text.err.find("Fehler beim Brennen!"), std::string::npos) << text.err;
    EXPECT_FALSE(fs::exists(root / "zwei.iso"));
}

TEST_F(BurnCommandTest, FurtherSessionOnlyWithMultisession) {
    const CliRun first = RunCli("burn", {{"--drive", drive}, {"--volume", "Eins"}},
                                {(root / "Fotos").string(), (root / "notiz.txt").string()});
    ASSERT_EQ(first.code, kExitDone) << first.err;
    EXPECT_EQ(ReadBack(root / "disk.iso", "Fotos/bild.jpg"), std::string(3000, 'j'));
    const std::string written = Bytes(root / "disk.iso");

    const CliRun refused = RunCli("burn", {{"--drive", drive}}, {(root / "spaeter.txt").string()});
    EXPECT_EQ(refused.code, kExitFailed);
    EXPECT_NE(refused.err.find("Die Disk ist nicht leer!\nWollen die Multission Disk fortsetzen?"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(Bytes(root / "disk.iso"), written);

    // The list file names the rows of the next session.
    const fs::path list = root / "liste.txt";
    ASSERT_TRUE(authoring::UnicodeFile_Write_WithBOM(
        list.string(), authoring::ListFileText({(root / "spaeter.txt").string()})));
    const CliRun more =
        RunCli("burn", {{"--drive", drive}, {"--list", list.string()}, {"--multisession", ""}});
    ASSERT_EQ(more.code, kExitDone) << more.err;
    EXPECT_EQ(ReadBack(root / "disk.iso", "notiz.txt"), "Notiz");
    EXPECT_EQ(ReadBack(root / "disk.iso", "spaeter.txt"), "später");
}

// --verify reads an image and both sessions of a compilation back before it says "Brennen
// erfolgreich!".
TEST_F(BurnCommandTest, VerifyReadsTheBurnBack) {
    const fs::path image = FotosImage();
    ASSERT_FALSE(image.empty());
    const std::string imageDrive = "stdio:" + (root / "bild.iso").string();
    const CliRun burnt =
        RunCli("burn", {{"--drive", imageDrive}, {"--image", image.string()}, {"--verify", ""}});
    EXPECT_EQ(burnt.code, kExitDone) << burnt.err;
    EXPECT_NE(burnt.out.find("Überprüfen der Daten..."), std::string::npos) << burnt.out;
    EXPECT_NE(burnt.out.find("Brennen erfolgreich!"), std::string::npos) << burnt.out;

    for (const fs::path& path : {root / "Fotos", root / "notiz.txt"}) {
        const CliRun session =
            RunCli("burn", {{"--drive", drive}, {"--multisession", ""}, {"--verify", ""}},
                   {path.string()});
        EXPECT_EQ(session.code, kExitDone) << path << session.err;
        EXPECT_NE(session.out.find("Überprüfen der Daten..."), std::string::npos) << session.out;
    }
    EXPECT_EQ(ReadBack(root / "disk.iso", "Fotos/bild.jpg"), std::string(3000, 'j'));
    EXPECT_EQ(ReadBack(root / "disk.iso", "notiz.txt"), "Notiz");
}

TEST_F(BurnCommandTest, EraseOnlyWithAnAnswer) {
    ASSERT_EQ(RunCli("burn", {{"--drive", drive}}, {(root / "notiz.txt").string()}).code,
              kExitDone);
    const std::string written = Bytes(root / "disk.iso");
    EXPECT_EQ(authoring::IsoTreeReader((root / "disk.iso").string()).VolumeId(), "PlattmixDisk");

    const CliRun asked = RunCli("erase", {{"--drive", drive}});
    EXPECT_EQ(asked.code, kExitFailed);
    EXPECT_NE(asked.err.find("Wollen sie alle Daten auf der Disk löschen?"), std::string::npos);
    EXPECT_EQ(Bytes(root / "disk.iso"), written);

    const CliRun erased = RunCli("erase", {{"--drive", drive}, {"--yes", ""}});
    EXPECT_EQ(erased.code, kExitDone) << erased.err;
    EXPECT_NE(erased.out.find("Löschen erfolgreich abgeschlossen"), std::string::npos);
    EXPECT_EQ(authoring::MakeLibburnService()->QueryMedia(drive).state,
              authoring::MediaState::Blank);

    const CliRun blank = RunCli("erase", {{"--drive", drive}, {"--yes", ""}});
    EXPECT_EQ(blank.code, kExitFailed);
    EXPECT_NE(blank.err.find("Disk zum Löschen ist schon leer"), std::string::npos);
}

}  // namespace
