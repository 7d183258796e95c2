#include "numeric/kernsmooth.h"

#include "numeric/fft_plans.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace tarnic {
namespace {

// Kernels up to this length are applied directly: below it the n * K products
// cost less than three transforms of the padded length (measured at n = 10^6:
// about 25 ms either way).
constexpr std::size_t kDirectKernelLength = 49;

// Powers of two only, so that the few plans made recur for every radius and stay
// cached (fft_plans.h).
std::size_t fftLengthFor(std::size_t n) {
    std::size_t length = 1;
    while (length < n)
        length <<= 1;
    return length;
}

void correlateDirect(std::span<const double> x, double offset, std::span<const double> kernel,
                     std::span<double> out) {
    const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(x.size());
    const std::ptrdiff_t radius = static_cast<std::ptrdiff_t>(kernel.size() / 2);
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const std::ptrdiff_t lo = std::max(-radius, -i);
        const std::ptrdiff_t hi = std::min(radius, n - 1 - i);
        double sum = 0.0;
        for (std::ptrdiff_t j = lo; j <= hi; ++j)
            sum += kernel[radius + j] * (x[i + j] - offset);
        out[i] = sum;
    }
}

void correlateByFft(std::span<const double> x, double offset, std::span<const double> kernel,
                    std::span<double> out) {
    const std::size_t n = x.size();
    const std::size_t radius = kernel.size() / 2;
    // Kernel values further out than n - 1 never meet a sample.
    const std::size_t reach = std::min(radius, n - 1);
    const std::size_t length = fftLengthFor(n + reach);
    const std::size_t bins = length / 2 + 1;
    const RealFftPlan& forward = realFftPlan(length, FftDirection::Forward);

    // Circular convolution with g_m = kernel[R - m] (negative m wrapped to the top
    // of the buffer) is the correlation asked for; x padded with at least R zeros
    // keeps the wrapped-around part away from the outputs 0 .. n-1. One real
    // buffer serves the kernel, then the series, then the result.
    FftBuffer<double> real(length);
    real[0] = kernel[radius];
    for (std::size_t m = 1; m <= reach; ++m) {
        real[m] = kernel[radius - m];
        real[length - m] = kernel[radius + m];
    }
    FftBuffer<fftw_complex> weightBins(bins);
    forward.forward(real.data(), weightBins.data());

    std::fill_n(real.data() + n, length - n, 0.0);
    for (std::size_t i = 0; i < n; ++i)
        real[i] = x[i] - offset;
    FftBuffer<fftw_complex> signalBins(bins);
    forward.forward(real.data(), signalBins.data());
    const double scale = 1.0 / static_cast<double>(length);
    for (std::size_t k = 0; k < bins; ++k) {
        const double re = signalBins[k][0] * weightBins[k][0] - signalBins[k][1] * weightBins[k][1];
        const double im = signalBins[k][0] * weightBins[k][1] + signalBins[k][1] * weightBins[k][0];
        signalBins[k][0] = re * scale;
        signalBins[k][1] = im * scale;
    }
    realFftPlan(length, FftDirection::Backward).backward(signalBins.data(), real.data());
    std::copy_n(real.data(), n, out.begin());
}

} // namespace

void correlateCentred(std::span<const double> x, std::span<const double> kernel,
                      std::span<double> out, double offset) {
    if (kernel.size() % 2 == 0) throw std::invalid_argument("kernel length must be odd");
    if (out.size() != x.size()) throw std::invalid_argument("output length differs from input");
    if (x.empty()) return;
    if (kernel.size() <= kDirectKernelLength)
        correlateDirect(x, offset, kernel, out);
    else
        correlateByFft(x, offset, kernel, out);
}

void gaussianKernelSmooth(std::span<const double> x, double radius, std::span<double> out) {
    if (out.size() != x.size()) throw std::invalid_argument("output length differs from input");
    const std::size_t n = x.size();
    if (n == 0) return;
    if (!(radius >= 1.0) || n == 1) {
        std::copy(x.begin(), x.end(), out.begin());
        return;
    }
    const std::size_t reach =
        radius >= static_cast<double>(n - 1) ? n - 1 : static_cast<std::size_t>(std::floor(radius));
    const double sigma = gaussianSigma(radius);

    // half[j] = w_j, j = 0 .. reach; cumulative[j] = w_0 + ... + w_j.
    std::vector<double> half(reach + 1);
    std::vector<double> cumulative(reach + 1);
    for (std::size_t j = 0; j <= reach; ++j) {
        const double u = static_cast<double>(j) / sigma;
        half[j] = std::exp(-0.5 * u * u);
        cumulative[j] = (j > 0 ? cumulative[j - 1] : 0.0) + half[j];
    }
    std::vector<double> kernel(2 * reach + 1);
    for (std::size_t j = 0; j <= reach; ++j)
        kernel[reach + j] = kernel[reach - j] = half[j];

    // The mean is taken out before the correlation and put back after it: the
    // FFT's rounding then scales with the variation of x, not with its level.
    double mean = 0.0;
    for (double v : x)
        mean += v;
    mean /= static_cast<double>(n);
    correlateCentred(x, kernel, out, mean);

    // The weights inside the series from point i: `left` samples before it and
    // `right` after it. Written as w_0..w_left + w_0..w_right - w_0, the same
    // floating-point sum at i and at n - 1 - i, which keeps the result symmetric.
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t left = std::min(reach, i);
        const std::size_t right = std::min(reach, n - 1 - i);
        const double weight = cumulative[left] + cumulative[right] - half[0];
        out[i] = mean + out[i] / weight;
    }
}

} // namespace tarnic
