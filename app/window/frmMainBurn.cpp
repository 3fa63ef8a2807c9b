// The burning page: a compilation of files and folders, or an existing image file.
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "PageControls.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

void frmMain::ShowBurnPage() {
    SetShown({cboDrv, Command1, Command4, Text3, Label2[2], Frame2, Check5, Label4}, true);
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

void frmMain::Command8_Click() {
    // Erasing a rewritable disc comes with the burning work.
}

}  // namespace plattmix::window
