// WaveDecForm: every wavelet-packet component of the signal in a band of its
// own over one time axis; the pointer selects a component and a double click
// saves it in the units of the signal. Closing it ends the decomposition view.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct WaveDecFormControls {
    explicit WaveDecFormControls(FormWindow& window);

    PlotSurface* WaveDecGraf;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    Label* Label1;
};

class WaveDecForm : public FormOf<WaveDecFormControls> {
  public:
    explicit WaveDecForm(Workbench& workbench) : FormOf(workbench, "WaveDecForm") {}

    // Handed over by the decomposition before the window is shown.
    std::int32_t Nrec = 0;
    std::int32_t ComponentCount = 0;
    Array1<float> WdcTmin, WdcTmax, WdcMean, WdcScale, WdcData;
    QString WdcStem; // directory, the input name and "-WDC(", set at file intake
    // The component a double click saves; 0 until the pointer selected one.
    std::int32_t SelectedComponent = 0;

    void WaveDecGraf_MouseMove(int button, int shift, float x, float y);
    void WaveDecGraf_DblClick();

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;
    void Form_MouseMove() override;

  private:
    // The working copies made by Load.
    Array1<float> tmin_, tmax_, mean_, scale_, data_;
};

} // namespace tarnic
