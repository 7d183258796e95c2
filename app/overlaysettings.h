// The overlay choices of the spectra view and the Morlet map, kept between runs
// of the interactive program. Only tarnic-workbench loads and saves them; the
// batch tool, the picture tool and the tests start with every overlay off and
// set the window members themselves, so no user's choice reaches their output.
#pragma once

class QSettings;

namespace tarnic {

class Workbench;

// Sets the windows' overlay members from `settings`; absent keys leave them off.
void LoadOverlayChoices(Workbench& workbench, const QSettings& settings);
void SaveOverlayChoices(Workbench& workbench, QSettings& settings);

} // namespace tarnic
