// Red-noise significance of the spectrum estimates and of the Morlet map, and
// the Morlet cone of influence.
//
// Null hypothesis: the series is an AR(1) ("red noise") process
//     x_t = alpha x_{t-1} + e_t,   Var x_t = sigma2,
// whose one-sided density in cycles per sample, nu in [0, 1/2], is
//     2 sigma2 P(nu),   P(nu) = (1 - alpha^2) / (1 - 2 alpha cos(2 pi nu) + alpha^2),
// P being the spectrum normalised to unit variance (the mean of P over the
// two-sided band is 1; Torrence & Compo 1998, eq. 16). An estimate whose
// expectation is S and which is distributed as S chi2_nu / nu exceeds
//     level = S chi2_nu(p) / nu
// with probability 1 - p, chi2_nu(p) being the p-quantile of chi-square with nu
// degrees of freedom (Percival & Walden 1993, ch. 6).
//
// Units. The two spectrum estimates of the main window are one-sided densities
// times the sampling interval dT (white noise of variance sigma2 lies at
// 2 sigma2 dT); at a frequency f in 1/time units (nu = f dT):
//     background(f) = 2 sigma2 dT P(f dT).
// The Morlet map holds |W|^2 in squared units of the series, with E|W|^2 = sigma2
// for white noise at every row (see morlet.h); at a row of Fourier period lambda
// samples the red-noise expectation is sigma2 P(1 / lambda).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

// ---------------------------------------------------------------- chi-square

// The p-quantile of the chi-square distribution with `dof` (> 0, not
// necessarily whole) degrees of freedom: the x with P(dof/2, x/2) = p, P the
// regularised lower incomplete gamma function. Found by safeguarded Newton
// steps on P (p <= 1/2) or on the upper tail Q = 1 - P (p > 1/2), P and Q by
// their series and continued fraction; relative accuracy about 1e-12 for
// 1e-10 <= p <= 1 - 1e-10. p <= 0 gives 0; p >= 1, dof <= 0 or NaN give NaN.
double chiSquareQuantile(double dof, double p);

// ---------------------------------------------------------------- AR(1) fit

enum class WhiteNoiseReason {
    None,                // the AR(1) fit is used
    NegativeCorrelation, // alpha < 0: a blue spectrum is no "red" background
    TooShort,            // fewer than kAr1MinSamples samples: alpha's standard
                         // error sqrt((1 - alpha^2) / N) would exceed 1/4
    NoVariation,         // zero variance, or a sample that is not finite
};
inline constexpr std::size_t kAr1MinSamples = 16;

struct Ar1Fit {
    std::size_t samples = 0;
    double variance = 0.0; // sigma2 = sum (x - mean)^2 / N
    double lag1 = 0.0;     // sum (x_t - mean)(x_{t+1} - mean) / sum (x - mean)^2
    // The alpha the background uses: lag1, or 0 when whiteNoise.
    double alpha = 0.0;
    bool whiteNoise = false; // the fallback to white noise was taken
    WhiteNoiseReason reason = WhiteNoiseReason::None;
};

// Fits the AR(1) model by the lag-1 sample autocorrelation (the Yule-Walker
// estimate; its bias, about -(1 + 4 alpha) / N, is below 1e-3 for the series of
// thousands of samples this is meant for). The mean is removed first. Falls back
// to white noise (alpha = 0, the variance kept) in the cases of WhiteNoiseReason.
Ar1Fit fitAr1(std::span<const double> x);
Ar1Fit fitAr1(std::span<const float> x);

// P(nu) above, nu in cycles per sample.
double ar1NormalisedSpectrum(double alpha, double nu);

// ------------------------------------------ Fourier (Welch) and Burg estimates

// 2 sigma2 dT P(f dT) at each frequency f (1/time units, e.g. FreqFour or
// FreqAR of the spectrum run): the red-noise background in the units of the
// spectra as drawn and saved.
std::vector<double> redNoiseBackground(const Ar1Fit& fit, std::span<const float> frequencies,
                                       double deltaT);

// Equivalent degrees of freedom nu_k, k = 0 .. M/2 (M = fftLength, raised by one
// if odd), of welchDensity(x, length, fftLength, radius) for n samples, i.e. of
// the background Fourier estimate exactly as welch.h lays it out: K windows of
// L samples at the starts s_w of welchWindowStarts(n, L), the periodic Hann
// taper h (L cut to n and M as there), zero padding to M, the mean of the
// periodograms, and the Daniell mean over the 2m + 1 bins k-m .. k+m of the
// circle of M bins (m = radius), mirrored at 0 and M/2.
//
// For a Gaussian process whose spectrum is flat across the smoothing band, the
// estimate is a quadratic form in the tapered transforms X_{w,t}, and
//     nu_k = 2 E[S_k]^2 / Var[S_k]
//          = 2 (K (2m+1) R(0,0))^2 / sum_{w,w'} sum_{|D| <= 2m} (2m+1-|D|)
//                                      (|R(d,D)|^2 + |R(d, 2k+D)|^2),
//     R(d, D) = sum_u h_u h_{u+d} exp(-2 pi i D u / M),   d = |s_w - s_w'|,
// since Cov(|X_a|^2, |X_b|^2) = |E X_a X_b*|^2 + |E X_a X_b|^2 for Gaussian X
// (Welch 1967; Percival & Walden 1993, ch. 6: the equivalent degrees of freedom
// of WOSA and of smoothed direct estimates, here in one sum). The first
// term is the correlation of overlapping windows (d < L) and of neighbouring
// bins (D != 0); the second couples bin t with bin -t and matters only within
// about m + 2 bins of 0 and of the Nyquist bin, where the smoothing window
// folds back onto itself (nu_0 is about half its interior value). Away from
// the ends nu_k is one constant (the sum gives 2 K (2m + 1) for an untapered,
// unpadded estimate without overlap, and 2 for one Hann window, no smoothing;
// the defaults for 8192 samples, 7 windows of 2048 and m = 1, give 24.53).
// The per-window mean removal is
// not modelled: it only lowers the power of the first bin or two.
// Cost: one FFT of size M per distinct window distance d < L, plus
// O((M/2) (4m + 1)) per distance.
std::vector<double> welchDegreesOfFreedom(std::size_t n, std::size_t length, std::size_t fftLength,
                                          std::size_t radius);

// The three curves of a spectrum estimate: value i of each belongs to
// frequency i / (deltaT * fftLength), i = 0 .. fftLength/2 - 1, the grid of the
// spectrum run (FreqFour(i + 1), FreqAR(i + 1)).
struct SpectrumSignificance {
    Ar1Fit fit;
    std::vector<double> background; // 2 sigma2 dT P(f dT)
    std::vector<double> dof;        // nu_k (empty for the Burg estimate)
    std::vector<double> level;      // background chi2_nu(p) / nu (empty for Burg)
};

// The background Fourier estimate SpFour of `signal` (the whole series the run
// passes to SpectAn_dll, with its LengF, FftLengFour, MM and DeltaT):
// background, nu_k of welchDegreesOfFreedom() and the level at probability p
// (0.95 or 0.99).
SpectrumSignificance fourierSignificance(std::span<const float> signal, std::size_t length,
                                         std::size_t fftLength, std::size_t radius, double deltaT,
                                         double p);

// The red-noise reference curve of the Burg estimate SpAR of `signal` (the whole
// series; FftLengAR and DeltaT of the run). No level: a maximum entropy
// estimate has no simple chi-square distribution.
SpectrumSignificance burgBackground(std::span<const float> signal, std::size_t fftLength,
                                    double deltaT);

// ---------------------------------------------------------------- Morlet map
// Rows are labelled by their Fourier period lambda in samples, as in morlet.h;
// the wavelet scale is s = lambda / morletFourierFactor() (1.0330436 for w0 = 6).

// The red-noise expectation of |W|^2 at each row, away from the ends, for the
// transform of morletTransform() over `samples` samples:
//     B(lambda) = sigma2 (1/L) sum_{k=1}^{L/2} P(k / L) |Psi(s 2 pi k / L)|^2,
// L = morletTransformLength(samples), Psi the wavelet of morlet.h on the same bins
// (cut at |s w - w0| > 8.5 as there). This is the AR(1) spectrum seen through the
// wavelet's own filter. Torrence & Compo (1998, eq. 16-18) take the spectrum at
// the row's Fourier frequency, sigma2 P(1 / lambda), as its approximation; both
// give sigma2 for white noise, but for alpha = 0.7 the filtered value is 3-6 %
// higher at periods of 2.5-15 samples (P is convex there) and for periods near 2
// samples both it and |W|^2 fall (0.57 sigma2 P at period 2) where the wavelet's
// spectrum is cut at the Nyquist frequency. A local test with 2 degrees of
// freedom hardly notices; the time average with hundreds does.
std::vector<double> morletRedNoisePower(const Ar1Fit& fit, std::span<const double> periods,
                                        std::size_t samples);

// Local level per row, in |W|^2 units (Torrence & Compo 1998, eq. 18):
//     B(lambda) chi2_2(p) / 2
// (|W|^2 of a complex wavelet has two degrees of freedom; chi2_2(p)/2 = -ln(1-p),
// 2.996 for p = 0.95). A cell of the map is significant when |W|^2 exceeds the
// level of its row.
std::vector<double> morletLocalLevel(const Ar1Fit& fit, std::span<const double> periods,
                                     std::size_t samples, double p);

// Degrees of freedom of the time average of n_a values of |W|^2 at wavelet scale
// s (samples) (Torrence & Compo 1998, eq. 23):
//     nu = 2 sqrt(1 + (n_a / (gamma s))^2),  gamma = 2.32 (decorrelation factor in
// time for w0 = 6; their Table 2). n_a dt / s with dt = 1 since s is in samples.
double morletTimeAverageDof(double averaged, double scale);
inline constexpr double kMorletDecorrelationGamma = 2.32;

// The level of the global spectrum of morletTransform() (MorletWaveSvan_dll's
// spectrum), per row:
//     B(lambda) chi2_nu(p) / nu,
// with nu of morletTimeAverageDof() and n_a the number of samples that
// spectrum averages at that row (morletOutsideCone() of `samples`). Where the
// cone covers the whole series the spectrum averages all samples, some of them
// lowered by the padding, and the level is conservative.
std::vector<double> morletGlobalLevel(const Ar1Fit& fit, std::span<const double> periods,
                                      std::size_t samples, double p);

// Cone of influence: for each sample t = 0 .. samples-1, the Fourier period (in
// samples) above which the row's e-folding time sqrt(2) s reaches past the nearer
// end of the series:
//     cone(t) = (morletFourierFactor() / sqrt(2)) d,   d = min(t, samples-1-t).
// cone(t) is 0 at both ends and greatest in the middle:
//
//     period ^      ____
//            |    /      \          cells above the curve feel the ends
//            |  /          \        (morletTransform's spectrum leaves them out)
//            |/______________\ ---> t
//
// A cell (t, lambda) lies inside the cone's curve, free of end effects, when
// lambda <= cone(t); this is the same rule as morletOutsideCone(). Multiply by dT
// for time units.
std::vector<double> morletConeOfInfluence(std::size_t samples);

// All that the Morlet window needs for one fragment and its rows.
struct MorletSignificance {
    Ar1Fit fit;
    std::vector<double> background;    // per row, B(lambda), |W|^2 units
    std::vector<double> localLevel;    // per row, |W|^2 units
    std::vector<double> globalLevel;   // per row, units of the global spectrum
    std::vector<double> globalDof;     // per row, nu of eq. 23
    std::vector<std::size_t> averaged; // per row, n_a
    std::vector<double> cone;          // per sample, Fourier period in samples
};
MorletSignificance morletSignificance(std::span<const double> fragment,
                                      std::span<const double> periods, double p);
MorletSignificance morletSignificance(std::span<const float> fragment,
                                      std::span<const double> periods, double p);

} // namespace tarnic
