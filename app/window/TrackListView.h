// The track list (and, on the burning page, the compilation): a report list with check boxes
// that shows a text in its middle while it has no rows.
#pragma once

#include <QString>
#include <QTreeWidget>

namespace plattmix::window {

class TrackListView final : public QTreeWidget {
    Q_OBJECT
  public:
    explicit TrackListView(QWidget* parent = nullptr);

    const QString& EmptyListText() const { return emptyText_; }
    void SetEmptyListText(const QString& text);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString emptyText_;
};

}  // namespace plattmix::window
