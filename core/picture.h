// Pictures of a window's plots, for papers and reports.
//
// The picture of a window is what its plots show: every plot surface and every
// frame of axis marks, the tick marks the window draws beside them, and the
// captions that touch them, on white. Buttons, boxes, scroll bars and the red
// cursors are controls, not part of the figure, and stay out. It is drawn by
// the same code as the screen: each surface replays what it drew (see
// Canvas::replay), so lines and dots stay vectors in SVG and PDF, maps stay
// images inside them, and a PNG is drawn at twice the screen's resolution.
#pragma once

#include <QImage>
#include <QRect>
#include <QString>

class QPainter;
class QWidget;

namespace tarnic {

// True while a picture is being drawn: plot surfaces then replay their content
// instead of copying their screen image, and leave their cursors out.
bool DrawingPicture();

// The area of `window` (in its pixels) that its picture shows; empty when the
// window has no plot.
QRect PictureArea(QWidget& window);

// Draws the picture of `window` through `painter`, its area's top left corner
// at the painter's origin, in the window's pixels (scale the painter for more).
void DrawPicture(QWidget& window, QPainter& painter);

// The picture as an image, `scale` image pixels to a window pixel.
QImage PictureImage(QWidget& window, double scale);

// Writes the picture of `window` to `path`, the kind chosen by the extension:
// .png (twice the screen's resolution), .svg or .pdf. The file is written whole
// or not at all. Returns the reason of a failure, or an empty text.
QString SavePicture(QWidget& window, const QString& path);

// The extensions SavePicture understands, for a file dialog's filter.
inline constexpr const char* kPictureFilter = "PNG image (*.png);;SVG drawing (*.svg);;PDF document (*.pdf)";

// Puts the picture of `window` on the clipboard (at twice the screen's resolution).
void CopyPicture(QWidget& window);

} // namespace tarnic
