#include "signal/trendlogic.h"

#include "core/numtext.h"

#include <algorithm>
#include <cmath>

namespace tarnic {

std::int32_t ClampTrendRadius(double typed, std::int32_t length) {
    std::int32_t radius = IntOf(typed).value_or(0);
    if (radius < 0) radius = 0;
    if (radius > length / 2.0) radius = IntClamped(length / 2.0 + 1);
    return radius;
}

std::int32_t ClampTrendOrder(double typed, std::int32_t radius) {
    std::int32_t order = IntOf(typed).value_or(0);
    order = std::clamp(order, 0, 10);
    const std::int32_t highest = std::max(radius - 1, 0);
    return std::min(order, highest);
}

std::vector<std::int32_t> SamplesBetweenCursors(std::int32_t n, double width, int leftValue,
                                                int rightValue, int barMin, int barMax) {
    const double range = barMax - barMin;
    const double xL = width * (leftValue - barMin) / range;
    const double xR = width * (rightValue - barMin) / range;
    std::vector<std::int32_t> samples;
    for (std::int32_t i = 1; i <= n; ++i) {
        const double x = n > 1 ? width * (i - 1) / (n - 1) : 0.0;
        if (xL <= x && x <= xR) samples.push_back(i);
    }
    return samples;
}

std::int32_t EstimatedSamplesBetween(std::int32_t n, int leftValue, int rightValue, int barMin,
                                     int barMax) {
    const double range = barMax - barMin;
    return IntClamped(n * (1 - (leftValue - barMin) / range - (barMax - rightValue) / range));
}

} // namespace tarnic
