// The fragment window: the samples between the cursors of the signal window.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class SignalZoomForm : public FormOf<struct SignalZoomFormControls> {
  public:
    explicit SignalZoomForm(Workbench& workbench) : FormOf(workbench, "SignalZoomForm") {}

    Array1<float> Fragment;
    std::int32_t FragLeng = 0;
    std::int32_t FragCount = 0;
    Array1<float> FragInput;
    std::int32_t FragFirstSample = 0;
    std::int32_t FragLastSample = 0;
    float FragMin = 0;
    float FragMax = 0;
};

struct SignalZoomFormControls {
    explicit SignalZoomFormControls(FormWindow&) {}
};

} // namespace tarnic
