// The theory picture of the WTMM analysis.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class WTMM_Help : public FormOf<struct WTMM_HelpControls> {
  public:
    explicit WTMM_Help(Workbench& workbench) : FormOf(workbench, "WTMM_Help") {}

};

struct WTMM_HelpControls {
    explicit WTMM_HelpControls(FormWindow&) {}
};

} // namespace tarnic
