#include "KeyState.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <atomic>
#include <memory>

namespace plattmix::window {

namespace {
std::atomic<bool> escapeDown{false};
std::atomic<unsigned> escapePresses{0};
}  // namespace

EscapeKeyFilter::EscapeKeyFilter(QObject* parent) : QObject(parent) {}

EscapeKeyFilter::~EscapeKeyFilter() {
    escapeDown = false;
}

bool EscapeKeyFilter::EscapeDown() {
    return escapeDown;
}

unsigned EscapeKeyFilter::EscapePresses() {
    return escapePresses;
}

bool EscapeKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::ShortcutOverride:
            if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
                escapeDown = true;
                ++escapePresses;
            }
            break;
        case QEvent::KeyRelease:
            if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
                !static_cast<QKeyEvent*>(event)->isAutoRepeat())
                escapeDown = false;
            break;
        case QEvent::ApplicationDeactivate:
            // The release will not reach us once another program has the keyboard.
            escapeDown = false;
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

std::function<bool()> EscapeHook() {
    auto seen = std::make_shared<unsigned>(EscapeKeyFilter::EscapePresses());
    return [seen] {
        const unsigned presses = EscapeKeyFilter::EscapePresses();
        const bool pressed = presses != *seen;
        *seen = presses;
        return EscapeKeyFilter::EscapeDown() || pressed;
    };
}

std::function<void()> YieldHook() {
    return [] { QCoreApplication::processEvents(); };
}

}  // namespace plattmix::window
