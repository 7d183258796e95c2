// The best-fitting harmonic of unknown period: a sinusoid plus a constant fitted
// by least squares, with the period searched over the low frequencies.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

struct HarmonicFit {
    // Frequency in cycles per sample and period 1 / frequency in samples.
    double frequency = 0.0;
    double period = 0.0;
    // values[t] = level + amplitude * cos(2 pi frequency t - phase), t = 0 .. n-1
    // (t counts samples from the first, which is t = 0); phase in radians, in
    // (-pi, pi]; amplitude >= 0.
    double level = 0.0;
    double amplitude = 0.0;
    double phase = 0.0;
    // Share of the variance about the mean that the harmonic explains:
    // 1 - sum (y - values)^2 / sum (y - mean)^2, in [0, 1].
    double varianceRatio = 0.0;
    std::vector<double> values;
};

// The least-squares fit of c + a cos(2 pi f t) + b sin(2 pi f t) to y at the given
// frequency f (cycles per sample). Off the Fourier grid k / n the three columns
// are not orthogonal; the fit solves the full 3 x 3 problem. (Measuring t from the
// middle of the series makes the sine orthogonal to the other two columns, which
// leaves a 2 x 2 block and a scalar.) A column that vanishes on the samples (the
// sine at f = 1/2 for odd n, the cosine there for even n) is left out.
// A series of fewer than 2 samples, or a constant one, gives amplitude 0 and
// variance ratio 0 with values at the mean.
HarmonicFit fitHarmonic(std::span<const double> y, double frequency);

// The variance ratio of fitHarmonic() at each frequency k / length, k = 0 ..
// length / 2, for a series zero-padded to `length` (a power of two, at least 4 and
// at least n; std::invalid_argument otherwise); 0 at k = 0 and for a constant
// series. One FFT and closed forms for the column sums: O(length log length).
// bestFitHarmonic() scans this grid (length >= 4n) before refining.
std::vector<double> varianceRatioGrid(std::span<const double> y, std::size_t length);

// The low-frequency harmonic of unknown period that explains the largest share
// of the variance of y, among the frequencies
//
//     1 / n <= f <= 1 / 8     (periods from the whole length down to 8 samples):
//
// every period the series holds at least one full cycle of, down to 8 samples.
// Longer periods are left out: with less than a cycle in the record a sinusoid
// plus a constant can bend itself to any slow drift, and its period is no longer
// told by the data. Shorter ones are left out because the search is for the slow
// oscillation of a fragment: a strong ripple of 2 to 7 samples (sampling noise,
// a daily cycle in hourly data) would otherwise hide the harmonic sought. A
// series of fewer than 8 samples is searched at its own length only.
//
// Search: the variance ratio is evaluated exactly (closed forms for the sums of
// the columns, one zero-padded FFT for their products with y) on a grid four
// times finer than the Fourier grid, i.e. steps of at most 1 / (4 n), where a
// peak loses at most about 5 % of its height. The five highest local maxima (of
// those, the ones within 70 % of the highest) are then refined between their
// neighbouring grid points by Brent's method (parabolic steps on the variance
// ratio, golden sections as fallback) with direct sums, to a relative frequency
// accuracy of about 1e-8, and the ends of the range are tried as well.
// Cost O(n log n). Below 4 samples, or for a constant series, the result is the
// mean with amplitude 0, variance ratio 0 and period n.
HarmonicFit bestFitHarmonic(std::span<const double> y);

} // namespace tarnic
