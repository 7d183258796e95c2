// WaveFiltForm: wavelet threshold filtering of the whole signal. The window
// proposes the wavelet (minimum entropy) when it opens and the Donoho-Johnstone
// level on request; its buttons lead through wavelet, level, filter, zoom and
// save, and every change of a choice invalidates what rests on it.
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace tarnic {

struct WaveFiltFormControls {
    explicit WaveFiltFormControls(FormWindow& window);

    Frame* ChooseManual;
    OptionButton* DaubOption;
    OptionButton* SymletOption;
    TextBox* DaubOrder;
    TextBox* SymOrder;
    Label* Label2;
    Label* Label3;
    Button* LaunchDonoho;
    Frame* SetThreshLevel;
    TextBox* ThreshLevel;
    Label* Label5;
    Label* Label4;
    Button* LaunchThreshButton;
    Button* ZoomGrafButton;
    Button* SaveThreshButton;
    PlotSurface* WaveFiltGraf;
    LineObject* Line_Left;
    LineObject* Line_Right;
    Frame* FrameHScroll;
    ScrollBar* HScroll_Left;
    ScrollBar* HScroll_Right;
    Label* Label1;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
    std::unique_ptr<CursorPair> cursors;
};

class WaveFiltForm : public FormOf<WaveFiltFormControls> {
  public:
    explicit WaveFiltForm(Workbench& workbench) : FormOf(workbench, "WaveFiltForm") {}

    static constexpr const char* kCaption = "Wavelet Threshold Filtering ";

    // Handed over by the main window before the window is shown.
    std::int32_t Nrec = 0;
    Array1<float> Signal;
    float SignalMin = 0, SignalMax = 0, SignalRange = 0;
    QString ThreshFileStem; // directory and the input name, set at file intake

    Array1<float> FiltInput;  // copied at Load
    Array1<float> FiltResult; // the last filtering
    std::int32_t DaubDefault = 4, SymDefault = 8;
    std::int32_t WaveCode = 0;  // the wavelet of the last Donoho-Johnstone run
    float DonohoValue = 0;      // the level it found
    float ThreshValue = 0;      // the share handed to the filter

    // Event handlers.
    void DaubOption_Click();
    void SymletOption_Click();
    void Order_Change(); // DaubOrder and SymOrder alike
    void ThreshLevel_Change();
    void LaunchDonoho_Click();
    void LaunchThreshButton_Click();
    void SaveThreshButton_Click();
    void ZoomGrafButton_Click();
    void WaveFiltGraf_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

  private:
    void invalidateLevel();
};

} // namespace tarnic
