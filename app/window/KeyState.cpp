#include "KeyState.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <atomic>

namespace plattmix::window {

namespace {
std::atomic<bool> escapeDown{false};
}

EscapeKeyFilter::EscapeKeyFilter(QObject* parent) : QObject(parent) {}

EscapeKeyFilter::~EscapeKeyFilter() {
    escapeDown = false;
}

bool EscapeKeyFilter::EscapeDown() {
    return escapeDown;
}

bool EscapeKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::ShortcutOverride:
            if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
                escapeDown = true;
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
    return [] { return EscapeKeyFilter::EscapeDown(); };
}

std::function<void()> YieldHook() {
    return [] { QCoreApplication::processEvents(); };
}

}  // namespace plattmix::window
