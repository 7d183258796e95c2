#include "numeric/harmonic.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace tarnic {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kGridRefinement = 4;
// The shortest period the search considers, in samples (see harmonic.h).
constexpr double kShortestPeriod = 8.0;
constexpr std::size_t kCandidates = 5;
constexpr double kNotACandidate = 0.7;
// A column whose centred sum of squares is below this share of n does not exist
// on the samples (it is zero up to rounding) and is left out of the fit.
constexpr double kVanishingColumn = 1e-10;

// Sums over the samples with t' = t - (n - 1) / 2, omega = 2 pi f:
//     yc = sum (y - mean) cos(omega t'),  ys = sum (y - mean) sin(omega t'),
//     c = sum cos, cc = sum cos^2, ss = sum sin^2.
// The set of t' is symmetric about 0, so sum sin = sum sin cos = 0 exactly.
struct ColumnSums {
    double yc = 0.0, ys = 0.0, c = 0.0, cc = 0.0, ss = 0.0;
};

struct Coefficients {
    double cosine = 0.0; // of cos(omega t') - c / n
    double sine = 0.0;   // of sin(omega t')
    double explained = 0.0;
};

// The least-squares coefficients from the sums: the mean-plus-cosine block by
// regression on the centred cosine, the sine alone.
Coefficients solve(const ColumnSums& s, std::size_t n) {
    const double count = static_cast<double>(n);
    Coefficients r;
    const double cosineSpread = s.cc - s.c * s.c / count;
    if (cosineSpread > kVanishingColumn * count) {
        r.cosine = s.yc / cosineSpread;
        r.explained += r.cosine * s.yc;
    }
    if (s.ss > kVanishingColumn * count) {
        r.sine = s.ys / s.ss;
        r.explained += r.sine * s.ys;
    }
    return r;
}

double ratio(double explained, double total) {
    return total > 0.0 ? std::clamp(explained / total, 0.0, 1.0) : 0.0;
}

// Direct sums, O(n). Four phasors exp(i omega t') for t = 4m + j, j = 0 .. 3, are
// advanced by a rotation of 4 omega (four independent chains, so the rotations
// overlap in the processor) and set afresh from cos/sin every 256 samples, which
// keeps their rounding near 1e-13.
ColumnSums directSums(std::span<const double> centred, double frequency) {
    constexpr std::size_t kChains = 4;
    constexpr std::size_t kResync = 256;
    const std::size_t n = centred.size();
    const double omega = 2.0 * kPi * frequency;
    const double middle = 0.5 * static_cast<double>(n - 1);
    const double stepRe = std::cos(kChains * omega), stepIm = std::sin(kChains * omega);
    double yc[kChains] = {}, ys[kChains] = {}, c[kChains] = {}, cc[kChains] = {}, ss[kChains] = {};
    double re[kChains], im[kChains];
    for (std::size_t block = 0; block < n; block += kResync) {
        for (std::size_t j = 0; j < kChains; ++j) {
            const double angle = omega * (static_cast<double>(block + j) - middle);
            re[j] = std::cos(angle);
            im[j] = std::sin(angle);
        }
        const std::size_t end = std::min(n, block + kResync);
        std::size_t t = block;
        for (; t + kChains <= end; t += kChains) {
            for (std::size_t j = 0; j < kChains; ++j) {
                const double v = centred[t + j];
                yc[j] += v * re[j];
                ys[j] += v * im[j];
                c[j] += re[j];
                cc[j] += re[j] * re[j];
                ss[j] += im[j] * im[j];
                const double nextRe = re[j] * stepRe - im[j] * stepIm;
                im[j] = re[j] * stepIm + im[j] * stepRe;
                re[j] = nextRe;
            }
        }
        for (std::size_t j = 0; t < end; ++t, ++j) {
            const double v = centred[t];
            yc[j] += v * re[j];
            ys[j] += v * im[j];
            c[j] += re[j];
            cc[j] += re[j] * re[j];
            ss[j] += im[j] * im[j];
        }
    }
    ColumnSums s;
    for (std::size_t j = 0; j < kChains; ++j) {
        s.yc += yc[j];
        s.ys += ys[j];
        s.c += c[j];
        s.cc += cc[j];
        s.ss += ss[j];
    }
    return s;
}

// sin(pi p / q) for integers p, q a power of two >= 4. Exact reductions bring p
// to [0, q/2] (so the zeros at multiples of pi are exact and nothing cancels near
// them); then p = hi * B + lo and sin(a + b) = sin a cos b + cos a sin b from two
// small tables of about sqrt(q) angles each.
class SinPiTable {
  public:
    explicit SinPiTable(std::uint64_t q) : q_(q) {
        while (block_ * block_ < q / 2)
            block_ <<= 1;
        const double unit = kPi / static_cast<double>(q);
        for (std::uint64_t j = 0; j < block_; ++j) {
            fineSin_.push_back(std::sin(unit * static_cast<double>(j)));
            fineCos_.push_back(std::cos(unit * static_cast<double>(j)));
        }
        for (std::uint64_t j = 0; j * block_ <= q / 2; ++j) {
            coarseSin_.push_back(std::sin(unit * static_cast<double>(j * block_)));
            coarseCos_.push_back(std::cos(unit * static_cast<double>(j * block_)));
        }
    }
    // 0 <= p < 2q.
    double sin(std::uint64_t p) const {
        double sign = 1.0;
        if (p >= q_) {
            p -= q_;
            sign = -1.0;
        }
        if (2 * p > q_) p = q_ - p;
        const std::uint64_t hi = p / block_, lo = p % block_;
        return sign * (coarseSin_[hi] * fineCos_[lo] + coarseCos_[hi] * fineSin_[lo]);
    }
    // 0 <= p < 2q.
    double cos(std::uint64_t p) const { return sin((p + q_ / 2) % (2 * q_)); }

  private:
    std::uint64_t q_;
    std::uint64_t block_ = 1;
    std::vector<double> fineSin_, fineCos_, coarseSin_, coarseCos_;
};

// k * step mod m for k = first, first + 1, ..., advanced by one addition (no
// product k * step is ever formed, so nothing overflows).
class ModularRamp {
  public:
    ModularRamp(std::uint64_t first, std::uint64_t step, std::uint64_t m)
        : step_(step % m), m_(m), value_(0) {
        for (std::uint64_t k = 0; k < first; ++k)
            advance(); // first is at most 8 here
    }
    std::uint64_t value() const { return value_; }
    void advance() {
        value_ += step_;
        if (value_ >= m_) value_ -= m_;
    }

  private:
    std::uint64_t step_, m_, value_;
};

// Calls take(k, ratio) for k = first .. length / 2 in turn with the variance ratio
// at the frequency k / length (first >= 1; length a power of two, at least n and
// 4). The ratio comes from the transform of the zero-padded centred series,
// sum yc_t exp(-i omega t') = exp(i omega (n-1)/2) * Y_k, and the column sums by
// the Dirichlet kernel D(theta) = sum cos(theta t') = sin(n theta / 2) / sin(theta / 2):
//     c = D(omega), cc = (n + D(2 omega)) / 2, ss = (n - D(2 omega)) / 2,
// all angles multiples of pi / length.
template <class Take>
void scanGrid(std::span<const double> centred, double total, std::size_t length, std::size_t first,
              Take take) {
    const std::size_t n = centred.size();
    const std::size_t last = length / 2;
    FftBuffer<fftw_complex> spectrum(last + 1);
    {
        FftBuffer<double> padded(length);
        std::copy(centred.begin(), centred.end(), padded.data());
        realFftPlan(length, FftDirection::Forward).forward(padded.data(), spectrum.data());
    }
    const std::uint64_t q = length;
    const SinPiTable table(q);
    const double nd = static_cast<double>(n);
    // omega (n-1)/2 = pi k (n-1) / q;  n omega / 2 = pi k n / q;  n omega = pi 2kn / q.
    ModularRamp shift(first, n - 1, 2 * q), half(first, n, 2 * q), whole(first, 2 * n, 2 * q);
    for (std::size_t k = first; k <= last; ++k) {
        const double cs = table.cos(shift.value()), sn = table.sin(shift.value());
        const double re = spectrum[k][0] * cs - spectrum[k][1] * sn;
        const double im = spectrum[k][0] * sn + spectrum[k][1] * cs;
        ColumnSums s;
        s.yc = re;
        s.ys = -im;
        s.c = table.sin(half.value()) / table.sin(k);
        // D(2 omega); at omega = pi (2k = q) its limit n cos(n omega) / cos(omega).
        const double twice = 2 * k == q ? -nd * (n % 2 == 0 ? 1.0 : -1.0)
                                        : table.sin(whole.value()) / table.sin(2 * k);
        s.cc = 0.5 * (nd + twice);
        s.ss = 0.5 * (nd - twice);
        take(k, ratio(solve(s, n).explained, total));
        shift.advance();
        half.advance();
        whole.advance();
    }
}

struct GridPeak {
    std::size_t k;
    double ratio;
};

// The highest local maxima of the grid's variance ratio (scanGrid) at k =
// first .. last, at most kCandidates, highest first. An end of the range counts
// as a maximum when its one neighbour is lower.
std::vector<GridPeak> gridPeaks(std::span<const double> centred, double total, std::size_t length,
                                std::size_t first, std::size_t last) {
    std::vector<GridPeak> peaks; // kept sorted, highest first
    const auto offer = [&](std::size_t k, double value) {
        if (peaks.size() == kCandidates && value <= peaks.back().ratio) return;
        auto at = std::find_if(peaks.begin(), peaks.end(),
                               [&](const GridPeak& p) { return value > p.ratio; });
        peaks.insert(at, {k, value});
        if (peaks.size() > kCandidates) peaks.pop_back();
    };
    double before = -1.0, previous = -1.0; // ratios at k - 2 and k - 1, -1 where none
    scanGrid(centred, total, length, first, [&](std::size_t k, double current) {
        if (k > last) return;
        if (k > first && previous >= before && previous > current) offer(k - 1, previous);
        before = previous;
        previous = current;
    });
    if (previous >= before) offer(last, previous);
    return peaks;
}

// centred = y - mean, total = sum centred^2; returns the mean.
double meanAndCentre(std::span<const double> y, std::vector<double>& centred, double& total) {
    double mean = 0.0;
    for (double v : y)
        mean += v;
    if (!y.empty()) mean /= static_cast<double>(y.size());
    centred.resize(y.size());
    total = 0.0;
    for (std::size_t t = 0; t < y.size(); ++t) {
        centred[t] = y[t] - mean;
        total += centred[t] * centred[t];
    }
    return mean;
}

// Brent's minimisation of f on [a, b] (Brent 1973, "localmin"), here used on the
// negated variance ratio. Returns the best abscissa and its value.
template <class F> std::pair<double, double> brentMinimum(F f, double a, double b) {
    const double golden = 0.5 * (3.0 - std::sqrt(5.0));
    const double relative = std::sqrt(std::numeric_limits<double>::epsilon());
    double x = a + golden * (b - a), w = x, v = x;
    double fx = f(x), fw = fx, fv = fx;
    double d = 0.0, e = 0.0;
    for (int iteration = 0; iteration < 100; ++iteration) {
        const double middle = 0.5 * (a + b);
        const double tol1 = relative * std::abs(x) + 1e-300;
        const double tol2 = 2.0 * tol1;
        if (std::abs(x - middle) <= tol2 - 0.5 * (b - a)) break;
        bool parabolic = false;
        if (std::abs(e) > tol1) {
            double r = (x - w) * (fx - fv);
            double q = (x - v) * (fx - fw);
            double p = (x - v) * q - (x - w) * r;
            q = 2.0 * (q - r);
            if (q > 0.0) p = -p;
            q = std::abs(q);
            const double previous = e;
            e = d;
            if (std::abs(p) < std::abs(0.5 * q * previous) && p > q * (a - x) && p < q * (b - x)) {
                d = p / q;
                const double u = x + d;
                if (u - a < tol2 || b - u < tol2) d = middle >= x ? tol1 : -tol1;
                parabolic = true;
            }
        }
        if (!parabolic) {
            e = x >= middle ? a - x : b - x;
            d = golden * e;
        }
        const double u = std::abs(d) >= tol1 ? x + d : x + (d >= 0.0 ? tol1 : -tol1);
        const double fu = f(u);
        if (fu <= fx) {
            (u >= x ? a : b) = x;
            v = w, fv = fw;
            w = x, fw = fx;
            x = u, fx = fu;
        } else {
            (u < x ? a : b) = u;
            if (fu <= fw || w == x) {
                v = w, fv = fw;
                w = u, fw = fu;
            } else if (fu <= fv || v == x || v == w) {
                v = u, fv = fu;
            }
        }
    }
    return {x, fx};
}

HarmonicFit flatFit(std::span<const double> y, double mean) {
    HarmonicFit fit;
    fit.period = static_cast<double>(y.size());
    fit.frequency = y.empty() ? 0.0 : 1.0 / fit.period;
    fit.level = mean;
    fit.values.assign(y.size(), mean);
    return fit;
}

} // namespace

HarmonicFit fitHarmonic(std::span<const double> y, double frequency) {
    const std::size_t n = y.size();
    std::vector<double> centred;
    double total = 0.0;
    const double mean = meanAndCentre(y, centred, total);
    HarmonicFit fit = flatFit(y, mean);
    fit.frequency = frequency;
    fit.period = 1.0 / frequency;
    if (n < 2 || !(total > 0.0)) return fit;

    const ColumnSums s = directSums(centred, frequency);
    const Coefficients r = solve(s, n);
    const double count = static_cast<double>(n);
    const double omega = 2.0 * kPi * frequency;
    const double middle = 0.5 * (count - 1.0);
    fit.level = mean - r.cosine * s.c / count;
    fit.amplitude = std::hypot(r.cosine, r.sine);
    // a cos(omega t') + b sin(omega t') = A cos(omega t - (omega middle + atan2(b, a))).
    fit.phase = std::remainder(omega * middle + std::atan2(r.sine, r.cosine), 2.0 * kPi);
    fit.varianceRatio = ratio(r.explained, total);
    for (std::size_t t = 0; t < n; ++t) {
        const double angle = omega * (static_cast<double>(t) - middle);
        fit.values[t] = fit.level + r.cosine * std::cos(angle) + r.sine * std::sin(angle);
    }
    return fit;
}

std::vector<double> varianceRatioGrid(std::span<const double> y, std::size_t length) {
    if (length < 4 || length < y.size() || (length & (length - 1)) != 0)
        throw std::invalid_argument("grid length must be a power of two >= 4 and >= n");
    std::vector<double> ratios(length / 2 + 1, 0.0);
    std::vector<double> centred;
    double total = 0.0;
    meanAndCentre(y, centred, total);
    if (y.size() < 2 || !(total > 0.0)) return ratios;
    scanGrid(centred, total, length, 1, [&](std::size_t k, double value) { ratios[k] = value; });
    return ratios;
}

HarmonicFit bestFitHarmonic(std::span<const double> y) {
    const std::size_t n = y.size();
    std::vector<double> centred;
    double total = 0.0;
    const double mean = meanAndCentre(y, centred, total);
    if (n < 4 || !(total > 0.0)) return flatFit(y, mean);

    // Grid k / length with length a power of two of at least 4n (so the plans
    // recur); frequencies from 1/n (k = first) to 1/kShortestPeriod (k = last).
    std::size_t length = 1;
    while (length < kGridRefinement * n)
        length <<= 1;
    const std::size_t first = (length + n - 1) / n;
    const double lowest = 1.0 / static_cast<double>(n);
    const double highest = std::max(lowest, 1.0 / kShortestPeriod);
    const std::size_t last =
        std::max(first, static_cast<std::size_t>(std::floor(highest * static_cast<double>(length))));
    std::vector<GridPeak> peaks = gridPeaks(centred, total, length, first, last);
    // The grid is fine enough that refining a peak raises its ratio by a few
    // percent at most; peaks far below the highest cannot overtake it.
    const double tallest = peaks.front().ratio;
    std::erase_if(peaks, [&](const GridPeak& p) { return p.ratio < kNotACandidate * tallest; });

    const double step = 1.0 / static_cast<double>(length);
    const auto negatedRatio = [&](double f) {
        return -ratio(solve(directSums(centred, f), n).explained, total);
    };
    double bestFrequency = static_cast<double>(peaks.front().k) * step;
    double bestValue = negatedRatio(bestFrequency);
    for (const GridPeak& peak : peaks) {
        const double lo = std::max(lowest, static_cast<double>(peak.k - 1) * step);
        const double hi = std::min(highest, static_cast<double>(peak.k + 1) * step);
        const auto [f, value] = brentMinimum(negatedRatio, lo, hi);
        if (value < bestValue) {
            bestValue = value;
            bestFrequency = f;
        }
    }
    // Brent never evaluates the ends of its interval; the range's own ends
    // (period n, period kShortestPeriod) are candidates of their own.
    for (double f : {lowest, highest}) {
        const double value = negatedRatio(f);
        if (value < bestValue) {
            bestValue = value;
            bestFrequency = f;
        }
    }
    return fitHarmonic(y, bestFrequency);
}

} // namespace tarnic
