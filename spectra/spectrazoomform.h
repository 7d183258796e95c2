// The zoomed spectrum: the band between the cursors of the main window.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class SpectraZoomForm : public FormOf<struct SpectraZoomFormControls> {
  public:
    explicit SpectraZoomForm(Workbench& workbench) : FormOf(workbench, "SpectraZoomForm") {}

};

struct SpectraZoomFormControls {
    explicit SpectraZoomFormControls(FormWindow&) {}
};

} // namespace tarnic
