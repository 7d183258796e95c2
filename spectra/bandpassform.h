// BandPassForm: the whole signal filtered to the band of the spectrum zoom, and
// its save under a name that holds the two period limits.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct BandPassFormControls {
    explicit BandPassFormControls(FormWindow& window);

    PlotSurface* BandPassGraf;
    Button* BandPassSaveButton;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class BandPassForm : public FormOf<BandPassFormControls> {
  public:
    explicit BandPassForm(Workbench& workbench) : FormOf(workbench, "BandPassForm") {}

    QString BpfBaseName; // directory, the input name and "-BPF(", set at file intake
    Array1<float> BpfSignal;
    std::int32_t BpfCount = 0;
    float BpfTmin = 0, BpfTmax = 0; // the band's periods in samples

    void BandPassSaveButton_Click();
    void BandPassGraf_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Activate() override;

  private:
    float BpfMin = 0, BpfMax = 0;
};

} // namespace tarnic
