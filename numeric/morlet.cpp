#include "numeric/morlet.h"

#include "numeric/fft_plans.h"
#include "numeric/workers.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <system_error>
#include <thread>

namespace tarnic {
namespace {

constexpr std::size_t maxWorkers = 8;

// Runs work(w) for w = 0 .. workers-1, all but the first on threads of their own.
// A thread that cannot be started has its share run here instead.
template <class Work> void runWorkers(std::size_t workers, const Work& work) {
    std::vector<std::jthread> threads;
    std::size_t started = 1;
    for (; started < workers; ++started) {
        try {
            threads.push_back(startThread<std::jthread>([&work, started] { work(started); }));
        } catch (const std::system_error&) {
            break;
        }
    }
    work(0);
    for (std::size_t w = started; w < workers; ++w)
        work(w);
}

} // namespace

double morletFourierFactor(double omega0) {
    return 4.0 * std::numbers::pi / (omega0 + std::sqrt(2.0 + omega0 * omega0));
}

std::vector<double> morletPeriods(double pMin, double pMax, std::size_t count) {
    std::vector<double> periods(count);
    const double lo = std::log(pMin), hi = std::log(pMax);
    for (std::size_t i = 0; i < count; ++i)
        periods[i] =
            count > 1
                ? std::exp(lo + (hi - lo) * static_cast<double>(i) / static_cast<double>(count - 1))
                : pMin;
    if (count > 1) {
        periods.front() = pMin;
        periods.back() = pMax;
    }
    return periods;
}

std::size_t morletTransformLength(std::size_t n) {
    std::size_t length = 2;
    while (length < 2 * n)
        length *= 2;
    return length;
}

SampleSpan morletOutsideCone(std::size_t n, double scale) {
    const double cone = std::numbers::sqrt2 * scale;
    const double last = static_cast<double>(n) - 1.0;
    SampleSpan span{static_cast<std::size_t>(std::ceil(cone)),
                    cone <= last ? static_cast<std::size_t>(std::floor(last - cone)) + 1 : 0};
    if (span.first >= span.end) span = {0, n};
    return span;
}

MorletTransform morletTransform(std::span<const double> x, std::span<const double> periods) {
    MorletTransform result;
    const std::size_t n = x.size();
    const std::size_t rows = periods.size();
    result.samples = n;
    result.periods.assign(periods.begin(), periods.end());
    result.power.assign(n * rows, 0.0);
    result.spectrum.assign(rows, 0.0);
    if (n == 0 || rows == 0) return result;

    const std::size_t length = morletTransformLength(n);
    const std::size_t half = length / 2;
    double mean = 0.0;
    for (double v : x)
        mean += v;
    mean /= static_cast<double>(n);

    // X_k / length: the forward transform normalised as in Torrence & Compo.
    FftBuffer<fftw_complex> spectrum(half + 1);
    {
        FftBuffer<double> padded(length);
        for (std::size_t t = 0; t < n; ++t)
            padded[t] = x[t] - mean;
        realFftPlan(length, FftDirection::Forward).forward(padded.data(), spectrum.data());
        for (std::size_t k = 0; k <= half; ++k) {
            spectrum[k][0] /= static_cast<double>(length);
            spectrum[k][1] /= static_cast<double>(length);
        }
    }
    const RealFftPlan& backward = realFftPlan(length, FftDirection::Backward);
    const double factor = morletFourierFactor(kMorletOmega0);
    const double binStep = 2.0 * std::numbers::pi / static_cast<double>(length);
    const double quarterRootPi = std::pow(std::numbers::pi, -0.25);

    // W_t = sum over k = 1 .. length/2 of A_k exp(2 pi i k t / length), A_k =
    // X_k Psi(s w_k). Its real and imaginary parts are two real backward
    // transforms: of A/2 and of -iA/2 (with the Nyquist bin's real and imaginary
    // part as it stands), since the backward transform doubles the inner bins.
    struct Buffers {
        FftBuffer<fftw_complex> re, im;
        FftBuffer<double> reOut, imOut;
        explicit Buffers(std::size_t length)
            : re(length / 2 + 1), im(length / 2 + 1), reOut(length), imOut(length) {}
    };
    const std::size_t workers =
        std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, std::min(maxWorkers, rows));
    std::vector<Buffers> buffers;
    buffers.reserve(workers);
    for (std::size_t w = 0; w < workers; ++w)
        buffers.emplace_back(length);

    const auto row = [&](std::size_t i, Buffers& b) {
        const double s = periods[i] / factor;
        std::fill_n(&b.re[0][0], 2 * (half + 1), 0.0);
        std::fill_n(&b.im[0][0], 2 * (half + 1), 0.0);
        const double kLow =
            std::max(1.0, std::ceil((kMorletOmega0 - kMorletBandHalfWidth) / (s * binStep)));
        const double kHigh =
            std::min(static_cast<double>(half),
                     std::floor((kMorletOmega0 + kMorletBandHalfWidth) / (s * binStep)));
        const double amplitude = std::sqrt(2.0 * std::numbers::pi * s) * quarterRootPi;
        for (std::size_t k = static_cast<std::size_t>(kLow); static_cast<double>(k) <= kHigh; ++k) {
            const double d = s * binStep * static_cast<double>(k) - kMorletOmega0;
            const double psi = amplitude * std::exp(-0.5 * d * d);
            const double ar = spectrum[k][0] * psi, ai = spectrum[k][1] * psi;
            if (k == half) {
                b.re[k][0] = ar;
                b.im[k][0] = ai;
            } else {
                b.re[k][0] = 0.5 * ar;
                b.re[k][1] = 0.5 * ai;
                b.im[k][0] = 0.5 * ai;
                b.im[k][1] = -0.5 * ar;
            }
        }
        backward.backward(b.re.data(), b.reOut.data());
        backward.backward(b.im.data(), b.imOut.data());
        double* out = result.power.data() + i * n;
        for (std::size_t t = 0; t < n; ++t)
            out[t] = b.reOut[t] * b.reOut[t] + b.imOut[t] * b.imOut[t];

        // Time average outside the cone of influence.
        const SampleSpan outside = morletOutsideCone(n, s);
        double sum = 0.0;
        for (std::size_t t = outside.first; t < outside.end; ++t)
            sum += out[t];
        result.spectrum[i] = sum / static_cast<double>(outside.end - outside.first);
    };
    runWorkers(workers, [&](std::size_t w) {
        for (std::size_t i = w; i < rows; i += workers)
            row(i, buffers[w]);
    });
    return result;
}

} // namespace tarnic
