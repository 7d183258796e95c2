// The orthogonal wavelets of the library: Daubechies' extremal-phase filters and
// the symlets (Daubechies' least asymmetric filters), named by a wave code.
//
// Wave code: below 100 a Daubechies wavelet with that many coefficients (2, 4,
// ..., 20; 2 is Haar), from 100 up a symlet with code - 100 coefficients (108,
// 110, ..., 120). A filter of L = 2N coefficients has N vanishing moments; in the
// usual short names code 4 is "db2", code 8 is "db4", code 108 is "sym4".
//
// Each wavelet is given by its scaling (low-pass) filter h[0 .. L-1] with
//     sum h[k] = sqrt(2),   sum_k h[k] h[k + 2m] = delta(m),
// in the orientation of Daubechies' tables: db4 begins 0.4829629, 0.8365163,
// 0.2241439, -0.1294095 (the energy at the front: minimum phase). The wavelet
// (high-pass) filter is g[k] = (-1)^k h[L-1-k].
//
// Origin of the numbers: spectral factorisation of Daubechies' polynomial
//     |H(w)|^2 = 2 cos^{2N}(w/2) P(sin^2(w/2)),  P(y) = sum_{k<N} C(N-1+k, k) y^k,
// computed in 60-digit arithmetic and rounded to 20 significant digits. The
// Daubechies filters take every root inside the unit circle; the symlets take,
// of all 2^m choices of a root or its reciprocal (conjugate pairs together), the
// one whose phase deviates least from a straight line (smallest maximum
// deviation over 0 < w < pi), in the orientation of the published tables.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tarnic {

// The scaling filter of a wave code; an empty span for a code that names no
// wavelet of the table (0, odd, out of range).
std::span<const double> scalingFilter(std::int32_t waveCode);

// True if waveCode names a wavelet of the table.
bool isWaveCode(std::int32_t waveCode);

// Every wave code of the table, in the order in which the minimum-entropy choice
// tries them (and breaks ties): Daubechies 2, 4, ..., 20, then symlets 108, ..., 120.
std::span<const std::int32_t> allWaveCodes();

// The wavelet filter g[k] = (-1)^k h[L-1-k] of a scaling filter h.
std::vector<double> waveletFilter(std::span<const double> lowPass);

} // namespace tarnic
