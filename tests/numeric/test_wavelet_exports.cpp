// The C routines of the wavelet windows, loaded from Tarnic.dll by name as the
// program loads them, against the C++ routines they wrap.
#include "numeric/dwt.h"
#include "numeric/tarnic_api.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"
#include "numeric_support.h"

namespace tarnic {
namespace {

using namespace test;

class WaveletExports : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(library.handle, nullptr) << dlerror(); }
    template <typename F> F resolve(const char* name) const {
        const F routine = library.resolve<F>(name);
        EXPECT_NE(routine, nullptr) << name;
        return routine;
    }
    Library library;
};

// A wave of period 39.4 on a level of 5 with some noise, in single precision.
std::vector<float> record(std::size_t n) {
    return toFloat(plus(sinusoid(n, 1 / 39.4, 2.0, -std::numbers::pi / 2),
                        plus(std::vector<double>(n, 5.0), whiteNoise(n, 0.3, 12))));
}

// OrthWavePack_dll's outputs, sized as the program sizes them, and the call.
struct Pack {
    Pack(decltype(&OrthWavePack_dll) pack, const std::vector<float>& x, std::int32_t split,
         std::int32_t levMax, std::int32_t count)
        : nrec(static_cast<std::int32_t>(x.size())), tmin(count), tmax(count), mean(count),
          scale(count), power(count), data(count * x.size()) {
        std::int32_t levMin = 1;
        pack(x.data(), &nrec, &split, &levMin, &levMax, &count, tmin.data(), tmax.data(),
             data.data(), &code, mean.data(), scale.data(), power.data());
    }
    std::int32_t nrec, code = 0;
    std::vector<float> tmin, tmax, mean, scale, power, data;
};

// The bands and powers of the decomposition with the minimum-entropy wavelet,
// components normalised to 0 .. 1 that rebuild the series; the period 39.4
// (mid-band of 36.6 .. 42.7) sits in the component of the largest power.
TEST_F(WaveletExports, PacketDecompositionDeliversNormalisedComponents) {
    const std::vector<float> x = record(1000);
    const Pack out(resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll"), x, 4, 6, 24);
    const std::vector<double> signal = toDouble(x);
    EXPECT_EQ(out.code, minimumEntropyWaveCode(signal));
    const PacketDecomposition d =
        waveletPacketDecomposition(signal, scalingFilter(out.code), 1, 6, 4);
    std::vector<double> sum = d.approximation;
    for (std::size_t k = 0; k < 24; ++k) {
        const PacketBand& b = d.bands[k];
        EXPECT_EQ(std::tuple(out.tmin[k], out.tmax[k], out.power[k]),
                  std::tuple(static_cast<float>(b.periodMin), static_cast<float>(b.periodMax),
                             static_cast<float>(b.power)))
            << k;
        for (std::size_t i = 0; i < 1000; ++i) {
            const float v = out.data[k * 1000 + i];
            ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << k << " " << i;
            sum[i] += static_cast<float>(out.scale[k] * v + out.mean[k]);
        }
    }
    EXPECT_TRUE(allNear(sum, signal, 2e-5));
    const auto loudest = std::max_element(out.power.begin(), out.power.end()) - out.power.begin();
    EXPECT_TRUE(out.tmin[loudest] <= 39.4f && out.tmax[loudest] >= 39.4f);
}

// The smallest series the window allows (32 samples, level 1, split 8), a
// constant (no detail at all), and more slots than the series allows (working
// length 64: at most level 4 with split 4): the contract holds all the same,
// data within 0 .. 1, power above 0; surplus slots are neutral.
TEST_F(WaveletExports, EdgeCallsKeepTheContract) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    const Pack shortest(pack, record(32), 8, 1, 8),
        flat(pack, std::vector<float>(300, 7.0f), 2, 5, 10), surplus(pack, record(40), 4, 6, 24);
    for (const Pack* out : {&shortest, &flat, &surplus}) {
        EXPECT_TRUE(std::all_of(out->data.begin(), out->data.end(),
                                [](float v) { return v >= 0.0f && v <= 1.0f; }));
        EXPECT_TRUE(allFinitePositive(out->power));
        EXPECT_GE(*std::min_element(out->scale.begin(), out->scale.end()), 0.0f);
    }
    EXPECT_TRUE(isWaveCode(shortest.code));
    EXPECT_EQ(std::pair(shortest.tmin.front(), shortest.tmax.back()), std::pair(2.0f, 4.0f));
    EXPECT_LT(largestMagnitude(toDouble(flat.mean)), 1e-5);
    EXPECT_EQ(surplus.tmax[15], 32.0f);
    for (std::size_t k = 16; k < 24; ++k)
        EXPECT_EQ(std::tuple(surplus.scale[k], surplus.power[k], surplus.data[k * 40]),
                  std::tuple(0.0f, std::numeric_limits<float>::min(), 0.5f))
            << k;
}

// The graph of the wavelet of each code; a code that is none draws the
// 4-coefficient Daubechies wavelet.
TEST_F(WaveletExports, BasisGraphIsTheWaveletOverItsSupport) {
    const auto graf = resolve<decltype(&WaveBasisGraf_dll)>("WaveBasisGraf_dll");
    std::int32_t length = 2048;
    for (std::int32_t code : {2, 4, 20, 108, 120, 0, 33}) {
        std::vector<float> basis(2048, 99.0f);
        std::int32_t c = code;
        graf(&c, &length, basis.data());
        EXPECT_EQ(basis, toFloat(waveletGraph(scalingFilter(isWaveCode(code) ? code : 4), 2048)))
            << "code " << code;
    }
}

// Ford_dll chooses the wavelet of minimum entropy (4 for an empty series); wave
// code 0 (the level typed before any Donoho-Johnstone run) means that wavelet;
// a share of 0, or one that is not a number, gives the input back.
TEST_F(WaveletExports, FordDonohoLevelAndFilterUseTheMinimumEntropyWaveletForCodeZero) {
    const auto ford = resolve<decltype(&Ford_dll)>("Ford_dll");
    const auto donoho = resolve<decltype(&DonohoLevel_dll)>("DonohoLevel_dll");
    const auto filter = resolve<decltype(&WaveFiltThresh_dll)>("WaveFiltThresh_dll");
    const std::vector<float> x = record(3000);
    const std::vector<double> signal = toDouble(x);
    const std::int32_t best = minimumEntropyWaveCode(signal);
    std::int32_t n = 3000, code = 0, zero = 0, sym = 112;
    ford(x.data(), &n, &code);
    EXPECT_EQ(code, best);
    float level = -1.0f;
    for (std::int32_t* c : {&zero, &sym}) {
        donoho(x.data(), &n, c, &level);
        const std::int32_t used = *c == 0 ? best : *c;
        EXPECT_EQ(level,
                  static_cast<float>(donohoJohnstoneLevel(signal, scalingFilter(used)).share));
        EXPECT_TRUE(level > 0.5f && level < 1.0f) << level;
    }
    std::vector<float> result(3000);
    filter(x.data(), result.data(), &n, &zero, &level);
    EXPECT_EQ(result, toFloat(waveletThresholdFilter(signal, scalingFilter(best), level)));
    for (float share : {0.0f, std::numeric_limits<float>::quiet_NaN()}) {
        filter(x.data(), result.data(), &n, &sym, &share);
        EXPECT_TRUE(allNear(result, x, 0.0, 1e-6)) << share;
    }
    n = 0;
    ford(x.data(), &n, &code);
    EXPECT_EQ(code, 4);
}

// The map holds log10 of the box moduli, those below 1e-7 of the largest at that
// floor (the finest row inside a flat stretch).
TEST_F(WaveletExports, HeisenbergBoxesAreLogarithmsOfTheCoefficientModuli) {
    const auto heis = resolve<decltype(&HeisBoxes_dll)>("HeisBoxes_dll");
    std::vector<float> x = record(1001);
    std::fill(x.begin() + 600, x.begin() + 700, 5.0f); // zero fine details there
    std::int32_t n = 1001, split = 4, levMin = 1, levMax = 3, rows = 12, code = 108;
    std::vector<float> low(12), high(12), map(12 * 500);
    heis(x.data(), &n, &split, &levMin, &levMax, &rows, low.data(), high.data(), map.data(), &code);
    const HeisenbergBoxes boxes = heisenbergBoxes(toDouble(x), scalingFilter(108), 1, 3, 4, 500);
    const double largest = *std::max_element(boxes.moduli.begin(), boxes.moduli.end());
    for (std::size_t r = 0; r < 12; ++r)
        EXPECT_EQ(std::pair(low[r], high[r]),
                  std::pair(static_cast<float>(boxes.bands[r].periodMin),
                            static_cast<float>(boxes.bands[r].periodMax)));
    for (std::size_t i = 0; i < map.size(); ++i)
        ASSERT_NEAR(map[i], std::log10(std::max(boxes.moduli[i], largest * 1e-7)), 1e-5) << i;
    EXPECT_NEAR(map[325], std::log10(largest) - 7, 1e-5);
}

} // namespace
} // namespace tarnic
