// The message for a drive the user may not open, where the test bed cannot take it: a node whose
// group grants nothing, and a user without an account name.
#include "DriveAccess.h"

#include <gtest/gtest.h>

using namespace plattmix::scsi;

TEST(DriveAccess, MessageNamesTheGroupOnlyWhereJoiningItHelps) {
    EXPECT_EQ(RefusedAccessMessage({"/dev/sr1", "cdrom", true, ""}),
              "Auf das Laufwerk /dev/sr1 besteht kein Zugriff.\r\nZugriff haben die Mitglieder "
              "der Gruppe \"cdrom\". Nehmen Sie Ihr Benutzerkonto in diese Gruppe auf und melden "
              "Sie sich danach neu an.");
    for (const RefusedDrive& closed : {RefusedDrive{"/dev/sr0", "root", false, "hans"},
                                       RefusedDrive{"/dev/sr0", "", true, "hans"}}) {
        EXPECT_EQ(RefusedAccessMessage(closed),
                  "Auf das Laufwerk /dev/sr0 besteht kein Zugriff.\r\nDie Zugriffsrechte des "
                  "Laufwerks kann nur der Administrator ändern.");
    }
}
