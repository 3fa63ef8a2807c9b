// The disc's titles on the ripping page: "Titel online suchen (MusicBrainz)" and its setting,
// the look-up once the disc is read (album and artist in the status line, each row's title as
// its tooltip), and the titles the ripped files are tagged with. Off, nothing leaves the machine
// and the files get the disc's CD-Text as they always have.
#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QStringList>
#include <QTimer>
#include <chrono>
#include <future>

#include "CurlHttpGet.h"
#include "DiscId.h"
#include "TrackListView.h"
#include "frmMain.h"
#include "modPaths.h"

namespace plattmix::window {

namespace {

constexpr const char* kSection = "Diskolo";
constexpr const char* kKeyOn = "MusicBrainz";
constexpr const char* kKeyServer = "MusicBrainzServer";
const QString kTextLookingUp = QStringLiteral("Titelsuche bei MusicBrainz...");

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

std::string DiscIdOf(const audiocd::TrackList& list) {
    const auto toc = audiocd::DiscIdTocOf(list);
    return toc ? audiocd::MusicBrainzDiscId(*toc) : std::string();
}

}  // namespace

void frmMain::CreateTitleControls() {
    CheckMusicBrainz =
        new QCheckBox(QStringLiteral("Titel online suchen (MusicBrainz)"), centralWidget());
    // Switched on, the disc is read again and looked up.
    connect(CheckMusicBrainz, &QCheckBox::clicked, this, [this] {
        if (!isBusy && jobPage_ == kNoJob)
            Timer2->start();
    });
}

void frmMain::LoadTitleSettings() {
    bool isNumber = false;
    const int on = Q(shell::ReadIni(paths_, kSection, kKeyOn)).trimmed().toInt(&isNumber);
    CheckMusicBrainz->setChecked(isNumber && on != 0);
}

// A settings file that never had the look-up on stays as it was.
void frmMain::SaveTitleSettings() {
    if (CheckMusicBrainz->isChecked() || !shell::ReadIni(paths_, kSection, kKeyOn).empty())
        shell::WriteIni(paths_, kSection, kKeyOn, CheckMusicBrainz->isChecked() ? "1" : "0");
}

void frmMain::LookUpTitles(const std::string& handle, const audiocd::TrackList& list) {
    trackList_ = list;
    shownDiscId_.clear();
    if (!CheckMusicBrainz->isChecked()) {
        // Switched off: what the look-up showed goes.
        if (!titlesDiscId_.empty()) {
            Label5[0]->clear();
            Label5[0]->setToolTip(QString());
            titlesDiscId_.clear();
        }
        return;
    }
    shownDiscId_ = DiscIdOf(list);
    if (shownDiscId_.empty())
        return;
    if (shownDiscId_ != titlesDiscId_ && !lookingUp_) {
        if (!musicBrainz_) {
            std::string server =
                shell::ReadIni(paths_, kSection, kKeyServer, "", audiocd::kMusicBrainzServer);
            musicBrainz_ = std::make_unique<audiocd::MusicBrainzClient>(
                audiocd::CurlHttpGet,
                shell::AddBackslash(server.empty() ? audiocd::kMusicBrainzServer : server));
        }
        const std::string discId = shownDiscId_;
        lookingUp_ = true;
        Label5[0]->setText(Tr(kTextLookingUp));
        // The request runs beside the window, which keeps painting meanwhile; what the user does
        // waits until the answer is there (a few seconds at the most).
        auto answer = std::async(
            std::launch::async,
            [client = musicBrainz_.get(), list, cdText = audiocd::ReadCdText(*transport_, handle)] {
                return audiocd::LookUpDiscTitles(client, list, cdText);
            });
        while (answer.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        titles_ = answer.get();
        titlesDiscId_ = discId;
        lookingUp_ = false;
    }
    if (shownDiscId_ == titlesDiscId_)
        ShowTitles();
}

void frmMain::ShowTitles() {
    Label5[0]->setText(Q(titles_.status));
    // The releases not taken, for a look at the status line.
    QStringList others;
    for (const auto& line : titles_.otherReleases)
        others << Q(line);
    Label5[0]->setToolTip(others.join(QLatin1Char('\n')));
    if (!titles_.titles)
        return;
    for (int row = 0; row < ExplorerListView1->topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = ExplorerListView1->topLevelItem(row);
        const QString title = Q(titles_.titles->TitleOf(item->text(0).toInt()));
        for (int column = 0; column < ExplorerListView1->columnCount(); ++column)
            item->setToolTip(column, title);
    }
}

std::optional<audiocd::DiscTitles> frmMain::TitlesForRip(const std::string& handle) {
    const std::string discId = CheckMusicBrainz->isChecked() ? DiscIdOf(trackList_) : "";
    // Switched on after the disc was read: looked up now.
    if (!discId.empty() && discId != titlesDiscId_)
        LookUpTitles(handle, trackList_);
    if (!discId.empty() && discId == titlesDiscId_)
        return titles_.titles;
    return audiocd::TitlesFromCdText(audiocd::ReadCdText(*transport_, handle));
}

}  // namespace plattmix::window
