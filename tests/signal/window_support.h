// Helpers of the analysis-window tests: a loaded series, the message boxes a
// test meets, the enabled state of a row of controls, the captions of an
// axis's marks and the recorded drawing of a plot surface as the user sees it.
#pragma once

#include "core/msgbox.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace tarnic::test {

struct Message {
    QString text, title;
};

// Collects the message boxes shown while it lives.
struct MessageBoxes : std::vector<Message> {
    MessageBoxes() {
        setMsgBoxHook([this](const QString& text, const QString& title) {
            push_back({text, title});
        });
    }
    ~MessageBoxes() { setMsgBoxHook({}); }
    // The one message box so far.
    void expectOne(const QString& title, const QString& text) const {
        ASSERT_EQ(size(), 1u);
        EXPECT_EQ(front().title, title);
        EXPECT_EQ(front().text, text);
    }
};

// The enabled flags of the controls in turn, e.g. "0101".
inline std::string enabled(std::initializer_list<QWidget*> controls) {
    std::string flags;
    for (QWidget* w : controls) flags += w->isEnabled() ? '1' : '0';
    return flags;
}

inline QStringList captions(const MarkLabels& marks) {
    QStringList out;
    for (const Label* mark : marks) out << mark->Caption();
    return out;
}

// The main window's fixture with a series of n samples f(1) .. f(n) loaded
// under a file name, as the analysis windows start from it, and the signal and
// fragment windows that several of them start from.
class AnalysisWindow : public MainWindow {
  protected:
    void load(int n, const std::function<double(int)>& f, const std::string& name = "s.dat") {
        start();
        write(name, series(n, f));
        open(name);
    }
    SignalPlot& plot() { return wb->signalPlot(); }
    SignalZoomForm& zoom() { return wb->signalZoomForm(); }
    SignalZoomFormControls& zc() { return wb->signalZoomForm().ui(); }
};

// The recorded operations of one kind, of one colour (0: any; recorded
// colours are opaque).
inline std::vector<DrawOp> drawn(PlotSurface& s, DrawKind kind, QRgb colour = 0) {
    std::vector<DrawOp> out;
    for (const DrawOp& op : s.canvas().record())
        if (op.kind == kind && (colour == 0 || op.color == colour)) out.push_back(op);
    return out;
}

// The recorded operations but Cls as the user sees them: kind (Segment, Box,
// Dot), both ends as fractions of the surface's width and height to 0.001,
// colour, pen width and style; e.g. "S 0 1 0.25 0.75 000080 2 0".
inline std::vector<std::string> shapes(PlotSurface& s) {
    const double W = s.ScaleWidth(), H = s.ScaleHeight();
    auto f = [](double v) { return std::round(v * 1000) / 1000 + 0.0; };
    std::vector<std::string> out;
    for (const DrawOp& op : s.canvas().record()) {
        if (op.kind == DrawKind::Cls) continue;
        char text[96];
        std::snprintf(text, sizeof text, "%c %g %g %g %g %06X %d %d", "CSBD"[int(op.kind)],
                      f(op.x1 / W), f(op.y1 / H), f(op.x2 / W), f(op.y2 / H),
                      op.color & 0xFFFFFFu, op.width, op.style);
        out.push_back(text);
    }
    return out;
}

} // namespace tarnic::test
