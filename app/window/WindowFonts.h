// The window's fonts: Tahoma throughout, Arial on the player buttons, with metric-compatible
// stand-ins where the originals are not installed.
#pragma once

#include <QFont>
#include <QString>

namespace plattmix::window {

inline const QString kWineTahoma = QStringLiteral("/usr/share/wine/fonts/tahoma.ttf");

// "Tahoma" when installed; otherwise the family of fontFile once loaded; otherwise "".
QString TahomaFamily(const QString& fontFile = kWineTahoma);
// "Arial" when installed, else "Liberation Sans".
QString ArialFamily();

// The window's font (a sans-serif where no Tahoma was found) and the player buttons' font.
QFont WindowFont();
QFont PlayerButtonFont();

}  // namespace plattmix::window
