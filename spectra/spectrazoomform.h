// SpectraZoomForm: the part of the main spectrum estimate between the cursors
// of the main window, alone and full size, in whatever view the main window
// shows; the band it holds is the band the band-pass filter takes.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

namespace tarnic {

struct SpectraZoomFormControls {
    explicit SpectraZoomFormControls(FormWindow& window);

    PlotSurface* Picture1;
    Button* BandPassButton;
    Label* ZoomLabel;
    Label* Label1; // X axis title
    Label* Label2; // Y axis title
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class SpectraZoomForm : public FormOf<SpectraZoomFormControls> {
  public:
    explicit SpectraZoomForm(Workbench& workbench) : FormOf(workbench, "SpectraZoomForm") {}

    // The band in the units of the view (natural logarithms on a log axis).
    float ZoomXMin = 0, ZoomXMax = 0, ZoomYMin = 0, ZoomYMax = 0;
    // The whole signal, filtered to the band, and its extremes.
    Array1<float> BandSignal;
    float BandMin = 0, BandMax = 0;

    void BandPassButton_Click();
    void Picture1_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Activate() override;
    void Form_Unload() override;
};

} // namespace tarnic
