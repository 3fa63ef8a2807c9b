// What the Start command of the ripping page reads from the window before a job runs: the
// target folder, the content kind of the first checked row and the rows handed to the job.
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "RipJob.h"

class QTreeWidget;

namespace plattmix::window {

// The content kind kept with each track row (Qt::UserRole of column 0).
enum JobKind { kJobNone = 0, kJobAudio = 1, kJobData = 2 };

struct FirstChecked {
    bool found = false;
    int kind = kJobNone;  // of the first checked row
};

// Scans the rows from the top for the first checked one.
FirstChecked FindFirstChecked(const QTreeWidget& list);

// The folder named by text with a "/" at its end, created with its missing parents. Nothing
// when text is empty or the folder still does not exist.
std::optional<std::string> PrepareTargetFolder(const QString& text);

// Every row in list order: the track number from the "Track" column and the check mark.
std::vector<audiocd::RipRow> RipRowsOf(const QTreeWidget& list);

}  // namespace plattmix::window
