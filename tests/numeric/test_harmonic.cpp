// The two fragment analyses: best-fit harmonic and maximum wave.
#include "numeric/harmonic.h"
#include "numeric/peaktrough.h"
#include "numeric/tarnic_api.h"
#include "tests/numeric/spectral_support.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace tarnic {
namespace {

using std::numbers::pi;
using test::isNear;
using test::sinusoid;
using test::whiteNoise;


// 1 - RSS / TSS of c + a cos(2 pi f t) + b sin(2 pi f t), solved as an ordinary
// 3-column least-squares problem.
double explicitVarianceRatio(const std::vector<double>& y, double f) {
    const std::size_t n = y.size();
    Eigen::MatrixXd a(n, 3);
    Eigen::VectorXd b(n);
    for (std::size_t t = 0; t < n; ++t) {
        a(t, 0) = 1.0;
        a(t, 1) = std::cos(2.0 * pi * f * static_cast<double>(t));
        a(t, 2) = std::sin(2.0 * pi * f * static_cast<double>(t));
        // sin(pi t) and the like are exactly 0 on the samples; rounding of pi
        // makes them 1e-14 or so, which a solver would take for a column.
        for (int k = 1; k < 3; ++k)
            if (std::abs(a(t, k)) < 1e-11) a(t, k) = 0.0;
        b(t) = y[t];
    }
    const Eigen::VectorXd c = a.completeOrthogonalDecomposition().solve(b);
    const double rss = (a * c - b).squaredNorm();
    const double tss = (b.array() - b.mean()).matrix().squaredNorm();
    return 1.0 - rss / tss;
}

std::vector<double> plus(std::vector<double> a, const std::vector<double>& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        a[i] += b[i];
    return a;
}

// ---------------------------------------------------------------------------
// The fit at a given frequency.

TEST(FitHarmonic, varianceRatioEqualsTheExplicitThreeColumnLeastSquares) {
    const std::vector<double> y = plus(sinusoid(157, 0.043, 1.2, 0.3), whiteNoise(157, 1.0, 21));
    // Off and on the Fourier grid, both ends of the range, and next to f = 1/2.
    for (double f : {1.0 / 157, 0.01, 0.043, 5.0 / 157, 0.2718, 0.4999, 0.5}) {
        const HarmonicFit fit = fitHarmonic(y, f);
        EXPECT_TRUE(isNear(fit.varianceRatio, explicitVarianceRatio(y, f), 1e-10)) << "f " << f;
    }
}

TEST(FitHarmonic, valuesFollowTheReportedLevelAmplitudeAndPhase) {
    const std::vector<double> y = whiteNoise(90, 1.0, 22);
    const HarmonicFit fit = fitHarmonic(y, 0.137);
    ASSERT_EQ(fit.values.size(), y.size());
    EXPECT_GE(fit.amplitude, 0.0);
    EXPECT_GT(fit.phase, -pi);
    EXPECT_LE(fit.phase, pi);
    double rss = 0.0, tss = 0.0, mean = 0.0;
    for (double v : y)
        mean += v / 90.0;
    for (std::size_t t = 0; t < y.size(); ++t) {
        const double model = fit.level + fit.amplitude * std::cos(2.0 * pi * 0.137 * t - fit.phase);
        EXPECT_TRUE(isNear(fit.values[t], model, 1e-12)) << t;
        rss += (y[t] - fit.values[t]) * (y[t] - fit.values[t]);
        tss += (y[t] - mean) * (y[t] - mean);
    }
    EXPECT_TRUE(isNear(fit.varianceRatio, 1.0 - rss / tss, 1e-12));
}

TEST(FitHarmonic, aVanishingColumnAtHalfACycleIsLeftOut) {
    // At f = 1/2 the sine is zero on every sample; the alternating series is all
    // cosine.
    std::vector<double> y(33);
    for (std::size_t t = 0; t < y.size(); ++t)
        y[t] = 4.0 + (t % 2 == 0 ? 1.5 : -1.5);
    const HarmonicFit fit = fitHarmonic(y, 0.5);
    EXPECT_TRUE(isNear(fit.varianceRatio, 1.0, 1e-12));
    EXPECT_TRUE(test::allNear(fit.values, y, 1e-12));
}

// ---------------------------------------------------------------------------
// The grid of the search: closed forms and one FFT against the direct fit.

TEST(VarianceRatioGrid, equalsTheDirectFitAtEveryGridFrequencyForOddAndEvenLengths) {
    for (std::size_t n : {57u, 64u, 101u}) {
        const std::vector<double> y =
            plus(sinusoid(n, 0.0731, 0.8, 0.5), whiteNoise(n, 1.0, static_cast<unsigned>(n)));
        for (std::size_t length : {128u, 512u}) {
            const std::vector<double> grid = varianceRatioGrid(y, length);
            ASSERT_EQ(grid.size(), length / 2 + 1);
            EXPECT_EQ(grid[0], 0.0);
            for (std::size_t k = 1; k <= length / 2; ++k) {
                const double f = static_cast<double>(k) / static_cast<double>(length);
                EXPECT_TRUE(isNear(grid[k], fitHarmonic(y, f).varianceRatio, 1e-11))
                    << "n " << n << ", length " << length << ", k " << k;
            }
        }
    }
}

TEST(VarianceRatioGrid, refusesALengthThatIsNoPowerOfTwoOrTooShort) {
    const std::vector<double> y = whiteNoise(100, 1.0, 3);
    EXPECT_THROW(varianceRatioGrid(y, 200), std::invalid_argument);
    EXPECT_THROW(varianceRatioGrid(y, 64), std::invalid_argument);
    EXPECT_NO_THROW(varianceRatioGrid(y, 128));
}

// ---------------------------------------------------------------------------
// The search over periods.

TEST(BestFitHarmonic, recoversAnExactSinusoidWithItsPeriodLevelAmplitudeAndPhase) {
    std::vector<double> y = sinusoid(300, 1.0 / 23.7, 3.0, 0.4);
    for (double& v : y)
        v += 2.0;
    const HarmonicFit fit = bestFitHarmonic(y);
    EXPECT_TRUE(isNear(fit.period, 23.7, 0.0, 1e-7));
    EXPECT_TRUE(isNear(fit.varianceRatio, 1.0, 1e-10));
    EXPECT_TRUE(isNear(fit.amplitude, 3.0, 1e-6));
    EXPECT_TRUE(isNear(fit.level, 2.0, 1e-6));
    EXPECT_TRUE(isNear(fit.phase, -0.4, 1e-6));
    EXPECT_TRUE(test::allNear(fit.values, y, 1e-5));
}

TEST(BestFitHarmonic, findsANoisySinusoidWithinOnePercentAndItsShareOfTheVariance) {
    // Signal variance A^2/2 = 0.5 against noise 0.25: the harmonic holds 2/3.
    struct Case {
        std::size_t n;
        double period;
        unsigned seed;
    };
    for (const Case c : {Case{500, 8.7, 1}, Case{500, 37.3, 2}, Case{500, 180.0, 3},
                         Case{64, 9.1, 4}, Case{100000, 1234.5, 5}}) {
        const std::vector<double> y =
            plus(sinusoid(c.n, 1.0 / c.period, 1.0, 1.1), whiteNoise(c.n, 0.5, c.seed));
        const HarmonicFit fit = bestFitHarmonic(y);
        EXPECT_TRUE(isNear(fit.period, c.period, 0.0, 0.01)) << "period " << c.period;
        EXPECT_TRUE(isNear(fit.varianceRatio, 2.0 / 3.0, 0.08)) << "period " << c.period;
    }
}

TEST(BestFitHarmonic, noFrequencyOfTheRangeExplainsMore) {
    const std::vector<double> y = whiteNoise(200, 1.0, 23);
    const HarmonicFit best = bestFitHarmonic(y);
    double highest = 0.0;
    for (int i = 0; i <= 20000; ++i) {
        const double f = 1.0 / 200.0 + (0.125 - 1.0 / 200.0) * i / 20000.0;
        highest = std::max(highest, fitHarmonic(y, f).varianceRatio);
    }
    EXPECT_GE(best.varianceRatio, highest - 1e-9);
    EXPECT_TRUE(isNear(best.varianceRatio, explicitVarianceRatio(y, best.frequency), 1e-10));
}

TEST(BestFitHarmonic, searchesFromEightSamplesUpToTheFragmentLength) {
    // A strong period-3 ripple does not hide a weak slow harmonic: the search
    // is for the low frequencies.
    const std::vector<double> mixed = plus(sinusoid(400, 1.0 / 3.0, 1.0, 0.0), sinusoid(400, 1.0 / 100.0, 0.2, 0.3));
    EXPECT_TRUE(isNear(bestFitHarmonic(mixed).period, 100.0, 0.0, 0.01));
    // A pure ripple faster than 8 samples leaves the band's end as the best.
    std::vector<double> alternating(101);
    for (std::size_t t = 0; t < alternating.size(); ++t)
        alternating[t] = t % 2 == 0 ? 1.0 : -1.0;
    const HarmonicFit shortest = bestFitHarmonic(alternating);
    EXPECT_GE(shortest.period, 8.0 * (1.0 - 1e-12));

    // A third of a cycle in the record: the period found is no longer than it.
    const HarmonicFit longest = bestFitHarmonic(sinusoid(100, 1.0 / 300.0, 1.0, 0.5));
    EXPECT_GE(longest.period, 50.0);
    EXPECT_LE(longest.period, 100.0 * (1.0 + 1e-12));
}

TEST(BestFitHarmonic, aConstantOrTooShortSeriesGivesAFlatFit) {
    const HarmonicFit flat = bestFitHarmonic(std::vector<double>(50, 1.25));
    EXPECT_EQ(flat.varianceRatio, 0.0);
    EXPECT_EQ(flat.amplitude, 0.0);
    EXPECT_EQ(flat.period, 50.0);
    EXPECT_EQ(flat.values, std::vector<double>(50, 1.25));
    const HarmonicFit tiny = bestFitHarmonic(std::vector<double>{1.0, 2.0, 3.0});
    EXPECT_EQ(tiny.values, std::vector<double>(3, 2.0));
    EXPECT_EQ(tiny.varianceRatio, 0.0);
    EXPECT_TRUE(bestFitHarmonic(std::vector<double>{}).values.empty());
}

TEST(BestFitHarmonicDll, writesTheHarmonicItsPeriodAndTheVarianceRatio) {
    const std::vector<float> y =
        test::toFloat(plus(sinusoid(400, 1.0 / 40.0, 2.0, 0.0), whiteNoise(400, 0.1, 24)));
    std::vector<float> harmonic(400, 0.0f);
    std::int32_t count = 400;
    float amplitude = 0, period = 0, phase = 9, ratio = 0;
    FindBestFitHarm_dll(&count, y.data(), harmonic.data(), &amplitude, &period, &phase, &ratio);
    EXPECT_TRUE(isNear(period, 40.0, 0.0, 0.002));
    EXPECT_TRUE(isNear(amplitude, 2.0, 0.02));
    EXPECT_TRUE(isNear(ratio, 2.0 / 2.01, 0.01));
    EXPECT_TRUE(isNear(phase, 0.0, 0.02));
    for (std::size_t t = 0; t < 400; t += 37)
        EXPECT_TRUE(isNear(harmonic[t], 2.0 * std::cos(2.0 * pi * t / 40.0), 0.05)) << t;
}

// ---------------------------------------------------------------------------
// Maximum wave.

TEST(MaximumWave, everyWaveOfASineSampledOnItsPeaksIsTwiceTheAmplitudeHigh) {
    std::vector<double> y(200);
    for (std::size_t t = 0; t < y.size(); ++t)
        y[t] = 2.5 * std::sin(2.0 * pi * t / 20.0);
    const MaximumWave wave = maximumWave(y);
    EXPECT_TRUE(wave.complete);
    EXPECT_TRUE(isNear(wave.height, 5.0, 1e-12));
    EXPECT_TRUE(isNear(wave.period, 20.0, 1e-9));
    EXPECT_TRUE(isNear(y[wave.crest], 2.5, 1e-12));
    EXPECT_TRUE(isNear(y[wave.trough], -2.5, 1e-12));
    EXPECT_EQ(wave.crest > wave.trough ? wave.crest - wave.trough : wave.trough - wave.crest, 10u);
}

TEST(MaximumWave, aSineOfFractionalPeriodKeepsItsPeriodAndNearlyItsHeight) {
    const double period = 23.3;
    const std::vector<double> y = sinusoid(466, 1.0 / period, 1.7, 0.3);
    const MaximumWave wave = maximumWave(y);
    EXPECT_TRUE(isNear(wave.period, period, 0.0, 0.01));
    EXPECT_LE(wave.height, 3.4);
    EXPECT_GE(wave.height, 3.4 * std::cos(pi / period));
}

TEST(MaximumWave, handMadeSeriesPicksTheHighestNeighbouringCrestAndTrough) {
    //  t:   0  1  2   3   4   5  6  7  8   9  10  11  12 13 14 15  16  17    mean 0
    //  y:   1  3  1  -1  -2  -1  1  6  1  -1  -7  -2  -1  1  2  1  -4   2
    //  crossings at 2.5, 5.5, 8.5, 12.5, 15.2, 16.67; complete half-waves:
    //  trough -2 (t4), crest 6 (t7), trough -7 (t10), crest 2 (t14), trough -4 (t16).
    //  Waves: 8, 13, 9, 6; the highest runs from 5.5 to 12.5.
    const std::vector<double> y{1, 3, 1, -1, -2, -1, 1, 6, 1, -1, -7, -2, -1, 1, 2, 1, -4, 2};
    const MaximumWave wave = maximumWave(y);
    EXPECT_TRUE(wave.complete);
    EXPECT_EQ(wave.crest, 7u);
    EXPECT_EQ(wave.trough, 10u);
    EXPECT_TRUE(isNear(wave.height, 13.0, 1e-15));
    EXPECT_TRUE(isNear(wave.period, 7.0, 1e-12));

    const std::vector<float> f = test::toFloat(y);
    std::int32_t count = 18, first = 0, second = 0;
    float height = 0, period = 0;
    PeakTrough_dll(&count, f.data(), &height, &period, &first, &second);
    EXPECT_EQ(first, 8);
    EXPECT_EQ(second, 11);
    EXPECT_FLOAT_EQ(height, 13.0f);
    EXPECT_FLOAT_EQ(period, 7.0f);
}

TEST(MaximumWave, theStretchesCutByTheEndsAreNotWaves) {
    //  mean 2/13; the -9 and 9 at the ends lie outside the first and last crossing.
    //  Half-waves: crest 2 (t3), trough -2 (t6), crest 2 (t9), trough -1 (t11).
    const std::vector<double> y{-9, -1, 1, 2, 1, -1, -2, -1, 1, 2, 1, -1, 9};
    const MaximumWave wave = maximumWave(y);
    EXPECT_TRUE(wave.complete);
    EXPECT_EQ(wave.crest, 3u);
    EXPECT_EQ(wave.trough, 6u);
    EXPECT_TRUE(isNear(wave.height, 4.0, 1e-15));
}

TEST(MaximumWave, withoutTwoCompleteHalfWavesTheExtremesOfTheSeriesCount) {
    std::vector<double> ramp(50);
    for (std::size_t t = 0; t < ramp.size(); ++t)
        ramp[t] = static_cast<double>(t);
    const MaximumWave wave = maximumWave(ramp);
    EXPECT_FALSE(wave.complete);
    EXPECT_EQ(wave.crest, 49u);
    EXPECT_EQ(wave.trough, 0u);
    EXPECT_EQ(wave.height, 49.0);
    EXPECT_EQ(wave.period, 98.0);
}

TEST(MaximumWave, aConstantSeriesGivesTheFirstSampleTwice) {
    const MaximumWave wave = maximumWave(std::vector<double>(30, 0.5));
    EXPECT_EQ(wave.crest, 0u);
    EXPECT_EQ(wave.trough, 0u);
    EXPECT_EQ(wave.height, 0.0);
    EXPECT_EQ(wave.period, 0.0);

    const std::vector<float> y(30, 0.5f);
    std::int32_t count = 30, first = 0, second = 0;
    float height = -1, period = -1;
    PeakTrough_dll(&count, y.data(), &height, &period, &first, &second);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(period, 0.0f);
}

TEST(MaximumWave, dllReportsASinesPeriodAndPointsHalfAPeriodApart) {
    // Period 40: the samples fall on the peaks (t = 10, 30, ...).
    std::vector<float> y(500);
    for (std::size_t t = 0; t < y.size(); ++t)
        y[t] = static_cast<float>(std::sin(2.0 * pi * t / 40.0));
    std::int32_t count = 500, first = 0, second = 0;
    float height = 0, period = 0;
    PeakTrough_dll(&count, y.data(), &height, &period, &first, &second);
    EXPECT_TRUE(isNear(period, 40.0, 1e-4));
    EXPECT_TRUE(isNear(height, 2.0, 1e-6));
    EXPECT_EQ(second - first, 20);
    EXPECT_GE(first, 1);
    EXPECT_LE(second, 500);
}

} // namespace
} // namespace tarnic
