// What the long jobs below the window need from it: whether Escape is held down, and a way to
// let the window process its messages between units of work.
#pragma once

#include <QObject>
#include <functional>

namespace plattmix::window {

// Watches every key event of the application and keeps whether Escape is down. Install one on
// the application object; the jobs' escape hooks read EscapeDown().
class EscapeKeyFilter final : public QObject {
    Q_OBJECT
  public:
    explicit EscapeKeyFilter(QObject* parent = nullptr);
    ~EscapeKeyFilter() override;

    static bool EscapeDown();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

// The escape hook handed to the jobs.
std::function<bool()> EscapeHook();
// The yield callback handed to the jobs: lets the window process pending events.
std::function<void()> YieldHook();

}  // namespace plattmix::window
