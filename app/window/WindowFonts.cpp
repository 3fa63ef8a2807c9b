#include "WindowFonts.h"

#include <QFile>
#include <QFontDatabase>

namespace plattmix::window {

namespace {
constexpr int kPointSize = 9;

bool Installed(const QString& family) {
    return QFontDatabase::families().contains(family, Qt::CaseInsensitive);
}
}  // namespace

QString TahomaFamily(const QString& fontFile) {
    const QString tahoma = QStringLiteral("Tahoma");
    if (Installed(tahoma))
        return tahoma;
    if (!QFile::exists(fontFile))
        return {};
    const int id = QFontDatabase::addApplicationFont(fontFile);
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    return families.isEmpty() ? QString() : families.first();
}

QString ArialFamily() {
    const QString arial = QStringLiteral("Arial");
    return Installed(arial) ? arial : QStringLiteral("Liberation Sans");
}

QFont WindowFont() {
    const QString family = TahomaFamily();
    QFont font(family.isEmpty() ? QStringLiteral("Sans Serif") : family, kPointSize);
    if (family.isEmpty())
        font.setStyleHint(QFont::SansSerif);
    return font;
}

QFont PlayerButtonFont() {
    return QFont(ArialFamily(), kPointSize);
}

}  // namespace plattmix::window
