// SignalPlot, the signal window: the whole signal, a trend by one of two
// smoothers with the residual under it, their save, and two cursors that choose
// the fragment for SignalZoomForm.
//
// Whether a trend is in force (TrendRadius above 0) decides everywhere
// downstream what a fragment is: with a trend, every fragment analysis works on
// the residual.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace tarnic {

struct SignalPlotControls {
    explicit SignalPlotControls(FormWindow& window);

    PlotSurface* TimeSeriesGraf;
    LineObject* Line_Left;
    LineObject* Line_Right;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    Frame* FrameHScroll;
    ScrollBar* HScroll_Left;
    ScrollBar* HScroll_Right;
    Label* Label1;
    Label* NofSamplesInside;
    Frame* SmoothTypeFrame;
    OptionButton* KernSmoothOption;
    OptionButton* LocPolynomOption;
    Frame* SmoothingRaduisFrame;
    Label* RadiusLabel;
    TextBox* SmoothRad;
    Label* OrderLabel;
    TextBox* TrendPolynomOrder;
    Button* ReDrawButton;
    Button* SaveTrendButton;
    Button* ReturnInitial;
    Button* ZoomButton;
    std::unique_ptr<CursorPair> cursors;
};

class SignalPlot : public FormOf<SignalPlotControls> {
  public:
    explicit SignalPlot(Workbench& workbench);

    static constexpr const char* kCaption = "Signal Plot";

    // Set by the file intake, once per input file.
    std::int32_t SignalLength = 0;
    float SignalFloor = 0;
    float SignalCeil = 0;
    Array1<float> SignalCopy;
    QString SignalFilePath;
    // The smoothing radius of the trend in force; 0: no trend.
    std::int32_t TrendRadius = 0;

    // Event handlers.
    void ReDrawButton_Click();
    void ReturnInitial_Click();
    void SaveTrendButton_Click();
    void KernSmoothOption_Click();
    void LocPolynomOption_Click();
    void SmoothRad_Change();
    void TrendPolynomOrder_Change();
    void SmoothRad_MouseMove();
    void TimeSeriesGraf_MouseMove(int button, int shift, float x, float y);
    void ZoomButton_Click();
    // Unloads the windows that rest on the fragment.
    void CloseDependentWindows();

    // Working copies, made by each Load (read by tests).
    const Array1<double>& trend() const { return Trend; }
    const Array1<float>& residual() const { return Residual; }

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

  private:
    void drawSignalFullHeight();
    void updateSampleCount();

    Array1<float> SignalWork;
    Array1<double> SignalWide;
    Array1<double> Trend;
    Array1<float> Residual;
    float ResidualMin = 0, ResidualMax = 0;
    Array1<float> FragmentOut;
};

} // namespace tarnic
