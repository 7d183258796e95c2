// The workbench as a user meets it: a copy of the bundled examples in a folder
// of their own, walked through every window with real clicks, checking after
// each step which windows stand on the screen, that each of them is laid out
// cleanly (the check that found real overlaps). What each step writes is
// compared byte for byte with the batch tool's files in tests/app.
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/mfdfahelpform.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "multiscale/wtmmform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "tests/core/mainwindow_fixture.h"
#include "tests/e2e/layout_faults.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavespectraform.h"

#include <set>

using namespace tarnic;
using namespace tarnic::test;

namespace {

std::string text(const QString& s) { return s.toStdString(); }

using Names = std::set<std::string>;

class Road : public MainWindow {
  protected:
    void SetUp() override {
        MainWindow::SetUp();
        // The user keeps a copy of the examples in a folder of their own.
        data = dir / "my data";
        fs::create_directory(data);
        for (const auto& e : fs::directory_iterator(TARNIC_EXAMPLES_DIR))
            if (e.path().extension() == ".dat") fs::copy_file(e.path(), data / e.path().filename());
        startBrowsing(data);
    }

    // The windows on the screen, by name; each is checked for a clean layout.
    Names onScreen() {
        QApplication::processEvents();
        Names names;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (!dynamic_cast<FormWindow*>(w) || !w->isVisible()) continue;
            names.insert(text(w->objectName()));
            for (const std::string& fault : layoutFaults(*w))
                ADD_FAILURE() << text(w->objectName()) << ": " << fault;
        }
        return names;
    }
    // The user presses a button; what stands on the screen then.
    Names press(QAbstractButton* button) {
        button->click();
        return onScreen();
    }
    // The user closes a window with its title-bar button; what stays on the screen.
    Names close(Form& form) {
        form.window().close();
        return onScreen();
    }

    fs::path data;
};

} // namespace

TEST_F(Road, OneFileThroughEveryWindowAndBackToTheBrowser) {
    EXPECT_EQ(onScreen(), Names{"Form1"});
    open("two_sines_trend.dat");
    ASSERT_EQ(form().Nrec, 5000) << text(message());
    expectStage(ui(), Stage::Loaded);

    // Spectra.
    ui().LaunchButton->click();
    expectStage(ui(), Stage::SpectraShown);
    ui().SaveSpButton->click();
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton"});

    // Spectrum zoom and band-pass.
    EXPECT_EQ(press(ui().ZoomButton), Names{"SpectraZoomForm"});
    EXPECT_EQ(press(wb->spectraZoomForm().ui().BandPassButton),
              (Names{"SpectraZoomForm", "BandPassForm"}));
    wb->bandPassForm().ui().BandPassSaveButton->click();
    EXPECT_EQ(close(wb->spectraZoomForm()), Names{"Form1"}) << "the band-pass goes with the zoom";

    // Trend by local polynomials.
    ui().ShowSignGrafButton->click();
    SignalPlotControls& pc = wb->signalPlot().ui();
    pc.LocPolynomOption->setValue(true);
    pc.SmoothRad->setText("250");
    EXPECT_EQ(press(pc.ReDrawButton), Names{"SignalPlot"});
    pc.SaveTrendButton->click();

    // Fragment and its best harmonic.
    pc.HScroll_Right->setValue(32767 * 3 / 4);
    pc.HScroll_Left->setValue(32767 / 4);
    pc.ZoomButton->click();
    SignalZoomForm& zoom = wb->signalZoomForm();
    SignalZoomFormControls& zc = zoom.ui();
    EXPECT_NEAR(zoom.FragLeng, 2500, 10);
    zc.SaveFragButton->click();
    EXPECT_EQ(press(zc.FindHarm), Names{"SignalZoomForm"});
    EXPECT_NEAR(zoom.HarmonicPeriod, 50.0, 0.5) << "the stronger line of the detrended fragment";
    zoom.TimeSeriesZoom_DblClick();

    // Morlet map.
    EXPECT_EQ(press(zc.MorletSvan), Names{"MorletSvanForm"});
    wb->morletSvanForm().ui().SaveGRD->click();
    EXPECT_EQ(close(wb->morletSvanForm()), Names{"SignalZoomForm"});

    // Heisenberg boxes.
    zc.HeisBoxesButton->click();
    EXPECT_EQ(press(wb->heisBoxForm().ui().WavePackButton), Names{"HeisBoxForm"});
    wb->heisBoxForm().ui().SaveGRD->click();
    EXPECT_EQ(close(wb->heisBoxForm()), Names{"SignalZoomForm"});

    // WTMM chains.
    EXPECT_EQ(press(zc.WTMM_button), Names{"WTMM_Form"});
    EXPECT_LT(wb->wtmmForm().ChainLgMin, wb->wtmmForm().ChainLgMax) << "chains over the scales";
    EXPECT_FALSE(fs::exists(fs::current_path() / "n12c43k67r13t72c76h18i04"))
        << "the chains file is read and deleted at once";
    EXPECT_EQ(press(wb->wtmmForm().ui().WTMM_HelpButton), (Names{"WTMM_Form", "WTMM_Help"}));
    EXPECT_EQ(close(wb->wtmmForm()), Names{"SignalZoomForm"}) << "the help goes with its window";

    // Singularity spectrum.
    zc.MFDFA_button->click();
    MFDFA_form& mf = wb->mfdfaForm();
    EXPECT_EQ(press(mf.ui().LaunchMFDFA_btn), Names{"MFDFA_form"});
    mf.ui().SaveFalfa_button->click();
    EXPECT_EQ(press(mf.ui().MFDFA_Help_button), (Names{"MFDFA_form", "MFDFA_Help_form"}));
    close(wb->mfdfaHelpForm());
    EXPECT_EQ(close(mf), Names{"SignalZoomForm"});
    EXPECT_EQ(close(zoom), Names{"SignalPlot"});
    EXPECT_EQ(close(wb->signalPlot()), Names{"Form1"});

    // Wavelet packets: the decomposition's windows close together.
    ui().LevMaxText->setText("6");
    EXPECT_EQ(press(ui().WavePackButton),
              (Names{"WaveDecForm", "WaveSpectForm", "WaveBasisForm"}));
    WaveDecForm& dec = wb->waveDecForm();
    PlotSurface& decMap = *dec.ui().WaveDecGraf;
    dec.WaveDecGraf_MouseMove(0, 0, static_cast<float>(decMap.ScaleWidth() / 2),
                              static_cast<float>(decMap.ScaleHeight() / 2));
    dec.WaveDecGraf_DblClick();
    wb->waveSpectForm().ui().SaveSpButton->click();
    EXPECT_EQ(close(dec), Names{"Form1"});

    // Threshold filter.
    ui().WaveFiltButton->click();
    WaveFiltFormControls& fc = wb->waveFiltForm().ui();
    fc.LaunchDonoho->click();
    EXPECT_EQ(press(fc.LaunchThreshButton), Names{"WaveFiltForm"});
    EXPECT_EQ(press(fc.ZoomGrafButton), (Names{"WaveFiltForm", "WaveFiltZoomForm"}));
    fc.SaveThreshButton->click();
    EXPECT_EQ(close(wb->waveFiltForm()), Names{"Form1"});

    // AR spectra evolution.
    ui().SvanArButton->click();
    EXPECT_EQ(press(wb->svanArForm().ui().LaunchSvan), Names{"SvanArForm"});
    wb->svanArForm().ui().SaveGRD->click();
    EXPECT_EQ(close(wb->svanArForm()), Names{"Form1"});

    // Preprocessing: the derived files do not replace the signal.
    ui().IncremButton->click();
    ui().WinzorButton->click();
    ui().DownStepText->setText("4");
    ui().DownSampButton->click();
    EXPECT_EQ(form().Nrec, 5000);
    for (const char* file : {"two_sines_trend-INC.dat", "two_sines_trend-WINZ.dat",
                             "two_sines_trend-DNS= 4.dat", "two_sines_trend-Var.DNS= 4.dat"})
        EXPECT_TRUE(fs::exists(data / file)) << file;
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton", "IncremButton", "WinzorButton"});

    // Help, whose block scheme goes with it.
    ui().HelpButton->click();
    EXPECT_EQ(press(wb->helpForm().ui().Command1),
              (Names{"Form1", "HelpForm", "BlockSchemeForm"}));
    close(wb->helpForm());
    EXPECT_FALSE(wb->blockSchemeForm().isLoaded());

    // Another file, with a low order for its known one.
    ui().OtherFileButton->click();
    expectStage(ui(), Stage::Start);
    open("ar2_peak.dat");
    ASSERT_EQ(form().Nrec, 4096) << text(message());
    ui().AR_OrderText->setText("4");
    ui().LaunchButton->click();
    ui().SaveSpButton->click();
    EXPECT_TRUE(messages.empty()) << text(messages.front());
    EXPECT_EQ(onScreen(), Names{"Form1"});
}

TEST_F(Road, FilesOfTheProgramsOwnMakingAreNewInputs) {
    const auto openAnother = [&](const char* file) {
        ui().OtherFileButton->click();
        open(file);
    };
    open("random_walk.dat");
    ui().IncremButton->click();
    openAnother("random_walk-INC.dat");
    EXPECT_EQ(form().Nrec, 10000) << text(message());
    // A table split into its columns gives inputs of their own; the third
    // column of the example is the ramp t/1000.
    openAnother("three_columns.dat");
    ui().DemplxButton->click();
    openAnother("three_columns-Col3.dat");
    ASSERT_EQ(form().Nrec, 1000) << text(message());
    EXPECT_NEAR(form().Signal(1000) - form().Signal(1), 0.999, 1e-4);
}
