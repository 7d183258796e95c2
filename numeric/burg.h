// Maximum entropy (Burg) autoregressive spectrum of one stretch of samples.
//
// Model, in the sign convention of R and statsmodels:
//     x_t = phi_1 x_{t-1} + ... + phi_p x_{t-p} + e_t,   Var e_t = sigma2,
//     A(nu) = 1 - sum_j phi_j exp(-2 pi i nu j),         nu in cycles per sample.
// The two-sided density sigma2 / |A(nu)|^2 integrates over (-1/2, 1/2] to the
// mean square r0 of the data the model was fitted to.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace tarnic {

struct ArFit {
    // phi_1 .. phi_p (phi[0] is phi_1).
    std::vector<double> phi;
    // Reflection (partial autocorrelation) coefficients k_1 .. k_p, each in [-1, 1].
    std::vector<double> reflection;
    // Innovation variance sigma2 = r0 * prod (1 - k_j^2).
    double noiseVariance = 0.0;
    // Mean square of the fitted data (after mean removal when asked): sum x^2 / N.
    double meanSquare = 0.0;
};

// Fits an AR model of the given order by Burg's recursion, in double precision.
// removeMean subtracts the mean of x first. The order is cut to x.size() - 1 (an
// empty or one-sample x gives order 0). At each order the reflection coefficient
//     k_p = 2 sum f_t b_{t-1} / sum (f_t^2 + b_{t-1}^2),   t = p .. N-1,
// is the one of the classic recursion (burgFitClassic), but the two sums come
// from the data's autocorrelation (one FFT) and the samples at the two ends
// instead of from the error series: O(N log N + order^2) work instead of
// O(N * order). That form subtracts large numbers when the error energy becomes
// tiny; once it falls below 1e-5 of the data's energy (a nearly noiseless line,
// a constant), or a sum comes out impossible, the fit is redone by
// burgFitClassic(). Either way the coefficients agree with the classic recursion
// to about 1e-9 relative.
ArFit burgFit(std::span<const double> x, std::size_t order, bool removeMean);

// The fast recursion alone: the fit burgFit() returns when the guard above lets
// it, std::nullopt when it refuses (and burgFit() falls back).
std::optional<ArFit> burgFitFast(std::span<const double> x, std::size_t order, bool removeMean);

// Burg's classic recursion over the forward and backward error series, the
// reference for burgFit(): the two sums are taken afresh at every order (no
// recursive update of the denominator, which drifts at high orders). When the
// errors vanish (a noiseless line or a constant) the sums are 0 and k_p = 0.
ArFit burgFitClassic(std::span<const double> x, std::size_t order, bool removeMean);

// The model's ONE-SIDED density in cycles per sample on the grid
//     nu_i = i / (2 * out.size()),   i = 0 .. out.size() - 1,
// i.e. from 0 up to one step below the Nyquist frequency 1/2:
//     out[i] = 2 * sigma2 / |A(nu_i)|^2,
// so that sum_i out[i] / (2 * out.size()) approximates meanSquare. Exactly,
// with M = 2 * out.size(): (out[0]/2 + out[1] + ... + out[n-1] + S(1/2)) / M,
// the mean of the two-sided density over M frequencies, is the model's
// autocovariance at lag 0, which is meanSquare, plus those at lags M, 2M, ...
// (negligible unless the model has lines sharper than the grid).
// A(nu) comes from one real FFT of size 2 * out.size() of the zero-padded
// polynomial [1, -phi_1, ..., -phi_p]; an order beyond that size is folded onto it
// (coefficient j added at j mod size), which is exact at those frequencies.
// Guards, so every value is finite and positive: sigma2 is raised to at least
// 1e-12 * meanSquare, |A|^2 to at least sigma2 / (1e12 * meanSquare) (so no value
// exceeds 2e12 * meanSquare); a fit to data with no variation at all gives 0,
// which burgSpectrum() lifts to the smallest normal float.
void arDensity(const ArFit& fit, std::span<double> out);

// What BurgH_dll computes: the mean-removed stretch `samples` fitted by burgFit()
// at the given order, its one-sided density on out.size() points as arDensity(),
// each value stored as a float in [FLT_MIN, FLT_MAX] (never 0, never infinite).
// Thread-safe: any number of threads may call it at once.
void burgSpectrum(std::span<const float> samples, std::size_t order, std::span<float> out);

} // namespace tarnic
