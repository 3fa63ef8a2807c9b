// The page selector: a tab bar whose tabs can be given a fixed width in pixels.
#pragma once

#include <QTabBar>

namespace plattmix::window {

class TabStrip final : public QTabBar {
    Q_OBJECT
  public:
    explicit TabStrip(QWidget* parent = nullptr);

    // 0 sizes each tab by its caption.
    void SetTabWidth(int pixels);
    int TabWidth() const { return tabWidth_; }

  protected:
    QSize tabSizeHint(int index) const override;

  private:
    int tabWidth_ = 0;
};

}  // namespace plattmix::window
