#include "core/twips.h"

#include <QGuiApplication>
#include <QScreen>

namespace tarnic {
namespace {
double overrideFactor = 0.0;
}

double twipsPerPixel() {
    if (overrideFactor > 0) return overrideFactor;
    static const double factor = [] {
        const QScreen* screen = QGuiApplication::primaryScreen();
        const double dpi = screen ? screen->logicalDotsPerInchX() : 96.0;
        return dpi > 0 ? 1440.0 / dpi : 15.0;
    }();
    return factor;
}

void setTwipsPerPixel(double factor) {
    overrideFactor = factor;
}

QFont WindowFont() {
    return QFont("DejaVu Sans", 9);
}

QFont MarkFont() {
    QFont font("DejaVu Sans Condensed", 8);
    font.setStretch(QFont::Condensed);
    return font;
}

} // namespace tarnic
