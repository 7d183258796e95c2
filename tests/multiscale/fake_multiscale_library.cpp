// A stand-in for Tarnic.dll that exports the WTMM and multifractal routines
// with results a test dictates, and remembers the arguments they received. The
// window tests load it in place of the real library to drive the reading and
// drawing of a run with hand-made chain files, counts and spectra, including
// the runs the real library would never give.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

struct WtmmScript {
    std::int32_t counts[7] = {};
    bool writeFile = false, constantDetrended = false;
    std::string fileText;
    // What the last call received.
    std::int32_t fragLeng = -1, trendOrder = -1;
    double gamma = -1;
    int calls = 0;
} wtmm;

struct MfdfaScript {
    std::vector<double> alfa, fAlfa, table;
    std::int32_t qCount = 0, scaleCount = 0; // given back when a table is scripted
    // What the last call received: samples, order, measure, min, max, alfaCount,
    // scaleCount; q minimum, maximum and count.
    std::int32_t received[7] = {};
    double qMin = 0, qMax = 0;
    std::int32_t qAsked = 0;
    int calls = 0;
} mfdfa;

} // namespace

// counts[0 .. 6]; fileText null: no chain file is written; constantDetrended:
// the detrended fragment is 1.5 throughout rather than the input less its mean.
FAKE_EXPORT void FakeWtmm_script(const std::int32_t* counts, const char* fileText,
                                 int constantDetrended) {
    std::copy(counts, counts + 7, wtmm.counts);
    wtmm.writeFile = fileText != nullptr;
    wtmm.fileText = fileText ? fileText : "";
    wtmm.constantDetrended = constantDetrended != 0;
    wtmm.calls = 0;
}

FAKE_EXPORT void FakeWtmm_received(std::int32_t* fragLeng, std::int32_t* trendOrder, double* gamma,
                                   int* calls) {
    *fragLeng = wtmm.fragLeng, *trendOrder = wtmm.trendOrder, *gamma = wtmm.gamma;
    *calls = wtmm.calls;
}

// The chain file goes into the current directory, as the real library writes it.
FAKE_EXPORT void WTMM_FP_dll(const double* input, std::int32_t* fragLeng, std::int32_t* trendOrder,
                             double* gamma, std::int32_t* chainCounts, double* detrended) {
    ++wtmm.calls;
    wtmm.fragLeng = *fragLeng, wtmm.trendOrder = *trendOrder, wtmm.gamma = *gamma;
    double mean = 0;
    for (std::int32_t i = 0; i < *fragLeng; ++i) mean += input[i] / std::max(*fragLeng, 1);
    for (std::int32_t i = 0; i < *fragLeng; ++i)
        detrended[i] = wtmm.constantDetrended ? 1.5 : input[i] - mean;
    std::copy(wtmm.counts, wtmm.counts + 7, chainCounts);
    if (wtmm.writeFile)
        std::ofstream("n12c43k67r13t72c76h18i04", std::ios::binary | std::ios::trunc)
            << wtmm.fileText;
}

// alfa, fAlfa: alfaCount values each (null: a triangle of positive values
// between two zeros); table: qCount * scaleCount values given back with those
// counts (null: cell (s, j), 0-based, = 0.01 * (j + 1) * (s + 1) for the
// counts asked).
FAKE_EXPORT void FakeMfdfa_script(const double* alfa, const double* fAlfa, std::int32_t alfaCount,
                                  const double* table, std::int32_t qCount,
                                  std::int32_t scaleCount) {
    mfdfa.alfa.assign(alfa, alfa && fAlfa ? alfa + alfaCount : alfa);
    mfdfa.fAlfa.assign(fAlfa, alfa && fAlfa ? fAlfa + alfaCount : fAlfa);
    mfdfa.table.assign(table, table ? table + std::ptrdiff_t{qCount} * scaleCount : table);
    mfdfa.qCount = qCount, mfdfa.scaleCount = scaleCount;
    mfdfa.calls = 0;
}

FAKE_EXPORT void FakeMfdfa_received(std::int32_t* received, double* qMin, double* qMax,
                                    std::int32_t* qAsked, int* calls) {
    std::copy(mfdfa.received, mfdfa.received + 7, received);
    *qMin = mfdfa.qMin, *qMax = mfdfa.qMax, *qAsked = mfdfa.qAsked, *calls = mfdfa.calls;
}

FAKE_EXPORT void MF_DFA_dll(const double*, std::int32_t* samples, std::int32_t* detrendOrder,
                            std::int32_t* measureType, std::int32_t* minScale,
                            std::int32_t* maxScale, std::int32_t* alfaCount, double* alfa,
                            double* fAlfa, double* qMin, double* qMax, std::int32_t* qCount,
                            std::int32_t* scaleCount, double* zqTab) {
    ++mfdfa.calls;
    const std::int32_t got[7] = {*samples,  *detrendOrder, *measureType, *minScale,
                                 *maxScale, *alfaCount,    *scaleCount};
    std::copy(got, got + 7, mfdfa.received);
    mfdfa.qMin = *qMin, mfdfa.qMax = *qMax, mfdfa.qAsked = *qCount;
    const std::int32_t n = *alfaCount;
    for (std::int32_t i = 0; i < n; ++i) {
        const auto k = static_cast<std::size_t>(i);
        const bool scripted = k < mfdfa.alfa.size();
        alfa[i] = scripted ? mfdfa.alfa[k] : 0.2 + 0.6 * i / (n - 1);
        fAlfa[i] = scripted ? mfdfa.fAlfa[k] : std::max(0.0, 1.0 - std::abs(alfa[i] - 0.5) / 0.25);
    }
    if (!mfdfa.table.empty()) {
        std::copy(mfdfa.table.begin(), mfdfa.table.end(), zqTab);
        *qCount = mfdfa.qCount, *scaleCount = mfdfa.scaleCount;
        return;
    }
    for (std::int32_t s = 0; s < *scaleCount; ++s)
        for (std::int32_t j = 0; j < *qCount; ++j) zqTab[s * *qCount + j] = 0.01 * (j + 1) * (s + 1);
}
