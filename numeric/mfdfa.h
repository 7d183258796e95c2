// Multifractal detrended fluctuation analysis of a series, as the MF DFA help
// window lays it down: the fluctuations are measured on the series itself, not
// on its cumulative sum (its "profile"). A random walk therefore has h(q) = 0.5
// here and white noise h(q) = 0; feed the cumulative sum to get the usual
// textbook exponents.
//
// For a scale of s samples the series x[0 .. N-1] is cut into [N/s]
// non-overlapping segments from the first sample on; the samples after the last
// whole segment are not used:
//
//     | s | s | s | s |..|      N = 4 s + 2: four segments, two samples left over
//
// Each segment loses its least-squares polynomial of order m; what is left, Dy,
// is measured by
//     range:               max Dy - min Dy
//     standard deviation:  sqrt((1/s) sum Dy^2)
// and the measures r_k of the segments give the generalised fluctuation
//     Z(q, s) = ( (1/K) sum_k r_k^q )^(1/q),   K = number of segments used,
// (the geometric mean exp((1/K) sum ln r_k) at q = 0, the limit of the formula).
// h(q) is the least-squares slope of ln Z(q, s) against ln s over the scales,
// tau(q) = q h(q) - 1, and the singularity spectrum is the Legendre transform
//     F(alpha) = max{ min over q of (q (alpha - h(q)) + 1), 0 }.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tarnic {

// Least-squares polynomial detrending of stretches of one length. The basis is
// made once for the length (orthonormal polynomials in t = 0 .. length-1 by
// Gram-Schmidt with reorthogonalisation, well conditioned up to order 10 and
// beyond) and then applied to any number of stretches.
class PolynomialDetrender {
  public:
    // Fits of order `order` (below 0 counts as 0) to stretches of `length` samples.
    // A stretch of at most order + 1 samples is fitted exactly.
    PolynomialDetrender(std::size_t length, int order);

    std::size_t length() const { return length_; }
    // Number of basis polynomials actually used: min(order + 1, length).
    std::size_t rank() const { return rank_; }

    // residual[t] = y[t] - p(t), p the least-squares polynomial; y and residual
    // have length() samples and may be the same array.
    void residual(std::span<const double> y, std::span<double> residual) const;

    // The orthonormal basis: rank() columns of length() samples, column after
    // column.
    const std::vector<double>& basis() const { return basis_; }

  private:
    std::size_t length_;
    std::size_t rank_ = 0;
    std::vector<double> basis_; // rank_ columns of length_ samples, column after column
};

// x less its least-squares polynomial of order `order` over the whole series
// (order 0: less its mean).
std::vector<double> removePolynomialTrend(std::span<const double> x, int order);

enum class FluctuationMeasure {
    Range = 0,             // max Dy - min Dy
    StandardDeviation = 1, // sqrt((1/s) sum Dy^2)
};

// The measure of each of the [N/s] segments of s samples (s >= 1) after removing
// its polynomial of order `order`, in the order of the segments. All segments
// share the detrender's basis, so their fits are done together as matrix
// products.
std::vector<double> segmentFluctuations(std::span<const double> x, std::size_t s, int order,
                                        FluctuationMeasure measure);

// The share of the segments at each of `scales` whose measure is zero to
// rounding (at most 1e-11 times the largest |x| of the series, or not finite):
// the segments that mfdfa() leaves out of Z(q, s). 1 marks a scale at which
// nothing fluctuates; a scale longer than the series also gives 1.
std::vector<double> flatSegmentShares(std::span<const double> x,
                                      std::span<const std::size_t> scales, int order,
                                      FluctuationMeasure measure);

// The scales of the analysis, in samples: `count` values evenly spaced in
// logarithm from lo = clamp(minScale, 2, N) to hi = clamp(maxScale, lo, N),
// rounded to whole samples; repeats (where the spacing is under one sample) are
// dropped, so fewer than `count` may come back. Both ends are always present;
// count 1 gives lo alone, count 0 or N < 2 nothing.
std::vector<std::size_t> mfdfaScales(std::size_t n, int minScale, int maxScale, std::size_t count);

// `count` values evenly spaced from lo to hi, both ends included (lo alone for
// count 1).
std::vector<double> evenGrid(double lo, double hi, std::size_t count);

struct MfdfaSettings {
    int order = 4; // detrending polynomial order per segment
    FluctuationMeasure measure = FluctuationMeasure::Range;
    int minScale = 20;           // samples
    int maxScale = 40;           // samples
    std::size_t scaleCount = 20; // asked for; see mfdfaScales()
    double qMin = -10.0;
    double qMax = 10.0;
    std::size_t qCount = 200; // q evenly spaced from qMin to qMax
    std::size_t alphaCount = 200;
};

enum class MfdfaOutcome {
    Spectrum,   // F(alpha) is positive on part of the alpha grid
    NoSpectrum, // h(q) was estimated but the Legendre transform is 0 everywhere
    NoScaling,  // fewer than two scales with any fluctuation (constant series,
                // too few samples, segments no longer than order + 1), or no q
};

struct MfdfaResult {
    std::vector<double> q;
    std::vector<std::size_t> scales; // samples
    // log10 Z(q, s), scale after scale: log10Z[i * q.size() + j] for scales[i] and
    // q[j]. A scale at which no segment fluctuates has 0 in every cell and plays
    // no part in h(q).
    std::vector<double> log10Z;
    std::vector<double> h;     // per q; 0 when the outcome is NoScaling
    std::vector<double> alpha; // alphaCount values, increasing
    std::vector<double> f;     // F(alpha) >= 0 at each alpha
    MfdfaOutcome outcome = MfdfaOutcome::NoScaling;
};

struct SingularitySpectrum {
    std::vector<double> alpha; // increasing
    std::vector<double> f;     // >= 0
    bool positive = false;     // some f > 0
};

// The Legendre transform F(alpha) = max{min over q of (q (alpha - h(q)) + 1), 0}
// of h given at the values q, on alphaCount points chosen as described under
// mfdfa() (a q within 1e-12 of 0 takes no part in the choice of the grid). An
// empty q gives the grid 0 .. 1 with F = 0.
SingularitySpectrum singularitySpectrum(std::span<const double> q, std::span<const double> h,
                                        std::size_t alphaCount);

// The whole analysis.
//
// Zero measures: a segment whose measure is at most 1e-11 times the largest
// |x| of the series is taken to have no fluctuation (a stretch that is a
// polynomial of the order, a run of equal values) and is left out of the average
// at every q, since a negative q would raise 0 to an infinite power.
//
// Alpha grid: F(alpha) > 0 exactly on the open interval
//     ( max over q > 0 of (h(q) - 1/q),  min over q < 0 of (h(q) + 1/|q|) ),
// and the alpha grid spans that interval evenly with both ends included, so that
// the first and the last F are 0 and every value in between is positive (a
// monofractal with h = H and |q| <= 10 gives the triangle 1 - 10 |alpha - H|
// with its top at H). When all q have one sign the open end is closed at
// max h + 1/min|q| (or min h - 1/min|q|).
// Degenerate runs: NoSpectrum (the interval is empty) puts the grid evenly
// from min h(q) to max h(q) (h - 0.5 .. h + 0.5 if they are equal) with F = 0
// everywhere; NoScaling puts it from 0 to 1 with F = 0 and h = 0. Every
// value returned is finite for finite x.
MfdfaResult mfdfa(std::span<const double> x, const MfdfaSettings& settings);

} // namespace tarnic
