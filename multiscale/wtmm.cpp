// The WTMM chains of a fragment: the button and the parameter boxes of the
// fragment window, and the window that shows the chains.
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "multiscale/multiscalelogic.h"
#include "multiscale/wtmmform.h"
#include "help/wtmmhelp.h"
#include "signal/signalzoomform.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarnic {
namespace {

// The pen of each record class, 1 .. 7.
struct ClassPen {
    QColor color;
    int width;
    int style;
};

ClassPen classPen(int c) {
    switch (c) {
    case 1:
        return {BasicColor(1), 2, 0};
    case 2:
        return {QColor(0xFF, 0x00, 0x00), 2, 0};
    case 3:
        return {QColor(0x00, 0xFF, 0x00), 2, 0};
    case 4:
        return {QColor(0xFF, 0x00, 0xFF), 2, 0};
    case 5:
        return {QColor(0xFF, 0x00, 0x00), 1, 2};
    case 6:
        return {QColor(0x00, 0xC0, 0xC0), 1, 2};
    default:
        return {BasicColor(6), 12, 0};
    }
}

QString problemText(WtmmProblem problem) {
    const QString file = QString::fromLatin1(kWtmmScratchName.data(),
                                             static_cast<qsizetype>(kWtmmScratchName.size()));
    switch (problem) {
    case WtmmProblem::BadCounts:
        return "The WTMM-chains analysis reported a negative number of records\r\n"
               "Nothing can be drawn";
    case WtmmProblem::NoRecords:
        return "No long WTMM-chains were found in this fragment\r\n"
               "Please, decrease the threshold parameter Gamma or choose another fragment";
    case WtmmProblem::FileMissing:
        return "The WTMM-chains file " + file +
               " was not found in the current directory\r\n"
               "The chains cannot be drawn";
    case WtmmProblem::FileShort:
        return "The WTMM-chains file " + file +
               " holds fewer readable records than the analysis counted\r\n"
               "The chains cannot be drawn";
    case WtmmProblem::NoChainPoints:
        return "The WTMM-chains file holds chain separators only\r\n"
               "The chains cannot be drawn";
    case WtmmProblem::OneScale:
        return "All points of the WTMM-chains lie at one scale\r\n"
               "The chains cannot be drawn on a scale axis";
    case WtmmProblem::FlatDetrended:
        return "The signal fragment is constant after detrending\r\n"
               "The chains cannot be drawn";
    case WtmmProblem::None:
        break;
    }
    return {};
}

Label* label(QWidget* parent, const QString& caption, double l, double t, double w, double h,
             QColor color = Qt::black) {
    auto* b = new Label(parent, caption);
    b->place(l, t, w, h);
    b->setForeColor(color);
    return b;
}

// Layout in twips: the detrended fragment on top with its time marks under it,
// the chains below, their legend at the bottom.
constexpr double kLeft = 600, kWidth = 12600;
constexpr double kDetrendTop = 540, kDetrendHeight = 2400;
constexpr double kChainsTop = 3900, kChainsHeight = 4200;
constexpr double kLegendTop = kChainsTop + kChainsHeight + 120, kLegendRow = 300;

} // namespace

// ---------------------------------------------------------------------------
// The fragment window's part

void SignalZoomForm::WTMM_TrendOrder_Change() {
    workbench().wtmmForm().Unload();
    workbench().wtmmHelp().Unload();
}

void SignalZoomForm::WTMM_ThreshLevel_Change() {
    workbench().wtmmForm().Unload();
    workbench().wtmmHelp().Unload();
}

void SignalZoomForm::WTMM_button_Click() {
    SignalZoomFormControls& c = ui();
    Hide();
    FragLeng = FragCount;
    if (FragLeng > kWtmmMaxSamples) {
        MsgBox("For this length of the signal fragment ( > 8000 )\r\n"
               "WTMM-chains analysis is forbidden because of large time consuming\r\n"
               "Please, choose more short fragment",
               "WTMM-chains Analysis");
        Show();
        return;
    }
    WTMM_Form& wtmm = workbench().wtmmForm();
    wtmm.Unload();
    workbench().wtmmHelp().Unload();

    std::int32_t trendOrder = ReadWtmmTrendOrder(TextNum(c.WTMM_TrendOrder->Text().toStdString()));
    c.WTMM_TrendOrder->setText(qs(NumText(trendOrder)));
    double gamma = ReadWtmmGamma(TextNum(c.WTMM_ThreshLevel->Text().toStdString()));
    c.WTMM_ThreshLevel->setText(qs(NumText(gamma)));

    Array1<double> WtmmInput(FragLeng), WtmmDetrended(FragLeng);
    for (int i = 1; i <= FragLeng; ++i)
        WtmmInput(i) = Fragment(i);
    std::array<std::int32_t, 7> ChainCounts{};

    DisableFragmentControls();
    WtmmFile chains;
    WtmmProblem problem = WtmmProblem::None;
    {
        // The library writes the chain file into the current directory, here a
        // private one; it is read and removed before anything is drawn.
        WtmmScratchPlace place;
        const std::filesystem::path scratch = place.file();
        dll::WTMM_FP_dll(WtmmInput.first(), FragLeng, trendOrder, gamma, ChainCounts[0],
                         WtmmDetrended.first());
        problem = CheckWtmmCounts(ChainCounts, WtmmInput.span(), WtmmDetrended.span());
        if (problem == WtmmProblem::None) {
            std::int64_t ChainTotal = 0;
            for (std::int32_t n : ChainCounts)
                ChainTotal += n;
            chains = ReadWtmmFile(scratch, ChainTotal);
        }
    }
    const WtmmLgRange range = ChainLgRange(chains.records);
    if (problem == WtmmProblem::None) problem = CheckWtmmRun(chains, range, WtmmDetrended.span());
    if (problem != WtmmProblem::None) {
        MsgBox(problemText(problem), "WTMM-chains Analysis");
        EnableFragmentControls();
        Show();
        return;
    }

    wtmm.ChainLgMin = range.min;
    wtmm.ChainLgMax = range.max;
    WTMM_FormControls& w = wtmm.ui();
    w.Label1->setCaption("Fragment of the signal after detrending. Number of samples=" +
                         qs(NumText(FragLeng)));
    c.WTMM_button->setEnabled(true);
    wtmm.Show();
    PlotSurface& detrendGraf = *w.WTMM_DetrendGraf;
    PlotSurface& graf = *w.WTMM_Graf;
    graf.Cls();
    detrendGraf.Cls();

    // The detrended fragment over the whole height.
    const auto [lo, hi] =
        std::minmax_element(WtmmDetrended.vector().begin(), WtmmDetrended.vector().end());
    const double Lo = *lo, Hi = *hi;
    const double Wd = detrendGraf.ScaleWidth(), Hd = detrendGraf.ScaleHeight();
    detrendGraf.setForeColor(BasicColor(1));
    for (int k = 1; k <= FragLeng - 1; ++k)
        detrendGraf.Line(kLineSegment, Wd * (k - 1) / (FragLeng - 1),
                         Hd * (Hi - WtmmDetrended(k)) / (Hi - Lo), Wd * k / (FragLeng - 1),
                         Hd * (Hi - WtmmDetrended(k + 1)) / (Hi - Lo));

    // The chains: time to the right, log10 of scale upward.
    const double W = graf.ScaleWidth(), H = graf.ScaleHeight();
    const double Range = static_cast<double>(wtmm.ChainLgMax) - wtmm.ChainLgMin;
    auto placeX = [&](std::int32_t r) {
        return W * (chains.records[static_cast<std::size_t>(r - 1)].time - 1) / (FragLeng - 1);
    };
    auto placeY = [&](std::int32_t r) {
        return H * (wtmm.ChainLgMax - chains.records[static_cast<std::size_t>(r - 1)].lg) / Range;
    };
    int penOf = 0;
    for (const ChainStroke& s : PlanWtmmChains(ChainCounts, chains.records)) {
        if (s.style != penOf) {
            const ClassPen pen = classPen(s.style);
            graf.setForeColor(pen.color);
            graf.setDrawWidth(pen.width);
            graf.setDrawStyle(pen.style);
            penOf = s.style;
        }
        if (s.dot)
            graf.PSet(0, placeX(s.from), placeY(s.from));
        else
            graf.Line(kLineSegment, placeX(s.from), placeY(s.from), placeX(s.to), placeY(s.to));
    }
    graf.Refresh();
    detrendGraf.Refresh();
    EnableFragmentControls();
}

// ---------------------------------------------------------------------------
// The chains window

WTMM_FormControls::WTMM_FormControls(FormWindow& w) {
    Label1 = label(&w, "Fragment of the signal after detrending : ", kLeft, 150, 6600, 300);
    Label9 = label(&w, "Horizontal red line: Time +/- 3 * Scale", 7320, 150, 3840, 300,
                   QColor(0xFF, 0x00, 0x00));
    WTMM_HelpButton = new Button(&w, "WTMM Help");
    WTMM_HelpButton->place(kLeft + kWidth - 1800, 60, 1800, 390);
    WTMM_DetrendGraf = new PlotSurface(&w);
    WTMM_DetrendGraf->placeSurface(kLeft, kDetrendTop, kWidth, kDetrendHeight);
    AscaleLine = &WTMM_DetrendGraf->addLine(QColor(0xFF, 0x00, 0x00));
    AscaleLine->setX1(120);
    AscaleLine->setY1(120);
    AscaleLine->setX2(360);
    AscaleLine->setY2(120);
    XmarksFrame = new MarksFrame(&w);
    XmarksFrame->place(0, kDetrendTop + kDetrendHeight + 200, kLeft + kWidth + 600, 330);
    for (auto& mark : Xmarks) {
        mark = new Label(XmarksFrame);
        mark->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        mark->place(0, 50, 1150, 255);
    }
    Label2 = label(&w,
                   "Longest WTMM Skeletons Chains for the Gaussian kernel derivatives wavelets of "
                   "the orders 0, 1 and 2 :",
                   kLeft, kChainsTop - 360, kWidth, 300);
    WTMM_Graf = new PlotSurface(&w);
    WTMM_Graf->placeSurface(kLeft, kChainsTop, kWidth, kChainsHeight);
    const double right = kLeft + kWidth / 2 + 120;
    Label3 = label(&w, "Minimums of scale-dependent averaged curves", kLeft, kLegendTop, kWidth / 2,
                   kLegendRow, QColor(0x00, 0x00, 0xFF));
    Label4 = label(&w, "Maximums of scale-dependent averaged curves", right, kLegendTop,
                   kWidth / 2 - 120, kLegendRow, QColor(0xFF, 0x00, 0x00));
    Label5 = label(&w, "Maximums of scale-dependent negative trends", kLeft,
                   kLegendTop + kLegendRow, kWidth / 2, kLegendRow, QColor(0x00, 0xC0, 0x00));
    Label6 = label(&w, "Maximums of scale-dependent positive trends", right,
                   kLegendTop + kLegendRow, kWidth / 2 - 120, kLegendRow, QColor(0xFF, 0x00, 0xFF));
    Label7 = label(&w, "Minimums of scale-dependent 2-nd derivative (convex upward)", kLeft,
                   kLegendTop + 2 * kLegendRow, kWidth / 2, kLegendRow, QColor(0xFF, 0x80, 0x00));
    Label8 =
        label(&w, "Maximums of scale-dependent 2-nd derivative (convex downward)", right,
              kLegendTop + 2 * kLegendRow, kWidth / 2 - 120, kLegendRow, QColor(0x00, 0xC0, 0xC0));
    w.setWindowTitle(WTMM_Form::kCaption);
}

void WTMM_Form::connectHandlers() {
    setClientSize(kLeft + kWidth + 600, kLegendTop + 3 * kLegendRow + 180);
    WTMM_FormControls& c = *ui_;
    c.WTMM_HelpButton->Click = [this] { WTMM_HelpButton_Click(); };
    c.WTMM_DetrendGraf->MouseMove = [this](int b, int s, float x, float y) {
        WTMM_DetrendGraf_MouseMove(b, s, x, y);
    };
    c.WTMM_Graf->MouseMove = [this](int b, int s, float x, float y) {
        WTMM_Graf_MouseMove(b, s, x, y);
    };
}

void WTMM_Form::Form_Load() {
    ui_->Label9->setVisible(false);
}

void WTMM_Form::Form_Activate() {
    WTMM_FormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    dT_ = TextNum(main.DeltaT_Text->Text().toStdString());
    T0_ = TimeOrigin(main.Time0_Text);
    Cls();
    DrawXMarks(*this, *c.WTMM_DetrendGraf, 0, *c.XmarksFrame, c.Xmarks,
               static_cast<float>(T0_ + (zoom.FragFirstSample - 1) * dT_),
               static_cast<float>(T0_ + (zoom.FragLastSample - 1) * dT_));
}

void WTMM_Form::Form_Unload() {
    workbench().wtmmHelp().Unload();
    // The fragment window comes back, unless it was closed first (a new fragment
    // or a new file closes it before this one).
    if (workbench().signalZoomForm().isLoaded()) workbench().signalZoomForm().Show();
}

void WTMM_Form::Form_MouseMove() {
    WTMM_FormControls& c = ui();
    c.AscaleLine->setVisible(false);
    c.Label9->setVisible(false);
}

void WTMM_Form::WTMM_HelpButton_Click() {
    workbench().wtmmHelp().Show();
}

void WTMM_Form::WTMM_DetrendGraf_MouseMove(int, int, float x, float) {
    WTMM_FormControls& c = ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    const auto s = static_cast<float>((zoom.FragLastSample - zoom.FragFirstSample) * x /
                                          c.WTMM_DetrendGraf->ScaleWidth() +
                                      zoom.FragFirstSample);
    const std::int32_t n = IntClamped(s);
    c.WTMM_DetrendGraf->setToolTipText(
        qs("Sample # " + NumText(n) + ",  Time=" + NumText(T0_ + (n - 1) * dT_)));
    c.Label9->setVisible(false);
}

void WTMM_Form::WTMM_Graf_MouseMove(int, int, float x, float y) {
    WTMM_FormControls& c = ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    PlotSurface& graf = *c.WTMM_Graf;
    c.AscaleLine->setVisible(true);
    const auto lg = static_cast<float>(
        (ChainLgMax - ChainLgMin) * (graf.ScaleHeight() - y) / graf.ScaleHeight() + ChainLgMin);
    const double scale = std::pow(10.0, static_cast<double>(lg)) * dT_;
    const float span = zoom.FragLastSample - zoom.FragFirstSample;
    const auto s = static_cast<float>(span * x / graf.ScaleWidth() + zoom.FragFirstSample);
    const std::int32_t n = IntClamped(s);
    graf.setToolTipText(qs("Sample # " + NumText(n) + ",  Time=" + NumText(T0_ + (n - 1) * dT_) +
                           ",  Scale=" + NumText(scale)));
    // The scale in samples as a distance on the plot; the line shows Time +/- 3 * Scale.
    const double half = scale / span * graf.ScaleWidth() / dT_;
    if (std::isfinite(half)) {
        const auto y0 = static_cast<float>(c.WTMM_DetrendGraf->ScaleHeight() / 2);
        c.AscaleLine->setX1(static_cast<float>(x - 3 * half));
        c.AscaleLine->setY1(y0);
        c.AscaleLine->setX2(static_cast<float>(x + 3 * half));
        c.AscaleLine->setY2(y0);
    }
    c.Label9->setVisible(true);
}

} // namespace tarnic
