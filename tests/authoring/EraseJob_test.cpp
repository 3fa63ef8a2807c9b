// Erasing: a written "stdio:" file blanked through libisoburn after the question (real), and the
// media and failures only a real drive has (scripted).
#include "EraseJob.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "BurnTestHooks.h"
#include "IsoImageCheck.h"
#include "ScriptedBurnService.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::RecordingEraseHooks;
using burntest::ScriptedBurnService;
using burntest::Seen;

TEST(EraseJob, WrittenStdioFileIsBlankedOnlyAfterYes) {
    const fs::path root = test::ScratchFolder("burn");
    fs::create_directories(root / "quelle");
    std::ofstream(root / "quelle" / "datei.bin") << std::string(200000, 'x');
    const fs::path disc = root / "disk.iso";
    ASSERT_EQ(isocheck::BuildImage(root / "quelle", disc).result.outcome, IsoOutcome::Done);
    const std::string written = test::WholeFile(disc);
    const auto service = MakeLibburnService();
    const std::string drive = "stdio:" + disc.string();

    Seen no;
    EXPECT_EQ(EraseDisk(*service, {drive, true}, RecordingEraseHooks(no, false)).outcome,
              EraseOutcome::Declined);
    EXPECT_EQ(no.questions, std::vector<std::string>{kTextEraseQuestion});
    EXPECT_TRUE(no.busy.empty());
    EXPECT_EQ(test::WholeFile(disc), written);

    Seen seen;
    const EraseResult result = EraseDisk(*service, {drive, true}, RecordingEraseHooks(seen));
    ASSERT_EQ(result.outcome, EraseOutcome::Done) << result.detail;
    EXPECT_EQ(seen.statuses, (std::vector<std::string>{"Lösche Disk...", kTextEraseDone}));
    EXPECT_EQ(seen.busy, (std::vector<bool>{true, false}));
    EXPECT_EQ(service->QueryMedia(drive).state, MediaState::Blank);

    Seen again;
    EXPECT_EQ(EraseDisk(*service, {drive, false}, RecordingEraseHooks(again)).outcome,
              EraseOutcome::AlreadyBlank);
    EXPECT_EQ(
        again.messages,
        (decltype(again.messages){{"Disk zum Löschen ist schon leer", MessageIcon::Exclamation}}));
    EXPECT_TRUE(again.questions.empty());
}

// DVD-RW, no disc, no recorder: the same message, nothing asked, nothing touched. A blanking that
// fails is not ejected.
TEST(EraseJob, WhatCannotBeErasedIsNotAskedAndAFailureNotEjected) {
    const std::pair<int, MediaState> media[] = {
        {kProfileDvdMinusRwSequential, MediaState::Appendable},
        {kProfileCdRw, MediaState::NoDisc},
        {kProfileCdRw, MediaState::NoRecorder},
    };
    for (const auto& [profile, state] : media) {
        SCOPED_TRACE(profile);
        ScriptedBurnService service;
        service.script.opens = state != MediaState::NoRecorder;
        service.script.info.profile = profile;
        service.script.info.state = state;
        Seen seen;
        EXPECT_EQ(EraseDisk(service, {"/dev/sr0", true}, RecordingEraseHooks(seen)).outcome,
                  EraseOutcome::NoDisc);
        EXPECT_EQ(seen.messages, (decltype(seen.messages){{"Keine Disk zum Löschen vorhanden!",
                                                           MessageIcon::Exclamation}}));
        EXPECT_TRUE(seen.questions.empty());
        EXPECT_FALSE(service.calls.blanked);
    }

    ScriptedBurnService service;
    service.script.info.profile = kProfileDvdPlusRw;
    service.script.info.state = MediaState::Closed;
    service.script.blankWorks = false;
    Seen seen;
    const EraseResult result = EraseDisk(service, {"/dev/sr0", true}, RecordingEraseHooks(seen));
    EXPECT_EQ(result.outcome, EraseOutcome::Failed);
    EXPECT_EQ(result.status, "Fehler beim Löschen!");
    EXPECT_EQ(seen.busy, (std::vector<bool>{true, false}));
    EXPECT_FALSE(service.calls.ejected);
}

}  // namespace
}  // namespace plattmix::authoring
