// The wavelet threshold filter window: the nesting of its Change and Click
// handlers walked row by row through its state table, the picture, the files
// and the zoom of the result. The clamps are pinned in test_wavelogic.cpp.
#include "core/numtext.h"
#include "tests/signal/window_support.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"

#include <random>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class WaveFilter : public AnalysisWindow {
  protected:
    void openFilter(int n) {
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0.0, 0.3);
        load(n, [&](int i) { return std::sin(2 * M_PI * i / 64.0) + noise(random); });
        ui().WaveFiltButton->click();
    }
    WaveFiltForm& filt() { return wb->waveFiltForm(); }
    WaveFiltFormControls& fc() { return wb->waveFiltForm().ui(); }
    WaveFiltZoomForm& zoom() { return wb->waveFiltZoomForm(); }
    // LaunchDonoho, LaunchThreshButton, ZoomGrafButton, SaveThreshButton.
    std::string buttons() {
        return enabled({fc().LaunchDonoho, fc().LaunchThreshButton, fc().ZoomGrafButton,
                        fc().SaveThreshButton});
    }
};

} // namespace

TEST_F(WaveFilter, TheStateTableRowByRow) {
    openFilter(600);
    EXPECT_EQ(buttons(), "1000") << "window opened";
    EXPECT_FALSE(fc().WaveFiltGraf->isEnabled());
    // The wavelet of least entropy is proposed, the other family's box empty.
    const bool daub = fc().DaubOption->Value();
    EXPECT_EQ(fc().DaubOrder->Text() + fc().SymOrder->Text(),
              QString::fromStdString(NumText(daub ? filt().DaubDefault : filt().SymDefault)));
    fc().LaunchDonoho->click();
    EXPECT_EQ(buttons(), "0100") << "Donoho pressed";
    EXPECT_EQ(fc().ThreshLevel->Text(), QString::fromStdString(NumText(filt().DonohoValue)));
    EXPECT_EQ(fc().Label4->Caption(), "Donoho-Johnstone level = " + fc().ThreshLevel->Text());
    fc().LaunchThreshButton->click();
    EXPECT_EQ(buttons(), "0011") << "filter launched, text unchanged";
    fc().ZoomGrafButton->click();
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
    fc().ZoomGrafButton->click();
    // Emptying the level box runs its Change inside the order's Change, which
    // switches the filter button on again.
    (daub ? fc().DaubOrder : fc().SymOrder)->setText("12");
    EXPECT_EQ(buttons(), "1100") << "order typed with a level in the box";
    EXPECT_EQ(fc().ThreshLevel->Text(), "");
    EXPECT_FALSE(zoom().isLoaded());
    (daub ? fc().DaubOrder : fc().SymOrder)->setText("14");
    EXPECT_EQ(buttons(), "1000") << "order typed with the level box empty";
    fc().ThreshLevel->setText(".3");
    (daub ? fc().SymletOption : fc().DaubOption)->setValue(true);
    EXPECT_EQ(buttons(), "1000") << "the other option clicked";
    EXPECT_EQ(fc().ThreshLevel->Text() + (daub ? fc().DaubOrder : fc().SymOrder)->Text(), "");
    // Its default comes back, and an order the family lacks is repaired.
    EXPECT_EQ((daub ? fc().SymOrder : fc().DaubOrder)->Text().toStdString(),
              NumText(daub ? filt().SymDefault : filt().DaubDefault));
    (daub ? fc().SymOrder : fc().DaubOrder)->setText("19");
    fc().LaunchDonoho->click();
    EXPECT_EQ((daub ? fc().SymOrder : fc().DaubOrder)->Text(), " 18");
    EXPECT_EQ(filt().WaveCode, daub ? 118 : 18);
}

TEST_F(WaveFilter, TheResultAndTheNoiseAddUpToTheInputAndALevelOfOneLeavesEight) {
    openFilter(32);
    filt().WaveCode = 0; // before any Donoho run: the minimum-entropy wavelet
    fc().ThreshLevel->setText("0.6");
    fc().LaunchThreshButton->click();
    EXPECT_FALSE(filt().FiltResult == filt().FiltInput);
    fc().LaunchDonoho->click();
    fc().ThreshLevel->setText("1");
    fc().LaunchThreshButton->click();
    EXPECT_EQ(fc().ThreshLevel->Text(), " .75") << "(32 - 8) / 32";
    fc().SaveThreshButton->click();
    const std::string wavelet = fc().DaubOption->Value() ? ",Daub" + NumText(filt().WaveCode)
                                                         : ",Sym" + NumText(filt().WaveCode - 100);
    std::istringstream main(readBytes(dir / ("s-THR-MAIN( .75" + wavelet + ").dat")));
    std::istringstream noise(readBytes(dir / ("s-THR-RSD( .75" + wavelet + ").dat")));
    double m = 0, r = 0, t1 = 0, t2 = 0;
    int i = 0;
    while (main >> m >> t1 && noise >> r >> t2) {
        ++i;
        EXPECT_NEAR(m + r, form().Signal(i), 2e-6 * (1 + std::fabs(m) + std::fabs(r))) << i;
        EXPECT_TRUE(t1 == i - 1 && t2 == i - 1) << i;
    }
    EXPECT_EQ(i, 32);
}

TEST_F(WaveFilter, TheResultIsDrawnOverTheInputAndTheZoomNeedsFourSamples) {
    openFilter(2048);
    fc().LaunchDonoho->click();
    PlotSurface& graf = *fc().WaveFiltGraf;
    graf.canvas().setRecording(true);
    fc().LaunchThreshButton->click();
    EXPECT_EQ(std::pair(drawn(graf, DrawKind::Segment, qRgb(0xC0, 0xC0, 0xC0)).size(),
                        drawn(graf, DrawKind::Segment, BasicColor(1).rgb()).size()),
              std::pair(std::size_t{2047}, std::size_t{2047})) << "the input in grey, the result in blue";
    filt().WaveFiltGraf_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(graf.ToolTipText(),
              "Sample #  1, Time= 0, Value=" + QString::fromStdString(NumText(form().SignalMax)))
        << "on the signal's scale";
    // Cursors round samples 1001 .. 1003: three samples are too few.
    auto bar = [&](double sample) { return int(std::lround(32767 * (sample - 1) / 2047)); };
    fc().HScroll_Right->setValue(bar(1003.4));
    fc().HScroll_Left->setValue(bar(1000.6));
    MessageBoxes boxes;
    fc().ZoomGrafButton->click();
    boxes.expectOne("WaveFilt Zoom", "The time interval is too short\r\nPlease, increase the "
                                     "distance between vertical red lines");
    EXPECT_FALSE(zoom().isLoaded());
    fc().HScroll_Right->setValue(bar(1004.4));
    fc().ZoomGrafButton->click();
    EXPECT_EQ(std::pair(zoom().ZoomFirstSample, zoom().ZoomLastSample), std::pair(1001.0f, 1004.0f));
    zoom().WaveFiltZoomGraf_MouseMove(0, 0, 0, 0);
    EXPECT_TRUE(zoom().ui().WaveFiltZoomGraf->ToolTipText().startsWith("Sample #  1001,  Time= 1000"));
}
