#include "numeric/welch.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace tarnic {
namespace {

// Windowed sums of width w >= 1 over e, starting at 0 .. starts-1, by the
// block scheme of van Herk / Gil-Werman: cut e into blocks of w; a window is the
// tail of one block plus the head of the next, and both partial sums are taken
// over values inside the window only, so nothing is ever subtracted.
std::vector<double> slidingSums(const std::vector<double>& e, std::size_t w, std::size_t starts) {
    const std::size_t n = e.size(); // >= starts - 1 + w
    std::vector<double> head(n), tail(n);
    for (std::size_t i = 0; i < n; ++i)
        head[i] = (i % w == 0) ? e[i] : head[i - 1] + e[i];
    for (std::size_t i = n; i-- > 0;)
        tail[i] = (i % w == w - 1 || i + 1 == n) ? e[i] : tail[i + 1] + e[i];
    std::vector<double> sums(starts);
    for (std::size_t a = 0; a < starts; ++a) {
        const std::size_t last = a + w - 1;
        sums[a] = (a % w == 0) ? head[last] : tail[a] + head[last];
    }
    return sums;
}

template <class T>
std::vector<double> densityOf(std::span<const T> x, std::size_t length, std::size_t fftLength,
                              std::size_t radius) {
    const std::size_t m = fftLength + (fftLength % 2);
    const std::size_t half = m / 2;
    std::vector<double> p(half + 1, 0.0);
    const std::size_t len = std::min({length, x.size(), m});
    if (len == 0) return p;

    const std::vector<std::size_t> starts = welchWindowStarts(x.size(), len);
    std::vector<double> taper(len, 1.0);
    if (len > 1)
        for (std::size_t j = 0; j < len; ++j)
            taper[j] = 0.5 * (1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(j) /
                                             static_cast<double>(len)));
    double taperEnergy = 0.0;
    for (double w : taper)
        taperEnergy += w * w;

    const RealFftPlan& plan = realFftPlan(m, FftDirection::Forward);
    FftBuffer<double> frame(m); // zero beyond len: the padding
    FftBuffer<fftw_complex> bins(half + 1);
    std::vector<double> sum(half + 1, 0.0);
    for (std::size_t start : starts) {
        const T* window = x.data() + start;
        double mean = 0.0;
        for (std::size_t j = 0; j < len; ++j)
            mean += window[j];
        mean /= static_cast<double>(len);
        for (std::size_t j = 0; j < len; ++j)
            frame[j] = (window[j] - mean) * taper[j];
        plan.forward(frame.data(), bins.data());
        for (std::size_t k = 0; k <= half; ++k)
            sum[k] += bins[k][0] * bins[k][0] + bins[k][1] * bins[k][1];
    }
    const double scale = 1.0 / (static_cast<double>(starts.size()) * taperEnergy);
    for (std::size_t k = 0; k <= half; ++k)
        p[k] = (k == 0 || k == half ? 1.0 : 2.0) * sum[k] * scale;
    return radius > 0 ? daniellSmooth(p, radius) : p;
}

} // namespace

std::vector<std::size_t> welchWindowStarts(std::size_t n, std::size_t length) {
    length = std::min(length, n);
    if (length == 0) return {};
    if (length == n) return {0};
    const std::size_t room = n - length;
    const std::size_t maxShift = std::max<std::size_t>(length / 2, 1);
    const std::size_t gaps = (room + maxShift - 1) / maxShift;
    std::vector<std::size_t> starts(gaps + 1);
    for (std::size_t w = 0; w <= gaps; ++w)
        starts[w] = (2 * w * room + gaps) / (2 * gaps);
    return starts;
}

std::vector<double> welchDensity(std::span<const double> x, std::size_t length,
                                 std::size_t fftLength, std::size_t radius) {
    return densityOf(x, length, fftLength, radius);
}

std::vector<double> welchDensity(std::span<const float> x, std::size_t length,
                                 std::size_t fftLength, std::size_t radius) {
    return densityOf(x, length, fftLength, radius);
}

std::vector<double> daniellSmooth(std::span<const double> p, std::size_t radius) {
    if (p.size() < 2 || radius == 0) return {p.begin(), p.end()};
    const std::size_t half = p.size() - 1;
    const std::size_t m = 2 * half;
    // Two-sided values S on the circle of m bins, mirrored: S_{m-k} = S_k.
    auto twoSided = [&](std::size_t k) {
        const double v = p[k];
        return (k == 0 || k == half) ? v : 0.5 * v;
    };
    auto onCircle = [&](std::ptrdiff_t t) {
        const std::ptrdiff_t mm = static_cast<std::ptrdiff_t>(m);
        std::ptrdiff_t r = t % mm;
        if (r < 0) r += mm;
        const auto k = static_cast<std::size_t>(r);
        return twoSided(k > half ? m - k : k);
    };

    const std::size_t width = 2 * radius + 1;
    const std::size_t turns = width / m;
    const std::size_t rest = width % m;
    double total = 0.0;
    for (std::size_t k = 0; k < m; ++k)
        total += onCircle(static_cast<std::ptrdiff_t>(k));

    std::vector<double> windowSum(half + 1, 0.0);
    if (rest > 0) {
        // The rest of each window starts at k - radius; lay the circle out from
        // -radius over every index those windows reach.
        const std::ptrdiff_t first = -static_cast<std::ptrdiff_t>(radius % m);
        std::vector<double> line(half + rest);
        for (std::size_t i = 0; i < line.size(); ++i)
            line[i] = onCircle(first + static_cast<std::ptrdiff_t>(i));
        windowSum = slidingSums(line, rest, half + 1);
    }
    std::vector<double> smoothed(half + 1);
    for (std::size_t k = 0; k <= half; ++k) {
        const double s =
            (static_cast<double>(turns) * total + windowSum[k]) / static_cast<double>(width);
        smoothed[k] = (k == 0 || k == half) ? s : 2.0 * s;
    }
    return smoothed;
}

void backgroundSpectrum(std::span<const float> signal, std::size_t length, std::size_t fftLength,
                        std::size_t radius, std::span<float> out) {
    const std::vector<double> p = welchDensity(signal, length, fftLength, radius);
    const std::size_t m = std::max<std::size_t>(2 * (p.size() - 1), 1);
    double total = 0.0;
    for (double v : p)
        total += v;
    total /= static_cast<double>(m);
    const double lowest =
        std::max(1e-12 * total, static_cast<double>(std::numeric_limits<float>::min()));
    constexpr double highest = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double v = i < p.size() ? p[i] : 0.0;
        out[i] = static_cast<float>(std::clamp(v, lowest, highest));
    }
}

} // namespace tarnic
