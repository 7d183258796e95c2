#include "signal/signalplot.h"

#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/heisboxform.h"
#include "multiscale/mfdfaform.h"
#include "help/mfdfahelpform.h"
#include "multiscale/wtmmform.h"
#include "help/wtmmhelp.h"
#include "signal/signalzoomform.h"
#include "signal/trendlogic.h"

namespace tarnic {
namespace {


// Layout in twips: the plot and its cursors on top, the trend controls under it
// on the left, the fragment button on the right.
constexpr double kPlotLeft = 600, kPlotTop = 120, kPlotWidth = 10800, kPlotHeight = 4560;

Button* button(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* b = new Button(parent, caption);
    b->place(l, t, w, h);
    return b;
}

} // namespace

SignalPlotControls::SignalPlotControls(FormWindow& w) {
    TimeSeriesGraf = new PlotSurface(&w);
    TimeSeriesGraf->placeSurface(kPlotLeft, kPlotTop, kPlotWidth, kPlotHeight);
    Line_Left = &TimeSeriesGraf->addLine(QColor(0xFF, 0, 0));
    Line_Right = &TimeSeriesGraf->addLine(QColor(0xFF, 0, 0));
    // The cursors stand over the whole height from the start, as after a scroll.
    for (LineObject* line : {Line_Left, Line_Right})
        line->setY2(static_cast<float>(TimeSeriesGraf->ScaleHeight()));
    XmarksFrame = new MarksFrame(&w);
    XmarksFrame->place(0, kPlotTop + kPlotHeight + 200, 12000, 330);
    for (auto& mark : Xmarks) {
        mark = new Label(XmarksFrame);
        mark->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
    FrameHScroll = new Frame(&w, "Signal Zooming Scroll Bars");
    FrameHScroll->place(kPlotLeft, 5280, kPlotWidth, 840);
    HScroll_Left = new ScrollBar(FrameHScroll, 0, 32767, 0);
    HScroll_Left->place(60, 255, kPlotWidth - 120, 255);
    HScroll_Right = new ScrollBar(FrameHScroll, 0, 32767, 32767);
    HScroll_Right->place(60, 540, kPlotWidth - 120, 255);
    Label1 = new Label(&w, "Signal Zooming Scroll Bars: choose time interval and press <Zoom ...>");
    Label1->place(kPlotLeft, 6180, kPlotWidth, 300);
    NofSamplesInside = new Label(&w, "Number of samples between red lines =");
    NofSamplesInside->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    NofSamplesInside->place(kPlotLeft + kPlotWidth - 5400, 5250, 5400, 270);

    SmoothTypeFrame = new Frame(&w, "");
    SmoothTypeFrame->place(kPlotLeft, 6570, 7080, 540);
    KernSmoothOption = new OptionButton(SmoothTypeFrame, "Gaussian Kernel Smoothing", true);
    KernSmoothOption->place(120, 120, 3300, 300);
    LocPolynomOption = new OptionButton(SmoothTypeFrame, "Local Polynomial Smoothing", false);
    LocPolynomOption->place(3600, 120, 3300, 300);
    SmoothingRaduisFrame =
        new Frame(&w, "Set Smoothing Radius [and Trend Polynomial Order] : ");
    SmoothingRaduisFrame->place(kPlotLeft, 7200, 7080, 780);
    RadiusLabel = new Label(SmoothingRaduisFrame, "Radius:");
    RadiusLabel->place(120, 360, 900, 330);
    SmoothRad = new TextBox(SmoothingRaduisFrame, "0");
    SmoothRad->place(1020, 360, 1500, 330);
    OrderLabel = new Label(SmoothingRaduisFrame, "Order:");
    OrderLabel->place(3600, 360, 900, 330);
    TrendPolynomOrder = new TextBox(SmoothingRaduisFrame, "0");
    TrendPolynomOrder->place(4500, 360, 1500, 330);
    TrendPolynomOrder->setEnabled(false);
    TrendPolynomOrder->setToolTipText("Trend Polynomial Order, 0 <= * <= 10");

    ReDrawButton = button(&w, "Compute Trend and ReDraw", kPlotLeft, 8100, 2280, 540);
    ReDrawButton->setEnabled(false);
    SaveTrendButton = button(&w, "Save Trend and Residual", kPlotLeft + 2400, 8100, 2280, 540);
    SaveTrendButton->setEnabled(false);
    ReturnInitial = button(&w, "Return to the initial signal", kPlotLeft + 4800, 8100, 2280, 540);
    ReturnInitial->setEnabled(false);
    ZoomButton = button(&w,
                        "Zoom fragment, save fragment, Morlet CWT, orthogonal wavelet Heisenberg "
                        "boxes, WTMM-analysis and Singularity Spectra of data fragment. If the "
                        "signal trend was estimated then a detrended fragment is processed",
                        7800, 6570, 3600, 2070);
    w.setWindowTitle(SignalPlot::kCaption);
}

SignalPlot::SignalPlot(Workbench& workbench) : FormOf(workbench, "SignalPlot") {}

void SignalPlot::connectHandlers() {
    setClientSize(12000, 8760);
    SignalPlotControls& c = *ui_;
    c.ReDrawButton->Click = [this] { ReDrawButton_Click(); };
    c.ReturnInitial->Click = [this] { ReturnInitial_Click(); };
    c.SaveTrendButton->Click = [this] { SaveTrendButton_Click(); };
    c.KernSmoothOption->Click = [this] { KernSmoothOption_Click(); };
    c.LocPolynomOption->Click = [this] { LocPolynomOption_Click(); };
    c.SmoothRad->Change = [this] { SmoothRad_Change(); };
    c.TrendPolynomOrder->Change = [this] { TrendPolynomOrder_Change(); };
    c.SmoothRad->MouseMove = [this] { SmoothRad_MouseMove(); };
    c.TimeSeriesGraf->MouseMove = [this](int b, int s, float x, float y) {
        TimeSeriesGraf_MouseMove(b, s, x, y);
    };
    c.ZoomButton->Click = [this] { ZoomButton_Click(); };
    c.cursors = std::make_unique<CursorPair>(CursorPair::Setup{
        c.TimeSeriesGraf, c.Line_Left, c.Line_Right, c.HScroll_Left, c.HScroll_Right, 10.0f,
        [](float h) { return std::pair<float, float>(0, h); }, [this] { CloseDependentWindows(); },
        [this] { updateSampleCount(); }});
    c.HScroll_Left->Change = [this] { ui_->cursors->HScroll_Left_Change(); };
    c.HScroll_Right->Change = [this] { ui_->cursors->HScroll_Right_Change(); };
}

void Form1::ShowSignGrafButton_Click() {
    Workbench& wb = workbench();
    Hide();
    SignalPlot& plot = wb.signalPlot();
    plot.Show();
    PlotSurface& graf = *plot.ui().TimeSeriesGraf;
    graf.Cls();
    wb.signalZoomForm().Unload();
    wb.wtmmForm().Unload();
    wb.wtmmHelp().Unload();
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    for (int i = 1; i <= Nrec - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (Nrec - 1), H * (SignalMax - Signal(i)) / SignalRange,
                  W * i / (Nrec - 1), H * (SignalMax - Signal(i + 1)) / SignalRange);
    plot.setCaption(plot.Caption() + "   File = " + InFileName + ",  Number of samples =" +
                    qs(NumText(Nrec)));
}

void SignalPlot::Form_Load() {
    SignalPlotControls& c = *ui_;
    SignalWork = SignalCopy;
    SignalWide.resize(SignalLength);
    Trend.resize(SignalLength);
    Residual.resize(SignalLength);
    for (int i = 1; i <= SignalLength; ++i) SignalWide(i) = SignalWork(i);
    c.cursors->reset();
    c.NofSamplesInside->setCaption("Number of samples between red lines = " +
                                   qs(NumText(SignalLength)));
    c.ReDrawButton->setEnabled(false);
    c.SaveTrendButton->setEnabled(false);
    c.ReturnInitial->setEnabled(false);
    c.SmoothRad->setText("0");
    TrendRadius = 0;
}

void SignalPlot::Form_Activate() {
    SignalPlotControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const double T0 = TimeOrigin(main.Time0_Text);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    DrawXMarks(*this, *c.TimeSeriesGraf, 0, *c.XmarksFrame, c.Xmarks, static_cast<float>(T0),
               static_cast<float>(T0 + (SignalLength - 1) * dT));
}

void SignalPlot::Form_Unload() { workbench().form1().Show(); }

void SignalPlot::CloseDependentWindows() {
    Workbench& wb = workbench();
    wb.signalZoomForm().Unload();
    wb.wtmmForm().Unload();
    wb.wtmmHelp().Unload();
    wb.heisBoxForm().Unload();
    wb.mfdfaForm().Unload();
    wb.mfdfaHelpForm().Unload();
}

void SignalPlot::updateSampleCount() {
    SignalPlotControls& c = *ui_;
    const std::int32_t m = EstimatedSamplesBetween(SignalLength, c.HScroll_Left->Value(),
                                                   c.HScroll_Right->Value(), c.HScroll_Left->Min(),
                                                   c.HScroll_Left->Max());
    c.NofSamplesInside->setCaption("Number of samples between red lines = " + qs(NumText(m)));
}

void SignalPlot::drawSignalFullHeight() {
    PlotSurface& graf = *ui_->TimeSeriesGraf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    const double range = SignalCeil - SignalFloor;
    const int n = SignalLength;
    graf.setForeColor(BasicColor(1));
    for (int i = 1; i <= n - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (n - 1), H * (SignalCeil - SignalWork(i)) / range,
                  W * i / (n - 1), H * (SignalCeil - SignalWork(i + 1)) / range);
}

void SignalPlot::ReDrawButton_Click() {
    SignalPlotControls& c = ui();
    c.ReturnInitial->setEnabled(false);
    c.ZoomButton->setEnabled(false);
    c.FrameHScroll->setEnabled(false);
    workbench().signalZoomForm().Unload();
    workbench().wtmmForm().Unload();
    workbench().wtmmHelp().Unload();

    TrendRadius = ClampTrendRadius(boxNumber(c.SmoothRad), SignalLength);
    c.SmoothRad->setText(qs(NumText(TrendRadius)));
    PlotSurface& graf = *c.TimeSeriesGraf;
    graf.Cls();
    graf.Refresh();
    if (TrendRadius == 0) {
        drawSignalFullHeight();
        c.SaveTrendButton->setEnabled(false);
        c.ZoomButton->setEnabled(true);
        c.ReturnInitial->setEnabled(false);
        c.FrameHScroll->setEnabled(true);
        return;
    }
    c.ReDrawButton->setEnabled(false);
    c.SaveTrendButton->setEnabled(false);
    std::int32_t count = SignalLength;
    if (c.LocPolynomOption->Value()) {
        std::int32_t order = ClampTrendOrder(boxNumber(c.TrendPolynomOrder), TrendRadius);
        c.TrendPolynomOrder->setText(qs(NumText(order)));
        dll::UniStepOrthSmooth_dll(SignalWide.first(), count, TrendRadius, order, Trend.first());
    } else {
        double radius = TrendRadius;
        dll::KernSmooth_dll(SignalWide.first(), Trend.first(), count, radius);
    }

    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    const int n = SignalLength;
    const double SC = SignalCeil, SR = SignalCeil - SignalFloor;
    auto upper = [&](double v) { return (H / 2) * (SC - v) / SR; };
    graf.setForeColor(QColor(0xC0, 0xC0, 0xC0));
    for (int i = 1; i <= n - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (n - 1), upper(SignalWork(i)), W * i / (n - 1),
                  upper(SignalWork(i + 1)));
    graf.setForeColor(BasicColor(1));
    for (int i = 1; i <= n - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (n - 1), upper(Trend(i)), W * i / (n - 1),
                  upper(Trend(i + 1)));

    ResidualMin = 1E+35f;
    ResidualMax = -1E+35f;
    for (int i = 1; i <= n; ++i) {
        Residual(i) = static_cast<float>(SignalWork(i) - Trend(i));
        ResidualMin = std::min(ResidualMin, Residual(i));
        ResidualMax = std::max(ResidualMax, Residual(i));
    }
    // A constant residual has no span of its own; it is drawn on the middle line.
    const double RR = ResidualMax > ResidualMin ? ResidualMax - ResidualMin : 1.0;
    const double RM = ResidualMax > ResidualMin ? ResidualMax : ResidualMax + 0.5;
    auto lower = [&](double r) { return H / 2 + (H / 2) * (RM - r) / RR; };
    for (int i = 1; i <= n - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (n - 1), lower(Residual(i)), W * i / (n - 1),
                  lower(Residual(i + 1)));

    c.ReDrawButton->setEnabled(true);
    c.SaveTrendButton->setEnabled(true);
    c.ZoomButton->setEnabled(true);
    c.ReturnInitial->setEnabled(true);
    c.FrameHScroll->setEnabled(true);
}

void SignalPlot::ReturnInitial_Click() {
    SignalPlotControls& c = ui();
    c.TimeSeriesGraf->Cls();
    c.TimeSeriesGraf->Refresh();
    c.TimeSeriesGraf->setEnabled(true);
    drawSignalFullHeight();
    c.SaveTrendButton->setEnabled(false);
    TrendRadius = 0;
    c.ReDrawButton->setEnabled(true);
    c.SmoothRad->setText("0");
    c.TrendPolynomOrder->setText("0");
    c.KernSmoothOption->setValue(true);
    c.ReturnInitial->setEnabled(false);
}

void SignalPlot::KernSmoothOption_Click() {
    SignalPlotControls& c = ui();
    c.TrendPolynomOrder->setText("0");
    c.TrendPolynomOrder->setEnabled(false);
    CloseDependentWindows();
}

void SignalPlot::LocPolynomOption_Click() {
    ui().TrendPolynomOrder->setEnabled(true);
    CloseDependentWindows();
}

void SignalPlot::SmoothRad_Change() {
    CloseDependentWindows();
    ui().ReDrawButton->setEnabled(true);
}

void SignalPlot::TrendPolynomOrder_Change() {
    CloseDependentWindows();
    ui().ReDrawButton->setEnabled(true);
}

void SignalPlot::SmoothRad_MouseMove() {
    SignalPlotControls& c = ui();
    c.SmoothRad->setToolTipText(c.KernSmoothOption->Value() ? "Kernel Smoothing Radius"
                                                            : "Radius of Moving Time Window");
}

void SignalPlot::TimeSeriesGraf_MouseMove(int, int, float x, float y) {
    SignalPlotControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double W = c.TimeSeriesGraf->ScaleWidth(), H = c.TimeSeriesGraf->ScaleHeight();
    const double s = x * (SignalLength - 1) / W + 1;
    const std::int32_t i = IntClamped(s);
    const double t = TimeOrigin(main.Time0_Text) +
                     (i - 1) * TextNum(main.DeltaT_Text->Text().toStdString());
    std::string tip = "Sample # " + NumText(i) + ", Time=" + NumText(t);
    if (TrendRadius == 0)
        tip += ", Value=" + NumText(static_cast<float>(SignalCeil - (SignalCeil - SignalFloor) * y / H));
    else if (y > H / 2)
        tip += ", Value=" + NumText(static_cast<float>(ResidualMax - 2 * (y - H / 2) *
                                                                        (ResidualMax - ResidualMin) / H));
    c.TimeSeriesGraf->setToolTipText(qs(tip));
}

void SignalPlot::SaveTrendButton_Click() {
    SignalPlotControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(main.Time0_Text);
    const std::string order =
        c.LocPolynomOption->Value() ? NumText(boxNumber(c.TrendPolynomOrder)) : std::string();
    const std::string stem = encodeFileName(SignalFilePath);
    const std::string radius = NumText(TrendRadius);
    auto save = [&](const std::string& name, auto value) {
        OutputFile file(name);
        file.printLines(SignalLength, [&](int i, std::string& out) {
            AppendTwoColumnRecord(out, value(i), T0 + dT * (i - 1));
        });
        if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    };
    save(names::Trend(stem, radius, order), [&](int i) { return static_cast<float>(Trend(i)); });
    save(names::Residual(stem, radius, order), [&](int i) { return Residual(i); });
    c.SaveTrendButton->setEnabled(false);
    workbench().form1().ui().File1->Refresh();
}

void SignalPlot::ZoomButton_Click() {
    SignalPlotControls& c = ui();
    Workbench& wb = workbench();
    const double W = c.TimeSeriesGraf->ScaleWidth();
    const std::vector<std::int32_t> rows =
        SamplesBetweenCursors(SignalLength, W, c.HScroll_Left->Value(), c.HScroll_Right->Value(),
                              c.HScroll_Left->Min(), c.HScroll_Left->Max());
    if (rows.size() < 32) {
        MsgBox("The time interval is too short\r\nPlease, increase the distance between vertical "
               "red lines",
               "Signal Zoom");
        return;
    }
    Hide();
    wb.wtmmForm().Unload();
    wb.wtmmHelp().Unload();
    wb.heisBoxForm().Unload();
    wb.mfdfaForm().Unload();
    wb.mfdfaHelpForm().Unload();

    const auto m = static_cast<int>(rows.size());
    SignalZoomForm& zoom = wb.signalZoomForm();
    zoom.FragFirstSample = static_cast<float>(rows.front());
    zoom.FragLastSample = static_cast<float>(rows.back());
    const double D = zoom.FragLastSample - zoom.FragFirstSample;
    // The table of the selected rows: signal, trend, residual.
    std::vector<float> signal(static_cast<std::size_t>(m)), trend(signal.size()), residual(signal.size());
    float SL = 1E+35f, SH = -1E+35f;
    for (int k = 0; k < m; ++k) {
        const int i = rows[static_cast<std::size_t>(k)];
        signal[static_cast<std::size_t>(k)] = SignalWork(i);
        trend[static_cast<std::size_t>(k)] = static_cast<float>(Trend(i));
        residual[static_cast<std::size_t>(k)] = Residual(i);
        SL = std::min(SL, SignalWork(i));
        SH = std::max(SH, SignalWork(i));
    }
    FragmentOut.resize(m);
    const bool withTrend = TrendRadius != 0;
    for (int k = 1; k <= m; ++k)
        FragmentOut(k) = withTrend ? residual[static_cast<std::size_t>(k - 1)]
                                   : signal[static_cast<std::size_t>(k - 1)];
    zoom.FragCount = m;
    zoom.FragInput = FragmentOut;
    if (!withTrend) {
        zoom.FragMin = SL;
        zoom.FragMax = SH;
    }
    zoom.Show();
    PlotSurface& graf = *zoom.ui().TimeSeriesZoom;
    graf.Cls();
    graf.setDrawWidth(1);
    zoom.setCaption("Fragment of the signal " + wb.form1().ui().File1->FileName() +
                    " of the length " + qs(NumText(m)) + " samples:");
    const double Wz = graf.ScaleWidth(), Hz = graf.ScaleHeight();
    auto x = [&](int k) { return Wz * (rows[static_cast<std::size_t>(k - 1)] - zoom.FragFirstSample) / D; };
    auto draw = [&](const std::vector<float>& column, auto y) {
        for (int k = 1; k <= m - 1; ++k)
            graf.Line(kLineSegment, x(k), y(column[static_cast<std::size_t>(k - 1)]), x(k + 1),
                      y(column[static_cast<std::size_t>(k)]));
    };
    // A constant stretch has no span of its own: it is drawn on the panel's middle.
    const double spanS = SH > SL ? SH - SL : 1.0, topS = SH > SL ? SH : SH + 0.5;
    if (!withTrend) {
        graf.setForeColor(BasicColor(1));
        draw(signal, [&](float v) { return Hz * (topS - v) / spanS; });
        return;
    }
    graf.setForeColor(QColor(0xC0, 0xC0, 0xC0));
    draw(signal, [&](float v) { return (Hz / 2) * (topS - v) / spanS; });
    graf.setForeColor(BasicColor(1));
    draw(trend, [&](float v) { return (Hz / 2) * (topS - v) / spanS; });
    zoom.FragMin = *std::min_element(residual.begin(), residual.end());
    zoom.FragMax = *std::max_element(residual.begin(), residual.end());
    const double spanR = zoom.FragMax > zoom.FragMin ? zoom.FragMax - zoom.FragMin : 1.0;
    const double topR = zoom.FragMax > zoom.FragMin ? zoom.FragMax : zoom.FragMax + 0.5;
    draw(residual, [&](float v) { return Hz / 2 + (Hz / 2) * (topR - v) / spanR; });
}

} // namespace tarnic
