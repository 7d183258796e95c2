// The block scheme of the workbench.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class BlockSchemeForm : public FormOf<struct BlockSchemeFormControls> {
  public:
    explicit BlockSchemeForm(Workbench& workbench) : FormOf(workbench, "BlockSchemeForm") {}

};

struct BlockSchemeFormControls {
    explicit BlockSchemeFormControls(FormWindow&) {}
};

} // namespace tarnic
