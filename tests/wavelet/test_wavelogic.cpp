// The clamps of the wavelet windows' boxes and the volume limit of a decomposition.
#include "wavelet/wavelogic.h"

#include <gtest/gtest.h>

using namespace tarnic;

TEST(DetailLevel, ClampedBetweenOneAndFourBelowThePowerOfTwo) {
    // 1024 samples (2^10) allow level 6, 1025 level 7, 32 level 1 only; a
    // number beyond 32 bits counts as 2, within the bounds of the fragment.
    struct {
        double typed;
        int power, level;
    } const cases[] = {{0, 10, 1},   {-3, 10, 1}, {6.9, 10, 6}, {100, 10, 6}, {100, 11, 7},
                       {13, 17, 13}, {3, 5, 1},   {3e9, 10, 2}, {3e9, 5, 1}};
    for (const auto& k : cases)
        EXPECT_EQ(ClampDetailLevel(k.typed, k.power), k.level) << k.typed << ", 2^" << k.power;
}

TEST(PacketVolume, EightMillionPassesAndMoreIsRefused) {
    EXPECT_EQ(std::pair(PacketComponents(4, 13), PacketComponents(1, 1)), std::pair(52, 1));
    EXPECT_EQ(std::pair(PacketVolume(52, 131072), PacketVolume(104, 131072)),
              std::pair(std::int64_t{6815744}, std::int64_t{13631488}));
    EXPECT_TRUE(PacketVolume(61, 131072) <= kMaxPacketVolume &&
                PacketVolume(62, 131072) > kMaxPacketVolume);
    EXPECT_TRUE(WaveletOrder(108) == 8 && IsSymlet(108) && !IsSymlet(20));
}

TEST(WaveletOrder, OutOfBoundsFallsBackAndOddOrdersGoDown) {
    // Symlets start at 8: 7 falls back; 0 is an empty or non-numeric box.
    struct {
        double typed;
        int fallback, lowest, order;
    } const cases[] = {{21, 4, 2, 4},  {19, 4, 2, 18}, {3, 4, 2, 2},  {7, 8, 8, 8},
                       {9, 12, 8, 8}, {0, 6, 2, 6},   {3e9, 10, 2, 10}};
    for (const auto& k : cases)
        EXPECT_EQ(ParseWaveletOrder(k.typed, k.fallback, k.lowest, 20), k.order) << k.typed;
}

TEST(ThresholdShare, BetweenZeroAndTheShareThatLeavesEightCoefficients) {
    // A number beyond single precision keeps the Donoho level, within the share bound.
    struct {
        double typed;
        float donoho;
        int samples;
        float share;
    } const cases[] = {{1.0, 0.5f, 32, 0.75f},    {0.3, 0.5f, 32, 0.3f},
                       {-2, 0.5f, 32, 0.0f},      {5, 0.5f, 1000, 0.992f},
                       {1e300, 0.5f, 1000, 0.5f}, {1e300, 0.9f, 32, 0.75f}};
    for (const auto& k : cases)
        EXPECT_FLOAT_EQ(ThresholdShare(k.typed, k.donoho, k.samples), k.share) << k.typed;
}
