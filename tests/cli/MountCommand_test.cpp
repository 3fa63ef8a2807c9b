// plattmix-cli mount and unmount: usage errors and no service at all. The service's answers
// are checked through the real udisksd in the drive test bed, its refusals in the vdrive tests.
#include "MountCommand.h"

#include <gtest/gtest.h>

#include <sstream>

#include "CliRun.h"
#include "Commands.h"
#include "VirtualDrive.h"

using namespace plattmix;
using namespace plattmix::cli;
using plattmix::clitest::CliRun;
using plattmix::clitest::RunCli;

TEST(MountCommand, UsageAndNoService) {
    for (const std::string command : {"mount", "unmount"}) {
        const CliRun run = RunCli({command});
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_EQ(run.err,
                  "Die ISO-Datei fehlt.\nAufruf: plattmix-cli " + command + " ABBILD.iso\n");
        EXPECT_EQ(RunCli({command, "a.iso", "b.iso"}).code, kExitUsage);
    }

    const ParseResult parsed = ParseCommandLine({"mount", "/x.iso"});
    ASSERT_TRUE(parsed.args);
    std::ostringstream out, err;
    EXPECT_EQ(RunMountCommand(*parsed.args, nullptr, out, err), kExitFailed);
    EXPECT_EQ(err.str(), vdrive::NoServiceText() + "\n");
    EXPECT_EQ(out.str(), "");
}
