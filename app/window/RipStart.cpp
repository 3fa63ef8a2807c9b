#include "RipStart.h"

#include <QTreeWidget>
#include <filesystem>
#include <system_error>

#include "modPaths.h"

namespace plattmix::window {

namespace {

bool IsChecked(const QTreeWidgetItem& item) {
    return item.checkState(0) == Qt::Checked;
}

}  // namespace

FirstChecked FindFirstChecked(const QTreeWidget& list) {
    for (int row = 0; row < list.topLevelItemCount(); ++row) {
        const QTreeWidgetItem* item = list.topLevelItem(row);
        if (IsChecked(*item))
            return {true, item->data(0, Qt::UserRole).toInt()};
    }
    return {};
}

std::optional<std::string> PrepareTargetFolder(const QString& text) {
    if (text.isEmpty())
        return std::nullopt;
    const std::string folder = shell::AddBackslash(text.toStdString());
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        return std::nullopt;
    return folder;
}

std::vector<audiocd::RipRow> RipRowsOf(const QTreeWidget& list) {
    std::vector<audiocd::RipRow> rows;
    for (int row = 0; row < list.topLevelItemCount(); ++row) {
        const QTreeWidgetItem* item = list.topLevelItem(row);
        rows.push_back({item->text(0).toInt(), IsChecked(*item)});
    }
    return rows;
}

}  // namespace plattmix::window
