// SvanArForm: how the AR spectrum of the whole signal changes in time. A time
// window of fixed length moves along the signal with a fixed shift; each
// position gives one maximum entropy spectrum (BurgH_dll), and the natural
// logarithms of the spectra form a map, time of the window's end along X,
// frequency along Y, coloured by MapPalette12 and saved as a text grid of
// base-10 logarithms.
//
// Opened from Form1 by SvanArButton (Form1 hides; the Unload shows it again).
// Enabled states:
//                          SvanArMap         SaveGRD    LaunchSvan, SvanParam
//   after Load             disabled          disabled   enabled
//   during a run           disabled          disabled   disabled
//   run refused            disabled, clear   disabled   enabled
//     (the volume limit, or a single time window)
//   after a finished run   enabled           enabled    enabled
//   after a save           enabled           disabled   enabled
#pragma once

#include "core/array1.h"
#include "core/form.h"
#include "core/modul.h"

#include <QString>

#include <cstdint>

namespace tarnic {

struct SvanArFormControls {
    explicit SvanArFormControls(FormWindow& window);

    Frame* SvanParam;
    Label* Label1; // beside LengWinText
    TextBox* LengWinText;
    Label* Label2; // beside ShiftText
    TextBox* ShiftText;
    Label* Label3; // beside ArOrderText
    TextBox* ArOrderText;
    Button* LaunchSvan;
    Button* SaveGRD;
    PlotSurface* SvanArMap;
    PlotSurface* ColorScale;
    Label* Label4; // the note on the window length
    Label* Label5; // "Fmax", at the top of the Y marks
    Label* Label6; // "Fmin", at the bottom of the Y marks
    MarksFrame* XmarksFrame;
    MarkLabels Xmarks{};
    MarksFrame* YmarksFrame;
    MarkLabels Ymarks{};
};

class SvanArForm : public FormOf<SvanArFormControls> {
  public:
    explicit SvanArForm(Workbench& workbench) : FormOf(workbench, "SvanArForm") {}

    static constexpr const char* kCaption = "Log(Spectra) Evolition within Moving Time Window";
    static constexpr const char* kMessageTitle = "Spectra Evolution Analysis";

    // Set by the file intake each time a signal is taken.
    Array1<float> SvanSignal;  // the signal for the map
    std::int32_t SvanNrec = 0; // number of samples
    QString SvanFileName;      // the input name, part of the grid file name

    // The working copy made by Load and the parameters of the last run.
    std::int32_t SvanSamples = 0;
    Array1<float> SvanInput;
    std::int32_t SvanLeng = 0;  // samples in a time window
    std::int32_t SvanShift = 0; // samples between neighbouring windows
    std::int32_t SvanOrder = 0; // AR order
    std::int32_t SvanCount = 0; // time windows
    std::int32_t SvanFft = 0;   // smallest power of two, at least 2, not below SvanLeng
    std::int32_t SvanHalf = 0;  // SvanFft / 2, points of one spectrum
    std::int32_t SvanCut = 0;   // first spectrum point shown
    // Edges of the map: times of the ends of the first and last window, and
    // the frequencies of the cut point and of the last point.
    float SvanTmin = 0, SvanTmax = 0, SvanFmin = 0, SvanFmax = 0;
    // Least and greatest natural logarithm among the points shown.
    float SvanZmin = 0, SvanZmax = 0;
    // ln(dT * spectrum), window by window: point k of window w at
    // (w - 1) * SvanHalf + k (1-based); SvanMapAt(k, w) reads it.
    Array1<float> SvanMap;
    Array1<float> SvanWinSpec; // spectrum of the last window computed
    float SvanMapAt(std::int32_t k, std::int32_t w) const {
        return SvanMap((w - 1) * SvanHalf + k);
    }

    // Event handlers.
    void LaunchSvan_Click();
    void SaveGRD_Click();
    void SvanArMap_MouseMove(int button, int shift, float x, float y);
    void ColorScale_MouseMove(int button, int shift, float x, float y);

  protected:
    void connectHandlers() override;
    void Form_Load() override;
    void Form_Unload() override;

  private:
    // Ends a run that cannot be made: the message box, then the parameters
    // open again with the corrected texts in their boxes, the map cleared and
    // disabled.
    void refuseRun(const QString& text);
    // The four edges of the map from the present members and dT, T0.
    void computeRanges(double T0, double dT);
};

} // namespace tarnic
