// Morlet transform: the period grid, the normalisation (unit wavelet energy,
// flat white-noise power), the ridge of sinusoids and chirps, the cone of
// influence, and MorletWaveSvan_dll as the program loads it.
#include "numeric/dwt.h"
#include "numeric/morlet.h"
#include "numeric/workers.h"
#include "numeric/tarnic_api.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <thread>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using test::isNear;

// Row of the greatest |W|^2 at sample t.
std::size_t ridgeRow(const MorletTransform& w, std::size_t t) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < w.periods.size(); ++i)
        if (w.power[i * w.samples + t] > w.power[best * w.samples + t]) best = i;
    return best;
}

std::size_t spectrumPeak(const MorletTransform& w) {
    return static_cast<std::size_t>(std::max_element(w.spectrum.begin(), w.spectrum.end()) -
                                    w.spectrum.begin());
}

// |W|^2 of A cos(2 pi t / P) at a row of Fourier period `row`, away from the ends.
double sinusoidRidge(double amplitude, double period, double row) {
    const double s = row / morletFourierFactor();
    const double d = s * 2.0 * std::numbers::pi / period - kMorletOmega0;
    return std::sqrt(std::numbers::pi) / 2.0 * amplitude * amplitude * s * std::exp(-d * d);
}

TEST(MorletGrid, FourierFactorOfOmegaSix) {
    EXPECT_TRUE(isNear(morletFourierFactor(), 1.0330436, 5e-8));
    EXPECT_TRUE(isNear(morletFourierFactor(0.0), 4.0 * std::numbers::pi / std::sqrt(2.0), 1e-15));
}

TEST(MorletGrid, PeriodsEvenInLogarithmWithExactEnds) {
    // As the window labels row i: lg Smin + i (lg Smax - lg Smin) / (count - 1).
    const std::vector<double> p = morletPeriods(2.0, 2500.0, 200);
    ASSERT_EQ(p.size(), 200u);
    EXPECT_EQ(p.front(), 2.0);
    EXPECT_EQ(p.back(), 2500.0);
    for (std::size_t i = 0; i < p.size(); ++i)
        ASSERT_TRUE(isNear(std::log10(p[i]),
                           std::log10(2.0) + i * (std::log10(2500.0) - std::log10(2.0)) / 199.0,
                           1e-13));
    EXPECT_EQ(morletPeriods(3.0, 9.0, 1), std::vector<double>{3.0});
    EXPECT_TRUE(morletPeriods(3.0, 9.0, 0).empty());
}

TEST(MorletGrid, TransformLengthIsAPowerOfTwoAtLeastTwiceTheSeries) {
    EXPECT_EQ(morletTransformLength(1), 2u);
    EXPECT_EQ(morletTransformLength(16), 32u);
    EXPECT_EQ(morletTransformLength(17), 64u);
    EXPECT_EQ(morletTransformLength(10000), 32768u);
}

TEST(MorletTransform, WaveletHasUnitEnergyAtEveryScale) {
    // The energy of an impulse's transform is the wavelet's, 1 at every scale
    // away from the Nyquist end: this is E|W|^2 = sigma^2 for white noise.
    const std::size_t n = 4096;
    std::vector<double> x(n, 0.0);
    x[n / 2] = 1.0;
    const MorletTransform w = morletTransform(x, morletPeriods(3.0, 256.0, 12));
    for (std::size_t i = 0; i < w.periods.size(); ++i) {
        double energy = 0.0;
        for (std::size_t t = 0; t < n; ++t)
            energy += w.power[i * n + t];
        EXPECT_TRUE(isNear(energy, 1.0, 1e-3)) << "period " << w.periods[i];
    }
    // At 2 samples half the wavelet's spectrum lies beyond the Nyquist frequency.
    const MorletTransform nyquist = morletTransform(x, std::vector<double>{2.0});
    double energy = 0.0;
    for (double v : nyquist.power)
        energy += v;
    EXPECT_GT(energy, 0.4);
    EXPECT_LT(energy, 0.7);
}

TEST(MorletTransform, WhiteNoisePowerIsItsVarianceOnEveryRow) {
    const std::vector<double> x = test::whiteNoise(16384, 2.0, 4711);
    const MorletTransform w = morletTransform(x, morletPeriods(4.0, 32.0, 7));
    double mean = 0.0;
    for (double v : w.spectrum) {
        EXPECT_TRUE(isNear(v, 4.0, 0.0, 0.15));
        mean += v / static_cast<double>(w.spectrum.size());
    }
    EXPECT_TRUE(isNear(mean, 4.0, 0.0, 0.06));
}

TEST(MorletTransform, SinusoidRidgeAndSpectrumStandAtItsPeriod) {
    const std::size_t n = 4096;
    const std::vector<double> periods = morletPeriods(2.0, n / 4.0, 200);
    for (double period : {13.0, 50.0, 333.0}) {
        const MorletTransform w = morletTransform(test::sinusoid(n, 1.0 / period, 1.5), periods);
        const std::size_t ridge = ridgeRow(w, n / 2);
        EXPECT_TRUE(isNear(periods[ridge], period, 0.0, 0.02)) << period;
        EXPECT_TRUE(isNear(periods[spectrumPeak(w)], period, 0.0, 0.02)) << period;
        EXPECT_TRUE(isNear(w.power[ridge * n + n / 2], sinusoidRidge(1.5, period, periods[ridge]),
                           0.0, 0.01))
            << period;
    }
}

TEST(MorletTransform, SpectrumLeavesOutTheConeOfInfluence) {
    // A period of 400 in 4096 samples: the cone covers a quarter of the record,
    // where |W|^2 falls towards the padding. Outside it the average is the ridge
    // value; with the cone it would be some 10 % lower.
    const std::size_t n = 4096;
    const std::vector<double> periods{400.0};
    const MorletTransform w = morletTransform(test::sinusoid(n, 1.0 / 400.0), periods);
    EXPECT_TRUE(isNear(w.spectrum[0], sinusoidRidge(1.0, 400.0, 400.0), 0.0, 0.03));
    EXPECT_LT(w.power[0], 0.7 * w.spectrum[0]);
}

TEST(MorletTransform, ChirpRidgeMovesToShorterPeriodsAsTheFrequencyRises) {
    // Frequency rising linearly from 1/200 to 1/20 cycles per sample.
    const std::size_t n = 4096;
    const double f0 = 1.0 / 200.0, f1 = 1.0 / 20.0;
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) {
        const double u = static_cast<double>(t);
        x[t] = std::cos(2.0 * std::numbers::pi * (f0 * u + (f1 - f0) * u * u / (2.0 * n)));
    }
    const std::vector<double> periods = morletPeriods(2.0, n / 4.0, 200);
    const MorletTransform w = morletTransform(x, periods);
    double previous = std::numeric_limits<double>::infinity();
    for (std::size_t t : {n / 5, 2 * n / 5, 3 * n / 5, 4 * n / 5}) {
        const double ridge = periods[ridgeRow(w, t)];
        const double instantaneous = 1.0 / (f0 + (f1 - f0) * static_cast<double>(t) / n);
        EXPECT_TRUE(isNear(ridge, instantaneous, 0.0, 0.1)) << t;
        EXPECT_LT(ridge, previous);
        previous = ridge;
    }
}

TEST(MorletTransform, MeanIsRemovedAndAConstantGivesZeros) {
    const std::vector<double> periods = morletPeriods(2.0, 64.0, 9);
    const MorletTransform flat = morletTransform(std::vector<double>(256, 1e3), periods);
    for (double v : flat.power)
        ASSERT_EQ(v, 0.0);
    for (double v : flat.spectrum)
        ASSERT_EQ(v, 0.0);
    const std::vector<double> x = test::whiteNoise(256, 1.0, 3);
    std::vector<double> shifted = x;
    for (double& v : shifted)
        v += 250.0;
    const MorletTransform a = morletTransform(x, periods), b = morletTransform(shifted, periods);
    for (std::size_t k = 0; k < a.power.size(); ++k)
        ASSERT_TRUE(isNear(b.power[k], a.power[k], 1e-10, 1e-9));
}

class MorletBinding : public ::testing::Test {
  protected:
    using Routine = void (*)(std::int32_t*, const float*, float*, float*, std::int32_t*, float*,
                             float*);
    void SetUp() override {
        ASSERT_NE(handle, nullptr) << dlerror();
        run = reinterpret_cast<Routine>(dlsym(handle, "MorletWaveSvan_dll"));
        ASSERT_NE(run, nullptr);
    }
    void TearDown() override {
        if (handle) dlclose(handle);
    }

    void* handle = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
    Routine run = nullptr;
};

TEST_F(MorletBinding, WindowCallFillsMapRowByRowAndTheSpectrum) {
    std::int32_t n = 1024, rows = 128;
    const std::vector<float> x = test::toFloat(test::sinusoid(1024, 1.0 / 40.0, 2.0));
    float smin = 2.0f, smax = 256.0f;
    std::vector<float> map(static_cast<std::size_t>(n * rows)),
        powers(static_cast<std::size_t>(rows));
    run(&n, x.data(), &smin, &smax, &rows, map.data(), powers.data());
    EXPECT_EQ(smin, 2.0f);
    EXPECT_EQ(smax, 256.0f);

    // Row i stands at lg Smin + i (lg Smax - lg Smin) / (rows - 1), as the window
    // labels it; the map holds log10 |W|^2 of the transform at those periods.
    const std::vector<double> periods = morletPeriods(2.0, 256.0, 128);
    const MorletTransform w = morletTransform(std::vector<double>(x.begin(), x.end()), periods);
    const double floor = 1e-10 * *std::max_element(w.power.begin(), w.power.end());
    std::size_t best = 0;
    for (std::size_t i = 0; i < periods.size(); ++i) {
        if (map[i * 1024 + 512] > map[best * 1024 + 512]) best = i;
        ASSERT_TRUE(isNear(powers[i], w.spectrum[i], 0.0, 1e-6));
        for (std::size_t t : {0u, 300u, 512u, 1023u})
            ASSERT_TRUE(isNear(map[i * 1024 + t],
                               std::log10(std::max(w.power[i * 1024 + t], floor)), 1e-5, 1e-6));
    }
    EXPECT_EQ(best, ridgeRow(w, 512));
    EXPECT_TRUE(isNear(
        std::pow(10.0, std::log10(2.0) + best * (std::log10(256.0) - std::log10(2.0)) / 127.0),
        40.0, 0.0, 0.03));
}

TEST_F(MorletBinding, ScaleBoundsAreRepairedAndWrittenBack) {
    const std::vector<float> x = test::toFloat(test::whiteNoise(400, 1.0, 8));
    std::int32_t n = 400, rows = 50;
    std::vector<float> map(400 * 50), powers(50);
    const auto bounds = [&](float lo, float hi) {
        run(&n, x.data(), &lo, &hi, &rows, map.data(), powers.data());
        return std::pair{lo, hi};
    };
    EXPECT_EQ(bounds(0.5f, 100.0f), std::pair(2.0f, 100.0f));
    EXPECT_EQ(bounds(3.0f, std::numeric_limits<float>::quiet_NaN()), std::pair(3.0f, 100.0f));
    EXPECT_EQ(bounds(3.0f, 1e6f), std::pair(3.0f, 400.0f));
    EXPECT_EQ(bounds(8.0f, 5.0f), std::pair(8.0f, 8.0f));
    EXPECT_EQ(bounds(std::numeric_limits<float>::quiet_NaN(), 50.0f), std::pair(2.0f, 50.0f));
}

TEST_F(MorletBinding, ConstantFragmentGivesTheFiniteFloor) {
    std::int32_t n = 64, rows = 50;
    const std::vector<float> x(64, 7.0f);
    float smin = 2.0f, smax = 16.0f;
    std::vector<float> map(64 * 50, 1.0f), powers(50, 1.0f);
    run(&n, x.data(), &smin, &smax, &rows, map.data(), powers.data());
    for (float v : map)
        ASSERT_EQ(v, static_cast<float>(std::log10(double{std::numeric_limits<float>::min()})));
    for (float v : powers)
        ASSERT_EQ(v, std::numeric_limits<float>::min());
}

// On a system that refuses new threads the work runs on the calling thread and
// gives the same results.
TEST(Workers, RefusedThreadsChangeNoResult) {
    std::vector<double> x(3000);
    for (std::size_t t = 0; t < x.size(); ++t) x[t] = std::sin(0.05 * t) + 0.3 * std::cos(0.9 * t * t / 3000);
    const std::vector<double> periods = morletPeriods(2.0, 500.0, 40);
    const MorletTransform threaded = morletTransform(x, periods);

    refuseWorkerThreads = true;
    const MorletTransform alone = morletTransform(x, periods);
    std::set<std::thread::id> threads;
    std::mutex guard;
    forEachIndex(1000, [&](std::size_t, std::size_t) {
        const std::lock_guard lock(guard);
        threads.insert(std::this_thread::get_id());
    });
    std::future<std::thread::id> later = startWorker([] { return std::this_thread::get_id(); });
    refuseWorkerThreads = false;

    EXPECT_EQ(alone.power, threaded.power);
    EXPECT_EQ(alone.spectrum, threaded.spectrum);
    EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
    EXPECT_EQ(later.get(), std::this_thread::get_id());
}

} // namespace
} // namespace tarnic
