// The file and folder dialogs, over QFileDialog. Filters are written the program's way,
// "ISO Dateien|*.iso|Alle|*.*", and turned into the dialog's own form here. Cancelling any
// dialog answers an empty text (or list). Like MsgBox, the dialogs can be answered by the tests.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

namespace plattmix::window {

enum class DialogKind { OpenFile, OpenFiles, SaveFile, Folder };

struct DialogRequest {
    DialogKind kind = DialogKind::OpenFile;
    QString title;            // the prompt (for the folder browser) or the dialog's caption
    QString filter;           // as the program wrote it, with "|"
    QStringList nameFilters;  // as the dialog shows it
    QString initialDir;
    QString initialName;
    QString defaultExt;
    bool fileMustExist = false;
    int filterIndex = 1;  // 1-based; the save dialog hands the chosen one back
};

// "ISO Dateien|*.iso" becomes "ISO Dateien (*.iso)"; a description that already names its
// pattern in brackets is kept as it is.
QStringList QtNameFilters(const QString& filter);

QString OpenFileDialog(QWidget* owner, const QString& title, const QString& filter,
                       const QString& initialDir, bool fileMustExist = true,
                       const QString& initialName = QString());
// Several files at once; empty when cancelled.
QStringList OpenFilesDialog(QWidget* owner, const QString& title, const QString& filter,
                            const QString& initialDir);
// filterIndex (1-based) preselects a filter and receives the chosen one when confirmed.
QString SaveFileDialog(QWidget* owner, const QString& title, const QString& filter,
                       const QString& initialDir, const QString& initialName,
                       const QString& defaultExt, int& filterIndex);
// The folder browser, captioned with the suite's name and showing title as its prompt. With no
// initial folder it starts in the home folder. includeFiles shows files as well.
QString BrowseForFolder(QWidget* owner, const QString& title, const QString& initialFolder,
                        bool includeFiles = false);

// Answers in place of a person: the chosen paths, or an empty list for Cancel.
using DialogAnswerer = std::function<QStringList(DialogRequest& request)>;
DialogAnswerer SetDialogAnswerer(DialogAnswerer answerer);

}  // namespace plattmix::window
