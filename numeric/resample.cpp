#include "numeric/resample.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

namespace tarnic {

Resampled fourierResample(std::span<const double> x, double step, std::size_t capacity) {
    const std::size_t n = x.size();
    if (!(step >= 1.0)) step = 1.0;
    const double wanted = static_cast<double>(n) / step;
    const auto fit = static_cast<std::size_t>(std::floor(wanted * (1.0 + 0x1p-23)));
    const std::size_t m = std::min({fit, n, capacity});
    if (m == 0) return {{}, step};
    const double stepUsed = static_cast<double>(n) / static_cast<double>(m);

    // The line through the first and the last sample, in 0-based sample units.
    const double first = x.front();
    const double slope = n > 1 ? (x.back() - first) / static_cast<double>(n - 1) : 0.0;
    auto line = [&](double t) { return first + slope * t; };

    const auto forward = recentRealFftPlan(n, FftDirection::ForwardOverwrite);
    const auto backward = recentRealFftPlan(m, FftDirection::Backward);
    double* rest = threadScratch<double>(0, n);
    for (std::size_t i = 0; i < n; ++i)
        rest[i] = x[i] - line(static_cast<double>(i));
    fftw_complex* bins = threadScratch<fftw_complex>(0, n / 2 + 1);
    forward->forward(rest, bins);

    // Keep bins 0 .. m/2; the bin m/2 of an even m enters the inverse transform
    // once instead of as a +-pair, i.e. with half weight, unless m == n where it
    // is the original Nyquist bin, itself single. Shift by delta samples:
    // multiply bin k by exp(+2 pi i k delta / n). The factor is taken exactly at
    // every 64th bin and carried between by the factor of one bin, so rounding
    // grows over at most 63 products (~1e-14) at the price of 1/64 of the sines.
    const double delta = stepUsed - 1.0;
    auto phase = [&](std::size_t k) {
        const double turns = std::fmod(static_cast<double>(k) * delta, static_cast<double>(n));
        const double angle = 2.0 * std::numbers::pi * turns / static_cast<double>(n);
        return std::pair{std::cos(angle), std::sin(angle)};
    };
    const auto [stepC, stepS] = phase(1);
    fftw_complex* kept = threadScratch<fftw_complex>(1, m / 2 + 1);
    double c = 1.0, s = 0.0;
    for (std::size_t k = 0; k <= m / 2; ++k) {
        if (k % 64 == 0) {
            std::tie(c, s) = phase(k);
        } else {
            const double next = c * stepC - s * stepS;
            s = s * stepC + c * stepS;
            c = next;
        }
        kept[k][0] = bins[k][0] * c - bins[k][1] * s;
        kept[k][1] = bins[k][0] * s + bins[k][1] * c;
    }
    double* coarse = threadScratch<double>(1, m);
    backward->backward(kept, coarse);

    Resampled result;
    result.step = stepUsed;
    result.values.resize(m);
    for (std::size_t j = 0; j < m; ++j) {
        const double t = static_cast<double>(j + 1) * stepUsed - 1.0;
        result.values[j] = coarse[j] / static_cast<double>(n) + line(t);
    }
    return result;
}

} // namespace tarnic
