// The filter tables: the defining identities of every filter, the closed forms of
// the 2- and 4-coefficient filters, and the zeros that single out the Daubechies
// and symlet choices (roots in double precision with Eigen).
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
        const long double relative = std::abs(sum / scale);
        EXPECT_TRUE(p < h.size() / 2 ? relative < 1e-14 : relative > 1e-6) << p << " " << relative;
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

// The zeros of sum_k h[k] z^(L-1-k) besides its N-fold zero at -1: the quotient
// by (z + 1)^N (each remainder vanishes to rounding), then the eigenvalues of the
// quotient's companion matrix.
std::vector<Complex> zerosBesideMinusOne(std::span<const double> h) {
    std::vector<double> q(h.begin(), h.end());
    for (std::size_t i = 0; i < h.size() / 2; ++i) {
        for (std::size_t k = 1; k < q.size(); ++k)
            q[k] -= q[k - 1];
        EXPECT_NEAR(q.back(), 0.0, 1e-12);
        q.pop_back();
    }
    const auto m = static_cast<Eigen::Index>(q.size()) - 1;
    if (m == 0) return {};
    Eigen::MatrixXd companion = Eigen::MatrixXd::Zero(m, m);
    for (Eigen::Index i = 0; i < m; ++i) {
        if (i > 0) companion(i, i - 1) = 1.0;
        companion(i, m - 1) = -q[static_cast<std::size_t>(m - i)] / q[0];
    }
    const Eigen::VectorXcd z = Eigen::EigenSolver<Eigen::MatrixXd>(companion).eigenvalues();
    return {z.begin(), z.end()};
}

// Largest deviation of the phase of prod (e^iw - r) over 0 < w < pi from the line
// through the origin fitted by least squares, on 256 points (the factors z + 1
// add a linear phase only); each factor's phase is unwrapped alone.
double phaseNonlinearity(const std::vector<Complex>& roots) {
    const std::vector<double> w = sampled(256, [](double k) { return pi * (k + 0.5) / 256; });
    std::vector<double> phase(256, 0.0);
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

// Orthonormality and N vanishing moments at length 2N (EveryFilter) fix |H|^2
// (Daubechies' theorem), so a filter is the choice of each other zero or its
// mirror 1/conj(z), a real zero or a conjugate pair at a time. Daubechies filters
// (N = 1 .. 10) take every zero inside the circle; symlets (N = 4 .. 10) the
// choice of least phase nonlinearity: no mirrored group lowers it (mirroring all
// reverses the filter, which deviates alike).
TEST_P(Derivation, DaubechiesTakeTheZerosInsideAndSymletsTheLeastAsymmetricChoice) {
    const int n = GetParam();
    for (Complex z : zerosBesideMinusOne(scalingFilter(2 * n)))
        EXPECT_LT(std::abs(z), 1.0 - 1e-3) << z;
    if (n < 4) return;
    const std::vector<Complex> zeros = zerosBesideMinusOne(scalingFilter(100 + 2 * n));
    std::vector<Complex> leaders;
    for (Complex z : zeros)
        if (z.imag() > -1e-9) leaders.push_back(z);
    const double own = phaseNonlinearity(zeros);
    EXPECT_LT(own, 0.5);
    for (unsigned mask = 1; mask < (1U << leaders.size()); ++mask) {
        std::vector<Complex> mirrored;
        for (std::size_t g = 0; g < leaders.size(); ++g) {
            const Complex r = (mask >> g) & 1U ? 1.0 / std::conj(leaders[g]) : leaders[g];
            mirrored.push_back(r);
            if (r.imag() > 1e-9) mirrored.push_back(std::conj(r));
        }
        EXPECT_GE(phaseNonlinearity(mirrored), own - 1e-9) << "mask " << mask;
    }
}

INSTANTIATE_TEST_SUITE_P(WaveletFilters, Derivation, ::testing::Range(1, 11));

} // namespace
} // namespace tarnic
