#include "TransportSelection.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "common/ScratchFolder.h"
#include "scsi/StubTransport.h"

using namespace plattmix;
using plattmix::test::StubTransport;

namespace {
scsi::TransportFactory Factory(const char* name, bool installed, bool initialized, int& made) {
    return [=, &made]() {
        ++made;
        auto t = std::make_unique<StubTransport>();
        t->name = name;
        t->installed = installed;
        t->initialized = initialized;
        return t;
    };
}
}  // namespace

TEST(TransportSelection, ThePassThroughIsPreferredAndTheFallBackNeedsBothAnswers) {
    struct Case {
        bool firstInstalled, firstInitialized, secondInstalled, secondInitialized;
        const char* chosen;  // nullptr: none works
        int secondMade;
    };
    const Case cases[] = {
        {true, true, true, true, "SPTI", 0},     {false, true, true, true, "ASPI", 1},
        {true, false, true, true, "ASPI", 1},    {false, false, true, false, nullptr, 1},
        {false, false, false, true, nullptr, 1}, {true, false, false, false, nullptr, 1},
    };
    for (const Case& c : cases) {
        int firstMade = 0, secondMade = 0;
        // The stubs' drive "sr0" is looked for where there is no node.
        auto chosen =
            scsi::SelectUsableTransport(
                Factory("SPTI", c.firstInstalled, c.firstInitialized, firstMade),
                Factory("ASPI", c.secondInstalled, c.secondInitialized, secondMade), "/nonexistent")
                .transport;
        EXPECT_EQ(firstMade, 1);
        EXPECT_EQ(secondMade, c.secondMade);
        if (c.chosen) {
            ASSERT_TRUE(chosen);
            EXPECT_EQ(chosen->Interface(), c.chosen);
        } else {
            EXPECT_FALSE(chosen);
        }
    }
    EXPECT_STREQ(scsi::kNoTransportMessage,
                 "Kein funktionierendes Interface gefunden!\r\nProgramm kann nicht verwendet "
                 "werden.");
}

namespace {
scsi::TransportFactory Drive(const char* name, bool works, int16_t drives, const char* handle) {
    return [=]() {
        auto t = std::make_unique<StubTransport>();
        t->name = name;
        t->installed = works;
        t->drives = drives;
        t->handle = handle;
        return t;
    };
}

// The selection as a user whom the system refuses sr0 (mode 0000) but not sg0; the answer as
// "<chosen or none> <refused node or ->".
std::string SelectAsOrdinaryUser(const std::filesystem::path& dev,
                                 const scsi::TransportFactory& first,
                                 const scsi::TransportFactory& fallback) {
    const auto selected = scsi::SelectUsableTransport(first, fallback, dev.string());
    return (selected.transport ? selected.transport->Interface() : std::string("none")) + " " +
           (selected.refused ? selected.refused->node.substr(dev.string().size()) : "-");
}
// Three selections in this child process, as nobody when run as root; prints the answers and
// ends the process.
void SelectAsNobody(const std::filesystem::path& dev) {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
        std::_Exit(2);
    std::cerr
        << SelectAsOrdinaryUser(dev, Drive("SPTI", true, 1, "sr0"), Drive("ASPI", true, 1, "sg0"))
        << "|"
        << SelectAsOrdinaryUser(dev, Drive("SPTI", false, 1, "sr0"), Drive("ASPI", true, 0, ""))
        << "|"
        << SelectAsOrdinaryUser(dev, Drive("SPTI", false, 1, "sr9"), Drive("ASPI", true, 0, ""));
    std::_Exit(0);
}
}  // namespace

// A transport whose first drive the system refuses to open is passed over; a working one
// without drives does not hide the refusal, which is kept for the user. Root is refused
// nothing, so the selection runs in a child as nobody.
TEST(TransportSelection, RefusedDriveIsPassedOverAndReported) {
    const auto dev = test::ScratchFolder();
    std::ofstream(dev / "sr0") << "node";
    std::ofstream(dev / "sg0") << "node";
    std::filesystem::permissions(dev / "sr0", std::filesystem::perms::none);
    std::filesystem::permissions(dev / "sg0", std::filesystem::perms::all);
    EXPECT_EXIT(SelectAsNobody(dev), ::testing::ExitedWithCode(0), "^ASPI -\\|none /sr0\\|ASPI -$");
}
