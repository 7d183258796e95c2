// Wavelet packets: nodes, frequency order, the decomposition into band
// components and their normalisation (numeric/wavepacket.h).
#include "numeric/dwt.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <string>
#include <vector>

namespace tarnic {
namespace {

using test::allNear;
using test::isNear;

double energy(std::span<const double> x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
}

std::size_t naturalOf(const std::string& path) {
    std::size_t n = 0;
    for (char c : path)
        n = 2 * n + (c == 'd' ? 1 : 0);
    return n;
}

TEST(PacketOrder, FrequencyOrderIsTheGrayCode) {
    const char* level3[] = {"aaa", "aad", "add", "ada", "dda", "ddd", "dad", "daa"};
    for (std::size_t f = 0; f < 8; ++f) {
        EXPECT_EQ(naturalFromFrequencyRank(f), naturalOf(level3[f])) << f;
        EXPECT_EQ(frequencyRankFromNatural(naturalOf(level3[f])), f) << f;
    }
    for (std::size_t f = 0; f < 4096; ++f)
        ASSERT_EQ(frequencyRankFromNatural(naturalFromFrequencyRank(f)), f);
}

TEST(PacketNodes, HaarNodesOfOneToEight) {
    std::vector<double> x(8);
    std::iota(x.begin(), x.end(), 1.0);
    const auto h = scalingFilter(2);
    const auto a = packetNode(x, h, 1, naturalOf("a"));
    const double expectedA[] = {2.12132034356, 4.94974746831, 7.77817459305, 10.6066017178};
    EXPECT_TRUE(allNear(std::span<const double>(a), std::span<const double>(expectedA), 1e-10));
    const auto aa = packetNode(x, h, 2, naturalOf("aa"));
    const double expectedAa[] = {5.0, 13.0};
    EXPECT_TRUE(allNear(std::span<const double>(aa), std::span<const double>(expectedAa), 1e-13));
    const auto aaa = packetNode(x, h, 3, naturalOf("aaa"));
    ASSERT_EQ(aaa.size(), 1u);
    EXPECT_TRUE(isNear(aaa[0], 12.727922061358, 1e-11));
    // The eight nodes of depth 3 hold the energy of x.
    double e = 0.0;
    for (std::size_t n = 0; n < 8; ++n)
        e += energy(packetNode(x, h, 3, n));
    EXPECT_TRUE(isNear(e, energy(x), 1e-12));
    EXPECT_EQ(packetNode(x, h, 0, 0), x);
}

// A tone of f cycles per sample lands in the node of frequency rank
// floor(f 2^(J+1)) at depth J: that node holds most of its energy (tones placed
// mid-band, long filters; the nodes leak into their neighbours near band edges).
TEST(PacketNodes, ToneLandsInTheNodeOfItsFrequencyRank) {
    const std::size_t n = 2048;
    for (std::int32_t code : {20, 120}) {
        for (int depth : {2, 3, 4}) {
            const std::size_t nodes = std::size_t{1} << depth;
            for (std::size_t rank = 0; rank < nodes; ++rank) {
                const double f = (static_cast<double>(rank) + 0.5) / static_cast<double>(2 * nodes);
                const auto x = test::sinusoid(n, f, 1.0, 0.4);
                std::vector<double> energies(nodes);
                for (std::size_t r = 0; r < nodes; ++r)
                    energies[r] = energy(
                        packetNode(x, scalingFilter(code), depth, naturalFromFrequencyRank(r)));
                const auto loudest = static_cast<std::size_t>(
                    std::max_element(energies.begin(), energies.end()) - energies.begin());
                EXPECT_EQ(loudest, rank) << "code " << code << " depth " << depth;
                EXPECT_GT(energies[rank], 0.6 * energy(x))
                    << "code " << code << " depth " << depth << " rank " << rank;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Decomposition into components
// ---------------------------------------------------------------------------

struct Case {
    std::size_t length;
    int maxLevel;
    int split;
    std::int32_t code;
};

class PacketDecompositionCase : public ::testing::TestWithParam<Case> {};

TEST_P(PacketDecompositionCase, ComponentsAndApproximationRebuildTheSeries) {
    const Case c = GetParam();
    const auto x = test::ar2Noise(c.length, 1.2, -0.5, 2.0, static_cast<unsigned>(c.length));
    const PacketDecomposition d =
        waveletPacketDecomposition(x, scalingFilter(c.code), 1, c.maxLevel, c.split);
    const std::size_t count = static_cast<std::size_t>(c.split * c.maxLevel);
    ASSERT_EQ(d.bands.size(), count);
    ASSERT_EQ(d.components.size(), count * c.length);
    ASSERT_EQ(d.approximation.size(), c.length);
    double scale = 0.0;
    for (double v : x)
        scale = std::max(scale, std::abs(v));

    std::vector<double> sum = d.approximation;
    for (std::size_t k = 0; k < count; ++k)
        for (std::size_t i = 0; i < c.length; ++i)
            sum[i] += d.component(k)[i];
    EXPECT_TRUE(allNear(std::span<const double>(sum), std::span<const double>(x), 1e-12 * scale));

    // The same through the single-precision normalisation that the program
    // stores: scale * normalised + offset, summed, gives the series back to
    // single-precision rounding.
    std::vector<float> normalised(c.length);
    std::vector<double> fromFloats = d.approximation;
    for (std::size_t k = 0; k < count; ++k) {
        const UnitRange range = normaliseToUnitRange(d.component(k), normalised);
        for (std::size_t i = 0; i < c.length; ++i) {
            ASSERT_GE(normalised[i], 0.0f);
            ASSERT_LE(normalised[i], 1.0f);
            fromFloats[i] += static_cast<float>(range.scale * normalised[i] + range.offset);
        }
    }
    EXPECT_TRUE(allNear(std::span<const double>(fromFloats), std::span<const double>(x),
                        2e-7 * scale * static_cast<double>(count)));
}

// Parseval: power times node length, over all components, plus the energy of the
// approximation node is the energy of the extended series.
TEST_P(PacketDecompositionCase, PowersAreMeanSquaresOfAnOrthonormalSplit) {
    const Case c = GetParam();
    const auto x = test::ar2Noise(c.length, 0.5, 0.0, 1.0, 99);
    const PacketDecomposition d =
        waveletPacketDecomposition(x, scalingFilter(c.code), 1, c.maxLevel, c.split);
    const std::size_t work = workingLength(c.length);
    const ExtendedSignal e = extendSymmetric(x, work);
    double total = energy(packetNode(e.values, scalingFilter(c.code), c.maxLevel, 0));
    for (const PacketBand& band : d.bands) {
        const int depth = band.level + static_cast<int>(std::log2(c.split));
        total += band.power * static_cast<double>(work >> depth);
    }
    EXPECT_TRUE(isNear(total, energy(e.values), 0.0, 1e-12));
}

TEST_P(PacketDecompositionCase, BandsTileThePeriodsFromTwoUpInOrder) {
    const Case c = GetParam();
    const auto x = test::whiteNoise(c.length, 1.0, 5);
    const PacketDecomposition d =
        waveletPacketDecomposition(x, scalingFilter(c.code), 1, c.maxLevel, c.split);
    EXPECT_EQ(d.bands.front().periodMin, 2.0);
    EXPECT_EQ(d.bands.back().periodMax, std::ldexp(1.0, c.maxLevel + 1));
    for (std::size_t k = 0; k < d.bands.size(); ++k) {
        const PacketBand& b = d.bands[k];
        EXPECT_LT(b.periodMin, b.periodMax);
        EXPECT_EQ(b.level, 1 + static_cast<int>(k) / c.split);
        if (k + 1 < d.bands.size()) {
            EXPECT_TRUE(isNear(d.bands[k + 1].periodMin, b.periodMax, 1e-12)) << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(WaveletPackets, PacketDecompositionCase,
                         ::testing::Values(Case{1000, 6, 1, 8}, Case{1000, 6, 2, 108},
                                           Case{1000, 6, 4, 20}, Case{1000, 5, 8, 4},
                                           Case{777, 3, 4, 2}, Case{32, 1, 8, 20},
                                           Case{33, 2, 4, 120}, Case{4096, 8, 4, 112},
                                           Case{3001, 7, 8, 14}),
                         [](const auto& info) {
                             const Case& c = info.param;
                             return "n" + std::to_string(c.length) + "_level" +
                                    std::to_string(c.maxLevel) + "_split" +
                                    std::to_string(c.split) + "_code" + std::to_string(c.code);
                         });

TEST(WaveletPackets, TwoLevelsSplitInTwoGiveTheDocumentedBands) {
    const auto x = test::whiteNoise(64, 1.0, 1);
    const PacketDecomposition d = waveletPacketDecomposition(x, scalingFilter(2), 1, 2, 2);
    ASSERT_EQ(d.bands.size(), 4u);
    const double ends[][2] = {{2.0, 8.0 / 3}, {8.0 / 3, 4.0}, {4.0, 16.0 / 3}, {16.0 / 3, 8.0}};
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_TRUE(isNear(d.bands[k].periodMin, ends[k][0], 1e-15)) << k;
        EXPECT_TRUE(isNear(d.bands[k].periodMax, ends[k][1], 1e-15)) << k;
    }
    EXPECT_EQ(d.bands[0].rank, 3u);
    EXPECT_EQ(d.bands[1].rank, 2u);
}

// A sinusoid of period P puts most of its energy into the component whose band
// holds P (periods placed at the middle of a band in frequency).
TEST(WaveletPackets, SinusoidLandsInTheComponentOfItsPeriod) {
    const std::size_t n = 5000;
    const auto none =
        waveletPacketDecomposition(std::vector<double>(n, 0.0), scalingFilter(120), 1, 8, 4);
    for (std::size_t target : {0u, 3u, 5u, 10u, 17u, 22u, 27u, 31u}) {
        const PacketBand& band = none.bands[target];
        const double f = 0.5 / band.periodMin + 0.5 / band.periodMax;
        const auto x = test::sinusoid(n, f, 3.0, 0.7);
        const PacketDecomposition d = waveletPacketDecomposition(x, scalingFilter(120), 1, 8, 4);
        std::size_t loudest = 0;
        for (std::size_t k = 1; k < d.bands.size(); ++k)
            if (energy(d.component(k)) > energy(d.component(loudest))) loudest = k;
        EXPECT_EQ(loudest, target) << "period " << 1 / f;
        EXPECT_GT(energy(d.component(target)), 0.6 * energy(x)) << "period " << 1 / f;
    }
}

// White noise of variance s^2 has power s^2 in every band.
TEST(WaveletPackets, WhiteNoiseHasEqualPowerInEveryBand) {
    const auto x = test::whiteNoise(65536, 2.0, 8);
    const PacketDecomposition d = waveletPacketDecomposition(x, scalingFilter(16), 1, 4, 4);
    for (const PacketBand& b : d.bands)
        EXPECT_TRUE(isNear(b.power, 4.0, 0.0, 0.15)) << "level " << b.level << " rank " << b.rank;
}

TEST(WaveletPackets, RefusesLevelsTheSeriesCannotHold) {
    const std::vector<double> x(32, 1.0);
    EXPECT_NO_THROW(waveletPacketDecomposition(x, scalingFilter(4), 1, 2, 8));
    EXPECT_THROW(waveletPacketDecomposition(x, scalingFilter(4), 1, 3, 8), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition(x, scalingFilter(4), 1, 2, 3), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition(x, scalingFilter(4), 0, 2, 2), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition({}, scalingFilter(4), 1, 1, 1), std::invalid_argument);
}

TEST(WaveletPackets, HigherMinimumLevelLeavesTheFinestBandsOut) {
    const auto x = test::whiteNoise(512, 1.0, 4);
    const PacketDecomposition all = waveletPacketDecomposition(x, scalingFilter(8), 1, 4, 2);
    const PacketDecomposition upper = waveletPacketDecomposition(x, scalingFilter(8), 3, 4, 2);
    ASSERT_EQ(upper.bands.size(), 4u);
    EXPECT_EQ(upper.bands.front().periodMin, 8.0);
    for (std::size_t k = 0; k < 4; ++k)
        EXPECT_TRUE(allNear(upper.component(k), all.component(k + 4), 1e-12));
}

// ---------------------------------------------------------------------------
// Heisenberg boxes
// ---------------------------------------------------------------------------

// 16 samples, Haar, levels 1..2: box c (2 samples wide) shows level-1 detail c
// and level-2 detail c / 2.
TEST(HeisenbergBoxes, EachBoxShowsTheCoefficientUnderItsMiddle) {
    const auto x = test::whiteNoise(16, 1.0, 31);
    const auto h = scalingFilter(2);
    const HeisenbergBoxes boxes = heisenbergBoxes(x, h, 1, 2, 1, 8);
    ASSERT_EQ(boxes.bands.size(), 2u);
    ASSERT_EQ(boxes.moduli.size(), 16u);
    const auto d1 = packetNode(x, h, 1, naturalOf("d"));
    const auto d2 = packetNode(x, h, 2, naturalOf("ad"));
    for (std::size_t c = 0; c < 8; ++c) {
        EXPECT_EQ(boxes.moduli[c], std::abs(d1[c])) << c;
        EXPECT_EQ(boxes.moduli[8 + c], std::abs(d2[c / 2])) << c;
    }
}

// A tone makes its own row the brightest.
TEST(HeisenbergBoxes, ToneLightsUpTheRowOfItsPeriod) {
    const auto silent =
        waveletPacketDecomposition(std::vector<double>(1001, 0.0), scalingFilter(118), 1, 5, 2);
    const PacketBand& band = silent.bands[6];
    const auto x = test::sinusoid(1001, 0.5 / band.periodMin + 0.5 / band.periodMax, 2.0);
    const HeisenbergBoxes boxes = heisenbergBoxes(x, scalingFilter(118), 1, 5, 2, 500);
    ASSERT_EQ(boxes.moduli.size(), 10u * 500);
    std::vector<double> rowMean(10, 0.0);
    for (std::size_t k = 0; k < 10; ++k) {
        EXPECT_EQ(boxes.bands[k].periodMin, silent.bands[k].periodMin);
        for (std::size_t c = 0; c < 500; ++c)
            rowMean[k] += boxes.moduli[k * 500 + c] / 500;
    }
    EXPECT_EQ(std::max_element(rowMean.begin(), rowMean.end()) - rowMean.begin(), 6);
}

// ---------------------------------------------------------------------------
// Normalisation to 0 .. 1
// ---------------------------------------------------------------------------

TEST(UnitRangeNormalisation, MinimumGoesToZeroAndMaximumToOne) {
    const std::vector<double> v{3.0, 5.0, 4.0, 3.5};
    std::vector<float> out(4);
    const UnitRange r = normaliseToUnitRange(v, out);
    EXPECT_EQ(r.offset, 3.0f);
    EXPECT_EQ(r.scale, 2.0f);
    EXPECT_EQ(out, (std::vector<float>{0.0f, 1.0f, 0.5f, 0.25f}));
}

TEST(UnitRangeNormalisation, ConstantGoesToMidBandWithScaleZero) {
    std::vector<float> out(3, -1.0f);
    UnitRange r = normaliseToUnitRange(std::vector<double>{-2.5, -2.5, -2.5}, out);
    EXPECT_EQ(r.offset, -2.5f);
    EXPECT_EQ(r.scale, 0.0f);
    EXPECT_EQ(out, (std::vector<float>{0.5f, 0.5f, 0.5f}));
    r = normaliseToUnitRange(std::vector<double>{0.0, 1e-300, 0.0}, out);
    EXPECT_EQ(r.scale, 0.0f);
    EXPECT_EQ(out, (std::vector<float>{0.5f, 0.5f, 0.5f}));
}

} // namespace
} // namespace tarnic
