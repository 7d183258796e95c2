// A drawing layer in twips with a backing image: what is drawn stays until Cls,
// and repainting a window only copies the image.
//
// The logical operations are kept exact: when recording is on, every Cls, Line,
// filled box and PSet is stored with its coordinates, colour, width and style,
// which is what tests inspect. The rendering is thrifty: a run of connected
// segments with one pen is collected and drawn as one polyline, reduced to the
// first, lowest, highest and last point of every pixel column it crosses (the
// picture is the same as drawing every segment); filled boxes are written straight
// into the image's scan lines, so a map cell smaller than a pixel costs a few
// memory writes rather than a painter call.
//
// Beside the image the canvas keeps what it drew as drawing items: each
// polyline as drawn (already reduced per pixel column, so its size follows the
// pixels, not the samples), each dot, and the filled boxes gathered into cell
// layers, images of the canvas's size. `replay` draws them again through any
// painter: a picture at twice the resolution, or an SVG or PDF whose lines are
// vectors and whose maps are images.
#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>

#include <cstdint>
#include <memory>
#include <vector>

class QPainter;

namespace tarnic {

enum class DrawKind { Cls, Segment, Box, Dot };

struct DrawOp {
    DrawKind kind;
    float x1, y1, x2, y2; // twips; for a Box x2, y2 are its width and height
    QRgb color;
    int width;
    int style;
};

// The flags of Line: 4 draws a segment, 0x2c a filled box from (x, y) with
// width and height; PSet takes the flag 0.
inline constexpr int kLineSegment = 4;
inline constexpr int kLineFilledBox = 0x2c;

class Canvas {
  public:
    Canvas();
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // Sets the drawing area in pixels; the content is cleared to the background.
    void resize(int pixelWidth, int pixelHeight);
    double ScaleWidth() const;
    double ScaleHeight() const;

    QColor ForeColor{Qt::black};
    int DrawWidth = 1; // device pixels
    int DrawStyle = 0; // 0 solid, 1 dashes, 2 dots
    QColor BackColor{Qt::white};

    void Cls();
    void Line(int flag, double x1, double y1, double x2, double y2, int color = 0);

    // Map cells. After beginCells, until the next Cls or beginCells, a cell is
    // a filled box (the same logical operation as Line with 0x2c) that carries
    // its value: a pixel that several cells mark keeps the colour of the
    // strongest value among them, not of the last one drawn. So a burst one
    // sample wide stays visible however many samples share a pixel column.
    void beginCells();
    void Cell(double x, double y, double width, double height, float value);
    void PSet(int flag, double x, double y, int color = 0);

    void setRecording(bool on) { recording_ = on; }
    bool recording() const { return recording_; }
    const std::vector<DrawOp>& record() const { return record_; }
    void clearRecord() { record_.clear(); }
    // Number of drawing calls actually issued to the image (painter calls and
    // direct box fills); a measure of the rendering cost.
    std::uint64_t paintedCount() const { return painted_; }
    // Points of the pending run of segments, kept until it is drawn: reduced
    // per pixel column as it grows, so a curve of ten million samples waits
    // in a few thousand points.
    std::size_t pendingPoints() const { return run_.size(); }

    // The finished picture (pending runs drawn first).
    const QImage& image();

    // Draws the content again through `painter`, in the canvas's pixel
    // coordinates from (0, 0), on its background colour when `background`.
    void replay(QPainter& painter, bool background = true);

  private:
    struct Pen {
        QRgb color;
        int width;
        int style;
        bool operator==(const Pen&) const = default;
    };
    QPainter& painter();
    void endPainter();
    void flushRun();
    // Reduces the pending run's finished pixel columns (all but the last).
    void compactRun();
    // Fills the pixels of a box given in twips; returns them (empty if none).
    // With a value (during beginCells), a pixel takes the box's colour only
    // if no stronger value has marked it.
    QRect fillBox(double x, double y, double w, double h, QRgb color, QImage* layer,
                  const float* value = nullptr);
    void note(DrawKind kind, double x1, double y1, double x2, double y2);

    // A drawing item: a polyline with its pen, a dot (a square of `rect`, or a
    // round one for a wide pen), or the cell layer `layer`.
    struct Item {
        enum class Kind { Polyline, SquareDot, RoundDot, Cells } kind;
        Pen pen;
        std::vector<QPointF> points;
        QRectF rect;
        std::size_t layer = 0;
    };
    // Cell layers beyond this many take all further boxes, so that maps with
    // lines drawn between their boxes cost bounded memory.
    static constexpr std::size_t kMaxCellLayers = 4;
    void clearItems();
    QImage* cellLayer();

    QImage image_;
    std::vector<Item> items_;
    std::vector<float> cellValues_; // the strongest value at each pixel, in cell mode
    std::vector<QImage> cellLayers_;
    std::unique_ptr<QPainter> painter_;
    std::vector<QPointF> run_; // pixels
    bool runCompacted_ = false;
    Pen runPen_{};
    double runEndX_ = 0, runEndY_ = 0; // twips end of the pending run
    bool recording_ = false;
    std::vector<DrawOp> record_;
    std::uint64_t painted_ = 0;
};

} // namespace tarnic
