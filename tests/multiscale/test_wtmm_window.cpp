// The WTMM chains: the button and boxes of the fragment window and the chains
// window, with hand-made chain files from the stand-in library (the real
// library's run is on the end-to-end road). The chain rules and the checks
// themselves are pinned in test_multiscalelogic.cpp; here their wiring and what
// is seen.
#include "core/numtext.h"
#include "help/wtmmhelp.h"
#include "multiscale/multiscalelogic.h"
#include "multiscale/wtmmform.h"
#include "tests/multiscale/multiscale_fixture.h"

using namespace tarnic;
using namespace tarnic::test;

namespace {

// Seven classes over a fragment of 101 samples, logarithms from 0.5 to 1.5:
// class 2 a chain of one and a chain of two, class 7 two tops, the other
// classes a chain of two each.
const std::array<std::int32_t, 7> kCounts = {2, 4, 2, 2, 2, 2, 2};
const char* const kChains = "1 0.5\r\n26 0.75\r\n"
                            "51 1.0\r\n0 -9999\r\n76 1.25\r\n101 1.5\r\n"
                            "1 1.5\r\n101 0.5\r\n101 1.5\r\n1 0.5\r\n1 1.5\r\n51 0.5\r\n"
                            "101 0.5\r\n76 0.75\r\n51 1.5\r\n26 1.0\r\n";

class WtmmWindow : public MultiscaleWindow {
  protected:
    // A fragment of n samples, the samples first .., through the stand-in
    // library scripted with the chains above.
    void prepare(const char* dT = "1", const char* t0 = "0", int first = 1, int n = 101) {
        startIn(dT, t0);
        handFragment(n, [](int i) { return std::sin(i * 0.3) + 0.01 * i; }, first);
        useStandIn();
        *fakeWtmm = {kCounts, kChains};
    }
    void press() {
        zc().WTMM_button->click();
        QApplication::processEvents();
    }
    // The library did not run in a private directory of its own, that
    // directory or the chain file was left behind, or the run has left the
    // process elsewhere.
    bool scratchLeft() {
        return fakeWtmm->where == dir.path() || fs::exists(fakeWtmm->where) ||
               fs::exists(dir / "n12c43k67r13t72c76h18i04") || fs::current_path() != dir.path();
    }
    WTMM_Form& wtmm() { return wb->wtmmForm(); }
    WTMM_FormControls& wc() { return wb->wtmmForm().ui(); }
};

} // namespace

TEST_F(WtmmWindow, EightThousandSamplesAreAnalysedAndOneMoreIsRefused) {
    prepare("1", "0", 1, 8001);
    press();
    messages.expectOne("WTMM-chains Analysis",
                  "For this length of the signal fragment ( > 8000 )\r\nWTMM-chains analysis is "
                  "forbidden because of large time consuming\r\nPlease, choose more short fragment");
    EXPECT_EQ(fakeWtmm->calls, 0);
    EXPECT_TRUE(zoom().Visible() && !wtmm().isLoaded());
    // 8000 are analysed, with the boxes repaired, written back and handed over.
    zoom().FragCount = 8000;
    zc().WTMM_TrendOrder->setText("15");
    zc().WTMM_ThreshLevel->setText("1e999");
    press();
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_EQ(zc().WTMM_TrendOrder->Text() + "|" + zc().WTMM_ThreshLevel->Text(), " 10| .25");
    const FakeWtmm& w = *fakeWtmm;
    EXPECT_EQ(std::tuple(w.calls, w.fragLeng, w.trendOrder, w.gamma), std::tuple(1, 8000, 10, 0.25));
}

// Times of 0.5 from 10, samples 201 .. 301.
TEST_F(WtmmWindow, EachClassIsDrawnInItsPenAndThePointerReadsTimesAndTheScale) {
    prepare("0.5", "10", 201);
    RecordShownSurfaces recording;
    press();
    ASSERT_TRUE(messages.empty());
    EXPECT_FALSE(scratchLeft());
    EXPECT_EQ(wc().Label1->Caption(),
              "Fragment of the signal after detrending. Number of samples= 101");
    EXPECT_EQ(std::pair(wtmm().ChainLgMin, wtmm().ChainLgMax), std::pair(0.5f, 1.5f));
    // Sample t lies at (t - 1) / 100 of the width; log 1.5 at the top, 0.5 at
    // the bottom. Class 2 sets the first record of its second chain, then the
    // chain; class 7 sets thick dots.
    EXPECT_EQ(shapes(*wc().WTMM_Graf),
              (std::vector<std::string>{
                  "S 0 1 0.25 0.75 000080 2 0", "D 0.75 0.25 0.75 0.25 FF0000 2 0",
                  "S 0.75 0.25 1 0 FF0000 2 0", "S 0 0 1 1 00FF00 2 0", "S 1 0 0 1 FF00FF 2 0",
                  "S 0 0 0.5 1 FF0000 1 2", "S 1 1 0.75 0.75 00C0C0 1 2",
                  "D 0.5 0 0.5 0 808000 12 0", "D 0.25 0.5 0.25 0.5 808000 12 0"}));
    EXPECT_EQ(captions(wc().Xmarks), QStringList({"110", "120", "130", "140", "150", "160"}));
    PlotSurface& graf = *wc().WTMM_Graf;
    const auto W = static_cast<float>(graf.ScaleWidth()), H = static_cast<float>(graf.ScaleHeight());
    const LineObject& line = *wc().AscaleLine;
    EXPECT_FALSE(wc().Label9->Visible()) << "hidden at Load";
    // Half way up lies log 1.0: a scale of 10 samples, 5 time units, 10 % of the width.
    wtmm().WTMM_Graf_MouseMove(0, 0, W / 2, H / 2);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  251,  Time= 135,  Scale= 5");
    EXPECT_TRUE(line.Visible() && wc().Label9->Visible());
    EXPECT_NEAR(line.X1(), 0.2 * W, 0.01);
    EXPECT_NEAR(line.X2(), 0.8 * W, 0.01);
    // Over the detrended fragment: no scale, the line stays, the label goes.
    wtmm().WTMM_DetrendGraf_MouseMove(0, 0, W, 0);
    EXPECT_EQ(wc().WTMM_DetrendGraf->ToolTipText(), "Sample #  301,  Time= 160");
    EXPECT_TRUE(line.Visible() && !wc().Label9->Visible());
    // Over the bare window both go.
    wtmm().WTMM_Graf_MouseMove(0, 0, 0, H);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  201,  Time= 110,  Scale= 1.58113883008419");
    wtmm().Form_MouseMove();
    EXPECT_FALSE(line.Visible() || wc().Label9->Visible());
    // Closing the chains, or editing a box of the fragment window, closes them
    // with their help and shows the fragment again.
    for (int way = 0; way < 3; ++way) {
        if (way > 0) press();
        EXPECT_EQ(enabled({zc().WTMM_button, zc().Frame1}), "11") << "the fragment controls are on";
        wc().WTMM_HelpButton->click();
        ASSERT_TRUE(wb->wtmmHelp().Visible());
        if (way == 0) wtmm().window().close();
        if (way == 1) zc().WTMM_ThreshLevel->setText("0.5");
        if (way == 2) zc().WTMM_TrendOrder->setText("0.5");
        EXPECT_FALSE(wtmm().isLoaded() || wb->wtmmHelp().isLoaded()) << way;
        EXPECT_TRUE(zoom().Visible()) << way;
    }
}

// Runs that leave the drawing undefined end with a message; the chains window
// stays closed, the fragment window comes back with its controls on, and the
// chain file is gone.
TEST_F(WtmmWindow, AnUndrawableRunEndsWithAMessageAndChangesNothingElse) {
    prepare();
    const QString file = "The WTMM-chains file n12c43k67r13t72c76h18i04 ",
                  cannot = "\r\nThe chains cannot be drawn";
    // The counts, the chain file (nullptr: the library writes none), whether
    // the detrended fragment is constant, the message.
    for (const auto& [counts, text, constant, expected] :
         std::initializer_list<std::tuple<std::array<std::int32_t, 7>, const char*, bool, QString>>{
        {{0, 0, 0, 0, 0, 0, 0}, "", false, "No long WTMM-chains were found in this fragment\r\n"
                                       "Please, decrease the threshold parameter Gamma or choose "
                                       "another fragment"},
        {{2, -1, 0, 0, 0, 0, 0}, "1 0.5\r\n2 0.6\r\n", false,
         "The WTMM-chains analysis reported a negative number of records\r\nNothing can be drawn"},
        {{2, 0, 0, 0, 0, 0, 0}, nullptr, false, file + "was not found in the current directory" + cannot},
        {{2, 0, 0, 0, 0, 0, 1}, "1 0.5\r\n2 0.6\r\n", false,
         file + "holds fewer readable records than the analysis counted" + cannot},
        {{1, 0, 0, 0, 0, 0, 0}, "0 -9999\r\n", false,
         "The WTMM-chains file holds chain separators only" + cannot},
        {{2, 0, 0, 0, 0, 0, 1}, "1 0.5\r\n2 0.5\r\n50 0.5\r\n", false,
         "All points of the WTMM-chains lie at one scale" + cannot + " on a scale axis"},
        {{2, 0, 0, 0, 0, 0, 0}, "1 0.5\r\n2 0.6\r\n", true,
         "The signal fragment is constant after detrending" + cannot},
    }) {
        messages.clear();
        *fakeWtmm = {counts, text, constant};
        press();
        messages.expectOne("WTMM-chains Analysis", expected);
        EXPECT_EQ(fakeWtmm->calls, 1);
        EXPECT_FALSE(wtmm().isLoaded());
        EXPECT_TRUE(zoom().Visible());
        EXPECT_EQ(enabled({zc().FindHarm, zc().Frame1, zc().WTMM_button, zc().SaveFragButton,
                           zc().MorletSvan, zc().HeisBoxesButton, zc().FindMaxWave}),
                  "1111111");
        EXPECT_FALSE(scratchLeft());
    }
}

