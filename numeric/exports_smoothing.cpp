// The C binding of the smoothing and fragment routines of Tarnic.dll:
// KernSmooth_dll, UniStepOrthSmooth_dll, FindBestFitHarm_dll, PeakTrough_dll and
// FourBandPass_dll. Each converts its arguments, calls the C++ routine and writes
// the results through the pointers. No exception leaves a routine; a null pointer
// for a number reads as 0 and an output through a null pointer is skipped.
// Conventions as in tarnic_exports.cpp.
#include "numeric/tarnic_api.h"

#include "numeric/bandpass.h"
#include "numeric/harmonic.h"
#include "numeric/kernsmooth.h"
#include "numeric/localpoly.h"
#include "numeric/peaktrough.h"

#include <algorithm>
#include <span>
#include <vector>

namespace {

std::size_t countOf(const std::int32_t* p) {
    return p && *p > 0 ? static_cast<std::size_t>(*p) : 0;
}

template <class T> void setIf(T* p, T value) {
    if (p) *p = value;
}

std::vector<double> widened(const float* values, std::size_t n) {
    return std::vector<double>(values, values + n);
}

} // namespace

// On failure (memory) the trend is the signal itself: no trend, zero residual.
void KernSmooth_dll(const double* signal, double* trend, std::int32_t* count, double* radius) {
    const std::size_t n = signal && trend ? countOf(count) : 0;
    if (n == 0) return;
    try {
        tarnic::gaussianKernelSmooth(std::span<const double>(signal, n), radius ? *radius : 0.0,
                                     std::span<double>(trend, n));
    } catch (...) {
        std::copy_n(signal, n, trend);
    }
}

void UniStepOrthSmooth_dll(const double* signal, std::int32_t* count, std::int32_t* radius,
                           std::int32_t* order, double* trend) {
    const std::size_t n = signal && trend ? countOf(count) : 0;
    if (n == 0) return;
    try {
        tarnic::localPolynomialSmooth(std::span<const double>(signal, n), countOf(radius),
                                      countOf(order), std::span<double>(trend, n));
    } catch (...) {
        std::copy_n(signal, n, trend);
    }
}

// On failure the harmonic is 0 everywhere with period 0 and ratio 0.
void FindBestFitHarm_dll(std::int32_t* fragLeng, const float* fragment, float* harmonic,
                         float* amplitude, float* period, float* phase, float* varianceRatio) {
    const std::size_t n = fragment && harmonic ? countOf(fragLeng) : 0;
    tarnic::HarmonicFit fit;
    try {
        fit = tarnic::bestFitHarmonic(widened(fragment, n));
    } catch (...) {
        fit = tarnic::HarmonicFit{};
    }
    if (fit.values.size() == n)
        std::copy(fit.values.begin(), fit.values.end(), harmonic);
    else
        std::fill_n(harmonic, n, 0.0f);
    setIf(amplitude, static_cast<float>(fit.amplitude));
    setIf(period, static_cast<float>(fit.period));
    setIf(phase, static_cast<float>(fit.phase));
    setIf(varianceRatio, static_cast<float>(fit.varianceRatio));
}

// On failure both points are sample 1, with height and period 0.
void PeakTrough_dll(std::int32_t* fragLeng, const float* fragment, float* height, float* period,
                    std::int32_t* firstPoint, std::int32_t* secondPoint) {
    const std::size_t n = fragment ? countOf(fragLeng) : 0;
    tarnic::MaximumWave wave;
    try {
        wave = tarnic::maximumWave(widened(fragment, n));
    } catch (...) {
        wave = tarnic::MaximumWave{};
    }
    const std::size_t first = std::min(wave.crest, wave.trough);
    const std::size_t second = std::max(wave.crest, wave.trough);
    setIf(height, static_cast<float>(wave.height));
    setIf(period, static_cast<float>(wave.period));
    setIf(firstPoint, static_cast<std::int32_t>(first + 1));
    setIf(secondPoint, static_cast<std::int32_t>(second + 1));
}

// On failure (memory) the signal and the periods are left as they came.
void FourBandPass_dll(float* signal, std::int32_t* count, float* tmin, float* tmax) {
    const std::size_t n = signal ? countOf(count) : 0;
    if (n == 0) return;
    try {
        std::vector<double> x = widened(signal, n);
        const tarnic::BandPeriods band =
            tarnic::fourierBandPass(x, tmin ? *tmin : 0.0f, tmax ? *tmax : 0.0f);
        std::copy(x.begin(), x.end(), signal);
        setIf(tmin, static_cast<float>(band.shortest));
        setIf(tmax, static_cast<float>(band.longest));
    } catch (...) {
    }
}
