#include "numeric/dwt.h"

#include "numeric/wavelet_filters.h"
#include "numeric/workers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <mutex>
#include <numbers>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace tarnic {

// ---------------------------------------------------------------------------
// Working length and extension
// ---------------------------------------------------------------------------

std::size_t workingLength(std::size_t n) {
    std::size_t length = 2;
    while (length < n) {
        if (length > std::numeric_limits<std::size_t>::max() / 2)
            throw std::length_error("workingLength: series too long");
        length *= 2;
    }
    return length;
}

int binaryExponent(std::size_t powerOfTwo) {
    if (powerOfTwo == 0 || (powerOfTwo & (powerOfTwo - 1)) != 0)
        throw std::invalid_argument("binaryExponent: not a power of two");
    int p = 0;
    while ((std::size_t{1} << p) < powerOfTwo)
        ++p;
    return p;
}

ExtendedSignal extendSymmetric(std::span<const double> signal, std::size_t length) {
    const std::size_t n = signal.size();
    if (n == 0) throw std::invalid_argument("extendSymmetric: empty series");
    if (length < n) throw std::invalid_argument("extendSymmetric: length below the series");
    ExtendedSignal out;
    out.offset = (length - n) / 2;
    out.values.resize(length);
    std::copy(signal.begin(), signal.end(),
              out.values.begin() + static_cast<std::ptrdiff_t>(out.offset));
    // Position i relative to the first sample maps into the reflected series of
    // period 2n: 0 .. n-1 the series, n .. 2n-1 the series backwards.
    const auto period = static_cast<std::ptrdiff_t>(2 * n);
    const auto reflected = [&](std::ptrdiff_t i) {
        std::ptrdiff_t m = i % period;
        if (m < 0) m += period;
        return signal[static_cast<std::size_t>(
            m < static_cast<std::ptrdiff_t>(n) ? m : period - 1 - m)];
    };
    const auto offset = static_cast<std::ptrdiff_t>(out.offset);
    for (std::ptrdiff_t j = 0; j < offset; ++j)
        out.values[static_cast<std::size_t>(j)] = reflected(j - offset);
    for (std::size_t j = out.offset + n; j < length; ++j)
        out.values[j] = reflected(static_cast<std::ptrdiff_t>(j) - offset);
    return out;
}

// ---------------------------------------------------------------------------
// One level of the periodic transform
// ---------------------------------------------------------------------------

namespace {

std::ptrdiff_t wrapIndex(std::ptrdiff_t i, std::ptrdiff_t n) {
    std::ptrdiff_t m = i % n;
    return m < 0 ? m + n : m;
}

// dst[j] = src[(j + shift) mod n] for j < dst.size(): a periodic window.
void periodicCopy(std::span<const double> src, std::ptrdiff_t shift, std::span<double> dst) {
    const auto n = static_cast<std::ptrdiff_t>(src.size());
    const auto count = static_cast<std::ptrdiff_t>(dst.size());
    // The run of j for which j + shift lies in [0, n) needs no wrapping.
    const std::ptrdiff_t first = std::clamp<std::ptrdiff_t>(-shift, 0, count);
    const std::ptrdiff_t last = std::clamp<std::ptrdiff_t>(n - shift, first, count);
    for (std::ptrdiff_t j = 0; j < first; ++j)
        dst[static_cast<std::size_t>(j)] = src[static_cast<std::size_t>(wrapIndex(j + shift, n))];
    if (last > first)
        std::copy(src.begin() + (first + shift), src.begin() + (last + shift), dst.begin() + first);
    for (std::ptrdiff_t j = last; j < count; ++j)
        dst[static_cast<std::size_t>(j)] = src[static_cast<std::size_t>(wrapIndex(j + shift, n))];
}

void checkHalves(std::size_t n, std::span<const double> a, std::span<const double> d) {
    if (n < 2 || n % 2 != 0)
        throw std::invalid_argument("filter bank: length must be even and >= 2");
    if ((!a.empty() && a.size() != n / 2) || (!d.empty() && d.size() != n / 2))
        throw std::invalid_argument("filter bank: halves must have half the length");
}

} // namespace

PeriodicFilterBank::PeriodicFilterBank(std::span<const double> lowPass) {
    setLowPass(lowPass);
}

void PeriodicFilterBank::setLowPass(std::span<const double> lowPass) {
    if (lowPass.empty() || lowPass.size() % 2 != 0)
        throw std::invalid_argument("filter bank: filter length must be even");
    lowPass_.assign(lowPass.begin(), lowPass.end());
    highPass_ = waveletFilter(lowPass);
}

void PeriodicFilterBank::analyse(std::span<const double> x, std::span<double> approx,
                                 std::span<double> detail) {
    checkHalves(x.size(), approx, detail);
    const std::size_t half = x.size() / 2;
    const std::size_t taps = lowPass_.size() / 2; // L/2 pairs of taps
    // The input read periodically from sample 1 - L/2 on: w[j] = x[(j + 1 - L/2)
    // mod N], so that approx[o] = sum_k h[k] w[2o + k].
    wrapped_.resize(x.size() + lowPass_.size());
    periodicCopy(x, 1 - static_cast<std::ptrdiff_t>(taps), wrapped_);
    const std::size_t length = lowPass_.size();
    const double* h = lowPass_.data();
    const double* g = highPass_.data();
    if (!approx.empty() && !detail.empty()) {
        for (std::size_t i = 0; i < half; ++i) {
            const double* w = wrapped_.data() + 2 * i;
            double sa = 0.0, sd = 0.0;
            for (std::size_t k = 0; k < length; ++k) {
                sa += h[k] * w[k];
                sd += g[k] * w[k];
            }
            approx[i] = sa;
            detail[i] = sd;
        }
        return;
    }
    const double* f = approx.empty() ? g : h;
    double* out = approx.empty() ? detail.data() : approx.data();
    for (std::size_t i = 0; i < half; ++i) {
        const double* w = wrapped_.data() + 2 * i;
        double sum = 0.0;
        for (std::size_t k = 0; k < length; ++k)
            sum += f[k] * w[k];
        out[i] = sum;
    }
}

void PeriodicFilterBank::synthesise(std::span<const double> approx, std::span<const double> detail,
                                    std::span<double> x) {
    checkHalves(x.size(), approx, detail);
    const std::size_t half = x.size() / 2;
    const std::size_t length = lowPass_.size();
    const std::size_t taps = length / 2;
    // x[t] = sum over (o, k) with 2o + k + 1 - L/2 = t (mod N) of approx[o] h[k] +
    // detail[o] g[k]. With u = t + L/2 - 1, the taps k of the parity of u meet the
    // coefficient o = (u - k)/2. Wrapped copies pad[j] = c[(j - L/2) mod N/2] make
    // each phase of x a plain correlation:
    //     x[2m + p] = sum_q f[k0 + 2q] pad[m + C_p - q],  k0 = (p + L/2 - 1) mod 2,
    //     C_p = (p + L/2 - 1 - k0)/2 + L/2.
    const std::size_t padded = half + length;
    const bool hasA = !approx.empty(), hasD = !detail.empty();
    if (hasA) {
        padA_.resize(padded);
        periodicCopy(approx, -static_cast<std::ptrdiff_t>(taps), padA_);
    }
    if (hasD) {
        padD_.resize(padded);
        periodicCopy(detail, -static_cast<std::ptrdiff_t>(taps), padD_);
    }
    for (std::size_t p = 0; p < 2; ++p) {
        const std::size_t k0 = (p + taps - 1) % 2;
        const std::size_t c = (p + taps - 1 - k0) / 2 + taps;
        // Taps of this phase, f[k0], f[k0 + 2], ...; coefficient index m + c - q.
        std::array<double, 64> fa{}, fd{};
        const std::size_t count = (length - k0 + 1) / 2;
        if (count > fa.size()) throw std::invalid_argument("filter bank: filter too long");
        for (std::size_t q = 0; q < count; ++q) {
            fa[q] = lowPass_[k0 + 2 * q];
            fd[q] = highPass_[k0 + 2 * q];
        }
        const double* a = hasA ? padA_.data() : nullptr;
        const double* d = hasD ? padD_.data() : nullptr;
        double* out = x.data() + p;
        if (hasA && hasD) {
            for (std::size_t m = 0; m < half; ++m) {
                double sum = 0.0;
                for (std::size_t q = 0; q < count; ++q)
                    sum += fa[q] * a[m + c - q] + fd[q] * d[m + c - q];
                out[2 * m] = sum;
            }
        } else {
            const double* coefficients = hasA ? a : d;
            const double* f = hasA ? fa.data() : fd.data();
            for (std::size_t m = 0; m < half; ++m) {
                double sum = 0.0;
                for (std::size_t q = 0; q < count; ++q)
                    sum += f[q] * coefficients[m + c - q];
                out[2 * m] = sum;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// The pyramid
// ---------------------------------------------------------------------------

namespace {

void checkPyramidLength(std::size_t n, int levels) {
    if (levels < 1 || levels >= std::numeric_limits<std::size_t>::digits)
        throw std::invalid_argument("wavelet transform: levels must be >= 1");
    if (n == 0 || (n & (n - 1)) != 0 || n < (std::size_t{1} << levels))
        throw std::invalid_argument("wavelet transform: length must be a power of two >= 2^levels");
}

} // namespace

WaveletPyramid forwardTransform(std::span<const double> x, std::span<const double> lowPass,
                                int levels) {
    checkPyramidLength(x.size(), levels);
    PeriodicFilterBank bank(lowPass);
    WaveletPyramid pyramid;
    pyramid.details.resize(static_cast<std::size_t>(levels));
    // Approximations alternate between two buffers (N/2 and N/4 long).
    std::vector<double> even(x.size() / 2), odd(std::max<std::size_t>(1, x.size() / 4));
    std::span<const double> current = x;
    for (std::size_t j = 0; j < pyramid.details.size(); ++j) {
        const std::size_t half = current.size() / 2;
        const std::span<double> next = std::span<double>(j % 2 == 0 ? even : odd).first(half);
        auto& detail = pyramid.details[j];
        detail.resize(half);
        bank.analyse(current, next, detail);
        current = next;
    }
    pyramid.approximation.assign(current.begin(), current.end());
    return pyramid;
}

std::vector<double> inverseTransform(const WaveletPyramid& pyramid,
                                     std::span<const double> lowPass) {
    PeriodicFilterBank bank(lowPass);
    const std::size_t levels = pyramid.details.size();
    const std::size_t length = pyramid.approximation.size() << levels;
    // Level j writes 2 n_j values: into the result for odd j, into scratch for
    // even j, so that level 1 ends in the result.
    std::vector<double> result(length), scratch(std::max<std::size_t>(1, length / 2));
    std::span<const double> current = pyramid.approximation;
    for (std::size_t j = levels; j-- > 0;) {
        const auto& detail = pyramid.details[j];
        if (detail.size() != current.size())
            throw std::invalid_argument("inverseTransform: inconsistent level sizes");
        const std::span<double> next =
            std::span<double>(j % 2 == 0 ? result : scratch).first(2 * current.size());
        bank.synthesise(current, detail, next);
        current = next;
    }
    if (levels == 0) result.assign(current.begin(), current.end());
    return result;
}

int pyramidLevels(std::size_t workingLength) {
    return std::max(1, binaryExponent(workingLength) - 3);
}

// ---------------------------------------------------------------------------
// Minimum-entropy choice
// ---------------------------------------------------------------------------

namespace {

// The mean-removed series extended to its working length.
std::vector<double> centredExtension(std::span<const double> signal) {
    if (signal.empty()) throw std::invalid_argument("wavelet entropy: empty series");
    const double mean =
        std::accumulate(signal.begin(), signal.end(), 0.0) / static_cast<double>(signal.size());
    std::vector<double> centred(signal.size());
    std::transform(signal.begin(), signal.end(), centred.begin(),
                   [mean](double v) { return v - mean; });
    return extendSymmetric(centred, workingLength(centred.size())).values;
}

// Shannon entropy of one level: ln S - (1/S) sum c^2 ln c^2 with S = sum c^2.
double levelEntropy(std::span<const double> coefficients) {
    double energy = 0.0, weighted = 0.0;
    for (double c : coefficients) {
        const double c2 = c * c;
        if (c2 > 0.0) {
            energy += c2;
            weighted += c2 * std::log(c2);
        }
    }
    if (energy <= 0.0) return 0.0;
    return std::max(0.0, std::log(energy) - weighted / energy);
}

// The cost of x (extended, mean removed), level by level without keeping the
// pyramid. The bank and the three buffers are scratch, kept between calls.
struct EntropyScratch {
    std::vector<double> even, odd, detail;
};

double pyramidEntropy(std::span<const double> x, PeriodicFilterBank& bank, EntropyScratch& s) {
    const int levels = pyramidLevels(x.size());
    s.even.resize(x.size() / 2);
    s.odd.resize(std::max<std::size_t>(1, x.size() / 4));
    s.detail.resize(x.size() / 2);
    double cost = 0.0;
    std::span<const double> current = x;
    for (int j = 0; j < levels; ++j) {
        const std::size_t half = current.size() / 2;
        const std::span<double> next = std::span<double>(j % 2 == 0 ? s.even : s.odd).first(half);
        const std::span<double> d = std::span<double>(s.detail).first(half);
        bank.analyse(current, next, d);
        cost += levelEntropy(d);
        current = next;
    }
    return cost;
}

} // namespace

double waveletEntropy(std::span<const double> signal, std::span<const double> lowPass) {
    PeriodicFilterBank bank(lowPass);
    EntropyScratch scratch;
    return pyramidEntropy(centredExtension(signal), bank, scratch);
}

std::int32_t minimumEntropyWaveCode(std::span<const double> signal) {
    const std::vector<double> x = centredExtension(signal);
    const std::span<const std::int32_t> codes = allWaveCodes();
    std::vector<double> entropy(codes.size());
    const std::size_t workers = parallelWorkers(codes.size());
    std::vector<PeriodicFilterBank> banks(workers, PeriodicFilterBank(scalingFilter(codes[0])));
    std::vector<EntropyScratch> scratch(workers);
    forEachIndex(codes.size(), [&](std::size_t i, std::size_t worker) {
        banks[worker].setLowPass(scalingFilter(codes[i]));
        entropy[i] = pyramidEntropy(x, banks[worker], scratch[worker]);
    });
    std::size_t best = 0;
    for (std::size_t i = 1; i < codes.size(); ++i)
        if (entropy[i] < entropy[best]) best = i;
    return codes[best];
}

// ---------------------------------------------------------------------------
// The graph of a wavelet
// ---------------------------------------------------------------------------

std::vector<double> cascade(std::span<const double> lowPass, int level, CascadeFunction which) {
    if (lowPass.size() < 2 || level < 1 || level > 24)
        throw std::invalid_argument("cascade: bad filter or level");
    const std::vector<double> highPass = waveletFilter(lowPass);
    std::vector<double> c = which == CascadeFunction::Wavelet
                                ? highPass
                                : std::vector<double>(lowPass.begin(), lowPass.end());
    const std::size_t length = lowPass.size();
    for (int j = 1; j < level; ++j) {
        // next[i] = sum_o c[o] h[i - 2o]: upsample by two, then convolve with h.
        std::vector<double> next(2 * c.size() - 1 + length - 1, 0.0);
        for (std::size_t o = 0; o < c.size(); ++o)
            for (std::size_t k = 0; k < length; ++k)
                next[2 * o + k] += c[o] * lowPass[k];
        c.swap(next);
    }
    const double scale = std::pow(2.0, 0.5 * level);
    for (double& v : c)
        v *= scale;
    return c;
}

std::vector<double> waveletGraph(std::span<const double> lowPass, std::size_t count) {
    if (count < 2) throw std::invalid_argument("waveletGraph: need at least 2 points");
    constexpr int level = 14;
    const std::vector<double> psi = cascade(lowPass, level, CascadeFunction::Wavelet);
    double centre = 0.0; // m = sum k h[k] / sqrt 2
    for (std::size_t k = 0; k < lowPass.size(); ++k)
        centre += static_cast<double>(k) * lowPass[k];
    centre /= std::numbers::sqrt2;
    const double steps = std::ldexp(1.0, level); // grid points per unit of t
    const double support = static_cast<double>(lowPass.size() - 1);
    // Knots: t = 0 (value 0), t_k = (k + m) / 2^level for every cascade value,
    // t = L - 1 (value 0); between knots the graph is linear.
    std::vector<double> graph(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = support * static_cast<double>(i) / static_cast<double>(count - 1);
        const double position = t * steps - centre; // in units of the cascade index
        if (position <= -centre || t >= support) {
            graph[i] = 0.0;
        } else if (position < 0.0) { // between t = 0 and the first value
            graph[i] = psi.front() * (t * steps) / centre;
        } else {
            const auto k = static_cast<std::size_t>(std::floor(position));
            const double w = position - static_cast<double>(k);
            if (k + 1 < psi.size()) {
                graph[i] = (1.0 - w) * psi[k] + w * psi[k + 1];
            } else { // after the last value, down to 0 at the end of the support
                const double lastT = (static_cast<double>(psi.size() - 1) + centre) / steps;
                graph[i] =
                    lastT >= support ? psi.back() : psi.back() * (support - t) / (support - lastT);
            }
        }
    }
    return graph;
}

// ---------------------------------------------------------------------------
// Parallel helper
// ---------------------------------------------------------------------------

std::size_t parallelWorkers(std::size_t count) {
    const std::size_t cores = std::max<std::size_t>(1, std::thread::hardware_concurrency());
    return std::max<std::size_t>(1, std::min(cores, count));
}

void forEachIndex(std::size_t count,
                  const std::function<void(std::size_t index, std::size_t worker)>& task) {
    const std::size_t workers = parallelWorkers(count);
    std::atomic<std::size_t> nextIndex{0};
    std::exception_ptr failure;
    std::mutex failureMutex;
    const auto work = [&](std::size_t worker) {
        for (std::size_t i = nextIndex++; i < count; i = nextIndex++) {
            try {
                task(i, worker);
            } catch (...) {
                const std::lock_guard lock(failureMutex);
                if (!failure) failure = std::current_exception();
                nextIndex = count; // stop handing out work
            }
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(workers - 1);
    try {
        for (std::size_t w = 1; w < workers; ++w)
            threads.push_back(startThread<std::thread>(work, w));
    } catch (...) {
        // No thread to spare: the ones started and this one do all the work.
    }
    work(0);
    for (std::thread& t : threads)
        t.join();
    if (failure) std::rethrow_exception(failure);
}

} // namespace tarnic
