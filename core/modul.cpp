#include "core/modul.h"

#include "core/form.h"
#include "core/numtext.h"
#include "core/twips.h"

#include <cmath>

namespace tarnic {

QColor BasicColor(int n) {
    static const QRgb palette[16] = {0x000000, 0x000080, 0x008000, 0x008080, 0x800000, 0x800080,
                                     0x808000, 0xC0C0C0, 0x808080, 0x0000FF, 0x00FF00, 0x00FFFF,
                                     0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
    return QColor::fromRgb(palette[n & 15]);
}

MarksFrame::MarksFrame(QWidget* parent) : Control<QFrame>(parent) {
    setFont(MarkFont());
}

void MakeMarks(QWidget* parent, MarksFrame*& frame, MarkLabels& marks, bool yAxis, double width) {
    frame = new MarksFrame(parent);
    frame->place(0, 0, yAxis ? 1200 : width, 330);
    for (auto& mark : marks) {
        mark = new Label(frame);
        mark->setAlignment(yAxis ? Qt::AlignRight | Qt::AlignVCenter
                                 : Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
}

QString MarkText(float value, int logFlag, bool yAxis) {
    if (logFlag == 1)
        value = static_cast<float>(yAxis ? std::pow(10.0, static_cast<double>(value))
                                         : std::exp(static_cast<double>(value)));
    QString text = QString::fromStdString(NumText(value));
    if (text.startsWith(' ')) text.remove(0, 1);
    if (text.startsWith('.')) text.prepend('0');
    if (text.startsWith("-.")) text = "-0." + text.mid(2);
    return text;
}

void DrawXMarks(Form& window, PlotSurface& surface, int logFlag, MarksFrame& marksFrame,
                const MarkLabels& marks, float xStart, float xEnd) {
    const double L = surface.Left();
    const double B = surface.Top() + surface.ScaleHeight();
    const double P = surface.Width() / 5;
    marksFrame.place(0, B + 200, window.Width(), marksFrame.Height());
    const float step = (xEnd - xStart) / 5;

    Label& first = *marks[0];
    first.place(first.Left(), 50, 1150, first.Height());
    const double M = first.Width();
    first.setLeft(L - M / 2);
    first.setCaption(MarkText(xStart, logFlag, false));
    window.Line(kLineSegment, L, B, L, B + 200);

    Label& last = *marks[5];
    last.place(L + surface.Width() - M / 2, 50, 1150, last.Height());
    last.setCaption(MarkText(xEnd, logFlag, false));
    window.Line(kLineSegment, L + surface.Width(), B, L + surface.Width(), B + 200);

    for (int k = 1; k <= 4; ++k) {
        const float value = xStart + static_cast<float>(k) * step;
        Label& mark = *marks[static_cast<std::size_t>(k)];
        mark.place(L + k * P - M / 2, 50, 1150, mark.Height());
        mark.setCaption(MarkText(value, logFlag, false));
        window.Line(kLineSegment, L + k * P, B, L + k * P, B + 200);
    }
}

void DrawYMarks(Form& window, PlotSurface& surface, int logFlag, MarksFrame& xMarksFrame,
                MarksFrame& yMarksFrame, const MarkLabels& marks, float yMin, float yMax) {
    const double L = surface.Left();
    const double T = surface.Top();
    const double G = surface.Height();
    yMarksFrame.place(yMarksFrame.Left(), 0, yMarksFrame.Width(), xMarksFrame.Top());
    const double h = marks[0]->Height();

    marks[0]->setCaption(MarkText(yMin, logFlag, true));
    marks[0]->place(0, T + G - h / 2, 1150, h);
    window.Line(kLineSegment, L - 200, T, L, T);

    marks[5]->setCaption(MarkText(yMax, logFlag, true));
    marks[5]->place(0, T - h / 2, 1150, marks[5]->Height());
    window.Line(kLineSegment, L - 200, T + G, L, T + G);

    for (int k = 1; k <= 4; ++k) {
        const float value = yMin + static_cast<float>(k) * (yMax - yMin) / 5;
        Label& mark = *marks[static_cast<std::size_t>(k)];
        const double y = T + (5 - k) * G / 5;
        mark.place(0, y - h / 2, 1150, mark.Height());
        mark.setCaption(MarkText(value, logFlag, true));
        window.Line(kLineSegment, L - 200, y, L, y);
    }
}

CursorPair::CursorPair(Setup setup) : s_(std::move(setup)) {}

void CursorPair::HScroll_Left_Change() { follow(true); }

void CursorPair::HScroll_Right_Change() { follow(false); }

void CursorPair::follow(bool leftMoved) {
    if (s_.unloadDependents) s_.unloadDependents();
    ScrollBar& bar = leftMoved ? *s_.barLeft : *s_.barRight;
    ScrollBar& otherBar = leftMoved ? *s_.barRight : *s_.barLeft;
    const double R = bar.Max() - bar.Min();
    const double W = s_.surface->ScaleWidth();
    const float x = static_cast<float>(W * (bar.Value() - bar.Min()) / R);
    const auto [y1, y2] = s_.ySpan(static_cast<float>(s_.surface->ScaleHeight()));
    LineObject& moved = leftMoved ? *s_.lineLeft : *s_.lineRight;
    LineObject& other = leftMoved ? *s_.lineRight : *s_.lineLeft;
    moved.setX1(x);
    moved.setX2(x);
    moved.setY1(y1);
    moved.setY2(y2);
    // The gap towards the other cursor: to the right of the left one, to the
    // left of the right one.
    const float gap = leftMoved ? s_.gap : -s_.gap;
    const bool tooClose =
        leftMoved ? moved.X1() > other.X1() - s_.gap : moved.X1() < other.X1() + s_.gap;
    if (tooClose) {
        other.setX1(moved.X1() + gap);
        other.setX2(moved.X2() + gap);
        const double value = (x + gap) * R / W + bar.Min();
        otherBar.setValue(RoundClamped(leftMoved ? std::min(value, double(otherBar.Max()))
                                                 : std::max(value, double(otherBar.Min()))));
    }
    if (s_.afterChange) s_.afterChange();
}

void CursorPair::reset() {
    s_.barLeft->setValue(s_.barLeft->Min());
    s_.barRight->setValue(s_.barRight->Max());
    const auto W = static_cast<float>(s_.surface->ScaleWidth());
    s_.lineRight->setX1(W);
    s_.lineRight->setX2(W);
    s_.lineLeft->setX1(0);
    s_.lineLeft->setX2(0);
}

} // namespace tarnic
