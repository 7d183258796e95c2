// The map of AR spectra in a moving time window.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class SvanArForm : public FormOf<struct SvanArFormControls> {
  public:
    explicit SvanArForm(Workbench& workbench) : FormOf(workbench, "SvanArForm") {}

    Array1<float> SvanSignal;  // the signal for the map
    std::int32_t SvanNrec = 0; // number of samples
    QString SvanFileName;      // the input name, part of the grid file name
};

struct SvanArFormControls {
    explicit SvanArFormControls(FormWindow&) {}
};

} // namespace tarnic
