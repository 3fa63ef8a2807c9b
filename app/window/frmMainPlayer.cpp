// The ripping page's CD player (Play, Stop and the playing track's time in the track list), the
// door button and its caption, which follows the tray.
#include <QComboBox>
#include <QPushButton>
#include <QTimer>
#include <algorithm>

#include "CdAudioDoor.h"
#include "CdPlayerButtons.h"
#include "MsgBox.h"
#include "TrackListView.h"
#include "TrayState.h"
#include "frmMain.h"

namespace plattmix::window {

namespace {

constexpr int kResultColumn = 5;
constexpr int kAudioRow = 1;

std::string Alias() {
    return kPlayerAlias;
}

// "00" format.
QString TwoDigits(int64_t value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

QString MinutesSeconds(int64_t milliseconds) {
    const int64_t seconds = std::max<int64_t>(0, milliseconds) / 1000;
    return TwoDigits(seconds / 60) + QStringLiteral(":") + TwoDigits(seconds % 60);
}

}  // namespace

int64_t frmMain::SendCommand(const std::string& command, std::string* errorText) {
    return audiocd::SendCommand(*cdAudio_, command, errorText);
}

void frmMain::StopPlayer() {
    if (player_)
        player_->Stop();
}

// The player follows the drive chosen now: its device is closed and opened anew.
void frmMain::ReopenPlayer() {
    if (!player_ || cboDrv->currentIndex() < 0)
        return;
    player_->Reopen(cboDrv->currentText().toStdString());
}

// The row to play: the current one when it is an audio track, else the first checked audio
// track, else the first audio track.
QTreeWidgetItem* frmMain::RowToPlay() const {
    const auto audio = [](const QTreeWidgetItem* row) {
        return row != nullptr && row->data(0, Qt::UserRole).toInt() == kAudioRow;
    };
    if (audio(ExplorerListView1->currentItem()))
        return ExplorerListView1->currentItem();
    QTreeWidgetItem* first = nullptr;
    for (int i = 0; i < ExplorerListView1->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = ExplorerListView1->topLevelItem(i);
        if (!audio(row))
            continue;
        if (row->checkState(0) == Qt::Checked)
            return row;
        if (first == nullptr)
            first = row;
    }
    return first;
}

void frmMain::Command5_Click() {
    if (isBusy || !player_)
        return;
    player_->PrepareToPlay(cboDrv->currentText().toStdString());
    QTreeWidgetItem* row = RowToPlay();
    if (row == nullptr)
        return;
    Timer6->start();
    const auto reply = player_->PlayFrom(row->data(0, kStartLbaRole).toInt());
    if (!reply.ok()) {
        Timer6->stop();
        MsgBox(this, QString::fromStdString(reply.errorText), MsgBoxStyle::Exclamation);
        return;
    }
    playing_ = true;
}

void frmMain::Command6_Click() {
    if (!player_)
        return;
    player_->Stop();
    playing_ = false;
    Timer6->stop();
    ShowPlayerStatus(QString(), -1);
}

// The playing track and its time, in that track's row: "[03] <01:23> 04:56" (position within
// the track, then its length); "No DISC" when the disc went away.
void frmMain::Timer6_Timer() {
    std::string error;
    const auto mode = cdAudio_->SendString("status " + Alias() + " mode");
    if (!mode.ok() || mode.result == "not ready" || mode.result == "open") {
        Timer6->stop();
        playing_ = false;
        ShowPlayerStatus(QStringLiteral("No DISC"), playerRow_);
        return;
    }
    const int64_t track = SendCommand("status " + Alias() + " current track");
    const int64_t position = SendCommand("status " + Alias() + " position");
    const std::string trackItem = " track " + std::to_string(track);
    const int64_t trackStart = SendCommand("status " + Alias() + " position" + trackItem);
    const int64_t length = SendCommand("status " + Alias() + " length" + trackItem, &error);
    if (mode.result != "playing") {
        Timer6->stop();
        playing_ = false;
        const std::string why = cdAudio_->PlaybackError(Alias());
        ShowPlayerStatus(QString::fromStdString(why), playerRow_);
        return;
    }
    ShowPlayerStatus(QStringLiteral("[") + TwoDigits(track) + QStringLiteral("] <") +
                         MinutesSeconds(position - trackStart) + QStringLiteral("> ") +
                         MinutesSeconds(length),
                     static_cast<int>(track));
}

// Writes text into the row of track (its "Ergebnis" column), clearing the row shown before. The
// rows are the ripping page's, also while another page is shown.
void frmMain::ShowPlayerStatus(const QString& text, int track) {
    const auto rowAt = [this](int row) { return ExplorerListView1->PageRow(kPageRip, row); };
    int row = -1;
    for (int i = 0; i < ExplorerListView1->PageRowCount(kPageRip); ++i) {
        if (rowAt(i)->text(0).toInt() == track)
            row = i;
    }
    if (track >= 0 && row < 0)
        row = playerRow_;
    if (playerRow_ >= 0 && playerRow_ != row) {
        if (QTreeWidgetItem* old = rowAt(playerRow_))
            old->setText(kResultColumn, QString());
    }
    playerRow_ = row;
    if (QTreeWidgetItem* item = rowAt(row))
        item->setText(kResultColumn, text);
}

int16_t frmMain::TrayState() {
    const std::string handle = SelectedDriveHandle();
    if (handle.empty())
        return scsi::kTrayUnknown;
    return scsi::GetTrayState(*transport_, handle);
}

// The door button: stop playing, then open a closed tray or close an open one.
void frmMain::Command4_Click() {
    if (!isBusy)
        Command6->click();
    const std::string drive = cboDrv->currentText().toStdString();
    switch (audiocd::PressEjectButton(TrayState(), *cdAudio_, drive)) {
        case audiocd::DoorMove::Opened:
            Command4->setText(Tr(QStringLiteral("Schließen")));
            break;
        case audiocd::DoorMove::Closed:
            Command4->setText(Tr(QStringLiteral("Disk Auswerfen")));
            break;
        case audiocd::DoorMove::OpenFailed:
            MsgBox(this, QStringLiteral("Konnte Laufwerk nicht öffnen! Bitte manuell versuchen!"),
                   MsgBoxStyle::Critical);
            break;
        case audiocd::DoorMove::CloseFailed:
            MsgBox(this,
                   QStringLiteral("Konnte Laufwerk nicht schließen! Bitte manuell versuchen!"),
                   MsgBoxStyle::Critical);
            break;
        case audiocd::DoorMove::None:
            break;
    }
    Timer2->start();
}

// The refresh tick's caption: what the button will do with the tray as it is now.
void frmMain::UpdateTrayCaption() {
    const int16_t state = TrayState();
    if (state == scsi::kTrayOpen)
        Command4->setText(Tr(QStringLiteral("Schließen")));
    else if (state == scsi::kTrayClosed)
        Command4->setText(Tr(QStringLiteral("Disk Auswerfen")));
}

}  // namespace plattmix::window
