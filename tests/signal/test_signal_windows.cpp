// The signal window and the fragment window: trend, cursors, fragment,
// harmonic and maximum wave, with their states, files and read-outs.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "signal/trendlogic.h"
#include "maps/morletsvanform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <cmath>
#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class SignalWindows : public MainWindow {
  protected:
    void openSignal(int n, const std::function<double(int)>& f) {
        start();
        write("s.dat", series(n, f));
        open("s.dat");
        ASSERT_EQ(message(), "");
        ui().ShowSignGrafButton->click();
        QApplication::processEvents();
    }
    SignalPlot& plot() { return wb->signalPlot(); }
    SignalPlotControls& pc() { return wb->signalPlot().ui(); }
    SignalZoomForm& zoom() { return wb->signalZoomForm(); }
    SignalZoomFormControls& zc() { return wb->signalZoomForm().ui(); }
    void trend(const char* radius, const char* order = nullptr) {
        if (order) {
            pc().LocPolynomOption->setValue(true);
            pc().TrendPolynomOrder->setText(order);
        }
        pc().SmoothRad->setText(radius);
        pc().ReDrawButton->click();
    }
    // ReDraw, SaveTrend, ReturnInitial, Zoom as the user meets them.
    std::string states() {
        std::string s;
        for (QWidget* w : {static_cast<QWidget*>(pc().ReDrawButton), static_cast<QWidget*>(pc().SaveTrendButton),
                           static_cast<QWidget*>(pc().ReturnInitial), static_cast<QWidget*>(pc().ZoomButton)})
            s += w->isEnabled() ? '1' : '0';
        return s;
    }
    std::vector<DrawOp> segments(PlotSurface& s, QRgb color) {
        std::vector<DrawOp> out;
        for (const DrawOp& op : s.canvas().record())
            if (op.kind == DrawKind::Segment && op.color == color) out.push_back(op);
        return out;
    }
};

double noisySine(int i) {
    static std::mt19937 random(42);
    static std::normal_distribution<double> noise(0.0, 0.3);
    return std::sin(2 * M_PI * (i - 1) / 40.0) + noise(random);
}

} // namespace

TEST_F(SignalWindows, OpeningHidesTheMainWindowAndDrawsTheSignalInBlack) {
    start();
    write("s.dat", series(300, [](int i) { return std::sin(i * 0.1); }));
    open("s.dat");
    ui().ShowSignGrafButton->click();
    EXPECT_FALSE(form().Visible());
    EXPECT_TRUE(plot().Visible());
    EXPECT_EQ(plot().Caption(), "Signal Plot   File = s.dat,  Number of samples = 300");
    EXPECT_EQ(plot().TrendRadius, 0);
    EXPECT_EQ(states(), "0001") << "just opened: only the zoom works";
    EXPECT_EQ(pc().NofSamplesInside->Caption(), "Number of samples between red lines =  300");
    // Both red cursors stand over the whole plot before any scroll.
    for (const LineObject* line : {pc().Line_Left, pc().Line_Right}) {
        EXPECT_EQ(line->Y1(), 0);
        EXPECT_EQ(line->Y2(), static_cast<float>(pc().TimeSeriesGraf->ScaleHeight()));
    }
    QApplication::processEvents();
    EXPECT_EQ(pc().Xmarks[0]->Caption(), "0");
    EXPECT_EQ(pc().Xmarks[5]->Caption(), "299");
    plot().window().close();
    EXPECT_TRUE(form().Visible()) << "closing the signal window shows the main window";
}

TEST_F(SignalWindows, TheStateTableOfTheTrend) {
    openSignal(400, [](int i) { return 0.01 * i + std::sin(i * 0.3); });
    pc().SmoothRad->setText("20");
    EXPECT_EQ(states(), "1001") << "a parameter edited";
    pc().ReDrawButton->click();
    EXPECT_EQ(plot().TrendRadius, 20);
    EXPECT_EQ(states(), "1111") << "trend computed";
    pc().SaveTrendButton->click();
    EXPECT_EQ(states(), "1011") << "after save";
    pc().SmoothRad->setText("0");
    pc().ReDrawButton->click();
    EXPECT_EQ(plot().TrendRadius, 0);
    EXPECT_EQ(states(), "1001") << "radius 0 computed";
    trend("15", "2");
    pc().ReturnInitial->click();
    EXPECT_EQ(plot().TrendRadius, 0);
    EXPECT_EQ(states(), "1001") << "returned to the signal";
    EXPECT_TRUE(pc().KernSmoothOption->Value());
    EXPECT_EQ(pc().SmoothRad->Text(), "0");
    EXPECT_EQ(pc().TrendPolynomOrder->Text(), "0");
    EXPECT_FALSE(pc().TrendPolynomOrder->isEnabled());
}

TEST_F(SignalWindows, ParametersAreClampedAndWrittenBack) {
    openSignal(1000, [](int i) { return std::cos(i * 0.05); });
    trend("600");
    EXPECT_EQ(pc().SmoothRad->Text(), " 501");
    trend("2.9");
    EXPECT_EQ(pc().SmoothRad->Text(), " 2");
    trend("5", "7");
    EXPECT_EQ(pc().TrendPolynomOrder->Text(), " 4");
    trend("1", "9");
    EXPECT_EQ(pc().TrendPolynomOrder->Text(), " 0");
    trend("50", "12");
    EXPECT_EQ(pc().TrendPolynomOrder->Text(), " 10");
}

TEST_F(SignalWindows, TheTrendIsDrawnOverTheSignalAndTheResidualBelow) {
    openSignal(200, [](int i) { return 3 + 0.02 * i + 0.5 * std::sin(i * 0.7); });
    pc().TimeSeriesGraf->canvas().setRecording(true);
    trend("10", "1");
    PlotSurface& graf = *pc().TimeSeriesGraf;
    const double H = graf.ScaleHeight();
    EXPECT_EQ(segments(graf, qRgb(0xC0, 0xC0, 0xC0)).size(), 199u);
    const auto blue = segments(graf, BasicColor(1).rgb());
    ASSERT_EQ(blue.size(), 2 * 199u) << "the trend, then the residual";
    for (std::size_t i = 0; i < 199; ++i) ASSERT_LE(blue[i].y1, H / 2 + 1e-3) << i;
    float low = 1e30f, high = -1e30f;
    for (std::size_t i = 199; i < blue.size(); ++i)
        low = std::min({low, blue[i].y1, blue[i].y2}), high = std::max({high, blue[i].y1, blue[i].y2});
    EXPECT_NEAR(low, H / 2, 1e-2);
    EXPECT_NEAR(high, H, 1e-2);
    // A straight line is reproduced by a local line: the residual is the sine alone.
    for (int i = 1; i <= 200; ++i)
        EXPECT_EQ(plot().residual()(i),
                  static_cast<float>(form().Signal(i) - plot().trend()(i)));
}

TEST_F(SignalWindows, SavedTrendAndResidualNameTheirSmoother) {
    openSignal(100, [](int i) { return i % 7 + 0.1 * i; });
    trend("10");
    pc().SaveTrendButton->click();
    EXPECT_TRUE(fs::exists(dir / "s-TRN,Rad= 10.dat")) << "no order with the kernel";
    EXPECT_TRUE(fs::exists(dir / "s-RSD,Rad= 10.dat"));
    trend("50", "2");
    pc().SaveTrendButton->click();
    const std::string trendText = readBytes(dir / "s-TRN,Rad= 50,Ord= 2.dat");
    const std::string residualText = readBytes(dir / "s-RSD,Rad= 50,Ord= 2.dat");
    EXPECT_EQ(trendText.substr(0, trendText.find("\r\n")),
              NumText(static_cast<float>(plot().trend()(1))) + " 0");
    EXPECT_EQ(std::count(residualText.begin(), residualText.end(), '\n'), 100);
}

TEST_F(SignalWindows, EditsAndCursorMovesCloseTheFragmentButNotTheMorletMap) {
    openSignal(300, [](int i) { return std::sin(i * 0.2); });
    pc().ZoomButton->click();
    ASSERT_TRUE(zoom().isLoaded());
    EXPECT_FALSE(plot().Visible());
    wb->morletSvanForm().Load();
    zoom().window().close();
    EXPECT_TRUE(plot().Visible());
    pc().ZoomButton->click();
    pc().SmoothRad->setText("3");
    EXPECT_FALSE(zoom().isLoaded());
    pc().ZoomButton->click();
    pc().HScroll_Left->setValue(100);
    EXPECT_FALSE(zoom().isLoaded());
    EXPECT_TRUE(wb->morletSvanForm().isLoaded());
    EXPECT_EQ(pc().NofSamplesInside->Caption(),
              "Number of samples between red lines = " + QString::fromStdString(NumText(EstimatedSamplesBetween(300, 100, 32767, 0, 32767))));
}

TEST_F(SignalWindows, ReadOutsOverTheSignalAndOverTheResidual) {
    openSignal(101, [](int i) { return i; });
    form().ui().DeltaT_Text->setText("2");
    pc().SmoothRad->setToolTipText("");
    plot().SmoothRad_MouseMove();
    EXPECT_EQ(pc().SmoothRad->ToolTipText(), "Kernel Smoothing Radius");
    pc().LocPolynomOption->setValue(true);
    plot().SmoothRad_MouseMove();
    EXPECT_EQ(pc().SmoothRad->ToolTipText(), "Radius of Moving Time Window");
    const float W = static_cast<float>(pc().TimeSeriesGraf->ScaleWidth());
    const float H = static_cast<float>(pc().TimeSeriesGraf->ScaleHeight());
    plot().TimeSeriesGraf_MouseMove(0, 0, W / 2, 0);
    EXPECT_EQ(pc().TimeSeriesGraf->ToolTipText(), "Sample #  51, Time= 100, Value= 101");
    trend("5", "0");
    plot().TimeSeriesGraf_MouseMove(0, 0, W / 2, H / 4);
    EXPECT_EQ(pc().TimeSeriesGraf->ToolTipText(), "Sample #  51, Time= 100");
    plot().TimeSeriesGraf_MouseMove(0, 0, W / 2, H);
    EXPECT_TRUE(pc().TimeSeriesGraf->ToolTipText().startsWith("Sample #  51, Time= 100, Value="));
}

TEST_F(SignalWindows, TheFragmentIsTakenFromTheBarsWithBothEndsIncluded) {
    openSignal(300, [](int i) { return std::sin(i * 0.2) * i; });
    pc().ZoomButton->click();
    EXPECT_EQ(zoom().FragCount, 300);
    EXPECT_EQ(zoom().FragFirstSample, 1.0f);
    EXPECT_EQ(zoom().FragLastSample, 300.0f);
    EXPECT_EQ(zoom().Fragment, form().Signal);
    EXPECT_EQ(zoom().Caption(), "Fragment of the signal s.dat of the length  300 samples:");
    EXPECT_EQ(zoom().FragMin, form().SignalMin);
    EXPECT_EQ(zoom().FragMax, form().SignalMax);
}

TEST_F(SignalWindows, ThirtyOneSamplesAreTooFewAndThirtyTwoAreEnough) {
    openSignal(32, [](int i) { return i * i % 11; });
    QString text, title;
    setMsgBoxHook([&](const QString& t, const QString& h) { text = t, title = h; });
    pc().HScroll_Left->setValue(600); // leaves out the first sample
    pc().ZoomButton->click();
    setMsgBoxHook({});
    EXPECT_EQ(title, "Signal Zoom");
    EXPECT_EQ(text, "The time interval is too short\r\nPlease, increase the distance between "
                    "vertical red lines");
    EXPECT_FALSE(zoom().isLoaded());
    EXPECT_TRUE(plot().Visible());
    pc().HScroll_Left->setValue(0);
    pc().ZoomButton->click();
    EXPECT_EQ(zoom().FragCount, 32);
}

TEST_F(SignalWindows, MaxWaveIsOfferedUpTo500Samples) {
    openSignal(501, [](int i) { return std::sin(i * 0.3); });
    pc().ZoomButton->click();
    EXPECT_FALSE(zc().FindMaxWave->isEnabled());
    EXPECT_EQ(zc().Label3->Caption(), "Find MaxWave is available for fragment length <= 500");
    EXPECT_TRUE(zc().Label3->Visible());
    zoom().window().close();
    pc().HScroll_Left->setValue(40); // drops the first sample
    pc().ZoomButton->click();
    ASSERT_EQ(zoom().FragCount, 500);
    EXPECT_TRUE(zc().FindMaxWave->isEnabled());
    EXPECT_FALSE(zc().Label3->Visible());
}

TEST_F(SignalWindows, ADetrendedFragmentIsTheResidualAndItsFileSaysNothingOfIt) {
    openSignal(200, [](int i) { return 0.05 * i + std::sin(i * 0.5); });
    trend("8");
    pc().ZoomButton->click();
    for (int i = 1; i <= 200; ++i) ASSERT_EQ(zoom().Fragment(i), plot().residual()(i));
    EXPECT_EQ(zoom().FragMax, *std::max_element(plot().residual().vector().begin(),
                                                plot().residual().vector().end()));
    zc().SaveFragButton->click();
    EXPECT_FALSE(zc().SaveFragButton->isEnabled());
    const std::string text = readBytes(dir / "s,PART[0,199].dat");
    EXPECT_EQ(text.substr(0, text.find(' ', 1)), NumText(plot().residual()(1)));
    const float Wz = static_cast<float>(zc().TimeSeriesZoom->ScaleWidth());
    const float Hz = static_cast<float>(zc().TimeSeriesZoom->ScaleHeight());
    zoom().TimeSeriesZoom_MouseMove(0, 0, Wz, Hz / 4);
    EXPECT_EQ(zc().TimeSeriesZoom->ToolTipText(), "Sample #  200,  Time= 199");
    zoom().TimeSeriesZoom_MouseMove(0, 0, 0, Hz);
    EXPECT_EQ(zc().TimeSeriesZoom->ToolTipText(),
              "Sample #  1,  Time= 0, Value=" + QString::fromStdString(NumText(zoom().FragMin)));
}

TEST_F(SignalWindows, TheHarmonicIsFoundDrawnAndSavedByADoubleClick) {
    openSignal(400, noisySine);
    form().ui().DeltaT_Text->setText("0.5");
    pc().ZoomButton->click();
    zoom().TimeSeriesZoom_DblClick();
    QStringList before;
    for (const auto& e : fs::directory_iterator(dir.path())) before << QString::fromStdString(e.path().filename().string());
    EXPECT_FALSE(before.join("|").contains("BestFitHarm")) << "nothing before a harmonic exists";

    zc().TimeSeriesZoom->canvas().setRecording(true);
    zc().FindHarm->click();
    EXPECT_NEAR(zoom().HarmonicPeriod, 20.0, 0.2) << "40 samples of 0.5";
    const QString caption = zc().Label4->Caption();
    ASSERT_TRUE(caption.startsWith("BestFit Harm. Period = "));
    const double ratio = TextNum(caption.mid(caption.indexOf("Var.Ratio=") + 10).toStdString());
    EXPECT_NEAR(ratio, 0.5 / (0.5 + 0.09), 0.05) << "the sine's share of the variance";
    EXPECT_EQ(segments(*zc().TimeSeriesZoom, BasicColor(12).rgb()).size(), 399u);
    EXPECT_TRUE(zc().Label5->Visible());

    zoom().TimeSeriesZoom_DblClick();
    const std::string name = "s(BestFitHarm,T=" + ShortNumText(zoom().HarmonicPeriod) + ",[ 0, 199.5]).dat";
    ASSERT_TRUE(fs::exists(dir / name)) << name;
    const std::string text = readBytes(dir / name);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 400);
    EXPECT_EQ(text.substr(0, 3), " 0 ");
}

TEST_F(SignalWindows, WithATrendTheHarmonicAndTheDotsLieOnTheLowerPanel) {
    openSignal(300, [](int i) { return 0.03 * i + noisySine(i); });
    trend("30");
    pc().ZoomButton->click();
    PlotSurface& graf = *zc().TimeSeriesZoom;
    graf.canvas().setRecording(true);
    zc().FindHarm->click();
    const double Hz = graf.ScaleHeight();
    for (const DrawOp& s : segments(graf, BasicColor(12).rgb())) ASSERT_GE(s.y1, Hz / 2 - 1e-3);
    zc().FindMaxWave->click();
    std::vector<DrawOp> dots;
    for (const DrawOp& op : graf.canvas().record())
        if (op.kind == DrawKind::Dot) dots.push_back(op);
    ASSERT_EQ(dots.size(), 2u);
    for (const DrawOp& d : dots) {
        EXPECT_EQ(d.width, 12);
        EXPECT_GE(d.y1, Hz / 2 - 1e-3);
    }
    EXPECT_TRUE(zc().Label3->Caption().startsWith("MaxWave Period = "));
    EXPECT_EQ(zoom().HarmonicReady, 1) << "the wave search keeps the harmonic";
    zoom().TimeSeriesZoom_DblClick();
    bool found = false;
    for (const auto& e : fs::directory_iterator(dir.path()))
        found |= e.path().filename().string().starts_with("s,DeTrended(BestFitHarm,T=");
    EXPECT_TRUE(found);
}

TEST_F(SignalWindows, FragmentControlsAreSwitchedTogether) {
    openSignal(600, [](int i) { return std::sin(i * 0.1); });
    pc().ZoomButton->click();
    zoom().DisableFragmentControls();
    for (QWidget* w : {static_cast<QWidget*>(zc().FindHarm), static_cast<QWidget*>(zc().Frame1),
                       static_cast<QWidget*>(zc().WTMM_button), static_cast<QWidget*>(zc().SaveFragButton),
                       static_cast<QWidget*>(zc().MorletSvan), static_cast<QWidget*>(zc().HeisBoxesButton)})
        EXPECT_FALSE(w->isEnabled());
    EXPECT_TRUE(zc().MFDFA_button->isEnabled());
    zoom().EnableFragmentControls();
    EXPECT_TRUE(zc().SaveFragButton->isEnabled());
    EXPECT_FALSE(zc().FindMaxWave->isEnabled()) << "600 samples are too many for the wave";
}
