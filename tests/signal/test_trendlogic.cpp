// Clamps of the trend parameters and the samples between the cursors.
#include "signal/trendlogic.h"

#include <gtest/gtest.h>

using namespace tarnic;

TEST(TrendRadius, IntegerPartWithinHalfTheSignalPlusOne) {
    EXPECT_EQ(ClampTrendRadius(2.9, 1000), 2);
    EXPECT_EQ(ClampTrendRadius(500, 1000), 500);
    EXPECT_EQ(ClampTrendRadius(501, 1000), 501);
    EXPECT_EQ(ClampTrendRadius(600, 1000), 501);
    EXPECT_EQ(ClampTrendRadius(500, 1001), 500) << "500 is not above 500.5";
    EXPECT_EQ(ClampTrendRadius(501, 1001), 501);
    EXPECT_EQ(ClampTrendRadius(600, 1001), 501);
    EXPECT_EQ(ClampTrendRadius(-3, 100), 0);
    EXPECT_EQ(ClampTrendRadius(3e9, 100), 0) << "a text too large for 32 bits reads as 0";
}

TEST(TrendOrder, WithinTenAndBelowTheRadius) {
    EXPECT_EQ(ClampTrendOrder(7, 1), 0);
    EXPECT_EQ(ClampTrendOrder(3, 1), 0);
    EXPECT_EQ(ClampTrendOrder(7, 5), 4);
    EXPECT_EQ(ClampTrendOrder(12, 50), 10);
    EXPECT_EQ(ClampTrendOrder(2.9, 50), 2);
    EXPECT_EQ(ClampTrendOrder(-1, 50), 0);
    EXPECT_EQ(ClampTrendOrder(3e9, 50), 0);
}

TEST(CursorSelection, BothEndsAreInclusive) {
    const auto all = SamplesBetweenCursors(300, 10770, 0, 32767, 0, 32767);
    ASSERT_EQ(all.size(), 300u);
    EXPECT_EQ(all.front(), 1);
    EXPECT_EQ(all.back(), 300) << "the last sample lies exactly on the right cursor";
    const auto middle = SamplesBetweenCursors(101, 1000, 16384, 32767, 0, 32767);
    EXPECT_EQ(middle.front(), 52);
    EXPECT_EQ(middle.size(), 50u);
    // A sample exactly on a cursor belongs to the selection.
    const auto exact = SamplesBetweenCursors(11, 1000, 10, 30, 0, 100);
    EXPECT_EQ(exact, (std::vector<std::int32_t>{2, 3, 4}));
}

TEST(CursorSelection, TheRunningEstimateComesFromTheBarFractions) {
    EXPECT_EQ(EstimatedSamplesBetween(5000, 0, 32767, 0, 32767), 5000);
    EXPECT_EQ(EstimatedSamplesBetween(5000, 10000, 14000, 0, 32767), 610);
    EXPECT_EQ(EstimatedSamplesBetween(1000, 16384, 32767, 0, 32767), 499);
}
