// The spectrum run of the main window, its display in the lower two thirds of
// Picture1 and the save of both estimates.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "numeric/significance.h"
#include "numeric/workers.h"
#include "spectra/bandpassform.h"
#include "spectra/rednoise.h"
#include "spectra/spectrazoomform.h"
#include "spectra/spectrumrun.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <future>
#include <thread>

namespace tarnic {
namespace {
// The red-noise background (dashes, dark grey) and the significance level of
// the Fourier estimate (dashes, magenta) over the green and the blue curve.
const QColor kRedNoiseColour(0x60, 0x60, 0x60);
const QColor kLevelColour(0xC0, 0x00, 0xC0);
} // namespace

void Form1::LaunchButton_Click() {
    Form1Controls& c = ui();
    DisableWorkGroup();
    c.Picture1->setEnabled(false);
    c.Y_axis_Label->setVisible(false);
    workbench().spectraZoomForm().Unload();
    workbench().bandPassForm().Unload();

    // Each box is read, clamped and shows its value before the next is read.
    LengAR = ClampWindowLength(boxNumber(c.AR_Length_Text), Nrec);
    c.AR_Length_Text->setText(qs(NumText(LengAR)));
    Nar = ClampArOrder(boxNumber(c.AR_OrderText), LengAR);
    c.AR_OrderText->setText(qs(NumText(Nar)));
    LengF = ClampWindowLength(boxNumber(c.TimeLengText), Nrec);
    c.TimeLengText->setText(qs(NumText(LengF)));
    MM = ClampRadius(boxNumber(c.RadiusText), LengF);
    c.RadiusText->setText(qs(NumText(MM)));
    DeltaT = ClampDeltaT(boxNumber(c.DeltaT_Text));
    c.DeltaT_Text->setText(qs(NumText(DeltaT)));
    c.Time0_Text->setText(qs(NumText(TimeOrigin(c.Time0_Text))));

    FftLengAR = TransformSize(LengAR);
    NfAR = FftLengAR / 2;
    FftLengFour = TransformSize(LengF);
    NfFour = FftLengFour / 2;
    SpAR.resize(NfAR);
    FreqAR.resize(NfAR);
    SpFour.resize(NfFour);
    FreqFour.resize(NfFour);
    FreqAR.vector() = FrequencyGrid(FftLengAR, DeltaT);
    FreqFour.vector() = FrequencyGrid(FftLengFour, DeltaT);

    dll::SpectAn_dll(Signal.first(), Nrec, LengF, FftLengFour, MM, SpFour.first());
    for (float& v : SpFour.span()) v *= DeltaT;

    if (LengAR == Nrec) {
        dll::BurgH_dll(Signal.first(), Nrec, NfAR, Nar, SpAR.first());
    } else {
        SpARWindow.resize(NfAR);
        const ArWindows windows = SearchArWindows(Nrec, LengAR);
        // The windows are independent: their spectra are computed on all cores,
        // then summed in window order, so the result is the sequential one.
        const int count = windows.count;
        std::vector<float> spectra(static_cast<std::size_t>(count) * static_cast<std::size_t>(NfAR));
        auto window = [&](int w) {
            std::int32_t length = LengAR, points = NfAR, order = Nar;
            const int start = (w - 1) * windows.shift + 1;
            Array1<float> samples(LengAR);
            std::copy_n(&Signal(start), LengAR, samples.span().begin());
            dll::BurgH_dll(samples.first(), length, points, order,
                           spectra[static_cast<std::size_t>(w - 1) * static_cast<std::size_t>(NfAR)]);
        };
        window(1); // loads and resolves the routine before any worker runs
        const int workers = std::max(1u, std::thread::hardware_concurrency());
        std::vector<std::future<void>> jobs;
        for (int t = 0; t < workers; ++t)
            jobs.push_back(startWorker([&, t] {
                for (int w = 2 + t; w <= count; w += workers) window(w);
            }));
        for (auto& job : jobs) job.get();
        for (int w = 1; w <= count; ++w) {
            std::copy_n(&spectra[static_cast<std::size_t>(w - 1) * static_cast<std::size_t>(NfAR)],
                        NfAR, SpARWindow.span().begin());
            for (int i = 1; i <= NfAR; ++i) SpAR(i) = SpAR(i) + SpARWindow(i) / count;
        }
    }
    for (float& v : SpAR.span()) v *= DeltaT;

    EnableWorkGroup();
    PlotSpectra();
    c.SaveSpButton->setEnabled(true);
    c.FrameHScroll->setEnabled(true);
    c.ZoomButton->setEnabled(true);
    c.FrameSpectraView->setEnabled(true);
    SpectraReady = 1;
}

void Form1::PlotSpectra() {
    Form1Controls& c = ui();
    PlotSurface& pic = *c.Picture1;
    const double W = pic.ScaleWidth(), H = pic.ScaleHeight();
    PlotX.resize(NfAR);
    PlotY.resize(NfAR);
    Array1<float> fourX(NfFour), fourY(NfFour);
    workbench().spectraZoomForm().Unload();
    workbench().bandPassForm().Unload();
    pic.setEnabled(true);

    pic.setForeColor(QColor(0xE0, 0xE0, 0xE0));
    pic.Line(kLineFilledBox, 0, H / 3, W, 2 * H / 3);

    for (int i = 2; i <= NfAR; ++i) PlotX(i) = FreqAR(i), PlotY(i) = SpAR(i);
    for (int i = 2; i <= NfFour; ++i) fourX(i) = FreqFour(i), fourY(i) = SpFour(i);
    auto transform = [](Array1<float>& a, auto f) {
        for (int i = 2; i <= a.count(); ++i) a(i) = static_cast<float>(f(a(i)));
    };
    if (c.FreqCheck->Value() == 0) {
        transform(PlotX, [](float v) { return 1 / v; });
        transform(fourX, [](float v) { return 1 / v; });
    }
    if (c.LogX_Check->Value() == 1) {
        transform(PlotX, [](float v) { return std::log(v); });
        transform(fourX, [](float v) { return std::log(v); });
    }
    if (c.LogY_Check->Value() == 1) {
        transform(PlotY, [](float v) { return std::log(v); });
        transform(fourY, [](float v) { return std::log(v); });
    }

    PlotXMin = 1E+35f;
    PlotXMax = -1E+35f;
    for (int i = 2; i <= NfAR; ++i) {
        if (PlotX(i) < PlotXMin) PlotXMin = PlotX(i);
        if (PlotX(i) > PlotXMax) PlotXMax = PlotX(i);
    }
    c.Y_axis_Label->setCaption("File " + InFileName + ",  Nrec=" + qs(NumText(Nrec)) +
                               "\r\nAR-Spectra: Nar=" + qs(NumText(Nar)) + ", LengAR=" +
                               qs(NumText(LengAR)) + "\r\nFourier Spectra: LengF=" +
                               qs(NumText(LengF)) + ", MM=" + qs(NumText(MM)));
    float yMin = 1E+35f, plotYMax = -1E+35f;
    for (int i = 2; i <= NfAR; ++i) {
        if (PlotY(i) < yMin) yMin = PlotY(i);
        if (PlotY(i) > plotYMax) plotYMax = PlotY(i);
    }
    PlotXRange = PlotXMax - PlotXMin;
    PlotYRange = plotYMax - yMin;

    // Both curves on the scale of the main estimate; a background value above
    // its maximum is drawn on the boundary.
    auto px = [&](float x) { return W * (x - PlotXMin) / PlotXRange; };
    auto py = [&](float y) { return H / 3 + (2 * H / 3) * (plotYMax - y) / PlotYRange; };
    pic.setForeColor(QColor(0x00, 0xFF, 0x00));
    for (int i = 2; i <= NfFour - 1; ++i)
        pic.Line(kLineSegment, px(fourX(i)), std::max(py(fourY(i)), H / 3), px(fourX(i + 1)),
                 std::max(py(fourY(i + 1)), H / 3));
    pic.setForeColor(BasicColor(1));
    for (int i = 2; i <= NfAR - 1; ++i)
        pic.Line(kLineSegment, px(PlotX(i)), py(PlotY(i)), px(PlotX(i + 1)), py(PlotY(i + 1)));

    if (ShowRedNoiseBackground || ShowSignificanceLevel) {
        // The overlays go through the view's transforms in the same single
        // precision and on the main estimate's scale, clamped at the boundary
        // as the background estimate is; value k belongs to frequency index k + 1.
        const bool period = c.FreqCheck->Value() == 0, logX = c.LogX_Check->Value() == 1,
                   logY = c.LogY_Check->Value() == 1;
        auto drawCurve = [&](const Array1<float>& freq, const std::vector<double>& values,
                             QColor colour, int style) {
            auto point = [&](int i) {
                float x = freq(i), y = static_cast<float>(values[static_cast<std::size_t>(i - 1)]);
                if (period) x = 1 / x;
                if (logX) x = std::log(x);
                if (logY) y = std::log(y);
                return std::pair<double, double>(px(x), std::max(py(y), H / 3));
            };
            pic.setForeColor(colour);
            pic.setDrawStyle(style);
            for (int i = 2; i <= freq.count() - 1; ++i) {
                const auto [x1, y1] = point(i);
                const auto [x2, y2] = point(i + 1);
                pic.Line(kLineSegment, x1, y1, x2, y2);
            }
            pic.setDrawStyle(0);
        };
        std::string note;
        if (ShowRedNoiseBackground) {
            const SpectrumSignificance red = burgBackground(Signal.span(), FftLengAR, DeltaT);
            drawCurve(FreqAR, red.background, kRedNoiseColour, 1);
            note = WhiteNoiseNote(red.fit);
        }
        if (ShowSignificanceLevel) {
            const SpectrumSignificance level = fourierSignificance(
                Signal.span(), LengF, FftLengFour, MM, DeltaT, SignificanceProbability);
            drawCurve(FreqFour, level.level, kLevelColour, 1);
            note = WhiteNoiseNote(level.fit);
        }
        const QString shown = RedNoiseNote;
        RedNoiseNote = qs(note);
        if (!note.empty()) showMessage(RedNoiseNote);
        else if (!shown.isEmpty()) withdrawNote(shown);
        pic.setForeColor(BasicColor(1));
    } else if (!RedNoiseNote.isEmpty()) {
        withdrawNote(RedNoiseNote);
        RedNoiseNote.clear();
    }

    c.FrameSpectraView->setEnabled(true);
    c.FrameHScroll->setEnabled(true);
    c.ZoomButton->setEnabled(true);
    ResetCursors();
    c.Y_axis_Label->setVisible(true);
}

// A white-noise note that no longer applies leaves the message line, unless
// another message has taken its place since.
void Form1::withdrawNote(const QString& note) {
    Label& line = *ui().MessLineLabel;
    if (line.Visible() && line.Caption() == note) line.setVisible(false);
}

void Form1::SpectraViewCheck_Click() {
    Form1Controls& c = ui();
    c.Picture1->setEnabled(false);
    c.FrameHScroll->setEnabled(false);
    c.ZoomButton->setEnabled(false);
    ResetCursors();
    PlotSpectra();
}

void Form1::SaveSpButton_Click() {
    Form1Controls& c = ui();
    DisableWorkGroup();
    // Every failing directory or file operation is passed over silently.
    const std::string D = encodeFileName(OutputFolder());
    const std::string N = encodeFileName(InFileName);
    makeSubdirectory(D, kSpectraDir);
    auto save = [](const std::string& name, const Array1<float>& freq, const Array1<float>& sp) {
        OutputFile file(name);
        file.printLines(freq.count() - 1, [&](int k, std::string& out) {
            const int i = k + 1;
            out += ZoneRecord(NumText(freq(i)), NumText(1.0 / freq(i)), NumText(sp(i)));
        });
        file.close();
    };
    save(names::SpectrumAR(D, N, Nar, LengAR), FreqAR, SpAR);
    save(names::SpectrumFourier(D, N, MM, LengF), FreqFour, SpFour);
    // The companions of the overlays in force: frequency and red-noise
    // background of the Burg estimate; frequency, background and significance
    // level of the Fourier estimate.
    if (ShowRedNoiseBackground) {
        const SpectrumSignificance red = burgBackground(Signal.span(), FftLengAR, DeltaT);
        OutputFile file(names::SpectrumARRedNoise(D, N, Nar, LengAR));
        file.printLines(FreqAR.count() - 1, [&](int k, std::string& out) {
            const int i = k + 1;
            out += TwoColumnRecord(NumText(FreqAR(i)),
                                   NumText(static_cast<float>(red.background[i - 1])));
        });
        file.close();
    }
    if (ShowSignificanceLevel) {
        const SpectrumSignificance level = fourierSignificance(Signal.span(), LengF, FftLengFour,
                                                               MM, DeltaT, SignificanceProbability);
        OutputFile file(names::SpectrumFourierLevel(D, N, MM, LengF,
                                                    LevelPercent(SignificanceProbability)));
        file.printLines(FreqFour.count() - 1, [&](int k, std::string& out) {
            const int i = k + 1;
            out += ZoneRecord(NumText(FreqFour(i)),
                              NumText(static_cast<float>(level.background[i - 1])),
                              NumText(static_cast<float>(level.level[i - 1])));
        });
        file.close();
    }
    c.Dir1->Refresh();
    c.File1->Refresh();
    EnableWorkGroup();
    c.SaveSpButton->setEnabled(false);
    if (SpectraReady == 1) {
        c.FrameHScroll->setEnabled(true);
        c.ZoomButton->setEnabled(true);
        c.FrameSpectraView->setEnabled(true);
    }
}

void Form1::RedNoiseBackground_Toggle() {
    ShowRedNoiseBackground = !ShowRedNoiseBackground;
    if (SpectraReady == 1) PlotSpectra();
}

// Choosing the level in force turns it off; choosing the other one switches to it.
void Form1::SignificanceLevel_Toggle(double probability) {
    ShowSignificanceLevel = !(ShowSignificanceLevel && SignificanceProbability == probability);
    SignificanceProbability = probability;
    if (SpectraReady == 1) PlotSpectra();
}

} // namespace tarnic
