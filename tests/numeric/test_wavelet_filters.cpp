// The filter tables: the defining identities of every filter, the closed form of
// the 4-coefficient Daubechies filter, and an independent derivation of all
// filters from Daubechies' polynomial (roots in double precision with Eigen).
#include "numeric/wavelet_filters.h"
#include "spectral_support.h"

#include <Eigen/Eigenvalues>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using test::allNear;
using test::isNear;
using Complex = std::complex<double>;

class EveryFilter : public ::testing::TestWithParam<std::int32_t> {
  protected:
    std::span<const double> h = scalingFilter(GetParam());
};

TEST_P(EveryFilter, SumsToSquareRootOfTwo) {
    long double sum = 0.0L;
    for (double v : h)
        sum += v;
    EXPECT_TRUE(isNear(static_cast<double>(sum), std::numbers::sqrt2, 1e-15));
}

TEST_P(EveryFilter, IsOrthonormalUnderEvenShifts) {
    for (std::size_t shift = 0; shift < h.size(); shift += 2) {
        long double sum = 0.0L;
        for (std::size_t k = 0; k + shift < h.size(); ++k)
            sum += static_cast<long double>(h[k]) * h[k + shift];
        EXPECT_TRUE(isNear(static_cast<double>(sum), shift == 0 ? 1.0 : 0.0, 1e-15))
            << "shift " << shift;
    }
}

// The wavelet filter annihilates polynomials of degree below N = L/2:
// sum (-1)^k k^p h[k] = 0 for p < N, to rounding of the terms' scale.
TEST_P(EveryFilter, HighPassHasHalfTheLengthVanishingMoments) {
    const std::size_t vanishing = h.size() / 2;
    for (std::size_t p = 0; p < vanishing; ++p) {
        long double sum = 0.0L, scale = 0.0L;
        for (std::size_t k = 0; k < h.size(); ++k) {
            const long double term =
                (k % 2 == 0 ? 1.0L : -1.0L) *
                std::pow(static_cast<long double>(k), static_cast<long double>(p)) * h[k];
            sum += term;
            scale += std::abs(term);
        }
        EXPECT_LT(std::abs(static_cast<double>(sum / scale)), 1e-14) << "moment " << p;
    }
    // ... and no more: the next moment is clearly not zero.
    long double sum = 0.0L, scale = 0.0L;
    for (std::size_t k = 0; k < h.size(); ++k) {
        const long double term =
            (k % 2 == 0 ? 1.0L : -1.0L) *
            std::pow(static_cast<long double>(k), static_cast<long double>(vanishing)) * h[k];
        sum += term;
        scale += std::abs(term);
    }
    EXPECT_GT(std::abs(static_cast<double>(sum / scale)), 1e-6);
}

INSTANTIATE_TEST_SUITE_P(WaveletFilters, EveryFilter,
                         ::testing::Values(2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 108, 110, 112, 114,
                                           116, 118, 120));

TEST(WaveletFilters, CodesNameDaubechiesAndSymletsOnly) {
    const std::vector<std::int32_t> expected{2,  4,   6,   8,   10,  12,  14,  16, 18,
                                             20, 108, 110, 112, 114, 116, 118, 120};
    const auto codes = allWaveCodes();
    EXPECT_EQ(std::vector<std::int32_t>(codes.begin(), codes.end()), expected);
    for (std::int32_t code : expected) {
        EXPECT_TRUE(isWaveCode(code));
        EXPECT_EQ(scalingFilter(code).size(), static_cast<std::size_t>(code % 100)) << code;
    }
    for (std::int32_t code : {0, -4, 1, 3, 22, 100, 102, 104, 106, 107, 122, 200})
        EXPECT_FALSE(isWaveCode(code)) << code;
}

TEST(WaveletFilters, HaarAndFourCoefficientDaubechiesMatchTheirClosedForms) {
    const double r = std::numbers::sqrt2;
    const double haar[] = {1 / r, 1 / r};
    EXPECT_TRUE(allNear(scalingFilter(2), std::span<const double>(haar), 0.0, 2.3e-16));
    const double s3 = std::sqrt(3.0), d = 4 * r;
    const double db2[] = {(1 + s3) / d, (3 + s3) / d, (3 - s3) / d, (1 - s3) / d};
    EXPECT_TRUE(allNear(scalingFilter(4), std::span<const double>(db2), 0.0, 4.5e-16));
    // The analysis low-pass of the literature is the reversed filter.
    EXPECT_TRUE(isNear(scalingFilter(4)[3], -0.1294095225512604, 1e-16));
}

// ---------------------------------------------------------------------------
// Independent derivation by spectral factorisation
// ---------------------------------------------------------------------------

// The roots of P(y) = sum_{k<N} C(N-1+k, k) y^k, by the eigenvalues of its
// companion matrix, grouped so that each group is one real root or one pair of
// conjugate roots.
std::vector<std::vector<Complex>> daubechiesRootGroups(int vanishing) {
    const int degree = vanishing - 1;
    std::vector<std::vector<Complex>> groups;
    if (degree == 0) return groups;
    std::vector<double> c(static_cast<std::size_t>(vanishing), 1.0); // exact integers
    for (int k = 1; k < vanishing; ++k)
        c[static_cast<std::size_t>(k)] =
            c[static_cast<std::size_t>(k - 1)] * (vanishing - 1 + k) / k;
    Eigen::MatrixXd companion = Eigen::MatrixXd::Zero(degree, degree);
    for (int i = 1; i < degree; ++i)
        companion(i, i - 1) = 1.0;
    for (int i = 0; i < degree; ++i)
        companion(i, degree - 1) =
            -c[static_cast<std::size_t>(i)] / c[static_cast<std::size_t>(degree)];
    const Eigen::VectorXcd roots = Eigen::EigenSolver<Eigen::MatrixXd>(companion).eigenvalues();
    for (int i = 0; i < degree; ++i) {
        const Complex y = roots(i);
        if (std::abs(y.imag()) < 1e-9 * std::abs(y))
            groups.push_back({Complex(y.real(), 0.0)});
        else if (y.imag() > 0)
            groups.push_back({y, std::conj(y)});
    }
    return groups;
}

// The two roots z, 1/z of z + 1/z = 2 - 4y: the one inside the unit circle first.
std::pair<Complex, Complex> unitCirclePair(Complex y) {
    const Complex b = 2.0 - 4.0 * y;
    const Complex s = std::sqrt(b * b - 4.0);
    const Complex z1 = (b + s) / 2.0, z2 = (b - s) / 2.0;
    return std::abs(z1) < std::abs(z2) ? std::pair{z1, z2} : std::pair{z2, z1};
}

struct Factorisation {
    std::vector<Complex> roots; // chosen roots of Q, besides the N roots at -1
    std::vector<double> filter; // (z+1)^N prod (z - r), descending powers, sum sqrt 2
};

Factorisation factorise(int vanishing, const std::vector<std::vector<Complex>>& groups,
                        unsigned outsideMask) {
    Factorisation f;
    for (std::size_t g = 0; g < groups.size(); ++g)
        for (Complex y : groups[g]) {
            const auto [inside, outside] = unitCirclePair(y);
            f.roots.push_back((outsideMask >> g) & 1U ? outside : inside);
        }
    std::vector<Complex> p{1.0};
    const auto multiply = [&p](Complex root) { // p *= (z - root)
        p.push_back(0.0);
        for (std::size_t i = p.size() - 1; i > 0; --i)
            p[i] -= root * p[i - 1];
    };
    for (int i = 0; i < vanishing; ++i)
        multiply(-1.0);
    for (Complex r : f.roots)
        multiply(r);
    double sum = 0.0;
    for (Complex v : p)
        sum += v.real();
    for (Complex v : p)
        f.filter.push_back(v.real() * std::numbers::sqrt2 / sum);
    return f;
}

// Largest deviation of the filter's phase over 0 < w < pi from the straight line
// through the origin fitted by least squares, on 256 points. The factors (z + 1)
// contribute a linear phase, so only the roots of Q count; each factor's phase
// is unwrapped alone.
double phaseNonlinearity(const std::vector<Complex>& roots) {
    constexpr int points = 256;
    std::vector<double> w(points), phase(points, 0.0);
    for (int k = 0; k < points; ++k)
        w[static_cast<std::size_t>(k)] = std::numbers::pi * (k + 0.5) / points;
    for (Complex r : roots) {
        double previous = std::arg(1.0 - r), unwrapped = 0.0;
        for (std::size_t k = 0; k < w.size(); ++k) {
            const double a = std::arg(std::polar(1.0, w[k]) - r);
            double step = a - previous;
            step -= 2 * std::numbers::pi * std::round(step / (2 * std::numbers::pi));
            unwrapped += step;
            previous = a;
            phase[k] += unwrapped;
        }
    }
    double sw = 0.0, ww = 0.0;
    for (std::size_t k = 0; k < w.size(); ++k) {
        sw += phase[k] * w[k];
        ww += w[k] * w[k];
    }
    double worst = 0.0;
    for (std::size_t k = 0; k < w.size(); ++k)
        worst = std::max(worst, std::abs(phase[k] - sw / ww * w[k]));
    return worst;
}

class DaubechiesDerivation : public ::testing::TestWithParam<int> {};
class SymletDerivation : public ::testing::TestWithParam<int> {};

TEST_P(DaubechiesDerivation, IsTheFactorisationWithAllRootsInside) {
    const int vanishing = GetParam();
    const auto groups = daubechiesRootGroups(vanishing);
    const Factorisation f = factorise(vanishing, groups, 0);
    EXPECT_TRUE(allNear(scalingFilter(2 * vanishing), std::span<const double>(f.filter), 1e-11));
}

TEST_P(SymletDerivation, IsTheLeastAsymmetricFactorisation) {
    const int vanishing = GetParam();
    const auto groups = daubechiesRootGroups(vanishing);
    double best = 1e300;
    Factorisation least;
    for (unsigned mask = 0; mask < (1U << groups.size()); ++mask) {
        Factorisation f = factorise(vanishing, groups, mask);
        const double deviation = phaseNonlinearity(f.roots);
        if (deviation < best - 1e-9) {
            best = deviation;
            least = std::move(f);
        }
    }
    const std::span<const double> table = scalingFilter(100 + 2 * vanishing);
    std::vector<double> reversed(least.filter.rbegin(), least.filter.rend());
    // A filter and its reverse have the same phase deviation; the table keeps the
    // orientation of the published tables.
    EXPECT_TRUE(allNear(table, std::span<const double>(least.filter), 1e-10) ||
                allNear(table, std::span<const double>(reversed), 1e-10));
    EXPECT_LT(best, 0.5);
}

TEST_P(SymletDerivation, SharesTheMagnitudeResponseButNotThePhase) {
    const int vanishing = GetParam();
    const auto db = scalingFilter(2 * vanishing);
    const auto sym = scalingFilter(100 + 2 * vanishing);
    for (int k = 0; k <= 64; ++k) {
        const double w = std::numbers::pi * k / 64;
        Complex a = 0.0, b = 0.0;
        for (std::size_t i = 0; i < db.size(); ++i) {
            a += db[i] * std::polar(1.0, -w * static_cast<double>(i));
            b += sym[i] * std::polar(1.0, -w * static_cast<double>(i));
        }
        EXPECT_TRUE(isNear(std::abs(b), std::abs(a), 1e-14)) << "w = " << w;
    }
    double differs = 0.0, differsReversed = 0.0;
    for (std::size_t i = 0; i < db.size(); ++i) {
        differs = std::max(differs, std::abs(db[i] - sym[i]));
        differsReversed = std::max(differsReversed, std::abs(db[db.size() - 1 - i] - sym[i]));
    }
    EXPECT_GT(std::min(differs, differsReversed), 0.01);
}

// Vanishing moments N: Daubechies 1 .. 10 (2 .. 20 coefficients), symlets 4 .. 10.
INSTANTIATE_TEST_SUITE_P(WaveletFilters, DaubechiesDerivation, ::testing::Range(1, 11));
INSTANTIATE_TEST_SUITE_P(WaveletFilters, SymletDerivation, ::testing::Range(4, 11));

} // namespace
} // namespace tarnic
