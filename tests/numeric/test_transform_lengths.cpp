// Real transforms of every kind of length (numeric/fft_plans.h), the prime-length
// convolution above all, against plain sums in long double; and the band-pass
// filter, which runs on such transforms, on awkward lengths against the
// straightforward method and cosines of known answer, on one thread and on two.
#include "numeric/bandpass.h"
#include "numeric/fft_plans.h"
#include "numeric/workers.h"
#include "spectral_support.h"

#include <complex>
#include <cstring>

namespace tarnic {
namespace {

constexpr long double kTurn = 2.0L * std::numbers::pi_v<long double>;
constexpr FftMethod kAuto = FftMethod::Automatic, kPrime = FftMethod::PrimeConvolution;
enum Signal { Noise, Impulse, Cosine };

// Sizes 1, 2, small primes (where the zero-padded convolution is tightest),
// powers of two and their neighbours, primes on both sides of
// primeConvolutionFrom (2039, 2053), 65,537 both ways and 999,983; with the
// method the plan must take. The signal is noise with an offset (a large bin 0)
// or one of known spectrum, which the plain sums reproduce to long double: an
// impulse at j0 = n/3 + 1 (bins exp(-2 pi i j0 k / n)) or the cosine on bin
// n/2 of odd n (n/2 there, nothing elsewhere).
// clang-format off
const std::tuple<std::size_t, FftMethod, bool, Signal> kLengths[] = {
    {1, kAuto, false, Noise},      {2, kAuto, false, Noise}, {65537, FftMethod::Fftw, false, Noise},
    {3, kPrime, true, Noise},      {3, kPrime, true, Impulse},    {5, kPrime, true, Noise},
    {5, kPrime, true, Cosine},     {7, kPrime, true, Noise},      {11, kPrime, true, Noise},
    {13, kPrime, true, Noise},     {17, kPrime, true, Noise},     {127, kPrime, true, Noise},
    {128, kAuto, false, Noise},    {129, kAuto, false, Noise},    {2039, kAuto, false, Noise},
    {2053, kAuto, true, Noise},    {2053, kAuto, true, Impulse},  {2053, kPrime, true, Cosine},
    {4099, kAuto, true, Noise},    {65536, kAuto, false, Noise},  {65537, kAuto, true, Noise},
    {65537, kAuto, true, Impulse}, {65537, kAuto, true, Cosine},  {999983, kAuto, true, Noise}};
// clang-format on

// Forward against the plain sums (every bin of a short record, of a long one
// both ends and about 60 between: a plain sum costs O(n) per bin), to 1e-12 n
// as |x| < 10; backward from those bins, whose inverse is n x, after giving
// bin 0 an imaginary part that must drop out.
TEST(RealFftPlan, ForwardAndBackwardEqualThePlainSumsOnEveryKindOfLength) {
    for (const auto& [n, method, primeConvolution, signal] : kLengths) {
        SCOPED_TRACE(testing::Message() << n << " " << static_cast<int>(method) << " " << signal);
        const RealFftPlan forward(n, FftDirection::Forward, method);
        const RealFftPlan backward(n, FftDirection::Backward, method);
        EXPECT_EQ(forward.usesPrimeConvolution(), primeConvolution);
        EXPECT_EQ(backward.usesPrimeConvolution(), primeConvolution);
        std::vector<std::complex<long double>> roots(n); // exp(-2 pi i j / n), by j k mod n
        for (std::size_t j = 0; j < n; ++j)
            roots[j] = std::polar(1.0L, -kTurn * j / n);
        const auto noise = test::ar2Noise(n, 0.5, -0.3, 1.0, static_cast<unsigned>(n));
        FftBuffer<double> x(n), out(n);
        FftBuffer<fftw_complex> X(n / 2 + 1);
        for (std::size_t t = 0; t < n; ++t)
            x[t] = signal == Impulse  ? (t == n / 3 + 1)
                   : signal == Cosine ? static_cast<double>(roots[n / 2 * t % n].real())
                                      : noise[t] + 3.0;
        forward.forward(x.data(), X.data());
        std::vector<long double> got, want;
        for (std::size_t k = 0; k <= n / 2; ++k) {
            if (n > 1400 && k >= 3 && k + 3 <= n / 2 && k % (n / 120) != 0) continue;
            std::complex<long double> sum = 0.0L;
            for (std::size_t j = 0; j < n; ++j)
                sum += static_cast<long double>(x[j]) * roots[j * k % n];
            got.insert(got.end(), {X[k][0], X[k][1]});
            want.insert(want.end(), {sum.real(), sum.imag()});
        }
        EXPECT_TRUE(test::allNear(got, want, 1e-12 * n)) << "forward";
        X[0][1] = 7.0;
        backward.backward(X.data(), out.data());
        std::ranges::for_each(out.span(), [&](double& v) { v /= static_cast<double>(n); });
        EXPECT_TRUE(test::allNear(out.span(), x.span(), 1e-12)) << "backward";
    }
}

// The filter as first written: the record less its least-squares line (its
// mean only touches bin 0, cleared anyway), mirrored to 2n samples, FFTW's own
// transform of length 2n, the bins outside the band (edges inclusive, to 1e-9)
// cleared, FFTW's inverse, the first n samples; scaled by 1 / 2n on the way.
// The sum of (t - middle)^2 is (n - 1) n (n + 1) / 12.
std::vector<double> bandPassAt2n(std::span<const double> x, double tmin, double tmax) {
    const std::size_t n = x.size(), length = 2 * n;
    const BandPeriods b = bandPeriodsFor(n, tmin, tmax);
    long double middle = (n - 1.0L) / 2, moment = 0.0L;
    for (std::size_t t = 0; t < n; ++t)
        moment += (t - middle) * x[t];
    const long double slope = n > 1 ? 12 * moment / ((n - 1.0L) * n * (n + 1.0L)) : 0.0L;
    FftBuffer<double> e(length);
    FftBuffer<fftw_complex> bins(n + 1);
    for (std::size_t t = 0; t < n; ++t)
        e[t] = e[length - 1 - t] = static_cast<double>((x[t] - slope * (t - middle)) / length);
    RealFftPlan(length, FftDirection::Forward, FftMethod::Fftw).forward(e.data(), bins.data());
    for (std::size_t k = 0; k <= n; ++k)
        if (k == 0 || k * b.longest < length * (1 - 1e-9) || k * b.shortest > length * (1 + 1e-9))
            bins[k][0] = bins[k][1] = 0.0;
    RealFftPlan(length, FftDirection::Backward, FftMethod::Fftw).backward(bins.data(), e.data());
    return {e.data(), e.data() + n};
}

// Noise on a trend (k = 0) against the filter at full length: the whole band
// (NaN periods), an empty one (7 to 7), one bin (6.4 to 6.4), bands high and
// low, on odd, even, prime and round lengths. k > 0: cos(pi k (t + 1/2) / n),
// whose mirrored record is the cosine of frequency k / 2n of the 2n samples,
// one bin exactly; for even k it is symmetric about the middle, so step 1 of
// the filter takes nothing from it; it passes whole inside the band and
// vanishes outside. Each row with worker threads and with every thread
// refused, to the bit.
TEST(FourierBandPass, HalfLengthTransformsEqualTheMirroredRecordTransformedAtFullLength) {
    // clang-format off
    const std::tuple<std::size_t, double, double, std::size_t, bool> cases[] = {
        {1, NAN, NAN, 0, 0},       {2, NAN, NAN, 0, 0},       {5, 2, 3, 0, 0},
        {17, 3, 10, 0, 0},         {128, 7, 7, 0, 0},         {128, 6.4, 6.4, 0, 0},
        {2053, 20, 200, 0, 0},     {4099, NAN, NAN, 0, 0},    {65536, NAN, NAN, 0, 0},
        {65537, 100, NAN, 0, 0},   {65538, 2, 50, 0, 0},      {1000000, 20, 200, 0, 0},
        {3, 2, 6, 2, 1},           {7, 2, 3, 4, 0},           {2053, 10, 30, 206, 1},
        {2053, 20, 200, 206, 0},   {65537, 15, 25, 6554, 1},  {65537, 25, 200, 6554, 0},
        {999983, 20, 200, 20000, 1},  {1000000, 20, 200, 10000, 1},  {1000000, 2, 199.9, 10002, 0}};
    // clang-format on
    EXPECT_EQ(fourierBandPass({}, 7.0, 3.0).shortest, 7.0); // no samples: the periods as given
    for (const auto& [n, tmin, tmax, k, passes] : cases) {
        SCOPED_TRACE(testing::Message() << n << " " << tmin << " " << tmax << " " << k);
        std::vector<double> x = test::ar2Noise(n, 0.75, -0.5, 1.0, static_cast<unsigned>(n));
        for (std::size_t t = 0; t < n; ++t) // angle pi k (2t + 1) / 2n, reduced exactly
            x[t] = k ? std::cos(kTurn * (k * (2 * t + 1) % (4 * n)) / (4 * n)) : x[t] + t / 100.0;
        const auto expected = k ? (passes ? x : std::vector(n, 0.0)) : bandPassAt2n(x, tmin, tmax);
        const double largest = std::max(1.0, std::ranges::max(x)); // the scale of the record
        std::vector<double> alone = x;
        refuseWorkerThreads = true;
        fourierBandPass(alone, tmin, tmax);
        refuseWorkerThreads = false;
        fourierBandPass(x, tmin, tmax);
        EXPECT_TRUE(test::allNear(x, expected, 1e-12 * largest));
        EXPECT_EQ(std::memcmp(x.data(), alone.data(), n * sizeof(double)), 0);
    }
}

} // namespace
} // namespace tarnic
