// plattmix-cli compilation: the command's texts around list files, and the size check against
// the disc of a pseudo-drive.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "CliRun.h"
#include "Commands.h"
#include "common/ScratchFolder.h"

using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using plattmix::clitest::CliRun;
using plattmix::clitest::Has;
using plattmix::clitest::RunCli;

void WriteFile(const fs::path& path, size_t bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
}

class CompilationCli : public ::testing::Test {
  protected:
    void SetUp() override {
        WriteFile(folder / "Mus\xC3\xAFk" / "a.flac", 3000);
        WriteFile(folder / "Mus\xC3\xAFk" / "sub" / "b.flac", 2 * 1048576);
        WriteFile(folder / "Lied \xF0\x9F\x8E\xB5.mp3", 500);
    }

    std::string Path(const std::string& name) const { return (folder / name).string(); }

    fs::path folder = plattmix::test::ScratchFolder("cli");
    std::string list = Path("Diskolo.txt");
    plattmix::clitest::ScopedEnv locale{"LC_ALL", "C"};  // sizes in the C locale's signs
};

// Saved, loaded after a row went missing, refused when there is nothing to store; the old list
// stays.
TEST_F(CompilationCli, SaveAndLoad) {
    const CliRun saved = RunCli(
        {"compilation", "save", list, Path("Mus\xC3\xAFk"), Path("Lied \xF0\x9F\x8E\xB5.mp3")});
    ASSERT_EQ(saved.code, kExitDone) << saved.err;
    EXPECT_EQ(saved.out, "2 Einträge gespeichert in " + list + "\n");
    const CliRun loaded = RunCli({"compilation", "load", list});
    EXPECT_EQ(loaded.code, kExitDone) << loaded.err;
    EXPECT_EQ(loaded.out, "2.00 MB\t" + Path("Mus\xC3\xAFk") + "\n500 Byte\t" +
                              Path("Lied \xF0\x9F\x8E\xB5.mp3") + "\nGesamt: 2.00 MB\n");

    const std::string before = plattmix::test::WholeFile(list);
    const CliRun empty = RunCli({"compilation", "save", list});
    EXPECT_EQ(empty.code, kExitFailed);
    EXPECT_EQ(empty.err, "Keine Daten zum Speichern vorhanden?\n");
    const CliRun missing = RunCli({"compilation", "save", list, Path("weg.txt")});
    EXPECT_EQ(missing.code, kExitFailed);
    EXPECT_TRUE(Has(missing.err, Path("weg.txt"))) << missing.err;
    EXPECT_EQ(plattmix::test::WholeFile(list), before);

    fs::remove_all(Path("Mus\xC3\xAFk"));
    const CliRun partly = RunCli({"compilation", "load", list});
    EXPECT_EQ(partly.code, kExitDone);
    EXPECT_EQ(partly.out,
              "500 Byte\t" + Path("Lied \xF0\x9F\x8E\xB5.mp3") + "\nGesamt: 500 Byte\n");
    EXPECT_EQ(partly.err, "Nicht gefunden, ausgelassen: " + Path("Mus\xC3\xAFk") + "\n");
    EXPECT_EQ(RunCli({"compilation", "load", Path("keine-liste.txt")}).code, kExitFailed);

    // A relative path is stored as seen from where the command ran.
    const fs::path here = fs::current_path();
    fs::current_path(folder);
    const CliRun relative = RunCli({"compilation", "save", "rel.txt", "Lied \xF0\x9F\x8E\xB5.mp3"});
    fs::current_path(here);
    ASSERT_EQ(relative.code, kExitDone) << relative.err;
    EXPECT_EQ(RunCli({"compilation", "load", Path("rel.txt")}).out, partly.out);
}

TEST_F(CompilationCli, SizeChecksTheCompilationAgainstTheDisc) {
    ASSERT_EQ(RunCli({"compilation", "save", list, Path("Mus\xC3\xAFk")}).code, kExitDone);

    const CliRun blank =
        RunCli({"compilation", "size", list, "--drive", "stdio:" + Path("neu.iso")});
    EXPECT_EQ(blank.code, kExitDone) << blank.err;
    EXPECT_TRUE(Has(blank.out, "\nBalken: belegt 0, neu 0 von 100\n")) << blank.out;
    EXPECT_TRUE(Has(blank.out, "Die Zusammenstellung passt auf die Disk.\n")) << blank.out;

    const CliRun none = RunCli({"compilation", "size", list, "--drive=/dev/nonexistent"});
    EXPECT_EQ(none.code, kExitFailed);
    EXPECT_EQ(none.out, "Gesamt: 2.00 MB\nDisk: Keine Disk im Laufwerk\nKeine CD im Laufwerk!\n");
    EXPECT_TRUE(Has(none.err, "libburn: ")) << none.err;

    const CliRun usage = RunCli({"compilation", "load", list, "--drive", "/dev/sr0"});
    EXPECT_EQ(usage.code, kExitUsage);  // the drive is for size only
    EXPECT_TRUE(Has(usage.err, "compilation save LISTE")) << usage.err;
}

}  // namespace
