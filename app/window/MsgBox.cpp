#include "MsgBox.h"

#include <QMessageBox>
#include <utility>

namespace plattmix::window {

namespace {

MsgBoxAnswerer& Answerer() {
    static MsgBoxAnswerer answerer;
    return answerer;
}

QMessageBox::Icon IconOf(MsgBoxStyle style) {
    switch (style) {
        case MsgBoxStyle::Exclamation:
            return QMessageBox::Warning;
        case MsgBoxStyle::Critical:
            return QMessageBox::Critical;
        case MsgBoxStyle::Information:
            return QMessageBox::Information;
        case MsgBoxStyle::QuestionYesNo:
            return QMessageBox::Question;
        case MsgBoxStyle::Plain:
            break;
    }
    return QMessageBox::NoIcon;
}

int ShowBox(QWidget* parent, const QString& text, MsgBoxStyle style, const QString& title) {
    const bool question = style == MsgBoxStyle::QuestionYesNo;
    QMessageBox box(IconOf(style), title, text,
                    question ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, parent);
    box.setDefaultButton(question ? QMessageBox::Yes : QMessageBox::Ok);
    const int pressed = box.exec();
    if (!question)
        return vbOK;
    return pressed == QMessageBox::Yes ? vbYes : vbNo;
}

}  // namespace

int MsgBox(QWidget* parent, const QString& text, MsgBoxStyle style, const QString& title) {
    const QString caption = title.isEmpty() ? kAppTitle : title;
    // The program writes its line breaks as CR LF; a box wants one break per line.
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (Answerer())
        return Answerer()(text, style, caption);
    return ShowBox(parent, shown, style, caption);
}

MsgBoxAnswerer SetMsgBoxAnswerer(MsgBoxAnswerer answerer) {
    return std::exchange(Answerer(), std::move(answerer));
}

}  // namespace plattmix::window
