#include "numeric/bandpass.h"

#include "numeric/fft_plans.h"
#include "numeric/workers.h"

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
// W_k = exp(i pi k / 2n) (Z_k - i Z_(n-k)) for the masked Z. Only the bins k
// with k or n - k in the kept run [first, last] can be nonzero; the others are
// cleared without arithmetic. The factors exp(i pi k / 2n) are taken exactly at
// every 64th bin and at the start of each run, and carried in between by the
// factor of one bin (rounding over at most 63 products).
//
// mask(bin, put, clear) runs that middle step: bin(k, t) gives V_k, with t =
// exp(i pi k / 2n) at hand; put(k, t, W_k) stores the result; clear(b, e)
// zeroes W_k for b <= k < e.
class DctMask {
  public:
    DctMask(std::size_t n, std::size_t first, std::size_t last, double scale)
        : n_(n), half_(n / 2), first_(first), last_(last), scale_(scale) {
        // Bins k = 0 .. n/2 that carry a kept Z_k or Z_(n-k): [first, last] and
        // [n - last, n - first] (k >= 1), cut to 0 .. n/2, merged when they
        // overlap.
        const auto cut = [&](long long begin, long long end) {
            const long long top = static_cast<long long>(half_) + 1;
            begin = std::clamp(begin, 0LL, top);
            return Run(begin, std::clamp(end, begin, top));
        };
        const auto sn = static_cast<long long>(n), sFirst = static_cast<long long>(first),
                   sLast = static_cast<long long>(last);
        runs_[0] = cut(sFirst, sLast + 1);
        runs_[1] = cut(std::max(sn - sLast, 1LL), sn - sFirst + 1);
        if (runs_[1].first < runs_[0].first) std::swap(runs_[0], runs_[1]);
        if (runs_[1].first <= runs_[0].second) {
            runs_[0].second = std::max(runs_[0].second, runs_[1].second);
            runs_[1] = Run(runs_[0].second, runs_[0].second);
        }
    }

    template <class Bin, class Put, class Clear>
    void mask(const Bin& bin, const Put& put, const Clear& clear) const {
        const double step = std::numbers::pi / static_cast<double>(2 * n_);
        const double stepC = std::cos(step), stepS = std::sin(step);
        auto kept = [&](std::size_t k) { return k >= first_ && k <= last_; };
        std::size_t done = 0;
        for (const Run& run : runs_) {
            if (run.first > done) clear(done, run.first);
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
                const auto [re, im] = bin(k, c, s);
                // u = conj(t) V; Z_k = g_k 2 Re u, Z_(n-k) = -g_(n-k) 2 Im u (Z_n = 0).
                const double low = kept(k) ? scale_ * 2.0 * (c * re + s * im) : 0.0;
                const double high =
                    k > 0 && kept(n_ - k) ? -scale_ * 2.0 * (c * im - s * re) : 0.0;
                // W = t (Z_k - i Z_(n-k)).
                put(k, c, s, c * low + s * high, s * low - c * high);
            }
            done = std::max(done, run.second);
        }
        if (done < half_ + 1) clear(done, half_ + 1);
    }

  private:
    using Run = std::pair<std::size_t, std::size_t>; // [begin, end)
    std::size_t n_, half_, first_, last_;
    double scale_;
    Run runs_[2];
};

// Position of sample t in the reordered v: x(2j) at j, x(2j+1) at n - 1 - j.
inline std::size_t reorderedPosition(std::size_t t, std::size_t n) {
    return t % 2 == 0 ? t / 2 : n - 1 - t / 2;
}

// One real transform of length n each way.
template <class Rest>
void filterByOneTransform(std::span<double> x, const Rest& rest, const DctMask& dct) {
    const std::size_t n = x.size();
    double* v = threadScratch<double>(0, n);
    for (std::size_t t = 0; t < n; ++t)
        v[reorderedPosition(t, n)] = rest(t);
    fftw_complex* bins = threadScratch<fftw_complex>(0, n / 2 + 1);
    recentRealFftPlan(n, FftDirection::ForwardOverwrite)->forward(v, bins);
    dct.mask([&](std::size_t k, double, double) { return std::pair{bins[k][0], bins[k][1]}; },
             [&](std::size_t k, double, double, double re, double im) {
                 bins[k][0] = re;
                 bins[k][1] = im;
             },
             [&](std::size_t b, std::size_t e) { std::fill(&bins[b][0], &bins[e][0], 0.0); });
    recentRealFftPlan(n, FftDirection::Backward)->backward(bins, v);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = v[reorderedPosition(t, n)];
}

// For long even n the transforms of length n are split into two of length
// h = n/2 that run on two threads, the same arithmetic on one thread or two.
// Forward (decimation in time): a = the even-indexed v, b = the odd-indexed,
// V_k = A_k + w^k B_k with w = exp(-2 pi i / n), A and B of period h. The
// factors w^k = conj(t^4) come from the t = exp(i pi k / 2n) of the mask.
// Backward (decimation in frequency): the even-indexed output is the inverse
// of P_k = W_k + W_(k+h), the odd-indexed that of Q_k = (W_k - W_(k+h)) conj(w^k),
// with W_(k+h) = conj(W_(h-k)).
template <class Rest>
void filterBySplitTransforms(std::span<double> x, const Rest& rest, const DctMask& dct) {
    const std::size_t n = x.size(), h = n / 2, halfBins = h / 2 + 1;
    double* a = threadScratch<double>(0, h);
    double* b = threadScratch<double>(1, h);
    // v_p goes to a (p even) or b (p odd) at p / 2: x(4i) to a_i, x(4i+1) to
    // b_(h-1-i), x(4i+2) to b_i, x(4i+3) to a_(h-1-i).
    const std::size_t quarter = n / 4;
    for (std::size_t i = 0; i < quarter; ++i) {
        a[i] = rest(4 * i);
        b[h - 1 - i] = rest(4 * i + 1);
        b[i] = rest(4 * i + 2);
        a[h - 1 - i] = rest(4 * i + 3);
    }
    for (std::size_t t = 4 * quarter; t < n; ++t) {
        const std::size_t p = reorderedPosition(t, n);
        (p % 2 == 0 ? a : b)[p / 2] = rest(t);
    }
    fftw_complex* A = threadScratch<fftw_complex>(0, halfBins);
    fftw_complex* B = threadScratch<fftw_complex>(1, halfBins);
    const auto forward = recentRealFftPlan(h, FftDirection::ForwardOverwrite);
    const auto backward = recentRealFftPlan(h, FftDirection::Backward);
    {
        auto other = startWorker([&] { forward->forward(b, B); });
        forward->forward(a, A);
        other.get();
    }
    // Bin k (0 .. h) of a transform of period h from its first h/2 + 1.
    const auto periodic = [&](const fftw_complex* X, std::size_t k) {
        if (k == h) k = 0;
        return k <= h / 2 ? std::pair{X[k][0], X[k][1]} : std::pair{X[h - k][0], -X[h - k][1]};
    };
    // The inverse halves are summed straight from each W_k the mask makes:
    // for k <= h/2 into bin k, W_k to P and W_k exp(2 pi i k / n) = W_k conj(w^k)
    // to Q; for k >= h/2 into bin h - k, conj(W_k) to P and conj(W_k) w^k to Q
    // (exp(2 pi i (h - k) / n) = -w^k, and W_(k+h) enters Q with a minus).
    fftw_complex* P = threadScratch<fftw_complex>(2, halfBins);
    fftw_complex* Q = threadScratch<fftw_complex>(3, halfBins);
    std::fill(&P[0][0], &P[halfBins][0], 0.0);
    std::fill(&Q[0][0], &Q[halfBins][0], 0.0);
    const auto conjT4 = [](double c, double s) {
        const double c2 = c * c - s * s, s2 = 2.0 * c * s; // t^2
        return std::pair{c2 * c2 - s2 * s2, -2.0 * c2 * s2};  // conj(t^4) = w^k
    };
    dct.mask(
        [&](std::size_t k, double c, double s) {
            const auto [wr, wi] = conjT4(c, s);
            const auto [ar, ai] = periodic(A, k);
            const auto [br, bi] = periodic(B, k);
            return std::pair{ar + wr * br - wi * bi, ai + wr * bi + wi * br};
        },
        [&](std::size_t k, double c, double s, double re, double im) {
            const auto [wr, wi] = conjT4(c, s);
            if (2 * k <= h) {
                P[k][0] += re;
                P[k][1] += im;
                Q[k][0] += re * wr + im * wi; // W conj(w)
                Q[k][1] += im * wr - re * wi;
            }
            if (2 * k >= h) {
                const std::size_t j = h - k;
                P[j][0] += re;
                P[j][1] -= im;
                Q[j][0] += re * wr + im * wi; // conj(W) w
                Q[j][1] += re * wi - im * wr;
            }
        },
        [](std::size_t, std::size_t) {});
    {
        auto other = startWorker([&] { backward->backward(Q, b); });
        backward->backward(P, a);
        other.get();
    }
    for (std::size_t i = 0; i < quarter; ++i) {
        x[4 * i] = a[i];
        x[4 * i + 1] = b[h - 1 - i];
        x[4 * i + 2] = b[i];
        x[4 * i + 3] = a[h - 1 - i];
    }
    for (std::size_t t = 4 * quarter; t < n; ++t) {
        const std::size_t p = reorderedPosition(t, n);
        x[t] = (p % 2 == 0 ? a : b)[p / 2];
    }
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
    // Each sum runs in four interleaved partial sums, added at the end: one
    // chain of dependent additions would wait on the adder's latency at every
    // sample (a millisecond per pass at 10^6).
    const double middle = 0.5 * static_cast<double>(n - 1);
    const std::size_t blocked = n / 4 * 4;
    double partial[4] = {0.0, 0.0, 0.0, 0.0};
    for (std::size_t t = 0; t < blocked; t += 4)
        for (std::size_t i = 0; i < 4; ++i)
            partial[i] += x[t + i];
    for (std::size_t t = blocked; t < n; ++t)
        partial[t % 4] += x[t];
    const double mean = ((partial[0] + partial[1]) + (partial[2] + partial[3])) / static_cast<double>(n);
    std::fill_n(partial, 4, 0.0);
    for (std::size_t t = 0; t < blocked; t += 4)
        for (std::size_t i = 0; i < 4; ++i)
            partial[i] += (static_cast<double>(t + i) - middle) * (x[t + i] - mean);
    for (std::size_t t = blocked; t < n; ++t)
        partial[t % 4] += (static_cast<double>(t) - middle) * (x[t] - mean);
    const double moment = (partial[0] + partial[1]) + (partial[2] + partial[3]);
    // sum of (t - middle)^2 over t = 0 .. n-1
    const double dn = static_cast<double>(n);
    const double spread = (dn - 1.0) * dn * (dn + 1.0) / 12.0;
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
    const DctMask dct(n, first, last, scale);
    // Below this length a second thread costs more than it saves.
    constexpr std::size_t splitFrom = 1 << 15;
    if (n % 2 == 0 && n >= splitFrom)
        filterBySplitTransforms(x, rest, dct);
    else
        filterByOneTransform(x, rest, dct);
    return band;
}

} // namespace tarnic
