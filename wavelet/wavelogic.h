// The arithmetic of the wavelet-packet decomposition that the main window does
// itself: the clamp of the maximum detail level and the limit on the volume.
#pragma once

#include <cstdint>

namespace tarnic {

// The level from its box: the integer part within 1 .. levPow - 4; a number
// that does not fit 32 bits counts as 2, within the same bounds.
std::int32_t ClampDetailLevel(double typed, std::int32_t levPow);

// Components of a decomposition: splitCoef sub-levels of every level 1 .. levMax.
std::int32_t PacketComponents(std::int32_t splitCoef, std::int32_t levMax);

// The volume of a decomposition, components times the extended length; above
// 8,000,000 the decomposition is refused.
inline constexpr std::int64_t kMaxPacketVolume = 8000000;
std::int64_t PacketVolume(std::int32_t componentCount, std::int32_t levPowLength);

// The wave code's family: below 100 a Daubechies wavelet of that many
// coefficients, from 100 up a symlet of code - 100 coefficients.
inline bool IsSymlet(std::int32_t waveCode) { return waveCode >= 100; }
inline std::int32_t WaveletOrder(std::int32_t waveCode) {
    return waveCode >= 100 ? waveCode - 100 : waveCode;
}

} // namespace tarnic

namespace tarnic {

// A wavelet order from its box: the integer part within lo .. hi, else the
// fallback (also for a number beyond 32 bits), then made even by rounding down:
// for Daubechies' wavelets 21 falls back, 19 gives 18, 3 gives 2.
std::int32_t ParseWaveletOrder(double typed, std::int32_t fallback, std::int32_t lo,
                               std::int32_t hi);

// The share of coefficients the threshold filter removes: the typed level
// within 0 .. 1 (a number beyond single precision keeps the Donoho level
// unbounded), then at most (nrec - 8) / nrec, so that 8 coefficients remain.
float ThresholdShare(double typed, float donohoValue, std::int32_t nrec);

} // namespace tarnic
