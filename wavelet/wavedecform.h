// The wavelet-packet components, one above the other.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WaveDecForm : public FormOf<struct WaveDecFormControls> {
  public:
    explicit WaveDecForm(Workbench& workbench) : FormOf(workbench, "WaveDecForm") {}

    QString WdcStem; // directory, the input name and "-WDC("
};

struct WaveDecFormControls {
    explicit WaveDecFormControls(FormWindow&) {}
};

} // namespace tarnic
