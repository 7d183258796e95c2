// The graph of the chosen orthogonal wavelet.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WaveBasisForm : public FormOf<struct WaveBasisFormControls> {
  public:
    explicit WaveBasisForm(Workbench& workbench) : FormOf(workbench, "WaveBasisForm") {}

};

struct WaveBasisFormControls {
    explicit WaveBasisFormControls(FormWindow&) {}
};

} // namespace tarnic
