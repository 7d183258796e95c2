// The main window's wiring: the handlers of its controls, many of which live in
// the folders of the windows they open, and the end of the program.
#include "core/form1.h"

#include "app/steps.h"
#include "core/msgbox.h"
#include "core/workbench.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"

#include <QFileInfo>

namespace tarnic {

Form1::Form1(Workbench& workbench) : FormOf(workbench, "Form1") {}

void Form1::connectHandlers() {
    setClientSize(15990, 8550);
    Form1Controls& c = *ui_;
    c.File1->Click = [this] { File1_Click(); };
    c.File1->DblClick = [this] { File1_DblClick(); };
    c.Dir1->Change = [this] { Dir1_Change(); };
    c.Drive1->Change = [this] { Drive1_Change(); };
    c.OtherFileButton->Click = [this] { OtherFileButton_Click(); };
    c.ExitButton->Click = [this] { ExitButton_Click(); };
    c.IncremButton->Click = [this] { IncremButton_Click(); };
    c.WinzorButton->Click = [this] { WinzorButton_Click(); };
    c.DemplxButton->Click = [this] { DemplxButton_Click(); };
    c.DownSampButton->Click = [this] { DownSampButton_Click(); };
    c.LaunchButton->Click = [this] { LaunchButton_Click(); };
    c.SaveSpButton->Click = [this] { SaveSpButton_Click(); };
    c.ShowSignGrafButton->Click = [this] { ShowSignGrafButton_Click(); };
    c.ZoomButton->Click = [this] { ZoomButton_Click(); };
    c.SvanArButton->Click = [this] { SvanArButton_Click(); };
    c.WavePackButton->Click = [this] { WavePackButton_Click(); };
    c.WaveFiltButton->Click = [this] { WaveFiltButton_Click(); };
    c.HelpButton->Click = [this] { HelpButton_Click(); };
    c.LevMaxText->Change = [this] { WaveletChoice_Change(); };
    c.LevMaxText->MouseMove = [this] { WaveletChoice_MouseMove(ui_->LevMaxText); };
    for (OptionButton* option : {c.Option1, c.Option2, c.Option3, c.Option4}) {
        option->Click = [this] { WaveletChoice_Change(); };
        option->MouseMove = [this, option] { WaveletChoice_MouseMove(option); };
    }
    c.FreqCheck->Click = [this] { SpectraViewCheck_Click(); };
    c.LogX_Check->Click = [this] { SpectraViewCheck_Click(); };
    c.LogY_Check->Click = [this] { SpectraViewCheck_Click(); };
    c.Picture1->MouseMove = [this](int b, int s, float x, float y) { Picture1_MouseMove(b, s, x, y); };
    c.Picture1->addMenuChoice(
        "Red-Noise Background", [this] { return ShowRedNoiseBackground; },
        [this] { RedNoiseBackground_Toggle(); });
    for (const double p : {0.95, 0.99})
        c.Picture1->addMenuChoice(
            p == 0.95 ? "Significance Level 95 %" : "Significance Level 99 %",
            [this, p] { return ShowSignificanceLevel && SignificanceProbability == p; },
            [this, p] { SignificanceLevel_Toggle(p); });
    c.cursors = std::make_unique<CursorPair>(CursorPair::Setup{
        c.Picture1, c.Line_Left, c.Line_Right, c.HScroll_Left, c.HScroll_Right, 100.0f,
        [](float h) { return std::pair<float, float>(h / 3, h); },
        [this] {
            workbench().spectraZoomForm().Unload();
            workbench().bandPassForm().Unload();
        },
        {}});
    c.HScroll_Left->Change = [this] { ui_->cursors->HScroll_Left_Change(); };
    c.HScroll_Right->Change = [this] { ui_->cursors->HScroll_Right_Change(); };
}

void Form1::Form_Unload() { workbench().end(); }

void Form1::ExitButton_Click() { workbench().end(); }

void Form1::Form_FileDrop(const QStringList& paths) {
    const QFileInfo file(paths.first());
    if (paths.size() > 1)
        MsgBox(QString::number(paths.size()) + " files were dropped; only the first is opened:\r\n" +
                   file.fileName(),
               "Open File");
    if (!OpenFromBrowser(workbench(), file))
        showMessage("The dropped file <" + file.fileName() + "> is not in the file list");
}

} // namespace tarnic
