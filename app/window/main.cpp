// Plattmix: rip audio CDs, make ISO images, burn discs.
#include <QApplication>
#include <clocale>

#include "Startup.h"

int main(int argc, char* argv[]) {
    // The user's locale, so that the system's reasons inside the messages ("No space left on
    // device") are in the user's language. QApplication takes it once more; numbers then go
    // back to the C notation in which the libraries print and parse them (the size texts read
    // the user's number signs themselves).
    std::setlocale(LC_ALL, "");
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("Plattmix"));
    QApplication::setOrganizationName(QStringLiteral("Trovalis"));
    return plattmix::window::RunPlattmix(plattmix::window::DefaultStartupOptions());
}
