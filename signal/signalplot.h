// The signal window: the whole signal, its trend and residual, the cursors that choose a fragment.
//
// Its controls and handlers are built with the analysis it serves; until then
// the window carries the public members that other windows fill.
#pragma once

#include "core/array1.h"
#include "core/form.h"

#include <QString>
#include <cstdint>

namespace tarnic {

class SignalPlot : public FormOf<struct SignalPlotControls> {
  public:
    explicit SignalPlot(Workbench& workbench) : FormOf(workbench, "SignalPlot") {}

    std::int32_t SignalLength = 0;   // number of samples
    float SignalFloor = 0;           // lower bound of the signal plot
    float SignalCeil = 0;            // upper bound of the signal plot
    Array1<float> SignalCopy;        // the whole signal, also the source of band-pass filtering
    QString SignalFilePath;          // stem of trend, residual, fragment and harmonic file names
    std::int32_t TrendRadius = 0;    // 0: fragments are plain samples; above 0: the residual
};

struct SignalPlotControls {
    explicit SignalPlotControls(FormWindow&) {}
};

} // namespace tarnic
