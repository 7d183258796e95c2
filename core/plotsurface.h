// The plot surface: a white picture box that keeps what was drawn (a Canvas)
// until Cls, carries overlay line objects that Cls does not remove, and reports
// the pointer in twips of its inner area. A disabled surface delivers no pointer
// events, so its tool tip stays as it was.
#pragma once

#include "core/canvas.h"
#include "core/controls.h"

#include <QFrame>

#include <functional>
#include <memory>
#include <vector>

class QMenu;

namespace tarnic {

class PlotSurface;

// A thin overlay line (a cursor or a marker) in surface coordinates.
class LineObject {
  public:
    LineObject(PlotSurface& surface, QColor color);
    float X1() const { return x1_; }
    float Y1() const { return y1_; }
    float X2() const { return x2_; }
    float Y2() const { return y2_; }
    void setX1(float v);
    void setY1(float v);
    void setX2(float v);
    void setY2(float v);
    QColor color() const { return color_; }
    bool Visible() const { return visible_; }
    void setVisible(bool on);

  private:
    friend class PlotSurface;
    PlotSurface& surface_;
    QColor color_;
    float x1_ = 0, y1_ = 0, x2_ = 0, y2_ = 0;
    bool visible_ = true;
};

class PlotSurface : public Control<QFrame> {
  public:
    explicit PlotSurface(QWidget* parent);

    // Sets the outer box in twips; the inner drawing area is one pixel smaller
    // on every side (the frame line) and its content is cleared.
    void placeSurface(double left, double top, double width, double height);

    double ScaleWidth() const { return canvas_.ScaleWidth(); }
    double ScaleHeight() const { return canvas_.ScaleHeight(); }

    QColor ForeColor() const { return canvas_.ForeColor; }
    void setForeColor(const QColor& c) { canvas_.ForeColor = c; }
    int DrawWidth() const { return canvas_.DrawWidth; }
    void setDrawWidth(int w) { canvas_.DrawWidth = w; }
    int DrawStyle() const { return canvas_.DrawStyle; }
    void setDrawStyle(int s) { canvas_.DrawStyle = s; }

    void Cls();
    void Refresh();
    void Line(int flag, double x1, double y1, double x2, double y2, int color = 0);
    void PSet(int flag, double x, double y, int color = 0);
    // Map cells that keep the strongest value per pixel (Canvas::beginCells).
    void BeginCells() { canvas_.beginCells(); }
    void Cell(double x, double y, double width, double height, float value);

    LineObject& addLine(QColor color);
    Canvas& canvas() { return canvas_; }

    // A checkable entry of the context menu, above the picture entries and a
    // separator: `isChecked` gives its tick when the menu opens, `toggle` runs
    // when the user chooses it. The window decides what the entry means.
    void addMenuChoice(const QString& text, std::function<bool()> isChecked,
                       std::function<void()> toggle);
    // The context menu as it opens now: the choices, wired to their toggles,
    // then "Save Picture..." and "Copy Picture" (their actions by those texts).
    std::unique_ptr<QMenu> contextMenu();

    // MouseMove(button, shift, x, y) in twips of the inner area, and DblClick.
    std::function<void(int, int, float, float)> MouseMove;
    Handler DblClick;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    // "Save Picture..." and "Copy Picture" of the window's plots (core/picture.h).
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    friend class LineObject;
    // Schedules one repaint for any number of drawing operations before it.
    void scheduleRepaint();
    bool repaintScheduled_ = false;
    Canvas canvas_;
    std::vector<std::unique_ptr<LineObject>> lines_;
    struct MenuChoice {
        QString text;
        std::function<bool()> isChecked;
        std::function<void()> toggle;
    };
    std::vector<MenuChoice> menuChoices_;
};

} // namespace tarnic
