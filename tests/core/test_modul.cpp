// The plot surface, the axis marks and the cursor pair.
#include "core/form.h"
#include "core/modul.h"
#include "core/workbench.h"

#include <QTest>

#include "tests/core/qt_print.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <set>

using namespace tarnic;

namespace {

const QRgb kWhite = qRgb(255, 255, 255);

// A surface over 1500..7500 across and 300..3300 down, with two frames of marks.
struct MarksControls {
    explicit MarksControls(FormWindow& w)
        : surface(new PlotSurface(&w)), xFrame(new MarksFrame(&w)), yFrame(new MarksFrame(&w)) {
        surface->placeSurface(1500, 300, 6000, 3000);
        xFrame->place(0, 0, 100, 500);
        yFrame->place(0, 0, 1300, 100);
        for (std::size_t i = 0; i < 6; ++i) {
            (x[i] = new Label(xFrame))->place(0, 0, 800, 255);
            (y[i] = new Label(yFrame))->place(0, 0, 800, 255);
        }
    }
    PlotSurface* surface;
    MarksFrame *xFrame, *yFrame;
    MarkLabels x{}, y{};
};

struct MarksForm : FormOf<MarksControls> {
    explicit MarksForm(Workbench& wb) : FormOf(wb, "MarksForm") {}
    void connectHandlers() override { setClientSize(8000, 4500); }
};

// The ticks drawn since the last call, as x1, y1, x2, y2.
using Tick = std::array<float, 4>;
std::set<Tick> ticks(Canvas& canvas) {
    std::set<Tick> out;
    for (const DrawOp& op : canvas.record())
        if (op.kind == DrawKind::Segment) out.insert({op.x1, op.y1, op.x2, op.y2});
    canvas.clearRecord();
    return out;
}

} // namespace

TEST(MarkText, LeadingBlankGoesABarePointGetsItsZeroAndTheLogFlagIsUndone) {
    const struct { float value; int log; bool yAxis; const char* text; } cases[] = {
        {0.25f, 0, false, "0.25"}, {-0.25f, 0, false, "-0.25"}, {0.0f, 0, true, "0"},
        {1e7f, 0, false, "1E+07"}, {12.5f, 0, true, "12.5"}, {-1.5e-6f, 0, true, "-1.5E-06"},
        // Logarithms are natural on x and decimal on y.
        {static_cast<float>(std::log(100.0)), 1, false, "100"}, {0.0f, 1, false, "1"},
        {2.0f, 1, true, "100"}, {-1.0f, 1, true, "0.1"}};
    for (const auto& c : cases) EXPECT_EQ(MarkText(c.value, c.log, c.yAxis), c.text) << c.value;
}

TEST(AxisMarks, EachMarkStandsOnItsTickAtFifthsOfTheSurface) {
    Workbench wb;
    MarksForm form(wb);
    MarksControls& c = form.ui();
    Canvas& canvas = form.window().canvas();
    canvas.setRecording(true);
    DrawXMarks(form, *c.surface, 0, *c.xFrame, c.x, 10.0f, 60.0f);
    EXPECT_DOUBLE_EQ(c.xFrame->Width(), form.Width());
    // An x tick hangs from the surface down to the frame of the marks; a y tick
    // reaches from the marks to the surface.
    const float bottom = static_cast<float>(300 + c.surface->ScaleHeight());
    const float marksTop = static_cast<float>(c.xFrame->Top());
    std::set<Tick> xTicks, yTicks;
    for (float k = 0; k < 6; ++k) {
        xTicks.insert({1500 + 1200 * k, bottom, 1500 + 1200 * k, marksTop});
        yTicks.insert({1300, 300 + 600 * k, 1500, 300 + 600 * k});
    }
    EXPECT_EQ(ticks(canvas), xTicks);
    // Log y from 10^0 to 10^5: a mark per decade, growing upward.
    DrawYMarks(form, *c.surface, 1, *c.xFrame, *c.yFrame, c.y, 0.0f, 5.0f);
    EXPECT_DOUBLE_EQ(c.yFrame->Height(), marksTop);
    EXPECT_EQ(ticks(canvas), yTicks);
    for (std::size_t k = 0; k < 6; ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(c.x[k]->Caption(), QString::number(10 * (k + 1)));
        EXPECT_DOUBLE_EQ(c.x[k]->Left() + c.x[k]->Width() / 2, 1500 + 1200.0 * k);
        EXPECT_EQ(c.y[k]->Caption(), QString::number(std::pow(10, k), 'f', 0));
        EXPECT_DOUBLE_EQ(c.y[k]->Top() + c.y[k]->Height() / 2, 3300 - 600.0 * k);
    }
}

namespace {

// A surface with two cursors over it, driven by two bars, kept 100 twips apart.
struct CursorRig {
    QWidget top;
    PlotSurface* surface = new PlotSurface(&top);
    ScrollBar* left = new ScrollBar(&top, 0, 32767, 0);
    ScrollBar* right = new ScrollBar(&top, 0, 32767, 32767);
    LineObject* lineLeft = &surface->addLine(Qt::red);
    LineObject* lineRight = &surface->addLine(Qt::red);
    int unloads = 0, maxDepth = 0, depth = 0;
    std::unique_ptr<CursorPair> pair;

    explicit CursorRig(float gap) {
        surface->placeSurface(0, 0, 6495, 5040);
        pair = std::make_unique<CursorPair>(CursorPair::Setup{
            surface, lineLeft, lineRight, left, right, gap,
            [](float h) { return std::pair<float, float>(h / 3, h); }, [this] { ++unloads; }, {}});
        left->Change = [this] { track(&CursorPair::HScroll_Left_Change); };
        right->Change = [this] { track(&CursorPair::HScroll_Right_Change); };
        pair->reset();
    }
    void track(void (CursorPair::*change)()) {
        maxDepth = std::max(maxDepth, ++depth);
        ((*pair).*change)();
        --depth;
    }
    double W() const { return surface->ScaleWidth(); }
    double H() const { return surface->ScaleHeight(); }
    double gap() const { return lineRight->X1() - lineLeft->X1(); }
};

} // namespace

TEST(CursorPair, ABarMovesItsCursorAndACloserOnePushesTheOtherUpToTheEnds) {
    CursorRig rig(100);
    const double unit = rig.W() / 32767;
    rig.left->setValue(16384);
    EXPECT_NEAR(rig.lineLeft->X1(), rig.W() * 16384 / 32767, 1e-3);
    EXPECT_EQ(rig.lineLeft->X1(), rig.lineLeft->X2());
    EXPECT_TRUE(rig.lineLeft->Y1() == float(rig.H() / 3) && rig.lineLeft->Y2() == float(rig.H()));
    rig.left->setValue(16384);
    EXPECT_EQ(rig.unloads, 1) << "every move unloads the dependent windows, no assignment of "
                                 "the present value does";
    rig.left->setValue(0);
    rig.right->setValue(20000);
    rig.left->setValue(19990);
    EXPECT_GE(rig.gap(), 100 - 1.01 * unit);
    EXPECT_GT(rig.right->Value(), 19990);
    EXPECT_FLOAT_EQ(rig.lineRight->Y1(), rig.H() / 3) << "the pushed bar's handler ran too";
    EXPECT_GE(rig.maxDepth, 2) << "inside the handler of the bar that pushed";
    rig.right->setValue(100);
    EXPECT_EQ(rig.left->Value(), 0) << "the left bar is limited to its minimum";
    // Pushed against the end the right stops at the edge and pushes back.
    rig.left->setValue(32767);
    EXPECT_EQ(rig.right->Value(), 32767);
    EXPECT_NEAR(rig.lineRight->X1(), rig.W(), 2 * unit);
    EXPECT_NEAR(rig.lineLeft->X1(), rig.W() - 100, 2 * unit);
    EXPECT_LE(rig.maxDepth, 4) << "the pair settles after a few nested calls";
    const float before = rig.lineLeft->X1();
    rig.left->triggerAction(QAbstractSlider::SliderPageStepSub); // a move by the user
    EXPECT_LT(rig.lineLeft->X1(), before);
    for (int v = 0; v <= 32767; v += 1111) {
        rig.left->setValue(v);
        rig.right->setValue(32767 - v);
        EXPECT_GE(rig.gap(), 100 - 2 * unit) << "never closer than the gap, " << v;
    }
    rig.right->setValue(30000);
    rig.unloads = 0;
    rig.pair->reset(); // the bars first, then the lines
    EXPECT_TRUE(rig.left->Value() == 0 && rig.right->Value() == 32767);
    EXPECT_EQ(rig.unloads, 2) << "both bars changed, both handlers ran";
    EXPECT_TRUE(rig.lineLeft->X1() == 0.0f && rig.lineRight->X2() == float(rig.W()));
}

TEST(PlotSurface, RecordsOperationsKeepsOverlaysThroughClsAndPaintsSubPixelBoxesAndCells) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 1530, 1530); // 100 x 100 pixels inside
    EXPECT_DOUBLE_EQ(surface.ScaleWidth(), 1530 - 30) << "a border of one pixel each side";
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
    EXPECT_TRUE(ops[0].color == qRgb(0, 0x80, 0) && ops[0].width == 2 && ops[0].style == 1)
        << "basic colour 2 is green";
    EXPECT_TRUE(ops[1].kind == DrawKind::Box && ops[1].x2 == 30.0f) << "a box keeps its width";
    EXPECT_TRUE(ops[2].kind == DrawKind::Dot && ops[3].kind == DrawKind::Cls);
    EXPECT_FLOAT_EQ(cursor.X1(), 100.0f);
    QImage white(surface.canvas().image().size(), QImage::Format_RGB32);
    white.fill(kWhite);
    EXPECT_TRUE(surface.canvas().image() == white) << "Cls leaves the background";
    // A box a third of a pixel wide paints the pixel it starts in.
    surface.setForeColor(QColor(0x12, 0x34, 0x56));
    surface.Line(kLineFilledBox, 15 * 40 + 2, 15 * 60 + 3, 5, 4);
    EXPECT_EQ(surface.canvas().image().pixel(40, 60), qRgb(0x12, 0x34, 0x56));
    EXPECT_EQ(surface.canvas().image().pixel(41, 60), kWhite);
    // Ten cells a tenth of a pixel wide share pixel column 20; the strongest,
    // wherever it stands among them, is what the pixel shows.
    for (int strongest : {0, 4, 9}) {
        surface.Cls();
        surface.BeginCells();
        for (int k = 0; k < 10; ++k) {
            surface.setForeColor(k == strongest ? Qt::red : Qt::blue);
            surface.Cell(15 * 20 + 1.5 * k, 15 * 5, 1.5, 15 * 3, k == strongest ? 9.f : k / 10.f);
        }
        EXPECT_EQ(surface.canvas().image().pixel(20, 6), qRgb(255, 0, 0)) << strongest;
    }
}

TEST(PlotSurface, AMillionSegmentsCostOnePaintAndEachColumnSpansItsLowestToItsHighestPoint) {
    QWidget top;
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 6495, 5040);
    const double W = surface.ScaleWidth(), H = surface.ScaleHeight();
    const int n = 1000000;
    const std::uint64_t before = surface.canvas().paintedCount();
    // Half the height, with a spike up to 1/4 and one down to 3/4 every
    // thousand samples: two or three of each in every pixel column, whose
    // first and last samples lie in the middle.
    auto y = [&](int i) { return i % 1000 == 300 ? H / 4 : i % 1000 == 600 ? 3 * H / 4 : H / 2; };
    for (int i = 1; i < n; ++i)
        surface.Line(kLineSegment, W * (i - 1) / (n - 1), y(i - 1), W * i / (n - 1), y(i));
    EXPECT_LT(surface.canvas().pendingPoints(), 20000u) << "the waiting curve is reduced";
    const QImage& image = surface.canvas().image();
    EXPECT_EQ(surface.canvas().paintedCount() - before, 1u);
    const int top4 = static_cast<int>(H / 4 / 15), bottom4 = static_cast<int>(3 * H / 4 / 15);
    for (int x = 1; x < image.width() - 1; x += 5)
        EXPECT_EQ((std::array{image.pixel(x, top4 + 1), image.pixel(x, bottom4 - 1),
                              image.pixel(x, top4 - 3)}),
                  (std::array{qRgb(0, 0, 0), qRgb(0, 0, 0), kWhite})) << x;
}

TEST(PlotSurface, PointerInTwipsAndNoEventsWhenDisabled) {
    QWidget top;
    top.resize(400, 300);
    PlotSurface surface(&top);
    surface.placeSurface(0, 0, 3000, 3000);
    top.show();
    std::vector<std::pair<float, float>> moves;
    int doubles = 0;
    surface.MouseMove = [&](int, int, float x, float y) { moves.emplace_back(x, y); };
    surface.DblClick = [&] { ++doubles; };
    QTest::mouseMove(&surface, QPoint(11, 21)); // counted inside the one-pixel border
    QTest::mouseDClick(&surface, Qt::LeftButton, {}, QPoint(30, 30));
    surface.setEnabled(false);
    QTest::mouseMove(&surface, QPoint(50, 50));
    EXPECT_EQ(moves, (std::vector<std::pair<float, float>>{{150.0f, 300.0f}}));
    EXPECT_EQ(doubles, 1);
}
