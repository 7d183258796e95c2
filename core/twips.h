// Twips are the logical unit of all window geometry: 1440 to the inch, so 15 to
// a pixel on a 96 dpi screen. Every fixed size of a window, control, mark or
// cursor gap is given in twips and turned into device-independent pixels here.
#pragma once

#include <QFont>
#include <QRect>

namespace tarnic {

// Twips per device-independent pixel of the primary screen (15 at 96 dpi).
double twipsPerPixel();
// Overrides the factor, for a fixed rendering under any screen.
void setTwipsPerPixel(double factor);

// The type every window was laid out for. Fixed sizes in twips hold captions of
// a known width only with a known face, so the program sets it for itself
// rather than taking the desktop's (which may be wider or larger). Points scale
// with the screen as twips do.
QFont WindowFont();
// The axis marks: a condensed face a point smaller, so that the longest number
// text (13 characters, as "-1.234567E-13") fits the 1150 twips of a mark.
QFont MarkFont();

inline int twipsToPixels(double twips) {
    return static_cast<int>(twips / twipsPerPixel() + 0.5);
}
inline double pixelsToTwips(double pixels) {
    return pixels * twipsPerPixel();
}
inline QRect twipsRect(double left, double top, double width, double height) {
    return {twipsToPixels(left), twipsToPixels(top), twipsToPixels(width), twipsToPixels(height)};
}

} // namespace tarnic
