// The free-form MP4 entries: a movie box before the media data (chunk offsets would move) or
// without a tag list is left untouched. (FFmpeg's own layout gains them in the AAC conversion.)
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

std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Mp4FreeformTags, LeavesOtherLayoutsAlone) {
    const auto folder = test::ScratchFolder("encode");
    const std::string ilst = Box("ilst", "");
    const std::string moov =
        Box("moov", Box("udta", Box("meta", std::string(4, '\0') + Box("hdlr", "") + ilst)));
    const std::vector<std::pair<std::string, std::string>> ids = {{"MusicBrainz Album Id", "x"}};

    for (const std::string& layout :
         {Box("ftyp", "M4A ") + moov + Box("mdat", "audio"),
          Box("ftyp", "M4A ") + Box("mdat", "audio") + Box("moov", "")}) {
        std::ofstream(folder / "T.mp4", std::ios::binary) << layout;
        EXPECT_FALSE(AddMp4FreeformTags((folder / "T.mp4").string(), ids));
        EXPECT_EQ(Read((folder / "T.mp4").string()), layout);
    }
}

}  // namespace
}  // namespace plattmix::encode
