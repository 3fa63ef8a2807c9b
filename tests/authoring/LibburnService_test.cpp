// The libburn service's view of "stdio:" pseudo-drives: regular files and paths as libburn and
// libisoburn really see them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "BurnService.h"
#include "IsoImageCheck.h"
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
};

// An image is appendable behind its last block; a new file is blank, and a query writes nothing;
// other bytes make a closed disc. Addresses without a writable drive are no recorder.
TEST_F(LibburnServiceTest, StateOfEachAddress) {
    fs::create_directories(root / "quelle");
    std::ofstream(root / "quelle" / "data.bin") << std::string(300000, 'd');
    const isocheck::ImageRun image = isocheck::BuildImage(root / "quelle", root / "bild.iso");
    ASSERT_EQ(image.result.outcome, IsoOutcome::Done);
    const MediaInfo media = QueryFile(root / "bild.iso");
    ASSERT_EQ(media.state, MediaState::Appendable) << service->LastMessage();
    const int64_t used = media.totalSectors - media.freeBlocks;
    EXPECT_GE(used, image.result.imageBytes / 2048);
    EXPECT_LT(used, image.result.imageBytes / 2048 + 64);  // the next session's alignment at most

    EXPECT_EQ(QueryFile(root / "neu.iso").state, MediaState::Blank);
    EXPECT_FALSE(fs::exists(root / "neu.iso"));
    EXPECT_EQ(service->LastProfile(), kProfileStdioFile);

    std::ofstream(root / "text.bin") << std::string(5000, 'x');
    EXPECT_EQ(QueryFile(root / "text.bin").state, MediaState::Closed);

    EXPECT_EQ(QueryFile(root / "no" / "such" / "folder" / "x.iso").state, MediaState::NoRecorder);
    EXPECT_NE(service->LastMessage(), "");                     // the library said why
    EXPECT_EQ(Query("stdio:").state, MediaState::NoRecorder);  // libburn's null drive
    EXPECT_EQ(QueryFile(root).state, MediaState::NoRecorder);  // a folder
    EXPECT_EQ(Query("").state, MediaState::NoRecorder);        // no drive chosen
    EXPECT_EQ(service->LastProfile(), kProfileNone);
    EXPECT_EQ(service->LastMessage(), "");
    MediaState why = MediaState::NoService;
    EXPECT_EQ(service->OpenRecorder("stdio:" + root.string(), why), nullptr);
    EXPECT_EQ(why, MediaState::NoRecorder);

    // The failures leave nothing behind: a good address still works.
    EXPECT_EQ(QueryFile(root / "new.iso").state, MediaState::Blank);
}

}  // namespace
}  // namespace plattmix::authoring
