// Wavelet threshold filtering of the whole signal.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WaveFiltForm : public FormOf<struct WaveFiltFormControls> {
  public:
    explicit WaveFiltForm(Workbench& workbench) : FormOf(workbench, "WaveFiltForm") {}

    QString ThreshFileStem; // directory and the input name
};

struct WaveFiltFormControls {
    explicit WaveFiltFormControls(FormWindow&) {}
};

} // namespace tarnic
