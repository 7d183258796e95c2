#include "app/batch.h"

#include "app/steps.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/picture.h"
#include "core/workbench.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "numeric/demultiplex.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "signal/trendlogic.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavespectraform.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#ifndef TARNIC_VERSION
#define TARNIC_VERSION "unknown"
#endif

namespace tarnic {
namespace {

namespace fs = std::filesystem;

struct OptionSpec {
    const char* name;    // without the leading "--"
    const char* meaning; // what it sets, for --help
    const char* fallback; // the window's default, for --help
};

// Options every action takes: the main window's time axis.
const std::vector<OptionSpec> kTimeOptions = {
    {"dt", "sampling time interval dT (main window)", "1"},
    {"t0", "initial value of time marks (main window)", "0"},
};

// The spectrum run's boxes of the main window.
const std::vector<OptionSpec> kSpectrumOptions = {
    {"order", "AR order", "10, or as the intake sets it from the file's length"},
    {"window", "length of the AR-estimate window", "the file's length, at most 2048"},
    {"fourier-window", "length of the moving window of the Fourier estimate",
     "the file's length, at most 2048"},
    {"radius", "radius of frequency averaging of the Fourier estimate", "1"},
};

// The picture of the main window's spectra view: its axis choices.
const std::vector<OptionSpec> kSpectraViewOptions = {
    {"log-x", "logarithmic x axis: 1 or 0", "1"},
    {"log-y", "logarithmic y axis: 1 or 0", "1"},
    {"freq", "frequency (1) or period (0) on the x axis", "0"},
};

// The red-noise overlays: drawn in --picture, their companion files written
// beside the window's own.
const std::vector<OptionSpec> kSpectraOverlayOptions = {
    {"significance", "red-noise significance level P of the Fourier estimate: 0.95 or 0.99",
     "none"},
    {"background", "red-noise background of the Burg estimate (takes no value)", "off"},
};
const std::vector<OptionSpec> kMorletOverlayOptions = {
    {"significance", "local significance contour and wavelet spectrum level P: 0.95", "none"},
    {"cone", "cone of influence: shading, edge and its file (takes no value)", "off"},
};

// The options that take no value: given means on.
bool isFlag(const QString& name) { return name == "background" || name == "cone"; }

// A fragment of the signal window, optionally of the residual of a trend.
const std::vector<OptionSpec> kFragmentOptions = {
    {"from", "time of the fragment's first sample", "the signal's first"},
    {"to", "time of the fragment's last sample", "the signal's last"},
    {"radius", "trend radius; the fragment is then taken from the residual", "0 (no trend)"},
    {"poly-order", "local polynomial order of the trend (else kernel smoothing)", "kernel"},
};

const std::vector<OptionSpec> kWaveletOptions = {
    {"wavelet", "daub or sym", "the wavelet of least entropy"},
    {"wavelet-order", "number of coefficients of the wavelet", "that of the least entropy"},
};

const std::vector<OptionSpec> kPacketOptions = {
    {"level", "maximum detail level", "2 (main window), the level the length allows (map)"},
    {"split", "packet split: 1, 2, 4 or 8", "4 (main window), 2 (map)"},
};

class Run;
using Steps = std::function<void(Run&)>;

struct Action {
    const char* name;
    const char* summary;
    std::vector<std::vector<OptionSpec>> options;
    Steps steps;
};

std::string oneLine(QString text) {
    text.replace("\r\n", " ").replace('\n', ' ').replace('\r', ' ');
    return text.simplified().toStdString();
}

std::string trimmed(const std::string& number) { return QString::fromStdString(number).trimmed().toStdString(); }

// One run of an action on one file: the workbench, the options given, and
// what the run wrote and said.
class Run {
  public:
    Run(Workbench& workbench, std::map<std::string, QString> options, QString fileLabel,
        std::FILE* err)
        : wb(workbench), options_(std::move(options)), fileLabel_(std::move(fileLabel)), err_(err) {}

    Workbench& wb;
    Form* front = nullptr; // the window the picture shows (the main window unless set)
    bool refused = false;  // a window said no (a message box)
    std::vector<std::string> extraFiles; // written by the library rather than OutputFile

    bool has(const char* name) const { return options_.count(name) > 0; }
    QString value(const char* name) const { return options_.at(name); }
    double number(const char* name) const { return TextNum(value(name).toStdString()); }

    // Types the option's value into the box, if the option was given, and
    // remembers it so that a repair the window makes is reported.
    void type(TextBox* box, const char* name) {
        if (!has(name)) return;
        box->setText(value(name));
        typed_.push_back({QPointer<TextBox>(box), name, value(name)});
    }

    // Reports every typed value that its window has since shown otherwise.
    void reportRepairs() {
        for (const Typed& t : typed_) {
            if (!t.box) continue;
            const QString now = t.box->Text();
            const double given = TextNum(t.text.toStdString());
            if (now.trimmed() == t.text.trimmed() || TextNum(now.toStdString()) == given) continue;
            say(QString::fromStdString(t.name) + " " + t.text.trimmed() + " repaired to " + now.trimmed());
        }
        typed_.clear();
    }

    // The probability of --significance: the nearest of `levels`, reported
    // when it is not the value given.
    double level(std::initializer_list<double> levels) {
        const double given = number("significance");
        double best = *levels.begin();
        for (double p : levels)
            if (std::abs(p - given) < std::abs(best - given)) best = p;
        if (best != given)
            say("significance " + value("significance").trimmed() + " repaired to " +
                QString::number(best));
        return best;
    }

    void say(const QString& message) {
        std::fprintf(err_, "%s: %s\n", fileLabel_.toLocal8Bit().constData(), oneLine(message).c_str());
    }

  private:
    struct Typed {
        QPointer<TextBox> box;
        std::string name;
        QString text;
    };
    std::map<std::string, QString> options_;
    QString fileLabel_;
    std::FILE* err_;
    std::vector<Typed> typed_;
};

// ---- the steps shared by several actions ----

void typeSpectrumBoxes(Run& run) {
    Form1Controls& c = run.wb.form1().ui();
    run.type(c.AR_OrderText, "order");
    run.type(c.AR_Length_Text, "window");
    run.type(c.TimeLengText, "fourier-window");
    run.type(c.RadiusText, "radius");
    if (run.has("log-x")) c.LogX_Check->setValue(run.number("log-x") != 0 ? 1 : 0);
    if (run.has("log-y")) c.LogY_Check->setValue(run.number("log-y") != 0 ? 1 : 0);
    if (run.has("freq")) c.FreqCheck->setValue(run.number("freq") != 0 ? 1 : 0);
}

void launchSpectra(Run& run) {
    typeSpectrumBoxes(run);
    run.wb.form1().LaunchButton_Click();
    run.reportRepairs();
    run.front = &run.wb.form1();
}

// Opens the signal window and, with a radius given, computes the trend.
void openSignal(Run& run) {
    Form1& main = run.wb.form1();
    main.ShowSignGrafButton_Click();
    SignalPlot& plot = run.wb.signalPlot();
    run.front = &plot;
    if (!run.has("radius") && !run.has("poly-order")) return;
    SignalPlotControls& c = plot.ui();
    if (run.has("poly-order")) {
        c.LocPolynomOption->setValue(true);
        run.type(c.TrendPolynomOrder, "poly-order");
    }
    run.type(c.SmoothRad, "radius");
    plot.ReDrawButton_Click();
    run.reportRepairs();
}

// The sample (1-based, within 1..n) nearest to `time`.
std::int32_t sampleAt(double time, double t0, double dT, std::int32_t n) {
    const double k = dT != 0 ? std::round((time - t0) / dT) + 1 : 1;
    return static_cast<std::int32_t>(std::clamp(k, 1.0, static_cast<double>(n)));
}

// A scroll-bar value whose cursor lies at or before (left) or at or after
// (right) the position x of a surface `width` wide.
int barValueFor(double x, double width, const ScrollBar& bar, bool left) {
    const double range = bar.Max() - bar.Min();
    const double v = x * range / width;
    const double rounded = left ? std::floor(v + 1e-9) : std::ceil(v - 1e-9);
    return static_cast<int>(std::clamp(rounded + bar.Min(), double(bar.Min()), double(bar.Max())));
}

// Sets the signal window's cursors on the samples of --from and --to, as the
// user drags them, and opens the fragment window.
void openFragment(Run& run) {
    openSignal(run);
    SignalPlot& plot = run.wb.signalPlot();
    SignalPlotControls& c = plot.ui();
    const Form1Controls& main = run.wb.form1().ui();
    const double dT = boxNumber(main.DeltaT_Text), t0 = TimeOrigin(main.Time0_Text);
    const std::int32_t n = plot.SignalLength;
    const std::int32_t first = run.has("from") ? sampleAt(run.number("from"), t0, dT, n) : 1;
    const std::int32_t last = run.has("to") ? sampleAt(run.number("to"), t0, dT, n) : n;
    const double W = c.TimeSeriesGraf->ScaleWidth();
    auto x = [&](std::int32_t i) { return n > 1 ? W * (i - 1) / (n - 1) : 0.0; };
    c.HScroll_Right->setValue(barValueFor(x(last), W, *c.HScroll_Right, false));
    c.HScroll_Left->setValue(barValueFor(x(first), W, *c.HScroll_Left, true));
    const std::vector<std::int32_t> rows =
        SamplesBetweenCursors(n, W, c.HScroll_Left->Value(), c.HScroll_Right->Value(),
                              c.HScroll_Left->Min(), c.HScroll_Left->Max());
    if (!rows.empty() && (rows.front() != first || rows.back() != last))
        run.say("fragment " + qs(trimmed(NumText(t0 + (first - 1) * dT))) + " to " +
                qs(trimmed(NumText(t0 + (last - 1) * dT))) + " taken as " +
                qs(trimmed(NumText(t0 + (rows.front() - 1) * dT))) + " to " +
                qs(trimmed(NumText(t0 + (rows.back() - 1) * dT))) +
                " (the positions the cursors can take)");
    plot.ZoomButton_Click();
    run.front = &run.wb.signalZoomForm();
}

void chooseWavelet(Run& run, OptionButton& daub, OptionButton& sym, TextBox& daubOrder,
                   TextBox& symOrder) {
    if (run.has("wavelet")) {
        const QString family = run.value("wavelet").toLower();
        if (family.startsWith("sym"))
            sym.setValue(true);
        else
            daub.setValue(true);
    }
    if (run.has("wavelet-order")) run.type(sym.Value() ? &symOrder : &daubOrder, "wavelet-order");
}

void chooseSplit(Run& run, TextBox* level, std::initializer_list<OptionButton*> options) {
    run.type(level, "level");
    if (!run.has("split")) return;
    const int split = static_cast<int>(run.number("split"));
    const int index = split <= 1 ? 0 : split <= 2 ? 1 : split <= 4 ? 2 : 3;
    if ((1 << index) != split) run.say("split " + run.value("split") + " repaired to " + QString::number(1 << index));
    (*(options.begin() + index))->setValue(true);
}

// The band of periods [--tmin, --tmax] (time units) between the main window's
// spectrum cursors; then the spectra zoom and the band-pass window.
void bandPass(Run& run) {
    launchSpectra(run);
    Form1& main = run.wb.form1();
    Form1Controls& c = main.ui();
    const double W = c.Picture1->ScaleWidth();
    const double pmin = run.has("tmin") ? run.number("tmin") : 0;
    const double pmax = run.has("tmax") ? run.number("tmax") : 1e300;
    double xIn0 = 1e300, xIn1 = -1e300;
    for (int i = 2; i <= main.NfAR - 1; ++i) {
        // The ends are the spectrum's own periods when the user took them from
        // a file or a tip: they count as inside to a relative 1e-5.
        const double period = 1 / static_cast<double>(main.FreqAR(i));
        if (period < pmin * (1 - 1e-5) || period > pmax * (1 + 1e-5)) continue;
        const double x = W * (main.PlotX(i) - main.PlotXMin) / main.PlotXRange;
        xIn0 = std::min(xIn0, x), xIn1 = std::max(xIn1, x);
    }
    if (xIn0 > xIn1) xIn0 = xIn1 = 0; // no period of the spectrum in the band
    c.HScroll_Right->setValue(barValueFor(xIn1, W, *c.HScroll_Right, false));
    c.HScroll_Left->setValue(barValueFor(xIn0, W, *c.HScroll_Left, true));
    main.ZoomButton_Click();
    if (run.refused) return;
    run.wb.spectraZoomForm().BandPassButton_Click();
    BandPassForm& band = run.wb.bandPassForm();
    const double dT = main.DeltaT;
    const double taken0 = static_cast<float>(band.BpfTmin * dT);
    const double taken1 = static_cast<float>(band.BpfTmax * dT);
    auto moved = [](double given, double taken) { return std::abs(taken - given) > 1e-5 * std::abs(given); };
    if ((run.has("tmin") && moved(pmin, taken0)) || (run.has("tmax") && moved(pmax, taken1)))
        run.say("band of periods " + (run.has("tmin") ? run.value("tmin").trimmed() : QString("any")) +
                " to " + (run.has("tmax") ? run.value("tmax").trimmed() : QString("any")) +
                " taken as " + qs(trimmed(NumText(static_cast<float>(taken0)))) + " to " +
                qs(trimmed(NumText(static_cast<float>(taken1)))) + " (the periods of the spectrum)");
    band.BandPassSaveButton_Click();
    run.front = &band;
}

// ---- the actions ----

const std::vector<Action>& actions() {
    static const std::vector<Action> list = {
        {"spectra", "Burg and Fourier spectra, as Save Spectra writes them",
         {kSpectrumOptions, kSpectraViewOptions, kSpectraOverlayOptions},
         [](Run& run) {
             Form1& main = run.wb.form1();
             main.ShowRedNoiseBackground = run.has("background");
             main.ShowSignificanceLevel = run.has("significance");
             if (run.has("significance")) main.SignificanceProbability = run.level({0.95, 0.99});
             launchSpectra(run);
             if (!main.RedNoiseNote.isEmpty()) run.say(main.RedNoiseNote);
             main.SaveSpButton_Click();
         }},
        {"increments", "the series of increments", {},
         [](Run& run) { run.wb.form1().IncremButton_Click(); }},
        {"winsorize", "the winsorized series", {},
         [](Run& run) { run.wb.form1().WinzorButton_Click(); }},
        {"downsample", "block means (a whole step) or Fourier resampling (a step with a point)",
         {{{"step", "downsampling step", "2"}}},
         [](Run& run) {
             run.type(run.wb.form1().ui().DownStepText, "step");
             run.wb.form1().DownSampButton_Click();
         }},
        {"demultiplex", "one file per column of a table", {},
         [](Run& run) {
             Form1& main = run.wb.form1();
             const auto start = fs::file_time_type::clock::now() - std::chrono::seconds(2);
             main.DemplxButton_Click();
             const fs::path input = main.InFilePath.toStdString();
             for (int k = 1; k <= kMaxDemultiplexColumns; ++k) {
                 const fs::path column = columnFileName(input, k);
                 std::error_code ec;
                 if (!fs::exists(column, ec)) break;
                 if (fs::last_write_time(column, ec) >= start) run.extraFiles.push_back(column.string());
             }
         }},
        {"trend", "trend and residual of the signal window",
         {{{"radius", "smoothing radius", "0 (no trend)"},
           {"poly-order", "local polynomial order (else kernel smoothing)", "kernel"}}},
         [](Run& run) {
             openSignal(run);
             run.wb.signalPlot().SaveTrendButton_Click();
         }},
        {"fragment", "a fragment of the signal or of the residual of its trend", {kFragmentOptions},
         [](Run& run) {
             openFragment(run);
             run.wb.signalZoomForm().SaveFragButton_Click();
         }},
        {"harmonic", "the best-fit harmonic of a fragment", {kFragmentOptions},
         [](Run& run) {
             openFragment(run);
             SignalZoomForm& zoom = run.wb.signalZoomForm();
             zoom.FindHarm_Click();
             zoom.TimeSeriesZoom_DblClick();
         }},
        {"bandpass", "the signal filtered to a band of periods of its spectrum",
         {{{"tmin", "shortest period of the band (time units)", "the shortest of the spectrum"},
           {"tmax", "longest period of the band (time units)", "the longest of the spectrum"}},
          kSpectrumOptions,
          kSpectraViewOptions},
         bandPass},
        {"wavepack", "wavelet-packet components and packet spectra",
         {kPacketOptions, {{"component", "save only component K (1-based)", "all components"}}},
         [](Run& run) {
             Form1& main = run.wb.form1();
             Form1Controls& c = main.ui();
             chooseSplit(run, c.LevMaxText, {c.Option1, c.Option2, c.Option3, c.Option4});
             main.WavePackButton_Click();
             run.reportRepairs();
             if (run.refused) return;
             WaveDecForm& dec = run.wb.waveDecForm();
             run.front = &dec;
             const int only = run.has("component") ? static_cast<int>(run.number("component")) : 0;
             for (int k = 1; k <= dec.ComponentCount; ++k) {
                 if (only != 0 && k != only) continue;
                 dec.SelectedComponent = k;
                 dec.WaveDecGraf_DblClick();
             }
             run.wb.waveSpectForm().SaveSpButton_Click();
         }},
        {"wavefilt", "wavelet threshold filtering: the filtered signal and its residual",
         {kWaveletOptions,
          {{"threshold", "thresholding level", "the Donoho-Johnstone level"}}},
         [](Run& run) {
             run.wb.form1().WaveFiltButton_Click();
             WaveFiltForm& filt = run.wb.waveFiltForm();
             WaveFiltFormControls& c = filt.ui();
             run.front = &filt;
             chooseWavelet(run, *c.DaubOption, *c.SymletOption, *c.DaubOrder, *c.SymOrder);
             filt.LaunchDonoho_Click();
             run.type(c.ThreshLevel, "threshold");
             filt.LaunchThreshButton_Click();
             run.reportRepairs();
             filt.SaveThreshButton_Click();
         }},
        {"svanar", "the AR spectra evolution map (grid file)",
         {{{"length", "length of the moving window", "the window's, from the file's length"},
           {"shift", "shift of the moving window", "the window's, from the file's length"},
           {"order", "AR order", "the window's, from the file's length"}}},
         [](Run& run) {
             run.wb.form1().SvanArButton_Click();
             SvanArForm& svan = run.wb.svanArForm();
             run.front = &svan;
             run.type(svan.ui().LengWinText, "length");
             run.type(svan.ui().ShiftText, "shift");
             run.type(svan.ui().ArOrderText, "order");
             svan.LaunchSvan_Click();
             run.reportRepairs();
             if (!run.refused) svan.SaveGRD_Click();
         }},
        {"morlet", "the Morlet wavelet map of a fragment (grid file and wavelet spectrum)",
         {kFragmentOptions, kMorletOverlayOptions},
         [](Run& run) {
             MorletSvanForm& form = run.wb.morletSvanForm();
             form.ShowConeOfInfluence = run.has("cone");
             form.ShowSignificanceContour = run.has("significance");
             if (run.has("significance")) run.level({MorletSvanForm::kContourProbability});
             openFragment(run);
             run.wb.signalZoomForm().MorletSvan_Click();
             run.front = &form;
             if (run.refused) return;
             if (!form.RedNoiseNote.isEmpty()) run.say(form.RedNoiseNote);
             form.SaveGRD_Click();
         }},
        {"heisbox", "the Heisenberg boxes map of a fragment (grid file)",
         {kFragmentOptions, kPacketOptions, kWaveletOptions},
         [](Run& run) {
             openFragment(run);
             run.wb.signalZoomForm().HeisBoxesButton_Click();
             HeisBoxForm& heis = run.wb.heisBoxForm();
             HeisBoxFormControls& c = heis.ui();
             run.front = &heis;
             chooseWavelet(run, *c.DaubOption, *c.SymletOption, *c.DaubOrder, *c.SymOrder);
             chooseSplit(run, c.LevMaxText, {c.Option1, c.Option2, c.Option3, c.Option4});
             heis.WavePackButton_Click();
             run.reportRepairs();
             if (!run.refused) heis.SaveGRD_Click();
         }},
        {"mfdfa", "the multifractal DFA singularity spectrum of a fragment",
         {kFragmentOptions,
          {{"detrend-order", "detrending polynomial order", "4"},
           {"measure", "variability measure: 0 (max-min) or 1 (std. dev.)", "0"},
           {"min-scale", "minimum scale (samples)", "20"},
           {"max-scale", "maximum scale (samples)", "the window's, from the fragment's length"}}},
         [](Run& run) {
             openFragment(run);
             run.wb.signalZoomForm().MFDFA_button_Click();
             MFDFA_form& form = run.wb.mfdfaForm();
             MFDFA_formControls& c = form.ui();
             run.front = &form;
             run.type(c.Text1, "detrend-order");
             run.type(c.Text2, "measure");
             run.type(c.Text3, "min-scale");
             run.type(c.Text4, "max-scale");
             form.LaunchMFDFA_btn_Click();
             run.reportRepairs();
             if (!c.FlatWarning->Caption().isEmpty()) run.say(c.FlatWarning->Caption());
             if (!run.refused) form.SaveFalfa_button_Click();
         }},
    };
    return list;
}

const Action* findAction(const QString& name) {
    for (const Action& a : actions())
        if (name == a.name) return &a;
    return nullptr;
}

std::vector<OptionSpec> optionsOf(const Action& action) {
    std::vector<OptionSpec> all = kTimeOptions;
    for (const auto& group : action.options)
        for (const OptionSpec& o : group)
            if (std::none_of(all.begin(), all.end(), [&](const OptionSpec& known) {
                    return std::string(known.name) == o.name;
                }))
                all.push_back(o);
    return all;
}

void printUsage(std::FILE* out) {
    std::fprintf(out, "usage: tarnic ACTION FILE [OPTIONS]\n"
                      "       tarnic ACTION --help | tarnic --help | tarnic --version\n\n"
                      "Runs one analysis of the workbench on FILE and writes the files its\n"
                      "window writes, below FILE's folder (or --out DIR). Prints the path of\n"
                      "every file written, one per line.\n\nActions:\n");
    for (const Action& a : actions()) std::fprintf(out, "  %-12s %s\n", a.name, a.summary);
    std::fprintf(out, "\nOptions of every action:\n"
                      "  --out DIR        write below DIR instead of FILE's folder\n"
                      "  --picture PATH   also draw the window's plot: .png, .svg or .pdf\n"
                      "  --null           end each printed path with a NUL byte, not a newline\n");
}

void printActionHelp(const Action& action, std::FILE* out) {
    std::fprintf(out, "usage: tarnic %s FILE [OPTIONS]\n\n%s.\n\nOptions (default in brackets):\n",
                 action.name, action.summary);
    for (const OptionSpec& o : optionsOf(action))
        std::fprintf(out, "  --%-16s %s [%s]\n", o.name, o.meaning, o.fallback);
    std::fprintf(out, "  --out DIR          write below DIR instead of FILE's folder\n"
                      "  --picture PATH     draw the window's plot: .png, .svg or .pdf\n"
                      "  --null             end each printed path with a NUL byte\n");
}

} // namespace

int RunBatch(const QStringList& args, std::FILE* out, std::FILE* err) {
    auto usage = [&](const QString& why) {
        std::fprintf(err, "tarnic: %s\n(tarnic --help lists the actions)\n", why.toLocal8Bit().constData());
        return 2;
    };
    if (args.isEmpty()) return usage("no action given");
    if (args[0] == "--help" || args[0] == "-h") {
        printUsage(out);
        return 0;
    }
    if (args[0] == "--version") {
        std::fprintf(out, "tarnic %s\n", TARNIC_VERSION);
        return 0;
    }
    const Action* action = findAction(args[0]);
    if (!action) return usage("unknown action: " + args[0]);

    // FILE, then --name value pairs and the flags.
    QString file, outDir, picture;
    bool nul = false;
    std::map<std::string, QString> options;
    const std::vector<OptionSpec> known = optionsOf(*action);
    for (int i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == "--help" || a == "-h") {
            printActionHelp(*action, out);
            return 0;
        }
        if (a == "--null") {
            nul = true;
            continue;
        }
        if (!a.startsWith("--")) {
            if (!file.isEmpty()) return usage("more than one file: " + a);
            file = a;
            continue;
        }
        QString name = a.mid(2), value;
        const qsizetype eq = name.indexOf('=');
        if (isFlag(name) && eq < 0) {
            value = "1";
        } else if (isFlag(name.left(eq))) {
            return usage("option --" + name.left(eq) + " takes no value");
        } else if (eq >= 0) {
            value = name.mid(eq + 1), name = name.left(eq);
        } else {
            if (i + 1 >= args.size()) return usage("option --" + name + " needs a value");
            value = args[++i];
        }
        if (name == "out") {
            outDir = value;
        } else if (name == "picture") {
            picture = value;
        } else if (std::any_of(known.begin(), known.end(),
                               [&](const OptionSpec& o) { return name == o.name; })) {
            options[name.toStdString()] = value;
        } else {
            return usage("action " + args[0] + " has no option --" + name);
        }
    }
    if (file.isEmpty()) return usage("no file given");
    if (!picture.isEmpty()) {
        const QString kind = QFileInfo(picture).suffix().toLower();
        if (kind != "png" && kind != "svg" && kind != "pdf")
            return usage("the picture's kind follows its extension: .png, .svg or .pdf");
    }

    // Paths are taken before the main window moves to the program's folder.
    const QFileInfo input(QFileInfo(file).absoluteFilePath());
    const QString label = input.fileName();
    auto fail = [&](const QString& message) {
        std::fprintf(err, "%s: %s\n", label.toLocal8Bit().constData(), oneLine(message).c_str());
        return 1;
    };
    if (!input.exists()) return fail("no such file");
    if (!input.isFile()) return fail("not a file");
    if (!outDir.isEmpty()) {
        const QFileInfo dir(QFileInfo(outDir).absoluteFilePath());
        if (!QDir().mkpath(dir.absoluteFilePath())) return fail("the folder " + outDir + " cannot be made");
        outDir = dir.absoluteFilePath();
    }
    if (!picture.isEmpty()) picture = QFileInfo(picture).absoluteFilePath();

    std::vector<std::string> written;
    setFinishedFileObserver([&](const std::string& path) { written.push_back(path); });
    Workbench workbench;
    Run run(workbench, options, label, err);
    setMsgBoxHook([&](const QString& text, const QString&) {
        run.refused = true;
        run.say(text);
    });
    struct Detach {
        ~Detach() {
            setMsgBoxHook({});
            setFinishedFileObserver({});
        }
    } detach;

    workbench.start();
    QApplication::processEvents();
    Form1& main = workbench.form1();
    Form1Controls& c = main.ui();
    if (!c.File1->isEnabled()) return fail(c.MessLineLabel->Caption());
    // The intake hands the windows their file-name stems below this folder.
    main.OutputRedirect = outDir;
    if (!OpenFromBrowser(workbench, input)) return fail("the file cannot be listed in its folder");
    if (main.Nrec <= 0 || !c.ShowSignGrafButton->isEnabled()) {
        const QString why = c.MessLineLabel->Caption();
        return fail(why.isEmpty() ? "the file cannot be read" : why);
    }
    run.front = &main;
    run.type(c.DeltaT_Text, "dt");
    run.type(c.Time0_Text, "t0");
    action->steps(run);
    QApplication::processEvents();
    run.reportRepairs();

    // The demultiplexed columns are written by the library beside the input.
    for (const std::string& path : run.extraFiles) {
        if (outDir.isEmpty()) {
            written.push_back(path);
            continue;
        }
        const fs::path target = fs::path(outDir.toStdString()) / fs::path(path).filename();
        std::error_code ec;
        fs::rename(path, target, ec);
        if (ec) {
            fs::copy_file(path, target, fs::copy_options::overwrite_existing, ec);
            if (!ec) fs::remove(path, ec);
        }
        if (ec) return fail("cannot move " + QString::fromStdString(path) + ": " + QString::fromStdString(ec.message()));
        written.push_back(target.string());
    }
    if (!picture.isEmpty() && run.front) {
        QApplication::processEvents();
        const QString failure = SavePicture(run.front->window(), picture);
        if (failure.isEmpty())
            written.push_back(picture.toStdString());
        else
            run.say("picture not written: " + picture + ": " + failure);
    }
    for (const std::string& path : written) {
        std::fputs(path.c_str(), out);
        std::fputc(nul ? '\0' : '\n', out);
    }
    std::fflush(out);
    if (run.refused) return 1;
    if (written.empty()) return fail("nothing was written");
    return 0;
}

} // namespace tarnic
