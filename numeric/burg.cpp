#include "numeric/burg.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarnic {

ArFit burgFit(std::span<const double> x, std::size_t order, bool removeMean) {
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
