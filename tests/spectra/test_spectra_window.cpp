// The spectrum run of the main window, its picture and its files.
#include "core/numtext.h"
#include "core/naming.h"
#include "numeric/burg.h"
#include "numeric/significance.h"
#include "spectra/spectrumrun.h"
#include "tests/core/mainwindow_fixture.h"

#include <QAction>
#include <QMenu>

#include <cmath>
#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

std::vector<double> whiteNoise(int n, double sigma, unsigned seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(0.0, sigma);
    std::vector<double> x(static_cast<std::size_t>(n));
    for (double& v : x) v = normal(random);
    return x;
}

std::vector<double> ar2(int n, unsigned seed) {
    const auto e = whiteNoise(n + 500, 1.0, seed);
    std::vector<double> x(e.size(), 0.0);
    for (std::size_t t = 2; t < x.size(); ++t) x[t] = 0.75 * x[t - 1] - 0.5 * x[t - 2] + e[t];
    return {x.begin() + 500, x.end()};
}

class SpectrumRun : public MainWindow {
  protected:
    void loadSeries(const std::vector<double>& x) {
        start();
        write("s.dat", series(static_cast<int>(x.size()),
                              [&](int i) { return x[static_cast<std::size_t>(i - 1)]; }));
        open("s.dat");
        ASSERT_EQ(message(), "");
    }
    void launch() { ui().LaunchButton->click(); }
    double variance() {
        double mean = 0, sq = 0;
        for (float v : form().Signal.span()) mean += v;
        mean /= form().Nrec;
        for (float v : form().Signal.span()) sq += (v - mean) * (v - mean);
        return sq / form().Nrec;
    }
    // Sum of a one-sided density over its grid times the grid step.
    static double power(const Array1<float>& sp, const Array1<float>& freq) {
        double sum = 0;
        for (int i = 1; i <= sp.count(); ++i) sum += sp(i);
        return sum * freq(2);
    }
    std::vector<DrawOp> segmentsOf(QRgb color) {
        std::vector<DrawOp> out;
        for (const DrawOp& op : ui().Picture1->canvas().record())
            if (op.kind == DrawKind::Segment && op.color == color) out.push_back(op);
        return out;
    }
};

} // namespace

TEST_F(SpectrumRun, BoxesAreClampedInOrderAndShowTheValuesInForce) {
    loadSeries(whiteNoise(3000, 1.0, 1));
    ui().AR_Length_Text->setText("2048.9");
    ui().AR_OrderText->setText("abc");
    ui().TimeLengText->setText("60");
    ui().RadiusText->setText("9");
    ui().DeltaT_Text->setText("0");
    ui().Time0_Text->setText("  12.5x");
    launch();
    EXPECT_EQ(ui().AR_Length_Text->Text(), " 2048");
    EXPECT_EQ(ui().AR_OrderText->Text(), " 1");
    EXPECT_EQ(ui().TimeLengText->Text(), " 60");
    EXPECT_EQ(ui().RadiusText->Text(), " 7");
    EXPECT_EQ(ui().DeltaT_Text->Text(), " 1");
    EXPECT_EQ(ui().Time0_Text->Text(), " 12.5");
    EXPECT_EQ(form().FftLengFour, 64);
    EXPECT_EQ(form().NfFour, 32);
    EXPECT_EQ(form().NfAR, 1024);
    EXPECT_EQ(form().SpectraReady, 1);
    expectStage(ui(), Stage::SpectraShown);

    ui().AR_Length_Text->setText("32");
    ui().AR_OrderText->setText("20");
    ui().DeltaT_Text->setText("0.123456789");
    launch();
    EXPECT_EQ(ui().AR_OrderText->Text(), " 11");
    EXPECT_EQ(ui().DeltaT_Text->Text(), " .1234568") << "single precision shows 7 digits";
}

TEST_F(SpectrumRun, WindowsComputedInParallelGiveTheSequentialSum) {
    const auto x = ar2(10000, 3);
    loadSeries(x);
    ui().AR_OrderText->setText("30");
    launch();
    ASSERT_EQ(form().LengAR, 2048);
    const ArWindows w = SearchArWindows(10000, 2048);
    std::vector<float> expected(1024, 0.0f), window(1024);
    for (int k = 1; k <= w.count; ++k) {
        const auto begin = form().Signal.span().begin() + (k - 1) * w.shift;
        burgSpectrum(std::span<const float>(begin, 2048), 30, window);
        for (std::size_t i = 0; i < 1024; ++i) expected[i] = expected[i] + window[i] / w.count;
    }
    for (std::size_t i = 0; i < 1024; ++i)
        ASSERT_EQ(form().SpAR(static_cast<int>(i) + 1), expected[i] * form().DeltaT) << i;
    EXPECT_EQ(form().SpARWindow.count(), 1024);
}

TEST_F(SpectrumRun, AWindowAsLongAsTheSignalIsOneCall) {
    loadSeries(whiteNoise(500, 1.0, 4));
    ui().AR_Length_Text->setText("500");
    launch();
    EXPECT_EQ(form().LengAR, 500);
    EXPECT_EQ(form().NfAR, 256);
    EXPECT_EQ(form().SpARWindow.count(), 0) << "no window array on the one-call path";
    std::vector<float> direct(256);
    burgSpectrum(form().Signal.span(), static_cast<std::size_t>(form().Nar), direct);
    EXPECT_EQ(form().SpAR(7), direct[6]);
}

TEST_F(SpectrumRun, BothEstimatesAreDensitiesOnOneScale) {
    // White noise of variance 4 with dT 0.5: flat near 2 * 4 * 0.5 = 4.
    loadSeries(whiteNoise(20000, 2.0, 5));
    ui().DeltaT_Text->setText("0.5");
    launch();
    const double var = variance();
    EXPECT_NEAR(power(form().SpAR, form().FreqAR), var, 0.05 * var);
    EXPECT_NEAR(power(form().SpFour, form().FreqFour), var, 0.05 * var);
    double meanAR = 0, meanFour = 0;
    for (int i = 2; i <= form().NfAR; ++i) meanAR += form().SpAR(i) / (form().NfAR - 1);
    for (int i = 2; i <= form().NfFour; ++i) meanFour += form().SpFour(i) / (form().NfFour - 1);
    EXPECT_NEAR(meanAR, 2 * var * 0.5, 0.1 * var);
    EXPECT_NEAR(meanFour, 2 * var * 0.5, 0.1 * var);
    EXPECT_FLOAT_EQ(form().FreqAR(2), 1.0f / (0.5f * 2048));
}

TEST_F(SpectrumRun, TheTwoCurvesLieOnEachOtherWhereThereAreNoLines) {
    loadSeries(ar2(40000, 6));
    ui().AR_OrderText->setText("12");
    ui().RadiusText->setText("4");
    launch();
    ASSERT_EQ(form().NfAR, form().NfFour);
    int far = 0;
    for (int i = 20; i <= form().NfAR - 20; i += 10) {
        const double ratio = form().SpAR(i) / form().SpFour(i);
        if (ratio < 0.7 || ratio > 1.3) ++far;
    }
    EXPECT_LE(far, 3) << "green and dark blue agree across the band";
}

TEST_F(SpectrumRun, TheMainCurveFillsTheLowerTwoThirdsAndTheGreenOneIsClampedAtTheTop) {
    loadSeries(ar2(8000, 7));
    ui().TimeLengText->setText("256");
    ui().RadiusText->setText("0");
    ui().Picture1->canvas().setRecording(true);
    launch();
    const double H = ui().Picture1->ScaleHeight(), W = ui().Picture1->ScaleWidth();
    const auto blue = segmentsOf(BasicColor(1).rgb());
    const auto green = segmentsOf(qRgb(0, 255, 0));
    ASSERT_EQ(blue.size(), static_cast<std::size_t>(form().NfAR - 2));
    ASSERT_EQ(green.size(), static_cast<std::size_t>(form().NfFour - 2));
    float top = 1e30f, bottom = -1e30f, left = 1e30f, right = -1e30f;
    for (const DrawOp& s : blue) {
        top = std::min({top, s.y1, s.y2});
        bottom = std::max({bottom, s.y1, s.y2});
        left = std::min({left, s.x1, s.x2});
        right = std::max({right, s.x1, s.x2});
    }
    EXPECT_NEAR(top, H / 3, 1e-2);
    EXPECT_NEAR(bottom, H, 1e-2);
    EXPECT_NEAR(left, 0, 1e-2);
    EXPECT_NEAR(right, W, 1e-2);
    for (const DrawOp& s : green) EXPECT_GE(s.y1, static_cast<float>(H / 3) - 1e-3f);
    const auto& ops = ui().Picture1->canvas().record();
    const auto box = std::find_if(ops.begin(), ops.end(),
                                  [](const DrawOp& op) { return op.kind == DrawKind::Box; });
    ASSERT_NE(box, ops.end());
    EXPECT_EQ(box->color, qRgb(0xE0, 0xE0, 0xE0));
    EXPECT_FLOAT_EQ(box->y1, static_cast<float>(H / 3));
    EXPECT_FLOAT_EQ(box->y2, static_cast<float>(2 * H / 3));
}

TEST_F(SpectrumRun, EveryViewDrawsBothCurvesAndTogglingTwiceGivesTheSamePicture) {
    loadSeries(ar2(4000, 8));
    launch();
    ui().SaveSpButton->click(); // the save state must survive view changes
    const std::size_t segments = static_cast<std::size_t>(form().NfAR - 2 + form().NfFour - 2);
    for (int view = 0; view < 8; ++view) {
        ui().FreqCheck->setValue(view & 1);
        ui().LogX_Check->setValue((view >> 1) & 1);
        ui().LogY_Check->setValue((view >> 2) & 1);
        ui().Picture1->canvas().setRecording(true);
        ui().Picture1->canvas().clearRecord();
        form().PlotSpectra();
        EXPECT_EQ(segmentsOf(BasicColor(1).rgb()).size() + segmentsOf(qRgb(0, 255, 0)).size(),
                  segments)
            << view;
        EXPECT_FALSE(ui().SaveSpButton->isEnabled());
    }
    ui().Picture1->canvas().clearRecord();
    form().PlotSpectra();
    const auto before = segmentsOf(BasicColor(1).rgb());
    const QImage picture = ui().Picture1->canvas().image();
    ui().Picture1->canvas().clearRecord();
    ui().LogX_Check->setValue(1 - ui().LogX_Check->Value());
    ui().LogX_Check->setValue(1 - ui().LogX_Check->Value());
    const auto after = segmentsOf(BasicColor(1).rgb());
    ASSERT_EQ(after.size(), 2 * before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(after[before.size() + i].x1, before[i].x1);
        EXPECT_EQ(after[before.size() + i].y1, before[i].y1);
    }
    EXPECT_EQ(ui().Picture1->canvas().image(), picture);
}

TEST_F(SpectrumRun, PeriodsCrowdToTheLeftOnALinearPeriodAxis) {
    loadSeries(whiteNoise(2048, 1.0, 9));
    ui().LogX_Check->setValue(0);
    launch();
    EXPECT_FLOAT_EQ(form().PlotXMax, 1.0f / form().FreqAR(2)) << "index 2 has the longest period";
    EXPECT_FLOAT_EQ(form().PlotXMin, 1.0f / form().FreqAR(form().NfAR));
    const float W = static_cast<float>(ui().Picture1->ScaleWidth());
    form().Picture1_MouseMove(0, 0, W, static_cast<float>(ui().Picture1->ScaleHeight()) - 20);
    EXPECT_EQ(ui().Picture1->ToolTipText(), "Period= " + QString::fromStdString(NumText(form().PlotXMax)));
}

TEST_F(SpectrumRun, TheSaveWritesBothFilesInPrintZonesAndWaitsForTheNextRun) {
    loadSeries(whiteNoise(64, 1.0, 10));
    ui().AR_Length_Text->setText("32");
    ui().TimeLengText->setText("64");
    launch();
    ui().SaveSpButton->click();
    const auto arFile = dir / "SpectEstimates" / "Sp_AR(s) AR= 11,Leng= 32.dat";
    const auto fourFile = dir / "SpectEstimates" / "Sp_Four(s) MM= 1,Leng= 64.dat";
    ASSERT_TRUE(fs::exists(arFile));
    ASSERT_TRUE(fs::exists(fourFile));
    std::istringstream lines(readBytes(arFile));
    std::string line;
    int i = 1;
    while (std::getline(lines, line)) {
        ++i;
        ASSERT_EQ(line.back(), '\r');
        EXPECT_EQ(line.substr(0, 14).find_last_not_of(' ') + 1,
                  QString::fromStdString(NumText(form().FreqAR(i))).size());
        EXPECT_EQ(line.substr(0, line.find(' ', 1)), NumText(form().FreqAR(i)));
        EXPECT_EQ(line.substr(14, NumText(1.0 / form().FreqAR(i)).size()),
                  NumText(1.0 / form().FreqAR(i)))
            << "the period in double precision from column 15";
        // The spectrum starts at the first zone boundary behind the period and its blank.
        const std::size_t afterPeriod = 14 + NumText(1.0 / form().FreqAR(i)).size() + 1;
        const std::size_t third = (afterPeriod + 13) / 14 * 14;
        EXPECT_EQ(line.substr(third), NumText(form().SpAR(i)) + "\r");
        EXPECT_EQ(line.substr(afterPeriod, third - afterPeriod), std::string(third - afterPeriod, ' '));
    }
    EXPECT_EQ(i, form().NfAR) << "lines for i = 2 .. NfAR";
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton"});
    EXPECT_TRUE(ui().Dir1->isEnabled() == false);

    fs::remove(arFile);
    launch();
    EXPECT_TRUE(ui().SaveSpButton->isEnabled());
    ui().SaveSpButton->click();
    EXPECT_TRUE(fs::exists(arFile)) << "the next run's save writes again";
}

TEST_F(SpectrumRun, ANewFileReturnsToTheLoadedStage) {
    loadSeries(whiteNoise(300, 1.0, 11));
    launch();
    form().OtherFileButton_Click();
    expectStage(ui(), Stage::Start);
    EXPECT_EQ(form().SpectraReady, 1) << "only a double-click resets it";
    open("s.dat");
    EXPECT_EQ(form().SpectraReady, 0);
    expectStage(ui(), Stage::Loaded);
}

TEST_F(SpectrumRun, PreprocessingKeepsTheSpectraControls) {
    loadSeries(whiteNoise(300, 1.0, 12));
    launch();
    ui().IncremButton->click();
    expectStage(ui(), Stage::SpectraShown, {"IncremButton"});
    ui().HScroll_Left->setValue(10000);
    EXPECT_GT(ui().Line_Left->X1(), 0.0f);
}

// ---- the red-noise overlays ----

namespace {

const QRgb kBackgroundColour = qRgb(0x60, 0x60, 0x60), kLevelColour = qRgb(0xC0, 0x00, 0xC0);

bool sameOp(const DrawOp& a, const DrawOp& b) {
    return a.kind == b.kind && a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2 &&
           a.color == b.color && a.width == b.width && a.style == b.style;
}

} // namespace

TEST_F(SpectrumRun, OverlaysAddTheirCurvesOnTheMainScaleAndMoveNothing) {
    loadSeries(ar2(4096, 7));
    PlotSurface& pic = *ui().Picture1;
    pic.canvas().setRecording(true);
    launch();
    const std::vector<DrawOp> plain = pic.canvas().record();
    struct Case {
        bool background, level;
        double p;
    };
    for (const Case k : {Case{true, false, 0.95}, Case{false, true, 0.95}, Case{true, true, 0.99}}) {
        SCOPED_TRACE(::testing::Message() << k.background << k.level << k.p);
        form().ShowRedNoiseBackground = k.background;
        form().ShowSignificanceLevel = k.level;
        form().SignificanceProbability = k.p;
        pic.canvas().clearRecord();
        form().PlotSpectra();
        std::vector<DrawOp> rest;
        for (const DrawOp& op : pic.canvas().record())
            if (op.color != kBackgroundColour && op.color != kLevelColour) rest.push_back(op);
        ASSERT_EQ(rest.size(), plain.size());
        EXPECT_TRUE(std::equal(rest.begin(), rest.end(), plain.begin(), sameOp)) << "nothing moves";
        const auto grey = segmentsOf(kBackgroundColour), magenta = segmentsOf(kLevelColour);
        EXPECT_EQ(grey.size(), k.background ? std::size_t(form().NfAR - 2) : 0u);
        EXPECT_EQ(magenta.size(), k.level ? std::size_t(form().NfFour - 2) : 0u);
        if (!k.level) continue;
        // The level's first point: ln level at ln period of FreqFour(2), dashed,
        // on the main estimate's scale, not above the boundary.
        const SpectrumSignificance sig = fourierSignificance(
            form().Signal.span(), form().LengF, form().FftLengFour, form().MM, form().DeltaT, k.p);
        const float yMax = *std::max_element(form().PlotY.span().begin() + 1, form().PlotY.span().end());
        const double H = pic.ScaleHeight(), W = pic.ScaleWidth();
        const float x = std::log(1 / form().FreqFour(2)), y = std::log(static_cast<float>(sig.level[1]));
        EXPECT_FLOAT_EQ(magenta[0].x1, static_cast<float>(W * (x - form().PlotXMin) / form().PlotXRange));
        EXPECT_FLOAT_EQ(magenta[0].y1, static_cast<float>(std::max(
                                           H / 3 + (2 * H / 3) * (yMax - y) / form().PlotYRange, H / 3)));
        EXPECT_EQ(magenta[0].style, 1);
    }
}

TEST_F(SpectrumRun, ThePictureMenuSwitchesTheOverlaysAndRedraws) {
    loadSeries(ar2(4096, 3));
    launch();
    PlotSurface& pic = *ui().Picture1;
    QStringList entries;
    const auto menu = pic.contextMenu();
    for (QAction* a : menu->actions()) entries << (a->isSeparator() ? "-" : a->text());
    EXPECT_EQ(entries, QStringList({"Red-Noise Background", "Significance Level 95 %",
                                    "Significance Level 99 %", "-", "Save Picture...", "Copy Picture"}));
    pic.canvas().setRecording(true);
    struct Step {
        const char* entry;
        bool on;
        double p;
        std::size_t magenta;
    };
    const std::size_t level = static_cast<std::size_t>(form().NfFour - 2);
    // Choosing the other level switches to it; choosing the level in force turns it off.
    for (const Step step : {Step{"Significance Level 99 %", true, 0.99, level},
                            Step{"Significance Level 95 %", true, 0.95, level},
                            Step{"Significance Level 95 %", false, 0.95, 0}}) {
        pic.canvas().clearRecord();
        choose(pic, step.entry);
        EXPECT_EQ(form().ShowSignificanceLevel, step.on) << step.entry;
        EXPECT_EQ(form().SignificanceProbability, step.p) << step.entry;
        EXPECT_EQ(segmentsOf(kLevelColour).size(), step.magenta) << step.entry;
        const auto now = pic.contextMenu();
        for (QAction* a : now->actions())
            if (a->text().startsWith("Significance")) {
                EXPECT_EQ(a->isChecked(), step.on && a->text() == step.entry) << step.entry;
            }
    }
    choose(pic, "Red-Noise Background");
    EXPECT_TRUE(form().ShowRedNoiseBackground);
    EXPECT_EQ(segmentsOf(kBackgroundColour).size(), std::size_t(form().NfAR - 2));
    EXPECT_EQ(message(), "") << "a red background says nothing";
}

TEST_F(SpectrumRun, ABlueSeriesGetsAFlatBackgroundAndTheReason) {
    // Differences of white noise: lag-1 autocorrelation -1/2.
    const auto e = whiteNoise(4097, 1.0, 4);
    std::vector<double> x(4096);
    for (std::size_t t = 0; t < x.size(); ++t) x[t] = e[t + 1] - e[t];
    loadSeries(x);
    form().ShowRedNoiseBackground = true;
    ui().Picture1->canvas().setRecording(true);
    launch();
    const auto grey = segmentsOf(kBackgroundColour);
    ASSERT_FALSE(grey.empty());
    for (const DrawOp& op : grey) EXPECT_FLOAT_EQ(op.y1, grey[0].y1) << "white noise is flat";
    EXPECT_TRUE(message().startsWith("red noise taken as white noise: the lag-1 autocorrelation -"))
        << message().toStdString();
    EXPECT_TRUE(message().endsWith("is negative")) << message().toStdString();
    form().ShowRedNoiseBackground = false;
    form().PlotSpectra();
    EXPECT_EQ(message(), "") << "the note goes with the overlay";
}

TEST_F(SpectrumRun, TheSaveWritesTheCompanionsOfTheOverlaysAndKeepsItsOwnFiles) {
    loadSeries(ar2(3000, 5));
    const fs::path sp = dir / "SpectEstimates";
    const auto arFile = sp / "Sp_AR(s) AR= 204,Leng= 2048.dat";
    const auto fourFile = sp / "Sp_Four(s) MM= 1,Leng= 2048.dat";
    launch();
    ui().SaveSpButton->click();
    const std::string ar = readBytes(arFile), four = readBytes(fourFile);
    EXPECT_EQ(std::distance(fs::directory_iterator(sp), fs::directory_iterator()), 2)
        << "no companion while the overlays are off";

    form().ShowRedNoiseBackground = form().ShowSignificanceLevel = true;
    form().SignificanceProbability = 0.99;
    launch();
    ui().SaveSpButton->click();
    EXPECT_EQ(readBytes(arFile), ar);
    EXPECT_EQ(readBytes(fourFile), four);
    const auto span = form().Signal.span();
    const SpectrumSignificance red = burgBackground(span, form().FftLengAR, form().DeltaT);
    const SpectrumSignificance level = fourierSignificance(span, form().LengF, form().FftLengFour,
                                                           form().MM, form().DeltaT, 0.99);
    std::string redExpected, levelExpected;
    for (int i = 2; i <= form().NfAR; ++i)
        redExpected += TwoColumnRecord(NumText(form().FreqAR(i)),
                                       NumText(static_cast<float>(red.background[i - 1])));
    for (int i = 2; i <= form().NfFour; ++i)
        levelExpected += ZoneRecord(NumText(form().FreqFour(i)),
                                    NumText(static_cast<float>(level.background[i - 1])),
                                    NumText(static_cast<float>(level.level[i - 1])));
    EXPECT_EQ(readBytes(sp / "Sp_AR(s) AR= 204,Leng= 2048,RedNoise.dat"), redExpected);
    EXPECT_EQ(readBytes(sp / "Sp_Four(s) MM= 1,Leng= 2048,Level= 99.dat"), levelExpected);
}
