#include "maps/svanarlogic.h"

#include "core/numtext.h"
#include "numeric/workers.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cmath>
#include <future>
#include <limits>
#include <thread>
#include <vector>

namespace tarnic {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Length of the number at the start of `text` in the grammar TextNum reads,
// 0 when there is none.
std::size_t numberLength(std::string_view text) {
    std::size_t i = 0;
    const std::size_t n = text.size();
    if (i < n && (text[i] == '+' || text[i] == '-')) ++i;
    bool anyDigit = false;
    while (i < n && isDigit(text[i]))
        ++i, anyDigit = true;
    if (i < n && text[i] == '.') {
        ++i;
        while (i < n && isDigit(text[i]))
            ++i, anyDigit = true;
    }
    if (!anyDigit) return 0;
    if (i < n && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
        std::size_t j = i + 1;
        if (j < n && (text[j] == '+' || text[j] == '-')) ++j;
        const std::size_t digits = j;
        while (j < n && isDigit(text[j]))
            ++j;
        if (j > digits) i = j;
    }
    return i;
}

} // namespace

std::int32_t SvanDefaultLength(std::int32_t samples) {
    return std::max(std::min(IntClamped(samples / 8.0), 2048), 16);
}

std::int32_t SvanDefaultShift(std::int32_t length) {
    return std::max(IntClamped(length / 20.0), 1);
}

std::int32_t SvanDefaultOrder(std::int32_t length) {
    return std::max(IntClamped(length / 10.0), 1);
}

SvanShiftSearch SearchSvanShift(std::int32_t samples, std::int32_t length) {
    SvanShiftSearch result;
    std::int32_t s = IntClamped(length / 20.0);
    while (s >= 1) {
        result.count = IntClamped(static_cast<double>(samples - length) / s + 1.0);
        const std::int64_t tail =
            samples - (static_cast<std::int64_t>(s) * (result.count - 1) + length);
        if (tail <= 2) break;
        --s;
    }
    result.shift = std::max(s, 1);
    return result;
}

std::optional<std::int32_t> StrictInt(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.empty() || numberLength(text) != text.size()) return std::nullopt;
    return IntOf(TextNum(text));
}

std::int32_t ReadSvanLength(std::string_view text, std::int32_t samples, std::int32_t fallback) {
    const auto typed = StrictInt(text);
    if (!typed) return fallback;
    std::int32_t length = *typed;
    length = std::min(length, samples - 1);
    length = std::min(length, 2048);
    return std::max(length, 16);
}

std::int32_t ReadSvanShift(std::string_view text, std::int32_t length, std::int32_t fallback) {
    const auto typed = StrictInt(text);
    if (!typed) return fallback;
    return std::max(std::min(*typed, length), 1);
}

std::int32_t ReadSvanOrder(std::string_view text, std::int32_t length, std::int32_t fallback) {
    const auto typed = StrictInt(text);
    if (!typed) return fallback;
    std::int32_t order = std::max(*typed, 1);
    if (length / 4.0 < order) order = IntClamped(length / 4.0);
    return order;
}

std::int32_t SvanWindowCount(std::int32_t samples, std::int32_t length, std::int32_t shift) {
    return IntClamped(static_cast<double>(samples - length) / shift) + 1;
}

std::int32_t SvanCutIndex(std::int32_t half, std::int32_t fft, std::int32_t samples, double dT) {
    const double lowest = 2.0 / (dT * samples);
    for (std::int32_t k = 1; k <= half; ++k)
        if ((k - 1) / (dT * fft) >= lowest) return k;
    return half;
}

bool SvanVolumeExceeded(std::int32_t count, std::int32_t half) {
    return static_cast<std::int64_t>(count) * half > kSvanMaxCells;
}

SvanRanges SvanRangesOf(const SvanLayout& l, double T0, double dT) {
    const double lastStart = static_cast<double>(l.count - 1) * l.shift;
    return {static_cast<float>(T0 + dT * (l.length - 1)),
            static_cast<float>(T0 + dT * (lastStart + l.length - 1)),
            static_cast<float>((l.cut - 1) / (static_cast<double>(l.fft) * dT)),
            static_cast<float>((l.half - 1) / (static_cast<double>(l.fft) * dT))};
}

void ComputeSpectraEvolution(std::span<const float> input, const SvanLayout& l, double dT,
                             const WindowSpectrum& spectrum, std::span<float> map,
                             std::span<float> lastSpectrum) {
    const auto half = static_cast<std::size_t>(l.half);
    const auto length = static_cast<std::size_t>(l.length);
    // One window: its samples into a buffer of the worker's own, its spectrum,
    // then the logarithms into the window's column of the map.
    auto window = [&](int w, std::vector<float>& samples, std::vector<float>& powers) {
        const std::size_t start =
            static_cast<std::size_t>(w - 1) * static_cast<std::size_t>(l.shift);
        std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(start), length, samples.begin());
        std::int32_t count = l.length, points = l.half, order = l.order;
        spectrum(samples.front(), count, points, order, powers.front());
        float* column = map.data() + static_cast<std::size_t>(w - 1) * half;
        for (std::size_t k = 0; k < half; ++k)
            column[k] = static_cast<float>(std::log(dT * static_cast<double>(powers[k])));
        if (w == l.count) std::copy_n(powers.begin(), half, lastSpectrum.begin());
    };
    if (l.count < 1) return;
    {
        std::vector<float> samples(length), powers(half);
        window(1, samples, powers);
    }
    std::atomic<int> next{2};
    auto worker = [&] {
        std::vector<float> samples(length), powers(half);
        for (int w = next++; w <= l.count; w = next++)
            window(w, samples, powers);
    };
    const int workers = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    std::vector<std::future<void>> jobs;
    for (int t = 0; t < workers; ++t)
        jobs.push_back(startWorker(worker));
    for (auto& job : jobs)
        job.get();
    // A window without variance (a gap filled with a constant, a clipped
    // stretch) has a spectrum of 0 or the smallest float: held at the map's
    // largest value times 1e-12, it draws in the lowest colour and leaves the
    // colour scale to the rest of the map.
    float largest = -std::numeric_limits<float>::infinity();
    for (float v : map.first(static_cast<std::size_t>(l.count) * half))
        if (std::isfinite(v)) largest = std::max(largest, v);
    if (!std::isfinite(largest)) return;
    const float floor = largest - static_cast<float>(std::log(1e12));
    for (float& v : map.first(static_cast<std::size_t>(l.count) * half))
        if (!(v >= floor)) v = floor;
}

} // namespace tarnic
