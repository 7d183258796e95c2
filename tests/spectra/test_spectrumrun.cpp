// The arithmetic around a spectrum run: clamps, transform sizes, grids and the
// number of windows of the main estimate.
#include "spectra/spectrumrun.h"

#include <gtest/gtest.h>

using namespace tarnic;

TEST(SpectrumClamps, WindowLengthsLieBetween32AndTheSignal) {
    EXPECT_EQ(ClampWindowLength(2048.9, 5000), 2048);
    EXPECT_EQ(ClampWindowLength(0, 5000), 32) << "a text that is no number";
    EXPECT_EQ(ClampWindowLength(20, 5000), 32);
    EXPECT_EQ(ClampWindowLength(40, 33), 33);
    EXPECT_EQ(ClampWindowLength(1e12, 5000), 5000) << "too large for 32 bits: the upper clamp";
}

TEST(SpectrumClamps, TheOrderIsRoundedToAThirdOfTheWindow) {
    EXPECT_EQ(ClampArOrder(20, 32), 11);
    EXPECT_EQ(ClampArOrder(11, 32), 11) << "10.67 is less than 11: replaced by 11";
    EXPECT_EQ(ClampArOrder(10, 32), 10);
    EXPECT_EQ(ClampArOrder(1000, 2048), 683);
    EXPECT_EQ(ClampArOrder(2.9, 2048), 2);
    EXPECT_EQ(ClampArOrder(-0.5, 2048), 1);
    EXPECT_EQ(ClampArOrder(0, 2048), 1);
}

TEST(SpectrumClamps, TheRadiusIsCutToAnEighthOfTheWindow) {
    EXPECT_EQ(ClampRadius(9, 60), 7);
    EXPECT_EQ(ClampRadius(1000, 2048), 256);
    EXPECT_EQ(ClampRadius(-1, 2048), 0);
    EXPECT_EQ(ClampRadius(3.7, 2048), 3);
}

TEST(SpectrumClamps, TheSamplingIntervalMustBePositive) {
    EXPECT_EQ(ClampDeltaT(0), 1.0f);
    EXPECT_EQ(ClampDeltaT(-2), 1.0f);
    EXPECT_EQ(ClampDeltaT(0.1), 0.1f);
    EXPECT_EQ(ClampDeltaT(1e300), 1.0f) << "beyond single precision";
}

TEST(SpectrumGrids, PowersOfTwoAndFrequenciesFromZero) {
    EXPECT_EQ(TransformSize(32), 32);
    EXPECT_EQ(TransformSize(33), 64);
    EXPECT_EQ(TransformSize(2048), 2048);
    EXPECT_EQ(TransformSize(2049), 4096);
    const auto grid = FrequencyGrid(64, 0.5f);
    ASSERT_EQ(grid.size(), 32u);
    EXPECT_EQ(grid[0], 0.0f);
    EXPECT_EQ(grid[1], static_cast<float>(1.0 / 32.0));
    EXPECT_EQ(grid[31], static_cast<float>(31.0 / 32.0)) << "one step below the Nyquist 1/(2 dT)";
}

TEST(ArWindowSearch, TenThousandSamplesWith2048) {
    const ArWindows w = SearchArWindows(10000, 2048);
    EXPECT_EQ(w.count, 6);
    EXPECT_EQ(w.overlap, 458);
    EXPECT_EQ(w.shift, 1590);
    EXPECT_EQ((w.count - 1) * w.shift + 1 + 2048 - 1, 9998) << "the last window ends at 9998";
}

TEST(ArWindowSearch, EdgeCasesOfTheCount) {
    const ArWindows oneShort = SearchArWindows(2049, 2048);
    EXPECT_EQ(oneShort.count, 2);
    EXPECT_EQ(oneShort.shift, 1);
    const ArWindows first = SearchArWindows(3000, 2048);
    EXPECT_EQ(first.count, 2);
    EXPECT_EQ(first.overlap, 1096);
    EXPECT_EQ(first.shift, 952);
    // The bound is 99.99995 at 2048: an overlap of exactly 100 stops the search.
    const ArWindows hundred = SearchArWindows(2048 + 1948 * 4, 2048);
    EXPECT_EQ(hundred.overlap, 100);
    EXPECT_EQ(hundred.count, 5);
    for (int n : {33, 100, 4097, 123457, 1000000}) {
        const ArWindows w = SearchArWindows(n, 32);
        EXPECT_GT(w.overlap, 32 * 0.0488281) << n;
        EXPECT_LE((w.count - 1) * w.shift + 32, n) << n;
    }
}
