// The interface in another language: the suite's language setting names a file in the
// Languages folder, and every caption is looked up under its German text. The lookup's own
// rules (a missing file, no entry, damaged files) are the language module's to test.
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTest>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "modProfile.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

// What a real question box showed, and whether a key answered it.
struct ShownBox {
    QString yes, no;
    QImage picture;  // the box over the window
    bool timedOut = false;
};

// Once a question box is shown, keeps its buttons' texts and a picture, then presses Alt+key.
// A box nothing answers is closed after half a minute, so the run goes on and tells.
void AnswerWithAlt(QWidget* window, Qt::Key key, ShownBox& shown) {
    auto* poll = new QTimer(window);
    QObject::connect(poll, &QTimer::timeout, [window, key, poll, &shown] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible() || QApplication::activeWindow() != box)
            return;
        poll->deleteLater();
        shown.yes = box->button(QMessageBox::Yes)->text();
        shown.no = box->button(QMessageBox::No)->text();
        shown.picture = window->grab().toImage();
        QPainter(&shown.picture)
            .drawPixmap(box->mapToGlobal(QPoint()) - window->mapToGlobal(QPoint()), box->grab());
        QTest::keyClick(box, key, Qt::AltModifier);
        QTimer::singleShot(30000, box, [box, &shown] {
            shown.timedOut = true;
            box->reject();
        });
    });
    poll->start(20);
}

}  // namespace

// The captions follow the interface, and so do Qt's own texts: a real question box, answered
// with the accelerator of its button, says "&Ja"/"&Nein" in German and Qt's "&Yes"/"&No" with
// the English file.
TEST_F(WindowTest, QtButtonsSpeakTheInterfaceLanguage) {
    const struct {
        const char* language;
        const char* yes;
        const char* no;
        const char* burnTab;  // found with its blanks
        const char* all;
        const char* emptyList;
        Qt::Key key;
        Qt::CheckState rows;  // Yes checks every row and rips
    } cases[] = {{"default", "&Ja", "&Nein", "    CD Brennen  ", "Alles", "Keine Disk im Laufwerk",
                  Qt::Key_J, Qt::Checked},
                 {"English", "&Yes", "&No", "    Burn CD  ", "All", "No disc in the drive",
                  Qt::Key_N, Qt::Unchecked}};
    UseImages({WriteDisc("AudioThreeTracks", root / "disc")});
    std::filesystem::copy_file(PLATTMIX_SOURCE_LANGUAGES "/English.lng", languages / "English.lng");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.language);
        shell::modProfile::WritePrivateProfileString(
            "Pfad1", "Languages", c.language, shell::ComputeSettingsPaths().SuiteOptionsFile);
        startup.reset();
        frmMain* window = StartShown();
        ASSERT_NE(window, nullptr);
        window->resize(860, 640);
        EXPECT_EQ(window->TabStrip1->tabText(2), QString::fromUtf8(c.burnTab));
        EXPECT_EQ(window->ComboBox2->itemText(0), QString::fromUtf8(c.all));
        window->ComboBox3->setCurrentIndex(6);  // WAV
        window->ComboBox1->setEditText(QString::fromStdString((root / "Ziel").string()));
        window->ComboBox2->activated(1);  // nothing checked
        ShownBox shown;
        AnswerWithAlt(window, c.key, shown);
        const MsgBoxAnswerer recorder = SetMsgBoxAnswerer({});
        window->mnuSave->trigger();
        SetMsgBoxAnswerer(recorder);

        EXPECT_EQ(shown.yes, QString::fromUtf8(c.yes));
        EXPECT_EQ(shown.no, QString::fromUtf8(c.no));
        ASSERT_FALSE(shown.timedOut);
        for (int row = 0; row < window->ExplorerListView1->topLevelItemCount(); ++row)
            EXPECT_EQ(window->ExplorerListView1->topLevelItem(row)->checkState(0), c.rows);
        if (c.rows == Qt::Checked)
            SavePicture(shown.picture, QStringLiteral("frage.png"));
        // The text of an empty list is looked up too.
        ASSERT_TRUE(ImageDriveOf(*window).RemoveMedium(FirstDrive(*window)));
        window->cboDrv_Click();
        EXPECT_EQ(window->ExplorerListView1->EmptyListText(), QString::fromUtf8(c.emptyList));
    }
    EXPECT_TRUE(boxes.empty());
}
