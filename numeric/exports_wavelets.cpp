// The C binding of the wavelet routines of Tarnic.dll: OrthWavePack_dll,
// WaveBasisGraf_dll, Ford_dll, DonohoLevel_dll, WaveFiltThresh_dll and
// HeisBoxes_dll. Each converts its arguments, calls the C++ routines and writes
// the results through the pointers. No exception leaves a routine; a null
// pointer for a number reads as 0 and an output through a null pointer is
// skipped. Samples arrive in single precision and are worked on in double.
#include "numeric/tarnic_api.h"

#include "numeric/dwt.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

// The wavelet when there is nothing to choose by: the windows' own default.
constexpr std::int32_t fallbackWaveCode = 4;

std::size_t countOf(const std::int32_t* p) {
    return p && *p > 0 ? static_cast<std::size_t>(*p) : 0;
}

std::vector<double> toDouble(const float* values, std::size_t n) {
    return std::vector<double>(values, values + n);
}

// The wavelet named by code, or the one of minimum entropy on x if the code names none.
std::span<const double> filterFor(const std::int32_t* code, std::span<const double> x) {
    if (code && tarnic::isWaveCode(*code)) return tarnic::scalingFilter(*code);
    return tarnic::scalingFilter(tarnic::minimumEntropyWaveCode(x));
}

// The outputs of OrthWavePack_dll, each possibly absent.
struct PacketOutputs {
    float* tmin;
    float* tmax;
    float* data;
    float* mean;
    float* scale;
    float* power;
    std::size_t length; // samples per component

    // A slot that satisfies the window's contract without pretending to be data.
    void neutral(std::size_t k) const {
        if (tmin) tmin[k] = 1.0f;
        if (tmax) tmax[k] = 2.0f;
        if (mean) mean[k] = 0.0f;
        if (scale) scale[k] = 0.0f;
        if (power) power[k] = std::numeric_limits<float>::min();
        if (data) std::fill_n(data + k * length, length, 0.5f);
    }
};

// The largest power of two in 1 .. 8 not above value (1 below 1).
int splitOf(const std::int32_t* value) {
    int split = 1;
    while (value && split < 8 && 2 * split <= *value)
        split *= 2;
    return split;
}

// The detail levels asked for, the highest lowered to what n samples allow with
// this split; throws if none is left.
std::pair<int, int> levelsOf(const std::int32_t* levMin, const std::int32_t* levMax, std::size_t n,
                             int split) {
    const int lowest = std::max(1, levMin ? *levMin : 1);
    const int deepest = tarnic::binaryExponent(tarnic::workingLength(n)) -
                        tarnic::binaryExponent(static_cast<std::size_t>(split));
    const int highest = std::min(levMax ? *levMax : 0, deepest);
    if (highest < lowest) throw std::invalid_argument("series too short for the levels");
    return {lowest, highest};
}

} // namespace

void OrthWavePack_dll(const float* signal, std::int32_t* nrec, std::int32_t* splitCoef,
                      std::int32_t* levMin, std::int32_t* levMax, std::int32_t* componentCount,
                      float* wdcTmin, float* wdcTmax, float* wdcData, std::int32_t* waveCode,
                      float* wdcMean, float* wdcScale, float* wdcPower) {
    const std::size_t count = countOf(componentCount);
    const std::size_t n = signal ? countOf(nrec) : 0;
    const PacketOutputs out{wdcTmin, wdcTmax, wdcData, wdcMean, wdcScale, wdcPower, n};
    std::size_t written = 0;
    try {
        if (n == 0) throw std::invalid_argument("no samples");
        const std::vector<double> x = toDouble(signal, n);
        const std::int32_t code = tarnic::minimumEntropyWaveCode(x);
        if (waveCode) *waveCode = code;
        const int split = splitOf(splitCoef);
        const auto [lowest, highest] = levelsOf(levMin, levMax, n, split);
        // Components are normalised straight into wdcData as the workers deliver
        // them; each k has slots of its own.
        const std::size_t bandCount =
            static_cast<std::size_t>(split) * static_cast<std::size_t>(highest - lowest + 1);
        const std::size_t filled = std::min(count, bandCount);
        const auto sink = [&](std::size_t k, std::span<const double> values) {
            if (k >= filled) return; // the approximation, or a slot the caller has not got
            std::vector<float> scratch;
            std::span<float> normalised;
            if (wdcData) {
                normalised = std::span<float>(wdcData + k * n, n);
            } else {
                scratch.resize(n);
                normalised = scratch;
            }
            const tarnic::UnitRange range = tarnic::normaliseToUnitRange(values, normalised);
            if (wdcMean) wdcMean[k] = range.offset;
            if (wdcScale) wdcScale[k] = range.scale;
        };
        const std::vector<tarnic::PacketBand> bands = tarnic::waveletPacketComponents(
            x, tarnic::scalingFilter(code), lowest, highest, split, sink);
        for (std::size_t k = 0; k < filled; ++k) {
            const tarnic::PacketBand& band = bands[k];
            if (wdcTmin) wdcTmin[k] = static_cast<float>(band.periodMin);
            if (wdcTmax) wdcTmax[k] = static_cast<float>(band.periodMax);
            if (wdcPower)
                wdcPower[k] =
                    std::max(static_cast<float>(band.power), std::numeric_limits<float>::min());
        }
        written = filled;
    } catch (...) {
        if (waveCode && !tarnic::isWaveCode(*waveCode)) *waveCode = fallbackWaveCode;
    }
    for (std::size_t k = written; k < count; ++k)
        out.neutral(k);
}

void WaveBasisGraf_dll(std::int32_t* waveCode, std::int32_t* basisLength, float* waveBasis) {
    const std::size_t count = waveBasis ? countOf(basisLength) : 0;
    if (count == 0) return;
    try {
        std::span<const double> filter =
            waveCode ? tarnic::scalingFilter(*waveCode) : std::span<const double>();
        if (filter.empty()) filter = tarnic::scalingFilter(fallbackWaveCode);
        if (count == 1) {
            waveBasis[0] = 0.0f;
            return;
        }
        const std::vector<double> graph = tarnic::waveletGraph(filter, count);
        std::transform(graph.begin(), graph.end(), waveBasis,
                       [](double v) { return static_cast<float>(v); });
    } catch (...) {
        // A visible, non-constant line rather than nothing.
        for (std::size_t i = 0; i < count; ++i)
            waveBasis[i] = static_cast<float>(i) / static_cast<float>(count);
    }
}

void Ford_dll(const float* samples, std::int32_t* length, std::int32_t* waveCode) {
    if (!waveCode) return;
    const std::size_t n = samples ? countOf(length) : 0;
    try {
        *waveCode =
            n == 0 ? fallbackWaveCode : tarnic::minimumEntropyWaveCode(toDouble(samples, n));
    } catch (...) {
        *waveCode = fallbackWaveCode;
    }
}

void DonohoLevel_dll(const float* filtInput, std::int32_t* nrec, std::int32_t* waveCode,
                     float* donohoValue) {
    if (!donohoValue) return;
    const std::size_t n = filtInput ? countOf(nrec) : 0;
    try {
        if (n == 0) throw std::invalid_argument("no samples");
        const std::vector<double> x = toDouble(filtInput, n);
        *donohoValue =
            static_cast<float>(tarnic::donohoJohnstoneLevel(x, filterFor(waveCode, x)).share);
    } catch (...) {
        *donohoValue = 0.0f;
    }
}

void WaveFiltThresh_dll(const float* filtInput, float* filtResult, std::int32_t* nrec,
                        std::int32_t* waveCode, float* threshValue) {
    const std::size_t n = filtInput && filtResult ? countOf(nrec) : 0;
    if (n == 0) return;
    try {
        const std::vector<double> x = toDouble(filtInput, n);
        const double share = threshValue && std::isfinite(*threshValue)
                                 ? std::clamp(static_cast<double>(*threshValue), 0.0, 1.0)
                                 : 0.0;
        const std::vector<double> y =
            tarnic::waveletThresholdFilter(x, filterFor(waveCode, x), share);
        std::transform(y.begin(), y.end(), filtResult,
                       [](double v) { return static_cast<float>(v); });
    } catch (...) {
        std::copy_n(filtInput, n, filtResult);
    }
}

void HeisBoxes_dll(const float* heisSignal, std::int32_t* heisSamples, std::int32_t* splitCoef,
                   std::int32_t* levMin, std::int32_t* levMax, std::int32_t* heisRows,
                   float* heisScaleLow, float* heisScaleHigh, float* heisMap,
                   std::int32_t* waveCode) {
    const std::size_t rows = countOf(heisRows);
    const std::size_t n = heisSignal ? countOf(heisSamples) : 0;
    const std::size_t columns = n / 2;
    std::size_t written = 0;
    float floor = 0.0f;
    try {
        if (n < 2) throw std::invalid_argument("too few samples");
        const std::vector<double> x = toDouble(heisSignal, n);
        const int split = splitOf(splitCoef);
        const auto [lowest, highest] = levelsOf(levMin, levMax, n, split);
        const tarnic::HeisenbergBoxes boxes =
            tarnic::heisenbergBoxes(x, filterFor(waveCode, x), lowest, highest, split, columns);
        const std::size_t filled = std::min(rows, boxes.bands.size());
        const double largest = boxes.moduli.empty()
                                   ? 0.0
                                   : *std::max_element(boxes.moduli.begin(), boxes.moduli.end());
        // Seven decades below the largest box: about the resolution of the
        // single-precision input; a zero coefficient shows as this floor.
        const double smallest = largest * 1e-7;
        if (largest > 0.0) floor = static_cast<float>(std::log10(smallest));
        for (std::size_t r = 0; r < filled; ++r) {
            if (heisScaleLow) heisScaleLow[r] = static_cast<float>(boxes.bands[r].periodMin);
            if (heisScaleHigh) heisScaleHigh[r] = static_cast<float>(boxes.bands[r].periodMax);
            if (!heisMap) continue;
            for (std::size_t c = 0; c < columns; ++c) {
                const double m = boxes.moduli[r * columns + c];
                heisMap[r * columns + c] =
                    largest > 0.0 ? static_cast<float>(std::log10(std::max(m, smallest))) : 0.0f;
            }
        }
        written = filled;
    } catch (...) {
        written = 0;
    }
    for (std::size_t r = written; r < rows; ++r) {
        if (heisScaleLow) heisScaleLow[r] = 1.0f;
        if (heisScaleHigh) heisScaleHigh[r] = 2.0f;
        if (heisMap) std::fill_n(heisMap + r * columns, columns, floor);
    }
}
