#include "spectra/rednoise.h"

#include "core/naming.h"
#include "core/numtext.h"

#include <cmath>

namespace tarnic {

std::string WhiteNoiseNote(const Ar1Fit& fit) {
    const std::string lag1 =
        "the lag-1 autocorrelation " + BareNumText(static_cast<float>(fit.lag1));
    switch (fit.reason) {
    case WhiteNoiseReason::None:
        return {};
    case WhiteNoiseReason::NegativeCorrelation:
        return "red noise taken as white noise: " + lag1 + " is negative";
    case WhiteNoiseReason::TooShort:
        return "red noise taken as white noise: fewer than " +
               NumText(static_cast<std::int32_t>(kAr1MinSamples)) + " samples (" + lag1 + ")";
    case WhiteNoiseReason::NoVariation:
        return "red noise taken as white noise: the series does not vary or is not finite";
    }
    return {};
}

std::int32_t LevelPercent(double probability) {
    return static_cast<std::int32_t>(std::lround(probability * 100));
}

} // namespace tarnic
