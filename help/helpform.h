// The help text.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class HelpForm : public FormOf<struct HelpFormControls> {
  public:
    explicit HelpForm(Workbench& workbench) : FormOf(workbench, "HelpForm") {}

};

struct HelpFormControls {
    explicit HelpFormControls(FormWindow&) {}
};

} // namespace tarnic
