#include "core/canvas.h"

#include "core/twips.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnic {
namespace {

template <class PenLike> QPen penOf(const PenLike& pen, bool cosmetic) {
    QPen qpen(QColor::fromRgb(pen.color));
    qpen.setWidth(std::max(1, pen.width));
    qpen.setCosmetic(cosmetic);
    qpen.setStyle(pen.style == 1 ? Qt::DashLine : pen.style == 2 ? Qt::DotLine : Qt::SolidLine);
    qpen.setCapStyle(pen.width > 1 ? Qt::RoundCap : Qt::SquareCap);
    return qpen;
}

} // namespace

Canvas::Canvas() { resize(1, 1); }
Canvas::~Canvas() { endPainter(); }

void Canvas::resize(int pixelWidth, int pixelHeight) {
    endPainter();
    run_.clear();
    clearItems();
    image_ = QImage(std::max(1, pixelWidth), std::max(1, pixelHeight), QImage::Format_RGB32);
    image_.fill(BackColor);
}

void Canvas::clearItems() {
    items_.clear();
    cellLayers_.clear();
}

QImage* Canvas::cellLayer() {
    if (items_.empty() || items_.back().kind != Item::Kind::Cells) {
        if (cellLayers_.size() < kMaxCellLayers) {
            cellLayers_.emplace_back(image_.size(), QImage::Format_ARGB32);
            cellLayers_.back().fill(Qt::transparent);
        }
        items_.push_back({Item::Kind::Cells, {}, {}, {}, cellLayers_.size() - 1});
    }
    return &cellLayers_[items_.back().layer];
}

double Canvas::ScaleWidth() const { return pixelsToTwips(image_.width()); }
double Canvas::ScaleHeight() const { return pixelsToTwips(image_.height()); }

void Canvas::note(DrawKind kind, double x1, double y1, double x2, double y2) {
    if (!recording_) return;
    record_.push_back({kind, static_cast<float>(x1), static_cast<float>(y1),
                       static_cast<float>(x2), static_cast<float>(y2), ForeColor.rgb(), DrawWidth,
                       DrawStyle});
}

QPainter& Canvas::painter() {
    if (!painter_) {
        painter_ = std::make_unique<QPainter>(&image_);
        painter_->setRenderHint(QPainter::Antialiasing, false);
    }
    return *painter_;
}

void Canvas::endPainter() {
    if (painter_) painter_->end();
    painter_.reset();
}

void Canvas::Cls() {
    note(DrawKind::Cls, 0, 0, 0, 0);
    run_.clear();
    clearItems();
    endPainter();
    image_.fill(BackColor);
    ++painted_;
}

void Canvas::Line(int flag, double x1, double y1, double x2, double y2, int /*color*/) {
    if (flag == kLineFilledBox) {
        note(DrawKind::Box, x1, y1, x2, y2);
        flushRun();
        fillBox(x1, y1, x2, y2, ForeColor.rgb(), cellLayer());
        return;
    }
    note(DrawKind::Segment, x1, y1, x2, y2);
    const Pen pen{ForeColor.rgb(), DrawWidth, DrawStyle};
    const double tpp = twipsPerPixel();
    const QPointF end(x2 / tpp, y2 / tpp);
    if (!run_.empty() && pen == runPen_ && x1 == runEndX_ && y1 == runEndY_) {
        run_.push_back(end);
    } else {
        flushRun();
        runPen_ = pen;
        run_ = {QPointF(x1 / tpp, y1 / tpp), end};
    }
    runEndX_ = x2;
    runEndY_ = y2;
}

void Canvas::PSet(int /*flag*/, double x, double y, int /*color*/) {
    note(DrawKind::Dot, x, y, x, y);
    flushRun();
    const double tpp = twipsPerPixel();
    if (DrawWidth <= 2) {
        const double size = std::max(1, DrawWidth) * tpp;
        const QRect pixels = fillBox(x - size / 2, y - size / 2, size, size, ForeColor.rgb(), nullptr);
        if (!pixels.isEmpty())
            items_.push_back({Item::Kind::SquareDot, {ForeColor.rgb(), DrawWidth, 0}, {}, QRectF(pixels)});
        return;
    }
    items_.push_back({Item::Kind::RoundDot, {ForeColor.rgb(), DrawWidth, 0}, {},
                      QRectF(x / tpp - DrawWidth / 2.0, y / tpp - DrawWidth / 2.0, DrawWidth,
                             DrawWidth)});
    // A wide pen sets a round dot.
    QPainter& p = painter();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(Qt::NoPen);
    p.setBrush(ForeColor);
    p.drawEllipse(QPointF(x / tpp, y / tpp), DrawWidth / 2.0, DrawWidth / 2.0);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setBrush(Qt::NoBrush);
    ++painted_;
}

QRect Canvas::fillBox(double x, double y, double w, double h, QRgb color, QImage* layer) {
    endPainter();
    const double tpp = twipsPerPixel();
    double x0 = x / tpp, x1 = (x + w) / tpp, y0 = y / tpp, y1 = (y + h) / tpp;
    if (x0 > x1) std::swap(x0, x1);
    if (y0 > y1) std::swap(y0, y1);
    // Pixels whose centre lies in the box; a box thinner than a pixel still
    // marks the pixel it starts in.
    int c0 = static_cast<int>(std::lround(x0)), c1 = static_cast<int>(std::lround(x1));
    int r0 = static_cast<int>(std::lround(y0)), r1 = static_cast<int>(std::lround(y1));
    if (c1 <= c0) c1 = static_cast<int>(std::floor(x0)) + 1, c0 = c1 - 1;
    if (r1 <= r0) r1 = static_cast<int>(std::floor(y0)) + 1, r0 = r1 - 1;
    c0 = std::max(c0, 0);
    r0 = std::max(r0, 0);
    c1 = std::min(c1, image_.width());
    r1 = std::min(r1, image_.height());
    if (c0 >= c1 || r0 >= r1) return {};
    for (int r = r0; r < r1; ++r) {
        auto* line = reinterpret_cast<QRgb*>(image_.scanLine(r));
        std::fill(line + c0, line + c1, color);
        if (layer) {
            auto* cells = reinterpret_cast<QRgb*>(layer->scanLine(r));
            std::fill(cells + c0, cells + c1, qRgba(qRed(color), qGreen(color), qBlue(color), 255));
        }
    }
    ++painted_;
    return QRect(c0, r0, c1 - c0, r1 - r0);
}

void Canvas::flushRun() {
    if (run_.size() < 2) {
        run_.clear();
        return;
    }
    std::vector<QPointF> points;
    if (run_.size() <= 8) {
        points.swap(run_);
    } else {
        // Per pixel column keep the first, lowest, highest and last point, the
        // extremes in the order they occur.
        points.reserve(std::min<std::size_t>(run_.size(), 4096));
        std::size_t i = 0;
        while (i < run_.size()) {
            const double column = std::floor(run_[i].x());
            std::size_t j = i, lo = i, hi = i;
            while (j + 1 < run_.size() && std::floor(run_[j + 1].x()) == column) {
                ++j;
                if (run_[j].y() < run_[lo].y()) lo = j;
                if (run_[j].y() > run_[hi].y()) hi = j;
            }
            std::size_t picks[4] = {i, std::min(lo, hi), std::max(lo, hi), j};
            std::size_t last = static_cast<std::size_t>(-1);
            for (std::size_t k : picks)
                if (k != last) points.push_back(run_[k]), last = k;
            i = j + 1;
        }
        run_.clear();
    }
    QPainter& p = painter();
    p.setPen(penOf(runPen_, true));
    p.drawPolyline(points.data(), static_cast<int>(points.size()));
    ++painted_;
    items_.push_back({Item::Kind::Polyline, runPen_, std::move(points), {}});
}

const QImage& Canvas::image() {
    flushRun();
    endPainter();
    return image_;
}

void Canvas::replay(QPainter& p, bool background) {
    flushRun();
    p.save();
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setRenderHint(QPainter::SmoothPixmapTransform, false);
    const QRectF area(0, 0, image_.width(), image_.height());
    if (background) p.fillRect(area, BackColor);
    for (const Item& item : items_) {
        switch (item.kind) {
        case Item::Kind::Polyline:
            // Not cosmetic: a scaled picture widens its lines with it.
            p.setPen(penOf(item.pen, false));
            p.setBrush(Qt::NoBrush);
            p.drawPolyline(item.points.data(), static_cast<int>(item.points.size()));
            break;
        case Item::Kind::SquareDot:
            p.fillRect(item.rect, QColor::fromRgb(item.pen.color));
            break;
        case Item::Kind::RoundDot:
            p.setRenderHint(QPainter::Antialiasing, true);
            p.setPen(Qt::NoPen);
            p.setBrush(QColor::fromRgb(item.pen.color));
            p.drawEllipse(item.rect);
            p.setRenderHint(QPainter::Antialiasing, false);
            break;
        case Item::Kind::Cells:
            p.drawImage(area, cellLayers_[item.layer]);
            break;
        }
    }
    p.restore();
}

} // namespace tarnic
