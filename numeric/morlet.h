// Continuous Morlet wavelet transform through the FFT (Torrence & Compo, 1998).
//
// The wavelet in the frequency domain, for a scale s in samples and angular
// frequency w in radians per sample:
//     Psi(s w) = sqrt(2 pi s) pi^(-1/4) exp(-(s w - w0)^2 / 2)   for w > 0, 0 else,
// with w0 = 6. Each row of the transform is labelled by its Fourier period
// P = s * morletFourierFactor(w0), in samples (1.0330436 s for w0 = 6): a
// sinusoid of period P has its greatest |W|^2 at the row of period P.
//
// Normalisation: the wavelet has unit energy at every scale, so white noise of
// variance sigma^2 has E|W|^2 = sigma^2 on every row (a little less for periods
// near 2 samples, where the wavelet's spectrum is cut at the Nyquist frequency).
// A sinusoid A cos(2 pi t / P) away from the ends has |W|^2 = (sqrt(pi) / 2) A^2 s
// exp(-(s w - w0)^2), w = 2 pi / P: its ridge value grows with the period.
//
// Ends: the series less its mean is followed by zeros up to the transform length
// (the power of two at or above twice its length), so nothing wraps round from
// one end to the other; near the ends |W|^2 falls because part of the wavelet
// lies over the zeros:
//
//     x0 x1 ... x(N-1) | 0 0 0 ... 0        (transform length >= 2N)
//
// The cone of influence of a row is the e-folding time sqrt(2) s of the wavelet
// from either end: samples t < sqrt(2) s or t > N - 1 - sqrt(2) s.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace tarnic {

inline constexpr double kMorletOmega0 = 6.0;
// Beyond |s w - w0| = 8.5 the wavelet's spectrum is below exp(-36) of its top
// and is taken as 0.
inline constexpr double kMorletBandHalfWidth = 8.5;

// Fourier period / scale of the Morlet wavelet: 4 pi / (w0 + sqrt(2 + w0^2)).
double morletFourierFactor(double omega0 = kMorletOmega0);

// `count` Fourier periods evenly spaced in logarithm from pMin to pMax, both
// included (pMin alone for count 1).
std::vector<double> morletPeriods(double pMin, double pMax, std::size_t count);

// Length of the transform for n samples: the least power of two >= 2n (>= 2).
std::size_t morletTransformLength(std::size_t n);

// The samples [first, end) of n that lie outside the cone of influence of a row
// of wavelet scale s (samples): sqrt(2) s <= t <= n - 1 - sqrt(2) s. When no
// sample is left, all n: {0, n}.
struct SampleSpan {
    std::size_t first = 0;
    std::size_t end = 0;
};
SampleSpan morletOutsideCone(std::size_t n, double scale);

struct MorletTransform {
    std::size_t samples = 0;
    std::vector<double> periods; // Fourier period of each row, samples
    // |W|^2, row after row: power[i * samples + t] for periods[i] at sample t.
    std::vector<double> power;
    // Per row, the time average of |W|^2 over the samples outside the cone of
    // influence (all samples when the cone covers the whole series).
    std::vector<double> spectrum;
};

// The transform of x (its mean removed first) at the given Fourier periods
// (samples, > 0). The rows are shared out among worker threads; each row is
// computed the same way whichever thread takes it, so the result does not depend
// on their number. A constant series gives zeros.
MorletTransform morletTransform(std::span<const double> x, std::span<const double> periods);

// Receives row i of |W|^2 (its n samples) from morletTransformRows(); called on
// the worker threads, once per row, rows in no fixed order, so it must be safe
// to call for different rows at once. The span is valid during the call only.
using MorletRowSink = std::function<void(std::size_t, std::span<const double>)>;

// As morletTransform(), with each row handed to sink as soon as it is done
// instead of kept, for a caller that keeps the map in a form of its own (the
// 8 bytes a cell of the whole map are never allocated). Returns the spectrum.
std::vector<double> morletTransformRows(std::span<const double> x, std::span<const double> periods,
                                        const MorletRowSink& sink);

} // namespace tarnic
