// C prototypes of the wavelets routines of Tarnic.dll (included by tarnic_api.h).
//
// Wave code (32-bit): below 100 a Daubechies wavelet with that many coefficients
// (2 .. 20, even; 2 is Haar), from 100 up a symlet with code - 100 coefficients
// (108 .. 120). See numeric/wavelet_filters.h.
//
// Every series is extended symmetrically to the next power of two (the padding
// split between the two ends) and transformed periodically; see numeric/dwt.h.
#pragma once

#include "numeric/tarnic_export.h"

#include <cstdint>

// Wavelet-packet decomposition of signal[0 .. nrec-1] by the wavelet of minimum
// entropy (as Ford_dll), returned in *waveCode (its value on entry is ignored).
// Each detail level levMin .. levMax is split into splitCoef (1, 2, 4, 8) sub-bands
// and each sub-band rebuilt alone as a component of nrec samples
// (numeric/wavepacket.h). componentCount = splitCoef * (levMax - levMin + 1)
// components, ordered from the shortest periods to the longest: level levMin
// first, within a level the highest frequencies first. Per component k
// (0-based):
//   wdcTmin[k], wdcTmax[k]  band ends in samples (periods), 0 < Tmin < Tmax;
//   wdcData[k * nrec + i]   sample i normalised to 0 .. 1;
//   wdcMean[k], wdcScale[k] the component is wdcScale[k] * wdcData + wdcMean[k]:
//                           minimum and range; a constant component has scale 0,
//                           mean its value and data 0.5;
//   wdcPower[k]             mean square of the component's packet coefficients,
//                           at least the smallest positive float.
// The components of levels 1 .. levMax plus the level-levMax approximation add up
// to the signal. levMax is lowered if the series is too short for it; slots
// beyond the components computed, and all slots if the routine fails, get band 1
// .. 2, data 0.5, mean 0, scale 0 and the smallest positive power.
TARNIC_EXPORT void OrthWavePack_dll(const float* signal, std::int32_t* nrec,
                                    std::int32_t* splitCoef, std::int32_t* levMin,
                                    std::int32_t* levMax, std::int32_t* componentCount,
                                    float* wdcTmin, float* wdcTmax, float* wdcData,
                                    std::int32_t* waveCode, float* wdcMean, float* wdcScale,
                                    float* wdcPower);

// The wavelet function psi of *waveCode at basisLength points evenly spread over
// its support [0, L-1], ends included, by the cascade algorithm (level 14,
// linearly interpolated). A code that names no wavelet draws the 4-coefficient
// Daubechies wavelet.
TARNIC_EXPORT void WaveBasisGraf_dll(std::int32_t* waveCode, std::int32_t* basisLength,
                                     float* waveBasis);

// The wave code of minimum entropy among all 17 wavelets for samples[0 ..
// length-1]: the cost is the sum over the detail levels of each level's Shannon
// entropy -sum p ln p, p = d^2 / (energy of the level), of the series with its
// mean removed, extended and transformed down to 8 approximation coefficients
// (numeric/dwt.h). Ties go to the earlier code of 2, 4, .., 20, 108, .., 120.
// 4 for an empty series. *waveCode is output only.
TARNIC_EXPORT void Ford_dll(const float* samples, std::int32_t* length, std::int32_t* waveCode);

// The Donoho-Johnstone level as a share (numeric/threshold.h): the fraction of
// the detail coefficients of filtInput[0 .. nrec-1] whose modulus is below
// sigma sqrt(2 ln nrec), sigma = median |finest details| / 0.6745. A *waveCode
// that names no wavelet (0 before any choice) means the wavelet of minimum
// entropy, as Ford_dll would choose it. 0 if the routine fails.
TARNIC_EXPORT void DonohoLevel_dll(const float* filtInput, std::int32_t* nrec,
                                   std::int32_t* waveCode, float* donohoValue);

// filtResult[0 .. nrec-1]: filtInput rebuilt after the share *threshValue (0 .. 1,
// clamped) of its detail coefficients of smallest modulus has been set to zero
// (numeric/threshold.h). A *waveCode that names no wavelet means the wavelet of
// minimum entropy. If the routine fails the result is the input.
TARNIC_EXPORT void WaveFiltThresh_dll(const float* filtInput, float* filtResult, std::int32_t* nrec,
                                      std::int32_t* waveCode, float* threshValue);

// The Heisenberg-box map of heisSignal[0 .. heisSamples-1] by the wavelet
// *waveCode (a code that names no wavelet means the one of minimum entropy):
// the wavelet-packet decomposition of OrthWavePack_dll, heisRows = splitCoef *
// (levMax - levMin + 1) rows in the same order (from the smallest scale to the
// greatest), each of heisSamples / 2 (rounded down) boxes in time
// (numeric/wavepacket.h). heisScaleLow[r] < heisScaleHigh[r] are the band ends
// of row r in samples; heisMap[r * columns + c] is the base-10 logarithm of the
// modulus of the coefficient under box c, at least 7 decades below the largest
// of the map (a zero coefficient shows as that floor; a map without any
// energy is all 0). Rows beyond those computed, and all rows if the routine
// fails, get the band 1 .. 2 and the map's floor.
TARNIC_EXPORT void HeisBoxes_dll(const float* heisSignal, std::int32_t* heisSamples,
                                 std::int32_t* splitCoef, std::int32_t* levMin,
                                 std::int32_t* levMax, std::int32_t* heisRows, float* heisScaleLow,
                                 float* heisScaleHigh, float* heisMap, std::int32_t* waveCode);
