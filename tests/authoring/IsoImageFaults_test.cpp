// What goes wrong around an image: files that vanish or change, a full disk, the user's cancel.
// None of them may end as "Fertig"; an image that was never begun leaves the target alone.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include "FileContent.h"
#include "IsoImage.h"
#include "IsoImageCheck.h"
#include "common/ScratchFolder.h"
#include "common/SmallDisk.h"

namespace plattmix::authoring {
namespace {

using namespace isocheck;

class IsoImageFaults : public ::testing::Test {
  protected:
    fs::path scratch = plattmix::test::ScratchFolder("iso");
    fs::path source = scratch / "quelle";
    fs::path image = scratch / "bild.iso";
    FolderListing listing;

    // Three files (one of 300 KiB, so the copy takes several chunks) and an empty folder.
    void SetUp() override {
        treegen::WriteContentFile(source / "a.txt", 1000, 1);
        treegen::WriteContentFile(source / "ordner" / "b.bin", 300 * 1024, 2);
        treegen::WriteContentFile(source / "ordner" / "c.txt", 10, 3);
        fs::create_directories(source / "leer");
    }

    void List() { ShowOrdnerInhalt(source.string(), listing, {}); }

    IsoImageResult Create(const IsoJobHooks& hooks = {}) {
        return CreateIsoImage({source.string(), "", image.string()}, listing, hooks);
    }

    // Runs change once every entry was added, before the first byte of the image is read.
    IsoImageResult CreateChangingAfterAdding(const std::function<void()>& change) {
        const size_t entries =
            listing.ListFolders.size() + listing.ListFiles.size() + listing.ListLinks.size();
        size_t yields = 0;
        IsoJobHooks hooks;
        hooks.scan.yield = [&] {
            if (++yields == entries)
                change();
        };
        return Create(hooks);
    }
};

TEST_F(IsoImageFaults, FileThatCannotBeAddedAbortsAndWritesNothing) {
    std::ofstream(image) << "altes Image";
    const std::string b = (source / "ordner" / "b.bin").string();

    List();
    fs::remove(b);
    IsoImageResult result = Create();
    EXPECT_EQ(result.outcome, IsoOutcome::Aborted);
    EXPECT_NE(result.detail.find(b), std::string::npos) << result.detail;
    EXPECT_EQ(test::WholeFile(image), "altes Image");

    // Something that is no regular file (a FIFO would block the image thread).
    ASSERT_EQ(mkfifo((source / "rohr").c_str(), 0644), 0);
    List();
    result = Create();
    EXPECT_EQ(result.outcome, IsoOutcome::Aborted);
    EXPECT_NE(result.detail.find("rohr"), std::string::npos) << result.detail;
    fs::remove(source / "rohr");

    // The target inside the source would be read while it is written.
    const fs::path inside = source / "bild.iso";
    std::ofstream(inside) << "altes Image";
    List();
    result = CreateIsoImage({source.string(), "", inside.string()}, listing, {});
    EXPECT_EQ(result.outcome, IsoOutcome::Aborted);
    EXPECT_NE(result.detail.find("Zieldatei"), std::string::npos) << result.detail;
    EXPECT_EQ(test::WholeFile(inside), "altes Image");
    EXPECT_EQ(test::WholeFile(image), "altes Image");
}

TEST_F(IsoImageFaults, FileChangedBeforeItIsWrittenFails) {
    const fs::path b = source / "ordner" / "b.bin";
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"verschwunden", [&] { fs::remove(b); }},
        {"verlängert", [&] { std::ofstream(b, std::ios::app) << "mehr"; }},
        {"überschrieben",
         [&] {
             treegen::WriteContentFile(b, 300 * 1024, 99);
             const timespec later[2] = {{0, UTIME_OMIT}, {time(nullptr) + 100, 0}};
             utimensat(AT_FDCWD, b.c_str(), later, 0);
         }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        treegen::WriteContentFile(b, 300 * 1024, 2);
        List();
        const IsoImageResult result = CreateChangingAfterAdding(change);
        EXPECT_EQ(result.outcome, IsoOutcome::Failed);
        EXPECT_NE(result.detail.find(b.string()), std::string::npos) << result.detail;
        EXPECT_TRUE(fs::exists(image));  // a failed image is kept for the user to look at
    }
}

TEST_F(IsoImageFaults, FullDiskFailsWithTheReason) {
    List();
    const IsoImageResult full = CreateIsoImage({source.string(), "", "/dev/full"}, listing, {});
    EXPECT_EQ(full.outcome, IsoOutcome::Failed);
    EXPECT_NE(full.detail.find(std::strerror(ENOSPC)), std::string::npos) << full.detail;

    // A disk that fills up part way: a child process may write only 64 KiB per file.
    EXPECT_TRUE(test::WithFileSizeLimit(65536, [&] {
        const IsoImageResult result = Create();
        const bool named = result.detail.find(std::strerror(EFBIG)) != std::string::npos;
        return result.outcome == IsoOutcome::Failed && named;
    }));
    EXPECT_EQ(fs::file_size(image), 65536u);
}

TEST_F(IsoImageFaults, CancelRemovesTheUnfinishedImage) {
    List();
    std::vector<int> progress;
    IsoJobHooks hooks;
    hooks.progress = [&](int percent) { progress.push_back(percent); };
    hooks.cancelled = [&] { return !progress.empty() && progress.back() > 0; };
    EXPECT_EQ(Create(hooks).outcome, IsoOutcome::Aborted);
    ASSERT_GE(progress.size(), 2u);
    EXPECT_LT(progress.back(), 100);
    EXPECT_FALSE(fs::exists(image));

    // Escape while the tree is added: nothing is written, an old target stays.
    std::ofstream(image) << "altes Image";
    size_t asked = 0;
    hooks = {};
    hooks.scan.escapePressed = [&] { return ++asked == 3; };
    EXPECT_EQ(Create(hooks).outcome, IsoOutcome::Aborted);
    EXPECT_EQ(test::WholeFile(image), "altes Image");
}

}  // namespace
}  // namespace plattmix::authoring
