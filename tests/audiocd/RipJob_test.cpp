// The rip job to WAV over the track list's checked rows: file names, the row texts as they
// change, faults in the middle of a track, and stopping on the user's request. (A track's read
// errors: the track tests; other formats: the encode tests.)
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Fixtures.h"
#include "RipRig.h"
#include "common/SmallDisk.h"

using namespace plattmix;

namespace {

using test::RipRig;
using RowEvent = RipRig::RowEvent;

// Five tracks of 40 sectors, the rows checked as asked.
struct JobRig : RipRig {
    explicit JobRig(const std::vector<int>& checked, const std::string& sub = "rig")
        : RipRig(FiveTracks(), sub) {
        for (auto& row : params.rows)
            row.checked =
                std::find(checked.begin(), checked.end(), row.trackNumber) != checked.end();
    }
    static discgen::DiscSpec FiveTracks() {
        discgen::DiscSpec spec = discgen::AudioThreeTracks();
        spec.tracks.resize(5, spec.tracks[0]);
        for (auto& track : spec.tracks)
            track.sectors = 40;
        return spec;
    }
    audiocd::RipJobResult Run() { return audiocd::RunRipJob(drive, params, hooks, RowText()); }
};

}  // namespace

TEST(RunRipJob, NamesFilesByRunningOrTrackNumberAndReportsEachRow) {
    struct NamingCase {
        bool runningNumber;
        bool numberFirst;
        std::vector<std::string> files;
    };
    const std::vector<NamingCase> cases = {
        {true, false, {"Track01.wav", "Track02.wav"}},
        {false, false, {"Track03.wav", "Track05.wav"}},
        {true, true, {"01Track.wav", "02Track.wav"}},
        {false, true, {"03Track.wav", "05Track.wav"}},
    };
    for (const NamingCase& c : cases) {
        SCOPED_TRACE(c.files[0]);
        JobRig rig({3, 5}, c.files[0]);
        rig.params.runningNumber = c.runningNumber;
        rig.params.numberFirst = c.numberFirst;
        const auto result = rig.Run();
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

TEST(RunRipJob, AbortDuringTheThirdTrackStopsThere) {
    JobRig rig({1, 2, 3, 4, 5});
    bool abort = false;
    rig.hooks.yield = [&] {
        if (!rig.events.empty() && rig.events.back() == RowEvent{2, "Schreibe..."})
            abort = true;
    };
    rig.hooks.aborted = [&abort] { return abort; };
    const auto result = rig.Run();
    EXPECT_TRUE(result.aborted);
    EXPECT_EQ(result.filesStarted, 2);
    EXPECT_EQ(rig.LastText(0), "Track01.wav -->Fertig");
    EXPECT_EQ(rig.LastText(1), "Track02.wav -->Fertig");
    EXPECT_EQ(rig.events.back(), (RowEvent{2, "Abbruch"}));
    EXPECT_EQ(rig.Files(), (std::vector<std::string>{"Track01.wav", "Track02.wav"}));
}

// Faults in the second track (LBAs 40 to 78, read as the block 40-66 and the remainder 67-78):
// the medium taken out after its first block, a drive time-out (status 255) in either part, the
// disk full after the first track's first block. The job ends and no faulty track is reported
// done: a full block that fails leaves "Schreibe..." and tells why, a failed remainder fails the
// row.
TEST(RunRipJob, FaultsInTheMiddleOfATrackNeverReportItDone) {
    using Warnings = std::vector<std::string>;
    struct Case {
        const char* what;
        std::function<void(JobRig&)> inject;
        const char* row;
        Warnings warnings;
    };
    const Case cases[] = {
        {"tray opened",
         [](JobRig& rig) {
             rig.hooks.progress = [&rig](int percent) {
                 if (percent > 0 && rig.events.back() == RowEvent{1, "Schreibe..."})
                     rig.drive.OpenTray(rig.params.handle);
             };
         },
         "XXX Fehler!",
         {}},
        {"time-out in the block",
         [](JobRig& rig) { rig.drive.AddTimeOutRange(rig.params.handle, 50, 1); }, "Schreibe...",
         Warnings{"Lesefehler in Range 40 - 67."}},
        {"time-out in the remainder",
         [](JobRig& rig) { rig.drive.AddTimeOutRange(rig.params.handle, 70, 1); },
         "XXX Fehler!",
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        JobRig rig({1, 2}, c.what);
        c.inject(rig);
        EXPECT_FALSE(rig.Run().aborted);
        EXPECT_EQ(rig.LastText(0), "Track01.wav -->Fertig");
        EXPECT_EQ(rig.LastText(1), c.row);
        EXPECT_EQ(rig.warnings, c.warnings);
    }

    JobRig rig({1}, "voll");
    EXPECT_TRUE(test::WithFileSizeLimit(44 + 27 * 2352, [&rig] {
        rig.Run();
        // The header and the first block stay on disk.
        return test::WholeFile(rig.folder / "out" / "Track01.wav").size() == 44 + 27 * 2352 &&
               rig.LastText(0) == "Schreibe..." &&
               rig.warnings ==
                   Warnings{"Fehler beim Schreiben der Datei " + rig.params.targetFolder +
                            "Track01.wav: " + std::strerror(EFBIG)};
    }));
}
