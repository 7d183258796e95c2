// The workbench as a user meets it: a copy of the bundled examples in a folder
// of their own, walked through every window with real clicks, checking after
// each step which windows stand on the screen, that each of them is laid out
// cleanly (the check that found real overlaps). What each step writes is
// compared byte for byte with the batch tool's files in tests/app.
#include "core/msgbox.h"
#include "core/numtext.h"
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/mfdfahelpform.h"
#include "help/wtmmhelp.h"
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
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"
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
        setMsgBoxHook([this](const QString& t, const QString&) { messages.push_back(text(t)); });
        start();
        ui().Dir1->setPath(QString::fromStdString(data.string()));
        EXPECT_EQ(text(ui().File1->Path()), data.string()) << "the file list follows the folder";
    }
    void TearDown() override {
        setMsgBoxHook(nullptr);
        MainWindow::TearDown();
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
    // The user closes a window with its title-bar button; what stays on the screen.
    Names close(Form& form) {
        form.window().close();
        return onScreen();
    }

    fs::path data;
    std::vector<std::string> messages;
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
    ui().ZoomButton->click();
    EXPECT_EQ(onScreen(), Names{"SpectraZoomForm"});
    wb->spectraZoomForm().ui().BandPassButton->click();
    EXPECT_EQ(onScreen(), (Names{"SpectraZoomForm", "BandPassForm"}));
    wb->bandPassForm().ui().BandPassSaveButton->click();
    EXPECT_EQ(close(wb->spectraZoomForm()), Names{"Form1"}) << "the band-pass goes with the zoom";

    // Trend by local polynomials.
    ui().ShowSignGrafButton->click();
    SignalPlotControls& pc = wb->signalPlot().ui();
    pc.LocPolynomOption->setValue(true);
    pc.SmoothRad->setText("250");
    pc.ReDrawButton->click();
    EXPECT_EQ(onScreen(), Names{"SignalPlot"});
    pc.SaveTrendButton->click();

    // Fragment and its best harmonic.
    pc.HScroll_Right->setValue(32767 * 3 / 4);
    pc.HScroll_Left->setValue(32767 / 4);
    pc.ZoomButton->click();
    SignalZoomForm& zoom = wb->signalZoomForm();
    SignalZoomFormControls& zc = zoom.ui();
    EXPECT_NEAR(zoom.FragLeng, 2500, 10);
    const std::string part = ",PART[" + NumText(zoom.FragFirstSample - 1).substr(1) + "," +
                             NumText(zoom.FragLastSample - 1).substr(1) + "]";
    zc.SaveFragButton->click();
    zc.FindHarm->click();
    EXPECT_EQ(onScreen(), Names{"SignalZoomForm"});
    EXPECT_NEAR(zoom.HarmonicPeriod, 50.0, 0.5) << "the stronger line of the detrended fragment";
    zoom.TimeSeriesZoom_DblClick();

    // Morlet map.
    zc.MorletSvan->click();
    EXPECT_EQ(onScreen(), Names{"MorletSvanForm"});
    wb->morletSvanForm().ui().SaveGRD->click();
    EXPECT_EQ(close(wb->morletSvanForm()), Names{"SignalZoomForm"});

    // Heisenberg boxes.
    zc.HeisBoxesButton->click();
    wb->heisBoxForm().ui().WavePackButton->click();
    EXPECT_EQ(onScreen(), Names{"HeisBoxForm"});
    wb->heisBoxForm().ui().SaveGRD->click();
    EXPECT_EQ(close(wb->heisBoxForm()), Names{"SignalZoomForm"});

    // WTMM chains.
    zc.WTMM_button->click();
    EXPECT_EQ(onScreen(), Names{"WTMM_Form"});
    EXPECT_LT(wb->wtmmForm().ChainLgMin, wb->wtmmForm().ChainLgMax) << "chains over the scales";
    EXPECT_FALSE(fs::exists(fs::current_path() / "n12c43k67r13t72c76h18i04"))
        << "the chains file is read and deleted at once";
    wb->wtmmForm().ui().WTMM_HelpButton->click();
    EXPECT_EQ(onScreen(), (Names{"WTMM_Form", "WTMM_Help"}));
    EXPECT_EQ(close(wb->wtmmForm()), Names{"SignalZoomForm"}) << "the help goes with its window";

    // Singularity spectrum.
    zc.MFDFA_button->click();
    MFDFA_form& mf = wb->mfdfaForm();
    mf.ui().LaunchMFDFA_btn->click();
    EXPECT_EQ(onScreen(), Names{"MFDFA_form"});
    mf.ui().SaveFalfa_button->click();
    mf.ui().MFDFA_Help_button->click();
    EXPECT_EQ(onScreen(), (Names{"MFDFA_form", "MFDFA_Help_form"}));
    close(wb->mfdfaHelpForm());
    EXPECT_EQ(close(mf), Names{"SignalZoomForm"});
    EXPECT_EQ(close(zoom), Names{"SignalPlot"});
    EXPECT_EQ(close(wb->signalPlot()), Names{"Form1"});

    // Wavelet packets: the decomposition's windows close together.
    ui().LevMaxText->setText("6");
    ui().WavePackButton->click();
    EXPECT_EQ(onScreen(), (Names{"WaveDecForm", "WaveSpectForm", "WaveBasisForm"}));
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
    fc.LaunchThreshButton->click();
    EXPECT_EQ(onScreen(), Names{"WaveFiltForm"});
    fc.ZoomGrafButton->click();
    EXPECT_EQ(onScreen(), (Names{"WaveFiltForm", "WaveFiltZoomForm"}));
    fc.SaveThreshButton->click();
    EXPECT_EQ(close(wb->waveFiltForm()), Names{"Form1"});

    // AR spectra evolution.
    ui().SvanArButton->click();
    SvanArFormControls& sc = wb->svanArForm().ui();
    sc.LaunchSvan->click();
    EXPECT_EQ(onScreen(), Names{"SvanArForm"});
    sc.SaveGRD->click();
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
    wb->helpForm().ui().Command1->click();
    EXPECT_EQ(onScreen(), (Names{"Form1", "HelpForm", "BlockSchemeForm"}));
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
    EXPECT_TRUE(messages.empty()) << messages.front();
    EXPECT_EQ(onScreen(), Names{"Form1"});
}

TEST_F(Road, FilesOfTheProgramsOwnMakingAreNewInputs) {
    open("random_walk.dat");
    ui().IncremButton->click();
    ui().OtherFileButton->click();
    open("random_walk-INC.dat");
    EXPECT_EQ(form().Nrec, 10000) << text(message());
    // A table split into its columns gives inputs of their own; the third
    // column of the example is the ramp t/1000.
    ui().OtherFileButton->click();
    open("three_columns.dat");
    ui().DemplxButton->click();
    ui().OtherFileButton->click();
    open("three_columns-Col3.dat");
    ASSERT_EQ(form().Nrec, 1000) << text(message());
    EXPECT_NEAR(form().Signal(1000) - form().Signal(1), 0.999, 1e-4);
}
