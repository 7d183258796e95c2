#include "numeric/burg.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace tarnic {

ArFit burgFitClassic(std::span<const double> x, std::size_t order, bool removeMean) {
    const std::size_t n = x.size();
    ArFit fit;
    double mean = 0.0;
    if (removeMean && n > 0) {
        for (double v : x)
            mean += v;
        mean /= static_cast<double>(n);
    }
    double sumSquares = 0.0;
    for (double v : x)
        sumSquares += (v - mean) * (v - mean);
    fit.meanSquare = n > 0 ? sumSquares / static_cast<double>(n) : 0.0;
    fit.noiseVariance = fit.meanSquare;

    order = n > 1 ? std::min(order, n - 1) : 0;
    if (order == 0) return fit;

    // At order p the live errors are f[j] = f_{j+p} and b[j] = b_{j+p-1} (0-based
    // t), j = 0 .. n-p-1: each forward error next to the backward error one step
    // earlier. Both start as the data.
    std::vector<double> f(n - 1), b(n - 1);
    for (std::size_t j = 0; j + 1 < n; ++j) {
        f[j] = x[j + 1] - mean;
        b[j] = x[j] - mean;
    }
    fit.phi.reserve(order);
    fit.reflection.reserve(order);
    std::vector<double> previous;
    for (std::size_t p = 1; p <= order; ++p) {
        const std::size_t live = n - p;
        double cross = 0.0, energy = 0.0;
        for (std::size_t j = 0; j < live; ++j) {
            cross += f[j] * b[j];
            energy += f[j] * f[j] + b[j] * b[j];
        }
        // |k| <= 1 holds exactly (Cauchy-Schwarz); the clamp only catches rounding.
        const double k = energy > 0.0 ? std::clamp(2.0 * cross / energy, -1.0, 1.0) : 0.0;

        previous = fit.phi;
        fit.phi.push_back(k);
        for (std::size_t j = 0; j + 1 < p; ++j)
            fit.phi[j] = previous[j] - k * previous[p - 2 - j];
        fit.reflection.push_back(k);
        fit.noiseVariance *= (1.0 - k) * (1.0 + k);

        // Errors of order p, shifted for order p + 1:
        //   b_t^(p) = b_{t-1} - k f_t      stays at j (it pairs with f_{t+1} next),
        //   f_t^(p) = f_t - k b_{t-1}      moves down one place.
        // b[j + 1] is read before its own update, so one ascending pass suffices.
        for (std::size_t j = 0; j + 1 < live; ++j) {
            const double fj = f[j];
            b[j] -= k * fj;
            f[j] = f[j + 1] - k * b[j + 1];
        }
    }
    return fit;
}

namespace {

// A fast recursion that loses more than this share of the order-0 energy's
// digits is not trusted: once the error energy falls below it, the sums the fast
// recursion forms from the autocorrelation cancel to a few significant digits.
constexpr double kTrustedEnergyShare = 1e-5;

// Lags 0 .. maxLag of the autocorrelation c_j = sum_{t=0}^{n-1-j} y_t y_{t+j}.
// Directly for few lags; otherwise from one FFT of y zero-padded to a length
// >= n + maxLag, so the circular products never wrap onto the lags wanted.
std::vector<double> autocorrelation(std::span<const double> y, std::size_t maxLag) {
    const std::size_t n = y.size();
    std::vector<double> c(maxLag + 1, 0.0);
    std::size_t length = 1;
    while (length < n + maxLag)
        length *= 2;
    const double fftCost = 6.0 * static_cast<double>(length) * std::log2(static_cast<double>(length));
    if (static_cast<double>(n) * static_cast<double>(maxLag + 1) <= fftCost) {
        for (std::size_t j = 0; j <= maxLag && j < n; ++j) {
            double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
            const std::size_t count = n - j;
            std::size_t t = 0;
            for (; t + 4 <= count; t += 4) {
                s0 += y[t] * y[t + j];
                s1 += y[t + 1] * y[t + 1 + j];
                s2 += y[t + 2] * y[t + 2 + j];
                s3 += y[t + 3] * y[t + 3 + j];
            }
            for (; t < count; ++t)
                s0 += y[t] * y[t + j];
            c[j] = (s0 + s1) + (s2 + s3);
        }
        return c;
    }
    // Sizes up to 2^16 recur (the windows of a map); larger ones are met once.
    std::unique_ptr<RealFftPlan> ownForward, ownBackward;
    const RealFftPlan* forward = nullptr;
    const RealFftPlan* backward = nullptr;
    if (length <= (std::size_t{1} << 16)) {
        forward = &realFftPlan(length, FftDirection::Forward);
        backward = &realFftPlan(length, FftDirection::Backward);
    } else {
        ownForward = std::make_unique<RealFftPlan>(length, FftDirection::Forward);
        ownBackward = std::make_unique<RealFftPlan>(length, FftDirection::Backward);
        forward = ownForward.get();
        backward = ownBackward.get();
    }
    FftBuffer<double> padded(length);
    std::copy(y.begin(), y.end(), padded.data());
    FftBuffer<fftw_complex> bins(length / 2 + 1);
    forward->forward(padded.data(), bins.data());
    for (std::size_t k = 0; k <= length / 2; ++k) {
        bins[k][0] = bins[k][0] * bins[k][0] + bins[k][1] * bins[k][1];
        bins[k][1] = 0.0;
    }
    backward->backward(bins.data(), padded.data());
    const double scale = 1.0 / static_cast<double>(length);
    for (std::size_t j = 0; j <= maxLag && j < n; ++j)
        c[j] = padded[j] * scale;
    return c;
}

// The reflection coefficients k_1 .. k_order of Burg's recursion for the
// (already centred) data y, from their autocorrelation and the samples at the
// two ends (K. Vos, "A Fast Implementation of Burg's Method", 2013). With the
// prediction-error filter a = [1, -phi_1, .., -phi_m] of order m, the sums of
// the classic recursion are quadratic forms of a in the covariance matrix of the
// live errors; that matrix is the autocorrelation's Toeplitz matrix less the
// products of the first and the last m samples, so its products with a are
// carried from order to order in O(m):
//     g = R_m [a; 0] ... as one vector of m + 2 sums, energy = a . g,
//     2 * cross = a . (g reversed),
// and r holds the boundary-corrected autocorrelations that extend g by one.
// phi comes out as -a, the same numbers the Levinson update of burgFitClassic()
// makes from the same k (it is that update). Returns false, leaving the results
// unspecified, when the error energy falls
// below the share of the initial energy that the cancellation can still resolve.
bool fastBurg(std::span<const double> y, std::size_t order, std::vector<double>& reflection,
              std::vector<double>& phi) {
    const std::size_t n = y.size();
    const std::vector<double> c = autocorrelation(y, order);
    std::vector<double> a(order + 1, 0.0), g(order + 2, 0.0), r(order + 1, 0.0);
    a[0] = 1.0;
    g[0] = 2.0 * c[0] - y[0] * y[0] - y[n - 1] * y[n - 1];
    g[1] = 2.0 * c[1];
    r[0] = 2.0 * c[1];
    const double initialEnergy = g[0];
    reflection.clear();
    for (std::size_t m = 0; m < order; ++m) {
        // Sums of the classic recursion at order m + 1: a has m + 1 live terms.
        double cross0 = 0.0, cross1 = 0.0, energy0 = 0.0, energy1 = 0.0;
        std::size_t j = 0;
        for (; j + 2 <= m + 1; j += 2) {
            cross0 += a[j] * g[m + 1 - j];
            cross1 += a[j + 1] * g[m - j];
            energy0 += a[j] * g[j];
            energy1 += a[j + 1] * g[j + 1];
        }
        for (; j <= m; ++j) {
            cross0 += a[j] * g[m + 1 - j];
            energy0 += a[j] * g[j];
        }
        const double cross = cross0 + cross1, energy = energy0 + energy1;
        if (!(energy > kTrustedEnergyShare * initialEnergy) || std::abs(cross) > energy * (1.0 + 1e-9))
            return false;
        const double k = std::clamp(cross / energy, -1.0, 1.0);
        reflection.push_back(k);

        // a <- a - k * (a reversed over m + 2 places), in pairs from both ends.
        for (std::size_t lo = 0, hi = m + 1; lo <= hi; ++lo, --hi) {
            const double alo = a[lo], ahi = a[hi];
            a[lo] = alo - k * ahi;
            if (lo != hi) a[hi] = ahi - k * alo;
            if (hi == 0) break;
        }
        const std::size_t p = m + 1; // the new order
        if (p == order) {
            phi.assign(order, 0.0);
            for (std::size_t i = 0; i < order; ++i)
                phi[i] = -a[i + 1];
            break;
        }

        // r_{j+1} <- r_j - y_j y_p - y_{n-1-j} y_{n-1-p}, r_0 <- 2 c_{p+1}; with
        // the products of a with the p + 1 samples at each end, and of a with r.
        const double* head = y.data();              // y_p, y_{p-1}, .., y_0 = head[p - i]
        const double* tail = y.data() + (n - 1 - p); // y_{n-1-p} .. y_{n-1} = tail[i]
        const double yp = y[p], ytp = y[n - 1 - p];
        for (std::size_t i = p; i > 0; --i)
            r[i] = r[i - 1] - y[i - 1] * yp - y[n - i] * ytp;
        r[0] = 2.0 * c[p + 1];
        double headDot = 0.0, tailDot = 0.0, edge = 0.0;
        for (std::size_t i = 0; i <= p; ++i) {
            headDot += head[p - i] * a[i];
            tailDot += tail[i] * a[i];
            edge += r[i] * a[i];
        }
        // g_j <- g_j - k g_{p-j} - y_{p-j} headDot - y_{n-1-p+j} tailDot, and
        // g_{p+1} <- r . a.
        for (std::size_t lo = 0, hi = p; lo <= hi; ++lo, --hi) {
            const double glo = g[lo], ghi = g[hi];
            g[lo] = glo - k * ghi - head[p - lo] * headDot - tail[lo] * tailDot;
            if (lo != hi) g[hi] = ghi - k * glo - head[p - hi] * headDot - tail[hi] * tailDot;
            if (hi == 0) break;
        }
        g[p + 1] = edge;
    }
    return true;
}

} // namespace

std::optional<ArFit> burgFitFast(std::span<const double> x, std::size_t order, bool removeMean) {
    const std::size_t n = x.size();
    order = n > 1 ? std::min(order, n - 1) : 0;
    double mean = 0.0;
    if (removeMean && n > 0) {
        for (double v : x)
            mean += v;
        mean /= static_cast<double>(n);
    }
    std::vector<double> y(n);
    double sumSquares = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        y[t] = x[t] - mean;
        sumSquares += y[t] * y[t];
    }
    ArFit fit;
    fit.meanSquare = n > 0 ? sumSquares / static_cast<double>(n) : 0.0;
    fit.noiseVariance = fit.meanSquare;
    if (order == 0) return fit;
    if (!(sumSquares > 0.0) || !fastBurg(y, order, fit.reflection, fit.phi)) return std::nullopt;
    for (double k : fit.reflection)
        fit.noiseVariance *= (1.0 - k) * (1.0 + k);
    return fit;
}

ArFit burgFit(std::span<const double> x, std::size_t order, bool removeMean) {
    if (std::optional<ArFit> fit = burgFitFast(x, order, removeMean)) return std::move(*fit);
    return burgFitClassic(x, order, removeMean);
}

void arDensity(const ArFit& fit, std::span<double> out) {
    const std::size_t nf = out.size();
    if (nf == 0) return;
    const std::size_t size = 2 * nf;
    const RealFftPlan& plan = realFftPlan(size, FftDirection::Forward);
    FftBuffer<double> poly(size);
    FftBuffer<fftw_complex> bins(nf + 1);
    poly[0] = 1.0;
    for (std::size_t j = 0; j < fit.phi.size(); ++j)
        poly[(j + 1) % size] -= fit.phi[j];
    plan.forward(poly.data(), bins.data());

    const double r0 = fit.meanSquare;
    const double sigma2 = std::max(fit.noiseVariance, 1e-12 * r0);
    const double minGain = r0 > 0.0 ? sigma2 / (1e12 * r0) : 1.0;
    for (std::size_t i = 0; i < nf; ++i) {
        const double gain = bins[i][0] * bins[i][0] + bins[i][1] * bins[i][1];
        out[i] = 2.0 * sigma2 / std::max(gain, minGain);
    }
}

void burgSpectrum(std::span<const float> samples, std::size_t order, std::span<float> out) {
    const std::vector<double> x(samples.begin(), samples.end());
    const ArFit fit = burgFit(x, order, true);
    std::vector<double> density(out.size());
    arDensity(fit, density);
    constexpr double lowest = std::numeric_limits<float>::min();
    constexpr double highest = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = static_cast<float>(std::clamp(density[i], lowest, highest));
}

} // namespace tarnic
