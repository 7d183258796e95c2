// The overlay choices outlive the program through its settings; a workbench
// that loads nothing has every overlay off.
#include "app/overlaysettings.h"
#include "core/form1.h"
#include "core/workbench.h"
#include "maps/morletsvanform.h"
#include "tests/core/mainwindow_fixture.h"

#include <QSettings>

using namespace tarnic;
using namespace tarnic::test;

TEST_F(MainWindow, OverlayChoicesAreKeptInTheSettingsAndOffWithoutThem) {
    start();
    const QString ini = QString::fromStdString((dir / "settings.ini").string());
    auto choices = [](Workbench& w) {
        return std::tuple(w.form1().ShowRedNoiseBackground, w.form1().ShowSignificanceLevel,
                          w.form1().SignificanceProbability, w.morletSvanForm().ShowConeOfInfluence,
                          w.morletSvanForm().ShowSignificanceContour);
    };
    EXPECT_EQ(choices(*wb), std::tuple(false, false, 0.95, false, false));
    {
        const QSettings empty(ini, QSettings::IniFormat);
        LoadOverlayChoices(*wb, empty);
        EXPECT_EQ(choices(*wb), std::tuple(false, false, 0.95, false, false));
    }
    const std::tuple<bool, bool, double, bool, bool> cases[] = {{true, true, 0.99, true, false},
                                                               {false, true, 0.95, false, true}};
    for (const auto& c : cases) {
        std::tie(form().ShowRedNoiseBackground, form().ShowSignificanceLevel,
                 form().SignificanceProbability, wb->morletSvanForm().ShowConeOfInfluence,
                 wb->morletSvanForm().ShowSignificanceContour) = c;
        {
            QSettings settings(ini, QSettings::IniFormat);
            SaveOverlayChoices(*wb, settings);
        }
        std::tie(form().ShowRedNoiseBackground, form().ShowSignificanceLevel,
                 form().SignificanceProbability, wb->morletSvanForm().ShowConeOfInfluence,
                 wb->morletSvanForm().ShowSignificanceContour) =
            std::tuple(false, false, 0.5, false, false);
        const QSettings settings(ini, QSettings::IniFormat);
        LoadOverlayChoices(*wb, settings);
        EXPECT_EQ(choices(*wb), c);
    }
}
