#include "TrackListView.h"

#include <QPainter>

namespace plattmix::window {

TrackListView::TrackListView(QWidget* parent) : QTreeWidget(parent) {
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAllColumnsShowFocus(true);
}

void TrackListView::SetEmptyListText(const QString& text) {
    emptyText_ = text;
    viewport()->update();
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
