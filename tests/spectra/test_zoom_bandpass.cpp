// The spectrum zoom and the band-pass filter: the band read from the cursors,
// its ends turned into periods in samples whatever the view, and the files.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "signal/signalplot.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class ZoomAndBandPass : public MainWindow {
  protected:
    // Two sines of periods 50 and 10 samples.
    void loadAndLaunch(int n = 4096) {
        start();
        write("s.dat", series(n, [](int i) {
                  return std::sin(2 * M_PI * i / 50.0) + 0.7 * std::sin(2 * M_PI * i / 10.0);
              }));
        open("s.dat");
        ui().AR_OrderText->setText("30");
        ui().LaunchButton->click();
    }
    SpectraZoomForm& zoom() { return wb->spectraZoomForm(); }
    BandPassForm& band() { return wb->bandPassForm(); }
    // Puts the cursors round the view positions a .. b (fractions of the width).
    void cursors(double a, double b) {
        ui().HScroll_Right->setValue(static_cast<int>(b * 32767));
        ui().HScroll_Left->setValue(static_cast<int>(a * 32767));
    }
};

} // namespace

TEST_F(ZoomAndBandPass, CursorsAtTheEndsTakeEveryPointButTheLast) {
    loadAndLaunch(1024);
    ui().Picture1->canvas().setRecording(true);
    ui().ZoomButton->click();
    ASSERT_TRUE(zoom().Visible());
    EXPECT_FALSE(form().Visible());
    PlotSurface& pic = *zoom().ui().Picture1;
    std::size_t segments = 0;
    for (const DrawOp& op : pic.canvas().record()) segments += op.kind == DrawKind::Segment;
    (void)segments;
    // Points 2 .. NfAR-1 of the period view: the largest X is PlotX(2).
    EXPECT_FLOAT_EQ(zoom().ZoomXMax, form().PlotX(2));
    EXPECT_FLOAT_EQ(zoom().ZoomXMin, form().PlotX(form().NfAR - 1));
    EXPECT_EQ(zoom().ui().ZoomLabel->Caption(), "File=s.dat,  Lrec= 1024, AR( 30) Estimate");
    QApplication::processEvents();
    EXPECT_EQ(zoom().ui().Label1->Caption(), "Periods (in log-scale)");
    EXPECT_EQ(zoom().ui().Label2->Caption(), "Power Spectra (in log-scale)");
    EXPECT_EQ(zoom().ui().Xmarks[5]->Caption(), MarkText(zoom().ZoomXMax, 1, false))
        << "the marks show periods";
    EXPECT_EQ(zoom().ui().Ymarks[5]->Caption(),
              MarkText(static_cast<float>(zoom().ZoomYMax / std::log(10.0)), 1, true))
        << "decimal logarithms shown as real values";
    zoom().window().close();
    EXPECT_TRUE(form().Visible());
}

TEST_F(ZoomAndBandPass, TooNarrowABandIsRefusedWithAMessage) {
    loadAndLaunch(512);
    cursors(0.5, 0.5005);
    QString text, title;
    setMsgBoxHook([&](const QString& t, const QString& h) { text = t, title = h; });
    ui().ZoomButton->click();
    setMsgBoxHook({});
    EXPECT_EQ(title, "Spectra Zoom");
    EXPECT_EQ(text, "The frequency band is too short\r\nPlease, increase the distance between "
                    "vertical red lines");
    EXPECT_FALSE(zoom().isLoaded());
    EXPECT_TRUE(form().Visible());
}

TEST_F(ZoomAndBandPass, TwoPointsMakeOneLineFromCornerToCorner) {
    start();
    write("s.dat", series(64, [](int i) { return std::sin(i * 0.9) + 0.3 * std::cos(i * 2.1); }));
    open("s.dat");
    ui().LaunchButton->click();
    ui().LogX_Check->setValue(0);
    ui().FreqCheck->setValue(1);
    const double W = ui().Picture1->ScaleWidth();
    // Cursors round the points 2 and 3 of the linear frequency axis.
    auto value = [&](int i) {
        return static_cast<int>(32767 * (W * (form().PlotX(i) - form().PlotXMin) / form().PlotXRange) / W);
    };
    ui().HScroll_Right->setValue(value(3) + 20);
    ui().HScroll_Left->setValue(std::max(0, value(2) - 20));
    zoom().ui(); // loaded by the button below; keep the record on
    ui().ZoomButton->click();
    ASSERT_TRUE(zoom().isLoaded());
    EXPECT_FLOAT_EQ(zoom().ZoomXMin, form().PlotX(2));
    EXPECT_FLOAT_EQ(zoom().ZoomXMax, form().PlotX(3));
}

TEST_F(ZoomAndBandPass, ThePeriodBandFiltersTheWholeSignal) {
    loadAndLaunch();
    // The whole period axis from 20 to 100 samples keeps the 50 and drops the 10.
    ui().LogX_Check->setValue(0);
    const double lo = (20 - form().PlotXMin) / form().PlotXRange;
    const double hi = (100 - form().PlotXMin) / form().PlotXRange;
    cursors(lo, hi);
    ui().ZoomButton->click();
    zoom().ui().BandPassButton->click();
    EXPECT_FALSE(zoom().ui().BandPassButton->isEnabled()) << "one filtering per zoom";
    ASSERT_TRUE(band().Visible());
    EXPECT_TRUE(zoom().Visible()) << "the band-pass window opens beside the zoom";
    EXPECT_NEAR(band().BpfTmin, zoom().ZoomXMin, 1e-3);
    EXPECT_NEAR(band().BpfTmax, zoom().ZoomXMax, 1e-3);
    EXPECT_GT(band().BpfTmin, 15);
    EXPECT_LT(band().BpfTmin, 25);
    // Away from the ends the result is the period-50 sine alone.
    double worst = 0;
    for (int i = 800; i <= 3300; ++i)
        worst = std::max(worst, std::fabs(band().BpfSignal(i) - std::sin(2 * M_PI * i / 50.0)));
    EXPECT_LT(worst, 0.1);
    EXPECT_TRUE(band().Caption().startsWith("Band Pass Signal: Tmin="));
}

TEST_F(ZoomAndBandPass, InTheFrequencyViewTheEndsSwapAndDeltaTScalesThePeriods) {
    loadAndLaunch();
    ui().DeltaT_Text->setText("0.5");
    ui().LaunchButton->click();
    ui().FreqCheck->setValue(1); // log frequency view
    ui().ZoomButton->click();
    zoom().ui().BandPassButton->click();
    // Highest frequency of the band gives the smaller period, in samples.
    const double fHigh = std::exp(static_cast<double>(zoom().ZoomXMax));
    const double fLow = std::exp(static_cast<double>(zoom().ZoomXMin));
    EXPECT_NEAR(band().BpfTmin, (1 / fHigh) / 0.5, 1e-3 * band().BpfTmin + 1e-3);
    EXPECT_NEAR(band().BpfTmax, (1 / fLow) / 0.5, 1e-3 * band().BpfTmax);
    EXPECT_EQ(band().Caption(), "Band Pass Signal: Tmin=" +
                                    QString::fromStdString(NumText(band().BpfTmin * 0.5)) +
                                    ", Tmax=" + QString::fromStdString(NumText(band().BpfTmax * 0.5)));
    band().ui().BandPassSaveButton->click();
    EXPECT_FALSE(band().ui().BandPassSaveButton->isEnabled()) << "one save per filtering";
    const std::string name = "s-BPF(Tmin,max=" + ShortNumText(band().BpfTmin * 0.5) + "," +
                             ShortNumText(band().BpfTmax * 0.5) + ").dat";
    ASSERT_TRUE(fs::exists(dir / name)) << name;
    const std::string text = readBytes(dir / name);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4096);
    EXPECT_EQ(text.substr(text.find("\r\n") - 2, 4), " 0\r\n") << "time of sample 1 is T0";
}

TEST_F(ZoomAndBandPass, ATrendInForceDoesNotReachTheFilter) {
    loadAndLaunch(2000);
    ui().ShowSignGrafButton->click();
    wb->signalPlot().ui().SmoothRad->setText("20");
    wb->signalPlot().ui().ReDrawButton->click();
    wb->signalPlot().window().close();
    ui().ZoomButton->click();
    zoom().ui().BandPassButton->click();
    const Array1<float> withTrend = band().BpfSignal;
    zoom().window().close();
    ui().ZoomButton->click();
    wb->signalPlot().TrendRadius = 0;
    zoom().ui().BandPassButton->click();
    EXPECT_EQ(band().BpfSignal, withTrend);
}

TEST_F(ZoomAndBandPass, ANewRunAViewChangeOrACursorMoveClosesBothWindows) {
    loadAndLaunch(1024);
    for (int way = 0; way < 3; ++way) {
        ui().ZoomButton->click();
        zoom().ui().BandPassButton->click();
        ASSERT_TRUE(band().isLoaded());
        if (way == 0) form().LaunchButton_Click();
        if (way == 1) ui().LogY_Check->setValue(1 - ui().LogY_Check->Value());
        if (way == 2) ui().HScroll_Left->setValue(ui().HScroll_Left->Value() + 100);
        EXPECT_FALSE(zoom().isLoaded()) << way;
        EXPECT_FALSE(band().isLoaded()) << way;
    }
}

TEST_F(ZoomAndBandPass, ReadOutsOfTheZoomAndTheFilteredSignal) {
    loadAndLaunch(1024);
    ui().ZoomButton->click();
    const float Wz = static_cast<float>(zoom().ui().Picture1->ScaleWidth());
    zoom().Picture1_MouseMove(0, 0, Wz, 0);
    EXPECT_EQ(zoom().ui().Picture1->ToolTipText(),
              "Period= " + QString::fromStdString(NumText(std::exp(static_cast<double>(zoom().ZoomXMax)))));
    zoom().ui().BandPassButton->click();
    QApplication::processEvents();
    BandPassFormControls& b = band().ui();
    band().BandPassGraf_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(b.BandPassGraf->ToolTipText(),
              "Sample #  1, Time= 0, Value=" + QString::fromStdString(NumText(zoom().BandMax)));
    EXPECT_EQ(b.Ymarks[5]->Caption(), MarkText(zoom().BandMax, 0, true));
    EXPECT_EQ(b.Xmarks[5]->Caption(), "1023");
}
