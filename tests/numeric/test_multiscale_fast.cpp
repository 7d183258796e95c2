// The fast paths of the Morlet transform (short batched transforms over the
// wavelet's band) and of MF DFA (shared fits, q powers by ratios, scales on
// worker threads) against the straightforward methods, on random data of
// awkward sizes and on data whose answer is known; threads refused give the
// same bits.
#include "numeric/mfdfa.h"
#include "numeric/morlet.h"
#include "numeric/workers.h"
#include "numeric_support.h"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace tarnic {
namespace {

using std::numbers::pi;
using test::isNear;

// The Morlet transform the plain way: the whole one-sided spectrum of the
// zero-padded series times the wavelet, back through one complex transform of
// the full length L, Psi evaluated by exp() at every bin of its band.
MorletTransform plainMorlet(const std::vector<double>& x, const std::vector<double>& periods) {
    const std::size_t n = x.size();
    const std::size_t length = morletTransformLength(n);
    MorletTransform r;
    r.samples = n;
    r.periods = periods;
    r.power.assign(n * periods.size(), 0.0);
    r.spectrum.assign(periods.size(), 0.0);
    double mean = 0.0;
    for (double v : x)
        mean += v / static_cast<double>(n);
    std::vector<std::complex<double>> spectrum(length), w(length);
    for (std::size_t t = 0; t < n; ++t)
        spectrum[t] = x[t] - mean;
    const auto run = [length](std::vector<std::complex<double>>& in,
                              std::vector<std::complex<double>>& out, int sign) {
        fftw_plan plan =
            fftw_plan_dft_1d(static_cast<int>(length), reinterpret_cast<fftw_complex*>(in.data()),
                             reinterpret_cast<fftw_complex*>(out.data()), sign, FFTW_ESTIMATE);
        fftw_execute(plan);
        fftw_destroy_plan(plan);
    };
    std::vector<std::complex<double>> bins(length);
    run(spectrum, bins, FFTW_FORWARD);
    for (auto& b : bins)
        b /= static_cast<double>(length);
    for (std::size_t i = 0; i < periods.size(); ++i) {
        const double s = periods[i] / morletFourierFactor();
        std::vector<std::complex<double>> a(length, 0.0);
        for (std::size_t k = 1; k <= length / 2; ++k) {
            const double d =
                s * 2.0 * pi * static_cast<double>(k) / static_cast<double>(length) - kMorletOmega0;
            if (std::abs(d) <= kMorletBandHalfWidth)
                a[k] = bins[k] * std::sqrt(2.0 * pi * s) * std::pow(pi, -0.25) *
                       std::exp(-0.5 * d * d);
        }
        run(a, w, FFTW_BACKWARD);
        for (std::size_t t = 0; t < n; ++t)
            r.power[i * n + t] = std::norm(w[t]);
        const SampleSpan outside = morletOutsideCone(n, s);
        double sum = 0.0;
        for (std::size_t t = outside.first; t < outside.end; ++t)
            sum += r.power[i * n + t];
        r.spectrum[i] = sum / static_cast<double>(outside.end - outside.first);
    }
    return r;
}

// Rows agree to rounding: each cell within 1e-12 of its row's largest value
// (the transforms' rounding is relative to the row's energy, not to the cell).
::testing::AssertionResult sameRows(const MorletTransform& fast, const MorletTransform& plain) {
    const std::size_t n = plain.samples;
    if (fast.power.size() != plain.power.size() || fast.spectrum.size() != plain.spectrum.size())
        return ::testing::AssertionFailure() << "sizes differ";
    for (std::size_t i = 0; i < plain.spectrum.size(); ++i) {
        const auto row = plain.power.begin() + static_cast<std::ptrdiff_t>(i * n);
        const double top = n > 0 ? *std::max_element(row, row + static_cast<std::ptrdiff_t>(n)) : 0;
        for (std::size_t t = 0; t < n; ++t)
            if (auto near = isNear(fast.power[i * n + t], plain.power[i * n + t], 1e-12 * top);
                !near)
                return near << " at row " << i << ", sample " << t;
        if (auto near = isNear(fast.spectrum[i], plain.spectrum[i], 1e-300, 1e-12); !near)
            return near << " in the spectrum at row " << i;
    }
    return ::testing::AssertionSuccess();
}

struct MorletCase {
    std::size_t n;
    double pMin, pMax;
    std::size_t rows;
    unsigned seed; // 0: a random walk, else white noise of that seed
};

// Sizes 1, 2, primes, powers of two (and one past), the largest map of the
// window (10,000 x 200); periods below 2 (the band cut at the Nyquist bin),
// beyond the series (few bins, long batches of short transforms) and beyond
// any bin (an empty band).
TEST(MorletFastPath, EqualsTheFullLengthTransformOnAwkwardSizes) {
    const MorletCase cases[] = {
        {1, 2.0, 8.0, 3, 5},          {2, 0.5, 4.0, 4, 6},        {3, 2.0, 3.0, 2, 7},
        {17, 1.0, 200.0, 9, 8},       {64, 2.0, 64.0, 12, 0},     {65, 2.0, 1e6, 15, 9},
        {997, 2.0, 997.0, 30, 10},    {4096, 2.0, 1024.0, 25, 0}, {4099, 1.5, 4000.0, 25, 11},
        {10000, 2.0, 2500.0, 200, 0},
    };
    for (const auto& c : cases) {
        const std::vector<double> x =
            c.seed ? test::whiteNoise(c.n, 3.0, c.seed) : test::randomWalk(c.n, 99);
        const std::vector<double> periods = morletPeriods(c.pMin, c.pMax, c.rows);
        EXPECT_TRUE(sameRows(morletTransform(x, periods), plainMorlet(x, periods)))
            << "n = " << c.n << ", periods " << c.pMin << " .. " << c.pMax;
    }
}

// Rows handed out one by one are the kept map's, bit for bit, each row once.
TEST(MorletFastPath, RowsHandedOutEqualTheKeptMap) {
    for (std::size_t n : {1u, 17u, 4099u}) {
        const std::vector<double> x = test::whiteNoise(n, 1.0, static_cast<unsigned>(n));
        const std::vector<double> periods = morletPeriods(2.0, 2.0 * static_cast<double>(n), 23);
        const MorletTransform kept = morletTransform(x, periods);
        std::vector<double> power(n * periods.size(), -1.0);
        std::vector<int> calls(periods.size(), 0);
        const std::vector<double> spectrum =
            morletTransformRows(x, periods, [&](std::size_t i, std::span<const double> row) {
                ++calls[i]; // rows differ, so no two calls touch the same element
                std::copy(row.begin(), row.end(),
                          power.begin() + static_cast<std::ptrdiff_t>(i * n));
            });
        EXPECT_EQ(calls, std::vector<int>(periods.size(), 1)) << n;
        EXPECT_EQ(power, kept.power) << n;
        EXPECT_EQ(spectrum, kept.spectrum) << n;
    }
}

// Known answers: a constant has no transform at all; a sinusoid
// A cos(2 pi t / P) has, away from the ends, |W|^2 = (sqrt(pi) / 2) A^2 s
// exp(-(s w - w0)^2) at the row of scale s (w = 2 pi / P), whatever the length
// of the short transforms that row takes.
TEST(MorletFastPath, ConstantGivesZerosAndSinusoidsTheirRidgeOnEveryBatchShape) {
    for (std::size_t n : {1u, 2u, 31u, 1000u, 8192u}) {
        const MorletTransform w =
            morletTransform(std::vector<double>(n, -3.25), morletPeriods(2.0, 1e4, 20));
        EXPECT_EQ(w.power, std::vector<double>(n * 20, 0.0)) << n;
        EXPECT_EQ(w.spectrum, std::vector<double>(20, 0.0)) << n;
    }
    struct Sinusoid {
        std::size_t n;
        double period, row; // the row's Fourier period
    };
    const Sinusoid sinusoids[] = {{8192, 4.0, 4.0},   {8192, 4.0, 5.0},      {8191, 64.0, 64.0},
                                  {8191, 64.0, 50.0}, {10000, 250.0, 250.0}, {10000, 250.0, 300.0}};
    for (const auto& c : sinusoids) {
        const MorletTransform w =
            morletTransform(test::sinusoid(c.n, 1.0 / c.period, 2.0), std::vector<double>{c.row});
        const double s = c.row / morletFourierFactor();
        const double d = s * 2.0 * pi / c.period - kMorletOmega0;
        const double ridge = std::sqrt(pi) / 2.0 * 4.0 * s * std::exp(-d * d);
        for (std::size_t t : {c.n / 3, c.n / 2, 2 * c.n / 3})
            EXPECT_TRUE(isNear(w.power[t], ridge, 0.0, 0.02))
                << "period " << c.period << ", row " << c.row << ", t " << t;
    }
}

// MF DFA the plain way: every segment fitted on its own, each q's power mean
// taken by exp() around the extreme logarithm.
struct PlainMfdfa {
    std::vector<double> log10Z; // scale after scale
    std::vector<double> h;
};

PlainMfdfa plainMfdfa(const std::vector<double>& x, const MfdfaSettings& settings) {
    const std::vector<double> q = evenGrid(settings.qMin, settings.qMax, settings.qCount);
    const std::vector<std::size_t> scales =
        mfdfaScales(x.size(), settings.minScale, settings.maxScale, settings.scaleCount);
    double largest = 0.0;
    for (double v : x)
        largest = std::max(largest, std::abs(v));
    PlainMfdfa r;
    r.log10Z.assign(scales.size() * q.size(), 0.0);
    std::vector<double> logScale;
    std::vector<std::vector<double>> lnZ(q.size());
    for (std::size_t i = 0; i < scales.size(); ++i) {
        const std::size_t s = scales[i];
        const PolynomialDetrender fit(s, settings.order);
        std::vector<double> logs, dy(s);
        for (std::size_t k = 0; k + s <= x.size(); k += s) {
            fit.residual(std::span(x).subspan(k, s), dy);
            double m = 0.0;
            if (settings.measure == FluctuationMeasure::Range) {
                m = *std::max_element(dy.begin(), dy.end()) -
                    *std::min_element(dy.begin(), dy.end());
            } else {
                for (double v : dy)
                    m += v * v;
                m = std::sqrt(m / static_cast<double>(s));
            }
            if (m > 1e-11 * largest && std::isfinite(m)) logs.push_back(std::log(m));
        }
        if (logs.empty()) continue;
        logScale.push_back(std::log(static_cast<double>(s)));
        const auto [lo, hi] = std::minmax_element(logs.begin(), logs.end());
        for (std::size_t j = 0; j < q.size(); ++j) {
            double z = 0.0;
            if (std::abs(q[j]) < 1e-12) {
                for (double l : logs)
                    z += l / static_cast<double>(logs.size());
            } else {
                const double pivot = q[j] > 0 ? *hi : *lo;
                double sum = 0.0;
                for (double l : logs)
                    sum += std::exp(q[j] * (l - pivot));
                z = pivot + std::log(sum / static_cast<double>(logs.size())) / q[j];
            }
            lnZ[j].push_back(z);
            r.log10Z[i * q.size() + j] = z / std::numbers::ln10;
        }
    }
    r.h.assign(q.size(), 0.0);
    if (logScale.size() < 2) return r;
    const double count = static_cast<double>(logScale.size());
    double xBar = 0.0;
    for (double v : logScale)
        xBar += v / count;
    for (std::size_t j = 0; j < q.size(); ++j) {
        double yBar = 0.0, sxx = 0.0, sxy = 0.0;
        for (double v : lnZ[j])
            yBar += v / count;
        for (std::size_t i = 0; i < logScale.size(); ++i) {
            sxx += (logScale[i] - xBar) * (logScale[i] - xBar);
            sxy += (logScale[i] - xBar) * (lnZ[j][i] - yBar);
        }
        r.h[j] = sxy / sxx;
    }
    return r;
}

struct MfdfaCase {
    std::size_t n;
    int order;
    FluctuationMeasure measure;
    int minScale, maxScale;
    std::size_t scaleCount;
    double qMin, qMax;
    std::size_t qCount;
};

// Sizes 2, primes, powers of two and the window's largest run (10,000 samples,
// 190 scales of 20 .. 2000, 200 q in [-10, 10], orders 4 and 10); q grids of one
// value, two, with and without q = 0, and uneven ones.
TEST(MfdfaFastPath, EqualsTheSegmentBySegmentDefinitionAndIgnoresTheThreadCount) {
    using enum FluctuationMeasure;
    const MfdfaCase cases[] = {
        {2, 0, Range, 2, 2, 1, 1.0, 1.0, 1},
        {31, 1, StandardDeviation, 2, 31, 7, -3.0, 3.0, 7},
        {64, 2, Range, 4, 64, 10, -10.0, 10.0, 2},
        {997, 4, StandardDeviation, 10, 300, 25, -5.0, 5.0, 41},
        {1024, 3, Range, 16, 512, 20, 0.5, 9.5, 37},
        {4099, 10, Range, 20, 2000, 50, -10.0, -0.25, 33},
        {10000, 4, StandardDeviation, 20, 2000, 200, -10.0, 10.0, 200},
        {10000, 10, Range, 20, 2000, 200, -10.0, 10.0, 200},
    };
    for (const auto& c : cases) {
        const std::vector<double> x = test::randomWalk(c.n, static_cast<unsigned>(c.n));
        MfdfaSettings settings;
        settings.order = c.order;
        settings.measure = c.measure;
        settings.minScale = c.minScale;
        settings.maxScale = c.maxScale;
        settings.scaleCount = c.scaleCount;
        settings.qMin = c.qMin;
        settings.qMax = c.qMax;
        settings.qCount = c.qCount;
        const MfdfaResult fast = mfdfa(x, settings);
        const PlainMfdfa plain = plainMfdfa(x, settings);
        EXPECT_TRUE(test::allNear(fast.log10Z, plain.log10Z, 1e-12, 1e-12)) << "n = " << c.n;
        EXPECT_TRUE(test::allNear(fast.h, plain.h, 1e-10, 1e-10)) << "n = " << c.n;

        refuseWorkerThreads = true;
        const MfdfaResult alone = mfdfa(x, settings);
        refuseWorkerThreads = false;
        EXPECT_EQ(alone.log10Z, fast.log10Z) << "n = " << c.n;
        EXPECT_EQ(alone.h, fast.h) << "n = " << c.n;
        EXPECT_EQ(alone.f, fast.f) << "n = " << c.n;
    }
}

// A share that fails is reported to the caller, after every share has run,
// whether the shares ran on threads or, refused, one after another here.
TEST(Workers, FailureOfOneShareIsThrownAfterAllHaveRun) {
    for (const bool refuse : {false, true}) {
        refuseWorkerThreads = refuse;
        std::vector<int> ran(4, 0);
        EXPECT_THROW(runWorkers(4,
                                [&](std::size_t k) {
                                    ran[k] = 1;
                                    if (k == 2) throw std::runtime_error("share 2");
                                }),
                     std::runtime_error);
        refuseWorkerThreads = false;
        EXPECT_EQ(ran, std::vector<int>(4, 1)) << "refused: " << refuse;
    }
}

} // namespace
} // namespace tarnic
