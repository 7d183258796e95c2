// WTMM skeleton: the Gaussian derivatives, the scale grid and dead intervals,
// the chains of known signals, the chain file, and WTMM_FP_dll as the program
// loads it.
#include "numeric/tarnic_api.h"
#include "numeric/wtmm.h"
#include "numeric_support.h"
#include "test_support.h"

namespace tarnic {
namespace {

using namespace test;

std::vector<double> step(std::size_t n, double at, double height) {
    return sampled(n, [=](double t) { return t >= at ? height : 0.0; });
}

// The classes are numbered 1 .. 6 as in the chain file.
const std::vector<WtmmChain>& chainsOf(const WtmmSkeleton& s, int chainClass) {
    return s.chains[static_cast<std::size_t>(chainClass - 1)];
}

using Counts = std::array<std::size_t, 6>;

Counts chainCounts(const WtmmSkeleton& s) {
    Counts n{};
    for (std::size_t c = 0; c < n.size(); ++c)
        n[c] = s.chains[c].size();
    return n;
}

std::size_t totalChains(const WtmmSkeleton& s) {
    const Counts n = chainCounts(s);
    return std::accumulate(n.begin(), n.end(), std::size_t{0});
}

// sigma = a / sqrt(2): sigma max |c1| = 1/sqrt(2 pi) for a unit step at every
// scale (log |W| against log a has slope 0). A polynomial p0 + p1 t + p2 t^2
// smoothed by a Gaussian of variance a^2/2 gives its Taylor coefficients: c0 = x
// + p2 a^2/2, c1 = p1 + 2 p2 t, c2 = p2. The padding reflects through the end
// points, so a straight line goes on straight to the ends; a parabola is bent by
// the padding near them.
TEST(GaussianDerivatives, StepSlopeIsScaleFreeAndPolynomialsGiveTheirTaylorCoefficients) {
    const std::vector<double> x = step(1000, 500, 1.0);
    for (double a : {20.0, 50.0, 100.0}) {
        const auto c = gaussianDerivatives(x, a);
        EXPECT_TRUE(isNear(a / std::numbers::sqrt2 * largestMagnitude(c[1]),
                           1 / std::sqrt(2 * std::numbers::pi), 0.0, 1e-3))
            << "a " << a;
    }
    const double polynomials[][5] = {{3, 2, 0.5, 4, 30}, {3, 0.7, 0, 4, 0}, {3, 0.7, 0, 16, 0}};
    for (const auto& [p0, p1, p2, a, margin] : polynomials) {
        SCOPED_TRACE(testing::Message() << "p2 " << p2 << ", a " << a);
        const auto q = sampled(512, [&](double t) { return p0 + p1 * t + p2 * t * t; });
        const auto c = gaussianDerivatives(q, a);
        for (auto t = static_cast<std::size_t>(margin); t < q.size() - margin; ++t) {
            ASSERT_NEAR(c[0][t], q[t] + p2 * a * a / 2, 1e-7) << t;
            ASSERT_NEAR(c[1][t], p1 + 2 * p2 * static_cast<double>(t), 1e-8) << t;
            ASSERT_NEAR(c[2][t], p2, 1e-9) << t;
        }
    }
}

// From 2 samples to a sixth of the fragment, at most a sixteenth octave apart;
// the dead intervals are three scales at each end (T = 1000: at a = 10 the
// admitted times are 30 .. 970, ends included; at a_max = T / 6 only the middle).
TEST(WtmmScales, GridAndDeadIntervals) {
    const std::vector<double> a = wtmmScales(8000);
    // 152 = ceil(16 log2(7999/12)) + 1 scales from 2 on.
    ASSERT_EQ(std::pair(a.size(), a.front()), std::pair(std::size_t{152}, 2.0));
    EXPECT_TRUE(isNear(a.back(), 7999.0 / 6.0, 0.0, 1e-15));
    EXPECT_LE(a[1] / a[0], std::exp2(1.0 / 16.0));
    for (std::size_t k = 1; k < a.size(); ++k)
        ASSERT_TRUE(isNear(a[k] / a[k - 1], a[1] / a[0], 0.0, 1e-12));
    EXPECT_TRUE(wtmmScales(12).empty());
    EXPECT_EQ(wtmmScales(13), std::vector<double>{2.0});
    const std::tuple<std::size_t, double, bool> admitted[] = {
        {29, 10.0, false},       {30, 10.0, true},        {970, 10.0, true},
        {971, 10.0, false},      {500, 1000.0 / 6, true}, {499, 1000.0 / 6, false},
        {501, 1000.0 / 6, false}};
    for (const auto& [t, scale, inside] : admitted)
        EXPECT_EQ(wtmmAdmitted(t, scale, 1001), inside) << t << " at " << scale;
}

// The step lies between samples 399 and 400; one trend chain stands on 399 from
// the finest scale to the last one whose dead intervals leave 399 admitted. A
// smoothed step has no extremum; it is convex downward just before the step,
// upward just after. A falling step gives the same chain in the other class.
TEST(WtmmSkeleton, SharpStepGivesOneTrendChainConvergingOnIt) {
    const WtmmSkeleton rising = wtmmSkeleton(step(1000, 400, 1.0), 0, 0.0);
    ASSERT_EQ(chainCounts(rising), (Counts{0, 0, 0, 1, 1, 1}));
    const WtmmChain& chain = chainsOf(rising, 4)[0];
    for (std::size_t k = 0; k < chain.size(); ++k)
        ASSERT_EQ(chain[k], (WtmmPoint{399, static_cast<std::int32_t>(k)}));
    const auto top = static_cast<std::size_t>(chain.back().level);
    EXPECT_TRUE(wtmmAdmitted(399, rising.scales[top], 1000));
    EXPECT_FALSE(wtmmAdmitted(399, rising.scales[top + 1], 1000));
    EXPECT_LT(chainsOf(rising, 6)[0].front().sample, 399);
    EXPECT_GT(chainsOf(rising, 5)[0].front().sample, 399);
    const WtmmSkeleton falling = wtmmSkeleton(step(1000, 400, -2.0), 0, 0.0);
    EXPECT_EQ(chainsOf(falling, 3), chainsOf(rising, 4));
    EXPECT_TRUE(chainsOf(falling, 4).empty());
    // Two distant steps, up at 300 and down at 800: a chain of each trend class.
    const auto twice = sampled(1200, [](double t) { return t >= 300 && t < 800 ? 1.0 : 0.0; });
    const WtmmSkeleton both = wtmmSkeleton(twice, 0, 0.0);
    ASSERT_EQ(std::pair(chainsOf(both, 4).size(), chainsOf(both, 3).size()),
              (std::pair<std::size_t, std::size_t>{1, 1}));
    EXPECT_EQ(chainsOf(both, 4)[0].front(), (WtmmPoint{299, 0}));
    EXPECT_EQ(chainsOf(both, 3)[0].front(), (WtmmPoint{799, 0}));
}

// A narrow bump (width 10) on a gentle slope: a maximum and a minimum of c0 at
// small scales, which meet and vanish once the bump is smoothed below the slope;
// the arch top marks the place, between the two chains' ends.
TEST(WtmmSkeleton, ArchTopMarksWhereABumpOnASlopeIsSmoothedAway) {
    const std::vector<double> x =
        sampled(2000, [](double t) { return std::exp(-std::pow(t / 10 - 100, 2)) + 0.002 * t; });
    const WtmmSkeleton s = wtmmSkeleton(x, 0, 0.0);
    ASSERT_EQ(std::tuple(chainsOf(s, 1).size(), chainsOf(s, 2).size(), s.archTops.size()),
              (std::tuple<std::size_t, std::size_t, std::size_t>{1, 1, 1}));
    const WtmmPoint minTop = chainsOf(s, 1)[0].back(), maxTop = chainsOf(s, 2)[0].back();
    const WtmmPoint arch = s.archTops[0];
    EXPECT_EQ(arch.sample, (minTop.sample + maxTop.sample) / 2);
    EXPECT_EQ(arch.level, std::max(minTop.level, maxTop.level));
    EXPECT_LE(std::abs(minTop.level - maxTop.level), 1);
    EXPECT_TRUE(arch.sample > 1000 && arch.sample < 1100) << arch.sample;
    const double a = s.scales[static_cast<std::size_t>(arch.level)];
    EXPECT_TRUE(a > 20.0 && a < 200.0) << a;
}

// On a random walk: every point admitted, chains step one scale at a time and
// move at most max(2, a/2) samples a step; a higher gamma keeps fewer chains, all
// reaching gamma times the largest scale.
TEST(WtmmSkeleton, ChainsOfARandomWalkKeepTheirInvariantsAtEveryGamma) {
    const std::vector<double> x = randomWalk(3000, 99);
    std::vector<std::size_t> counts;
    for (double gamma : {0.0, 0.25, 0.5, 1.0}) {
        const WtmmSkeleton s = wtmmSkeleton(x, 0, gamma);
        counts.push_back(totalChains(s));
        for (const auto& chains : s.chains)
            for (const WtmmChain& chain : chains) {
                ASSERT_GE(s.scales[chain.back().level], gamma * s.scales.back() * (1 - 1e-12));
                for (std::size_t k = 0; k < chain.size(); ++k) {
                    const double a = s.scales[static_cast<std::size_t>(chain[k].level)];
                    ASSERT_TRUE(wtmmAdmitted(chain[k].sample, a, x.size()));
                    if (k == 0) continue;
                    ASSERT_EQ(chain[k].level, chain[k - 1].level + 1);
                    ASSERT_LE(std::abs(chain[k].sample - chain[k - 1].sample),
                              std::max(2.0, a / 2));
                }
            }
        for (const WtmmPoint& p : s.archTops)
            EXPECT_TRUE(wtmmAdmitted(p.sample, s.scales[p.level], x.size()));
    }
    EXPECT_GT(counts[0], 20u);
    EXPECT_GT(counts[0], counts[1]); // gamma 0 keeps short chains of the noise
    EXPECT_TRUE(std::is_sorted(counts.rbegin(), counts.rend()));
}

// A cubic under a trend of order 3 leaves nothing (order 1 leaves its
// curvature), nor does a constant; a fragment too short for any scale has no
// chain but its detrended values all the same.
TEST(WtmmSkeleton, TrendOfTheGivenOrderLeavesNothing) {
    // 50 + 3u - 8u^2 + 5u^3 with u = t / 800.
    const std::vector<double> cubic =
        sampled(800, [](double t) { return 50.0 + t / 800 * (3.0 - t / 100 + t * t / 128000); });
    const WtmmSkeleton s = wtmmSkeleton(cubic, 3, 0.0);
    EXPECT_EQ(totalChains(s) + s.archTops.size(), 0u);
    EXPECT_TRUE(allNear(s.detrended, std::vector<double>(800, 0.0), 1e-11));
    EXPECT_GT(totalChains(wtmmSkeleton(cubic, 1, 0.0)), 0u);
    EXPECT_EQ(totalChains(wtmmSkeleton(std::vector<double>(500, -3.25), 0, 0.0)), 0u);
    const WtmmSkeleton tiny =
        wtmmSkeleton(std::vector<double>{1, 5, 2, 8, 3, 9, 4, 7, 1, 6, 2, 0}, 0, 0);
    EXPECT_EQ(tiny.scales.size() + totalChains(tiny), 0u);
    ASSERT_EQ(tiny.detrended.size(), 12u);
    EXPECT_NEAR(tiny.detrended[0], 1.0 - 4.0, 1e-14); // less the mean, 4
}

// One record a line, "sample lg(a)" with 1-based samples, chains of a class one
// after the other with a separator between chains, arch tops last; counts per
// class and of the arch tops.
TEST(WtmmChainRecords, GoldenLayoutWithSeparatorsBetweenChains) {
    WtmmSkeleton s;
    s.scales = {2.0, 4.0, 8.0};
    s.chains[0] = {{{9, 0}, {10, 1}}, {{20, 0}}};
    s.chains[3] = {{{5, 0}, {5, 1}, {6, 2}}};
    s.archTops = {{14, 2}};
    std::array<std::int32_t, 7> counts{};
    EXPECT_EQ(wtmmChainRecords(s, counts), "10 0.301030\r\n11 0.602060\r\n0 -9999\r\n"
                                           "21 0.301030\r\n6 0.301030\r\n6 0.602060\r\n"
                                           "7 0.903090\r\n15 0.903090\r\n");
    EXPECT_EQ(counts, (std::array<std::int32_t, 7>{4, 0, 0, 3, 0, 0, 1}));
    EXPECT_EQ(wtmmChainRecords(WtmmSkeleton{}, counts), "");
    EXPECT_EQ(counts, (std::array<std::int32_t, 7>{}));
}

// The routine writes its chain file into the current directory: the skeleton's
// records, the counts and the detrended fragment; order above 10 counts as 10,
// a gamma that is not a number as 0. A constant fragment gives an empty file; a
// file that cannot be made (a directory in its place) gives no records.
TEST(WtmmBinding, WritesTheChainFileInTheCurrentDirectoryAndClampsItsParameters) {
    const auto run = dllRoutine<decltype(&WTMM_FP_dll)>("WTMM_FP_dll");
    ASSERT_NE(run, nullptr);
    const std::filesystem::path file = "n12c43k67r13t72c76h18i04",
                                previous = std::filesystem::current_path();
    const TempDir dir, blocked;
    std::filesystem::create_directory(blocked / file);
    const std::vector<double> x = randomWalk(2000, 17);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // Series, order and gamma passed, order and gamma used, the directory.
    // clang-format off
    const std::tuple<std::vector<double>, std::int32_t, double, int, double, const TempDir*>
        cases[] = {{x, 2, 0.25, 2, 0.25, &dir}, {x, 15, nan, 10, 0.0, &dir},
        {step(600, 250, 1.0), 0, 0.25, 0, 0.25, &dir},
        {std::vector<double>(900, 2.5), 0, 0.25, 0, 0.25, &dir}, {x, 0, 0.25, 0, 0.25, &blocked}};
    // clang-format on
    for (auto [series, order, gamma, usedOrder, usedGamma, where] : cases) {
        SCOPED_TRACE(testing::Message() << order << (where == &blocked ? " blocked" : ""));
        const WtmmSkeleton s = wtmmSkeleton(series, usedOrder, usedGamma);
        std::array<std::int32_t, 7> counts{}, written{-1, -1, -1, -1, -1, -1, -1};
        const std::string records = wtmmChainRecords(s, counts);
        if (where == &blocked) counts = {};
        std::vector<double> detrended(series.size(), -7.0);
        auto n = static_cast<std::int32_t>(series.size());
        std::filesystem::current_path(where->path());
        run(series.data(), &n, &order, &gamma, written.data(), detrended.data());
        std::filesystem::current_path(previous);
        EXPECT_EQ(std::pair(written, detrended), std::pair(counts, s.detrended));
        EXPECT_EQ(readBytes(*where / file), where == &dir ? records : "");
    }
}

} // namespace
} // namespace tarnic
