// The Morlet wavelet map of a fragment: computed and drawn by the fragment
// window's button, held, read out and saved by MorletSvanForm.
#include "core/filenames.h"
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
#include "numeric/morlet.h"
#include "numeric/significance.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/rednoise.h"

#include <algorithm>
#include <cmath>

namespace tarnic {
namespace {


constexpr double kMapLeft = 1500, kMapTop = 420, kMapWidth = 10500, kMapHeight = 6000;
constexpr double kScaleLeft = kMapLeft + kMapWidth + 300, kScaleWidth = 450;

// A colour blended halfway to white: the cells outside the cone of influence.
Rgb halfwayToWhite(Rgb c) {
    auto mix = [&](int shift) { return ((((c >> shift) & 0xFF) + 0xFF) / 2) << shift; };
    return mix(16) | mix(8) | mix(0);
}

double boxDeltaT(Workbench& wb) {
    return TextNum(wb.form1().ui().DeltaT_Text->Text().toStdString());
}

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
    form.SetSource({Fragment.span().begin(), Fragment.span().end()},
                   morletPeriods(smin, smax, static_cast<std::size_t>(scales)));

    PlotSurface& map = *form.ui().MorletSvanMap;
    map.Cls();
    map.Refresh();
    form.Show();
    form.DrawMap(mapOut, FragLeng, scales);
    DrawColorScale(*form.ui().ColorScale, MapPalette15);
    EnableFragmentControls();
}

void MorletSvanForm::SetSource(std::vector<float> fragment, std::vector<double> periods) {
    MorletFragment = std::move(fragment);
    MorletPeriods = std::move(periods);
    significance_.reset();
}

const MorletSignificance& MorletSvanForm::Significance() {
    if (!significance_)
        significance_ = std::make_shared<const MorletSignificance>(
            morletSignificance(std::span<const float>(MorletFragment), MorletPeriods,
                               kContourProbability));
    return *significance_;
}

void MorletSvanForm::DrawMap(const Array1<float>& values, std::int32_t samples,
                             std::int32_t scales) {
    PlotSurface& map = *ui().MorletSvanMap;
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    const double cellW = W / (samples - 1), cellH = H / (scales - 1);
    const bool overlays = ShowConeOfInfluence || ShowSignificanceContour;
    const MorletSignificance* sig = overlays ? &Significance() : nullptr;
    // Cell (i, t) lies inside the cone, free of end effects, when its row's
    // period is at most the cone's period at its sample.
    auto inside = [&](int i, int t) {
        return MorletPeriods[static_cast<std::size_t>(i - 1)] <=
               sig->cone[static_cast<std::size_t>(t - 1)];
    };
    BandLookup colour(MorletZmin, MorletZmax, MapPalette15);
    map.BeginCells();
    for (int i = 1; i <= scales; ++i)
        for (int t = 1; t <= samples; ++t) {
            const float v = values((i - 1) * samples + t);
            Rgb c = colour(v);
            if (ShowConeOfInfluence && !inside(i, t)) c = halfwayToWhite(c);
            FillCell(map, (t - 1) * cellW, H - (i - 1) * cellH, cellW, cellH, c, v);
        }
    if (!overlays) return;

    map.setForeColor(QColor(Qt::black));
    map.setDrawWidth(1);
    if (ShowSignificanceContour) {
        // The edges between significant and other cells, both inside the cone:
        // a cell is significant when its lg |W|^2 exceeds lg of its row's
        // level. Cell (i, t) spans x (t-1) cellW .. t cellW and y from
        // H - (i-1) cellH down to H - (i-2) cellH.
        std::vector<double> threshold(static_cast<std::size_t>(scales));
        for (std::size_t i = 0; i < threshold.size(); ++i)
            threshold[i] = std::log10(sig->localLevel[i]);
        auto significant = [&](int i, int t) {
            return values((i - 1) * samples + t) > threshold[static_cast<std::size_t>(i - 1)];
        };
        map.setDrawStyle(0);
        for (int i = 1; i <= scales; ++i) {
            const double top = H - (i - 1) * cellH;
            for (int t = 1; t < samples; ++t)
                if (inside(i, t) && inside(i, t + 1) && significant(i, t) != significant(i, t + 1))
                    map.Line(kLineSegment, t * cellW, top, t * cellW, top + cellH);
            if (i == scales) break;
            // Between row i and the row above it, one segment per run of edges.
            for (int t = 1; t <= samples;) {
                auto edge = [&](int u) {
                    return inside(i, u) && inside(i + 1, u) &&
                           significant(i, u) != significant(i + 1, u);
                };
                if (!edge(t)) {
                    ++t;
                    continue;
                }
                const int first = t;
                while (t <= samples && edge(t)) ++t;
                map.Line(kLineSegment, (first - 1) * cellW, top, (t - 1) * cellW, top);
            }
        }
    }
    if (ShowConeOfInfluence) {
        // The cone's edge in the rows' logarithmic layout, held at the lowest
        // row's period near the ends, where the cone falls to 0.
        const double lg0 = std::log10(MorletPeriods.front());
        const double lgRange = std::log10(MorletPeriods.back()) - lg0;
        auto y = [&](int t) {
            const double p = std::max(sig->cone[static_cast<std::size_t>(t - 1)],
                                      MorletPeriods.front());
            return H - (std::log10(p) - lg0) / lgRange * H;
        };
        map.setDrawStyle(1);
        for (int t = 1; t < samples; ++t)
            map.Line(kLineSegment, (t - 1) * cellW, y(t), t * cellW, y(t + 1));
        map.setDrawStyle(0);
    }
    RedNoiseNote = qs(WhiteNoiseNote(sig->fit));
    if (!loadedTitle_.isEmpty())
        window().setWindowTitle(RedNoiseNote.isEmpty() ? loadedTitle_
                                                       : loadedTitle_ + ", " + RedNoiseNote);
}

void MorletSvanForm::ConeOfInfluence_Toggle() {
    ShowConeOfInfluence = !ShowConeOfInfluence;
    redraw();
}

void MorletSvanForm::SignificanceContour_Toggle() {
    ShowSignificanceContour = !ShowSignificanceContour;
    redraw();
}

// Redraws the last map the fragment window handed over.
void MorletSvanForm::redraw() {
    if (MorletMapIn.count() == 0 || MorletPeriods.empty()) return;
    ui().MorletSvanMap->Cls();
    DrawMap(MorletMapIn, MorletSamplesIn, MorletScalesIn);
    if (!ShowConeOfInfluence && !ShowSignificanceContour && !loadedTitle_.isEmpty())
        window().setWindowTitle(loadedTitle_);
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
    c.MorletSvanMap->addMenuChoice(
        "Cone of Influence", [this] { return ShowConeOfInfluence; },
        [this] { ConeOfInfluence_Toggle(); });
    c.MorletSvanMap->addMenuChoice(
        "95 % Significance Contour", [this] { return ShowSignificanceContour; },
        [this] { SignificanceContour_Toggle(); });
}

void MorletSvanForm::Form_Load() {
    MorletSamples = MorletSamplesIn;
    MorletScales = MorletScalesIn;
    MorletSpec = MorletSpecIn;
    MorletMap = MorletMapIn;
    window().setWindowTitle(Caption() + ", File=" + MorletFileName +
                            ", Number of samples=" + qs(NumText(MorletSamples)));
    loadedTitle_ = window().windowTitle();
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
    const std::string N = encodeFileName(MorletFileName);
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
    const std::string D = encodeFileName(main.OutputFolder());
    makeSubdirectory(D, kSpectraDir);
    OutputFile file(names::MorletSpectrum(D, N, MorletTmin, MorletTmax, detrended));
    for (int i = 1; i <= MorletScales; ++i) {
        const double y = MorletLgMin + (i - 1) * (static_cast<double>(MorletLgMax) - MorletLgMin) /
                                           (MorletScales - 1);
        file.print(TwoColumnRecord(NumText(std::pow(10.0, y)), NumText(MorletSpec(i))));
    }
    file.close();
    // The companions of the overlays in force: the level of the wavelet
    // spectrum per row (|W|^2 units, the periods as in the spectrum file) and
    // the cone's period at each sample (time units), both at the map's dT.
    if (ShowSignificanceContour) {
        const MorletSignificance& sig = Significance();
        OutputFile level(names::MorletSpectrumLevel(D, N, MorletTmin, MorletTmax, detrended,
                                                   LevelPercent(kContourProbability)));
        for (int i = 1; i <= MorletScales; ++i) {
            const double y = MorletLgMin + (i - 1) * (static_cast<double>(MorletLgMax) -
                                                      MorletLgMin) / (MorletScales - 1);
            level.print(TwoColumnRecord(
                NumText(std::pow(10.0, y)),
                NumText(static_cast<float>(sig.globalLevel[static_cast<std::size_t>(i - 1)]))));
        }
        level.close();
    }
    if (ShowConeOfInfluence) {
        const MorletSignificance& sig = Significance();
        const double dT = boxDeltaT(workbench());
        makeSubdirectory(D, kGridDir);
        OutputFile cone(names::MorletCone(D, N, MorletTmin, MorletTmax, detrended));
        for (int t = 1; t <= MorletSamples; ++t)
            cone.print(TwoColumnRecord(
                NumText(static_cast<float>(MorletTmin + (t - 1) * dT)),
                NumText(static_cast<float>(sig.cone[static_cast<std::size_t>(t - 1)] * dT))));
        cone.close();
    }
    main.ui().Dir1->Refresh();
    main.ui().File1->Refresh();
}

} // namespace tarnic
