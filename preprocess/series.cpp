#include "preprocess/series.h"

#include <algorithm>
#include <cmath>

namespace tarnic {

std::vector<float> Winsorize(std::span<const float> signal, int passes, double factor) {
    std::vector<float> y(signal.begin(), signal.end());
    if (y.empty()) return y;
    const auto n = static_cast<double>(y.size());
    for (int pass = 0; pass < passes; ++pass) {
        float sum = 0;
        for (float v : y) sum += v;
        const double mean = sum / n;
        for (float& v : y) v = static_cast<float>(v - mean);
        float squares = 0;
        for (float v : y) squares += v * v;
        const double limit = factor * std::sqrt(squares / n);
        for (float& v : y) {
            if (v > limit) v = static_cast<float>(limit);
            if (v < -limit) v = static_cast<float>(-limit);
        }
    }
    return y;
}

BlockStatistics BlockMeans(std::span<const float> signal, long long step) {
    BlockStatistics out;
    if (step < 1) return out;
    const auto count = static_cast<long long>(signal.size()) / step;
    out.means.resize(static_cast<std::size_t>(count));
    out.variances.resize(static_cast<std::size_t>(count));
    for (long long k = 0; k < count; ++k) {
        const auto block = signal.subspan(static_cast<std::size_t>(k * step),
                                          static_cast<std::size_t>(step));
        float sum = 0;
        for (float v : block) sum += v;
        const double mean = sum / static_cast<double>(step);
        double squares = 0;
        for (float v : block) squares += (v - mean) * (v - mean);
        out.means[static_cast<std::size_t>(k)] = static_cast<float>(mean);
        out.variances[static_cast<std::size_t>(k)] =
            static_cast<float>(step > 1 ? squares / static_cast<double>(step - 1) : 0.0);
    }
    return out;
}

} // namespace tarnic
