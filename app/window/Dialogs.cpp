#include "Dialogs.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <utility>

#include "modPaths.h"

namespace plattmix::window {

namespace {

const QString kSuiteTitle = QStringLiteral("Trovalis");

DialogAnswerer& Answerer() {
    static DialogAnswerer answerer;
    return answerer;
}

QString NameFilter(const shell::FileFilter& pair) {
    const QString description = QString::fromStdString(pair.description);
    QString pattern = QString::fromStdString(pair.pattern);
    pattern.replace(QLatin1Char(';'), QLatin1Char(' '));
    if (description.contains(QLatin1Char('(')))
        return description;
    return description + QStringLiteral(" (") + pattern + QLatin1Char(')');
}

// The dialog the request describes, without showing it.
void Prepare(QFileDialog& dialog, const DialogRequest& request) {
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    if (!request.initialDir.isEmpty())
        dialog.setDirectory(request.initialDir);
    if (!request.nameFilters.isEmpty()) {
        dialog.setNameFilters(request.nameFilters);
        const auto index = static_cast<qsizetype>(request.filterIndex - 1);
        if (index >= 0 && index < request.nameFilters.size())
            dialog.selectNameFilter(request.nameFilters.at(index));
    }
    if (!request.initialName.isEmpty())
        dialog.selectFile(request.initialName);
    if (!request.defaultExt.isEmpty())
        dialog.setDefaultSuffix(request.defaultExt);
}

void SetMode(QFileDialog& dialog, const DialogRequest& request, bool includeFiles) {
    switch (request.kind) {
        case DialogKind::OpenFile:
            dialog.setAcceptMode(QFileDialog::AcceptOpen);
            dialog.setFileMode(request.fileMustExist ? QFileDialog::ExistingFile
                                                     : QFileDialog::AnyFile);
            break;
        case DialogKind::OpenFiles:
            dialog.setAcceptMode(QFileDialog::AcceptOpen);
            dialog.setFileMode(QFileDialog::ExistingFiles);
            break;
        case DialogKind::SaveFile:
            dialog.setAcceptMode(QFileDialog::AcceptSave);
            dialog.setFileMode(QFileDialog::AnyFile);
            break;
        case DialogKind::Folder:
            dialog.setAcceptMode(QFileDialog::AcceptOpen);
            dialog.setFileMode(QFileDialog::Directory);
            dialog.setOption(QFileDialog::ShowDirsOnly, !includeFiles);
            break;
    }
}

// The prompt of the folder browser, shown below the dialog's own controls.
void AddPrompt(QFileDialog& dialog, const QString& prompt) {
    auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
    if (grid == nullptr || prompt.isEmpty())
        return;
    auto* label = new QLabel(prompt, &dialog);
    label->setWordWrap(true);
    grid->addWidget(label, grid->rowCount(), 0, 1, grid->columnCount());
}

QStringList Run(QWidget* owner, DialogRequest& request, bool includeFiles = false) {
    if (Answerer())
        return Answerer()(request);
    QFileDialog dialog(owner);
    SetMode(dialog, request, includeFiles);
    Prepare(dialog, request);
    if (request.kind == DialogKind::Folder) {
        dialog.setWindowTitle(kSuiteTitle);
        AddPrompt(dialog, request.title);
    } else {
        dialog.setWindowTitle(request.title);
    }
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const auto chosen = request.nameFilters.indexOf(dialog.selectedNameFilter());
    if (chosen >= 0)
        request.filterIndex = static_cast<int>(chosen) + 1;
    return dialog.selectedFiles();
}

DialogRequest Request(DialogKind kind, const QString& title, const QString& filter,
                      const QString& initialDir) {
    DialogRequest request;
    request.kind = kind;
    request.title = title;
    request.filter = filter;
    request.nameFilters = QtNameFilters(filter);
    request.initialDir = initialDir;
    return request;
}

QString First(const QStringList& paths) {
    return paths.isEmpty() ? QString() : paths.first();
}

}  // namespace

QStringList QtNameFilters(const QString& filter) {
    QStringList filters;
    for (const auto& pair : shell::ParseFilter(filter.toStdString()))
        filters << NameFilter(pair);
    return filters;
}

QString OpenFileDialog(QWidget* owner, const QString& title, const QString& filter,
                       const QString& initialDir, bool fileMustExist, const QString& initialName) {
    DialogRequest request = Request(DialogKind::OpenFile, title, filter, initialDir);
    request.fileMustExist = fileMustExist;
    request.initialName = initialName;
    return First(Run(owner, request));
}

QStringList OpenFilesDialog(QWidget* owner, const QString& title, const QString& filter,
                            const QString& initialDir) {
    DialogRequest request = Request(DialogKind::OpenFiles, title, filter, initialDir);
    request.fileMustExist = true;
    return Run(owner, request);
}

QString SaveFileDialog(QWidget* owner, const QString& title, const QString& filter,
                       const QString& initialDir, const QString& initialName,
                       const QString& defaultExt, int& filterIndex) {
    DialogRequest request = Request(DialogKind::SaveFile, title, filter, initialDir);
    request.initialName = initialName;
    request.defaultExt = defaultExt;
    request.filterIndex = filterIndex;
    const QString chosen = First(Run(owner, request));
    if (!chosen.isEmpty())
        filterIndex = request.filterIndex;
    return chosen;
}

QString BrowseForFolder(QWidget* owner, const QString& title, const QString& initialFolder,
                        bool includeFiles) {
    const QString start =
        initialFolder.isEmpty() ? QString::fromStdString(shell::HomeFolder()) : initialFolder;
    DialogRequest request = Request(DialogKind::Folder, title, QString(), start);
    return First(Run(owner, request, includeFiles));
}

DialogAnswerer SetDialogAnswerer(DialogAnswerer answerer) {
    return std::exchange(Answerer(), std::move(answerer));
}

}  // namespace plattmix::window
