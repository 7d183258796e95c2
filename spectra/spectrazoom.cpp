// The spectrum zoom and the band-pass filter.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "signal/signalplot.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"

#include <cmath>

namespace tarnic {
namespace {


constexpr double kZoomLeft = 1500, kZoomTop = 480, kZoomWidth = 8400, kZoomHeight = 5160;

} // namespace

SpectraZoomFormControls::SpectraZoomFormControls(FormWindow& w) {
    Label2 = new Label(&w, "");
    Label2->place(kZoomLeft, 120, 5400, 300);
    MakeMarks(&w, YmarksFrame, Ymarks, true);
    Picture1 = new PlotSurface(&w);
    Picture1->placeSurface(kZoomLeft, kZoomTop, kZoomWidth, kZoomHeight);
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    XmarksFrame->place(0, kZoomTop + kZoomHeight + 200, 10500, 330);
    Label1 = new Label(&w, "");
    Label1->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    Label1->place(kZoomLeft, kZoomTop + kZoomHeight + 570, kZoomWidth, 300);
    ZoomLabel = new Label(&w, "");
    ZoomLabel->setWordWrap(true);
    ZoomLabel->place(kZoomLeft, kZoomTop + kZoomHeight + 990, 5100, 420);
    BandPassButton = new Button(&w, "View Band Pass Signal");
    BandPassButton->place(kZoomLeft + kZoomWidth - 3000, kZoomTop + kZoomHeight + 960, 3000, 450);
    w.setWindowTitle("Spectra Zoom");
}

void SpectraZoomForm::connectHandlers() {
    setClientSize(10500, kZoomTop + kZoomHeight + 1530);
    ui_->BandPassButton->Click = [this] { BandPassButton_Click(); };
    ui_->Picture1->MouseMove = [this](int b, int s, float x, float y) { Picture1_MouseMove(b, s, x, y); };
}

void Form1::ZoomButton_Click() {
    Form1Controls& c = ui();
    const double W = c.Picture1->ScaleWidth();
    const double R = c.HScroll_Left->Max() - c.HScroll_Left->Min();
    const double xL = W * (c.HScroll_Left->Value() - c.HScroll_Left->Min()) / R;
    const double xR = W * (c.HScroll_Right->Value() - c.HScroll_Right->Min()) / R;
    std::vector<float> X, Y;
    for (int i = 2; i <= NfAR - 1; ++i) {
        const double x = W * (PlotX(i) - PlotXMin) / PlotXRange;
        if (xL <= x && x <= xR) X.push_back(PlotX(i)), Y.push_back(PlotY(i));
    }
    if (X.size() < 2) {
        MsgBox("The frequency band is too short\r\nPlease, increase the distance between vertical "
               "red lines",
               "Spectra Zoom");
        return;
    }
    Hide();
    SpectraZoomForm& zoom = workbench().spectraZoomForm();
    zoom.Show();
    PlotSurface& pic = *zoom.ui().Picture1;
    pic.Cls();
    const auto [xlo, xhi] = std::minmax_element(X.begin(), X.end());
    const auto [ylo, yhi] = std::minmax_element(Y.begin(), Y.end());
    const float XL = *xlo, XH = *xhi, YL = *ylo, YH = *yhi;
    const double Wz = pic.ScaleWidth(), Hz = pic.ScaleHeight();
    // Equal ends have no span of their own: such points stand in the middle.
    const double spanX = XH > XL ? XH - XL : 0, spanY = YH > YL ? YH - YL : 0;
    auto px = [&](float v) { return spanX > 0 ? Wz * (v - XL) / spanX : Wz / 2; };
    auto py = [&](float v) { return spanY > 0 ? Hz * (YH - v) / spanY : Hz / 2; };
    pic.setForeColor(BasicColor(1));
    for (std::size_t k = 0; k + 1 < X.size(); ++k)
        pic.Line(kLineSegment, px(X[k]), py(Y[k]), px(X[k + 1]), py(Y[k + 1]));
    zoom.ZoomYMin = YL;
    zoom.ZoomYMax = YH;
    zoom.ui().ZoomLabel->setCaption("File=" + InFileName + ",  Lrec=" + qs(NumText(Nrec)) +
                                    ", AR(" + qs(NumText(Nar)) + ") Estimate");
    zoom.ZoomXMin = XL;
    zoom.ZoomXMax = XH;
}

void SpectraZoomForm::Form_Activate() {
    SpectraZoomFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const bool logX = main.LogX_Check->Value() == 1, logY = main.LogY_Check->Value() == 1;
    const bool freq = main.FreqCheck->Value() == 1;
    Cls();
    DrawXMarks(*this, *c.Picture1, logX ? 1 : 0, *c.XmarksFrame, c.Xmarks, ZoomXMin, ZoomXMax);
    if (logY)
        DrawYMarks(*this, *c.Picture1, 1, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks,
                   static_cast<float>(ZoomYMin / std::log(10.0)),
                   static_cast<float>(ZoomYMax / std::log(10.0)));
    else
        DrawYMarks(*this, *c.Picture1, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, ZoomYMin, ZoomYMax);
    c.Label1->setCaption(freq ? (logX ? "Frequency (in log-scale)" : "Frequency")
                              : (logX ? "Periods (in log-scale)" : "Periods"));
    c.Label2->setCaption(logY ? "Power Spectra (in log-scale)" : "Power Spectra");
}

void SpectraZoomForm::Form_Unload() {
    workbench().bandPassForm().Unload();
    workbench().form1().Show();
}

void SpectraZoomForm::Picture1_MouseMove(int, int, float x, float) {
    SpectraZoomFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const float v = (ZoomXMax - ZoomXMin) * x / static_cast<float>(c.Picture1->ScaleWidth()) + ZoomXMin;
    const std::string number = main.LogX_Check->Value() == 1
                                   ? NumText(std::exp(static_cast<double>(v)))
                                   : NumText(v);
    c.Picture1->setToolTipText((main.FreqCheck->Value() == 1 ? "Frequency= " : "Period= ") +
                               qs(number));
}

void SpectraZoomForm::BandPassButton_Click() {
    SpectraZoomFormControls& c = ui();
    Workbench& wb = workbench();
    const Form1Controls& main = wb.form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    c.BandPassButton->setEnabled(false);
    const SignalPlot& plot = wb.signalPlot();
    BandSignal.resize(plot.SignalLength);
    std::copy_n(plot.SignalCopy.vector().begin(), std::min(plot.SignalLength, plot.SignalCopy.count()),
                BandSignal.vector().begin());
    double A = ZoomXMin, B = ZoomXMax;
    if (main.LogX_Check->Value() == 1) A = std::exp(A), B = std::exp(B);
    float tmin = 0, tmax = 0;
    if (main.FreqCheck->Value() == 0) {
        tmin = static_cast<float>(A / dT);
        tmax = static_cast<float>(B / dT);
    } else {
        tmin = static_cast<float>((1 / B) / dT);
        tmax = static_cast<float>((1 / A) / dT);
    }
    std::int32_t count = plot.SignalLength;
    dll::FourBandPass_dll(BandSignal.first(), count, tmin, tmax);
    count = std::clamp(count, 0, BandSignal.count());

    BandPassForm& band = wb.bandPassForm();
    band.BpfSignal = BandSignal;
    band.BpfCount = count;
    band.BpfTmin = tmin;
    band.BpfTmax = tmax;
    BandMin = 1E+35f;
    BandMax = -1E+35f;
    for (float v : BandSignal.span()) BandMin = std::min(BandMin, v), BandMax = std::max(BandMax, v);
    band.Show();
    band.ui().BandPassSaveButton->setEnabled(true);
    PlotSurface& graf = *band.ui().BandPassGraf;
    graf.Cls();
    graf.setForeColor(BasicColor(1));
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    const double span = BandMax > BandMin ? BandMax - BandMin : 1.0;
    const double top = BandMax > BandMin ? BandMax : BandMax + 0.5;
    for (int i = 1; i <= count - 1; ++i)
        graf.Line(kLineSegment, W * (i - 1) / (count - 1), H * (top - BandSignal(i)) / span,
                  W * i / (count - 1), H * (top - BandSignal(i + 1)) / span);
    band.setCaption("Band Pass Signal: Tmin=" + qs(NumText(tmin * dT)) + ", Tmax=" +
                    qs(NumText(tmax * dT)));
}

BandPassFormControls::BandPassFormControls(FormWindow& w) {
    MakeMarks(&w, YmarksFrame, Ymarks, true);
    BandPassGraf = new PlotSurface(&w);
    BandPassGraf->placeSurface(1500, 300, 9000, 4500);
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    XmarksFrame->place(0, 300 + 4500 + 200, 11100, 330);
    BandPassSaveButton = new Button(&w, "Save Band Pass Signal on the Disc");
    BandPassSaveButton->place(1500, 5520, 3600, 450);
    w.setWindowTitle("Band Pass Signal");
}

void BandPassForm::connectHandlers() {
    setClientSize(11100, 6150);
    ui_->BandPassSaveButton->Click = [this] { BandPassSaveButton_Click(); };
    ui_->BandPassGraf->MouseMove = [this](int b, int s, float x, float y) {
        BandPassGraf_MouseMove(b, s, x, y);
    };
}

void BandPassForm::Form_Activate() {
    BandPassFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const double T0 = TimeOrigin(main.Time0_Text);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const std::int32_t n = workbench().signalPlot().SignalLength;
    DrawXMarks(*this, *c.BandPassGraf, 0, *c.XmarksFrame, c.Xmarks, static_cast<float>(T0),
               static_cast<float>(T0 + (n - 1) * dT));
    BpfMin = workbench().spectraZoomForm().BandMin;
    BpfMax = workbench().spectraZoomForm().BandMax;
    DrawYMarks(*this, *c.BandPassGraf, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, BpfMin, BpfMax);
}

void BandPassForm::BandPassGraf_MouseMove(int, int, float x, float y) {
    BandPassFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double T0 = TimeOrigin(main.Time0_Text);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const std::int32_t n = workbench().signalPlot().SignalLength;
    const double W = c.BandPassGraf->ScaleWidth(), H = c.BandPassGraf->ScaleHeight();
    const double s = 1 + x * (n - 1) / W;
    const auto value = static_cast<float>(BpfMax - (BpfMax - BpfMin) * y / H);
    const std::int32_t i = IntClamped(s);
    c.BandPassGraf->setToolTipText(qs("Sample # " + NumText(i) + ", Time=" +
                                      NumText(T0 + (i - 1) * dT) + ", Value=" + NumText(value)));
}

void BandPassForm::BandPassSaveButton_Click() {
    BandPassFormControls& c = ui();
    c.BandPassSaveButton->setEnabled(false);
    const Form1Controls& main = workbench().form1().ui();
    const double T0 = TimeOrigin(main.Time0_Text);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    setForeColor(BasicColor(1));
    const double H = c.BandPassGraf->ScaleHeight();
    Line(kLineSegment, c.BandPassGraf->Left(), c.BandPassGraf->Top() + H, c.BandPassGraf->Left(),
         c.BandPassGraf->Top() + H + 200);
    OutputFile file(names::BandPass(encodeFileName(BpfBaseName), BpfTmin * dT, BpfTmax * dT));
    file.printLines(BpfCount, [&](int i, std::string& out) {
        AppendTwoColumnRecord(out, BpfSignal(i), T0 + dT * (i - 1));
    });
    if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    workbench().form1().ui().File1->Refresh();
}

} // namespace tarnic
