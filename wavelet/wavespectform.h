// The wavelet-packet spectra.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WaveSpectForm : public FormOf<struct WaveSpectFormControls> {
  public:
    explicit WaveSpectForm(Workbench& workbench) : FormOf(workbench, "WaveSpectForm") {}

    QString WaveSpFileName; // the input name
};

struct WaveSpectFormControls {
    explicit WaveSpectFormControls(FormWindow&) {}
};

} // namespace tarnic
