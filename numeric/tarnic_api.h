// The binary interface of Tarnic.dll.
//
// Every routine is a C procedure without a result. Every argument is passed by
// reference (a pointer), numbers included, and a routine may overwrite any number
// it receives. An array is passed by its first element; its length travels in a
// separate argument and the caller sizes every output array before the call.
// A file name crosses as an array of UTF-16 code units (one per character of the
// full path, no terminator) plus the number of code units.
//
// The program never links against this library: it loads Tarnic.dll at run time
// and resolves each routine by the name below (see core/tarniclibrary.h).
#pragma once

#include <cstdint>

#include "numeric/tarnic_export.h"

// Checks a plain-text table and counts its records (see numeric/intake.h).
// status: 0 the file has size zero; nrec + 1 the record of that number has a
// wrong structure; -1 a good file of nrec records.
TARNIC_EXPORT void CountFileRecords_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                        std::int32_t* nrec, std::int32_t* status);

// Reads the first column of the first nrec records into signal[0 .. nrec-1]
// (see numeric/intake.h). Entries for which the file has no good record, and all
// of them if the file cannot be read, are set to 0.
TARNIC_EXPORT void ReadSignalFile_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                      std::int32_t* nrec, float* signal);

// Splits a table of more than one column into one series file per column, written
// beside the input, from its first nrec records (see numeric/demultiplex.h for the
// names and what each file holds). Writes nothing for a single-column table.
TARNIC_EXPORT void DemulplexTable_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                      std::int32_t* nrec);
#include "numeric/api_smoothing.h"
#include "numeric/api_wavelets.h"

// Resamples signal[0 .. nrec-1] by the Fourier method to a coarser step of *step
// samples (below 1 counts as 1; see numeric/resample.h). On entry *outLen is the
// capacity of downSignal; on return it holds the number of values written,
// floor(nrec / step) cut to the capacity, and *step the ratio actually used,
// nrec / *outLen. Output k (1-based) is the value at the end of the k-th step,
// 1-based input sample k * step: the last one falls on the last sample.
TARNIC_EXPORT void DownSample_dll(const float* signal, std::int32_t* nrec, float* step,
                                  float* downSignal, std::int32_t* outLen);

// Background Fourier estimate of the whole signal (see numeric/welch.h): Hann-
// tapered, mean-removed windows of lengF samples at least half overlapping, from
// the first sample to the last; periodograms on fftLengFour points, smoothed over
// frequency with radius mm bins, averaged. spFour[i], i = 0 .. fftLengFour/2 - 1,
// is the one-sided density per cycle per sample at frequency i / fftLengFour;
// every value is positive.
TARNIC_EXPORT void SpectAn_dll(const float* signal, std::int32_t* nrec, std::int32_t* lengF,
                               std::int32_t* fftLengFour, std::int32_t* mm, float* spFour);

// Burg maximum entropy spectrum of the mean-removed stretch samples[0 .. count-1]
// with an autoregressive model of order nar (see numeric/burg.h). result[i],
// i = 0 .. nfAR - 1, is the one-sided density per cycle per sample at frequency
// i / (2 nfAR); every value is finite and positive. Safe to call from several
// threads at once.
TARNIC_EXPORT void BurgH_dll(const float* samples, std::int32_t* count, std::int32_t* nfAR,
                             std::int32_t* nar, float* result);
#include "numeric/api_multiscale.h"
