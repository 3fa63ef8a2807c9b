// plattmix-cli mount and unmount: the streams and exit codes of the service's answers, here a
// scripted udisks on a private bus (the real udisksd runs in the drive test bed); usage errors;
// no service at all.
#include "MountCommand.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "CliRun.h"
#include "Commands.h"
#include "VirtualDrive.h"
#include "common/ScratchFolder.h"
#include "vdrive/PrivateBus.h"
#include "vdrive/ScriptedUdisks.h"
#include "vdrive/VirtualDriveTestFiles.h"

using namespace plattmix;
using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using plattmix::clitest::CliRun;
using plattmix::clitest::RunCli;
using plattmix::clitest::ScopedEnv;

class MountCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(bus_.ok()) << bus_.error();
        ASSERT_TRUE(udisks_.ok()) << udisks_.error();
    }

    const fs::path folder_ = plattmix::test::ScratchFolder();
    plattmix::test::PrivateBus bus_{folder_};
    plattmix::test::ScriptedUdisks udisks_{bus_.address()};
    ScopedEnv systemBus_{"DBUS_SYSTEM_BUS_ADDRESS", bus_.address()};
    ScopedEnv runtime_{"XDG_RUNTIME_DIR", (folder_ / "run").string()};
    const std::string image_ = plattmix::test::WriteImageStub(folder_ / "Abbild.iso");
};

}  // namespace

TEST_F(MountCommandTest, RefusalsNameTheirReason) {
    const CliRun notLoaded = RunCli({"unmount", image_});
    EXPECT_EQ(notLoaded.code, kExitFailed);
    EXPECT_EQ(notLoaded.out, "");
    EXPECT_EQ(notLoaded.err,
              "Die ISO '" + image_ + "' ist in keinem virtuellen Laufwerk geladen!\n");

    udisks_.RefuseLoopSetup("org.freedesktop.UDisks2.Error.NotAuthorized");
    const CliRun refused = RunCli({"mount", image_});
    EXPECT_EQ(refused.code, kExitFailed);
    EXPECT_NE(refused.err.find("konnte nicht als virtuelles Laufwerk geladen werden!\n"
                               "udisks2: LoopSetup: org.freedesktop.UDisks2.Error.NotAuthorized"),
              std::string::npos)
        << refused.err;

    const CliRun missing = RunCli({"mount", (folder_ / "fehlt.iso").string()});
    EXPECT_EQ(missing.code, kExitFailed);
    EXPECT_EQ(missing.err, "Es konnte kein Handle von der ISO '" +
                               (folder_ / "fehlt.iso").string() + "' erstellt werden!\n" +
                               (folder_ / "fehlt.iso").string() + ": No such file or directory\n");
}

TEST(MountCommand, UsageAndNoService) {
    for (const std::string command : {"mount", "unmount"}) {
        const CliRun run = RunCli({command});
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_EQ(run.err,
                  "Die ISO-Datei fehlt.\nAufruf: plattmix-cli " + command + " ABBILD.iso\n");
        EXPECT_EQ(RunCli({command, "a.iso", "b.iso"}).code, kExitUsage);
        EXPECT_EQ(RunCli({command, "a.iso", "--drive", "/dev/sr0"}).code, kExitUsage);
    }

    const ParseResult parsed = ParseCommandLine({"mount", "/x.iso"});
    ASSERT_TRUE(parsed.args);
    std::ostringstream out, err;
    EXPECT_EQ(RunMountCommand(*parsed.args, nullptr, out, err), kExitFailed);
    EXPECT_EQ(err.str(), vdrive::NoServiceText() + "\n");
    EXPECT_EQ(out.str(), "");
}
