// The wavelet-packet decomposition from the main window and its three windows.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "tests/core/mainwindow_fixture.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavespectraform.h"

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class WavePackets : public MainWindow {
  protected:
    void load(int n, const std::function<double(int)>& f) {
        start();
        write("s.dat", series(n, f));
        open("s.dat");
        ASSERT_EQ(message(), "");
    }
    void decompose(const char* level, OptionButton* option) {
        ui().LevMaxText->setText(level);
        option->setValue(true);
        ui().WavePackButton->click();
        QApplication::processEvents();
    }
    WaveDecForm& dec() { return wb->waveDecForm(); }
    WaveSpectForm& spect() { return wb->waveSpectForm(); }
    WaveBasisForm& basis() { return wb->waveBasisForm(); }
};

double twoTones(int i) { return std::sin(2 * M_PI * i / 12.5) + std::sin(2 * M_PI * i / 50.0); }

} // namespace

TEST_F(WavePackets, ThirtyTwoSamplesAllowOneLevelOnly) {
    load(32, twoTones);
    decompose("5", ui().Option3);
    EXPECT_EQ(ui().LevMaxText->Text(), " 1");
    EXPECT_EQ(dec().ComponentCount, 4);
    EXPECT_TRUE(dec().Visible());
    EXPECT_TRUE(spect().Visible());
    EXPECT_TRUE(basis().Visible());
    EXPECT_FALSE(form().Visible());
}

TEST_F(WavePackets, LevelTextsAreRepairedInTheBox) {
    load(1025, twoTones);
    for (auto [typed, shown] : {std::pair{"20", " 7"}, {"abc", " 1"}, {"6.9", " 6"}, {"-3", " 1"}}) {
        decompose(typed, ui().Option1);
        EXPECT_EQ(ui().LevMaxText->Text(), shown) << typed;
        dec().window().close();
    }
}

TEST_F(WavePackets, TooLargeAVolumeIsRefusedAndTheMainWindowReturns) {
    load(100000, twoTones);
    QString text, title;
    setMsgBoxHook([&](const QString& t, const QString& h) { text = t, title = h; });
    decompose("13", ui().Option4);
    setMsgBoxHook({});
    EXPECT_EQ(title, "WDC-analysis");
    EXPECT_EQ(text, "For this combination of split coefficient, maximum detail level and signal "
                    "length\r\nWDC is impossible because of huge volume of output information\r\n"
                    "Please, downsample time series or choose the less maximum detail level and "
                    "split coefficient");
    EXPECT_TRUE(form().Visible());
    EXPECT_FALSE(dec().isLoaded());
    EXPECT_EQ(ui().LevMaxText->Text(), " 13");
}

TEST_F(WavePackets, ComponentsAreStackedEachInItsBandAndTheBasisFillsItsPlot) {
    load(1000, twoTones);
    decompose("4", ui().Option2);
    ASSERT_EQ(dec().ComponentCount, 8);
    const QString code = dec().Caption();
    EXPECT_TRUE(code.startsWith("Wavelet-Packet Decomposition by Orthogonal Daubechies "));
    EXPECT_TRUE(basis().Caption().endsWith(code.mid(code.lastIndexOf("order") + 5)));
    // Decompose again with the record on: the same windows are drawn anew.
    PlotSurface& map = *dec().ui().WaveDecGraf;
    const double B = map.ScaleHeight() / 8;
    map.canvas().setRecording(true);
    form().WavePackButton_Click();
    ASSERT_EQ(&map, dec().ui().WaveDecGraf);
    const auto& ops = dec().ui().WaveDecGraf->canvas().record();
    std::size_t segments = 0;
    for (const DrawOp& op : ops) {
        if (op.kind != DrawKind::Segment) continue;
        const int band = static_cast<int>(segments / 999);
        ASSERT_GE(op.y1, band * B - 1e-3) << segments;
        ASSERT_LE(op.y1, (band + 1) * B + 1e-3) << segments;
        ++segments;
    }
    EXPECT_EQ(segments, 8u * 999u);
}

TEST_F(WavePackets, ASineLandsInTheComponentWhoseBandHoldsItsPeriod) {
    load(4096, [](int i) { return std::sin(2 * M_PI * i / 12.0); });
    decompose("6", ui().Option3);
    int strongest = 1;
    for (int k = 2; k <= dec().ComponentCount; ++k)
        if (form().WdcPower(k) > form().WdcPower(strongest)) strongest = k;
    EXPECT_LE(form().WdcTmin(strongest), 12.0f);
    EXPECT_GE(form().WdcTmax(strongest), 12.0f);
}

TEST_F(WavePackets, ThePointerReadsTheBandAndTheDoubleClickSavesItInSignalUnits) {
    load(512, twoTones);
    ui().DeltaT_Text->setText("0.5");
    decompose("3", ui().Option2);
    ASSERT_EQ(dec().ComponentCount, 6);
    dec().WaveDecGraf_DblClick();
    for (const auto& e : fs::directory_iterator(dir.path()))
        EXPECT_EQ(e.path().filename().string().find("-WDC("), std::string::npos)
            << "nothing is saved before a component was selected";
    PlotSurface& map = *dec().ui().WaveDecGraf;
    const float W = static_cast<float>(map.ScaleWidth()), H = static_cast<float>(map.ScaleHeight());
    dec().WaveDecGraf_MouseMove(0, 0, 0, H / 6); // exactly on the line under band 1
    EXPECT_EQ(dec().SelectedComponent, 1) << "a border belongs to the upper band";
    EXPECT_EQ(map.ToolTipText(), "Sample #  1, Time= 0, Tmin=" +
                                     QString::fromStdString(NumText(0.5 * form().WdcTmin(1))) +
                                     ", Tmax=" + QString::fromStdString(NumText(0.5 * form().WdcTmax(1))));
    dec().WaveDecGraf_MouseMove(0, 0, W, H * 0.6f);
    EXPECT_EQ(dec().SelectedComponent, 4);
    EXPECT_TRUE(map.ToolTipText().startsWith("Sample #  512, Time= 255.5"));
    dec().WaveDecGraf_DblClick();
    const std::string name = "s-WDC(Tmin,max=" + ShortNumText(0.5 * form().WdcTmin(4)) + "," +
                             ShortNumText(0.5 * form().WdcTmax(4)) + ").dat";
    ASSERT_TRUE(fs::exists(dir / name)) << name;
    std::istringstream lines(readBytes(dir / name));
    double value = 0, time = 0;
    lines >> value >> time;
    const float expected = form().WdcScale(4) * form().WdcData(3 * 512 + 1) + form().WdcMean(4);
    EXPECT_EQ(static_cast<float>(value), static_cast<float>(TextNum(NumText(expected))));
    EXPECT_EQ(time, 0.0);
}

TEST_F(WavePackets, TheSpectraViewsReplotAndTheSaveWritesOneLineAComponent) {
    load(1024, twoTones);
    decompose("3", ui().Option3);
    WaveSpectFormControls& c = spect().ui();
    EXPECT_EQ(spect().Caption(), "Wavelet-Packet Power Spectra ");
    EXPECT_EQ(c.Label2->Caption(), "Wavelet-Packet Power Spectra (in log-scale), # of levels= 3, splitted into 4");
    EXPECT_EQ(c.Label1->Caption(), "Time Scale (in log-scale)");
    const QImage before = c.WaveSpectraGraf->canvas().image();
    c.FreqCheck->setValue(1);
    EXPECT_EQ(c.Label1->Caption(), "Frequency (in log-scale)");
    c.FreqCheck->setValue(0);
    EXPECT_EQ(c.WaveSpectraGraf->canvas().image(), before) << "toggling twice gives the same picture";
    EXPECT_TRUE(c.SaveSpButton->isEnabled());
    c.SaveSpButton->click();
    EXPECT_FALSE(c.SaveSpButton->isEnabled());
    const std::string text = readBytes(dir / "SpectEstimates" / "WaveSp(s).dat");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 12);
    const std::string first = text.substr(0, text.find("\r\n"));
    EXPECT_EQ(first.substr(0, first.find(' ', 1)), NumText(spect().BandFreq(1)));
    EXPECT_EQ(first.substr(14, NumText(1.0 / spect().BandFreq(1)).size()),
              NumText(1.0 / spect().BandFreq(1)))
        << "the period column is the reciprocal of the mean frequency";
    EXPECT_FLOAT_EQ(spect().BandFreq(1),
                    static_cast<float>((1 / form().WdcTmax(1) + 1 / form().WdcTmin(1)) / 2));
}

TEST_F(WavePackets, OneComponentMeansOneBandAndOnePoint) {
    load(32, twoTones);
    decompose("1", ui().Option1);
    ASSERT_EQ(dec().ComponentCount, 1);
    PlotSurface& map = *dec().ui().WaveDecGraf;
    for (float y : {0.0f, static_cast<float>(map.ScaleHeight()) / 2, static_cast<float>(map.ScaleHeight())}) {
        dec().WaveDecGraf_MouseMove(0, 0, 10, y);
        EXPECT_EQ(dec().SelectedComponent, 1);
    }
    EXPECT_EQ(spect().XMinShown, spect().XMaxShown) << "both ranges are zero with one point";
}

TEST_F(WavePackets, ChangingTheChoiceClosesTheDecompositionAndItsMapBringsBackTheMainWindow) {
    load(600, twoTones);
    ui().LevMaxText->setText("2");
    ui().Option3->setValue(true);
    ui().WavePackButton->click();
    spect().window().close();
    EXPECT_TRUE(dec().isLoaded()) << "the spectra close alone";
    EXPECT_TRUE(basis().isLoaded());
    dec().window().close();
    EXPECT_FALSE(basis().isLoaded());
    EXPECT_TRUE(form().Visible());
    ui().WavePackButton->click();
    ui().Option1->setValue(true);
    EXPECT_FALSE(dec().isLoaded());
    EXPECT_FALSE(spect().isLoaded());
    EXPECT_FALSE(basis().isLoaded());
    ui().WavePackButton->click();
    ui().LevMaxText->setText("3");
    EXPECT_FALSE(dec().isLoaded());
}

TEST_F(WavePackets, ToolTipsPromiseWhatTheTypedLevelGives) {
    load(1024, twoTones);
    ui().LevMaxText->setText("7");
    form().WaveletChoice_MouseMove(ui().LevMaxText);
    EXPECT_EQ(ui().LevMaxText->ToolTipText(), "Set Maximum Detail Level #: 1 <= * <=  6");
    form().WaveletChoice_MouseMove(ui().Option1);
    EXPECT_EQ(ui().Option1->ToolTipText(), "It will be  7 detail levels");
    form().WaveletChoice_MouseMove(ui().Option4);
    EXPECT_EQ(ui().Option4->ToolTipText(), "It will be  56 sub-levels");
}
