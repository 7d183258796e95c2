// The two trend smoothers, Gaussian kernel (Nadaraya-Watson) and local
// polynomial, against their definitions written out point by point.
#include "numeric/kernsmooth.h"
#include "numeric/localpoly.h"
#include "numeric/tarnic_api.h"
#include "tests/numeric/numeric_support.h"

#include <Eigen/Dense>

namespace tarnic {
namespace {

using namespace test;

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

// The Nadaraya-Watson average: Gaussian weights of sigma = radius / 3 within
// floor(radius) samples, renormalised where an end cuts the window.
std::vector<double> directKernelSmooth(std::span<const double> x, double radius) {
    const std::ptrdiff_t n = std::ssize(x), r = static_cast<std::ptrdiff_t>(std::floor(radius));
    std::vector<double> y(x.size());
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        double sum = 0.0, weights = 0.0;
        for (auto t = std::max<std::ptrdiff_t>(i - r, 0); t <= std::min(n - 1, i + r); ++t) {
            const double w = std::exp(-0.5 * std::pow((t - i) / (radius / 3.0), 2));
            sum += w * x[t];
            weights += w;
        }
        y[i] = sum / weights;
    }
    return y;
}

// Least squares on each window (held at the ends of the series), a monomial
// basis in the window's abscissa scaled to [-1, 1], solved by pivoted QR and
// evaluated at the point itself; the order is cut to 10 and to the window.
std::vector<double> directLocalPolynomial(std::span<const double> x, std::size_t radius,
                                          std::size_t order) {
    const std::size_t n = x.size(), m = std::min(2 * radius + 1, n);
    const std::size_t p = std::min({order, std::size_t{10}, m - 1});
    std::vector<double> y(n);
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t lo = i < radius ? 0 : std::min(i - radius, n - m);
        const double centre = lo + 0.5 * (m - 1.0), half = m > 1 ? 0.5 * (m - 1.0) : 1.0;
        Eigen::MatrixXd a(m, p + 1);
        for (std::size_t t = 0; t < m; ++t)
            for (std::size_t k = 0; k <= p; ++k)
                a(t, k) = std::pow((static_cast<double>(lo + t) - centre) / half, k);
        const Eigen::VectorXd c =
            a.colPivHouseholderQr().solve(Eigen::Map<const Eigen::VectorXd>(&x[lo], m));
        for (std::size_t k = 0; k <= p; ++k)
            y[i] += c(k) * std::pow((static_cast<double>(i) - centre) / half, k);
    }
    return y;
}

// sum_k c_k u^k with u = 2t / (n-1) - 1 and coefficients c_k = cos(3k + degree).
std::vector<double> polynomial(std::size_t n, std::size_t degree) {
    std::vector<double> x(n, 0.0);
    for (std::size_t t = 0; t < n; ++t)
        for (std::size_t k = degree + 1; k-- > 0;)
            x[t] = x[t] * (2.0 * t / (n - 1.0) - 1.0) + std::cos(3.0 * k + degree);
    return x;
}

// The shared convolution of both smoothers, with an asymmetric kernel: both sides
// of the switch to the FFT, kernels longer than the series.
TEST(CorrelateCentred, FftAndDirectPathsAgreeWithTheDefinition) {
    const std::vector<double> x = whiteNoise(500, 1.0, 31);
    for (std::ptrdiff_t r : {3, 24, 25, 120, 499, 700}) {
        const std::vector<double> kernel = whiteNoise(2 * r + 1, 1.0, 57);
        std::vector<double> expected(x.size(), 0.0), y(x.size());
        for (std::ptrdiff_t i = 0; i < 500; ++i)
            for (std::ptrdiff_t j = std::max(-r, -i); j <= r && i + j < 500; ++j)
                expected[i] += kernel[r + j] * x[i + j];
        correlateCentred(x, kernel, y);
        EXPECT_TRUE(allNear(y, expected, 1e-11)) << "radius " << r;
    }
}

TEST(Smoothers, RefuseAnEvenKernelAndOutputsOfAnotherLength) {
    const std::vector<double> x(10, 1.0);
    std::vector<double> y(10), shorter(9), longer(11);
    EXPECT_THROW(correlateCentred(x, std::vector<double>(4, 1.0), y), std::invalid_argument);
    EXPECT_THROW(correlateCentred(x, std::vector<double>(3, 1.0), shorter), std::invalid_argument);
    EXPECT_THROW(gaussianKernelSmooth(x, 3.0, longer), std::invalid_argument);
    EXPECT_THROW(localPolynomialSmooth(x, 2, 1, shorter), std::invalid_argument);
}

TEST(GaussianKernelSmooth, IsTheRenormalisedAverageAtEveryRadius) {
    const std::vector<double> x = whiteNoise(777, 2.0, 5);
    // Both sides of the direct/FFT switch, fractional radii, the largest the
    // program passes (n/2 + 1), beyond the series, and so large that every
    // weight is 1: the mean.
    for (double radius : {1.0, 2.5, 5.0, 24.0, 25.0, 33.0, 100.7, 389.0, 1000.0, 1e15})
        EXPECT_TRUE(allNear(kernelSmoothed(x, radius), directKernelSmooth(x, radius), 1e-12))
            << "radius " << radius;
    for (double radius : {0.0, 0.99, std::nan("")}) // below 1: a copy
        EXPECT_EQ(kernelSmoothed(x, radius), x) << radius;
}

// The tabulated rational weights: 5 and 7 points for orders 2 and 3, the moving
// average for order 1.
TEST(SavitzkyGolayKernel, MatchesTheTabulatedWeights) {
    const std::vector<double> five{-3 / 35.0, 12 / 35.0, 17 / 35.0, 12 / 35.0, -3 / 35.0};
    const std::vector<double> seven{-2 / 21.0, 3 / 21.0, 6 / 21.0, 7 / 21.0,
                                    6 / 21.0,  3 / 21.0, -2 / 21.0};
    const std::tuple<std::size_t, std::size_t, std::vector<double>> cases[] = {
        {2, 2, five}, {2, 3, five}, {3, 2, seven}, {3, 3, seven}, {4, 1, std::vector(9, 1 / 9.0)}};
    for (const auto& [radius, order, weights] : cases)
        EXPECT_TRUE(allNear(savitzkyGolayKernel(radius, order), weights, 1e-15)) << radius << order;
    // A long window, built by a recurrence: sum_j h_j = 1 and sum_j h_j (j / r)^k = 0
    // for 1 <= k <= 10.
    const std::vector<double> h = savitzkyGolayKernel(5000, 10);
    ASSERT_EQ(h.size(), 10001u);
    for (int k = 0; k <= 10; ++k) {
        double moment = 0.0;
        for (std::size_t i = 0; i < h.size(); ++i)
            moment += h[i] * std::pow((i - 5000.0) / 5000.0, k);
        EXPECT_NEAR(moment, k == 0 ? 1.0 : 0.0, 1e-11) << "k " << k;
    }
}

// Every polynomial up to the order comes back unchanged, ends included, also at
// order 10 in windows of a hundred thousand points.
TEST(LocalPolynomialSmooth, ReproducesEveryPolynomialUpToTheOrder) {
    for (std::size_t order = 0; order <= 10; ++order) {
        const std::vector<double> x = polynomial(2000, order);
        for (std::size_t radius : {order + 1, std::size_t{37}, std::size_t{999}, std::size_t{1001}})
            EXPECT_TRUE(allNear(polySmoothed(x, radius, order), x, 1e-10))
                << "order " << order << ", radius " << radius;
    }
    const std::vector<double> x = polynomial(200001, 10);
    EXPECT_TRUE(allNear(polySmoothed(x, 100000, 10), x, 1e-9));
}

// Windows of over a thousand points build their basis by a recurrence; at an
// even length with radius n / 2, 2 radius + 1 passes n and one window is all.
TEST(LocalPolynomialSmooth, MatchesTheDirectWindowFits) {
    const std::vector<double> x = whiteNoise(301, 1.0, 11);
    for (std::size_t radius : {1u, 2u, 5u, 24u, 25u, 40u, 149u, 150u, 151u})
        for (std::size_t order : {0u, 1u, 2u, 3u, 6u, 10u, 25u}) {
            if (order >= radius && radius > 1) continue; // the program keeps order < radius
            EXPECT_TRUE(allNear(polySmoothed(x, radius, order),
                                directLocalPolynomial(x, radius, order), 1e-10))
                << "radius " << radius << ", order " << order;
        }
    const std::tuple<std::size_t, unsigned, std::size_t, std::size_t> more[] = {
        {1300, 12, 499, 10}, {1300, 12, 500, 10}, {300, 13, 150, 3}};
    for (const auto& [n, seed, radius, order] : more) {
        const std::vector<double> y = whiteNoise(n, 1.0, seed);
        EXPECT_TRUE(
            allNear(polySmoothed(y, radius, order), directLocalPolynomial(y, radius, order), 1e-10))
            << "n " << n << ", radius " << radius;
    }
    EXPECT_EQ(polySmoothed(x, 0, 3), x); // radius 0: a copy
}

TEST(SmoothingDll, ArgumentsComeInTheOrderOfTheBinding) {
    const std::vector<double> x = whiteNoise(120, 1.0, 9);
    std::vector<double> trend(x.size(), -1.0), untouched(3, -1.0);
    std::int32_t count = 120, radius = 10, none = 0;
    double kernelRadius = 10.0;
    KernSmooth_dll(x.data(), trend.data(), &count, &kernelRadius);
    EXPECT_TRUE(allNear(trend, directKernelSmooth(x, 10.0), 1e-13));
    for (std::int32_t order : {3, -4}) { // -4 reads as 0: the moving average
        UniStepOrthSmooth_dll(x.data(), &count, &radius, &order, trend.data());
        EXPECT_TRUE(allNear(trend, directLocalPolynomial(x, 10, std::max(order, 0)), 1e-12));
    }
    // Empty or missing arguments write nothing.
    KernSmooth_dll(x.data(), untouched.data(), &none, &kernelRadius);
    UniStepOrthSmooth_dll(x.data(), &none, &radius, &radius, untouched.data());
    KernSmooth_dll(x.data(), untouched.data(), nullptr, &kernelRadius);
    EXPECT_EQ(untouched, std::vector<double>(3, -1.0));
}

} // namespace
} // namespace tarnic
