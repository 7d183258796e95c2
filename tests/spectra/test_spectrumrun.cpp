// The arithmetic around a spectrum run: clamps, transform sizes, grids and the
// number of windows of the main estimate.
#include "spectra/spectrumrun.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>

using namespace tarnic;

TEST(SpectrumClamps, WindowOrderRadiusAndSamplingInterval) {
    // Window lengths lie between 32 and the signal; 0 is a text that is no
    // number, 1e12 too large for 32 bits takes the upper clamp.
    for (auto [typed, samples, length] : {std::tuple{2048.9, 5000, 2048}, {0.0, 5000, 32},
                                          {20.0, 5000, 32}, {40.0, 33, 33}, {1e12, 5000, 5000}})
        EXPECT_EQ(ClampWindowLength(typed, samples), length) << typed;
    // The order is rounded to a third of the window: 10.67 is less than 11.
    for (auto [typed, window, order] : {std::tuple{20.0, 32, 11}, {11.0, 32, 11}, {10.0, 32, 10},
                                        {1000.0, 2048, 683}, {2.9, 2048, 2}, {-0.5, 2048, 1},
                                        {0.0, 2048, 1}})
        EXPECT_EQ(ClampArOrder(typed, window), order) << typed << ", " << window;
    // The radius is cut to an eighth of the window.
    for (auto [typed, window, radius] : {std::tuple{9.0, 60, 7}, {1000.0, 2048, 256},
                                         {-1.0, 2048, 0}, {3.7, 2048, 3}})
        EXPECT_EQ(ClampRadius(typed, window), radius) << typed;
    // The sampling interval must be positive and fit single precision.
    for (auto [typed, dT] : {std::pair{0.0, 1.0f}, {-2.0, 1.0f}, {0.1, 0.1f}, {1e300, 1.0f}})
        EXPECT_EQ(ClampDeltaT(typed), dT) << typed;
}

TEST(SpectrumGrids, PowersOfTwoAndFrequenciesFromZero) {
    for (auto [length, size] : {std::pair{32, 32}, {33, 64}, {2048, 2048}, {2049, 4096}})
        EXPECT_EQ(TransformSize(length), size) << length;
    const auto grid = FrequencyGrid(64, 0.5f);
    ASSERT_EQ(grid.size(), 32u);
    EXPECT_EQ(grid[0], 0.0f);
    EXPECT_EQ(grid[1], static_cast<float>(1.0 / 32.0));
    EXPECT_EQ(grid[31], static_cast<float>(31.0 / 32.0)) << "one step below the Nyquist 1/(2 dT)";
}

TEST(ArWindowSearch, CountOverlapAndShift) {
    // The last window of 10000 ends at 9998; for 2048 + 1948 * 4 the bound is
    // 99.99995, and 100 stops the search.
    for (auto [samples, count, overlap, shift] :
         {std::array{10000, 6, 458, 1590}, {3000, 2, 1096, 952}, {2048 + 1948 * 4, 5, 100, 1948},
          {2049, 2, 2047, 1}}) {
        const ArWindows w = SearchArWindows(samples, 2048);
        EXPECT_EQ(std::tuple(w.count, w.overlap, w.shift), std::tuple(count, overlap, shift)) << samples;
    }
    for (int n : {33, 100, 4097, 123457, 1000000}) {
        const ArWindows w = SearchArWindows(n, 32);
        EXPECT_GT(w.overlap, 32 * 0.0488281) << n;
        EXPECT_LE((w.count - 1) * w.shift + 32, n) << n;
    }
}
