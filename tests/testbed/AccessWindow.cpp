#include "AccessWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

#include "MsgBox.h"
#include "Startup.h"

namespace plattmix::testbed {

namespace {

void Print(const QString& line) {
    std::printf("WINDOW %s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

}  // namespace

int StartTheWindow(int argc, char** argv) {
    QApplication app(argc, argv);
    window::SetMsgBoxAnswerer([](const QString& text, window::MsgBoxStyle, const QString&) {
        for (const QString& line : text.split(QStringLiteral("\r\n")))
            Print(QStringLiteral("BOX ") + line);
        return window::vbOK;
    });
    window::Startup startup(window::DefaultStartupOptions());
    window::frmMain* shown = startup.Start();
    if (shown == nullptr) {
        Print(QStringLiteral("ENDED"));
        return 1;
    }
    if (shown->isLoading) {
        QEventLoop loop;
        QObject::connect(shown, &window::frmMain::DriveListFilled, &loop, &QEventLoop::quit);
        // Only a guard against hanging; the list comes 100 ms after the load.
        QTimer::singleShot(120000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    Print(QStringLiteral("DRIVES %1").arg(shown->cboDrv->count()));
    for (int i = 0; i < shown->cboDrv->count(); ++i)
        Print(QStringLiteral("DRIVE ") + shown->cboDrv->itemText(i));
    return 0;
}

}  // namespace plattmix::testbed
