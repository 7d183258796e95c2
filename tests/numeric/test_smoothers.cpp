// The two trend smoothers: Gaussian kernel (Nadaraya-Watson) and local polynomial.
#include "numeric/kernsmooth.h"
#include "numeric/localpoly.h"
#include "numeric/tarnic_api.h"
#include "tests/numeric/spectral_support.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <span>
#include <stdexcept>
#include <vector>

namespace tarnic {
namespace {

using test::isNear;
using test::whiteNoise;


std::vector<double> kernelSmoothed(std::span<const double> x, double radius) {
    std::vector<double> y(x.size());
    gaussianKernelSmooth(x, radius, y);
    return y;
}

std::vector<double> polySmoothed(std::span<const double> x, std::size_t radius, std::size_t order) {
    std::vector<double> y(x.size());
    localPolynomialSmooth(x, radius, order, y);
    return y;
}

std::vector<double> reversed(std::vector<double> x) {
    std::reverse(x.begin(), x.end());
    return x;
}

// The Nadaraya-Watson average written out point by point, O(n r).
std::vector<double> directKernelSmooth(std::span<const double> x, double radius) {
    const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(x.size());
    const std::ptrdiff_t r = static_cast<std::ptrdiff_t>(std::floor(radius));
    const double sigma = radius / 3.0;
    std::vector<double> y(x.size());
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        double sum = 0.0, weights = 0.0;
        for (std::ptrdiff_t t = std::max<std::ptrdiff_t>(0, i - r); t <= std::min(n - 1, i + r);
             ++t) {
            const double w = std::exp(-0.5 * std::pow((t - i) / sigma, 2));
            sum += w * x[t];
            weights += w;
        }
        y[i] = sum / weights;
    }
    return y;
}

// Least squares on the window written out point by point: a monomial basis in
// the window's abscissa scaled to [-1, 1], solved by pivoted QR, O(n r p^2).
std::vector<double> directLocalPolynomial(std::span<const double> x, std::size_t radius,
                                          std::size_t order) {
    const std::size_t n = x.size();
    const std::size_t m = std::min(2 * radius + 1, n);
    const std::size_t p = std::min({order, std::size_t{10}, m - 1});
    std::vector<double> y(n);
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t lo = i < radius ? 0 : std::min(i - radius, n - m);
        const double centre = static_cast<double>(lo) + 0.5 * static_cast<double>(m - 1);
        const double half = m > 1 ? 0.5 * static_cast<double>(m - 1) : 1.0;
        Eigen::MatrixXd a(m, p + 1);
        Eigen::VectorXd b(m);
        for (std::size_t t = 0; t < m; ++t) {
            const double u = (static_cast<double>(lo + t) - centre) / half;
            for (std::size_t k = 0; k <= p; ++k)
                a(t, k) = std::pow(u, k);
            b(t) = x[lo + t];
        }
        const Eigen::VectorXd c = a.colPivHouseholderQr().solve(b);
        const double u = (static_cast<double>(i) - centre) / half;
        double value = 0.0;
        for (std::size_t k = 0; k <= p; ++k)
            value += c(k) * std::pow(u, k);
        y[i] = value;
    }
    return y;
}

// sum_k c_k u^k with u = 2t / (n-1) - 1 and c_k in [-1, 1] from a fixed seed.
std::vector<double> randomPolynomial(std::size_t n, std::size_t degree, unsigned seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> coefficient(-1.0, 1.0);
    std::vector<double> c(degree + 1);
    for (double& v : c)
        v = coefficient(random);
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) {
        const double u = 2.0 * static_cast<double>(t) / static_cast<double>(n - 1) - 1.0;
        double value = 0.0;
        for (std::size_t k = degree + 1; k-- > 0;)
            value = value * u + c[k];
        x[t] = value;
    }
    return x;
}

// ---------------------------------------------------------------------------
// correlateCentred: the shared convolution of both smoothers.

TEST(CorrelateCentred, fftAndDirectPathsAgreeWithTheDefinitionForAnAsymmetricKernel) {
    const std::vector<double> x = whiteNoise(500, 1.0, 31);
    for (std::size_t radius : {3u, 24u, 25u, 120u, 499u, 700u}) {
        const std::vector<double> kernel = whiteNoise(2 * radius + 1, 1.0, 57);
        std::vector<double> expected(x.size(), 0.0);
        const std::ptrdiff_t r = static_cast<std::ptrdiff_t>(radius);
        for (std::ptrdiff_t i = 0; i < 500; ++i)
            for (std::ptrdiff_t j = -r; j <= r; ++j)
                if (i + j >= 0 && i + j < 500) expected[i] += kernel[r + j] * x[i + j];
        std::vector<double> y(x.size());
        correlateCentred(x, kernel, y);
        EXPECT_TRUE(test::allNear(y, expected, 1e-11)) << "radius " << radius;
    }
}

TEST(CorrelateCentred, refusesAnEvenKernelAndAMismatchedOutput) {
    const std::vector<double> x(10, 1.0);
    std::vector<double> y(10);
    std::vector<double> shortOut(9);
    EXPECT_THROW(correlateCentred(x, std::vector<double>(4, 1.0), y), std::invalid_argument);
    EXPECT_THROW(correlateCentred(x, std::vector<double>(3, 1.0), shortOut), std::invalid_argument);
}

// ---------------------------------------------------------------------------
// Gaussian kernel smoothing.

TEST(GaussianKernelSmooth, keepsAConstantAtEveryPointForEveryRadius) {
    const std::vector<double> x(1001, 3.7);
    for (double radius : {1.0, 3.0, 10.0, 40.0, 200.0, 500.0, 501.0, 5000.0, 1e15}) {
        EXPECT_TRUE(test::allNear(kernelSmoothed(x, radius), x, 0.0, 1e-14)) << "radius " << radius;
    }
}

TEST(GaussianKernelSmooth, matchesTheDirectRenormalisedAverageOnRandomData) {
    const std::vector<double> x = whiteNoise(777, 2.0, 5);
    // Both sides of the direct/FFT switch, fractional radii, the largest the
    // program passes (n/2 + 1) and one beyond the series.
    for (double radius : {1.0, 2.5, 5.0, 24.0, 25.0, 33.0, 100.7, 389.0, 1000.0}) {
        EXPECT_TRUE(test::allNear(kernelSmoothed(x, radius), directKernelSmooth(x, radius), 1e-12))
            << "radius " << radius;
    }
}

TEST(GaussianKernelSmooth, aReversedSeriesGivesTheReversedResult) {
    const std::vector<double> x = whiteNoise(1000, 1.0, 8);
    for (double radius : {7.0, 300.0, 501.0}) {
        EXPECT_TRUE(test::allNear(kernelSmoothed(reversed(x), radius),
                             reversed(kernelSmoothed(x, radius)), 1e-13))
            << "radius " << radius;
    }
}

TEST(GaussianKernelSmooth, impulseResponseIsAGaussianOfSigmaOneThirdOfTheRadius) {
    std::vector<double> x(401, 0.0);
    x[200] = 1.0;
    const std::vector<double> y = kernelSmoothed(x, 30.0);
    EXPECT_TRUE(isNear(y[230] / y[200], std::exp(-4.5), 0.0, 1e-9));
    EXPECT_TRUE(isNear(y[210] / y[200], std::exp(-0.5), 0.0, 1e-9));
    EXPECT_TRUE(isNear(y[190], y[210], 1e-15));
    EXPECT_TRUE(isNear(y[231], 0.0, 1e-15)); // outside the window
    double total = 0.0;
    for (double v : y)
        total += v;
    EXPECT_TRUE(isNear(total, 1.0, 0.0, 1e-12)); // interior weights sum to 1
}

TEST(GaussianKernelSmooth, keepsALineInsideAndFlattensItWhereTheWindowIsCut) {
    std::vector<double> x(200);
    for (std::size_t t = 0; t < x.size(); ++t)
        x[t] = 0.5 * static_cast<double>(t);
    const std::vector<double> y = kernelSmoothed(x, 20.0);
    for (std::size_t t = 20; t < 180; ++t)
        EXPECT_TRUE(isNear(y[t], x[t], 1e-12)) << t;
    EXPECT_GT(y[0], x[0] + 1.0);     // the window sees only later, higher samples
    EXPECT_LT(y[199], x[199] - 1.0); // and only earlier, lower ones
}

TEST(GaussianKernelSmooth, radiusBelowOneCopiesAndAVeryLargeOneGivesTheMean) {
    const std::vector<double> x = whiteNoise(300, 1.0, 3);
    EXPECT_EQ(kernelSmoothed(x, 0.0), x);
    EXPECT_EQ(kernelSmoothed(x, 0.99), x);
    EXPECT_EQ(kernelSmoothed(x, std::nan("")), x);
    double mean = 0.0;
    for (double v : x)
        mean += v / 300.0;
    for (double v : kernelSmoothed(x, 1e9))
        EXPECT_TRUE(isNear(v, mean, 1e-9));
}

TEST(GaussianKernelSmooth, refusesAnOutputOfAnotherLength) {
    const std::vector<double> x(10, 1.0);
    std::vector<double> y(11);
    EXPECT_THROW(gaussianKernelSmooth(x, 3.0, y), std::invalid_argument);
}

// ---------------------------------------------------------------------------
// Savitzky-Golay weights.

TEST(SavitzkyGolayKernel, matchesTheTabulatedRationalWeights) {
    const std::vector<double> five{-3 / 35.0, 12 / 35.0, 17 / 35.0, 12 / 35.0, -3 / 35.0};
    const std::vector<double> seven{-2 / 21.0, 3 / 21.0, 6 / 21.0, 7 / 21.0,
                                    6 / 21.0,  3 / 21.0, -2 / 21.0};
    EXPECT_TRUE(test::allNear(savitzkyGolayKernel(2, 2), five, 1e-15));
    EXPECT_TRUE(test::allNear(savitzkyGolayKernel(2, 3), five, 1e-15));
    EXPECT_TRUE(test::allNear(savitzkyGolayKernel(3, 2), seven, 1e-15));
    EXPECT_TRUE(test::allNear(savitzkyGolayKernel(3, 3), seven, 1e-15));
    EXPECT_TRUE(test::allNear(savitzkyGolayKernel(4, 1), std::vector<double>(9, 1.0 / 9.0), 1e-15));
}

TEST(SavitzkyGolayKernel, annihilatesTheMomentsUpToItsOrderForLongWindows) {
    // sum_j h_j = 1 and sum_j h_j (j / r)^k = 0 for 1 <= k <= order.
    for (std::size_t radius : {5u, 60u, 5000u}) {
        const std::size_t order = std::min<std::size_t>(10, 2 * radius);
        const std::vector<double> h = savitzkyGolayKernel(radius, order);
        ASSERT_EQ(h.size(), 2 * radius + 1);
        for (std::size_t k = 0; k <= order; ++k) {
            double moment = 0.0;
            for (std::size_t i = 0; i < h.size(); ++i) {
                const double u = (static_cast<double>(i) - static_cast<double>(radius)) /
                                 static_cast<double>(radius);
                moment += h[i] * std::pow(u, k);
            }
            EXPECT_TRUE(isNear(moment, k == 0 ? 1.0 : 0.0, 1e-11))
                << "radius " << radius << ", k " << k;
        }
    }
}

// ---------------------------------------------------------------------------
// Local polynomial smoothing.

TEST(LocalPolynomialSmooth, reproducesEveryPolynomialUpToTheOrderEndsIncluded) {
    const std::size_t n = 2000;
    for (std::size_t order = 0; order <= 10; ++order) {
        const std::vector<double> x = randomPolynomial(n, order, 100 + order);
        for (std::size_t radius :
             {order + 1, std::size_t{37}, std::size_t{400}, std::size_t{999}, std::size_t{1001}}) {
            EXPECT_TRUE(test::allNear(polySmoothed(x, radius, order), x, 1e-10))
                << "order " << order << ", radius " << radius;
        }
    }
}

TEST(LocalPolynomialSmooth, staysExactAtOrderTenInWindowsOfAHundredThousandPoints) {
    const std::size_t n = 200001;
    const std::vector<double> x = randomPolynomial(n, 10, 7);
    for (std::size_t radius : {50000u, 100000u}) {
        EXPECT_TRUE(test::allNear(polySmoothed(x, radius, 10), x, 1e-9)) << "radius " << radius;
    }
}

TEST(LocalPolynomialSmooth, matchesTheDirectWindowFitsOnRandomData) {
    const std::vector<double> x = whiteNoise(301, 1.0, 11);
    for (std::size_t radius : {1u, 2u, 5u, 24u, 25u, 40u, 149u, 150u, 151u}) {
        for (std::size_t order : {0u, 1u, 2u, 3u, 6u, 10u}) {
            if (order >= radius && radius > 1) continue; // the program keeps order < radius
            EXPECT_TRUE(test::allNear(polySmoothed(x, radius, order),
                                 directLocalPolynomial(x, radius, order), 1e-10))
                << "radius " << radius << ", order " << order;
        }
    }
}

TEST(LocalPolynomialSmooth, matchesTheDirectWindowFitsInWindowsOfOverAThousandPoints) {
    // Long windows build their basis by the three-term recurrence.
    const std::vector<double> x = whiteNoise(1300, 1.0, 12);
    for (std::size_t radius : {499u, 500u}) {
        EXPECT_TRUE(
            test::allNear(polySmoothed(x, radius, 10), directLocalPolynomial(x, radius, 10), 1e-10))
            << "radius " << radius;
    }
}

TEST(LocalPolynomialSmooth, interiorIsTheFivePointSavitzkyGolayFilter) {
    const std::vector<double> x = whiteNoise(50, 1.0, 2);
    const std::vector<double> y = polySmoothed(x, 2, 2);
    for (std::size_t i = 2; i < 48; ++i) {
        const double expected =
            (-3 * x[i - 2] + 12 * x[i - 1] + 17 * x[i] + 12 * x[i + 1] - 3 * x[i + 2]) / 35.0;
        EXPECT_TRUE(isNear(y[i], expected, 1e-14)) << i;
    }
}

TEST(LocalPolynomialSmooth, aReversedSeriesGivesTheReversedResult) {
    const std::vector<double> x = whiteNoise(1000, 1.0, 4);
    for (std::size_t radius : {4u, 250u, 501u}) {
        EXPECT_TRUE(test::allNear(polySmoothed(reversed(x), radius, 3),
                             reversed(polySmoothed(x, radius, 3)), 1e-12))
            << "radius " << radius;
    }
}

TEST(LocalPolynomialSmooth, radiusZeroCopiesAndOrderIsCutToTheWindow) {
    const std::vector<double> x = whiteNoise(40, 1.0, 6);
    EXPECT_EQ(polySmoothed(x, 0, 3), x);
    // Radius 1, order 7: three points, order cut to 2, the fit passes through them.
    EXPECT_TRUE(test::allNear(polySmoothed(x, 1, 7), x, 1e-13));
    // Orders above 10 count as 10.
    EXPECT_EQ(polySmoothed(x, 15, 25), polySmoothed(x, 15, 10));
}

TEST(LocalPolynomialSmooth, refusesAnOutputOfAnotherLength) {
    const std::vector<double> x(10, 1.0);
    std::vector<double> y(9);
    EXPECT_THROW(localPolynomialSmooth(x, 2, 1, y), std::invalid_argument);
}

// ---------------------------------------------------------------------------
// The C adapters.

TEST(SmoothingDll, kernSmoothTakesItsArgumentsInTheContractOrder) {
    const std::vector<double> x = whiteNoise(120, 1.0, 9);
    std::vector<double> trend(x.size(), -1.0);
    std::int32_t count = 120;
    double radius = 10.0;
    KernSmooth_dll(x.data(), trend.data(), &count, &radius);
    EXPECT_TRUE(test::allNear(trend, directKernelSmooth(x, 10.0), 1e-13));
}

TEST(SmoothingDll, uniStepOrthSmoothTakesItsArgumentsInTheContractOrder) {
    const std::vector<double> x = whiteNoise(120, 1.0, 10);
    std::vector<double> trend(x.size(), -1.0);
    std::int32_t count = 120, radius = 10, order = 3;
    UniStepOrthSmooth_dll(x.data(), &count, &radius, &order, trend.data());
    EXPECT_TRUE(test::allNear(trend, directLocalPolynomial(x, 10, 3), 1e-12));
    // A negative order reads as 0: the moving average.
    order = -4;
    UniStepOrthSmooth_dll(x.data(), &count, &radius, &order, trend.data());
    EXPECT_TRUE(test::allNear(trend, directLocalPolynomial(x, 10, 0), 1e-12));
}

TEST(SmoothingDll, emptyOrNullArgumentsWriteNothing) {
    std::vector<double> trend(3, -1.0);
    const std::vector<double> x(3, 2.0);
    std::int32_t zero = 0, radius = 1, order = 0;
    double r = 1.0;
    KernSmooth_dll(x.data(), trend.data(), &zero, &r);
    UniStepOrthSmooth_dll(x.data(), &zero, &radius, &order, trend.data());
    KernSmooth_dll(x.data(), trend.data(), nullptr, &r);
    EXPECT_EQ(trend, std::vector<double>(3, -1.0));
}

} // namespace
} // namespace tarnic
