// The wavelet-packet decomposition of the whole signal and its three windows:
// the component map, the packet spectra and the wavelet's graph.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavelogic.h"
#include "wavelet/wavespectraform.h"

#include <cmath>

namespace tarnic {
// ---- Form1: the options, the level and the decomposition ----

void Form1::WaveletChoice_Change() {
    workbench().waveDecForm().Unload();
    workbench().waveSpectForm().Unload();
    workbench().waveBasisForm().Unload();
}

void Form1::WaveletChoice_MouseMove(QWidget* control) {
    Form1Controls& c = ui();
    const double L = boxNumber(c.LevMaxText);
    auto promise = [&](double count, const char* what) {
        return "It will be " + qs(NumText(count)) + what;
    };
    if (control == c.LevMaxText)
        c.LevMaxText->setToolTipText("Set Maximum Detail Level #: 1 <= * <= " +
                                     qs(NumText(LevPow - 4)));
    else if (control == c.Option1)
        c.Option1->setToolTipText(promise(L, " detail levels"));
    else if (control == c.Option2)
        c.Option2->setToolTipText(promise(2 * L, " sub-levels"));
    else if (control == c.Option3)
        c.Option3->setToolTipText(promise(4 * L, " sub-levels"));
    else if (control == c.Option4)
        c.Option4->setToolTipText(promise(8 * L, " sub-levels"));
}

void Form1::WavePackButton_Click() {
    Form1Controls& c = ui();
    Workbench& wb = workbench();
    Hide();
    LevPow = 1;
    LevPowLength = 2;
    while (LevPowLength < Nrec) LevPowLength = 1 << ++LevPow;
    std::int32_t levMin = 1;
    LevMax = ClampDetailLevel(boxNumber(c.LevMaxText), LevPow);
    c.LevMaxText->setText(qs(NumText(LevMax)));
    std::int32_t splitCoef = c.Option1->Value() ? 1 : c.Option2->Value() ? 2 : c.Option3->Value() ? 4 : 8;
    WaveSpectForm& spect = wb.waveSpectForm();
    spect.SplitCoef = splitCoef;
    std::int32_t componentCount = PacketComponents(splitCoef, LevMax);
    if (PacketVolume(componentCount, LevPowLength) > kMaxPacketVolume) {
        MsgBox("For this combination of split coefficient, maximum detail level and signal "
               "length\r\nWDC is impossible because of huge volume of output information\r\n"
               "Please, downsample time series or choose the less maximum detail level and split "
               "coefficient",
               "WDC-analysis");
        Show();
        return;
    }
    WdcTmin.resize(componentCount);
    WdcTmax.resize(componentCount);
    WdcMean.resize(componentCount);
    WdcScale.resize(componentCount);
    WdcPower.resize(componentCount);
    WdcData.resize(componentCount * Nrec);
    std::int32_t waveCode = 0;
    dll::OrthWavePack_dll(Signal.first(), Nrec, splitCoef, levMin, LevMax, componentCount,
                          WdcTmin.first(), WdcTmax.first(), WdcData.first(), waveCode,
                          WdcMean.first(), WdcScale.first(), WdcPower.first());

    WaveDecForm& dec = wb.waveDecForm();
    dec.Nrec = Nrec;
    dec.ComponentCount = componentCount;
    dec.WdcTmin = WdcTmin;
    dec.WdcTmax = WdcTmax;
    dec.WdcMean = WdcMean;
    dec.WdcScale = WdcScale;
    dec.WdcData = WdcData;
    spect.ComponentCount = componentCount;
    spect.WdcTmin = WdcTmin;
    spect.WdcTmax = WdcTmax;
    spect.WdcPower = WdcPower;

    WaveBasisForm& basis = wb.waveBasisForm();
    dec.Show();
    spect.Show();
    basis.Show();
    const QString order = qs(NumText(WaveletOrder(waveCode)));
    if (IsSymlet(waveCode)) {
        dec.setCaption("Wavelet-Packet Decomposition by Orthogonal Daubechies Symlet of the order" + order);
        basis.setCaption("Symlet Basis Function Form for the order" + order);
    } else {
        dec.setCaption("Wavelet-Packet Decomposition by Orthogonal Daubechies Wavelet of the order" + order);
        basis.setCaption("Wavelet Basis Function Form for the order" + order);
    }

    std::int32_t basisLength = 2048;
    WaveBasis.resize(basisLength);
    dll::WaveBasisGraf_dll(waveCode, basisLength, WaveBasis.first());
    PlotSurface& graf = *basis.ui().WaveletBasisFunctionGraf;
    graf.Cls();
    double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    graf.setForeColor(BasicColor(1));
    float vMax = -1E+35f, vMin = 1E+35f;
    for (float v : WaveBasis.span()) vMax = std::max(vMax, v), vMin = std::min(vMin, v);
    const double span = vMax > vMin ? vMax - vMin : 1.0;
    for (int i = 1; i <= 2047; ++i)
        graf.Line(kLineSegment, W * (i - 1) / 2047, H * (vMax - WaveBasis(i)) / span, W * i / 2047,
                  H * (vMax - WaveBasis(i + 1)) / span);

    PlotSurface& map = *dec.ui().WaveDecGraf;
    map.Cls();
    W = map.ScaleWidth();
    H = map.ScaleHeight();
    const double B = H / componentCount;
    map.setForeColor(BasicColor(1));
    for (int k = 1; k <= componentCount; ++k) {
        const double T = (k - 1) * B;
        const auto base = static_cast<std::size_t>(k - 1) * static_cast<std::size_t>(Nrec);
        for (int i = 1; i <= Nrec - 1; ++i)
            map.Line(kLineSegment, W * (i - 1) / (Nrec - 1), T + B * (1 - WdcData.vector()[base + i - 1]),
                     W * i / (Nrec - 1), T + B * (1 - WdcData.vector()[base + i]));
    }
}

// ---- WaveDecForm ----

WaveDecFormControls::WaveDecFormControls(FormWindow& w) {
    WaveDecGraf = new PlotSurface(&w);
    WaveDecGraf->placeSurface(600, 120, 13455, 9255);
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    XmarksFrame->place(0, 120 + 9255 + 200, 14655, 330);
    Label1 = new Label(&w, "Double Click Wavelet Decomposition Component to save it on the disc");
    Label1->setForeColor(QColor(0x80, 0x00, 0x80));
    Label1->place(600, 120 + 9255 + 600, 13455, 300);
    w.setWindowTitle("Wavelet-Packet Decomposition by Orthogonal Wavelets");
}

void WaveDecForm::connectHandlers() {
    setClientSize(14655, 120 + 9255 + 1020);
    ui_->WaveDecGraf->MouseMove = [this](int b, int s, float x, float y) {
        WaveDecGraf_MouseMove(b, s, x, y);
    };
    ui_->WaveDecGraf->DblClick = [this] { WaveDecGraf_DblClick(); };
}

void WaveDecForm::Form_Load() {
    tmin_ = WdcTmin;
    tmax_ = WdcTmax;
    mean_ = WdcMean;
    scale_ = WdcScale;
    data_ = WdcData;
    SelectedComponent = 0;
    ui_->Label1->setVisible(false);
}

void WaveDecForm::Form_Activate() {
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double t0 = TimeOrigin(main.Time0_Text);
    DrawXMarks(*this, *ui_->WaveDecGraf, 0, *ui_->XmarksFrame, ui_->Xmarks, static_cast<float>(t0),
               static_cast<float>(t0 + (Nrec - 1) * dT));
}

void WaveDecForm::Form_Unload() {
    workbench().waveBasisForm().Unload();
    workbench().waveSpectForm().Unload();
    workbench().form1().Show();
}

void WaveDecForm::Form_MouseMove() { ui().Label1->setVisible(false); }

void WaveDecForm::WaveDecGraf_MouseMove(int, int, float x, float y) {
    WaveDecFormControls& c = ui();
    c.Label1->setVisible(true);
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double s = x * (Nrec - 1) / c.WaveDecGraf->ScaleWidth() + 1;
    const std::int32_t n = IntClamped(s);
    std::string tip = "Sample # " + NumText(n) + ", Time=" +
                      NumText(TimeOrigin(main.Time0_Text) + (n - 1) * dT);
    const double B = c.WaveDecGraf->ScaleHeight() / ComponentCount;
    for (int k = 1; k <= ComponentCount; ++k) {
        SelectedComponent = k;
        if ((k - 1) * B <= y && y <= (k - 1) * B + B) {
            tip += ", Tmin=" + NumText(dT * tmin_(k)) + ", Tmax=" + NumText(dT * tmax_(k));
            break;
        }
    }
    c.WaveDecGraf->setToolTipText(qs(tip));
}

void WaveDecForm::WaveDecGraf_DblClick() {
    const int k = SelectedComponent;
    if (k < 1 || k > ComponentCount) return;
    std::vector<float> component(static_cast<std::size_t>(Nrec));
    const auto base = static_cast<std::size_t>(k - 1) * static_cast<std::size_t>(Nrec);
    for (std::size_t i = 0; i < component.size(); ++i)
        component[i] = scale_(k) * data_.vector()[base + i] + mean_(k);
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double t0 = TimeOrigin(main.Time0_Text);
    OutputFile file(names::Component(encodeFileName(WdcStem), dT * tmin_(k), dT * tmax_(k)));
    file.printLines(Nrec, [&](int i, std::string& out) {
        AppendTwoColumnRecord(out, component[static_cast<std::size_t>(i - 1)], t0 + dT * (i - 1));
    });
    if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    workbench().form1().ui().File1->Refresh();
}

// ---- WaveSpectForm ----

WaveSpectFormControls::WaveSpectFormControls(FormWindow& w) {
    Label2 = new Label(&w, "");
    Label2->place(1500, 120, 8535, 330);
    MakeMarks(&w, YmarksFrame, Ymarks, true);
    WaveSpectraGraf = new PlotSurface(&w);
    WaveSpectraGraf->placeSurface(1500, 600, 8535, 6495);
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    Label1 = new Label(&w, "");
    Label1->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    Label1->place(1500, 600 + 6495 + 570, 8535, 300);
    FrameSpectraView = new Frame(&w, "Choose the axis type for viewing spectra");
    FrameSpectraView->place(10440, 600, 3960, 1560);
    FreqCheck = new CheckBox(FrameSpectraView, "Freq", false);
    FreqCheck->place(240, 360, 2700, 330);
    LogX_Check = new CheckBox(FrameSpectraView, "Lg X-axis", true);
    LogX_Check->place(240, 750, 2700, 330);
    LogY_Check = new CheckBox(FrameSpectraView, "Lg Y-axis", true);
    LogY_Check->place(240, 1140, 2700, 330);
    SaveSpButton = new Button(&w, "Save Spectra: <Freq, Period, Spect>");
    SaveSpButton->place(10440, 2340, 3960, 600);
    w.setWindowTitle(WaveSpectForm::kCaption);
}

void WaveSpectForm::connectHandlers() {
    setClientSize(14640, 600 + 6495 + 1020);
    WaveSpectFormControls& c = *ui_;
    c.FreqCheck->Click = [this] { PlotSpectraWave(); };
    c.LogX_Check->Click = [this] { PlotSpectraWave(); };
    c.LogY_Check->Click = [this] { PlotSpectraWave(); };
    c.SaveSpButton->Click = [this] { SaveSpButton_Click(); };
    c.WaveSpectraGraf->MouseMove = [this](int b, int s, float x, float y) {
        WaveSpectraGraf_MouseMove(b, s, x, y);
    };
}

void WaveSpectForm::Form_Load() {
    tmin_ = WdcTmin;
    tmax_ = WdcTmax;
    power_ = WdcPower;
    BandFreq.resize(ComponentCount);
    const double dT = TextNum(workbench().form1().ui().DeltaT_Text->Text().toStdString());
    for (int k = 1; k <= ComponentCount; ++k)
        BandFreq(k) = static_cast<float>((1 / (tmax_(k) * dT) + 1 / (tmin_(k) * dT)) / 2);
    PlotSpectraWave();
}

void WaveSpectForm::PlotSpectraWave() {
    WaveSpectFormControls& c = ui();
    PlotSurface& graf = *c.WaveSpectraGraf;
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    Array1<float> X = BandFreq, Y = power_;
    graf.Cls();
    graf.setEnabled(true);
    if (c.FreqCheck->Value() == 0)
        for (float& v : X.span()) v = 1 / v;
    if (c.LogX_Check->Value() == 1)
        for (float& v : X.span()) v = std::log(v);
    if (c.LogY_Check->Value() == 1)
        for (float& v : Y.span()) v = std::log(v);
    XMinShown = 1E+35f;
    XMaxShown = -1E+35f;
    float yMin = 1E+35f, yMax = -1E+35f;
    for (int k = 1; k <= ComponentCount; ++k) {
        XMinShown = std::min(XMinShown, X(k)), XMaxShown = std::max(XMaxShown, X(k));
        yMin = std::min(yMin, Y(k)), yMax = std::max(yMax, Y(k));
    }
    // Coinciding values have no span of their own: they are drawn in the middle.
    const double XR = XMaxShown - XMinShown, YR = yMax - yMin;
    auto px = [&](float v) { return XR > 0 ? W * (v - XMinShown) / XR : W / 2; };
    auto py = [&](float v) { return YR > 0 ? H * (yMax - v) / YR : H / 2; };
    graf.setForeColor(BasicColor(1));
    for (int k = 1; k <= ComponentCount - 1; ++k)
        graf.Line(kLineSegment, px(X(k)), py(Y(k)), px(X(k + 1)), py(Y(k + 1)));
    const bool logX = c.LogX_Check->Value() == 1, logY = c.LogY_Check->Value() == 1;
    Cls();
    DrawXMarks(*this, graf, logX ? 1 : 0, *c.XmarksFrame, c.Xmarks, XMinShown, XMaxShown);
    if (logY)
        DrawYMarks(*this, graf, 1, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks,
                   static_cast<float>(yMin / std::log(10.0)), static_cast<float>(yMax / std::log(10.0)));
    else
        DrawYMarks(*this, graf, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, yMin, yMax);
    const bool freq = c.FreqCheck->Value() == 1;
    c.Label1->setCaption(freq ? (logX ? "Frequency (in log-scale)" : "Frequency")
                              : (logX ? "Time Scale (in log-scale)" : "Time Scale"));
    c.Label2->setCaption(QString(logY ? "Wavelet-Packet Power Spectra (in log-scale)"
                                      : "Wavelet-Packet Power Spectra") +
                         ", # of levels=" + qs(NumText(ComponentCount / std::max(SplitCoef, 1))) +
                         ", splitted into" + qs(NumText(SplitCoef)));
}

void WaveSpectForm::WaveSpectraGraf_MouseMove(int, int, float x, float) {
    WaveSpectFormControls& c = ui();
    const float v = (XMaxShown - XMinShown) * x / static_cast<float>(c.WaveSpectraGraf->ScaleWidth()) +
                    XMinShown;
    const std::string number = c.LogX_Check->Value() == 1 ? NumText(std::exp(static_cast<double>(v)))
                                                          : NumText(v);
    c.WaveSpectraGraf->setToolTipText((c.FreqCheck->Value() == 1 ? "Frequency= " : "Period= ") +
                                      qs(number));
}

void WaveSpectForm::SaveSpButton_Click() {
    // Every failing step is passed over silently.
    Form1Controls& main = workbench().form1().ui();
    const std::string D = encodeFileName(workbench().form1().OutputFolder());
    makeSubdirectory(D, kSpectraDir);
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    OutputFile file(names::WavePacketSpectrum(D, encodeFileName(WaveSpFileName)));
    for (int k = 1; k <= ComponentCount; ++k)
        file.print(ZoneRecord(NumText(BandFreq(k)), NumText(1.0 / BandFreq(k)),
                              NumText(dT * power_(k))));
    file.close();
    main.Dir1->Refresh();
    main.File1->Refresh();
    ui().SaveSpButton->setEnabled(false);
}

// ---- WaveBasisForm ----

WaveBasisFormControls::WaveBasisFormControls(FormWindow& w) {
    WaveletBasisFunctionGraf = new PlotSurface(&w);
    WaveletBasisFunctionGraf->placeSurface(120, 120, 6495, 4935);
    w.setWindowTitle("Wavelet Baisis Function");
}

void WaveBasisForm::connectHandlers() { setClientSize(6735, 5175); }

} // namespace tarnic
