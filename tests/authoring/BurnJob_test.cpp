// The burn jobs through real libburn and libisoburn onto "stdio:" pseudo-drives: images and
// compilations written and read back, sessions appended, refusals that leave the target as it was.
#include "BurnJob.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "BurnTestHooks.h"
#include "FolderListing.h"
#include "IsoImage.h"
#include "IsoImageCheck.h"
#include "IsoTreeReader.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::RecordingHooks;
using burntest::Seen;
using isocheck::FileBytes;
using isocheck::ImageBytes;

void WriteFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

class BurnJobTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("burn");
    std::unique_ptr<IBurnService> service = MakeLibburnService();

    static std::string Stdio(const fs::path& file) { return "stdio:" + file.string(); }

    // An ISO image of a small folder, made by the image writer.
    fs::path MakeIso(const std::string& name, size_t bytes) {
        const fs::path source = root / (name + "-src");
        WriteFile(source / "a" / "inhalt.bin", std::string(bytes, 'i'));
        FolderListing listing;
        ShowOrdnerInhalt(source.string(), listing, {});
        const fs::path image = root / (name + ".iso");
        const IsoImageResult made =
            CreateIsoImage({source.string(), "Quelle", image.string()}, listing, {});
        EXPECT_EQ(made.outcome, IsoOutcome::Done) << made.detail;
        return image;
    }

    BurnResult BurnCompilation(const fs::path& target, std::vector<std::string> paths, Seen& seen,
                               bool multisession, bool answer = true) {
        BurnCompilationParams params;
        params.drive = Stdio(target);
        params.paths = std::move(paths);
        params.volumeName = "Sammlung";
        params.multisession = multisession;
        return BurnZusammenstellung(*service, params, RecordingHooks(seen, answer));
    }
};

TEST_F(BurnJobTest, IsoImageIsWrittenByteForByte) {
    const fs::path image = MakeIso("bild", 400000);
    const fs::path target = root / "disk.iso";
    Seen seen;
    const BurnResult result =
        BurnIsoImage(*service, {Stdio(target), image.string()}, RecordingHooks(seen));
    ASSERT_EQ(result.outcome, BurnOutcome::Done) << result.detail;
    EXPECT_EQ(FileBytes(target), FileBytes(image));
    EXPECT_EQ(result.status, "Brennvorgang abgeschlossen.");
    ASSERT_FALSE(seen.bars.empty());
    EXPECT_EQ(seen.bars.back(), 100);
    ASSERT_EQ(seen.messages.size(), 1u);
    EXPECT_EQ(seen.messages[0].first, kTextBurnDone);
    EXPECT_EQ(seen.messages[0].second, MessageIcon::Information);
    EXPECT_TRUE(seen.questions.empty());

    // The disc is no longer blank: a second image is refused before anything is written.
    Seen again;
    const BurnResult second =
        BurnIsoImage(*service, {Stdio(target), image.string()}, RecordingHooks(again));
    EXPECT_EQ(second.outcome, BurnOutcome::Failed);
    EXPECT_EQ(second.status, kTextMediaNotBlank);
    EXPECT_TRUE(again.Showed(kTextMediaNotBlank));
    EXPECT_EQ(FileBytes(target), FileBytes(image));
}

TEST_F(BurnJobTest, FileThatIsNoImageEndsBeforeAnythingIsWritten) {
    WriteFile(root / "text.iso", std::string(100000, 't'));
    const fs::path target = root / "disk.iso";
    for (const fs::path& image : {root / "text.iso", root / "missing.iso"}) {
        Seen seen;
        const BurnResult result =
            BurnIsoImage(*service, {Stdio(target), image.string()}, RecordingHooks(seen));
        EXPECT_EQ(result.outcome, BurnOutcome::Failed) << image;
        EXPECT_EQ(result.status, kTextBurnFailed);
        EXPECT_NE(result.detail.find(image.string()), std::string::npos) << result.detail;
        EXPECT_FALSE(seen.Showed(kTextBurnDone));
        EXPECT_FALSE(fs::exists(target));
    }
}

TEST_F(BurnJobTest, CompilationComesBackWithItsLayout) {
    WriteFile(root / "quelle" / "Musik" / "lied.txt", "la la la");
    WriteFile(root / "quelle" / "Musik" / "tief" / "unten.bin", std::string(70000, 'u'));
    fs::create_directories(root / "quelle" / "Musik" / "leer");
    WriteFile(root / "einzeln" / "brief.txt", "Hallo");
    const fs::path target = root / "disk.iso";
    Seen seen;
    const BurnResult result = BurnCompilation(
        target,
        {(root / "quelle" / "Musik").string() + "/", (root / "einzeln" / "brief.txt").string()},
        seen, false);
    ASSERT_EQ(result.outcome, BurnOutcome::Done) << result.detail;
    EXPECT_EQ(result.listStatus, "Fertig");
    EXPECT_TRUE(seen.Showed(kTextBurnDone));
    EXPECT_TRUE(seen.questions.empty());  // a blank disc asks nothing

    const IsoTreeReader reader(target.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(reader.VolumeId(), "Sammlung");
    std::vector<std::string> paths;
    for (const IsoTreeEntry& entry : reader.Entries())
        paths.push_back(entry.path);
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(paths, (std::vector<std::string>{"Musik", "Musik/leer", "Musik/lied.txt",
                                               "Musik/tief", "Musik/tief/unten.bin", "brief.txt"}));
    EXPECT_EQ(ImageBytes(reader, "Musik/tief/unten.bin"), std::string(70000, 'u'));
    EXPECT_EQ(ImageBytes(reader, "brief.txt"), "Hallo");
}

TEST_F(BurnJobTest, SecondSessionKeepsTheFirstSessionsFiles) {
    WriteFile(root / "eins" / "alt.txt", "alt");
    WriteFile(root / "eins" / "neu.txt", "erste Fassung");
    WriteFile(root / "zwei" / "neu.txt", "zweite Fassung");
    WriteFile(root / "zwei" / "dazu.txt", "dazu");
    const fs::path target = root / "disk.iso";
    Seen first;
    ASSERT_EQ(BurnCompilation(target, {(root / "eins").string()}, first, true).outcome,
              BurnOutcome::Done);
    const std::string afterFirst = FileBytes(target);

    // Without the multisession option the user is asked first; No leaves the disc as it was.
    Seen declined;
    const BurnResult no =
        BurnCompilation(target, {(root / "zwei").string()}, declined, false, false);
    EXPECT_EQ(no.outcome, BurnOutcome::Declined);
    EXPECT_EQ(declined.questions, std::vector<std::string>{kTextContinueMultisession});
    EXPECT_TRUE(declined.messages.empty());
    EXPECT_EQ(FileBytes(target), afterFirst);

    // With it, the session is appended without a question; the folder of the same name is
    // joined and its file of the same name replaced.
    Seen second;
    const BurnResult yes = BurnCompilation(target, {(root / "zwei").string()}, second, true);
    ASSERT_EQ(yes.outcome, BurnOutcome::Done) << yes.detail;
    EXPECT_TRUE(second.questions.empty());
    EXPECT_NE(std::find(second.statuses.begin(), second.statuses.end(), kTextImporting),
              second.statuses.end());
    EXPECT_GT(fs::file_size(target), afterFirst.size());

    const IsoTreeReader reader(target.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(ImageBytes(reader, "eins/alt.txt"), "alt");
    EXPECT_EQ(ImageBytes(reader, "eins/neu.txt"), "erste Fassung");
    EXPECT_EQ(ImageBytes(reader, "zwei/neu.txt"), "zweite Fassung");
    EXPECT_EQ(ImageBytes(reader, "zwei/dazu.txt"), "dazu");
}

}  // namespace
}  // namespace plattmix::authoring
