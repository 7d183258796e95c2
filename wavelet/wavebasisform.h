// WaveBasisForm: the graph of the orthogonal wavelet the decomposition used.
// The decomposition draws into it; the window has no behaviour of its own.
#pragma once

#include "core/form.h"
#include "core/modul.h"

namespace tarnic {

struct WaveBasisFormControls {
    explicit WaveBasisFormControls(FormWindow& window);
    PlotSurface* WaveletBasisFunctionGraf;
};

class WaveBasisForm : public FormOf<WaveBasisFormControls> {
  public:
    explicit WaveBasisForm(Workbench& workbench) : FormOf(workbench, "WaveBasisForm") {}

  protected:
    void connectHandlers() override;
};

} // namespace tarnic
