// Plattmix: rip audio CDs, make ISO images, burn discs.
#include <QApplication>

#include "Startup.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Plattmix"));
    QApplication::setOrganizationName(QStringLiteral("Trovalis"));
    return plattmix::window::RunPlattmix(plattmix::window::DefaultStartupOptions());
}
