#include "core/workbench.h"

#include "core/form1.h"
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "help/mfdfahelpform.h"
#include "multiscale/wtmmform.h"
#include "help/wtmmhelp.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"
#include "wavelet/wavespectraform.h"

#include <QCoreApplication>

namespace tarnic {

Workbench::Workbench()
    : form1_(std::make_unique<Form1>(*this)),
      signalPlot_(std::make_unique<SignalPlot>(*this)),
      signalZoomForm_(std::make_unique<SignalZoomForm>(*this)),
      spectraZoomForm_(std::make_unique<SpectraZoomForm>(*this)),
      bandPassForm_(std::make_unique<BandPassForm>(*this)),
      waveDecForm_(std::make_unique<WaveDecForm>(*this)),
      waveSpectForm_(std::make_unique<WaveSpectForm>(*this)),
      waveBasisForm_(std::make_unique<WaveBasisForm>(*this)),
      waveFiltForm_(std::make_unique<WaveFiltForm>(*this)),
      waveFiltZoomForm_(std::make_unique<WaveFiltZoomForm>(*this)),
      svanArForm_(std::make_unique<SvanArForm>(*this)),
      morletSvanForm_(std::make_unique<MorletSvanForm>(*this)),
      heisBoxForm_(std::make_unique<HeisBoxForm>(*this)),
      wtmmForm_(std::make_unique<WTMM_Form>(*this)),
      wtmmHelp_(std::make_unique<WTMM_Help>(*this)),
      mfdfaForm_(std::make_unique<MFDFA_form>(*this)),
      mfdfaHelpForm_(std::make_unique<MFDFA_Help_form>(*this)),
      helpForm_(std::make_unique<HelpForm>(*this)),
      blockSchemeForm_(std::make_unique<BlockSchemeForm>(*this)) {}

Workbench::~Workbench() = default;

void Workbench::start() { form1_->Show(); }

void Workbench::end() {
    // All windows go at once, without any question.
    for (Form* f : std::initializer_list<Form*>{
             signalPlot_.get(), signalZoomForm_.get(), spectraZoomForm_.get(), bandPassForm_.get(),
             waveDecForm_.get(), waveSpectForm_.get(), waveBasisForm_.get(), waveFiltForm_.get(),
             waveFiltZoomForm_.get(), svanArForm_.get(), morletSvanForm_.get(), heisBoxForm_.get(),
             wtmmForm_.get(), wtmmHelp_.get(), mfdfaForm_.get(), mfdfaHelpForm_.get(),
             helpForm_.get(), blockSchemeForm_.get()})
        f->Hide();
    form1_->Hide();
    QCoreApplication::exit(0);
}

} // namespace tarnic
