// The multifractal singularity spectrum of a fragment: the button of the
// fragment window and the window of the analysis.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "multiscale/mfdfaform.h"
#include "help/mfdfahelpform.h"
#include "multiscale/multiscalelogic.h"
#include "numeric/mfdfa.h"
#include "signal/signalzoomform.h"

#include <cmath>

namespace tarnic {
namespace {


// NumText of a single-precision value without its leading blank.
std::string bareSingle(float value) {
    std::string s = NumText(value);
    if (!s.empty() && s.front() == ' ') s.erase(0, 1);
    return s;
}

QString problemText(MfdfaProblem problem) {
    switch (problem) {
    case MfdfaProblem::BadGrid:
        return "The analysis gave back fewer than two scales or no power degree q\r\n"
               "Please, change the scale values";
    case MfdfaProblem::NotFinite:
        return "The analysis gave values that are not numbers\r\n"
               "Nothing can be drawn";
    case MfdfaProblem::NoSpectrum:
        return "The singularity spectrum is nowhere positive for this fragment\r\n"
               "Please, change the parameters or choose another fragment";
    case MfdfaProblem::OneAlfa:
        return "The singularity spectrum has a single value of Alfa: its Alfa range is 0\r\n"
               "Please, change the parameters or choose another fragment";
    case MfdfaProblem::FlatSpectrum:
        return "The singularity spectrum has the same value everywhere: its F(Alfa) range is 0\r\n"
               "Please, change the parameters or choose another fragment";
    case MfdfaProblem::FlatTable:
        return "The fluctuation measure is the same at all scales and power degrees\r\n"
               "Please, change the parameters or choose another fragment";
    case MfdfaProblem::None:
        break;
    }
    return {};
}

void makeMarks(QWidget* parent, MarksFrame*& frame, MarkLabels& marks, bool yAxis) {
    frame = new MarksFrame(parent);
    for (auto& mark : marks) {
        mark = new Label(frame);
        mark->setAlignment(yAxis ? Qt::AlignRight | Qt::AlignVCenter
                                 : Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
}

Label* label(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* b = new Label(parent, caption);
    b->place(l, t, w, h);
    return b;
}

TextBox* box(QWidget* parent, const QString& text, const QString& tip, double top) {
    auto* b = new TextBox(parent, text);
    b->place(9480, top, 1200, 330);
    b->setToolTipText(tip);
    return b;
}

Button* button(QWidget* parent, const QString& caption, double top) {
    auto* b = new Button(parent, caption);
    b->place(9480, top, 2400, 420);
    return b;
}

// Layout in twips: the spectrum with its marks on the left, the fluctuation
// table under it, the parameters and buttons in a column on the right, clear of
// the row of X marks under the spectrum.
constexpr double kPlotLeft = 1500, kPlotWidth = 7500;
constexpr double kFalfaTop = 480, kFalfaHeight = 3900;
constexpr double kTableTop = 5400, kTableHeight = 3600;

} // namespace

// ---------------------------------------------------------------------------
// The fragment window's part

void SignalZoomForm::MFDFA_button_Click() {
    Hide();
    FragLeng = FragCount;
    if (FragLeng < kMfdfaMinSamples) {
        MsgBox("This length of the signal fragment is too small\r\n"
               "MFDFA Analysis is possible for length => 400 only",
               "MFDFA Analysis");
        Show();
        return;
    }
    workbench().mfdfaForm().Show();
}

// ---------------------------------------------------------------------------
// The analysis window

MFDFA_formControls::MFDFA_formControls(FormWindow& w) {
    Label1 = label(&w, "Multifractal Spectrum of Singularity", kPlotLeft, 120, kPlotWidth, 300);
    makeMarks(&w, YmarksFrameB, Ymarks, true);
    YmarksFrameB->place(0, 0, 1200, kFalfaTop + kFalfaHeight + 170);
    FalfaPlot = new PlotSurface(&w);
    FalfaPlot->placeSurface(kPlotLeft, kFalfaTop, kPlotWidth, kFalfaHeight);
    makeMarks(&w, XmarksFrameB, Xmarks, false);
    XmarksFrameB->place(0, kFalfaTop + kFalfaHeight + 170, 12240, 330);
    Label4 = label(&w, "log [<(Mes(X)^q>^(1/q)] for different power degree values q", kPlotLeft,
                   kTableTop - 360, kPlotWidth, 300);
    ZQtab_Plot = new PlotSurface(&w);
    ZQtab_Plot->placeSurface(kPlotLeft, kTableTop, kPlotWidth, kTableHeight);
    Label3 = label(&w, "log(Scale)", kPlotLeft + kPlotWidth - 1500, kTableTop + kTableHeight + 60,
                   1500, 300);
    Label3->setAlignment(Qt::AlignRight | Qt::AlignTop);
    FlatWarning = label(&w, "", 9480, kTableTop, 2520, kTableHeight);
    FlatWarning->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    FlatWarning->setWordWrap(true);
    FlatWarning->setForeColor(Qt::darkRed);
    FlatWarning->setVisible(false);

    Label2 = label(&w, "Parameters' values", 9480, kFalfaTop, 2400, 300);
    Text1 = box(&w, "4", "Detrended Polynomial Order, 0 <= * <= 10", kFalfaTop + 360);
    Text2 = box(&w, "0", "Type of the signal's variabilty measure, 0 (Max-Min) or 1 (Std.Dev.)",
                kFalfaTop + 780);
    Text3 = box(&w, "20", "Minimum scale value, # of samples", kFalfaTop + 1200);
    Text4 = box(&w, "", "Maximum scale value, # of samples", kFalfaTop + 1620);
    LaunchMFDFA_btn = button(&w, "Launch MF DFA", kFalfaTop + 2160);
    SaveFalfa_button = button(&w, "Save Singularity Spectra", kFalfaTop + 2700);
    MFDFA_Help_button = button(&w, "MF DFA Help", kFalfaTop + 3240);
}

void MFDFA_form::connectHandlers() {
    setClientSize(12240, kTableTop + kTableHeight + 480);
    MFDFA_formControls& c = *ui_;
    for (TextBox* b : {c.Text1, c.Text2, c.Text3, c.Text4})
        b->Change = [this] { Text_Change(); };
    c.LaunchMFDFA_btn->Click = [this] { LaunchMFDFA_btn_Click(); };
    c.SaveFalfa_button->Click = [this] { SaveFalfa_button_Click(); };
    c.MFDFA_Help_button->Click = [this] { MFDFA_Help_button_Click(); };
    c.FalfaPlot->MouseMove = [this](int b, int s, float x, float y) {
        FalfaPlot_MouseMove(b, s, x, y);
    };
    c.ZQtab_Plot->MouseMove = [this](int b, int s, float x, float y) {
        ZQtab_Plot_MouseMove(b, s, x, y);
    };
}

void MFDFA_form::Form_Load() {
    MFDFA_formControls& c = *ui_;
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    MfdfaSamples = zoom.FragCount;
    MfdfaInput.resize(MfdfaSamples);
    MfdfaSignal.resize(MfdfaSamples);
    for (int i = 1; i <= MfdfaSamples && i <= zoom.FragInput.count(); ++i) {
        MfdfaInput(i) = zoom.FragInput(i);
        MfdfaSignal(i) = MfdfaInput(i);
    }
    c.LaunchMFDFA_btn->setEnabled(true);
    c.SaveFalfa_button->setEnabled(false);
    // Nothing is drawn yet: the plots give no read-outs.
    c.FalfaPlot->setEnabled(false);
    c.ZQtab_Plot->setEnabled(false);
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(main.Time0_Text);
    MfdfaTmin = static_cast<float>(T0 + (zoom.FragFirstSample - 1) * dT);
    MfdfaTmax = static_cast<float>(T0 + (zoom.FragLastSample - 1) * dT);
    c.Text4->setText(qs(NumText(MfdfaMaxScaleShown(MfdfaSamples))));
    setCaption("Singularity Spectrum Estimate by Detrended Fluctuation Analysis for " +
               MfdfaFileName + ",PART[" + qs(bareSingle(MfdfaTmin)) + "," +
               qs(bareSingle(MfdfaTmax)) + "]");
}

void MFDFA_form::Form_Unload() {
    // The fragment window comes back, unless it was closed first.
    if (workbench().signalZoomForm().isLoaded()) workbench().signalZoomForm().Show();
}

void MFDFA_form::Text_Change() {
    MFDFA_formControls& c = ui();
    for (PlotSurface* plot : {c.FalfaPlot, c.ZQtab_Plot}) {
        plot->Cls();
        plot->Refresh();
        plot->setEnabled(false);
    }
    c.SaveFalfa_button->setEnabled(false);
    c.LaunchMFDFA_btn->setEnabled(true);
    c.FlatWarning->setVisible(false);
}

void MFDFA_form::LaunchMFDFA_btn_Click() {
    MFDFA_formControls& c = ui();
    DetrendOrder = ReadMfdfaDetrendOrder(boxNumber(c.Text1));
    c.Text1->setText(qs(NumText(DetrendOrder)));
    MeasureType = ReadMfdfaMeasureType(boxNumber(c.Text2));
    c.Text2->setText(qs(NumText(MeasureType)));
    MaxScale = ReadMfdfaMaxScale(boxNumber(c.Text4), MfdfaSamples);
    c.Text4->setText(qs(NumText(MaxScale)));
    MinScale = ReadMfdfaMinScale(boxNumber(c.Text3), MaxScale);
    c.Text3->setText(qs(NumText(MinScale)));

    // The results go into the members only once they can be drawn.
    std::int32_t alfaCount = kMfdfaAlfaCount;
    Array1<double> alfa(alfaCount), fAlfa(alfaCount);
    std::int32_t QCount = kMfdfaQCount;
    std::int32_t ScaleCount = MfdfaScaleCount(MinScale, MaxScale);
    const std::int32_t qAsked = QCount, scalesAsked = ScaleCount;
    Array1<double> zqTab(QCount * ScaleCount);
    double qMin = kMfdfaQMin, qMax = kMfdfaQMax;

    c.LaunchMFDFA_btn->setEnabled(false);
    dll::MF_DFA_dll(MfdfaSignal.first(), MfdfaSamples, DetrendOrder, MeasureType, MinScale,
                    MaxScale, alfaCount, alfa.first(), fAlfa.first(), qMin, qMax, QCount,
                    ScaleCount, zqTab.first());
    // The library leaves flat segments out of the measure and stores 0 for a
    // scale with none left; the same grid and rule here say which scales those are.
    std::vector<double> flatShares;
    const std::vector<std::size_t> scales =
        mfdfaScales(static_cast<std::size_t>(MfdfaSamples), MinScale, MaxScale,
                    static_cast<std::size_t>(scalesAsked));
    if (static_cast<std::int32_t>(scales.size()) == ScaleCount)
        flatShares = flatSegmentShares(MfdfaSignal.span(), scales, DetrendOrder,
                                       MeasureType == 1 ? FluctuationMeasure::StandardDeviation
                                                        : FluctuationMeasure::Range);
    c.FlatWarning->setCaption(qs(MfdfaFlatWarning(flatShares, scales)));
    c.FlatWarning->setVisible(!c.FlatWarning->Caption().isEmpty());
    const MfdfaProblem problem = CheckMfdfaRun(alfa.span(), fAlfa.span(), zqTab.span(), QCount,
                                               ScaleCount, qAsked, scalesAsked, flatShares);
    if (problem != MfdfaProblem::None) {
        MsgBox(problemText(problem), "MFDFA Analysis");
        c.LaunchMFDFA_btn->setEnabled(true);
        return;
    }
    AlfaCount = alfaCount;
    Alfa = std::move(alfa);
    FAlfa = std::move(fAlfa);
    ZQtab = std::move(zqTab);

    // The spectrum: only the segments that start at a positive F are drawn.
    const SpectrumRanges ranges = MfdfaSpectrumRanges(Alfa.span(), FAlfa.span());
    AlfaMin = ranges.alfaMin;
    AlfaMax = ranges.alfaMax;
    FAlfaMin = ranges.fMin;
    FAlfaMax = ranges.fMax;
    Cls();
    DrawXMarks(*this, *c.FalfaPlot, 0, *c.XmarksFrameB, c.Xmarks, AlfaMin, AlfaMax);
    DrawYMarks(*this, *c.FalfaPlot, 0, *c.XmarksFrameB, *c.YmarksFrameB, c.Ymarks, FAlfaMin,
               FAlfaMax);
    PlotSurface& falfa = *c.FalfaPlot;
    falfa.Cls();
    falfa.setEnabled(true);
    falfa.setForeColor(BasicColor(1));
    const double W = falfa.ScaleWidth(), H = falfa.ScaleHeight();
    auto ax = [&](int i) { return W * (Alfa(i) - AlfaMin) / (AlfaMax - AlfaMin); };
    auto fy = [&](int i) { return H * (FAlfaMax - FAlfa(i)) / (FAlfaMax - FAlfaMin); };
    for (int i = 1; i <= AlfaCount - 1; ++i)
        if (FAlfa(i) > 0) falfa.Line(kLineSegment, ax(i), fy(i), ax(i + 1), fy(i + 1));

    // The table against log10 of scale, every tenth q; a curve breaks at a scale
    // that has no measure.
    const std::vector<float> LgScale = MfdfaLgScales(MinScale, MfdfaSamples, ScaleCount);
    LgScaleMin = LgScale.front();
    LgScaleMax = LgScale.back();
    const TableRange table = MfdfaTableRange(ZQtab.span(), QCount, ScaleCount, flatShares);
    PlotSurface& zq = *c.ZQtab_Plot;
    zq.Cls();
    zq.setEnabled(true);
    const double Wz = zq.ScaleWidth(), Hz = zq.ScaleHeight();
    auto px = [&](double x) { return Wz * (x - LgScaleMin) / (LgScaleMax - LgScaleMin); };
    auto py = [&](double y) { return Hz * (table.hi - y) / (table.hi - table.lo); };
    auto cell = [&](int s, int j) { return ZQtab((s - 1) * QCount + j); };
    std::vector<float> QColumn(static_cast<std::size_t>(ScaleCount));
    for (int j = 1; j <= QCount; j += kMfdfaQStep) {
        for (int s = 1; s <= ScaleCount; ++s)
            QColumn[static_cast<std::size_t>(s - 1)] = static_cast<float>(cell(s, j));
        const RegressionLine line = MfdfaRegression(LgScale, QColumn, flatShares);
        zq.setDrawStyle(1);
        zq.setForeColor(BasicColor(0));
        zq.Line(kLineSegment, px(LgScale.front()), py(line.at(LgScale.front())), px(LgScale.back()),
                py(line.at(LgScale.back())));
        zq.setDrawStyle(0);
    }
    int colour = 0;
    for (int j = 1; j <= QCount; j += kMfdfaQStep) {
        zq.setForeColor(BasicColor(colour));
        colour = (colour + 1) % 7;
        for (int s = 1; s <= ScaleCount - 1; ++s)
            if (MfdfaScaleInUse(flatShares, s) && MfdfaScaleInUse(flatShares, s + 1))
                zq.Line(kLineSegment, px(LgScale[static_cast<std::size_t>(s - 1)]),
                        py(cell(s, j)), px(LgScale[static_cast<std::size_t>(s)]),
                        py(cell(s + 1, j)));
    }
    c.SaveFalfa_button->setEnabled(true);
}

void MFDFA_form::SaveFalfa_button_Click() {
    MFDFA_formControls& c = ui();
    Form1Controls& main = workbench().form1().ui();
    // Every failing step of the save is passed over silently.
    const std::string D = encodeFileName(workbench().form1().OutputFolder());
    makeSubdirectory(D, kSpectraDir);
    OutputFile file(names::SingularitySpectrum(D, encodeFileName(MfdfaFileName), MfdfaTmin, MfdfaTmax));
    file.print(SingularitySpectrumText(DetrendOrder, MeasureType, MinScale, MaxScale, Alfa.span(),
                                       FAlfa.span()));
    file.close();
    main.Dir1->Refresh();
    main.File1->Refresh();
    c.SaveFalfa_button->setEnabled(false);
}

void MFDFA_form::MFDFA_Help_button_Click() {
    workbench().mfdfaHelpForm().Show();
}

void MFDFA_form::FalfaPlot_MouseMove(int, int, float x, float y) {
    MFDFA_formControls& c = ui();
    const double W = c.FalfaPlot->ScaleWidth(), H = c.FalfaPlot->ScaleHeight();
    const auto alfa = static_cast<float>((AlfaMax - AlfaMin) * x / W + AlfaMin);
    const auto f = static_cast<float>(FAlfaMax - (FAlfaMax - FAlfaMin) * y / H);
    c.FalfaPlot->setToolTipText(qs("Alfa=" + NumText(alfa) + ", F(Alfa)=" + NumText(f)));
}

void MFDFA_form::ZQtab_Plot_MouseMove(int, int, float x, float) {
    MFDFA_formControls& c = ui();
    const auto lg =
        static_cast<float>((LgScaleMax - LgScaleMin) * x / c.ZQtab_Plot->ScaleWidth() + LgScaleMin);
    c.ZQtab_Plot->setToolTipText(
        qs("Scale (# of samples)=" + NumText(IntClamped(std::pow(10.0, static_cast<double>(lg))))));
}

} // namespace tarnic
