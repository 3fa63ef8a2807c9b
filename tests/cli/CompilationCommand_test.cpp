// plattmix-cli compilation: list files written, loaded and measured, and checked against the
// disc of a pseudo-drive.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "CliRun.h"
#include "Commands.h"
#include "common/ScratchFolder.h"

using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using plattmix::clitest::CliRun;
using plattmix::clitest::RunCli;

std::string ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path& path, size_t bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class CompilationCli : public ::testing::Test {
  protected:
    void SetUp() override {
        // Sizes in the C locale's signs.
        const char* previous = std::getenv("LC_ALL");
        if (previous != nullptr)
            savedLocale = previous;
        ::setenv("LC_ALL", "C", 1);
        WriteFile(folder / "Mus\xC3\xAFk" / "a.flac", 3000);
        WriteFile(folder / "Mus\xC3\xAFk" / "sub" / "b.flac", 2 * 1048576);
        WriteFile(folder / "Lied \xF0\x9F\x8E\xB5.mp3", 500);
    }
    void TearDown() override {
        if (savedLocale)
            ::setenv("LC_ALL", savedLocale->c_str(), 1);
        else
            ::unsetenv("LC_ALL");
    }

    std::string Path(const std::string& name) const { return (folder / name).string(); }

    fs::path folder = plattmix::test::ScratchFolder("cli");
    std::string list = Path("Diskolo.txt");
    std::optional<std::string> savedLocale;
};

TEST_F(CompilationCli, SavedListLoadsWithSizesAndTotal) {
    const CliRun saved = RunCli(
        {"compilation", "save", list, Path("Mus\xC3\xAFk"), Path("Lied \xF0\x9F\x8E\xB5.mp3")});
    ASSERT_EQ(saved.code, kExitDone) << saved.err;
    EXPECT_EQ(saved.out, "2 Einträge gespeichert in " + list + "\n");
    EXPECT_EQ(ReadBytes(list).substr(0, 2), "\xFF\xFE");

    const CliRun loaded = RunCli({"compilation", "load", list});
    EXPECT_EQ(loaded.code, kExitDone) << loaded.err;
    EXPECT_EQ(loaded.out, "2.00 MB\t" + Path("Mus\xC3\xAFk") + "\n500 Byte\t" +
                              Path("Lied \xF0\x9F\x8E\xB5.mp3") + "\nGesamt: 2.00 MB\n");
    EXPECT_EQ(loaded.err, "");

    // A relative path is stored as seen from where the command ran.
    const fs::path here = fs::current_path();
    fs::current_path(folder);
    const CliRun relative = RunCli({"compilation", "save", "rel.txt", "Mus\xC3\xAFk"});
    fs::current_path(here);
    ASSERT_EQ(relative.code, kExitDone) << relative.err;
    EXPECT_EQ(RunCli({"compilation", "load", Path("rel.txt")}).out,
              "2.00 MB\t" + Path("Mus\xC3\xAFk") + "\nGesamt: 2.00 MB\n");
}

TEST_F(CompilationCli, SaveRefusesWhatItCannotStoreAndKeepsTheOldList) {
    ASSERT_EQ(RunCli({"compilation", "save", list, Path("Mus\xC3\xAFk")}).code, kExitDone);
    const std::string before = ReadBytes(list);

    const CliRun empty = RunCli({"compilation", "save", list});
    EXPECT_EQ(empty.code, kExitFailed);
    EXPECT_EQ(empty.err, "Keine Daten zum Speichern vorhanden?\n");

    const CliRun missing = RunCli({"compilation", "save", list, Path("weg.txt")});
    EXPECT_EQ(missing.code, kExitFailed);
    EXPECT_TRUE(Contains(missing.err, Path("weg.txt"))) << missing.err;
    EXPECT_EQ(ReadBytes(list), before);

    const CliRun unwritable =
        RunCli({"compilation", "save", Path("kein/Ordner.txt"), Path("Mus\xC3\xAFk")});
    EXPECT_EQ(unwritable.code, kExitFailed);
    EXPECT_TRUE(Contains(unwritable.err, Path("kein/Ordner.txt"))) << unwritable.err;
}

TEST_F(CompilationCli, LoadNamesWhatIsMissing) {
    const CliRun noList = RunCli({"compilation", "load", Path("keine-liste.txt")});
    EXPECT_EQ(noList.code, kExitFailed);
    EXPECT_TRUE(Contains(noList.err, "keine-liste.txt"));

    ASSERT_EQ(RunCli({"compilation", "save", list, Path("Lied \xF0\x9F\x8E\xB5.mp3"),
                      Path("Mus\xC3\xAFk")})
                  .code,
              kExitDone);
    fs::remove_all(Path("Mus\xC3\xAFk"));
    const CliRun loaded = RunCli({"compilation", "load", list});
    EXPECT_EQ(loaded.code, kExitDone);
    EXPECT_EQ(loaded.out,
              "500 Byte\t" + Path("Lied \xF0\x9F\x8E\xB5.mp3") + "\nGesamt: 500 Byte\n");
    EXPECT_EQ(loaded.err, "Nicht gefunden, ausgelassen: " + Path("Mus\xC3\xAFk") + "\n");
}

TEST_F(CompilationCli, SizeChecksTheCompilationAgainstTheDisc) {
    ASSERT_EQ(RunCli({"compilation", "save", list, Path("Mus\xC3\xAFk")}).code, kExitDone);

    EXPECT_EQ(RunCli({"compilation", "size", list}).out, "Gesamt: 2.00 MB\n");

    // A new image file: blank, with the file system's space.
    const CliRun blank =
        RunCli({"compilation", "size", list, "--drive", "stdio:" + Path("neu.iso")});
    EXPECT_EQ(blank.code, kExitDone) << blank.err;
    EXPECT_TRUE(Contains(blank.out, "\nDisk: 0 % der Disk belegt 0 / ")) << blank.out;
    EXPECT_TRUE(Contains(blank.out, "\nBalken: belegt 0, neu 0 von 100\n")) << blank.out;
    EXPECT_TRUE(Contains(blank.out, "Die Zusammenstellung passt auf die Disk.\n")) << blank.out;

    const CliRun none = RunCli({"compilation", "size", list, "--drive=/dev/nonexistent"});
    EXPECT_EQ(none.code, kExitFailed);
    EXPECT_EQ(none.out, "Gesamt: 2.00 MB\nDisk: Keine Disk im Laufwerk\nKeine CD im Laufwerk!\n");
    EXPECT_TRUE(Contains(none.err, "libburn: ")) << none.err;

    WriteFile(folder / "voll.bin", 5000);  // written, but no ISO image
    const CliRun closed =
        RunCli({"compilation", "size", list, "--drive", "stdio:" + Path("voll.bin")});
    EXPECT_EQ(closed.code, kExitFailed);
    EXPECT_EQ(closed.out,
              "Gesamt: 2.00 MB\nDisk: 100 % der Disk belegt (NON_STANDARD)\n"
              "Balken: belegt 100, neu 0 von 100\n100 % der Disk belegt!\n");
}

TEST_F(CompilationCli, BadUsage) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"compilation"},
          {"compilation", "frobnicate", list},
          {"compilation", "load"},
          {"compilation", "load", list, "--drive", "/dev/sr0"},
          {"compilation", "size", list, "--out", "x"}}) {
        const CliRun run = RunCli(words);
        EXPECT_EQ(run.code, kExitUsage) << words.size();
        EXPECT_TRUE(Contains(run.err, "compilation save LISTE")) << run.err;
    }
    EXPECT_FALSE(fs::exists(list));
}

}  // namespace
