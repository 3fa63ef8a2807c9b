// The rip job over the track list's checked rows: file names, the row texts as they change,
// the encoder hand-over and stopping on the user's request.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "RipJob.h"
#include "common/ScratchFolder.h"
#include "common/SmallDisk.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;
namespace fs = std::filesystem;

namespace {

using RowEvent = std::pair<size_t, std::string>;

// Five short audio tracks in an image drive, a target folder and the job's parameters with
// the rows checked as asked.
struct JobRig {
    clsImageDrive drive;
    audiocd::RipJobParams params;
    fs::path target;
    std::vector<RowEvent> events;

    audiocd::RowTextFn RowText() {
        return [this](size_t row, const std::string& text) { events.emplace_back(row, text); };
    }
    std::string LastText(size_t row) const {
        std::string text;
        for (const auto& [r, t] : events) {
            if (r == row)
                text = t;
        }
        return text;
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(target))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

bool LoadFiveTracks(JobRig& rig, std::vector<int> checkedTracks, const std::string& sub = "job") {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.tracks.resize(5, spec.tracks[0]);
    for (auto& track : spec.tracks)
        track.sectors = 40;
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const fs::path folder = test::FreshFolder("ripjob", std::string(info->name()) + "." + sub);
    const auto written = discgen::WriteDisc(spec, folder / "disc");
    EXPECT_TRUE(written.ok()) << written.error;
    if (!written.ok())
        return false;
    const auto handle = rig.drive.AddDrive(written.value->cuePath.string());
    if (!handle.ok())
        return false;
    rig.target = folder / "ziel";
    fs::create_directories(rig.target);
    rig.params.handle = handle.Value();
    rig.params.targetFolder = rig.target.string() + "/";
    rig.params.namePrefix = "Track";
    for (int number = 1; number <= 5; ++number) {
        const bool checked =
            std::find(checkedTracks.begin(), checkedTracks.end(), number) != checkedTracks.end();
        rig.params.rows.push_back({number, checked});
    }
    return true;
}

struct NamingCase {
    bool runningNumber;
    bool numberFirst;
    std::vector<std::string> files;
};

}  // namespace

TEST(NumberText, AtLeastTwoDigits) {
    EXPECT_EQ(audiocd::NumberText(1), "01");
    EXPECT_EQ(audiocd::NumberText(0), "00");
    EXPECT_EQ(audiocd::NumberText(99), "99");
    EXPECT_EQ(audiocd::NumberText(123), "123");
}

TEST(RunRipJob, NamesFilesByRunningOrTrackNumberAndReportsEachRow) {
    const std::vector<NamingCase> cases = {
        {true, false, {"Track01.wav", "Track02.wav"}},
        {false, false, {"Track03.wav", "Track05.wav"}},
        {true, true, {"01Track.wav", "02Track.wav"}},
        {false, true, {"03Track.wav", "05Track.wav"}},
    };
    for (const NamingCase& c : cases) {
        SCOPED_TRACE(c.files[0]);
        JobRig rig;
        ASSERT_TRUE(LoadFiveTracks(rig, {3, 5}));
        rig.params.runningNumber = c.runningNumber;
        rig.params.numberFirst = c.numberFirst;
        const auto result = audiocd::RunRipJob(rig.drive, rig.params, {}, rig.RowText());
        EXPECT_FALSE(result.aborted);
        EXPECT_EQ(result.filesStarted, 2);
        EXPECT_EQ(rig.Files(), c.files);
        const auto base = [&c](size_t i) { return c.files[i].substr(0, c.files[i].size() - 4); };
        const std::vector<RowEvent> expected = {{2, "Schreibe..."},
                                                {2, base(0) + ".wav -->Fertig"},
                                                {4, "Schreibe..."},
                                                {4, base(1) + ".wav -->Fertig"}};
        EXPECT_EQ(rig.events, expected);
    }
}

TEST(RunRipJob, OtherFormatsStreamTheWavImageToTheEncoder) {
    JobRig rig;
    ASSERT_TRUE(LoadFiveTracks(rig, {2, 4}));
    rig.params.formatIndex = 0;
    std::vector<std::string> bases;
    std::vector<size_t> streamed;  // bytes each encoder was handed
    // Takes the stream and reports the file as written.
    struct Counting : audiocd::TrackEncode {
        size_t& bytes;
        std::string text;
        Counting(size_t& b, std::string t) : bytes(b), text(std::move(t)) {}
        audiocd::ByteQueue::PushResult Push(std::span<const uint8_t> b,
                                            std::chrono::milliseconds) override {
            bytes += b.size();
            return audiocd::ByteQueue::PushResult::Taken;
        }
        size_t Room() override { return SIZE_MAX; }
        bool WaitForRoom(size_t, std::chrono::milliseconds) override { return true; }
        void Finish() override {}
        void Cancel() override {}
        bool WaitFor(std::chrono::milliseconds) override { return true; }
        std::string Result() override { return text; }
    };
    streamed.reserve(2);
    const audiocd::EncodeFn encode = [&](const std::string& basePath, const std::string& name,
                                         size_t) -> std::unique_ptr<audiocd::TrackEncode> {
        bases.push_back(basePath);
        streamed.push_back(0);
        return std::make_unique<Counting>(streamed.back(), name + ".mp3 -->Fertig");
    };
    audiocd::RunRipJob(rig.drive, rig.params, {}, rig.RowText(), encode);
    EXPECT_EQ(bases, (std::vector<std::string>{rig.params.targetFolder + "Track01",
                                               rig.params.targetFolder + "Track02"}));
    EXPECT_EQ(rig.LastText(1), "Track01.mp3 -->Fertig");
    EXPECT_EQ(rig.LastText(3), "Track02.mp3 -->Fertig");
    // Header, then 39 sectors: the track's 40 less the one before the next track.
    EXPECT_EQ(streamed, (std::vector<size_t>{44u + 39u * 2352u, 44u + 39u * 2352u}));
    EXPECT_TRUE(rig.Files().empty());  // the encoder writes; the job itself does not

    // Without an encoder each row fails; a read error leaves "Schreibe..." and a message.
    JobRig plain;
    ASSERT_TRUE(LoadFiveTracks(plain, {1, 2}, "plain"));
    plain.params.formatIndex = 3;
    plain.drive.AddReadError(plain.params.handle, 45, 1);
    std::vector<std::string> warnings;
    audiocd::JobHooks hooks;
    hooks.warn = [&warnings](const std::string& text) { warnings.push_back(text); };
    audiocd::RunRipJob(plain.drive, plain.params, hooks, plain.RowText());
    EXPECT_EQ(plain.LastText(0), "XXX Fehler!");
    EXPECT_EQ(plain.LastText(1), "Schreibe...");
    EXPECT_EQ(warnings, std::vector<std::string>{"Lesefehler in Range 40 - 67."});
}

TEST(RunRipJob, AbortDuringTheThirdTrackStopsThere) {
    JobRig rig;
    ASSERT_TRUE(LoadFiveTracks(rig, {1, 2, 3, 4, 5}));
    bool abort = false;
    audiocd::JobHooks hooks;
    hooks.yield = [&] {
        if (!rig.events.empty() && rig.events.back() == RowEvent{2, "Schreibe..."})
            abort = true;
    };
    hooks.aborted = [&abort] { return abort; };
    const auto result = audiocd::RunRipJob(rig.drive, rig.params, hooks, rig.RowText());
    EXPECT_TRUE(result.aborted);
    EXPECT_EQ(result.filesStarted, 2);
    EXPECT_EQ(rig.LastText(0), "Track01.wav -->Fertig");
    EXPECT_EQ(rig.LastText(1), "Track02.wav -->Fertig");
    EXPECT_EQ(rig.events.back(), (RowEvent{2, "Abbruch"}));
    EXPECT_EQ(rig.LastText(3), "");
    EXPECT_EQ(rig.Files(), (std::vector<std::string>{"Track01.wav", "Track02.wav"}));
}

// Faults in the second track (LBAs 40 to 78, read as the block 40-66 and the remainder 67-78):
// the medium taken out after its first block, a drive time-out in either part, the disk full
// after the first block. The job ends, the first track is done, the second is never reported
// done: a full block that fails leaves "Schreibe..." and tells why, a failed remainder fails the
// row.
TEST(RunRipJob, FaultsInTheMiddleOfATrackNeverReportItDone) {
    using Warnings = std::vector<std::string>;
    struct Case {
        const char* what;
        std::function<void(JobRig&, audiocd::JobHooks&)> inject;
        const char* row;
        Warnings warnings;
    };
    const Case cases[] = {
        {"tray opened",
         [](JobRig& rig, audiocd::JobHooks& hooks) {
             hooks.progress = [&rig](int percent) {
                 if (percent > 0 && rig.events.back() == RowEvent{1, "Schreibe..."})
                     rig.drive.OpenTray(rig.params.handle);
             };
         },
         "XXX Fehler!",
         {}},
        {"time-out in the block",
         [](JobRig& rig, audiocd::JobHooks&) {
             rig.drive.AddTimeOutRange(rig.params.handle, 50, 1);
         },
         "Schreibe...", Warnings{"Lesefehler in Range 40 - 67."}},
        {"time-out in the remainder",
         [](JobRig& rig, audiocd::JobHooks&) {
             rig.drive.AddTimeOutRange(rig.params.handle, 70, 1);
         },
         "XXX Fehler!",
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        JobRig rig;
        ASSERT_TRUE(LoadFiveTracks(rig, {1, 2}, c.what));
        Warnings warnings;
        audiocd::JobHooks hooks;
        hooks.warn = [&warnings](const std::string& text) { warnings.push_back(text); };
        c.inject(rig, hooks);
        EXPECT_FALSE(audiocd::RunRipJob(rig.drive, rig.params, hooks, rig.RowText()).aborted);
        EXPECT_EQ(rig.LastText(0), "Track01.wav -->Fertig");
        EXPECT_EQ(rig.LastText(1), c.row);
        EXPECT_EQ(warnings, c.warnings);
    }

    // A file may grow to the header and one block: the first track's second block cannot be
    // written.
    JobRig rig;
    ASSERT_TRUE(LoadFiveTracks(rig, {1}, "full"));
    std::vector<std::string> warnings;
    audiocd::JobHooks hooks;
    hooks.warn = [&warnings](const std::string& text) { warnings.push_back(text); };
    EXPECT_TRUE(test::WithFileSizeLimit(44 + 27 * 2352, [&] {
        audiocd::RunRipJob(rig.drive, rig.params, hooks, rig.RowText());
        return rig.LastText(0) == "Schreibe..." && warnings.size() == 1 &&
               warnings[0] == "Fehler beim Schreiben der Datei " + rig.params.targetFolder +
                                  "Track01.wav: " + std::strerror(EFBIG);
    }));
}
