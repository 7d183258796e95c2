// Wavelet threshold filtering and the Donoho-Johnstone level as a share.
//
// Both work on the same transform of the series: extended symmetrically to its
// working length (dwt.h: the padding split between the two ends), transformed
// periodically over pyramidLevels() levels, down to 8 approximation
// coefficients. The detail coefficients of all levels are the ones thresholded;
// the approximation is never touched.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

// The universal threshold of Donoho and Johnstone on the series, and the share
// of detail coefficients it would remove.
struct DonohoJohnstoneLevel {
    double sigma = 0.0;  // noise level: median |level-1 details| / 0.6744897501960817
    double lambda = 0.0; // threshold sigma * sqrt(2 ln n), n the number of samples
    double share = 0.0;  // fraction of the detail coefficients with |d| < lambda, 0 .. 1
};

// For white Gaussian noise of deviation s added to a smooth series, sigma
// estimates s (the finest details of a smooth series are small). Removing
// `share` of the coefficients by waveletThresholdFilter() is hard thresholding at
// lambda. A series whose finest details are mostly zero gives sigma = 0 and
// share 0. signal must not be empty.
DonohoJohnstoneLevel donohoJohnstoneLevel(std::span<const double> signal,
                                          std::span<const double> lowPass);

// The number of detail coefficients that a share removes: share * count rounded
// to the nearest integer, share clamped to 0 .. 1 (NaN counts as 0).
std::size_t removedCount(double share, std::size_t count);

// The series rebuilt after the removedCount(share, details) detail coefficients
// of smallest modulus are set to zero (among equal moduli the earlier ones, level
// 1 first, go first). Share 0 returns the series to rounding; share 1 leaves
// the approximation alone, a smooth outline of the series. The result has the
// length of the series (the extension is cut off again). signal must not be empty.
std::vector<double> waveletThresholdFilter(std::span<const double> signal,
                                           std::span<const double> lowPass, double share);

} // namespace tarnic
