// Helpers of the spectral tests: a floating-point comparison and seeded test
// signals.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <iomanip>
#include <numbers>
#include <random>
#include <span>
#include <sstream>
#include <vector>

namespace tarnic::test {

// |actual - expected| <= absTol + relTol * |expected|. Equal values pass first
// (so equal infinities pass); a NaN matches only a NaN. On failure both values
// are printed to 17 significant digits.
inline ::testing::AssertionResult isNear(double actual, double expected, double absTol,
                                         double relTol = 0.0) {
    // A NaN fails the comparison of the difference.
    const double allowed = absTol + relTol * std::abs(expected);
    if (actual == expected || (std::isnan(actual) && std::isnan(expected)) ||
        std::abs(actual - expected) <= allowed)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << std::setprecision(17) << "actual " << actual << ", expected " << expected
           << ", difference " << actual - expected << " beyond " << allowed;
}

// isNear() for each element of two ranges (vectors, spans); reports the first
// index that fails.
template <class A, class B>
::testing::AssertionResult allNear(const A& actual, const B& expected, double absTol,
                                   double relTol = 0.0) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure()
               << "sizes " << actual.size() << " and " << expected.size();
    for (std::size_t i = 0; i < actual.size(); ++i) {
        auto r = isNear(static_cast<double>(actual[i]), static_cast<double>(expected[i]), absTol,
                        relTol);
        if (!r) return r << " at index " << i;
    }
    return ::testing::AssertionSuccess();
}

// Every value finite and greater than 0; reports the first that is not.
template <class R>::testing::AssertionResult allFinitePositive(const R& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!(std::isfinite(values[i]) && values[i] > 0))
            return ::testing::AssertionFailure()
                   << std::setprecision(17) << "value " << values[i] << " at index " << i;
    return ::testing::AssertionSuccess();
}

// n samples of x_t = phi_1 x_{t-1} + phi_2 x_{t-2} + e_t, e_t ~ N(0, sigma^2),
// after a burn-in of 500 samples, from a fixed seed.
inline std::vector<double> ar2Noise(std::size_t n, double phi1, double phi2, double sigma = 1.0,
                                    unsigned seed = 12345) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(0.0, sigma);
    std::vector<double> x(n);
    double x1 = 0.0, x2 = 0.0;
    for (std::size_t t = 0; t < n + 500; ++t) {
        const double v = phi1 * x1 + phi2 * x2 + normal(random);
        x2 = x1;
        x1 = v;
        if (t >= 500) x[t - 500] = v;
    }
    return x;
}

inline std::vector<double> whiteNoise(std::size_t n, double sigma, unsigned seed = 777) {
    return ar2Noise(n, 0.0, 0.0, sigma, seed);
}

// amplitude * cos(2 pi f t + phase), t = 0 .. n-1, f in cycles per sample.
inline std::vector<double> sinusoid(std::size_t n, double f, double amplitude = 1.0,
                                    double phase = 0.0) {
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = amplitude * std::cos(2.0 * std::numbers::pi * f * static_cast<double>(t) + phase);
    return x;
}

// Two-sided density of the AR(2) process above, sigma^2 / |1 - phi1 z - phi2 z^2|^2
// with z = exp(-2 pi i nu).
inline double ar2Density(double nu, double phi1, double phi2, double sigma2 = 1.0) {
    const double w = 2.0 * std::numbers::pi * nu;
    const double re = 1.0 - phi1 * std::cos(w) - phi2 * std::cos(2.0 * w);
    const double im = phi1 * std::sin(w) + phi2 * std::sin(2.0 * w);
    return sigma2 / (re * re + im * im);
}

inline std::vector<float> toFloat(std::span<const double> x) {
    return {x.begin(), x.end()};
}

} // namespace tarnic::test
