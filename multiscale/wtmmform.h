// WTMM_Form: the longest chains of the wavelet transform modulus maxima
// skeleton of a fragment, for the Gaussian kernel and its first two
// derivatives, drawn in the plane of time and log10 of scale under the
// fragment as the library detrended it. WTMM_button of the fragment window
// computes, reads and draws everything (multiscale/wtmm.cpp); the window itself
// keeps the Y range of the chains for its read-outs and moves the red line that
// shows, on the fragment, the stretch Time +/- 3 * Scale under the pointer.
#pragma once

#include "core/form.h"
#include "core/modul.h"

#include <QString>

namespace tarnic {

struct WTMM_FormControls {
    explicit WTMM_FormControls(FormWindow& window);

    Label* Label1;
    Label* Label9;
    Button* WTMM_HelpButton;
    PlotSurface* WTMM_DetrendGraf;
    LineObject* AscaleLine;
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    Label* Label2;
    PlotSurface* WTMM_Graf;
    // The legend of the chain classes 1 .. 6.
    Label* Label3;
    Label* Label4;
    Label* Label5;
    Label* Label6;
    Label* Label7;
    Label* Label8;
};

class WTMM_Form : public FormOf<WTMM_FormControls> {
  public:
    explicit WTMM_Form(Workbench& workbench) : FormOf(workbench, "WTMM_Form") {}

    static constexpr const char* kCaption = "WTMM-skeletons longest chains";

    // Least and greatest log10 of scale (samples) among the chain points.
    float ChainLgMin = 0;
    float ChainLgMax = 0;

    // Event handlers.
    void WTMM_HelpButton_Click();
    void WTMM_DetrendGraf_MouseMove(int button, int shift, float x, float y);
    void WTMM_Graf_MouseMove(int button, int shift, float x, float y);
    void Form_MouseMove() override;

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;

  private:
    // Read at Activate from the main window's boxes.
    double dT_ = 1, T0_ = 0;
};

} // namespace tarnic
