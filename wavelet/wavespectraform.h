// WaveSpectForm: the power of each wavelet-packet component against the
// frequency or the period of its band, in the views of the main spectrum
// display, and its save.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct WaveSpectFormControls {
    explicit WaveSpectFormControls(FormWindow& window);

    PlotSurface* WaveSpectraGraf;
    Frame* FrameSpectraView;
    CheckBox* FreqCheck;
    CheckBox* LogX_Check;
    CheckBox* LogY_Check;
    Button* SaveSpButton;
    Label* Label1;
    Label* Label2;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class WaveSpectForm : public FormOf<WaveSpectFormControls> {
  public:
    explicit WaveSpectForm(Workbench& workbench) : FormOf(workbench, "WaveSpectForm") {}

    static constexpr const char* kCaption = "Wavelet-Packet Power Spectra ";

    std::int32_t SplitCoef = 0;
    std::int32_t ComponentCount = 0;
    Array1<float> WdcTmin, WdcTmax, WdcPower; // handed over, copied at Load
    QString WaveSpFileName;                   // the input name, set at file intake
    Array1<float> BandFreq;                   // mean of the band's two frequencies
    float XMinShown = 0, XMaxShown = 0;

    void PlotSpectraWave();
    void SaveSpButton_Click();
    void WaveSpectraGraf_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;

  private:
    Array1<float> tmin_, tmax_, power_;
};

} // namespace tarnic
