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

// A wave of period 39.4 on a level of 5 with some noise, in single precision.
std::vector<float> record(std::size_t n) {
    return toFloat(plus(sinusoid(n, 1 / 39.4, 2.0, -std::numbers::pi / 2),
                        plus(std::vector<double>(n, 5.0), whiteNoise(n, 0.3, 12))));
}

// OrthWavePack_dll's outputs, sized as the program sizes them, after the call.
struct Pack {
    Pack(const std::vector<float>& x, std::int32_t split, std::int32_t levMax, std::int32_t count)
        : tmin(count), tmax(count), mean(count), scale(count), power(count),
          data(count * x.size()) {
        const auto pack = dllRoutine<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
        std::int32_t n = static_cast<std::int32_t>(x.size()), levMin = 1;
        if (pack)
            pack(x.data(), &n, &split, &levMin, &levMax, &count, tmin.data(), tmax.data(),
                 data.data(), &code, mean.data(), scale.data(), power.data());
    }
    std::int32_t code = 0;
    std::vector<float> tmin, tmax, mean, scale, power, data;
};

// The bands and powers of the decomposition with the minimum-entropy wavelet, the
// levels lowered to what the series allows (working length 64 at 40 samples:
// level 4 with split 4), components normalised to 0 .. 1 that rebuild the series,
// surplus slots neutral; the period 39.4 (mid-band of 36.6 .. 42.7) sits in the
// component of the largest power.
TEST(WaveletExports, PacketDecompositionDeliversNormalisedComponentsAndNeutralSurplusSlots) {
    ASSERT_NE(dllRoutine<decltype(&OrthWavePack_dll)>("OrthWavePack_dll"), nullptr) << dlerror();
    const float tiny = std::numeric_limits<float>::min();
    // Series, split, levMax, slots, levels used: the window's smallest series, a
    // constant (no detail at all), more slots than the series allows.
    const std::tuple<std::vector<float>, std::int32_t, std::int32_t, std::int32_t, int> cases[] = {
        {record(1000), 4, 6, 24, 6}, {record(32), 8, 1, 8, 1},
        {std::vector<float>(300, 7.0f), 2, 5, 10, 5}, {record(40), 4, 6, 24, 4}};
    for (const auto& [x, split, levMax, count, levels] : cases) {
        SCOPED_TRACE(x.size());
        const Pack out(x, split, levMax, count);
        const std::vector<double> signal = toDouble(x);
        ASSERT_EQ(out.code, minimumEntropyWaveCode(signal));
        const PacketDecomposition d =
            waveletPacketDecomposition(signal, scalingFilter(out.code), 1, levels, split);
        std::vector<double> sum = d.approximation;
        for (std::size_t k = 0; k < out.power.size(); ++k) {
            const bool band = k < d.bands.size();
            EXPECT_EQ(std::tuple(out.tmin[k], out.tmax[k], out.power[k]),
                      band ? std::tuple(static_cast<float>(d.bands[k].periodMin),
                                        static_cast<float>(d.bands[k].periodMax),
                                        std::max(static_cast<float>(d.bands[k].power), tiny))
                           : std::tuple(1.0f, 2.0f, tiny))
                << k;
            EXPECT_TRUE(band || (out.scale[k] == 0.0f && out.data[k * x.size()] == 0.5f)) << k;
            for (std::size_t i = 0; i < x.size(); ++i) {
                const float v = out.data[k * x.size() + i];
                ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << k << " " << i;
                sum[i] += static_cast<float>(out.scale[k] * v + out.mean[k]);
            }
        }
        EXPECT_TRUE(allNear(sum, signal, 2e-5));
        const auto loudest =
            std::max_element(out.power.begin(), out.power.end()) - out.power.begin();
        EXPECT_TRUE(x.size() != 1000 || (out.tmin[loudest] <= 39.4f && out.tmax[loudest] >= 39.4f));
    }
}

// The graph of the wavelet of each code; a code that is none draws the
// 4-coefficient Daubechies wavelet.
TEST(WaveletExports, BasisGraphIsTheWaveletOverItsSupport) {
    const auto graf = dllRoutine<decltype(&WaveBasisGraf_dll)>("WaveBasisGraf_dll");
    ASSERT_NE(graf, nullptr);
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
TEST(WaveletExports, FordDonohoLevelAndFilterUseTheMinimumEntropyWaveletForCodeZero) {
    const auto ford = dllRoutine<decltype(&Ford_dll)>("Ford_dll");
    const auto donoho = dllRoutine<decltype(&DonohoLevel_dll)>("DonohoLevel_dll");
    const auto filter = dllRoutine<decltype(&WaveFiltThresh_dll)>("WaveFiltThresh_dll");
    ASSERT_TRUE(ford && donoho && filter);
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
TEST(WaveletExports, HeisenbergBoxesAreLogarithmsOfTheCoefficientModuli) {
    const auto heis = dllRoutine<decltype(&HeisBoxes_dll)>("HeisBoxes_dll");
    ASSERT_NE(heis, nullptr);
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
