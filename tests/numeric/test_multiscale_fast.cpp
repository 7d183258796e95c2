// The fast paths of the Morlet transform (short batched transforms over the
// wavelet's band, rows kept or handed out) and of MF DFA (q powers by ratios,
// scales on worker threads) against the straightforward methods and known
// answers on awkward sizes; threads refused give the same bits.
#include "numeric/mfdfa.h"
#include "numeric/morlet.h"
#include "numeric/workers.h"
#include "numeric_support.h"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <complex>

namespace tarnic {

using std::numbers::pi;

// One unnormalised complex transform of the whole length, in place.
static void transform(std::vector<std::complex<double>>& b, int sign) {
    auto* data = reinterpret_cast<fftw_complex*>(b.data());
    fftw_plan plan = fftw_plan_dft_1d(static_cast<int>(b.size()), data, data, sign, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
}

// Each row: n samples of white noise (f < 0) or of a cosine of amplitude 2 and f
// cycles a sample, the Morlet rows of periods pMin .. pMax and an MF DFA.
// Sizes 0, 1, 2, primes, powers of two (and one past), the largest run of the
// windows (a 10,000 x 200 map; 190 scales of 20 .. 2000, 200 q, order 10).
// Morlet periods below 2 (the band cut at the Nyquist bin), beyond the series
// (few bins, long batches of short transforms), beyond any bin (an empty band),
// no row at all. MF DFA without a scale, q grids of one value (done one by
// one), two, with and without q = 0, of one sign beyond 32 values (powers
// afresh), scales fitted exactly (left out).
TEST(MultiscaleFastPaths, EqualTheStraightforwardMethodsAndKnownAnswersWithOrWithoutThreads) {
    using enum FluctuationMeasure;
    // clang-format off
    const struct { std::size_t n, rows; double pMin, pMax, f; MfdfaSettings set; } cases[] = {
        // n, rows, pMin, pMax, f, {order, measure, scales from, to, count, q from, to, count}
        {0, 3, 2.0, 8.0, -1, {}}, {1, 3, 2.0, 8.0, -1, {}}, {3, 2, 2.0, 3.0, -1, {}},
        {2, 4, 0.5, 4.0, -1, {0, Range, 2, 2, 1, 1.0, 1.0, 1}}, {31, 20, 2.0, 1e4, 0, {}},
        {17, 9, 1.0, 200.0, -1, {1, StandardDeviation, 2, 17, 7, -3.0, 3.0, 7}}, {17, 0, 2.0, 8.0, -1, {}},
        {64, 12, 2.0, 64.0, -1, {2, Range, 4, 64, 10, -10.0, 10.0, 2}}, {65, 15, 2.0, 1e6, -1, {}},
        {997, 30, 2.0, 997.0, -1, {4, StandardDeviation, 10, 300, 25, -5.0, 5.0, 41}},
        {4096, 25, 2.0, 1024.0, -1, {3, Range, 16, 512, 20, 0.5, 9.5, 37}},
        {4099, 25, 1.5, 4000.0, -1, {10, Range, 20, 2000, 50, -10.0, -0.25, 33}},
        {8192, 2, 4.0, 5.0, 0.25, {}}, {8191, 2, 64.0, 50.0, 1.0 / 64, {}}, {10000, 2, 250.0, 300.0, 0.004, {}},
        {10000, 200, 2.0, 2500.0, -1, {10, StandardDeviation, 20, 2000, 200, -10.0, 10.0, 200}}};
    // clang-format on
    for (const auto& [n, rows, pMin, pMax, f, set] : cases) {
        const auto x = f < 0 ? test::whiteNoise(n, 3.0, 7) : test::sinusoid(n, f, 2.0);
        const std::vector<double> periods = morletPeriods(pMin, pMax, rows);
        const MorletTransform fast = morletTransform(x, periods);
        // Morlet the plain way: the whole spectrum of the zero-padded series
        // less its mean, times Psi by exp() at every positive bin (beyond the
        // band, which the fast path leaves out, Psi is below e^-36 of its top),
        // back through one transform of the full length per row. Cells to 1e-10
        // absolute: the rounding goes with the map's energy (about 9 for the
        // noise), not with the cell's; a constant gives exact zeros.
        const std::size_t length = morletTransformLength(n);
        const auto mean = static_cast<double>(std::accumulate(x.begin(), x.end(), 0.0L) / n);
        std::vector<std::complex<double>> spectrum(length);
        std::ranges::transform(x, spectrum.begin(), [&](double v) { return (v - mean) / length; });
        transform(spectrum, FFTW_FORWARD);
        std::vector<double> plain, power(n * rows, 0.0); // power: the rows handed out
        for (std::size_t i = 0; i < rows; ++i) {
            const double s = periods[i] / morletFourierFactor(),
                         a = std::sqrt(2 * s * std::sqrt(pi));
            std::vector<std::complex<double>> w(length); // Psi = a exp(-(s w - 6)^2 / 2), w > 0
            for (std::size_t k = 1; k <= length / 2; ++k)
                w[k] = a * spectrum[k] * std::exp(-std::pow(s * 2 * pi * k / length - 6, 2) / 2);
            transform(w, FFTW_BACKWARD);
            for (std::size_t t = 0; t < n; ++t)
                plain.push_back(std::norm(w[t]));
            const SampleSpan cone = morletOutsideCone(n, s);
            const auto row = plain.end() - static_cast<std::ptrdiff_t>(n);
            const long double sum = std::accumulate(row + cone.first, row + cone.end, 0.0L);
            EXPECT_TRUE(test::isNear(fast.spectrum[i], n ? sum / (cone.end - cone.first) : 0.0,
                                     1e-10, 1e-12));
            const double d = 2 * pi * f * s - 6, ridge = 2 * std::sqrt(pi) * s * std::exp(-d * d);
            EXPECT_TRUE(f < 0 || test::isNear(fast.power[i * n + n / 2], f ? ridge : 0.0, 0, 0.02));
        }
        EXPECT_TRUE(test::allNear(fast.power, plain, 1e-10, 1e-12)) << n;
        // MF DFA the plain way from the segment measures (pinned by
        // test_mfdfa.cpp): Z(q, s) the power mean summed in long double (whose
        // range needs no pivot), h the least-squares slope of ln Z on ln s over
        // the scales where something fluctuates.
        const MfdfaResult mf = mfdfa(x, set);
        std::vector<double> log10Z(mf.log10Z.size(), 0.0), h(set.qCount, 0.0);
        // ln s of the usable scales; per q the sums of ln Z and of ln s ln Z
        std::vector<long double> lx, sy(set.qCount), sxy(set.qCount);
        for (std::size_t i = 0; i < mf.scales.size(); ++i) {
            std::vector<double> m = segmentFluctuations(x, mf.scales[i], set.order, set.measure);
            std::erase_if(m, [&](double v) { return v <= 1e-11 * test::largestMagnitude(x); });
            if (m.empty()) continue;
            lx.push_back(std::log(static_cast<long double>(mf.scales[i])));
            for (std::size_t j = 0; j < set.qCount; ++j) {
                long double z = 0.0L, q = mf.q[j];
                for (const long double v : m)
                    z += std::abs(q) < 1e-12 ? std::log(v) : std::pow(v, q);
                z = std::abs(q) < 1e-12 ? z / m.size() : std::log(z / m.size()) / q;
                log10Z[i * set.qCount + j] = static_cast<double>(z / std::log(10.0L));
                sy[j] += z;
                sxy[j] += lx.back() * z;
            }
        }
        const long double used = lx.size(), sx = std::accumulate(lx.begin(), lx.end(), 0.0L),
                          sxx = std::inner_product(lx.begin(), lx.end(), lx.begin(), 0.0L);
        for (std::size_t j = 0; j < set.qCount && used >= 2; ++j)
            h[j] = static_cast<double>((used * sxy[j] - sx * sy[j]) / (used * sxx - sx * sx));
        EXPECT_TRUE(test::allNear(mf.log10Z, log10Z, 1e-12, 1e-12)) << n;
        EXPECT_TRUE(test::allNear(mf.h, h, 1e-10, 1e-10)) << n;
        // Rows handed out with threads refused, added up (a row handed out twice
        // or never shows), are the map made on the threads, bit for bit; so is
        // MF DFA alone.
        refuseWorkerThreads = true;
        const std::vector<double> rowSpectrum =
            morletTransformRows(x, periods, [&](std::size_t i, std::span<const double> row) {
                for (std::size_t t = 0; t < n; ++t) // rows differ: no two calls meet
                    power[i * n + t] += row[t];
            });
        const MfdfaResult alone = mfdfa(x, set);
        refuseWorkerThreads = false;
        EXPECT_TRUE(power == fast.power && rowSpectrum == fast.spectrum) << n;
        EXPECT_TRUE(alone.log10Z == mf.log10Z && alone.h == mf.h && alone.f == mf.f) << n;
    }
}

// A share that fails is reported to the caller after every share has run,
// whether the shares ran on threads or, refused, one after another here; the
// failing share 2 throws before it marks itself.
TEST(Workers, FailureOfOneShareIsThrownAfterAllHaveRun) {
    for (const bool refuse : {true, false}) { // the last pass leaves threads allowed
        std::vector<int> ran(4, 0);
        refuseWorkerThreads = refuse;
        EXPECT_THROW(runWorkers(4, [&](std::size_t k) { ran[k] = k == 2 ? throw 2 : 1; }), int);
        EXPECT_EQ(ran, (std::vector<int>{1, 1, 0, 1})) << "refused: " << refuse;
    }
}

} // namespace tarnic
