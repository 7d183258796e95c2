// The Morlet wavelet map of a fragment.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class MorletSvanForm : public FormOf<struct MorletSvanFormControls> {
  public:
    explicit MorletSvanForm(Workbench& workbench) : FormOf(workbench, "MorletSvanForm") {}

    QString MorletFileName; // the input name
};

struct MorletSvanFormControls {
    explicit MorletSvanFormControls(FormWindow&) {}
};

} // namespace tarnic
