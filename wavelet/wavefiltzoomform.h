// The zoomed result of the threshold filter.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WaveFiltZoomForm : public FormOf<struct WaveFiltZoomFormControls> {
  public:
    explicit WaveFiltZoomForm(Workbench& workbench) : FormOf(workbench, "WaveFiltZoomForm") {}

};

struct WaveFiltZoomFormControls {
    explicit WaveFiltZoomFormControls(FormWindow&) {}
};

} // namespace tarnic
