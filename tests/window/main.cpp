// The window tests need one application object for the whole run.
#include <gtest/gtest.h>

#include <QApplication>

#include "KeyState.h"

int main(int argc, char** argv) {
    // Listing the tests needs no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    plattmix::window::EscapeKeyFilter escape;
    app.installEventFilter(&escape);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
