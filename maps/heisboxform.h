// HeisBoxForm: an orthogonal wavelet-packet decomposition of the fragment shown
// as boxes: time along X, the logarithm of scale along Y, each row of boxes as
// high as its own scale band, coloured by the logarithm of the coefficients.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct HeisBoxFormControls {
    explicit HeisBoxFormControls(FormWindow& window);

    Frame* ChooseManual;
    OptionButton* DaubOption;
    OptionButton* SymletOption;
    TextBox* DaubOrder;
    TextBox* SymOrder;
    Label* Label3;
    Label* Label4;
    Frame* WP_OptionFrame;
    OptionButton* Option1;
    OptionButton* Option2;
    OptionButton* Option3;
    OptionButton* Option4;
    Label* LevMaxLabel;
    TextBox* LevMaxText;
    Button* WavePackButton;
    Button* SaveGRD;
    PlotSurface* HeisBoxMap;
    PlotSurface* ColorScale;
    Label* Label1; // "Tmax"
    Label* Label2; // "Tmin"
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class HeisBoxForm : public FormOf<HeisBoxFormControls> {
  public:
    explicit HeisBoxForm(Workbench& workbench) : FormOf(workbench, "HeisBoxForm") {}

    static constexpr const char* kCaption =
        "Heisenberg Boxes Wavelet-Packet Map for Lg(Abs(WaveletCoeff.)) ";

    QString HeisFileName; // the input name, set at file intake

    std::int32_t HeisSamples = 0;
    Array1<float> HeisSignal;
    std::int32_t HeisLevels = 0;
    std::int32_t HeisDaubOrder = 4, HeisSymOrder = 8;
    std::int32_t HeisRows = 0, HeisCols = 0;
    Array1<float> HeisMap, HeisScaleLow, HeisScaleHigh;
    float HeisTmin = 0, HeisTmax = 0, HeisLgMin = 0, HeisLgMax = 0, HeisZmin = 0, HeisZmax = 0;

    // Event handlers.
    void WavePackButton_Click();
    void SaveGRD_Click();
    void DaubOption_Click();
    void SymletOption_Click();
    void ClearMap(); // the Change of any box and the Click of any option
    void ChoiceMouseMove(QWidget* control);
    void HeisBoxMap_MouseMove(int button, int shift, float x, float y);
    void ColorScale_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

  private:
    float lgLow_ = 0, lgHigh_ = 0; // the drawing range of the last run
};

} // namespace tarnic
