// The track list (and, on the burning page, the compilation): a report list with check boxes
// that shows a text in its middle while it has no rows. Each page keeps rows of its own: the
// view shows one page's rows while the others wait aside, so a job that writes into its page's
// rows by position reaches them whichever page the user looks at.
#pragma once

#include <QList>
#include <QString>
#include <QTreeWidget>
#include <array>

namespace plattmix::window {

class TrackListView final : public QTreeWidget {
    Q_OBJECT
  public:
    static constexpr int kPages = 3;

    explicit TrackListView(QWidget* parent = nullptr);
    ~TrackListView() override;
    TrackListView(const TrackListView&) = delete;
    TrackListView& operator=(const TrackListView&) = delete;

    const QString& EmptyListText() const { return emptyText_; }
    void SetEmptyListText(const QString& text);

    // Puts the shown page's rows aside and shows page's own.
    void ShowPageRows(int page);
    int ShownPage() const { return shownPage_; }
    // The rows of page, shown or aside; nullptr past its last row or for an unknown page.
    int PageRowCount(int page) const;
    QTreeWidgetItem* PageRow(int page, int row) const;
    // Appends row (the view takes it over) to the rows of page.
    void AddPageRow(int page, QTreeWidgetItem* row);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString emptyText_;
    int shownPage_ = 0;
    std::array<QList<QTreeWidgetItem*>, kPages> aside_;
};

}  // namespace plattmix::window
