// The arithmetic of the WTMM chains and multifractal DFA windows without a
// display: parameter repair, the chain file, the chain-drawing decisions, the
// scale axis, the regression lines, the ranges, the checks and the saved text.
#include "multiscale/multiscalelogic.h"
#include "tests/numeric/spectral_support.h"
#include "tests/numeric/test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tarnic;
using namespace tarnic::test;

namespace {

using Counts = std::array<std::int32_t, 7>;
using Records = std::vector<WtmmRecord>;
constexpr float kSep = kWtmmSeparator;
constexpr double kInf = std::numeric_limits<double>::infinity();

ChainStroke seg(int style, std::int32_t from) { return {style, false, from, from + 1}; }
ChainStroke dot(int style, std::int32_t at) { return {style, true, at, at}; }

} // namespace

// ---------------------------------------------------------------------------
// WTMM parameters

TEST(WtmmParameters, TrendOrderWithinZeroToTenZeroBeyond32BitsGammaWithinZeroToOne) {
    // The order is the integer part; 0 also stands for letters; 1e20 falls
    // back to 0 without being clamped to 10.
    for (auto [typed, order] : {std::pair{15.0, 10}, {-3.0, 0}, {2.7, 2}, {10.99, 10}, {-0.5, 0},
                                {0.0, 0}, {1e20, 0}, {2147483647.5, 10}, {kInf, 0}})
        EXPECT_EQ(ReadWtmmTrendOrder(typed), order) << typed;
    // Gamma: 0.001, below a_min / a_max, is handed over unchanged; infinity falls back.
    for (auto [typed, gamma] : {std::pair{1.5, 1.0}, {-0.2, 0.0}, {0.0, 0.0}, {0.25, 0.25},
                                {0.001, 0.001}, {kInf, 0.25}, {-kInf, 0.25}})
        EXPECT_EQ(ReadWtmmGamma(typed), gamma) << typed;
}

// ---------------------------------------------------------------------------
// The chain file

TEST(WtmmChainFile, RecordsAreReadUpToTheCountOrTheFileIsShort) {
    using enum WtmmFileStatus;
    TempDir dir;
    // The text, the record count, the status and the records read.
    for (const auto& [text, total, status, records] : std::initializer_list<
             std::tuple<const char*, std::int64_t, WtmmFileStatus, Records>>{
        // clang-format off
        // Blanks, commas and line ends separate; the fifth record is not read.
        {"12 0.301030\r\n  13,0.5\n0 -9999\r\n7\t1.25\r\n99 9.9\r\n", 4, Read,
         {{12, 0.301030f}, {13, 0.5f}, {0, kSep}, {7, 1.25f}}},
        // One record over two lines, several on one.
        {"5\r\n0.5 6 +0.75 -2 -9999\r\n", 3, Read, {{5, 0.5f}, {6, 0.75f}, {-2, kSep}}},
        // The time index is rounded as an integer reads it: halves to the even one.
        {"2.5 1\r\n3.5 1\r\n4.4 1\r\n", 3, Read, {{2, 1.0f}, {4, 1.0f}, {4, 1.0f}}},
        {"1 0.5\r\n", 0, Read, {}},
        // Too few records, one cut after its time, fields that are no number,
        // a time index beyond 32 bits.
        {"1 0.5\r\n2 0.6\r\n", 3, Short, {}}, {"1 0.5\r\n2\r\n", 2, Short, {}}, {"", 1, Short, {}},
        {"1 0.5\r\nx 0.6\r\n", 2, Short, {}}, {"1 0.5abc\r\n", 1, Short, {}}, {"1 nan\r\n", 1, Short, {}},
        {"1e12 0.5\r\n", 1, Short, {}},
        // clang-format on
    }) {
        SCOPED_TRACE(text);
        writeBytes(dir / "chains", text);
        const WtmmFile read = ReadWtmmFile(dir / "chains", total);
        EXPECT_EQ(read.status, status);
        EXPECT_EQ(read.records, records);
    }
    const WtmmFile missing = ReadWtmmFile(dir / "nothing", 1);
    EXPECT_EQ(missing.status, Missing);
    EXPECT_TRUE(missing.records.empty());
}

// ---------------------------------------------------------------------------
// The Y range and the checks

TEST(WtmmChecks, AFlatFragmentComesFirstThenTheCountsThenTheFileAndItsRange) {
    using V = std::vector<double>;
    const V wavy = {0.0, 1.0, -1.0}, line = {100.0, 200.0, 300.0};
    const Counts none{};
    EXPECT_EQ(CheckWtmmCounts(none, wavy, wavy), WtmmProblem::NoRecords);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 3, 0, -1, 0, 0, 0}, wavy, wavy), WtmmProblem::BadCounts);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 1}, wavy, wavy), WtmmProblem::None);
    // A constant, and a line detrended to rounding noise, say so rather than
    // asking for another threshold; a small but real residue does not.
    EXPECT_EQ(CheckWtmmCounts(none, V(3, 5.0), V(3, 0.0)), WtmmProblem::FlatDetrended);
    EXPECT_EQ(CheckWtmmCounts(none, V(3, 0.0), V(3, 0.0)), WtmmProblem::FlatDetrended);
    EXPECT_EQ(CheckWtmmCounts(none, line, V{1e-13, -2e-13, 1e-13}), WtmmProblem::FlatDetrended);
    EXPECT_EQ(CheckWtmmCounts(none, line, V{1e-3, 0.0, -1e-3}), WtmmProblem::NoRecords);
    // Then what was read: each undrawable run is named. Separators and
    // records without a time take no part in the Y range.
    const WtmmLgRange range = ChainLgRange(
        Records{{5, 0.5f}, {0, kSep}, {-1, kSep}, {9, 1.75f}, {0, 3.0f}, {7, 0.3125f}});
    EXPECT_EQ(std::pair(range.min, range.max), std::pair(0.3125f, 1.75f));
    const WtmmLgRange empty = ChainLgRange(Records{{0, kSep}});
    EXPECT_EQ(std::pair(empty.min, empty.max), std::pair(1E+35f, -1E+35f));
    auto check = [&](WtmmFileStatus status, const Records& records, const V& detrended) {
        return CheckWtmmRun({status, records}, ChainLgRange(records), detrended);
    };
    using enum WtmmFileStatus;
    const Records ok = {{1, 0.5f}, {2, 0.75f}};
    EXPECT_EQ(check(Read, ok, wavy), WtmmProblem::None);
    EXPECT_EQ(check(Missing, {}, wavy), WtmmProblem::FileMissing);
    EXPECT_EQ(check(Short, {}, wavy), WtmmProblem::FileShort);
    EXPECT_EQ(check(Read, {{0, kSep}}, wavy), WtmmProblem::NoChainPoints);
    EXPECT_EQ(check(Read, {{1, 0.5f}, {0, kSep}, {9, 0.5f}}, wavy), WtmmProblem::OneScale)
        << "Range 0; the separator does not widen it";
    EXPECT_EQ(check(Read, ok, {2.0, 2.0, 2.0}), WtmmProblem::FlatDetrended);
    EXPECT_EQ(check(Read, ok, {0.0, std::nan(""), 1.0}), WtmmProblem::FlatDetrended);
}

// ---------------------------------------------------------------------------
// The chain-drawing decisions

TEST(WtmmChainPlan, StrokesFollowTheChainRules) {
    for (const auto& [rule, counts, records, strokes] : std::initializer_list<
             std::tuple<const char*, Counts, Records, std::vector<ChainStroke>>>{
        // clang-format off
        {"a chain is a polyline through all its records", {3, 0, 0, 0, 0, 0, 0},
         {{4, 0.3f}, {5, 0.4f}, {5, 0.5f}}, {seg(1, 1), seg(1, 2)}},
        {"the next chain starts with a dot at its first record", {0, 5, 0, 0, 0, 0, 0},
         {{4, 0.3f}, {5, 0.4f}, {0, kSep}, {20, 0.3f}, {21, 0.4f}}, {seg(2, 1), dot(2, 4), seg(2, 4)}},
        {"a class of 0 or 1 records draws nothing but counts in the base", {0, 1, 2, 0, 0, 0, 1},
         {{8, 0.5f}, {3, 0.3f}, {4, 0.4f}, {10, 0.9f}}, {seg(3, 2), dot(7, 4)}},
        {"a separator last of all ends the drawing quietly", {3, 0, 0, 0, 0, 0, 0},
         {{4, 0.3f}, {5, 0.4f}, {0, kSep}}, {seg(1, 1)}},
        {"a separator last of a class dots the next class in the style before", {3, 2, 0, 0, 0, 0, 0},
         {{4, 0.3f}, {5, 0.4f}, {0, kSep}, {30, 0.3f}, {31, 0.4f}}, {seg(1, 1), dot(1, 4), seg(2, 4)}},
        {"of two one-record chains only the second is set", {0, 0, 0, 3, 0, 0, 0},
         {{4, 0.3f}, {0, kSep}, {9, 0.6f}}, {dot(4, 3)}},
        {"each one-record chain behind a separator is set", {0, 0, 0, 0, 5, 0, 0},
         {{4, 0.3f}, {0, kSep}, {9, 0.6f}, {-1, kSep}, {12, 0.3f}}, {dot(5, 3), dot(5, 5)}},
        {"a separator is known by its logarithm alone", {0, 0, 0, 0, 0, 3, 0},
         {{1, 0.3f}, {0, 0.5f}, {3, 0.6f}}, {seg(6, 1), seg(6, 2)}},
        {"class 7 is dots only", {2, 0, 0, 0, 0, 0, 3},
         {{1, 0.3f}, {2, 0.4f}, {7, 1.0f}, {9, 1.1f}, {11, 0.9f}}, {seg(1, 1), dot(7, 3), dot(7, 4), dot(7, 5)}},
        {"nothing is drawn beyond the records read", {2, 2, 0, 0, 0, 0, 0}, {{1, 0.3f}}, {}},
        // clang-format on
    })
        EXPECT_EQ(PlanWtmmChains(counts, records), strokes) << rule;
}

// ---------------------------------------------------------------------------
// Multifractal DFA parameters

TEST(MfdfaParameters, OrderMeasureAndTheMaximumShownAtLoad) {
    EXPECT_EQ(MfdfaMaxScaleShown(400), 80);
    EXPECT_EQ(MfdfaMaxScaleShown(1004), 200) << "the integer part of a fifth";
    for (auto [typed, order] : {std::pair{12.0, 10}, {-1.0, 0}, {3.9, 3}, {1e20, 4}})
        EXPECT_EQ(ReadMfdfaDetrendOrder(typed), order) << typed << ": beyond 32 bits the default";
    for (auto [typed, measure] : {std::pair{7.0, 1}, {-2.0, 0}, {0.9, 0}, {1e20, 0}})
        EXPECT_EQ(ReadMfdfaMeasureType(typed), measure) << typed;
}

TEST(MfdfaParameters, TheScalesAreSettledFromTheFragmentLength) {
    // The maximum: the value shown at Load stays; Round(200.6) for 300 and the
    // default; at least 40, but for 190 samples 40 is above 38, then Round(38).
    for (auto [typed, samples, scale] :
         {std::tuple{200.0, 1003, 200}, {300.0, 1003, 201}, {10.0, 1003, 40}, {1e20, 1003, 201},
          {80.0, 400, 80}, {81.0, 400, 80}, {10.0, 190, 38}, {101.0, 502, 100}, {2000.0, 10000, 2000}})
        EXPECT_EQ(ReadMfdfaMaxScale(typed, samples), scale) << typed << " of " << samples;
    // The minimum, at most half the maximum: Round(20.5) goes to the even 20, Round(21.5) to 22.
    for (auto [typed, maxScale, scale] : {std::tuple{5.0, 40, 20}, {30.0, 40, 20}, {30.0, 41, 20},
                                          {30.0, 43, 22}, {30.0, 80, 30}, {1e20, 80, 20}})
        EXPECT_EQ(ReadMfdfaMinScale(typed, maxScale), scale) << typed << ", " << maxScale;
    // At most 200 scales.
    for (auto [max, count] : {std::pair{80, 60}, {2000, 200}, {220, 200}, {219, 199}})
        EXPECT_EQ(MfdfaScaleCount(20, max), count) << max;
}

// ---------------------------------------------------------------------------
// The scale axis, the regression lines and the ranges

TEST(MfdfaAxes, TheScaleAxisRunsFromTheMinimumToAFifthOfTheFragment) {
    const std::vector<float> lg = MfdfaLgScales(10, 500, 11);
    ASSERT_EQ(lg.size(), 11u);
    for (int s = 0; s < 11; ++s)
        EXPECT_TRUE(isNear(lg[static_cast<std::size_t>(s)], 1.0 + 0.1 * s, 1e-6)) << s;
    // The upper end is log10(1003 / 5), not a maximum scale.
    const std::vector<float> other = MfdfaLgScales(20, 1003, 60);
    EXPECT_EQ(other.front(), static_cast<float>(std::log(20.0) / std::log(10.0)));
    EXPECT_EQ(other.back(), static_cast<float>(std::log(200.6) / std::log(10.0)));
}

TEST(MfdfaAxes, LeastSquaresLinesAlfaRangeWithoutTheFirstPointAndEveryTenthQ) {
    const std::vector<float> x = {0, 1, 2, 3};
    const RegressionLine exact = MfdfaRegression(x, std::vector<float>{1, 3, 5, 7});
    EXPECT_EQ(std::tuple(exact.xBar, exact.yBar, exact.slope, exact.at(0)),
              std::tuple(1.5, 4.0, 2.0, 1.0));
    const RegressionLine zigzag = MfdfaRegression(x, std::vector<float>{0, 1, 0, 1});
    EXPECT_TRUE(isNear(zigzag.slope, 0.2, 1e-15)) << "Sxy = 1, Sxx = 5";
    // The Alfa range leaves out the first point and non-positive F; the F
    // range takes every point, negative ones too.
    const SpectrumRanges r = MfdfaSpectrumRanges(std::vector<double>{0.1, 0.2, 0.3, 0.4, 0.5},
                                                 std::vector<double>{0.9, 0.0, 0.5, 1.0, -0.2});
    EXPECT_EQ(std::tuple(r.alfaMin, r.alfaMax, r.fMin, r.fMax), std::tuple(0.3f, 0.4f, -0.2f, 1.0f));
    // 12 q values at 2 scales: q number 1 and 11 count, q number 2 does not.
    std::vector<double> table(24, 0.5);
    table[1] = 100.0, table[12 + 10] = 2.0, table[0] = -1.0;
    const TableRange t = MfdfaTableRange(table, 12, 2);
    EXPECT_EQ(std::pair(t.lo, t.hi), std::pair(-1.0, 2.0));
}

TEST(MfdfaChecks, EachUndrawableRunIsNamed) {
    const std::vector<double> alfa = {0.1, 0.2, 0.3, 0.4}, table = {0.1, 0.2, 0.3, 0.4};
    const std::vector<double> good = {0, 0.5, 1, 0};
    auto check = [&](const std::vector<double>& f, const std::vector<double>& t, int q = 2,
                     int scales = 2, int scalesAsked = 2) {
        return CheckMfdfaRun(alfa, f, t, q, scales, 2, scalesAsked);
    };
    EXPECT_EQ(check(good, table), MfdfaProblem::None);
    EXPECT_EQ(check({1, 0, 0, 0}, table), MfdfaProblem::NoSpectrum) << "the first point is out";
    EXPECT_EQ(check({0, 0, 1, 0}, table), MfdfaProblem::OneAlfa);
    EXPECT_EQ(check({1, 1, 1, 1}, table), MfdfaProblem::FlatSpectrum);
    EXPECT_EQ(check(good, {0.3, 0.3, 0.3, 0.3}), MfdfaProblem::FlatTable);
    EXPECT_EQ(check(good, table, 2, 1), MfdfaProblem::BadGrid) << "one scale";
    EXPECT_EQ(check(good, table, 0, 2), MfdfaProblem::BadGrid) << "no q";
    EXPECT_EQ(check(good, table, 2, 2, 1), MfdfaProblem::BadGrid) << "more scales than asked";
    EXPECT_EQ(check({0, std::nan(""), 1, 0}, table), MfdfaProblem::NotFinite);
    EXPECT_EQ(check(good, {0.1, 0.2, INFINITY, 0.4}), MfdfaProblem::NotFinite);
}

// ---------------------------------------------------------------------------
// The saved spectrum

TEST(MfdfaFile, FourHeaderLinesThenThePositivePointsFirstIncluded) {
    const std::string header = "' Detrended polynomial order= 10\r\n"
                               "' Type of signal`s variability measure= 1\r\n"
                               "' Minimum scale value (# of samples)= 22\r\n"
                               "' Maximum scale value (# of samples)= 201\r\n";
    EXPECT_EQ(SingularitySpectrumText(10, 1, 22, 201, std::vector<double>{0.25, 0.5, 0.75, 1.25},
                                      std::vector<double>{0.5, 0.0, 1.0, -0.125}),
              header + " .25 .5\r\n .75 1\r\n");
    EXPECT_EQ(SingularitySpectrumText(10, 1, 22, 201, {}, {}), header);
    // Negative Alfa and double-precision texts.
    EXPECT_EQ(SingularitySpectrumText(10, 1, 22, 201, std::vector<double>{-0.1, 0.123456789012345678},
                                      std::vector<double>{0.3, 0.999999999}),
              header + "-.1 .3\r\n .123456789012346 .999999999\r\n");
}
