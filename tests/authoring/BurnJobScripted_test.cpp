// The burn jobs' decisions on media no machine here has, through a scripted recorder: not blank
// with and without multisession support, the question and the close rule, the error table,
// Escape while writing, eject after success only.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "BurnJob.h"
#include "BurnProgress.h"
#include "BurnTestHooks.h"
#include "IsoImage.h"
#include "ScriptedBurnService.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::Progress;
using burntest::RecordingHooks;
using burntest::ScriptedBurnService;
using burntest::Seen;

RecorderInfo Disc(MediaState state, bool multisession = false, int64_t freeBlocks = 100000) {
    RecorderInfo info;
    info.state = state;
    info.profile = 0x09;
    info.multisession = multisession;
    info.totalSectors = 200000;
    info.freeBlocks = freeBlocks;
    return info;
}

bool Contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

class ScriptedBurnTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("burn");
    ScriptedBurnService service;
    std::string iso;
    std::string folder;

    void SetUp() override {
        // A file that passes the image check: a primary volume descriptor at block 16.
        std::string bytes(20 * 2048, '\0');
        bytes[16 * 2048] = 1;
        bytes.replace(16 * 2048 + 1, 5, "CD001");
        bytes[16 * 2048 + 6] = 1;
        bytes[16 * 2048 + 80] = 20;
        iso = (root / "bild.iso").string();
        std::ofstream(iso, std::ios::binary) << bytes;
        folder = (root / "Daten").string();
        fs::create_directories(folder);
        std::ofstream(folder + "/datei.txt") << std::string(5000, 'd');
    }

    BurnResult Compilation(Seen& seen, bool multisession, bool close, bool answer = true,
                           bool eject = false) {
        BurnCompilationParams params;
        params.drive = "/dev/sr0";
        params.paths = {folder};
        params.multisession = multisession;
        params.closeDisc = close;
        params.eject = eject;
        return BurnZusammenstellung(service, params, RecordingHooks(seen, answer));
    }

    BurnResult Image(Seen& seen, bool eject = false, std::function<bool()> escape = nullptr) {
        return BurnIsoImage(service, {"/dev/sr0", iso, false, eject},
                            RecordingHooks(seen, true, std::move(escape)));
    }
};

TEST_F(ScriptedBurnTest, DiscThatIsNotBlankNeedsMultisessionSupport) {
    service.script.info = Disc(MediaState::Closed, false);
    Seen seen;
    const BurnResult result = Compilation(seen, true, false);
    EXPECT_EQ(result.outcome, BurnOutcome::Failed);
    EXPECT_EQ(result.status, kTextNoMultisession);
    EXPECT_EQ(result.listStatus, "Fehler!");
    EXPECT_TRUE(seen.Showed(kTextNoMultisession));
    EXPECT_TRUE(seen.questions.empty());
    EXPECT_FALSE(service.calls.imageLoaded);
    EXPECT_EQ(service.calls.imageWrites, 0);
}

// Check3 and Check4 decide the question and whether the disc is closed.
TEST_F(ScriptedBurnTest, QuestionAndCloseRuleOnAnAppendableDisc) {
    struct Case {
        bool multisession, close, asked, closed;
    };
    for (const Case c : {Case{false, false, true, true}, Case{false, true, true, true},
                         Case{true, false, false, false}, Case{true, true, false, true}}) {
        ScriptedBurnService fresh;
        fresh.script.info = Disc(MediaState::Appendable, true);
        Seen seen;
        BurnCompilationParams params{"/dev/sr0", {folder}, "", c.multisession, c.close, false};
        const BurnResult result = BurnZusammenstellung(fresh, params, RecordingHooks(seen));
        ASSERT_EQ(result.outcome, BurnOutcome::Done) << c.multisession << c.close;
        EXPECT_EQ(seen.questions.size(), c.asked ? 1u : 0u);
        if (c.asked) {
            EXPECT_EQ(seen.questions[0],
                      "Die Disk ist nicht leer!\r\nWollen die Multission Disk fortsetzen?");
        }
        EXPECT_TRUE(Contains(seen.statuses, kTextImporting));
        EXPECT_EQ(fresh.calls.closeDisc, c.closed) << c.multisession << c.close;
        EXPECT_TRUE(seen.Showed(kTextBurnDone));
        EXPECT_EQ(result.listStatus, "Fertig");
    }
    EXPECT_TRUE(ShouldCloseDisc(false, false));
    EXPECT_FALSE(ShouldCloseDisc(true, false));
}

TEST_F(ScriptedBurnTest, AnsweringNoTouchesNothing) {
    service.script.info = Disc(MediaState::Appendable, true);
    Seen seen;
    const BurnResult result = Compilation(seen, false, false, false);
    EXPECT_EQ(result.outcome, BurnOutcome::Declined);
    EXPECT_EQ(seen.questions.size(), 1u);
    EXPECT_TRUE(seen.messages.empty());
    EXPECT_TRUE(seen.statuses.empty());
    EXPECT_FALSE(service.calls.imageLoaded);
    EXPECT_EQ(service.calls.imageWrites, 0);
}

TEST_F(ScriptedBurnTest, CompilationLargerThanTheFreeSpaceIsRefused) {
    // Before the write: the compilation's total against the imported session's free blocks.
    service.script.info = Disc(MediaState::Appendable, true, 2);
    Seen seen;
    EXPECT_EQ(Compilation(seen, true, false).status, kTextCompilationTooLarge);
    EXPECT_TRUE(seen.Showed("Zusammenstellung zu groß für diese Disk!"));
    EXPECT_EQ(service.calls.imageWrites, 0);

    // When the write is refused as too large (a blank disc).
    ScriptedBurnService blank;
    blank.script.info = Disc(MediaState::Blank);
    blank.script.startError = WriteError::StreamTooLarge;
    Seen refused;
    BurnCompilationParams params{"/dev/sr0", {folder}, "", false, false, true};
    const BurnResult result = BurnZusammenstellung(blank, params, RecordingHooks(refused));
    EXPECT_EQ(result.status, kTextCompilationTooLarge);
    EXPECT_FALSE(refused.Showed(kTextBurnDone));
    EXPECT_FALSE(blank.calls.ejected);
}

TEST_F(ScriptedBurnTest, ErrorTableOfAnImage) {
    struct Case {
        WriteError error;
        const char* text;
    };
    for (const Case c : {Case{WriteError::MediaNotBlank, "Fehler: Disk ist nicht leer!"},
                         Case{WriteError::MediaNotSupported, "Fehler: Keine Disk im Laufwerk?"},
                         Case{WriteError::StreamTooLarge, "Fehler: Disk zu klein für diese ISO!"},
                         Case{WriteError::Failed, "Fehler beim Brennen!"}}) {
        ScriptedBurnService fresh;
        fresh.script.info = Disc(MediaState::Blank);
        fresh.script.startError = c.error;
        Seen seen;
        const BurnResult result =
            BurnIsoImage(fresh, {"/dev/sr0", iso, false, true}, RecordingHooks(seen));
        EXPECT_EQ(result.outcome, BurnOutcome::Failed);
        EXPECT_EQ(result.status, c.text);
        ASSERT_EQ(seen.messages.size(), 1u);
        EXPECT_EQ(seen.messages[0].first, c.text);
        EXPECT_EQ(seen.messages[0].second, MessageIcon::Exclamation);
        EXPECT_FALSE(fresh.calls.ejected);
    }
}

TEST_F(ScriptedBurnTest, MediaStatesRefusedBeforeAnImageIsWritten) {
    service.script.info = Disc(MediaState::Appendable, true);
    Seen notBlank;
    EXPECT_EQ(Image(notBlank).status, kTextMediaNotBlank);
    service.script.info = Disc(MediaState::NoDisc);
    Seen noDisc;
    EXPECT_EQ(Image(noDisc).status, kTextMediaNotSupported);
    service.script.info = Disc(MediaState::Blank, false, 19);  // one block short
    Seen small;
    EXPECT_EQ(Image(small).status, kTextIsoTooLarge);
    service.script.opens = false;
    Seen none;
    EXPECT_EQ(Image(none).status, "RECORDER NOT SUPPORTED");
    EXPECT_EQ(service.calls.isoWrites, 0);
}

TEST_F(ScriptedBurnTest, EscapeWhileWritingIsAnAbortNotAnError) {
    service.script.info = Disc(MediaState::Blank);
    service.script.progress = {Progress(kActionInitializingHardware),
                               Progress(kActionWritingData, 5, 50, 0, 10, 100),
                               Progress(kActionWritingData, 6, 50, 0, 20, 100)};
    bool writing = false;
    Seen seen;
    auto hooks = RecordingHooks(seen, true, [&writing] { return writing; });
    auto status = hooks.status;
    hooks.status = [&writing, status](const std::string& text) {
        writing = writing || text.starts_with("Schreibe...");
        status(text);
    };
    BurnCompilationParams params{"/dev/sr0", {folder}, "", false, false, true};
    const BurnResult compilation = BurnZusammenstellung(service, params, hooks);
    EXPECT_TRUE(service.calls.cancelled);
    EXPECT_EQ(compilation.outcome, BurnOutcome::Aborted);
    EXPECT_EQ(compilation.status, "Aktion abgebrochen!");
    EXPECT_EQ(compilation.listStatus, "Abbruch");
    EXPECT_TRUE(Contains(seen.statuses, "Aktion abgebrochen"));
    ASSERT_EQ(seen.messages.size(), 1u);
    EXPECT_EQ(seen.messages[0].first, "Brennen abgebrochen!");
    EXPECT_EQ(seen.messages[0].second, MessageIcon::Critical);
    EXPECT_FALSE(service.calls.ejected);

    ScriptedBurnService again;
    again.script = service.script;
    writing = false;
    Seen image;
    const BurnResult result = BurnIsoImage(again, {"/dev/sr0", iso, false, true},
                                           RecordingHooks(image, true, [] { return true; }));
    EXPECT_TRUE(again.calls.cancelled);
    EXPECT_EQ(result.outcome, BurnOutcome::Aborted);
    EXPECT_EQ(result.status, "Aktion abgebrochen!");
    EXPECT_FALSE(image.Showed(kTextBurnFailed));
    EXPECT_FALSE(again.calls.ejected);
}

// A tap of Escape while the compilation is listed: the burn ends there as an abort.
TEST_F(ScriptedBurnTest, EscapeOnceWhileListingEndsTheBurnBeforeTheRecorder) {
    service.script.info = Disc(MediaState::Blank);
    std::ofstream(folder + "/zweite.txt") << "z";
    int asked = 0;
    Seen seen;
    BurnCompilationParams params{"/dev/sr0", {folder}, "", false, false, false};
    const BurnResult result = BurnZusammenstellung(
        service, params, RecordingHooks(seen, true, [&asked] { return ++asked == 2; }));
    EXPECT_EQ(result.outcome, BurnOutcome::Aborted);
    EXPECT_EQ(result.status, "Aktion abgebrochen!");
    EXPECT_EQ(result.listStatus, "Abbruch");
    EXPECT_TRUE(seen.messages.empty());
    EXPECT_EQ(service.calls.opened, 0);
}

TEST_F(ScriptedBurnTest, ProgressOfAWriteReachesTheStatusLineAndTheBar) {
    service.script.info = Disc(MediaState::Blank);
    service.script.progress = {Progress(kActionValidatingMedia, 0, 0),
                               Progress(kActionCalibratingPower, 1, 90),
                               Progress(kActionWritingData, 65, 130, 1000, 1250, 1000),
                               Progress(kActionFinalization, 129, 130)};
    Seen seen;
    const BurnResult result = Image(seen, true);
    ASSERT_EQ(result.outcome, BurnOutcome::Done);
    EXPECT_EQ(seen.statuses,
              (std::vector<std::string>{
                  "Medien validieren 00:00 / 00:00", "Kalibriere die Leistung (OPC)00:01 / 01:30",
                  "Schreibe... 01:05 / 02:10", "Beende das Schreiben 02:09 / 02:10",
                  "Brennvorgang abgeschlossen."}));
    EXPECT_EQ(seen.bars, (std::vector<int>{25, 100}));
    EXPECT_EQ(seen.yields, 4);
    EXPECT_TRUE(service.calls.ejected);
    EXPECT_EQ(service.calls.keepSession, true);
    ASSERT_EQ(seen.messages.size(), 1u);
    EXPECT_EQ(seen.messages[0].second, MessageIcon::Information);
}

TEST_F(ScriptedBurnTest, FailedWriteOfACompilation) {
    service.script.info = Disc(MediaState::Blank);
    service.script.finishError = WriteError::Failed;
    Seen seen;
    const BurnResult result = Compilation(seen, false, false, true, true);
    EXPECT_EQ(result.outcome, BurnOutcome::Failed);
    EXPECT_EQ(result.status, kTextBurnFailed);
    EXPECT_EQ(result.listStatus, "Fehler!");
    // The failure's box, then the status text in a box of its own.
    ASSERT_EQ(seen.messages.size(), 2u);
    EXPECT_EQ(seen.messages[0],
              std::make_pair(std::string(kTextBurnFailed), MessageIcon::Critical));
    EXPECT_EQ(seen.messages[1],
              std::make_pair(std::string(kTextBurnFailed), MessageIcon::Exclamation));
    EXPECT_FALSE(service.calls.ejected);
}

TEST_F(ScriptedBurnTest, CompilationRowsThatCannotBeBurnt) {
    service.script.info = Disc(MediaState::Blank);
    // Nothing but an empty folder: the image page's message, and no recorder opened.
    fs::create_directories(root / "leer");
    Seen empty;
    BurnCompilationParams params{"/dev/sr0", {(root / "leer").string()}, "", false, false, false};
    EXPECT_EQ(BurnZusammenstellung(service, params, RecordingHooks(empty)).outcome,
              BurnOutcome::NoFiles);
    EXPECT_TRUE(empty.Showed(NoFilesMessage((root / "leer").string())));
    EXPECT_EQ(service.calls.opened, 0);

    // Two rows that would meet at the root under one name, and a row that is gone.
    fs::create_directories(root / "b");
    std::ofstream(root / "b" / "datei.txt") << "b";
    for (const std::vector<std::string>& paths :
         {std::vector<std::string>{folder + "/datei.txt", (root / "b" / "datei.txt").string()},
          std::vector<std::string>{(root / "fehlt.txt").string()}}) {
        Seen seen;
        params.paths = paths;
        const BurnResult result = BurnZusammenstellung(service, params, RecordingHooks(seen));
        EXPECT_EQ(result.outcome, BurnOutcome::Failed);
        EXPECT_FALSE(result.detail.empty());
        EXPECT_EQ(service.calls.imageWrites, 0);
    }
}

// The check after an image burn names the first sector that differs or cannot be read (the disc
// ending early is one); the disc is ejected only when everything read back equal.
TEST_F(ScriptedBurnTest, CheckNamesTheFirstBadSector) {
    std::ifstream in(iso, std::ios::binary);
    const std::string image{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::string spoilt = image;
    spoilt[17 * 2048 + 3] ^= 1;
    service.script.info = Disc(MediaState::Blank);
    struct Case {
        std::string readBack;
        std::optional<int64_t> readErrorAt;
        std::string where;  // empty: all equal
    };
    for (const Case& c : {Case{spoilt, std::nullopt, "Sektor 17"}, Case{image, 5, "Sektor 5"},
                          Case{image.substr(0, 10 * 2048), std::nullopt, "Sektor 10"},
                          Case{image + std::string(4096, '\0'), std::nullopt, ""}}) {
        service.script.readBack = c.readBack;
        service.script.readErrorAt = c.readErrorAt;
        service.calls = {};
        Seen seen;
        BurnIsoParams params{"/dev/sr0", iso, false, true};
        params.verify = true;
        const BurnResult result = BurnIsoImage(service, params, RecordingHooks(seen));
        EXPECT_TRUE(Contains(seen.statuses, "Überprüfen der Daten...")) << c.where;
        if (c.where.empty()) {
            EXPECT_EQ(result.outcome, BurnOutcome::Done);
            EXPECT_TRUE(seen.Showed(kTextBurnDone));
            EXPECT_TRUE(service.calls.ejected);
            continue;
        }
        EXPECT_EQ(result.outcome, BurnOutcome::Failed) << c.where;
        EXPECT_EQ(result.status, "Fehler beim Prüfen: " + c.where);
        ASSERT_EQ(seen.messages.size(), 1u) << c.where;
        EXPECT_EQ(seen.messages[0].first, "Fehler beim Prüfen: " + c.where);
        EXPECT_EQ(seen.messages[0].second, MessageIcon::Exclamation);
        EXPECT_FALSE(service.calls.ejected) << c.where;
    }
}

}  // namespace
}  // namespace plattmix::authoring
