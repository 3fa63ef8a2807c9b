// The libburn service on pseudo-drives: regular files and paths behind "stdio:", as libburn and
// libisoburn really see them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "BurnService.h"
#include "FolderListing.h"
#include "IsoImage.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;

class LibburnServiceTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    std::unique_ptr<IBurnService> service = MakeLibburnService();

    MediaInfo Query(const std::string& address) {
        ::testing::internal::CaptureStderr();
        const MediaInfo media = service->QueryMedia(address);
        // The libraries' messages are collected, never printed.
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << address;
        return media;
    }
    MediaInfo QueryFile(const fs::path& file) { return Query("stdio:" + file.string()); }

    // An ISO image of a small folder; its size in blocks.
    int64_t MakeImage(const fs::path& image) {
        const fs::path source = root / "source";
        fs::create_directories(source / "sub");
        std::ofstream(source / "sub" / "data.bin") << std::string(300000, 'd');
        FolderListing listing;
        ShowOrdnerInhalt(source.string(), listing, {});
        const IsoImageResult made =
            CreateIsoImage({source.string(), "", image.string()}, listing, {});
        EXPECT_EQ(made.outcome, IsoOutcome::Done) << made.detail;
        return made.imageBytes / 2048;
    }
};

// The next session starts behind the image; the rest of the file system is free.
TEST_F(LibburnServiceTest, FileHoldingAnIsoImageIsAppendable) {
    const int64_t imageBlocks = MakeImage(root / "first.iso");
    ASSERT_GT(imageBlocks, 150);
    const MediaInfo media = QueryFile(root / "first.iso");
    ASSERT_EQ(media.state, MediaState::Appendable) << service->LastMessage();
    const int64_t used = media.totalSectors - media.freeBlocks;
    EXPECT_GE(used, imageBlocks);
    EXPECT_LT(used, imageBlocks + 64);  // at most the alignment of the next session
    EXPECT_GT(media.freeBlocks, 0);

    // The image writer starts and finishes libisofs for its own job in between; the
    // service's libraries go on working.
    MakeImage(root / "second.iso");
    EXPECT_EQ(QueryFile(root / "second.iso").state, MediaState::Appendable);
    const MediaInfo again = QueryFile(root / "first.iso");
    EXPECT_EQ(again.state, MediaState::Appendable);
    EXPECT_EQ(again.totalSectors - again.freeBlocks, used);
}

TEST_F(LibburnServiceTest, MissingOrEmptyFileIsBlankWithTheFileSystemsSpace) {
    const MediaInfo missing = QueryFile(root / "new.iso");
    EXPECT_EQ(missing.state, MediaState::Blank);
    EXPECT_GT(missing.totalSectors, 0);
    EXPECT_EQ(missing.freeBlocks, missing.totalSectors);
    EXPECT_FALSE(fs::exists(root / "new.iso"));  // a query writes nothing
    EXPECT_EQ(service->LastProfile(), kProfileStdioFile);

    std::ofstream(root / "empty.iso").close();
    const MediaInfo empty = QueryFile(root / "empty.iso");
    EXPECT_EQ(empty.state, MediaState::Blank);
    EXPECT_GT(empty.totalSectors, 0);
    EXPECT_EQ(empty.freeBlocks, empty.totalSectors);
    EXPECT_EQ(fs::file_size(root / "empty.iso"), 0u);
}

TEST_F(LibburnServiceTest, WrittenFileThatHoldsNoIsoImageIsClosed) {
    std::ofstream(root / "text.bin") << std::string(5000, 'x');
    EXPECT_EQ(QueryFile(root / "text.bin").state, MediaState::Closed);
}

TEST_F(LibburnServiceTest, AddressesWithoutAWritableDriveAreNoRecorder) {
    EXPECT_EQ(QueryFile(root / "no" / "such" / "folder" / "x.iso").state, MediaState::NoRecorder);
    EXPECT_NE(service->LastMessage(), "");  // the library said why
    EXPECT_EQ(Query("/dev/nonexistent").state, MediaState::NoRecorder);
    EXPECT_NE(service->LastMessage(), "");
    EXPECT_EQ(Query("stdio:").state, MediaState::NoRecorder);  // libburn's null drive
    EXPECT_EQ(Query("").state, MediaState::NoRecorder);        // no drive chosen
    EXPECT_EQ(service->LastProfile(), kProfileNone);
    EXPECT_EQ(service->LastMessage(), "");
    EXPECT_EQ(QueryFile(root).state, MediaState::NoRecorder);  // a folder

    // The failures leave nothing behind: a good address still works.
    EXPECT_EQ(QueryFile(root / "new.iso").state, MediaState::Blank);
}

TEST_F(LibburnServiceTest, ReadOnlyFileIsNoRecorder) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write any file";
    std::ofstream(root / "locked.iso").close();
    fs::permissions(root / "locked.iso", fs::perms::owner_read);
    EXPECT_EQ(QueryFile(root / "locked.iso").state, MediaState::NoRecorder);
}

// A recorder sees the medium as the queries do, with libburn's profile of a stdio file.
TEST_F(LibburnServiceTest, RecorderOfAStdioFile) {
    MediaState why = MediaState::NoService;
    const auto blank = service->OpenRecorder("stdio:" + (root / "neu.iso").string(), why);
    ASSERT_NE(blank, nullptr) << service->LastMessage();
    const RecorderInfo empty = blank->Info();
    EXPECT_EQ(empty.state, MediaState::Blank);
    EXPECT_EQ(empty.profile, kProfileStdioFile);
    EXPECT_FALSE(empty.multisession);
    EXPECT_GT(empty.freeBlocks, 0);

    MakeImage(root / "bild.iso");
    const auto written = service->OpenRecorder("stdio:" + (root / "bild.iso").string(), why);
    ASSERT_NE(written, nullptr);
    const RecorderInfo appendable = written->Info();
    EXPECT_EQ(appendable.state, MediaState::Appendable);
    EXPECT_TRUE(appendable.multisession);
    EXPECT_GT(appendable.totalSectors, appendable.freeBlocks);
    EXPECT_NE(written->LoadImage(), nullptr);

    EXPECT_EQ(service->OpenRecorder("stdio:" + root.string(), why), nullptr);  // a folder
    EXPECT_EQ(why, MediaState::NoRecorder);
    EXPECT_EQ(service->OpenRecorder("", why), nullptr);
    EXPECT_EQ(why, MediaState::NoRecorder);
}

}  // namespace
}  // namespace plattmix::authoring
