// Twips are the logical unit of all window geometry: 1440 to the inch, so 15 to
// a pixel on a 96 dpi screen. Every fixed size of a window, control, mark or
// cursor gap is given in twips and turned into device-independent pixels here.
#pragma once

#include <QRect>

namespace tarnic {

// Twips per device-independent pixel of the primary screen (15 at 96 dpi).
double twipsPerPixel();
// Overrides the factor, for a fixed rendering under any screen.
void setTwipsPerPixel(double factor);

inline int twipsToPixels(double twips) { return static_cast<int>(twips / twipsPerPixel() + 0.5); }
inline double pixelsToTwips(double pixels) { return pixels * twipsPerPixel(); }
inline QRect twipsRect(double left, double top, double width, double height) {
    return {twipsToPixels(left), twipsToPixels(top), twipsToPixels(width), twipsToPixels(height)};
}

} // namespace tarnic
