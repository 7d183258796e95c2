// The C routines of the wavelet windows, loaded from Tarnic.dll by name as the
// program loads them, against the C++ routines they wrap.
#include "numeric/dwt.h"
#include "numeric/tarnic_api.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace tarnic {
namespace {

using test::isNear;

class WaveletExports : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(handle, nullptr) << dlerror(); }
    void TearDown() override {
        if (handle) dlclose(handle);
    }
    template <typename F> F resolve(const char* name) const {
        return reinterpret_cast<F>(dlsym(handle, name));
    }
    void* handle = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
};

std::vector<float> record(std::size_t n) {
    std::vector<float> x(n);
    const auto noise = test::whiteNoise(n, 0.3, 12);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = static_cast<float>(
            5.0 + 2.0 * std::sin(2 * std::numbers::pi * static_cast<double>(t) / 39.4) + noise[t]);
    return x;
}

std::vector<double> toDouble(std::span<const float> x) {
    return {x.begin(), x.end()};
}

// OrthWavePack_dll's outputs, sized as the program sizes them, and the call.
struct Pack {
    Pack(std::int32_t n, std::int32_t split, std::int32_t levMax, std::int32_t count)
        : nrec(n), split(split), levMax(levMax), count(count), tmin(size(count)), tmax(size(count)),
          mean(size(count)), scale(size(count)), power(size(count)), data(size(count) * size(n)) {}
    static std::size_t size(std::int32_t v) { return static_cast<std::size_t>(v); }
    void run(decltype(&OrthWavePack_dll) pack, const std::vector<float>& x) {
        pack(x.data(), &nrec, &split, &levMin, &levMax, &count, tmin.data(), tmax.data(),
             data.data(), &code, mean.data(), scale.data(), power.data());
    }
    std::int32_t nrec, split, levMin = 1, levMax, count, code = 0;
    std::vector<float> tmin, tmax, mean, scale, power, data;
};

TEST_F(WaveletExports, PacketDecompositionDeliversNormalisedComponents) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    ASSERT_NE(pack, nullptr);
    const std::vector<float> x = record(1000);
    Pack out(1000, 4, 6, 24);
    out.run(pack, x);

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
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_TRUE(isNear(sum[i], signal[i], 2e-5)) << i;
    // The period 39.4 (mid-band of 36.6 .. 42.7) sits in the component of the largest power.
    const std::size_t loudest = static_cast<std::size_t>(
        std::max_element(out.power.begin(), out.power.end()) - out.power.begin());
    EXPECT_LE(out.tmin[loudest], 39.4f);
    EXPECT_GE(out.tmax[loudest], 39.4f);
}

// The smallest series the window allows: 32 samples, level 1, split 8.
TEST_F(WaveletExports, PacketDecompositionOfThirtyTwoSamples) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    const std::vector<float> x = record(32);
    Pack out(32, 8, 1, 8);
    out.run(pack, x);
    EXPECT_TRUE(isWaveCode(out.code));
    EXPECT_EQ(out.tmin.front(), 2.0f);
    EXPECT_EQ(out.tmax.back(), 4.0f);
    for (float p : out.power)
        EXPECT_GT(p, 0.0f);
}

// A constant has no detail at all: every component is (nearly) zero, yet the
// contract holds: data within 0 .. 1, no NaN, power above 0.
TEST_F(WaveletExports, ConstantSignalStillMeetsTheContract) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    const std::vector<float> x(300, 7.0f);
    Pack out(300, 2, 5, 10);
    out.run(pack, x);
    for (std::size_t k = 0; k < 10; ++k) {
        EXPECT_GT(out.power[k], 0.0f);
        EXPECT_GT(out.tmin[k], 0.0f);
        EXPECT_GE(out.scale[k], 0.0f);
        EXPECT_LT(std::abs(out.mean[k]), 1e-5f);
    }
    for (float v : out.data)
        ASSERT_TRUE(v >= 0.0f && v <= 1.0f);
}

// More slots than the series allows: the computed ones come first, the others
// are neutral and harmless.
TEST_F(WaveletExports, SurplusSlotsAreNeutral) {
    const auto pack = resolve<decltype(&OrthWavePack_dll)>("OrthWavePack_dll");
    const std::vector<float> x = record(40); // working length 64: at most level 4 with split 4
    Pack out(40, 4, 6, 24);
    out.run(pack, x);
    EXPECT_EQ(out.tmax[15], 32.0f);
    for (std::size_t k = 16; k < 24; ++k) {
        EXPECT_EQ(out.scale[k], 0.0f);
        EXPECT_EQ(out.power[k], std::numeric_limits<float>::min());
        EXPECT_EQ(out.data[k * 40], 0.5f);
    }
}

TEST_F(WaveletExports, BasisGraphIsTheWaveletOverItsSupport) {
    const auto graf = resolve<decltype(&WaveBasisGraf_dll)>("WaveBasisGraf_dll");
    ASSERT_NE(graf, nullptr);
    std::int32_t length = 2048;
    for (std::int32_t code : {2, 4, 20, 108, 120, 0, 33}) {
        std::vector<float> basis(2048, 99.0f);
        std::int32_t c = code;
        graf(&c, &length, basis.data());
        const std::vector<double> expected =
            waveletGraph(scalingFilter(isWaveCode(code) ? code : 4), 2048);
        for (std::size_t i = 0; i < 2048; ++i)
            ASSERT_EQ(basis[i], static_cast<float>(expected[i])) << "code " << code << " i " << i;
    }
}

TEST_F(WaveletExports, FordChoosesTheMinimumEntropyWavelet) {
    const auto ford = resolve<decltype(&Ford_dll)>("Ford_dll");
    ASSERT_NE(ford, nullptr);
    const std::vector<float> x = record(5000);
    std::int32_t n = 5000, code = 0;
    ford(x.data(), &n, &code);
    EXPECT_EQ(code, minimumEntropyWaveCode(toDouble(x)));
    n = 0;
    ford(x.data(), &n, &code);
    EXPECT_EQ(code, 4);
}

// Wave code 0 (the level typed before any Donoho-Johnstone run) means the
// wavelet of minimum entropy, the one the window proposed when it opened.
TEST_F(WaveletExports, DonohoLevelAndFilterTreatCodeZeroAsTheMinimumEntropyWavelet) {
    const auto donoho = resolve<decltype(&DonohoLevel_dll)>("DonohoLevel_dll");
    const auto filter = resolve<decltype(&WaveFiltThresh_dll)>("WaveFiltThresh_dll");
    ASSERT_NE(donoho, nullptr);
    ASSERT_NE(filter, nullptr);
    const std::vector<float> x = record(3000);
    const std::vector<double> signal = toDouble(x);
    const auto chosen = scalingFilter(minimumEntropyWaveCode(signal));
    std::int32_t n = 3000, zero = 0, sym = 112;
    float level = -1.0f;
    donoho(x.data(), &n, &zero, &level);
    EXPECT_EQ(level, static_cast<float>(donohoJohnstoneLevel(signal, chosen).share));
    donoho(x.data(), &n, &sym, &level);
    EXPECT_EQ(level, static_cast<float>(donohoJohnstoneLevel(signal, scalingFilter(112)).share));
    EXPECT_GT(level, 0.5f);
    EXPECT_LT(level, 1.0f);

    std::vector<float> result(3000);
    float share = level;
    filter(x.data(), result.data(), &n, &zero, &share);
    const std::vector<double> expected = waveletThresholdFilter(signal, chosen, level);
    for (std::size_t i = 0; i < 3000; ++i)
        ASSERT_EQ(result[i], static_cast<float>(expected[i])) << i;
}

TEST_F(WaveletExports, FilterWithShareZeroReturnsTheInputAndNoiseCompletesIt) {
    const auto filter = resolve<decltype(&WaveFiltThresh_dll)>("WaveFiltThresh_dll");
    const std::vector<float> x = record(1001);
    std::int32_t n = 1001, code = 8;
    float share = 0.0f;
    std::vector<float> result(1001);
    filter(x.data(), result.data(), &n, &code, &share);
    for (std::size_t i = 0; i < 1001; ++i)
        ASSERT_TRUE(isNear(result[i], x[i], 0.0, 1e-6)) << i;

    share = 0.8f;
    filter(x.data(), result.data(), &n, &code, &share);
    for (std::size_t i = 0; i < 1001; ++i) {
        const float noise = x[i] - result[i];
        ASSERT_TRUE(isNear(result[i] + noise, x[i], 0.0, 1e-6)) << i;
    }
    share = std::numeric_limits<float>::quiet_NaN(); // reads as 0
    filter(x.data(), result.data(), &n, &code, &share);
    EXPECT_TRUE(isNear(result[500], x[500], 0.0, 1e-6));
}

TEST_F(WaveletExports, HeisenbergBoxesAreLogarithmsOfTheCoefficientModuli) {
    const auto heis = resolve<decltype(&HeisBoxes_dll)>("HeisBoxes_dll");
    ASSERT_NE(heis, nullptr);
    std::vector<float> x = record(1001);
    std::fill(x.begin() + 600, x.begin() + 700, 5.0f); // zero fine details there
    std::int32_t n = 1001, split = 4, levMin = 1, levMax = 3, rows = 12, code = 108;
    std::vector<float> low(12), high(12), map(12 * 500);
    heis(x.data(), &n, &split, &levMin, &levMax, &rows, low.data(), high.data(), map.data(), &code);
    const HeisenbergBoxes boxes = heisenbergBoxes(toDouble(x), scalingFilter(108), 1, 3, 4, 500);
    const double largest = *std::max_element(boxes.moduli.begin(), boxes.moduli.end());
    for (std::size_t r = 0; r < 12; ++r) {
        EXPECT_EQ(low[r], static_cast<float>(boxes.bands[r].periodMin));
        EXPECT_LT(low[r], high[r]);
        if (r > 0) {
            EXPECT_EQ(low[r], high[r - 1]);
        }
    }
    const float floor = static_cast<float>(std::log10(largest) - 7);
    for (std::size_t i = 0; i < map.size(); ++i) {
        const double expected = std::log10(std::max(boxes.moduli[i], largest * 1e-7));
        ASSERT_TRUE(isNear(map[i], expected, 1e-5)) << i;
        ASSERT_GE(map[i], floor - 1e-5f);
    }
    EXPECT_TRUE(isNear(map[325], floor, 1e-5)); // finest row, inside the flat stretch
}

} // namespace
} // namespace tarnic
