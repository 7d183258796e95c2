#include "core/picture.h"

#include "core/form.h"
#include "core/modul.h"
#include "core/plotsurface.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QLabel>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

#include <algorithm>
#include <vector>

namespace tarnic {
namespace {

bool drawingPicture = false;

// Captions closer to the plots than this (pixels) belong to the picture.
constexpr int kCaptionReach = 20;

struct PictureParts {
    QRect area;
    std::vector<QWidget*> widgets; // in the order they are drawn
};

QRect geometryIn(const QWidget* w, QWidget& window) {
    return QRect(w->mapTo(&window, QPoint(0, 0)), w->size());
}

PictureParts pictureParts(QWidget& window) {
    PictureParts parts;
    const QList<QWidget*> children = window.findChildren<QWidget*>();
    for (QWidget* w : children) {
        if (!w->isVisibleTo(&window)) continue;
        if (dynamic_cast<PlotSurface*>(w) || dynamic_cast<MarksFrame*>(w)) {
            parts.widgets.push_back(w);
            parts.area |= geometryIn(w, window);
        }
    }
    if (parts.area.isEmpty()) return parts;
    // Captions are the window's own labels just above or below the plots, at
    // least half of them over the plots' width: titles and legends, not the
    // labels of boxes beside them.
    QRect captions;
    for (QWidget* w : children) {
        auto* label = dynamic_cast<QLabel*>(w);
        if (!label || label->parentWidget() != &window || !label->isVisibleTo(&window) ||
            label->text().isEmpty())
            continue;
        const QRect r = geometryIn(label, window);
        const bool near = r.bottom() >= parts.area.top() - kCaptionReach &&
                          r.top() <= parts.area.bottom() + kCaptionReach;
        const int overlap = std::min(r.right(), parts.area.right()) - std::max(r.left(), parts.area.left());
        if (!near || 2 * overlap < r.width()) continue;
        parts.widgets.push_back(label);
        captions |= r;
    }
    parts.area |= captions;
    return parts;
}

class PictureMode {
  public:
    PictureMode() { drawingPicture = true; }
    ~PictureMode() { drawingPicture = false; }
    PictureMode(const PictureMode&) = delete;
    PictureMode& operator=(const PictureMode&) = delete;
};

} // namespace

bool DrawingPicture() { return drawingPicture; }

QRect PictureArea(QWidget& window) { return pictureParts(window).area; }

void DrawPicture(QWidget& window, QPainter& painter) {
    const PictureParts parts = pictureParts(window);
    if (parts.area.isEmpty()) return;
    PictureMode mode;
    painter.save();
    painter.translate(-parts.area.topLeft());
    painter.setClipRect(parts.area);
    painter.fillRect(parts.area, Qt::white);
    // The window's own drawing: the tick marks beside the plots.
    if (auto* form = dynamic_cast<FormWindow*>(&window)) form->canvas().replay(painter, false);
    for (QWidget* w : parts.widgets)
        w->render(&painter, w->mapTo(&window, QPoint(0, 0)), QRegion(), QWidget::DrawChildren);
    painter.restore();
}

QImage PictureImage(QWidget& window, double scale) {
    const QRect area = PictureArea(window);
    QImage image((area.size() * scale).expandedTo(QSize(1, 1)), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(scale, scale);
    DrawPicture(window, painter);
    return image;
}

QString SavePicture(QWidget& window, const QString& path) {
    const QRect area = PictureArea(window);
    if (area.isEmpty()) return "the window shows no plot";
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind != "png" && kind != "svg" && kind != "pdf")
        return "the picture's kind follows the extension: .png, .svg or .pdf";
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    if (kind == "png") {
        if (!PictureImage(window, 2.0).save(&file, "PNG")) return "the image could not be encoded";
    } else if (kind == "svg") {
        QSvgGenerator svg;
        svg.setOutputDevice(&file);
        svg.setSize(area.size());
        svg.setViewBox(QRect(QPoint(0, 0), area.size()));
        svg.setTitle(window.windowTitle());
        QPainter painter(&svg);
        DrawPicture(window, painter);
    } else {
        // One page the size of the picture, a window pixel to a point at 96 dpi.
        QPdfWriter pdf(&file);
        pdf.setTitle(window.windowTitle());
        pdf.setCreator("Tarnic Workbench");
        pdf.setResolution(96);
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        pdf.setPageSize(QPageSize(QSizeF(area.size()) * 72.0 / 96.0, QPageSize::Point));
        QPainter painter(&pdf);
        DrawPicture(window, painter);
    }
    if (!file.commit()) return file.errorString();
    return {};
}

void CopyPicture(QWidget& window) {
    if (PictureArea(window).isEmpty()) return;
    QApplication::clipboard()->setImage(PictureImage(window, 2.0));
}

} // namespace tarnic
