// WTMM skeleton: the Gaussian derivatives, the scale grid and dead intervals,
// the chains of known signals, the chain file, and WTMM_FP_dll as the program
// loads it.
#include "numeric/tarnic_api.h"
#include "numeric/wtmm.h"
#include "spectral_support.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <sstream>
#include <vector>

namespace tarnic {
namespace {

using test::isNear;

std::vector<double> step(std::size_t n, std::size_t at, double height) {
    std::vector<double> x(n, 0.0);
    std::fill(x.begin() + static_cast<std::ptrdiff_t>(at), x.end(), height);
    return x;
}

std::vector<double> bump(std::size_t n, double centre, double width, double slope = 0.0) {
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) {
        const double u = (static_cast<double>(t) - centre) / width;
        x[t] = std::exp(-u * u) + slope * static_cast<double>(t);
    }
    return x;
}

std::vector<double> randomWalk(std::size_t n, unsigned seed) {
    std::vector<double> x = test::whiteNoise(n, 1.0, seed);
    for (std::size_t t = 1; t < n; ++t)
        x[t] += x[t - 1];
    return x;
}

// The classes are numbered 1 .. 6 as in the chain file.
const std::vector<WtmmChain>& chainsOf(const WtmmSkeleton& s, int chainClass) {
    return s.chains[static_cast<std::size_t>(chainClass - 1)];
}

std::size_t totalChains(const WtmmSkeleton& s) {
    std::size_t n = 0;
    for (const auto& c : s.chains)
        n += c.size();
    return n;
}

TEST(GaussianDerivatives, StepSlopeTimesSigmaIsTheSameAtEveryScale) {
    // sigma = a / sqrt(2): sigma max |c1| = 1/sqrt(2 pi) for a unit step, so
    // log |W| against log a has slope 0.
    const std::vector<double> x = step(1000, 500, 1.0);
    for (double a : {20.0, 50.0, 100.0}) {
        const auto c = gaussianDerivatives(x, a);
        double largest = 0.0;
        for (double v : c[1])
            largest = std::max(largest, std::abs(v));
        EXPECT_TRUE(isNear(a / std::numbers::sqrt2 * largest,
                           1.0 / std::sqrt(2.0 * std::numbers::pi), 0.0, 1e-3))
            << "a " << a;
    }
}

TEST(GaussianDerivatives, QuadraticGivesItsTaylorCoefficients) {
    // x = 3 + 2t + t^2/2 smoothed by a Gaussian of variance a^2/2:
    // c0 = x + a^2/4, c1 = dc0/dt = 2 + t, c2 = (1/2) d2c0/dt2 = 1/2.
    const std::size_t n = 512;
    const double a = 4.0;
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = 3.0 + 2.0 * t + 0.5 * static_cast<double>(t * t);
    const auto c = gaussianDerivatives(x, a);
    // Away from the ends, where the reflection bends the parabola the other way.
    for (std::size_t t = 30; t < n - 30; ++t) {
        ASSERT_TRUE(isNear(c[0][t], x[t] + a * a / 4.0, 1e-7)) << t;
        ASSERT_TRUE(isNear(c[1][t], 2.0 + static_cast<double>(t), 1e-8)) << t;
        ASSERT_TRUE(isNear(c[2][t], 0.5, 1e-9)) << t;
    }
}

TEST(WtmmScales, FromTwoSamplesToASixthOfTheFragmentAtMostASixteenthOctaveApart) {
    const std::vector<double> a = wtmmScales(8000);
    ASSERT_EQ(a.size(), 152u); // ceil(16 log2(7999/12)) + 1
    EXPECT_EQ(a.front(), 2.0);
    EXPECT_TRUE(isNear(a.back(), 7999.0 / 6.0, 0.0, 1e-15));
    const double ratio = a[1] / a[0];
    EXPECT_LE(ratio, std::exp2(1.0 / 16.0));
    for (std::size_t k = 1; k < a.size(); ++k)
        ASSERT_TRUE(isNear(a[k] / a[k - 1], ratio, 0.0, 1e-12));
    EXPECT_TRUE(wtmmScales(12).empty());
    EXPECT_EQ(wtmmScales(13), std::vector<double>{2.0});
}

TEST(WtmmScales, DeadIntervalsAreThreeScalesAtEachEnd) {
    // T = 1000: at a = 10 the admitted times are 30 .. 970, ends included.
    EXPECT_FALSE(wtmmAdmitted(29, 10.0, 1001));
    EXPECT_TRUE(wtmmAdmitted(30, 10.0, 1001));
    EXPECT_TRUE(wtmmAdmitted(970, 10.0, 1001));
    EXPECT_FALSE(wtmmAdmitted(971, 10.0, 1001));
    // At a_max = T / 6 only the middle.
    EXPECT_TRUE(wtmmAdmitted(500, 1000.0 / 6.0, 1001));
    EXPECT_FALSE(wtmmAdmitted(499, 1000.0 / 6.0, 1001));
    EXPECT_FALSE(wtmmAdmitted(501, 1000.0 / 6.0, 1001));
}

TEST(WtmmSkeleton, SharpStepGivesOneTrendChainConvergingOnIt) {
    // The step lies between samples 399 and 400; the chain stands on 399 from
    // the finest scale to the last one whose dead intervals leave 399 admitted.
    const WtmmSkeleton rising = wtmmSkeleton(step(1000, 400, 1.0), 0, 0.0);
    ASSERT_EQ(chainsOf(rising, 4).size(), 1u);
    const WtmmChain& chain = chainsOf(rising, 4)[0];
    for (std::size_t k = 0; k < chain.size(); ++k)
        ASSERT_EQ(chain[k], (WtmmPoint{399, static_cast<std::int32_t>(k)}));
    const auto top = static_cast<std::size_t>(chain.back().level);
    EXPECT_TRUE(wtmmAdmitted(399, rising.scales[top], 1000));
    EXPECT_FALSE(wtmmAdmitted(399, rising.scales[top + 1], 1000));
    EXPECT_TRUE(chainsOf(rising, 3).empty());
    EXPECT_TRUE(chainsOf(rising, 1).empty()); // a smoothed step has no extremum
    EXPECT_TRUE(chainsOf(rising, 2).empty());
    // Convex downward just before the step, upward just after.
    ASSERT_EQ(chainsOf(rising, 6).size(), 1u);
    ASSERT_EQ(chainsOf(rising, 5).size(), 1u);
    EXPECT_LT(chainsOf(rising, 6)[0].front().sample, 399);
    EXPECT_GT(chainsOf(rising, 5)[0].front().sample, 399);

    const WtmmSkeleton falling = wtmmSkeleton(step(1000, 400, -2.0), 0, 0.0);
    EXPECT_EQ(chainsOf(falling, 3), chainsOf(rising, 4));
    EXPECT_TRUE(chainsOf(falling, 4).empty());
}

TEST(WtmmSkeleton, TwoDistantStepsGiveTwoChains) {
    std::vector<double> x = step(1200, 300, 1.0);
    std::fill(x.begin() + 800, x.end(), 0.0);
    const WtmmSkeleton s = wtmmSkeleton(x, 0, 0.0);
    ASSERT_EQ(chainsOf(s, 4).size(), 1u);
    ASSERT_EQ(chainsOf(s, 3).size(), 1u);
    EXPECT_EQ(chainsOf(s, 4)[0].front(), (WtmmPoint{299, 0}));
    EXPECT_EQ(chainsOf(s, 3)[0].front(), (WtmmPoint{799, 0}));
}

TEST(WtmmSkeleton, SmoothBumpKeepsItsMaximumChainOnItsCentre) {
    const std::vector<double> x = bump(2000, 1000.0, 30.0);
    const WtmmSkeleton s = wtmmSkeleton(x, 0, 0.0);
    ASSERT_EQ(chainsOf(s, 2).size(), 1u);
    const WtmmChain& centre = chainsOf(s, 2)[0];
    EXPECT_EQ(centre.front().level, 0);
    EXPECT_GE(s.scales[static_cast<std::size_t>(centre.back().level)], 0.9 * s.scales.back());
    for (const WtmmPoint& p : centre)
        ASSERT_EQ(p.sample, 1000);
    EXPECT_TRUE(chainsOf(s, 1).empty());
    // Its top is convex upward; the flanks rise on the left and fall on the
    // right, starting at the inflection points 1000 -/+ 30/sqrt(2) = 979, 1021.
    ASSERT_EQ(chainsOf(s, 5).size(), 1u);
    EXPECT_EQ(chainsOf(s, 5)[0].front().sample, 1000);
    ASSERT_EQ(chainsOf(s, 4).size(), 1u);
    ASSERT_EQ(chainsOf(s, 3).size(), 1u);
    EXPECT_EQ(chainsOf(s, 4)[0].front().sample, 979);
    EXPECT_EQ(chainsOf(s, 3)[0].front().sample, 1021);
    EXPECT_TRUE(s.archTops.empty());
    // The flank chains leave the cupola lower than the centre's: gamma 0.9 keeps
    // the centre's chains alone.
    const WtmmSkeleton high = wtmmSkeleton(x, 0, 0.9);
    EXPECT_EQ(chainsOf(high, 2), chainsOf(s, 2));
    EXPECT_EQ(chainsOf(high, 5), chainsOf(s, 5));
    EXPECT_TRUE(chainsOf(high, 3).empty() && chainsOf(high, 4).empty() &&
                chainsOf(high, 6).empty());
}

TEST(WtmmSkeleton, ArchTopMarksWhereABumpOnASlopeIsSmoothedAway) {
    // A narrow bump (width 10) on a gentle slope: a maximum and a minimum of c0
    // at small scales, which meet and vanish once the bump is smoothed below the
    // slope.
    const WtmmSkeleton s = wtmmSkeleton(bump(2000, 1000.0, 10.0, 0.002), 0, 0.0);
    ASSERT_EQ(chainsOf(s, 1).size(), 1u);
    ASSERT_EQ(chainsOf(s, 2).size(), 1u);
    ASSERT_EQ(s.archTops.size(), 1u);
    const WtmmPoint minTop = chainsOf(s, 1)[0].back(), maxTop = chainsOf(s, 2)[0].back();
    const WtmmPoint arch = s.archTops[0];
    EXPECT_EQ(arch.sample, (minTop.sample + maxTop.sample) / 2);
    EXPECT_EQ(arch.level, std::max(minTop.level, maxTop.level));
    EXPECT_LE(std::abs(minTop.level - maxTop.level), 1);
    EXPECT_GT(arch.sample, 1000);
    EXPECT_LT(arch.sample, 1100);
    const double a = s.scales[static_cast<std::size_t>(arch.level)];
    EXPECT_GT(a, 20.0);
    EXPECT_LT(a, 200.0);
}

TEST(WtmmSkeleton, EveryPointIsAdmittedAndChainsStepOneScaleAtATime) {
    const std::vector<double> x = randomWalk(3000, 4242);
    const WtmmSkeleton s = wtmmSkeleton(x, 1, 0.0);
    ASSERT_GT(totalChains(s), 20u);
    for (const auto& chains : s.chains)
        for (const WtmmChain& chain : chains)
            for (std::size_t k = 0; k < chain.size(); ++k) {
                const double a = s.scales[static_cast<std::size_t>(chain[k].level)];
                ASSERT_TRUE(wtmmAdmitted(static_cast<std::size_t>(chain[k].sample), a, x.size()));
                if (k == 0) continue;
                ASSERT_EQ(chain[k].level, chain[k - 1].level + 1);
                ASSERT_LE(std::abs(chain[k].sample - chain[k - 1].sample), std::max(2.0, a / 2));
            }
    for (const WtmmPoint& p : s.archTops)
        EXPECT_TRUE(wtmmAdmitted(static_cast<std::size_t>(p.sample),
                                 s.scales[static_cast<std::size_t>(p.level)], x.size()));
}

TEST(WtmmSkeleton, GammaKeepsTheChainsThatReachItsLevel) {
    const std::vector<double> x = randomWalk(3000, 99);
    std::size_t previous = std::numeric_limits<std::size_t>::max();
    for (double gamma : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        const WtmmSkeleton s = wtmmSkeleton(x, 0, gamma);
        const std::size_t count = totalChains(s);
        EXPECT_LE(count, previous) << "gamma " << gamma;
        previous = count;
        for (const auto& chains : s.chains)
            for (const WtmmChain& chain : chains)
                ASSERT_GE(s.scales[static_cast<std::size_t>(chain.back().level)],
                          gamma * s.scales.back() * (1 - 1e-12));
    }
    // With gamma 0 the noise leaves short chains that 0.25 drops.
    EXPECT_GT(totalChains(wtmmSkeleton(x, 0, 0.0)), totalChains(wtmmSkeleton(x, 0, 0.25)));
}

TEST(WtmmSkeleton, TrendOfTheGivenOrderLeavesNothing) {
    std::vector<double> cubic(800);
    for (std::size_t t = 0; t < cubic.size(); ++t) {
        const double u = static_cast<double>(t) / 800.0;
        cubic[t] = 50.0 + 3.0 * u - 8.0 * u * u + 5.0 * u * u * u;
    }
    const WtmmSkeleton s = wtmmSkeleton(cubic, 3, 0.0);
    EXPECT_EQ(totalChains(s), 0u);
    EXPECT_TRUE(s.archTops.empty());
    for (double v : s.detrended)
        ASSERT_TRUE(isNear(v, 0.0, 1e-11));
    EXPECT_EQ(totalChains(wtmmSkeleton(std::vector<double>(500, -3.25), 0, 0.0)), 0u);
    // Order 1 leaves the curvature, order 3 took it.
    EXPECT_GT(totalChains(wtmmSkeleton(cubic, 1, 0.0)), 0u);
    // Too short for any scale: no chain, the detrended fragment all the same.
    const WtmmSkeleton tiny =
        wtmmSkeleton(std::vector<double>{1, 5, 2, 8, 3, 9, 4, 7, 1, 6, 2, 0}, 0, 0);
    EXPECT_TRUE(tiny.scales.empty());
    EXPECT_EQ(totalChains(tiny), 0u);
    ASSERT_EQ(tiny.detrended.size(), 12u);
    EXPECT_TRUE(isNear(tiny.detrended[0], 1.0 - 4.0, 1e-14));
}

TEST(WtmmChainRecords, GoldenLayoutWithSeparatorsBetweenChains) {
    WtmmSkeleton s;
    s.scales = {2.0, 4.0, 8.0};
    s.chains[0] = {{{9, 0}, {10, 1}}, {{20, 0}}};
    s.chains[3] = {{{5, 0}, {5, 1}, {6, 2}}};
    s.archTops = {{14, 2}};
    std::array<std::int32_t, 7> counts{};
    EXPECT_EQ(wtmmChainRecords(s, counts), "10 0.301030\r\n"
                                           "11 0.602060\r\n"
                                           "0 -9999\r\n"
                                           "21 0.301030\r\n"
                                           "6 0.301030\r\n"
                                           "6 0.602060\r\n"
                                           "7 0.903090\r\n"
                                           "15 0.903090\r\n");
    EXPECT_EQ(counts, (std::array<std::int32_t, 7>{4, 0, 0, 3, 0, 0, 1}));
    EXPECT_EQ(wtmmChainRecords(WtmmSkeleton{}, counts), "");
    EXPECT_EQ(counts, (std::array<std::int32_t, 7>{}));
}

// The records of a chain file as the program reads them: an integer and a
// real number each.
std::vector<std::pair<std::int32_t, float>> readRecords(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::pair<std::int32_t, float>> records;
    std::int32_t t;
    float lg;
    while (in >> t >> lg)
        records.emplace_back(t, lg);
    return records;
}

class WtmmBinding : public ::testing::Test {
  protected:
    using Routine = void (*)(const double*, std::int32_t*, std::int32_t*, double*, std::int32_t*,
                             double*);
    void SetUp() override {
        ASSERT_NE(handle, nullptr) << dlerror();
        run = reinterpret_cast<Routine>(dlsym(handle, "WTMM_FP_dll"));
        ASSERT_NE(run, nullptr);
    }
    void TearDown() override {
        if (handle) dlclose(handle);
    }

    struct Call {
        std::array<std::int32_t, 7> counts{-1, -1, -1, -1, -1, -1, -1};
        std::vector<double> detrended;
    };
    // Runs the routine with `dir` as the current directory, where it writes its
    // chain file.
    Call call(std::vector<double> x, std::int32_t order, double gamma,
              const std::filesystem::path& dir) {
        Call c;
        c.detrended.assign(x.size(), -7.0);
        auto n = static_cast<std::int32_t>(x.size());
        const auto previous = std::filesystem::current_path();
        std::filesystem::current_path(dir);
        run(x.data(), &n, &order, &gamma, c.counts.data(), c.detrended.data());
        std::filesystem::current_path(previous);
        return c;
    }

    void* handle = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
    Routine run = nullptr;
};

TEST_F(WtmmBinding, WritesTheChainFileInTheCurrentDirectory) {
    const test::TempDir dir;
    const std::vector<double> x = randomWalk(2000, 17);
    const Call c = call(x, 2, 0.25, dir.path());

    const WtmmSkeleton s = wtmmSkeleton(x, 2, 0.25);
    std::array<std::int32_t, 7> counts{};
    const std::string expected = wtmmChainRecords(s, counts);
    EXPECT_EQ(c.counts, counts);
    EXPECT_EQ(c.detrended, s.detrended);
    const std::string written = test::readBytes(dir.path() / "n12c43k67r13t72c76h18i04");
    EXPECT_EQ(written, expected);

    // Read as the program reads it: exactly the counted records, each a sample
    // of the fragment or a separator.
    const auto records = readRecords(written);
    std::int32_t total = 0;
    for (std::int32_t k : c.counts)
        total += k;
    ASSERT_EQ(records.size(), static_cast<std::size_t>(total));
    ASSERT_GT(total, 0);
    for (const auto& [t, lg] : records) {
        if (t <= 0) {
            EXPECT_EQ(lg, -9999.0f);
        } else {
            EXPECT_LE(t, 2000);
            EXPECT_GE(lg, std::log10(2.0f) - 1e-6f);
            EXPECT_LE(lg, std::log10(1999.0f / 6.0f) + 1e-6f);
        }
    }
}

TEST_F(WtmmBinding, AStepGivesRisingChains) {
    const test::TempDir dir;
    const Call c = call(step(600, 250, 1.0), 0, 0.25, dir.path());
    std::array<std::int32_t, 7> counts{};
    const std::string expected =
        wtmmChainRecords(wtmmSkeleton(step(600, 250, 1.0), 0, 0.25), counts);
    EXPECT_EQ(c.counts, counts);
    EXPECT_GT(counts[3], 0);
    EXPECT_EQ(test::readBytes(dir.path() / "n12c43k67r13t72c76h18i04"), expected);
}

TEST_F(WtmmBinding, ClampsParametersAndReportsNothingToDraw) {
    const test::TempDir dir;
    const std::vector<double> x = randomWalk(1500, 23);
    // Order 15 is 10; a gamma that is not a number keeps every chain.
    const Call clamped = call(x, 15, std::numeric_limits<double>::quiet_NaN(), dir.path());
    std::array<std::int32_t, 7> counts{};
    wtmmChainRecords(wtmmSkeleton(x, 10, 0.0), counts);
    EXPECT_EQ(clamped.counts, counts);

    // A constant fragment: an empty file and no records.
    const Call flat = call(std::vector<double>(900, 2.5), 0, 0.25, dir.path());
    EXPECT_EQ(flat.counts, (std::array<std::int32_t, 7>{}));
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "n12c43k67r13t72c76h18i04"));
    EXPECT_EQ(test::readBytes(dir.path() / "n12c43k67r13t72c76h18i04"), "");

    // A file that cannot be made (a directory stands in its place): no records
    // either, and no exception.
    const test::TempDir blocked;
    std::filesystem::create_directory(blocked.path() / "n12c43k67r13t72c76h18i04");
    const Call lost = call(x, 0, 0.25, blocked.path());
    EXPECT_EQ(lost.counts, (std::array<std::int32_t, 7>{}));
    EXPECT_EQ(lost.detrended.size(), x.size());
}

} // namespace
} // namespace tarnic
