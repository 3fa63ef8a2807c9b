// The choice between the pass-through transport and the fall-back; a drive the system refuses is
// passed over and reported in the drive test bed's access run.
#include "TransportSelection.h"

#include <gtest/gtest.h>

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
        const char* chosen;
        int secondMade;
    };
    const Case cases[] = {
        {true, true, true, true, "SPTI", 0},    {false, true, true, true, "ASPI", 1},
        {true, false, true, true, "ASPI", 1},   {false, false, true, false, "none", 1},
        {false, false, false, true, "none", 1}, {true, false, false, false, "none", 1},
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
        EXPECT_EQ(chosen ? chosen->Interface() : "none", c.chosen);
    }
}
