// WaveFiltZoomForm: the input signal and the threshold filter's result between
// the cursors of the filter window, on a Y scale of their own. A view only.
#pragma once

#include "core/form.h"
#include "core/modul.h"

namespace tarnic {

struct WaveFiltZoomFormControls {
    explicit WaveFiltZoomFormControls(FormWindow& window);

    PlotSurface* WaveFiltZoomGraf;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class WaveFiltZoomForm : public FormOf<WaveFiltZoomFormControls> {
  public:
    explicit WaveFiltZoomForm(Workbench& workbench) : FormOf(workbench, "WaveFiltZoomForm") {}

    float ZoomFirstSample = 0, ZoomLastSample = 0; // 1-based sample numbers
    float ZoomMin = 0, ZoomMax = 0;                // range of the input in the fragment

    void WaveFiltZoomGraf_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Activate() override;
};

} // namespace tarnic
