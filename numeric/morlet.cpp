#include "numeric/morlet.h"

#include "numeric/fft_plans.h"
#include "numeric/workers.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <numbers>
#include <system_error>
#include <thread>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tarnic {
namespace {

constexpr std::size_t maxWorkers = 8;

// exp(2 pi i q / L) for q in [0, L), L a power of two, as the product of two
// entries of short tables (q = 256 q1 + q0): within a few ulps of cos and sin
// taken directly, for 256 + L/256 of them.
class UnitRoots {
  public:
    explicit UnitRoots(std::size_t length)
        : mask_(length - 1), low_(std::min<std::size_t>(length, 256)),
          high_(std::max<std::size_t>(length / 256, 1)) {
        const double turn = 2.0 * std::numbers::pi / static_cast<double>(length);
        for (std::size_t q = 0; q < low_.size(); ++q)
            low_[q] = {std::cos(turn * static_cast<double>(q)),
                       std::sin(turn * static_cast<double>(q))};
        for (std::size_t q = 0; q < high_.size(); ++q)
            high_[q] = {std::cos(turn * static_cast<double>(256 * q)),
                        std::sin(turn * static_cast<double>(256 * q))};
    }

    // w[j] = exp(2 pi i j p / L), j = 0 .. count-1: in blocks of 16, each power
    // the block's first times one of 16 small ones.
    void powers(std::size_t p, std::size_t count, fftw_complex* __restrict w) const {
        Root small[16];
        for (std::size_t u = 0; u < 16; ++u)
            small[u] = at(u * p);
        for (std::size_t j0 = 0; j0 < count; j0 += 16) {
            const Root base = at(j0 * p);
            const std::size_t block = std::min<std::size_t>(16, count - j0);
            for (std::size_t u = 0; u < block; ++u) {
                w[j0 + u][0] = base.re * small[u].re - base.im * small[u].im;
                w[j0 + u][1] = base.re * small[u].im + base.im * small[u].re;
            }
        }
    }

  private:
    struct Root {
        double re, im;
    };
    Root at(std::size_t q) const {
        q &= mask_;
        const Root a = high_[q >> 8], b = low_[q & 255];
        return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    }
    std::size_t mask_;
    std::vector<Root> low_, high_;
};

// out[j * outStride] = a[j * aStride] w[j], j < count (complex products, each
// part rounded as ar wr - ai wi and ar wi + ai wr, two-wide where SSE2 is).
void multiply(const fftw_complex* __restrict a, std::size_t aStride,
              const fftw_complex* __restrict w, fftw_complex* __restrict out, std::size_t outStride,
              std::size_t count) {
#ifdef __SSE2__
    const __m128d negateLow = _mm_set_pd(0.0, -0.0);
    for (std::size_t j = 0; j < count; ++j) {
        const __m128d x = _mm_loadu_pd(a[j * aStride]);
        const __m128d y = _mm_loadu_pd(w[j]);
        const __m128d real = _mm_unpacklo_pd(y, y);      // wr wr
        const __m128d imaginary = _mm_unpackhi_pd(y, y); // wi wi
        const __m128d swapped = _mm_shuffle_pd(x, x, 1); // ai ar
        const __m128d cross = _mm_xor_pd(_mm_mul_pd(swapped, imaginary), negateLow);
        _mm_storeu_pd(out[j * outStride], _mm_add_pd(_mm_mul_pd(x, real), cross));
    }
#else
    for (std::size_t j = 0; j < count; ++j) {
        const double ar = a[j * aStride][0], ai = a[j * aStride][1];
        out[j * outStride][0] = ar * w[j][0] - ai * w[j][1];
        out[j * outStride][1] = ar * w[j][1] + ai * w[j][0];
    }
#endif
}

} // namespace

double morletFourierFactor(double omega0) {
    return 4.0 * std::numbers::pi / (omega0 + std::sqrt(2.0 + omega0 * omega0));
}

std::vector<double> morletPeriods(double pMin, double pMax, std::size_t count) {
    std::vector<double> periods(count);
    const double lo = std::log(pMin), hi = std::log(pMax);
    for (std::size_t i = 0; i < count; ++i)
        periods[i] =
            count > 1
                ? std::exp(lo + (hi - lo) * static_cast<double>(i) / static_cast<double>(count - 1))
                : pMin;
    if (count > 1) {
        periods.front() = pMin;
        periods.back() = pMax;
    }
    return periods;
}

std::size_t morletTransformLength(std::size_t n) {
    std::size_t length = 2;
    while (length < 2 * n)
        length *= 2;
    return length;
}

SampleSpan morletOutsideCone(std::size_t n, double scale) {
    const double cone = std::numbers::sqrt2 * scale;
    const double last = static_cast<double>(n) - 1.0;
    SampleSpan span{static_cast<std::size_t>(std::ceil(cone)),
                    cone <= last ? static_cast<std::size_t>(std::floor(last - cone)) + 1 : 0};
    if (span.first >= span.end) span = {0, n};
    return span;
}

namespace {

// The transform's rows into keep (row i at keep + i n) or, keep null, each row
// handed to sink as it is done; returns the spectrum.
std::vector<double> transformRows(std::span<const double> x, std::span<const double> periods,
                                  double* keep, const MorletRowSink& sink) {
    const std::size_t n = x.size();
    const std::size_t rows = periods.size();
    std::vector<double> spectrumOut(rows, 0.0);
    if (n == 0 || rows == 0) return spectrumOut;

    const std::size_t length = morletTransformLength(n);
    const std::size_t half = length / 2;
    double mean = 0.0;
    for (double v : x)
        mean += v;
    mean /= static_cast<double>(n);

    // X_k / length: the forward transform normalised as in Torrence & Compo.
    FftBuffer<fftw_complex> spectrum(half + 1);
    {
        FftBuffer<double> padded(length);
        for (std::size_t t = 0; t < n; ++t)
            padded[t] = x[t] - mean;
        realFftPlan(length, FftDirection::Forward).forward(padded.data(), spectrum.data());
        for (std::size_t k = 0; k <= half; ++k) {
            spectrum[k][0] /= static_cast<double>(length);
            spectrum[k][1] /= static_cast<double>(length);
        }
    }
    const double factor = morletFourierFactor(kMorletOmega0);
    const double binStep = 2.0 * std::numbers::pi / static_cast<double>(length);
    const double quarterRootPi = std::pow(std::numbers::pi, -0.25);
    const UnitRoots roots(length);

    // W_t = sum over k = kLow .. kHigh of A_k exp(2 pi i k t / L), A_k = X_k Psi(s w_k),
    // the bins of the wavelet's band (kHigh <= L/2). With c_j = A_(kLow+j),
    // j < B = kHigh - kLow + 1,
    //     |W_t| = |g(t)|,   g(t) = sum_j c_j exp(2 pi i j t / L),
    // and for any power of two m >= B, d = L / m, t = t1 d + t2 (t2 < d):
    //     g(t1 d + t2) = sum_j [c_j exp(2 pi i j t2 / L)] exp(2 pi i j t1 / m),
    // so the d residues t2 take d complex transforms of m points instead of one of
    // L: the wider the scale, the narrower its band and the shorter they are
    // (10,000 samples, periods of 2 to 2500: m from 16,384 down to 32).
    struct Work {
        FftBuffer<fftw_complex> c;     // c_j, zero from B on
        FftBuffer<fftw_complex> roots; // exp(2 pi i j / L)
        FftBuffer<fftw_complex> fresh; // exp(2 pi i j t2 / L) for one t2
        FftBuffer<fftw_complex> z;     // the batch of transforms
        std::vector<double> row;       // |W|^2 of one row, when not kept
        Work(std::size_t length, std::size_t n)
            : c(length / 2), roots(length / 2), fresh(length / 2), z(length), row(n) {}
    };
    const std::size_t workers =
        std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, std::min(maxWorkers, rows));
    std::vector<Work> work;
    work.reserve(workers);
    for (std::size_t w = 0; w < workers; ++w)
        work.emplace_back(length, keep ? 0 : n);

    const auto row = [&](std::size_t i, Work& b) {
        const double s = periods[i] / factor;
        double* out = keep ? keep + i * n : b.row.data();
        const double kLow =
            std::max(1.0, std::ceil((kMorletOmega0 - kMorletBandHalfWidth) / (s * binStep)));
        const double kHigh =
            std::min(static_cast<double>(half),
                     std::floor((kMorletOmega0 + kMorletBandHalfWidth) / (s * binStep)));
        if (kLow <= kHigh) {
            const auto first = static_cast<std::size_t>(kLow);
            const std::size_t bins = static_cast<std::size_t>(kHigh) - first + 1;
            const std::size_t m = std::max(std::bit_ceil(bins), std::min<std::size_t>(32, half));
            const std::size_t count = length / m;
            const double amplitude = std::sqrt(2.0 * std::numbers::pi * s) * quarterRootPi;
            fftw_complex* c = b.c.data();
            // Psi at consecutive bins: with d_k = h k - w0 (h = s binStep) the
            // ratio Psi_(k+1) / Psi_k = exp(-h d_k - h^2 / 2) itself changes by
            // exp(-h^2) from bin to bin; both are taken afresh by exp() at every
            // 16th bin, so rounding grows over at most 15 products.
            const double h = s * binStep;
            const double ratioStep = std::exp(-h * h);
            double psi = 0.0, ratio = 0.0;
            for (std::size_t j = 0; j < bins; ++j) {
                if (j % 16 == 0) {
                    const double d = h * static_cast<double>(first + j) - kMorletOmega0;
                    psi = amplitude * std::exp(-0.5 * d * d);
                    ratio = std::exp(-h * d - 0.5 * h * h);
                } else {
                    psi *= ratio;
                    ratio *= ratioStep;
                }
                c[j][0] = spectrum[first + j][0] * psi;
                c[j][1] = spectrum[first + j][1] * psi;
            }
            std::fill_n(&c[bins][0], 2 * (m - bins), 0.0);

            // The inputs c_j exp(2 pi i j t2 / L) of the transforms: each t2's
            // from the last one's times exp(2 pi i j / L), afresh from c at every
            // 16th t2, so that rounding grows over at most 15 products.
            fftw_complex* z = b.z.data();
            fftw_complex* step = b.roots.data();
            roots.powers(1, m, step);
            // FFTW_ESTIMATE's plans of this machine class: a few long transforms
            // run fastest woven together, many short ones one after another.
            const BatchLayout layout =
                count <= 8 ? BatchLayout::Interleaved : BatchLayout::Consecutive;
            if (layout == BatchLayout::Interleaved) {
                for (std::size_t j = 0; j < m; ++j) {
                    z[j * count][0] = c[j][0];
                    z[j * count][1] = c[j][1];
                }
                for (std::size_t t2 = 1; t2 < count; ++t2)
                    multiply(z + t2 - 1, count, step, z + t2, count, m);
            } else {
                std::copy_n(&c[0][0], 2 * m, &z[0][0]);
                for (std::size_t t2 = 1; t2 < count; ++t2)
                    if (t2 % 16 == 0) {
                        roots.powers(t2, m, b.fresh.data());
                        multiply(c, 1, b.fresh.data(), z + t2 * m, 1, m);
                    } else {
                        multiply(z + (t2 - 1) * m, 1, step, z + t2 * m, 1, m);
                    }
            }
            complexBatchPlan(m, count, layout).backward(z);
            if (layout == BatchLayout::Interleaved) {
                for (std::size_t t = 0; t < n; ++t)
                    out[t] = z[t][0] * z[t][0] + z[t][1] * z[t][1];
            } else {
                // Transform t2 holds t = t1 count + t2: read eight t1 of every
                // transform at a time, so that reads and writes both run on.
                for (std::size_t t1 = 0; t1 * count < n; t1 += 8)
                    for (std::size_t t2 = 0; t2 < count; ++t2) {
                        const fftw_complex* y = z + t2 * m + t1;
                        for (std::size_t u = 0, t = t1 * count + t2; u < 8 && t < n;
                             ++u, t += count)
                            out[t] = y[u][0] * y[u][0] + y[u][1] * y[u][1];
                    }
            }
        } else { // the band holds no bin
            std::fill_n(out, n, 0.0);
        }

        // Time average outside the cone of influence.
        const SampleSpan outside = morletOutsideCone(n, s);
        double sums[4] = {0.0, 0.0, 0.0, 0.0}; // four running sums: no one waits on the last
        std::size_t t = outside.first;
        for (; t + 4 <= outside.end; t += 4)
            for (std::size_t u = 0; u < 4; ++u)
                sums[u] += out[t + u];
        for (; t < outside.end; ++t)
            sums[0] += out[t];
        spectrumOut[i] = ((sums[0] + sums[1]) + (sums[2] + sums[3])) /
                         static_cast<double>(outside.end - outside.first);
        if (!keep) sink(i, std::span<const double>(out, n));
    };
    // Rows are handed out one at a time (their cost varies tenfold with the
    // period); each row is computed the same way whichever thread takes it.
    std::atomic<std::size_t> next{0};
    runWorkers(workers, [&](std::size_t w) {
        for (std::size_t i = next++; i < rows; i = next++)
            row(i, work[w]);
    });
    return spectrumOut;
}

} // namespace

MorletTransform morletTransform(std::span<const double> x, std::span<const double> periods) {
    MorletTransform result;
    result.samples = x.size();
    result.periods.assign(periods.begin(), periods.end());
    result.power.assign(x.size() * periods.size(), 0.0);
    result.spectrum = transformRows(x, periods, result.power.data(), {});
    return result;
}

std::vector<double> morletTransformRows(std::span<const double> x, std::span<const double> periods,
                                        const MorletRowSink& sink) {
    return transformRows(x, periods, nullptr, sink);
}

} // namespace tarnic
