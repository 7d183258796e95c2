// A stand-in for Tarnic.dll that exports the WTMM and multifractal routines
// with results a test dictates, and remembers the arguments they received. The
// window tests load it in place of the real library to drive the reading and
// drawing of a run with hand-made chain files, counts and spectra, including
// the runs the real library would never give.
#include "fake_multiscale.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

using tarnic::test::FakeMfdfa;
using tarnic::test::FakeWtmm;

extern "C" {
__attribute__((visibility("default"))) FakeWtmm fakeWtmm;
__attribute__((visibility("default"))) FakeMfdfa fakeMfdfa;
}

// The chain file goes into the current directory, as the real library writes it.
FAKE_EXPORT void WTMM_FP_dll(const double* input, std::int32_t* fragLeng, std::int32_t* trendOrder,
                             double* gamma, std::int32_t* chainCounts, double* detrended) {
    FakeWtmm& w = fakeWtmm;
    ++w.calls;
    w.fragLeng = *fragLeng, w.trendOrder = *trendOrder, w.gamma = *gamma;
    w.where = std::filesystem::current_path().string();
    double mean = 0;
    for (std::int32_t i = 0; i < *fragLeng; ++i) mean += input[i] / std::max(*fragLeng, 1);
    for (std::int32_t i = 0; i < *fragLeng; ++i)
        detrended[i] = w.constantDetrended ? 1.5 : input[i] - mean;
    std::copy(w.counts.begin(), w.counts.end(), chainCounts);
    if (w.fileText)
        std::ofstream("n12c43k67r13t72c76h18i04", std::ios::binary | std::ios::trunc) << w.fileText;
}

FAKE_EXPORT void MF_DFA_dll(const double*, std::int32_t* samples, std::int32_t* detrendOrder,
                            std::int32_t* measureType, std::int32_t* minScale,
                            std::int32_t* maxScale, std::int32_t* alfaCount, double* alfa,
                            double* fAlfa, double* qMin, double* qMax, std::int32_t* qCount,
                            std::int32_t* scaleCount, double* zqTab) {
    FakeMfdfa& m = fakeMfdfa;
    ++m.calls;
    m.received = {double(*samples), double(*detrendOrder), double(*measureType),
                  double(*minScale), double(*maxScale),    double(*alfaCount),
                  double(*scaleCount), double(*qCount),    *qMin, *qMax};
    for (std::size_t k = 0; k < static_cast<std::size_t>(*alfaCount); ++k) {
        alfa[k] = k < m.alfa.size() ? m.alfa[k] : 0;
        fAlfa[k] = k < m.fAlfa.size() ? m.fAlfa[k] : 0;
    }
    if (!m.table.empty()) {
        std::copy(m.table.begin(), m.table.end(), zqTab);
        *qCount = m.qCount, *scaleCount = m.scaleCount;
        return;
    }
    for (std::int32_t s = 0; s < *scaleCount; ++s)
        for (std::int32_t j = 0; j < *qCount; ++j) zqTab[s * *qCount + j] = 0.01 * (j + 1) * (s + 1);
}
