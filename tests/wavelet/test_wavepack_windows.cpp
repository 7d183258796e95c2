// The wavelet-packet decomposition from the main window and its three windows.
// The level clamp and the volume limit are pinned in test_wavelogic.cpp.
#include "core/naming.h"
#include "core/numtext.h"
#include "tests/signal/window_support.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavespectraform.h"

using namespace tarnic;
using namespace tarnic::test;

namespace {

double twoTones(int i) { return std::sin(2 * M_PI * i / 12.5) + std::sin(2 * M_PI * i / 50.0); }

class WavePackets : public AnalysisWindow {
  protected:
    void decompose(int n, const char* level, OptionButton*(Form1Controls::*option),
                   double (*f)(int) = twoTones, const char* dT = "1") {
        load(n, f);
        ui().DeltaT_Text->setText(dT);
        ui().LevMaxText->setText(level);
        (ui().*option)->setValue(true);
        ui().WavePackButton->click();
    }
    WaveDecForm& dec() { return wb->waveDecForm(); }
    WaveSpectForm& spect() { return wb->waveSpectForm(); }
    WaveBasisForm& basis() { return wb->waveBasisForm(); }
};

} // namespace

TEST_F(WavePackets, ThirtyTwoSamplesAllowOneLevelAndTooLargeAVolumeIsRefused) {
    decompose(32, "5", &Form1Controls::Option3);
    EXPECT_EQ(ui().LevMaxText->Text(), " 1");
    EXPECT_EQ(dec().ComponentCount, 4);
    decompose(32, "1", &Form1Controls::Option1);
    ASSERT_EQ(dec().ComponentCount, 1);
    dec().WaveDecGraf_MouseMove(0, 0, 10, float(dec().ui().WaveDecGraf->ScaleHeight()));
    EXPECT_EQ(dec().SelectedComponent, 1) << "the bottom edge lies in the one band";
    EXPECT_EQ(spect().XMinShown, spect().XMaxShown) << "both ranges are zero with one point";
    MessageBoxes boxes;
    decompose(100000, "13", &Form1Controls::Option4);
    boxes.expectOne("WDC-analysis",
                    "For this combination of split coefficient, maximum detail level and "
                    "signal length\r\nWDC is impossible because of huge volume of output "
                    "information\r\nPlease, downsample time series or choose the less maximum "
                    "detail level and split coefficient");
    EXPECT_TRUE(form().Visible() && !dec().isLoaded());
}

TEST_F(WavePackets, ComponentsStackInTheirBandsThePointerReadsOneAndTheDoubleClickSavesIt) {
    decompose(512, "3", &Form1Controls::Option2, twoTones, "0.5");
    ASSERT_EQ(dec().ComponentCount, 6);
    dec().WaveDecGraf_DblClick(); // nothing is saved before a component was selected
    // Decomposed again with the record on: 511 segments to a component, each
    // within its sixth of the height.
    PlotSurface& map = *dec().ui().WaveDecGraf;
    map.canvas().setRecording(true);
    form().WavePackButton_Click();
    const auto segments = drawn(map, DrawKind::Segment);
    ASSERT_EQ(segments.size(), 6u * 511u);
    const float W = float(map.ScaleWidth()), H = float(map.ScaleHeight());
    for (std::size_t k = 0; k < segments.size(); ++k)
        ASSERT_LE(std::fabs(segments[k].y1 - (double(k / 511) + 0.5) * H / 6), H / 12 + 1e-3) << k;
    dec().WaveDecGraf_MouseMove(0, 0, 0, H / 6); // exactly on the line under band 1
    EXPECT_EQ(dec().SelectedComponent, 1) << "a border belongs to the upper band";
    EXPECT_EQ(map.ToolTipText().toStdString(),
              "Sample #  1, Time= 0, Tmin=" + NumText(0.5 * form().WdcTmin(1)) +
                  ", Tmax=" + NumText(0.5 * form().WdcTmax(1)));
    dec().WaveDecGraf_MouseMove(0, 0, W, H * 0.6f);
    EXPECT_EQ(dec().SelectedComponent, 4);
    EXPECT_TRUE(map.ToolTipText().startsWith("Sample #  512, Time= 255.5"));
    dec().WaveDecGraf_DblClick();
    std::istringstream lines(readBytes(dir / ("s-WDC(Tmin,max=" + ShortNumText(0.5 * form().WdcTmin(4)) +
                                              "," + ShortNumText(0.5 * form().WdcTmax(4)) + ").dat")));
    double value = 0, time = -1;
    lines >> value >> time;
    const float expected = form().WdcScale(4) * form().WdcData(3 * 512 + 1) + form().WdcMean(4);
    EXPECT_EQ(float(value), float(TextNum(NumText(expected))));
    EXPECT_EQ(time, 0.0);
    // A sine lands in the band of its period.
    decompose(4096, "6", &Form1Controls::Option3, [](int i) { return std::sin(2 * M_PI * i / 12.0); });
    int strongest = 1;
    for (int k = 2; k <= dec().ComponentCount; ++k)
        if (form().WdcPower(k) > form().WdcPower(strongest)) strongest = k;
    EXPECT_TRUE(form().WdcTmin(strongest) <= 12.0f && form().WdcTmax(strongest) >= 12.0f);
}

TEST_F(WavePackets, TheSpectraReplotAndTheToolTipsPromiseWhatATypedLevelGives) {
    decompose(1024, "3", &Form1Controls::Option3);
    WaveSpectFormControls& c = spect().ui();
    const QImage before = c.WaveSpectraGraf->canvas().image();
    c.FreqCheck->setValue(1);
    EXPECT_EQ(c.Label1->Caption(), "Frequency (in log-scale)");
    c.FreqCheck->setValue(0);
    EXPECT_EQ(c.WaveSpectraGraf->canvas().image(), before) << "toggling twice gives the same picture";
    EXPECT_FLOAT_EQ(spect().BandFreq(1), float((1 / form().WdcTmax(1) + 1 / form().WdcTmin(1)) / 2))
        << "a band at its mean frequency";
    // 1024 samples allow 6 levels; 7 typed give 7 levels, split into 56.
    ui().LevMaxText->setText("7");
    EXPECT_FALSE(dec().isLoaded() || spect().isLoaded() || basis().isLoaded())
        << "a new choice closes them";
    for (auto [option, tip] : std::initializer_list<std::pair<QWidget*, QString>>{
             {ui().LevMaxText, "Set Maximum Detail Level #: 1 <= * <=  6"},
             {ui().Option1, "It will be  7 detail levels"},
             {ui().Option4, "It will be  56 sub-levels"}}) {
        form().WaveletChoice_MouseMove(option);
        EXPECT_EQ(option->toolTip(), tip);
    }
}
