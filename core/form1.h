// Form1, the main window: it owns the loaded signal, the spectra, the analysis
// parameters and the file browser, and decides by enabling and disabling
// controls what the user may do next.
//
// Stages: Start (after Load or Other File: only the browser works), Rejected (a
// double-click ended in a red message), Loaded (the signal is drawn in the upper
// third of Picture1 and the work controls are open), Spectra shown.
#pragma once

#include "core/array1.h"
#include "core/browser.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace tarnic {

struct Form1Controls {
    explicit Form1Controls(FormWindow& window);

    DriveList* Drive1;
    DirList* Dir1;
    FileList* File1;
    Label* Label2;
    Button* OtherFileButton;
    Button* ExitButton;
    Button* HelpButton;
    Label* MessLineLabel;
    Label* Y_axis_Label;
    PlotSurface* Picture1;
    LineObject* Line_Left;
    LineObject* Line_Right;
    Button* DemplxButton;
    Button* WaveFiltButton;
    Button* ShowSignGrafButton;
    Frame* Frame1;
    Button* LaunchButton;
    Button* SaveSpButton;
    Button* ZoomButton;
    Button* SvanArButton;
    Frame* FrameSpectraView;
    CheckBox* LogY_Check;
    CheckBox* LogX_Check;
    CheckBox* FreqCheck;
    Frame* DownSampFrame;
    Button* WinzorButton;
    Button* IncremButton;
    TextBox* DownStepText;
    Label* DownStepLabel;
    Button* DownSampButton;
    Frame* WP_OptionFrame;
    OptionButton* Option1;
    OptionButton* Option2;
    OptionButton* Option3;
    OptionButton* Option4;
    Label* LevMaxLabel;
    TextBox* LevMaxText;
    Button* WavePackButton;
    Frame* FrameHScroll;
    ScrollBar* HScroll_Left;
    ScrollBar* HScroll_Right;
    Label* Label1;
    Frame* FrameMainParam;
    Label* AR_OrderLabel;
    TextBox* AR_OrderText;
    Label* DeltaT_Label;
    TextBox* DeltaT_Text;
    Label* Time0_Label;
    TextBox* Time0_Text;
    Label* AR_LengthLabel;
    TextBox* AR_Length_Text;
    Frame* FrameBackParam;
    Label* SetLengLabel;
    TextBox* TimeLengText;
    Label* SetRadLabel;
    TextBox* RadiusText;
    std::unique_ptr<CursorPair> cursors;
};

class Form1 : public FormOf<Form1Controls> {
  public:
    explicit Form1(Workbench& workbench);

    static constexpr const char* kStartCaption = "   Varnholt,    Orvane.";
    // Told when the numeric library cannot be loaded or lacks a routine: what
    // this program needs on Linux, in the form of the original message.
    static constexpr const char* kMissingLibraryMessage =
        "Files: libfftw3.so.3, libfftw3f.so.3 and the Qt 6 libraries are required within "
        "the system's library folders (the package manager installs them)\r\n"
        "File Tarnic.dll is necessary within application directory only";
    static constexpr const char* kWorkCaption = "   Varnholt,   Orvane.";

    // The loaded signal and what the intake derived from it.
    Array1<float> Signal;
    std::int32_t Nrec = 0;
    float SignalMin = 0, SignalMax = 0, SignalRange = 0;
    QString InFileName;
    QString InFilePath;
    // Where results go instead of the data file's folder; empty (the window's
    // way) but for the batch tool's --out.
    QString OutputRedirect;
    // The folder below which every result is written: the data file's folder,
    // Dir1's path while a signal is loaded, unless redirected.
    QString OutputFolder() const;
    Array1<std::int16_t> PathCodes;
    std::int32_t PathLen = 0;
    std::int32_t LevPow = 0, LevPowLength = 0, LevMax = 0;
    std::int32_t SpectraReady = 0;

    // The spectra of the last run and their display.
    float DeltaT = 0;
    std::int32_t LengF = 0, MM = 0, FftLengFour = 0, NfFour = 0;
    Array1<float> SpFour, FreqFour;
    std::int32_t LengAR = 0, Nar = 0, FftLengAR = 0, NfAR = 0;
    Array1<float> SpAR, FreqAR, SpARWindow;
    Array1<float> PlotX, PlotY;
    float PlotXMin = 0, PlotXMax = 0, PlotXRange = 0, PlotYRange = 0;
    // Overlays of the spectra view, chosen in Picture1's context menu (the
    // program keeps the choice between runs) or by the batch tool; off, the
    // view and Save Spectra are as without them.
    bool ShowRedNoiseBackground = false; // red-noise background of the Burg estimate
    bool ShowSignificanceLevel = false;  // significance level of the Fourier estimate
    double SignificanceProbability = 0.95; // 0.95 or 0.99
    // Why the last overlay took white noise for the background; else empty.
    QString RedNoiseNote;

    // Derived series and wavelet-packet results.
    Array1<float> DownSignal;
    Array1<float> WdcMean, WdcScale, WdcData, WdcPower, WdcTmin, WdcTmax;
    Array1<float> WaveBasis;

    // Gating of the controls.
    void DisableSpectraGroup();
    void DisableWorkGroup();
    void EnableWorkGroup();
    void ResetCursors();

    // Event handlers.
    void File1_Click();
    void File1_DblClick();
    void Dir1_Change();
    void Drive1_Change();
    void OtherFileButton_Click();
    void ExitButton_Click();
    void Picture1_MouseMove(int button, int shift, float x, float y);
    void IncremButton_Click();
    void WinzorButton_Click();
    void DemplxButton_Click();
    void DownSampButton_Click();
    void LaunchButton_Click();
    void PlotSpectra();
    void SpectraViewCheck_Click(); // FreqCheck, LogX_Check and LogY_Check alike
    void SaveSpButton_Click();
    // The context-menu choices of Picture1: each redraws the spectra.
    void RedNoiseBackground_Toggle();
    void SignificanceLevel_Toggle(double probability);
    void ShowSignGrafButton_Click();
    void ZoomButton_Click();
    void SvanArButton_Click();
    void WavePackButton_Click();
    void WaveFiltButton_Click();
    void HelpButton_Click();
    // LevMaxText Change and the Click of the four options: the decomposition goes.
    void WaveletChoice_Change();
    // The tool tips of LevMaxText and the four options, as the pointer moves.
    void WaveletChoice_MouseMove(QWidget* control);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Unload() override;
    // A dropped file opens as a double-click on it in File1 would, after the
    // browser has moved to its folder; of several, the first, with a word.
    bool AcceptsFileDrops() const override { return true; }
    void Form_FileDrop(const QStringList& paths) override;

  private:
    void showMessage(const QString& text);
    void withdrawNote(const QString& note);
    void commonRejection();
    void refreshBrowserAfterFailure();
    // Dir1 path + "/" + InFileName: the stem of the files written beside the data.
    std::string dataStem() const;
    // The end shared by the preprocessing actions.
    void endPreprocessing();
};

} // namespace tarnic
