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

namespace tarnic {

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

    void MorletSvanMap_MouseMove(int button, int shift, float x, float y);
    void ColorScale_MouseMove(int button, int shift, float x, float y);
    void SaveGRD_Click();

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;
};

} // namespace tarnic
