// The theory picture of the multifractal DFA.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class MFDFA_Help_form : public FormOf<struct MFDFA_Help_formControls> {
  public:
    explicit MFDFA_Help_form(Workbench& workbench) : FormOf(workbench, "MFDFA_Help_form") {}

};

struct MFDFA_Help_formControls {
    explicit MFDFA_Help_formControls(FormWindow&) {}
};

} // namespace tarnic
