// The AR spectra evolution window and the button of the main window that
// opens it.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/colourscale.h"
#include "maps/svanarform.h"
#include "maps/svanarlogic.h"
#include "spectra/spectrumrun.h"

#include <algorithm>

namespace tarnic {
namespace {


// Layout in twips: the Y marks, the map and its colour scale on top, the X
// marks under the map, then the parameters with the two buttons beside them
// and the note at the bottom.
constexpr double kMapLeft = 1500, kMapTop = 480, kMapWidth = 8400, kMapHeight = 5400;
constexpr double kScaleLeft = kMapLeft + kMapWidth + 300, kScaleWidth = 450;
constexpr double kFormWidth = kScaleLeft + kScaleWidth + 450;
constexpr double kParamTop = kMapTop + kMapHeight + 720, kParamWidth = 6300, kParamHeight = 1620;
constexpr double kNoteTop = kParamTop + kParamHeight + 120, kNoteHeight = 600;
constexpr double kRow = 330;

// The mark labels are 1150 twips wide; small frequencies give texts of 12
// and 13 characters ("0.0004882812", "1.234567E-05"), which fit only in a
// slightly smaller, condensed face.
void makeMarks(QWidget* parent, MarksFrame*& frame, MarkLabels& marks, bool yAxis) {
    frame = new MarksFrame(parent);
    frame->place(0, 0, yAxis ? 1200 : kFormWidth, yAxis ? kMapTop + kMapHeight + 200 : 330);
    QFont narrow = frame->font();
    narrow.setPointSizeF(narrow.pointSizeF() - 1);
    narrow.setStretch(QFont::SemiCondensed);
    for (auto& mark : marks) {
        mark = new Label(frame);
        mark->setFont(narrow);
        mark->setAlignment(yAxis ? Qt::AlignRight | Qt::AlignVCenter
                                 : Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
}

Label* makeLabel(QWidget* parent, const QString& caption, double l, double t, double w, double h,
                 Qt::Alignment align = Qt::AlignLeft | Qt::AlignVCenter) {
    auto* label = new Label(parent, caption);
    label->setAlignment(align);
    label->place(l, t, w, h);
    return label;
}

TextBox* makeText(QWidget* parent, double l, double t, double w) {
    auto* box = new TextBox(parent);
    box->place(l, t, w, kRow);
    return box;
}

Button* makeButton(QWidget* parent, const QString& caption, double l, double t, double w,
                   double h) {
    auto* button = new Button(parent, caption);
    button->place(l, t, w, h);
    return button;
}

QString joinLines(std::initializer_list<const char*> lines) {
    QString text;
    for (const char* line : lines)
        text += (text.isEmpty() ? "" : "\r\n") + QString(line);
    return text;
}

} // namespace

SvanArFormControls::SvanArFormControls(FormWindow& w) {
    makeMarks(&w, YmarksFrame, Ymarks, true);
    // "Fmax" just under the top mark and "Fmin" just over the bottom one, in
    // the gaps between the marks, so they never meet a mark's text.
    Label5 = makeLabel(YmarksFrame, "Fmax", 0, kMapTop + 150, 1150, 255,
                       Qt::AlignRight | Qt::AlignVCenter);
    Label6 = makeLabel(YmarksFrame, "Fmin", 0, kMapTop + kMapHeight - 405, 1150, 255,
                       Qt::AlignRight | Qt::AlignVCenter);
    SvanArMap = new PlotSurface(&w);
    SvanArMap->placeSurface(kMapLeft, kMapTop, kMapWidth, kMapHeight);
    ColorScale = new PlotSurface(&w);
    ColorScale->placeSurface(kScaleLeft, kMapTop, kScaleWidth, kMapHeight);
    makeMarks(&w, XmarksFrame, Xmarks, false);
    XmarksFrame->place(0, kMapTop + kMapHeight + 200, kFormWidth, 330);

    SvanParam = new Frame(&w, "Set parameters for Log(Spectra) evolution computing: ");
    SvanParam->place(kMapLeft, kParamTop, kParamWidth, kParamHeight);
    const double labelW = 3900, textL = 4080, textW = kParamWidth - 4080 - 120;
    Label1 = makeLabel(SvanParam, "Length of time window:", 120, 360, labelW, kRow);
    LengWinText = makeText(SvanParam, textL, 360, textW);
    Label2 = makeLabel(SvanParam, "Mutual shift of time windows:", 120, 750, labelW, kRow);
    ShiftText = makeText(SvanParam, textL, 750, textW);
    Label3 = makeLabel(SvanParam, "AR-order:", 120, 1140, labelW, kRow);
    ArOrderText = makeText(SvanParam, textL, 1140, textW);

    const double buttonL = kMapLeft + kParamWidth + 300, buttonW = kMapLeft + kMapWidth - buttonL;
    LaunchSvan = makeButton(&w, "Launch", buttonL, kParamTop + 120, buttonW, 510);
    SaveGRD = makeButton(&w, "Save GRD-file ", buttonL, kParamTop + 780, buttonW, 510);

    Label4 = makeLabel(&w,
                       "Length of moving time window <= 2048 samples. To get the map of spectra "
                       "evolution for low-frequency component apply preliminary downsampling.",
                       kMapLeft, kNoteTop, kMapWidth, kNoteHeight, Qt::AlignLeft | Qt::AlignTop);
    Label4->setWordWrap(true);
    w.setWindowTitle(SvanArForm::kCaption);
}

void SvanArForm::connectHandlers() {
    setClientSize(kFormWidth, kNoteTop + kNoteHeight + 180);
    SvanArFormControls& c = *ui_;
    c.LaunchSvan->Click = [this] { LaunchSvan_Click(); };
    c.SaveGRD->Click = [this] { SaveGRD_Click(); };
    c.SvanArMap->MouseMove = [this](int b, int s, float x, float y) {
        SvanArMap_MouseMove(b, s, x, y);
    };
    c.ColorScale->MouseMove = [this](int b, int s, float x, float y) {
        ColorScale_MouseMove(b, s, x, y);
    };
}

void Form1::SvanArButton_Click() {
    Hide();
    workbench().svanArForm().Show();
}

void SvanArForm::Form_Load() {
    SvanArFormControls& c = *ui_;
    SvanSamples = SvanNrec;
    SvanInput = SvanSignal;
    SvanLeng = SvanDefaultLength(SvanSamples);
    c.LengWinText->setText(qs(NumText(SvanLeng)));
    const SvanShiftSearch search = SearchSvanShift(SvanSamples, SvanLeng);
    SvanCount = search.count;
    SvanShift = search.shift;
    c.ShiftText->setText(qs(NumText(SvanShift)));
    SvanOrder = SvanDefaultOrder(SvanLeng);
    c.ArOrderText->setText(qs(NumText(SvanOrder)));
    setCaption(Caption() + ", File=" + SvanFileName +
               ", Number of samples=" + qs(NumText(SvanSamples)));
    c.SvanArMap->setEnabled(false);
    c.SaveGRD->setEnabled(false);
}

void SvanArForm::Form_Unload() {
    workbench().form1().Show();
}

void SvanArForm::computeRanges(double T0, double dT) {
    const SvanRanges r = SvanRangesOf(
        {SvanLeng, SvanShift, SvanCount, SvanFft, SvanHalf, SvanCut, SvanOrder}, T0, dT);
    SvanTmin = r.tmin;
    SvanTmax = r.tmax;
    SvanFmin = r.fmin;
    SvanFmax = r.fmax;
}

void SvanArForm::refuseRun(const QString& text) {
    SvanArFormControls& c = *ui_;
    MsgBox(text, kMessageTitle);
    c.SvanParam->setEnabled(true);
    c.LaunchSvan->setEnabled(true);
}

void SvanArForm::LaunchSvan_Click() {
    SvanArFormControls& c = ui();
    c.LaunchSvan->setEnabled(false);
    c.SvanArMap->setEnabled(false);
    c.SaveGRD->setEnabled(false);
    c.SvanParam->setEnabled(false);
    c.SvanArMap->Cls();
    c.SvanArMap->Refresh();
    const Form1Controls& main = workbench().form1().ui();
    const double dT = MapDeltaT(workbench().form1());
    const double T0 = TimeOrigin(main.Time0_Text);

    // The fallbacks come from the signal alone, not from the search of Load.
    const std::int32_t defLeng = SvanDefaultLength(SvanSamples);
    const std::int32_t defShift = SvanDefaultShift(defLeng);
    const std::int32_t defOrder = SvanDefaultOrder(defLeng);
    // Each box is read and shows the value in force before the next is read.
    SvanLeng = ReadSvanLength(c.LengWinText->Text().toStdString(), SvanSamples, defLeng);
    c.LengWinText->setText(qs(NumText(SvanLeng)));
    SvanShift = ReadSvanShift(c.ShiftText->Text().toStdString(), SvanLeng, defShift);
    c.ShiftText->setText(qs(NumText(SvanShift)));
    SvanOrder = ReadSvanOrder(c.ArOrderText->Text().toStdString(), SvanLeng, defOrder);
    c.ArOrderText->setText(qs(NumText(SvanOrder)));

    SvanCount = SvanWindowCount(SvanSamples, SvanLeng, SvanShift);
    SvanFft = TransformSize(SvanLeng);
    SvanHalf = SvanFft / 2;
    SvanCut = SvanCutIndex(SvanHalf, SvanFft, SvanSamples, dT);

    // A single window (a window of nearly the whole signal with a shift of 2
    // or more) gives no map: the columns are spaced by W / (SvanCount - 1).
    // It is refused before any array is made, in the way of the volume limit.
    if (SvanCount < 2) {
        refuseRun(joinLines({"For this combination of time window length, mutual shift and signal "
                             "length",
                             "only one time window fits into the signal, and a map needs at least "
                             "two",
                             "Please, choose the less time window or smaller shift"}));
        return;
    }
    if (SvanVolumeExceeded(SvanCount, SvanHalf)) {
        refuseRun(joinLines({"For this combination of time window length, mutual shift and signal "
                             "length",
                             "Time-Frequency Analysis is impossible because of huge volume of "
                             "output information",
                             "Please, downsample time series or choose the less time window and "
                             "larger shift"}));
        return;
    }

    SvanMap.resize(SvanCount * SvanHalf);
    SvanWinSpec.resize(SvanHalf);
    const SvanLayout layout{SvanLeng, SvanShift, SvanCount, SvanFft, SvanHalf, SvanCut, SvanOrder};
    ComputeSpectraEvolution(SvanInput.span(), layout, dT, dll::BurgH_dll, SvanMap.span(),
                            SvanWinSpec.span());

    // Points below the cut never influence the colours.
    SvanZmin = 1E+35f;
    SvanZmax = -1E+35f;
    for (std::int32_t w = 1; w <= SvanCount; ++w)
        for (std::int32_t k = SvanCut; k <= SvanHalf; ++k) {
            const float v = SvanMapAt(k, w);
            if (v < SvanZmin) SvanZmin = v;
            if (v > SvanZmax) SvanZmax = v;
        }
    computeRanges(T0, dT);

    DrawColorScale(*c.ColorScale, MapPalette12);
    // Column w stands at the time of the window's end and row k at its
    // frequency: a cell's left and top edges lie on its node, so the last
    // column and the bottom row fall just outside the control.
    PlotSurface& map = *c.SvanArMap;
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    const double cellW = W / (SvanCount - 1), cellH = H / (SvanHalf - SvanCut);
    BandLookup colour(SvanZmin, SvanZmax, MapPalette12);
    map.BeginCells();
    for (std::int32_t w = 1; w <= SvanCount; ++w)
        for (std::int32_t k = SvanCut; k <= SvanHalf; ++k) {
            const float v = SvanMapAt(k, w);
            FillCell(map, (w - 1) * cellW, H - (k - SvanCut) * cellH, cellW, cellH, colour(v), v);
        }

    Cls();
    c.SvanArMap->setEnabled(true);
    c.LaunchSvan->setEnabled(true);
    c.SaveGRD->setEnabled(true);
    c.SvanParam->setEnabled(true);
    DrawXMarks(*this, map, 0, *c.XmarksFrame, c.Xmarks, SvanTmin, SvanTmax);
    DrawYMarks(*this, map, 0, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, SvanFmin, SvanFmax);
}

void SvanArForm::SvanArMap_MouseMove(int, int, float x, float y) {
    SvanArFormControls& c = ui();
    const Form1Controls& main = workbench().form1().ui();
    computeRanges(TimeOrigin(main.Time0_Text), MapDeltaT(workbench().form1()));
    const auto W = static_cast<float>(c.SvanArMap->ScaleWidth());
    const auto H = static_cast<float>(c.SvanArMap->ScaleHeight());
    const float time = SvanTmin + x * ((SvanTmax - SvanTmin) / W);
    const float freq = SvanFmax - y * ((SvanFmax - SvanFmin) / H);
    if (freq > 1E-07) {
        const float period = 1 / freq;
        c.SvanArMap->setToolTipText(qs("Time Window Mark=" + NumText(time) +
                                       ", Period=" + NumText(period) + ", Freq=" + NumText(freq)));
    }
}

void SvanArForm::ColorScale_MouseMove(int, int, float, float y) {
    ColorScaleTip(*ui().ColorScale, y, SvanZmin, SvanZmax);
}

void SvanArForm::SaveGRD_Click() {
    SvanArFormControls& c = ui();
    // The map holds natural logarithms; the grid holds base-10 ones.
    const GridHeader header = MapGridHeader(
        SvanCount, SvanHalf - SvanCut + 1, SvanTmin, SvanTmax, SvanFmin, SvanFmax,
        static_cast<double>(SvanZmin) / LnTen(), static_cast<double>(SvanZmax) / LnTen());
    const std::string N = encodeFileName(SvanFileName);
    SaveGridFile(
        *c.SaveGRD, workbench().form1(),
        [&](const std::string& D) {
            return names::SpectraEvolutionGrid(D, N, SvanLeng, SvanShift, SvanOrder);
        },
        header,
        [this](int row, int column) {
            return NumText(static_cast<double>(SvanMapAt(SvanCut + row - 1, column)) / LnTen());
        });
}

} // namespace tarnic
