// The multifractal DFA window: the length limit, the boxes, the two plots,
// the save and the state table, with spectra and tables dictated through the
// stand-in library, and one run of the real library on a random walk.
#include "core/form1.h"
#include "core/numtext.h"
#include "multiscale/mfdfaform.h"
#include "help/mfdfahelpform.h"
#include "multiscale/multiscalelogic.h"
#include "tests/multiscale/multiscale_fixture.h"

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;

namespace {

using ScriptMfdfa = void(const double*, const double*, std::int32_t, const double*, std::int32_t,
                         std::int32_t);
using ReceivedMfdfa = void(std::int32_t*, double*, double*, std::int32_t*, int*);

class MfdfaWindow : public MultiscaleWindow {
  protected:
    // A fragment of n samples, the samples first .. of a signal "walk.dat",
    // and the analysis window opened on it.
    void prepare(int n, const char* dT = "1", const char* t0 = "0", int first = 1) {
        startIn(dT, t0);
        wb->mfdfaForm().MfdfaFileName = "walk.dat";
        const std::vector<double> walk = randomWalk(n, 5);
        handFragment(
            n, [&](int i) { return walk[static_cast<std::size_t>(i - 1)]; }, first);
        useStandIn();
        script = standIn<ScriptMfdfa>("FakeMfdfa_script");
        received = standIn<ReceivedMfdfa>("FakeMfdfa_received");
        script(nullptr, nullptr, 0, nullptr, 0, 0);
        zc().MFDFA_button->click();
        QApplication::processEvents();
    }
    struct Call {
        std::int32_t samples, order, measure, minScale, maxScale, alfaCount, scaleCount, qCount;
        double qMin, qMax;
        int calls;
    };
    Call lastCall() {
        std::int32_t r[7];
        Call c{};
        received(r, &c.qMin, &c.qMax, &c.qCount, &c.calls);
        c.samples = r[0], c.order = r[1], c.measure = r[2], c.minScale = r[3], c.maxScale = r[4];
        c.alfaCount = r[5], c.scaleCount = r[6];
        return c;
    }
    void launch() { mc().LaunchMFDFA_btn->click(); }
    // Plots on, Launch, Save as the user meets them, e.g. "001".
    std::string states() {
        std::string s;
        s += mc().FalfaPlot->isEnabled() && mc().ZQtab_Plot->isEnabled() ? '1' : '0';
        s += mc().LaunchMFDFA_btn->isEnabled() ? '1' : '0';
        s += mc().SaveFalfa_button->isEnabled() ? '1' : '0';
        return s;
    }
    // The spectrum used by several tests: Alfa(i) = 0.01 * (i - 1); F positive
    // at the points 51, 52, 53 and 101, negative at 150.
    void scriptSpectrum() {
        alfa.assign(200, 0);
        f.assign(200, 0);
        for (int i = 1; i <= 200; ++i)
            alfa[static_cast<std::size_t>(i - 1)] = 0.01 * (i - 1);
        f[50] = 0.5, f[51] = 1.0, f[52] = 0.5, f[100] = 0.25, f[149] = -0.5;
        script(alfa.data(), f.data(), 200, nullptr, 0, 0);
    }
    MFDFA_form& mfdfa() { return wb->mfdfaForm(); }
    MFDFA_formControls& mc() { return wb->mfdfaForm().ui(); }
    std::string savedName() { return "F(Alfa)_walk,PART[110,309.5].dat"; }

    ScriptMfdfa* script = nullptr;
    ReceivedMfdfa* received = nullptr;
    std::vector<double> alfa, f;
};

} // namespace

TEST_F(MfdfaWindow, FewerThan400SamplesAreRefusedAnd400Accepted) {
    startIn();
    handFragment(399, [](int i) { return std::sin(i * 0.1); });
    zc().MFDFA_button->click();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "MFDFA Analysis");
    EXPECT_EQ(messages[0].text, "This length of the signal fragment is too small\r\n"
                                "MFDFA Analysis is possible for length => 400 only");
    EXPECT_FALSE(mfdfa().isLoaded());
    EXPECT_TRUE(zoom().Visible());

    handFragment(400, [](int i) { return std::sin(i * 0.1); });
    zc().MFDFA_button->click();
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_TRUE(mfdfa().Visible());
    EXPECT_FALSE(zoom().Visible());
    EXPECT_EQ(mfdfa().MfdfaSamples, 400);
    EXPECT_EQ(mc().Text4->Text(), " 80");
}

TEST_F(MfdfaWindow, LoadTakesTheFragmentAndNamesItsTimes) {
    prepare(1003, "0.5", "10", 201);
    EXPECT_EQ(mc().Text4->Text(), " 200") << "Int(200.6)";
    EXPECT_EQ(mc().Text1->Text(), "4");
    EXPECT_EQ(mc().Text2->Text(), "0");
    EXPECT_EQ(mc().Text3->Text(), "20");
    EXPECT_EQ(mfdfa().MfdfaTmin, 110.0f);
    EXPECT_EQ(mfdfa().MfdfaTmax, 611.0f);
    EXPECT_EQ(mfdfa().Caption(), "Singularity Spectrum Estimate by Detrended Fluctuation "
                                 "Analysis for walk.dat,PART[110,611]");
    EXPECT_EQ(mfdfa().MfdfaInput, zoom().FragInput);
    for (int i = 1; i <= 1003; ++i)
        ASSERT_EQ(mfdfa().MfdfaSignal(i), static_cast<double>(zoom().FragInput(i)));
    EXPECT_EQ(mc().Text1->ToolTipText(), "Detrended Polynomial Order, 0 <= * <= 10");
    EXPECT_EQ(mc().Text2->ToolTipText(),
              "Type of the signal's variabilty measure, 0 (Max-Min) or 1 (Std.Dev.)");
    EXPECT_EQ(mc().Text3->ToolTipText(), "Minimum scale value, # of samples");
    EXPECT_EQ(mc().Text4->ToolTipText(), "Maximum scale value, # of samples");
}

TEST_F(MfdfaWindow, TheSavedNameCarriesTheSinglePrecisionTimesOfTheCaption) {
    prepare(400, "0.1", "0", 3);
    EXPECT_TRUE(mfdfa().Caption().endsWith("walk.dat,PART[.2,40.1]"));
    launch();
    mc().SaveFalfa_button->click();
    EXPECT_TRUE(fs::exists(dir / "SpectEstimates" / "F(Alfa)_walk,PART[.2,40.1].dat"));
}

TEST_F(MfdfaWindow, TheStateTable) {
    prepare(400);
    EXPECT_EQ(states(), "010") << "after Load";
    EXPECT_TRUE(ops(*mc().FalfaPlot, DrawKind::Segment).empty());
    launch();
    EXPECT_EQ(states(), "101") << "after a run";
    EXPECT_EQ(lastCall().calls, 1);
    mc().SaveFalfa_button->click();
    EXPECT_EQ(states(), "100") << "after a save";
    mc().FalfaPlot->canvas().setRecording(true);
    mc().Text3->setText("25");
    EXPECT_EQ(states(), "010") << "after a change of a box";
    ASSERT_FALSE(mc().FalfaPlot->canvas().record().empty());
    EXPECT_EQ(mc().FalfaPlot->canvas().record().back().kind, DrawKind::Cls);
    launch();
    EXPECT_EQ(states(), "101");
    EXPECT_EQ(lastCall().calls, 2);
    mc().Text1->setText("3");
    EXPECT_EQ(states(), "010") << "any box";
}

TEST_F(MfdfaWindow, BoxesAreRepairedAtLaunchAndHandedOver) {
    prepare(1003);
    launch();
    Call c = lastCall();
    EXPECT_EQ(c.samples, 1003);
    EXPECT_EQ(c.order, 4);
    EXPECT_EQ(c.measure, 0);
    EXPECT_EQ(c.minScale, 20);
    EXPECT_EQ(c.maxScale, 200) << "the value shown at Load stays";
    EXPECT_EQ(c.alfaCount, 200);
    EXPECT_EQ(c.qCount, 200);
    EXPECT_EQ(c.qMin, -10.0);
    EXPECT_EQ(c.qMax, 10.0);
    EXPECT_EQ(c.scaleCount, 180);

    mc().Text1->setText("12");
    mc().Text2->setText("7");
    mc().Text3->setText("5");
    mc().Text4->setText("300");
    launch();
    c = lastCall();
    EXPECT_EQ(mc().Text1->Text(), " 10");
    EXPECT_EQ(mc().Text2->Text(), " 1");
    EXPECT_EQ(mc().Text3->Text(), " 20");
    EXPECT_EQ(mc().Text4->Text(), " 201") << "Round(200.6)";
    EXPECT_EQ(std::vector<int>({c.order, c.measure, c.minScale, c.maxScale, c.scaleCount}),
              std::vector<int>({10, 1, 20, 201, 181}));

    mc().Text4->setText("10");
    mc().Text3->setText("30");
    launch();
    EXPECT_EQ(mc().Text4->Text(), " 40");
    EXPECT_EQ(mc().Text3->Text(), " 20") << "half of 40";
    EXPECT_EQ(lastCall().scaleCount, 20);

    mc().Text4->setText("80");
    launch();
    EXPECT_EQ(lastCall().scaleCount, 60) << "a table of 12,000 values";
    EXPECT_EQ(mfdfa().ZQtab.count(), 12000);
}

TEST_F(MfdfaWindow, TwoHundredScalesAtMost) {
    prepare(10000);
    mc().Text4->setText("2000");
    mc().ZQtab_Plot->canvas().setRecording(true);
    launch();
    EXPECT_EQ(lastCall().maxScale, 2000);
    EXPECT_EQ(lastCall().scaleCount, 200);
    EXPECT_EQ(mfdfa().ZQtab.count(), 40000);
    // 20 lines and 20 curves of 199 segments.
    EXPECT_EQ(ops(*mc().ZQtab_Plot, DrawKind::Segment).size(), 20u + 20u * 199u);
}

TEST_F(MfdfaWindow, TheSpectrumIsDrawnFromItsPositivePointsOnly) {
    prepare(400);
    scriptSpectrum();
    mc().FalfaPlot->canvas().setRecording(true);
    launch();
    ASSERT_TRUE(messages.empty());
    EXPECT_EQ(mfdfa().AlfaMin, 0.5f);
    EXPECT_EQ(mfdfa().AlfaMax, 1.0f);
    EXPECT_EQ(mfdfa().FAlfaMin, -0.5f);
    EXPECT_EQ(mfdfa().FAlfaMax, 1.0f);
    PlotSurface& plot = *mc().FalfaPlot;
    const double W = plot.ScaleWidth(), H = plot.ScaleHeight();
    // Point i at x = W * (i - 51) / 50; F at y = H * (1 - F) / 1.5.
    const QRgb navy = BasicColor(1).rgb();
    EXPECT_EQ(plot.canvas().record().front().kind, DrawKind::Cls);
    EXPECT_TRUE(sameOps(afterLastCls(plot.canvas().record()),
                        {{DrawKind::Segment, 0, H / 3, W / 50, 0, navy, 1, 0},
                         {DrawKind::Segment, W / 50, 0, 2 * W / 50, H / 3, navy, 1, 0},
                         // the last valid point of a run joins the next, invalid one
                         {DrawKind::Segment, 2 * W / 50, H / 3, 3 * W / 50, 2 * H / 3, navy, 1, 0},
                         {DrawKind::Segment, W, H / 2, 51 * W / 50, 2 * H / 3, navy, 1, 0}}));
    QStringList x, y;
    for (int k = 0; k < 6; ++k)
        x << mc().Xmarks[k]->Caption(), y << mc().Ymarks[k]->Caption();
    EXPECT_EQ(x, QStringList({"0.5", "0.6", "0.7", "0.8", "0.9", "1"}));
    EXPECT_EQ(y, QStringList({"-0.5", "-0.2", "0.1", "0.4", "0.7", "1"}));

    mc().SaveFalfa_button->click();
    EXPECT_EQ(readBytes(dir / "SpectEstimates" / "F(Alfa)_walk,PART[0,399].dat"),
              "' Detrended polynomial order= 4\r\n"
              "' Type of signal`s variability measure= 0\r\n"
              "' Minimum scale value (# of samples)= 20\r\n"
              "' Maximum scale value (# of samples)= 80\r\n"
              " .5 .5\r\n"
              " .51 1\r\n"
              " .52 .5\r\n"
              " 1 .25\r\n");
}

TEST_F(MfdfaWindow, ThePositiveFirstPointIsSavedButLeftOutOfTheAlfaRange) {
    prepare(400, "0.5", "10", 201);
    scriptSpectrum();
    f[0] = 0.75;
    script(alfa.data(), f.data(), 200, nullptr, 0, 0);
    mc().Text2->setText("1");
    launch();
    EXPECT_EQ(mfdfa().AlfaMin, 0.5f) << "not 0, the first Alfa";
    mc().SaveFalfa_button->click();
    EXPECT_FALSE(mc().SaveFalfa_button->isEnabled());
    const std::string text = readBytes(dir / "SpectEstimates" / savedName());
    EXPECT_EQ(text.substr(0, text.find("\r\n", text.find("\r\n") + 2) + 2),
              "' Detrended polynomial order= 4\r\n"
              "' Type of signal`s variability measure= 1\r\n");
    EXPECT_NE(text.find("= 80\r\n 0 .75\r\n .5 .5\r\n"), std::string::npos);
}

TEST_F(MfdfaWindow, AFailingSaveIsPassedOverSilently) {
    prepare(400, "0.5", "10", 201);
    launch();
    writeBytes(dir / "SpectEstimates", "a file where the directory should be");
    mc().SaveFalfa_button->click();
    EXPECT_TRUE(messages.empty());
    EXPECT_FALSE(mc().SaveFalfa_button->isEnabled());
    EXPECT_EQ(readBytes(dir / "SpectEstimates"), "a file where the directory should be");
    EXPECT_TRUE(mfdfa().Visible());
}

TEST_F(MfdfaWindow, EveryTenthQGetsADashedLineAndACurveInTheSevenColours) {
    prepare(500);
    // Columns linear in log10 of scale (60 scales from 20 to 100 samples,
    // placed from log10 20 to log10 100): each line runs through its curve's ends.
    const int scales = 60;
    std::vector<double> table(200 * scales);
    const double l1 = std::log10(20.0), l2 = 2.0;
    for (int s = 0; s < scales; ++s)
        for (int j = 0; j < 200; ++j)
            table[static_cast<std::size_t>(s * 200 + j)] =
                (j + 1) * (l1 + s * (l2 - l1) / (scales - 1));
    script(nullptr, nullptr, 0, table.data(), 200, scales);
    mc().Text4->setText("80");
    mc().ZQtab_Plot->canvas().setRecording(true);
    launch();
    ASSERT_TRUE(messages.empty());
    const auto lines = ops(*mc().ZQtab_Plot, DrawKind::Segment);
    ASSERT_EQ(lines.size(), 20u + 20u * 59u);
    const double W = mc().ZQtab_Plot->ScaleWidth(), H = mc().ZQtab_Plot->ScaleHeight();
    for (std::size_t k = 0; k < 20; ++k) {
        const DrawOp& line = *lines[k];
        EXPECT_EQ(line.color, BasicColor(0).rgb());
        EXPECT_EQ(line.style, 1) << "dashed";
        const DrawOp& first = *lines[20 + 59 * k];
        const DrawOp& last = *lines[20 + 59 * k + 58];
        EXPECT_EQ(first.color, BasicColor(static_cast<int>(k % 7)).rgb()) << k;
        EXPECT_EQ(last.color, first.color);
        EXPECT_EQ(first.style, 0);
        EXPECT_NEAR(line.x1, 0, 0.01);
        EXPECT_NEAR(line.x2, W, 0.01);
        EXPECT_NEAR(first.x1, 0, 0.01);
        EXPECT_NEAR(last.x2, W, 0.01);
        EXPECT_NEAR(line.y1, first.y1, 0.05) << k;
        EXPECT_NEAR(line.y2, last.y2, 0.05) << k;
    }
    // q number 1 at the smallest scale is the lowest value, 191 at the largest the highest.
    EXPECT_NEAR(lines[20]->y1, H, 0.01);
    EXPECT_NEAR(lines.back()->y2, 0, 0.01);
    EXPECT_EQ(mfdfa().LgScaleMin, static_cast<float>(std::log(20.0) / std::log(10.0)));
    EXPECT_EQ(mfdfa().LgScaleMax, static_cast<float>(std::log(100.0) / std::log(10.0)));
}

TEST_F(MfdfaWindow, ReadOutsOverBothPlots) {
    prepare(500);
    scriptSpectrum();
    launch();
    const auto W = static_cast<float>(mc().FalfaPlot->ScaleWidth());
    const auto H = static_cast<float>(mc().FalfaPlot->ScaleHeight());
    mfdfa().FalfaPlot_MouseMove(0, 0, W / 2, H / 2);
    EXPECT_EQ(mc().FalfaPlot->ToolTipText(), "Alfa= .75, F(Alfa)= .25");
    const auto Wz = static_cast<float>(mc().ZQtab_Plot->ScaleWidth());
    mfdfa().ZQtab_Plot_MouseMove(0, 0, Wz, 0);
    EXPECT_EQ(mc().ZQtab_Plot->ToolTipText(), "Scale (# of samples)= 100");
    mfdfa().ZQtab_Plot_MouseMove(0, 0, Wz / 2, 0);
    EXPECT_EQ(mc().ZQtab_Plot->ToolTipText(), "Scale (# of samples)= 44") << "10^1.65";
}

TEST_F(MfdfaWindow, HelpAndClosing) {
    prepare(400);
    mc().MFDFA_Help_button->click();
    EXPECT_TRUE(wb->mfdfaHelpForm().Visible());
    EXPECT_EQ(mfdfa().Caption().left(33), "Singularity Spectrum Estimate by ");
    mfdfa().window().close();
    EXPECT_FALSE(mfdfa().isLoaded());
    EXPECT_TRUE(zoom().Visible());
}

// Runs that leave the plots undefined end with a message; the window stays as
// it was before the launch: nothing drawn, Launch on, Save off.
struct UndrawableSpectrum {
    const char* name;
    std::vector<double> f; // F at the points 1, 2, ...; the rest 0
    bool flatTable;        // a constant table
    std::int32_t scales;   // scales given back (0: as asked)
    const char* message;
};

void PrintTo(const UndrawableSpectrum& run, std::ostream* out) {
    *out << run.name;
}

class MfdfaUndrawable : public MfdfaWindow,
                        public ::testing::WithParamInterface<UndrawableSpectrum> {};

TEST_P(MfdfaUndrawable, EndsWithAMessageAndChangesNothingElse) {
    const UndrawableSpectrum& run = GetParam();
    prepare(400);
    std::vector<double> a(200), fa(200, 0.0);
    for (int i = 0; i < 200; ++i)
        a[static_cast<std::size_t>(i)] = 0.3 + 0.002 * i;
    std::copy(run.f.begin(), run.f.end(), fa.begin());
    std::vector<double> table(200 * 60, 0.25);
    if (!run.flatTable) table[0] = 0.5;
    script(a.data(), fa.data(), 200, table.data(), 200, run.scales ? run.scales : 60);
    mc().FalfaPlot->canvas().setRecording(true);
    mc().ZQtab_Plot->canvas().setRecording(true);
    launch();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "MFDFA Analysis");
    EXPECT_EQ(messages[0].text, run.message);
    EXPECT_EQ(states(), "010");
    EXPECT_TRUE(ops(*mc().FalfaPlot, DrawKind::Segment).empty());
    EXPECT_TRUE(ops(*mc().ZQtab_Plot, DrawKind::Segment).empty());
    EXPECT_EQ(mc().Xmarks[0]->Caption(), "") << "no marks laid out";
    EXPECT_TRUE(mfdfa().Visible());
}

INSTANTIATE_TEST_SUITE_P(
    MfdfaWindow, MfdfaUndrawable,
    ::testing::Values(
        UndrawableSpectrum{"NoPositiveF",
                           {0.9, 0.0, -0.1},
                           false,
                           0,
                           "The singularity spectrum is nowhere positive for this fragment\r\n"
                           "Please, change the parameters or choose another fragment"},
        UndrawableSpectrum{"OnePositiveAlfa",
                           {0.0, 0.0, 0.7},
                           false,
                           0,
                           "The singularity spectrum has a single value of Alfa: its Alfa range "
                           "is 0\r\nPlease, change the parameters or choose another fragment"},
        UndrawableSpectrum{"FlatTable",
                           {0.0, 0.5, 0.7},
                           true,
                           0,
                           "The fluctuation measure is the same at all scales and power degrees\r\n"
                           "Please, change the parameters or choose another fragment"},
        UndrawableSpectrum{"OneScale",
                           {0.0, 0.5, 0.7},
                           false,
                           1,
                           "The analysis gave back fewer than two scales or no power degree q\r\n"
                           "Please, change the scale values"}),
    [](const ::testing::TestParamInfo<UndrawableSpectrum>& info) {
        return std::string(info.param.name);
    });

TEST_F(MfdfaWindow, AllFEqualIsAFlatSpectrum) {
    prepare(400);
    std::vector<double> a(200), fa(200, 0.5);
    for (int i = 0; i < 200; ++i)
        a[static_cast<std::size_t>(i)] = 0.3 + 0.002 * i;
    script(a.data(), fa.data(), 200, nullptr, 0, 0);
    launch();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "The singularity spectrum has the same value everywhere: its "
                                "F(Alfa) range is 0\r\nPlease, change the parameters or choose "
                                "another fragment");
    EXPECT_EQ(states(), "010");
}

TEST_F(MfdfaWindow, ARandomWalkHasItsSpectrumAroundOneHalfAndIsSaved) {
    startIn("1", "0");
    const std::vector<double> walk = randomWalk(2000, 77);
    zoomWholeSignal("walk.dat", walk);
    zc().MFDFA_button->click();
    QApplication::processEvents();
    ASSERT_TRUE(mfdfa().Visible());
    EXPECT_EQ(mfdfa().MfdfaFileName, "walk.dat");
    EXPECT_EQ(mc().Text4->Text(), " 400");
    mc().Text1->setText("2");
    mc().FalfaPlot->canvas().setRecording(true);
    mc().ZQtab_Plot->canvas().setRecording(true);
    launch();
    ASSERT_TRUE(messages.empty()) << messages[0].text.toStdString();
    EXPECT_EQ(states(), "101");
    // The walk's own increments are independent: h(q) about 1/2 for every q,
    // so the spectrum stands over Alfa = 1/2.
    EXPECT_LT(mfdfa().AlfaMin, 0.5f);
    EXPECT_GT(mfdfa().AlfaMax, 0.5f);
    EXPECT_NEAR(mfdfa().FAlfaMax, 1.0f, 0.1f) << "the top of the spectrum";
    EXPECT_FALSE(ops(*mc().FalfaPlot, DrawKind::Segment).empty());
    const std::size_t tableSegments = ops(*mc().ZQtab_Plot, DrawKind::Segment).size();
    EXPECT_EQ((tableSegments - 20) % 20, 0u) << "20 lines, then 20 curves of equal length";
    EXPECT_GT(tableSegments, 20u + 20u * 50u);
    mc().SaveFalfa_button->click();
    const std::string text = readBytes(dir / "SpectEstimates" / "F(Alfa)_walk,PART[0,1999].dat");
    EXPECT_EQ(text.substr(0, 33), "' Detrended polynomial order= 2\r\n");
    std::size_t points = 0;
    for (int i = 1; i <= mfdfa().AlfaCount; ++i)
        points += mfdfa().FAlfa(i) > 0;
    EXPECT_EQ(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')), 4 + points);
}
