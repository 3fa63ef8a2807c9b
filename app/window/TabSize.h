// The tab strip's fixed tab width for the screen's resolution, in twips per pixel
// (1440 / logical DPI, 15 on a 96-DPI screen). 0 leaves the width to the tab's caption.
#pragma once

namespace plattmix::window {

int TabSizeForTwipsPerPixel(double twipsPerPixel);

// 1440 / dpi; 15 for a DPI that is not positive.
double TwipsPerPixel(double logicalDpi);

}  // namespace plattmix::window
