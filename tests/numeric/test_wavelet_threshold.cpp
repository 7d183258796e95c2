// Threshold filtering and the Donoho-Johnstone level (numeric/threshold.h).
#include "numeric/dwt.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using test::allNear;
using test::isNear;

// A smooth record: two slow waves and a trend.
std::vector<double> smooth(std::size_t n) {
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) {
        const double u = static_cast<double>(t) / static_cast<double>(n);
        x[t] = 10.0 * std::sin(2 * std::numbers::pi * 2.5 * u) +
               4.0 * std::cos(2 * std::numbers::pi * 6 * u) + 3.0 * u;
    }
    return x;
}

std::vector<double> plus(std::span<const double> a, std::span<const double> b) {
    std::vector<double> s(a.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        s[i] = a[i] + b[i];
    return s;
}

double rmsDifference(std::span<const double> a, std::span<const double> b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum / static_cast<double>(a.size()));
}

TEST(ThresholdShare, CountIsTheRoundedShareOfTheCoefficients) {
    EXPECT_EQ(removedCount(0.0, 1000), 0u);
    EXPECT_EQ(removedCount(0.25, 1000), 250u);
    EXPECT_EQ(removedCount(0.2504, 1000), 250u);
    EXPECT_EQ(removedCount(0.2506, 1000), 251u);
    EXPECT_EQ(removedCount(1.0, 1000), 1000u);
    EXPECT_EQ(removedCount(7.0, 1000), 1000u);
    EXPECT_EQ(removedCount(-0.5, 1000), 0u);
    EXPECT_EQ(removedCount(std::nan(""), 1000), 0u);
}

TEST(WaveletThresholdFilter, ShareZeroGivesTheSeriesBack) {
    for (std::size_t n : {1u, 2u, 31u, 32u, 1000u, 4096u}) {
        const auto x = test::ar2Noise(n, 0.9, 0.0, 5.0, 3);
        for (std::int32_t code : {2, 8, 20, 114}) {
            const auto y = waveletThresholdFilter(x, scalingFilter(code), 0.0);
            EXPECT_TRUE(allNear(std::span<const double>(y), std::span<const double>(x), 1e-11))
                << "n " << n << " code " << code;
        }
    }
}

// Without extension (a power-of-two length) the squared error is exactly the
// energy of the coefficients removed: the smallest ones of the transform.
TEST(WaveletThresholdFilter, RemovesExactlyTheSmallestDetails) {
    const std::size_t n = 1024;
    const auto x = plus(smooth(n), test::whiteNoise(n, 1.0, 17));
    const auto h = scalingFilter(110);
    const WaveletPyramid p = forwardTransform(x, h, pyramidLevels(n));
    std::vector<double> squares;
    for (const auto& d : p.details)
        for (double v : d)
            squares.push_back(v * v);
    std::sort(squares.begin(), squares.end());
    ASSERT_EQ(squares.size(), n - 8);
    for (double share : {0.1, 0.5, 0.9, 1.0}) {
        const auto y = waveletThresholdFilter(x, h, share);
        double removed = 0.0;
        for (std::size_t i = 0; i < removedCount(share, squares.size()); ++i)
            removed += squares[i];
        const double error = rmsDifference(x, y);
        EXPECT_TRUE(isNear(error * error * static_cast<double>(n), removed, 1e-9, 1e-10)) << share;
    }
}

TEST(WaveletThresholdFilter, ShareOneKeepsOnlyTheOutline) {
    const std::vector<double> constant(777, -4.25);
    const auto y = waveletThresholdFilter(constant, scalingFilter(12), 1.0);
    EXPECT_TRUE(allNear(std::span<const double>(y), std::span<const double>(constant), 1e-12));
    // The error grows with the share.
    const auto x = plus(smooth(3000), test::whiteNoise(3000, 1.0, 2));
    double previous = -1.0;
    for (double share : {0.0, 0.3, 0.6, 0.9, 0.99, 1.0}) {
        const double error = rmsDifference(x, waveletThresholdFilter(x, scalingFilter(8), share));
        EXPECT_GE(error, previous) << share;
        previous = error;
    }
}

TEST(DonohoJohnstone, EstimatesTheNoiseLevelOfASmoothSeries) {
    const std::size_t n = 4096;
    const auto clean = smooth(n);
    const auto noisy = plus(clean, test::whiteNoise(n, 2.0, 4242));
    const DonohoJohnstoneLevel level = donohoJohnstoneLevel(noisy, scalingFilter(8));
    EXPECT_TRUE(isNear(level.sigma, 2.0, 0.1)) << level.sigma;
    EXPECT_TRUE(isNear(level.lambda, level.sigma * std::sqrt(2 * std::log(4096.0)), 1e-12));
    EXPECT_GT(level.share, 0.8);
    EXPECT_LT(level.share, 1.0);

    // Not a power of two, a symlet: within 10 %.
    const auto other = plus(smooth(3000), test::whiteNoise(3000, 0.5, 99));
    EXPECT_TRUE(isNear(donohoJohnstoneLevel(other, scalingFilter(112)).sigma, 0.5, 0.05));
}

TEST(DonohoJohnstone, FilteringWithTheProposedShareRemovesNoise) {
    for (std::int32_t code : {8, 16, 110}) {
        const std::size_t n = 4096;
        const auto clean = smooth(n);
        const auto noisy = plus(clean, test::whiteNoise(n, 2.0, 7));
        const double share = donohoJohnstoneLevel(noisy, scalingFilter(code)).share;
        const auto filtered = waveletThresholdFilter(noisy, scalingFilter(code), share);
        EXPECT_LT(rmsDifference(filtered, clean), 0.5 * rmsDifference(noisy, clean)) << code;
    }
}

TEST(DonohoJohnstone, PureNoiseIsAlmostEntirelyBelowTheThreshold) {
    const auto noise = test::whiteNoise(4096, 1.0, 5);
    const DonohoJohnstoneLevel level = donohoJohnstoneLevel(noise, scalingFilter(8));
    EXPECT_TRUE(isNear(level.sigma, 1.0, 0.05));
    EXPECT_GT(level.share, 0.999);
}

TEST(DonohoJohnstone, NoFineDetailsMeansNothingToRemove) {
    const DonohoJohnstoneLevel level =
        donohoJohnstoneLevel(std::vector<double>(100, 2.0), scalingFilter(2));
    EXPECT_EQ(level.sigma, 0.0);
    EXPECT_EQ(level.share, 0.0);
    EXPECT_THROW(donohoJohnstoneLevel(std::vector<double>{}, scalingFilter(2)),
                 std::invalid_argument);
}

} // namespace
} // namespace tarnic
