// The multifractal DFA window: the length limit, the boxes handed over, the two
// plots, the save and the state table, with spectra and tables dictated through
// the stand-in library (the real library's run is on the end-to-end road and in
// test_flat_segments.cpp). The repair rules and the checks themselves are
// pinned in test_multiscalelogic.cpp.
#include "core/numtext.h"
#include "multiscale/mfdfaform.h"
#include "tests/multiscale/multiscale_fixture.h"

using namespace tarnic;
using namespace tarnic::test;

namespace {

class MfdfaWindow : public MultiscaleWindow {
  protected:
    // A fragment of n samples, the samples first .. of a signal "walk.dat",
    // and the analysis window opened on it.
    void prepare(int n, const char* dT = "1", int first = 1) {
        startIn(dT);
        wb->mfdfaForm().MfdfaFileName = "walk.dat";
        const std::vector<double> walk = randomWalk(n, 5);
        handFragment(n, [&](int i) { return walk[std::size_t(i - 1)]; }, first);
        useStandIn();
        zc().MFDFA_button->click();
    }
    void launch() { mc().LaunchMFDFA_btn->click(); }
    // Both plots, Launch, Save as the user meets them, e.g. "0010".
    std::string states() {
        return enabled({mc().FalfaPlot, mc().ZQtab_Plot, mc().LaunchMFDFA_btn, mc().SaveFalfa_button});
    }
    // 200 points Alfa = a0 + step * (i - 1); F as given at the first points,
    // `rest` at the others; the table as given or the stand-in's own.
    void scriptSpectrum(std::vector<double> f, double rest = 0, double a0 = 0, double step = 0.01,
                        const std::vector<double>& table = {}, int scales = 60) {
        FakeMfdfa& m = *fakeMfdfa;
        m.alfa.resize(200);
        for (int i = 0; i < 200; ++i) m.alfa[std::size_t(i)] = a0 + step * i;
        f.resize(200, rest);
        m.fAlfa = f, m.table = table, m.qCount = 200, m.scaleCount = scales;
    }
    MFDFA_form& mfdfa() { return wb->mfdfaForm(); }
    MFDFA_formControls& mc() { return wb->mfdfaForm().ui(); }
};

const QString kOther = "\r\nPlease, change the parameters or choose another fragment";

} // namespace

TEST_F(MfdfaWindow, FewerThan400SamplesAreRefusedAnd400AreAnalysedWithTheirBoxes) {
    prepare(399);
    messages.expectOne("MFDFA Analysis", "This length of the signal fragment is too small\r\n"
                                         "MFDFA Analysis is possible for length => 400 only");
    EXPECT_TRUE(!mfdfa().isLoaded() && zoom().Visible());
    messages.clear();
    // 400 samples of 0.1, samples 3 .. 402 (times in single precision).
    prepare(400, "0.1", 3);
    EXPECT_EQ(mc().Text4->Text(), " 80") << "a fifth of the fragment";
    EXPECT_TRUE(mfdfa().Caption().endsWith("walk.dat,PART[.2,40.1]"));
    EXPECT_EQ(states(), "0010") << "after Load";
    // F = 0.75 at point 1, positive at the points 51, 52, 53 and 101, negative at 150.
    std::vector<double> f(150);
    f[0] = 0.75, f[50] = 0.5, f[51] = 1.0, f[52] = 0.5, f[100] = 0.25, f[149] = -0.5;
    scriptSpectrum(f);
    mc().Text2->setText("1");
    mc().FalfaPlot->canvas().setRecording(true);
    launch();
    EXPECT_EQ(states(), "1101") << "after a run";
    // The boxes as shown at Load; 200 alfas and q values from -10 to 10.
    EXPECT_EQ(fakeMfdfa->received, (std::vector<double>{400, 4, 1, 20, 80, 200, 60, 200, -10, 10}));
    // The Alfa range 0.5 .. 1 leaves the first point out, F runs from -0.5 to 1:
    // point i at x = (i - 51) / 50 of the width, F at y = (1 - F) / 1.5 of the
    // height; the first point lies off the plot, and the last valid point of a
    // run joins the next, invalid one.
    EXPECT_EQ(shapes(*mc().FalfaPlot),
              (std::vector<std::string>{
                  "S -1 0.167 -0.98 0.667 000080 1 0", "S 0 0.333 0.02 0 000080 1 0",
                  "S 0.02 0 0.04 0.333 000080 1 0", "S 0.04 0.333 0.06 0.667 000080 1 0",
                  "S 1 0.5 1.02 0.667 000080 1 0"}));
    EXPECT_EQ(captions(mc().Ymarks), QStringList({"-0.5", "-0.2", "0.1", "0.4", "0.7", "1"}));
    // Over the middle of the plot: the middle of both ranges. Over the table:
    // the scale of the log axis from 20 to 80 samples, 10^1.45 and 10^1.75.
    mfdfa().FalfaPlot_MouseMove(0, 0, float(mc().FalfaPlot->ScaleWidth() / 2),
                                float(mc().FalfaPlot->ScaleHeight() / 2));
    EXPECT_EQ(mc().FalfaPlot->ToolTipText(), "Alfa= .75, F(Alfa)= .25");
    for (auto [x, tip] : {std::pair{0.25, "28"}, {0.75, "56"}}) {
        mfdfa().ZQtab_Plot_MouseMove(0, 0, float(x * mc().ZQtab_Plot->ScaleWidth()), 0);
        EXPECT_EQ(mc().ZQtab_Plot->ToolTipText(), QString("Scale (# of samples)= ") + tip);
    }
    mc().SaveFalfa_button->click();
    EXPECT_EQ(states(), "1100") << "after a save";
    EXPECT_EQ(readBytes(dir / "SpectEstimates" / "F(Alfa)_walk,PART[.2,40.1].dat"),
              "' Detrended polynomial order= 4\r\n"
              "' Type of signal`s variability measure= 1\r\n"
              "' Minimum scale value (# of samples)= 20\r\n"
              "' Maximum scale value (# of samples)= 80\r\n"
              " 0 .75\r\n .5 .5\r\n .51 1\r\n .52 .5\r\n 1 .25\r\n");
    mc().Text3->setText("25");
    EXPECT_EQ(states(), "0010") << "after a change of a box";
    EXPECT_EQ(mc().FalfaPlot->canvas().record().back().kind, DrawKind::Cls) << "the spectrum is wiped";
    launch();
    EXPECT_EQ(states(), "1101");
    mc().Text1->setText("12");
    EXPECT_EQ(states(), "0010") << "any box";
    launch();
    EXPECT_EQ(mc().Text1->Text() + mc().Text3->Text(), " 10 25") << "repaired at Launch";
    EXPECT_EQ(fakeMfdfa->received.at(1), 10);
}

// Runs that leave the plots undefined end with a message; the window stays as
// it was before the launch: nothing drawn, Launch on, Save off.
TEST_F(MfdfaWindow, AnUndrawableRunEndsWithAMessageAndChangesNothingElse) {
    prepare(400);
    mc().FalfaPlot->canvas().setRecording(true);
    mc().ZQtab_Plot->canvas().setRecording(true);
    std::vector<double> table(200 * 60, 0.25), flat = table;
    table[0] = 0.5;
    const QString spectrum = "The singularity spectrum ";
    // F at the first points and at the others, the table, its scales, the message.
    for (const auto& [f, rest, tab, scales, expected] : std::initializer_list<
             std::tuple<std::vector<double>, double, std::vector<double>, int, QString>>{
        {{0.9, 0.0, -0.1}, 0, table, 60, spectrum + "is nowhere positive for this fragment" + kOther},
        {{0.0, 0.0, 0.7}, 0, table, 60, spectrum + "has a single value of Alfa: its Alfa range is 0" + kOther},
        {{}, 0.5, table, 60, spectrum + "has the same value everywhere: its F(Alfa) range is 0" + kOther},
        {{0.0, 0.5, 0.7}, 0, flat, 60,
         "The fluctuation measure is the same at all scales and power degrees" + kOther},
        {{0.0, 0.5, 0.7}, 0, table, 1,
         "The analysis gave back fewer than two scales or no power degree q\r\nPlease, change the scale values"},
        {{0.0, NAN, 0.7}, 0, table, 60, "The analysis gave values that are not numbers\r\nNothing can be drawn"},
    }) {
        messages.clear();
        scriptSpectrum(f, rest, 0.3, 0.002, tab, scales);
        launch();
        messages.expectOne("MFDFA Analysis", expected);
        EXPECT_EQ(states(), "0010");
        EXPECT_TRUE(drawn(*mc().FalfaPlot, DrawKind::Segment).empty() &&
                    drawn(*mc().ZQtab_Plot, DrawKind::Segment).empty());
        EXPECT_EQ(mc().Xmarks[0]->Caption(), "") << "no marks laid out";
    }
}
