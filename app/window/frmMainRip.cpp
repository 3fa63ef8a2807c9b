// The ripping page: which controls it shows for audio and data discs, the page change itself,
// the target folder, the output format hint, the selection commands of the track list and the
// Start command that checks the input and rips the checked tracks.
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <initializer_list>

#include "Dialogs.h"
#include "KeyState.h"
#include "MsgBox.h"
#include "OutputFormats.h"
#include "PageControls.h"
#include "RipEncoder.h"
#include "RipJob.h"
#include "RipStart.h"
#include "TabStrip.h"
#include "TrackListView.h"
#include "frmMain.h"
#include "modPaths.h"
#include "modSettings.h"

namespace plattmix::window {

namespace {

// The hint beside the file name for the format at a list index.
QString FormatHint(int index) {
    const std::string_view hint = encode::FormatAt(index).hint;
    return QString::fromUtf8(hint.data(), static_cast<qsizetype>(hint.size()));
}

const QString kTextNoTracks = QStringLiteral("Keine Tracks vorhannden!");
const QString kTextNoTarget = QStringLiteral("Bitte einen gültigen Ziel-Pfad eingeben");
const QString kTextNoneChecked =
    QStringLiteral("Keine Tracks angehakt!\r\nWollen sie alle Tracks auswählen und starten?");
const QString kTextCheckTracks = QStringLiteral("Bitte Tracks auswählen durch anhaken!");

enum SelectionCommand {
    kAll,
    kNone,
    kInvert,
    kEven,
    kOdd,
    kBelowMark,
    kAboveMark,
    kSelected,
};

}  // namespace

void frmMain::TabStrip1_Click(int index) {
    if (isLoading || index < 0)
        return;
    Label4->clear();
    if (currentPage_ == kPageBurn && !Command13->isHidden() &&
        MsgBox(this, QStringLiteral("Wollen sie die Zusammenstellung vorher noch speichern?"),
               MsgBoxStyle::QuestionYesNo) == vbYes)
        Command13->click();
    ExplorerListView1->ShowPageRows(index);
    currentPage_ = index;
    ShowPage(index);
    // The refresh would read the track list anew, and with it drop the results a running job
    // writes; it does nothing while a job runs anyway.
    if (!isBusy && jobPage_ == kNoJob)
        Timer2->start();
}

void frmMain::ShowPage(int page) {
    switch (page) {
        case kPageIso:
            ShowIsoPage();
            break;
        case kPageBurn:
            ShowBurnPage();
            break;
        default:
            ShowRipPage();
            break;
    }
    if (page != kPageRip)
        SetShown({CheckMusicBrainz, CheckSecure}, false);
}

void frmMain::ShowRipPage() {
    const bool audio = !IsDataCD;
    SetShown({cboDrv, Command1, Command4, Text1, Check2, ComboBox2, Label1, Label4}, true);
    SetShown({Command5[0], Command6, ComboBox3, Frame1}, audio);
    SetShown({CheckMusicBrainz, CheckSecure}, audio);
    SetShown({OptFormat, Text3, Label2[2]}, !audio);
    SetShown({Text2, Command7, Frame2, Command15[0], Command15[1], Check3, Check4, Check5, Check6},
             false);
    SetShown({OptNameBurn[0], OptNameBurn[1], Command8, PictureTotal, Label5[1]}, false);
    if (!audio)
        OptFormat->setChecked(true);
    ShowNameLabels(true, audio ? FormatHint(ComboBox3->currentIndex()) : QStringLiteral("+ .iso"));
    cmdOpen->setEnabled(true);
    ComboBox1->setEnabled(true);
    ComboBox1->lineEdit()->setPlaceholderText(Tr(QStringLiteral("Bitte Zielpfad auswählen --->")));
}

void frmMain::ShowNameLabels(bool shown, const QString& hint) {
    Label2[1]->setText(hint);
    SetShown({Label2[0], Label2[1]}, shown);
}

void frmMain::ComboBox3_Click(int index) {
    Label2[1]->setText(FormatHint(index));
}

void frmMain::cmdOpen_Click() {
    if (currentPage_ == kPageBurn && OptNameBurn[1]->isChecked()) {
        const QString image =
            OpenFileDialog(this, QStringLiteral("ISO Dateien brennen"),
                           QStringLiteral("ISO Dateien|*.iso"), ComboBox1->currentText());
        if (!image.isEmpty())
            ComboBox1->setEditText(image);
        return;
    }
    const QString chosen = BrowseForFolder(
        this, QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"),
        ComboBox1->currentText());
    if (chosen.isEmpty())
        return;
    const std::string folder = shell::AddBackslash(chosen.toStdString());
    std::vector<std::string> entries;
    for (int i = 0; i < ComboBox1->count(); ++i)
        entries.push_back(ComboBox1->itemText(i).toStdString());
    const auto recent = shell::AddRecentFolder(Paths(), entries, folder);
    ComboBox1->clear();
    for (const auto& entry : recent)
        ComboBox1->addItem(QString::fromStdString(entry));
    ComboBox1->setEditText(QString::fromStdString(folder));
}

void frmMain::ComboBox2_Click(int index) {
    ApplySelectionCommand(index);
}

void frmMain::SetRowChecked(int row, bool checked) {
    QTreeWidgetItem* item = ExplorerListView1->topLevelItem(row);
    if (item == nullptr)
        return;
    item->setCheckState(0, checked ? Qt::Checked : Qt::Unchecked);
    item->setSelected(checked);
}

int frmMain::MarkedRow() const {
    const int row = ExplorerListView1->indexOfTopLevelItem(ExplorerListView1->currentItem());
    return row < 0 ? 0 : row;
}

void frmMain::ApplySelectionCommand(int command) {
    const int rows = ExplorerListView1->topLevelItemCount();
    const auto checked = [this](int row) {
        return ExplorerListView1->topLevelItem(row)->checkState(0) == Qt::Checked;
    };
    switch (command) {
        case kAll:
            for (int row = 0; row < rows; ++row)
                SetRowChecked(row, true);
            break;
        case kNone:
            for (int row = rows - 1; row >= 0; --row)
                SetRowChecked(row, false);
            break;
        case kInvert:
            for (int row = rows - 1; row >= 0; --row)
                SetRowChecked(row, !checked(row));
            break;
        case kEven:
        case kOdd:
            // Positions count from 0: the even tracks stand at the odd positions.
            for (int row = 0; row < rows; ++row)
                SetRowChecked(row, (row % 2 == 1) == (command == kEven));
            break;
        case kBelowMark:
            for (int row = MarkedRow(); row < rows; ++row)
                SetRowChecked(row, true);
            break;
        case kAboveMark:
            for (int row = std::min(MarkedRow(), rows - 1); row >= 0; --row)
                SetRowChecked(row, true);
            break;
        case kSelected:
            for (int row = rows - 1; row >= 0; --row) {
                if (ExplorerListView1->topLevelItem(row)->isSelected())
                    SetRowChecked(row, true);
            }
            break;
        default:
            break;
    }
}

// The Start command on the ripping and image pages: the name prefix, the list, the target
// folder and the check marks are checked in this order; the first refusal ends the command.
void frmMain::StartRipOrIso() {
    if (Text1->text().isEmpty())
        Text1->setText(QStringLiteral("Track"));
    const std::string prefix = Text1->text().toStdString();
    Abbort = false;
    Command6->click();  // playback and extraction do not share the drive
    if (ExplorerListView1->topLevelItemCount() == 0) {
        MsgBox(this, kTextNoTracks, MsgBoxStyle::Exclamation);
        ExplorerListView1->SetEmptyListText(Tr(kTextNoTracks));
        return;
    }
    const auto targetFolder = PrepareTargetFolder(ComboBox1->currentText());
    if (!targetFolder) {
        MsgBox(this, kTextNoTarget, MsgBoxStyle::Exclamation);
        return;
    }
    FirstChecked first = FindFirstChecked(*ExplorerListView1);
    if (currentPage_ == kPageIso) {
        if (!QFileInfo(Text2->text()).isDir()) {
            ShowNoSourceMessage();
            return;
        }
        first.kind = kJobData;
    }
    if (first.kind != kJobAudio && first.kind != kJobData && !first.found) {
        if (!AskToCheckAllRows())
            return;
        first = FindFirstChecked(*ExplorerListView1);
    }
    if (!first.found) {
        MsgBox(this, kTextCheckTracks, MsgBoxStyle::Information);
        EndStep();
        return;
    }
    if (first.kind == kJobData) {
        if (CreateIsoImageJob(prefix, *targetFolder))
            EndStep();
        return;
    }
    if (first.kind == kJobAudio) {
        RipAudioTracks(prefix, *targetFolder);
        EndStep();
    }
}

// Answers whether the user wants every row; Yes checks them, from the last to the first.
bool frmMain::AskToCheckAllRows() {
    if (MsgBox(this, kTextNoneChecked, MsgBoxStyle::QuestionYesNo) != vbYes)
        return false;
    for (int row = ExplorerListView1->topLevelItemCount() - 1; row >= 0; --row)
        SetRowChecked(row, true);
    return true;
}

std::string frmMain::SelectedDriveHandle() const {
    if (!transport_ || cboDrv->currentIndex() < 0)
        return {};
    auto index = static_cast<int16_t>(cboDrv->currentData().toInt());
    return transport_->DriveHandle(index);
}

void frmMain::RipAudioTracks(const std::string& prefix, const std::string& targetFolder) {
    isBusy = true;
    audiocd::RipJobParams params;
    params.handle = SelectedDriveHandle();
    params.targetFolder = targetFolder;
    params.namePrefix = prefix;
    params.runningNumber = OptNameCounter[1]->isChecked();
    params.numberFirst = Check2->isChecked();
    params.formatIndex = ComboBox3->currentIndex();
    params.rows = RipRowsOf(*ExplorerListView1);

    audiocd::JobHooks hooks;
    hooks.progress = [this](int percent) { ProgressBar1->setValue(percent); };
    hooks.yield = YieldHook();
    hooks.warn = [this](const std::string& text) {
        MsgBox(this, QString::fromStdString(text), MsgBoxStyle::Exclamation);
    };
    hooks.aborted = [this] { return Abbort; };
    // The ripping page's own rows, also while another page is shown.
    const auto rowText = [this](size_t row, const std::string& text) {
        if (QTreeWidgetItem* item = ExplorerListView1->PageRow(kPageRip, static_cast<int>(row)))
            item->setText(5, QString::fromStdString(text));
    };
    // Other formats go through the encoder, tagged with the disc's titles: its CD-Text, or
    // the look-up's.
    audiocd::EncodeFn encoder;
    if (params.formatIndex != audiocd::kWavFormatIndex)
        encoder = encode::MakeRipEncoder(params, TitlesForRip(params.handle));
    if (CheckSecure->isChecked())
        RunSecureRip(params, hooks, rowText, encoder);
    else
        audiocd::RunRipJob(*transport_, params, hooks, rowText, encoder);
}

void frmMain::EndStep() {
    isBusy = false;
    ProgressBar1->setValue(0);
    if (Check1->isChecked() && !Abbort)
        close();
}

}  // namespace plattmix::window
