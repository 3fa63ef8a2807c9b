// Showing and hiding a page's controls in one go.
#pragma once

#include <QWidget>
#include <initializer_list>

namespace plattmix::window {

inline void SetShown(std::initializer_list<QWidget*> controls, bool shown) {
    for (QWidget* control : controls)
        control->setVisible(shown);
}

}  // namespace plattmix::window
