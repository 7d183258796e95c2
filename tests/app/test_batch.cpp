// The batch tool against the windows: for every action the files the user's
// clicks write and the files `tarnic` writes are the same, name for name and
// byte for byte; bad input and bad usage end with the right status and write
// nothing; pictures of each kind are valid.
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "tests/core/mainwindow_fixture.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavespectraform.h"

#include <QtWidgets>

#include <functional>
#include <map>
#include <set>

using namespace tarnic;
using namespace tarnic::test;

namespace {

// Every file below `root` but the inputs, by path relative to it, with its bytes.
std::map<std::string, std::string> results(const fs::path& root,
                                           const std::set<std::string>& inputs = {}) {
    std::map<std::string, std::string> files;
    for (const auto& e : fs::recursive_directory_iterator(root)) {
        const std::string rel = fs::relative(e.path(), root).string();
        if ((e.is_regular_file() || e.is_symlink()) && !inputs.count(rel))
            files[rel] = readBytes(e.path());
    }
    return files;
}

struct ToolRun { int status; std::string out, err; };

ToolRun tarnicTool(const QStringList& args, const fs::path& workDir) {
    QProcess p;
    p.setWorkingDirectory(QString::fromStdString(workDir.string()));
    // The tool needs no display: it runs without QT_QPA_PLATFORM and DISPLAY.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY"}) env.remove(name);
    p.setProcessEnvironment(env);
    p.start(TARNIC_BATCH_PATH, args);
    p.waitForFinished(120000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            p.readAllStandardOutput().toStdString(), p.readAllStandardError().toStdString()};
}

// The window's clicks for one action; they add to `readOff` the tool's options
// that ask for what the clicks chose.
using Clicks = std::function<void(Workbench&, QStringList& readOff)>;

// Drags the signal window's cursors as a user does, opens the fragment (whose
// ends become the tool's --from and --to; dT 1, T0 0) and goes on in its window.
Clicks onFragment(std::function<void(SignalZoomForm&)> then) {
    return [=](Workbench& wb, QStringList& readOff) {
        wb.form1().ShowSignGrafButton_Click();
        wb.signalPlot().ui().HScroll_Right->setValue(21000);
        wb.signalPlot().ui().HScroll_Left->setValue(7000);
        wb.signalPlot().ZoomButton_Click();
        SignalZoomForm& zoom = wb.signalZoomForm();
        readOff << "--from" << QString::number(zoom.FragFirstSample - 1) << "--to"
                << QString::number(zoom.FragLastSample - 1);
        then(zoom);
    };
}

// Types into the main window's boxes, then presses its buttons in turn.
using C = Form1Controls;
using F = Form1;
Clicks typeAndPress(std::vector<std::pair<TextBox* C::*, QString>> boxes,
                    std::vector<void (F::*)()> presses) {
    return [=](Workbench& wb, QStringList&) {
        for (const auto& [box, text] : boxes) (wb.form1().ui().*box)->setText(text);
        for (auto press : presses) (wb.form1().*press)();
    };
}
const std::vector<void (F::*)()> kSpectra = {&F::LaunchButton_Click, &F::SaveSpButton_Click};

// The example, the action and options given to both, the clicks.
struct Case { const char* file; QStringList tool; Clicks clicks; };

const Case kCases[] = {
    {"ar2_peak.dat", {"spectra", "--order", "30", "--radius", "2"},
     typeAndPress({{&C::AR_OrderText, "30"}, {&C::RadiusText, "2"}}, kSpectra)},
    // The red-noise overlays: the same companion files.
    {"ar2_peak.dat", {"spectra", "--significance", "0.99", "--background"},
     [](Workbench& wb, QStringList& readOff) {
         wb.form1().ShowRedNoiseBackground = wb.form1().ShowSignificanceLevel = true;
         wb.form1().SignificanceProbability = 0.99;
         typeAndPress({}, kSpectra)(wb, readOff);
     }},
    {"ar2_peak.dat", {"increments", "--dt", "0.5", "--t0", "1990"},
     typeAndPress({{&C::DeltaT_Text, "0.5"}, {&C::Time0_Text, "1990"}}, {&F::IncremButton_Click})},
    {"ar2_peak.dat", {"winsorize"}, typeAndPress({}, {&F::WinzorButton_Click})},
    // 4.0 with a length that 4 does not divide: the Fourier path, the step in
    // the name as typed.
    {"two_sines_trend.dat", {"downsample", "--step", "4.0", "--dt", "2"},
     typeAndPress({{&C::DeltaT_Text, "2"}, {&C::DownStepText, "4.0"}}, {&F::DownSampButton_Click})},
    {"two_sines_trend.dat", {"downsample", "--step", "3"},
     typeAndPress({{&C::DownStepText, "3"}}, {&F::DownSampButton_Click})},
    {"three_columns.dat", {"demultiplex"}, typeAndPress({}, {&F::DemplxButton_Click})},
    {"two_sines_trend.dat", {"trend", "--radius", "40", "--poly-order", "2"},
     [](Workbench& wb, QStringList&) {
         wb.form1().ShowSignGrafButton_Click();
         SignalPlot& plot = wb.signalPlot();
         plot.ui().LocPolynomOption->setValue(true);
         typeIn({{plot.ui().TrendPolynomOrder, "2"}, {plot.ui().SmoothRad, "40"}});
         plot.ReDrawButton_Click();
         plot.SaveTrendButton_Click();
     }},
    {"two_sines_trend.dat", {"fragment"},
     onFragment([](SignalZoomForm& zoom) { zoom.SaveFragButton_Click(); })},
    {"two_sines_trend.dat", {"harmonic"}, onFragment([](SignalZoomForm& zoom) {
         zoom.FindHarm_Click();
         zoom.TimeSeriesZoom_DblClick();
     })},
    {"two_sines_trend.dat", {"bandpass"},
     [](Workbench& wb, QStringList& readOff) {
         wb.form1().LaunchButton_Click();
         wb.form1().ui().HScroll_Right->setValue(20000);
         wb.form1().ui().HScroll_Left->setValue(9000);
         wb.form1().ZoomButton_Click();
         wb.spectraZoomForm().BandPassButton_Click();
         BandPassForm& band = wb.bandPassForm();
         band.BandPassSaveButton_Click();
         readOff << "--tmin" << QString::number(band.BpfTmin, 'g', 9) << "--tmax"
                 << QString::number(band.BpfTmax, 'g', 9);
     }},
    {"two_sines_trend.dat", {"wavepack", "--level", "5", "--split", "2"},
     [](Workbench& wb, QStringList&) {
         wb.form1().ui().LevMaxText->setText("5");
         wb.form1().ui().Option2->setValue(true);
         wb.form1().WavePackButton_Click();
         WaveDecForm& dec = wb.waveDecForm();
         for (dec.SelectedComponent = 1; dec.SelectedComponent <= dec.ComponentCount;
              ++dec.SelectedComponent)
             dec.WaveDecGraf_DblClick();
         wb.waveSpectForm().SaveSpButton_Click();
     }},
    {"two_sines_trend.dat",
     {"wavefilt", "--wavelet", "sym", "--wavelet-order", "10", "--threshold", "0.5"},
     [](Workbench& wb, QStringList&) {
         wb.form1().WaveFiltButton_Click();
         WaveFiltForm& filt = wb.waveFiltForm();
         filt.ui().SymletOption->setValue(true);
         filt.ui().SymOrder->setText("10");
         filt.LaunchDonoho_Click();
         filt.ui().ThreshLevel->setText("0.5");
         filt.LaunchThreshButton_Click();
         filt.SaveThreshButton_Click();
     }},
    {"ar2_peak.dat", {"svanar", "--length", "512", "--shift", "64", "--order", "20"},
     [](Workbench& wb, QStringList&) {
         wb.form1().SvanArButton_Click();
         SvanArForm& svan = wb.svanArForm();
         typeIn({{svan.ui().LengWinText, "512"}, {svan.ui().ShiftText, "64"},
                 {svan.ui().ArOrderText, "20"}});
         svan.LaunchSvan_Click();
         svan.SaveGRD_Click();
     }},
    {"two_sines_trend.dat", {"morlet"}, onFragment([](SignalZoomForm& zoom) {
         zoom.MorletSvan_Click();
         zoom.workbench().morletSvanForm().SaveGRD_Click();
     })},
    {"two_sines_trend.dat", {"morlet", "--significance", "0.95", "--cone"},
     onFragment([](SignalZoomForm& zoom) {
         MorletSvanForm& map = zoom.workbench().morletSvanForm();
         map.ShowConeOfInfluence = map.ShowSignificanceContour = true;
         zoom.MorletSvan_Click();
         map.SaveGRD_Click();
     })},
    {"two_sines_trend.dat", {"heisbox", "--level", "6", "--split", "2"},
     onFragment([](SignalZoomForm& zoom) {
         zoom.HeisBoxesButton_Click();
         HeisBoxForm& heis = zoom.workbench().heisBoxForm();
         heis.ui().LevMaxText->setText("6");
         heis.ui().Option2->setValue(true);
         heis.WavePackButton_Click();
         heis.SaveGRD_Click();
     })},
    {"random_walk.dat", {"mfdfa", "--detrend-order", "2"}, onFragment([](SignalZoomForm& zoom) {
         zoom.MFDFA_button_Click();
         MFDFA_form& mfdfa = zoom.workbench().mfdfaForm();
         mfdfa.ui().Text1->setText("2");
         mfdfa.LaunchMFDFA_btn_Click();
         mfdfa.SaveFalfa_button_Click();
     })},
};

// A copy of one example in the folder `d`, made if need be; gives `d`.
fs::path copyInto(const fs::path& d, const std::string& example, const std::string& name) {
    fs::create_directories(d);
    fs::copy_file(fs::path(TARNIC_EXAMPLES_DIR) / example, d / name,
                  fs::copy_options::overwrite_existing);
    return d;
}

class BatchTool : public MainWindow {};

class BatchCase : public BatchTool, public ::testing::WithParamInterface<Case> {};

TEST_P(BatchCase, WritesTheFilesOfTheWindowsByteForByte) {
    const Case& c = GetParam();
    // A non-ASCII name in a folder with a blank, as real data have.
    const std::string name = std::string("Süd ") + c.file;
    const fs::path byHand = copyInto(dir / "by hand", c.file, name);
    const fs::path byTool = copyInto(dir / "by tool", c.file, name);
    startBrowsing(byHand);
    open(name);
    ASSERT_GT(form().Nrec, 0);
    QStringList args = QStringList(c.tool) << QString::fromStdString(name);
    c.clicks(*wb, args);
    EXPECT_TRUE(messages.empty()) << messages.front().toStdString();
    const ToolRun run = tarnicTool(args, byTool);
    EXPECT_EQ(run.status, 0) << run.err;
    const auto expected = results(byHand, {name}), got = results(byTool, {name});
    ASSERT_FALSE(expected.empty());
    // The same names with the same bytes; stdout names each file by its full path.
    std::set<std::string> differ, listed, lines;
    for (const auto& [rel, bytes] : got) {
        if (!expected.count(rel) || expected.at(rel) != bytes) differ.insert(rel);
        listed.insert((byTool / rel).string());
    }
    for (const auto& [rel, bytes] : expected) if (!got.count(rel)) differ.insert(rel);
    EXPECT_EQ(differ, std::set<std::string>{}) << run.err;
    std::istringstream out(run.out);
    for (std::string line; std::getline(out, line);) lines.insert(line);
    EXPECT_EQ(lines, listed);
}

INSTANTIATE_TEST_SUITE_P(EveryAction, BatchCase, ::testing::ValuesIn(kCases),
                         [](const auto& info) {
                             return info.param.tool[0].toStdString() + std::to_string(info.index);
                         });

TEST_F(BatchTool, RefusedRunsEndWithTheirStatusAndWriteNothingRepairedOnesAreSaidAndGoOn) {
    const fs::path d = copyInto(dir / "bad", "broken_record.dat", "broken_record.dat");
    copyInto(dir / "bad", "two_sines_trend.dat", "good.dat");
    copyInto(dir / "bad", "ar2_peak.dat", "ar2_peak.dat");
    const std::set<std::string> inputs = {"broken_record.dat", "good.dat", "ar2_peak.dat"};
    // `said` is a piece of the message on stderr, `out` one of stdout; a refused
    // run prints nothing.
    const struct { QStringList args; int status; const char* said; std::string out; } cases[] = {
        {{"spectra", "missing.dat"}, 1, "missing.dat: no such file", ""},
        {{"spectra", "broken_record.dat"}, 1, "broken_record.dat: ", ""}, // the intake's message
        {{"bandpass", "good.dat", "--tmin", "1e6", "--tmax", "2e6"}, 1, "too short", ""},
        {{"spectra", "good.dat", "--level", "3"}, 2, "no option --level", ""},
        {{"spectra", "good.dat", "--order"}, 2, "needs a value", ""},
        {{"spectra", "good.dat", "--background=1"}, 2, "option --background takes no value", ""},
        {{"spectra", "good.dat", "--cone"}, 2, "--cone", ""}, // the cone is the Morlet map's
        {{"transform", "good.dat"}, 2, "unknown action", ""},
        {{"spectra"}, 2, "no file", ""},
        {{"morlet", "good.dat", "--picture", "map.jpg"}, 2, ".png, .svg or .pdf", ""},
        {{"spectra", "--help"}, 0, "", "--fourier-window"},
        // A repaired value is said and the run goes on, here into --out with
        // NUL-terminated paths.
        {{"spectra", "good.dat", "--order", "900", "--out", "o", "--null"}, 0,
         "good.dat: order 900 repaired to 683\n",
         (d / "o/SpectEstimates/Sp_AR(good) AR= 683,Leng= 2048.dat").string() + '\0'},
        {{"spectra", "ar2_peak.dat", "--significance", "0.9"}, 0,
         "ar2_peak.dat: significance 0.9 repaired to 0.95\n",
         "SpectEstimates/Sp_Four(ar2_peak) MM= 1,Leng= 2048,Level= 95.dat\n"},
    };
    for (const auto& b : cases) {
        SCOPED_TRACE(b.args.join(' ').toStdString());
        const auto before = results(d, inputs);
        const ToolRun run = tarnicTool(b.args, d);
        EXPECT_EQ(run.status, b.status) << run.err;
        EXPECT_NE(run.err.find(b.said), std::string::npos) << run.err;
        EXPECT_NE(run.out.find(b.out), std::string::npos) << run.out;
        if (b.status == 0) continue;
        EXPECT_TRUE(run.out.empty()) << run.out;
        EXPECT_TRUE(results(d, inputs) == before) << "a refused run writes no file";
    }
}

TEST_F(BatchTool, PicturesOfEachKindAreValidAndMapsKeepTheirColours) {
    const fs::path d = copyInto(dir / "pictures", "two_sines_trend.dat", "s.dat");
    const std::pair<const char*, const char*> pictures[] = {
        {"morlet", "map.png"}, {"spectra", "spectra.pdf"}, {"spectra", "spectra.svg"}};
    for (const auto& [action, name] : pictures) {
        const ToolRun run = tarnicTool({action, "s.dat", "--picture", name}, d);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find((d / name).string()), std::string::npos) << name;
    }
    const QImage image(QString::fromStdString((d / "map.png").string()));
    EXPECT_GE(image.width(), 1200) << "twice the window's resolution";
    std::set<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3)
        for (int x = 0; x < image.width(); x += 3) colours.insert(image.pixel(x, y));
    EXPECT_GE(colours.size(), 8u) << "a map picture shows its colour scale";
    const std::string pdf = readBytes(d / "spectra.pdf");
    EXPECT_TRUE(pdf.rfind("%PDF-", 0) == 0 && pdf.find("%%EOF") != std::string::npos);
    QXmlStreamReader xml(QByteArray::fromStdString(readBytes(d / "spectra.svg")));
    int curves = 0;
    while (!xml.atEnd())
        curves += xml.readNext() == QXmlStreamReader::StartElement &&
                  (xml.name() == u"polyline" || xml.name() == u"path");
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_GE(curves, 2) << "the curves stay vectors";
}

TEST_F(BatchTool, AFileDroppedOnTheMainWindowOpensAsADoubleClick) {
    const fs::path d = copyInto(dir / "dropped here", "ar2_peak.dat", "a.dat");
    copyInto(dir / "dropped here", "two_sines_trend.dat", "b.dat");
    startBrowsing(dir.path());
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString((d / "b.dat").string())),
                  QUrl::fromLocalFile(QString::fromStdString((d / "a.dat").string()))});
    // A drop goes to the window that accepted the drag entering it.
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&form().window(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&form().window(), &drop);
    EXPECT_EQ(form().Nrec, 5000) << "the first of the dropped files is open";
    EXPECT_EQ(ui().Dir1->Path().toStdString(), d.string());
    EXPECT_EQ(ui().File1->FileName(), "b.dat");
    EXPECT_EQ(messages,
              std::vector<QString>{"2 files were dropped; only the first is opened:\r\nb.dat"});
}

} // namespace
