// Multifractal DFA: polynomial detrending, segment measures, the scale grid,
// the Legendre transform, the statistics of known processes, and MF_DFA_dll as
// the program loads it.
#include "numeric/mfdfa.h"
#include "numeric/tarnic_api.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tarnic {
namespace {

using test::allNear;
using test::isNear;

std::vector<double> randomWalk(std::size_t n, unsigned seed) {
    std::vector<double> x = test::whiteNoise(n, 1.0, seed);
    for (std::size_t t = 1; t < n; ++t)
        x[t] += x[t - 1];
    return x;
}

// The cumulative sum of a binomial cascade of 2^levels cells: each cell passes
// the share a of its mass to its left half and 1 - a to its right.
std::vector<double> cascadeProfile(int levels, double a) {
    const std::size_t n = std::size_t{1} << levels;
    std::vector<double> mass(n, 1.0);
    for (int l = 0; l < levels; ++l) {
        const std::size_t half = n >> (l + 1);
        for (std::size_t start = 0; start < n; start += 2 * half)
            for (std::size_t t = 0; t < half; ++t) {
                mass[start + t] *= a;
                mass[start + half + t] *= 1.0 - a;
            }
    }
    for (std::size_t t = 1; t < n; ++t)
        mass[t] += mass[t - 1];
    return mass;
}

MfdfaSettings windowSettings(std::size_t n, int order, FluctuationMeasure measure) {
    MfdfaSettings s;
    s.order = order;
    s.measure = measure;
    s.minScale = 20;
    s.maxScale = static_cast<int>(n / 5);
    s.scaleCount = 200;
    s.qMin = -10.0;
    s.qMax = 10.0;
    s.qCount = 201; // step 0.1: q = -4, -2, 2, 4 lie on the grid
    s.alphaCount = 200;
    return s;
}

double hAt(const MfdfaResult& r, double q) {
    const auto j = static_cast<std::size_t>(std::lround((q - r.q.front()) / (r.q[1] - r.q[0])));
    return r.h[j];
}

std::size_t peakOf(const std::vector<double>& f) {
    return static_cast<std::size_t>(std::max_element(f.begin(), f.end()) - f.begin());
}

TEST(PolynomialDetrender, RemovesEveryPolynomialUpToItsOrder) {
    for (std::size_t length : {25u, 2000u})
        for (int order = 0; order <= 10; ++order) {
            std::vector<double> y(length), r(length);
            for (std::size_t t = 0; t < length; ++t) {
                const double u = (static_cast<double>(t) - 0.3 * length) / length;
                for (int k = 0; k <= order; ++k)
                    y[t] += (k % 2 ? -1.0 : 1.5) * std::pow(u, k) * 100.0;
            }
            const PolynomialDetrender detrender(length, order);
            detrender.residual(y, r);
            for (double v : r)
                ASSERT_TRUE(isNear(v, 0.0, 1e-10)) << "length " << length << " order " << order;
            // One degree more is not removed.
            for (std::size_t t = 0; t < length; ++t)
                y[t] = std::pow(2.0 * static_cast<double>(t) / (length - 1) - 1.0, order + 1);
            detrender.residual(y, r);
            EXPECT_GT(*std::max_element(r.begin(), r.end()), 1e-4);
        }
}

TEST(PolynomialDetrender, HandVectorAndExactFitOfShortStretches) {
    // Least-squares line through 0 1 0 1 is 0.2 + 0.2 t.
    const std::vector<double> y{0, 1, 0, 1};
    std::vector<double> r(4);
    PolynomialDetrender(4, 1).residual(y, r);
    EXPECT_TRUE(allNear(r, std::vector<double>{-0.2, 0.6, -0.6, 0.2}, 1e-15));
    // Order 0 takes the mean; in place works.
    std::vector<double> z{1, 2, 3, 4};
    PolynomialDetrender(4, 0).residual(z, z);
    EXPECT_TRUE(allNear(z, std::vector<double>{-1.5, -0.5, 0.5, 1.5}, 1e-15));
    // Five samples and order 10: the fit passes through every sample.
    const PolynomialDetrender exact(5, 10);
    EXPECT_EQ(exact.rank(), 5u);
    const std::vector<double> w{3, -1, 4, 1, -5};
    std::vector<double> rw(5);
    exact.residual(w, rw);
    for (double v : rw)
        EXPECT_TRUE(isNear(v, 0.0, 1e-13));
}

TEST(SegmentFluctuations, RangeAndDeviationOfHandSegments) {
    // Segments 1 2 3 4 | 0 1 0 1; the trailing 9 9 make no third segment.
    const std::vector<double> x{1, 2, 3, 4, 0, 1, 0, 1, 9, 9};
    using M = FluctuationMeasure;
    EXPECT_TRUE(allNear(segmentFluctuations(x, 4, 0, M::Range), std::vector<double>{3, 1}, 1e-15));
    EXPECT_TRUE(allNear(segmentFluctuations(x, 4, 0, M::StandardDeviation),
                        std::vector<double>{std::sqrt(1.25), 0.5}, 1e-15));
    EXPECT_TRUE(
        allNear(segmentFluctuations(x, 4, 1, M::Range), std::vector<double>{0, 1.2}, 1e-14));
    EXPECT_TRUE(allNear(segmentFluctuations(x, 4, 1, M::StandardDeviation),
                        std::vector<double>{0, std::sqrt(0.2)}, 1e-14));
    EXPECT_EQ(segmentFluctuations(x, 5, 0, M::Range).size(), 2u);
    EXPECT_TRUE(segmentFluctuations(x, 11, 0, M::Range).empty());
}

TEST(MfdfaScales, EvenInLogarithmRoundedWithoutRepeats) {
    using S = std::vector<std::size_t>;
    EXPECT_EQ(mfdfaScales(1000, 20, 200, 3), (S{20, 63, 200})); // 20 sqrt(10) = 63.2
    // 20 * 2^(i/19): 22.30 and 21.50 both round to 22, so 19 scales remain.
    EXPECT_EQ(mfdfaScales(1000, 20, 40, 20),
              (S{20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 35, 36, 37, 39, 40}));
    const S dense = mfdfaScales(10000, 20, 2000, 200);
    EXPECT_EQ(dense.front(), 20u);
    EXPECT_EQ(dense.back(), 2000u);
    EXPECT_TRUE(std::adjacent_find(dense.begin(), dense.end(), std::greater_equal<>()) ==
                dense.end());
}

TEST(MfdfaScales, BoundsAreClampedToTheSeries) {
    using S = std::vector<std::size_t>;
    EXPECT_EQ(mfdfaScales(500, 5, 100000, 2), (S{5, 500}));
    EXPECT_EQ(mfdfaScales(500, -3, 1, 2), (S{2}));  // both ends at 2
    EXPECT_EQ(mfdfaScales(30, 40, 80, 5), (S{30})); // one segment of the whole series
    EXPECT_EQ(mfdfaScales(500, 20, 100, 1), (S{20}));
    EXPECT_TRUE(mfdfaScales(1, 20, 100, 5).empty());
    EXPECT_TRUE(mfdfaScales(500, 20, 100, 0).empty());
}

TEST(MfdfaFluctuation, PowerMeansOfTwoHandSegments) {
    // Ranges 4 and 1 at the one scale 4: Z(q) = ((4^q + 1) / 2)^(1/q), and the
    // geometric mean 2 at q = 0 exactly.
    const std::vector<double> x{0, 0, 0, 4, 0, 0, 0, 1};
    MfdfaSettings s;
    s.order = 0;
    s.measure = FluctuationMeasure::Range;
    s.minScale = s.maxScale = 4;
    s.scaleCount = 1;
    s.qMin = -1.0;
    s.qMax = 2.0;
    s.qCount = 4;
    s.alphaCount = 3;
    const MfdfaResult r = mfdfa(x, s);
    ASSERT_EQ(r.scales, std::vector<std::size_t>{4});
    EXPECT_TRUE(allNear(r.q, std::vector<double>{-1, 0, 1, 2}, 0.0));
    EXPECT_TRUE(allNear(r.log10Z,
                        std::vector<double>{std::log10(1.6), std::log10(2.0), std::log10(2.5),
                                            std::log10(std::sqrt(8.5))},
                        1e-15));
    // Standard deviations sqrt(3) and sqrt(0.1875).
    s.measure = FluctuationMeasure::StandardDeviation;
    EXPECT_TRUE(isNear(mfdfa(x, s).log10Z[3], std::log10(std::sqrt((3.0 + 0.1875) / 2.0)), 1e-15));
    // One scale gives no slope.
    EXPECT_EQ(r.outcome, MfdfaOutcome::NoScaling);
    EXPECT_TRUE(allNear(r.h, std::vector<double>(4, 0.0), 0.0));
    EXPECT_TRUE(allNear(r.alpha, std::vector<double>{0, 0.5, 1}, 0.0));
    EXPECT_TRUE(allNear(r.f, std::vector<double>(3, 0.0), 0.0));
}

TEST(MfdfaFluctuation, SegmentsWithoutFluctuationAreLeftOutAtEveryQ) {
    // Ranges 0 and 4: with the flat segment left out Z = 4 at every q, where a
    // negative q would otherwise give infinity.
    const std::vector<double> x{7, 7, 7, 7, 0, 0, 0, 4};
    MfdfaSettings s;
    s.order = 0;
    s.measure = FluctuationMeasure::Range;
    s.minScale = s.maxScale = 4;
    s.scaleCount = 1;
    s.qMin = -10.0;
    s.qMax = 10.0;
    s.qCount = 5;
    EXPECT_TRUE(allNear(mfdfa(x, s).log10Z, std::vector<double>(5, std::log10(4.0)), 1e-15));
}

TEST(MfdfaFluctuation, SharedFitsAndQPowersEqualTheSegmentBySegmentDefinition) {
    // The fits of all segments as matrix products and the powers over the q grid
    // by geometric sequences, against one fit per segment and std::pow per q.
    const std::vector<double> walk = [] {
        std::vector<double> x = test::whiteNoise(2053, 1.0);
        for (std::size_t t = 1; t < x.size(); ++t)
            x[t] += x[t - 1] + 0.01 * static_cast<double>(t);
        return x;
    }();
    struct Case {
        std::size_t n;
        int order, minScale, maxScale;
        FluctuationMeasure measure;
        std::size_t qCount;
    };
    using M = FluctuationMeasure;
    for (const Case& c : {Case{1, 0, 2, 2, M::Range, 5}, Case{2, 1, 2, 2, M::Range, 1},
                          Case{13, 0, 2, 13, M::StandardDeviation, 2},
                          Case{521, 4, 5, 300, M::Range, 200},
                          Case{2053, 10, 11, 2048, M::StandardDeviation, 37}}) {
        const std::span<const double> x(walk.data(), c.n);
        MfdfaSettings settings;
        settings.order = c.order;
        settings.measure = c.measure;
        settings.minScale = c.minScale;
        settings.maxScale = c.maxScale;
        settings.scaleCount = 40;
        settings.qCount = c.qCount;
        const MfdfaResult r = mfdfa(x, settings);
        double largest = 0.0;
        for (double v : x)
            largest = std::max(largest, std::abs(v));
        std::vector<double> expected(r.log10Z.size(), 0.0);
        for (std::size_t i = 0; i < r.scales.size(); ++i) {
            const std::size_t s = r.scales[i];
            const PolynomialDetrender detrender(s, c.order);
            std::vector<double> measures, dy(s);
            for (std::size_t k = 0; k + s <= c.n; k += s) {
                detrender.residual(x.subspan(k, s), dy);
                double squares = 0.0;
                for (double v : dy)
                    squares += v * v;
                const auto [lo, hi] = std::minmax_element(dy.begin(), dy.end());
                const double m = c.measure == M::Range ? *hi - *lo : std::sqrt(squares / s);
                if (m > 1e-11 * largest) measures.push_back(m);
            }
            for (std::size_t j = 0; j < r.q.size() && !measures.empty(); ++j) {
                double mean = 0.0;
                for (double m : measures)
                    mean += (std::abs(r.q[j]) < 1e-12 ? std::log(m) : std::pow(m, r.q[j])) /
                            static_cast<double>(measures.size());
                expected[i * r.q.size() + j] =
                    std::abs(r.q[j]) < 1e-12 ? mean / std::log(10.0)
                                             : std::log10(mean) / r.q[j];
            }
        }
        EXPECT_TRUE(allNear(r.log10Z, expected, 1e-10)) << "n = " << c.n;
    }
}

TEST(SingularitySpectrum, ConstantHGivesTheTriangleOfAMonofractal) {
    const std::vector<double> q = evenGrid(-10.0, 10.0, 201);
    const std::vector<double> h(q.size(), 0.5);
    const SingularitySpectrum s = singularitySpectrum(q, h, 201);
    EXPECT_TRUE(s.positive);
    EXPECT_TRUE(isNear(s.alpha.front(), 0.4, 1e-15));
    EXPECT_TRUE(isNear(s.alpha.back(), 0.6, 1e-15));
    for (std::size_t i = 0; i < s.alpha.size(); ++i)
        ASSERT_TRUE(isNear(s.f[i], 1.0 - 10.0 * std::abs(s.alpha[i] - 0.5), 1e-12)) << i;
    EXPECT_TRUE(isNear(s.f[100], 1.0, 1e-12));
    EXPECT_EQ(s.f.front(), 0.0);
    EXPECT_EQ(s.f.back(), 0.0);
}

TEST(SingularitySpectrum, LinearHGivesAParabola) {
    // h = 1 - 0.1 q: tau = q - 0.1 q^2 - 1, alpha = 1 - 0.2 q, F = 1 - 2.5 (1 - alpha)^2,
    // positive between 1 - sqrt(0.4) and 1 + sqrt(0.4).
    const std::vector<double> q = evenGrid(-10.0, 10.0, 2001);
    std::vector<double> h(q.size());
    for (std::size_t j = 0; j < q.size(); ++j)
        h[j] = 1.0 - 0.1 * q[j];
    const SingularitySpectrum s = singularitySpectrum(q, h, 101);
    EXPECT_TRUE(isNear(s.alpha.front(), 1.0 - std::sqrt(0.4), 1e-4));
    EXPECT_TRUE(isNear(s.alpha.back(), 1.0 + std::sqrt(0.4), 1e-4));
    for (std::size_t i = 0; i < s.alpha.size(); ++i)
        ASSERT_TRUE(isNear(s.f[i], 1.0 - 2.5 * (1.0 - s.alpha[i]) * (1.0 - s.alpha[i]), 1e-4)) << i;
}

TEST(SingularitySpectrum, CrossingBoundsLeaveNoPositiveValue) {
    // q = -1 asks alpha < 1, q = 1 asks alpha > 1: nothing is left.
    const SingularitySpectrum s =
        singularitySpectrum(std::vector<double>{-1, 1}, std::vector<double>{0, 2}, 5);
    EXPECT_FALSE(s.positive);
    EXPECT_TRUE(allNear(s.alpha, std::vector<double>{0, 0.5, 1, 1.5, 2}, 0.0));
    EXPECT_TRUE(allNear(s.f, std::vector<double>(5, 0.0), 0.0));
}

TEST(MultifractalDfa, RandomWalkIsMonofractalWithHNearOneHalf) {
    // No cumulative sum is taken, so the walk itself scales as s^0.5.
    const std::vector<double> x = randomWalk(5000, 2718);
    const MfdfaResult r =
        mfdfa(x, windowSettings(x.size(), 2, FluctuationMeasure::StandardDeviation));
    ASSERT_EQ(r.outcome, MfdfaOutcome::Spectrum);
    for (double h : r.h)
        ASSERT_TRUE(isNear(h, 0.5, 0.08));
    const std::size_t top = peakOf(r.f);
    EXPECT_GT(r.f[top], 0.9);
    EXPECT_LE(r.f[top], 1.0 + 1e-12);
    EXPECT_TRUE(isNear(r.alpha[top], 0.5, 0.06));
    EXPECT_LT(r.alpha.back() - r.alpha.front(), 0.35);
    EXPECT_EQ(r.f.front(), 0.0);
    EXPECT_EQ(r.f.back(), 0.0);
    // The range measure scales the same way.
    const MfdfaResult range = mfdfa(x, windowSettings(x.size(), 2, FluctuationMeasure::Range));
    EXPECT_TRUE(isNear(hAt(range, 2.0), 0.5, 0.1));
}

TEST(MultifractalDfa, WhiteNoiseItselfHasHNearZero) {
    const std::vector<double> x = test::whiteNoise(5000, 1.0, 99);
    const MfdfaResult r =
        mfdfa(x, windowSettings(x.size(), 1, FluctuationMeasure::StandardDeviation));
    EXPECT_TRUE(isNear(hAt(r, 2.0), 0.0, 0.06));
}

TEST(MultifractalDfa, BinomialCascadeHasTheKnownWideSpectrum) {
    // Profile of the cascade with a = 0.75: h(q) = 1/q - ln(a^q + (1-a)^q) / (q ln 2).
    const std::vector<double> x = cascadeProfile(14, 0.75);
    const MfdfaResult r =
        mfdfa(x, windowSettings(x.size(), 2, FluctuationMeasure::StandardDeviation));
    ASSERT_EQ(r.outcome, MfdfaOutcome::Spectrum);
    for (double q : {-4.0, -2.0, 2.0, 4.0}) {
        const double exact =
            1.0 / q - std::log(std::pow(0.75, q) + std::pow(0.25, q)) / (q * std::log(2.0));
        EXPECT_TRUE(isNear(hAt(r, q), exact, 0.1)) << "q " << q;
    }
    const MfdfaResult walk =
        mfdfa(randomWalk(x.size(), 5),
              windowSettings(x.size(), 2, FluctuationMeasure::StandardDeviation));
    const double cascadeWidth = r.alpha.back() - r.alpha.front();
    EXPECT_GT(cascadeWidth, 1.2);
    EXPECT_GT(cascadeWidth, 4.0 * (walk.alpha.back() - walk.alpha.front()));
}

TEST(MultifractalDfa, DegenerateSeriesGiveFiniteOutputsAndSayWhy) {
    const MfdfaSettings s = windowSettings(1000, 2, FluctuationMeasure::Range);
    const auto finite = [](const std::vector<double>& v) {
        return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
    };
    // Constant, and a parabola under order 2: nothing fluctuates.
    std::vector<double> parabola(1000);
    for (std::size_t t = 0; t < parabola.size(); ++t)
        parabola[t] = 3.0 + 0.01 * t - 2e-5 * t * t;
    for (const std::vector<double>& x : {std::vector<double>(1000, 42.0), parabola}) {
        const MfdfaResult r = mfdfa(x, s);
        EXPECT_EQ(r.outcome, MfdfaOutcome::NoScaling);
        EXPECT_TRUE(allNear(r.log10Z, std::vector<double>(r.log10Z.size(), 0.0), 0.0));
        EXPECT_TRUE(allNear(r.f, std::vector<double>(200, 0.0), 0.0));
        EXPECT_EQ(r.alpha.front(), 0.0);
        EXPECT_EQ(r.alpha.back(), 1.0);
    }
    // Too short for the scales: one scale of the whole series.
    const MfdfaResult shortRun = mfdfa(randomWalk(15, 1), s);
    EXPECT_EQ(shortRun.scales, std::vector<std::size_t>{15});
    EXPECT_EQ(shortRun.outcome, MfdfaOutcome::NoScaling);
    EXPECT_TRUE(finite(shortRun.log10Z));
    // Half the segments flat: negative q stay finite.
    std::vector<double> patchy = randomWalk(4000, 8);
    for (std::size_t t = 0; t < patchy.size(); ++t)
        if ((t / 20) % 2 == 0) patchy[t] = 0.0;
    const MfdfaResult p =
        mfdfa(patchy, windowSettings(patchy.size(), 2, FluctuationMeasure::Range));
    EXPECT_TRUE(finite(p.log10Z) && finite(p.h) && finite(p.alpha) && finite(p.f));
}

class MfdfaBinding : public ::testing::Test {
  protected:
    using Routine = void (*)(const double*, std::int32_t*, std::int32_t*, std::int32_t*,
                             std::int32_t*, std::int32_t*, std::int32_t*, double*, double*, double*,
                             double*, std::int32_t*, std::int32_t*, double*);
    void SetUp() override {
        ASSERT_NE(handle, nullptr) << dlerror();
        run = reinterpret_cast<Routine>(dlsym(handle, "MF_DFA_dll"));
        ASSERT_NE(run, nullptr);
    }
    void TearDown() override {
        if (handle) dlclose(handle);
    }

    struct Call {
        std::int32_t qCount = 200, scaleCount = 0;
        std::vector<double> alfa = std::vector<double>(200), fAlfa = std::vector<double>(200);
        std::vector<double> table;
    };
    // As the window calls it: 200 alphas and q values from -10 to 10.
    Call call(std::vector<double> x, std::int32_t order, std::int32_t measure,
              std::int32_t minScale, std::int32_t maxScale) {
        Call c;
        c.scaleCount = std::min(maxScale - minScale, 200);
        c.table.assign(static_cast<std::size_t>(c.qCount * c.scaleCount), -1.0);
        auto n = static_cast<std::int32_t>(x.size());
        std::int32_t alfaCount = 200;
        double qMin = -10.0, qMax = 10.0;
        run(x.data(), &n, &order, &measure, &minScale, &maxScale, &alfaCount, c.alfa.data(),
            c.fAlfa.data(), &qMin, &qMax, &c.qCount, &c.scaleCount, c.table.data());
        return c;
    }

    void* handle = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
    Routine run = nullptr;
};

TEST_F(MfdfaBinding, WindowCallMatchesTheAnalysis) {
    const std::vector<double> x = randomWalk(2000, 77);
    const Call c = call(x, 4, 0, 20, 400);
    MfdfaSettings s;
    s.order = 4;
    s.measure = FluctuationMeasure::Range;
    s.minScale = 20;
    s.maxScale = 400;
    s.scaleCount = 200;
    const MfdfaResult r = mfdfa(x, s);
    EXPECT_EQ(c.qCount, 200);
    ASSERT_EQ(c.scaleCount, static_cast<std::int32_t>(r.scales.size()));
    EXPECT_LT(c.scaleCount, 200); // 200 log steps over 20 .. 400 repeat some scales
    EXPECT_TRUE(allNear(std::vector<double>(c.table.begin(), c.table.begin() + 200 * c.scaleCount),
                        r.log10Z, 0.0));
    EXPECT_EQ(c.table[static_cast<std::size_t>(200 * c.scaleCount)], -1.0); // nothing beyond
    EXPECT_TRUE(allNear(c.alfa, r.alpha, 0.0));
    EXPECT_TRUE(allNear(c.fAlfa, r.f, 0.0));
    EXPECT_EQ(c.fAlfa.front(), 0.0);
    EXPECT_GT(*std::max_element(c.fAlfa.begin(), c.fAlfa.end()), 0.8);
}

TEST_F(MfdfaBinding, ParametersAreClampedAndBadSamplesCountAsZero) {
    std::vector<double> x = randomWalk(600, 3);
    MfdfaSettings s;
    s.order = 10;
    s.measure = FluctuationMeasure::StandardDeviation;
    s.minScale = 20;
    s.maxScale = 120;
    s.scaleCount = 100;
    const Call c = call(x, 12, 7, 20, 120);
    EXPECT_TRUE(allNear(c.alfa, mfdfa(x, s).alpha, 0.0));

    x[100] = std::numeric_limits<double>::quiet_NaN();
    const Call withNan = call(x, 10, 1, 20, 120);
    x[100] = 0.0;
    EXPECT_TRUE(allNear(withNan.fAlfa, mfdfa(x, s).f, 0.0));
}

TEST_F(MfdfaBinding, ConstantSeriesGivesZeroSpectrumOnTheUnitGrid) {
    const Call c = call(std::vector<double>(400, 5.0), 4, 0, 20, 80);
    EXPECT_EQ(c.scaleCount, static_cast<std::int32_t>(mfdfaScales(400, 20, 80, 60).size()));
    for (double v : c.fAlfa)
        EXPECT_EQ(v, 0.0);
    EXPECT_EQ(c.alfa.front(), 0.0);
    EXPECT_EQ(c.alfa.back(), 1.0);
    for (std::size_t k = 0; k < static_cast<std::size_t>(200 * c.scaleCount); ++k)
        ASSERT_EQ(c.table[k], 0.0);
}

} // namespace
} // namespace tarnic
