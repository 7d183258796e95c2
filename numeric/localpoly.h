// Local polynomial smoothing in a moving window (Savitzky-Golay inside the series,
// fitted end windows at its ends).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

// The highest polynomial order used; a larger order counts as this one.
inline constexpr std::size_t kMaxLocalPolynomialOrder = 10;

// Savitzky-Golay smoothing weights: the least-squares polynomial of the given
// order through 2 * radius + 1 equally spaced points, evaluated at the middle one,
// is sum_j h[radius + j] * x_j, j = -radius .. radius. The order is cut to
// min(order, kMaxLocalPolynomialOrder, 2 * radius). Examples:
//     radius 2, order 2 or 3:  [-3, 12, 17, 12, -3] / 35
//     radius 3, order 2 or 3:  [-2, 3, 6, 7, 6, 3, -2] / 21
//     order 0 or 1:            the moving average, 1 / (2 radius + 1) each
std::vector<double> savitzkyGolayKernel(std::size_t radius, std::size_t order);

// Local polynomial smoothing: y_i is the least-squares polynomial of the given
// order, fitted to a window of m = min(2 * radius + 1, n) consecutive samples and
// evaluated at sample i. The window is centred on i where it fits inside the
// series (there y is the Savitzky-Golay filter above). Within radius of an end it
// stays at the end, and every one of those points is evaluated from that one fit:
//
//     i = 1, radius 3:   | x0 [x1] x2 x3 x4 x5 x6 | x7 ...     window 0..6, fit at 1
//     i = 3, radius 3:   | x0 x1 x2 [x3] x4 x5 x6 | x7 ...     centred, fit at 3
//     i = 4, radius 3:     x0 | x1 x2 x3 [x4] x5 x6 x7 | ...   centred, fit at 4
//
// so a polynomial of degree up to the order is reproduced exactly (to rounding) at
// every point, the ends included. With 2 * radius + 1 >= n the single window is
// the whole series, and y is one polynomial fitted to all of it.
//
// The order is cut to min(order, kMaxLocalPolynomialOrder, m - 1); radius 0
// returns x unchanged. The fits use polynomials orthonormal on the window's own
// points (abscissae scaled to [-1, 1]), so they stay accurate in double precision
// for every window length at order 10. Cost O(n log n) for any radius (the
// interior is one correlation with the fixed kernel, the two ends one fit each).
// out.size() must equal x.size() (std::invalid_argument otherwise).
void localPolynomialSmooth(std::span<const double> x, std::size_t radius, std::size_t order,
                           std::span<double> out);

} // namespace tarnic
