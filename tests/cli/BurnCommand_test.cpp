// plattmix-cli burn and erase on libburn's "stdio:" pseudo-drives: the exit codes and what the
// command says where the window would ask (a further session only with --multisession, erase
// only with --yes).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "CliRun.h"
#include "CompilationList.h"
#include "IsoTreeReader.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;
using plattmix::clitest::CliRun;
using plattmix::clitest::Has;
using plattmix::clitest::RunCli;
namespace fs = std::filesystem;

namespace {

class BurnCommandTest : public ::testing::Test {
  protected:
    fs::path root = plattmix::test::ScratchFolder("cli");
    fs::path disc = root / "disk.iso";
    std::string drive = "stdio:" + disc.string();

    void SetUp() override {
        std::ofstream(root / "notiz.txt") << "Notiz";
        std::ofstream(root / "spaeter.txt") << "später";
    }
};

TEST_F(BurnCommandTest, UsageErrors) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"burn", "x"},
             {"burn", "--drive", drive, "--image", "a.iso", "--list", "l.txt"},
             {"burn", "--drive", drive, "--image", "a.iso", "--multisession"},
             {"burn", "--drive", drive, "--tracks", "1", "x"},
             {"erase", "--drive", drive, "x"}}) {
        EXPECT_EQ(RunCli(words).code, kExitUsage) << words.size();
    }
    EXPECT_FALSE(fs::exists(disc));
}

// A compilation, a refused further session, then one from a list file with --multisession; the
// disc erased. The sessions and the erase themselves are the burn and erase jobs' tests.
TEST_F(BurnCommandTest, SessionsImageAndErase) {
    const CliRun first =
        RunCli({"burn", "--drive", drive, "--volume", "Eins", (root / "notiz.txt").string()});
    ASSERT_EQ(first.code, kExitDone) << first.err;
    EXPECT_TRUE(Has(first.out, "Brennen erfolgreich!\nFertig\n")) << first.out;
    EXPECT_EQ(authoring::IsoTreeReader(disc.string()).VolumeId(), "Eins");

    const CliRun refused = RunCli({"burn", "--drive", drive, (root / "spaeter.txt").string()});
    EXPECT_EQ(refused.code, kExitFailed);
    EXPECT_TRUE(Has(refused.err,
                    "Die Disk ist nicht leer!\nWollen die Multission Disk fortsetzen?"
                    "\nNein: eine weitere Sitzung nur mit --multisession.\n"))
        << refused.err;

    const fs::path list = root / "liste.txt";
    ASSERT_TRUE(authoring::UnicodeFile_Write_WithBOM(
        list.string(),
        authoring::ListFileText({(root / "spaeter.txt").string(), (root / "weg").string()})));
    const CliRun more =
        RunCli({"burn", "--drive", drive, "--list", list.string(), "--multisession"});
    ASSERT_EQ(more.code, kExitDone) << more.err;
    EXPECT_TRUE(Has(more.err, "1 Einträge der Liste gibt es nicht mehr; sie fehlen.\n"));
    EXPECT_NE(authoring::IsoTreeReader(disc.string()).Find("spaeter.txt"), nullptr);

    const CliRun asked = RunCli({"erase", "--drive", drive});
    EXPECT_EQ(asked.code, kExitFailed);
    EXPECT_TRUE(
        Has(asked.err, "Wollen sie alle Daten auf der Disk löschen?\nNein: ohne Rückfrage"));
    const CliRun erased = RunCli({"erase", "--drive", drive, "--yes"});
    EXPECT_EQ(erased.code, kExitDone) << erased.err;
    EXPECT_TRUE(Has(erased.out, "Löschen erfolgreich abgeschlossen"));
}

}  // namespace
