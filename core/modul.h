// Shared drawing helpers of every window: the 16-colour index palette, the axis
// marks beside a plot surface and the pair of red cursors driven by two scroll
// bars. All geometry is in twips.
#pragma once

#include "core/controls.h"
#include "core/plotsurface.h"

#include <QColor>
#include <QString>

#include <array>
#include <functional>
#include <utility>

namespace tarnic {

class Form;

// The classic 16-colour index palette: 0 black, 1 navy, 2 green, ... 12 red,
// 15 white.
QColor BasicColor(int n);

// A borderless container for mark labels (XmarksFrame, YmarksFrame).
class MarksFrame : public Control<QFrame> {
  public:
    // The mark labels inside take the frame's type, MarkFont().
    explicit MarksFrame(QWidget* parent);
};

// The six labels of one axis: Xmark_1 .. Xmark_5 and Xmark_End (or Ymark_...).
using MarkLabels = std::array<Label*, 6>;

// Builds a marks frame and its six labels: x labels centred, y labels
// right-aligned, each 1150 twips wide; the frame takes `width` (x) or 1200 (y).
void MakeMarks(QWidget* parent, MarksFrame*& frame, MarkLabels& marks, bool yAxis,
               double width = 600);

// The text of an axis mark for a single-precision value: with the log flag 1
// the value is first replaced by e^v on the x axis or 10^v on the y axis; then
// NumText without its leading blank, and a "0" before a bare point (".5" shows
// as "0.5", "-.5" as "-0.5").
QString MarkText(float value, int logFlag, bool yAxis);

// Lays out the six labels under `surface`, in the marks frame, and draws their
// ticks on the window. xStart labels the left edge, xEnd the right edge, with
// four marks between at equal distances of position and value.
void DrawXMarks(Form& window, PlotSurface& surface, int logFlag, MarksFrame& marksFrame,
                const MarkLabels& marks, float xStart, float xEnd);

// Lays out the six labels left of `surface`, Ymark_1 at the bottom (yMin) and
// Ymark_End at the top (yMax). Runs after DrawXMarks of the same window: the y
// frame takes its height from the top of the x marks frame.
void DrawYMarks(Form& window, PlotSurface& surface, int logFlag, MarksFrame& xMarksFrame,
                MarksFrame& yMarksFrame, const MarkLabels& marks, float yMin, float yMax);

// Two red line objects over a surface driven by two horizontal scroll bars.
// Moving one bar moves its cursor over the whole surface width; a cursor that
// comes closer than `gap` to the other pushes it, by assigning the other bar,
// whose handler runs inside the assignment and may push back. The pair settles
// within the rounding of one scroll unit.
class CursorPair {
  public:
    struct Setup {
        PlotSurface* surface;
        LineObject* lineLeft;
        LineObject* lineRight;
        ScrollBar* barLeft;
        ScrollBar* barRight;
        float gap;
        // The y span a moved cursor gets, from the surface's height.
        std::function<std::pair<float, float>(float scaleHeight)> ySpan;
        // Unloads the windows that a moved selection invalidates.
        Handler unloadDependents;
        // Runs at the end of each of the two handlers (may be empty).
        Handler afterChange;
    };
    explicit CursorPair(Setup setup);

    void HScroll_Left_Change();
    void HScroll_Right_Change();
    // Left bar to its minimum, right bar to its maximum (their handlers run if
    // the values change), then the right line to ScaleWidth and the left to 0.
    void reset();

  private:
    // Moves the cursor of the bar that moved and pushes the other one away.
    void follow(bool leftMoved);
    Setup s_;
};

} // namespace tarnic
