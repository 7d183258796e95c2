// Background Fourier estimate: averaged, frequency-smoothed periodograms of
// overlapping tapered time windows (Welch's method with Daniell smoothing).
//
// Windows. K windows of L samples cover the whole record of n samples: the first
// starts at the first sample, the last ends at the last, and the starts are spread
// evenly, rounded to whole samples. K is the fewest windows whose spacing does not
// exceed L/2, so neighbours overlap by at least half a window:
//
//     sample 0                                                      sample n-1
//     |<------ L ------>|
//             |<------ L ------>|
//                      |<------ L ------>|
//                               |<------ L ------>|     (n = 5L/2 here: K = 4)
//     start_w = round(w (n - L) / (K - 1)),  w = 0 .. K-1,
//     K = 1 + ceil((n - L) / floor(L/2))      (K = 1 when L >= n)
//
// Each window: its own mean removed, then a periodic Hann taper
//     w_j = (1 - cos(2 pi j / L)) / 2,   j = 0 .. L-1     (w_0 = 0, peak at j = L/2),
// then zero-padded to M >= L points and transformed: X_k, k = 0 .. M/2.
//
// Scaling, per cycle per sample: S_k = |X_k|^2 / sum_j w_j^2 is the two-sided
// density (Parseval: sum over all M bins of S_k / M = sum (w x)^2 / sum w^2, the
// taper-weighted mean square). The one-sided density is P_k = 2 S_k for
// 0 < k < M/2 and P_k = S_k at k = 0 and k = M/2, the bins that have no mirror
// image; so sum_{k=0}^{M/2} P_k / M equals that mean square.
//
// Smoothing over frequency, radius m bins (Daniell): each S_k becomes the plain
// mean of S_{k-m} .. S_{k+m} taken round the circle of all M bins, where the
// negative frequencies mirror the positive ones (S_{-k} = S_k, S_{M-k} = S_k):
//
//     near 0 (m = 2):       S_2 S_1 | S_0 S_1 S_2 S_3 ...
//     near M/2 (m = 2): ... S_{M/2-2} S_{M/2-1} S_{M/2} | S_{M/2-1} S_{M/2-2}
//
// This conserves sum_k S_k exactly. Smoothing and averaging over windows are both
// linear, so the mean of the smoothed periodograms is the smoothed mean; the
// smoothing is applied once, to the mean.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

// Start (0-based) of each window of `length` samples laid over n samples as in
// the picture above. length is cut to n; n == 0 or length == 0 gives no window.
std::vector<std::size_t> welchWindowStarts(std::size_t n, std::size_t length);

// The one-sided density P_k, k = 0 .. M/2 (Nyquist bin included; value k belongs
// to frequency k / M cycles per sample), of x by the windows of `length` samples
// and the smoothing `radius` described above. M is fftLength, raised by one if
// odd (the program passes powers of two). length is cut to n and to M; radius 0
// means no smoothing. An empty x, length 0 or fftLength 0 gives M/2 + 1 zeros.
// Values may be 0 (a constant record). Sums and transforms are in double
// precision for either input type.
std::vector<double> welchDensity(std::span<const double> x, std::size_t length,
                                 std::size_t fftLength, std::size_t radius);
std::vector<double> welchDensity(std::span<const float> x, std::size_t length,
                                 std::size_t fftLength, std::size_t radius);

// Frequency smoothing of a one-sided density p_k, k = 0 .. M/2, of a transform of
// even size M = 2 (p.size() - 1): the Daniell mean of `radius` described above.
// The two end values are the unmirrored bins; sum_k p_k is conserved. Any radius
// is allowed (a window wider than the circle counts each bin once per turn).
// Every sum adds only values inside one window, so for p >= 0 the relative
// rounding error stays of the order of (2 radius + 1) ulp whatever the dynamic
// range of p, and the cost is O(M) for any radius.
std::vector<double> daniellSmooth(std::span<const double> p, std::size_t radius);

// What SpectAn_dll computes: welchDensity() of the signal with the mean of each
// window removed, its first out.size() values (normally fftLength/2: frequency 0
// up to one step below Nyquist) stored as floats no smaller than
// max(1e-12 * total, FLT_MIN), total being sum_k P_k / fftLength, and never
// infinite.
void backgroundSpectrum(std::span<const float> signal, std::size_t length, std::size_t fftLength,
                        std::size_t radius, std::span<float> out);

} // namespace tarnic
