#include "TabStrip.h"

#include <algorithm>

namespace plattmix::window {

TabStrip::TabStrip(QWidget* parent) : QTabBar(parent) {
    setExpanding(false);
    setDrawBase(true);
}

void TabStrip::SetTabWidth(int pixels) {
    tabWidth_ = std::max(0, pixels);
    updateGeometry();
    update();
}

QSize TabStrip::tabSizeHint(int index) const {
    QSize size = QTabBar::tabSizeHint(index);
    if (tabWidth_ > 0)
        size.setWidth(std::max(size.width(), tabWidth_));
    return size;
}

}  // namespace plattmix::window
