// The Morlet wavelet map of a fragment: computed and drawn by the fragment
// window's button, held, read out and saved by MorletSvanForm.
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/colouring.h"
#include "maps/colourscale.h"
#include "maps/morletsvanform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"

#include <cmath>

namespace tarnic {
namespace {


constexpr double kMapLeft = 1500, kMapTop = 420, kMapWidth = 10500, kMapHeight = 6000;
constexpr double kScaleLeft = kMapLeft + kMapWidth + 300, kScaleWidth = 450;

} // namespace

// The number of scales of a fragment: 200, at most Int(length / 8), at least 50.
std::int32_t MorletScaleCount(std::int32_t fragLeng) {
    std::int32_t scales = 200;
    if (scales > fragLeng / 8.0) scales = IntClamped(fragLeng / 8.0);
    if (scales < 50) scales = 50;
    return scales;
}

void SignalZoomForm::MorletSvan_Click() {
    Workbench& wb = workbench();
    Hide();
    FragLeng = FragCount;
    float smin = 2.0f, smax = static_cast<float>(FragLeng / 4.0);
    std::int32_t scales = MorletScaleCount(FragLeng);
    if (static_cast<std::int64_t>(scales) * FragLeng > 2000000) {
        MsgBox("For this length of the signal fragment\r\nCWT Morlet Analysis is impossible "
               "because of huge volume of output information\r\nPlease, downsample time series or "
               "choose more short fragment",
               "CWT Morlet Analysis");
        Show();
        return;
    }
    DisableFragmentControls();
    const Form1Controls& main = wb.form1().ui();
    const double dT = MapDeltaT(wb.form1());
    const double T0 = TimeOrigin(main.Time0_Text);
    Array1<float> mapOut(scales * FragLeng), specOut(scales);
    dll::MorletWaveSvan_dll(FragLeng, Fragment.first(), smin, smax, scales, mapOut.first(),
                            specOut.first());

    MorletSvanForm& form = wb.morletSvanForm();
    form.MorletZmin = 1E+35f;
    form.MorletZmax = -1E+35f;
    for (float v : mapOut.span())
        form.MorletZmin = std::min(form.MorletZmin, v),
        form.MorletZmax = std::max(form.MorletZmax, v);
    form.MorletTmin = static_cast<float>(T0 + (FragFirstSample - 1) * dT);
    form.MorletTmax = static_cast<float>(T0 + (FragLastSample - 1) * dT);
    form.MorletLgMin = static_cast<float>(std::log(smin * dT) / std::log(10.0));
    form.MorletLgMax = static_cast<float>(std::log(smax * dT) / std::log(10.0));
    form.MorletSamplesIn = FragLeng;
    form.MorletScalesIn = scales;
    form.MorletMapIn = mapOut;
    form.MorletSpecIn = specOut;

    PlotSurface& map = *form.ui().MorletSvanMap;
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    const double cellW = W / (FragLeng - 1), cellH = H / (scales - 1);
    map.Cls();
    map.Refresh();
    form.Show();
    BandLookup colour(form.MorletZmin, form.MorletZmax, MapPalette15);
    map.BeginCells();
    for (int i = 1; i <= scales; ++i)
        for (int t = 1; t <= FragLeng; ++t) {
            const float v = mapOut((i - 1) * FragLeng + t);
            FillCell(map, (t - 1) * cellW, H - (i - 1) * cellH, cellW, cellH, colour(v), v);
        }
    DrawColorScale(*form.ui().ColorScale, MapPalette15);
    EnableFragmentControls();
}

MorletSvanFormControls::MorletSvanFormControls(FormWindow& w) {
    MakeMarks(&w, YmarksFrame, Ymarks, true, 0);
    MorletSvanMap = new PlotSurface(&w);
    MorletSvanMap->placeSurface(kMapLeft, kMapTop, kMapWidth, kMapHeight);
    ColorScale = new PlotSurface(&w);
    ColorScale->placeSurface(kScaleLeft, kMapTop, kScaleWidth, kMapHeight);
    MakeMarks(&w, XmarksFrame, Xmarks, false, kScaleLeft + kScaleWidth + 300);
    // "Tmax" above the top Y mark and "Tmin" below the bottom one; "Tmin" ends
    // short of the first X mark, which is centred under the map's left edge.
    Label1 = new Label(&w, "Tmax");
    Label1->place(120, 0, 1150, 240);
    Label1->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Label2 = new Label(&w, "Tmin");
    Label2->place(120, kMapTop + kMapHeight + 150, 800, 240);
    Label2->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    SaveGRD = new Button(&w, "Save GRD-file and Wavelet Spectra DAT-file");
    SaveGRD->place(kMapLeft, kMapTop + kMapHeight + 720, 4200, 450);
    w.setWindowTitle(MorletSvanForm::kCaption);
}

void MorletSvanForm::connectHandlers() {
    setClientSize(kScaleLeft + kScaleWidth + 300, kMapTop + kMapHeight + 1320);
    MorletSvanFormControls& c = *ui_;
    c.MorletSvanMap->MouseMove = [this](int b, int s, float x, float y) {
        MorletSvanMap_MouseMove(b, s, x, y);
    };
    c.ColorScale->MouseMove = [this](int b, int s, float x, float y) {
        ColorScale_MouseMove(b, s, x, y);
    };
    c.SaveGRD->Click = [this] { SaveGRD_Click(); };
}

void MorletSvanForm::Form_Load() {
    MorletSamples = MorletSamplesIn;
    MorletScales = MorletScalesIn;
    MorletSpec = MorletSpecIn;
    MorletMap = MorletMapIn;
    window().setWindowTitle(Caption() + ", File=" + MorletFileName +
                            ", Number of samples=" + qs(NumText(MorletSamples)));
}

void MorletSvanForm::Form_Activate() {
    MorletSvanFormControls& c = *ui_;
    const Form1Controls& main = workbench().form1().ui();
    const SignalZoomForm& zoom = workbench().signalZoomForm();
    const double dT = MapDeltaT(workbench().form1());
    const double T0 = TimeOrigin(main.Time0_Text);
    MorletTmin = static_cast<float>(T0 + (zoom.FragFirstSample - 1) * dT);
    MorletTmax = static_cast<float>(T0 + (zoom.FragLastSample - 1) * dT);
    Cls();
    DrawXMarks(*this, *c.MorletSvanMap, 0, *c.XmarksFrame, c.Xmarks, MorletTmin, MorletTmax);
    DrawYMarks(*this, *c.MorletSvanMap, 1, *c.XmarksFrame, *c.YmarksFrame, c.Ymarks, MorletLgMin,
               MorletLgMax);
}

void MorletSvanForm::Form_Unload() {
    if (workbench().signalZoomForm().isLoaded()) workbench().signalZoomForm().Show();
}

void MorletSvanForm::MorletSvanMap_MouseMove(int, int, float x, float y) {
    PlotSurface& map = *ui().MorletSvanMap;
    const float time =
        MorletTmin + x * ((MorletTmax - MorletTmin) / static_cast<float>(map.ScaleWidth()));
    const float lg =
        MorletLgMax - y * ((MorletLgMax - MorletLgMin) / static_cast<float>(map.ScaleHeight()));
    const auto period = static_cast<float>(std::pow(10.0, static_cast<double>(lg)));
    map.setToolTipText(qs("Time=" + NumText(time) + ", Period=" + NumText(period)));
}

void MorletSvanForm::ColorScale_MouseMove(int, int, float, float y) {
    ColorScaleTip(*ui().ColorScale, y, MorletZmin, MorletZmax);
}

void MorletSvanForm::SaveGRD_Click() {
    Form1& main = workbench().form1();
    const bool detrended = workbench().signalPlot().TrendRadius > 0;
    const std::string N = MorletFileName.toStdString();
    const GridHeader header =
        MapGridHeader(MorletSamples, MorletScales, MorletTmin, MorletTmax, MorletLgMin,
                      MorletLgMax, MorletZmin, MorletZmax);
    SaveGridFile(
        *ui().SaveGRD, main,
        [&](const std::string& D) {
            return names::MorletGrid(D, N, MorletTmin, MorletTmax, detrended);
        },
        header, RowMajorValues(MorletMap.vector().data(), MorletSamples));
    // The wavelet spectrum, <Period, WaveCoeff.^2>; failures are passed over.
    const std::string D = main.OutputFolder().toStdString();
    makeSubdirectory(D, kSpectraDir);
    OutputFile file(names::MorletSpectrum(D, N, MorletTmin, MorletTmax, detrended));
    for (int i = 1; i <= MorletScales; ++i) {
        const double y = MorletLgMin + (i - 1) * (static_cast<double>(MorletLgMax) - MorletLgMin) /
                                           (MorletScales - 1);
        file.print(TwoColumnRecord(NumText(std::pow(10.0, y)), NumText(MorletSpec(i))));
    }
    file.close();
    main.ui().Dir1->Refresh();
    main.ui().File1->Refresh();
}

} // namespace tarnic
