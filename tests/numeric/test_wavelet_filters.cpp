// The filter tables: the defining identities of every filter, the closed forms of
// the 2- and 4-coefficient filters, and an independent derivation of all filters
// from Daubechies' polynomial (roots in double precision with Eigen).
#include "numeric/wavelet_filters.h"
#include "numeric_support.h"

#include <Eigen/Eigenvalues>

#include <complex>

namespace tarnic {
namespace {

using std::numbers::pi;
using std::numbers::sqrt2;
using namespace test;
using Complex = std::complex<double>;

const std::vector<std::int32_t> kCodes{2,  4,   6,   8,   10,  12,  14,  16, 18,
                                       20, 108, 110, 112, 114, 116, 118, 120};

class EveryFilter : public ::testing::TestWithParam<std::int32_t> {};

// Length L = code % 100, sum sqrt 2, orthonormal under even shifts, and N = L/2
// vanishing moments of the wavelet filter, sum (-1)^k k^p h[k] = 0 for p < N (to
// rounding of the terms' scale), but not for p = N.
TEST_P(EveryFilter, IsAnOrthonormalScalingFilterWithHalfItsLengthOfVanishingMoments) {
    const std::span<const double> h = scalingFilter(GetParam());
    ASSERT_EQ(h.size(), static_cast<std::size_t>(GetParam() % 100));
    EXPECT_NEAR(std::accumulate(h.begin(), h.end(), 0.0L), sqrt2, 1e-15);
    for (std::size_t shift = 0; shift < h.size(); shift += 2) {
        long double sum = 0.0L;
        for (std::size_t k = 0; k + shift < h.size(); ++k)
            sum += static_cast<long double>(h[k]) * h[k + shift];
        EXPECT_NEAR(sum, shift == 0 ? 1.0 : 0.0, 1e-15) << "shift " << shift;
    }
    for (std::size_t p = 0; p <= h.size() / 2; ++p) {
        long double sum = 0.0L, scale = 0.0L;
        for (std::size_t k = 0; k < h.size(); ++k) {
            const long double term = (k % 2 == 0 ? 1.0L : -1.0L) * std::pow(k * 1.0L, p) * h[k];
            sum += term;
            scale += std::abs(term);
        }
        if (p < h.size() / 2)
            EXPECT_LT(std::abs(sum / scale), 1e-14) << "moment " << p;
        else
            EXPECT_GT(std::abs(sum / scale), 1e-6) << "moment " << p;
    }
}

INSTANTIATE_TEST_SUITE_P(WaveletFilters, EveryFilter, ::testing::ValuesIn(kCodes));

TEST(WaveletFilters, CodesNameDaubechiesAndSymletsOnlyAndTheShortestHaveClosedForms) {
    const auto codes = allWaveCodes();
    EXPECT_EQ(std::vector<std::int32_t>(codes.begin(), codes.end()), kCodes);
    for (std::int32_t code = -4; code <= 200; ++code)
        EXPECT_EQ(isWaveCode(code), std::count(kCodes.begin(), kCodes.end(), code) == 1) << code;
    const double s3 = std::sqrt(3.0), d = 4 * sqrt2;
    EXPECT_TRUE(allNear(scalingFilter(2), std::vector<double>{1 / sqrt2, 1 / sqrt2}, 2.3e-16));
    EXPECT_TRUE(allNear(scalingFilter(4),
                        std::vector<double>{(1 + s3) / d, (3 + s3) / d, (3 - s3) / d, (1 - s3) / d},
                        4.5e-16));
    // The analysis low-pass of the literature is the reversed filter.
    EXPECT_NEAR(scalingFilter(4)[3], -0.1294095225512604, 1e-16);
}

// Daubechies' construction for N vanishing moments: |H|^2 is fixed by the
// polynomial P(y) = sum_{k<N} C(N-1+k, k) y^k. Each root y of P gives the pair z,
// 1/z of z + 1/z = 2 - 4y; a filter takes one of each pair (a conjugate pair of
// y together), times (z + 1)^N, scaled to sum sqrt 2. The roots of P come from
// the eigenvalues of its companion matrix, grouped one real root or one pair of
// conjugate roots per group.
std::vector<std::vector<Complex>> rootGroups(int n) {
    std::vector<std::vector<Complex>> groups;
    if (n == 1) return groups;
    std::vector<double> c(n, 1.0); // exact integers
    for (int k = 1; k < n; ++k)
        c[k] = c[k - 1] * (n - 1 + k) / k;
    Eigen::MatrixXd companion = Eigen::MatrixXd::Zero(n - 1, n - 1);
    for (int i = 0; i < n - 1; ++i) {
        if (i > 0) companion(i, i - 1) = 1.0;
        companion(i, n - 2) = -c[i] / c[n - 1];
    }
    const Eigen::VectorXcd roots = Eigen::EigenSolver<Eigen::MatrixXd>(companion).eigenvalues();
    for (const Complex y : roots)
        if (std::abs(y.imag()) < 1e-9 * std::abs(y))
            groups.push_back({Complex(y.real(), 0.0)});
        else if (y.imag() > 0)
            groups.push_back({y, std::conj(y)});
    return groups;
}

// Bit g of `outside` takes the roots of group g outside the unit circle.
std::pair<std::vector<Complex>, std::vector<double>>
factorise(int n, const std::vector<std::vector<Complex>>& groups, unsigned outside) {
    std::vector<Complex> chosen, p{1.0};
    const auto multiply = [&p](Complex root) { // p *= (z - root)
        p.push_back(0.0);
        for (std::size_t i = p.size() - 1; i > 0; --i)
            p[i] -= root * p[i - 1];
    };
    for (std::size_t g = 0; g < groups.size(); ++g)
        for (const Complex y : groups[g]) {
            const Complex b = 2.0 - 4.0 * y, s = std::sqrt(b * b - 4.0);
            const Complex z1 = (b + s) / 2.0, z2 = (b - s) / 2.0;
            chosen.push_back((((outside >> g) & 1U) != 0) == (std::abs(z1) < std::abs(z2)) ? z2
                                                                                           : z1);
            multiply(chosen.back());
        }
    for (int i = 0; i < n; ++i)
        multiply(-1.0);
    double sum = 0.0;
    for (Complex v : p)
        sum += v.real();
    std::vector<double> filter;
    for (Complex v : p)
        filter.push_back(v.real() * sqrt2 / sum);
    return {chosen, filter};
}

// Largest deviation of the phase of prod (e^iw - r) over 0 < w < pi from the line
// through the origin fitted by least squares, on 256 points (the factors z + 1
// add a linear phase only); each factor's phase is unwrapped alone.
double phaseNonlinearity(const std::vector<Complex>& roots) {
    std::vector<double> w(256), phase(256, 0.0);
    for (std::size_t k = 0; k < w.size(); ++k)
        w[k] = pi * (k + 0.5) / 256;
    for (Complex r : roots) {
        double previous = std::arg(1.0 - r), unwrapped = 0.0;
        for (std::size_t k = 0; k < w.size(); ++k) {
            const double a = std::arg(std::polar(1.0, w[k]) - r);
            unwrapped += a - previous - 2 * pi * std::round((a - previous) / (2 * pi));
            previous = a;
            phase[k] += unwrapped;
        }
    }
    const double slope = std::inner_product(phase.begin(), phase.end(), w.begin(), 0.0) /
                         std::inner_product(w.begin(), w.end(), w.begin(), 0.0);
    double worst = 0.0;
    for (std::size_t k = 0; k < w.size(); ++k)
        worst = std::max(worst, std::abs(phase[k] - slope * w[k]));
    return worst;
}

class Derivation : public ::testing::TestWithParam<int> {};

// Daubechies filters (N = 1 .. 10) take every root inside the circle; symlets
// (N = 4 .. 10) the factorisation of least phase nonlinearity, in either
// orientation (a filter and its reverse deviate alike; the table keeps the
// orientation of the published tables).
TEST_P(Derivation, DaubechiesTakeTheRootsInsideAndSymletsTheLeastAsymmetricChoice) {
    const int n = GetParam();
    const auto groups = rootGroups(n);
    EXPECT_TRUE(allNear(scalingFilter(2 * n), factorise(n, groups, 0).second, 1e-11));
    if (n < 4) return;
    double best = 1e300;
    std::vector<double> least;
    for (unsigned mask = 0; mask < (1U << groups.size()); ++mask) {
        auto [roots, filter] = factorise(n, groups, mask);
        if (const double deviation = phaseNonlinearity(roots); deviation < best - 1e-9) {
            best = deviation;
            least = std::move(filter);
        }
    }
    const std::span<const double> table = scalingFilter(100 + 2 * n);
    const std::vector<double> reversed(least.rbegin(), least.rend());
    EXPECT_TRUE(allNear(table, least, 1e-10) || allNear(table, reversed, 1e-10));
    EXPECT_LT(best, 0.5);
}

INSTANTIATE_TEST_SUITE_P(WaveletFilters, Derivation, ::testing::Range(1, 11));

} // namespace
} // namespace tarnic
