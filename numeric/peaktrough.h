// The maximum wave of a series: the highest crest-to-trough pair of neighbouring
// half-waves about the mean, as in zero-crossing wave analysis.
#pragma once

#include <cstddef>
#include <span>

namespace tarnic {

struct MaximumWave {
    // 0-based sample indices of the wave's crest (its highest sample) and trough
    // (its lowest); either may come first in time.
    std::size_t crest = 0;
    std::size_t trough = 0;
    // y[crest] - y[trough], >= 0.
    double height = 0.0;
    // In samples (see maximumWave()).
    double period = 0.0;
    // True when the wave is made of two complete half-waves; false for the
    // fallback on a series with fewer than three mean crossings.
    bool complete = false;
};

// Definitions, with m the mean of the series:
// - A mean crossing lies between samples t and t + 1 where one of them is >= m
//   and the other < m; its position is found by linear interpolation,
//   t + (m - y_t) / (y_{t+1} - y_t).
// - A half-wave is the stretch between two successive crossings: above the mean
//   its extreme is its crest (highest sample), below the mean its trough (lowest
//   sample); the first of equal extremes counts. The stretches before the first
//   and after the last crossing are incomplete (the record cuts them) and are
//   not half-waves.
// - A wave is two successive half-waves, one above and one below the mean, in
//   either order (so both the zero-up-crossing and the zero-down-crossing waves
//   count). Its height is crest minus trough, its period the distance from the
//   crossing that opens its first half-wave to the one that closes its second.
//
//     mean ----x-----------x-----------x----
//             /  \ crest  /  \       /
//                  \     /    \     /
//                    \__/ trough \_/
//             |<--- period --->|
//
// The maximum wave is the wave of greatest height (the first of equal ones). For
// a sampled sine every wave has height 2A (when samples fall on the peaks) and
// the sine's period.
//
// With fewer than three crossings there is no complete wave; then the crest is the
// highest and the trough the lowest sample of the whole series, the height their
// difference and the period twice their distance (a half cycle lies between a
// crest and a trough). A constant series gives crest = trough = 0, height 0 and
// period 0; so does an empty one.
MaximumWave maximumWave(std::span<const double> y);

} // namespace tarnic
