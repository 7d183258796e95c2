// The periodic transform, the extension, the minimum-entropy choice and the
// cascade graph (numeric/dwt.h).
#include "numeric/dwt.h"
#include "numeric/wavelet_filters.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

namespace tarnic {
namespace {

using test::allNear;
using test::isNear;

std::vector<double> ramp(std::size_t n) {
    std::vector<double> x(n);
    std::iota(x.begin(), x.end(), 1.0);
    return x;
}

double energy(std::span<const double> x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
}

TEST(WaveletExtension, WorkingLengthIsTheNextPowerOfTwoFromTwoUp) {
    EXPECT_EQ(workingLength(0), 2u);
    EXPECT_EQ(workingLength(1), 2u);
    EXPECT_EQ(workingLength(2), 2u);
    EXPECT_EQ(workingLength(3), 4u);
    EXPECT_EQ(workingLength(32), 32u);
    EXPECT_EQ(workingLength(1024), 1024u);
    EXPECT_EQ(workingLength(1025), 2048u);
    EXPECT_EQ(workingLength(100000), 131072u);
    EXPECT_EQ(binaryExponent(131072), 17);
    EXPECT_THROW(binaryExponent(12), std::invalid_argument);
}

TEST(WaveletExtension, ReflectsSymmetricallyWithTheSmallerPaddingInFront) {
    const auto five = ramp(5);
    ExtendedSignal e = extendSymmetric(five, 8);
    EXPECT_EQ(e.offset, 1u);
    EXPECT_EQ(e.values, (std::vector<double>{1, 1, 2, 3, 4, 5, 5, 4}));
    e = extendSymmetric(ramp(6), 8);
    EXPECT_EQ(e.offset, 1u);
    EXPECT_EQ(e.values, (std::vector<double>{1, 1, 2, 3, 4, 5, 6, 6}));
    e = extendSymmetric(five, 16);
    EXPECT_EQ(e.offset, 5u);
    EXPECT_EQ(e.values, (std::vector<double>{5, 4, 3, 2, 1, 1, 2, 3, 4, 5, 5, 4, 3, 2, 1, 1}));
    e = extendSymmetric(ramp(8), 8);
    EXPECT_EQ(e.offset, 0u);
    EXPECT_EQ(e.values, ramp(8));
    e = extendSymmetric(std::vector<double>{7}, 2);
    EXPECT_EQ(e.values, (std::vector<double>{7, 7}));
    EXPECT_THROW(extendSymmetric(five, 4), std::invalid_argument);
}

TEST(WaveletStep, HaarStepOfOneToEight) {
    PeriodicFilterBank haar(scalingFilter(2));
    std::vector<double> a(4), d(4);
    haar.analyse(ramp(8), a, d);
    const double expectedA[] = {2.12132034356, 4.94974746831, 7.77817459305, 10.6066017178};
    EXPECT_TRUE(allNear(std::span<const double>(a), std::span<const double>(expectedA), 1e-10));
    for (double v : d)
        EXPECT_TRUE(isNear(v, -1 / std::numbers::sqrt2, 1e-15));
}

// A unit impulse at sample 0 shows where each tap lands: approx[o] = h[k] with
// 2o + k + 1 - L/2 = 0 (mod N). For L = 4: k = 1 at o = 0, k = 3 at o = N/2 - 1.
TEST(WaveletStep, FiltersAreCentredByTheShiftOneMinusHalfTheLength) {
    const auto h = scalingFilter(4);
    PeriodicFilterBank bank(h);
    std::vector<double> x(8, 0.0), a(4), d(4);
    x[0] = 1.0;
    bank.analyse(x, a, d);
    EXPECT_EQ(a, (std::vector<double>{h[1], 0.0, 0.0, h[3]}));
    const auto g = waveletFilter(h);
    EXPECT_EQ(d, (std::vector<double>{g[1], 0.0, 0.0, g[3]}));
}

class EveryWavelet : public ::testing::TestWithParam<std::int32_t> {
  protected:
    std::span<const double> h = scalingFilter(GetParam());
};

// Orthonormal for every even length, also shorter than the filter, where the
// periodic filters wrap around more than once.
TEST_P(EveryWavelet, StepPreservesEnergyAndInvertsExactly) {
    PeriodicFilterBank bank(h);
    for (std::size_t n : {2u, 4u, 6u, 8u, 10u, 64u, 250u}) {
        const auto x = test::whiteNoise(n, 1.0, static_cast<unsigned>(n));
        std::vector<double> a(n / 2), d(n / 2), back(n);
        bank.analyse(x, a, d);
        EXPECT_TRUE(isNear(energy(a) + energy(d), energy(x), 0.0, 1e-13)) << "n " << n;
        bank.synthesise(a, d, back);
        EXPECT_TRUE(allNear(std::span<const double>(back), std::span<const double>(x), 1e-13))
            << "n " << n;
    }
}

TEST_P(EveryWavelet, PyramidInvertsExactly) {
    const auto x = test::whiteNoise(512, 3.0, 11);
    const WaveletPyramid p = forwardTransform(x, h, 6);
    ASSERT_EQ(p.details.size(), 6u);
    EXPECT_EQ(p.details[0].size(), 256u);
    EXPECT_EQ(p.details[5].size(), 8u);
    EXPECT_EQ(p.approximation.size(), 8u);
    double e = energy(p.approximation);
    for (const auto& d : p.details)
        e += energy(d);
    EXPECT_TRUE(isNear(e, energy(x), 0.0, 1e-13));
    const auto back = inverseTransform(p, h);
    EXPECT_TRUE(allNear(std::span<const double>(back), std::span<const double>(x), 1e-12));
}

INSTANTIATE_TEST_SUITE_P(WaveletTransform, EveryWavelet,
                         ::testing::Values(2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 108, 110, 112, 114,
                                           116, 118, 120));

TEST(WaveletPyramid, LevelsLeaveEightApproximationCoefficients) {
    EXPECT_EQ(pyramidLevels(2), 1);
    EXPECT_EQ(pyramidLevels(16), 1);
    EXPECT_EQ(pyramidLevels(32), 2);
    EXPECT_EQ(pyramidLevels(1024), 7);
    EXPECT_EQ(pyramidLevels(1u << 20), 17);
}

// ---------------------------------------------------------------------------
// Minimum entropy
// ---------------------------------------------------------------------------

// Haar atoms: a pair (1, -1) at samples 2o, 2o+1 is one level-1 coefficient.
std::vector<double> haarAtoms(std::size_t n, std::initializer_list<std::size_t> pairs,
                              std::initializer_list<double> sizes) {
    std::vector<double> x(n, 0.0);
    auto size = sizes.begin();
    for (std::size_t o : pairs) {
        x[2 * o] = *size;
        x[2 * o + 1] = -*size++;
    }
    return x;
}

TEST(WaveletEntropy, EachLevelCountsItsOwnSpread) {
    const auto haar = scalingFilter(2);
    // One coefficient carries level 1: nothing to pay, whatever its size.
    EXPECT_TRUE(isNear(waveletEntropy(haarAtoms(64, {5}, {3.0}), haar), 0.0, 1e-14));
    // Two, three equal ones: ln 2, ln 3.
    EXPECT_TRUE(
        isNear(waveletEntropy(haarAtoms(64, {5, 20}, {1.0, 1.0}), haar), std::log(2.0), 1e-14));
    EXPECT_TRUE(isNear(waveletEntropy(haarAtoms(64, {5, 20, 30}, {1.0, -1.0, 1.0}), haar),
                       std::log(3.0), 1e-14));
    // Unequal ones: -sum p ln p with p = 0.8, 0.2.
    const double p = 0.8;
    EXPECT_TRUE(isNear(waveletEntropy(haarAtoms(64, {1, 9}, {2.0, 1.0}), haar),
                       -p * std::log(p) - (1 - p) * std::log(1 - p), 1e-14));
    // A step at the middle: no details at all for Haar, many for a long filter.
    std::vector<double> step(64, 1.0);
    std::fill(step.begin() + 32, step.end(), -1.0);
    EXPECT_TRUE(isNear(waveletEntropy(step, haar), 0.0, 1e-14));
    EXPECT_GT(waveletEntropy(step, scalingFilter(8)), 1.0);
}

TEST(WaveletEntropy, IgnoresOffsetAndScaleAndIsZeroForAConstant) {
    const auto x = test::ar2Noise(1000, 0.9, -0.2, 1.0, 5);
    std::vector<double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        y[i] = 250.0 - 7.5 * x[i];
    for (std::int32_t code : {2, 8, 116}) {
        const auto h = scalingFilter(code);
        EXPECT_TRUE(isNear(waveletEntropy(y, h), waveletEntropy(x, h), 1e-10, 1e-10)) << code;
    }
    EXPECT_EQ(waveletEntropy(std::vector<double>(100, 3.25), scalingFilter(20)), 0.0);
}

// Gaussian white noise spreads over all coefficients of a level: E_j = ln n_j -
// E[z^2 ln z^2] = ln n_j - (2 - gamma - ln 2) for many coefficients.
TEST(WaveletEntropy, WhiteNoiseCostsTheGaussianEntropyPerLevel) {
    const auto noise = test::whiteNoise(1 << 16, 1.0, 3);
    const double perLevel = 2 - std::numbers::egamma - std::numbers::ln2; // 0.7297
    // Levels 1 .. 13 hold 2^15 .. 2^3 coefficients; the deviation of the mean of
    // z^2 ln z^2 over few coefficients grows at the coarse end.
    double expected = 0.0;
    for (int j = 1; j <= 13; ++j)
        expected += std::log(std::ldexp(1.0, 16 - j)) - perLevel;
    for (std::int32_t code : {2, 8, 120})
        EXPECT_TRUE(isNear(waveletEntropy(noise, scalingFilter(code)), expected, 0.5)) << code;
}

// Random levels held over blocks, and a few steps at random places: every jump
// costs Haar one coefficient per level, a filter of L coefficients L/2 of them.
TEST(MinimumEntropyWavelet, PiecewiseConstantSeriesChoosesHaar) {
    const auto levels = test::whiteNoise(3000, 1.0, 8);
    for (std::size_t n : {1000u, 3000u, 4096u, 20000u}) {
        std::vector<double> x(n);
        for (std::size_t block : {37u, 400u}) {
            for (std::size_t t = 0; t < n; ++t)
                x[t] = levels[t / block];
            EXPECT_EQ(minimumEntropyWaveCode(x), 2) << "blocks of " << block << ", n " << n;
        }
        const double jumps[] = {0.13, 0.31, 0.47, 0.66, 0.8}, heights[] = {2, -3, 1.5, 4, -2};
        for (std::size_t t = 0; t < n; ++t) {
            x[t] = 0.0;
            for (int j = 0; j < 5; ++j)
                if (static_cast<double>(t) >= jumps[j] * static_cast<double>(n)) x[t] += heights[j];
        }
        EXPECT_EQ(minimumEntropyWaveCode(x), 2) << "steps, n " << n;
    }
}

TEST(MinimumEntropyWavelet, SmoothSeriesChoosesALongFilter) {
    for (std::size_t n : {1000u, 3000u, 4096u, 20000u}) {
        std::vector<double> x(n);
        for (std::size_t t = 0; t < n; ++t) {
            const double u = static_cast<double>(t) / static_cast<double>(n);
            x[t] = std::sin(2 * std::numbers::pi * 3.3 * u + 1) +
                   0.5 * std::cos(2 * std::numbers::pi * 7 * u);
        }
        const std::int32_t code = minimumEntropyWaveCode(x);
        EXPECT_GE(code % 100, 10) << "n " << n << " chose " << code;
    }
}

// The parallel evaluation gives the serial argmin, first code on ties.
TEST(MinimumEntropyWavelet, AgreesWithTheSerialMinimum) {
    const auto x = test::ar2Noise(5000, 1.6, -0.7, 1.0, 21);
    std::int32_t best = 0;
    double lowest = 1e300;
    for (std::int32_t code : allWaveCodes()) {
        const double e = waveletEntropy(x, scalingFilter(code));
        if (e < lowest) {
            lowest = e;
            best = code;
        }
    }
    EXPECT_EQ(minimumEntropyWaveCode(x), best);
    EXPECT_EQ(minimumEntropyWaveCode(std::vector<double>(77, -1.0)), 2);
    EXPECT_THROW(minimumEntropyWaveCode(std::vector<double>{}), std::invalid_argument);
}

// ---------------------------------------------------------------------------
// Cascade
// ---------------------------------------------------------------------------

TEST(WaveletCascade, FourCoefficientScalingFunctionAtOne) {
    const auto h = scalingFilter(4);
    const double exact = (1 + std::sqrt(3.0)) / 2;
    // Value k is drawn at t = (k + 1) / 2^level: t = 1 is value 2^level - 1.
    const auto level5 = cascade(h, 5, CascadeFunction::Scaling);
    EXPECT_EQ(level5.size(), 3u * 31 + 1);
    EXPECT_TRUE(isNear(level5[31], 1.3546, 5e-5));
    const auto level12 = cascade(h, 12, CascadeFunction::Scaling);
    EXPECT_TRUE(isNear(level12[4095], 1.36594, 5e-6));
    EXPECT_LT(std::abs(level12[4095] - exact), std::abs(level5[31] - exact) / 100);
}

TEST(WaveletCascade, HaarWaveletIsPlusOneThenMinusOne) {
    const auto psi = cascade(scalingFilter(2), 3, CascadeFunction::Wavelet);
    const double expected[] = {1, 1, 1, 1, -1, -1, -1, -1};
    EXPECT_TRUE(allNear(std::span<const double>(psi), std::span<const double>(expected), 1e-15));
}

TEST_P(EveryWavelet, SampledWaveletHasUnitNormAndZeroMean) {
    constexpr int level = 10;
    const auto psi = cascade(h, level, CascadeFunction::Wavelet);
    const double step = std::ldexp(1.0, -level);
    EXPECT_TRUE(isNear(energy(psi) * step, 1.0, 1e-12));
    EXPECT_TRUE(isNear(std::accumulate(psi.begin(), psi.end(), 0.0) * step, 0.0, 1e-12));
}

TEST_P(EveryWavelet, GraphOverTheSupportIsNormalised) {
    const auto graph = waveletGraph(h, 2048);
    ASSERT_EQ(graph.size(), 2048u);
    const double dx = static_cast<double>(h.size() - 1) / 2047;
    double sum = 0.0, squares = 0.0;
    for (std::size_t i = 0; i < graph.size(); ++i) {
        const double w = (i == 0 || i + 1 == graph.size()) ? 0.5 : 1.0; // trapezoid
        sum += w * graph[i] * dx;
        squares += w * graph[i] * graph[i] * dx;
    }
    EXPECT_TRUE(isNear(squares, 1.0, 0.02));
    EXPECT_TRUE(isNear(sum, 0.0, 0.02));
    EXPECT_TRUE(isNear(graph.back(), 0.0, 1e-9));
    const auto [low, high] = std::minmax_element(graph.begin(), graph.end());
    EXPECT_GT(*high - *low, 1.0);
}

} // namespace
} // namespace tarnic
