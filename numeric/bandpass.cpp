#include "numeric/bandpass.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnic {
namespace {

// Relative allowance at the band's edges, so that a bin exactly on an edge (a
// period of 20 samples and 2n a multiple of 20) is kept despite rounding.
constexpr double kEdgeAllowance = 1e-9;

} // namespace

BandPeriods bandPeriodsFor(std::size_t n, double tmin, double tmax) {
    if (n == 0) return {tmin, tmax};
    const double longestPossible = 2.0 * static_cast<double>(n);
    double shortest = std::isnan(tmin) ? 2.0 : tmin;
    double longest = std::isnan(tmax) ? longestPossible : tmax;
    if (shortest > longest) std::swap(shortest, longest);
    shortest = std::clamp(shortest, 2.0, longestPossible);
    longest = std::clamp(longest, 2.0, longestPossible);
    return {shortest, longest};
}

BandPeriods fourierBandPass(std::span<double> x, double tmin, double tmax) {
    const std::size_t n = x.size();
    const BandPeriods band = bandPeriodsFor(n, tmin, tmax);
    if (n == 0) return band;

    // Step 1: mean and least-squares line about the middle sample.
    const double middle = 0.5 * static_cast<double>(n - 1);
    double mean = 0.0;
    for (double v : x)
        mean += v;
    mean /= static_cast<double>(n);
    double moment = 0.0, spread = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        const double u = static_cast<double>(t) - middle;
        moment += u * (x[t] - mean);
        spread += u * u;
    }
    const double slope = spread > 0.0 ? moment / spread : 0.0;

    // Step 2: the mirrored record of length 2n.
    const std::size_t length = 2 * n;
    FftBuffer<double> extended(length);
    for (std::size_t t = 0; t < n; ++t) {
        const double rest = x[t] - mean - slope * (static_cast<double>(t) - middle);
        extended[t] = rest;
        extended[length - 1 - t] = rest;
    }

    // Step 3: keep the band's bins.
    const std::size_t bins = length / 2 + 1;
    FftBuffer<fftw_complex> spectrum(bins);
    realFftPlan(length, FftDirection::Forward).forward(extended.data(), spectrum.data());
    const double scale = 1.0 / static_cast<double>(length);
    for (std::size_t k = 0; k < bins; ++k) {
        const double frequency = static_cast<double>(k) / static_cast<double>(length);
        const bool inside = k > 0 && frequency * band.longest >= 1.0 - kEdgeAllowance &&
                            frequency * band.shortest <= 1.0 + kEdgeAllowance;
        const double gain = inside ? scale : 0.0;
        spectrum[k][0] *= gain;
        spectrum[k][1] *= gain;
    }
    realFftPlan(length, FftDirection::Backward).backward(spectrum.data(), extended.data());
    std::copy_n(extended.data(), n, x.begin());
    return band;
}

} // namespace tarnic
