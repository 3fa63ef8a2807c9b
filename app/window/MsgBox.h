// The one way the window talks to the user in a modal box. Every message goes through MsgBox so
// that the icon and buttons stay as the program has always shown them, and so that the tests can
// answer a box instead of a person.
#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace plattmix::window {

enum class MsgBoxStyle {
    Exclamation,    // refused input and errors, OK
    Critical,       // hard failures, OK
    Information,    // success, OK
    QuestionYesNo,  // confirmations, Yes and No
    Plain,          // a report without an icon, OK
};

// The answers, with the values the program has always compared against.
inline constexpr int vbOK = 1;
inline constexpr int vbYes = 6;
inline constexpr int vbNo = 7;

// The program's title, used as the caption of its boxes.
inline const QString kAppTitle = QStringLiteral("Plattmix");

// Shows the box (or asks the installed answerer) and returns vbOK, vbYes or vbNo. An empty title
// means the program's title.
int MsgBox(QWidget* parent, const QString& text, MsgBoxStyle style,
           const QString& title = QString());

// Answers in place of a person: gets what the box would have shown and returns the button.
using MsgBoxAnswerer =
    std::function<int(const QString& text, MsgBoxStyle style, const QString& title)>;

// Installs an answerer (an empty one restores the real boxes). Returns the previous one.
MsgBoxAnswerer SetMsgBoxAnswerer(MsgBoxAnswerer answerer);

}  // namespace plattmix::window
