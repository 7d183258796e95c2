// The band-pass filtered signal.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class BandPassForm : public FormOf<struct BandPassFormControls> {
  public:
    explicit BandPassForm(Workbench& workbench) : FormOf(workbench, "BandPassForm") {}

    QString BpfBaseName; // directory, the input name and "-BPF("
};

struct BandPassFormControls {
    explicit BandPassFormControls(FormWindow&) {}
};

} // namespace tarnic
