// A generated disc in the disc-image drive and a rip job's parameters over it (every audio
// track's row checked, files "TrackNN" in the folder "out"), and what the job reported.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "DiscWriter.h"
#include "RipJob.h"
#include "ScsiStatus.h"
#include "SessionToc.h"
#include "WavHeader.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace plattmix::test {

inline std::vector<uint8_t> FileBytes(const std::filesystem::path& path) {
    const std::string bytes = WholeFile(path);
    return {bytes.begin(), bytes.end()};
}

// The disc written into folder; an empty description (and a test failure) when it cannot be.
inline discgen::DiscDescription WrittenDisc(const discgen::DiscSpec& spec,
                                            const std::filesystem::path& folder) {
    const auto written = discgen::WriteDisc(spec, folder);
    EXPECT_TRUE(written.ok()) << written.error;
    return written.ok() ? *written.value : discgen::DiscDescription{};
}

// The track at the row position as a plain drive reads it, every sector, behind the standard
// header: what the secure mode's file holds.
inline std::vector<uint8_t> WholeTrackWav(const discgen::DiscDescription& truth, int position) {
    scsi::imagedrive::clsImageDrive plain;
    const auto added = plain.AddDrive(truth.cuePath.string());
    std::string handle = added.ok() ? added.Value() : "";
    const auto toc = audiocd::ReadSessionToc(plain, handle);
    const auto bounds = toc ? audiocd::ExactBoundsOf(*toc, position) : std::nullopt;
    if (!bounds)
        return {};
    std::vector<uint8_t> audio(static_cast<size_t>(bounds->Sectors()) * 2352);
    EXPECT_EQ(modMMC::ReadCD(plain, handle, static_cast<uint32_t>(bounds->firstLba),
                             static_cast<uint32_t>(bounds->Sectors()), audio, 0xF8),
              scsi::kStatusGood);
    const auto header = audiocd::StandardWavHeader(static_cast<int64_t>(audio.size()));
    std::vector<uint8_t> wav(header->begin(), header->end());
    wav.insert(wav.end(), audio.begin(), audio.end());
    return wav;
}

struct RipRig {
    using RowEvent = std::pair<size_t, std::string>;

    std::filesystem::path folder;
    discgen::DiscDescription disc;
    scsi::imagedrive::clsImageDrive drive;
    audiocd::RipJobParams params;
    audiocd::JobHooks hooks;  // warnings go to `warnings`
    std::vector<RowEvent> events;
    std::vector<std::string> warnings;
    bool otherThread = false;  // a row text came from another thread than the rig's

    // The disc goes into "disc" under a folder of the running test's and sub's name.
    explicit RipRig(const discgen::DiscSpec& spec, const std::string& sub = "rig") {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        folder = FreshFolder("rip",
                             std::string(info->test_suite_name()) + "." + info->name() + "." + sub);
        disc = WrittenDisc(spec, folder / "disc");
        const auto handle = drive.AddDrive(disc.cuePath.string());
        EXPECT_TRUE(handle.ok()) << handle.Error();
        std::filesystem::create_directories(folder / "out");
        params.handle = handle.ok() ? handle.Value() : "";
        params.targetFolder = (folder / "out").string() + "/";
        params.namePrefix = "Track";
        for (size_t i = 0; i < spec.tracks.size(); ++i)
            params.rows.push_back(
                {static_cast<int>(i + 1), spec.tracks[i].mode == discgen::TrackMode::Audio});
        hooks.warn = [this](const std::string& text) { warnings.push_back(text); };
    }

    audiocd::RowTextFn RowText() {
        return [this, caller = std::this_thread::get_id()](size_t row, const std::string& text) {
            otherThread = otherThread || std::this_thread::get_id() != caller;
            events.emplace_back(row, text);
        };
    }
    std::string LastText(size_t row) const {
        std::string text;
        for (const auto& [r, t] : events)
            text = r == row ? t : text;
        return text;
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "out"))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::vector<uint8_t> Written(const std::string& name) const {
        return FileBytes(folder / "out" / name);
    }
};

}  // namespace plattmix::test
