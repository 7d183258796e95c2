#include "app/overlaysettings.h"

#include "core/form1.h"
#include "core/workbench.h"
#include "maps/morletsvanform.h"

#include <QSettings>

namespace tarnic {
namespace {
constexpr const char* kBackground = "overlays/spectraRedNoiseBackground";
constexpr const char* kLevel = "overlays/spectraSignificanceLevel";
constexpr const char* kProbability = "overlays/spectraSignificanceProbability";
constexpr const char* kCone = "overlays/morletConeOfInfluence";
constexpr const char* kContour = "overlays/morletSignificanceContour";
} // namespace

void LoadOverlayChoices(Workbench& workbench, const QSettings& settings) {
    Form1& main = workbench.form1();
    main.ShowRedNoiseBackground = settings.value(kBackground, false).toBool();
    main.ShowSignificanceLevel = settings.value(kLevel, false).toBool();
    // Only the two levels the menu offers; anything else falls back to 95 %.
    const double p = settings.value(kProbability, 0.95).toDouble();
    main.SignificanceProbability = p == 0.99 ? 0.99 : 0.95;
    MorletSvanForm& morlet = workbench.morletSvanForm();
    morlet.ShowConeOfInfluence = settings.value(kCone, false).toBool();
    morlet.ShowSignificanceContour = settings.value(kContour, false).toBool();
}

void SaveOverlayChoices(Workbench& workbench, QSettings& settings) {
    const Form1& main = workbench.form1();
    settings.setValue(kBackground, main.ShowRedNoiseBackground);
    settings.setValue(kLevel, main.ShowSignificanceLevel);
    settings.setValue(kProbability, main.SignificanceProbability);
    const MorletSvanForm& morlet = workbench.morletSvanForm();
    settings.setValue(kCone, morlet.ShowConeOfInfluence);
    settings.setValue(kContour, morlet.ShowSignificanceContour);
}

} // namespace tarnic
