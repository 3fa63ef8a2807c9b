// The burning page's compilation: files and folders gathered for a data disc, saved to and
// loaded from a list file.
#include <QLabel>
#include <QPushButton>

#include "CompilationList.h"
#include "Dialogs.h"
#include "KeyState.h"
#include "MsgBox.h"
#include "PageControls.h"
#include "SizeFormat.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

namespace {

constexpr int kSizeColumn = 1;
constexpr int kBytesColumn = 2;

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

void frmMain::AddCompilationRow(const std::string& path) {
    const auto entry = authoring::MeasureEntry(path, {EscapeHook(), YieldHook()});
    auto* row = new QTreeWidgetItem;
    row->setText(0, Q(entry.path));
    row->setText(kSizeColumn, Q(authoring::FormatGroesse(entry.bytes)));
    row->setText(kBytesColumn, QString::number(entry.bytes));
    row->setCheckState(0, Qt::Checked);
    // The user may have gone to another page while a large folder was measured.
    ExplorerListView1->AddPageRow(kPageBurn, row);
}

void frmMain::ShowCompilationButtons() {
    SetShown({Command10, Command9, Command13, Command14, Command12}, true);
}

void frmMain::Command10_Click() {
    const QStringList files = OpenFilesDialog(this, QStringLiteral("Dateien brennen"),
                                              QStringLiteral("alle Dateien (*.*)|*.*"), QString());
    for (const QString& file : files)
        AddCompilationRow(file.toStdString());
    if (!files.isEmpty())
        TotalSizeZusammenstellung();
}

void frmMain::Command9_Click() {
    const QString folder = BrowseForFolder(
        this, QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"), QString());
    if (folder.isEmpty())
        return;
    AddCompilationRow(folder.toStdString());
    TotalSizeZusammenstellung();
}

// Removes every selected row, from the last to the first, and selects the row that moved into
// the place of the last one removed, so that the next press goes on removing.
void frmMain::Command12_Click() {
    int lastRemoved = -1;
    for (int row = ExplorerListView1->topLevelItemCount() - 1; row >= 0; --row) {
        if (ExplorerListView1->topLevelItem(row)->isSelected()) {
            delete ExplorerListView1->takeTopLevelItem(row);
            lastRemoved = row;
        }
    }
    if (lastRemoved >= 0) {
        if (QTreeWidgetItem* next = ExplorerListView1->topLevelItem(lastRemoved)) {
            next->setSelected(true);
            ExplorerListView1->setCurrentItem(next);
        }
    }
    TotalSizeZusammenstellung();
}

void frmMain::Command11_Click() {
    ExplorerListView1->clear();
    Label4->setText(Tr(QStringLiteral("Bitte fügen Sie Ordner oder Dateien hinzu...")));
    ShowCompilationButtons();
    TotalSizeZusammenstellung();
}

void frmMain::Command13_Click() {
    int filterIndex = 1;
    const QString name =
        SaveFileDialog(this, QString(), QStringLiteral("Textdatei (*.txt)|*.txt"), QString(),
                       Q(authoring::kListFileDefaultName), QStringLiteral("txt"), filterIndex);
    if (!name.isEmpty())
        SaveTextOrdner(name);
}

void frmMain::Command14_Click() {
    const QString name =
        OpenFileDialog(this, QString(), QStringLiteral("Text-Dateien (*.txt)|*.txt"), QString());
    if (!name.isEmpty())
        LoadTextOrdner(name);
}

void frmMain::SaveTextOrdner(const QString& fileName) {
    const int rows = ExplorerListView1->topLevelItemCount();
    if (rows == 0) {
        MsgBox(this, Q(authoring::kTextNothingToSave), MsgBoxStyle::Critical);
        return;
    }
    std::vector<std::string> paths;
    for (int row = 0; row < rows; ++row)
        paths.push_back(ExplorerListView1->topLevelItem(row)->text(0).toStdString());
    // A list that could not be written (a full disk, a folder without write access) must not
    // pass for saved.
    if (!authoring::UnicodeFile_Write_WithBOM(fileName.toStdString(),
                                              authoring::ListFileText(paths)))
        MsgBox(this,
               Tr(QStringLiteral("Die Liste konnte nicht gespeichert werden:")) +
                   QStringLiteral("\r\n") + fileName,
               MsgBoxStyle::Critical);
}

// Appends the list's entries that still exist, measured anew.
void frmMain::LoadTextOrdner(const QString& fileName) {
    for (const auto& path : authoring::ReadListFile(fileName.toStdString()))
        AddCompilationRow(path);
    ShowCompilationButtons();
    TotalSizeZusammenstellung();
}

}  // namespace plattmix::window
