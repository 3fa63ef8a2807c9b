// plattmix-cli mount and unmount as users run them: the service is chosen by what answers on the
// system bus, here a scripted udisks on a private bus (the real kernel path runs in the drive
// test bed); usage errors; no service at all.
#include "MountCommand.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
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

// Sets a variable for the test's time.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv() {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    const char* name_;
    std::optional<std::string> old_;
};

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
    const std::string link_ = (folder_ / "run" / "plattmix" / "L").string();
    const std::string image_ = plattmix::test::WriteImageStub(folder_ / "Abbild.iso");
};

}  // namespace

TEST_F(MountCommandTest, FailuresNameTheirReason) {
    // The mount point is taken: attached, told on both streams, no drive line, not done.
    fs::create_directories(fs::path(link_).parent_path());
    std::ofstream(link_) << "belegt";
    const CliRun taken = RunCli({"mount", image_});
    EXPECT_EQ(taken.code, kExitFailed);
    EXPECT_EQ(taken.out, "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' geladen.\n");
    EXPECT_EQ(taken.err, "NIcht OK\nudisks2: " + link_ + ": taken (not a link)\n");
    EXPECT_EQ(udisks_.Loops().size(), 1u);
    EXPECT_EQ(RunCli({"unmount", image_}).code, kExitDone);

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
        CliRun run = RunCli({command});
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_EQ(run.err,
                  "Die ISO-Datei fehlt.\nAufruf: plattmix-cli " + command + " ABBILD.iso\n");
        run = RunCli({command, "a.iso", "b.iso"});
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_NE(run.err.find("Unerwartetes Argument: b.iso"), std::string::npos);
        run = RunCli({command, "a.iso", "--drive", "/dev/sr0"});
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_NE(run.err.find("Die Option --drive gilt nicht für " + command), std::string::npos);
    }

    const ParseResult parsed = ParseCommandLine({"mount", "/x.iso"});
    ASSERT_TRUE(parsed.args);
    std::ostringstream out, err;
    EXPECT_EQ(RunMountCommand(*parsed.args, nullptr, out, err), kExitFailed);
    EXPECT_EQ(err.str(), vdrive::NoServiceText() + "\n");
    EXPECT_EQ(out.str(), "");
}
