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
constexpr float kSep = kWtmmSeparator;

ChainStroke seg(int style, std::int32_t from) {
    return {style, false, from, from + 1};
}
ChainStroke dot(int style, std::int32_t at) {
    return {style, true, at, at};
}

std::vector<ChainStroke> plan(const Counts& counts, const std::vector<WtmmRecord>& records) {
    return PlanWtmmChains(counts, records);
}

} // namespace

// ---------------------------------------------------------------------------
// WTMM parameters

TEST(WtmmParameters, TrendOrderIsTheIntegerPartWithinZeroToTen) {
    EXPECT_EQ(ReadWtmmTrendOrder(15), 10);
    EXPECT_EQ(ReadWtmmTrendOrder(-3), 0);
    EXPECT_EQ(ReadWtmmTrendOrder(2.7), 2);
    EXPECT_EQ(ReadWtmmTrendOrder(10.99), 10);
    EXPECT_EQ(ReadWtmmTrendOrder(-0.5), 0);
    EXPECT_EQ(ReadWtmmTrendOrder(0), 0) << "letters read as 0";
}

TEST(WtmmParameters, AnOrderBeyondThirtyTwoBitsFallsBackToZeroWithoutClamping) {
    EXPECT_EQ(ReadWtmmTrendOrder(1e20), 0) << "not 10";
    EXPECT_EQ(ReadWtmmTrendOrder(2147483647.5), 10) << "still fits";
    EXPECT_EQ(ReadWtmmTrendOrder(std::numeric_limits<double>::infinity()), 0);
}

TEST(WtmmParameters, GammaIsClampedToZeroToOne) {
    EXPECT_EQ(ReadWtmmGamma(1.5), 1.0);
    EXPECT_EQ(ReadWtmmGamma(-0.2), 0.0);
    EXPECT_EQ(ReadWtmmGamma(0), 0.0);
    EXPECT_EQ(ReadWtmmGamma(0.25), 0.25);
    EXPECT_EQ(ReadWtmmGamma(0.001), 0.001) << "below a_min / a_max is handed over unchanged";
    EXPECT_EQ(ReadWtmmGamma(std::numeric_limits<double>::infinity()), 0.25);
    EXPECT_EQ(ReadWtmmGamma(-std::numeric_limits<double>::infinity()), 0.25);
}

// ---------------------------------------------------------------------------
// The chain file

class WtmmChainFile : public ::testing::Test {
  protected:
    std::filesystem::path put(const std::string& text) {
        writeBytes(dir / "chains", text);
        return dir / "chains";
    }
    TempDir dir;
};

TEST_F(WtmmChainFile, RecordsAreSeparatedByBlanksCommasAndLineEnds) {
    const auto file = put("12 0.301030\r\n  13,0.5\n0 -9999\r\n7\t1.25\r\n99 9.9\r\n");
    const WtmmFile read = ReadWtmmFile(file, 4);
    ASSERT_EQ(read.status, WtmmFileStatus::Read);
    const std::vector<WtmmRecord> expected = {
        {12, 0.301030f}, {13, 0.5f}, {0, -9999.0f}, {7, 1.25f}};
    EXPECT_EQ(read.records, expected) << "the fifth record is not read";
}

TEST_F(WtmmChainFile, OneRecordMaySpreadOverTwoLinesAndSeveralShareOne) {
    const auto file = put("5\r\n0.5 6 +0.75 -2 -9999\r\n");
    const WtmmFile read = ReadWtmmFile(file, 3);
    ASSERT_EQ(read.status, WtmmFileStatus::Read);
    EXPECT_EQ(read.records, (std::vector<WtmmRecord>{{5, 0.5f}, {6, 0.75f}, {-2, -9999.0f}}));
}

TEST_F(WtmmChainFile, TheTimeIndexIsRoundedAsAnIntegerReadsIt) {
    const WtmmFile read = ReadWtmmFile(put("2.5 1\r\n3.5 1\r\n4.4 1\r\n"), 3);
    ASSERT_EQ(read.status, WtmmFileStatus::Read);
    EXPECT_EQ(read.records[0].time, 2) << "halves to the even one";
    EXPECT_EQ(read.records[1].time, 4);
    EXPECT_EQ(read.records[2].time, 4);
}

TEST_F(WtmmChainFile, AMissingFileIsMissing) {
    const WtmmFile read = ReadWtmmFile(dir / "nothing", 1);
    EXPECT_EQ(read.status, WtmmFileStatus::Missing);
    EXPECT_TRUE(read.records.empty());
}

TEST_F(WtmmChainFile, FewerRecordsThanCountedAreShort) {
    EXPECT_EQ(ReadWtmmFile(put("1 0.5\r\n2 0.6\r\n"), 3).status, WtmmFileStatus::Short);
    EXPECT_EQ(ReadWtmmFile(put("1 0.5\r\n2\r\n"), 2).status, WtmmFileStatus::Short)
        << "a record cut after its time";
    EXPECT_EQ(ReadWtmmFile(put(""), 1).status, WtmmFileStatus::Short);
    EXPECT_TRUE(ReadWtmmFile(put("1 0.5\r\n2 0.6\r\n"), 3).records.empty());
}

TEST_F(WtmmChainFile, AFieldThatIsNoNumberMakesTheFileShort) {
    EXPECT_EQ(ReadWtmmFile(put("1 0.5\r\nx 0.6\r\n"), 2).status, WtmmFileStatus::Short);
    EXPECT_EQ(ReadWtmmFile(put("1 0.5abc\r\n"), 1).status, WtmmFileStatus::Short);
    EXPECT_EQ(ReadWtmmFile(put("1 nan\r\n"), 1).status, WtmmFileStatus::Short);
    EXPECT_EQ(ReadWtmmFile(put("1e12 0.5\r\n"), 1).status, WtmmFileStatus::Short)
        << "a time index beyond 32 bits";
}

TEST_F(WtmmChainFile, NoRecordsCountedReadsNothing) {
    const WtmmFile read = ReadWtmmFile(put("1 0.5\r\n"), 0);
    EXPECT_EQ(read.status, WtmmFileStatus::Read);
    EXPECT_TRUE(read.records.empty());
}

TEST(WtmmScratchPlace, ARunTakesPlaceInAPrivateDirectoryThatLeavesNothingBehind) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::path where;
    try {
        WtmmScratchPlace place;
        where = std::filesystem::current_path();
        EXPECT_NE(where, before);
        EXPECT_EQ(place.file(), where / "n12c43k67r13t72c76h18i04");
        EXPECT_TRUE(std::filesystem::is_empty(where)) << "a fresh directory";
        std::ofstream(place.file()) << "1 0.5\r\n";
        std::ofstream(where / "other") << "left by the library";
        throw std::runtime_error("a failing step");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(std::filesystem::current_path(), before);
    EXPECT_FALSE(std::filesystem::exists(where)) << "directory and files are gone";

    // Two places at once (two runs of two programs) never share a directory.
    WtmmScratchPlace first;
    const std::filesystem::path firstFile = first.file();
    {
        WtmmScratchPlace second;
        EXPECT_NE(second.file(), firstFile);
    }
    EXPECT_TRUE(std::filesystem::exists(firstFile.parent_path()));
}

// ---------------------------------------------------------------------------
// The Y range and the checks

TEST(WtmmRange, SeparatorsAndRecordsWithoutATimeDoNotCount) {
    const std::vector<WtmmRecord> records = {{5, 0.5f},  {0, -9999.0f}, {-1, -9999.0f},
                                             {9, 1.75f}, {0, 3.0f},     {7, 0.3125f}};
    const WtmmLgRange range = ChainLgRange(records);
    EXPECT_EQ(range.min, 0.3125f);
    EXPECT_EQ(range.max, 1.75f);
    const WtmmLgRange none = ChainLgRange(std::vector<WtmmRecord>{{0, -9999.0f}});
    EXPECT_EQ(none.min, 1E+35f);
    EXPECT_EQ(none.max, -1E+35f);
}

TEST(WtmmChecks, AFlatFragmentComesFirstThenTheCounts) {
    const std::vector<double> wavy = {0.0, 1.0, -1.0};
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 0}, wavy, wavy), WtmmProblem::NoRecords);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 3, 0, -1, 0, 0, 0}, wavy, wavy), WtmmProblem::BadCounts);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 1}, wavy, wavy), WtmmProblem::None);
    // A constant, and a line detrended to rounding noise, say so rather than
    // asking for another threshold.
    const std::vector<double> constant(3, 5.0), zeros(3, 0.0);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 0}, constant, zeros), WtmmProblem::FlatDetrended);
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 0}, zeros, zeros), WtmmProblem::FlatDetrended);
    const std::vector<double> line = {100.0, 200.0, 300.0}, noise = {1e-13, -2e-13, 1e-13};
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 0}, line, noise), WtmmProblem::FlatDetrended);
    const std::vector<double> small = {1e-3, 0.0, -1e-3};
    EXPECT_EQ(CheckWtmmCounts(Counts{0, 0, 0, 0, 0, 0, 0}, line, small), WtmmProblem::NoRecords);
}

TEST(WtmmChecks, EachUndrawableRunIsNamed) {
    const std::vector<double> wavy = {0.0, 1.0, -1.0};
    WtmmFile ok{WtmmFileStatus::Read, {{1, 0.5f}, {2, 0.75f}}};
    const WtmmLgRange range = ChainLgRange(ok.records);
    EXPECT_EQ(CheckWtmmRun(ok, range, wavy), WtmmProblem::None);
    EXPECT_EQ(CheckWtmmRun({WtmmFileStatus::Missing, {}}, {}, wavy), WtmmProblem::FileMissing);
    EXPECT_EQ(CheckWtmmRun({WtmmFileStatus::Short, {}}, {}, wavy), WtmmProblem::FileShort);
    WtmmFile separators{WtmmFileStatus::Read, {{0, -9999.0f}}};
    EXPECT_EQ(CheckWtmmRun(separators, ChainLgRange(separators.records), wavy),
              WtmmProblem::NoChainPoints);
    WtmmFile flat{WtmmFileStatus::Read, {{1, 0.5f}, {0, -9999.0f}, {9, 0.5f}}};
    EXPECT_EQ(CheckWtmmRun(flat, ChainLgRange(flat.records), wavy), WtmmProblem::OneScale)
        << "Range 0; the separator does not widen it";
    EXPECT_EQ(CheckWtmmRun(ok, range, std::vector<double>{2.0, 2.0, 2.0}),
              WtmmProblem::FlatDetrended);
    EXPECT_EQ(CheckWtmmRun(ok, range, std::vector<double>{0.0, std::nan(""), 1.0}),
              WtmmProblem::FlatDetrended);
}

// ---------------------------------------------------------------------------
// The chain-drawing decisions

TEST(WtmmChainPlan, AChainIsAPolylineThroughAllItsRecords) {
    EXPECT_EQ(plan({3, 0, 0, 0, 0, 0, 0}, {{4, 0.3f}, {5, 0.4f}, {5, 0.5f}}),
              (std::vector<ChainStroke>{seg(1, 1), seg(1, 2)}));
}

TEST(WtmmChainPlan, TheNextChainStartsWithADotAtItsFirstRecord) {
    // a b | c d in class 2.
    EXPECT_EQ(
        plan({0, 5, 0, 0, 0, 0, 0}, {{4, 0.3f}, {5, 0.4f}, {0, kSep}, {20, 0.3f}, {21, 0.4f}}),
        (std::vector<ChainStroke>{seg(2, 1), dot(2, 4), seg(2, 4)}));
}

TEST(WtmmChainPlan, AClassOfZeroOrOneRecordDrawsNothingButCountsInTheBase) {
    // Class 2 holds one record, class 3 two, class 7 one.
    EXPECT_EQ(plan({0, 1, 2, 0, 0, 0, 1}, {{8, 0.5f}, {3, 0.3f}, {4, 0.4f}, {10, 0.9f}}),
              (std::vector<ChainStroke>{seg(3, 2), dot(7, 4)}));
}

TEST(WtmmChainPlan, ASeparatorLastOfAllEndsTheDrawingQuietly) {
    EXPECT_EQ(plan({3, 0, 0, 0, 0, 0, 0}, {{4, 0.3f}, {5, 0.4f}, {0, kSep}}),
              (std::vector<ChainStroke>{seg(1, 1)}));
}

TEST(WtmmChainPlan, ASeparatorLastOfAClassDotsTheNextClassInTheStyleBefore) {
    // a b | in class 1, then c d in class 2: c is set with the pen of class 1.
    EXPECT_EQ(
        plan({3, 2, 0, 0, 0, 0, 0}, {{4, 0.3f}, {5, 0.4f}, {0, kSep}, {30, 0.3f}, {31, 0.4f}}),
        (std::vector<ChainStroke>{seg(1, 1), dot(1, 4), seg(2, 4)}));
}

TEST(WtmmChainPlan, OfTwoOneRecordChainsOnlyTheSecondIsSet) {
    EXPECT_EQ(plan({0, 0, 0, 3, 0, 0, 0}, {{4, 0.3f}, {0, kSep}, {9, 0.6f}}),
              (std::vector<ChainStroke>{dot(4, 3)}));
    // A third one: each one behind a separator is set.
    EXPECT_EQ(
        plan({0, 0, 0, 0, 5, 0, 0}, {{4, 0.3f}, {0, kSep}, {9, 0.6f}, {-1, kSep}, {12, 0.3f}}),
        (std::vector<ChainStroke>{dot(5, 3), dot(5, 5)}));
}

TEST(WtmmChainPlan, ASeparatorIsKnownByItsLogarithmAlone) {
    // A time index of 0 with another logarithm is an ordinary record here.
    EXPECT_EQ(plan({0, 0, 0, 0, 0, 3, 0}, {{1, 0.3f}, {0, 0.5f}, {3, 0.6f}}),
              (std::vector<ChainStroke>{seg(6, 1), seg(6, 2)}));
}

TEST(WtmmChainPlan, ClassSevenIsDotsOnly) {
    EXPECT_EQ(plan({2, 0, 0, 0, 0, 0, 3}, {{1, 0.3f}, {2, 0.4f}, {7, 1.0f}, {9, 1.1f}, {11, 0.9f}}),
              (std::vector<ChainStroke>{seg(1, 1), dot(7, 3), dot(7, 4), dot(7, 5)}));
}

TEST(WtmmChainPlan, NothingIsDrawnBeyondTheRecordsRead) {
    EXPECT_TRUE(plan({2, 2, 0, 0, 0, 0, 0}, {{1, 0.3f}}).empty());
}

// ---------------------------------------------------------------------------
// Multifractal DFA parameters

TEST(MfdfaParameters, TheMaximumShownAtLoadIsTheIntegerPartOfAFifth) {
    EXPECT_EQ(MfdfaMaxScaleShown(400), 80);
    EXPECT_EQ(MfdfaMaxScaleShown(1003), 200);
    EXPECT_EQ(MfdfaMaxScaleShown(1004), 200);
}

TEST(MfdfaParameters, OrderAndMeasureAreClampedOrFallBack) {
    EXPECT_EQ(ReadMfdfaDetrendOrder(12), 10);
    EXPECT_EQ(ReadMfdfaDetrendOrder(-1), 0);
    EXPECT_EQ(ReadMfdfaDetrendOrder(3.9), 3);
    EXPECT_EQ(ReadMfdfaDetrendOrder(1e20), 4) << "beyond 32 bits: the default";
    EXPECT_EQ(ReadMfdfaMeasureType(7), 1);
    EXPECT_EQ(ReadMfdfaMeasureType(-2), 0);
    EXPECT_EQ(ReadMfdfaMeasureType(0.9), 0);
    EXPECT_EQ(ReadMfdfaMeasureType(1e20), 0);
}

TEST(MfdfaParameters, TheMaximumScaleIsSettledFromTheFragmentLength) {
    EXPECT_EQ(ReadMfdfaMaxScale(200, 1003), 200) << "the value shown at Load stays";
    EXPECT_EQ(ReadMfdfaMaxScale(300, 1003), 201) << "Round(200.6)";
    EXPECT_EQ(ReadMfdfaMaxScale(10, 1003), 40);
    EXPECT_EQ(ReadMfdfaMaxScale(1e20, 1003), 201) << "the default Round(200.6)";
    EXPECT_EQ(ReadMfdfaMaxScale(80, 400), 80);
    EXPECT_EQ(ReadMfdfaMaxScale(81, 400), 80);
    EXPECT_EQ(ReadMfdfaMaxScale(10, 400), 40);
    EXPECT_EQ(ReadMfdfaMaxScale(10, 190), 38) << "40 is above 38 then Round(38)";
    EXPECT_EQ(ReadMfdfaMaxScale(101, 502), 100) << "Round(100.4)";
    EXPECT_EQ(ReadMfdfaMaxScale(2000, 10000), 2000);
}

TEST(MfdfaParameters, TheMinimumScaleIsAtMostHalfTheMaximum) {
    EXPECT_EQ(ReadMfdfaMinScale(5, 40), 20);
    EXPECT_EQ(ReadMfdfaMinScale(30, 40), 20);
    EXPECT_EQ(ReadMfdfaMinScale(30, 41), 20) << "Round(20.5) goes to the even 20";
    EXPECT_EQ(ReadMfdfaMinScale(30, 43), 22) << "Round(21.5)";
    EXPECT_EQ(ReadMfdfaMinScale(30, 80), 30);
    EXPECT_EQ(ReadMfdfaMinScale(1e20, 80), 20);
}

TEST(MfdfaParameters, TheScaleCountIsTheSpanOfScalesUpTo200) {
    EXPECT_EQ(MfdfaScaleCount(20, 80), 60);
    EXPECT_EQ(MfdfaScaleCount(20, 80) * kMfdfaQCount, 12000);
    EXPECT_EQ(MfdfaScaleCount(20, 2000), 200);
    EXPECT_EQ(MfdfaScaleCount(20, 220), 200);
    EXPECT_EQ(MfdfaScaleCount(20, 219), 199);
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

TEST(MfdfaAxes, TheRegressionLineIsTheLeastSquaresFit) {
    const std::vector<float> x = {0, 1, 2, 3};
    const RegressionLine exact = MfdfaRegression(x, std::vector<float>{1, 3, 5, 7});
    EXPECT_EQ(exact.xBar, 1.5);
    EXPECT_EQ(exact.yBar, 4.0);
    EXPECT_EQ(exact.slope, 2.0);
    EXPECT_EQ(exact.at(0), 1.0);
    EXPECT_EQ(exact.at(3), 7.0);
    // Sxy = 1, Sxx = 5.
    const RegressionLine zigzag = MfdfaRegression(x, std::vector<float>{0, 1, 0, 1});
    EXPECT_TRUE(isNear(zigzag.slope, 0.2, 1e-15));
    EXPECT_EQ(zigzag.yBar, 0.5);
}

TEST(MfdfaAxes, TheAlfaRangeLeavesOutTheFirstPointAndNonPositiveF) {
    const std::vector<double> alfa = {0.1, 0.2, 0.3, 0.4, 0.5};
    const std::vector<double> f = {0.9, 0.0, 0.5, 1.0, -0.2};
    const SpectrumRanges r = MfdfaSpectrumRanges(alfa, f);
    EXPECT_EQ(r.alfaMin, 0.3f);
    EXPECT_EQ(r.alfaMax, 0.4f);
    EXPECT_EQ(r.fMin, -0.2f) << "the F range takes every point, negative ones too";
    EXPECT_EQ(r.fMax, 1.0f);
}

TEST(MfdfaAxes, TheTableRangeLooksAtEveryTenthQOnly) {
    // 12 q values at 2 scales: q number 1 and 11 count, q number 2 does not.
    std::vector<double> table(24, 0.5);
    table[1] = 100.0;     // scale 1, q 2
    table[12 + 10] = 2.0; // scale 2, q 11
    table[0] = -1.0;      // scale 1, q 1
    const TableRange r = MfdfaTableRange(table, 12, 2);
    EXPECT_EQ(r.lo, -1.0);
    EXPECT_EQ(r.hi, 2.0);
}

TEST(MfdfaChecks, EachUndrawableRunIsNamed) {
    const std::vector<double> alfa = {0.1, 0.2, 0.3, 0.4};
    const std::vector<double> table = {0.1, 0.2, 0.3, 0.4};
    auto check = [&](const std::vector<double>& f, const std::vector<double>& t, int q = 2,
                     int scales = 2) { return CheckMfdfaRun(alfa, f, t, q, scales, 2, 2); };
    EXPECT_EQ(check({0, 0.5, 1, 0}, table), MfdfaProblem::None);
    EXPECT_EQ(check({1, 0, 0, 0}, table), MfdfaProblem::NoSpectrum)
        << "the first point does not count";
    EXPECT_EQ(check({0, 0, 1, 0}, table), MfdfaProblem::OneAlfa);
    EXPECT_EQ(check({1, 1, 1, 1}, table), MfdfaProblem::FlatSpectrum);
    EXPECT_EQ(check({0, 0.5, 1, 0}, {0.3, 0.3, 0.3, 0.3}), MfdfaProblem::FlatTable);
    EXPECT_EQ(check({0, 0.5, 1, 0}, table, 2, 1), MfdfaProblem::BadGrid) << "one scale";
    EXPECT_EQ(check({0, 0.5, 1, 0}, table, 0, 2), MfdfaProblem::BadGrid) << "no q";
    EXPECT_EQ(CheckMfdfaRun(alfa, std::vector<double>{0, 0.5, 1, 0}, table, 2, 2, 2, 1),
              MfdfaProblem::BadGrid)
        << "more scales than asked";
    EXPECT_EQ(check({0, std::nan(""), 1, 0}, table), MfdfaProblem::NotFinite);
    EXPECT_EQ(check({0, 0.5, 1, 0}, {0.1, 0.2, INFINITY, 0.4}), MfdfaProblem::NotFinite);
}

// ---------------------------------------------------------------------------
// The saved spectrum

TEST(MfdfaFile, FourHeaderLinesThenThePositivePointsFirstIncluded) {
    const std::vector<double> alfa = {0.25, 0.5, 0.75, 1.25};
    const std::vector<double> f = {0.5, 0.0, 1.0, -0.125};
    EXPECT_EQ(SingularitySpectrumText(4, 0, 20, 80, alfa, f),
              "' Detrended polynomial order= 4\r\n"
              "' Type of signal`s variability measure= 0\r\n"
              "' Minimum scale value (# of samples)= 20\r\n"
              "' Maximum scale value (# of samples)= 80\r\n"
              " .25 .5\r\n"
              " .75 1\r\n");
}

TEST(MfdfaFile, TheSecondHeaderLineOfTheStandardDeviationEndsInOne) {
    const std::string text = SingularitySpectrumText(10, 1, 22, 201, {}, {});
    EXPECT_EQ(text, "' Detrended polynomial order= 10\r\n"
                    "' Type of signal`s variability measure= 1\r\n"
                    "' Minimum scale value (# of samples)= 22\r\n"
                    "' Maximum scale value (# of samples)= 201\r\n");
}

TEST(MfdfaFile, NegativeAlfaAndDoublePrecisionTexts) {
    const std::vector<double> alfa = {-0.1, 0.123456789012345678};
    const std::vector<double> f = {0.3, 0.999999999};
    const std::string text = SingularitySpectrumText(0, 0, 20, 40, alfa, f);
    std::size_t records = 0;
    for (int line = 0; line < 4; ++line)
        records = text.find("\r\n", records) + 2;
    EXPECT_EQ(text.substr(records), "-.1 .3\r\n .123456789012346 .999999999\r\n");
}
