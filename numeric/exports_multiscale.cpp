// The C binding of the multiscale routines of Tarnic.dll: MorletWaveSvan_dll,
// WTMM_FP_dll and MF_DFA_dll. Each converts its arguments, calls the C++
// routines and writes the results through the pointers. No exception leaves a
// routine; a null pointer for a number reads as 0 and an output through a null
// pointer is skipped. Conventions as in tarnic_exports.cpp.
#include "numeric/tarnic_api.h"

#include "numeric/intake.h"
#include "numeric/mfdfa.h"
#include "numeric/morlet.h"
#include "numeric/workers.h"
#include "numeric/wtmm.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numbers>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// The chain file's name when the caller gives none.
constexpr const char* defaultChainFile = "n12c43k67r13t72c76h18i04";

std::size_t countOf(const std::int32_t* p) {
    return p && *p > 0 ? static_cast<std::size_t>(*p) : 0;
}

std::int32_t intOf(const std::int32_t* p) {
    return p ? *p : 0;
}

double finiteOr0(double v) {
    return std::isfinite(v) ? v : 0.0;
}

template <class T> std::vector<double> samplesOf(const T* values, std::size_t n) {
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = finiteOr0(static_cast<double>(values[t]));
    return x;
}

float clampToFloat(double v) {
    constexpr double lowest = std::numeric_limits<float>::min();
    constexpr double highest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(std::isfinite(v) ? v : highest, lowest, highest));
}

// The periods MorletWaveSvan_dll uses for the bounds it was given.
std::pair<double, double> morletBounds(const float* smin, const float* smax, std::size_t n) {
    const double length = static_cast<double>(n);
    double lo = smin ? *smin : 0.0;
    if (!(lo >= 2.0)) lo = 2.0; // also a NaN
    double hi = smax && std::isfinite(*smax) ? static_cast<double>(*smax) : length / 4.0;
    hi = std::min(hi, length);
    hi = std::max(hi, lo);
    return {lo, hi};
}

} // namespace

void MorletWaveSvan_dll(std::int32_t* fragLeng, const float* fragment, float* smin, float* smax,
                        std::int32_t* scaleCount, float* morletMapOut, float* morletSpecOut) {
    const std::size_t n = fragment ? countOf(fragLeng) : 0;
    const std::size_t rows = countOf(scaleCount);
    const auto [lo, hi] = morletBounds(smin, smax, n);
    if (smin) *smin = static_cast<float>(lo);
    if (smax) *smax = static_cast<float>(hi);
    const double tiny = std::numeric_limits<float>::min();
    try {
        const std::vector<double> x = samplesOf(fragment, n);
        // The bounds as the caller reads them back, so that rows and labels agree.
        const std::vector<double> periods =
            tarnic::morletPeriods(static_cast<float>(lo), static_cast<float>(hi), rows);
        // Each row's logarithms are taken on the worker that computed it, lg p as
        // ln p / ln 10 (half the cost of log10(); the two differ by an ulp or two
        // of a double, which the rounding to float hides); cells at or below the
        // floor, 1e-10 of the largest |W|^2 of the map, are raised to it once
        // the largest is known (lg is increasing, so this is the logarithm of
        // the floored value).
        const double lgE = 1.0 / std::numbers::ln10;
        const auto tinyLog = static_cast<float>(std::log10(tiny));
        std::vector<double> largestOf(rows, 0.0);
        const std::vector<double> spectrum = tarnic::morletTransformRows(
            x, periods, [&](std::size_t i, std::span<const double> power) {
                double largest = 0.0;
                for (double p : power)
                    largest = std::max(largest, p);
                largestOf[i] = largest;
                if (!morletMapOut) return;
                float* out = morletMapOut + i * n;
                for (std::size_t t = 0; t < n; ++t)
                    out[t] =
                        power[t] > tiny ? static_cast<float>(std::log(power[t]) * lgE) : tinyLog;
            });
        const double largest =
            rows > 0 ? *std::max_element(largestOf.begin(), largestOf.end()) : 0.0;
        const double floor = std::max(1e-10 * largest, tiny);
        const auto floorLog = static_cast<float>(std::log10(floor));
        if (morletMapOut && floor > tiny) {
            const std::size_t cells = rows * n;
            const std::size_t parts =
                std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 8);
            tarnic::runWorkers(parts, [&](std::size_t k) {
                for (std::size_t c = cells * k / parts; c < cells * (k + 1) / parts; ++c)
                    morletMapOut[c] = std::max(morletMapOut[c], floorLog);
            });
        }
        if (morletSpecOut)
            for (std::size_t i = 0; i < rows; ++i)
                morletSpecOut[i] = clampToFloat(spectrum[i]);
    } catch (...) {
        if (morletMapOut) std::fill_n(morletMapOut, rows * n, static_cast<float>(std::log10(tiny)));
        if (morletSpecOut) std::fill_n(morletSpecOut, rows, static_cast<float>(tiny));
    }
}

void WTMM_FP_dll(const double* wtmmInput, std::int32_t* fragLeng, std::int32_t* trendOrder,
                 double* gamma, std::int32_t* chainCounts, double* wtmmDetrended) {
    const std::size_t n = wtmmInput ? countOf(fragLeng) : 0;
    std::array<std::int32_t, 7> counts{};
    std::string records;
    try {
        const std::vector<double> x = samplesOf(wtmmInput, n);
        const double threshold = std::clamp(finiteOr0(gamma ? *gamma : 0.0), 0.0, 1.0);
        const tarnic::WtmmSkeleton skeleton =
            tarnic::wtmmSkeleton(x, std::clamp(intOf(trendOrder), 0, 10), threshold);
        if (wtmmDetrended)
            std::copy(skeleton.detrended.begin(), skeleton.detrended.end(), wtmmDetrended);
        records = tarnic::wtmmChainRecords(skeleton, counts);
    } catch (...) {
        counts.fill(0);
        records.clear();
        if (wtmmDetrended && wtmmInput) std::copy_n(wtmmInput, n, wtmmDetrended);
    }
    try {
        const std::filesystem::path file(defaultChainFile);
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(records.data(), static_cast<std::streamsize>(records.size()));
        out.close();
        if (!out) {
            counts.fill(0);
            std::error_code ignored;
            std::filesystem::remove(file, ignored);
        }
    } catch (...) {
        counts.fill(0);
    }
    if (chainCounts) std::copy(counts.begin(), counts.end(), chainCounts);
}

void MF_DFA_dll(const double* signal, std::int32_t* samples, std::int32_t* detrendOrder,
                std::int32_t* measureType, std::int32_t* minScale, std::int32_t* maxScale,
                std::int32_t* alfaCount, double* alfa, double* fAlfa, double* qMin, double* qMax,
                std::int32_t* qCount, std::int32_t* scaleCount, double* zqTab) {
    const std::size_t n = signal ? countOf(samples) : 0;
    const std::size_t alphas = countOf(alfaCount);
    const std::size_t qs = countOf(qCount);
    const std::size_t scales = countOf(scaleCount);
    try {
        tarnic::MfdfaSettings settings;
        settings.order = std::clamp(intOf(detrendOrder), 0, 10);
        settings.measure = intOf(measureType) >= 1 ? tarnic::FluctuationMeasure::StandardDeviation
                                                   : tarnic::FluctuationMeasure::Range;
        settings.minScale = intOf(minScale);
        settings.maxScale = intOf(maxScale);
        settings.scaleCount = scales;
        settings.qMin = finiteOr0(qMin ? *qMin : 0.0);
        settings.qMax = finiteOr0(qMax ? *qMax : 0.0);
        settings.qCount = qs;
        settings.alphaCount = alphas;
        const tarnic::MfdfaResult r = tarnic::mfdfa(samplesOf(signal, n), settings);
        if (alfa) std::copy(r.alpha.begin(), r.alpha.end(), alfa);
        if (fAlfa) std::copy(r.f.begin(), r.f.end(), fAlfa);
        if (zqTab) std::copy(r.log10Z.begin(), r.log10Z.end(), zqTab);
        if (qCount) *qCount = static_cast<std::int32_t>(r.q.size());
        if (scaleCount) *scaleCount = static_cast<std::int32_t>(r.scales.size());
    } catch (...) {
        if (alfa)
            for (std::size_t i = 0; i < alphas; ++i)
                alfa[i] =
                    alphas > 1 ? static_cast<double>(i) / static_cast<double>(alphas - 1) : 0.0;
        if (fAlfa) std::fill_n(fAlfa, alphas, 0.0);
        if (zqTab) std::fill_n(zqTab, qs * scales, 0.0);
    }
}
