#include "TabSize.h"

namespace plattmix::window {

int TabSizeForTwipsPerPixel(double twipsPerPixel) {
    if (twipsPerPixel <= 6)
        return 50;
    if (twipsPerPixel < 7)
        return 45;
    if (twipsPerPixel < 8)
        return 40;
    if (twipsPerPixel < 9)
        return 38;
    if (twipsPerPixel < 10)
        return 35;
    if (twipsPerPixel < 12)
        return 32;
    if (twipsPerPixel < 15)
        return 30;
    if (twipsPerPixel > 15)
        return 30;
    return 0;  // exactly 15: the usual 96-DPI screen sizes its tabs by their captions
}

double TwipsPerPixel(double logicalDpi) {
    return logicalDpi > 0 ? 1440.0 / logicalDpi : 15.0;
}

}  // namespace plattmix::window
