// C prototypes of the Morlet, WTMM and multifractal routines of Tarnic.dll
// (included by tarnic_api.h).
//
// A sample that is not a finite number is taken as 0 by all three routines. No
// routine returns a status: each documents what its outputs hold when there is
// nothing to compute, and none of them leaves a non-finite number behind.
#pragma once

#include "numeric/tarnic_export.h"

#include <cstdint>

// Continuous Morlet transform (w0 = 6) of fragment[0 .. fragLeng-1], its mean
// removed, on *scaleCount rows (see numeric/morlet.h). The "scale" of a row is
// its Fourier period in samples, evenly spaced in logarithm from *smin (row 0)
// to *smax (row *scaleCount - 1); the wavelet's own scale is that period /
// 1.0330436.
//   *smin, *smax  in and out: a *smin below 2 (or not a number) becomes 2; a *smax
//                 that is not a number becomes fragLeng / 4, one above fragLeng
//                 becomes fragLeng, one below *smin becomes *smin. The values used
//                 are written back.
//   morletMapOut[i * fragLeng + t]  log10 |W|^2 of row i at sample t (0-based),
//                 at least 10 decades below the largest |W|^2 of the map and at
//                 least log10 of the smallest positive float (-37.93), which is
//                 what a constant fragment gives everywhere.
//   morletSpecOut[i]  mean |W|^2 of row i over the samples outside the cone of
//                 influence (sqrt(2) x wavelet scale from either end; over all
//                 samples when the cone covers them all), between the smallest
//                 positive float and the largest float. White noise of variance
//                 sigma^2 gives about sigma^2 on every row.
// If the routine fails, the map is log10 of the smallest positive float and the
// spectrum that float.
TARNIC_EXPORT void MorletWaveSvan_dll(std::int32_t* fragLeng, const float* fragment, float* smin,
                                      float* smax, std::int32_t* scaleCount, float* morletMapOut,
                                      float* morletSpecOut);

// WTMM skeleton of wtmmInput[0 .. fragLeng-1] with the Gaussian kernel and its
// first two derivatives (see numeric/wtmm.h for the method, the scale grid, the
// chaining and the seven classes).
//   *trendOrder   polynomial order of the trend removed first, clamped to 0 .. 10.
//   *gamma        long-chain threshold as a share of the greatest scale, clamped
//                 to 0 .. 1 (not a number counts as 0: every chain is long).
//   chainCounts[0 .. 6]  records of classes 1 .. 7 in the chain file, separators
//                 included; all 0 when there is nothing to write (a constant or
//                 polynomial fragment, fewer than 13 samples) or the file cannot
//                 be written.
//   wtmmDetrended[0 .. fragLeng-1]  the fragment less its trend (the input as it
//                 came if the routine fails).
// The chain file is "n12c43k67r13t72c76h18i04" in the current directory of the
//                 process. It is replaced, and written even when empty,
//                 one record a line as wtmmChainRecords() lays out: "sample
//                 log10(scale)" with the 1-based sample, separator "0 -9999"
//                 between two chains of a class.
TARNIC_EXPORT void WTMM_FP_dll(const double* wtmmInput, std::int32_t* fragLeng,
                               std::int32_t* trendOrder, double* gamma, std::int32_t* chainCounts,
                               double* wtmmDetrended);

// Multifractal detrended fluctuation analysis of signal[0 .. samples-1] (see
// numeric/mfdfa.h), on the series itself, without a cumulative sum.
//   *detrendOrder  segment polynomial order, clamped to 0 .. 10.
//   *measureType   0 range (max - min), 1 standard deviation (above 1 counts as 1).
//   *minScale, *maxScale  in samples; the scales are *scaleCount values evenly
//                 spaced in logarithm from clamp(*minScale, 2, samples) to
//                 clamp(*maxScale, that, samples), rounded to whole samples with
//                 repeats dropped.
//   *qMin, *qMax, *qCount  q evenly spaced from *qMin to *qMax, both included
//                 (not a number counts as 0).
//   *qCount, *scaleCount  in: the grid sizes asked for (zqTab holds their
//                 product); out: the sizes used, never more (*scaleCount 0 for
//                 fewer than 2 samples, and then zqTab is untouched).
//   zqTab[s * qCount + j]  log10 Z(q_j, scale_s) (0-based s, j): base-10, like the
//                 window's log10 scale axis, so a slope read off the table is
//                 h(q). A scale at which no segment fluctuates holds 0.
//   alfa[0 .. alfaCount-1], fAlfa[...]  the singularity spectrum
//                 F = max{min over q of (q (alpha - h(q)) + 1), 0} on an alpha
//                 grid that spans exactly the interval where F > 0: the first
//                 and last F are 0, those between positive, the top 1 or just
//                 below.
// When there is no spectrum, every fAlfa is 0 and alfa is evenly spaced: from
// min h(q) to max h(q) when h(q) could be estimated but the Legendre transform
// is nowhere positive; from 0 to 1 when h(q) could not be (a constant series,
// fewer than two scales with any fluctuation, scales no longer than
// *detrendOrder + 1, fewer than 2 samples, *qCount <= 0). If the routine fails,
// the same, with zqTab all 0 and the counts as they came.
TARNIC_EXPORT void MF_DFA_dll(const double* signal, std::int32_t* samples,
                              std::int32_t* detrendOrder, std::int32_t* measureType,
                              std::int32_t* minScale, std::int32_t* maxScale,
                              std::int32_t* alfaCount, double* alfa, double* fAlfa, double* qMin,
                              double* qMax, std::int32_t* qCount, std::int32_t* scaleCount,
                              double* zqTab);
