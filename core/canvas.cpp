#include "core/canvas.h"

#include "core/twips.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

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

// Appends to `out` the points run[0 .. end) reduced per pixel column to the
// first, lowest, highest and last point, the extremes in the order they occur.
// Reducing a reduced run again changes nothing.
void appendReduced(const std::vector<QPointF>& run, std::size_t end, std::vector<QPointF>& out) {
    std::size_t i = 0;
    while (i < end) {
        const double column = std::floor(run[i].x());
        std::size_t j = i, lo = i, hi = i;
        while (j + 1 < end && std::floor(run[j + 1].x()) == column) {
            ++j;
            if (run[j].y() < run[lo].y()) lo = j;
            if (run[j].y() > run[hi].y()) hi = j;
        }
        std::size_t picks[4] = {i, std::min(lo, hi), std::max(lo, hi), j};
        std::size_t last = static_cast<std::size_t>(-1);
        for (std::size_t k : picks)
            if (k != last) out.push_back(run[k]), last = k;
        i = j + 1;
    }
}

// A pending run is reduced once it holds this many points.
constexpr std::size_t kCompactRunAt = 1 << 14;

} // namespace

Canvas::Canvas() { resize(1, 1); }
Canvas::~Canvas() { endPainter(); }

void Canvas::resize(int pixelWidth, int pixelHeight) {
    endPainter();
    run_.clear();
    runCompacted_ = false;
    clearItems();
    cellValues_.clear();
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
    runCompacted_ = false;
    clearItems();
    cellValues_.clear();
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
        if (run_.size() >= kCompactRunAt) compactRun();
    } else {
        flushRun();
        runPen_ = pen;
        run_ = {QPointF(x1 / tpp, y1 / tpp), end};
    }
    runEndX_ = x2;
    runEndY_ = y2;
}

void Canvas::beginCells() {
    cellValues_.assign(static_cast<std::size_t>(image_.width()) * static_cast<std::size_t>(image_.height()),
                       -std::numeric_limits<float>::infinity());
}

void Canvas::Cell(double x, double y, double width, double height, float value) {
    note(DrawKind::Box, x, y, width, height);
    flushRun();
    // A value that is no number is the weakest: it shows only where nothing else does.
    const float strength = std::isnan(value) ? -std::numeric_limits<float>::infinity() : value;
    fillBox(x, y, width, height, ForeColor.rgb(), cellLayer(), cellValues_.empty() ? nullptr : &strength);
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

QRect Canvas::fillBox(double x, double y, double w, double h, QRgb color, QImage* layer,
                      const float* value) {
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
    const QRgb opaque = qRgba(qRed(color), qGreen(color), qBlue(color), 255);
    if (value) {
        for (int r = r0; r < r1; ++r) {
            auto* line = reinterpret_cast<QRgb*>(image_.scanLine(r));
            auto* cells = reinterpret_cast<QRgb*>(layer->scanLine(r));
            float* strongest = &cellValues_[static_cast<std::size_t>(r) * image_.width()];
            for (int col = c0; col < c1; ++col) {
                if (*value < strongest[col]) continue;
                strongest[col] = *value;
                line[col] = color;
                cells[col] = opaque;
            }
        }
        ++painted_;
        return QRect(c0, r0, c1 - c0, r1 - r0);
    }
    for (int r = r0; r < r1; ++r) {
        auto* line = reinterpret_cast<QRgb*>(image_.scanLine(r));
        std::fill(line + c0, line + c1, color);
        if (layer) {
            auto* cells = reinterpret_cast<QRgb*>(layer->scanLine(r));
            std::fill(cells + c0, cells + c1, opaque);
        }
    }
    ++painted_;
    return QRect(c0, r0, c1 - c0, r1 - r0);
}

void Canvas::compactRun() {
    // The last column may still grow: it stays as it is.
    const double lastColumn = std::floor(run_.back().x());
    std::size_t end = run_.size();
    while (end > 0 && std::floor(run_[end - 1].x()) == lastColumn) --end;
    if (end == 0) end = run_.size() - 1; // one column so far: keep its newest point raw
    std::vector<QPointF> reduced;
    reduced.reserve(4 * 1024);
    appendReduced(run_, end, reduced);
    reduced.insert(reduced.end(), run_.begin() + static_cast<std::ptrdiff_t>(end), run_.end());
    run_.swap(reduced);
    runCompacted_ = true;
}

void Canvas::flushRun() {
    const bool compacted = runCompacted_;
    runCompacted_ = false;
    if (run_.size() < 2) {
        run_.clear();
        return;
    }
    std::vector<QPointF> points;
    if (run_.size() <= 8 && !compacted) {
        points.swap(run_);
    } else {
        points.reserve(std::min<std::size_t>(run_.size(), 4096));
        appendReduced(run_, run_.size(), points);
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
