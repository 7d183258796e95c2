// Burg's autoregressive fit and its maximum entropy spectrum.
#include "numeric/burg.h"
#include "numeric_support.h"

#include <optional>

namespace tarnic {
namespace {

using namespace test;

std::vector<double> densityOf(const ArFit& fit, std::size_t nf) {
    std::vector<double> p(nf);
    arDensity(fit, p);
    return p;
}

std::vector<float> burgOf(std::span<const double> x, std::size_t order, std::size_t nf) {
    std::vector<float> out(nf, -1.0f);
    burgSpectrum(toFloat(x), order, out);
    return out;
}

template <class V> double peakIndex(const V& p) {
    return static_cast<double>(std::max_element(p.begin(), p.end()) - p.begin());
}

// sigma2 / |A(nu)|^2 summed term by term, independent of the FFT.
double directTwoSided(const ArFit& fit, double nu) {
    double re = 1.0, im = 0.0;
    for (std::size_t j = 0; j < fit.phi.size(); ++j) {
        re -= fit.phi[j] * std::cos(2.0 * std::numbers::pi * nu * (j + 1.0));
        im += fit.phi[j] * std::sin(2.0 * std::numbers::pi * nu * (j + 1.0));
    }
    return fit.noiseVariance / (re * re + im * im);
}

TEST(BurgFit, ExactSmallCases) {
    // x = [1, 2], order 1: f = [2], b = [1], k = 2*2/(4 + 1), sigma2 = 5/2 (1 - k^2).
    const ArFit two = burgFit(std::vector<double>{1.0, 2.0}, 1, false);
    EXPECT_TRUE(allNear(std::vector{two.phi[0], two.noiseVariance}, std::vector{0.8, 0.9}, 1e-15));
    const ArFit ref = burgFit(std::vector<double>{1, 2, 3, 4, 5, 6, 7, -8}, 4, false);
    const std::vector<double> phi{0.3258074018, -0.0003457084, -0.0337897814, -0.0988527262};
    EXPECT_TRUE(allNear(ref.phi, phi, 1e-10));
    EXPECT_NEAR(ref.noiseVariance, 22.446876098878, 1e-11);
    EXPECT_EQ(ref.meanSquare, 25.5);
    // The order is cut to one below the length.
    EXPECT_EQ(burgFit(std::vector<double>{3, -1, 4, 1}, 10, true).phi.size(), 3u);
    EXPECT_TRUE(burgFit(std::vector<double>{5.0}, 3, true).phi.empty());
    EXPECT_TRUE(burgFitFast(std::vector<double>{4.0}, 3, false)->phi.empty());
}

// AR(2) with phi = (0.75, -0.5): the fit recovers the model, its density follows
// sigma2 / |1 - phi1 z - phi2 z^2|^2 and peaks where cos(2 pi nu) =
// -phi1 (1 - phi2) / (4 phi2): the fitted model exactly so on its grid, and near
// the true peak within one step of a 512-point grid (the estimates scatter by
// ~0.01 at N = 10^4).
TEST(BurgFit, Ar2FitAndDensityFollowTheModel) {
    const double phi1 = 0.75, phi2 = -0.5;
    const std::vector<double> x = ar2Noise(10000, phi1, phi2);
    const ArFit fit = burgFit(x, 2, true);
    EXPECT_TRUE(allNear(fit.phi, std::vector{phi1, phi2}, 0.03));
    EXPECT_NEAR(fit.noiseVariance, 1.0, 0.05);
    const std::vector<double> p = densityOf(fit, 1024);
    for (std::size_t i = 0; i < p.size(); i += 32)
        EXPECT_TRUE(isNear(p[i], 2.0 * ar2Density(i / 2048.0, phi1, phi2), 0.0, 0.15)) << i;
    auto peak = [](double a, double b) {
        return std::acos(-a * (1.0 - b) / (4.0 * b)) / (2.0 * std::numbers::pi);
    };
    EXPECT_LE(std::abs(peakIndex(p) - peak(fit.phi[0], fit.phi[1]) * 2048.0), 0.5);
    EXPECT_LE(std::abs(peakIndex(densityOf(fit, 256)) - peak(phi1, phi2) * 512.0), 1.0);
}

// Float-rounded data as the program passes them; lengths 2, 3, primes, powers of
// two; orders from 1 to the largest the clamps allow (a third of the window) and
// to the length - 1. The guard refuses the fast recursion where it would lose
// precision, and burgFit then takes the classic one.
TEST(BurgFit, FastRecursionMatchesTheClassicOneOrRefuses) {
    std::vector<double> walk = whiteNoise(2048, 1.0), faint = whiteNoise(2048, 0.01, 99);
    const std::vector<double> sine = sinusoid(2048, 0.05, 3.0, 0.4);
    double level = 1000.0;
    for (std::size_t t = 0; t < walk.size(); ++t) {
        walk[t] = level += walk[t] + (t % 7 == 0 ? 1.0 : 0.0);
        faint[t] += sine[t];
    }
    // clang-format off
    const std::tuple<const char*, std::vector<double>, std::vector<std::size_t>, bool> cases[] = {
        {"ar2 n=2", ar2Noise(2, 0.75, -0.5), {1, 5}, true},
        {"ar2 n=3", ar2Noise(3, 0.75, -0.5), {1, 2}, true},
        {"ar2 n=13", ar2Noise(13, 0.75, -0.5), {1, 2, 4, 12}, true},
        {"ar2 n=521", ar2Noise(521, 0.75, -0.5), {2, 174}, true},
        {"ar2 n=2048", ar2Noise(2048, 0.75, -0.5), {2, 204, 683}, true},
        {"walk n=2048", walk, {20, 204, 683}, true}, {"sine, noise 0.3 %", faint, {10, 204}, true},
        {"noiseless sine", sine, {3, 204}, false}, {"constant", std::vector(64, 2.5), {3}, false}};
    // clang-format on
    for (const auto& [data, series, orders, fastFits] : cases)
        for (std::size_t order : orders) {
            SCOPED_TRACE(std::string(data) + ", order " + std::to_string(order));
            const std::vector<double> x = toDouble(toFloat(series));
            const ArFit classic = burgFitClassic(x, order, true), chosen = burgFit(x, order, true);
            const std::optional<ArFit> fast = burgFitFast(x, order, true);
            ASSERT_EQ(fast.has_value(), fastFits);
            const ArFit& compared = fast ? *fast : chosen;
            const double largest = std::max(1.0, largestMagnitude(classic.phi));
            EXPECT_TRUE(allNear(compared.reflection, classic.reflection, 1e-9));
            EXPECT_TRUE(allNear(compared.phi, classic.phi, 1e-9 * largest));
            EXPECT_TRUE(isNear(compared.noiseVariance, classic.noiseVariance, 0.0, 1e-9));
            EXPECT_EQ(chosen.phi, fast ? fast->phi : classic.phi);
        }
}

// The model's autocovariance at lag 0 is r0 = sum x^2 / N exactly, so the mean of
// the two-sided density over the whole circle of 2 nf frequencies, (P_0/2 + P_1
// + ... + P_{nf-1} + S(1/2)) / (2 nf), is the mean square; a grid of M points adds
// the autocovariances at lags M, 2M, ..., negligible once M is well beyond the
// model's memory (order 204 on 2048 points has sharp spurious peaks: 8192).
TEST(ArDensity, MeanOverTheCircleIsTheMeanSquare) {
    const auto circleMean = [](const ArFit& fit, std::size_t nf) {
        const std::vector<double> p = densityOf(fit, nf);
        const double sum = std::accumulate(p.begin(), p.end(), -p[0] / 2.0);
        return (sum + directTwoSided(fit, 0.5)) / (2.0 * nf);
    };
    const ArFit ref = burgFit(std::vector<double>{1, 2, 3, 4, 5, 6, 7, -8}, 4, false);
    EXPECT_TRUE(isNear(circleMean(ref, 1024), 25.5, 0.0, 1e-12));
    const std::vector<double> x = ar2Noise(2048, 0.75, -0.5);
    for (std::size_t order : {1u, 20u, 204u}) {
        const ArFit fit = burgFit(x, order, true);
        EXPECT_TRUE(isNear(circleMean(fit, 8192), fit.meanSquare, 0.0, 1e-10)) << order;
        // The program's one-sided sum differs only by the end bins and aliasing.
        const std::vector<double> p = densityOf(fit, 1024);
        EXPECT_TRUE(
            isNear(std::accumulate(p.begin(), p.end(), 0.0) / 2048.0, fit.meanSquare, 0.0, 5e-3))
            << order;
    }
    // Order 40 on 8 frequencies: 41 coefficients folded onto a 16-point transform.
    const ArFit fit = burgFit(ar2Noise(400, 0.75, -0.5), 40, true);
    const std::vector<double> p = densityOf(fit, 8);
    for (std::size_t i = 0; i < p.size(); ++i)
        EXPECT_TRUE(isNear(p[i], 2.0 * directTwoSided(fit, i / 16.0), 0.0, 1e-9)) << i;
}

TEST(BurgSpectrum, WhiteNoiseFlatAtTwiceTheVarianceAndLinesInPlace) {
    const std::vector<float> flat = burgOf(whiteNoise(8192, 2.0), 10, 512);
    for (float v : flat)
        ASSERT_TRUE(isNear(v, 8.0, 0.0, 0.25)) << v;
    EXPECT_TRUE(isNear(std::accumulate(flat.begin(), flat.end(), 0.0) / 512, 8.0, 0.0, 0.04));
    for (double f : {0.05, 0.1, 0.3372}) {
        const std::vector<double> x = plus(sinusoid(2048, f, 3.0, 0.4), whiteNoise(2048, 0.01));
        EXPECT_LE(std::abs(peakIndex(burgOf(x, 10, 1024)) - f * 2048.0), 1.0) << f;
    }
}

TEST(BurgSpectrum, DegenerateInputsGiveFinitePositiveValues) {
    const std::vector<double> line = sinusoid(2048, 0.125);
    // clang-format off
    const std::tuple<std::vector<double>, std::size_t, std::size_t> cases[] = {
        {ar2Noise(1900, 0.75, -0.5), 600, 1024}, {line, 10, 1024}, {line, 683, 1024},
        {std::vector<double>(2, 1.0), 5, 16}, {{}, 5, 16}};
    // clang-format on
    for (const auto& [x, order, nf] : cases)
        EXPECT_TRUE(allFinitePositive(burgOf(x, order, nf))) << x.size() << " " << order;
    // A noiseless line: sigma2 and |A| at the line collapse; the guards keep every
    // value positive and at most 2e12 * mean square.
    const ArFit fit = burgFit(std::span(line).first(512), 40, true);
    for (double v : densityOf(fit, 256))
        EXPECT_TRUE(v > 0.0 && v <= 2e12 * fit.meanSquare * (1 + 1e-12)) << v;
    // A constant has nothing to fit: flat, tiny, positive.
    const std::vector<float> c = burgOf(std::vector<double>(2048, 3.25), 10, 1024);
    EXPECT_TRUE(allFinitePositive(c));
    EXPECT_EQ(*std::min_element(c.begin(), c.end()), *std::max_element(c.begin(), c.end()));
    EXPECT_LT(c[0], 1e-30f);
}

} // namespace
} // namespace tarnic
