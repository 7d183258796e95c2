#include "numeric/burg.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <cstring>
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

// Block width of the sums below. Each sum is kept in kLanes partial sums that
// are added in a fixed order at the end, so the compiler may hold them in vector
// registers (no reassociation is needed) and the result is the same whichever
// instruction set runs it.
constexpr std::size_t kLanes = 8;

// GCC notes that returning such a value would change the ABI without AVX. The
// helpers below are therefore always inlined (at every optimisation level),
// so such a value never crosses a call between code built for different
// instruction sets.
#pragma GCC diagnostic ignored "-Wpsabi"

// Four lanes of doubles as one value; the compiler maps them onto whatever
// vector registers the running clone has (two SSE2 halves or one AVX2 register).
using Lanes = double __attribute__((vector_size(32)));
constexpr std::size_t kWidth = 4;
static_assert(kLanes == 2 * kWidth);

[[gnu::always_inline]] inline Lanes load(const double* p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
[[gnu::always_inline]] inline void store(double* p, const Lanes& v) { std::memcpy(p, &v, sizeof v); }
[[gnu::always_inline]] inline Lanes splat(double x) { return Lanes{x, x, x, x}; }
// Adds the two halves' lanes into the kLanes partial sums.
[[gnu::always_inline]] inline void addLanes(double* sums, const Lanes (&halves)[2]) {
    for (std::size_t h = 0; h < 2; ++h)
        for (std::size_t l = 0; l < kWidth; ++l)
            sums[h * kWidth + l] += halves[h][l];
}

double laneTotal(const double* s) {
    return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7]));
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
// unspecified, when the error energy falls below the share of the initial
// energy that the cancellation can still resolve.
//
// Layout: every update reads one vector forwards and another backwards (a[i]
// with a[p - i], g[i] with g[p - i], y from both ends). Each of a, g and y is
// therefore also kept mirrored (aMirror[last - i] = a[i], ...), so that all
// accesses run forwards, and r is stored at a base that moves down by one per
// order, so that its shift costs nothing. Per order two passes remain, both
// straight loops over contiguous memory that the compiler turns into vector
// code: (1) the filter update with the new r and the three dot products that
// need them, (2) the update of g with the two sums of the next order. Before,
// five passes, two of them backwards, walked the same vectors.
__attribute__((target_clones("arch=x86-64-v3", "default")))
bool fastBurg(std::span<const double> y, std::size_t order, std::vector<double>& reflection,
              std::vector<double>& phi) {
    const std::size_t n = y.size();
    const std::vector<double> c = autocorrelation(y, order);
    const std::size_t last = order + 1; // the mirrors' last index
    std::vector<double> aStore(order + 2, 0.0), aMirrorStore(order + 2, 0.0);
    std::vector<double> gStore(order + 2, 0.0), gMirrorStore(order + 2, 0.0);
    std::vector<double> rStore(2 * order + 2, 0.0), yMirrorStore(n);
    double* __restrict a = aStore.data();
    double* __restrict aMirror = aMirrorStore.data();
    double* __restrict g = gStore.data();
    double* __restrict gMirror = gMirrorStore.data();
    double* __restrict yMirror = yMirrorStore.data();
    const double* __restrict yf = y.data();
    for (std::size_t t = 0; t < n; ++t)
        yMirror[t] = yf[n - 1 - t];

    a[0] = aMirror[last] = 1.0;
    g[0] = gMirror[last] = 2.0 * c[0] - yf[0] * yf[0] - yf[n - 1] * yf[n - 1];
    g[1] = gMirror[last - 1] = 2.0 * c[1];
    std::size_t rBase = order; // r[i] = rStore[rBase + i]
    rStore[rBase] = 2.0 * c[1];
    const double initialEnergy = g[0];
    double cross = a[0] * g[1], energy = a[0] * g[0];
    reflection.clear();
    for (std::size_t m = 0; m < order; ++m) {
        if (!(energy > kTrustedEnergyShare * initialEnergy) || std::abs(cross) > energy * (1.0 + 1e-9))
            return false;
        const double k = std::clamp(cross / energy, -1.0, 1.0);
        reflection.push_back(k);
        const std::size_t p = m + 1; // the new order

        // Pass 1. a <- a - k * (a reversed over p + 1 places); with aRev[i] =
        // a[p - i] both copies update from the same pair of old values.
        // r_{i} <- r_{i-1} - y_{i-1} y_p - y_{n-i} y_{n-1-p} (the shift is the
        // base moving down), r_0 <- 2 c_{p+1}; and the products of the new a with
        // the p + 1 samples at each end and with the new r.
        double* __restrict aRev = aMirror + (last - p);
        const bool lastOrder = p == order;
        const double yp = yf[p], ytp = yf[n - 1 - p];
        const double* __restrict head = yMirror + (n - 1 - p); // head[i] = y_{p-i}
        const double* __restrict tail = yf + (n - 1 - p);      // tail[i] = y_{n-1-p+i}
        double* __restrict r = rStore.data() + (rBase - 1);    // the new r
        double headSum[kLanes] = {}, tailSum[kLanes] = {}, edgeSum[kLanes] = {};
        {
            const double a0 = a[0], q0 = aRev[0];
            a[0] = a0 - k * q0;
            aRev[0] = q0 - k * a0;
            r[0] = lastOrder ? 0.0 : 2.0 * c[p + 1];
            headSum[0] = head[0] * a[0];
            tailSum[0] = tail[0] * a[0];
            edgeSum[0] = r[0] * a[0];
        }
        std::size_t i = 1;
        {
            const Lanes kv = splat(k), ypv = splat(yp), ytpv = splat(ytp);
            Lanes hs[2] = {}, ts[2] = {}, es[2] = {};
            // One half block: kWidth lanes at j, summed into the h-th accumulators
            // (named registers, not an indexed array, so they stay in registers).
            const auto step = [&](std::size_t j, Lanes& hsum, Lanes& tsum, Lanes& esum)
                __attribute__((always_inline)) {
                const Lanes ai = load(a + j), qi = load(aRev + j);
                const Lanes an = ai - kv * qi;
                store(a + j, an);
                store(aRev + j, qi - kv * ai);
                const Lanes rn = load(r + j) - load(yf + j - 1) * ypv - load(yMirror + j - 1) * ytpv;
                store(r + j, rn);
                hsum += load(head + j) * an;
                tsum += load(tail + j) * an;
                esum += rn * an;
            };
            Lanes h0 = {}, h1 = {}, t0 = {}, t1 = {}, e0 = {}, e1 = {};
            for (; i + kLanes <= p + 1; i += kLanes) {
                step(i, h0, t0, e0);
                step(i + kWidth, h1, t1, e1);
            }
            hs[0] = h0, hs[1] = h1, ts[0] = t0, ts[1] = t1, es[0] = e0, es[1] = e1;
            addLanes(headSum, hs);
            addLanes(tailSum, ts);
            addLanes(edgeSum, es);
        }
        for (std::size_t l = 0; i <= p; ++i, ++l) {
            const double ai = a[i], qi = aRev[i];
            const double an = ai - k * qi;
            a[i] = an;
            aRev[i] = qi - k * ai;
            const double rn = r[i] - yf[i - 1] * yp - yMirror[i - 1] * ytp;
            r[i] = rn;
            headSum[l] += head[i] * an;
            tailSum[l] += tail[i] * an;
            edgeSum[l] += rn * an;
        }
        if (lastOrder) {
            phi.assign(order, 0.0);
            for (std::size_t j = 0; j < order; ++j)
                phi[j] = -a[j + 1];
            break;
        }
        --rBase;
        const double headDot = laneTotal(headSum), tailDot = laneTotal(tailSum);
        const double edge = laneTotal(edgeSum);

        // Pass 2. g_i <- g_i - k g_{p-i} - y_{p-i} headDot - y_{n-1-p+i} tailDot
        // for i = 0 .. p, g_{p+1} <- r . a, with gRev[i] = g[p - i] updated from
        // the same old pair; then the next order's sums
        //     energy = sum_{i<=p} a_i g_i,  cross = a_0 g_{p+1} + sum_{i<p} a_{i+1} g_{p-i}.
        double* __restrict gRev = gMirror + (last - p);
        double energySum[kLanes] = {}, crossSum[kLanes] = {};
        i = 0;
        {
            const Lanes kv = splat(k), hv = splat(headDot), tv = splat(tailDot);
            const auto step = [&](std::size_t j, Lanes& esum, Lanes& csum)
                __attribute__((always_inline)) {
                const Lanes gi = load(g + j), qi = load(gRev + j);
                const Lanes gn = gi - kv * qi - load(head + j) * hv - load(tail + j) * tv;
                const Lanes qn = qi - kv * gi - load(yf + j) * hv - load(yMirror + j) * tv;
                store(g + j, gn);
                store(gRev + j, qn);
                esum += load(a + j) * gn;
                csum += load(a + j + 1) * qn; // a_{p+1} = 0 closes the sum
            };
            Lanes e0 = {}, e1 = {}, c0 = {}, c1 = {};
            for (; i + kLanes <= p + 1; i += kLanes) {
                step(i, e0, c0);
                step(i + kWidth, e1, c1);
            }
            const Lanes es[2] = {e0, e1}, cs[2] = {c0, c1};
            addLanes(energySum, es);
            addLanes(crossSum, cs);
        }
        for (std::size_t l = 0; i <= p; ++i, ++l) {
            const double gi = g[i], qi = gRev[i];
            const double gn = gi - k * qi - head[i] * headDot - tail[i] * tailDot;
            const double qn = qi - k * gi - yf[i] * headDot - yMirror[i] * tailDot;
            g[i] = gn;
            gRev[i] = qn;
            energySum[l] += a[i] * gn;
            crossSum[l] += a[i + 1] * qn;
        }
        g[p + 1] = gMirror[last - p - 1] = edge;
        energy = laneTotal(energySum);
        cross = a[0] * edge + laneTotal(crossSum);
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
