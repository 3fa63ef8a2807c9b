// plattmix-cli iso: a folder into an image file, with its bar on a terminal; usage errors and bad
// input. The image itself is the image job's test.
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
    words.insert(words.begin(), "iso");
    return plattmix::clitest::RunCli(words, terminal);
}

}  // namespace

TEST(IsoCommand, FolderBecomesImageOrTheCommandSaysWhyNot) {
    const fs::path folder = plattmix::test::ScratchFolder();
    fs::create_directories(folder / "quelle");
    fs::create_directories(folder / "nur-ordner" / "a");
    std::ofstream(folder / "quelle" / "Größe.txt") << "Inhalt";
    const std::string source = (folder / "quelle").string();
    const std::string image = (folder / "bild.iso").string();

    const CliRun run = RunIso({source, image, "--volume", "Sicherung"});
    EXPECT_EQ(run.code, kExitDone) << run.err;
    EXPECT_NE(run.out.find("Fertig\n"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find('\r'), std::string::npos);  // no bar outside a terminal
    EXPECT_EQ(authoring::IsoTreeReader(image).VolumeId(), "Sicherung");  // the tree is the job's
    // On a terminal the bar runs up to 100 % before the outcome.
    const CliRun bar = RunIso({source, image}, true);
    EXPECT_EQ(bar.code, kExitDone);
    EXPECT_NE(bar.out.find("100%"), std::string::npos) << bar.out;

    for (const auto& words : std::vector<std::vector<std::string>>{
             {}, {"quelle"}, {"quelle", "a.iso", "b.iso"}, {"quelle", "a.iso", "--drive", "x"}}) {
        const CliRun usage = RunIso(words);
        EXPECT_EQ(usage.code, kExitUsage);
        EXPECT_NE(usage.err.find("Aufruf: plattmix-cli iso"), std::string::npos) << usage.err;
    }
    const std::string other = (folder / "neu.iso").string();
    EXPECT_EQ(RunIso({(folder / "nicht-da").string(), other}).code, kExitFailed);
    // Folders without files: the message names the source, nothing is written.
    const std::string empty = (folder / "nur-ordner").string();
    const CliRun none = RunIso({empty, other});
    EXPECT_EQ(none.code, kExitFailed);
    EXPECT_NE(none.err.find(authoring::NoFilesMessage(empty)), std::string::npos) << none.err;
    EXPECT_FALSE(fs::exists(other));
}
