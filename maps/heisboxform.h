// The map of wavelet-packet Heisenberg boxes of a fragment.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class HeisBoxForm : public FormOf<struct HeisBoxFormControls> {
  public:
    explicit HeisBoxForm(Workbench& workbench) : FormOf(workbench, "HeisBoxForm") {}

    QString HeisFileName; // the input name
};

struct HeisBoxFormControls {
    explicit HeisBoxFormControls(FormWindow&) {}
};

} // namespace tarnic
