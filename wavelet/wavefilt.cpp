// Wavelet threshold filtering of the whole signal and the zoom of its result.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"
#include "wavelet/waveletchoice.h"
#include "wavelet/wavelogic.h"

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
    return b;
}

constexpr double kGrafLeft = 1500, kGrafTop = 240, kGrafWidth = 12375, kGrafHeight = 5655;
// The row of the Donoho-Johnstone level, below the row of the wavelet and level boxes.
constexpr double kDonohoRowOffset = 1500;

} // namespace

void Form1::WaveFiltButton_Click() {
    Hide();
    WaveFiltForm& filt = workbench().waveFiltForm();
    filt.Nrec = Nrec;
    filt.Signal = Signal;
    filt.SignalMin = SignalMin;
    filt.SignalMax = SignalMax;
    filt.SignalRange = SignalRange;
    filt.Show();
    filt.setCaption(filt.Caption() + "   File = " + InFileName +
                    ",  Number of samples =" + qs(NumText(Nrec)));
}

WaveFiltFormControls::WaveFiltFormControls(FormWindow& w) {
    MakeMarks(&w, YmarksFrame, Ymarks, true);
    WaveFiltGraf = new PlotSurface(&w);
    WaveFiltGraf->placeSurface(kGrafLeft, kGrafTop, kGrafWidth, kGrafHeight);
    Line_Left = &WaveFiltGraf->addLine(QColor(0xFF, 0, 0));
    Line_Right = &WaveFiltGraf->addLine(QColor(0xFF, 0, 0));
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    const double below = kGrafTop + kGrafHeight + 600;
    FrameHScroll = new Frame(&w, "Signal Zooming Scroll Bars");
    FrameHScroll->place(kGrafLeft, below, kGrafWidth, 840);
    HScroll_Left = new ScrollBar(FrameHScroll, 0, 32767, 0);
    HScroll_Left->place(60, 255, kGrafWidth - 120, 255);
    HScroll_Right = new ScrollBar(FrameHScroll, 0, 32767, 32767);
    HScroll_Right->place(60, 540, kGrafWidth - 120, 255);
    Label1 = label(&w, "Signal Zooming Scroll Bars: choose time interval and press <Zoom Graf>",
                   kGrafLeft, below + 900, kGrafWidth, 300);

    const double row = below + 1320;
    ChooseManual = new Frame(&w, "Select wavelet : ");
    ChooseManual->place(kGrafLeft, row, 5280, 1380);
    DaubOption = new OptionButton(ChooseManual, "Usual Daubechies'", true);
    DaubOption->place(120, 330, 2100, 300);
    SymletOption = new OptionButton(ChooseManual, "Symlet", false);
    SymletOption->place(120, 840, 2100, 300);
    Label2 = label(ChooseManual, "Daub wavelet order, # of coeff.", 2280, 240, 2100, 480);
    Label2->setWordWrap(true);
    DaubOrder = new TextBox(ChooseManual, "4");
    DaubOrder->place(4440, 300, 720, 330);
    DaubOrder->setToolTipText("2,4,6,8,10,12,14,16,18,20");
    Label3 = label(ChooseManual, "Sym wavelet order, # of coeff.", 2280, 750, 2100, 480);
    Label3->setWordWrap(true);
    SymOrder = new TextBox(ChooseManual, "8");
    SymOrder->place(4440, 810, 720, 330);
    SymOrder->setToolTipText("8,10,12,14,16,18,20");

    // Beside the wavelet choice the level in force and the three actions; the
    // Donoho-Johnstone level and its button on a row of their own below, where
    // the level's line has room for any number at 9 points.
    const double mid = kGrafLeft + 5400;
    SetThreshLevel = new Frame(&w, "Set Thresholding Level : ");
    SetThreshLevel->place(mid, row, 3120, 1380);
    Label5 = label(SetThreshLevel, "Set Threshold Level, 0 < * < 1 :", 120, 300, 2880, 300);
    ThreshLevel = new TextBox(SetThreshLevel, "");
    ThreshLevel->place(120, 720, 1800, 330);
    ThreshLevel->setToolTipText("Set Threshold Level, 0 < * < 1");

    const double right = kGrafLeft + kGrafWidth - 2640;
    LaunchThreshButton = button(&w, "Launch Threshold Filter", right, row + 30, 2640, 420);
    ZoomGrafButton = button(&w, "Zoom Graf", right, row + 480, 2640, 420);
    SaveThreshButton = button(&w, "Save the results", right, row + 930, 2640, 420);

    const double donoho = row + kDonohoRowOffset;
    LaunchDonoho = button(&w, "Launch Donoho-Johnstone Level", kGrafLeft, donoho, 3300, 450);
    Label4 = label(&w, "Donoho-Johnstone level = ", kGrafLeft + 3420, donoho + 75, 6000, 300);
    w.setWindowTitle(WaveFiltForm::kCaption);
}

void WaveFiltForm::connectHandlers() {
    setClientSize(kGrafLeft + kGrafWidth + 600,
                  kGrafTop + kGrafHeight + 600 + 1320 + kDonohoRowOffset + 450 + 240);
    WaveFiltFormControls& c = *ui_;
    c.DaubOption->Click = [this] { DaubOption_Click(); };
    c.SymletOption->Click = [this] { SymletOption_Click(); };
    c.DaubOrder->Change = [this] { Order_Change(); };
    c.SymOrder->Change = [this] { Order_Change(); };
    c.ThreshLevel->Change = [this] { ThreshLevel_Change(); };
    c.LaunchDonoho->Click = [this] { LaunchDonoho_Click(); };
    c.LaunchThreshButton->Click = [this] { LaunchThreshButton_Click(); };
    c.SaveThreshButton->Click = [this] { SaveThreshButton_Click(); };
    c.ZoomGrafButton->Click = [this] { ZoomGrafButton_Click(); };
    c.WaveFiltGraf->MouseMove = [this](int b, int s, float x, float y) {
        WaveFiltGraf_MouseMove(b, s, x, y);
    };
    c.cursors = std::make_unique<CursorPair>(
        CursorPair::Setup{c.WaveFiltGraf,
                          c.Line_Left,
                          c.Line_Right,
                          c.HScroll_Left,
                          c.HScroll_Right,
                          10.0f,
                          [](float h) { return std::pair<float, float>(0, h); },
                          [this] { workbench().waveFiltZoomForm().Unload(); },
                          {}});
    c.HScroll_Left->Change = [this] { ui_->cursors->HScroll_Left_Change(); };
    c.HScroll_Right->Change = [this] { ui_->cursors->HScroll_Right_Change(); };
}

void WaveFiltForm::Form_Load() {
    WaveFiltFormControls& c = *ui_;
    c.LaunchThreshButton->setEnabled(false);
    c.ZoomGrafButton->setEnabled(false);
    c.SaveThreshButton->setEnabled(false);
    c.WaveFiltGraf->setEnabled(false);
    c.LaunchDonoho->setEnabled(true);
    c.cursors->reset();
    FiltInput = Signal;
    DaubDefault = 4;
    SymDefault = 8;
    std::int32_t code = 0, length = Nrec;
    dll::Ford_dll(FiltInput.first(), length, code);
    ShowWaveletChoice(code, *c.DaubOption, *c.SymletOption, *c.DaubOrder, *c.SymOrder, DaubDefault,
                      SymDefault);
}

void WaveFiltForm::Form_Activate() {
    WaveFiltFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double t0 = TimeOrigin(main.Time0_Text);
    Cls();
    DrawXMarks(*this, *c.WaveFiltGraf, 0, *c.XmarksFrame, c.Xmarks, static_cast<float>(t0),
               static_cast<float>(t0 + (Nrec - 1) * dT));
    DrawYMarks(*this, *c.WaveFiltGraf, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, SignalMin,
               SignalMax);
}

void WaveFiltForm::Form_Unload() {
    workbench().waveFiltZoomForm().Unload();
    workbench().form1().Show();
}

void WaveFiltForm::invalidateLevel() {
    WaveFiltFormControls& c = ui();
    c.LaunchThreshButton->setEnabled(false);
    c.LaunchDonoho->setEnabled(true);
    c.ZoomGrafButton->setEnabled(false);
    c.SaveThreshButton->setEnabled(false);
    c.ThreshLevel->setText("");
    c.Label4->setCaption("Donoho-Johnstone level = ");
}

void WaveFiltForm::DaubOption_Click() {
    WaveFiltFormControls& c = ui();
    workbench().waveFiltZoomForm().Unload();
    c.SymOrder->setText("");
    c.DaubOrder->setText(qs(NumText(DaubDefault)));
    invalidateLevel();
}

void WaveFiltForm::SymletOption_Click() {
    WaveFiltFormControls& c = ui();
    workbench().waveFiltZoomForm().Unload();
    c.SymOrder->setText(qs(NumText(SymDefault)));
    c.DaubOrder->setText("");
    invalidateLevel();
}

void WaveFiltForm::Order_Change() {
    workbench().waveFiltZoomForm().Unload();
    invalidateLevel();
}

void WaveFiltForm::ThreshLevel_Change() {
    WaveFiltFormControls& c = ui();
    c.LaunchThreshButton->setEnabled(true);
    c.ZoomGrafButton->setEnabled(false);
    c.SaveThreshButton->setEnabled(false);
}

void WaveFiltForm::LaunchDonoho_Click() {
    WaveFiltFormControls& c = ui();
    if (c.DaubOption->Value()) {
        const std::int32_t n = ParseWaveletOrder(boxNumber(c.DaubOrder), DaubDefault, 2, 20);
        c.DaubOrder->setText(qs(NumText(n)));
        c.SymOrder->setText("");
        WaveCode = n;
    } else {
        const std::int32_t n = ParseWaveletOrder(boxNumber(c.SymOrder), SymDefault, 8, 20);
        c.SymOrder->setText(qs(NumText(n)));
        c.DaubOrder->setText("");
        WaveCode = 100 + n;
    }
    std::int32_t nrec = Nrec;
    dll::DonohoLevel_dll(FiltInput.first(), nrec, WaveCode, DonohoValue);
    c.Label4->setCaption("Donoho-Johnstone level = " + qs(NumText(DonohoValue)));
    c.ThreshLevel->setText(qs(NumText(DonohoValue)));
    c.LaunchThreshButton->setEnabled(true);
    c.LaunchDonoho->setEnabled(false);
}

void WaveFiltForm::LaunchThreshButton_Click() {
    WaveFiltFormControls& c = ui();
    c.LaunchThreshButton->setEnabled(false);
    FiltResult.resize(Nrec);
    ThreshValue = ThresholdShare(boxNumber(c.ThreshLevel), DonohoValue, Nrec);
    c.ThreshLevel->setText(qs(NumText(ThreshValue)));
    std::int32_t nrec = Nrec;
    dll::WaveFiltThresh_dll(FiltInput.first(), FiltResult.first(), nrec, WaveCode, ThreshValue);
    PlotSurface& graf = *c.WaveFiltGraf;
    graf.Cls();
    graf.Refresh();
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    auto draw = [&](const Array1<float>& v) {
        for (int i = 1; i <= Nrec - 1; ++i)
            graf.Line(kLineSegment, W * (i - 1) / (Nrec - 1), H * (SignalMax - v(i)) / SignalRange,
                      W * i / (Nrec - 1), H * (SignalMax - v(i + 1)) / SignalRange);
    };
    graf.setForeColor(QColor(0xC0, 0xC0, 0xC0));
    draw(FiltInput);
    graf.setForeColor(BasicColor(1));
    draw(FiltResult);
    c.ZoomGrafButton->setEnabled(true);
    c.SaveThreshButton->setEnabled(true);
    graf.setEnabled(true);
}

void WaveFiltForm::SaveThreshButton_Click() {
    WaveFiltFormControls& c = ui();
    c.SaveThreshButton->setEnabled(false);
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double t0 = TimeOrigin(main.Time0_Text);
    const bool daub = c.DaubOption->Value();
    const std::int32_t order = daub ? WaveCode : WaveCode - 100;
    const std::string level = c.ThreshLevel->Text().toStdString();
    const std::string stem = encodeFileName(ThreshFileStem);
    auto save = [&](const std::string& name, auto value) {
        OutputFile file(name);
        file.printLines(Nrec, [&](int i, std::string& out) {
            AppendTwoColumnRecord(out, value(i), t0 + dT * (i - 1));
        });
        if (!file.close()) ReportUnwrittenFile(decodeFileName(file.path()), qs(file.error()));
    };
    save(names::ThresholdMain(stem, level, !daub, order), [&](int i) { return FiltResult(i); });
    save(names::ThresholdResidual(stem, level, !daub, order),
         [&](int i) { return FiltInput(i) - FiltResult(i); });
    main.File1->Refresh();
}

void WaveFiltForm::WaveFiltGraf_MouseMove(int, int, float x, float y) {
    WaveFiltFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const double s = x * (Nrec - 1) / c.WaveFiltGraf->ScaleWidth() + 1;
    const std::int32_t n = IntClamped(s);
    const auto value =
        static_cast<float>(SignalMax - (SignalMax - SignalMin) * y /
                                           static_cast<float>(c.WaveFiltGraf->ScaleHeight()));
    const double time = TimeOrigin(main.Time0_Text) +
                        (n - 1) * TextNum(main.DeltaT_Text->Text().toStdString());
    c.WaveFiltGraf->setToolTipText(
        qs("Sample # " + NumText(n) + ", Time=" + NumText(time) + ", Value=" + NumText(value)));
}

void WaveFiltForm::ZoomGrafButton_Click() {
    WaveFiltFormControls& c = ui();
    const double W = c.WaveFiltGraf->ScaleWidth();
    const double R = c.HScroll_Left->Max() - c.HScroll_Left->Min();
    const double A = W * (c.HScroll_Left->Value() - c.HScroll_Left->Min()) / R;
    const double B = W * (c.HScroll_Right->Value() - c.HScroll_Right->Min()) / R;
    std::vector<int> rows;
    for (int i = 1; i <= Nrec; ++i) {
        const double x = W * (i - 1) / (Nrec - 1);
        if (A <= x && x <= B) rows.push_back(i);
    }
    if (rows.size() < 4) {
        MsgBox("The time interval is too short\r\nPlease, increase the distance between vertical "
               "red lines",
               "WaveFilt Zoom");
        return;
    }
    WaveFiltZoomForm& zoom = workbench().waveFiltZoomForm();
    zoom.ZoomFirstSample = static_cast<float>(rows.front());
    zoom.ZoomLastSample = static_cast<float>(rows.back());
    zoom.ZoomMin = 1E+35f;
    zoom.ZoomMax = -1E+35f;
    for (int i : rows)
        zoom.ZoomMin = std::min(zoom.ZoomMin, FiltInput(i)),
        zoom.ZoomMax = std::max(zoom.ZoomMax, FiltInput(i));
    zoom.Show();
    PlotSurface& graf = *zoom.ui().WaveFiltZoomGraf;
    graf.Cls();
    const double W2 = graf.ScaleWidth(), H2 = graf.ScaleHeight();
    zoom.setCaption("Zoom of the Wavelet Threshold Filter Result, fragment of the file " +
                    workbench().form1().ui().File1->FileName() + " of the length " +
                    qs(NumText(static_cast<std::int32_t>(rows.size()))) + " samples:");
    // A fragment of equal samples has no span of its own: it is drawn in the middle.
    const double span = zoom.ZoomMax > zoom.ZoomMin ? zoom.ZoomMax - zoom.ZoomMin : 1.0;
    const double top = zoom.ZoomMax > zoom.ZoomMin ? zoom.ZoomMax : zoom.ZoomMax + 0.5;
    const double D = zoom.ZoomLastSample - zoom.ZoomFirstSample;
    auto draw = [&](const Array1<float>& v) {
        for (std::size_t j = 0; j + 1 < rows.size(); ++j)
            graf.Line(kLineSegment, W2 * (rows[j] - zoom.ZoomFirstSample) / D,
                      H2 * (top - v(rows[j])) / span, W2 * (rows[j + 1] - zoom.ZoomFirstSample) / D,
                      H2 * (top - v(rows[j + 1])) / span);
    };
    graf.setForeColor(QColor(0xC0, 0xC0, 0xC0));
    draw(FiltInput);
    graf.setForeColor(BasicColor(1));
    draw(FiltResult);
}

WaveFiltZoomFormControls::WaveFiltZoomFormControls(FormWindow& w) {
    MakeMarks(&w, YmarksFrame, Ymarks, true);
    WaveFiltZoomGraf = new PlotSurface(&w);
    WaveFiltZoomGraf->placeSurface(1500, 240, 12135, 6975);
    MakeMarks(&w, XmarksFrame, Xmarks, false);
    w.setWindowTitle("Zoom of the Wavelet Threshold Filter Result");
}

void WaveFiltZoomForm::connectHandlers() {
    setClientSize(1500 + 12135 + 600, 240 + 6975 + 800);
    ui_->WaveFiltZoomGraf->MouseMove = [this](int b, int s, float x, float y) {
        WaveFiltZoomGraf_MouseMove(b, s, x, y);
    };
}

void WaveFiltZoomForm::Form_Activate() {
    WaveFiltZoomFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const double dT = TextNum(main.DeltaT_Text->Text().toStdString());
    const double t0 = TimeOrigin(main.Time0_Text);
    Cls();
    DrawXMarks(*this, *c.WaveFiltZoomGraf, 0, *c.XmarksFrame, c.Xmarks,
               static_cast<float>(t0 + (ZoomFirstSample - 1) * dT),
               static_cast<float>(t0 + (ZoomLastSample - 1) * dT));
    DrawYMarks(*this, *c.WaveFiltZoomGraf, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, ZoomMin,
               ZoomMax);
}

void WaveFiltZoomForm::WaveFiltZoomGraf_MouseMove(int, int, float x, float y) {
    WaveFiltZoomFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    const float s = (ZoomLastSample - ZoomFirstSample) * x /
                        static_cast<float>(c.WaveFiltZoomGraf->ScaleWidth()) +
                    ZoomFirstSample;
    const std::int32_t n = IntClamped(s);
    const double time = TimeOrigin(main.Time0_Text) +
                        (n - 1) * TextNum(main.DeltaT_Text->Text().toStdString());
    const float value =
        ZoomMax - (ZoomMax - ZoomMin) * y / static_cast<float>(c.WaveFiltZoomGraf->ScaleHeight());
    c.WaveFiltZoomGraf->setToolTipText(
        qs("Sample # " + NumText(n) + ",  Time=" + NumText(time) + ", Value=" + NumText(value)));
}

} // namespace tarnic
