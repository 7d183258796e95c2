// The two fragment analyses: best-fit harmonic and maximum wave.
#include "numeric/harmonic.h"
#include "numeric/peaktrough.h"
#include "numeric/tarnic_api.h"
#include "tests/numeric/numeric_support.h"

#include <Eigen/Dense>

namespace tarnic {
namespace {

using std::numbers::pi;
using namespace test;

// 1 - RSS / TSS of c + a cos(2 pi f t) + b sin(2 pi f t), solved as an ordinary
// 3-column least-squares problem.
double explicitVarianceRatio(const std::vector<double>& y, double f) {
    const std::size_t n = y.size();
    Eigen::MatrixXd a(n, 3);
    const Eigen::VectorXd b = Eigen::Map<const Eigen::VectorXd>(y.data(), n);
    for (std::size_t t = 0; t < n; ++t) {
        a.row(t) << 1.0, std::cos(2.0 * pi * f * t), std::sin(2.0 * pi * f * t);
        // sin(pi t) and the like are exactly 0 on the samples; rounding of pi
        // makes them 1e-14 or so, which a solver would take for a column.
        for (int k = 1; k < 3; ++k)
            if (std::abs(a(t, k)) < 1e-11) a(t, k) = 0.0;
    }
    const Eigen::VectorXd c = a.completeOrthogonalDecomposition().solve(b);
    return 1.0 - (a * c - b).squaredNorm() / (b.array() - b.mean()).matrix().squaredNorm();
}

TEST(FitHarmonic, VarianceRatioIsTheExplicitThreeColumnLeastSquares) {
    const std::vector<double> y = plus(sinusoid(157, 0.043, 1.2, 0.3), whiteNoise(157, 1.0, 21));
    // Off and on the Fourier grid, both ends of the range, and next to f = 1/2.
    for (double f : {1.0 / 157, 0.01, 0.043, 5.0 / 157, 0.2718, 0.4999, 0.5})
        EXPECT_NEAR(fitHarmonic(y, f).varianceRatio, explicitVarianceRatio(y, f), 1e-10) << f;
    // At f = 1/2 the sine vanishes on every sample; an alternating series is all
    // cosine.
    const std::vector<double> alternating = plus(sinusoid(33, 0.5, 1.5), std::vector(33, 4.0));
    const HarmonicFit fit = fitHarmonic(alternating, 0.5);
    EXPECT_NEAR(fit.varianceRatio, 1.0, 1e-12);
    EXPECT_TRUE(allNear(fit.values, alternating, 1e-12));
}

// The search grid by closed forms and one FFT, against the direct fit at every
// grid frequency, for odd and even lengths.
TEST(VarianceRatioGrid, EqualsTheDirectFitAtEveryGridFrequency) {
    for (std::size_t n : {57u, 64u, 101u}) {
        const std::vector<double> y = plus(sinusoid(n, 0.0731, 0.8, 0.5), whiteNoise(n, 1.0, n));
        for (std::size_t length : {128u, 512u}) {
            const std::vector<double> grid = varianceRatioGrid(y, length);
            ASSERT_EQ(grid.size(), length / 2 + 1);
            EXPECT_EQ(grid[0], 0.0);
            for (std::size_t k = 1; k <= length / 2; ++k)
                ASSERT_NEAR(grid[k], fitHarmonic(y, k / double(length)).varianceRatio, 1e-11)
                    << "n " << n << ", length " << length << ", k " << k;
        }
    }
    // The length must be a power of two of at least the series.
    EXPECT_THROW(varianceRatioGrid(whiteNoise(100, 1.0), 200), std::invalid_argument);
    EXPECT_THROW(varianceRatioGrid(whiteNoise(100, 1.0), 64), std::invalid_argument);
}

// An exact sinusoid on a level, through the C++ routine and through
// FindBestFitHarm_dll in single precision (the arguments' order shows in their
// distinct values).
TEST(BestFitHarmonic, RecoversAnExactSinusoidWithItsPeriodLevelAmplitudeAndPhase) {
    const std::vector<double> y = plus(sinusoid(300, 1.0 / 23.7, 3.0, 0.4), std::vector(300, 2.0));
    const HarmonicFit fit = bestFitHarmonic(y);
    EXPECT_NEAR(fit.period, 23.7, 23.7e-7);
    EXPECT_NEAR(fit.varianceRatio, 1.0, 1e-10);
    EXPECT_TRUE(allNear(std::vector{fit.amplitude, fit.level, fit.phase},
                        std::vector{3.0, 2.0, -0.4}, 1e-6));
    EXPECT_TRUE(allNear(fit.values, y, 1e-5));
    const std::vector<float> f = toFloat(y);
    std::vector<float> harmonic(300, 0.0f);
    std::int32_t count = 300;
    float amplitude = 0, period = 0, phase = 9, ratio = 0;
    FindBestFitHarm_dll(&count, f.data(), harmonic.data(), &amplitude, &period, &phase, &ratio);
    EXPECT_TRUE(allNear(std::vector{period, amplitude, phase, ratio},
                        std::vector{23.7, 3.0, -0.4, 1.0}, 1e-4, 1e-5));
    EXPECT_TRUE(allNear(harmonic, y, 1e-4));
}

// The search runs over periods from 8 samples up to the fragment length, whose
// ends are candidates of their own.
TEST(BestFitHarmonic, SearchesFromEightSamplesUpToTheFragmentLength) {
    // A strong period-3 ripple does not hide a weak slow harmonic.
    const auto mixed = plus(sinusoid(400, 1.0 / 3.0, 1.0, 0.0), sinusoid(400, 0.01, 0.2, 0.3));
    EXPECT_NEAR(bestFitHarmonic(mixed).period, 100.0, 1.0);
    // A pure ripple faster than 8 samples leaves the band's end as the best.
    EXPECT_GE(bestFitHarmonic(sinusoid(101, 0.5)).period, 8.0 * (1.0 - 1e-12));
    // A third of a cycle in the record: the period found is no longer than it.
    const HarmonicFit longest = bestFitHarmonic(sinusoid(100, 1.0 / 300.0, 1.0, 0.5));
    EXPECT_TRUE(longest.period >= 50.0 && longest.period <= 100.0 * (1.0 + 1e-12))
        << longest.period;
}

TEST(BestFitHarmonic, AConstantOrTooShortSeriesGivesAFlatFit) {
    const HarmonicFit flat = bestFitHarmonic(std::vector<double>(50, 1.25));
    EXPECT_EQ(std::tuple(flat.varianceRatio, flat.amplitude, flat.period, flat.values),
              std::tuple(0.0, 0.0, 50.0, std::vector(50, 1.25)));
    const HarmonicFit tiny = bestFitHarmonic(std::vector<double>{1.0, 2.0, 3.0});
    EXPECT_EQ(std::pair(tiny.values, tiny.varianceRatio), std::pair(std::vector(3, 2.0), 0.0));
    EXPECT_TRUE(bestFitHarmonic(std::vector<double>{}).values.empty());
}

// Hand-worked series, and the same through PeakTrough_dll (1-based samples, the
// earlier of crest and trough first).
TEST(MaximumWave, PicksTheHighestNeighbouringCrestAndTroughOfCompleteHalfWaves) {
    const std::vector<double> ramp = sampled(50, [](double t) { return t; });
    // Series, crest, trough, height, period, complete.
    // clang-format off
    const std::tuple<std::vector<double>, std::size_t, std::size_t, double, double, bool> rows[] = {
        // Mean 0; crossings at 2.5, 5.5, 8.5, 12.5, 15.2, 16.67; complete half-waves:
        // trough -2 (t4), crest 6 (t7), trough -7 (t10), crest 2 (t14), trough -4
        // (t16). Waves: 8, 13, 9, 6; the highest runs from 5.5 to 12.5.
        {{1, 3, 1, -1, -2, -1, 1, 6, 1, -1, -7, -2, -1, 1, 2, 1, -4, 2}, 7, 10, 13.0, 7.0, true},
        // Mean 2/13; the -9 and 9 at the ends lie outside the first and last
        // crossing. Half-waves: crest 2 (t3) from 1.58 to 4.42, trough -2 (t6) to
        // 7.58, crest 2 (t9), trough -1 (t11).
        {{-9, -1, 1, 2, 1, -1, -2, -1, 1, 2, 1, -1, 9}, 3, 6, 4.0, 6.0, true},
        // Without two complete half-waves the extremes of the series count.
        {ramp, 49, 0, 49.0, 98.0, false}, {std::vector<double>(30, 0.5), 0, 0, 0.0, 0.0, false}};
    // clang-format on
    for (const auto& [y, crest, trough, height, period, complete] : rows) {
        SCOPED_TRACE(y.size());
        const MaximumWave wave = maximumWave(y);
        EXPECT_EQ(std::tuple(wave.complete, wave.crest, wave.trough),
                  std::tuple(complete, crest, trough));
        EXPECT_TRUE(
            allNear(std::vector{wave.height, wave.period}, std::vector{height, period}, 1e-12));
        const std::vector<float> f = toFloat(y);
        std::int32_t count = static_cast<std::int32_t>(f.size()), first = 0, second = 0;
        float dllHeight = -1, dllPeriod = -1;
        PeakTrough_dll(&count, f.data(), &dllHeight, &dllPeriod, &first, &second);
        EXPECT_EQ(std::pair(first, second),
                  (std::pair<std::int32_t, std::int32_t>(std::min(crest, trough) + 1,
                                                         std::max(crest, trough) + 1)));
        EXPECT_FLOAT_EQ(dllHeight, static_cast<float>(height));
        EXPECT_FLOAT_EQ(dllPeriod, static_cast<float>(period));
    }
}

} // namespace
} // namespace tarnic
