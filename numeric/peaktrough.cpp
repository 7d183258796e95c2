#include "numeric/peaktrough.h"

#include <algorithm>
#include <vector>

namespace tarnic {
namespace {

struct Crossing {
    std::size_t before; // the crossing lies between samples before and before + 1
    double position;    // interpolated, in samples
};

struct HalfWave {
    std::size_t extreme; // crest above the mean, trough below it
    bool above;
};

MaximumWave fromExtremes(std::span<const double> y) {
    MaximumWave wave;
    if (y.empty()) return wave;
    const auto [low, high] = std::minmax_element(y.begin(), y.end());
    // minmax_element gives the last of equal maxima; the first is wanted.
    const auto firstHigh = std::find(y.begin(), y.end(), *high);
    wave.crest = static_cast<std::size_t>(firstHigh - y.begin());
    wave.trough = static_cast<std::size_t>(low - y.begin());
    wave.height = *high - *low;
    if (wave.height == 0.0) {
        wave.crest = wave.trough = 0;
        return wave;
    }
    const std::size_t distance =
        wave.crest > wave.trough ? wave.crest - wave.trough : wave.trough - wave.crest;
    wave.period = 2.0 * static_cast<double>(distance);
    return wave;
}

} // namespace

MaximumWave maximumWave(std::span<const double> y) {
    const std::size_t n = y.size();
    double mean = 0.0;
    for (double v : y)
        mean += v;
    if (n > 0) mean /= static_cast<double>(n);

    std::vector<Crossing> crossings;
    for (std::size_t t = 0; t + 1 < n; ++t) {
        if ((y[t] >= mean) != (y[t + 1] >= mean))
            crossings.push_back({t, static_cast<double>(t) + (mean - y[t]) / (y[t + 1] - y[t])});
    }
    if (crossings.size() < 3) return fromExtremes(y);

    // Half-wave h holds the samples after crossing h up to crossing h + 1.
    std::vector<HalfWave> halves;
    for (std::size_t h = 0; h + 1 < crossings.size(); ++h) {
        const std::size_t begin = crossings[h].before + 1;
        const std::size_t end = crossings[h + 1].before + 1;
        const bool above = y[begin] >= mean;
        std::size_t extreme = begin;
        for (std::size_t t = begin + 1; t < end; ++t)
            if (above ? y[t] > y[extreme] : y[t] < y[extreme]) extreme = t;
        halves.push_back({extreme, above});
    }

    MaximumWave best;
    best.complete = true;
    bool found = false;
    for (std::size_t h = 0; h + 1 < halves.size(); ++h) {
        const HalfWave& crest = halves[h].above ? halves[h] : halves[h + 1];
        const HalfWave& trough = halves[h].above ? halves[h + 1] : halves[h];
        const double height = y[crest.extreme] - y[trough.extreme];
        if (!found || height > best.height) {
            found = true;
            best.crest = crest.extreme;
            best.trough = trough.extreme;
            best.height = height;
            best.period = crossings[h + 2].position - crossings[h].position;
        }
    }
    return best;
}

} // namespace tarnic
