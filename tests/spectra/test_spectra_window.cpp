// The spectrum run of the main window, its picture and its files; the
// spectrum zoom and the band-pass filter: the points between the cursors, the
// band's ends turned into periods in samples whatever the view, and the files.
// The clamps and window counts themselves are pinned in test_spectrumrun.cpp.
#include "core/naming.h"
#include "core/numtext.h"
#include "signal/signalplot.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "tests/signal/window_support.h"

#include <complex>
#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

std::vector<double> whiteNoise(int n, unsigned seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<double> x(static_cast<std::size_t>(n));
    for (double& v : x) v = normal(random);
    return x;
}

// x(t) = 0.75 x(t - 1) - 0.5 x(t - 2) + e(t), e white of variance 1.
std::vector<double> ar2(int n, unsigned seed) {
    const auto e = whiteNoise(n + 500, seed);
    std::vector<double> x(e.size(), 0.0);
    for (std::size_t t = 2; t < x.size(); ++t) x[t] = 0.75 * x[t - 1] - 0.5 * x[t - 2] + e[t];
    return {x.begin() + 500, x.end()};
}

const QRgb kBlue = BasicColor(1).rgb(), kGreen = qRgb(0, 255, 0), kGrey = qRgb(0x60, 0x60, 0x60),
           kMagenta = qRgb(0xC0, 0x00, 0xC0);

class SpectrumRun : public AnalysisWindow {
  protected:
    void loadSeries(const std::vector<double>& x) {
        load(int(x.size()), [&](int i) { return x[std::size_t(i - 1)]; });
    }
    void launch() { ui().LaunchButton->click(); }
    std::size_t segments(QRgb colour) {
        return drawn(*ui().Picture1, DrawKind::Segment, colour).size();
    }
    std::size_t arPoints() { return std::size_t(form().NfAR - 2); }
    std::size_t fourierPoints() { return std::size_t(form().NfFour - 2); }
};

} // namespace

TEST_F(SpectrumRun, BoxesAreClampedInOrderAndShowTheValuesInForce) {
    loadSeries(whiteNoise(3000, 1));
    auto launchWith = [&](const char* length, const char* order, const char* dT) {
        ui().AR_Length_Text->setText(length);
        ui().AR_OrderText->setText(order);
        ui().DeltaT_Text->setText(dT);
        launch();
        return ui().AR_Length_Text->Text() + "|" + ui().AR_OrderText->Text() + "|" +
               ui().TimeLengText->Text() + "|" + ui().RadiusText->Text() + "|" +
               ui().DeltaT_Text->Text() + "|" + ui().Time0_Text->Text();
    };
    ui().TimeLengText->setText("60");
    ui().RadiusText->setText("9");
    ui().Time0_Text->setText("  12.5x");
    EXPECT_EQ(launchWith("2048.9", "abc", "0"), " 2048| 1| 60| 7| 1| 12.5");
    EXPECT_EQ(std::tuple(form().FftLengFour, form().NfFour, form().NfAR), std::tuple(64, 32, 1024));
    expectStage(ui(), Stage::SpectraShown);
    EXPECT_EQ(launchWith("5000", "20", "0.123456789"), " 3000| 20| 60| 7| .1234568| 12.5")
        << "single precision shows 7 digits; a window as long as the signal";
}

TEST_F(SpectrumRun, BothEstimatesOfAnAr2ProcessFollowItsDensityTimesDeltaTAndFillTheLowerTwoThirds) {
    // Six windows of 2048 samples of 0.5; the one-sided density of the process
    // is 2 dT / |1 - 0.75 z + 0.5 z^2|^2 at z = exp(-2 pi i f dT), with dT 0.5.
    loadSeries(ar2(10000, 3));
    auto density = [](double f) {
        const std::complex<double> z = std::polar(1.0, -M_PI * f);
        return 1 / std::norm(1.0 - 0.75 * z + 0.5 * z * z);
    };
    ui().DeltaT_Text->setText("0.5");
    ui().AR_OrderText->setText("30");
    ui().TimeLengText->setText("256");
    ui().RadiusText->setText("0");
    ui().Picture1->canvas().setRecording(true);
    launch();
    ASSERT_EQ(form().SpARWindow.count(), 1024) << "the window path";
    double estimate = 0, theory = 0, worst = 1;
    for (int i = 2; i <= form().NfAR; ++i) {
        const double d = density(form().FreqAR(i));
        estimate += form().SpAR(i), theory += d;
        worst = std::max({worst, form().SpAR(i) / d, d / form().SpAR(i)});
    }
    EXPECT_NEAR(estimate / theory, 1.0, 0.05) << "the average of all windows";
    EXPECT_LT(worst, 1.6) << "and its shape";
    double fourier = 0, fourierTheory = 0;
    for (int i = 2; i <= form().NfFour; ++i)
        fourier += form().SpFour(i), fourierTheory += density(form().FreqFour(i));
    EXPECT_NEAR(fourier / fourierTheory, 1.0, 0.05) << "the Fourier estimate's level";
    // The picture: the AR curve fills the lower two thirds, the rough Fourier
    // estimate is clamped at their top.
    const double H = ui().Picture1->ScaleHeight(), W = ui().Picture1->ScaleWidth();
    const auto blue = drawn(*ui().Picture1, DrawKind::Segment, kBlue);
    ASSERT_EQ(blue.size(), arPoints());
    float top = 1e30f, bottom = -1e30f, left = 1e30f, right = -1e30f;
    for (const DrawOp& s : blue) {
        top = std::min({top, s.y1, s.y2}), bottom = std::max({bottom, s.y1, s.y2});
        left = std::min({left, s.x1, s.x2}), right = std::max({right, s.x1, s.x2});
    }
    EXPECT_NEAR(top, H / 3, 1e-2);
    EXPECT_NEAR(bottom, H, 1e-2);
    EXPECT_NEAR(right - left, W, 2e-2);
    const auto green = drawn(*ui().Picture1, DrawKind::Segment, kGreen);
    ASSERT_EQ(green.size(), fourierPoints());
    for (const DrawOp& s : green) EXPECT_GE(s.y1, static_cast<float>(H / 3) - 1e-3f);
    ui().SaveSpButton->click(); // the save state must survive view changes
    for (int view = 0; view < 8; ++view) {
        ui().FreqCheck->setValue(view & 1);
        ui().LogX_Check->setValue((view >> 1) & 1);
        ui().LogY_Check->setValue((view >> 2) & 1);
        ui().Picture1->canvas().clearRecord();
        form().PlotSpectra();
        EXPECT_EQ(segments(kBlue) + segments(kGreen), arPoints() + fourierPoints()) << view;
    }
    EXPECT_FALSE(ui().SaveSpButton->isEnabled());
    // On a linear period axis the periods crowd to the left: index 2 has the
    // longest period, at the right edge.
    ui().FreqCheck->setValue(0);
    ui().LogX_Check->setValue(0);
    EXPECT_FLOAT_EQ(form().PlotXMax, 1.0f / form().FreqAR(2));
    EXPECT_FLOAT_EQ(form().PlotXMin, 1.0f / form().FreqAR(form().NfAR));
    form().Picture1_MouseMove(0, 0, float(W), float(H) - 20);
    EXPECT_EQ(ui().Picture1->ToolTipText(), "Period= " + QString::fromStdString(NumText(form().PlotXMax)));
}

TEST_F(SpectrumRun, TheSaveWritesBothFilesInPrintZonesOnce) {
    loadSeries(whiteNoise(64, 10));
    ui().AR_Length_Text->setText("32");
    ui().TimeLengText->setText("64");
    launch();
    ui().SaveSpButton->click();
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton"});
    const auto arFile = dir / "SpectEstimates" / "Sp_AR(s) AR= 11,Leng= 32.dat";
    ASSERT_TRUE(fs::exists(dir / "SpectEstimates" / "Sp_Four(s) MM= 1,Leng= 64.dat"));
    // Frequency 1 / 32, period 32 from column 15, the spectrum from column
    // 29, for i = 2 .. NfAR.
    const std::string text = readBytes(arFile);
    EXPECT_EQ(text.substr(0, text.find('\n') + 1),
              " .03125        32           " + NumText(form().SpAR(2)) + "\r\n");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 16 - 1);
}

// ---- the red-noise overlays ----

TEST_F(SpectrumRun, ThePictureMenuSwitchesTheOverlaysAndABlueSeriesGetsAFlatBackground) {
    loadSeries(ar2(4096, 3));
    launch();
    PlotSurface& pic = *ui().Picture1;
    pic.canvas().setRecording(true);
    // Choosing the other level switches to it; choosing the level in force
    // turns it off. The grey background comes on last.
    for (auto [entry, on, p, grey] : {std::tuple{"Significance Level 99 %", true, 0.99, 0ul},
                                      {"Significance Level 95 %", true, 0.95, 0ul},
                                      {"Significance Level 95 %", false, 0.95, 0ul},
                                      {"Red-Noise Background", false, 0.95, arPoints()}}) {
        SCOPED_TRACE(entry);
        pic.canvas().clearRecord();
        choose(pic, entry);
        EXPECT_EQ(form().ShowSignificanceLevel, on);
        EXPECT_EQ(form().SignificanceProbability, p);
        EXPECT_EQ(segments(kMagenta), on ? fourierPoints() : 0);
        EXPECT_EQ(segments(kGrey), grey);
        for (const DrawOp& op : drawn(pic, DrawKind::Segment, kMagenta))
            ASSERT_TRUE(op.style == 1 && op.y1 >= pic.ScaleHeight() / 3 - 1e-3)
                << "dashed, below the boundary";
    }
    EXPECT_TRUE(form().ShowRedNoiseBackground);
    EXPECT_EQ(message(), "") << "a red background says nothing";
    // A blue series, differences of white noise (lag-1 autocorrelation -1/2),
    // gets a flat background and the reason.
    const auto e = whiteNoise(4097, 4);
    std::vector<double> x(4096);
    for (std::size_t t = 0; t < x.size(); ++t) x[t] = e[t + 1] - e[t];
    loadSeries(x);
    form().ShowRedNoiseBackground = true;
    ui().Picture1->canvas().setRecording(true);
    launch();
    const auto grey = drawn(*ui().Picture1, DrawKind::Segment, kGrey);
    ASSERT_FALSE(grey.empty());
    for (const DrawOp& op : grey) EXPECT_FLOAT_EQ(op.y1, grey[0].y1) << "white noise is flat";
    EXPECT_TRUE(message().startsWith("red noise taken as white noise: the lag-1 autocorrelation -") &&
                message().endsWith("is negative")) << message().toStdString();
    form().ShowRedNoiseBackground = false;
    form().PlotSpectra();
    EXPECT_EQ(message(), "") << "the note goes with the overlay";
}

// ---- the spectrum zoom and the band-pass filter ----

namespace {

class ZoomAndBandPass : public SpectrumRun {
  protected:
    // Two sines of periods 50 and 10 samples, AR order 30.
    void loadAndLaunch(int n = 4096) {
        std::vector<double> x(static_cast<std::size_t>(n));
        for (int i = 1; i <= n; ++i)
            x[std::size_t(i - 1)] = std::sin(2 * M_PI * i / 50.0) + 0.7 * std::sin(2 * M_PI * i / 10.0);
        loadSeries(x);
        ui().AR_OrderText->setText("30");
        launch();
    }
    // Zooms into the points between the cursors at the view positions a .. b
    // (fractions of the width), the zoom's picture recording.
    void zoomInto(double a, double b) {
        ui().HScroll_Right->setValue(int(b * 32767));
        ui().HScroll_Left->setValue(int(a * 32767));
        zoom().ui().Picture1->canvas().setRecording(true);
        ui().ZoomButton->click();
    }
    SpectraZoomForm& zoom() { return wb->spectraZoomForm(); }
    BandPassForm& band() { return wb->bandPassForm(); }
};

} // namespace

TEST_F(ZoomAndBandPass, CursorsAtTheEndsTakeEveryPointButTheLastAndANewRunClosesTheZoom) {
    loadAndLaunch(1024);
    zoomInto(0, 1);
    // Points 2 .. NfAR - 1 of the period view, joined by NfAR - 3 segments.
    EXPECT_EQ(drawn(*zoom().ui().Picture1, DrawKind::Segment).size(), std::size_t(form().NfAR - 3));
    EXPECT_FLOAT_EQ(zoom().ZoomXMax, form().PlotX(2));
    EXPECT_FLOAT_EQ(zoom().ZoomXMin, form().PlotX(form().NfAR - 1));
    zoom().Picture1_MouseMove(0, 0, float(zoom().ui().Picture1->ScaleWidth()), 0);
    EXPECT_EQ(zoom().ui().Picture1->ToolTipText(),
              "Period= " + QString::fromStdString(NumText(std::exp(double(zoom().ZoomXMax)))));
    zoom().window().close();
    // A new run, a view change or a cursor move closes the zoom and the band-pass.
    for (int way = 0; way < 3; ++way) {
        ui().ZoomButton->click();
        zoom().ui().BandPassButton->click();
        ASSERT_TRUE(band().isLoaded());
        if (way == 0) form().LaunchButton_Click();
        if (way == 1) ui().LogY_Check->setValue(1 - ui().LogY_Check->Value());
        if (way == 2) ui().HScroll_Left->setValue(ui().HScroll_Left->Value() + 100);
        EXPECT_FALSE(zoom().isLoaded() || band().isLoaded()) << way;
    }
}

TEST_F(ZoomAndBandPass, ABandOfOnePointIsRefusedAndTwoMakeOneLineFromCornerToCorner) {
    loadAndLaunch(512);
    MessageBoxes boxes;
    zoomInto(0.5, 0.5005);
    boxes.expectOne("Spectra Zoom", "The frequency band is too short\r\nPlease, increase the "
                                    "distance between vertical red lines");
    EXPECT_TRUE(!zoom().Visible() && form().Visible());
    // On the linear frequency axis point 2 stands on the left edge: the left
    // cursor there and the right one just behind point 3 take both.
    ui().LogX_Check->setValue(0);
    ui().FreqCheck->setValue(1);
    zoomInto(0, (form().PlotX(3) - form().PlotXMin) / form().PlotXRange + 0.001);
    ASSERT_TRUE(zoom().isLoaded());
    EXPECT_FLOAT_EQ(zoom().ZoomXMin, form().PlotX(2));
    EXPECT_FLOAT_EQ(zoom().ZoomXMax, form().PlotX(3));
    const bool falling = form().PlotY(3) < form().PlotY(2);
    EXPECT_EQ(shapes(*zoom().ui().Picture1),
              std::vector<std::string>{falling ? "S 0 0 1 1 000080 1 0" : "S 0 1 1 0 000080 1 0"});
}

TEST_F(ZoomAndBandPass, ThePeriodBandFiltersTheSignalWithoutItsTrendAndDeltaTScalesThePeriods) {
    loadAndLaunch();
    ui().ShowSignGrafButton->click();
    wb->signalPlot().ui().SmoothRad->setText("20");
    wb->signalPlot().ui().ReDrawButton->click();
    wb->signalPlot().window().close();
    // The period axis from 20 to 100 samples keeps the 50 and drops the 10.
    ui().LogX_Check->setValue(0);
    zoomInto((20 - form().PlotXMin) / form().PlotXRange, (100 - form().PlotXMin) / form().PlotXRange);
    zoom().ui().BandPassButton->click();
    EXPECT_FALSE(zoom().ui().BandPassButton->isEnabled()) << "one filtering per zoom";
    ASSERT_TRUE(band().Visible());
    EXPECT_EQ(std::pair(band().BpfTmin, band().BpfTmax), std::pair(zoom().ZoomXMin, zoom().ZoomXMax));
    EXPECT_TRUE(band().BpfTmin > 15 && band().BpfTmin < 25);
    // Away from the ends the result is the period-50 sine alone, the trend
    // in force in the signal window notwithstanding.
    double worst = 0;
    for (int i = 800; i <= 3300; ++i)
        worst = std::max(worst, std::fabs(band().BpfSignal(i) - std::sin(2 * M_PI * i / 50.0)));
    EXPECT_LT(worst, 0.1);
    // In the log frequency view the ends swap, and dT scales the periods.
    ui().DeltaT_Text->setText("0.5");
    ui().LaunchButton->click();
    ui().LogX_Check->setValue(1);
    ui().FreqCheck->setValue(1);
    ui().ZoomButton->click();
    zoom().ui().BandPassButton->click();
    // The highest frequency of the band gives the smaller period, in samples.
    const double fHigh = std::exp(double(zoom().ZoomXMax)), fLow = std::exp(double(zoom().ZoomXMin));
    EXPECT_NEAR(band().BpfTmin, (1 / fHigh) / 0.5, 1e-3 * band().BpfTmin + 1e-3);
    EXPECT_NEAR(band().BpfTmax, (1 / fLow) / 0.5, 1e-3 * band().BpfTmax);
    const std::string tmin = NumText(band().BpfTmin * 0.5), tmax = NumText(band().BpfTmax * 0.5);
    EXPECT_EQ(band().Caption().toStdString(), "Band Pass Signal: Tmin=" + tmin + ", Tmax=" + tmax);
    QApplication::processEvents(); // the window's activation takes the band's range
    band().BandPassGraf_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(band().ui().BandPassGraf->ToolTipText(),
              "Sample #  1, Time= 0, Value=" + QString::fromStdString(NumText(zoom().BandMax)));
    band().ui().BandPassSaveButton->click();
    EXPECT_FALSE(band().ui().BandPassSaveButton->isEnabled()) << "one save per filtering";
    const std::string text = readBytes(
        dir / ("s-BPF(Tmin,max=" + ShortNumText(band().BpfTmin * 0.5) + "," +
               ShortNumText(band().BpfTmax * 0.5) + ").dat"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4096);
    EXPECT_EQ(text.substr(text.find("\r\n") - 2, 4), " 0\r\n") << "time of sample 1 is T0";
    EXPECT_EQ(text.substr(text.size() - 9), " 2047.5\r\n") << "of sample 4096 4095 steps later";
}
