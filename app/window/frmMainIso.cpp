// The ISO page: an image file made from a folder.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "Dialogs.h"
#include "PageControls.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

void frmMain::ShowIsoPage() {
    SetShown({Text2, Command7, OptFormat, Text1, ComboBox2, Command15[0], Command15[1]}, true);
    SetShown({cboDrv, Command1, Command4, Command5[0], Command6, ComboBox3, Frame1, Check2}, false);
    SetShown({Text3, Label2[2], Frame2, Check3, Check4, Check5, Label4}, false);
    SetShown({OptNameBurn[0], OptNameBurn[1], Command8, PictureTotal, Label5[1]}, false);
    // Label1 stays as the previous page left it.
    OptFormat->setChecked(true);
    ShowNameLabels(true, QStringLiteral("+ .iso"));
    cmdOpen->setEnabled(true);
    ComboBox1->setEnabled(true);
    ComboBox1->lineEdit()->setPlaceholderText(Tr(QStringLiteral("Bitte Zielpfad auswählen --->")));
    if (Text2->text().isEmpty())
        Text2->setText(QString::fromStdString(DriveRoot()));
    AddSourceRow();
    ShowSourceSize();
}

// The list holds one checked row that stands for the source folder.
void frmMain::AddSourceRow() {
    if (ExplorerListView1->topLevelItemCount() == 0) {
        auto* item = new QTreeWidgetItem(ExplorerListView1);
        item->setText(0, Text2->text());
        item->setData(0, Qt::UserRole, 2);
    }
    SetRowChecked(0, true);
}

void frmMain::Command7_Click() {
    const QString folder = BrowseForFolder(
        this, QStringLiteral("Ordner von dem ein ISO-Image erstellt werden soll"), Text2->text());
    if (!folder.isEmpty())
        Text2->setText(folder);
}

void frmMain::ShowSourceSize() {
    // The source folder's size is shown once the compilation can measure folders.
}

}  // namespace plattmix::window
