#include "numeric/resample.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <numbers>

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

    const RealFftPlan forward(n, FftDirection::Forward);
    const RealFftPlan backward(m, FftDirection::Backward);
    FftBuffer<double> rest(n);
    for (std::size_t i = 0; i < n; ++i)
        rest[i] = x[i] - line(static_cast<double>(i));
    FftBuffer<fftw_complex> bins(n / 2 + 1);
    forward.forward(rest.data(), bins.data());

    // Keep bins 0 .. m/2; the bin m/2 of an even m enters the inverse transform
    // once instead of as a +-pair, i.e. with half weight, unless m == n where it
    // is the original Nyquist bin, itself single. Shift by delta samples:
    // multiply bin k by exp(+2 pi i k delta / n).
    const double delta = stepUsed - 1.0;
    FftBuffer<fftw_complex> kept(m / 2 + 1);
    for (std::size_t k = 0; k <= m / 2; ++k) {
        const double turns = std::fmod(static_cast<double>(k) * delta, static_cast<double>(n));
        const double angle = 2.0 * std::numbers::pi * turns / static_cast<double>(n);
        const double c = std::cos(angle), s = std::sin(angle);
        kept[k][0] = bins[k][0] * c - bins[k][1] * s;
        kept[k][1] = bins[k][0] * s + bins[k][1] * c;
    }
    FftBuffer<double> coarse(m);
    backward.backward(kept.data(), coarse.data());

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
