// Band-limited (Fourier) resampling of a series to a coarser, possibly fractional,
// sampling step.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

struct Resampled {
    // The new series, m values.
    std::vector<double> values;
    // The step actually used, in input samples: n / m (>= the step asked for),
    // or the step asked for when m is 0.
    double step = 1.0;
};

// Resamples the n samples of x to m = floor(n / step) samples, m cut to
// `capacity`. step below 1 (or NaN) counts as 1. Since m is a whole number the
// grid is stretched to fill the record exactly: the step used is n / m.
// (n / step is taken with a relative allowance of 2^-23, the rounding of a
// float, so that a step that arrives as 2.2f for 2.2 still gives floor(n / 2.2).)
//
// Where the new samples stand: output k (k = 1 .. m) is the value at input
// position k * stepUsed - 1 (0-based sample units), the end of the k-th step, so
// the last output falls on the last input sample:
//
//     x:   0     1     2     3     4     5     6     7     8     9    (n = 10)
//     y:            ^1.5           ^4            ^6.5           ^9    (step 2.5)
//                   y_1            y_2           y_3            y_4
//
// How: the straight line through the first and the last sample is removed, so
// the rest starts and ends at 0 and its periodic continuation (which the FFT
// assumes) has no jump; no ringing spreads from the ends. The rest is
// transformed (length n), the bins below the new Nyquist frequency m / (2n)
// cycles per input sample are kept, and for even m the bin at that frequency with
// half weight (content exactly at the new Nyquist frequency cannot be told from
// its alias; the half weight splits it evenly); everything above is dropped, not
// folded back. A phase factor moves the first output to position stepUsed - 1,
// an inverse transform of length m (scaled by 1/n, i.e. m/n after FFTW's factor m)
// gives the rest on the new grid, and the line is added back at the new
// positions. A straight line is therefore reproduced exactly, and a sinusoid
// below the new Nyquist frequency keeps its frequency and amplitude (up to the
// small leakage of its own end kink). With m == n (step 1) x comes back to rounding.
Resampled fourierResample(std::span<const double> x, double step, std::size_t capacity);

} // namespace tarnic
