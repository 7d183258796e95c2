#include "spectra/spectrumrun.h"

#include "core/numtext.h"

#include <cmath>

namespace tarnic {

std::int32_t ClampWindowLength(double typed, std::int32_t nrec) {
    std::int32_t length = IntClamped(typed);
    if (length < 32) length = 32;
    if (length > nrec) length = nrec;
    return length;
}

std::int32_t ClampArOrder(double typed, std::int32_t lengAR) {
    std::int32_t order = IntClamped(typed);
    if (order < 1) order = 1;
    if (lengAR / 3.0 < order) order = RoundClamped(lengAR / 3.0);
    return order;
}

std::int32_t ClampRadius(double typed, std::int32_t lengF) {
    std::int32_t radius = IntClamped(typed);
    if (radius < 0) radius = 0;
    if (lengF / 8.0 < radius) radius = IntClamped(lengF / 8.0);
    return radius;
}

float ClampDeltaT(double typed) {
    const auto deltaT = static_cast<float>(typed);
    return deltaT > 0 && std::isfinite(deltaT) ? deltaT : 1.0f;
}

std::int32_t TransformSize(std::int32_t length) {
    std::int64_t size = 2;
    while (size < length) size *= 2;
    return static_cast<std::int32_t>(size);
}

std::vector<float> FrequencyGrid(std::int32_t fftLength, float deltaT) {
    std::vector<float> grid(static_cast<std::size_t>(fftLength / 2));
    const double denominator = static_cast<double>(deltaT) * fftLength;
    for (std::size_t i = 0; i < grid.size(); ++i)
        grid[i] = static_cast<float>(static_cast<double>(i) / denominator);
    return grid;
}

ArWindows SearchArWindows(std::int32_t nrec, std::int32_t lengAR) {
    ArWindows w;
    w.count = 2;
    for (;;) {
        w.overlap = lengAR - IntClamped(static_cast<double>(nrec - lengAR) / (w.count - 1));
        if (w.overlap > lengAR * 0.0488281) break;
        ++w.count;
    }
    w.shift = lengAR - w.overlap;
    return w;
}

} // namespace tarnic
