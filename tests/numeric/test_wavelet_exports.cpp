// The C routines of the wavelet windows, loaded from Tarnic.dll by name as the
// program loads them, against the C++ routines they wrap.
#include "numeric/dwt.h"
#include "numeric/tarnic_api.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"
#include "numeric_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

class WaveletExports : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(library.handle, nullptr) << dlerror(); }
    template <typename F> F resolve(const char* name) const {
        const F routine = library.resolve<F>(name);
        EXPECT_NE(routine, nullptr) << name;
        return routine;
    }
    test::Library library;
};

// A wave of period 39.4 on a level of 5 with some noise, in single precision.
std::vector<float> record(std::size_t n) {
    return test::toFloat(
        test::plus(test::sinusoid(n, 1 / 39.4, 2.0, -std::numbers::pi / 2),
                   test::plus(std::vector<double>(n, 5.0), test::whiteNoise(n, 0.3, 12))));
}

std::vector<double> toDouble(std::span<const float> x) {
    return {x.begin(), x.end()};
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

TEST_F(WaveletExports, PacketDecompositionDeliversNormalisedComponents) {
    const std::vector<float> x = record(1000);
    const Pack out(resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll"), x, 4, 6, 24);
    const std::vector<double> signal = toDouble(x);
    EXPECT_EQ(out.code, minimumEntropyWaveCode(signal));
    const PacketDecomposition d =
        waveletPacketDecomposition(signal, scalingFilter(out.code), 1, 6, 4);
    std::vector<double> sum = d.approximation;
    for (std::size_t k = 0; k < 24; ++k) {
        EXPECT_EQ(out.tmin[k], static_cast<float>(d.bands[k].periodMin)) << k;
        EXPECT_EQ(out.tmax[k], static_cast<float>(d.bands[k].periodMax)) << k;
        EXPECT_EQ(out.power[k], static_cast<float>(d.bands[k].power)) << k;
        for (std::size_t i = 0; i < 1000; ++i) {
            const float v = out.data[k * 1000 + i];
            ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << k << " " << i;
            sum[i] += static_cast<float>(out.scale[k] * v + out.mean[k]);
        }
    }
    EXPECT_TRUE(test::allNear(sum, signal, 2e-5));
    // The period 39.4 (mid-band of 36.6 .. 42.7) sits in the component of the largest power.
    const auto loudest = std::max_element(out.power.begin(), out.power.end()) - out.power.begin();
    EXPECT_LE(out.tmin[loudest], 39.4f);
    EXPECT_GE(out.tmax[loudest], 39.4f);
}

// The smallest series the window allows (32 samples, level 1, split 8), a
// constant (no detail at all), and more slots than the series allows (working
// length 64: at most level 4 with split 4): the contract holds all the same,
// data within 0 .. 1, no NaN, power above 0; surplus slots are neutral.
TEST_F(WaveletExports, EdgeCallsKeepTheContract) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    const Pack shortest(pack, record(32), 8, 1, 8),
        flat(pack, std::vector<float>(300, 7.0f), 2, 5, 10), surplus(pack, record(40), 4, 6, 24);
    for (const Pack* out : {&shortest, &flat, &surplus}) {
        for (float v : out->data)
            ASSERT_TRUE(v >= 0.0f && v <= 1.0f);
        for (std::size_t k = 0; k < out->power.size(); ++k) {
            EXPECT_GT(out->power[k], 0.0f) << k;
            EXPECT_GE(out->scale[k], 0.0f) << k;
        }
    }
    EXPECT_TRUE(isWaveCode(shortest.code));
    EXPECT_EQ(shortest.tmin.front(), 2.0f);
    EXPECT_EQ(shortest.tmax.back(), 4.0f);
    for (std::size_t k = 0; k < 10; ++k) {
        EXPECT_GT(flat.tmin[k], 0.0f);
        EXPECT_LT(std::abs(flat.mean[k]), 1e-5f);
    }
    EXPECT_EQ(surplus.tmax[15], 32.0f);
    for (std::size_t k = 16; k < 24; ++k) {
        EXPECT_EQ(surplus.scale[k], 0.0f);
        EXPECT_EQ(surplus.power[k], std::numeric_limits<float>::min());
        EXPECT_EQ(surplus.data[k * 40], 0.5f);
    }
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
        EXPECT_EQ(basis,
                  test::toFloat(waveletGraph(scalingFilter(isWaveCode(code) ? code : 4), 2048)))
            << "code " << code;
    }
}

// Ford_dll chooses the wavelet of minimum entropy (4 for an empty series); wave
// code 0 (the level typed before any Donoho-Johnstone run) means that wavelet.
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
    donoho(x.data(), &n, &zero, &level);
    EXPECT_EQ(level, static_cast<float>(donohoJohnstoneLevel(signal, scalingFilter(best)).share));
    donoho(x.data(), &n, &sym, &level);
    EXPECT_EQ(level, static_cast<float>(donohoJohnstoneLevel(signal, scalingFilter(112)).share));
    EXPECT_GT(level, 0.5f);
    EXPECT_LT(level, 1.0f);
    std::vector<float> result(3000);
    filter(x.data(), result.data(), &n, &zero, &level);
    EXPECT_EQ(result, test::toFloat(waveletThresholdFilter(signal, scalingFilter(best), level)));
    // A share of 0, or one that is not a number, gives the input back.
    for (float share : {0.0f, std::numeric_limits<float>::quiet_NaN()}) {
        filter(x.data(), result.data(), &n, &sym, &share);
        EXPECT_TRUE(test::allNear(result, x, 0.0, 1e-6)) << share;
    }
    n = 0;
    ford(x.data(), &n, &code);
    EXPECT_EQ(code, 4);
}

TEST_F(WaveletExports, HeisenbergBoxesAreLogarithmsOfTheCoefficientModuli) {
    const auto heis = resolve<decltype(&HeisBoxes_dll)>("HeisBoxes_dll");
    std::vector<float> x = record(1001);
    std::fill(x.begin() + 600, x.begin() + 700, 5.0f); // zero fine details there
    std::int32_t n = 1001, split = 4, levMin = 1, levMax = 3, rows = 12, code = 108;
    std::vector<float> low(12), high(12), map(12 * 500);
    heis(x.data(), &n, &split, &levMin, &levMax, &rows, low.data(), high.data(), map.data(), &code);
    const HeisenbergBoxes boxes = heisenbergBoxes(toDouble(x), scalingFilter(108), 1, 3, 4, 500);
    const double largest = *std::max_element(boxes.moduli.begin(), boxes.moduli.end());
    for (std::size_t r = 0; r < 12; ++r) {
        EXPECT_EQ(low[r], static_cast<float>(boxes.bands[r].periodMin));
        EXPECT_EQ(high[r], static_cast<float>(boxes.bands[r].periodMax));
    }
    // Moduli below 1e-7 of the largest show as that floor.
    for (std::size_t i = 0; i < map.size(); ++i)
        ASSERT_NEAR(map[i], std::log10(std::max(boxes.moduli[i], largest * 1e-7)), 1e-5) << i;
    EXPECT_NEAR(map[325], std::log10(largest) - 7, 1e-5); // finest row, inside the flat stretch
}

} // namespace
} // namespace tarnic
