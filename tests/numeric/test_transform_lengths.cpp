// Real transforms of every kind of length (numeric/fft_plans.h), the prime-length
// convolution above all, against plain sums in long double; and the band-pass
// filter and the Fourier resampling, which run on such transforms, on awkward
// lengths against the straightforward method and signals of known answer.
#include "numeric/bandpass.h"
#include "numeric/fft_plans.h"
#include "numeric/resample.h"
#include "numeric/workers.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using LongComplex = std::complex<long double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// exp(-2 pi i j / n) for j = 0 .. n-1 in long double: plain sums index it by
// j k mod n, taken exactly in integers.
std::vector<LongComplex> rootsOfUnity(std::size_t n) {
    std::vector<LongComplex> roots(n);
    const long double turn = 2.0L * std::numbers::pi_v<long double> / static_cast<long double>(n);
    for (std::size_t j = 0; j < n; ++j)
        roots[j] = std::polar(1.0L, -turn * static_cast<long double>(j));
    return roots;
}

// Bin k of the forward transform of x, summed term by term.
LongComplex plainBin(std::span<const double> x, std::size_t k,
                     const std::vector<LongComplex>& roots) {
    const std::size_t n = x.size();
    LongComplex sum = 0.0L;
    std::size_t index = 0; // j k mod n
    for (std::size_t j = 0; j < n; ++j, index = (index + k) % n)
        sum += static_cast<long double>(x[j]) * roots[index];
    return sum;
}

// Every index below `count` for short records, else both ends and 60 spread
// between (a plain sum is O(n) per index).
std::vector<std::size_t> checkedIndices(std::size_t count) {
    std::vector<std::size_t> indices;
    if (count <= 700) {
        for (std::size_t k = 0; k < count; ++k)
            indices.push_back(k);
        return indices;
    }
    for (std::size_t k = 0; k < 3; ++k)
        indices.push_back(k);
    for (std::size_t i = 1; i <= 60; ++i)
        indices.push_back(i * (count - 4) / 61 + 3);
    for (std::size_t k = count - 3; k < count; ++k)
        indices.push_back(k);
    return indices;
}

struct LengthCase {
    std::size_t n;
    FftMethod method;
    bool primeConvolution; // the method the plan must have taken
};

// Sizes 1, 2, small primes, powers of two and their neighbours, primes on both
// sides of primeConvolutionFrom (2039, 2053), 65,537 both ways and 999,983.
const LengthCase kLengths[] = {
    {1, FftMethod::Automatic, false},         {2, FftMethod::Automatic, false},
    {3, FftMethod::Automatic, false},         {3, FftMethod::PrimeConvolution, true},
    {5, FftMethod::PrimeConvolution, true},   {7, FftMethod::PrimeConvolution, true},
    {11, FftMethod::PrimeConvolution, true},  {13, FftMethod::PrimeConvolution, true},
    {16, FftMethod::Automatic, false},        {17, FftMethod::PrimeConvolution, true},
    {127, FftMethod::PrimeConvolution, true}, {128, FftMethod::Automatic, false},
    {129, FftMethod::Automatic, false},       {2039, FftMethod::Automatic, false},
    {2053, FftMethod::Automatic, true},       {4096, FftMethod::Automatic, false},
    {4099, FftMethod::Automatic, true},       {65536, FftMethod::Automatic, false},
    {65537, FftMethod::Automatic, true},      {65537, FftMethod::Fftw, false},
    {999983, FftMethod::Automatic, true},
};

TEST(RealFftPlan, ForwardAndBackwardEqualThePlainSumsOnEveryKindOfLength) {
    for (const auto& [n, method, primeConvolution] : kLengths) {
        SCOPED_TRACE(testing::Message() << "n = " << n << ", method " << static_cast<int>(method));
        const RealFftPlan forward(n, FftDirection::Forward, method);
        const RealFftPlan backward(n, FftDirection::Backward, method);
        EXPECT_EQ(forward.usesPrimeConvolution(), primeConvolution);
        EXPECT_EQ(backward.usesPrimeConvolution(), primeConvolution);
        const std::vector<LongComplex> roots = rootsOfUnity(n);
        const std::size_t bins = n / 2 + 1;

        // Forward, on noise with an offset (a large bin 0).
        const std::vector<double> x = test::ar2Noise(n, 0.5, -0.3, 1.0, static_cast<unsigned>(n));
        std::vector<double> data(n);
        for (std::size_t j = 0; j < n; ++j)
            data[j] = x[j] + 3.0;
        FftBuffer<double> in(n);
        FftBuffer<fftw_complex> out(bins);
        std::copy(data.begin(), data.end(), in.data());
        forward.forward(in.data(), out.data());
        double largest = 0.0, worst = 0.0;
        for (std::size_t k : checkedIndices(bins)) {
            const LongComplex expected = plainBin(data, k, roots);
            largest = std::max(largest, static_cast<double>(std::abs(expected)));
            worst = std::max(worst, static_cast<double>(std::abs(
                                        LongComplex(out[k][0], out[k][1]) - expected)));
        }
        EXPECT_LE(worst, 1e-13 * largest) << "forward";

        // Backward, from bins of random size and phase (the imaginary parts of
        // bin 0 and of an even n's bin n/2 are ignored).
        FftBuffer<fftw_complex> spectrum(bins);
        std::vector<LongComplex> given(bins);
        const std::vector<double> noise = test::whiteNoise(2 * bins, 1.0, 99);
        for (std::size_t k = 0; k < bins; ++k) {
            spectrum[k][0] = noise[2 * k];
            spectrum[k][1] = noise[2 * k + 1];
            given[k] = {noise[2 * k], noise[2 * k + 1]};
        }
        given[0].imag(0.0L);
        if (n % 2 == 0) given[n / 2].imag(0.0L);
        FftBuffer<double> samples(n);
        backward.backward(spectrum.data(), samples.data());
        largest = worst = 0.0;
        for (std::size_t j : checkedIndices(n)) {
            // x_j = X_0 + sum over k = 1 .. n-1 of X_k exp(+2 pi i j k / n),
            // X_(n-k) = conj(X_k).
            long double sum = given[0].real();
            for (std::size_t k = 1; k < bins; ++k) {
                const std::size_t index = k * j % n;
                const long double term = (given[k] * std::conj(roots[index])).real();
                sum += (n % 2 == 0 && k == n / 2) ? term : 2.0L * term;
            }
            largest = std::max(largest, static_cast<double>(std::abs(sum)));
            worst = std::max(worst, std::abs(samples[j] - static_cast<double>(sum)));
        }
        EXPECT_LE(worst, 1e-13 * largest) << "backward";
    }
}

// Spectra known exactly: an impulse at j0 has the bins exp(-2 pi i j0 k / n); a
// cosine on bin k0 has n/2 there and nothing elsewhere; a constant c has n c in
// bin 0. Backward, the bins give the signals back times n.
TEST(RealFftPlan, PrimeConvolutionGivesKnownSpectraAndTheirSignalsBack) {
    const std::size_t lengths[] = {3, 5, 2053, 65537};
    for (std::size_t n : lengths) {
        SCOPED_TRACE(testing::Message() << "n = " << n);
        const RealFftPlan forward(n, FftDirection::Forward, FftMethod::PrimeConvolution);
        const RealFftPlan backward(n, FftDirection::Backward, FftMethod::PrimeConvolution);
        const std::size_t bins = n / 2 + 1, j0 = n / 3 + 1, k0 = n / 2;
        const double dn = static_cast<double>(n);
        struct Known {
            std::function<double(std::size_t)> signal;
            std::function<std::complex<double>(std::size_t)> bin;
        };
        const Known cases[] = {
            {[&](std::size_t t) { return t == j0 ? 1.0 : 0.0; },
             [&](std::size_t k) {
                 return std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(j0 * k % n) / dn);
             }},
            {[&](std::size_t t) {
                 return std::cos(2.0 * std::numbers::pi * static_cast<double>(k0 * t % n) / dn);
             },
             [&](std::size_t k) { return std::complex<double>(k == k0 ? dn / 2.0 : 0.0, 0.0); }},
            {[](std::size_t) { return -2.5; },
             [&](std::size_t k) { return std::complex<double>(k == 0 ? -2.5 * dn : 0.0, 0.0); }},
        };
        for (const Known& known : cases) {
            FftBuffer<double> x(n), back(n);
            FftBuffer<fftw_complex> X(bins);
            for (std::size_t t = 0; t < n; ++t)
                x[t] = known.signal(t);
            forward.forward(x.data(), X.data());
            for (std::size_t k = 0; k < bins; ++k) {
                ASSERT_TRUE(test::isNear(X[k][0], known.bin(k).real(), 1e-12 * dn)) << "bin " << k;
                ASSERT_TRUE(test::isNear(X[k][1], known.bin(k).imag(), 1e-12 * dn)) << "bin " << k;
            }
            backward.backward(X.data(), back.data());
            for (std::size_t t = 0; t < n; ++t)
                ASSERT_TRUE(test::isNear(back[t] / dn, known.signal(t), 1e-12)) << "sample " << t;
        }
    }
}

// Long prime lengths run the two halves of the convolution on two threads, the
// band-pass filter its two half-length transforms; where no thread can be
// started they run one after the other, with the same bits as result.
TEST(RealFftPlan, TwoThreadedTransformsGiveTheSameBitsOnOneThread) {
    const std::size_t n = 65537;
    const RealFftPlan forward(n, FftDirection::Forward);
    const RealFftPlan backward(n, FftDirection::Backward);
    ASSERT_TRUE(forward.usesPrimeConvolution());
    const std::vector<double> x = test::whiteNoise(n, 1.0, 5);
    auto run = [&] {
        FftBuffer<double> in(n), out(n);
        FftBuffer<fftw_complex> bins(n / 2 + 1);
        std::copy(x.begin(), x.end(), in.data());
        forward.forward(in.data(), bins.data());
        std::vector<double> result(2 * (n / 2 + 1));
        std::memcpy(result.data(), bins.data(), result.size() * sizeof(double));
        backward.backward(bins.data(), out.data());
        result.insert(result.end(), out.data(), out.data() + n);
        return result;
    };
    // The band-pass filter splits its transforms of long even lengths the same
    // way.
    auto filter = [&](std::size_t length) {
        std::vector<double> y(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(length));
        fourierBandPass(y, 20.0, 200.0);
        return y;
    };
    const std::vector<double> twoThreads = run();
    const std::vector<double> filteredOnTwo = filter(65536), primeOnTwo = filter(65537);
    refuseWorkerThreads = true;
    const std::vector<double> oneThread = run();
    const std::vector<double> filteredOnOne = filter(65536), primeOnOne = filter(65537);
    refuseWorkerThreads = false;
    EXPECT_EQ(filteredOnTwo, filteredOnOne);
    EXPECT_EQ(primeOnTwo, primeOnOne);
    EXPECT_EQ(std::memcmp(twoThreads.data(), oneThread.data(), twoThreads.size() * sizeof(double)), 0);
    EXPECT_EQ(run(), twoThreads);
}

// The filter as first written: the detrended record mirrored to 2n samples,
// FFTW's own transform of length 2n, the bins outside the band cleared, FFTW's
// inverse, the first n samples.
std::vector<double> bandPassAtFullLength(std::vector<double> x, double tmin, double tmax) {
    const std::size_t n = x.size(), length = 2 * n;
    const BandPeriods band = bandPeriodsFor(n, tmin, tmax);
    const double middle = 0.5 * static_cast<double>(n - 1);
    long double mean = 0.0L, moment = 0.0L, spread = 0.0L;
    for (double v : x)
        mean += v;
    mean /= n;
    for (std::size_t t = 0; t < n; ++t) {
        moment += (t - middle) * (x[t] - mean);
        spread += (t - middle) * (t - middle);
    }
    const long double slope = spread > 0 ? moment / spread : 0.0L;
    FftBuffer<double> e(length);
    FftBuffer<fftw_complex> bins(n + 1);
    for (std::size_t t = 0; t < n; ++t)
        e[t] = e[length - 1 - t] = static_cast<double>(x[t] - mean - slope * (t - middle));
    RealFftPlan(length, FftDirection::Forward, FftMethod::Fftw).forward(e.data(), bins.data());
    for (std::size_t k = 0; k <= n; ++k) {
        const double f = static_cast<double>(k) / static_cast<double>(length);
        const bool kept = k > 0 && f * band.longest >= 1.0 - 1e-9 && f * band.shortest <= 1.0 + 1e-9;
        bins[k][0] = kept ? bins[k][0] / length : 0.0;
        bins[k][1] = kept ? bins[k][1] / length : 0.0;
    }
    RealFftPlan(length, FftDirection::Backward, FftMethod::Fftw).backward(bins.data(), e.data());
    return {e.data(), e.data() + n};
}

TEST(FourierBandPass, HalfLengthTransformsEqualTheMirroredRecordTransformedAtFullLength) {
    struct Case {
        std::size_t n;
        double tmin, tmax;
    };
    // Whole band, one bin, the program's band of 20 to 200 samples, a band
    // reaching the longest period, on odd, even, prime and round lengths.
    const Case cases[] = {{1, kNaN, kNaN},    {2, kNaN, kNaN},    {3, 2, 6},           {5, 2, 3},
                          {17, 3, 10},        {128, 7, 7},        {2053, 20, 200},     {4099, kNaN, kNaN},
                          {65536, 20, 200},   {65537, 20, 200},   {65537, 100, kNaN},  {65537, 13.1, 13.1},
                          {65536, kNaN, kNaN}, {65538, 2, 50},   {999983, 20, 200},  {1000000, 20, 200}};
    for (const auto& [n, tmin, tmax] : cases) {
        SCOPED_TRACE(testing::Message() << "n = " << n << ", periods " << tmin << " " << tmax);
        std::vector<double> x = test::ar2Noise(n, 0.75, -0.5, 1.0, static_cast<unsigned>(n));
        for (std::size_t t = 0; t < n; ++t)
            x[t] += 0.01 * static_cast<double>(t) + 4.0;
        const std::vector<double> expected = bandPassAtFullLength(x, tmin, tmax);
        double largest = 0.0;
        for (double v : x)
            largest = std::max(largest, std::abs(v));
        fourierBandPass(x, tmin, tmax);
        EXPECT_TRUE(test::allNear(x, expected, 1e-12 * largest));
    }
}

// The mirrored record of cos(pi k (t + 1/2) / n) is the cosine of frequency
// k / 2n of the 2n samples, one bin exactly; for even k it is symmetric about
// the middle, so step 1 of the filter (mean and line) takes nothing from it. It
// passes whole inside the band and vanishes outside.
TEST(FourierBandPass, ACosineOnABinOfTheMirroredRecordPassesWholeOrVanishes) {
    struct Case {
        std::size_t n, k;
        double tmin, tmax;
        bool passes;
    };
    const Case cases[] = {{3, 2, 2, 6, true},           {7, 4, 2, 3, false},
                          {2053, 206, 10, 30, true},    {2053, 206, 20, 200, false},
                          {65537, 6554, 15, 25, true},  {65537, 6554, 25, 200, false},
                          {999983, 20000, 20, 200, true}, {999983, 300000, 20, 200, false},
                          {1000000, 10000, 20, 200, true}, {1000000, 10002, 2, 199.9, false}};
    for (const auto& [n, k, tmin, tmax, passes] : cases) {
        SCOPED_TRACE(testing::Message() << "n = " << n << ", k = " << k);
        std::vector<double> x(n);
        for (std::size_t t = 0; t < n; ++t) // angle pi k (2t + 1) / 2n, reduced exactly
            x[t] = std::cos(std::numbers::pi * static_cast<double>(k * (2 * t + 1) % (4 * n)) /
                            static_cast<double>(2 * n));
        const std::vector<double> expected = passes ? x : std::vector<double>(n, 0.0);
        fourierBandPass(x, tmin, tmax);
        EXPECT_TRUE(test::allNear(x, expected, 1e-12));
    }
}

// The definition by plain sums in long double: the line through the ends
// removed, bins 0 .. m/2 of the rest (the bin m/2 of an even m once, the others
// as +- pairs) evaluated at t = j n/m - 1, the line added back.
TEST(FourierResample, PrimeLengthsEqualTheKeptBinsSummedAtTheNewPositions) {
    const std::pair<std::size_t, double> cases[] = {
        {2053, 2.5}, {4099, 3.7}, {4099, 1.0}, {65537, 64.0}, {999983, 10000.0}};
    for (const auto& [n, step] : cases) {
        SCOPED_TRACE(testing::Message() << "n = " << n << ", step " << step);
        const std::vector<double> x = test::ar2Noise(n, 0.75, -0.5, 1.0, static_cast<unsigned>(n));
        const Resampled r = fourierResample(x, step, n);
        const std::size_t m = r.values.size();
        ASSERT_EQ(m, static_cast<std::size_t>(std::floor(n / step)));
        const long double slope = (static_cast<long double>(x.back()) - x.front()) / (n - 1);
        std::vector<double> rest(n);
        for (std::size_t t = 0; t < n; ++t)
            rest[t] = static_cast<double>(x[t] - x.front() - slope * t);
        // Long records: every output for few bins, or a few outputs.
        const std::vector<LongComplex> roots = rootsOfUnity(n);
        std::vector<LongComplex> bins(m / 2 + 1);
        for (std::size_t k = 0; k <= m / 2; ++k)
            bins[k] = plainBin(rest, k, roots);
        double largest = 0.0;
        for (double v : x)
            largest = std::max(largest, std::abs(v));
        for (std::size_t j : checkedIndices(m)) {
            const long double at = (j + 1) * (static_cast<long double>(n) / m) - 1.0L;
            long double sum = 0.0L;
            for (std::size_t k = 0; k <= m / 2; ++k) {
                const long double w = 2.0L * std::numbers::pi_v<long double> * k * at / n;
                const bool single = k == 0 || (m % 2 == 0 && k == m / 2);
                sum += (single ? 1.0L : 2.0L) * (bins[k] * std::polar(1.0L, w)).real();
            }
            const long double expected = sum / n + x.front() + slope * at;
            ASSERT_TRUE(test::isNear(r.values[j], static_cast<double>(expected), 1e-12 * largest))
                << "output " << j;
        }
    }
}

} // namespace
} // namespace tarnic
