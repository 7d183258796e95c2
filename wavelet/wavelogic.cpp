#include "wavelet/wavelogic.h"

#include "core/numtext.h"

#include <cmath>
#include <limits>

namespace tarnic {

std::int32_t ClampDetailLevel(double typed, std::int32_t levPow) {
    // A number that does not fit 32 bits falls back on 2, which the bounds
    // then hold too: a fragment of 32 samples allows level 1 only.
    const auto read = IntOf(typed);
    std::int32_t level = read ? *read : 2;
    if (level < 1) level = 1;
    if (level > levPow - 4) level = levPow - 4;
    return level;
}

std::int32_t PacketComponents(std::int32_t splitCoef, std::int32_t levMax) {
    return splitCoef * (levMax - 1 + 1);
}

std::int64_t PacketVolume(std::int32_t componentCount, std::int32_t levPowLength) {
    return static_cast<std::int64_t>(componentCount) * levPowLength;
}

} // namespace tarnic

namespace tarnic {

std::int32_t ParseWaveletOrder(double typed, std::int32_t fallback, std::int32_t lo,
                               std::int32_t hi) {
    std::int32_t n = fallback;
    if (const auto read = IntOf(typed)) {
        n = *read;
        if (n < lo || n > hi) n = fallback;
    }
    return 2 * (n / 2);
}

float ThresholdShare(double typed, float donohoValue, std::int32_t nrec) {
    float share = donohoValue;
    if (std::fabs(typed) <= std::numeric_limits<float>::max()) {
        share = static_cast<float>(typed);
        if (share < 0) share = 0;
        if (share > 1) share = 1;
    }
    const float bound = static_cast<float>(nrec - 8) / static_cast<float>(nrec);
    if (share > bound) share = bound;
    return share;
}

} // namespace tarnic
