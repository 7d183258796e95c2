// Gaussian kernel smoothing of a series, and the centred correlation with a short
// or long kernel that both trend smoothers are built on.
#pragma once

#include <cstddef>
#include <span>

namespace tarnic {

// Width of the Gaussian kernel for a smoothing radius, both in samples: the window
// of radius R holds +-3 sigma, so the weight at its edge is exp(-4.5) = 0.011 of
// the central one and the weights left out beyond it are negligible.
constexpr double gaussianSigma(double radius) {
    return radius / 3.0;
}

// y_i = sum_{j=-R}^{R} kernel[R + j] * (x_{i+j} - offset),  i = 0 .. n-1,  kernel
// of 2R + 1 values centred on its middle element; samples outside the series
// count as 0 after the offset is taken off (zero extension):
//
//     zero:  0 0 | x0-offset x1-offset ... x(n-1)-offset | 0 0
//
// Short kernels are applied directly (n * (2R + 1) products), long ones by FFT
// (zero-padded to a power of two of at least n + R, so nothing wraps around), so
// the cost stays O(n log n) for any R. The FFT path rounds with an absolute error
// of about 1e-16 * max|x - offset| * sum|kernel| * log2(n): an offset near the
// level of x (its mean) keeps the output accurate relative to the variation of x.
// Throws std::invalid_argument unless kernel has odd length and out.size() == x.size().
void correlateCentred(std::span<const double> x, std::span<const double> kernel,
                      std::span<double> out, double offset = 0.0);

// Gaussian kernel (Nadaraya-Watson) smoothing. With R = floor(radius) samples on
// either side and sigma = gaussianSigma(radius):
//
//     y_i = sum_j w_j x_{i+j} / sum_j w_j,   w_j = exp(-j^2 / (2 sigma^2)),
//
// the sums over |j| <= R and 0 <= i + j < n. Near the ends the window is cut and
// the weights that remain are renormalised:
//
//     i = 1, R = 3:        [w-1 w0 w1 w2 w3]  over  | x0 x1 x2 x3 x4 ...
//                      w-3 w-2 fall outside: divided by w-1 + ... + w3 instead of all 7
//
// so a constant comes out as the same constant at every point, the ends included,
// and a trend is flattened towards the inside there (the window sees only one side).
// The result is symmetric in time: a reversed series gives the reversed result.
// A radius below 1 (or NaN) returns x unchanged; a radius of n or more spreads the
// window over the whole series from every point (with ever flatter weights).
// Cost O(n log n) for any radius. out.size() must equal x.size()
// (std::invalid_argument otherwise).
void gaussianKernelSmooth(std::span<const double> x, double radius, std::span<double> out);

} // namespace tarnic
