// MFDFA_form: the multifractal singularity spectrum of a fragment by detrended
// fluctuation analysis. The window takes the fragment at Load, repairs its four
// parameter boxes at each launch, draws the spectrum F(Alfa) and the table of
// generalised fluctuations against scale with a least-squares line through
// every tenth q, and saves the spectrum into "SpectEstimates".
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct MFDFA_formControls {
    explicit MFDFA_formControls(FormWindow& window);

    Label* Label1;
    PlotSurface* FalfaPlot;
    MarksFrame* XmarksFrameB;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrameB;
    MarkLabels Ymarks{};
    Label* Label4;
    PlotSurface* ZQtab_Plot;
    Label* Label3;
    Label* Label2;
    // Hidden until a run meets flat segments (see MfdfaFlatWarning).
    Label* FlatWarning;
    TextBox* Text1;
    TextBox* Text2;
    TextBox* Text3;
    TextBox* Text4;
    Button* LaunchMFDFA_btn;
    Button* SaveFalfa_button;
    Button* MFDFA_Help_button;
};

class MFDFA_form : public FormOf<MFDFA_formControls> {
  public:
    explicit MFDFA_form(Workbench& workbench) : FormOf(workbench, "MFDFA_form") {}

    QString MfdfaFileName; // the input name, set at file intake

    // The fragment, copied at Load.
    std::int32_t MfdfaSamples = 0;
    Array1<float> MfdfaInput;
    Array1<double> MfdfaSignal;
    float MfdfaTmin = 0, MfdfaTmax = 0; // times of its first and last sample

    // The parameters of the last launch, as its boxes were rewritten.
    std::int32_t DetrendOrder = 4;
    std::int32_t MeasureType = 0; // 0 Max-Min, 1 standard deviation
    std::int32_t MinScale = 20;   // samples
    std::int32_t MaxScale = 40;   // samples

    // The results of the last run that could be drawn.
    std::int32_t AlfaCount = 0;
    Array1<double> Alfa;
    Array1<double> FAlfa; // 0 or below: a point outside the spectrum
    Array1<double> ZQtab; // scale s, q number j at (s - 1) * QCount + j
    float AlfaMin = 0, AlfaMax = 0, FAlfaMin = 0, FAlfaMax = 0;
    float LgScaleMin = 0, LgScaleMax = 0; // log10 of scale in samples

    // Event handlers.
    void Text_Change(); // Text1 .. Text4 alike
    void LaunchMFDFA_btn_Click();
    void SaveFalfa_button_Click();
    void MFDFA_Help_button_Click();
    void FalfaPlot_MouseMove(int button, int shift, float x, float y);
    void ZQtab_Plot_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Unload() override;
};

} // namespace tarnic
