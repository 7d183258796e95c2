// Flat segments in the multifractal DFA: which segments count as flat, the
// warning, and the scales with no measure left out of the table plot and its
// lines, from the numeric rule through the window with the real library.
#include "multiscale/mfdfaform.h"
#include "multiscale/multiscalelogic.h"
#include "numeric/mfdfa.h"
#include "tests/multiscale/multiscale_fixture.h"

using namespace tarnic;
using namespace tarnic::test;

namespace {

// n samples, constant 5 except where `moving` says so (a random walk there).
std::vector<double> partlyFlat(std::size_t n, const std::function<bool(std::size_t)>& moving) {
    const std::vector<double> walk = randomWalk(static_cast<int>(n), 3);
    std::vector<double> x(n, 5.0);
    for (std::size_t t = 0; t < n; ++t)
        if (moving(t)) x[t] += walk[t];
    return x;
}

TEST(FlatSegments, ShareOfSegmentsWithoutFluctuationPerScale) {
    std::vector<double> line(1000);
    for (std::size_t t = 0; t < line.size(); ++t) line[t] = 0.5 * static_cast<double>(t) - 3.0;
    for (const auto& [what, x, order, scales, shares] : std::initializer_list<std::tuple<
             const char*, std::vector<double>, int, std::vector<std::size_t>, std::vector<double>>>{
        // 10 segments of 100: seven whole ones lie in the flat first 750 samples.
        {"three quarters flat", partlyFlat(1000, [](std::size_t t) { return t >= 750; }), 1,
         {100, 250, 2000}, {0.7, 0.75, 1.0}},
        // Only the samples after the last whole segment of 99 move (990 .. 999 of
        // 1000 samples): that scale is empty, 100 and 125 are not.
        {"moving tail", partlyFlat(1000, [](std::size_t t) { return t >= 990; }), 2,
         {99, 100, 125}, {1.0, 0.9, 0.875}},
        // A straight line is flat for a linear fit, not for a constant one.
        {"line, order 1", line, 1, {20, 50}, {1.0, 1.0}},
        {"line, order 0", line, 0, {20, 50}, {0.0, 0.0}},
    }) {
        SCOPED_TRACE(what);
        for (const FluctuationMeasure m :
             {FluctuationMeasure::Range, FluctuationMeasure::StandardDeviation}) {
            const std::vector<double> got = flatSegmentShares(x, scales, order, m);
            ASSERT_EQ(got.size(), shares.size());
            for (std::size_t i = 0; i < got.size(); ++i) EXPECT_DOUBLE_EQ(got[i], shares[i]) << i;
        }
    }
}

TEST(FlatSegments, WarningAboveATenthAndEmptyScalesLeftOutOfRangeAndLines) {
    const std::vector<std::size_t> scales{20, 30, 40, 50};
    EXPECT_EQ(MfdfaFlatWarning(std::vector<double>{0, 0.1, 0.05, 0}, scales), "");
    const std::string text = MfdfaFlatWarning(std::vector<double>{0, 0.7, 1.0, 0.2}, scales);
    for (const char* part : {"At 3 of 4 scales", "(100 % at 40 samples)",
                             "1 scale has no fluctuating segment"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;

    // Scale 3 is empty: its 0 in the table takes no part in the range or the line.
    const std::vector<double> shares{0, 0.5, 1.0, 0};
    const std::vector<float> lg{1, 2, 3, 4}, column{2, 4, 0, 8};
    const RegressionLine fit = MfdfaRegression(lg, column, shares);
    EXPECT_NEAR(fit.slope, 2.0, 1e-12);
    EXPECT_NEAR(fit.at(3.0), 6.0, 1e-12);
    const std::vector<double> zq{2, 4, 0, 8}; // one q per scale
    const TableRange range = MfdfaTableRange(zq, 1, 4, shares);
    EXPECT_EQ(std::pair(range.lo, range.hi), std::pair(2.0, 8.0));
    EXPECT_EQ(MfdfaTableRange(zq, 1, 4).lo, 0.0) << "without shares every scale counts";

    // With one scale in use the table cannot be drawn.
    const std::vector<double> alfa{0.1, 0.2, 0.3}, f{0.5, 1.0, 0.5};
    EXPECT_EQ(CheckMfdfaRun(alfa, f, zq, 1, 4, 1, 4, std::vector<double>{1, 1, 0, 1}),
              MfdfaProblem::FlatTable);
}

class FlatMfdfaWindow : public MultiscaleWindow {};

TEST_F(FlatMfdfaWindow, AMostlyFlatFragmentIsAnalysedWithAWarning) {
    RecordShownSurfaces record;
    startIn();
    wb->mfdfaForm().MfdfaFileName = "gap.dat";
    const std::vector<double> x = partlyFlat(1000, [](std::size_t t) { return t >= 990; });
    handFragment(1000, [&](int i) { return x[std::size_t(i - 1)]; });
    zc().MFDFA_button->click();
    MFDFA_formControls& c = wb->mfdfaForm().ui();
    c.LaunchMFDFA_btn->click();
    EXPECT_TRUE(messages.empty() && c.SaveFalfa_button->isEnabled());
    ASSERT_TRUE(c.FlatWarning->isVisible());
    EXPECT_TRUE(c.FlatWarning->Caption().contains("have no fluctuating segment"))
        << c.FlatWarning->Caption().toStdString();
    // 20 dashed lines, then 20 curves of one segment per pair of neighbouring
    // scales in use: a curve breaks at a scale with no measure.
    const std::vector<std::size_t> scales = mfdfaScales(1000, 20, 200, 180);
    const std::vector<double> shares = flatSegmentShares(x, scales, 4, FluctuationMeasure::Range);
    std::size_t pairs = 0, empty = 0;
    for (std::size_t i = 0; i < shares.size(); ++i) {
        empty += shares[i] == 1.0 ? 1 : 0;
        pairs += i + 1 < shares.size() && shares[i] < 1.0 && shares[i + 1] < 1.0 ? 1 : 0;
    }
    ASSERT_GT(empty, 0u);
    EXPECT_EQ(drawn(*c.ZQtab_Plot, DrawKind::Segment).size(), 20 + 20 * pairs);
    c.Text1->setText("3");
    EXPECT_FALSE(c.FlatWarning->isVisible()) << "a change of a box clears the run";
}

} // namespace
