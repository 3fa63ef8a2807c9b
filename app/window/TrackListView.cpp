#include "TrackListView.h"

#include <QPainter>

namespace plattmix::window {

namespace {

bool KnownPage(int page) {
    return page >= 0 && page < TrackListView::kPages;
}

}  // namespace

TrackListView::TrackListView(QWidget* parent) : QTreeWidget(parent) {
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAllColumnsShowFocus(true);
}

TrackListView::~TrackListView() {
    for (auto& rows : aside_)
        qDeleteAll(rows);
}

void TrackListView::SetEmptyListText(const QString& text) {
    emptyText_ = text;
    viewport()->update();
}

void TrackListView::ShowPageRows(int page) {
    if (!KnownPage(page) || page == shownPage_)
        return;
    QList<QTreeWidgetItem*>& leaving = aside_[static_cast<size_t>(shownPage_)];
    while (topLevelItemCount() > 0)
        leaving.push_back(takeTopLevelItem(0));
    QList<QTreeWidgetItem*>& entering = aside_[static_cast<size_t>(page)];
    addTopLevelItems(entering);
    entering.clear();
    shownPage_ = page;
}

int TrackListView::PageRowCount(int page) const {
    if (page == shownPage_)
        return topLevelItemCount();
    return KnownPage(page) ? static_cast<int>(aside_[static_cast<size_t>(page)].size()) : 0;
}

QTreeWidgetItem* TrackListView::PageRow(int page, int row) const {
    if (page == shownPage_)
        return topLevelItem(row);
    if (row < 0 || row >= PageRowCount(page))
        return nullptr;
    return aside_[static_cast<size_t>(page)][row];
}

void TrackListView::AddPageRow(int page, QTreeWidgetItem* row) {
    if (page == shownPage_)
        addTopLevelItem(row);
    else if (KnownPage(page))
        aside_[static_cast<size_t>(page)].push_back(row);
    else
        delete row;
}

void TrackListView::paintEvent(QPaintEvent* event) {
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0 || emptyText_.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                     emptyText_);
}

}  // namespace plattmix::window
