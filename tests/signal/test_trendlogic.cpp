// Clamps of the trend parameters and the samples between the cursors.
#include "signal/trendlogic.h"

#include <gtest/gtest.h>

using namespace tarnic;

TEST(TrendParameters, RadiusWithinHalfTheSignalPlusOneOrderWithinTenAndBelowTheRadius) {
    // 500 is not above 500.5; a text too large for 32 bits reads as 0.
    struct {
        double typed;
        std::int32_t samples, radius;
    } const radii[] = {{2.9, 1000, 2},   {500, 1000, 500}, {501, 1000, 501}, {600, 1000, 501},
                       {500, 1001, 500}, {501, 1001, 501}, {600, 1001, 501}, {-3, 100, 0},
                       {3e9, 100, 0}};
    for (const auto& k : radii)
        EXPECT_EQ(ClampTrendRadius(k.typed, k.samples), k.radius) << k.typed << " of " << k.samples;
    struct {
        double typed;
        std::int32_t radius, order;
    } const orders[] = {{7, 1, 0},   {3, 1, 0},    {7, 5, 4},   {12, 50, 10},
                        {2.9, 50, 2}, {-1, 50, 0}, {3e9, 50, 0}};
    for (const auto& k : orders)
        EXPECT_EQ(ClampTrendOrder(k.typed, k.radius), k.order) << k.typed << ", " << k.radius;
}

TEST(CursorSelection, BothEndsAreInclusive) {
    const auto all = SamplesBetweenCursors(300, 10770, 0, 32767, 0, 32767);
    ASSERT_EQ(all.size(), 300u);
    EXPECT_EQ(all.front(), 1);
    EXPECT_EQ(all.back(), 300) << "the last sample lies exactly on the right cursor";
    const auto middle = SamplesBetweenCursors(101, 1000, 16384, 32767, 0, 32767);
    EXPECT_EQ(middle.front(), 52);
    EXPECT_EQ(middle.size(), 50u);
    EXPECT_EQ(SamplesBetweenCursors(11, 1000, 10, 30, 0, 100), (std::vector<std::int32_t>{2, 3, 4}))
        << "a sample exactly on a cursor belongs to the selection";
    // The running estimate comes from the bar fractions.
    EXPECT_EQ(EstimatedSamplesBetween(5000, 0, 32767, 0, 32767), 5000);
    EXPECT_EQ(EstimatedSamplesBetween(5000, 10000, 14000, 0, 32767), 610);
    EXPECT_EQ(EstimatedSamplesBetween(1000, 16384, 32767, 0, 32767), 499);
}
