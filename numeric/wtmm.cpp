#include "numeric/wtmm.h"

#include "numeric/fft_plans.h"
#include "numeric/mfdfa.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>

namespace tarnic {
namespace {

// Terms exp(-x) of the kernels' transforms with x above this are left out.
constexpr double negligibleExponent = 40.0;

// A peak that is flat in exact arithmetic spans two samples (between them) or
// three; a longer run of equal values is a flat stretch.
constexpr std::size_t maxPeakRun = 3;

// The series' spectrum, kept to smooth it at one scale after another.
class GaussianSmoother {
  public:
    explicit GaussianSmoother(std::span<const double> x)
        : n_(x.size()), length_(transformLength(x.size())),
          spectrum_(length_ / 2 + 1), bins_{FftBuffer<fftw_complex>(length_ / 2 + 1),
                                            FftBuffer<fftw_complex>(length_ / 2 + 1),
                                            FftBuffer<fftw_complex>(length_ / 2 + 1)},
          out_(length_), backward_(realFftPlan(length_, FftDirection::Backward)) {
        // Reflected through the end points (a straight line goes on straight),
        // half the padding at each end; the seam where the two meet lies at
        // least n/2 >= 3 a_max beyond the dead intervals. Past a whole
        // reflection the extension stays level.
        FftBuffer<double> padded(length_);
        std::copy(x.begin(), x.end(), padded.data());
        const std::size_t pad = length_ - n_;
        const std::size_t tail = pad / 2;
        for (std::size_t j = 1; j <= pad; ++j) {
            if (j <= tail)
                padded[n_ - 1 + j] = 2.0 * x[n_ - 1] - x[n_ - 1 - std::min(j, n_ - 1)];
            else // j samples before x[0], counting backwards round the circle
                padded[length_ - (pad + 1 - j)] = 2.0 * x[0] - x[std::min(pad + 1 - j, n_ - 1)];
        }
        realFftPlan(length_, FftDirection::Forward).forward(padded.data(), spectrum_.data());
    }

    // c0, c1, c2 at scale a into c[0], c[1], c[2] (n samples each): the
    // convolution with the sampled kernels, whose transforms are the Gaussian's
    // periodised over the sampling frequency (the terms m = -1, 0, 1 of the
    // Poisson sum; further ones are below exp(-9 pi^2) for a >= 2). Using the
    // sampled kernels rather than the Gaussian itself keeps c_n free of ringing:
    // a flat stretch stays flat.
    void derivatives(double a, std::array<std::span<double>, 3> c) {
        const std::size_t half = length_ / 2;
        const double step = 2.0 * std::numbers::pi / static_cast<double>(length_);
        const double scale = 1.0 / static_cast<double>(length_);
        for (std::size_t k = 0; k <= half; ++k) {
            // The kernels' transforms at bin k: g (real), i w g, -(w^2 / 2) g.
            double g0 = 0.0, g1 = 0.0, g2 = 0.0;
            for (int m = -1; m <= 1; ++m) {
                const double w = step * static_cast<double>(k) + 2.0 * std::numbers::pi * m;
                const double exponent = 0.25 * a * a * w * w;
                if (exponent > negligibleExponent) continue;
                const double g = std::exp(-exponent);
                g0 += g;
                g1 += w * g;
                g2 -= 0.5 * w * w * g;
            }
            const double re = spectrum_[k][0] * scale, im = spectrum_[k][1] * scale;
            bins_[0][k][0] = re * g0;
            bins_[0][k][1] = im * g0;
            bins_[1][k][0] = -im * g1;
            bins_[1][k][1] = re * g1;
            bins_[2][k][0] = re * g2;
            bins_[2][k][1] = im * g2;
        }
        for (std::size_t order = 0; order < 3; ++order) {
            backward_.backward(bins_[order].data(), out_.data());
            std::copy_n(out_.data(), n_, c[order].data());
        }
    }

  private:
    static std::size_t transformLength(std::size_t n) {
        std::size_t length = 2;
        while (length < 2 * n)
            length *= 2;
        return length;
    }
    std::size_t n_;
    std::size_t length_;
    FftBuffer<fftw_complex> spectrum_;
    std::array<FftBuffer<fftw_complex>, 3> bins_;
    FftBuffer<double> out_;
    const RealFftPlan& backward_;
};

// Indices of the local maxima of v within [lo, hi]. Values within `tolerance`
// of each other count as equal (rounding must not split a peak that is flat in
// exact arithmetic): a run of samples within tolerance of its first value is a
// maximum when both neighbours of the run lie more than tolerance below that
// value, and counts once, at its middle (the lower of two). A run of more than
// maxPeakRun samples is a flat stretch (a constant slope, say), not a peak.
// Samples outside [lo, hi] still serve as neighbours.
void localMaxima(std::span<const double> v, std::size_t lo, std::size_t hi, double tolerance,
                 std::vector<std::int32_t>& out) {
    out.clear();
    const std::size_t n = v.size();
    for (std::size_t i = 1; i + 1 < n && i <= hi;) {
        std::size_t j = i; // [i, j]: the run
        while (j + 1 < n && std::abs(v[j + 1] - v[i]) <= tolerance)
            ++j;
        if (j + 1 >= n) break;
        const std::size_t middle = (i + j) / 2;
        if (j - i < maxPeakRun && v[i] - v[i - 1] > tolerance && v[i] - v[j + 1] > tolerance &&
            middle >= lo && middle <= hi)
            out.push_back(static_cast<std::int32_t>(middle));
        i = j + 1;
    }
}

struct Candidate {
    double distance;
    std::int32_t sample;
    std::size_t chain;
    std::size_t point;
    friend bool operator<(const Candidate& a, const Candidate& b) {
        return std::tie(a.distance, a.sample, a.chain) < std::tie(b.distance, b.sample, b.chain);
    }
};

// Joins the points of one class (points[k]: samples at scale k, increasing) into
// chains, from the greatest scale down; each chain is returned from its smallest
// scale up.
std::vector<WtmmChain> chainPoints(const std::vector<std::vector<std::int32_t>>& points,
                                   std::span<const double> scales) {
    std::vector<WtmmChain> finished;
    std::vector<WtmmChain> alive; // each from its greatest scale down
    std::vector<Candidate> candidates;
    for (std::size_t level = scales.size(); level-- > 0;) {
        const std::vector<std::int32_t>& here = points[level];
        candidates.clear();
        if (!alive.empty()) {
            const double window = std::max(2.0, 0.5 * scales[level + 1]);
            for (std::size_t c = 0; c < alive.size(); ++c) {
                const double t = alive[c].back().sample;
                auto p = std::lower_bound(here.begin(), here.end(), t - window);
                for (; p != here.end() && *p <= t + window; ++p)
                    candidates.push_back(
                        {std::abs(*p - t), *p, c, static_cast<std::size_t>(p - here.begin())});
            }
        }
        std::sort(candidates.begin(), candidates.end());
        std::vector<bool> chainTaken(alive.size(), false), pointTaken(here.size(), false);
        for (const Candidate& c : candidates) {
            if (chainTaken[c.chain] || pointTaken[c.point]) continue;
            chainTaken[c.chain] = pointTaken[c.point] = true;
            alive[c.chain].push_back({c.sample, static_cast<std::int32_t>(level)});
        }
        std::vector<WtmmChain> next;
        for (std::size_t c = 0; c < alive.size(); ++c)
            (chainTaken[c] ? next : finished).push_back(std::move(alive[c]));
        for (std::size_t p = 0; p < here.size(); ++p)
            if (!pointTaken[p]) next.push_back({{here[p], static_cast<std::int32_t>(level)}});
        alive = std::move(next);
    }
    for (WtmmChain& c : alive)
        finished.push_back(std::move(c));
    for (WtmmChain& c : finished)
        std::reverse(c.begin(), c.end());
    return finished;
}

// Class 7: the tops of arches of a minimum chain and a maximum chain of c0.
std::vector<WtmmPoint> archTops(const std::vector<WtmmChain>& minima,
                                const std::vector<WtmmChain>& maxima,
                                std::span<const double> scales, std::size_t n) {
    const auto vanished = [&](const WtmmChain& c) {
        const WtmmPoint top = c.back();
        const auto above = static_cast<std::size_t>(top.level) + 1;
        return above < scales.size() &&
               wtmmAdmitted(static_cast<std::size_t>(top.sample), scales[above], n);
    };
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < minima.size(); ++i) {
        if (!vanished(minima[i])) continue;
        const WtmmPoint a = minima[i].back();
        for (std::size_t j = 0; j < maxima.size(); ++j) {
            if (!vanished(maxima[j])) continue;
            const WtmmPoint b = maxima[j].back();
            const int levelGap = std::abs(a.level - b.level);
            const double reach = scales[static_cast<std::size_t>(std::max(a.level, b.level))];
            const double distance = std::abs(a.sample - b.sample);
            if (levelGap <= 1 && distance <= reach)
                candidates.push_back({distance + 1e-3 * levelGap, a.sample, i, j});
        }
    }
    std::sort(candidates.begin(), candidates.end());
    std::vector<bool> minTaken(minima.size(), false), maxTaken(maxima.size(), false);
    std::vector<WtmmPoint> tops;
    for (const Candidate& c : candidates) {
        if (minTaken[c.chain] || maxTaken[c.point]) continue;
        minTaken[c.chain] = maxTaken[c.point] = true;
        const WtmmPoint a = minima[c.chain].back(), b = maxima[c.point].back();
        tops.push_back({(a.sample + b.sample) / 2, std::max(a.level, b.level)});
    }
    std::sort(tops.begin(), tops.end(), [](const WtmmPoint& a, const WtmmPoint& b) {
        return std::tie(a.sample, a.level) < std::tie(b.sample, b.level);
    });
    return tops;
}

void appendRecord(std::string& out, std::int32_t sample, double logarithm) {
    char text[32];
    out.append(text, std::to_chars(text, text + sizeof text, sample).ptr);
    out += ' ';
    if (logarithm == kWtmmSeparatorLog) {
        out += "-9999";
    } else {
        // Six decimals; -0.000000 would read the same but looks odd.
        if (std::abs(logarithm) < 5e-7) logarithm = 0.0;
        out.append(
            text,
            std::to_chars(text, text + sizeof text, logarithm, std::chars_format::fixed, 6).ptr);
    }
    out += "\r\n";
}

} // namespace

std::array<std::vector<double>, 3> gaussianDerivatives(std::span<const double> x, double a) {
    std::array<std::vector<double>, 3> c;
    for (auto& v : c)
        v.assign(x.size(), 0.0);
    if (x.empty()) return c;
    GaussianSmoother(x).derivatives(a, {c[0], c[1], c[2]});
    return c;
}

std::vector<double> wtmmScales(std::size_t n) {
    std::vector<double> scales;
    if (n == 0) return scales;
    const double aMax = static_cast<double>(n - 1) / 6.0;
    if (aMax < kWtmmMinScale) return scales;
    const double octaves = std::log2(aMax / kWtmmMinScale);
    const auto steps = static_cast<std::size_t>(std::ceil(kWtmmVoices * octaves - 1e-9));
    scales.resize(steps + 1);
    for (std::size_t k = 0; k <= steps; ++k)
        scales[k] = steps == 0 ? kWtmmMinScale
                               : kWtmmMinScale * std::exp2(octaves * static_cast<double>(k) /
                                                           static_cast<double>(steps));
    scales.back() = steps == 0 ? kWtmmMinScale : aMax;
    return scales;
}

bool wtmmAdmitted(std::size_t t, double a, std::size_t n) {
    if (n == 0) return false;
    const double time = static_cast<double>(t);
    const double reach = 3.0 * a;
    const double tolerance = 1e-9 * (1.0 + reach);
    return time >= reach - tolerance && time <= static_cast<double>(n - 1) - reach + tolerance;
}

WtmmSkeleton wtmmSkeleton(std::span<const double> x, int trendOrder, double gamma) {
    WtmmSkeleton result;
    const std::size_t n = x.size();
    result.detrended = removePolynomialTrend(x, std::clamp(trendOrder, 0, 10));
    result.scales = wtmmScales(n);
    const std::size_t levels = result.scales.size();
    if (levels == 0) return result;

    double largestInput = 0.0, largestDetrended = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        largestInput = std::max(largestInput, std::abs(x[t]));
        largestDetrended = std::max(largestDetrended, std::abs(result.detrended[t]));
    }
    // How far an extremum of a^n c_n must stand above its neighbours, in the
    // units of x, not to be taken for rounding noise.
    const double noise = 1e-10 * largestDetrended + 1e-12 * largestInput;

    // points[class][level]: samples of the points of that class at that scale.
    std::array<std::vector<std::vector<std::int32_t>>, 6> points;
    for (auto& p : points)
        p.resize(levels);
    GaussianSmoother smoother(result.detrended);
    std::array<std::vector<double>, 3> c;
    for (auto& v : c)
        v.resize(n);
    std::vector<double> key(n);
    std::vector<std::int32_t> found;
    const auto collect = [&](std::vector<std::int32_t>& into, std::span<const double> values,
                             int sign) {
        for (std::int32_t t : found) {
            const double v = values[static_cast<std::size_t>(t)];
            if (sign == 0 || (sign < 0 && v < 0.0) || (sign > 0 && v > 0.0)) into.push_back(t);
        }
    };
    for (std::size_t level = 0; level < levels; ++level) {
        const double a = result.scales[level];
        const double reach = 3.0 * a;
        const double slack = 1e-9 * (1.0 + reach);
        const double last = static_cast<double>(n - 1) - reach;
        if (last + slack < reach) continue;
        const auto lo = static_cast<std::size_t>(std::ceil(reach - slack));
        const auto hi = static_cast<std::size_t>(std::floor(last + slack));
        smoother.derivatives(a, {c[0], c[1], c[2]});
        std::transform(c[0].begin(), c[0].end(), key.begin(), [](double v) { return -v; });
        localMaxima(key, lo, hi, noise, found);
        collect(points[0][level], c[0], 0);
        localMaxima(c[0], lo, hi, noise, found);
        collect(points[1][level], c[0], 0);
        for (std::size_t order = 1; order <= 2; ++order) {
            const double rise = noise / std::pow(a, static_cast<double>(order));
            std::transform(c[order].begin(), c[order].end(), key.begin(),
                           [](double v) { return std::abs(v); });
            localMaxima(key, lo, hi, rise, found);
            collect(points[2 * order][level], c[order], -1);
            collect(points[2 * order + 1][level], c[order], +1);
        }
    }

    const double longEnough = gamma * result.scales.back() * (1.0 - 1e-12);
    std::array<std::vector<WtmmChain>, 6> all;
    for (std::size_t k = 0; k < 6; ++k) {
        all[k] = chainPoints(points[k], result.scales);
        for (WtmmChain& chain : all[k])
            if (result.scales[static_cast<std::size_t>(chain.back().level)] >= longEnough)
                result.chains[k].push_back(std::move(chain));
        std::sort(result.chains[k].begin(), result.chains[k].end(),
                  [](const WtmmChain& a, const WtmmChain& b) {
                      return std::tie(a.front().sample, a.back().level) <
                             std::tie(b.front().sample, b.back().level);
                  });
    }
    result.archTops = archTops(result.chains[0], result.chains[1], result.scales, n);
    return result;
}

std::string wtmmChainRecords(const WtmmSkeleton& skeleton, std::array<std::int32_t, 7>& counts) {
    std::string out;
    counts.fill(0);
    const auto logScale = [&](const WtmmPoint& p) {
        return std::log10(skeleton.scales[static_cast<std::size_t>(p.level)]);
    };
    for (std::size_t k = 0; k < 6; ++k) {
        const std::vector<WtmmChain>& chains = skeleton.chains[k];
        for (std::size_t c = 0; c < chains.size(); ++c) {
            if (c > 0) {
                appendRecord(out, 0, kWtmmSeparatorLog);
                ++counts[k];
            }
            for (const WtmmPoint& p : chains[c]) {
                appendRecord(out, p.sample + 1, logScale(p));
                ++counts[k];
            }
        }
    }
    for (const WtmmPoint& p : skeleton.archTops) {
        appendRecord(out, p.sample + 1, logScale(p));
        ++counts[6];
    }
    return out;
}

} // namespace tarnic
