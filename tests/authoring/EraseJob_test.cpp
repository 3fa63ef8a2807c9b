// Erasing: the media that count as erasable, the question, the texts, eject after success only
// (scripted), and a written "stdio:" file blanked through libisoburn (real).
#include "EraseJob.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "BurnTestHooks.h"
#include "FolderListing.h"
#include "IsoImage.h"
#include "ScriptedBurnService.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::RecordingEraseHooks;
using burntest::ScriptedBurnService;
using burntest::Seen;

RecorderInfo Disc(int profile, MediaState state) {
    RecorderInfo info;
    info.profile = profile;
    info.state = state;
    return info;
}

EraseResult Erase(ScriptedBurnService& service, Seen& seen, bool answer = true, bool eject = true) {
    return EraseDisk(service, {"/dev/sr0", eject}, RecordingEraseHooks(seen, answer));
}

TEST(EraseJob, OnlyCdRwAndDvdPlusRwCount) {
    EXPECT_TRUE(IsErasableProfile(kProfileCdRw));
    EXPECT_TRUE(IsErasableProfile(kProfileDvdPlusRw));
    EXPECT_TRUE(IsErasableProfile(kProfileStdioFile));
    EXPECT_FALSE(IsErasableProfile(kProfileDvdMinusRwOverwrite));
    EXPECT_FALSE(IsErasableProfile(kProfileDvdMinusRwSequential));
    EXPECT_FALSE(IsErasableProfile(0x09));  // CD-R
    EXPECT_FALSE(IsErasableProfile(0x2a));  // DVD+RW dual layer

    // DVD-RW, no disc, no recorder: the same message, nothing asked, nothing touched.
    for (const RecorderInfo info : {Disc(kProfileDvdMinusRwSequential, MediaState::Appendable),
                                    Disc(kProfileDvdMinusRwOverwrite, MediaState::Closed),
                                    Disc(kProfileCdRw, MediaState::NoDisc)}) {
        ScriptedBurnService service;
        service.script.info = info;
        Seen seen;
        EXPECT_EQ(Erase(service, seen).outcome, EraseOutcome::NoDisc) << info.profile;
        ASSERT_EQ(seen.messages.size(), 1u);
        EXPECT_EQ(seen.messages[0].first, "Keine Disk zum Löschen vorhanden!");
        EXPECT_EQ(seen.messages[0].second, MessageIcon::Exclamation);
        EXPECT_TRUE(seen.questions.empty());
        EXPECT_FALSE(service.calls.blanked);
    }
    ScriptedBurnService none;
    none.script.opens = false;
    Seen seen;
    EXPECT_EQ(Erase(none, seen).outcome, EraseOutcome::NoDisc);
}

TEST(EraseJob, BlankCdRwIsNotAsked) {
    ScriptedBurnService service;
    service.script.info = Disc(kProfileCdRw, MediaState::Blank);
    Seen seen;
    EXPECT_EQ(Erase(service, seen).outcome, EraseOutcome::AlreadyBlank);
    ASSERT_EQ(seen.messages.size(), 1u);
    EXPECT_EQ(seen.messages[0].first, "Disk zum Löschen ist schon leer");
    EXPECT_TRUE(seen.questions.empty());
    EXPECT_FALSE(service.calls.blanked);
}

TEST(EraseJob, AnsweringNoTouchesNothing) {
    ScriptedBurnService service;
    service.script.info = Disc(kProfileDvdPlusRw, MediaState::Appendable);
    Seen seen;
    const EraseResult result = Erase(service, seen, false);
    EXPECT_EQ(result.outcome, EraseOutcome::Declined);
    EXPECT_EQ(seen.questions,
              std::vector<std::string>{"Wollen sie alle Daten auf der Disk löschen?"});
    EXPECT_TRUE(seen.messages.empty());
    EXPECT_TRUE(seen.statuses.empty());
    EXPECT_TRUE(seen.busy.empty());
    EXPECT_FALSE(service.calls.blanked);
    EXPECT_FALSE(service.calls.ejected);
}

TEST(EraseJob, ResultTextsAndEjectAfterSuccessOnly) {
    ScriptedBurnService service;
    service.script.info = Disc(kProfileCdRw, MediaState::Closed);
    Seen seen;
    const EraseResult done = Erase(service, seen);
    EXPECT_EQ(done.outcome, EraseOutcome::Done);
    EXPECT_EQ(seen.statuses,
              (std::vector<std::string>{"Lösche Disk...", "Löschen erfolgreich abgeschlossen"}));
    EXPECT_EQ(seen.busy, (std::vector<bool>{true, false}));
    EXPECT_TRUE(seen.messages.empty());
    EXPECT_TRUE(service.calls.blanked);
    EXPECT_TRUE(done.ejected);

    ScriptedBurnService failing;
    failing.script.info = Disc(kProfileCdRw, MediaState::Closed);
    failing.script.blankWorks = false;
    Seen failed;
    const EraseResult result = Erase(failing, failed);
    EXPECT_EQ(result.outcome, EraseOutcome::Failed);
    EXPECT_EQ(result.status, "Fehler beim Löschen!");
    EXPECT_EQ(failed.busy, (std::vector<bool>{true, false}));
    EXPECT_FALSE(failing.calls.ejected);
}

TEST(EraseJob, WrittenStdioFileIsBlankedThroughLibisoburn) {
    const fs::path root = test::ScratchFolder("burn");
    fs::create_directories(root / "quelle");
    std::ofstream(root / "quelle" / "datei.bin") << std::string(200000, 'x');
    FolderListing listing;
    ShowOrdnerInhalt((root / "quelle").string(), listing, {});
    const fs::path disc = root / "disk.iso";
    ASSERT_EQ(CreateIsoImage({(root / "quelle").string(), "", disc.string()}, listing, {}).outcome,
              IsoOutcome::Done);
    const auto service = MakeLibburnService();
    const std::string drive = "stdio:" + disc.string();
    ASSERT_EQ(service->QueryMedia(drive).state, MediaState::Appendable);

    Seen seen;
    const EraseResult result = EraseDisk(*service, {drive, true}, RecordingEraseHooks(seen));
    ASSERT_EQ(result.outcome, EraseOutcome::Done) << result.detail;
    EXPECT_EQ(seen.questions.size(), 1u);
    EXPECT_TRUE(result.ejected);  // a pseudo-drive has no tray: nothing happens
    EXPECT_EQ(service->QueryMedia(drive).state, MediaState::Blank);

    Seen again;
    EXPECT_EQ(EraseDisk(*service, {drive, false}, RecordingEraseHooks(again)).outcome,
              EraseOutcome::AlreadyBlank);
    EXPECT_TRUE(again.questions.empty());
}

}  // namespace
}  // namespace plattmix::authoring
