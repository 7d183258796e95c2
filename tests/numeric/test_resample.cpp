#include "numeric/resample.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using test::isNear;

constexpr double kPi = std::numbers::pi;

// Largest |y_k - f(t_k)| over outputs whose position t_k = k * step - 1 lies at
// least `margin` samples inside the record of n samples.
template <class F> double worstError(const Resampled& r, std::size_t n, double margin, F f) {
    double worst = 0.0;
    for (std::size_t k = 1; k <= r.values.size(); ++k) {
        const double t = static_cast<double>(k) * r.step - 1.0;
        if (t >= margin && t <= static_cast<double>(n - 1) - margin)
            worst = std::max(worst, std::abs(r.values[k - 1] - f(t)));
    }
    return worst;
}

std::vector<double> sampled(std::size_t n, auto f) {
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i)
        x[i] = f(static_cast<double>(i));
    return x;
}

TEST(FourierResample, LengthStepAndCapacity) {
    const auto ramp = [](double t) { return 2.0 - 0.01 * t; };
    const std::vector<double> x = sampled(1001, ramp);
    Resampled r = fourierResample(x, 2.5, 10000);
    EXPECT_EQ(r.values.size(), 400u);
    EXPECT_EQ(r.step, 1001.0 / 400.0);
    r = fourierResample(x, 2.0, 10000); // a whole step works the same way
    EXPECT_EQ(r.values.size(), 500u);
    EXPECT_EQ(r.step, 1001.0 / 500.0);
    // A smaller capacity stretches the step; positions stay at k * step - 1.
    r = fourierResample(x, 2.5, 100);
    ASSERT_EQ(r.values.size(), 100u);
    EXPECT_EQ(r.step, 10.01);
    EXPECT_LT(worstError(r, x.size(), 0.0, ramp), 1e-12);
    // A step rounded to float, 2.2f, still gives floor(22 / 2.2) = 10.
    EXPECT_EQ(fourierResample(std::vector<double>(22, 0.0), 2.2f, 100).values.size(), 10u);
    // Step 1 or below gives the record back; a step beyond it, nothing.
    const std::vector<double> noise = test::ar2Noise(257, 0.75, -0.5);
    EXPECT_TRUE(test::allNear(fourierResample(noise, 0.5, 1000).values, noise, 1e-12));
    EXPECT_TRUE(fourierResample(noise, 300.0, 1000).values.empty());
    EXPECT_TRUE(fourierResample(noise, 2.0, 0).values.empty());
}

TEST(FourierResample, EqualsTheKeptBinsSummedAtTheNewPositions) {
    // The definition by plain sums: the line through the ends removed, bins
    // 0 .. m/2 of the rest (the bin m/2 of an even m once, the others as +-
    // pairs) evaluated at t = k n/m - 1, the line added back.
    auto direct = [](const std::vector<double>& x, std::size_t m) {
        const std::size_t n = x.size();
        const double slope = n > 1 ? (x.back() - x.front()) / (n - 1) : 0.0;
        std::vector<double> rest(n), y(m);
        for (std::size_t t = 0; t < n; ++t)
            rest[t] = x[t] - x.front() - slope * t;
        for (std::size_t j = 0; j < m; ++j) {
            const double at = (j + 1) * (static_cast<double>(n) / m) - 1.0;
            double sum = 0.0;
            for (std::size_t k = 0; k <= m / 2; ++k) {
                double re = 0.0, im = 0.0;
                for (std::size_t t = 0; t < n; ++t) {
                    re += rest[t] * std::cos(2.0 * std::numbers::pi * k * t / n);
                    im -= rest[t] * std::sin(2.0 * std::numbers::pi * k * t / n);
                }
                const double w = 2.0 * std::numbers::pi * k * at / n;
                const bool single = k == 0 || (m % 2 == 0 && k == m / 2);
                sum += (single ? 1.0 : 2.0) * (re * std::cos(w) - im * std::sin(w));
            }
            y[j] = sum / n + x.front() + slope * at;
        }
        return y;
    };
    struct Case {
        std::size_t n;
        double step;
    };
    for (const Case& c : {Case{1, 1.0}, Case{2, 1.0}, Case{3, 1.5}, Case{13, 2.5}, Case{64, 1.0},
                          Case{97, 3.3}, Case{128, 2.0}, Case{521, 1.7}}) {
        const std::vector<double> x = test::ar2Noise(c.n, 0.75, -0.5);
        const Resampled r = fourierResample(x, c.step, c.n);
        EXPECT_TRUE(test::allNear(r.values, direct(x, r.values.size()), 1e-11)) << "n = " << c.n;
    }
}

TEST(FourierResample, StraightLineStaysStraight) {
    // The end line takes all of a ramp: no ringing anywhere, ends included.
    const auto ramp = [](double t) { return -40.0 + 0.37 * t; };
    const Resampled r = fourierResample(sampled(1001, ramp), 2.5, 1000);
    EXPECT_LT(worstError(r, 1001, 0.0, ramp), 1e-11);
    // By hand: positions 1.5, 4, 6.5, 9 of 3 + t/2.
    const std::vector<double> y = sampled(10, [](double t) { return 3.0 + 0.5 * t; });
    EXPECT_TRUE(test::allNear(fourierResample(y, 2.5, 4).values,
                              std::vector<double>{3.75, 5.0, 6.25, 7.5}, 1e-13));
}

TEST(FourierResample, SlowSinusoidKeepsAmplitudeAndFrequency) {
    // 0.02 cycles per sample on a trend, not a whole number of periods.
    const auto f = [](double t) { return 3.0 * std::cos(2.0 * kPi * 0.02 * t + 0.7) + 0.001 * t; };
    const std::vector<double> x = sampled(10001, f);
    for (double step : {2.5, 2.0, 3.7}) {
        const Resampled r = fourierResample(x, step, 10001);
        EXPECT_LT(worstError(r, x.size(), 200.0, f), 0.01 * 3.0) << step;
        EXPECT_LT(worstError(r, x.size(), 0.0, f), 0.05 * 3.0) << step;
    }
}

TEST(FourierResample, ContentAboveTheNewNyquistIsRemoved) {
    // Step 2.5: the new Nyquist frequency is 0.2 cycles per input sample.
    const auto low = [](double t) { return std::cos(2.0 * kPi * 0.02 * t); };
    for (double high : {0.23, 0.3, 0.45}) {
        const std::vector<double> x =
            sampled(10000, [&](double t) { return low(t) + std::cos(2.0 * kPi * high * t + 1.1); });
        EXPECT_LT(worstError(fourierResample(x, 2.5, 10000), x.size(), 200.0, low), 0.01) << high;
    }
    // Exactly at the new Nyquist frequency of step 2 the component would read
    // (-1)^k cos(pi/4) at positions 2k - 1; its bin enters once for the +- pair,
    // so half of that remains.
    const Resampled r = fourierResample(
        sampled(1000, [](double t) { return std::cos(kPi * t / 2.0 + kPi / 4.0); }), 2.0, 1000);
    EXPECT_LT(worstError(r, 1000, 0.0,
                         [](double t) { return 0.5 * std::cos(kPi * t / 2.0 + kPi / 4.0); }),
              1e-12);
}

} // namespace
} // namespace tarnic
