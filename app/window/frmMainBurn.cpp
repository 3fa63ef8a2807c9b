// The burning page: a compilation of files and folders, or an existing image file.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include "BurnJob.h"
#include "EraseJob.h"
#include "KeyState.h"
#include "MsgBox.h"
#include "PageControls.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

void frmMain::ShowBurnPage() {
    SetShown({cboDrv, Command1, Command4, Text3, Label2[2], Frame2, Check5, Check6, Label4}, true);
    SetShown({OptNameBurn[0], OptNameBurn[1], Command8, PictureTotal, Label5[1]}, true);
    SetShown({Command5[0], Command6, Text2, Command7, ComboBox3, OptFormat, Frame1, Text1}, false);
    SetShown({Check2, ComboBox2, Label1, Command15[0], Command15[1]}, false);
    ShowNameLabels(false, Label2[1]->text());
    const bool isoFile = OptNameBurn[1]->isChecked();
    SetShown({Check3, Check4}, !isoFile);
    cmdOpen->setEnabled(isoFile);
    ComboBox1->setEnabled(isoFile);
    ComboBox1->lineEdit()->setPlaceholderText(Tr(QStringLiteral("Bitte ISO Datei auswählen --->")));
    ExplorerListView1->SetEmptyListText(
        Tr(QStringLiteral("Bitte fügen Sie Ordner oder Dateien hinzu...")));
    DrawDiscUsage();
}

void frmMain::OptNameBurn_Click(int index) {
    if (index == 1) {
        SetShown({Command9, Command10, Command11, Command12, Command13, Command14}, false);
        cmdOpen->setEnabled(true);
        ComboBox1->setEnabled(true);
        ComboBox1->setEditText(QString());
        SetShown({Check3, Check4}, false);
        return;
    }
    SetShown({Command11, Command14}, true);
    cmdOpen->setEnabled(false);
    ComboBox1->setEnabled(false);
    SetShown({Check3, Check4}, true);
}

void frmMain::Check3_Click() {
    // A disc that is not written as multisession is always closed.
    if (Check3->isChecked()) {
        Check4->setEnabled(true);
        Check4->setChecked(false);
    } else {
        Check4->setChecked(true);
        Check4->setEnabled(false);
    }
}

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

MsgBoxStyle StyleOf(authoring::MessageIcon icon) {
    switch (icon) {
        case authoring::MessageIcon::Information:
            return MsgBoxStyle::Information;
        case authoring::MessageIcon::Critical:
            return MsgBoxStyle::Critical;
        case authoring::MessageIcon::Question:
            return MsgBoxStyle::QuestionYesNo;
        default:
            return MsgBoxStyle::Exclamation;
    }
}

constexpr int kResultColumn = 5;

}  // namespace

authoring::IBurnService& frmMain::BurnService() {
    if (!burnService_)
        burnService_ =
            options_.burnService ? options_.burnService() : authoring::MakeLibburnService();
    return *burnService_;
}

// What a burn or an erase shows in the window: the status line, the progress bar, questions
// and message boxes; Escape and "Abbrechen" both stop the write.
authoring::BurnHooks frmMain::WindowBurnHooks() {
    authoring::BurnHooks hooks;
    const auto escape = EscapeHook();
    hooks.scan.escapePressed = [this, escape] { return Abbort || escape(); };
    hooks.scan.yield = YieldHook();
    hooks.status = [this](const std::string& text) { Label4->setText(Tr(Q(text))); };
    hooks.progress = [this](int percent) { ProgressBar1->setValue(percent); };
    hooks.askYesNo = [this](const std::string& question) {
        return MsgBox(this, Q(question), MsgBoxStyle::QuestionYesNo) == vbYes;
    };
    hooks.showMessage = [this](const std::string& text, authoring::MessageIcon icon) {
        MsgBox(this, Q(text), StyleOf(icon));
    };
    return hooks;
}

// The Start command on the burning page: the chosen image, or the checked rows of the
// compilation. A burn that went well closes the program when Check1 asks for it, else the page
// is read again.
void frmMain::StartBurnJob() {
    authoring::BurnResult result;
    Abbort = false;
    if (OptNameBurn[1]->isChecked()) {
        const QString image = ComboBox1->currentText();
        if (image.isEmpty() || !QFileInfo::exists(image)) {
            MsgBox(this, QStringLiteral("Bitte einen gültigen Pfad eingeben"),
                   MsgBoxStyle::Exclamation);
            return;
        }
        authoring::BurnIsoParams params;
        params.drive = BurnDriveAddress();
        params.isoPath = image.toStdString();
        params.eject = Check5->isChecked();
        params.verify = Check6->isChecked();
        result = RunBurn([&](const authoring::BurnHooks& hooks) {
            return authoring::BurnIsoImage(BurnService(), params, hooks);
        });
    } else {
        authoring::BurnCompilationParams params;
        params.drive = BurnDriveAddress();
        for (int row = 0; row < ExplorerListView1->topLevelItemCount(); ++row) {
            QTreeWidgetItem* item = ExplorerListView1->topLevelItem(row);
            if (item->checkState(0) == Qt::Checked)
                params.paths.push_back(item->text(0).toStdString());
        }
        params.volumeName = Text3->text().toStdString();
        params.multisession = Check3->isChecked();
        params.closeDisc = Check4->isChecked();
        params.eject = Check5->isChecked();
        params.verify = Check6->isChecked();
        result = RunBurn([&](const authoring::BurnHooks& hooks) {
            return authoring::BurnZusammenstellung(BurnService(), params, hooks);
        });
        if (!result.listStatus.empty()) {
            // The burning page's row, also when the user went to another page meanwhile.
            if (QTreeWidgetItem* first = ExplorerListView1->PageRow(kPageBurn, 0))
                first->setText(kResultColumn, Tr(Q(result.listStatus)));
        }
    }
    if (result.outcome != authoring::BurnOutcome::Done)
        return;
    if (Check1->isChecked())
        close();
    else
        Timer2->start();
}

authoring::BurnResult frmMain::RunBurn(
    const std::function<authoring::BurnResult(const authoring::BurnHooks&)>& job) {
    isBusy = true;
    DiskBusy = true;
    ProgressBar1->setValue(0);
    ProgressBar1->show();
    const auto result = job(WindowBurnHooks());
    DiskBusy = false;
    isBusy = false;
    return result;
}

// "Disk löschen": the question, the quick blanking with the busy picture and the hourglass, the
// result in the status line; the page is read again afterwards.
void frmMain::Command8_Click() {
    if (isBusy || DiskBusy)
        return;
    authoring::EraseParams params;
    params.drive = BurnDriveAddress();
    params.eject = Check5->isChecked();
    authoring::EraseHooks hooks;
    hooks.burn = WindowBurnHooks();
    const bool barShown = !ProgressBar1->isHidden();
    hooks.busy = [this, barShown](bool busy) {
        PlaceBusyPicture();
        Picture1->setVisible(busy);
        ProgressBar1->setVisible(!busy && barShown);
        if (busy)
            QApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QApplication::restoreOverrideCursor();
    };
    DiskBusy = true;
    isBusy = true;
    authoring::EraseDisk(BurnService(), params, hooks);
    isBusy = false;
    DiskBusy = false;
    Timer2->start();
}

}  // namespace plattmix::window
