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
    EXPECT_EQ(ClampDetailLevel(3e9, 10), 2) << "a number beyond 32 bits gives 2 unbounded";
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
