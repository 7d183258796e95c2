// The wavelet threshold filter window: the nesting of its Change and Click
// handlers walked row by row through its state table, the clamps, the picture,
// the files and the zoom of the result.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "tests/core/mainwindow_fixture.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"

#include <cmath>
#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class WaveFilter : public MainWindow {
  protected:
    void openFilter(int n) {
        start();
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0.0, 0.3);
        write("s.dat", series(n, [&](int i) { return std::sin(2 * M_PI * i / 64.0) + noise(random); }));
        open("s.dat");
        ASSERT_EQ(message(), "");
        ui().WaveFiltButton->click();
        QApplication::processEvents();
    }
    WaveFiltForm& filt() { return wb->waveFiltForm(); }
    WaveFiltFormControls& fc() { return wb->waveFiltForm().ui(); }
    WaveFiltZoomForm& zoom() { return wb->waveFiltZoomForm(); }
    // LaunchDonoho, LaunchThreshButton, ZoomGrafButton, SaveThreshButton.
    std::string buttons() {
        std::string s;
        for (QWidget* w : {static_cast<QWidget*>(fc().LaunchDonoho),
                           static_cast<QWidget*>(fc().LaunchThreshButton),
                           static_cast<QWidget*>(fc().ZoomGrafButton),
                           static_cast<QWidget*>(fc().SaveThreshButton)})
            s += w->isEnabled() ? '1' : '0';
        return s;
    }
    void openZoom() {
        fc().ZoomGrafButton->click();
        ASSERT_TRUE(zoom().isLoaded());
    }
};

} // namespace

TEST_F(WaveFilter, OpeningProposesTheMinimumEntropyWavelet) {
    openFilter(1000);
    EXPECT_FALSE(form().Visible());
    EXPECT_EQ(filt().Caption(), "Wavelet Threshold Filtering    File = s.dat,  Number of samples = 1000");
    EXPECT_EQ(buttons(), "1000") << "window opened";
    EXPECT_EQ(fc().ThreshLevel->Text(), "");
    EXPECT_FALSE(fc().WaveFiltGraf->isEnabled());
    const bool daub = fc().DaubOption->Value();
    if (daub) {
        EXPECT_EQ(fc().SymOrder->Text(), "");
        EXPECT_EQ(fc().DaubOrder->Text(), QString::fromStdString(NumText(filt().DaubDefault)));
        EXPECT_EQ(filt().SymDefault, 8);
    } else {
        EXPECT_EQ(fc().DaubOrder->Text(), "");
        EXPECT_EQ(filt().DaubDefault, 4);
    }
    filt().window().close();
    EXPECT_TRUE(form().Visible());
}

TEST_F(WaveFilter, TheStateTableRowByRow) {
    openFilter(600);
    // Donoho, filter, zoom, then each action of the table.
    fc().LaunchDonoho->click();
    EXPECT_EQ(buttons(), "0100") << "Donoho pressed";
    EXPECT_EQ(fc().ThreshLevel->Text(), QString::fromStdString(NumText(filt().DonohoValue)));
    EXPECT_EQ(fc().Label4->Caption(),
              "Donoho-Johnstone level = " + QString::fromStdString(NumText(filt().DonohoValue)));
    fc().LaunchThreshButton->click();
    EXPECT_EQ(buttons(), "0011") << "filter launched, text unchanged";
    openZoom();

    fc().ThreshLevel->setText("0.5");
    EXPECT_EQ(buttons(), "0100") << "level typed";
    EXPECT_TRUE(zoom().isLoaded()) << "a level change keeps the zoom";
    fc().LaunchThreshButton->click();
    EXPECT_EQ(fc().ThreshLevel->Text(), " .5");
    EXPECT_EQ(buttons(), "0111") << "launched, the text normalised by the launch";
    fc().LaunchThreshButton->click();
    EXPECT_EQ(buttons(), "0011") << "launched again, text unchanged";
    fc().SaveThreshButton->click();
    EXPECT_EQ(buttons(), "0010") << "saved: zoom as it was, save off";

    fc().HScroll_Left->setValue(1000);
    EXPECT_FALSE(zoom().isLoaded()) << "a cursor move closes the zoom";
    EXPECT_EQ(buttons(), "0010");
    openZoom();

    const bool daub = fc().DaubOption->Value();
    (daub ? fc().DaubOrder : fc().SymOrder)->setText("12");
    // Emptying the level box runs its Change inside the order's Change, which
    // switches the filter button on again.
    EXPECT_EQ(buttons(), "1100") << "order typed with a level in the box";
    EXPECT_EQ(fc().ThreshLevel->Text(), "");
    EXPECT_FALSE(zoom().isLoaded());
    (daub ? fc().DaubOrder : fc().SymOrder)->setText("14");
    EXPECT_EQ(buttons(), "1000") << "order typed with the level box empty";

    fc().ThreshLevel->setText(".3");
    (daub ? fc().SymletOption : fc().DaubOption)->setValue(true);
    EXPECT_EQ(buttons(), "1000") << "the other option clicked";
    EXPECT_EQ(fc().ThreshLevel->Text(), "");
    EXPECT_EQ((daub ? fc().DaubOrder : fc().SymOrder)->Text(), "");
}

TEST_F(WaveFilter, OrdersAreRepairedAndDefaultsRestoredBySwitchingOptions) {
    openFilter(500);
    fc().DaubOption->setValue(true);
    const QString daubDefault = QString::fromStdString(NumText(filt().DaubDefault));
    for (auto [typed, shown] : {std::pair{"21", daubDefault}, {"19", QString(" 18")}, {"3", QString(" 2")}}) {
        fc().DaubOrder->setText(typed);
        fc().LaunchDonoho->click();
        EXPECT_EQ(fc().DaubOrder->Text(), shown) << typed;
        EXPECT_EQ(filt().WaveCode, static_cast<std::int32_t>(TextNum(shown.toStdString())));
    }
    fc().SymletOption->setValue(true);
    EXPECT_EQ(fc().SymOrder->Text(), QString::fromStdString(NumText(filt().SymDefault)));
    EXPECT_EQ(fc().DaubOrder->Text(), "");
    for (auto [typed, shown] : {std::pair{"7", QString::fromStdString(NumText(filt().SymDefault))}, {"9", QString(" 8")}}) {
        fc().SymOrder->setText(typed);
        fc().LaunchDonoho->click();
        EXPECT_EQ(fc().SymOrder->Text(), shown) << typed;
        EXPECT_EQ(filt().WaveCode, 100 + static_cast<std::int32_t>(TextNum(shown.toStdString())));
    }
    fc().DaubOption->setValue(true);
    EXPECT_EQ(fc().DaubOrder->Text(), daubDefault);
}

TEST_F(WaveFilter, ALevelTypedBeforeAnyDonohoRunUsesTheRememberedWavelet) {
    openFilter(256);
    filt().WaveCode = 0;
    fc().ThreshLevel->setText("0.6");
    EXPECT_TRUE(fc().LaunchThreshButton->isEnabled());
    fc().LaunchThreshButton->click();
    EXPECT_EQ(filt().WaveCode, 0) << "code 0: the filter takes the minimum-entropy wavelet";
    EXPECT_EQ(filt().FiltResult.count(), 256);
    bool changed = false;
    for (int i = 1; i <= 256; ++i) changed |= filt().FiltResult(i) != filt().FiltInput(i);
    EXPECT_TRUE(changed);
}

TEST_F(WaveFilter, ALevelOfOneIsLoweredToLeaveEightCoefficients) {
    openFilter(32);
    fc().LaunchDonoho->click();
    fc().ThreshLevel->setText("1");
    fc().LaunchThreshButton->click();
    EXPECT_EQ(fc().ThreshLevel->Text(), " .75");
    EXPECT_FLOAT_EQ(filt().ThreshValue, 0.75f);
    fc().SaveThreshButton->click();
    const std::string wavelet = fc().DaubOption->Value()
                                    ? ",Daub" + NumText(filt().WaveCode)
                                    : ",Sym" + NumText(filt().WaveCode - 100);
    EXPECT_TRUE(fs::exists(dir / ("s-THR-MAIN( .75" + wavelet + ").dat"))) << wavelet;
    EXPECT_TRUE(fs::exists(dir / ("s-THR-RSD( .75" + wavelet + ").dat")));
}

TEST_F(WaveFilter, TheResultAndTheNoiseAddUpToTheInput) {
    openFilter(300);
    fc().LaunchDonoho->click();
    fc().LaunchThreshButton->click();
    fc().SaveThreshButton->click();
    const std::string wavelet = fc().DaubOption->Value() ? ",Daub" + NumText(filt().WaveCode)
                                                         : ",Sym" + NumText(filt().WaveCode - 100);
    const std::string level = fc().ThreshLevel->Text().toStdString();
    std::istringstream main(readBytes(dir / ("s-THR-MAIN(" + level + wavelet + ").dat")));
    std::istringstream noise(readBytes(dir / ("s-THR-RSD(" + level + wavelet + ").dat")));
    double m = 0, r = 0, t1 = 0, t2 = 0;
    int i = 0;
    while (main >> m >> t1 && noise >> r >> t2) {
        ++i;
        EXPECT_NEAR(m + r, form().Signal(i), 2e-6 * (1 + std::fabs(m) + std::fabs(r))) << i;
        EXPECT_EQ(t1, t2);
    }
    EXPECT_EQ(i, 300);
}

TEST_F(WaveFilter, TheInputIsDrawnInGreyAndTheResultOverItOnTheSignalsScale) {
    openFilter(400);
    fc().LaunchDonoho->click();
    PlotSurface& graf = *fc().WaveFiltGraf;
    graf.canvas().setRecording(true);
    fc().LaunchThreshButton->click();
    std::size_t grey = 0, blue = 0;
    for (const DrawOp& op : graf.canvas().record()) {
        if (op.kind != DrawKind::Segment) continue;
        grey += op.color == qRgb(0xC0, 0xC0, 0xC0);
        blue += op.color == BasicColor(1).rgb();
    }
    EXPECT_EQ(grey, 399u);
    EXPECT_EQ(blue, 399u);
    EXPECT_TRUE(graf.isEnabled());
    QApplication::processEvents();
    EXPECT_EQ(fc().Ymarks[5]->Caption(), MarkText(form().SignalMax, 0, true));
    filt().WaveFiltGraf_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(graf.ToolTipText(), "Sample #  1, Time= 0, Value=" +
                                      QString::fromStdString(NumText(form().SignalMax)));
}

TEST_F(WaveFilter, TheZoomNeedsFourSamplesAndReadsTheSameTimes) {
    openFilter(2048);
    fc().LaunchDonoho->click();
    fc().LaunchThreshButton->click();
    const double W = fc().WaveFiltGraf->ScaleWidth();
    // Cursors round samples 1001..1003: three samples are too few.
    auto bar = [&](double sample) { return static_cast<int>(std::lround(32767 * (sample - 1) / 2047)); };
    fc().HScroll_Right->setValue(bar(1003.4));
    fc().HScroll_Left->setValue(bar(1000.6));
    QString text, title;
    setMsgBoxHook([&](const QString& t, const QString& h) { text = t, title = h; });
    fc().ZoomGrafButton->click();
    setMsgBoxHook({});
    EXPECT_EQ(title, "WaveFilt Zoom");
    EXPECT_EQ(text, "The time interval is too short\r\nPlease, increase the distance between "
                    "vertical red lines");
    EXPECT_FALSE(zoom().isLoaded());
    fc().HScroll_Right->setValue(bar(1004.4));
    fc().ZoomGrafButton->click();
    ASSERT_TRUE(zoom().isLoaded());
    EXPECT_EQ(zoom().ZoomFirstSample, 1001.0f);
    EXPECT_EQ(zoom().ZoomLastSample, 1004.0f);
    EXPECT_TRUE(zoom().Caption().endsWith(" of the length  4 samples:"));
    // The same sample reads the same time in both windows.
    zoom().WaveFiltZoomGraf_MouseMove(0, 0, 0, 0);
    const QString zoomTip = zoom().ui().WaveFiltZoomGraf->ToolTipText();
    filt().WaveFiltGraf_MouseMove(0, 0, static_cast<float>(W * 1000.0 / 2047 + 0.01), 0);
    const QString fullTip = fc().WaveFiltGraf->ToolTipText();
    EXPECT_EQ(zoomTip.section(',', 1, 1).trimmed(), fullTip.section(',', 1, 1).trimmed());
    EXPECT_TRUE(zoomTip.startsWith("Sample #  1001,  Time= 1000"));
}
