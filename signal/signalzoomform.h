// SignalZoomForm, the fragment window: the samples between the cursors of the
// signal window (the residual when a trend is in force), the base of every
// fragment analysis: best-fit harmonic, maximum wave, Morlet map, Heisenberg
// boxes, WTMM chains, singularity spectrum, and the save of the fragment.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct SignalZoomFormControls {
    explicit SignalZoomFormControls(FormWindow& window);

    PlotSurface* TimeSeriesZoom;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    Button* SaveFragButton;
    Button* FindHarm;
    Button* FindMaxWave;
    Label* Label3;
    Label* Label4;
    Label* Label5;
    Button* MorletSvan;
    Button* HeisBoxesButton;
    Frame* Frame1;
    Label* Label1;
    TextBox* WTMM_TrendOrder;
    Label* Label2;
    TextBox* WTMM_ThreshLevel;
    Button* WTMM_button;
    Button* MFDFA_button;
};

class SignalZoomForm : public FormOf<SignalZoomFormControls> {
  public:
    explicit SignalZoomForm(Workbench& workbench) : FormOf(workbench, "SignalZoomForm") {}

    // Set by ZoomButton of the signal window.
    float FragFirstSample = 0; // 1-based sample numbers in the whole signal
    float FragLastSample = 0;
    float FragMin = 0; // Y scale of the analysed curve
    float FragMax = 0;
    std::int32_t FragCount = 0;
    Array1<float> FragInput;

    // The analysed fragment, copied by Load; every analysis reads it.
    std::int32_t FragLeng = 0;
    Array1<float> Fragment;

    // The best-fit harmonic.
    Array1<float> Harmonic;
    float HarmonicPeriod = 0;
    std::int32_t HarmonicReady = 0;

    void DisableFragmentControls();
    void EnableFragmentControls();

    // Event handlers.
    void SaveFragButton_Click();
    void FindHarm_Click();
    void FindMaxWave_Click();
    void MorletSvan_Click();
    void HeisBoxesButton_Click();
    void WTMM_button_Click();
    void WTMM_TrendOrder_Change();
    void WTMM_ThreshLevel_Change();
    void MFDFA_button_Click();
    void TimeSeriesZoom_DblClick();
    void TimeSeriesZoom_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

  private:
    bool detrended();
    // Y of a value on the panel of the analysed curve.
    double panelY(float value);
};

} // namespace tarnic
