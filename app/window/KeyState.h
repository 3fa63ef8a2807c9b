// What the long jobs below the window need from it: whether Escape is down or was pressed since
// they last asked, and a way to let the window process its messages between units of work.
#pragma once

#include <QObject>
#include <functional>

namespace plattmix::window {

// Watches every key event of the application: whether Escape is down, and how often it was
// pressed. Install one on the application object; the jobs' escape hooks read it.
class EscapeKeyFilter final : public QObject {
    Q_OBJECT
  public:
    explicit EscapeKeyFilter(QObject* parent = nullptr);
    ~EscapeKeyFilter() override;

    static bool EscapeDown();
    // Grows with every press, so that a tap between two looks is not missed.
    static unsigned EscapePresses();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

// The escape hook handed to a job: true when Escape is down or was pressed since the hook's last
// query, so a tap between two queries counts, once. A press before the hook was made (one that
// closed a message box, say) does not count; copies of the hook share what it has seen.
std::function<bool()> EscapeHook();
// The yield callback handed to the jobs: lets the window process pending events.
std::function<void()> YieldHook();

}  // namespace plattmix::window
