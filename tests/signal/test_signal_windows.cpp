// The signal window and the fragment window: trend, cursors, fragment,
// harmonic and maximum wave, with their states, files and read-outs. The
// clamps and the cursor arithmetic are pinned in test_trendlogic.cpp.
#include "core/naming.h"
#include "core/numtext.h"
#include "tests/signal/window_support.h"

#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class SignalWindows : public AnalysisWindow {
  protected:
    void openSignal(int n, const std::function<double(int)>& f) {
        load(n, f);
        ui().ShowSignGrafButton->click();
        QApplication::processEvents();
    }
    SignalPlotControls& pc() { return wb->signalPlot().ui(); }
    void trend(const char* radius, const char* order = nullptr) {
        if (order) pc().LocPolynomOption->setValue(true), pc().TrendPolynomOrder->setText(order);
        pc().SmoothRad->setText(radius);
        pc().ReDrawButton->click();
    }
    // ReDraw, SaveTrend, ReturnInitial, Zoom as the user meets them.
    std::string states() {
        return enabled({pc().ReDrawButton, pc().SaveTrendButton, pc().ReturnInitial, pc().ZoomButton});
    }
    QString tipAt(float x, float y) { // over the signal, as fractions of the plot
        plot().TimeSeriesGraf_MouseMove(0, 0, x * float(pc().TimeSeriesGraf->ScaleWidth()),
                                        y * float(pc().TimeSeriesGraf->ScaleHeight()));
        return pc().TimeSeriesGraf->ToolTipText();
    }
};

double noisySine(int i) {
    static std::mt19937 random(42);
    static std::normal_distribution<double> noise(0.0, 0.3);
    return std::sin(2 * M_PI * (i - 1) / 40.0) + noise(random);
}

} // namespace

TEST_F(SignalWindows, TheStateTableOfTheTrendItsBoxesAndTheReadOuts) {
    openSignal(1001, [](int i) { return i; });
    EXPECT_EQ(states(), "0001") << "just opened: only the zoom works";
    EXPECT_EQ(pc().Xmarks[5]->Caption(), "1000") << "the time of the last sample";
    form().ui().DeltaT_Text->setText("2");
    EXPECT_EQ(tipAt(0.5, 0), "Sample #  501, Time= 1000, Value= 1001") << "the top reads the largest";
    plot().SmoothRad_MouseMove();
    EXPECT_EQ(pc().SmoothRad->ToolTipText(), "Kernel Smoothing Radius");
    pc().SmoothRad->setText("20");
    EXPECT_EQ(states(), "1001") << "a parameter edited";
    pc().ReDrawButton->click();
    EXPECT_EQ(states(), "1111") << "trend computed";
    EXPECT_EQ(tipAt(0.5, 0.25), "Sample #  501, Time= 1000") << "no value over the trend";
    const auto& r = plot().residual().vector();
    EXPECT_EQ(tipAt(0.5, 1), "Sample #  501, Time= 1000, Value=" +
                                 QString::fromStdString(NumText(*std::min_element(r.begin(), r.end()))))
        << "the bottom reads the least residual";
    pc().SaveTrendButton->click();
    EXPECT_EQ(states(), "1011") << "after save";
    trend("0");
    EXPECT_EQ(states(), "1001") << "radius 0 computed";
    trend("600", "7");
    EXPECT_EQ(pc().SmoothRad->Text() + "|" + pc().TrendPolynomOrder->Text(), " 501| 7") << "in force";
    plot().SmoothRad_MouseMove();
    EXPECT_EQ(pc().SmoothRad->ToolTipText(), "Radius of Moving Time Window");
    pc().ReturnInitial->click();
    EXPECT_EQ(states(), "1001") << "returned to the signal";
    EXPECT_TRUE(plot().TrendRadius == 0 && pc().KernSmoothOption->Value() &&
                !pc().TrendPolynomOrder->isEnabled());
    EXPECT_EQ(pc().SmoothRad->Text() + pc().TrendPolynomOrder->Text(), "00");
}

TEST_F(SignalWindows, ALocalLineTakesTheLineAndLeavesTheSineBelow) {
    // Over 21 samples the sine of period 7 runs three whole periods: a local
    // line through them is the line alone, the residual the sine alone.
    openSignal(200, [](int i) { return 3 + 0.02 * i + 0.5 * std::sin(2 * M_PI * i / 7); });
    PlotSurface& graf = *pc().TimeSeriesGraf;
    graf.canvas().setRecording(true);
    trend("10", "1");
    for (int i = 11; i <= 190; ++i)
        ASSERT_NEAR(plot().residual()(i), 0.5 * std::sin(2 * M_PI * i / 7), 1e-5) << i;
    // The signal in grey, then in blue the trend above the middle and the
    // residual below it.
    EXPECT_EQ(drawn(graf, DrawKind::Segment, qRgb(0xC0, 0xC0, 0xC0)).size(), 199u);
    const auto blue = drawn(graf, DrawKind::Segment, BasicColor(1).rgb());
    ASSERT_EQ(blue.size(), 2 * 199u);
    const double middle = graf.ScaleHeight() / 2;
    for (std::size_t i = 0; i < blue.size(); ++i)
        ASSERT_TRUE(i < 199 ? blue[i].y1 <= middle + 1e-3 : blue[i].y1 >= middle - 1e-3) << i;
}

TEST_F(SignalWindows, ThirtyOneSamplesAreTooFewAndMaxWaveIsOfferedUpTo500) {
    openSignal(501, [](int i) { return std::sin(i * 0.3); });
    pc().HScroll_Left->setValue(32767 * 470 / 500); // leaves 31 samples
    MessageBoxes boxes;
    pc().ZoomButton->click();
    boxes.expectOne("Signal Zoom", "The time interval is too short\r\nPlease, increase the "
                                   "distance between vertical red lines");
    EXPECT_TRUE(!zoom().isLoaded() && plot().Visible());
    pc().HScroll_Left->setValue(0);
    pc().ZoomButton->click();
    ASSERT_EQ(zoom().FragCount, 501);
    EXPECT_FALSE(zc().FindMaxWave->isEnabled());
    EXPECT_EQ(zc().Label3->Visible() ? zc().Label3->Caption() : "",
              "Find MaxWave is available for fragment length <= 500");
    zoom().window().close();
    pc().HScroll_Left->setValue(40); // drops the first sample
    pc().ZoomButton->click();
    ASSERT_EQ(zoom().FragCount, 500);
    EXPECT_TRUE(zc().FindMaxWave->isEnabled() && !zc().Label3->Visible());
}

TEST_F(SignalWindows, TheHarmonicIsFoundDrawnAndSavedByADoubleClick) {
    openSignal(400, noisySine);
    form().ui().DeltaT_Text->setText("0.5");
    pc().ZoomButton->click();
    zoom().TimeSeriesZoom_DblClick(); // no harmonic yet: nothing is saved
    zc().TimeSeriesZoom->canvas().setRecording(true);
    zc().FindHarm->click();
    EXPECT_NEAR(zoom().HarmonicPeriod, 20.0, 0.2) << "40 samples of 0.5";
    const QString caption = zc().Label4->Caption();
    ASSERT_TRUE(caption.startsWith("BestFit Harm. Period = "));
    const double ratio = TextNum(caption.mid(caption.indexOf("Var.Ratio=") + 10).toStdString());
    EXPECT_NEAR(ratio, 0.5 / (0.5 + 0.09), 0.05) << "the sine's share of the variance";
    EXPECT_EQ(drawn(*zc().TimeSeriesZoom, DrawKind::Segment, BasicColor(12).rgb()).size(), 399u);
    zoom().TimeSeriesZoom_DblClick();
    const std::string text = readBytes(
        dir / ("s(BestFitHarm,T=" + ShortNumText(zoom().HarmonicPeriod) + ",[ 0, 199.5]).dat"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 400);
    EXPECT_EQ(text.substr(0, 3), " 0 ");
}

TEST_F(SignalWindows, ADetrendedFragmentIsTheResidualWithTheHarmonicAndTheWaveOnTheLowerPanel) {
    openSignal(300, [](int i) { return 0.03 * i + noisySine(i); });
    trend("30");
    pc().ZoomButton->click();
    EXPECT_EQ(zoom().Fragment, plot().residual());
    PlotSurface& graf = *zc().TimeSeriesZoom;
    const float Wz = float(graf.ScaleWidth()), Hz = float(graf.ScaleHeight());
    zoom().TimeSeriesZoom_MouseMove(0, 0, Wz, Hz / 4);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  300,  Time= 299") << "no value over the trend";
    zoom().TimeSeriesZoom_MouseMove(0, 0, 0, Hz);
    EXPECT_EQ(graf.ToolTipText(),
              "Sample #  1,  Time= 0, Value=" + QString::fromStdString(NumText(zoom().FragMin)));
    graf.canvas().setRecording(true);
    zc().FindHarm->click();
    zc().FindMaxWave->click();
    for (const DrawOp& op : drawn(graf, DrawKind::Segment, BasicColor(12).rgb()))
        ASSERT_GE(op.y1, Hz / 2 - 1e-3);
    const auto dots = drawn(graf, DrawKind::Dot);
    ASSERT_EQ(dots.size(), 2u);
    for (const DrawOp& d : dots) EXPECT_TRUE(d.width == 12 && d.y1 >= Hz / 2 - 1e-3);
    EXPECT_TRUE(zc().Label3->Caption().startsWith("MaxWave Period = "));
    EXPECT_EQ(zoom().HarmonicReady, 1) << "the wave search keeps the harmonic";
}
