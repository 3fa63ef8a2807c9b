// The free-form MP4 entries: added to the layout FFmpeg writes; a movie box before the media data
// (chunk offsets would move) or without a tag list is left untouched.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "Mp4FreeformTags.h"
#include "common/ScratchFolder.h"

namespace plattmix::encode {
namespace {

std::string Box(const std::string& type, const std::string& body) {
    const auto size = static_cast<uint32_t>(8 + body.size());
    std::string box = {static_cast<char>(size >> 24), static_cast<char>(size >> 16 & 0xFF),
                       static_cast<char>(size >> 8 & 0xFF), static_cast<char>(size & 0xFF)};
    return box + type + body;
}

std::string Written(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Mp4FreeformTags, GrowsFfmpegsLayoutAndLeavesOthersAlone) {
    const auto folder = test::ScratchFolder("encode");
    const std::string ilst = Box("ilst", "");
    const std::string moov =
        Box("moov", Box("udta", Box("meta", std::string(4, '\0') + Box("hdlr", "") + ilst)));
    const std::vector<std::pair<std::string, std::string>> ids = {{"MusicBrainz Album Id", "x"}};

    const std::string fastStart = Box("ftyp", "M4A ") + moov + Box("mdat", "audio");
    const auto first = Written(folder / "faststart.mp4", fastStart);
    EXPECT_FALSE(AddMp4FreeformTags(first, ids));
    EXPECT_EQ(Read(first), fastStart);

    const std::string bare = Box("ftyp", "M4A ") + Box("mdat", "audio") + Box("moov", "");
    const auto second = Written(folder / "bare.mp4", bare);
    EXPECT_FALSE(AddMp4FreeformTags(second, ids));
    EXPECT_EQ(Read(second), bare);

    // The layout FFmpeg writes grows by one entry, every enclosing box with it.
    const auto third = Written(folder / "plain.mp4", Box("mdat", "audio") + moov);
    ASSERT_TRUE(AddMp4FreeformTags(third, ids));
    EXPECT_EQ(Read(third).size(), 13 + moov.size() + (8 + 28) + (8 + 4 + 20) + (8 + 8 + 1));
}

}  // namespace
}  // namespace plattmix::encode
