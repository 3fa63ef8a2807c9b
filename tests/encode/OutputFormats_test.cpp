// The one format table: list order, extensions, which index the encoder turns into which
// format, and the encoder values behind each row.
#include <gtest/gtest.h>

#include "OutputFormats.h"

using namespace plattmix::encode;

TEST(OutputFormatTable, ListOrderAndExtensions) {
    const char* extensions[] = {".mp3", ".mp4", ".mp2", ".flac", ".ac3", ".wma", ".wav"};
    for (size_t i = 0; i < kOutputFormats.size(); ++i)
        EXPECT_EQ(kOutputFormats[i].extension, extensions[i]) << i;
    EXPECT_EQ(kOutputFormats[kWavFormat].cliName, "wav");
    EXPECT_TRUE(kOutputFormats[kWavFormat].codec.empty());
}

TEST(OutputFormatTable, EncoderTakesOneToFiveAndMp3ForEverythingElse) {
    for (int index : {-1, 0, 6, 7, 100})
        EXPECT_EQ(EncodedFormatAt(index).extension, ".mp3") << index;
    for (int index = 1; index <= 5; ++index)
        EXPECT_EQ(&EncodedFormatAt(index), &kOutputFormats[static_cast<size_t>(index)]);
    EXPECT_EQ(FormatByCliName("flac"), 3);
    EXPECT_FALSE(FormatByCliName("ogg"));
}

TEST(OutputFormatTable, EncoderValuesOfEachRow) {
    struct Row {
        const char* codec;
        const char* muxer;
        int rate;
        int64_t bitRate;
        int bits;
    };
    const Row rows[] = {
        {"libmp3lame", "mp3", 44100, 256000, 0}, {"aac", "mp4", 44100, 160000, 16},
        {"mp2", "mp2", 48000, 224000, 0},        {"flac", "flac", 44100, 0, 24},
        {"ac3", "ac3", 48000, 256000, 0},        {"wmav2", "asf", 44100, 440016, 24}};
    for (size_t i = 0; i < std::size(rows); ++i) {
        const OutputFormat& format = kOutputFormats[i];
        EXPECT_EQ(format.codec, rows[i].codec) << i;
        EXPECT_EQ(format.muxer, rows[i].muxer) << i;
        EXPECT_EQ(format.sampleRate, rows[i].rate) << i;
        EXPECT_EQ(format.channels, 2) << i;
        EXPECT_EQ(format.bitRate, rows[i].bitRate) << i;
        EXPECT_EQ(format.bitsPerSample, rows[i].bits) << i;
    }
    EXPECT_EQ(kOutputFormats[1].profile, kAacLowComplexity);
    EXPECT_EQ(kOutputFormats[3].sampleFormat, "s32");  // 24 bits travel in 32-bit samples
}
