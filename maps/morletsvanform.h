// MorletSvanForm: the base-10 logarithm of the squared Morlet coefficients of
// the fragment as a map of time against period. The fragment window computes
// and draws it; this window holds the result, answers the pointer and saves the
// grid and the wavelet spectrum.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace tarnic {

struct MorletSignificance;

// The number of scales of a fragment: 200, at most Int(length / 8), at least 50.
std::int32_t MorletScaleCount(std::int32_t fragLeng);

struct MorletSvanFormControls {
    explicit MorletSvanFormControls(FormWindow& window);

    PlotSurface* MorletSvanMap;
    PlotSurface* ColorScale;
    Button* SaveGRD;
    Label* Label1; // "Tmax", at the top of the Y marks
    Label* Label2; // "Tmin", at the bottom
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class MorletSvanForm : public FormOf<MorletSvanFormControls> {
  public:
    explicit MorletSvanForm(Workbench& workbench) : FormOf(workbench, "MorletSvanForm") {}

    static constexpr const char* kCaption = "Lg of Squared Morlet wavelet coefficients";

    // Set by the fragment window before the window opens.
    std::int32_t MorletSamplesIn = 0, MorletScalesIn = 0;
    Array1<float> MorletMapIn, MorletSpecIn;
    float MorletTmin = 0, MorletTmax = 0;   // times of the fragment's ends
    float MorletLgMin = 0, MorletLgMax = 0; // lg of the least and greatest period
    float MorletZmin = 0, MorletZmax = 0;   // range of the map
    QString MorletFileName;                 // the input name, set at file intake

    // Copied at Load.
    std::int32_t MorletSamples = 0, MorletScales = 0;
    Array1<float> MorletMap, MorletSpec;

    // Overlays of the map, chosen in its context menu (the program keeps the
    // choice between runs) or by the batch tool; off, the map and its save are
    // as without them.
    bool ShowConeOfInfluence = false;     // shading outside the cone, its edge
    bool ShowSignificanceContour = false; // 95 % local significance contour
    static constexpr double kContourProbability = 0.95;
    // Set by the fragment window with the map (SetSource): the samples the map
    // was made from and the Fourier period of each row in samples, row 1 first.
    std::vector<float> MorletFragment;
    std::vector<double> MorletPeriods;
    void SetSource(std::vector<float> fragment, std::vector<double> periods);
    // Why the red-noise background is white noise; else empty.
    QString RedNoiseNote;

    // The red-noise levels and the cone of the map, computed once per map.
    const MorletSignificance& Significance();
    // Draws the cells of `values` (row after row, `samples` to a row) and the
    // overlays in force on the cleared map.
    void DrawMap(const Array1<float>& values, std::int32_t samples, std::int32_t scales);
    // The context-menu choices: each redraws the map.
    void ConeOfInfluence_Toggle();
    void SignificanceContour_Toggle();

    void MorletSvanMap_MouseMove(int button, int shift, float x, float y);
    void ColorScale_MouseMove(int button, int shift, float x, float y);
    void SaveGRD_Click();

  private:
    void redraw();
    std::shared_ptr<const MorletSignificance> significance_;
    QString loadedTitle_; // the caption Load gives, without a note

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;
};

} // namespace tarnic
