// Ripping to a compressed format through the whole job: the files the encoder writes while the
// drive reads are byte for byte those of a track read whole into memory and then converted.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ConvertAudioStream.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "OutputFormats.h"
#include "RipEncoder.h"
#include "RipJob.h"
#include "RipTrack.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
namespace fs = std::filesystem;

namespace {

std::vector<char> Bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class RipStream : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(RipStream, FilesEqualThoseOfTheWholeImage) {
    const int formatIndex = GetParam();
    const fs::path folder = test::FreshFolder("ripstream", std::to_string(formatIndex));
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.tracks.push_back(discgen::ExactBlockMultiple().tracks.front());
    const auto written = discgen::WriteDisc(spec, folder / "disc");
    ASSERT_TRUE(written.ok()) << written.error;
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(written.value->cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();

    audiocd::RipJobParams params;
    params.handle = handle.Value();
    params.targetFolder = (folder / "job").string() + "/";
    fs::create_directories(folder / "job");
    params.namePrefix = "Track";
    params.formatIndex = formatIndex;
    for (int number = 1; number <= static_cast<int>(spec.tracks.size()); ++number)
        params.rows.push_back({number, true});
    const auto result =
        audiocd::RunRipJob(drive, params, {}, {}, encode::MakeRipEncoder(params, std::nullopt, {}));
    ASSERT_FALSE(result.aborted);

    const std::string extension(encode::FormatAt(formatIndex).extension);
    for (int number = 1; number <= static_cast<int>(spec.tracks.size()); ++number) {
        SCOPED_TRACE(number);
        const auto image =
            audiocd::RipTrackToMemory(drive, params.handle, static_cast<int16_t>(number), {});
        ASSERT_TRUE(image);
        encode::AudioTags tags;
        tags.track = number;
        tags.trackCount = static_cast<int>(spec.tracks.size());
        const std::string name = "Track" + audiocd::NumberText(number);
        const fs::path reference = folder / name;
        ASSERT_TRUE(encode::ConvertAudioStream(*image, "audio/wav", reference.string(), formatIndex,
                                               tags, {}));
        const auto expected = Bytes(reference.string() + extension);
        ASSERT_FALSE(expected.empty());
        EXPECT_TRUE(Bytes(folder / "job" / (name + extension)) == expected);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RipStream, ::testing::Values(0, 1, 2, 3, 4, 5));
