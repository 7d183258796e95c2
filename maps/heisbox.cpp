// The Heisenberg boxes map of a fragment.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/colouring.h"
#include "maps/colourscale.h"
#include "maps/heisboxform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "wavelet/waveletchoice.h"
#include "wavelet/wavelogic.h"

#include <cmath>

namespace tarnic {
namespace {

double lg(double x) {
    return std::log(x) / std::log(10.0);
}

constexpr double kMapLeft = 1500, kMapTop = 420, kMapWidth = 10500, kMapHeight = 5400;
constexpr double kScaleLeft = kMapLeft + kMapWidth + 300, kScaleWidth = 450;

} // namespace

void SignalZoomForm::HeisBoxesButton_Click() {
    Hide();
    workbench().heisBoxForm().Show();
}

HeisBoxFormControls::HeisBoxFormControls(FormWindow& w) {
    MakeMarks(&w, YmarksFrame, Ymarks, true, 0);
    HeisBoxMap = new PlotSurface(&w);
    HeisBoxMap->placeSurface(kMapLeft, kMapTop, kMapWidth, kMapHeight);
    ColorScale = new PlotSurface(&w);
    ColorScale->placeSurface(kScaleLeft, kMapTop, kScaleWidth, kMapHeight);
    const double formWidth = kScaleLeft + kScaleWidth + 300;
    MakeMarks(&w, XmarksFrame, Xmarks, false, formWidth);
    // "Tmax" above the top Y mark and "Tmin" below the bottom one; "Tmin" ends
    // short of the first X mark, which is centred under the map's left edge.
    Label1 = new Label(&w, "Tmax");
    Label1->place(120, 0, 1150, 240);
    Label1->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Label2 = new Label(&w, "Tmin");
    Label2->place(120, kMapTop + kMapHeight + 150, 800, 240);
    Label2->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    const double row = kMapTop + kMapHeight + 720;
    ChooseManual = new Frame(&w, "Select wavelet : ");
    ChooseManual->place(kMapLeft, row, 5280, 1380);
    DaubOption = new OptionButton(ChooseManual, "Usual Daubechies'", true);
    DaubOption->place(120, 330, 2100, 300);
    SymletOption = new OptionButton(ChooseManual, "Symlet", false);
    SymletOption->place(120, 840, 2100, 300);
    Label4 = new Label(ChooseManual, "Daub wavelet order, # of coeff.");
    Label4->setWordWrap(true);
    Label4->place(2280, 240, 2100, 480);
    DaubOrder = new TextBox(ChooseManual, "4");
    DaubOrder->place(4440, 300, 720, 330);
    DaubOrder->setToolTipText("2,4,6,8,10,12,14,16,18,20");
    Label3 = new Label(ChooseManual, "Sym wavelet order, # of coeff.");
    Label3->setWordWrap(true);
    Label3->place(2280, 750, 2100, 480);
    SymOrder = new TextBox(ChooseManual, "8");
    SymOrder->place(4440, 810, 720, 330);
    SymOrder->setToolTipText("8,10,12,14,16,18,20");

    WP_OptionFrame = new Frame(&w, "Select wavelet -- packet split level: ");
    WP_OptionFrame->place(kMapLeft + 5400, row, 3600, 1380);
    Option1 = new OptionButton(WP_OptionFrame, "1", false);
    Option1->place(120, 330, 720, 300);
    Option2 = new OptionButton(WP_OptionFrame, "2", false);
    Option2->place(900, 330, 720, 300);
    Option3 = new OptionButton(WP_OptionFrame, "4", true);
    Option3->place(1680, 330, 720, 300);
    Option4 = new OptionButton(WP_OptionFrame, "8", false);
    Option4->place(2460, 330, 720, 300);
    LevMaxLabel = new Label(WP_OptionFrame, "Max level:");
    LevMaxLabel->place(120, 840, 1200, 330);
    LevMaxText = new TextBox(WP_OptionFrame, "2");
    LevMaxText->place(1320, 840, 900, 330);
    LevMaxText->setToolTipText("Set Maximum Detail Level #");

    const double right = kMapLeft + 9120;
    WavePackButton = new Button(&w, "Launch Wavelet Packet Decomposition");
    WavePackButton->place(right, row + 60, 2400, 600);
    SaveGRD = new Button(&w, "Save GRD-file ");
    SaveGRD->place(right, row + 780, 2400, 450);
    w.setWindowTitle(HeisBoxForm::kCaption);
}

void HeisBoxForm::connectHandlers() {
    setClientSize(kScaleLeft + kScaleWidth + 300, kMapTop + kMapHeight + 720 + 1500);
    HeisBoxFormControls& c = *ui_;
    c.WavePackButton->Click = [this] { WavePackButton_Click(); };
    c.SaveGRD->Click = [this] { SaveGRD_Click(); };
    c.DaubOption->Click = [this] { DaubOption_Click(); };
    c.SymletOption->Click = [this] { SymletOption_Click(); };
    for (TextBox* box : {c.DaubOrder, c.SymOrder, c.LevMaxText})
        box->Change = [this] { ClearMap(); };
    for (OptionButton* option : {c.Option1, c.Option2, c.Option3, c.Option4}) {
        option->Click = [this] { ClearMap(); };
        option->MouseMove = [this, option] { ChoiceMouseMove(option); };
    }
    c.LevMaxText->MouseMove = [this] { ChoiceMouseMove(ui_->LevMaxText); };
    c.HeisBoxMap->MouseMove = [this](int b, int s, float x, float y) {
        HeisBoxMap_MouseMove(b, s, x, y);
    };
    c.ColorScale->MouseMove = [this](int b, int s, float x, float y) {
        ColorScale_MouseMove(b, s, x, y);
    };
}

void HeisBoxForm::Form_Load() {
    HeisBoxFormControls& c = *ui_;
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    HeisSamples = zoom.FragCount;
    HeisSignal = zoom.FragInput;
    HeisLevels = 1;
    while ((std::int64_t{1} << HeisLevels) < HeisSamples)
        ++HeisLevels;
    c.LevMaxText->setText(qs(NumText(HeisLevels - 4)));
    window().setWindowTitle(Caption() + ", File=" + HeisFileName +
                            ", Number of samples=" + qs(NumText(HeisSamples)));
    c.HeisBoxMap->setEnabled(false);
    c.SaveGRD->setEnabled(false);
    HeisDaubOrder = 4;
    HeisSymOrder = 8;
    std::int32_t code = 0, length = HeisSamples;
    if (!HeisSignal.empty()) dll::Ford_dll(HeisSignal.first(), length, code);
    ShowWaveletChoice(code, *c.DaubOption, *c.SymletOption, *c.DaubOrder, *c.SymOrder, HeisDaubOrder,
                      HeisSymOrder);
}

void HeisBoxForm::Form_Activate() {
    HeisBoxFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    const double dT = MapDeltaT(workbench().form1());
    const double T0 = TimeOrigin(main.Time0_Text);
    HeisTmin = static_cast<float>(T0 + (zoom.FragFirstSample - 1) * dT);
    HeisTmax = static_cast<float>(T0 + (zoom.FragLastSample - 1) * dT);
    DrawXMarks(*this, *c.HeisBoxMap, 0, *c.XmarksFrame, c.Xmarks, HeisTmin, HeisTmax);
}

void HeisBoxForm::Form_Unload() {
    if (workbench().signalZoomForm().isLoaded()) workbench().signalZoomForm().Show();
}

void HeisBoxForm::ClearMap() {
    HeisBoxFormControls& c = ui();
    c.HeisBoxMap->Cls();
    c.HeisBoxMap->Refresh();
    c.HeisBoxMap->setEnabled(false);
    c.SaveGRD->setEnabled(false);
}

void HeisBoxForm::DaubOption_Click() {
    HeisBoxFormControls& c = ui();
    c.SymOrder->setText("");
    c.DaubOrder->setText(qs(NumText(HeisDaubOrder)));
    ClearMap();
}

void HeisBoxForm::SymletOption_Click() {
    HeisBoxFormControls& c = ui();
    c.SymOrder->setText(qs(NumText(HeisSymOrder)));
    c.DaubOrder->setText("");
    ClearMap();
}

void HeisBoxForm::ChoiceMouseMove(QWidget* control) {
    HeisBoxFormControls& c = ui();
    const double M = boxNumber(c.LevMaxText);
    auto promise = [&](double count, const char* what) {
        return "It will be " + qs(NumText(count)) + what;
    };
    if (control == c.LevMaxText)
        c.LevMaxText->setToolTipText("Set Maximum Detail Level #: 1 <= * <= " +
                                     qs(NumText(HeisLevels - 4)));
    else if (control == c.Option1)
        c.Option1->setToolTipText(promise(M, " detail levels"));
    else if (control == c.Option2)
        c.Option2->setToolTipText(promise(2 * M, " sub-levels"));
    else if (control == c.Option3)
        c.Option3->setToolTipText(promise(4 * M, " sub-levels"));
    else if (control == c.Option4)
        c.Option4->setToolTipText(promise(8 * M, " sub-levels"));
}

void HeisBoxForm::WavePackButton_Click() {
    HeisBoxFormControls& c = ui();
    std::int32_t waveCode = 0;
    if (c.DaubOption->Value()) {
        const std::int32_t order = ParseWaveletOrder(boxNumber(c.DaubOrder), HeisDaubOrder, 2, 20);
        c.DaubOrder->setText(qs(NumText(order)));
        c.SymOrder->setText("");
        waveCode = order;
    } else {
        const std::int32_t order = ParseWaveletOrder(boxNumber(c.SymOrder), HeisSymOrder, 8, 20);
        c.SymOrder->setText(qs(NumText(order)));
        c.DaubOrder->setText("");
        waveCode = 100 + order;
    }
    std::int32_t levMin = 1;
    std::int32_t levMax = ClampDetailLevel(boxNumber(c.LevMaxText), HeisLevels);
    c.LevMaxText->setText(qs(NumText(levMax)));
    std::int32_t split = c.Option1->Value()   ? 1
                         : c.Option2->Value() ? 2
                         : c.Option3->Value() ? 4
                                              : 8;
    HeisRows = split * (levMax - levMin + 1);
    HeisCols = HeisSamples / 2;
    if (static_cast<std::int64_t>(HeisRows) * HeisCols > 8000000) {
        MsgBox("For this combination of split coefficient, maximum detail level and fragment "
               "length\r\nHeisen.Boxes is impossible because of huge volume of output "
               "information\r\nPlease, downsample time series or choose the less maximum detail "
               "level and split coefficient",
               "Orthogonal Wavelet Heisen.Boxes Analysis");
        return;
    }
    HeisScaleLow.resize(HeisRows);
    HeisScaleHigh.resize(HeisRows);
    HeisMap.resize(HeisRows * HeisCols);
    c.WavePackButton->setEnabled(false);
    dll::HeisBoxes_dll(HeisSignal.first(), HeisSamples, split, levMin, levMax, HeisRows,
                       HeisScaleLow.first(), HeisScaleHigh.first(), HeisMap.first(), waveCode);
    HeisZmin = 1E+35f;
    HeisZmax = -1E+35f;
    for (float v : HeisMap.span())
        HeisZmin = std::min(HeisZmin, v), HeisZmax = std::max(HeisZmax, v);
    const Form1Controls& main = workbench().form1().ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    const double dT = MapDeltaT(workbench().form1());
    const double T0 = TimeOrigin(main.Time0_Text);
    for (float& v : HeisScaleLow.span())
        v = static_cast<float>(v * dT);
    for (float& v : HeisScaleHigh.span())
        v = static_cast<float>(v * dT);
    HeisTmin = static_cast<float>(T0 + (zoom.FragFirstSample - 1) * dT);
    HeisTmax = static_cast<float>(T0 + (zoom.FragLastSample - 1) * dT);
    const double B1 = 1 / ((1 / HeisScaleHigh(1) + 1.0 / HeisScaleLow(1)) / 2);
    const double B2 = 1 / ((1 / HeisScaleHigh(HeisRows) + 1.0 / HeisScaleLow(HeisRows)) / 2);
    HeisLgMin = static_cast<float>(lg(B1));
    HeisLgMax = static_cast<float>(lg(B2));
    lgLow_ = static_cast<float>(lg(HeisScaleLow(1)));
    lgHigh_ = static_cast<float>(lg(HeisScaleHigh(HeisRows)));
    DrawColorScale(*c.ColorScale, MapPalette15);

    PlotSurface& map = *c.HeisBoxMap;
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    const double cellW = W / HeisCols;
    const double span = lgHigh_ > lgLow_ ? lgHigh_ - lgLow_ : 1.0;
    BandLookup colour(HeisZmin, HeisZmax, MapPalette15);
    map.BeginCells();
    for (int i = 1; i <= HeisRows; ++i) {
        const double boxH = H * (lg(HeisScaleHigh(i)) - lg(HeisScaleLow(i))) / span;
        const double boxTop = H * (1 - (lg(HeisScaleHigh(i)) - lgLow_) / span);
        for (int col = 1; col <= HeisCols; ++col) {
            const float v = HeisMap((i - 1) * HeisCols + col);
            FillCell(map, (col - 1) * cellW, boxTop, cellW, boxH, colour(v), v);
        }
    }
    c.WavePackButton->setEnabled(true);
    map.setEnabled(true);
    c.SaveGRD->setEnabled(true);
    Cls();
    DrawXMarks(*this, map, 0, *c.XmarksFrame, c.Xmarks, HeisTmin, HeisTmax);
    DrawYMarks(*this, map, 1, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, lgLow_, lgHigh_);
}

void HeisBoxForm::HeisBoxMap_MouseMove(int, int, float x, float y) {
    PlotSurface& map = *ui().HeisBoxMap;
    const float time =
        HeisTmin + x * ((HeisTmax - HeisTmin) / static_cast<float>(map.ScaleWidth()));
    const float l = lgHigh_ - y * ((lgHigh_ - lgLow_) / static_cast<float>(map.ScaleHeight()));
    const auto scale = static_cast<float>(std::pow(10.0, static_cast<double>(l)));
    map.setToolTipText(qs("Time=" + NumText(time) + ", Scale=" + NumText(scale)));
}

void HeisBoxForm::ColorScale_MouseMove(int, int, float, float y) {
    ColorScaleTip(*ui().ColorScale, y, HeisZmin, HeisZmax);
}

void HeisBoxForm::SaveGRD_Click() {
    const bool detrended = workbench().signalPlot().TrendRadius > 0;
    const std::string N = encodeFileName(HeisFileName);
    const GridHeader header = MapGridHeader(HeisCols, HeisRows, HeisTmin, HeisTmax, HeisLgMin,
                                            HeisLgMax, HeisZmin, HeisZmax);
    SaveGridFile(
        *ui().SaveGRD, workbench().form1(),
        [&](const std::string& D) {
            return names::HeisenbergGrid(D, N, HeisTmin, HeisTmax, detrended);
        },
        header, RowMajorValues(HeisMap.vector().data(), HeisCols));
}

} // namespace tarnic
