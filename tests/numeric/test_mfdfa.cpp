// Multifractal DFA: polynomial detrending, segment measures, the scale grid,
// the Legendre transform, the statistics of known processes, and MF_DFA_dll as
// the program loads it.
#include "numeric/mfdfa.h"
#include "numeric/tarnic_api.h"
#include "numeric_support.h"

namespace tarnic {
namespace {

using M = FluctuationMeasure;
using namespace test;

// The cumulative sum of a binomial cascade of 2^levels cells: each cell passes
// the share a of its mass to its left half and 1 - a to its right.
std::vector<double> cascadeProfile(int levels, double a) {
    const std::size_t n = std::size_t{1} << levels;
    std::vector<double> mass(n, 1.0);
    for (int l = 0; l < levels; ++l)
        for (std::size_t t = 0; t < n; ++t)
            mass[t] *= (t >> (levels - 1 - l)) % 2 == 0 ? a : 1.0 - a;
    std::partial_sum(mass.begin(), mass.end(), mass.begin());
    return mass;
}

MfdfaSettings settings(int order, M measure, int minScale, int maxScale, std::size_t scaleCount,
                       double qMin = -10.0, double qMax = 10.0, std::size_t qCount = 200,
                       std::size_t alphaCount = 200) {
    return {order, measure, minScale, maxScale, scaleCount, qMin, qMax, qCount, alphaCount};
}

// As the window asks for n samples, with q stepping by 0.1 so that -4, -2, 2, 4
// lie on the grid.
MfdfaSettings windowSettings(std::size_t n, int order, M measure) {
    return settings(order, measure, 20, static_cast<int>(n / 5), 200, -10.0, 10.0, 201);
}

double hAt(const MfdfaResult& r, double q) {
    return r.h[static_cast<std::size_t>(std::lround((q - r.q.front()) / (r.q[1] - r.q[0])))];
}

TEST(PolynomialDetrender, RemovesEveryPolynomialUpToItsOrderButNotOneDegreeMore) {
    for (std::size_t length : {25u, 2000u})
        for (int order = 0; order <= 10; ++order) {
            std::vector<double> y(length, 0.0), r(length);
            for (std::size_t t = 0; t < length; ++t)
                for (int k = 0; k <= order; ++k)
                    y[t] += (k % 2 ? -1.0 : 1.5) * std::pow((t - 0.3 * length) / length, k) * 100;
            const PolynomialDetrender detrender(length, order);
            detrender.residual(y, r);
            EXPECT_TRUE(allNear(r, std::vector<double>(length, 0.0), 1e-10))
                << "length " << length << " order " << order;
            for (std::size_t t = 0; t < length; ++t)
                y[t] = std::pow(2.0 * t / (length - 1.0) - 1.0, order + 1);
            detrender.residual(y, r);
            EXPECT_GT(*std::max_element(r.begin(), r.end()), 1e-4);
        }
}

TEST(PolynomialDetrender, HandVectorsAndExactFitOfShortStretches) {
    // The least-squares line through 0 1 0 1 is 0.2 + 0.2 t; order 0 takes the
    // mean (in place works); five samples under order 10: the fit passes through
    // every sample.
    const std::vector<double> y{0, 1, 0, 1};
    std::vector<double> r(4), z{1, 2, 3, 4}, w{3, -1, 4, 1, -5}, rw(5);
    PolynomialDetrender(4, 1).residual(y, r);
    EXPECT_TRUE(allNear(r, std::vector<double>{-0.2, 0.6, -0.6, 0.2}, 1e-15));
    PolynomialDetrender(4, 0).residual(z, z);
    EXPECT_TRUE(allNear(z, std::vector<double>{-1.5, -0.5, 0.5, 1.5}, 1e-15));
    const PolynomialDetrender exact(5, 10);
    EXPECT_EQ(exact.rank(), 5u);
    exact.residual(w, rw);
    EXPECT_TRUE(allNear(rw, std::vector<double>(5, 0.0), 1e-13));
}

TEST(SegmentFluctuations, RangeAndDeviationOfHandSegments) {
    // Segments 1 2 3 4 | 0 1 0 1; the trailing 9 9 make no third segment.
    const std::vector<double> x{1, 2, 3, 4, 0, 1, 0, 1, 9, 9};
    // clang-format off
    const std::tuple<int, M, std::vector<double>> cases[] = {
        {0, M::Range, {3, 1}}, {0, M::StandardDeviation, {std::sqrt(1.25), 0.5}},
        {1, M::Range, {0, 1.2}}, {1, M::StandardDeviation, {0, std::sqrt(0.2)}}};
    // clang-format on
    for (const auto& [order, measure, expected] : cases)
        EXPECT_TRUE(allNear(segmentFluctuations(x, 4, order, measure), expected, 1e-14)) << order;
    EXPECT_EQ(segmentFluctuations(x, 5, 0, M::Range).size(), 2u);
    EXPECT_TRUE(segmentFluctuations(x, 11, 0, M::Range).empty());
}

TEST(MfdfaScales, EvenInLogarithmRoundedWithoutRepeatsAndClampedToTheSeries) {
    using S = std::vector<std::size_t>;
    // clang-format off
    const std::tuple<std::size_t, int, int, std::size_t, S> cases[] = {
        {1000, 20, 200, 3, {20, 63, 200}}, // 20 sqrt(10) = 63.2
        // 20 * 2^(i/19): 22.30 and 21.50 both round to 22, so 19 scales remain.
        {1000, 20, 40, 20,
         {20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 35, 36, 37, 39, 40}},
        {500, 5, 100000, 2, {5, 500}}, {500, -3, 1, 2, {2}}, // both ends at 2
        {30, 40, 80, 5, {30}}, // one segment of the whole series
        {500, 20, 100, 1, {20}}, {1, 20, 100, 5, {}}, {500, 20, 100, 0, {}}};
    // clang-format on
    for (const auto& [n, lo, hi, count, scales] : cases)
        EXPECT_EQ(mfdfaScales(n, lo, hi, count), scales) << n << " " << lo << " " << hi;
    const S dense = mfdfaScales(10000, 20, 2000, 200);
    EXPECT_EQ(std::pair(dense.front(), dense.back()),
              (std::pair<std::size_t, std::size_t>{20, 2000}));
    EXPECT_TRUE(std::is_sorted(dense.begin(), dense.end(), std::less_equal<>()));
}

// Ranges 4 and 1 at the one scale 4: Z(q) = ((4^q + 1) / 2)^(1/q), and the
// geometric mean 2 at q = 0 exactly; standard deviations sqrt(3) and
// sqrt(0.1875). One scale gives no slope. A segment without fluctuation is
// left out at every q.
TEST(MfdfaFluctuation, PowerMeansOfHandSegmentsLeavingFlatOnesOut) {
    const std::vector<double> x{0, 0, 0, 4, 0, 0, 0, 1};
    const MfdfaResult r = mfdfa(x, settings(0, M::Range, 4, 4, 1, -1.0, 2.0, 4, 3));
    ASSERT_EQ(r.scales, std::vector<std::size_t>{4});
    EXPECT_EQ(r.q, (std::vector<double>{-1, 0, 1, 2}));
    EXPECT_TRUE(allNear(r.log10Z,
                        std::vector<double>{std::log10(1.6), std::log10(2.0), std::log10(2.5),
                                            std::log10(std::sqrt(8.5))},
                        1e-15));
    const MfdfaResult sd = mfdfa(x, settings(0, M::StandardDeviation, 4, 4, 1, -1.0, 2.0, 4, 3));
    EXPECT_NEAR(sd.log10Z[3], std::log10(std::sqrt((3.0 + 0.1875) / 2.0)), 1e-15);
    EXPECT_EQ(std::tuple(r.outcome, r.h, r.alpha, r.f),
              std::tuple(MfdfaOutcome::NoScaling, std::vector<double>(4, 0.0),
                         std::vector<double>{0, 0.5, 1}, std::vector<double>(3, 0.0)));
    // Ranges 0 and 4: with the flat segment left out Z = 4 at every q, where a
    // negative q would otherwise give infinity.
    const std::vector<double> y{7, 7, 7, 7, 0, 0, 0, 4};
    EXPECT_TRUE(allNear(mfdfa(y, settings(0, M::Range, 4, 4, 1, -10.0, 10.0, 5)).log10Z,
                        std::vector<double>(5, std::log10(4.0)), 1e-15));
}

// The fits of all segments as matrix products and the powers over the q grid by
// geometric sequences, against one fit per segment and std::pow per q, on
// lengths 1, 2, 13, 521, 2053 up to the largest scales and orders.
TEST(MfdfaFluctuation, SharedFitsAndQPowersEqualTheSegmentBySegmentDefinition) {
    std::vector<double> walk = randomWalk(2053, 777);
    for (std::size_t t = 1; t < walk.size(); ++t)
        walk[t] += 0.005 * static_cast<double>(t * (t + 1));
    // The q grid -0.6, -0.5, .. 0.5 passes 0 at a rounding distance (1e-16) only.
    // clang-format off
    const std::tuple<std::size_t, int, int, int, M, double, double, std::size_t> cases[] = {
        {1, 0, 2, 2, M::Range, -10, 10, 5}, {2, 1, 2, 2, M::Range, -10, 10, 1},
        {13, 0, 2, 13, M::StandardDeviation, -10, 10, 2}, {521, 4, 5, 300, M::Range, -10, 10, 200},
        {600, 2, 8, 200, M::StandardDeviation, -0.6, 0.5, 12},
        {2053, 10, 11, 2048, M::StandardDeviation, -10, 10, 37}};
    // clang-format on
    for (const auto& [n, order, minScale, maxScale, measure, qMin, qMax, qCount] : cases) {
        const std::span<const double> x(walk.data(), n);
        const MfdfaResult r =
            mfdfa(x, settings(order, measure, minScale, maxScale, 40, qMin, qMax, qCount));
        const double largest = largestMagnitude(x);
        std::vector<double> expected(r.log10Z.size(), 0.0);
        for (std::size_t i = 0; i < r.scales.size(); ++i) {
            const std::size_t s = r.scales[i];
            const PolynomialDetrender detrender(s, order);
            std::vector<double> measures, dy(s);
            for (std::size_t k = 0; k + s <= n; k += s) {
                detrender.residual(x.subspan(k, s), dy);
                const auto [lo, hi] = std::minmax_element(dy.begin(), dy.end());
                const double m = measure == M::Range ? *hi - *lo : std::sqrt(energy(dy) / s);
                if (m > 1e-11 * largest) measures.push_back(m);
            }
            for (std::size_t j = 0; j < r.q.size() && !measures.empty(); ++j) {
                const bool zero = std::abs(r.q[j]) < 1e-12;
                double mean = 0.0;
                for (double m : measures)
                    mean += (zero ? std::log(m) : std::pow(m, r.q[j])) / measures.size();
                expected[i * r.q.size() + j] =
                    zero ? mean / std::log(10.0) : std::log10(mean) / r.q[j];
            }
        }
        EXPECT_TRUE(allNear(r.log10Z, expected, 1e-10)) << "n = " << n;
    }
}

// The Legendre transform of tau(q) = q h(q) - 1. A constant h = 0.5 over q in
// [-10, 10] gives the triangle 1 - 10 |alpha - 1/2| on [0.4, 0.6]; a linear h = 1 -
// 0.1 q gives alpha = 1 - 0.2 q and the parabola F = 1 - 2.5 (1 - alpha)^2,
// positive between 1 -/+ sqrt(0.4). Crossing bounds (q = -1 asks alpha < 1, q = 1
// alpha > 1) leave no positive value.
TEST(SingularitySpectrum, TriangleOfAMonofractalParabolaOfALinearHAndNothingForCrossingBounds) {
    const std::vector<double> q = evenGrid(-10.0, 10.0, 201);
    const SingularitySpectrum mono = singularitySpectrum(q, std::vector<double>(201, 0.5), 201);
    EXPECT_TRUE(mono.positive);
    EXPECT_TRUE(
        allNear(std::vector{mono.alpha.front(), mono.alpha.back()}, std::vector{0.4, 0.6}, 1e-15));
    for (std::size_t i = 0; i < mono.alpha.size(); ++i)
        ASSERT_NEAR(mono.f[i], 1.0 - 10.0 * std::abs(mono.alpha[i] - 0.5), 1e-12) << i;
    EXPECT_EQ(std::pair(mono.f.front(), mono.f.back()), std::pair(0.0, 0.0));
    const std::vector<double> fine = evenGrid(-10.0, 10.0, 2001);
    std::vector<double> h(fine.size());
    std::transform(fine.begin(), fine.end(), h.begin(), [](double q) { return 1.0 - 0.1 * q; });
    const SingularitySpectrum s = singularitySpectrum(fine, h, 101);
    EXPECT_TRUE(allNear(std::vector{s.alpha.front(), s.alpha.back()},
                        std::vector{1.0 - std::sqrt(0.4), 1.0 + std::sqrt(0.4)}, 1e-4));
    for (std::size_t i = 0; i < s.alpha.size(); ++i)
        ASSERT_NEAR(s.f[i], 1.0 - 2.5 * (1.0 - s.alpha[i]) * (1.0 - s.alpha[i]), 1e-4) << i;
    const SingularitySpectrum none =
        singularitySpectrum(std::vector<double>{-1, 1}, std::vector<double>{0, 2}, 5);
    EXPECT_FALSE(none.positive);
    EXPECT_EQ(none.alpha, (std::vector<double>{0, 0.5, 1, 1.5, 2}));
    EXPECT_EQ(none.f, std::vector<double>(5, 0.0));
}

// No cumulative sum is taken: a random walk itself scales as s^0.5 (a monofractal
// with its spectrum's peak near 1 at alpha 1/2, either measure), white noise as
// s^0.
TEST(MultifractalDfa, RandomWalkHasHNearOneHalfAndWhiteNoiseNearZero) {
    const std::vector<double> x = randomWalk(5000, 2718);
    const MfdfaResult r = mfdfa(x, windowSettings(x.size(), 2, M::StandardDeviation));
    ASSERT_EQ(r.outcome, MfdfaOutcome::Spectrum);
    for (double h : r.h)
        ASSERT_NEAR(h, 0.5, 0.08);
    const std::size_t top = std::max_element(r.f.begin(), r.f.end()) - r.f.begin();
    EXPECT_TRUE(r.f[top] > 0.9 && r.f[top] <= 1.0 + 1e-12) << r.f[top];
    EXPECT_NEAR(r.alpha[top], 0.5, 0.06);
    EXPECT_LT(r.alpha.back() - r.alpha.front(), 0.35);
    EXPECT_EQ(std::pair(r.f.front(), r.f.back()), std::pair(0.0, 0.0));
    EXPECT_NEAR(hAt(mfdfa(x, windowSettings(x.size(), 2, M::Range)), 2.0), 0.5, 0.1);
    const std::vector<double> noise = whiteNoise(5000, 1.0, 99);
    EXPECT_NEAR(hAt(mfdfa(noise, windowSettings(5000, 1, M::StandardDeviation)), 2.0), 0.0, 0.06);
}

TEST(MultifractalDfa, BinomialCascadeHasTheKnownWideSpectrum) {
    // Profile of the cascade with a = 0.75: h(q) = 1/q - ln(a^q + (1-a)^q) / (q ln 2).
    const std::vector<double> x = cascadeProfile(14, 0.75);
    const MfdfaResult r = mfdfa(x, windowSettings(x.size(), 2, M::StandardDeviation));
    ASSERT_EQ(r.outcome, MfdfaOutcome::Spectrum);
    for (double q : {-4.0, -2.0, 2.0, 4.0})
        EXPECT_NEAR(hAt(r, q),
                    1 / q - std::log(std::pow(0.75, q) + std::pow(0.25, q)) / (q * std::log(2.0)),
                    0.1)
            << "q " << q;
    const MfdfaResult walk =
        mfdfa(randomWalk(x.size(), 5), windowSettings(x.size(), 2, M::StandardDeviation));
    const double cascadeWidth = r.alpha.back() - r.alpha.front();
    EXPECT_GT(cascadeWidth, 1.2);
    EXPECT_GT(cascadeWidth, 4.0 * (walk.alpha.back() - walk.alpha.front()));
}

TEST(MultifractalDfa, DegenerateSeriesGiveFiniteOutputsAndSayWhy) {
    const MfdfaSettings s = windowSettings(1000, 2, M::Range);
    const auto finite = [](const std::vector<double>& v) {
        return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
    };
    // Constant, and a parabola under order 2: nothing fluctuates.
    const auto parabola = sampled(1000, [](double t) { return 3.0 + 0.01 * t - 2e-5 * t * t; });
    for (const std::vector<double>& x : {std::vector<double>(1000, 42.0), parabola}) {
        const MfdfaResult r = mfdfa(x, s);
        EXPECT_EQ(std::tuple(r.outcome, r.log10Z, r.f),
                  std::tuple(MfdfaOutcome::NoScaling, std::vector<double>(r.log10Z.size(), 0.0),
                             std::vector<double>(200, 0.0)));
        EXPECT_EQ(std::pair(r.alpha.front(), r.alpha.back()), std::pair(0.0, 1.0));
    }
    // Half the segments flat: negative q stay finite.
    std::vector<double> patchy = randomWalk(4000, 8);
    for (std::size_t t = 0; t < patchy.size(); ++t)
        if ((t / 20) % 2 == 0) patchy[t] = 0.0;
    const MfdfaResult p = mfdfa(patchy, windowSettings(patchy.size(), 2, M::Range));
    EXPECT_TRUE(finite(p.log10Z) && finite(p.h) && finite(p.alpha) && finite(p.f));
}

// As the window calls it: 200 alphas and 200 q values from -10 to 10, room for
// min(maxScale - minScale, 200) scales; the routine reports the scales it used.
// Orders above 10 count as 10, an unknown measure as the standard deviation, a
// sample that is not a number as 0; a constant gives zeros on the unit grid.
TEST(MfdfaBinding, WindowCallMatchesTheAnalysisWithItsParametersClamped) {
    const auto run = dllRoutine<decltype(&MF_DFA_dll)>("MF_DFA_dll");
    ASSERT_NE(run, nullptr);
    std::vector<double> walk = randomWalk(1000, 3), zeroed = walk, flat(400, 5.0);
    walk[100] = std::numeric_limits<double>::quiet_NaN();
    zeroed[100] = 0.0;
    // Series passed, order, measure, maxScale (minScale 20), series analysed, settings.
    // clang-format off
    const std::tuple<std::vector<double>*, std::int32_t, std::int32_t, std::int32_t,
                     std::vector<double>*, MfdfaSettings> cases[] = {
        {&zeroed, 4, 0, 400, &zeroed, settings(4, M::Range, 20, 400, 200)},
        {&walk, 12, 7, 120, &zeroed, settings(10, M::StandardDeviation, 20, 120, 100)},
        {&flat, 4, 0, 80, &flat, settings(4, M::Range, 20, 80, 60)}};
    // clang-format on
    for (auto [x, order, measure, maxScale, same, expected] : cases) {
        SCOPED_TRACE(maxScale);
        const MfdfaResult r = mfdfa(*same, expected);
        std::int32_t n = std::int32_t(x->size()), minScale = 20, alfaCount = 200, qCount = 200,
                     scaleCount = std::min(maxScale - minScale, 200);
        double qMin = -10.0, qMax = 10.0;
        std::vector<double> alfa(200), fAlfa(200), table(200 * scaleCount + 1, -1.0);
        run(x->data(), &n, &order, &measure, &minScale, &maxScale, &alfaCount, alfa.data(),
            fAlfa.data(), &qMin, &qMax, &qCount, &scaleCount, table.data());
        ASSERT_EQ(std::pair(qCount, scaleCount), std::pair(200, std::int32_t(r.scales.size())));
        EXPECT_EQ(table.back(), -1.0); // nothing beyond
        table.resize(200 * r.scales.size());
        EXPECT_EQ(std::tuple(table, alfa, fAlfa), std::tuple(r.log10Z, r.alpha, r.f));
    }
}

} // namespace
} // namespace tarnic
