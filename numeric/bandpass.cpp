#include "numeric/bandpass.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace tarnic {
namespace {

// Relative allowance at the band's edges, so that a bin exactly on an edge (a
// period of 20 samples and 2n a multiple of 20) is kept despite rounding.
constexpr double kEdgeAllowance = 1e-9;

// Steps 2 and 3 with transforms of length n instead of 2n. The transform of the
// mirrored record is E_k = exp(i pi k / 2n) Y_k with Y the DCT-II of the n
// samples (and E_n = 0), and the inverse of the masked E, cut to n samples, is
// the DCT-III of the masked Y. Both come from one real transform of length n of
// the samples reordered as (Makhoul 1980; any n, odd n ending with x(n-1) in
// the middle)
//     v = x0 x2 x4 ... | ... x5 x3 x1
// with u_k = exp(-i pi k / 2n) V_k, Y_k = 2 Re u_k and Y_(n-k) = -2 Im u_k for
// k = 0 .. n/2; and backwards, the transform of the reordered output is
// exp(i pi k / 2n) (Z_k - i Z_(n-k)) for the masked Z. Only the bins k with k or
// n - k in the kept run [first, last] can be nonzero; the others are cleared
// without arithmetic. The factors exp(i pi k / 2n) are taken exactly at every
// 64th bin and at the start of each run, and carried in between by the factor
// of one bin (rounding over at most 63 products).
template <class Rest>
void filterByHalfLengthTransforms(std::span<double> x, const Rest& rest, std::size_t first,
                                  std::size_t last, double scale) {
    const std::size_t n = x.size();
    const std::size_t half = n / 2;
    const std::size_t odd = n / 2;      // count of odd-indexed samples
    const std::size_t even = n - odd;   // count of even-indexed samples
    double* v = threadScratch<double>(0, n);
    for (std::size_t j = 0; j < even; ++j)
        v[j] = rest(2 * j);
    for (std::size_t j = 0; j < odd; ++j)
        v[n - 1 - j] = rest(2 * j + 1);
    fftw_complex* bins = threadScratch<fftw_complex>(0, half + 1);
    recentRealFftPlan(n, FftDirection::ForwardOverwrite)->forward(v, bins);

    const double step = std::numbers::pi / static_cast<double>(2 * n);
    const double stepC = std::cos(step), stepS = std::sin(step);
    auto kept = [&](std::size_t k) { return k >= first && k <= last; };
    // Bins k = 0 .. half that carry a kept Z_k or Z_(n-k): [first, last] and
    // [n - last, n - first] (k >= 1), cut to 0 .. half, merged when they overlap.
    using Run = std::pair<std::size_t, std::size_t>; // [begin, end)
    const auto cut = [&](long long begin, long long end) {
        const long long top = static_cast<long long>(half) + 1;
        begin = std::clamp(begin, 0LL, top);
        return Run(begin, std::clamp(end, begin, top));
    };
    const auto sn = static_cast<long long>(n), sFirst = static_cast<long long>(first),
               sLast = static_cast<long long>(last);
    Run runs[2] = {cut(sFirst, sLast + 1), cut(std::max(sn - sLast, 1LL), sn - sFirst + 1)};
    if (runs[1].first < runs[0].first) std::swap(runs[0], runs[1]);
    if (runs[1].first <= runs[0].second) {
        runs[0].second = std::max(runs[0].second, runs[1].second);
        runs[1] = Run(runs[0].second, runs[0].second);
    }
    std::size_t done = 0;
    for (const auto& run : runs) {
        std::fill(&bins[done][0], &bins[run.first][0], 0.0);
        double c = 1.0, s = 0.0; // exp(i pi k / 2n)
        for (std::size_t k = run.first; k < run.second; ++k) {
            if (k % 64 == 0 || k == run.first) {
                c = std::cos(step * static_cast<double>(k));
                s = std::sin(step * static_cast<double>(k));
            } else {
                const double next = c * stepC - s * stepS;
                s = s * stepC + c * stepS;
                c = next;
            }
            const double re = bins[k][0], im = bins[k][1];
            // u = conj(t) V; Z_k = g_k 2 Re u, Z_(n-k) = -g_(n-k) 2 Im u (Z_n = 0).
            const double low = kept(k) ? scale * 2.0 * (c * re + s * im) : 0.0;
            const double high = k > 0 && kept(n - k) ? -scale * 2.0 * (c * im - s * re) : 0.0;
            // W = t (Z_k - i Z_(n-k)).
            bins[k][0] = c * low + s * high;
            bins[k][1] = s * low - c * high;
        }
        done = std::max(done, run.second);
    }
    std::fill(&bins[done][0], &bins[half + 1][0], 0.0);
    recentRealFftPlan(n, FftDirection::Backward)->backward(bins, v);
    for (std::size_t j = 0; j < even; ++j)
        x[2 * j] = v[j];
    for (std::size_t j = 0; j < odd; ++j)
        x[2 * j + 1] = v[n - 1 - j];
}

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

    auto rest = [&](std::size_t t) {
        return x[t] - mean - slope * (static_cast<double>(t) - middle);
    };
    // Bin k of the mirrored record (frequency k / 2n) is kept with this gain,
    // which includes the 1 / 2n of the inverse transform.
    // Both conditions are monotone in k, so the kept bins are one run
    // [first, last], found once (an estimate, then the test itself).
    const double scale = 1.0 / static_cast<double>(2 * n);
    auto frequency = [&](std::size_t k) {
        return static_cast<double>(k) / static_cast<double>(2 * n);
    };
    auto aboveLow = [&](std::size_t k) {
        return k > 0 && frequency(k) * band.longest >= 1.0 - kEdgeAllowance;
    };
    auto belowHigh = [&](std::size_t k) {
        return frequency(k) * band.shortest <= 1.0 + kEdgeAllowance;
    };
    const double twoN = static_cast<double>(2 * n);
    auto first = static_cast<std::size_t>(std::max(0.0, std::floor(twoN / band.longest) - 1.0));
    while (first > 0 && aboveLow(first - 1))
        --first;
    while (first <= n && !aboveLow(first))
        ++first;
    auto last = static_cast<std::size_t>(std::min(twoN, std::ceil(twoN / band.shortest) + 1.0));
    while (last > 0 && !belowHigh(last))
        --last;
    while (last < n && belowHigh(last + 1))
        ++last;
    filterByHalfLengthTransforms(x, rest, first, last, scale);
    return band;
}

} // namespace tarnic
