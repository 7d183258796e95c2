// The clamp of the detail level and the volume limit of a decomposition.
#include "wavelet/wavelogic.h"

#include <gtest/gtest.h>

using namespace tarnic;

TEST(DetailLevel, ClampedBetweenOneAndFourBelowThePowerOfTwo) {
    EXPECT_EQ(ClampDetailLevel(0, 10), 1);
    EXPECT_EQ(ClampDetailLevel(-3, 10), 1);
    EXPECT_EQ(ClampDetailLevel(6.9, 10), 6);
    EXPECT_EQ(ClampDetailLevel(100, 10), 6) << "1024 samples allow level 6";
    EXPECT_EQ(ClampDetailLevel(100, 11), 7) << "1025 samples allow level 7";
    EXPECT_EQ(ClampDetailLevel(13, 17), 13);
    EXPECT_EQ(ClampDetailLevel(3, 5), 1) << "32 samples allow level 1 only";
    EXPECT_EQ(ClampDetailLevel(3e9, 10), 2) << "a number beyond 32 bits counts as 2";
    EXPECT_EQ(ClampDetailLevel(3e9, 5), 1) << "within the bounds of a 32-sample fragment";
}

TEST(PacketVolume, EightMillionPassesAndMoreIsRefused) {
    EXPECT_EQ(PacketComponents(4, 13), 52);
    EXPECT_EQ(PacketComponents(1, 1), 1);
    EXPECT_EQ(PacketVolume(52, 131072), 6815744);
    EXPECT_LE(PacketVolume(52, 131072), kMaxPacketVolume);
    EXPECT_EQ(PacketVolume(104, 131072), 13631488);
    EXPECT_GT(PacketVolume(104, 131072), kMaxPacketVolume);
    EXPECT_EQ(PacketVolume(61, 131072) <= kMaxPacketVolume, true);
    EXPECT_EQ(PacketVolume(62, 131072) <= kMaxPacketVolume, false);
    EXPECT_EQ(WaveletOrder(108), 8);
    EXPECT_TRUE(IsSymlet(108));
    EXPECT_FALSE(IsSymlet(20));
}

TEST(WaveletOrder, OutOfBoundsFallsBackAndOddOrdersGoDown) {
    EXPECT_EQ(ParseWaveletOrder(21, 4, 2, 20), 4);
    EXPECT_EQ(ParseWaveletOrder(19, 4, 2, 20), 18);
    EXPECT_EQ(ParseWaveletOrder(3, 4, 2, 20), 2);
    EXPECT_EQ(ParseWaveletOrder(7, 8, 8, 20), 8) << "symlets start at 8: 7 falls back";
    EXPECT_EQ(ParseWaveletOrder(9, 12, 8, 20), 8);
    EXPECT_EQ(ParseWaveletOrder(0, 6, 2, 20), 6) << "an empty or non-numeric box";
    EXPECT_EQ(ParseWaveletOrder(3e9, 10, 2, 20), 10);
}

TEST(ThresholdShare, BetweenZeroAndTheShareThatLeavesEightCoefficients) {
    EXPECT_FLOAT_EQ(ThresholdShare(1.0, 0.5f, 32), 0.75f);
    EXPECT_FLOAT_EQ(ThresholdShare(0.3, 0.5f, 32), 0.3f);
    EXPECT_FLOAT_EQ(ThresholdShare(-2, 0.5f, 32), 0.0f);
    EXPECT_FLOAT_EQ(ThresholdShare(5, 0.5f, 1000), 0.992f);
    EXPECT_FLOAT_EQ(ThresholdShare(1e300, 0.5f, 1000), 0.5f) << "beyond single precision";
    EXPECT_FLOAT_EQ(ThresholdShare(1e300, 0.9f, 32), 0.75f) << "the share bound still holds";
}
