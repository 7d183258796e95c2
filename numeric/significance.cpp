#include "numeric/significance.h"

#include "numeric/fft_plans.h"
#include "numeric/morlet.h"
#include "numeric/welch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>

namespace tarnic {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// log of x^a e^-x / Gamma(a), the common factor of P(a, x) and Q(a, x).
double logGammaFactor(double a, double x) {
    return a * std::log(x) - x - std::lgamma(a);
}

// P(a, x) by its power series; converges fast for x < a + 1.
double lowerGammaSeries(double a, double x) {
    double term = 1.0 / a, sum = term;
    for (int n = 1; n < 100000; ++n) {
        term *= x / (a + n);
        sum += term;
        if (std::abs(term) < std::abs(sum) * kEpsilon) break;
    }
    return sum * std::exp(logGammaFactor(a, x));
}

// Q(a, x) by its continued fraction (modified Lentz); converges fast for
// x >= a + 1.
double upperGammaFraction(double a, double x) {
    constexpr double tiny = 1e-300;
    double b = x + 1.0 - a, c = 1.0 / tiny, d = 1.0 / b, h = d;
    for (int i = 1; i < 100000; ++i) {
        const double an = -i * (i - a);
        b += 2.0;
        d = an * d + b;
        if (std::abs(d) < tiny) d = tiny;
        c = b + an / c;
        if (std::abs(c) < tiny) c = tiny;
        d = 1.0 / d;
        const double step = d * c;
        h *= step;
        if (std::abs(step - 1.0) < kEpsilon) break;
    }
    return h * std::exp(logGammaFactor(a, x));
}

double lowerGamma(double a, double x) {
    if (x <= 0.0) return 0.0;
    return x < a + 1.0 ? lowerGammaSeries(a, x) : 1.0 - upperGammaFraction(a, x);
}

double upperGamma(double a, double x) {
    if (x <= 0.0) return 1.0;
    return x < a + 1.0 ? 1.0 - lowerGammaSeries(a, x) : upperGammaFraction(a, x);
}

template <class T> Ar1Fit fitOf(std::span<const T> x) {
    Ar1Fit fit;
    const std::size_t n = x.size();
    fit.samples = n;
    double mean = 0.0;
    for (T v : x)
        mean += static_cast<double>(v);
    mean /= static_cast<double>(std::max<std::size_t>(n, 1));
    double sumSquares = 0.0, sumLagged = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        const double v = static_cast<double>(x[t]) - mean;
        sumSquares += v * v;
        if (t + 1 < n) sumLagged += v * (static_cast<double>(x[t + 1]) - mean);
    }
    fit.whiteNoise = true;
    if (!std::isfinite(sumSquares) || !std::isfinite(sumLagged) || !(sumSquares > 0.0)) {
        fit.reason = WhiteNoiseReason::NoVariation;
        fit.variance = 0.0;
        return fit;
    }
    fit.variance = sumSquares / static_cast<double>(n);
    fit.lag1 = sumLagged / sumSquares;
    if (n < kAr1MinSamples)
        fit.reason = WhiteNoiseReason::TooShort;
    else if (fit.lag1 < 0.0)
        fit.reason = WhiteNoiseReason::NegativeCorrelation;
    else {
        fit.whiteNoise = false;
        fit.alpha = fit.lag1;
    }
    return fit;
}

template <class T>
MorletSignificance morletOf(std::span<const T> fragment, std::span<const double> periods,
                            double p) {
    MorletSignificance result;
    result.fit = fitAr1(fragment);
    const std::size_t n = fragment.size();
    result.background = morletRedNoisePower(result.fit, periods, n);
    result.localLevel = morletLocalLevel(result.fit, periods, n, p);
    result.globalLevel = morletGlobalLevel(result.fit, periods, n, p);
    const double factor = morletFourierFactor();
    for (double period : periods) {
        const SampleSpan outside = morletOutsideCone(n, period / factor);
        result.averaged.push_back(outside.end - outside.first);
        result.globalDof.push_back(
            morletTimeAverageDof(static_cast<double>(result.averaged.back()), period / factor));
    }
    result.cone = morletConeOfInfluence(n);
    return result;
}

} // namespace

double chiSquareQuantile(double dof, double p) {
    if (!(dof > 0.0) || !(p < 1.0) || std::isnan(p))
        return std::numeric_limits<double>::quiet_NaN();
    if (p <= 0.0) return 0.0;
    // Solve g(y) = 0 for y = x / 2, g increasing: P(a, y) - p, or for the upper
    // tail (1 - p) - Q(a, y), which keeps its precision when p is near 1.
    const double a = 0.5 * dof;
    const bool upper = p > 0.5;
    const auto g = [&](double y) {
        return upper ? (1.0 - p) - upperGamma(a, y) : lowerGamma(a, y) - p;
    };
    double lo = 0.0, hi = std::max(a, 1.0);
    while (g(hi) < 0.0)
        hi *= 2.0;
    double y = 0.5 * (lo + hi);
    for (int i = 0; i < 400; ++i) {
        const double value = g(y);
        if (value == 0.0) break;
        (value < 0.0 ? lo : hi) = y;
        // The derivative of both forms is the gamma density y^(a-1) e^-y / Gamma(a).
        const double density = std::exp(logGammaFactor(a, y)) / y;
        double next = density > 0.0 ? y - value / density : lo;
        if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
        const double change = std::abs(next - y);
        y = next;
        if (change <= 4.0 * kEpsilon * y || hi - lo <= 4.0 * kEpsilon * hi) break;
    }
    return 2.0 * y;
}

Ar1Fit fitAr1(std::span<const double> x) {
    return fitOf(x);
}

Ar1Fit fitAr1(std::span<const float> x) {
    return fitOf(x);
}

double ar1NormalisedSpectrum(double alpha, double nu) {
    return (1.0 - alpha * alpha) /
           (1.0 - 2.0 * alpha * std::cos(2.0 * std::numbers::pi * nu) + alpha * alpha);
}

std::vector<double> redNoiseBackground(const Ar1Fit& fit, std::span<const float> frequencies,
                                       double deltaT) {
    std::vector<double> background;
    background.reserve(frequencies.size());
    for (float f : frequencies)
        background.push_back(2.0 * fit.variance * deltaT *
                             ar1NormalisedSpectrum(fit.alpha, static_cast<double>(f) * deltaT));
    return background;
}

std::vector<double> welchDegreesOfFreedom(std::size_t n, std::size_t length, std::size_t fftLength,
                                          std::size_t radius) {
    const std::size_t m = fftLength + (fftLength % 2);
    const std::size_t half = m / 2;
    std::vector<double> dof(half + 1, 0.0);
    const std::size_t len = std::min({length, n, m});
    if (len == 0) return dof;

    const std::vector<std::size_t> starts = welchWindowStarts(n, len);
    std::vector<double> taper(len, 1.0);
    if (len > 1)
        for (std::size_t j = 0; j < len; ++j)
            taper[j] = 0.5 * (1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(j) /
                                             static_cast<double>(len)));

    // Ordered pairs of windows (w, w') that overlap, by their distance d.
    std::map<std::size_t, double> pairs;
    for (std::size_t w = 0; w < starts.size(); ++w)
        for (std::size_t v = w; v < starts.size() && starts[v] - starts[w] < len; ++v)
            pairs[starts[v] - starts[w]] += v == w ? 1.0 : 2.0;

    const RealFftPlan& plan = realFftPlan(m, FftDirection::Forward);
    FftBuffer<double> product(m);
    FftBuffer<fftw_complex> bins(half + 1);
    std::vector<double> squared(m); // |R(d, D)|^2 for D = 0 .. m-1 round the circle
    const auto width = static_cast<std::ptrdiff_t>(2 * radius + 1);
    const auto circle = [m](std::ptrdiff_t t) {
        const auto mm = static_cast<std::ptrdiff_t>(m);
        return static_cast<std::size_t>(((t % mm) + mm) % mm);
    };
    // sum over |D| <= 2 radius of (2 radius + 1 - |D|) |R(d, centre + D)|^2.
    const auto smoothed = [&](std::ptrdiff_t centre) {
        double sum = 0.0;
        for (std::ptrdiff_t shift = 1 - width; shift < width; ++shift)
            sum += static_cast<double>(width - std::abs(shift)) * squared[circle(centre + shift)];
        return sum;
    };

    double energy = 0.0; // R(0, 0)
    for (double h : taper)
        energy += h * h;
    std::vector<double> variance(half + 1, 0.0);
    for (const auto& [d, count] : pairs) {
        std::fill_n(product.data(), m, 0.0);
        for (std::size_t u = 0; u + d < len; ++u)
            product[u] = taper[u] * taper[u + d];
        plan.forward(product.data(), bins.data());
        for (std::size_t k = 0; k <= half; ++k) {
            squared[k] = bins[k][0] * bins[k][0] + bins[k][1] * bins[k][1];
            squared[(m - k) % m] = squared[k]; // the product is real
        }
        const double sameSide = smoothed(0);
        for (std::size_t k = 0; k <= half; ++k)
            variance[k] += count * (sameSide + smoothed(2 * static_cast<std::ptrdiff_t>(k)));
    }
    const double mean = static_cast<double>(starts.size()) * static_cast<double>(width) * energy;
    for (std::size_t k = 0; k <= half; ++k)
        dof[k] = 2.0 * mean * mean / variance[k];
    return dof;
}

namespace {

// The frequencies i / (dT fftLength), i = 0 .. fftLength/2 - 1, as floats: the
// grid the spectrum window computes for its estimates.
std::vector<float> frequencyGrid(std::size_t fftLength, double deltaT) {
    std::vector<float> grid(fftLength / 2);
    for (std::size_t i = 0; i < grid.size(); ++i)
        grid[i] = static_cast<float>(static_cast<double>(i) / (deltaT * static_cast<double>(fftLength)));
    return grid;
}

} // namespace

SpectrumSignificance fourierSignificance(std::span<const float> signal, std::size_t length,
                                         std::size_t fftLength, std::size_t radius, double deltaT,
                                         double p) {
    SpectrumSignificance result;
    result.fit = fitAr1(signal);
    const std::vector<float> grid = frequencyGrid(fftLength, deltaT);
    result.background = redNoiseBackground(result.fit, grid, deltaT);
    result.dof = welchDegreesOfFreedom(signal.size(), length, fftLength, radius);
    result.dof.resize(grid.size());
    result.level.resize(grid.size());
    // Equal nu share one quantile: the interior of the grid has a single value.
    double lastDof = 0.0, factor = 0.0;
    for (std::size_t i = 0; i < grid.size(); ++i) {
        if (result.dof[i] != lastDof) {
            lastDof = result.dof[i];
            factor = chiSquareQuantile(lastDof, p) / lastDof;
        }
        result.level[i] = result.background[i] * factor;
    }
    return result;
}

SpectrumSignificance burgBackground(std::span<const float> signal, std::size_t fftLength,
                                    double deltaT) {
    SpectrumSignificance result;
    result.fit = fitAr1(signal);
    const std::vector<float> grid = frequencyGrid(fftLength, deltaT);
    result.background = redNoiseBackground(result.fit, grid, deltaT);
    return result;
}

std::vector<double> morletRedNoisePower(const Ar1Fit& fit, std::span<const double> periods,
                                        std::size_t samples) {
    const std::size_t length = morletTransformLength(samples);
    const std::size_t half = length / 2;
    const double binStep = 2.0 * std::numbers::pi / static_cast<double>(length);
    const double fourier = morletFourierFactor();
    // P(k / L) once for all rows.
    std::vector<double> spectrum(half + 1);
    for (std::size_t k = 1; k <= half; ++k)
        spectrum[k] = ar1NormalisedSpectrum(fit.alpha, static_cast<double>(k) / length);
    std::vector<double> power;
    power.reserve(periods.size());
    for (double period : periods) {
        const double s = period / fourier;
        // The bins morletTransform() keeps: |s w - w0| <= kMorletBandHalfWidth.
        const double kLow =
            std::max(1.0, std::ceil((kMorletOmega0 - kMorletBandHalfWidth) / (s * binStep)));
        const double kHigh =
            std::min(static_cast<double>(half),
                     std::floor((kMorletOmega0 + kMorletBandHalfWidth) / (s * binStep)));
        double sum = 0.0;
        for (auto k = static_cast<std::size_t>(kLow); static_cast<double>(k) <= kHigh; ++k) {
            const double d = s * binStep * static_cast<double>(k) - kMorletOmega0;
            sum += spectrum[k] * std::exp(-d * d);
        }
        // |Psi|^2 = 2 pi s pi^(-1/2) exp(-d^2).
        power.push_back(fit.variance * 2.0 * std::sqrt(std::numbers::pi) * s * sum /
                        static_cast<double>(length));
    }
    return power;
}

std::vector<double> morletLocalLevel(const Ar1Fit& fit, std::span<const double> periods,
                                     std::size_t samples, double p) {
    std::vector<double> level = morletRedNoisePower(fit, periods, samples);
    const double factor = chiSquareQuantile(2.0, p) / 2.0;
    for (double& v : level)
        v *= factor;
    return level;
}

double morletTimeAverageDof(double averaged, double scale) {
    const double r = averaged / (kMorletDecorrelationGamma * scale);
    return 2.0 * std::sqrt(1.0 + r * r);
}

std::vector<double> morletGlobalLevel(const Ar1Fit& fit, std::span<const double> periods,
                                      std::size_t samples, double p) {
    std::vector<double> level = morletRedNoisePower(fit, periods, samples);
    const double fourier = morletFourierFactor();
    for (std::size_t i = 0; i < periods.size(); ++i) {
        const double scale = periods[i] / fourier;
        const SampleSpan outside = morletOutsideCone(samples, scale);
        const double dof =
            morletTimeAverageDof(static_cast<double>(outside.end - outside.first), scale);
        level[i] *= chiSquareQuantile(dof, p) / dof;
    }
    return level;
}

std::vector<double> morletConeOfInfluence(std::size_t samples) {
    const double slope = morletFourierFactor() / std::numbers::sqrt2;
    std::vector<double> cone(samples);
    for (std::size_t t = 0; t < samples; ++t)
        cone[t] = slope * static_cast<double>(std::min(t, samples - 1 - t));
    return cone;
}

MorletSignificance morletSignificance(std::span<const double> fragment,
                                      std::span<const double> periods, double p) {
    return morletOf(fragment, periods, p);
}

MorletSignificance morletSignificance(std::span<const float> fragment,
                                      std::span<const double> periods, double p) {
    return morletOf(fragment, periods, p);
}

} // namespace tarnic
