#include "signal/signalzoomform.h"

#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "signal/signalplot.h"

namespace tarnic {
namespace {


Button* button(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* b = new Button(parent, caption);
    b->place(l, t, w, h);
    return b;
}

Label* label(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* b = new Label(parent, caption);
    b->place(l, t, w, h);
    b->setWordWrap(true);
    return b;
}

// Layout in twips: the plot on top, the analyses in three columns under it.
constexpr double kPlotLeft = 600, kPlotTop = 120, kPlotWidth = 10800, kPlotHeight = 4800;

} // namespace

SignalZoomFormControls::SignalZoomFormControls(FormWindow& w) {
    TimeSeriesZoom = new PlotSurface(&w);
    TimeSeriesZoom->placeSurface(kPlotLeft, kPlotTop, kPlotWidth, kPlotHeight);
    XmarksFrame = new MarksFrame(&w);
    XmarksFrame->place(0, kPlotTop + kPlotHeight + 200, 12000, 330);
    for (auto& mark : Xmarks) {
        mark = new Label(XmarksFrame);
        mark->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
    const double top = 5580;
    // Column 1: the fragment, the harmonic and the maximum wave.
    SaveFragButton = button(&w, "Save Signal Fragment", kPlotLeft, top, 3480, 420);
    FindHarm = button(&w, "Find BestFit Low- Frequency Harmonic", kPlotLeft, top + 510, 3480, 420);
    Label4 = label(&w, "BestFit Harm. Period = ", kPlotLeft, top + 990, 3480, 510);
    FindMaxWave = button(&w, "Find MaxWave", kPlotLeft, top + 1560, 3480, 420);
    Label3 = label(&w, "MaxWave Period = ", kPlotLeft, top + 2040, 3480, 510);
    Label5 = label(&w,
                   "You can save BestFit Harmonic <Time, Signal, Harmonic> by double-clicking the "
                   "graf",
                   4200, top, 3300, 720);
    Label5->setForeColor(QColor(0x80, 0x00, 0x80));
    // Column 2: the maps.
    MorletSvan = button(&w, "Morlet CWT 2D-diagram", 4200, top + 990, 3300, 420);
    HeisBoxesButton = button(&w, "Heisenberg Boxes Wavelet Packet Map", 4200, top + 1560, 3300, 420);
    MFDFA_button = button(&w, "Singularity Spectrum", 4200, top + 2130, 3300, 420);
    // Column 3: the WTMM analysis.
    Frame1 = new Frame(&w, "Parameters of WTMM-analysis : ");
    Frame1->place(7740, top, 3660, 1500);
    Label1 = label(Frame1, "Preliminary trend removing polynomial order", 120, 300, 2520, 480);
    WTMM_TrendOrder = new TextBox(Frame1, "0");
    WTMM_TrendOrder->place(2760, 360, 780, 330);
    WTMM_TrendOrder->setToolTipText("Trend Polynomial Order for the Fragment");
    Label2 = label(Frame1, "Threshold parameter Gamma", 120, 870, 2520, 480);
    WTMM_ThreshLevel = new TextBox(Frame1, "0.25");
    WTMM_ThreshLevel->place(2760, 930, 780, 330);
    WTMM_ThreshLevel->setToolTipText("Long WTMM-chains threshold, 0 <= Gamma <= 1");
    WTMM_button = button(&w, "WTMM FingerPrint", 7740, top + 1560, 3660, 420);
}

void SignalZoomForm::connectHandlers() {
    setClientSize(12000, 8280);
    SignalZoomFormControls& c = *ui_;
    c.SaveFragButton->Click = [this] { SaveFragButton_Click(); };
    c.FindHarm->Click = [this] { FindHarm_Click(); };
    c.FindMaxWave->Click = [this] { FindMaxWave_Click(); };
    c.MorletSvan->Click = [this] { MorletSvan_Click(); };
    c.HeisBoxesButton->Click = [this] { HeisBoxesButton_Click(); };
    c.WTMM_button->Click = [this] { WTMM_button_Click(); };
    c.WTMM_TrendOrder->Change = [this] { WTMM_TrendOrder_Change(); };
    c.WTMM_ThreshLevel->Change = [this] { WTMM_ThreshLevel_Change(); };
    c.MFDFA_button->Click = [this] { MFDFA_button_Click(); };
    c.TimeSeriesZoom->DblClick = [this] { TimeSeriesZoom_DblClick(); };
    c.TimeSeriesZoom->MouseMove = [this](int b, int s, float x, float y) {
        TimeSeriesZoom_MouseMove(b, s, x, y);
    };
}

void SignalZoomForm::Form_Load() {
    SignalZoomFormControls& c = *ui_;
    FragLeng = FragCount;
    Fragment.resize(FragLeng);
    std::copy_n(FragInput.vector().begin(), std::min(FragLeng, FragInput.count()),
                Fragment.vector().begin());
    HarmonicReady = 0;
    c.Label5->setVisible(false);
    if (FragLeng <= 500) {
        c.FindMaxWave->setEnabled(true);
        c.Label3->setVisible(false);
    } else {
        c.FindMaxWave->setEnabled(false);
        c.Label3->setCaption("Find MaxWave is available for fragment length <= 500");
    }
}

void SignalZoomForm::Form_Activate() {
    SignalZoomFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const double T0 = TimeOrigin(main.Time0_Text);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    DrawXMarks(*this, *c.TimeSeriesZoom, 0, *c.XmarksFrame, c.Xmarks,
               static_cast<float>(T0 + (FragFirstSample - 1) * dT),
               static_cast<float>(T0 + (FragLastSample - 1) * dT));
}

void SignalZoomForm::Form_Unload() {
    // The signal window comes back, unless it was closed first (a new input file
    // closes all windows, the signal window before this one).
    if (workbench().signalPlot().isLoaded()) workbench().signalPlot().Show();
}

void SignalZoomForm::DisableFragmentControls() {
    SignalZoomFormControls& c = ui();
    for (QWidget* w : std::initializer_list<QWidget*>{c.FindHarm, c.Frame1, c.WTMM_button,
                                                      c.FindMaxWave, c.SaveFragButton, c.MorletSvan,
                                                      c.HeisBoxesButton})
        w->setEnabled(false);
}

void SignalZoomForm::EnableFragmentControls() {
    SignalZoomFormControls& c = ui();
    for (QWidget* w : std::initializer_list<QWidget*>{c.FindHarm, c.Frame1, c.WTMM_button,
                                                      c.SaveFragButton, c.MorletSvan,
                                                      c.HeisBoxesButton})
        w->setEnabled(true);
    c.FindMaxWave->setEnabled(FragLeng <= 500);
}

bool SignalZoomForm::detrended() { return workbench().signalPlot().TrendRadius != 0; }

double SignalZoomForm::panelY(float value) {
    const double H = ui().TimeSeriesZoom->ScaleHeight();
    const double R = FragMax > FragMin ? FragMax - FragMin : 1.0;
    const double top = FragMax > FragMin ? FragMax : FragMax + 0.5;
    return detrended() ? H / 2 + (H / 2) * (top - value) / R : H * (top - value) / R;
}

void SignalZoomForm::SaveFragButton_Click() {
    SignalZoomFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(main.Time0_Text);
    const double T1 = T0 + (FragFirstSample - 1) * dT, T2 = T0 + (FragLastSample - 1) * dT;
    OutputFile file(names::Fragment(encodeFileName(workbench().signalPlot().SignalFilePath), T1, T2));
    file.printLines(FragCount, [&](int i, std::string& out) {
        AppendTwoColumnRecord(out, Fragment(i), T1 + (i - 1) * dT);
    });
    if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    c.SaveFragButton->setEnabled(false);
    workbench().form1().ui().File1->Refresh();
}

void SignalZoomForm::FindHarm_Click() {
    SignalZoomFormControls& c = ui();
    DisableFragmentControls();
    FragLeng = FragCount;
    Harmonic.resize(FragLeng);
    float ignored1 = 0, ignored2 = 0, ratio = 0;
    dll::FindBestFitHarm_dll(FragLeng, Fragment.first(), Harmonic.first(), ignored1,
                             HarmonicPeriod, ignored2, ratio);
    const double dT = TextNum(workbench().form1().ui().DeltaT_Text->Text().toStdString());
    HarmonicPeriod = static_cast<float>(HarmonicPeriod * dT);
    c.Label4->setCaption("BestFit Harm. Period = " + qs(NumText(HarmonicPeriod)) +
                         "\r\nVar.Ratio=" + qs(NumText(ratio)));
    c.Label4->setVisible(true);
    HarmonicReady = 1;
    PlotSurface& graf = *c.TimeSeriesZoom;
    graf.setForeColor(BasicColor(12));
    graf.setDrawWidth(1);
    const double W = graf.ScaleWidth();
    for (int i = 1; i <= FragLeng - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (FragLeng - 1), panelY(Harmonic(i)),
                  W * i / (FragLeng - 1), panelY(Harmonic(i + 1)));
    c.Label5->setVisible(true);
    EnableFragmentControls();
}

void SignalZoomForm::FindMaxWave_Click() {
    SignalZoomFormControls& c = ui();
    DisableFragmentControls();
    FragLeng = FragCount;
    float ignored = 0, period = 0;
    std::int32_t first = 1, second = 1;
    dll::PeakTrough_dll(FragLeng, Fragment.first(), ignored, period, first, second);
    const double dT = TextNum(workbench().form1().ui().DeltaT_Text->Text().toStdString());
    c.Label3->setCaption("MaxWave Period = " + qs(NumText(period * dT)));
    c.Label3->setVisible(true);
    PlotSurface& graf = *c.TimeSeriesZoom;
    const double W = graf.ScaleWidth();
    graf.setForeColor(BasicColor(12));
    graf.setDrawWidth(12);
    for (std::int32_t p : {first, second}) {
        p = std::clamp(p, 1, FragLeng);
        graf.PSet(0, (static_cast<double>(p - 1) / (FragLeng - 1)) * W, panelY(Fragment(p)));
    }
    EnableFragmentControls();
}

void SignalZoomForm::TimeSeriesZoom_DblClick() {
    if (HarmonicReady == 0) return;
    const Form1Controls& main = workbench().form1().ui();
    const SignalPlot& plot = workbench().signalPlot();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(main.Time0_Text);
    const double T1 = T0 + (FragFirstSample - 1) * dT, T2 = T0 + (FragLastSample - 1) * dT;
    const bool trendInForce =
        workbench().signalPlot().isLoaded() &&
        TextNum(workbench().signalPlot().ui().SmoothRad->Text().toStdString()) > 0;
    OutputFile file(names::Harmonic(encodeFileName(plot.SignalFilePath), trendInForce,
                                    HarmonicPeriod, T1, T2));
    file.printLines(FragCount, [&](int i, std::string& out) {
        out += ThreeColumnRecord(NumText(T1 + (i - 1) * dT), NumText(Fragment(i)),
                                 NumText(Harmonic(i)));
    });
    if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    workbench().form1().ui().File1->Refresh();
}

void SignalZoomForm::TimeSeriesZoom_MouseMove(int, int, float x, float y) {
    SignalZoomFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double Wz = c.TimeSeriesZoom->ScaleWidth(), Hz = c.TimeSeriesZoom->ScaleHeight();
    const float s = static_cast<float>((FragLastSample - FragFirstSample) * x / Wz + FragFirstSample);
    const std::int32_t i = IntClamped(s);
    const double t = TimeOrigin(main.Time0_Text) +
                     (i - 1) * TextNum(main.DeltaT_Text->Text().toStdString());
    std::string tip = "Sample # " + NumText(i) + ",  Time=" + NumText(t);
    if (!detrended())
        tip += ", Value=" + NumText(static_cast<float>(FragMax - (FragMax - FragMin) * y / Hz));
    else if (y > Hz / 2)
        tip += ", Value=" +
               NumText(static_cast<float>(FragMax - (FragMax - FragMin) * 2 * (y - Hz / 2) / Hz));
    c.TimeSeriesZoom->setToolTipText(qs(tip));
}

} // namespace tarnic
