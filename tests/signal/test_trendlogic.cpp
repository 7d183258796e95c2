// Clamps of the trend parameters and the samples between the cursors.
#include "signal/trendlogic.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tarnic;

TEST(TrendParameters, RadiusWithinHalfTheSignalPlusOneOrderWithinTenAndBelowTheRadius) {
    // 500 is not above 500.5; a text too large for 32 bits reads as 0.
    for (auto [typed, samples, radius] :
         {std::tuple{2.9, 1000, 2}, {500.0, 1000, 500}, {501.0, 1000, 501}, {600.0, 1000, 501},
          {500.0, 1001, 500}, {501.0, 1001, 501}, {600.0, 1001, 501}, {-3.0, 100, 0}, {3e9, 100, 0}})
        EXPECT_EQ(ClampTrendRadius(typed, samples), radius) << typed << " of " << samples;
    for (auto [typed, radius, order] : {std::tuple{7.0, 1, 0}, {3.0, 1, 0}, {7.0, 5, 4},
                                        {12.0, 50, 10}, {2.9, 50, 2}, {-1.0, 50, 0}, {3e9, 50, 0}})
        EXPECT_EQ(ClampTrendOrder(typed, radius), order) << typed << ", " << radius;
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
