// The drawing side of the map colouring: a cell, the colour scale's bands
// (recorded boxes and the pixels they leave) and its tool tip at both edges.
#include "maps/colourscale.h"
#include "tests/core/qt_print.h"

#include <QWidget>

#include <gtest/gtest.h>

using namespace tarnic;

namespace {

class ColourScale : public ::testing::Test {
  protected:
    void SetUp() override {
        scale = new PlotSurface(&parent);
        scale->placeSurface(0, 0, 450, 5400); // 28 by 358 pixels inside
        scale->canvas().setRecording(true);
    }
    QRgb pixel(int x, int y) { return scale->canvas().image().pixel(x, y) & 0xFFFFFFu; }

    QWidget parent;
    PlotSurface* scale = nullptr;
};

} // namespace

TEST_F(ColourScale, FillCellSetsTheColourAndFillsTheBox) {
    FillCell(*scale, 15, 30, 150, 45, 0xC0C0FF);
    ASSERT_EQ(scale->canvas().record().size(), 1u);
    const DrawOp& op = scale->canvas().record().front();
    EXPECT_EQ(op.kind, DrawKind::Box);
    EXPECT_EQ(std::vector<float>({op.x1, op.y1, op.x2, op.y2}),
              std::vector<float>({15, 30, 150, 45}));
    EXPECT_EQ(op.color & 0xFFFFFFu, 0xC0C0FFu);
    EXPECT_EQ(scale->ForeColor().rgb() & 0xFFFFFFu, 0xC0C0FFu);
    // Pixels 1 .. 10 across and 2 .. 4 down.
    EXPECT_EQ(pixel(1, 2), 0xC0C0FFu);
    EXPECT_EQ(pixel(10, 4), 0xC0C0FFu);
    EXPECT_EQ(pixel(11, 2), 0xFFFFFFu);
    EXPECT_EQ(pixel(1, 5), 0xFFFFFFu);
}

TEST_F(ColourScale, TwelveBandsFromWhiteAtTheBottomToBlackAtTheTop) {
    DrawColorScale(*scale, MapPalette12);
    const double H = scale->ScaleHeight();
    const auto& ops = scale->canvas().record();
    ASSERT_EQ(ops.size(), 12u);
    for (std::size_t k = 1; k <= 12; ++k) {
        EXPECT_EQ(ops[k - 1].x1, 0);
        EXPECT_FLOAT_EQ(ops[k - 1].y1, static_cast<float>(H - H * static_cast<double>(k) / 12));
        EXPECT_EQ(ops[k - 1].x2, 420); // the whole width
        EXPECT_FLOAT_EQ(ops[k - 1].y2, static_cast<float>(H / 12));
    }
    EXPECT_EQ(ops.front().y1 + ops.front().y2, 5370.0f) << "band 1 on the bottom edge";
    EXPECT_EQ(ops.back().y1, 0.0f) << "band 12 on the top edge";
    // Each band is about 30 pixels high.
    EXPECT_EQ(pixel(14, 357), 0xFFFFFFu);
    EXPECT_EQ(pixel(14, 322), 0xE0E0E0u);
    EXPECT_EQ(pixel(14, 182), 0xFF8000u); // band 6 under the middle
    EXPECT_EQ(pixel(14, 176), 0x00C000u); // band 7 over it
    EXPECT_EQ(pixel(14, 40), 0x0000FFu);
    EXPECT_EQ(pixel(0, 0), 0x000000u);
    EXPECT_EQ(pixel(27, 5), 0x000000u);
}

TEST_F(ColourScale, FifteenBandsFromDarkBlueAtTheBottomToWhiteAtTheTop) {
    DrawColorScale(*scale, MapPalette15);
    ASSERT_EQ(scale->canvas().record().size(), 15u);
    // Each band is about 24 pixels high; eight of fifteen are dark blue.
    EXPECT_EQ(pixel(14, 357), 0x000080u);
    EXPECT_EQ(pixel(14, 179), 0x000080u);
    EXPECT_EQ(pixel(14, 150), 0x0000FFu);
    EXPECT_EQ(pixel(14, 30), 0xFF0000u);
    EXPECT_EQ(pixel(14, 2), 0xFFFFFFu);
}

TEST_F(ColourScale, ToolTipShowsZmaxAtTheTopAndZminAtTheBottom) {
    ColorScaleTip(*scale, 0, -3.25f, 7.5f);
    EXPECT_EQ(scale->ToolTipText(), " 7.5");
    ColorScaleTip(*scale, 5370, -3.25f, 7.5f);
    EXPECT_EQ(scale->ToolTipText(), "-3.25");
    ColorScaleTip(*scale, 5370, -12.34567f, -1.0f);
    EXPECT_EQ(scale->ToolTipText(), "-12.34567");
    ColorScaleTip(*scale, 1790, 0, 0); // before any run
    EXPECT_EQ(scale->ToolTipText(), " 0");
}
