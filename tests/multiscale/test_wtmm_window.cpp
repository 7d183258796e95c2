// The WTMM chains: the button and boxes of the fragment window and the chains
// window, with hand-made chain files from the stand-in library and one run of
// the real library on a random walk.
#include "core/numtext.h"
#include "multiscale/multiscalelogic.h"
#include "multiscale/wtmmform.h"
#include "help/wtmmhelp.h"
#include "tests/multiscale/multiscale_fixture.h"

#include <cmath>
#include <set>

using namespace tarnic;
using namespace tarnic::test;

namespace {

using ScriptWtmm = void(const std::int32_t*, const char*, int);
using ReceivedWtmm = void(std::int32_t*, std::int32_t*, double*, int*);
using DirectoryWtmm = void(char*, int);

const QRgb kNavy = BasicColor(1).rgb();
const QRgb kOlive = BasicColor(6).rgb();
const QRgb kRed = qRgb(0xFF, 0x00, 0x00);
const QRgb kCyan = qRgb(0x00, 0xC0, 0xC0);

// Seven classes over a fragment of 101 samples, logarithms from 0.5 to 1.5:
// class 1 one chain of two, class 2 a chain of one and a chain of two, class 3
// a single record, class 4 none, classes 5 and 6 a chain of two each, class 7
// two tops.
const std::int32_t kCounts[7] = {2, 4, 1, 0, 2, 2, 2};
const char* const kChains = "1 0.5\r\n26 0.75\r\n"
                            "51 1.0\r\n0 -9999\r\n76 1.25\r\n101 1.5\r\n"
                            "26 0.5\r\n"
                            "1 1.5\r\n51 0.5\r\n"
                            "101 0.5\r\n76 0.75\r\n"
                            "51 1.5\r\n26 1.0\r\n";

class WtmmWindow : public MultiscaleWindow {
  protected:
    // A fragment of 101 samples through the stand-in library.
    void prepare(const char* dT = "1", const char* t0 = "0", int first = 1) {
        startIn(dT, t0);
        handFragment(
            101, [](int i) { return std::sin(i * 0.3) + 0.01 * i; }, first);
        useStandIn();
        script = standIn<ScriptWtmm>("FakeWtmm_script");
        received = standIn<ReceivedWtmm>("FakeWtmm_received");
        directory = standIn<DirectoryWtmm>("FakeWtmm_directory");
    }
    void press() {
        zoom().WTMM_button_Click();
        QApplication::processEvents();
    }
    struct Call {
        std::int32_t fragLeng, trendOrder;
        double gamma;
        int calls;
    };
    Call lastCall() {
        Call c{};
        received(&c.fragLeng, &c.trendOrder, &c.gamma, &c.calls);
        return c;
    }
    // The chain file, or the private directory the stand-in library wrote it in,
    // is still there after the run; or the run has left the process elsewhere.
    bool scratchLeft() {
        if (fs::exists(dir / "n12c43k67r13t72c76h18i04")) return true;
        if (fs::current_path() != dir.path()) return true;
        if (!directory) return false;
        char where[4096];
        directory(where, sizeof where);
        return where[0] == '\0' || fs::path(where) == dir.path() || fs::exists(where);
    }
    WTMM_Form& wtmm() { return wb->wtmmForm(); }
    WTMM_FormControls& wc() { return wb->wtmmForm().ui(); }

    ScriptWtmm* script = nullptr;
    ReceivedWtmm* received = nullptr;
    DirectoryWtmm* directory = nullptr;
};

} // namespace

TEST_F(WtmmWindow, EightThousandSamplesAreAnalysedAndOneMoreIsRefused) {
    startIn();
    handFragment(8001, [](int i) { return std::sin(i * 0.01); });
    useStandIn();
    script = standIn<ScriptWtmm>("FakeWtmm_script");
    received = standIn<ReceivedWtmm>("FakeWtmm_received");
    script(kCounts, kChains, 0);
    zc().WTMM_button->click();
    QApplication::processEvents();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "WTMM-chains Analysis");
    EXPECT_EQ(messages[0].text, "For this length of the signal fragment ( > 8000 )\r\n"
                                "WTMM-chains analysis is forbidden because of large time "
                                "consuming\r\nPlease, choose more short fragment");
    EXPECT_EQ(lastCall().calls, 0);
    EXPECT_TRUE(zoom().Visible());
    EXPECT_FALSE(wtmm().isLoaded());

    zoom().FragCount = 8000;
    press();
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_EQ(lastCall().calls, 1);
    EXPECT_EQ(lastCall().fragLeng, 8000);
    EXPECT_TRUE(wtmm().Visible());
    EXPECT_FALSE(zoom().Visible());
}

TEST_F(WtmmWindow, ParameterTextsAreRepairedWrittenBackAndHandedOver) {
    prepare();
    struct Case {
        const char* order;
        const char* gamma;
        const char* orderShown;
        const char* gammaShown;
        std::int32_t orderPassed;
        double gammaPassed;
    };
    for (const Case& k :
         {Case{"15", "1.5", " 10", " 1", 10, 1.0}, Case{"-3", "-0.2", " 0", " 0", 0, 0.0},
          Case{"2.7", "abc", " 2", " 0", 2, 0.0}, Case{"1e20", "0.25", " 0", " .25", 0, 0.25},
          Case{"4", "1e999", " 4", " .25", 4, 0.25}}) {
        script(kCounts, kChains, 0);
        zc().WTMM_TrendOrder->setText(k.order);
        zc().WTMM_ThreshLevel->setText(k.gamma);
        press();
        EXPECT_EQ(zc().WTMM_TrendOrder->Text(), k.orderShown) << k.order;
        EXPECT_EQ(zc().WTMM_ThreshLevel->Text(), k.gammaShown) << k.gamma;
        EXPECT_EQ(lastCall().trendOrder, k.orderPassed) << k.order;
        EXPECT_EQ(lastCall().gamma, k.gammaPassed) << k.gamma;
        EXPECT_TRUE(wtmm().Visible()) << "a rewritten box closes nothing of the new run";
    }
    EXPECT_TRUE(messages.empty());
}

TEST_F(WtmmWindow, AnEditedBoxClosesTheChainsAndTheirHelp) {
    prepare();
    for (TextBox* box : {zc().WTMM_ThreshLevel, zc().WTMM_TrendOrder}) {
        script(kCounts, kChains, 0);
        press();
        wc().WTMM_HelpButton->click();
        ASSERT_TRUE(wb->wtmmHelp().Visible());
        box->setText("0.5");
        EXPECT_FALSE(wtmm().isLoaded());
        EXPECT_FALSE(wb->wtmmHelp().isLoaded());
        EXPECT_TRUE(zoom().Visible()) << "closing the chains shows the fragment again";
    }
}

TEST_F(WtmmWindow, EachClassIsDrawnInItsPenByTheChainRules) {
    prepare();
    script(kCounts, kChains, 0);
    RecordShownSurfaces recording;
    press();
    ASSERT_TRUE(messages.empty());
    EXPECT_FALSE(scratchLeft());
    EXPECT_EQ(wtmm().ChainLgMin, 0.5f);
    EXPECT_EQ(wtmm().ChainLgMax, 1.5f);
    PlotSurface& graf = *wc().WTMM_Graf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    // Sample t lies at W * (t - 1) / 100; log 1.5 at the top, 0.5 at the bottom.
    EXPECT_TRUE(sameOps(graf.canvas().record(),
                        {{DrawKind::Cls, 0, 0, 0, 0, 0, 0, 0},
                         // class 1: its chain
                         {DrawKind::Segment, 0, H, W / 4, 0.75 * H, kNavy, 2, 0},
                         // class 2: the first record of the second chain, then that chain
                         {DrawKind::Dot, 0.75 * W, H / 4, 0.75 * W, H / 4, kRed, 2, 0},
                         {DrawKind::Segment, 0.75 * W, H / 4, W, 0, kRed, 2, 0},
                         // class 3 has one record, class 4 none: nothing
                         {DrawKind::Segment, 0, 0, W / 2, H, kRed, 1, 2},
                         {DrawKind::Segment, W, H, 0.75 * W, 0.75 * H, kCyan, 1, 2},
                         // class 7: thick dots
                         {DrawKind::Dot, W / 2, 0, W / 2, 0, kOlive, 12, 0},
                         {DrawKind::Dot, W / 4, H / 2, W / 4, H / 2, kOlive, 12, 0}}));
}

TEST_F(WtmmWindow, ClassesThreeAndFourUseTheirOwnPens) {
    prepare();
    const std::int32_t counts[7] = {0, 0, 2, 2, 0, 0, 0};
    script(counts, "1 0.5\r\n101 1.5\r\n101 0.5\r\n1 1.5\r\n", 0);
    RecordShownSurfaces recording;
    press();
    PlotSurface& graf = *wc().WTMM_Graf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    EXPECT_TRUE(sameOps(graf.canvas().record(),
                        {{DrawKind::Cls, 0, 0, 0, 0, 0, 0, 0},
                         {DrawKind::Segment, 0, H, W, 0, qRgb(0x00, 0xFF, 0x00), 2, 0},
                         {DrawKind::Segment, W, H, 0, 0, qRgb(0xFF, 0x00, 0xFF), 2, 0}}));
}

TEST_F(WtmmWindow, TheDetrendedFragmentFillsTheUpperPlot) {
    startIn();
    // A ramp: less its mean it is still a ramp, highest at the end.
    handFragment(101, [](int i) { return 3.0 + 0.5 * i; });
    useStandIn();
    standIn<ScriptWtmm>("FakeWtmm_script")(kCounts, kChains, 0);
    RecordShownSurfaces recording;
    press();
    PlotSurface& graf = *wc().WTMM_DetrendGraf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    const auto& record = graf.canvas().record();
    ASSERT_EQ(record.size(), 101u);
    EXPECT_EQ(record[0].kind, DrawKind::Cls);
    for (int k = 1; k <= 100; ++k) {
        const DrawOp& s = record[static_cast<std::size_t>(k)];
        ASSERT_TRUE(sameOps({s}, {{DrawKind::Segment, W * (k - 1) / 100, H * (101 - k) / 100,
                                   W * k / 100, H * (100 - k) / 100, kNavy, 1, 0}}))
            << "segment " << k;
    }
}

TEST_F(WtmmWindow, TheWindowCarriesItsLegendAndItsLabels) {
    prepare();
    script(kCounts, kChains, 0);
    press();
    EXPECT_EQ(wtmm().Caption(), "WTMM-skeletons longest chains");
    EXPECT_EQ(wc().Label1->Caption(),
              "Fragment of the signal after detrending. Number of samples= 101");
    EXPECT_EQ(wc().Label2->Caption(), "Longest WTMM Skeletons Chains for the Gaussian kernel "
                                      "derivatives wavelets of the orders 0, 1 and 2 :");
    EXPECT_EQ(wc().WTMM_HelpButton->Caption(), "WTMM Help");
    const std::pair<Label*, std::pair<const char*, QRgb>> legend[] = {
        {wc().Label3, {"Minimums of scale-dependent averaged curves", qRgb(0, 0, 0xFF)}},
        {wc().Label4, {"Maximums of scale-dependent averaged curves", qRgb(0xFF, 0, 0)}},
        {wc().Label5, {"Maximums of scale-dependent negative trends", qRgb(0, 0xC0, 0)}},
        {wc().Label6, {"Maximums of scale-dependent positive trends", qRgb(0xFF, 0, 0xFF)}},
        {wc().Label7,
         {"Minimums of scale-dependent 2-nd derivative (convex upward)", qRgb(0xFF, 0x80, 0)}},
        {wc().Label8,
         {"Maximums of scale-dependent 2-nd derivative (convex downward)", qRgb(0, 0xC0, 0xC0)}},
    };
    for (const auto& [label, expected] : legend) {
        EXPECT_EQ(label->Caption(), expected.first);
        EXPECT_EQ(label->ForeColor().rgb(), expected.second) << expected.first;
    }
    EXPECT_EQ(wc().Label9->Caption(), "Horizontal red line: Time +/- 3 * Scale");
    EXPECT_EQ(wc().Label9->ForeColor().rgb(), kRed);
    EXPECT_FALSE(wc().Label9->Visible()) << "hidden at Load";
    const LineObject& line = *wc().AscaleLine;
    EXPECT_TRUE(line.Visible());
    EXPECT_EQ(line.color().rgb(), kRed);
    EXPECT_EQ(std::vector<float>({line.X1(), line.Y1(), line.X2(), line.Y2()}),
              std::vector<float>({120, 120, 360, 120}));
}

TEST_F(WtmmWindow, ActivateMarksTheTimesOfTheFragment) {
    prepare("0.5", "10", 201);
    script(kCounts, kChains, 0);
    press();
    QStringList marks;
    for (Label* mark : wc().Xmarks)
        marks << mark->Caption();
    EXPECT_EQ(marks, QStringList({"110", "120", "130", "140", "150", "160"}));
}

TEST_F(WtmmWindow, ReadOutsAndTheRedLineFollowThePointer) {
    prepare("0.5", "10", 201);
    script(kCounts, kChains, 0);
    press();
    PlotSurface& graf = *wc().WTMM_Graf;
    const auto W = static_cast<float>(graf.ScaleWidth()),
               H = static_cast<float>(graf.ScaleHeight());
    // Half way up lies log 1.0: a scale of 10 samples, 5 time units, 10 % of the width.
    wtmm().WTMM_Graf_MouseMove(0, 0, W / 2, H / 2);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  251,  Time= 135,  Scale= 5");
    const LineObject& line = *wc().AscaleLine;
    const double Hd = wc().WTMM_DetrendGraf->ScaleHeight();
    EXPECT_TRUE(line.Visible());
    EXPECT_TRUE(wc().Label9->Visible());
    EXPECT_NEAR(line.X1(), W / 2 - 0.3 * W, 0.01);
    EXPECT_NEAR(line.X2(), W / 2 + 0.3 * W, 0.01);
    EXPECT_NEAR(line.Y1(), Hd / 2, 0.01);
    EXPECT_NEAR(line.Y2(), Hd / 2, 0.01);
    // Over the detrended fragment: no scale, the line stays, the label goes.
    wtmm().WTMM_DetrendGraf_MouseMove(0, 0, W, 0);
    EXPECT_EQ(wc().WTMM_DetrendGraf->ToolTipText(), "Sample #  301,  Time= 160");
    EXPECT_FALSE(wc().Label9->Visible());
    EXPECT_TRUE(line.Visible());
    // Over the bare window both go.
    wtmm().WTMM_Graf_MouseMove(0, 0, 0, H);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  201,  Time= 110,  Scale= 1.58113883008419");
    wtmm().Form_MouseMove();
    EXPECT_FALSE(line.Visible());
    EXPECT_FALSE(wc().Label9->Visible());
}

TEST_F(WtmmWindow, ClosingShowsTheFragmentAndClosesTheHelp) {
    prepare();
    script(kCounts, kChains, 0);
    zc().WTMM_button->click();
    QApplication::processEvents();
    EXPECT_FALSE(zoom().Visible());
    EXPECT_TRUE(zc().WTMM_button->isEnabled());
    EXPECT_TRUE(zc().Frame1->isEnabled()) << "the fragment controls are on again";
    wc().WTMM_HelpButton->click();
    EXPECT_TRUE(wb->wtmmHelp().Visible());
    EXPECT_EQ(wb->wtmmHelp().Caption(), "What is WTMM skeleton chains");
    wtmm().window().close();
    EXPECT_FALSE(wtmm().isLoaded());
    EXPECT_FALSE(wb->wtmmHelp().isLoaded());
    EXPECT_TRUE(zoom().Visible());
}

TEST_F(WtmmWindow, ANewFragmentClosesTheChainsWithoutBringingBackTheOldFragment) {
    startIn();
    zoomWholeSignal("s.dat", randomWalk(300, 3));
    useStandIn();
    standIn<ScriptWtmm>("FakeWtmm_script")(kCounts, kChains, 0);
    press();
    ASSERT_TRUE(wtmm().Visible());
    wb->signalPlot().Unload(); // as a new input file does, the fragment first
    wb->signalZoomForm().Unload();
    wtmm().Unload();
    EXPECT_FALSE(zoom().isLoaded());
}

// Runs that leave the drawing undefined end with a message; the chains window
// stays closed, the fragment window comes back with its controls on, and the
// chain file is gone.
struct UndrawableRun {
    const char* name;
    std::array<std::int32_t, 7> counts;
    const char* file; // nullptr: the library writes none
    int constant;
    const char* message;
};

void PrintTo(const UndrawableRun& run, std::ostream* out) {
    *out << run.name;
}

class WtmmUndrawable : public WtmmWindow, public ::testing::WithParamInterface<UndrawableRun> {};

TEST_P(WtmmUndrawable, EndsWithAMessageAndChangesNothingElse) {
    const UndrawableRun& run = GetParam();
    prepare();
    script(run.counts.data(), run.file, run.constant);
    zc().WTMM_button->click();
    QApplication::processEvents();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "WTMM-chains Analysis");
    EXPECT_EQ(messages[0].text, run.message);
    EXPECT_EQ(lastCall().calls, 1);
    EXPECT_FALSE(wtmm().isLoaded());
    EXPECT_TRUE(zoom().Visible());
    for (QWidget* w :
         {static_cast<QWidget*>(zc().FindHarm), static_cast<QWidget*>(zc().Frame1),
          static_cast<QWidget*>(zc().WTMM_button), static_cast<QWidget*>(zc().SaveFragButton),
          static_cast<QWidget*>(zc().MorletSvan), static_cast<QWidget*>(zc().HeisBoxesButton),
          static_cast<QWidget*>(zc().FindMaxWave)})
        EXPECT_TRUE(w->isEnabled()) << w->metaObject()->className();
    EXPECT_FALSE(scratchLeft());
}

INSTANTIATE_TEST_SUITE_P(
    WtmmWindow, WtmmUndrawable,
    ::testing::Values(
        UndrawableRun{"NoRecords",
                      {0, 0, 0, 0, 0, 0, 0},
                      "",
                      0,
                      "No long WTMM-chains were found in this fragment\r\nPlease, decrease the "
                      "threshold parameter Gamma or choose another fragment"},
        UndrawableRun{"NegativeCount",
                      {2, -1, 0, 0, 0, 0, 0},
                      "1 0.5\r\n2 0.6\r\n",
                      0,
                      "The WTMM-chains analysis reported a negative number of records\r\n"
                      "Nothing can be drawn"},
        UndrawableRun{"MissingFile",
                      {2, 0, 0, 0, 0, 0, 0},
                      nullptr,
                      0,
                      "The WTMM-chains file n12c43k67r13t72c76h18i04 was not found in the "
                      "current directory\r\nThe chains cannot be drawn"},
        UndrawableRun{"ShortFile",
                      {2, 0, 0, 0, 0, 0, 1},
                      "1 0.5\r\n2 0.6\r\n",
                      0,
                      "The WTMM-chains file n12c43k67r13t72c76h18i04 holds fewer readable "
                      "records than the analysis counted\r\nThe chains cannot be drawn"},
        UndrawableRun{"SeparatorsOnly",
                      {1, 0, 0, 0, 0, 0, 0},
                      "0 -9999\r\n",
                      0,
                      "The WTMM-chains file holds chain separators only\r\n"
                      "The chains cannot be drawn"},
        UndrawableRun{"OneScale",
                      {2, 0, 0, 0, 0, 0, 1},
                      "1 0.5\r\n2 0.5\r\n50 0.5\r\n",
                      0,
                      "All points of the WTMM-chains lie at one scale\r\n"
                      "The chains cannot be drawn on a scale axis"},
        UndrawableRun{"ConstantDetrended",
                      {2, 0, 0, 0, 0, 0, 0},
                      "1 0.5\r\n2 0.6\r\n",
                      1,
                      "The signal fragment is constant after detrending\r\n"
                      "The chains cannot be drawn"}),
    [](const ::testing::TestParamInfo<UndrawableRun>& info) {
        return std::string(info.param.name);
    });

TEST_F(WtmmWindow, ARandomWalkGivesChainsWithinTheCupolaAndLeavesNoFile) {
    startIn("0.25", "100");
    const std::vector<double> walk = randomWalk(1200, 20240611);
    zoomWholeSignal("walk.dat", walk);
    QDir::setCurrent(QString::fromStdString(dir.path().string()));
    zc().WTMM_TrendOrder->setText("1");
    zc().WTMM_ThreshLevel->setText("0.2");
    RecordShownSurfaces recording;
    zc().WTMM_button->click();
    QApplication::processEvents();
    ASSERT_TRUE(messages.empty()) << messages[0].text.toStdString();
    EXPECT_FALSE(scratchLeft());
    EXPECT_TRUE(wtmm().Visible());
    EXPECT_EQ(zc().WTMM_TrendOrder->Text(), " 1");
    EXPECT_EQ(zc().WTMM_ThreshLevel->Text(), " .2");
    // Scales run from 2 samples to a sixth of the fragment's span.
    EXPECT_GE(wtmm().ChainLgMin, std::log10(2.0) - 1e-5);
    EXPECT_LE(wtmm().ChainLgMax, std::log10(1199.0 / 6) + 1e-5);
    EXPECT_LT(wtmm().ChainLgMin, wtmm().ChainLgMax);

    PlotSurface& graf = *wc().WTMM_Graf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    std::set<QRgb> colours;
    std::size_t segments = 0, tops = 0;
    for (const DrawOp& op : graf.canvas().record()) {
        if (op.kind == DrawKind::Cls) continue;
        ASSERT_GE(op.x1, -0.01);
        ASSERT_LE(op.x1, W + 0.01);
        ASSERT_GE(op.y1, -0.01);
        ASSERT_LE(op.y1, H + 0.01);
        colours.insert(op.color);
        segments += op.kind == DrawKind::Segment;
        tops += op.kind == DrawKind::Dot && op.width == 12;
    }
    EXPECT_GT(segments, 10u);
    // Long chains of the smoothed walk: minimums, maximums and both trends.
    for (QRgb c : {kNavy, kRed, qRgb(0x00, 0xFF, 0x00), qRgb(0xFF, 0x00, 0xFF)})
        EXPECT_TRUE(colours.count(c)) << std::hex << c;
    EXPECT_GT(tops, 0u) << "a walk has bumps that vanish as the scale grows";
    // The detrended walk: one segment per pair of samples, over the whole plot.
    const auto detrended = ops(*wc().WTMM_DetrendGraf, DrawKind::Segment);
    ASSERT_EQ(detrended.size(), 1199u);
    EXPECT_EQ(detrended.front()->x1, 0.0f);
    EXPECT_NEAR(detrended.back()->x2, wc().WTMM_DetrendGraf->ScaleWidth(), 0.01);
}
