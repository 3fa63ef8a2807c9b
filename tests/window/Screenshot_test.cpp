// The README's pictures of the three pages with the demo disc in the drive list. Written when
// the run asks for them (PLATTMIX_SCREENSHOT_OUT, set by the run under a real X server, and
// PLATTMIX_SCREENSHOT_DIR for a folder of one's own).
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QPixmap>
#include <QPushButton>

#include "TabStrip.h"
#include "WindowTestSupport.h"

using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, EachPageMakesAPicture) {
    UseImages({DemoDiscIn(root / "demo")});
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    window->resize(860, 640);
    window->show();
    window->ComboBox1->setEditText(QDir::homePath() + QStringLiteral("/Musik/"));
    const char* const names[] = {"rippen.png", "iso.png", "brennen.png"};
    for (int page = 0; page < 3; ++page) {
        window->TabStrip1->setCurrentIndex(page);
        window->Timer2->stop();  // the refresh would read the disc again; the picture is enough
        QCoreApplication::processEvents();
        const QImage picture = window->grab().toImage();
        ASSERT_FALSE(picture.isNull());
        SavePicture(picture, QString::fromUtf8(names[page]));
    }
    EXPECT_TRUE(boxes.boxes.empty());
}
