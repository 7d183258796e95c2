// The plot surface, the axis marks and the cursor pair.
#include "core/form.h"
#include "core/modul.h"
#include "core/workbench.h"

#include <QApplication>
#include <QTest>

#include "tests/core/qt_print.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tarnic;

namespace {

struct MarksControls {
    explicit MarksControls(FormWindow& w)
        : surface(new PlotSurface(&w)), xFrame(new MarksFrame(&w)), yFrame(new MarksFrame(&w)) {
        surface->placeSurface(1500, 300, 6000, 3000);
        xFrame->place(0, 0, 100, 500);
        yFrame->place(0, 0, 1300, 100);
        for (std::size_t i = 0; i < 6; ++i) {
            x[i] = new Label(xFrame);
            x[i]->place(0, 0, 800, 255);
            y[i] = new Label(yFrame);
            y[i]->place(0, 0, 800, 255);
        }
    }
    PlotSurface* surface;
    MarksFrame* xFrame;
    MarksFrame* yFrame;
    MarkLabels x{}, y{};
};

class MarksForm : public FormOf<MarksControls> {
  public:
    explicit MarksForm(Workbench& wb) : FormOf(wb, "MarksForm") {}

  protected:
    void connectHandlers() override { setClientSize(8000, 4500); }
};

std::vector<DrawOp> segments(Canvas& canvas) {
    std::vector<DrawOp> out;
    for (const DrawOp& op : canvas.record())
        if (op.kind == DrawKind::Segment) out.push_back(op);
    return out;
}

} // namespace

TEST(MarkText, LeadingBlankGoesAndABarePointGetsItsZero) {
    EXPECT_EQ(MarkText(0.25f, 0, false), "0.25");
    EXPECT_EQ(MarkText(-0.25f, 0, false), "-0.25");
    EXPECT_EQ(MarkText(0.0f, 0, true), "0");
    EXPECT_EQ(MarkText(1e7f, 0, false), "1E+07");
    EXPECT_EQ(MarkText(12.5f, 0, true), "12.5");
    EXPECT_EQ(MarkText(-1.5e-6f, 0, true), "-1.5E-06");
}

TEST(MarkText, LogFlagTakesENaturallyOnXAndTenOnY) {
    EXPECT_EQ(MarkText(static_cast<float>(std::log(100.0)), 1, false), "100");
    EXPECT_EQ(MarkText(2.0f, 1, true), "100");
    EXPECT_EQ(MarkText(-1.0f, 1, true), "0.1");
    EXPECT_EQ(MarkText(0.0f, 1, false), "1");
}

TEST(AxisMarks, XMarksStandUnderTheSurfaceAtFifths) {
    Workbench wb;
    MarksForm form(wb);
    MarksControls& c = form.ui();
    form.window().canvas().setRecording(true);
    DrawXMarks(form, *c.surface, 0, *c.xFrame, c.x, 10.0f, 60.0f);

    const double L = 1500, W = 6000, B = 300 + c.surface->ScaleHeight();
    EXPECT_DOUBLE_EQ(c.xFrame->Top(), B + 200);
    EXPECT_DOUBLE_EQ(c.xFrame->Left(), 0);
    EXPECT_DOUBLE_EQ(c.xFrame->Width(), form.Width());
    const char* texts[6] = {"10", "20", "30", "40", "50", "60"};
    const double positions[6] = {L, L + W / 5, L + 2 * W / 5, L + 3 * W / 5, L + 4 * W / 5, L + W};
    const int order[6] = {0, 1, 2, 3, 4, 5};
    for (int k : order) {
        const Label& mark = *c.x[static_cast<std::size_t>(k)];
        EXPECT_EQ(mark.Caption(), texts[k]) << k;
        EXPECT_DOUBLE_EQ(mark.Left(), positions[k] - 575) << k;
        EXPECT_DOUBLE_EQ(mark.Top(), 50);
        EXPECT_DOUBLE_EQ(mark.Width(), 1150);
    }
    const auto ticks = segments(form.window().canvas());
    ASSERT_EQ(ticks.size(), 6u);
    // First the two ends, then the four inner marks from left to right.
    const double tickOrder[6] = {positions[0], positions[5], positions[1],
                                 positions[2], positions[3], positions[4]};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_FLOAT_EQ(ticks[i].x1, static_cast<float>(tickOrder[i]));
        EXPECT_FLOAT_EQ(ticks[i].x2, static_cast<float>(tickOrder[i]));
        EXPECT_FLOAT_EQ(ticks[i].y1, static_cast<float>(B));
        EXPECT_FLOAT_EQ(ticks[i].y2, static_cast<float>(B + 200));
    }
}

TEST(AxisMarks, YMarksGrowUpwardAndEvenlyInTheLogarithm) {
    Workbench wb;
    MarksForm form(wb);
    MarksControls& c = form.ui();
    DrawXMarks(form, *c.surface, 0, *c.xFrame, c.x, 0.0f, 1.0f);
    form.window().canvas().setRecording(true);
    DrawYMarks(form, *c.surface, 1, *c.xFrame, *c.yFrame, c.y, 0.0f, 5.0f);

    EXPECT_DOUBLE_EQ(c.yFrame->Top(), 0);
    EXPECT_DOUBLE_EQ(c.yFrame->Height(), c.xFrame->Top());
    const double T = 300, G = 3000, h = 255;
    const char* texts[6] = {"1", "10", "100", "1000", "10000", "100000"};
    for (std::size_t k = 0; k < 6; ++k) EXPECT_EQ(c.y[k]->Caption(), texts[k]) << k;
    EXPECT_DOUBLE_EQ(c.y[0]->Top(), T + G - h / 2); // bottom
    EXPECT_DOUBLE_EQ(c.y[5]->Top(), T - h / 2);     // top
    for (int k = 1; k <= 4; ++k)
        EXPECT_DOUBLE_EQ(c.y[static_cast<std::size_t>(k)]->Top(), T + (5 - k) * G / 5 - h / 2);
    const auto ticks = segments(form.window().canvas());
    ASSERT_EQ(ticks.size(), 6u);
    for (const DrawOp& t : ticks) {
        EXPECT_FLOAT_EQ(t.x1, 1300.0f);
        EXPECT_FLOAT_EQ(t.x2, 1500.0f);
    }
    EXPECT_FLOAT_EQ(ticks[0].y1, 300.0f);
    EXPECT_FLOAT_EQ(ticks[1].y1, 3300.0f);
}

namespace {

// A surface with two cursors over it, driven by two bars.
struct CursorRig {
    QWidget top;
    PlotSurface* surface = new PlotSurface(&top);
    ScrollBar* left = new ScrollBar(&top, 0, 32767, 0);
    ScrollBar* right = new ScrollBar(&top, 0, 32767, 32767);
    LineObject* lineLeft;
    LineObject* lineRight;
    int unloads = 0;
    int maxDepth = 0, depth = 0;
    std::unique_ptr<CursorPair> pair;

    explicit CursorRig(float gap) {
        surface->placeSurface(0, 0, 6495, 5040);
        lineLeft = &surface->addLine(Qt::red);
        lineRight = &surface->addLine(Qt::red);
        pair = std::make_unique<CursorPair>(CursorPair::Setup{
            surface, lineLeft, lineRight, left, right, gap,
            [](float h) { return std::pair<float, float>(h / 3, h); }, [this] { ++unloads; }, {}});
        left->Change = [this] { track([this] { pair->HScroll_Left_Change(); }); };
        right->Change = [this] { track([this] { pair->HScroll_Right_Change(); }); };
        pair->reset();
    }
    template <class F> void track(F f) {
        maxDepth = std::max(maxDepth, ++depth);
        f();
        --depth;
    }
    double W() const { return surface->ScaleWidth(); }
};

} // namespace

TEST(CursorPair, ABarMovesItsCursorOverTheWholeWidth) {
    CursorRig rig(100);
    rig.left->setValue(16384);
    EXPECT_NEAR(rig.lineLeft->X1(), rig.W() * 16384 / 32767, 1e-3);
    EXPECT_EQ(rig.lineLeft->X1(), rig.lineLeft->X2());
    EXPECT_FLOAT_EQ(rig.lineLeft->Y1(), static_cast<float>(rig.surface->ScaleHeight() / 3));
    EXPECT_FLOAT_EQ(rig.lineLeft->Y2(), static_cast<float>(rig.surface->ScaleHeight()));
    EXPECT_EQ(rig.unloads, 1) << "every move unloads the dependent windows";
    EXPECT_FLOAT_EQ(rig.lineRight->X1(), static_cast<float>(rig.W()));
}

TEST(CursorPair, ACursorComingCloserThanTheGapPushesTheOther) {
    CursorRig rig(100);
    rig.right->setValue(20000);
    const float rightBefore = rig.lineRight->Y1();
    rig.left->setValue(19990);
    EXPECT_GE(rig.lineRight->X1() - rig.lineLeft->X1(), 100 - rig.W() / 32767 * 1.01);
    EXPECT_GT(rig.right->Value(), 19990);
    EXPECT_FLOAT_EQ(rig.lineRight->Y1(), rig.surface->ScaleHeight() / 3)
        << "the pushed bar's own handler gave its cursor the span";
    (void)rightBefore;

    rig.right->setValue(100);
    EXPECT_GE(rig.lineRight->X1() - rig.lineLeft->X1(), 100 - rig.W() / 32767 * 1.01);
    EXPECT_EQ(rig.left->Value(), 0) << "the left bar is limited to its minimum";
}

TEST(CursorPair, PushedAgainstTheEndTheRightStopsAtTheEdgeAndPushesBack) {
    CursorRig rig(100);
    rig.right->setValue(20000);
    rig.left->setValue(32767);
    EXPECT_EQ(rig.right->Value(), 32767) << "the value limit of the right bar";
    EXPECT_NEAR(rig.lineRight->X1(), rig.W(), 2 * rig.W() / 32767);
    EXPECT_NEAR(rig.lineLeft->X1(), rig.W() - 100, 2 * rig.W() / 32767);
    EXPECT_LT(rig.left->Value(), 32767);
    EXPECT_LE(rig.maxDepth, 4) << "the pair settles after a few nested calls";
}

TEST(CursorPair, NeverCloserThanTheGapForAnyMove) {
    for (float gap : {100.0f, 10.0f}) {
        CursorRig rig(gap);
        const double unit = rig.W() / 32767;
        for (int v = 0; v <= 32767; v += 1111) {
            rig.left->setValue(v);
            EXPECT_GE(rig.lineRight->X1() - rig.lineLeft->X1(), gap - 2 * unit) << v;
            rig.right->setValue(32767 - v);
            EXPECT_GE(rig.lineRight->X1() - rig.lineLeft->X1(), gap - 2 * unit) << v;
        }
    }
}

TEST(CursorPair, ResetSetsTheBarsThenTheLines) {
    CursorRig rig(10);
    rig.left->setValue(5000);
    rig.right->setValue(9000);
    rig.unloads = 0;
    rig.pair->reset();
    EXPECT_EQ(rig.left->Value(), 0);
    EXPECT_EQ(rig.right->Value(), 32767);
    EXPECT_EQ(rig.unloads, 2) << "both bars changed, both handlers ran";
    EXPECT_FLOAT_EQ(rig.lineLeft->X1(), 0.0f);
    EXPECT_FLOAT_EQ(rig.lineRight->X2(), static_cast<float>(rig.W()));
}

TEST(PlotSurface, RecordsOperationsAndKeepsOverlayLinesThroughCls) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 3000, 1500);
    EXPECT_DOUBLE_EQ(surface.ScaleWidth(), 3000 - 30);
    surface.canvas().setRecording(true);
    LineObject& cursor = surface.addLine(Qt::red);
    cursor.setX1(100);
    surface.setForeColor(BasicColor(2));
    surface.setDrawWidth(2);
    surface.setDrawStyle(1);
    surface.Line(kLineSegment, 0, 0, 300, 150);
    surface.Line(kLineFilledBox, 10, 20, 30, 40);
    surface.PSet(0, 45, 60);
    surface.Cls();
    const auto& ops = surface.canvas().record();
    ASSERT_EQ(ops.size(), 4u);
    EXPECT_EQ(ops[0].kind, DrawKind::Segment);
    EXPECT_EQ(ops[0].color, BasicColor(2).rgb());
    EXPECT_EQ(ops[0].width, 2);
    EXPECT_EQ(ops[0].style, 1);
    EXPECT_EQ(ops[1].kind, DrawKind::Box);
    EXPECT_FLOAT_EQ(ops[1].x2, 30.0f) << "a box keeps its width, not a second corner";
    EXPECT_EQ(ops[2].kind, DrawKind::Dot);
    EXPECT_EQ(ops[3].kind, DrawKind::Cls);
    EXPECT_FLOAT_EQ(cursor.X1(), 100.0f);
    const QImage& image = surface.canvas().image();
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7) ASSERT_EQ(image.pixel(x, y), qRgb(255, 255, 255));
}

TEST(PlotSurface, AMillionSegmentsCostOnePaintAndCoverEveryColumn) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 6495, 5040);
    const double W = surface.ScaleWidth(), H = surface.ScaleHeight();
    const int n = 1000000;
    surface.setForeColor(Qt::black);
    const std::uint64_t before = surface.canvas().paintedCount();
    // A saw that swings between 1/4 and 3/4 of the height many times per column.
    auto y = [&](int i) { return (i % 2 == 0) ? H / 4 : 3 * H / 4; };
    for (int i = 1; i < n; ++i)
        surface.Line(kLineSegment, W * (i - 1) / (n - 1), y(i - 1), W * i / (n - 1), y(i));
    EXPECT_LT(surface.canvas().pendingPoints(), 20000u) << "the waiting curve is reduced as it grows";
    const QImage& image = surface.canvas().image();
    EXPECT_EQ(surface.canvas().paintedCount() - before, 1u);
    const int top4 = static_cast<int>(H / 4 / 15), bottom4 = static_cast<int>(3 * H / 4 / 15);
    for (int x = 1; x < image.width() - 1; x += 5) {
        EXPECT_EQ(image.pixel(x, top4 + 1), qRgb(0, 0, 0)) << x;
        EXPECT_EQ(image.pixel(x, bottom4 - 1), qRgb(0, 0, 0)) << x;
        EXPECT_EQ(image.pixel(x, top4 - 3), qRgb(255, 255, 255)) << x;
    }
}

TEST(PlotSurface, CellsSmallerThanAPixelStillPaintTheirPixel) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 1530, 1530); // 100 x 100 pixels inside
    surface.setForeColor(QColor(0x12, 0x34, 0x56));
    surface.Line(kLineFilledBox, 15 * 40 + 2, 15 * 60 + 3, 5, 4); // a third of a pixel
    surface.setForeColor(QColor(0xAB, 0xCD, 0xEF));
    surface.Line(kLineFilledBox, 15 * 10, 15 * 10, 15 * 3, 15 * 2);
    const QImage& image = surface.canvas().image();
    EXPECT_EQ(image.pixel(40, 60), qRgb(0x12, 0x34, 0x56));
    EXPECT_EQ(image.pixel(41, 60), qRgb(255, 255, 255));
    for (int x = 10; x < 13; ++x)
        for (int y = 10; y < 12; ++y) EXPECT_EQ(image.pixel(x, y), qRgb(0xAB, 0xCD, 0xEF));
    EXPECT_EQ(image.pixel(13, 10), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(10, 12), qRgb(255, 255, 255));
}

TEST(PlotSurface, ThinMapCellsShowTheStrongestValueOfTheirPixel) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 1530, 1530);
    // Ten cells a tenth of a pixel wide share pixel column 20; the strongest,
    // wherever it stands among them, is what the pixel shows.
    for (int strongest : {0, 4, 9}) {
        surface.Cls();
        surface.BeginCells();
        for (int k = 0; k < 10; ++k) {
            const bool burst = k == strongest;
            surface.setForeColor(burst ? QColor(Qt::red) : QColor(Qt::blue));
            surface.Cell(15 * 20 + 1.5 * k, 15 * 5, 1.5, 15 * 3, burst ? 9.f : float(k) / 10);
        }
        EXPECT_EQ(surface.canvas().image().pixel(20, 6), qRgb(255, 0, 0)) << strongest;
    }
    // Without BeginCells the last cell wins, as for any filled box.
    surface.Cls();
    surface.setForeColor(Qt::red);
    surface.Cell(15 * 20, 15 * 5, 1.5, 15, 9.f);
    surface.setForeColor(Qt::blue);
    surface.Cell(15 * 20 + 1.5, 15 * 5, 1.5, 15, 0.f);
    EXPECT_EQ(surface.canvas().image().pixel(20, 5), qRgb(0, 0, 255));
}

TEST(PlotSurface, PointerInTwipsAndNoEventsWhenDisabled) {
    QWidget top;
    top.resize(400, 300);
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 3000, 3000);
    top.show();
    float gotX = -1, gotY = -1;
    int moves = 0, doubles = 0;
    surface.MouseMove = [&](int, int, float x, float y) { gotX = x, gotY = y, ++moves; };
    surface.DblClick = [&] { ++doubles; };
    QTest::mouseMove(&surface, QPoint(11, 21));
    ASSERT_EQ(moves, 1);
    EXPECT_FLOAT_EQ(gotX, 150.0f);
    EXPECT_FLOAT_EQ(gotY, 300.0f);
    QTest::mouseDClick(&surface, Qt::LeftButton, {}, QPoint(30, 30));
    EXPECT_EQ(doubles, 1);
    surface.setEnabled(false);
    QTest::mouseMove(&surface, QPoint(50, 50));
    EXPECT_EQ(moves, 1);
}
