// The steps of the workbench, each the clicks a user makes for one action:
//   launch        Launch Spectra on the main window
//   signal        open the signal window
//   trend:R[:O]   compute a trend of radius R (a local polynomial of order O)
//   cursors:L:R   put the signal window's scroll bars to L and R (0..32767)
//   zoom          open the fragment window
//   harm, wave    find the best-fit harmonic, the maximum wave
//   wtmm          the WTMM chains of the fragment
//   mfdfa         the singularity spectrum window of the fragment, launched
//   spzoom        zoom the spectra between the main window's cursors
//   bandpass      filter the signal to the zoomed band
//   morlet        the Morlet map of the fragment
//   heis[:L:S]    the Heisenberg boxes of the fragment (level L, split option 1..4)
//   svanar[:L:S:O] open the AR spectra evolution window and launch it, with
//                 window length L, shift S and order O when given
//   wavepack[:L:S] decompose into wavelet packets (level L, split option 1..4);
//                 then "show:WaveSpectForm" or "show:WaveBasisForm" picks the window
//   wavefilt      open the threshold filter, take the Donoho-Johnstone level and filter
//   wavefiltzoom  the zoom of the filtered stretch between the filter's cursors
//   show:NAME     picture the window NAME instead of the last one opened
//   help[:K]      the help text (0), the block scheme (1), the WTMM (2) or the
//                 multifractal (3) theory picture
#include "app/steps.h"

#include "core/form1.h"
#include "core/workbench.h"
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/mfdfahelpform.h"
#include "help/wtmmhelp.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "multiscale/wtmmform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"
#include "wavelet/wavespectraform.h"

#include <QApplication>
#include <QFileInfo>

#include <algorithm>

namespace tarnic {

bool OpenFromBrowser(Workbench& workbench, const QFileInfo& file) {
    Form1& form1 = workbench.form1();
    form1.ui().Dir1->setPath(file.absolutePath());
    if (!form1.ui().File1->selectFile(file.fileName())) return false;
    form1.File1_DblClick();
    QApplication::processEvents();
    return true;
}

bool PerformStep(Workbench& workbench, const QString& text, Form*& front) {
    Form1& form1 = workbench.form1();
    const QStringList step = text.split(':');
    SignalPlot& plot = workbench.signalPlot();
    SignalZoomForm& zoom = workbench.signalZoomForm();
    if (step[0] == "launch") {
        form1.LaunchButton_Click();
    } else if (step[0] == "signal") {
        form1.ShowSignGrafButton_Click();
        front = &plot;
    } else if (step[0] == "trend" && step.size() > 1) {
        if (step.size() > 2) {
            plot.ui().LocPolynomOption->setValue(true);
            plot.ui().TrendPolynomOrder->setText(step[2]);
        }
        plot.ui().SmoothRad->setText(step[1]);
        plot.ReDrawButton_Click();
    } else if (step[0] == "cursors" && step.size() > 2) {
        plot.ui().HScroll_Right->setValue(step[2].toInt());
        plot.ui().HScroll_Left->setValue(step[1].toInt());
    } else if (step[0] == "zoom") {
        plot.ZoomButton_Click();
        front = &zoom;
    } else if (step[0] == "harm") {
        zoom.FindHarm_Click();
    } else if (step[0] == "wave") {
        zoom.FindMaxWave_Click();
    } else if (step[0] == "wtmm") {
        zoom.WTMM_button_Click();
        front = &workbench.wtmmForm();
    } else if (step[0] == "mfdfa") {
        zoom.MFDFA_button_Click();
        workbench.mfdfaForm().LaunchMFDFA_btn_Click();
        front = &workbench.mfdfaForm();
    } else if (step[0] == "spzoom") {
        form1.ZoomButton_Click();
        front = &workbench.spectraZoomForm();
    } else if (step[0] == "bandpass") {
        workbench.spectraZoomForm().BandPassButton_Click();
        front = &workbench.bandPassForm();
    } else if (step[0] == "wavepack") {
        if (step.size() > 2) {
            form1.ui().LevMaxText->setText(step[1]);
            OptionButton* options[] = {form1.ui().Option1, form1.ui().Option2,
                                       form1.ui().Option3, form1.ui().Option4};
            options[std::clamp(step[2].toInt(), 1, 4) - 1]->setValue(true);
        }
        form1.WavePackButton_Click();
        front = &workbench.waveDecForm();
    } else if (step[0] == "wavefilt") {
        form1.WaveFiltButton_Click();
        WaveFiltForm& filt = workbench.waveFiltForm();
        filt.LaunchDonoho_Click();
        filt.LaunchThreshButton_Click();
        front = &filt;
    } else if (step[0] == "wavefiltzoom") {
        workbench.waveFiltForm().ZoomGrafButton_Click();
        front = &workbench.waveFiltZoomForm();
    } else if (step[0] == "show" && step.size() > 1) {
        if (step[1] == "WaveSpectForm") front = &workbench.waveSpectForm();
        if (step[1] == "WaveBasisForm") front = &workbench.waveBasisForm();
        if (step[1] == "Form1") front = &form1;
    } else if (step[0] == "help") {
        Form* help[] = {&workbench.helpForm(), &workbench.blockSchemeForm(),
                        &workbench.wtmmHelp(), &workbench.mfdfaHelpForm()};
        front = help[std::clamp(step.size() > 1 ? step[1].toInt() : 0, 0, 3)];
        if (front == help[0])
            form1.HelpButton_Click();
        else
            front->Show();
    } else if (step[0] == "morlet") {
        zoom.MorletSvan_Click();
        front = &workbench.morletSvanForm();
    } else if (step[0] == "heis") {
        zoom.HeisBoxesButton_Click();
        HeisBoxForm& heis = workbench.heisBoxForm();
        if (step.size() > 2) {
            heis.ui().LevMaxText->setText(step[1]);
            OptionButton* options[] = {heis.ui().Option1, heis.ui().Option2, heis.ui().Option3,
                                       heis.ui().Option4};
            options[std::clamp(step[2].toInt(), 1, 4) - 1]->setValue(true);
        }
        heis.WavePackButton_Click();
        front = &heis;
    } else if (step[0] == "svanar") {
        form1.SvanArButton_Click();
        SvanArForm& svan = workbench.svanArForm();
        if (step.size() > 3) {
            svan.ui().LengWinText->setText(step[1]);
            svan.ui().ShiftText->setText(step[2]);
            svan.ui().ArOrderText->setText(step[3]);
        }
        svan.LaunchSvan_Click();
        front = &svan;
    } else {
        return false;
    }
    QApplication::processEvents();
    return true;
}

} // namespace tarnic
