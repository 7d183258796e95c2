// Fourier band-pass filtering of a whole series between two periods.
#pragma once

#include <cstddef>
#include <span>

namespace tarnic {

// The band between two periods in samples, shortest <= longest.
struct BandPeriods {
    double shortest = 0.0;
    double longest = 0.0;
};

// The band that fourierBandPass() uses for a series of n >= 1 samples, given the
// periods asked for (in samples, in either order): a NaN shortest period counts
// as 2, a NaN longest as 2n; then both are held within [2, 2n]. 2 samples is the
// shortest period sampling can show, 2n the longest the filter's extended record
// (below) has a bin for. For n = 0 the periods come back as given.
BandPeriods bandPeriodsFor(std::size_t n, double tmin, double tmax);

// Replaces x by its component with periods between the two (band from
// bandPeriodsFor()), zero phase, for any length n (FFTW handles every length,
// primes included; a length whose 2n has a large prime factor costs a few times
// more than a smooth one). Steps:
//
// 1. The mean and the least-squares straight line are removed and not restored:
//    neither is a periodic component, and a trend left in would turn into a
//    triangle wave by step 2 and ring through the record.
// 2. The rest is extended by its mirror image to 2n samples,
//
//        mirror:  x0 x1 ... x(n-1) | x(n-1) ... x1 x0 | x0 x1 ...  (period 2n)
//
//    so the periodic continuation the FFT assumes has no jump anywhere, whatever
//    levels the series starts and ends at.
// 3. One transform of length 2n; the bins with 1 / longest <= k / 2n <= 1 / shortest
//    are kept (edges inclusive, to rounding), all others, the mean among them,
//    are set to zero; the inverse transform, scaled by 1 / 2n, is cut back to the
//    first n samples. For even n the same numbers (to rounding) come from real
//    transforms of length n of the samples in a shuffled order, the transform
//    of the mirrored record being a DCT-II of the n samples: half the work.
//
// The mask is real and even, so nothing is delayed; the extension and the filter
// commute with the mirror, so the output is again mirror-symmetric and filtering
// it again changes it only by what step 1 then removes (its own small linear trend).
// A sinusoid well inside the band keeps its amplitude to a few percent away from
// the ends; one outside the band is reduced to the leakage of the kinks that the
// mirror puts at the ends. Returns the band used.
BandPeriods fourierBandPass(std::span<double> x, double tmin, double tmax);

} // namespace tarnic
