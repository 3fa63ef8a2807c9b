// The whole memory path: a generated disc in the disc-image drive, a track read into a WAV image
// exactly as the ripping reads it, and that image converted.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "ConvertAudioStream.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "RipTrack.h"
#include "WavImage.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
namespace fs = std::filesystem;

TEST(FromDisc, RippedTrackBecomesFlacWithTheAnnouncedSamplesAndMp3OfItsLength) {
    const fs::path folder = test::ScratchFolder("encode");
    const auto written = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(written.ok()) << written.error;
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(written.value->cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();

    const auto image = audiocd::RipTrackToMemory(drive, handle.Value(), 2, {});
    ASSERT_TRUE(image);
    const std::string base = (folder / "Track02").string();
    encode::ConvertHooks hooks;
    ASSERT_TRUE(encode::ConvertAudioStream(*image, "audio/wav", base, 3, {}, hooks));
    ASSERT_TRUE(encode::ConvertAudioStream(*image, "audio/wav", base, 0, {}, hooks));

    const auto flac = encode::ProbeAudioFile(base + ".flac", true);
    ASSERT_TRUE(flac);
    const auto source = test::AnnouncedSamples(*image);
    ASSERT_EQ(flac->pcm.size(), source.size());
    for (size_t i = 0; i < source.size(); ++i)
        ASSERT_EQ(flac->pcm[i] >> 16, source[i]) << "sample " << i;

    const auto mp3 = encode::ProbeAudioFile(base + ".mp3");
    ASSERT_TRUE(mp3);
    EXPECT_NEAR(static_cast<double>(mp3->samples), static_cast<double>(source.size() / 2), 1152);
}
