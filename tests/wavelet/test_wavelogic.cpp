// The clamps of the wavelet windows' boxes and the volume limit of a decomposition.
#include "wavelet/wavelogic.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tarnic;

TEST(DetailLevel, ClampedBetweenOneAndFourBelowThePowerOfTwo) {
    // 1024 samples (2^10) allow level 6, 1025 level 7, 32 level 1 only; a
    // number beyond 32 bits counts as 2, within the bounds of the fragment.
    for (auto [typed, power, level] :
         {std::tuple{0.0, 10, 1}, {-3.0, 10, 1}, {6.9, 10, 6}, {100.0, 10, 6}, {100.0, 11, 7},
          {13.0, 17, 13}, {3.0, 5, 1}, {3e9, 10, 2}, {3e9, 5, 1}})
        EXPECT_EQ(ClampDetailLevel(typed, power), level) << typed << ", 2^" << power;
}

TEST(PacketVolume, EightMillionPassesAndMoreIsRefused) {
    EXPECT_EQ(std::pair(PacketComponents(4, 13), PacketComponents(1, 1)), std::pair(52, 1));
    EXPECT_TRUE(PacketVolume(61, 131072) <= kMaxPacketVolume &&
                PacketVolume(62, 131072) > kMaxPacketVolume);
    EXPECT_TRUE(WaveletOrder(108) == 8 && IsSymlet(108) && !IsSymlet(20));
}

TEST(WaveletOrder, OutOfBoundsFallsBackAndOddOrdersGoDown) {
    // Symlets start at 8: 7 falls back; 0 is an empty or non-numeric box.
    for (auto [typed, fallback, lowest, order] :
         {std::tuple{21.0, 4, 2, 4}, {19.0, 4, 2, 18}, {3.0, 4, 2, 2}, {7.0, 8, 8, 8}, {9.0, 12, 8, 8},
          {0.0, 6, 2, 6}, {3e9, 10, 2, 10}})
        EXPECT_EQ(ParseWaveletOrder(typed, fallback, lowest, 20), order) << typed;
}

TEST(ThresholdShare, BetweenZeroAndTheShareThatLeavesEightCoefficients) {
    // A number beyond single precision keeps the Donoho level, within the share bound.
    for (auto [typed, donoho, samples, share] :
         {std::tuple{1.0, 0.5f, 32, 0.75f}, {0.3, 0.5f, 32, 0.3f}, {-2.0, 0.5f, 32, 0.0f},
          {5.0, 0.5f, 1000, 0.992f}, {1e300, 0.5f, 1000, 0.5f}, {1e300, 0.9f, 32, 0.75f}})
        EXPECT_FLOAT_EQ(ThresholdShare(typed, donoho, samples), share) << typed;
}
