// The overlay choices outlive the program through its settings; a workbench
// that loads nothing has every overlay off.
#include "app/overlaysettings.h"
#include "maps/morletsvanform.h"
#include "tests/core/mainwindow_fixture.h"

#include <QSettings>

using namespace tarnic;
using namespace tarnic::test;

TEST_F(MainWindow, OverlayChoicesAreKeptInTheSettingsAndOffWithoutThem) {
    start();
    const QString ini = QString::fromStdString((dir / "settings.ini").string());
    auto choices = [&] {
        return std::tie(form().ShowRedNoiseBackground, form().ShowSignificanceLevel,
                        form().SignificanceProbability, wb->morletSvanForm().ShowConeOfInfluence,
                        wb->morletSvanForm().ShowSignificanceContour);
    };
    using Choices = std::tuple<bool, bool, double, bool, bool>;
    const Choices off{false, false, 0.95, false, false};
    EXPECT_EQ(Choices(choices()), off);
    LoadOverlayChoices(*wb, QSettings(ini, QSettings::IniFormat)); // an empty file
    EXPECT_EQ(Choices(choices()), off);
    for (const Choices& c : {Choices{true, true, 0.99, true, false},
                             Choices{false, true, 0.95, false, true}}) {
        choices() = c;
        {
            QSettings settings(ini, QSettings::IniFormat); // written when it goes
            SaveOverlayChoices(*wb, settings);
        }
        choices() = Choices{false, false, 0.5, false, false};
        LoadOverlayChoices(*wb, QSettings(ini, QSettings::IniFormat));
        EXPECT_EQ(Choices(choices()), c);
    }
}
