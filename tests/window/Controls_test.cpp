// The three pages: the controls each shows, the burning page's own rules, the button that
// attaches an image as a drive on a machine without a service for virtual drives (attaching
// itself is tested against the kernel in the drive test bed), and the README's pictures of the
// pages with the demo disc, written when the run asks for them.
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "DemoDisc.h"
#include "TabStrip.h"
#include "TrackListView.h"
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
    EXPECT_TRUE(boxes.empty());

    WriteFile(root / "quelle" / "a.txt", "a");
    const std::string image = MakeIsoImage(root / "quelle", "", root / "bild.iso");
    dialogAnswers = {{QString::fromStdString(image)}};
    window->Command15[0]->click();
    EXPECT_EQ(dialogs.back().filter, QStringLiteral("ISO Dateien|*.iso"));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text.toStdString(), vdrive::NoServiceText());
}

// Each page shows its own controls and hides the others'; the way back to the ripping page
// brings its controls back too. The burn mode and multisession decide the burning controls.
TEST_F(WindowTest, EachPageShowsItsControlsAndMakesAPicture) {
    const auto demo = discgen::EnsureDisc(discgen::DemoDiscSpec(), root / "demo");
    ASSERT_TRUE(demo.ok()) << demo.error;
    UseImages({demo.value->string()});
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    window->resize(860, 640);
    window->ComboBox1->setEditText(QDir::homePath() + QStringLiteral("/Musik/"));
    const char* const names[] = {"rippen.png", "iso.png", "brennen.png"};
    const QWidget* const own[] = {window->ComboBox3, window->Text2, window->Frame2};
    for (int page : {kPageRip, kPageIso, kPageBurn, kPageRip}) {
        window->TabStrip1->setCurrentIndex(page);
        for (int other : {kPageRip, kPageIso, kPageBurn})
            EXPECT_EQ(own[other]->isVisible(), other == page) << page << " " << other;
        window->Timer2->stop();  // the refresh would read the disc again; the picture is enough
        QCoreApplication::processEvents();
        const QImage picture = window->grab().toImage();
        ASSERT_FALSE(picture.isNull());
        SavePicture(picture, QString::fromUtf8(names[page]));
    }

    // Burning an ISO file has no compilation; without multisession the disc is always closed.
    window->TabStrip1->setCurrentIndex(kPageBurn);
    window->OptNameBurn[1]->click();
    EXPECT_TRUE(window->cmdOpen->isEnabled());
    EXPECT_FALSE(window->Check3->isVisible() || window->Command11->isVisible());
    window->OptNameBurn[0]->click();
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    for (bool multisession : {false, true, false}) {
        EXPECT_EQ(window->Check4->isChecked(), !multisession);
        EXPECT_EQ(window->Check4->isEnabled(), multisession);
        window->Check3->click();
    }
    EXPECT_TRUE(boxes.empty());  // nothing unsaved on the burning page
}
