// Morlet transform: the period grid, the normalisation (unit wavelet energy,
// flat white-noise power), the ridge of sinusoids, the cone of influence,
// MorletWaveSvan_dll as the program loads it, and the fallback when no thread
// can be started.
#include "numeric/dwt.h" // forEachIndex
#include "numeric/morlet.h"
#include "numeric/tarnic_api.h"
#include "numeric/workers.h"
#include "numeric_support.h"

#include <atomic>
#include <thread>

namespace tarnic {
namespace {

using std::numbers::pi;
using namespace test;

// Row of the greatest |W|^2 at sample t.
std::size_t ridgeRow(const MorletTransform& w, std::size_t t) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < w.periods.size(); ++i)
        if (w.power[i * w.samples + t] > w.power[best * w.samples + t]) best = i;
    return best;
}

// |W|^2 of A cos(2 pi t / P) at a row of Fourier period `row`, away from the ends.
double sinusoidRidge(double amplitude, double period, double row) {
    const double s = row / morletFourierFactor();
    const double d = s * 2.0 * pi / period - kMorletOmega0;
    return std::sqrt(pi) / 2.0 * amplitude * amplitude * s * std::exp(-d * d);
}

TEST(MorletGrid, FourierFactorPeriodsEvenInLogarithmAndTransformLength) {
    EXPECT_NEAR(morletFourierFactor(), 1.0330436, 5e-8);
    EXPECT_NEAR(morletFourierFactor(0.0), 4.0 * pi / std::sqrt(2.0), 1e-15);
    // As the window labels row i: lg Smin + i (lg Smax - lg Smin) / (count - 1).
    const std::vector<double> p = morletPeriods(2.0, 2500.0, 200);
    ASSERT_EQ(p.size(), 200u);
    EXPECT_EQ(std::pair(p.front(), p.back()), std::pair(2.0, 2500.0));
    for (std::size_t i = 0; i < p.size(); ++i)
        ASSERT_NEAR(std::log10(p[i]), std::log10(2.0) + i * std::log10(1250.0) / 199.0, 1e-13);
    EXPECT_EQ(morletPeriods(3.0, 9.0, 1), std::vector<double>{3.0});
    EXPECT_TRUE(morletPeriods(3.0, 9.0, 0).empty());
    // A power of two at least twice the series.
    const std::size_t lengths[][2] = {{1, 2}, {16, 32}, {17, 64}, {10000, 32768}};
    for (const auto& [n, length] : lengths)
        EXPECT_EQ(morletTransformLength(n), length) << n;
}

// The energy of an impulse's transform is the wavelet's, 1 at every scale away
// from the Nyquist end (so E|W|^2 = sigma^2 for white noise); at 2 samples half
// the wavelet's spectrum lies beyond the Nyquist frequency.
TEST(MorletTransform, WaveletHasUnitEnergyAndWhiteNoisePowerIsItsVariance) {
    const std::vector<double> x = sampled(4096, [](double t) { return t == 2048 ? 1.0 : 0.0; });
    const std::vector<double> periods = morletPeriods(3.0, 256.0, 12);
    const MorletTransform w = morletTransform(x, periods);
    for (std::size_t i = 0; i < periods.size(); ++i)
        EXPECT_NEAR(sum(std::span(w.power).subspan(i * 4096, 4096)), 1.0, 1e-3) << i;
    const double half = sum(morletTransform(x, std::vector<double>{2.0}).power);
    EXPECT_TRUE(half > 0.4 && half < 0.7) << half;
    const MorletTransform noise =
        morletTransform(whiteNoise(16384, 2.0, 4711), morletPeriods(4.0, 32.0, 7));
    for (double v : noise.spectrum)
        EXPECT_TRUE(isNear(v, 4.0, 0.0, 0.15)) << v;
    EXPECT_TRUE(isNear(sum(noise.spectrum) / 7, 4.0, 0.0, 0.06));
}

TEST(MorletTransform, SinusoidRidgeAndSpectrumStandAtItsPeriodOutsideTheCone) {
    const std::size_t n = 4096;
    const std::vector<double> periods = morletPeriods(2.0, n / 4.0, 200);
    for (double period : {13.0, 50.0, 333.0}) {
        const MorletTransform w = morletTransform(sinusoid(n, 1.0 / period, 1.5), periods);
        const std::size_t ridge = ridgeRow(w, n / 2);
        const auto peak =
            std::max_element(w.spectrum.begin(), w.spectrum.end()) - w.spectrum.begin();
        EXPECT_TRUE(allNear(std::vector{periods[ridge], periods[peak]}, std::vector(2, period), 0.0,
                            0.02))
            << period;
        EXPECT_TRUE(isNear(w.power[ridge * n + n / 2], sinusoidRidge(1.5, period, periods[ridge]),
                           0.0, 0.01))
            << period;
    }
    // A period of 400: the cone covers a quarter of the record, where |W|^2 falls
    // towards the padding. Outside it the average is the ridge value; with the
    // cone it would be some 10 % lower.
    const MorletTransform w = morletTransform(sinusoid(n, 1.0 / 400.0), std::vector{400.0});
    EXPECT_TRUE(isNear(w.spectrum[0], sinusoidRidge(1.0, 400.0, 400.0), 0.0, 0.03));
    EXPECT_LT(w.power[0], 0.7 * w.spectrum[0]);
}

// The map holds log10 |W|^2 at the periods of the window's rows, floored at 1e-10
// of the largest value and at the smallest float (all of it for a constant
// fragment). Bounds below 2, beyond the fragment, reversed or not numbers are
// repaired and written back, and the rows follow the repaired bounds.
TEST(MorletBinding, WindowCallFillsTheMapRowByRowAndRepairsTheScaleBounds) {
    const auto run = dllRoutine<decltype(&MorletWaveSvan_dll)>("MorletWaveSvan_dll");
    ASSERT_NE(run, nullptr);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const double tiny = std::numeric_limits<float>::min();
    const std::vector<float> wave = toFloat(sinusoid(1024, 1.0 / 40.0, 2.0)), flat(1024, 7.0f);
    // clang-format off
    const std::tuple<const std::vector<float>*, float, float, float, float> cases[] = {
        {&wave, 2, 256, 2, 256}, {&wave, 0.5f, 100, 2, 100}, {&wave, 3, nan, 3, 256},
        {&wave, 3, 1e6f, 3, 1024}, {&wave, 8, 5, 8, 8}, {&wave, nan, 50, 2, 50},
        {&flat, 2, 256, 2, 256}};
    // clang-format on
    for (auto [x, lo, hi, repairedLo, repairedHi] : cases) {
        SCOPED_TRACE(testing::Message() << lo << " " << hi << (x == &flat ? " flat" : ""));
        std::int32_t n = 1024, rows = 128;
        std::vector<float> map(1024 * 128), powers(128);
        run(&n, x->data(), &lo, &hi, &rows, map.data(), powers.data());
        ASSERT_EQ(std::pair(lo, hi), std::pair(repairedLo, repairedHi));
        const MorletTransform w = morletTransform(toDouble(*x), morletPeriods(lo, hi, 128));
        const double floor =
            std::max(1e-10 * *std::max_element(w.power.begin(), w.power.end()), tiny);
        for (std::size_t i = 0; i < 128; ++i) {
            ASSERT_TRUE(isNear(powers[i], std::max(w.spectrum[i], tiny), 0.0, 1e-6)) << i;
            for (std::size_t t : {0u, 300u, 512u, 1023u})
                ASSERT_TRUE(isNear(map[i * 1024 + t],
                                   std::log10(std::max(w.power[i * 1024 + t], floor)), 1e-5, 1e-6));
        }
    }
}

// On a system that refuses new threads the work runs on the calling thread and
// gives the same results.
TEST(Workers, RefusedThreadsChangeNoResult) {
    const std::vector<double> x = randomWalk(3000, 7), periods = morletPeriods(2.0, 500.0, 40);
    const MorletTransform threaded = morletTransform(x, periods);
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> onCaller = 0, elsewhere = 0;
    refuseWorkerThreads = true;
    const MorletTransform alone = morletTransform(x, periods);
    forEachIndex(1000, [&](std::size_t, std::size_t) {
        ++(std::this_thread::get_id() == caller ? onCaller : elsewhere);
    });
    std::future<std::thread::id> later = startWorker([] { return std::this_thread::get_id(); });
    refuseWorkerThreads = false;
    EXPECT_EQ(std::pair(alone.power, alone.spectrum), std::pair(threaded.power, threaded.spectrum));
    EXPECT_EQ(std::pair(onCaller > 0, elsewhere.load()), std::pair(true, 0));
    EXPECT_EQ(later.get(), caller);
}

} // namespace
} // namespace tarnic
