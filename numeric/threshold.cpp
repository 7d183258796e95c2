#include "numeric/threshold.h"

#include "numeric/dwt.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace tarnic {

namespace {

struct SeriesTransform {
    ExtendedSignal extended;
    WaveletPyramid pyramid;
};

SeriesTransform transformSeries(std::span<const double> signal, std::span<const double> lowPass) {
    if (signal.empty()) throw std::invalid_argument("wavelet threshold: empty series");
    SeriesTransform t;
    const std::size_t length = workingLength(signal.size());
    t.extended = extendSymmetric(signal, length);
    t.pyramid = forwardTransform(t.extended.values, lowPass, pyramidLevels(length));
    return t;
}

// Median of |values| (the mean of the two middle ones for an even count).
double medianModulus(std::span<const double> values) {
    std::vector<double> m(values.size());
    std::transform(values.begin(), values.end(), m.begin(), [](double v) { return std::abs(v); });
    const std::size_t mid = m.size() / 2;
    std::nth_element(m.begin(), m.begin() + static_cast<std::ptrdiff_t>(mid), m.end());
    const double upper = m[mid];
    if (m.size() % 2 != 0) return upper;
    const double lower = *std::max_element(m.begin(), m.begin() + static_cast<std::ptrdiff_t>(mid));
    return 0.5 * (lower + upper);
}

} // namespace

DonohoJohnstoneLevel donohoJohnstoneLevel(std::span<const double> signal,
                                          std::span<const double> lowPass) {
    const SeriesTransform t = transformSeries(signal, lowPass);
    DonohoJohnstoneLevel level;
    level.sigma = medianModulus(t.pyramid.details.front()) / 0.6744897501960817;
    level.lambda = level.sigma * std::sqrt(2.0 * std::log(static_cast<double>(signal.size())));
    std::size_t below = 0, count = 0;
    for (const auto& detail : t.pyramid.details) {
        count += detail.size();
        for (double d : detail)
            if (std::abs(d) < level.lambda) ++below;
    }
    level.share = static_cast<double>(below) / static_cast<double>(count);
    return level;
}

std::size_t removedCount(double share, std::size_t count) {
    if (!(share > 0.0)) return 0;
    if (share >= 1.0) return count;
    return std::min(count,
                    static_cast<std::size_t>(std::llround(share * static_cast<double>(count))));
}

std::vector<double> waveletThresholdFilter(std::span<const double> signal,
                                           std::span<const double> lowPass, double share) {
    SeriesTransform t = transformSeries(signal, lowPass);
    std::size_t count = 0;
    for (const auto& detail : t.pyramid.details)
        count += detail.size();
    std::size_t remove = removedCount(share, count);
    if (remove > 0) {
        // The remove-th smallest modulus: all below it go, then those equal to it
        // in order until the count is reached.
        std::vector<double> moduli;
        moduli.reserve(count);
        for (const auto& detail : t.pyramid.details)
            for (double d : detail)
                moduli.push_back(std::abs(d));
        std::nth_element(moduli.begin(), moduli.begin() + static_cast<std::ptrdiff_t>(remove - 1),
                         moduli.end());
        const double cut = moduli[remove - 1];
        for (auto& detail : t.pyramid.details)
            for (double& d : detail)
                if (std::abs(d) < cut) {
                    d = 0.0;
                    --remove;
                }
        for (auto& detail : t.pyramid.details)
            for (double& d : detail)
                if (remove > 0 && std::abs(d) == cut) {
                    d = 0.0;
                    --remove;
                }
    }
    const std::vector<double> rebuilt = inverseTransform(t.pyramid, lowPass);
    const auto first = rebuilt.begin() + static_cast<std::ptrdiff_t>(t.extended.offset);
    return std::vector<double>(first, first + static_cast<std::ptrdiff_t>(signal.size()));
}

} // namespace tarnic
