// The multifractal DFA singularity spectrum of a fragment.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class MFDFA_form : public FormOf<struct MFDFA_formControls> {
  public:
    explicit MFDFA_form(Workbench& workbench) : FormOf(workbench, "MFDFA_form") {}

    QString MfdfaFileName; // the input name
};

struct MFDFA_formControls {
    explicit MFDFA_formControls(FormWindow&) {}
};

} // namespace tarnic
