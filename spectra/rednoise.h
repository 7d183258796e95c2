// What the red-noise overlays of the spectra view and of the Morlet map share:
// the words that say why a background fell back to white noise, and the
// companion rows written beside the spectrum files.
#pragma once

#include "numeric/significance.h"

#include <string>

namespace tarnic {

// Empty when the AR(1) fit was used; else the reason and the lag-1
// autocorrelation, e.g. "red noise taken as white noise: the lag-1
// autocorrelation -.1234567 is negative".
std::string WhiteNoiseNote(const Ar1Fit& fit);

// The significance level in whole percent for names: 0.95 gives 95.
std::int32_t LevelPercent(double probability);

} // namespace tarnic
