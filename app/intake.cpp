// The double-click on File1: the only place where a signal enters the program.
#include "core/form1.h"

#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
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

#include <cmath>
#include <new>

namespace tarnic {
void Form1::commonRejection() {
    Form1Controls& c = ui();
    c.FrameSpectraView->setEnabled(false);
    c.FrameHScroll->setEnabled(false);
    c.Picture1->Cls();
    c.Picture1->setEnabled(false);
    c.Y_axis_Label->setVisible(false);
    refreshBrowserAfterFailure();
}

void Form1::refreshBrowserAfterFailure() {
    Form1Controls& c = ui();
    c.File1->setEnabled(true);
    c.File1->Refresh();
    c.Dir1->setEnabled(true);
    c.Drive1->setEnabled(true);
}

void Form1::File1_DblClick() {
    Form1Controls& c = ui();
    Workbench& wb = workbench();
    SpectraReady = 0;
    DisableWorkGroup();
    DisableSpectraGroup();
    c.MessLineLabel->setVisible(false);

    // Every window that works on the old file goes.
    wb.signalPlot().Unload();
    wb.signalZoomForm().Unload();
    wb.spectraZoomForm().Unload();
    wb.bandPassForm().Unload();
    wb.waveDecForm().Unload();
    wb.waveSpectForm().Unload();
    wb.waveBasisForm().Unload();
    wb.wtmmForm().Unload();
    wb.wtmmHelp().Unload();
    wb.waveFiltForm().Unload();
    wb.waveFiltZoomForm().Unload();
    wb.svanArForm().Unload();
    wb.morletSvanForm().Unload();
    wb.heisBoxForm().Unload();

    c.Picture1->Cls();
    c.Picture1->Refresh();

    const QString selected = c.File1->FileName();
    const QString extension = selected.right(3).toUpper();
    if (extension == "EXE" || extension == "COM" || extension == "DLL" || extension == "BAK") {
        showMessage("EXE, DLL, COM or BAK-files are not processed");
        c.FrameSpectraView->setEnabled(false);
        c.FrameHScroll->setEnabled(false);
        c.LaunchButton->setEnabled(false);
        c.SvanArButton->setEnabled(false);
        refreshBrowserAfterFailure();
        return;
    }

    InFileName = selected.trimmed();
    InFilePath = c.Dir1->Path() + "/" + InFileName;
    PathLen = static_cast<std::int32_t>(InFilePath.size());
    PathCodes.resize(PathLen);
    for (int i = 1; i <= PathLen; ++i) PathCodes(i) = static_cast<std::int16_t>(InFilePath[i - 1].unicode());

    try {
        std::int32_t countStatus = 0;
        dll::CountFileRecords_dll(PathCodes.first(), PathLen, Nrec, countStatus);
        window().setWindowTitle(kWorkCaption);
        if (countStatus == 0) {
            showMessage("The input file " + InFileName + " has a zero size - nothing to process.");
            commonRejection();
            return;
        }
        if (countStatus == Nrec + 1) {
            showMessage("The input file " + InFileName + " has a wrong structure within record # " +
                        qs(NumText(countStatus)));
            commonRejection();
            return;
        }
        if (countStatus <= -2) {
            // The library could not tell decimal commas from column commas;
            // it names the line (counted from 1, comments and blanks included).
            showMessage("The input file " + InFileName +
                        " has commas that can be read both as decimal commas and as column "
                        "separators within line # " + qs(NumText(-1 - countStatus)) +
                        ". Separate the columns by semicolons or tabs, or write the numbers "
                        "with a decimal point.");
            commonRejection();
            return;
        }
        SignalPlot& plot = wb.signalPlot();
        plot.SignalLength = Nrec;
        Signal.resize(Nrec);
        if (Nrec > 0) dll::ReadSignalFile_dll(PathCodes.first(), PathLen, Nrec, Signal.first());

        SignalMin = 1E+35f;
        SignalMax = -1E+35f;
        for (int i = 1; i <= Nrec; ++i) {
            if (Signal(i) > SignalMax) SignalMax = Signal(i);
            if (Signal(i) < SignalMin) SignalMin = Signal(i);
        }
        SignalRange = SignalMax - SignalMin;
        if (!(SignalRange > 0)) {
            showMessage("The 1-st column of the file " + InFilePath +
                        " presents a constant and could not be analyzed but if input file has "
                        "more than 1 column it is demultiplexed.");
            dll::DemulplexTable_dll(PathCodes.first(), PathLen, Nrec);
            c.File1->Refresh();
            commonRejection();
            return;
        }
        plot.SignalFloor = SignalMin;
        plot.SignalCeil = SignalMax;

        // Default parameters for this file.
        const std::int32_t length = std::clamp(Nrec, 32, 2048);
        c.TimeLengText->setText(qs(NumText(length)));
        c.AR_Length_Text->setText(qs(NumText(length)));
        c.RadiusText->setText(qs(NumText(std::int32_t{1})));
        const double fc = 6.5 - 3.5 * std::cos(3.14159265 * (length - 32) / 2016);
        const std::int32_t order = std::min(IntClamped(length / fc), 1000);
        c.AR_OrderText->setText(qs(NumText(order)));
        c.DeltaT_Text->setText(qs(NumText(std::int32_t{1})));
        c.Time0_Text->setText(qs(NumText(std::int32_t{0})));
        ResetCursors();

        // First plot: the signal in the upper third, a red line under it.
        PlotSurface& pic = *c.Picture1;
        const double W = pic.ScaleWidth(), H = pic.ScaleHeight();
        pic.Cls();
        pic.setEnabled(true);
        pic.setForeColor(BasicColor(1));
        for (int i = 1; i <= Nrec - 1; ++i)
            pic.Line(kLineSegment, W * (i - 1) / (Nrec - 1),
                     (H / 3) * (SignalMax - Signal(i)) / SignalRange, W * i / (Nrec - 1),
                     (H / 3) * (SignalMax - Signal(i + 1)) / SignalRange);
        c.Y_axis_Label->setVisible(true);
        c.Y_axis_Label->setCaption("File = " + InFileName + ",  Number of samples =" +
                                   qs(NumText(Nrec)));
        pic.setForeColor(BasicColor(12));
        pic.Line(kLineSegment, 0, H / 3, W, H / 3);

        if (Nrec < 32) {
            showMessage("The input file " + InFileName +
                        " has too few (less than 32) samples: " + qs(NumText(Nrec)));
            c.FrameSpectraView->setEnabled(false);
            c.FrameHScroll->setEnabled(false);
            c.LaunchButton->setEnabled(false);
            c.SvanArButton->setEnabled(false);
            pic.Cls();
            pic.setEnabled(false);
            refreshBrowserAfterFailure();
            return;
        }

        // Hand the signal and the name stems to the other windows.
        plot.SignalCopy = Signal;
        pic.setEnabled(true);
        const QString stem = OutputFolder() + "/" + InFileName;
        wb.svanArForm().SvanSignal = Signal;
        wb.svanArForm().SvanNrec = Nrec;
        wb.bandPassForm().BpfBaseName = stem + "-BPF(";
        plot.SignalFilePath = stem;
        wb.waveDecForm().WdcStem = stem + "-WDC(";
        wb.waveSpectForm().WaveSpFileName = InFileName;
        wb.waveFiltForm().ThreshFileStem = stem;
        wb.svanArForm().SvanFileName = InFileName;
        wb.morletSvanForm().MorletFileName = InFileName;
        wb.heisBoxForm().HeisFileName = InFileName;
        wb.mfdfaForm().MfdfaFileName = InFileName;

        c.DemplxButton->setEnabled(true);
        c.WavePackButton->setEnabled(true);
        c.WaveFiltButton->setEnabled(true);

        LevPow = 1;
        LevPowLength = 2;
        while (LevPowLength < Nrec) {
            ++LevPow;
            LevPowLength = 1 << LevPow;
        }
        c.LevMaxText->setText(qs(NumText(LevPow - 4)));

        EnableWorkGroup();
        for (QWidget* w : std::initializer_list<QWidget*>{c.IncremButton, c.WinzorButton,
                                                          c.DownSampButton, c.DownStepText,
                                                          c.LaunchButton})
            w->setEnabled(true);
        c.File1->setEnabled(false);
        c.Dir1->setEnabled(false);
        c.Drive1->setEnabled(false);
    } catch (const std::exception&) {
        // The library is missing, lacks a routine, or the work ran out of memory.
        showMessage(kMissingLibraryMessage);
        c.FrameSpectraView->setEnabled(false);
        c.FrameHScroll->setEnabled(false);
        c.Picture1->Cls();
        c.Picture1->setEnabled(false);
        c.Y_axis_Label->setVisible(false);
    }
}

} // namespace tarnic
