// The C binding of the spectral routines of Tarnic.dll: DownSample_dll,
// SpectAn_dll and BurgH_dll. Each converts its arguments, calls the C++ routine
// and writes the results through the pointers. No exception leaves a routine; a
// null pointer for a number reads as 0 and an output through a null pointer is
// skipped. Conventions as in tarnic_exports.cpp.
#include "numeric/tarnic_api.h"

#include "numeric/burg.h"
#include "numeric/resample.h"
#include "numeric/welch.h"

#include <algorithm>
#include <limits>
#include <span>
#include <vector>

namespace {

std::size_t countOf(const std::int32_t* p) {
    return p && *p > 0 ? static_cast<std::size_t>(*p) : 0;
}

// What an output array gets when the routine fails: the smallest positive float,
// so that logarithms taken by the caller stay finite.
void fillLowest(std::span<float> out) {
    std::fill(out.begin(), out.end(), std::numeric_limits<float>::min());
}

} // namespace

void DownSample_dll(const float* signal, std::int32_t* nrec, float* step, float* downSignal,
                    std::int32_t* outLen) {
    if (!outLen) return;
    const std::size_t n = signal ? countOf(nrec) : 0;
    const std::size_t capacity = downSignal ? countOf(outLen) : 0;
    try {
        const std::vector<double> x(signal, signal + n);
        const tarnic::Resampled r = tarnic::fourierResample(x, step ? *step : 1.0f, capacity);
        std::copy(r.values.begin(), r.values.end(), downSignal);
        *outLen = static_cast<std::int32_t>(r.values.size());
        if (step) *step = static_cast<float>(r.step);
    } catch (...) {
        *outLen = 0;
    }
}

void SpectAn_dll(const float* signal, std::int32_t* nrec, std::int32_t* lengF,
                 std::int32_t* fftLengFour, std::int32_t* mm, float* spFour) {
    const std::size_t fftLength = countOf(fftLengFour);
    if (!spFour || fftLength < 2) return;
    const std::span<float> out(spFour, fftLength / 2);
    const std::size_t n = signal ? countOf(nrec) : 0;
    try {
        tarnic::backgroundSpectrum(std::span<const float>(signal, n), countOf(lengF), fftLength,
                                   countOf(mm), out);
    } catch (...) {
        fillLowest(out);
    }
}

void BurgH_dll(const float* samples, std::int32_t* count, std::int32_t* nfAR, std::int32_t* nar,
               float* result) {
    if (!result) return;
    const std::span<float> out(result, countOf(nfAR));
    const std::size_t n = samples ? countOf(count) : 0;
    try {
        tarnic::burgSpectrum(std::span<const float>(samples, n), countOf(nar), out);
    } catch (...) {
        fillLowest(out);
    }
}
