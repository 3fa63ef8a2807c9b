// The burn jobs' decisions on media and drive answers no "stdio:" pseudo-drive gives: the
// question and the close rule of an appendable disc, the refusals, and the check's read errors.
// Eject only after success.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "BurnJob.h"
#include "BurnTestHooks.h"
#include "BurnVerify.h"
#include "ScriptedBurnService.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using burntest::RecordingHooks;
using burntest::ScriptedBurnService;
using burntest::Seen;

RecorderInfo Disc(MediaState state, bool multisession = false, int64_t freeBlocks = 100000) {
    RecorderInfo info;
    info.state = state;
    info.multisession = multisession;
    info.totalSectors = 200000;
    info.freeBlocks = freeBlocks;
    return info;
}

class ScriptedBurnTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("burn");
    std::string iso = (root / "bild.iso").string();
    std::string image;  // the bytes of iso
    std::string folder = (root / "Daten").string();

    void SetUp() override {
        // A file that passes the image check: a primary volume descriptor at block 16.
        image.assign(20 * 2048, '\0');
        image.replace(16 * 2048, 7, "\1CD001\1");
        image[16 * 2048 + 80] = 20;
        std::ofstream(iso, std::ios::binary) << image;
        fs::create_directories(folder);
        std::ofstream(folder + "/datei.txt") << std::string(5000, 'd');
    }

    BurnResult Compilation(ScriptedBurnService& service, Seen& seen, bool multisession = false,
                           bool close = false) {
        const BurnCompilationParams params{"/dev/sr0", {folder}, "", multisession, close, true};
        return BurnZusammenstellung(service, params, RecordingHooks(seen));
    }

    BurnResult Image(ScriptedBurnService& service, Seen& seen, bool verify = false) {
        BurnIsoParams params{"/dev/sr0", iso, false, true};
        params.verify = verify;
        return BurnIsoImage(service, params, RecordingHooks(seen));
    }
};

// A disc with a session: asked unless the burn is a multisession one; closed unless multisession
// is on and closing is not asked for.
TEST_F(ScriptedBurnTest, QuestionAndCloseRuleOnAnAppendableDisc) {
    struct Case {
        bool multisession, close, asked, closed;
    };
    for (const Case c : {Case{false, false, true, true}, Case{false, true, true, true},
                         Case{true, false, false, false}, Case{true, true, false, true}}) {
        SCOPED_TRACE(testing::Message() << c.multisession << c.close);
        ScriptedBurnService service;
        service.script.info = Disc(MediaState::Appendable, true);
        Seen seen;
        const BurnResult result = Compilation(service, seen, c.multisession, c.close);
        ASSERT_EQ(result.outcome, BurnOutcome::Done);
        EXPECT_EQ(seen.questions, c.asked ? std::vector<std::string>{kTextContinueMultisession}
                                          : std::vector<std::string>{});
        EXPECT_EQ(service.calls.closeDisc, c.closed);
        EXPECT_TRUE(seen.Showed(kTextBurnDone));
        EXPECT_TRUE(service.calls.ejected);
    }
}

// Each refusal ends the run with its text in the status line and in a box, and no eject.
TEST_F(ScriptedBurnTest, RefusalsOfTheDriveAndTheMedium) {
    struct Case {
        bool compilation;
        RecorderInfo info;
        WriteError start;
        std::string text;
    };
    const Case cases[] = {
        {true, Disc(MediaState::Closed), {}, kTextNoMultisession},
        {true, Disc(MediaState::Appendable, true, 2), {}, kTextCompilationTooLarge},
        {true, Disc(MediaState::Blank), WriteError::StreamTooLarge, kTextCompilationTooLarge},
        {false, Disc(MediaState::NoDisc), {}, kTextMediaNotSupported},
        {false, Disc(MediaState::Blank, false, 19), {}, kTextIsoTooLarge},  // a block short
        {false, Disc(MediaState::Blank), WriteError::MediaNotBlank, kTextMediaNotBlank},
        {false, Disc(MediaState::Blank), WriteError::MediaNotSupported, kTextMediaNotSupported},
        {false, Disc(MediaState::Blank), WriteError::StreamTooLarge, kTextIsoTooLarge},
        {false, Disc(MediaState::Blank), WriteError::Failed, kTextBurnFailed},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ScriptedBurnService service;
        service.script.info = c.info;
        service.script.startError = c.start;
        Seen seen;
        const BurnResult result = c.compilation ? Compilation(service, seen) : Image(service, seen);
        EXPECT_EQ(result.outcome, BurnOutcome::Failed);
        EXPECT_EQ(result.status, c.text);
        EXPECT_EQ(result.listStatus, "Fehler!");
        EXPECT_TRUE(seen.Showed(c.text));
        EXPECT_FALSE(seen.Showed(kTextBurnDone));
        EXPECT_FALSE(service.calls.ejected);
    }
    ScriptedBurnService none;
    none.script.opens = false;
    Seen seen;
    EXPECT_EQ(Image(none, seen).status, "RECORDER NOT SUPPORTED");
}

// The check after an image burn names the first sector that cannot be read (the disc ending
// early is one); what lies behind the image does not count.
TEST_F(ScriptedBurnTest, CheckNamesTheFirstSectorItCannotRead) {
    struct Case {
        std::string readBack;
        std::optional<int64_t> readErrorAt;
        std::string where;  // empty: all equal
    };
    for (const Case& c :
         {Case{image, 5, "Sektor 5"}, Case{image.substr(0, 10 * 2048), std::nullopt, "Sektor 10"},
          Case{image + std::string(4096, '\0'), std::nullopt, ""}}) {
        SCOPED_TRACE(c.where);
        ScriptedBurnService service;
        service.script.info = Disc(MediaState::Blank);
        service.script.readBack = c.readBack;
        service.script.readErrorAt = c.readErrorAt;
        Seen seen;
        const BurnResult result = Image(service, seen, true);
        EXPECT_EQ(result.outcome, c.where.empty() ? BurnOutcome::Done : BurnOutcome::Failed);
        EXPECT_EQ(service.calls.ejected, c.where.empty());
        if (!c.where.empty()) {
            EXPECT_TRUE(seen.Showed(kTextVerifyFailed + c.where));
        }
    }
}

}  // namespace
}  // namespace plattmix::authoring
