// Wavelet packets: nodes, frequency order, the decomposition into band
// components, Heisenberg boxes and the normalisation (numeric/wavepacket.h).
#include "numeric/dwt.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"
#include "numeric_support.h"

namespace tarnic {
namespace {

using namespace test;

// The node reached by a path of approximations 'a' and details 'd'.
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
    const std::vector<double> x = sampled(8, [](double t) { return t + 1; });
    const auto h = scalingFilter(2);
    EXPECT_TRUE(allNear(packetNode(x, h, 2, naturalOf("aa")), std::vector<double>{5, 13}, 1e-13));
    EXPECT_TRUE(allNear(packetNode(x, h, 3, naturalOf("aaa")), std::vector<double>{12.727922061358},
                        1e-11));
    // The eight nodes of depth 3 hold the energy of x.
    double e = 0.0;
    for (std::size_t n = 0; n < 8; ++n)
        e += energy(packetNode(x, h, 3, n));
    EXPECT_NEAR(e, energy(x), 1e-12);
    EXPECT_EQ(packetNode(x, h, 0, 0), x);
}

struct Case {
    std::size_t length;
    int maxLevel, split;
    std::int32_t code;
};

class PacketDecompositionCase : public ::testing::TestWithParam<Case> {};

// The components and the approximation add up to the series (through the
// single-precision normalisation the program stores: WaveletExports). Parseval: power times node
// length over all components, plus the energy of the approximation node, is the energy of the
// extended series. The bands tile the periods from 2 up in order.
TEST_P(PacketDecompositionCase, ComponentsRebuildTheSeriesAndBandsTileThePeriods) {
    const Case c = GetParam();
    const auto x = ar2Noise(c.length, 1.2, -0.5, 2.0, static_cast<unsigned>(c.length));
    const auto h = scalingFilter(c.code);
    const PacketDecomposition d = waveletPacketDecomposition(x, h, 1, c.maxLevel, c.split);
    const std::size_t count = static_cast<std::size_t>(c.split * c.maxLevel);
    ASSERT_EQ(std::pair(d.bands.size(), d.components.size()), std::pair(count, count * c.length));
    const double scale = largestMagnitude(x);
    std::vector<double> sum = d.approximation;
    const ExtendedSignal e = extendSymmetric(x, workingLength(c.length));
    double total = energy(packetNode(e.values, h, c.maxLevel, 0));
    for (std::size_t k = 0; k < count; ++k) {
        for (std::size_t i = 0; i < c.length; ++i)
            sum[i] += d.component(k)[i];
        const PacketBand& b = d.bands[k];
        const int depth = b.level + static_cast<int>(std::log2(c.split));
        total += b.power * static_cast<double>(e.values.size() >> depth);
        EXPECT_EQ(b.level, 1 + static_cast<int>(k) / c.split);
        EXPECT_LT(b.periodMin, b.periodMax);
        EXPECT_NEAR(b.periodMin, k > 0 ? d.bands[k - 1].periodMax : 2.0, 1e-12) << k;
    }
    EXPECT_TRUE(allNear(sum, x, 1e-12 * scale));
    EXPECT_TRUE(isNear(total, energy(e.values), 0.0, 1e-12));
    EXPECT_EQ(d.bands.back().periodMax, std::ldexp(1.0, c.maxLevel + 1));
}

INSTANTIATE_TEST_SUITE_P(WaveletPackets, PacketDecompositionCase,
                         ::testing::Values(Case{1000, 6, 1, 8}, Case{1000, 6, 2, 108},
                                           Case{1000, 6, 4, 20}, Case{1000, 5, 8, 4},
                                           Case{777, 3, 4, 2}, Case{32, 1, 8, 20},
                                           Case{33, 2, 4, 120}, Case{4096, 8, 4, 112},
                                           Case{3001, 7, 8, 14}));

TEST(WaveletPackets, TwoLevelsSplitInTwoGiveTheDocumentedBands) {
    const PacketDecomposition d =
        waveletPacketDecomposition(whiteNoise(64, 1.0, 1), scalingFilter(2), 1, 2, 2);
    ASSERT_EQ(d.bands.size(), 4u);
    const double ends[] = {2.0, 8.0 / 3, 4.0, 16.0 / 3, 8.0};
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(d.bands[k].periodMin, ends[k], 1e-15) << k;
        EXPECT_NEAR(d.bands[k].periodMax, ends[k + 1], 1e-15) << k;
    }
    EXPECT_EQ(std::pair(d.bands[0].rank, d.bands[1].rank),
              (std::pair<std::size_t, std::size_t>{3, 2}));
}

TEST(WaveletPackets, AHigherMinimumLevelLeavesTheFinestBandsOutAndLevelsMustFit) {
    const auto x = whiteNoise(512, 1.0, 4);
    const PacketDecomposition all = waveletPacketDecomposition(x, scalingFilter(8), 1, 4, 2);
    const PacketDecomposition upper = waveletPacketDecomposition(x, scalingFilter(8), 3, 4, 2);
    ASSERT_EQ(upper.bands.size(), 4u);
    EXPECT_EQ(upper.bands.front().periodMin, 8.0);
    for (std::size_t k = 0; k < 4; ++k)
        EXPECT_TRUE(allNear(upper.component(k), all.component(k + 4), 1e-12));
    const std::vector<double> y(32, 1.0);
    EXPECT_NO_THROW(waveletPacketDecomposition(y, scalingFilter(4), 1, 2, 8));
    EXPECT_THROW(waveletPacketDecomposition(y, scalingFilter(4), 1, 3, 8), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition(y, scalingFilter(4), 1, 2, 3), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition(y, scalingFilter(4), 0, 2, 2), std::invalid_argument);
    EXPECT_THROW(waveletPacketDecomposition({}, scalingFilter(4), 1, 1, 1), std::invalid_argument);
}

// 16 samples, Haar, levels 1..2: box c (2 samples wide) shows level-1 detail c
// and level-2 detail c / 2.
TEST(HeisenbergBoxes, EachBoxShowsTheCoefficientUnderItsMiddle) {
    const auto x = whiteNoise(16, 1.0, 31);
    const auto h = scalingFilter(2);
    const HeisenbergBoxes boxes = heisenbergBoxes(x, h, 1, 2, 1, 8);
    ASSERT_EQ(std::pair(boxes.bands.size(), boxes.moduli.size()),
              (std::pair<std::size_t, std::size_t>{2, 16}));
    const auto d1 = packetNode(x, h, 1, naturalOf("d")), d2 = packetNode(x, h, 2, naturalOf("ad"));
    for (std::size_t c = 0; c < 8; ++c) {
        EXPECT_EQ(boxes.moduli[c], std::abs(d1[c])) << c;
        EXPECT_EQ(boxes.moduli[8 + c], std::abs(d2[c / 2])) << c;
    }
}

// The minimum goes to 0 and the maximum to 1; a constant (or a range too small
// for a float) to the middle of the band with scale 0.
TEST(UnitRangeNormalisation, MapsTheRangeOntoZeroToOne) {
    const std::tuple<std::vector<double>, float, float, std::vector<float>> cases[] = {
        {{3.0, 5.0, 4.0, 3.5}, 3.0f, 2.0f, {0.0f, 1.0f, 0.5f, 0.25f}},
        {{-2.5, -2.5, -2.5}, -2.5f, 0.0f, {0.5f, 0.5f, 0.5f}},
        {{0.0, 1e-300, 0.0}, 0.0f, 0.0f, {0.5f, 0.5f, 0.5f}}};
    for (const auto& [values, offset, scale, expected] : cases) {
        std::vector<float> out(values.size(), -1.0f);
        const UnitRange r = normaliseToUnitRange(values, out);
        EXPECT_EQ(std::tuple(r.offset, r.scale, out), std::tuple(offset, scale, expected));
    }
}

} // namespace
} // namespace tarnic
