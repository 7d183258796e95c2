// Number texts: the form every box, label, mark and file of the program rests on.
#include "core/numtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tarnic;

template <class T> struct Shown { T value; const char* text; };

TEST(NumText, SevenDigitsForSinglesFifteenForDoublesAllForIntegers) {
    const Shown<float> singles[] = {
        {0.5f, " .5"}, {-0.5f, "-.5"}, {0.0f, " 0"}, {12.3456f, " 12.3456"}, {-1.5f, "-1.5"},
        {0.1f, " .1"} /* 0.100000001... to 7 digits */, {1234567.0f, " 1234567"},
        {0.0001f, " .0001"}, {0.00012f, " .00012"}, {250.0f, " 250"}, {1e7f, " 1E+07"},
        {1.234567e-5f, " 1.234567E-05"}, {12345678.0f, " 1.234568E+07"}, {0.00001f, " 1E-05"},
        {1.50001e8f, " 1.50001E+08"}, {-3.4e38f, "-3.4E+38"}, {9.9999e-5f, " 9.9999E-05"},
        // Rounding to 7 digits carries into the exponent.
        {9999999.6f, " 1E+07"}, {0.99999999f, " 1"}};
    for (const auto& [v, text] : singles) EXPECT_EQ(NumText(v), text) << v;
    const Shown<double> doubles[] = {
        {0.1, " .1"}, {1.0 / 3.0, " .333333333333333"}, {123456789012345.0, " 123456789012345"},
        {1e15, " 1E+15"}, {1000.00012, " 1000.00012"}, {1e-300, " 1E-300"},
        {-1.5e100, "-1.5E+100"}, {-2.0, "-2"}, {0.999999999999999999, " 1"}};
    for (const auto& [v, text] : doubles) EXPECT_EQ(NumText(v), text) << v;
    const Shown<std::int32_t> integers[] = {{32, " 32"}, {0, " 0"}, {-7, "-7"},
        {123456789, " 123456789"}, {std::numeric_limits<std::int32_t>::min(), "-2147483648"}};
    for (const auto& [v, text] : integers) EXPECT_EQ(NumText(v), text) << v;
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

TEST(TextNum, TakesTheLongestNumericPrefixAndZeroWithoutOne) {
    const Shown<double> read[] = {
        {2048, " 2048"}, {12.5, "  12.5abc"}, {3, "\t3"}, {-0.5, "-.5"}, {7, "+7"},
        {1000, "1e3"}, {0.015, "1.5E-2x"}, {150, "1.5D2"}, {2048.9, "2048.9"}, {6.9, "6.9"},
        // Incomplete exponents and non-numbers read as far as they go.
        {1, "1e"}, {1, "1e+"}, {3e5, "3.e5"}, {0, "abc"}, {0, ""}, {0, "."}, {0, ".e5"},
        {0, "- 5"}, {12, "12 34"}, {HUGE_VAL, "1E999"}};
    for (const auto& [v, text] : read) EXPECT_EQ(TextNum(text), v) << '"' << text << '"';
}

TEST(IntegerParts, IntTakesTheFloorRoundGoesToEvenAndBothFailBeyond32Bits) {
    const Shown<double> ints[] = {{2, "2.9"}, {-1, "-0.5"}, {2048, "2048.9"},
                                  {2147483647, "2147483647.5"}};
    for (const auto& [v, text] : ints) EXPECT_EQ(IntOf(TextNum(text)), v) << text;
    const Shown<double> rounds[] = {{2, "2.5"}, {4, "3.5"}, {-2, "-2.5"}, {11, "10.67"}};
    for (const auto& [v, text] : rounds) EXPECT_EQ(RoundOf(TextNum(text)), v) << text;
    EXPECT_EQ(RoundOf(2048 / 3.0), 683);
    for (double x : {3e9, -3e9, HUGE_VAL}) EXPECT_FALSE(IntOf(x).has_value()) << x;
    EXPECT_FALSE(RoundOf(std::nan("")).has_value());
    EXPECT_EQ(IntClamped(1e12), 2147483647);
}
