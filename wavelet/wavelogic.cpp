#include "wavelet/wavelogic.h"

#include "core/numtext.h"

namespace tarnic {

std::int32_t ClampDetailLevel(double typed, std::int32_t levPow) {
    const auto read = IntOf(typed);
    if (!read) return 2;
    std::int32_t level = *read;
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
