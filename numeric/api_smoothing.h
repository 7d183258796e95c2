// C prototypes of the smoothing routines of Tarnic.dll (included by tarnic_api.h).
#pragma once

#include "numeric/tarnic_export.h"

#include <cstdint>

// Scalars are passed by reference like the arrays; an array is passed by its first
// element. A count below 1 (or a null pointer for it or for an array) means an
// empty series: no array element is written. No exception leaves a routine.

// Gaussian kernel smoothing (see numeric/kernsmooth.h): trend[i], i = 0 .. count-1,
// is the Nadaraya-Watson average of signal within floor(radius) samples of i with
// Gaussian weights of sigma = radius / 3, renormalised where the window is cut by
// an end. A radius below 1 copies the signal.
TARNIC_EXPORT void KernSmooth_dll(const double* signal, double* trend, std::int32_t* count,
                                  double* radius);

// Local polynomial smoothing in a moving window of 2 * radius + 1 samples (see
// numeric/localpoly.h): trend[i] is the least-squares polynomial of the given order
// (cut to 0 .. 10 and below the window length) on the window about i, evaluated
// at i; within radius of an end the window stays at the end and is evaluated at
// the point itself. A polynomial of degree <= order comes back unchanged.
// Radius 0 copies the signal.
TARNIC_EXPORT void UniStepOrthSmooth_dll(const double* signal, std::int32_t* count,
                                         std::int32_t* radius, std::int32_t* order, double* trend);

// Best-fitting harmonic of unknown period (see numeric/harmonic.h), searched over
// the periods from fragLeng samples down to 2. harmonic[i], i = 0 .. fragLeng-1,
// is c + amplitude * cos(2 pi i / period - phase), c the fitted constant; period
// in samples, phase in radians; varianceRatio = 1 - residual sum of squares / sum
// of squares about the mean, in [0, 1]. Fewer than 4 samples or a constant
// fragment: harmonic = the mean, amplitude 0, period fragLeng, ratio 0.
TARNIC_EXPORT void FindBestFitHarm_dll(std::int32_t* fragLeng, const float* fragment,
                                       float* harmonic, float* amplitude, float* period,
                                       float* phase, float* varianceRatio);

// The maximum wave of the fragment (see numeric/peaktrough.h): the neighbouring
// crest and trough about the mean with the greatest difference. height = crest -
// trough; period in samples; firstPoint < secondPoint (or equal for a constant
// fragment) are the 1-based sample numbers of the two, whichever of them is the
// crest.
TARNIC_EXPORT void PeakTrough_dll(std::int32_t* fragLeng, const float* fragment, float* height,
                                  float* period, std::int32_t* firstPoint,
                                  std::int32_t* secondPoint);

// Fourier band-pass between the periods *tmin and *tmax (in samples) of
// signal[0 .. count-1], in place (see numeric/bandpass.h): mean and linear trend
// removed, mirror-extended to 2 * count, bins with 1 / tmax <= f <= 1 / tmin kept.
// On return *tmin and *tmax hold the band used (held within [2, 2 * count],
// shorter first); *count is unchanged.
TARNIC_EXPORT void FourBandPass_dll(float* signal, std::int32_t* count, float* tmin, float* tmax);
