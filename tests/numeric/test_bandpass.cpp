// The Fourier band-pass filter between two periods.
#include "numeric/bandpass.h"
#include "numeric/tarnic_api.h"
#include "tests/numeric/spectral_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using std::numbers::pi;
using test::isNear;
using test::sinusoid;


std::vector<double> bandPassed(std::vector<double> x, double tmin, double tmax) {
    fourierBandPass(x, tmin, tmax);
    return x;
}

std::vector<double> sum(std::initializer_list<std::vector<double>> parts) {
    std::vector<double> total(parts.begin()->size(), 0.0);
    for (const auto& part : parts)
        for (std::size_t t = 0; t < total.size(); ++t)
            total[t] += part[t];
    return total;
}

// Largest |a - b| over t in [first, last).
double largestDifference(const std::vector<double>& a, const std::vector<double>& b,
                         std::size_t first, std::size_t last) {
    double largest = 0.0;
    for (std::size_t t = first; t < last; ++t)
        largest = std::max(largest, std::abs(a[t] - b[t]));
    return largest;
}

TEST(BandPeriods, areOrderedAndHeldWithinTwoSamplesAndTwiceTheLength) {
    const BandPeriods plain = bandPeriodsFor(100, 5.0, 50.0);
    EXPECT_EQ(plain.shortest, 5.0);
    EXPECT_EQ(plain.longest, 50.0);
    const BandPeriods swapped = bandPeriodsFor(100, 50.0, 5.0);
    EXPECT_EQ(swapped.shortest, 5.0);
    EXPECT_EQ(swapped.longest, 50.0);
    const BandPeriods wide = bandPeriodsFor(100, 0.5, 1e9);
    EXPECT_EQ(wide.shortest, 2.0);
    EXPECT_EQ(wide.longest, 200.0);
    const BandPeriods unknown = bandPeriodsFor(100, std::nan(""), std::nan(""));
    EXPECT_EQ(unknown.shortest, 2.0);
    EXPECT_EQ(unknown.longest, 200.0);
}

TEST(FourierBandPass, passesASinusoidInsideTheBandAndStopsThoseOutsideForAnyLength) {
    // Odd, prime (997, 1009) and power-of-two lengths.
    for (std::size_t n : {1001u, 997u, 1009u, 1024u}) {
        const std::vector<double> inside = sinusoid(n, 1.0 / 20.0, 1.0, 0.7);
        const std::vector<double> x =
            sum({inside, sinusoid(n, 1.0 / 5.0, 1.0, 0.2), sinusoid(n, 1.0 / 200.0, 1.0, 1.9)});
        const std::vector<double> y = bandPassed(x, 12.0, 40.0);
        // Away from the ends (a tenth of the record on each side). The brick-wall
        // band lets the kinks of the mirror at the ends ring with an amplitude
        // that falls like 1 / distance: 2 to 3 % a hundred samples in.
        EXPECT_LT(largestDifference(y, inside, n / 10, n - n / 10), 0.05) << "n " << n;
        EXPECT_LT(largestDifference(y, inside, n / 3, n - n / 3), 0.015) << "n " << n;
        // What passes in the middle is the sinusoid with its amplitude.
        double power = 0.0;
        for (std::size_t t = n / 4; t < n - n / 4; ++t)
            power += y[t] * y[t];
        const double amplitude = std::sqrt(2.0 * power / static_cast<double>(n - 2 * (n / 4)));
        EXPECT_TRUE(isNear(amplitude, 1.0, 0.03)) << "n " << n;
    }
}

TEST(FourierBandPass, suppressesSinusoidsOutsideTheBand) {
    const std::size_t n = 2003;
    for (double period : {3.0, 6.0, 150.0, 900.0}) {
        const std::vector<double> y = bandPassed(sinusoid(n, 1.0 / period, 1.0, 0.4), 12.0, 40.0);
        EXPECT_LT(largestDifference(y, std::vector<double>(n, 0.0), n / 10, n - n / 10), 0.03)
            << "period " << period;
    }
}

TEST(FourierBandPass, aComponentOnABinAtTheBandEdgeIsKeptWhole) {
    // cos(2 pi (t + 1/2) / 20) over 1000 samples is exactly bin 100 of the mirrored
    // record of 2000: kept whole by a band that ends at 20, or is only 20.
    std::vector<double> x(1000);
    for (std::size_t t = 0; t < x.size(); ++t)
        x[t] = std::cos(2.0 * pi * (t + 0.5) / 20.0);
    EXPECT_TRUE(test::allNear(bandPassed(x, 20.0, 20.0), x, 1e-12));
    EXPECT_TRUE(test::allNear(bandPassed(x, 20.0, 35.0), x, 1e-12));
    EXPECT_TRUE(test::allNear(bandPassed(x, 10.0, 20.0), x, 1e-12));
    EXPECT_LT(largestDifference(bandPassed(x, 20.5, 35.0), std::vector<double>(1000, 0.0), 0, 1000),
              1e-12);
}

TEST(FourierBandPass, filteringTwiceChangesNearlyNothing) {
    const std::size_t n = 1501;
    const std::vector<double> x =
        sum({sinusoid(n, 1.0 / 17.0, 1.0, 0.3), sinusoid(n, 1.0 / 33.3, 0.6, 1.0),
             test::whiteNoise(n, 0.5, 41)});
    const std::vector<double> once = bandPassed(x, 15.0, 45.0);
    const std::vector<double> twice = bandPassed(once, 15.0, 45.0);
    EXPECT_LT(largestDifference(once, twice, 0, n), 0.01);
}

TEST(FourierBandPass, aStraightLineGivesNothingAndLeavesASinusoidOnItUndisturbed) {
    const std::size_t n = 1200;
    std::vector<double> line(n);
    for (std::size_t t = 0; t < n; ++t)
        line[t] = 40.0 + 0.25 * static_cast<double>(t);
    EXPECT_LT(largestDifference(bandPassed(line, 10.0, 2400.0), std::vector<double>(n, 0.0), 0, n),
              1e-9);
    const std::vector<double> wave = sinusoid(n, 1.0 / 30.0, 1.0, 0.0);
    const std::vector<double> y = bandPassed(sum({line, wave}), 15.0, 60.0);
    EXPECT_LT(largestDifference(y, wave, n / 20, n - n / 20), 0.03);
    EXPECT_LT(largestDifference(y, wave, 0, n), 0.15); // even at the ends
}

TEST(FourierBandPass, aStepRingsOnlyNearItselfNotAcrossTheRecord) {
    // The first half at 0 and the second at 1: a series that starts and ends at
    // different levels. A periodic transform without the mirror would see a
    // second jump at the ends and ring there.
    const std::size_t n = 2001;
    std::vector<double> step(n);
    for (std::size_t t = 0; t < n; ++t)
        step[t] = t < n / 2 ? 0.0 : 1.0;
    const std::vector<double> y = bandPassed(step, 10.0, 100.0);
    const std::vector<double> zero(n, 0.0);
    EXPECT_GT(largestDifference(y, zero, n / 2 - 20, n / 2 + 20), 0.2); // the step itself
    EXPECT_LT(largestDifference(y, zero, 0, n / 2 - 300), 0.02);
    EXPECT_LT(largestDifference(y, zero, n / 2 + 300, n), 0.02);
}

TEST(FourierBandPass, equalsTheMaskedTransformOfTheMirroredRecordSummedTermByTerm) {
    // The definition evaluated by plain sums over the 2n bins, against the FFT
    // paths (even n: transforms of length n; odd n: of length 2n).
    auto direct = [](std::vector<double> x, double tmin, double tmax) {
        const std::size_t n = x.size(), length = 2 * n;
        const BandPeriods band = bandPeriodsFor(n, tmin, tmax);
        double mean = 0.0, moment = 0.0, spread = 0.0;
        for (double v : x)
            mean += v / static_cast<double>(n);
        const double middle = 0.5 * static_cast<double>(n - 1);
        for (std::size_t t = 0; t < n; ++t) {
            moment += (t - middle) * (x[t] - mean);
            spread += (t - middle) * (t - middle);
        }
        std::vector<double> e(length);
        for (std::size_t t = 0; t < n; ++t)
            e[t] = e[length - 1 - t] =
                x[t] - mean - (spread > 0 ? moment / spread : 0.0) * (t - middle);
        std::vector<double> y(n, 0.0);
        for (std::size_t k = 1; k < length; ++k) {
            const double f = static_cast<double>(std::min(k, length - k)) / length;
            if (f * band.longest < 1.0 - 1e-9 || f * band.shortest > 1.0 + 1e-9) continue;
            double re = 0.0, im = 0.0;
            for (std::size_t t = 0; t < length; ++t) {
                re += e[t] * std::cos(2.0 * pi * k * t / length);
                im -= e[t] * std::sin(2.0 * pi * k * t / length);
            }
            for (std::size_t t = 0; t < n; ++t)
                y[t] += (re * std::cos(2.0 * pi * k * t / length) -
                         im * std::sin(2.0 * pi * k * t / length)) /
                        length;
        }
        return y;
    };
    struct Case {
        std::size_t n;
        double tmin, tmax;
    };
    for (const Case& c : {Case{1, 2, 2}, Case{2, 2, 4}, Case{3, 2, 6}, Case{4, 2, 3}, Case{64, 5, 20},
                          Case{97, 4, 30}, Case{128, 2, 256}, Case{250, 10, 10}, Case{521, 3, 50}}) {
        std::vector<double> x = test::ar2Noise(c.n, 0.75, -0.5);
        for (std::size_t t = 0; t < c.n; ++t)
            x[t] += 0.05 * t;
        const std::vector<double> expected = direct(x, c.tmin, c.tmax);
        fourierBandPass(x, c.tmin, c.tmax);
        EXPECT_TRUE(test::allNear(x, expected, 1e-11)) << "n = " << c.n;
    }
}

TEST(FourierBandPass, aConstantGivesZeros) {
    EXPECT_TRUE(test::allNear(bandPassed(std::vector<double>(99, 7.5), 2.0, 198.0),
                         std::vector<double>(99, 0.0), 1e-12));
}

TEST(FourierBandPassDll, filtersInPlaceAndReturnsTheBandUsed) {
    const std::size_t n = 999;
    const std::vector<double> inside = sinusoid(n, 1.0 / 25.0, 1.0, 0.0);
    std::vector<float> x = test::toFloat(sum({inside, sinusoid(n, 1.0 / 4.0, 1.0, 0.0)}));
    std::int32_t count = static_cast<std::int32_t>(n);
    float tmin = 1.0f, tmax = 60.0f; // 1 sample is below the shortest period there is
    FourBandPass_dll(x.data(), &count, &tmin, &tmax);
    EXPECT_EQ(count, 999);
    EXPECT_EQ(tmin, 2.0f);
    EXPECT_EQ(tmax, 60.0f);
    // 1 to 60 takes in the period 4 as well; 5 to 60 then drops it.
    x = test::toFloat(sum({inside, sinusoid(n, 1.0 / 4.0, 1.0, 0.0)}));
    tmin = 60.0f;
    tmax = 5.0f;
    FourBandPass_dll(x.data(), &count, &tmin, &tmax);
    EXPECT_EQ(tmin, 5.0f);
    EXPECT_EQ(tmax, 60.0f);
    double largest = 0.0;
    for (std::size_t t = n / 10; t < n - n / 10; ++t)
        largest = std::max(largest, std::abs(x[t] - inside[t]));
    EXPECT_LT(largest, 0.03);
}

} // namespace
} // namespace tarnic
