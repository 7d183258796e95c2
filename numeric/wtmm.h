// Wavelet transform modulus maxima (WTMM) skeleton of a fragment with the
// Gaussian kernel and its first two derivatives, as the WTMM help window lays
// it down.
//
// Kernel psi0(tau) = exp(-tau^2); at scale a (samples) the smoothed signal is
//     c0(t, a) = integral x(t - a tau) psi0(tau) dtau / sqrt(pi),
// a Gaussian of standard deviation a / sqrt(2), and
//     c_n(t, a) = (1/n!) d^n c0 / dt^n,   n = 1, 2,
// the Taylor coefficients of the smoothed signal: formula (3) of the help, whose
// normalising integral of tau^n psi_n(tau) is n! sqrt(pi). We take the sign of
// the derivative itself (the help's integral over x(t - a tau) would give c1 the
// opposite sign, and a rise would be called a negative trend). So c1 > 0 where
// the smoothed signal rises, c2 > 0 where it is convex downward (cup-shaped).
// For a unit step, a |c1| = 1/sqrt(pi) at the step at every scale, i.e.
// sigma |c1| = 1/sqrt(2 pi) with sigma = a / sqrt(2) (with the sampled kernel
// 4 % less at a = 2, 0.04 % at a = 20).
//
// Time is counted in samples, t = 0 .. T with T = N - 1. The transform is the
// discrete convolution with the sampled kernels, taken through the FFT. The
// series is reflected through its end points, half the padding at each end, up
// to the power of two at or above 2N, so that a flat or straight end stays flat
// or straight and the dead intervals hide what curvature the reflection bends:
//
//     ... 2x0-x2  2x0-x1 | x0 x1 ... x(N-1) | 2x(N-1)-x(N-2)  2x(N-1)-x(N-3) ...
//
// Nothing of the far end reaches an admitted point.
//
// Dead intervals: a point (t, a) is admitted when 3a <= t <= T - 3a, ends
// included, so at the greatest scale a_max = T / 6 only t = T / 2 is (when it
// is a whole sample). The admitted region is the cupola
//
//     log a ^
//           |         .          a_max = T/6: only t = T/2
//           |        / \         (T/2 a whole sample)
//           |       /   \        admitted: on and inside
//           |      /     \       the slopes t = 3a and
//           |     /       \      t = T - 3a
//           |    /         \     a_min = 2
//           +---+-----------+---> t
//           0   6         T-6   T
//
// Scales: a_k = 2 r^k, k = 0 .. K, from a_min = 2 to a_max = T / 6 exactly,
// K = ceil(16 log2(a_max / 2)): at most 1/16 octave apart. A fragment with
// T / 6 < 2 (fewer than 13 samples) has no scale and no chain.
//
// Points, for each scale and each admitted t:
//     class 1  minimum of c0             class 2  maximum of c0
//     class 3  maximum of |c1|, c1 < 0   class 4  maximum of |c1|, c1 > 0
//     class 5  maximum of |c2|, c2 < 0   class 6  maximum of |c2|, c2 > 0
// An extremum must stand above both neighbours; values that differ by less than
// the rounding noise (1e-10 of max |detrended| plus 1e-12 of max |x|, for
// a^n c_n) count as equal, and a run of equal values counts once, at its middle
// (the lower of two middles) if it is at most three samples long; a longer run
// is a flat stretch (a constant slope, say), not an extremum. So a polynomial of
// the trend order yields no points at all, and a step between two samples gives
// one point, on the earlier of them.
//
// Chaining, separately in each class, from the greatest scale down: every chain
// alive at scale a_{k+1} takes the nearest point of scale a_k within
// max(2, a_{k+1} / 2) samples; the closest pairs are joined first and each point
// joins one chain at most. A chain that finds no point ends; a point that joins
// no chain starts a new one. A chain is long when its greatest scale is at least
// gamma a_max; only long chains are kept.
//
// Class 7, the tops of the "fingerprint arches": with a Gaussian kernel a
// minimum and a maximum of c0 can only disappear together, as the scale grows,
// when the bump or dip between them is smoothed away. Each long chain of class 1
// whose top lies inside the admitted region of the next scale (it vanished,
// rather than running into a dead interval) is paired with the nearest such long
// chain of class 2 whose top is at most one scale step away and at most a
// samples apart; the pair's arch top is the point halfway between the two tops
// (rounded down to a sample), at the greater of their two scales. It marks where and at which scale a
// feature of the smoothed signal ceases to exist.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tarnic {

// The smallest scale, samples.
inline constexpr double kWtmmMinScale = 2.0;
// Scales per octave.
inline constexpr int kWtmmVoices = 16;
// Logarithm written for a separator record.
inline constexpr double kWtmmSeparatorLog = -9999.0;

// c0, c1, c2 at scale a (samples) at every sample of x (no mean removal here).
std::array<std::vector<double>, 3> gaussianDerivatives(std::span<const double> x, double a);

// The scales a_0 .. a_K of a fragment of n samples (empty below 13 samples).
std::vector<double> wtmmScales(std::size_t n);

// Whether (t, a) lies outside both dead intervals of a fragment of n samples.
bool wtmmAdmitted(std::size_t t, double a, std::size_t n);

struct WtmmPoint {
    std::int32_t sample; // 0-based
    std::int32_t level;  // index into WtmmSkeleton::scales

    friend bool operator==(const WtmmPoint&, const WtmmPoint&) = default;
};

// One chain, from its smallest scale to its greatest.
using WtmmChain = std::vector<WtmmPoint>;

struct WtmmSkeleton {
    std::vector<double> detrended;
    std::vector<double> scales; // a_k, samples
    // Long chains of classes 1 .. 6 (index 0 .. 5), each class ordered by the
    // sample of the chains' lowest point (then by their top scale).
    std::array<std::vector<WtmmChain>, 6> chains;
    // Class 7: arch tops, ordered by sample.
    std::vector<WtmmPoint> archTops;
};

// The skeleton of x after removing its polynomial trend of order trendOrder
// (clamped to 0 .. 10). gamma is the long-chain
// threshold as a share of a_max (0 keeps every chain).
WtmmSkeleton wtmmSkeleton(std::span<const double> x, int trendOrder, double gamma);

// The records of the skeleton as the chain file holds them, and the number of
// records of each class (separators included) in counts[0 .. 6].
//
// One record a line, ended by CR LF: the 1-based sample, one blank, the base-10
// logarithm of the scale in samples with six decimals. Classes 1 .. 6 follow one
// another; within a class the chains follow one another, each from its smallest
// scale up, with a separator record "0 -9999" between two chains (none before
// the first or after the last). Class 7 comes last, one arch top a record,
// without separators. A class of c chains of r points in all has r + c - 1
// records; an empty class has none. Example, one chain of two points in class 2
// and one point in class 7:
//
//     101 0.301030
//     101 0.319845
//     240 1.204120
std::string wtmmChainRecords(const WtmmSkeleton& skeleton, std::array<std::int32_t, 7>& counts);

} // namespace tarnic
