#include "core/plotsurface.h"

#include "core/msgbox.h"
#include "core/picture.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QSettings>
#include <QToolTip>

namespace tarnic {

LineObject::LineObject(PlotSurface& surface, QColor color) : surface_(surface), color_(color) {}

void LineObject::setX1(float v) { x1_ = v, surface_.update(); }
void LineObject::setY1(float v) { y1_ = v, surface_.update(); }
void LineObject::setX2(float v) { x2_ = v, surface_.update(); }
void LineObject::setY2(float v) { y2_ = v, surface_.update(); }
void LineObject::setVisible(bool on) { visible_ = on, surface_.update(); }

PlotSurface::PlotSurface(QWidget* parent) : Control<QFrame>(parent) {
    setFrameShape(QFrame::Box);
    setLineWidth(1);
    setMouseTracking(true);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PlotSurface::placeSurface(double left, double top, double width, double height) {
    place(left, top, width, height);
    const QRect r = twipsRect(left, top, width, height);
    canvas_.resize(r.width() - 2, r.height() - 2);
}

void PlotSurface::scheduleRepaint() {
    if (repaintScheduled_) return;
    repaintScheduled_ = true;
    update();
}

void PlotSurface::Cls() {
    canvas_.Cls();
    scheduleRepaint();
}

void PlotSurface::Refresh() {
    canvas_.image();
    repaint();
}

void PlotSurface::Line(int flag, double x1, double y1, double x2, double y2, int color) {
    canvas_.Line(flag, x1, y1, x2, y2, color);
    scheduleRepaint();
}

void PlotSurface::PSet(int flag, double x, double y, int color) {
    canvas_.PSet(flag, x, y, color);
    scheduleRepaint();
}

void PlotSurface::Cell(double x, double y, double width, double height, float value) {
    canvas_.Cell(x, y, width, height, value);
    scheduleRepaint();
}

LineObject& PlotSurface::addLine(QColor color) {
    lines_.push_back(std::make_unique<LineObject>(*this, color));
    return *lines_.back();
}

void PlotSurface::paintEvent(QPaintEvent* event) {
    repaintScheduled_ = false;
    QFrame::paintEvent(event);
    QPainter p(this);
    if (DrawingPicture()) {
        // A picture replays the drawing and leaves the cursors out.
        p.save();
        p.translate(1, 1);
        canvas_.replay(p);
        p.restore();
        p.setPen(palette().color(QPalette::Mid));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
        return;
    }
    p.drawImage(QPoint(1, 1), canvas_.image());
    const double tpp = twipsPerPixel();
    for (const auto& line : lines_) {
        if (!line->visible_) continue;
        p.setPen(QPen(line->color_, 1));
        p.drawLine(QPointF(1 + line->x1_ / tpp, 1 + line->y1_ / tpp),
                   QPointF(1 + line->x2_ / tpp, 1 + line->y2_ / tpp));
    }
    p.setPen(palette().color(QPalette::Mid));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
}

void PlotSurface::mouseMoveEvent(QMouseEvent* event) {
    if (!MouseMove) return;
    const double tpp = twipsPerPixel();
    const QPointF pos = event->position() - QPointF(1, 1);
    MouseMove(static_cast<int>(event->buttons()), static_cast<int>(event->modifiers()),
              static_cast<float>(pos.x() * tpp), static_cast<float>(pos.y() * tpp));
    if (underMouse() && !toolTip().isEmpty())
        QToolTip::showText(event->globalPosition().toPoint(), toolTip(), this);
}

void PlotSurface::addMenuChoice(const QString& text, std::function<bool()> isChecked,
                                std::function<void()> toggle) {
    menuChoices_.push_back({text, std::move(isChecked), std::move(toggle)});
}

std::unique_ptr<QMenu> PlotSurface::contextMenu() {
    auto menu = std::make_unique<QMenu>(this);
    for (const MenuChoice& choice : menuChoices_) {
        QAction* action = menu->addAction(choice.text);
        action->setCheckable(true);
        action->setChecked(choice.isChecked());
        QObject::connect(action, &QAction::triggered, menu.get(), [toggle = choice.toggle] { toggle(); });
    }
    if (!menuChoices_.empty()) menu->addSeparator();
    menu->addAction("Save Picture...");
    menu->addAction("Copy Picture");
    return menu;
}

void PlotSurface::contextMenuEvent(QContextMenuEvent* event) {
    QWidget& window = *this->window();
    const std::unique_ptr<QMenu> menu = contextMenu();
    QAction* chosen = menu->exec(event->globalPos());
    if (!chosen) return;
    const QString text = chosen->text();
    const bool save = text == "Save Picture...";
    if (text == "Copy Picture") CopyPicture(window);
    if (!save) return;
    // The dialog opens where the last picture went.
    QSettings settings;
    const QString folder = settings.value("pictures/folder", QDir::homePath()).toString();
    const QString path = QFileDialog::getSaveFileName(&window, "Save Picture",
                                                      folder + "/picture.png", kPictureFilter);
    if (path.isEmpty()) return;
    settings.setValue("pictures/folder", QFileInfo(path).absolutePath());
    const QString failure = SavePicture(window, path);
    if (!failure.isEmpty()) MsgBox("The picture was not saved:\r\n" + path + "\r\n" + failure, "Save Picture");
}

void PlotSurface::mouseDoubleClickEvent(QMouseEvent* event) {
    QFrame::mouseDoubleClickEvent(event);
    if (DblClick) DblClick();
}

} // namespace tarnic
