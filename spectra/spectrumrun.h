// The arithmetic of a spectrum run that the main window does around the two
// numeric routines: the clamps of the parameter boxes, the transform sizes, the
// frequency grids and the search for the number of windows of the main estimate.
// No Qt; the window reads the boxes, calls these and writes the boxes back.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnic {

// The clamps, in the order a run applies them. `typed` is what TextNum read
// from the box; integer members take the integer part towards minus infinity.
// A number too large for a 32-bit integer is taken as the largest one, so it
// lands on the upper clamp.
std::int32_t ClampWindowLength(double typed, std::int32_t nrec); // 32 .. nrec
std::int32_t ClampArOrder(double typed, std::int32_t lengAR);    // 1 .. Round(lengAR / 3)
std::int32_t ClampRadius(double typed, std::int32_t lengF);      // 0 .. Int(lengF / 8)
// Positive and finite, otherwise 1.
float ClampDeltaT(double typed);

// The smallest power of two, from 2 on, that is not below `length`.
std::int32_t TransformSize(std::int32_t length);

// Frequencies (i - 1) / (deltaT * fftLength), i = 1 .. fftLength / 2, as floats.
std::vector<float> FrequencyGrid(std::int32_t fftLength, float deltaT);

// The windows of the main estimate over a signal longer than one window:
// starting from 2 windows, the count grows until the overlap of neighbours,
// lengAR - Int((nrec - lengAR) / (count - 1)), exceeds lengAR * 0.0488281.
struct ArWindows {
    std::int32_t count = 0;
    std::int32_t overlap = 0;
    std::int32_t shift = 0; // lengAR - overlap; window w starts at (w - 1) * shift + 1
};
ArWindows SearchArWindows(std::int32_t nrec, std::int32_t lengAR);

} // namespace tarnic
