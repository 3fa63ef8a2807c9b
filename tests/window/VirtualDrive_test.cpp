// The button that attaches an image as a drive, on a machine without a service for virtual
// drives: the dialog, then the reason in a box. Attaching and detaching themselves are tested
// against the kernel in the drive test bed.
#include <QPushButton>

#include "TabStrip.h"
#include "VirtualDrive.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, WithoutAServiceAttachingTellsWhyAndACancelledDialogDoesNothing) {
    UseImages({WriteDisc("TinyTracks", root / "disc")});
    auto options = Options();
    options.window.virtualDrives = [] { return nullptr; };
    frmMain* window = StartShown(options);
    ASSERT_NE(window, nullptr);
    window->TabStrip1->setCurrentIndex(kPageIso);
    window->Command15[0]->click();
    EXPECT_TRUE(boxes.boxes.empty());

    WriteFile(root / "quelle" / "a.txt", "a");
    const std::string image = MakeIsoImage(root / "quelle", "", root / "bild.iso");
    dialogs.answers = {{QString::fromStdString(image)}};
    window->Command15[0]->click();
    EXPECT_EQ(dialogs.requests.back().filter, QStringLiteral("ISO Dateien|*.iso"));
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text.toStdString(), vdrive::NoServiceText());
}
