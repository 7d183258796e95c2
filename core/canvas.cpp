#include "core/canvas.h"

#include "core/twips.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnic {

Canvas::Canvas() { resize(1, 1); }
Canvas::~Canvas() { endPainter(); }

void Canvas::resize(int pixelWidth, int pixelHeight) {
    endPainter();
    run_.clear();
    image_ = QImage(std::max(1, pixelWidth), std::max(1, pixelHeight), QImage::Format_RGB32);
    image_.fill(BackColor);
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
    endPainter();
    image_.fill(BackColor);
    ++painted_;
}

void Canvas::Line(int flag, double x1, double y1, double x2, double y2, int /*color*/) {
    if (flag == kLineFilledBox) {
        note(DrawKind::Box, x1, y1, x2, y2);
        flushRun();
        fillBox(x1, y1, x2, y2, ForeColor.rgb());
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
        fillBox(x - size / 2, y - size / 2, size, size, ForeColor.rgb());
        return;
    }
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

void Canvas::fillBox(double x, double y, double w, double h, QRgb color) {
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
    if (c0 >= c1 || r0 >= r1) return;
    for (int r = r0; r < r1; ++r) {
        auto* line = reinterpret_cast<QRgb*>(image_.scanLine(r));
        std::fill(line + c0, line + c1, color);
    }
    ++painted_;
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
    QPen pen(QColor::fromRgb(runPen_.color));
    pen.setWidth(std::max(1, runPen_.width));
    pen.setCosmetic(true);
    pen.setStyle(runPen_.style == 1 ? Qt::DashLine : runPen_.style == 2 ? Qt::DotLine : Qt::SolidLine);
    pen.setCapStyle(runPen_.width > 1 ? Qt::RoundCap : Qt::SquareCap);
    p.setPen(pen);
    p.drawPolyline(points.data(), static_cast<int>(points.size()));
    ++painted_;
}

const QImage& Canvas::image() {
    flushRun();
    endPainter();
    return image_;
}

} // namespace tarnic
