// The workbench as a user meets it: a copy of the bundled examples in a folder
// of their own, walked through every window with real clicks, checking after
// each step which windows stand on the screen, that each of them is laid out
// cleanly (the check that found real overlaps), and which files were written.
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

#include <array>
#include <cmath>
#include <map>
#include <set>

using namespace tarnic;
using namespace tarnic::test;

namespace {

// The lines of a written file, each checked to end in CR LF, split into fields.
std::vector<std::vector<double>> readTable(const fs::path& file) {
    const std::string text = readBytes(file);
    std::vector<std::vector<double>> rows;
    for (std::size_t start = 0, end; start < text.size(); start = end + 2) {
        end = text.find("\r\n", start);
        if (end == std::string::npos) {
            ADD_FAILURE() << file << ": the last line has no CR LF";
            break;
        }
        std::istringstream line(text.substr(start, end - start));
        rows.emplace_back();
        for (double v; line >> v;) rows.back().push_back(v);
    }
    return rows;
}

// Every row has `fields` numbers: the shape of a valid output file.
void expectShape(const fs::path& file, std::size_t lines, std::size_t fields) {
    const auto rows = readTable(file);
    EXPECT_EQ(rows.size(), lines) << file;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].size() != fields) {
            ADD_FAILURE() << file << " line " << i + 1 << " has " << rows[i].size() << " fields";
            break;
        }
}

// Field `at` of the row whose field `of` is largest: where a spectrum peaks.
double atPeak(const fs::path& file, std::size_t of, std::size_t at) {
    const auto rows = readTable(file);
    std::size_t best = 0;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i].size() > of && rows[i][of] > rows[best][of]) best = i;
    return rows.empty() ? NAN : rows[best][at];
}

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
        written();
    }
    void TearDown() override {
        setMsgBoxHook(nullptr);
        MainWindow::TearDown();
    }

    // The windows on the screen, by name; each is checked for a clean layout.
    Names onScreen() {
        QApplication::processEvents();
        Names names;
        for (Form* f : std::initializer_list<Form*>{
                 &wb->form1(), &wb->signalPlot(), &wb->signalZoomForm(), &wb->spectraZoomForm(),
                 &wb->bandPassForm(), &wb->waveDecForm(), &wb->waveSpectForm(),
                 &wb->waveBasisForm(), &wb->waveFiltForm(), &wb->waveFiltZoomForm(),
                 &wb->svanArForm(), &wb->morletSvanForm(), &wb->heisBoxForm(), &wb->wtmmForm(),
                 &wb->wtmmHelp(), &wb->mfdfaForm(), &wb->mfdfaHelpForm(), &wb->helpForm(),
                 &wb->blockSchemeForm()}) {
            if (!f->isLoaded() || !f->Visible()) continue;
            names.insert(text(f->name()));
            for (const std::string& fault : layoutFaults(f->window()))
                ADD_FAILURE() << text(f->name()) << ": " << fault;
        }
        return names;
    }
    // The files below the data folder that are new or changed since the last call.
    Names written() {
        Names changed;
        std::map<std::string, std::string> now;
        for (const auto& e : fs::recursive_directory_iterator(data))
            if (e.is_regular_file())
                now[fs::relative(e.path(), data).generic_string()] = readBytes(e.path());
        for (const auto& [name, bytes] : now)
            if (!files.count(name) || files[name] != bytes) changed.insert(name);
        files = std::move(now);
        return changed;
    }
    // The one file a step wrote, whose name starts with `prefix`.
    std::string wroteOne(const std::string& prefix) {
        const Names names = written();
        EXPECT_EQ(names.size(), 1u);
        const std::string name = names.empty() ? "" : *names.begin();
        EXPECT_EQ(name.rfind(prefix, 0), 0u) << name;
        return name;
    }
    // The names of the two spectrum files the main window saves.
    Names spectra(const std::string& stem) {
        return {"SpectEstimates/Sp_AR(" + stem + ") AR=" + NumText(form().Nar) + ",Leng=" +
                    NumText(form().LengAR) + ".dat",
                "SpectEstimates/Sp_Four(" + stem + ") MM=" + NumText(form().MM) + ",Leng=" +
                    NumText(form().LengF) + ".dat"};
    }
    // The user closes a window with its title-bar button; what stays on the screen.
    Names close(Form& form) {
        form.window().close();
        return onScreen();
    }
    void openInData(const std::string& name) {
        ui().Dir1->setPath(QString::fromStdString(data.string()));
        ASSERT_EQ(text(ui().File1->Path()), data.string()) << "the file list follows the folder";
        open(name);
    }

    fs::path data;
    std::map<std::string, std::string> files;
    std::vector<std::string> messages;
};

} // namespace

TEST_F(Road, OneFileThroughEveryWindowAndBackToTheBrowser) {
    start();
    EXPECT_EQ(onScreen(), Names{"Form1"});
    expectStage(ui(), Stage::Start);

    // Intake.
    openInData("two_sines_trend.dat");
    ASSERT_EQ(message(), "");
    expectStage(ui(), Stage::Loaded);
    EXPECT_EQ(form().Nrec, 5000);

    // Spectra.
    ui().LaunchButton->click();
    EXPECT_EQ(onScreen(), Names{"Form1"});
    expectStage(ui(), Stage::SpectraShown);
    ui().SaveSpButton->click();
    const Names sp = spectra("two_sines_trend");
    EXPECT_EQ(written(), sp);
    // Every point but the zero frequency, whose period has no value; both
    // estimates find the stronger line, of period 50 samples.
    for (const auto& [name, points] : {std::pair{*sp.begin(), form().NfAR - 1},
                                       std::pair{*sp.rbegin(), form().NfFour - 1}}) {
        expectShape(data / name, points, 3);
        EXPECT_NEAR(atPeak(data / name, 2, 1), 50.0, 3.0) << name;
    }
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton"});

    // Spectrum zoom and band-pass.
    ui().ZoomButton->click();
    EXPECT_EQ(onScreen(), Names{"SpectraZoomForm"});
    wb->spectraZoomForm().ui().BandPassButton->click();
    EXPECT_EQ(onScreen(), (Names{"SpectraZoomForm", "BandPassForm"}));
    wb->bandPassForm().ui().BandPassSaveButton->click();
    expectShape(data / wroteOne("two_sines_trend-BPF(Tmin,max="), 5000, 2);
    EXPECT_EQ(close(wb->spectraZoomForm()), Names{"Form1"}) << "the band-pass goes with the zoom";

    // Trend by local polynomials.
    ui().ShowSignGrafButton->click();
    SignalPlotControls& pc = wb->signalPlot().ui();
    pc.LocPolynomOption->setValue(true);
    pc.SmoothRad->setText("250");
    pc.ReDrawButton->click();
    EXPECT_EQ(onScreen(), Names{"SignalPlot"});
    pc.SaveTrendButton->click();
    const std::string ord = ",Ord=" + text(pc.TrendPolynomOrder->Text()) + ".dat";
    const std::string trn = "two_sines_trend-TRN,Rad= 250" + ord;
    const std::string rsd = "two_sines_trend-RSD,Rad= 250" + ord;
    EXPECT_EQ(written(), (Names{trn, rsd}));
    {
        // Trend plus residual is the signal again, line by line, at the same times.
        const auto signal = readTable(data / "two_sines_trend.dat");
        const auto t = readTable(data / trn), r = readTable(data / rsd);
        ASSERT_EQ(t.size(), 5000u);
        ASSERT_EQ(r.size(), 5000u);
        for (std::size_t i = 0; i < 5000; i += 499) {
            EXPECT_NEAR(t[i][0] + r[i][0], signal[signal.size() - 5000 + i][0], 1e-5) << i;
            EXPECT_EQ(t[i][1], static_cast<double>(i));
            EXPECT_EQ(r[i][1], static_cast<double>(i));
        }
    }

    // Fragment.
    pc.HScroll_Right->setValue(32767 * 3 / 4);
    pc.HScroll_Left->setValue(32767 / 4);
    pc.ZoomButton->click();
    SignalZoomForm& zoom = wb->signalZoomForm();
    SignalZoomFormControls& zc = zoom.ui();
    const int fragLeng = zoom.FragLeng;
    EXPECT_NEAR(fragLeng, 2500, 10);
    const std::string part = ",PART[" + NumText(zoom.FragFirstSample - 1).substr(1) + "," +
                             NumText(zoom.FragLastSample - 1).substr(1) + "]";
    zc.SaveFragButton->click();
    expectShape(data / wroteOne("two_sines_trend" + part + ".dat"), fragLeng, 2);
    zc.FindHarm->click();
    EXPECT_EQ(onScreen(), Names{"SignalZoomForm"});
    EXPECT_NEAR(zoom.HarmonicPeriod, 50.0, 0.5) << "the stronger line of the detrended fragment";
    zoom.TimeSeriesZoom_DblClick();
    expectShape(data / wroteOne("two_sines_trend,DeTrended(BestFitHarm,T="), fragLeng, 3);

    // Morlet map.
    zc.MorletSvan->click();
    EXPECT_EQ(onScreen(), Names{"MorletSvanForm"});
    wb->morletSvanForm().ui().SaveGRD->click();
    const std::string morletGrid =
        "GRID_files/Lg(WaveCoeff^2)_two_sines_trend" + part + ",DeTrended.grd";
    const std::string morletSpec =
        "SpectEstimates/Sp(WaveCoeff^2)_two_sines_trend" + part + ",DeTrended.dat";
    EXPECT_EQ(written(), (Names{morletGrid, morletSpec}));
    EXPECT_EQ(readBytes(data / morletGrid).substr(0, 6), "DSAA\r\n");
    EXPECT_NEAR(atPeak(data / morletSpec, 1, 0), 50.0, 5.0) << "period first, then the power";
    EXPECT_EQ(close(wb->morletSvanForm()), Names{"SignalZoomForm"});

    // Heisenberg boxes.
    zc.HeisBoxesButton->click();
    wb->heisBoxForm().ui().WavePackButton->click();
    EXPECT_EQ(onScreen(), Names{"HeisBoxForm"});
    wb->heisBoxForm().ui().SaveGRD->click();
    const std::string heisGrid =
        wroteOne("GRID_files/Lg(AbsWaveCoeff_HBoxes)_two_sines_trend" + part + ",DeTrended.grd");
    EXPECT_EQ(readBytes(data / heisGrid).substr(0, 6), "DSAA\r\n");
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
    const auto falfa = readTable(data / wroteOne("SpectEstimates/F(Alfa)_two_sines_trend" + part));
    ASSERT_GT(falfa.size(), 4u);
    EXPECT_EQ(falfa[4].size(), 2u) << "four comment lines, then alpha and f(alpha)";
    mf.ui().MFDFA_Help_button->click();
    EXPECT_TRUE(onScreen().count("MFDFA_Help_form"));
    close(wb->mfdfaHelpForm());
    EXPECT_EQ(close(mf), Names{"SignalZoomForm"});

    // Back to the main window.
    EXPECT_EQ(close(zoom), Names{"SignalPlot"});
    EXPECT_EQ(close(wb->signalPlot()), Names{"Form1"});
    expectStage(ui(), Stage::SpectraShown, {"SaveSpButton"});

    // Wavelet packets.
    ui().LevMaxText->setText("6");
    ui().WavePackButton->click();
    EXPECT_EQ(onScreen(), (Names{"WaveDecForm", "WaveSpectForm", "WaveBasisForm"}));
    WaveDecForm& dec = wb->waveDecForm();
    PlotSurface& decMap = *dec.ui().WaveDecGraf;
    dec.WaveDecGraf_MouseMove(0, 0, static_cast<float>(decMap.ScaleWidth() / 2),
                              static_cast<float>(decMap.ScaleHeight() / 2));
    dec.WaveDecGraf_DblClick();
    expectShape(data / wroteOne("two_sines_trend-WDC(Tmin,max="), 5000, 2);
    wb->waveSpectForm().ui().SaveSpButton->click();
    wroteOne("SpectEstimates/WaveSp(two_sines_trend).dat");
    EXPECT_EQ(close(dec), Names{"Form1"}) << "the decomposition's windows close together";

    // Threshold filter.
    ui().WaveFiltButton->click();
    WaveFiltFormControls& fc = wb->waveFiltForm().ui();
    fc.LaunchDonoho->click();
    fc.LaunchThreshButton->click();
    EXPECT_EQ(onScreen(), Names{"WaveFiltForm"});
    fc.ZoomGrafButton->click();
    EXPECT_EQ(onScreen(), (Names{"WaveFiltForm", "WaveFiltZoomForm"}));
    fc.SaveThreshButton->click();
    const Names thr = written();
    ASSERT_EQ(thr.size(), 2u);
    for (const std::string& name : thr) {
        EXPECT_TRUE(name.rfind("two_sines_trend-THR-MAIN(", 0) == 0 ||
                    name.rfind("two_sines_trend-THR-RSD(", 0) == 0)
            << name;
        expectShape(data / name, 5000, 2);
    }
    EXPECT_EQ(close(wb->waveFiltForm()), Names{"Form1"});

    // AR spectra evolution.
    ui().SvanArButton->click();
    SvanArFormControls& sc = wb->svanArForm().ui();
    sc.LaunchSvan->click();
    EXPECT_EQ(onScreen(), Names{"SvanArForm"});
    sc.SaveGRD->click();
    wroteOne("GRID_files/Lg(Sp)_two_sines_trend_Leng=" + text(sc.LengWinText->Text()) +
             ",Shift=" + text(sc.ShiftText->Text()) + ",AR=" + text(sc.ArOrderText->Text()));
    EXPECT_EQ(close(wb->svanArForm()), Names{"Form1"});

    // Preprocessing.
    ui().IncremButton->click();
    ui().WinzorButton->click();
    ui().DownStepText->setText("4");
    ui().DownSampButton->click();
    EXPECT_EQ(form().Nrec, 5000) << "the derived files do not replace the signal";
    EXPECT_EQ(written(), (Names{"two_sines_trend-INC.dat", "two_sines_trend-WINZ.dat",
                                "two_sines_trend-DNS= 4.dat", "two_sines_trend-Var.DNS= 4.dat"}));
    expectShape(data / "two_sines_trend-WINZ.dat", 5000, 2);
    expectShape(data / "two_sines_trend-DNS= 4.dat", 1250, 2);
    EXPECT_FALSE(ui().IncremButton->isEnabled());
    EXPECT_FALSE(ui().WinzorButton->isEnabled());

    // Help.
    ui().HelpButton->click();
    wb->helpForm().ui().Command1->click();
    EXPECT_EQ(onScreen(), (Names{"Form1", "HelpForm", "BlockSchemeForm"}));
    close(wb->helpForm());
    EXPECT_FALSE(wb->blockSchemeForm().isLoaded()) << "the scheme goes with the help";

    // Another file.
    ui().OtherFileButton->click();
    expectStage(ui(), Stage::Start);
    open("ar2_peak.dat");
    ASSERT_EQ(message(), "");
    expectStage(ui(), Stage::Loaded);
    EXPECT_EQ(form().Nrec, 4096);
    // The process x[t] = 0.75 x[t-1] - 0.5 x[t-2] + e[t] with unit noise has the
    // one-sided density 2 / |1 - 0.75 z + 0.5 z^2|^2 on the unit circle, largest
    // at cos w = 0.5625 and about 11 there. A user who knows the order asks for
    // a low one; both estimates then follow the density band by band.
    ui().AR_OrderText->setText("4");
    ui().LaunchButton->click();
    ui().SaveSpButton->click();
    const Names ar2 = spectra("ar2_peak");
    EXPECT_EQ(written(), ar2) << "the new file names the new spectra";
    EXPECT_NE(ar2.begin()->find(") AR= 4,"), std::string::npos) << *ar2.begin();
    for (const std::string& name : ar2) {
        constexpr int kBands = 12;
        std::array<double, kBands> ratio{}, count{};
        for (const auto& row : readTable(data / name)) {
            const int band = static_cast<int>(row[0] / 0.5 * kBands);
            if (band < 0 || band >= kBands) continue;
            const double c = std::cos(2 * M_PI * row[0]);
            ratio[band] += row[2] * (0.8125 - 2.25 * c + 2 * c * c) / 2.0;
            count[band] += 1;
        }
        for (int b = 0; b < kBands; ++b)
            EXPECT_NEAR(ratio[b] / count[b], 1.0, 0.2) << name << ", band " << b;
    }
    EXPECT_TRUE(messages.empty()) << messages.front();
    EXPECT_EQ(onScreen(), Names{"Form1"});
}

TEST_F(Road, EveryExampleIsReadOrRefusedWithItsMessageAndReadingWritesOnlyTheSplitOfAConstant) {
    start();
    ui().Dir1->setPath(QString::fromStdString(data.string()));
    const std::pair<const char*, const char*> told[] = {
        {"ar2_peak.dat", ""}, {"random_walk.dat", ""}, {"three_columns.dat", ""},
        {"two_sines_trend.dat", ""}, {"exactly_32.dat", ""},
        {"empty.dat", "The input file empty.dat has a zero size"},
        {"broken_record.dat", "has a wrong structure within record #  250"},
        {"only_31.dat", "has too few (less than 32) samples:  31"},
        {"constant_column.dat", "presents a constant"}, {"one_sample.dat", "presents a constant"}};
    for (const auto& [name, piece] : told) {
        SCOPED_TRACE(name);
        open(name);
        EXPECT_TRUE(message().contains(piece)) << text(message());
        EXPECT_EQ(message().isEmpty(), *piece == '\0');
        expectStage(ui(), *piece ? Stage::Rejected : Stage::Loaded);
        EXPECT_EQ(onScreen(), Names{"Form1"});
        if (!*piece) ui().OtherFileButton->click();
    }
    // A constant first column is refused, and its table is split for the user
    // to look at the other columns.
    EXPECT_EQ(written(), (Names{"constant_column-Col1.dat", "constant_column-Col2.dat",
                                "constant_column-Col3.dat", "one_sample-Col1.dat",
                                "one_sample-Col2.dat"}));
}

TEST_F(Road, FilesOfTheProgramsOwnMakingAreNewInputs) {
    start();
    openInData("random_walk.dat");
    ASSERT_EQ(message(), "");
    ui().IncremButton->click();
    ASSERT_TRUE(written().count("random_walk-INC.dat"));
    // The increments of a random walk are white noise: a flat spectrum whose
    // level is the noise's unit variance over the band of half a cycle.
    ui().OtherFileButton->click();
    open("random_walk-INC.dat");
    ASSERT_EQ(message(), "");
    EXPECT_EQ(form().Nrec, 10000);
    ui().LaunchButton->click();
    ui().SaveSpButton->click();
    for (const std::string& name : written()) {
        const auto rows = readTable(data / name);
        double sum = 0;
        for (const auto& r : rows) sum += r[2];
        EXPECT_NEAR(sum / rows.size(), 2.0, 0.3) << name << ": density 2σ² of unit noise";
    }
    // A table split into its columns gives inputs of their own; the third
    // column of the example is the ramp t/1000.
    ui().OtherFileButton->click();
    open("three_columns.dat");
    ui().DemplxButton->click();
    EXPECT_FALSE(ui().DemplxButton->isEnabled());
    EXPECT_EQ(written(), (Names{"three_columns-Col1.dat", "three_columns-Col2.dat",
                                "three_columns-Col3.dat"}));
    ui().OtherFileButton->click();
    open("three_columns-Col3.dat");
    ASSERT_EQ(message(), "");
    EXPECT_EQ(form().Nrec, 1000);
    const auto rows = readTable(data / "three_columns-Col3.dat");
    ASSERT_EQ(rows.size(), 1000u);
    EXPECT_NEAR(rows[999][0] - rows[0][0], 0.999, 1e-4);
}
