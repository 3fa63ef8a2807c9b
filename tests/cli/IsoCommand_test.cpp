// plattmix-cli iso: a folder into an image file, read back; usage errors and bad input.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "CliRun.h"
#include "Commands.h"
#include "IsoImage.h"
#include "IsoTreeReader.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using plattmix::clitest::CliRun;

CliRun RunIso(std::vector<std::string> words, bool terminal = false) {
    return plattmix::clitest::RunCommandWords("iso", std::move(words), terminal);
}

}  // namespace

TEST(IsoCommand, FolderBecomesImage) {
    const fs::path folder = plattmix::test::ScratchFolder();
    fs::create_directories(folder / "quelle");
    std::ofstream(folder / "quelle" / "Größe.txt") << "Inhalt";
    const std::string image = (folder / "bild.iso").string();

    const CliRun run = RunIso({(folder / "quelle").string(), image, "--volume", "Sicherung"});
    EXPECT_EQ(run.code, kExitDone) << run.err;
    EXPECT_NE(run.out.find("Fertig\n"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find('\r'), std::string::npos);  // no bar outside a terminal

    EXPECT_EQ(authoring::IsoTreeReader(image).VolumeId(), "Sicherung");  // the tree is the job's

    // On a terminal the bar runs up to 100 % before the outcome.
    const CliRun bar = RunIso({(folder / "quelle").string(), image}, true);
    EXPECT_EQ(bar.code, kExitDone);
    EXPECT_NE(bar.out.find("100%"), std::string::npos) << bar.out;
}

TEST(IsoCommand, UsageErrorsAndBadInput) {
    const fs::path folder = plattmix::test::ScratchFolder();
    fs::create_directories(folder / "nur-ordner" / "a");
    const std::string image = (folder / "bild.iso").string();

    for (const auto& words : std::vector<std::vector<std::string>>{
             {}, {"quelle"}, {"quelle", "a.iso", "b.iso"}, {"quelle", "a.iso", "--drive", "x"}}) {
        const CliRun run = RunIso(words);
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_NE(run.err.find("Aufruf: plattmix-cli iso"), std::string::npos) << run.err;
    }

    EXPECT_EQ(RunIso({(folder / "nicht-da").string(), image}).code, kExitFailed);
    // Folders without files: the message names the source, nothing is written.
    const std::string empty = (folder / "nur-ordner").string();
    const CliRun none = RunIso({empty, image});
    EXPECT_EQ(none.code, kExitFailed);
    EXPECT_NE(none.err.find(authoring::NoFilesMessage(empty)), std::string::npos) << none.err;
    EXPECT_FALSE(fs::exists(image));
}
