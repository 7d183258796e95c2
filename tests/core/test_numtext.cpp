// Number texts: the form every box, label, mark and file of the program rests on.
#include "core/numtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using tarnic::IntOf;
using tarnic::NumText;
using tarnic::RoundOf;
using tarnic::TextNum;

TEST(NumText, SinglePrecisionPlainForms) {
    EXPECT_EQ(NumText(0.5f), " .5");
    EXPECT_EQ(NumText(-0.5f), "-.5");
    EXPECT_EQ(NumText(0.0f), " 0");
    EXPECT_EQ(NumText(2.5f), " 2.5");
    EXPECT_EQ(NumText(12.3456f), " 12.3456");
    EXPECT_EQ(NumText(0.1f), " .1");            // 0.100000001... rounds to 7 digits
    EXPECT_EQ(NumText(1234567.0f), " 1234567"); // 7 digits still plain
    EXPECT_EQ(NumText(0.0001f), " .0001");
    EXPECT_EQ(NumText(0.00012f), " .00012");
    EXPECT_EQ(NumText(-1.5f), "-1.5");
    EXPECT_EQ(NumText(250.0f), " 250");
}

TEST(NumText, SinglePrecisionScientificForms) {
    EXPECT_EQ(NumText(1e7f), " 1E+07");
    EXPECT_EQ(NumText(1.234567e-5f), " 1.234567E-05");
    EXPECT_EQ(NumText(12345678.0f), " 1.234568E+07");
    EXPECT_EQ(NumText(0.00001f), " 1E-05");
    EXPECT_EQ(NumText(1.50001e8f), " 1.50001E+08");
    EXPECT_EQ(NumText(-3.4e38f), "-3.4E+38");
    EXPECT_EQ(NumText(9.9999e-5f), " 9.9999E-05");
}

TEST(NumText, RoundingCarriesIntoTheExponent) {
    EXPECT_EQ(NumText(9999999.6f), " 1E+07");    // 7 digits round up to 10000000
    EXPECT_EQ(NumText(0.99999999f), " 1");
    EXPECT_EQ(NumText(0.999999999999999999), " 1");
}

TEST(NumText, DoublePrecisionKeepsFifteenDigits) {
    EXPECT_EQ(NumText(0.1), " .1");
    EXPECT_EQ(NumText(1.0 / 3.0), " .333333333333333");
    EXPECT_EQ(NumText(123456789012345.0), " 123456789012345");
    EXPECT_EQ(NumText(1e15), " 1E+15");
    EXPECT_EQ(NumText(1000.00012), " 1000.00012");
    EXPECT_EQ(NumText(1e-300), " 1E-300");
    EXPECT_EQ(NumText(-1.5e100), "-1.5E+100");
    EXPECT_EQ(NumText(-2.0), "-2");
    EXPECT_EQ(NumText(12.3456), " 12.3456");
}

TEST(NumText, IntegersShowAllDigits) {
    EXPECT_EQ(NumText(std::int32_t{32}), " 32");
    EXPECT_EQ(NumText(std::int32_t{0}), " 0");
    EXPECT_EQ(NumText(std::int32_t{-7}), "-7");
    EXPECT_EQ(NumText(std::int32_t{123456789}), " 123456789");
    EXPECT_EQ(NumText(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

TEST(NumText, TextRoundTripsThroughTextNum) {
    // Values of at most 7 significant digits come back exactly; others within
    // the rounding of the seventh digit.
    for (float v : {0.5f, -0.25f, 1.234567e-5f, 12345.67f, 1e30f, -7e-20f})
        EXPECT_EQ(static_cast<float>(TextNum(NumText(v))), v) << NumText(v);
    EXPECT_NEAR(TextNum(NumText(3.1415927f)), 3.1415927, 5e-7);
    for (double v : {0.1, 1.0 / 3.0, 2.718281828459045e-200, 98765.4321})
        EXPECT_NEAR(TextNum(NumText(v)), v, std::fabs(v) * 1e-14) << NumText(v);
}

TEST(TextNum, TakesTheLongestNumericPrefix) {
    EXPECT_EQ(TextNum(" 2048"), 2048.0);
    EXPECT_EQ(TextNum("  12.5abc"), 12.5);
    EXPECT_EQ(TextNum("\t3"), 3.0);
    EXPECT_EQ(TextNum("-.5"), -0.5);
    EXPECT_EQ(TextNum("+7"), 7.0);
    EXPECT_EQ(TextNum("1e3"), 1000.0);
    EXPECT_EQ(TextNum("1.5E-2x"), 0.015);
    EXPECT_EQ(TextNum("1.5D2"), 150.0);
    EXPECT_EQ(TextNum("2048.9"), 2048.9);
    EXPECT_EQ(TextNum("6.9"), 6.9);
}

TEST(TextNum, IncompleteExponentsAndNonNumbersReadAsFarAsTheyGo) {
    EXPECT_EQ(TextNum("1e"), 1.0);
    EXPECT_EQ(TextNum("1e+"), 1.0);
    EXPECT_EQ(TextNum("3.e5"), 3e5);
    EXPECT_EQ(TextNum("abc"), 0.0);
    EXPECT_EQ(TextNum(""), 0.0);
    EXPECT_EQ(TextNum("."), 0.0);
    EXPECT_EQ(TextNum(".e5"), 0.0);
    EXPECT_EQ(TextNum("- 5"), 0.0);
    EXPECT_EQ(TextNum("12 34"), 12.0);
    EXPECT_TRUE(std::isinf(TextNum("1E999")));
}

TEST(IntegerParts, IntTakesTheFloorAndRoundGoesToEven) {
    EXPECT_EQ(IntOf(2.9), 2);
    EXPECT_EQ(IntOf(-0.5), -1);
    EXPECT_EQ(IntOf(2048.9), 2048);
    EXPECT_EQ(RoundOf(2.5), 2);
    EXPECT_EQ(RoundOf(3.5), 4);
    EXPECT_EQ(RoundOf(-2.5), -2);
    EXPECT_EQ(RoundOf(10.67), 11);
    EXPECT_EQ(RoundOf(2048 / 3.0), 683);
}

TEST(IntegerParts, ValuesBeyondThe32BitRangeFail) {
    EXPECT_FALSE(IntOf(3e9).has_value());
    EXPECT_FALSE(IntOf(-3e9).has_value());
    EXPECT_FALSE(RoundOf(std::nan("")).has_value());
    EXPECT_FALSE(IntOf(TextNum("1E999")).has_value());
    EXPECT_EQ(IntOf(2147483647.5), 2147483647);
    EXPECT_EQ(tarnic::IntClamped(1e12), 2147483647);
}
