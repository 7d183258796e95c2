// The Welch estimate: window starts, Daniell smoothing, the density against a
// reference, Parseval, white noise and lines.
#include "numeric/welch.h"
#include "numeric_support.h"

namespace tarnic {
namespace {

using namespace test;

TEST(WelchWindows, CoverTheRecordWithAtLeastHalfOverlap) {
    using Starts = std::vector<std::size_t>;
    const std::tuple<std::size_t, std::size_t, Starts> cases[] = {
        {16, 8, {0, 4, 8}},   {11, 4, {0, 2, 4, 5, 7}}, // room 7 in 4 gaps
        {2049, 2048, {0, 1}}, {100, 100, {0}},          {50, 80, {0}}, {8, 0, {}}};
    for (const auto& [n, length, starts] : cases)
        EXPECT_EQ(welchWindowStarts(n, length), starts) << n << " " << length;
    for (std::size_t len : {32u, 33u, 999u, 2048u}) {
        const Starts s = welchWindowStarts(1000003, len);
        EXPECT_EQ(s.back() + len, 1000003u);
        for (std::size_t w = 1; w < s.size(); ++w)
            ASSERT_LE(s[w] - s[w - 1], len / 2);
        // The fewest such windows: one less could not keep the spacing.
        EXPECT_GT((1000003.0 - len) / static_cast<double>(s.size() - 2), len / 2);
    }
}

TEST(DaniellSmooth, HandVectorMirroredAtBothEnds) {
    // One-sided [3, 6, 12, 6, 3] of an 8-point transform is the two-sided circle
    // 3 3 6 3 3 3 6 3; its sum 30 is kept at every radius. Radius 3: the circle
    // less the opposite bin; radius 4: the circle plus itself.
    const std::vector<double> p{3, 6, 12, 6, 3};
    const std::pair<std::size_t, std::vector<double>> smoothed[] = {
        {0, p}, {1, {3, 8, 8, 8, 3}},
        {3, {27.0 / 7, 54.0 / 7, 48.0 / 7, 54.0 / 7, 27.0 / 7}},
        {4, {33.0 / 9, 66.0 / 9, 8, 66.0 / 9, 33.0 / 9}}};
    for (const auto& [radius, expected] : smoothed)
        EXPECT_TRUE(allNear(daniellSmooth(p, radius), expected, 1e-15)) << radius;
    // A line of 1e12 among values of 1e-6: the small ones lose nothing.
    const std::vector<double> q = sampled(513, [](double t) { return t == 200 ? 1e12 : 1e-6; });
    const std::vector<double> s = daniellSmooth(q, 7);
    EXPECT_TRUE(isNear(s[208], 1e-6, 0.0, 1e-13));
    EXPECT_TRUE(isNear(s[207], (1e12 + 14 * 1e-6) / 15, 0.0, 1e-13));
    EXPECT_TRUE(isNear(sum(daniellSmooth(q, 700)), sum(q), 0.0, 1e-13));
}

TEST(WelchDensity, MatchesScipyHannReference) {
    // 16 samples, x[0] = x[8] = 1, windows of 8 (half overlap), Hann, density.
    const auto x = sampled(16, [](double t) { return t == 0 || t == 8 ? 1.0 : 0.0; });
    const std::vector<double> expected{0.08333333, 0.15277778, 0.22222222, 0.22222222, 0.11111111};
    EXPECT_TRUE(allNear(welchDensity(x, 8, 8, 0), expected, 5e-9));
}

// lengF 33 on 64 points: one zero-padded window; the bins sum to the
// taper-weighted mean square of the mean-removed samples, with any smoothing.
TEST(WelchDensity, OneWindowKeepsParsevalAndSmoothingKeepsTheTotal) {
    const std::vector<double> x = ar2Noise(33, 0.75, -0.5);
    const double mean = sum(x) / 33.0;
    double power = 0.0, energy = 0.0;
    for (std::size_t j = 0; j < 33; ++j) {
        const double w = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * j / 33.0);
        power += w * w * (x[j] - mean) * (x[j] - mean);
        energy += w * w;
    }
    const std::vector<double> p = welchDensity(x, 33, 64, 0);
    ASSERT_EQ(p.size(), 33u);
    EXPECT_TRUE(isNear(sum(p) / 64.0, power / energy, 0.0, 1e-12));
    for (std::size_t radius : {1u, 4u, 40u})
        EXPECT_TRUE(isNear(sum(welchDensity(x, 33, 64, radius)), sum(p), 0.0, 1e-13)) << radius;
}

TEST(WelchDensity, WhiteNoiseLevelAndLinesInPlace) {
    // White noise of variance 2.5: one-sided density 5 at every inner bin.
    const std::vector<double> p = welchDensity(whiteNoise(1 << 16, std::sqrt(2.5)), 512, 512, 2);
    for (std::size_t k = 1; k < 256; ++k)
        ASSERT_TRUE(isNear(p[k], 5.0, 0.0, 0.2)) << k;
    EXPECT_TRUE(isNear(sum(std::span(p).subspan(1, 255)) / 255, 5.0, 0.0, 0.03));
    // The program's bins 0 .. M/2 - 1 hold the variance; a line sits at its bin,
    // also when the window is shorter than the transform.
    const std::vector<double> noise = ar2Noise(100000, 0.75, -0.5);
    for (double f : {100.0 / 1024.0, 0.1234, 0.41}) {
        const std::vector<double> tone = sinusoid(100000, f, 2.0, 0.3);
        for (const std::vector<double>* x : {&noise, &tone}) {
            const double mean = sum(*x) / 100000, variance = energy(*x) / 100000 - mean * mean;
            const std::vector<double> q = welchDensity(*x, 1024, 1024, 1);
            EXPECT_TRUE(isNear(sum(std::span(q).first(512)) / 1024.0, variance, 0.0, 0.03));
        }
        const std::vector<double> raw = welchDensity(tone, 1024, 1024, 0);
        const std::vector<double> padded = welchDensity(tone, 700, 1024, 0);
        EXPECT_EQ(std::max_element(raw.begin(), raw.end()) - raw.begin(), std::lround(f * 1024));
        const auto at = std::max_element(padded.begin(), padded.end()) - padded.begin();
        EXPECT_LE(std::abs(static_cast<double>(at) - f * 1024.0), 1.0) << f;
    }
}

TEST(BackgroundSpectrum, EveryValueIsPositive) {
    std::vector<float> out(512, -1.0f);
    backgroundSpectrum(std::vector<float>(5000, 7.5f), 1024, 1024, 1, out);
    EXPECT_TRUE(allFinitePositive(out));
    EXPECT_EQ(out[3], std::numeric_limits<float>::min());
    // A clean tone on a bin: the rest drops to 1e-12 of the total (0.5).
    backgroundSpectrum(toFloat(sinusoid(8192, 0.25)), 1024, 1024, 0, out);
    EXPECT_GE(*std::min_element(out.begin(), out.end()), 0.49e-12f);
}

} // namespace
} // namespace tarnic
