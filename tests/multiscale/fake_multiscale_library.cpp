// A stand-in for Tarnic.dll that exports the WTMM and multifractal routines
// with results a test dictates, and remembers the arguments they received. The
// window tests load it in place of the real library to drive the reading and
// drawing of a run with hand-made chain files, counts and spectra, including
// the runs the real library would never give.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

struct WtmmScript {
    std::int32_t counts[7] = {};
    bool writeFile = false;
    std::string fileText;
    bool constantDetrended = false;
    // What the last call received.
    std::int32_t fragLeng = -1, trendOrder = -1;
    double gamma = -1;
    int calls = 0;
    std::string directory; // the current directory during the last call
} wtmm;

struct MfdfaScript {
    std::vector<double> alfa, fAlfa, table;
    std::int32_t qCount = 0, scaleCount = 0; // given back when a table is scripted
    // What the last call received.
    std::int32_t received[7] = {}; // samples, order, measure, min, max, alfaCount, scaleCount
    double qMin = 0, qMax = 0;
    std::int32_t qAsked = 0;
    int calls = 0;
} mfdfa;

} // namespace

// counts[0 .. 6]; fileText null: no chain file is written.
FAKE_EXPORT void FakeWtmm_script(const std::int32_t* counts, const char* fileText,
                                 int constantDetrended) {
    std::copy(counts, counts + 7, wtmm.counts);
    wtmm.writeFile = fileText != nullptr;
    wtmm.fileText = fileText ? fileText : "";
    wtmm.constantDetrended = constantDetrended != 0;
    wtmm.calls = 0;
}

// The current directory of the last call, cut to `size` - 1 characters.
FAKE_EXPORT void FakeWtmm_directory(char* out, int size) {
    const std::size_t n =
        std::min<std::size_t>(wtmm.directory.size(), static_cast<std::size_t>(size - 1));
    std::copy_n(wtmm.directory.begin(), n, out);
    out[n] = '\0';
}

FAKE_EXPORT void FakeWtmm_received(std::int32_t* fragLeng, std::int32_t* trendOrder, double* gamma,
                                   int* calls) {
    *fragLeng = wtmm.fragLeng;
    *trendOrder = wtmm.trendOrder;
    *gamma = wtmm.gamma;
    *calls = wtmm.calls;
}

// The detrended fragment is the input less its mean (or constant 1.5); the
// chain file goes into the current directory, as the real library writes it.
FAKE_EXPORT void WTMM_FP_dll(const double* input, std::int32_t* fragLeng, std::int32_t* trendOrder,
                             double* gamma, std::int32_t* chainCounts, double* detrended) {
    ++wtmm.calls;
    wtmm.directory = std::filesystem::current_path().string();
    wtmm.fragLeng = *fragLeng;
    wtmm.trendOrder = *trendOrder;
    wtmm.gamma = *gamma;
    double mean = 0;
    for (std::int32_t i = 0; i < *fragLeng; ++i)
        mean += input[i];
    mean /= std::max(*fragLeng, 1);
    for (std::int32_t i = 0; i < *fragLeng; ++i)
        detrended[i] = wtmm.constantDetrended ? 1.5 : input[i] - mean;
    std::copy(wtmm.counts, wtmm.counts + 7, chainCounts);
    if (wtmm.writeFile) {
        std::ofstream out("n12c43k67r13t72c76h18i04", std::ios::binary | std::ios::trunc);
        out << wtmm.fileText;
    }
}

// alfa, fAlfa: alfaCount values each (null: a triangle of positive values
// between two zeros); table: qCount * scaleCount values given back with those
// counts (null: cell (s, j), 0-based, = 0.01 * (j + 1) * (s + 1) for the
// counts asked).
FAKE_EXPORT void FakeMfdfa_script(const double* alfa, const double* fAlfa, std::int32_t alfaCount,
                                  const double* table, std::int32_t qCount,
                                  std::int32_t scaleCount) {
    mfdfa.alfa.clear();
    mfdfa.fAlfa.clear();
    if (alfa && fAlfa) {
        mfdfa.alfa.assign(alfa, alfa + alfaCount);
        mfdfa.fAlfa.assign(fAlfa, fAlfa + alfaCount);
    }
    mfdfa.table.clear();
    if (table) mfdfa.table.assign(table, table + static_cast<std::ptrdiff_t>(qCount) * scaleCount);
    mfdfa.qCount = qCount;
    mfdfa.scaleCount = scaleCount;
    mfdfa.calls = 0;
}

// received[0 .. 6]: samples, detrend order, measure type, minimum and maximum
// scale, alfa count, scale count asked; then q minimum, q maximum, q count asked.
FAKE_EXPORT void FakeMfdfa_received(std::int32_t* received, double* qMin, double* qMax,
                                    std::int32_t* qAsked, int* calls) {
    std::copy(mfdfa.received, mfdfa.received + 7, received);
    *qMin = mfdfa.qMin;
    *qMax = mfdfa.qMax;
    *qAsked = mfdfa.qAsked;
    *calls = mfdfa.calls;
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
    mfdfa.qMin = *qMin;
    mfdfa.qMax = *qMax;
    mfdfa.qAsked = *qCount;
    const std::int32_t n = *alfaCount;
    for (std::int32_t i = 0; i < n; ++i) {
        if (static_cast<std::size_t>(i) < mfdfa.alfa.size()) {
            alfa[i] = mfdfa.alfa[static_cast<std::size_t>(i)];
            fAlfa[i] = mfdfa.fAlfa[static_cast<std::size_t>(i)];
        } else {
            alfa[i] = 0.2 + 0.6 * i / (n - 1);
            fAlfa[i] = std::max(0.0, 1.0 - std::abs(alfa[i] - 0.5) / 0.25);
        }
    }
    if (!mfdfa.table.empty()) {
        std::copy(mfdfa.table.begin(), mfdfa.table.end(), zqTab);
        *qCount = mfdfa.qCount;
        *scaleCount = mfdfa.scaleCount;
        return;
    }
    for (std::int32_t s = 0; s < *scaleCount; ++s)
        for (std::int32_t j = 0; j < *qCount; ++j)
            zqTab[s * *qCount + j] = 0.01 * (j + 1) * (s + 1);
}
