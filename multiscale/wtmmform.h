// The WTMM skeleton chains of a fragment.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WTMM_Form : public FormOf<struct WTMM_FormControls> {
  public:
    explicit WTMM_Form(Workbench& workbench) : FormOf(workbench, "WTMM_Form") {}

};

struct WTMM_FormControls {
    explicit WTMM_FormControls(FormWindow&) {}
};

} // namespace tarnic
