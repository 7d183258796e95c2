// The one object that owns every window of the program. A test builds a fresh
// Workbench, drives it and throws it away; the application makes one in main.
#pragma once

#include <memory>

namespace tarnic {

class Form;
class Form1;
class SignalPlot;
class SignalZoomForm;
class SpectraZoomForm;
class BandPassForm;
class WaveDecForm;
class WaveSpectForm;
class WaveBasisForm;
class WaveFiltForm;
class WaveFiltZoomForm;
class SvanArForm;
class MorletSvanForm;
class HeisBoxForm;
class WTMM_Form;
class WTMM_Help;
class MFDFA_form;
class MFDFA_Help_form;
class HelpForm;
class BlockSchemeForm;

class Workbench {
  public:
    Workbench();
    ~Workbench();
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;

    Form1& form1() { return *form1_; }
    SignalPlot& signalPlot() { return *signalPlot_; }
    SignalZoomForm& signalZoomForm() { return *signalZoomForm_; }
    SpectraZoomForm& spectraZoomForm() { return *spectraZoomForm_; }
    BandPassForm& bandPassForm() { return *bandPassForm_; }
    WaveDecForm& waveDecForm() { return *waveDecForm_; }
    WaveSpectForm& waveSpectForm() { return *waveSpectForm_; }
    WaveBasisForm& waveBasisForm() { return *waveBasisForm_; }
    WaveFiltForm& waveFiltForm() { return *waveFiltForm_; }
    WaveFiltZoomForm& waveFiltZoomForm() { return *waveFiltZoomForm_; }
    SvanArForm& svanArForm() { return *svanArForm_; }
    MorletSvanForm& morletSvanForm() { return *morletSvanForm_; }
    HeisBoxForm& heisBoxForm() { return *heisBoxForm_; }
    WTMM_Form& wtmmForm() { return *wtmmForm_; }
    WTMM_Help& wtmmHelp() { return *wtmmHelp_; }
    MFDFA_form& mfdfaForm() { return *mfdfaForm_; }
    MFDFA_Help_form& mfdfaHelpForm() { return *mfdfaHelpForm_; }
    HelpForm& helpForm() { return *helpForm_; }
    BlockSchemeForm& blockSchemeForm() { return *blockSchemeForm_; }

    // Starts the program: loads and shows the main window.
    void start();
    // Ends the program at once, with all windows.
    void end();

    // The window that was activated last (for the Activate event).
    Form* activeForm() const { return activeForm_; }
    void setActiveForm(Form* form) { activeForm_ = form; }

  private:
    std::unique_ptr<Form1> form1_;
    std::unique_ptr<SignalPlot> signalPlot_;
    std::unique_ptr<SignalZoomForm> signalZoomForm_;
    std::unique_ptr<SpectraZoomForm> spectraZoomForm_;
    std::unique_ptr<BandPassForm> bandPassForm_;
    std::unique_ptr<WaveDecForm> waveDecForm_;
    std::unique_ptr<WaveSpectForm> waveSpectForm_;
    std::unique_ptr<WaveBasisForm> waveBasisForm_;
    std::unique_ptr<WaveFiltForm> waveFiltForm_;
    std::unique_ptr<WaveFiltZoomForm> waveFiltZoomForm_;
    std::unique_ptr<SvanArForm> svanArForm_;
    std::unique_ptr<MorletSvanForm> morletSvanForm_;
    std::unique_ptr<HeisBoxForm> heisBoxForm_;
    std::unique_ptr<WTMM_Form> wtmmForm_;
    std::unique_ptr<WTMM_Help> wtmmHelp_;
    std::unique_ptr<MFDFA_form> mfdfaForm_;
    std::unique_ptr<MFDFA_Help_form> mfdfaHelpForm_;
    std::unique_ptr<HelpForm> helpForm_;
    std::unique_ptr<BlockSchemeForm> blockSchemeForm_;
    Form* activeForm_ = nullptr;
};

} // namespace tarnic
