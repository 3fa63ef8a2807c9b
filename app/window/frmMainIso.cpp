// The ISO page: an image file made from a folder, and the same job for the mounted data disc on
// the ripping page.
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

#include "CompilationList.h"
#include "Dialogs.h"
#include "IsoImage.h"
#include "KeyState.h"
#include "MsgBox.h"
#include "PageControls.h"
#include "ServiceChoice.h"
#include "SizeFormat.h"
#include "TrackListView.h"
#include "VirtualDrive.h"
#include "frmMain.h"
#include "modPaths.h"

namespace plattmix::window {

namespace {

constexpr int kSizeColumn = 1;
constexpr int kBytesColumn = 2;
constexpr int kResultColumn = 5;

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

authoring::ScanHooks WindowScanHooks() {
    return {EscapeHook(), YieldHook()};
}

}  // namespace

void frmMain::ShowIsoPage() {
    SetShown({Text2, Command7, OptFormat, Text1, ComboBox2, Command15[0], Command15[1]}, true);
    SetShown({cboDrv, Command1, Command4, Command5[0], Command6, ComboBox3, Frame1, Check2}, false);
    SetShown({Text3, Label2[2], Frame2, Check3, Check4, Check5, Check6, Label4}, false);
    SetShown({OptNameBurn[0], OptNameBurn[1], Command8, PictureTotal, Label5[1]}, false);
    // Label1 stays as the previous page left it.
    OptFormat->setChecked(true);
    ShowNameLabels(true, QStringLiteral("+ .iso"));
    cmdOpen->setEnabled(true);
    ComboBox1->setEnabled(true);
    ComboBox1->lineEdit()->setPlaceholderText(Tr(QStringLiteral("Bitte Zielpfad auswählen --->")));
    if (Text2->text().isEmpty())
        Text2->setText(Q(DriveRoot()));
    AddSourceRow();
    ShowSourceSize();
}

// The list holds one checked row that stands for the source folder.
void frmMain::AddSourceRow() {
    if (ExplorerListView1->topLevelItemCount() == 0) {
        auto* item = new QTreeWidgetItem(ExplorerListView1);
        item->setData(0, Qt::UserRole, 2);
    }
    ExplorerListView1->topLevelItem(0)->setText(0, Text2->text());
    SetRowChecked(0, true);
}

void frmMain::Command7_Click() {
    const QString folder = BrowseForFolder(
        this, QStringLiteral("Ordner auswählen, von dem ein ISO Image erstellt werden soll"),
        Text2->text());
    if (folder.isEmpty())
        return;
    Text2->setText(folder);
    AddSourceRow();
    PlaceBusyPicture();
    Picture1->show();
    YieldHook()();
    ShowListingTotal(
        Q(authoring::ShowOrdnerInhalt(folder.toStdString(), listing_, WindowScanHooks())));
    Picture1->hide();
}

// The ISO page's row, also when the user went to another page while the folder was read.
void frmMain::ShowListingTotal(const QString& total) {
    if (QTreeWidgetItem* row = ExplorerListView1->PageRow(kPageIso, 0))
        row->setText(kSizeColumn, total);
}

// The source folder's size as the compilation measures folders.
void frmMain::ShowSourceSize() {
    if (ExplorerListView1->PageRow(kPageIso, 0) == nullptr || !QFileInfo(Text2->text()).isDir())
        return;
    const auto entry = authoring::MeasureEntry(Text2->text().toStdString(), WindowScanHooks());
    if (QTreeWidgetItem* row = ExplorerListView1->PageRow(kPageIso, 0)) {
        row->setText(kSizeColumn, Q(authoring::FormatGroesse(entry.bytes)));
        row->setText(kBytesColumn, QString::number(entry.bytes));
    }
}

void frmMain::ShowNoSourceMessage() {
    MsgBox(this, QStringLiteral("Bitte einen gültigen Quell-Pfad eingeben"),
           MsgBoxStyle::Exclamation);
}

// The folder the image shows: the ISO page's source, or the data disc's mount point.
std::string frmMain::IsoSource() const {
    if (currentPage_ == kPageIso)
        return Text2->text().toStdString();
    return DriveRoot();
}

bool frmMain::CreateIsoImageJob(const std::string& prefix, const std::string& targetFolder) {
    const std::string source = IsoSource();
    if (source.empty() || !QFileInfo(Q(source)).isDir()) {
        // A data disc that the desktop has not mounted has no files to read.
        ShowNoSourceMessage();
        return true;
    }
    isBusy = true;
    // The status goes into the first row of the page the job was started on, whichever page
    // the user looks at meanwhile.
    const int page = currentPage_;
    const auto showStatus = [this, page](const QString& text) {
        if (QTreeWidgetItem* first = ExplorerListView1->PageRow(page, 0))
            first->setText(kResultColumn, text);
    };
    QTreeWidgetItem* first = ExplorerListView1->PageRow(page, 0);
    if (first == nullptr || first->checkState(0) != Qt::Checked) {
        MsgBox(this, QStringLiteral("Bitte Tracks auswählen durch anhaken!"),
               MsgBoxStyle::Information);
        return true;
    }
    showStatus(Tr(QStringLiteral("Schreibe...")));
    authoring::IsoJobHooks hooks;
    hooks.scan = WindowScanHooks();
    hooks.progress = [this](int percent) { ProgressBar1->setValue(percent); };
    hooks.cancelled = [this] { return Abbort; };
    YieldHook()();
    // A listing stopped by Escape makes no image: CreateIsoImage ends it as an abort.
    authoring::ShowOrdnerInhalt(source, listing_, hooks.scan);

    authoring::IsoImageParams params;
    params.sourceFolder = source;
    params.volumeName = Text3->text().toStdString();
    params.outputPath = targetFolder + prefix + ".iso";

    PlaceBusyPicture();
    Picture1->show();
    ProgressBar1->setMaximum(100);
    const auto result = authoring::CreateIsoImage(params, listing_, hooks);
    Picture1->hide();
    if (result.outcome == authoring::IsoOutcome::NoFiles) {
        showStatus(QString());
        MsgBox(this, Q(authoring::NoFilesMessage(source)), MsgBoxStyle::Exclamation);
        return true;
    }
    showStatus(Tr(QString::fromUtf8(IsoStatusText(result.outcome))));
    // An image that was not finished keeps the window open even when Check1 asks to close it.
    if (result.outcome != authoring::IsoOutcome::Done)
        Abbort = true;
    return true;
}

namespace {

MsgBoxStyle StyleOf(vdrive::MessageIcon icon) {
    switch (icon) {
        case vdrive::MessageIcon::Information:
            return MsgBoxStyle::Information;
        case vdrive::MessageIcon::Exclamation:
            return MsgBoxStyle::Exclamation;
        case vdrive::MessageIcon::Critical:
            return MsgBoxStyle::Critical;
        default:
            return MsgBoxStyle::Plain;
    }
}

}  // namespace

// Attaches (index 0) or detaches the chosen image as a drive and shows every outcome.
void frmMain::Command15_Click(int index) {
    const QString image = OpenFileDialog(this, QString::fromUtf8(vdrive::kDialogTitle),
                                         QString::fromUtf8(vdrive::kDialogFilter), QString());
    if (image.isEmpty())
        return;
    auto service =
        options_.virtualDrives ? options_.virtualDrives() : vdrive::ChooseVirtualDriveService();
    const vdrive::DriveResult result = index == 0
                                           ? vdrive::MountIso(service.get(), image.toStdString())
                                           : vdrive::UnmountIso(service.get(), image.toStdString());
    for (const auto& message : result.messages)
        MsgBox(this, Q(message.text), StyleOf(message.icon), Q(message.title));
}

}  // namespace plattmix::window
