// Jobs and the pages around them: the user leaves the ripping page during a rip and comes back,
// taps Escape during an image's folder listing, or closes the window and presses Start while the
// stopped job still unwinds. Everything the user does reaches the window at the job's yields.
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>
#include <fstream>
#include <functional>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

const QString kWriting = QStringLiteral("Schreibe...");

class PagePerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        window = StartShownWith("AudioThreeTracks");
        ASSERT_NE(window, nullptr);
        window->ComboBox1->setEditText(QString::fromStdString((root / "Ziel").string()));
    }

    TrackListView& List() const { return *window->ExplorerListView1; }
    // Every text of every row of page, and its check marks.
    QStringList PageTexts(int page) const {
        QStringList texts;
        for (int row = 0; row < List().PageRowCount(page); ++row) {
            const QTreeWidgetItem* item = List().PageRow(page, row);
            for (int column = 0; column < List().columnCount(); ++column)
                texts << item->text(column);
            texts << QString::number(item->checkState(0));
        }
        return texts;
    }
    QString Result(int page, int row) const {
        const QTreeWidgetItem* item = List().PageRow(page, row);
        return item != nullptr ? item->text(5) : QStringLiteral("<keine Zeile>");
    }

    void OnRowChange(std::function<bool()> condition, std::function<void()> what) {
        OnceWhen(window, &List(), &QTreeWidget::itemChanged, std::move(condition), std::move(what));
    }
    void OnProgress(std::function<bool()> condition, std::function<void()> what) {
        OnceWhen(window, window->ProgressBar1, &QProgressBar::valueChanged, std::move(condition),
                 std::move(what));
    }

    frmMain* window = nullptr;
};

TEST_F(PagePerson, ARipKeepsWritingItsOwnRowsWhileAnotherPageIsShown) {
    window->ComboBox3->setCurrentIndex(6);  // "WAV Format"
    window->ComboBox2->activated(0);        // "Alles"
    QStringList isoRows;
    // Away while the first track is read; back while the second is.
    OnRowChange([&] { return Result(kPageRip, 0) == kWriting; },
                [&] {
                    window->TabStrip1->setCurrentIndex(kPageIso);
                    isoRows = PageTexts(kPageIso);
                });
    OnProgress([&] { return List().ShownPage() == kPageIso && Result(kPageRip, 1) == kWriting; },
               [&] { window->TabStrip1->setCurrentIndex(kPageRip); });
    window->mnuSave->trigger();

    ASSERT_EQ(List().ShownPage(), kPageRip);
    ASSERT_EQ(List().topLevelItemCount(), 3);
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(List().topLevelItem(row)->text(5),
                  QStringLiteral("Track0%1.wav -->Fertig").arg(row + 1));
    ASSERT_FALSE(isoRows.isEmpty());
    EXPECT_EQ(PageTexts(kPageIso), isoRows);
    // No refresh is due that would read the track list anew and drop the results.
    EXPECT_FALSE(window->Timer2->isActive());
    EXPECT_TRUE(boxes.boxes.empty());
}

TEST_F(PagePerson, EscapeTappedDuringTheListingOrACloseEndTheImageAsAnAbort) {
    const fs::path source = root / "Quelle";
    fs::create_directories(source / "Unterordner");
    for (const fs::path& file : {source / "a.bin", source / "Unterordner" / "b.bin"})
        std::ofstream(file, std::ios::binary) << std::string(300000, 'x');
    window->TabStrip1->setCurrentIndex(kPageIso);
    window->Text2->setText(QString::fromStdString(source.string()));
    const fs::path image = root / "Ziel" / "Track.iso";

    const auto tapEscape = [&] {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent key(type, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(&List(), &key);
        }
    };
    // The window refuses the close and sets the job to stop; the Start that follows must not
    // begin a second job (nor clear the stop).
    const auto closeThenStart = [&] {
        EXPECT_FALSE(window->close());
        window->mnuSave->trigger();
        EXPECT_TRUE(window->Abbort);
    };
    OnRowChange([&] { return Result(kPageIso, 0) == kWriting; }, tapEscape);
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Abbruch"));
    EXPECT_FALSE(fs::exists(image));

    OnProgress([&] { return window->ProgressBar1->value() > 0; }, closeThenStart);
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Abbruch"));
    EXPECT_FALSE(fs::exists(image));
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isBusy);
    EXPECT_TRUE(boxes.boxes.empty());

    // Without a key or a close the same folder becomes an image.
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Fertig"));
    EXPECT_TRUE(fs::exists(image));
}

}  // namespace
