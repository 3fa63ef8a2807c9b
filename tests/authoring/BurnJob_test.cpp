// The burn jobs through real libburn and libisoburn onto "stdio:" pseudo-drives: images and
// compilations written and read back, sessions appended, refusals that leave the target as it
// was, and the check that reads a burn back through the drive.
#include "BurnJob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "BurnTestHooks.h"
#include "BurnVerify.h"
#include "IsoImage.h"
#include "IsoImageCheck.h"
#include "IsoTreeReader.h"
#include "LargeTrees.h"
#include "common/ScratchFolder.h"
#include "common/SmallDisk.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::RecordingHooks;
using burntest::Seen;
using isocheck::ImageBytes;

void WriteFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

constexpr const char* kVerifying = "Überprüfen der Daten...";

bool Showed(const std::vector<std::string>& statuses, const std::string& text) {
    return std::find(statuses.begin(), statuses.end(), text) != statuses.end();
}

// Turns one byte of the file at offset into another, as a bad burn would.
void Corrupt(const fs::path& file, int64_t offset) {
    std::fstream io(file, std::ios::in | std::ios::out | std::ios::binary);
    io.seekg(offset);
    const char byte = static_cast<char>(io.get());
    io.seekp(offset);
    io.put(static_cast<char>(byte ^ 0x5a));
}

// Recording hooks that run act once, when the status line first shows text.
BurnHooks AtStatus(Seen& seen, const std::string& text, std::function<void()> act) {
    BurnHooks hooks = RecordingHooks(seen);
    hooks.status = [&seen, text, act = std::move(act)](const std::string& shown) {
        if (shown == text && !Showed(seen.statuses, shown))
            act();
        seen.statuses.push_back(shown);
    };
    return hooks;
}

class BurnJobTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("burn");
    fs::path disc = root / "disk.iso";  // the "stdio:" drive's file
    std::unique_ptr<IBurnService> service = MakeLibburnService();

    static std::string Stdio(const fs::path& file) { return "stdio:" + file.string(); }
    std::string In(const std::string& name) const { return (root / name).string(); }

    // An ISO image of a small folder, made by the image writer.
    fs::path MakeIso(const std::string& name, size_t bytes) {
        const fs::path source = root / (name + "-src");
        WriteFile(source / "a" / "inhalt.bin", std::string(bytes, 'i'));
        const fs::path image = root / (name + ".iso");
        const isocheck::ImageRun made = isocheck::BuildImage(source, image, "Quelle");
        EXPECT_EQ(made.result.outcome, IsoOutcome::Done) << made.result.detail;
        return image;
    }

    // A compilation of paths onto the "stdio:" file target.
    static BurnCompilationParams Compilation(const fs::path& target, std::vector<std::string> paths,
                                             bool multisession = false) {
        BurnCompilationParams params;
        params.drive = Stdio(target);
        params.paths = std::move(paths);
        params.volumeName = "Sammlung";
        params.multisession = multisession;
        return params;
    }

    BurnResult BurnCompilation(const fs::path& target, std::vector<std::string> paths, Seen& seen,
                               bool multisession, bool answer = true) {
        return BurnZusammenstellung(*service, Compilation(target, std::move(paths), multisession),
                                    RecordingHooks(seen, answer));
    }
};

// A file that is no image, rows that make no session, and Escape while the rows are listed: the
// run ends before the drive.
TEST_F(BurnJobTest, WhatCannotBeBurntLeavesTheDiscAlone) {
    WriteFile(root / "text.iso", std::string(100000, 't'));
    for (const fs::path& image : {root / "text.iso", root / "missing.iso"}) {
        Seen seen;
        const BurnResult result =
            BurnIsoImage(*service, {Stdio(disc), image.string()}, RecordingHooks(seen));
        EXPECT_EQ(result.outcome, BurnOutcome::Failed) << image;
        EXPECT_EQ(result.status, kTextBurnFailed);
        EXPECT_NE(result.detail.find(image.string()), std::string::npos) << result.detail;
        EXPECT_FALSE(seen.Showed(kTextBurnDone));
    }
    fs::create_directories(root / "leer");
    WriteFile(root / "a" / "datei.txt", "a");
    WriteFile(root / "a" / "zweite.txt", "z");
    WriteFile(root / "b" / "datei.txt", "b");
    Seen empty;
    EXPECT_EQ(BurnCompilation(disc, {In("leer")}, empty, false).outcome, BurnOutcome::NoFiles);
    EXPECT_TRUE(empty.Showed(NoFilesMessage(In("leer"))));

    // Two rows that would meet at the root under one name, and a row that is gone.
    for (const std::vector<std::string>& paths :
         {std::vector<std::string>{(root / "a" / "datei.txt").string(),
                                   (root / "b" / "datei.txt").string()},
          std::vector<std::string>{(root / "fehlt.txt").string()}}) {
        Seen seen;
        const BurnResult result = BurnCompilation(disc, paths, seen, false);
        EXPECT_EQ(result.outcome, BurnOutcome::Failed);
        EXPECT_FALSE(result.detail.empty());
        EXPECT_TRUE(seen.Showed(kTextBurnFailed));
    }

    int asked = 0;
    Seen escaped;
    const BurnResult result =
        BurnZusammenstellung(*service, Compilation(disc, {In("a")}),
                             RecordingHooks(escaped, true, [&asked] { return ++asked == 2; }));
    EXPECT_EQ(result.outcome, BurnOutcome::Aborted);
    EXPECT_EQ(result.listStatus, "Abbruch");
    EXPECT_TRUE(escaped.messages.empty());
    EXPECT_FALSE(fs::exists(disc));
}

// Joliet keeps long names (up to 103 characters) with their umlauts, as in an image file.
TEST_F(BurnJobTest, CompilationComesBackWithItsLayout) {
    const std::string letter =
        "Brief an die Großeltern über den Sommer in Österreich und am See.txt";
    WriteFile(root / "quelle" / "Musik" / "lied.txt", "la la la");
    WriteFile(root / "quelle" / "Musik" / "tief" / "unten.bin", std::string(70000, 'u'));
    fs::create_directories(root / "quelle" / "Musik" / "leer");
    WriteFile(root / "einzeln" / letter, "Hallo");
    Seen seen;
    const BurnResult result = BurnCompilation(
        disc, {(root / "quelle" / "Musik").string() + "/", (root / "einzeln" / letter).string()},
        seen, false);
    ASSERT_EQ(result.outcome, BurnOutcome::Done) << result.detail;
    EXPECT_EQ(result.listStatus, "Fertig");
    EXPECT_TRUE(seen.questions.empty());  // a blank disc asks nothing

    const IsoTreeReader reader(disc.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(reader.VolumeId(), "Sammlung");
    std::vector<std::string> paths;
    for (const IsoTreeEntry& entry : reader.Entries())
        paths.push_back(entry.path);
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(paths, (std::vector<std::string>{letter, "Musik", "Musik/leer", "Musik/lied.txt",
                                               "Musik/tief", "Musik/tief/unten.bin"}));
    EXPECT_EQ(ImageBytes(reader, "Musik/tief/unten.bin"), std::string(70000, 'u'));
    EXPECT_EQ(ImageBytes(reader, letter), "Hallo");
    const IsoTreeReader joliet(disc.string(), IsoTreeView::Joliet);
    EXPECT_NE(joliet.Find(letter + ";1"), nullptr);
    EXPECT_NE(joliet.Find("Musik/tief/unten.bin;1"), nullptr);
}

// A file that grows during the write, or vanishes between the listing and the write, is noticed:
// the burn fails naming it, and on a multisession disc the earlier session stays the one the disc
// shows.
TEST_F(BurnJobTest, FileChangedDuringTheBurnIsNoSuccess) {
    for (const bool vanishes : {false, true}) {
        const std::string name = vanishes ? "verschwindend" : "wachsend";
        SCOPED_TRACE(name);
        const fs::path target = root / (name + ".iso");
        WriteFile(root / "eins" / "alt.txt", "alt");
        Seen first;
        ASSERT_EQ(BurnCompilation(target, {In("eins")}, first, true).outcome, BurnOutcome::Done);

        const fs::path changing = root / name / "datei.txt";
        WriteFile(changing, "anfangs");
        Seen seen;
        BurnHooks hooks = RecordingHooks(seen);
        if (vanishes)
            hooks = AtStatus(seen, kTextImporting, [&changing] { fs::remove(changing); });
        else
            hooks.scan.yield = [&changing] { std::ofstream(changing, std::ios::app) << "+"; };
        const BurnResult result = BurnZusammenstellung(
            *service, Compilation(target, {changing.parent_path().string()}, true), hooks);
        EXPECT_EQ(result.outcome, BurnOutcome::Failed);
        EXPECT_EQ(result.status, kTextBurnFailed);
        EXPECT_NE(result.detail.find(changing.string()), std::string::npos) << result.detail;
        EXPECT_FALSE(seen.Showed(kTextBurnDone));

        const IsoTreeReader reader(target.string());
        ASSERT_TRUE(reader.ok()) << reader.error();
        EXPECT_EQ(ImageBytes(reader, "eins/alt.txt"), "alt");
        EXPECT_EQ(reader.Find(name), nullptr);
    }
}

// A disk that fills up during the write (the file size limit stops the "stdio:" file where
// libburn still saw room): neither an image nor a compilation is reported burnt.
TEST_F(BurnJobTest, DiskFullDuringTheWriteIsNoSuccess) {
    const fs::path image = MakeIso("bild", 3 << 20);
    WriteFile(root / "gross" / "daten.bin", std::string(3 << 20, 'g'));
    const bool bothFailed = test::WithFileSizeLimit(1 << 20, [&] {
        Seen iso;
        const BurnResult a =
            BurnIsoImage(*service, {Stdio(root / "a.iso"), image.string()}, RecordingHooks(iso));
        Seen compilation;
        const BurnResult b = BurnCompilation(root / "b.iso", {In("gross")}, compilation, false);
        std::fprintf(stderr, "image: %s (%s)\ncompilation: %s (%s)\n", a.status.c_str(),
                     a.detail.c_str(), b.status.c_str(), b.detail.c_str());
        return a.outcome == BurnOutcome::Failed && a.status == kTextBurnFailed &&
               !iso.Showed(kTextBurnDone) && b.outcome == BurnOutcome::Failed &&
               b.status == kTextBurnFailed && !compilation.Showed(kTextBurnDone);
    });
    EXPECT_TRUE(bothFailed);
}

// An image is written byte for byte and read back after the write; a sector spoilt on the disc is
// named, and Escape during the check says the burn itself was complete.
TEST_F(BurnJobTest, CheckReadsTheImageBack) {
    const fs::path image = MakeIso("bild", 3 << 20);  // more than one piece of the read-back
    BurnIsoParams params{Stdio(root / "gut.iso"), image.string()};
    params.verify = true;
    Seen good;
    const BurnResult done = BurnIsoImage(*service, params, RecordingHooks(good));
    ASSERT_EQ(done.outcome, BurnOutcome::Done) << done.detail;
    const auto verifying = std::find(good.statuses.begin(), good.statuses.end(), kVerifying);
    ASSERT_NE(verifying, good.statuses.end());
    EXPECT_TRUE(Showed(std::vector<std::string>(good.statuses.begin(), verifying),
                       "Brennvorgang abgeschlossen."));
    EXPECT_EQ(good.bars.back(), 100);
    EXPECT_EQ(good.messages, (decltype(good.messages){{kTextBurnDone, MessageIcon::Information}}));

    // The disc is no longer blank: a second image is refused before anything is written.
    Seen again;
    const BurnResult second = BurnIsoImage(*service, params, RecordingHooks(again));
    EXPECT_EQ(second.status, kTextMediaNotBlank);
    EXPECT_TRUE(again.Showed(kTextMediaNotBlank));
    EXPECT_EQ(test::WholeFile(root / "gut.iso"), test::WholeFile(image));

    const fs::path spoilt = root / "schlecht.iso";
    params.drive = Stdio(spoilt);
    Seen bad;
    const BurnResult failed = BurnIsoImage(
        *service, params, AtStatus(bad, kVerifying, [&] { Corrupt(spoilt, 40 * 2048 + 7); }));
    EXPECT_EQ(failed.status, "Fehler beim Prüfen: Sektor 40");
    EXPECT_EQ(failed.listStatus, "Fehler!");
    EXPECT_EQ(bad.messages, (decltype(bad.messages){{failed.status, MessageIcon::Exclamation}}));

    const fs::path stopped = root / "abbruch.iso";
    params.drive = Stdio(stopped);
    Seen escaped;
    const BurnResult aborted = BurnIsoImage(
        *service, params,
        RecordingHooks(escaped, true, [&escaped] { return Showed(escaped.statuses, kVerifying); }));
    EXPECT_EQ(aborted.outcome, BurnOutcome::Aborted);
    EXPECT_EQ(aborted.status, kTextActionAborted);
    EXPECT_EQ(escaped.messages,
              (decltype(escaped.messages){{kTextVerifyAborted, MessageIcon::Exclamation}}));
    EXPECT_EQ(test::WholeFile(stopped), test::WholeFile(image));
}

// Sessions appended one by one, each checked after its burn; without the multisession option
// the user is asked first and No leaves the disc as it was. A file of the third session spoilt on
// the disc is named by its source.
TEST_F(BurnJobTest, SessionsAreAppendedAndCheckedOneByOne) {
    WriteFile(root / "eins" / "alt.txt", "alt");
    WriteFile(root / "zwei" / "neu.bin", std::string(100000, 'n'));
    WriteFile(root / "drei" / "kaputt.bin", std::string(200000, 'k'));
    BurnCompilationParams params = Compilation(disc, {}, true);
    params.verify = true;
    for (const std::string folder : {"eins", "zwei"}) {
        SCOPED_TRACE(folder);
        params.paths = {In(folder)};
        Seen seen;
        const BurnResult result = BurnZusammenstellung(*service, params, RecordingHooks(seen));
        ASSERT_EQ(result.outcome, BurnOutcome::Done) << result.detail;
        EXPECT_TRUE(Showed(seen.statuses, kVerifying));
        EXPECT_TRUE(seen.Showed(kTextBurnDone));
        EXPECT_TRUE(seen.questions.empty());
        EXPECT_EQ(Showed(seen.statuses, kTextImporting), folder == "zwei");
    }
    const IsoTreeReader reader(disc.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(ImageBytes(reader, "eins/alt.txt"), "alt");  // the second one was checked by its burn

    const std::string written = test::WholeFile(disc);
    Seen declined;
    EXPECT_EQ(BurnCompilation(disc, {In("drei")}, declined, false, false).outcome,
              BurnOutcome::Declined);
    EXPECT_EQ(declined.questions, std::vector<std::string>{kTextContinueMultisession});
    EXPECT_TRUE(declined.messages.empty());
    EXPECT_EQ(test::WholeFile(disc), written);

    params.paths = {In("drei")};
    Seen seen;
    const BurnResult result =
        BurnZusammenstellung(*service, params, AtStatus(seen, kVerifying, [&] {
            const IsoTreeReader burnt(disc.string());
            const IsoTreeEntry* file = burnt.Find("drei/kaputt.bin");
            ASSERT_NE(file, nullptr);
            Corrupt(disc, file->extents.at(0).offset + 150000);
        }));
    const std::string expected = "Fehler beim Prüfen: " + (root / "drei" / "kaputt.bin").string();
    EXPECT_EQ(result.status, expected);
    EXPECT_NE(result.detail.find("150000"), std::string::npos) << result.detail;
    EXPECT_TRUE(seen.Showed(expected));
}

// A file beyond 4 GiB is on the disc in several extents; the check reads it to its last byte.
TEST_F(BurnJobTest, CheckReadsAFileBeyondFourGiB) {
    treegen::MakeSparseLargeFile(root / "gross", (int64_t{4} << 30) + (1 << 20));
    BurnCompilationParams params = Compilation(disc, {In("gross")});
    params.verify = true;
    Seen seen;
    const BurnResult result = BurnZusammenstellung(*service, params, RecordingHooks(seen));
    fs::remove(disc);
    ASSERT_EQ(result.outcome, BurnOutcome::Done) << result.detail;
    EXPECT_TRUE(Showed(seen.statuses, kVerifying));
    EXPECT_EQ(seen.bars.back(), 100);
}

// Escape at the first look at the write: libburn stops, the image thread ends, and the run is an
// abort. A machine that writes the whole image before the first look cannot show it.
TEST_F(BurnJobTest, EscapeStopsARealWrite) {
    const fs::path folder = root / "viel";
    fs::create_directories(folder);
    fs::resize_file((WriteFile(folder / "nullen.bin", ""), folder / "nullen.bin"), 256 << 20);
    Seen seen;
    BurnCompilationParams params = Compilation(disc, {folder.string()});
    params.eject = true;
    // Pressed once the write reports (a blank disc shows no status before).
    const BurnResult result = BurnZusammenstellung(
        *service, params, RecordingHooks(seen, true, [&seen] { return !seen.statuses.empty(); }));
    if (result.outcome == BurnOutcome::Done)
        GTEST_SKIP() << "the write was over before the first look";
    EXPECT_EQ(result.outcome, BurnOutcome::Aborted) << result.detail;
    EXPECT_EQ(result.status, kTextActionAborted);
    EXPECT_TRUE(seen.Showed(kTextBurnAborted));
    EXPECT_FALSE(seen.Showed(kTextBurnFailed));
    EXPECT_FALSE(result.ejected);
    // The drive is free again, and the unfinished session is no image: the next burn writes.
    EXPECT_NE(service->QueryMedia(Stdio(disc)).state, MediaState::Appendable);
    WriteFile(root / "danach" / "klein.txt", "klein");
    Seen next;
    EXPECT_EQ(BurnCompilation(disc, {In("danach")}, next, false).outcome, BurnOutcome::Done);
}

}  // namespace
}  // namespace plattmix::authoring
