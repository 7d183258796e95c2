// The periodic transform, the extension, the minimum-entropy choice, the cascade
// graph (numeric/dwt.h), and threshold filtering with the Donoho-Johnstone level
// (numeric/threshold.h).
#include "numeric/dwt.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric_support.h"

namespace tarnic {
namespace {

using std::numbers::pi;
using namespace test;

std::vector<double> ramp(std::size_t n) {
    return sampled(n, [](double t) { return t + 1; });
}

// A smooth record: two slow waves and a trend.
std::vector<double> smooth(std::size_t n) {
    const double u = 1.0 / static_cast<double>(n);
    return sampled(n, [u](double t) {
        return 10.0 * std::sin(5 * pi * t * u) + 4.0 * std::cos(12 * pi * t * u) + 3.0 * t * u;
    });
}

double rmsDifference(std::span<const double> a, std::span<const double> b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum / a.size());
}

TEST(WaveletExtension, LengthsAreTheNextPowerOfTwoAndLevelsLeaveEightCoefficients) {
    const std::size_t lengths[][2] = {{0, 2},   {1, 2},       {2, 2},       {3, 4},
                                      {32, 32}, {1024, 1024}, {1025, 2048}, {100000, 131072}};
    for (const auto& [n, length] : lengths)
        EXPECT_EQ(workingLength(n), length) << n;
    EXPECT_EQ(binaryExponent(131072), 17);
    EXPECT_THROW(binaryExponent(12), std::invalid_argument);
    for (const auto& [length, count] :
         {std::pair<std::size_t, int>{2, 1}, {16, 1}, {32, 2}, {1024, 7}, {1 << 20, 17}})
        EXPECT_EQ(pyramidLevels(length), count) << length;
}

TEST(WaveletExtension, ReflectsSymmetricallyWithTheSmallerPaddingInFront) {
    const std::tuple<std::size_t, std::size_t, std::size_t, std::vector<double>> cases[] = {
        {5, 8, 1, {1, 1, 2, 3, 4, 5, 5, 4}},
        {6, 8, 1, {1, 1, 2, 3, 4, 5, 6, 6}},
        {5, 16, 5, {5, 4, 3, 2, 1, 1, 2, 3, 4, 5, 5, 4, 3, 2, 1, 1}},
        {8, 8, 0, {1, 2, 3, 4, 5, 6, 7, 8}}, {1, 2, 0, {1, 1}}};
    for (const auto& [n, length, offset, values] : cases) {
        const ExtendedSignal e = extendSymmetric(ramp(n), length);
        EXPECT_EQ(std::pair(e.offset, e.values), std::pair(offset, values)) << n << " " << length;
    }
    EXPECT_THROW(extendSymmetric(ramp(5), 4), std::invalid_argument);
}

// Haar on 1 .. 8 by hand; and a unit impulse at sample 0 shows where each tap
// lands: approx[o] = h[k] with 2o + k + 1 - L/2 = 0 (mod N), for L = 4 k = 1 at
// o = 0 and k = 3 at o = N/2 - 1.
TEST(WaveletStep, HaarByHandAndFiltersCentredByOneMinusHalfTheLength) {
    std::vector<double> a(4), d(4), x(8, 0.0);
    PeriodicFilterBank(scalingFilter(2)).analyse(ramp(8), a, d);
    EXPECT_TRUE(allNear(
        a, std::vector<double>{2.12132034356, 4.94974746831, 7.77817459305, 10.6066017178}, 1e-10));
    EXPECT_TRUE(allNear(d, std::vector<double>(4, -1 / std::numbers::sqrt2), 1e-15));
    const auto h = scalingFilter(4);
    const auto g = waveletFilter(h);
    x[0] = 1.0;
    PeriodicFilterBank(h).analyse(x, a, d);
    EXPECT_EQ(a, (std::vector<double>{h[1], 0.0, 0.0, h[3]}));
    EXPECT_EQ(d, (std::vector<double>{g[1], 0.0, 0.0, g[3]}));
}

class EveryWavelet : public ::testing::TestWithParam<std::int32_t> {
  protected:
    std::span<const double> h = scalingFilter(GetParam());
};

// Orthonormal for every even length, also shorter than the filter, where the
// periodic filters wrap around more than once; and six levels of the pyramid.
TEST_P(EveryWavelet, StepAndPyramidPreserveEnergyAndInvertExactly) {
    PeriodicFilterBank bank(h);
    for (std::size_t n : {2u, 4u, 6u, 8u, 10u, 64u, 250u}) {
        const auto x = whiteNoise(n, 1.0, static_cast<unsigned>(n));
        std::vector<double> a(n / 2), d(n / 2), back(n);
        bank.analyse(x, a, d);
        EXPECT_TRUE(isNear(energy(a) + energy(d), energy(x), 0.0, 1e-13)) << "n " << n;
        bank.synthesise(a, d, back);
        EXPECT_TRUE(allNear(back, x, 1e-13)) << "n " << n;
    }
    const auto x = whiteNoise(512, 3.0, 11);
    const WaveletPyramid p = forwardTransform(x, h, 6);
    ASSERT_EQ(p.details.size(), 6u);
    double e = energy(p.approximation);
    for (std::size_t j = 0; j < 6; ++j) {
        EXPECT_EQ(p.details[j].size(), 256u >> j);
        e += energy(p.details[j]);
    }
    EXPECT_EQ(p.approximation.size(), 8u);
    EXPECT_TRUE(isNear(e, energy(x), 0.0, 1e-13));
    EXPECT_TRUE(allNear(inverseTransform(p, h), x, 1e-12));
}

// The cascade's wavelet sampled at level 10 and the graph over the filter's
// support (2048 points, trapezoid rule) both have unit norm and zero mean.
TEST_P(EveryWavelet, CascadeAndGraphAreNormalisedWavelets) {
    const auto psi = cascade(h, 10, CascadeFunction::Wavelet);
    EXPECT_NEAR(energy(psi) * 0x1p-10, 1.0, 1e-12);
    EXPECT_NEAR(std::accumulate(psi.begin(), psi.end(), 0.0) * 0x1p-10, 0.0, 1e-12);
    // Plain sums: the end terms the trapezoid rule would halve are below 1e-3.
    const auto graph = waveletGraph(h, 2048);
    ASSERT_EQ(graph.size(), 2048u);
    const double dx = (h.size() - 1.0) / 2047;
    EXPECT_NEAR(sum(graph) * dx, 0.0, 0.02);
    EXPECT_NEAR(energy(graph) * dx, 1.0, 0.02);
    EXPECT_NEAR(graph.back(), 0.0, 1e-9);
}

// Every code of the table (the filter tests pin the list itself).
INSTANTIATE_TEST_SUITE_P(WaveletTransform, EveryWavelet,
                         ::testing::ValuesIn(allWaveCodes().begin(), allWaveCodes().end()));

TEST(WaveletCascade, FourCoefficientScalingFunctionAtOneAndTheHaarWavelet) {
    // Value k is drawn at t = (k + 1) / 2^level: t = 1 is value 2^level - 1, where
    // the scaling function is (1 + sqrt 3) / 2.
    const auto h = scalingFilter(4);
    const double exact = (1 + std::sqrt(3.0)) / 2;
    const auto level5 = cascade(h, 5, CascadeFunction::Scaling);
    EXPECT_EQ(level5.size(), 3u * 31 + 1);
    EXPECT_NEAR(level5[31], 1.3546, 5e-5);
    const auto level12 = cascade(h, 12, CascadeFunction::Scaling);
    EXPECT_NEAR(level12[4095], 1.36594, 5e-6);
    EXPECT_LT(std::abs(level12[4095] - exact), std::abs(level5[31] - exact) / 100);
    EXPECT_TRUE(allNear(cascade(scalingFilter(2), 3, CascadeFunction::Wavelet),
                        std::vector<double>{1, 1, 1, 1, -1, -1, -1, -1}, 1e-15));
}

// Haar atoms: a pair (s, -s) at samples 2o, 2o+1 is one level-1 coefficient. One
// coefficient costs nothing, whatever its size; two, three equal ones ln 2, ln 3;
// unequal ones -sum p ln p, p = 0.8, 0.2. A step at the middle has no details for
// Haar, many for a long filter.
TEST(WaveletEntropy, EachLevelCountsItsOwnSpread) {
    const auto atoms = [](std::vector<std::pair<std::size_t, double>> pairs) {
        std::vector<double> x(64, 0.0);
        for (const auto& [o, size] : pairs) {
            x[2 * o] = size;
            x[2 * o + 1] = -size;
        }
        return waveletEntropy(x, scalingFilter(2));
    };
    EXPECT_NEAR(atoms({{5, 3.0}}), 0.0, 1e-14);
    EXPECT_NEAR(atoms({{5, 1.0}, {20, 1.0}}), std::log(2.0), 1e-14);
    EXPECT_NEAR(atoms({{5, 1.0}, {20, -1.0}, {30, 1.0}}), std::log(3.0), 1e-14);
    EXPECT_NEAR(atoms({{1, 2.0}, {9, 1.0}}), -0.8 * std::log(0.8) - 0.2 * std::log(0.2), 1e-14);
    const auto step = sampled(64, [](double t) { return t < 32 ? 1.0 : -1.0; });
    EXPECT_NEAR(waveletEntropy(step, scalingFilter(2)), 0.0, 1e-14);
    EXPECT_GT(waveletEntropy(step, scalingFilter(8)), 1.0);
    EXPECT_EQ(waveletEntropy(std::vector<double>(100, 3.25), scalingFilter(20)), 0.0);
}

// Gaussian white noise spreads over all coefficients of a level: E_j = ln n_j -
// E[z^2 ln z^2] = ln n_j - (2 - gamma - ln 2) for many coefficients (levels 1 ..
// 13 hold 2^15 .. 2^3; the mean of z^2 ln z^2 over few strays at the coarse end).
// Offset and scale of the series change nothing.
TEST(WaveletEntropy, WhiteNoiseCostsTheGaussianEntropyPerLevelWhateverItsOffsetAndScale) {
    const auto noise = whiteNoise(1 << 16, 1.0, 3);
    const auto moved =
        sampled(noise.size(), [&](double t) { return 250.0 - 7.5 * noise[std::size_t(t)]; });
    double expected = 0.0;
    for (int j = 1; j <= 13; ++j)
        expected += (16 - j) * std::numbers::ln2 - (2 - std::numbers::egamma - std::numbers::ln2);
    for (std::int32_t code : {2, 8, 120}) {
        const double e = waveletEntropy(noise, scalingFilter(code));
        EXPECT_NEAR(e, expected, 0.5) << code;
        EXPECT_TRUE(isNear(waveletEntropy(moved, scalingFilter(code)), e, 1e-10, 1e-10)) << code;
    }
}

// Blocks of random levels and a few steps cost Haar one coefficient per level and
// jump, a filter of L coefficients L/2 of them; a smooth series costs a long
// filter least. The parallel evaluation gives the serial argmin, first code on
// ties.
TEST(MinimumEntropyWavelet, ChoosesHaarForStepsALongFilterForSmoothSeriesAndTheSerialMinimum) {
    const auto levels = whiteNoise(3000, 1.0, 8);
    const std::pair<double, double> jumps[] = {{0.13, 2.0}, {0.31, -3.0}, {0.47, 1.5}, {0.8, -2.0}};
    for (std::size_t n : {1000u, 3000u, 4096u, 20000u}) {
        std::vector<double> blocks(n), steps(n, 0.0), waves(n);
        for (std::size_t t = 0; t < n; ++t) {
            blocks[t] = levels[t / 37];
            for (const auto& [at, height] : jumps)
                steps[t] += t >= at * n ? height : 0.0;
            waves[t] = std::sin(2 * pi * 3.3 * t / n + 1) + 0.5 * std::cos(14 * pi * t / n);
        }
        EXPECT_EQ(minimumEntropyWaveCode(blocks), 2) << "n " << n;
        EXPECT_EQ(minimumEntropyWaveCode(steps), 2) << "n " << n;
        EXPECT_GE(minimumEntropyWaveCode(waves) % 100, 10) << "n " << n;
    }
    const auto x = ar2Noise(5000, 1.6, -0.7, 1.0, 21);
    const auto codes = allWaveCodes();
    EXPECT_EQ(minimumEntropyWaveCode(x),
              *std::min_element(codes.begin(), codes.end(), [&](auto a, auto b) {
                  return waveletEntropy(x, scalingFilter(a)) < waveletEntropy(x, scalingFilter(b));
              }));
    EXPECT_EQ(minimumEntropyWaveCode(std::vector<double>(77, -1.0)), 2);
    EXPECT_THROW(minimumEntropyWaveCode(std::vector<double>{}), std::invalid_argument);
}

TEST(ThresholdFilter, RemovesTheRoundedShareOfTheSmallestDetails) {
    const std::pair<double, std::size_t> counts[] = {{0.0, 0},      {0.25, 250},      {0.2504, 250},
                                                     {0.2506, 251}, {1.0, 1000},      {7.0, 1000},
                                                     {-0.5, 0},     {std::nan(""), 0}};
    for (const auto& [share, count] : counts)
        EXPECT_EQ(removedCount(share, 1000), count) << share;
    // Share 0 gives the series back, extended or not.
    for (std::size_t n : {1u, 2u, 31u, 32u, 1000u, 4096u}) {
        const auto x = ar2Noise(n, 0.9, 0.0, 5.0, 3);
        for (std::int32_t code : {2, 8, 20, 114})
            EXPECT_TRUE(allNear(waveletThresholdFilter(x, scalingFilter(code), 0.0), x, 1e-11))
                << "n " << n << " code " << code;
    }
    // Without extension (a power-of-two length) the squared error is exactly the
    // energy of the coefficients removed: the smallest ones of the transform.
    const std::size_t n = 1024;
    const auto x = plus(smooth(n), whiteNoise(n, 1.0, 17));
    const auto h = scalingFilter(110);
    std::vector<double> squares;
    for (const auto& d : forwardTransform(x, h, pyramidLevels(n)).details)
        for (double v : d)
            squares.push_back(v * v);
    std::sort(squares.begin(), squares.end());
    ASSERT_EQ(squares.size(), n - 8);
    for (double share : {0.1, 0.5, 0.9, 1.0}) {
        const double removed = std::accumulate(
            squares.begin(), squares.begin() + removedCount(share, squares.size()), 0.0);
        const double error = rmsDifference(x, waveletThresholdFilter(x, h, share));
        EXPECT_TRUE(isNear(error * error * n, removed, 1e-9, 1e-10)) << share;
    }
    // Share 1 keeps only the outline: a constant stays.
    const std::vector<double> constant(777, -4.25);
    EXPECT_TRUE(allNear(waveletThresholdFilter(constant, scalingFilter(12), 1.0), constant, 1e-12));
}

// sigma = median |level-1 details| / 0.6745, lambda = sigma sqrt(2 ln n), and the
// share of details below lambda; filtering with that share removes most noise,
// also for a length that is no power of two and a symlet. Pure noise lies below
// lambda almost entirely; without fine details there is nothing to remove.
TEST(DonohoJohnstone, EstimatesTheNoiseLevelAndItsShareRemovesTheNoise) {
    // Length, noise sigma, seed, code, least and greatest share.
    const std::tuple<std::size_t, double, unsigned, std::int32_t, double, double> cases[] = {
        {4096, 2.0, 4242, 8, 0.8, 1.0}, {4096, 2.0, 4242, 16, 0.8, 1.0},
        {4096, 2.0, 4242, 110, 0.8, 1.0}, {3000, 0.5, 99, 112, 0.5, 1.0}};
    for (const auto& [n, sigma, seed, code, least, greatest] : cases) {
        SCOPED_TRACE(testing::Message() << "n " << n << ", code " << code);
        const auto clean = smooth(n), noisy = plus(clean, whiteNoise(n, sigma, seed));
        const DonohoJohnstoneLevel level = donohoJohnstoneLevel(noisy, scalingFilter(code));
        EXPECT_NEAR(level.sigma, sigma, 0.05 * sigma);
        EXPECT_NEAR(level.lambda, level.sigma * std::sqrt(2 * std::log(double(n))), 1e-12);
        EXPECT_TRUE(level.share > least && level.share < greatest) << level.share;
        const auto filtered = waveletThresholdFilter(noisy, scalingFilter(code), level.share);
        EXPECT_LT(rmsDifference(filtered, clean), 0.5 * rmsDifference(noisy, clean));
    }
    const DonohoJohnstoneLevel noise =
        donohoJohnstoneLevel(whiteNoise(4096, 1.0, 5), scalingFilter(8));
    EXPECT_NEAR(noise.sigma, 1.0, 0.05);
    EXPECT_GT(noise.share, 0.999);
    const DonohoJohnstoneLevel flat = donohoJohnstoneLevel(std::vector(100, 2.0), scalingFilter(2));
    EXPECT_EQ(std::pair(flat.sigma, flat.share), std::pair(0.0, 0.0));
    EXPECT_THROW(donohoJohnstoneLevel(std::vector<double>{}, scalingFilter(2)),
                 std::invalid_argument);
}

} // namespace
} // namespace tarnic
