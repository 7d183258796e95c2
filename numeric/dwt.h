// The periodic orthogonal wavelet transform, the extension of a series to a
// power-of-two working length, the minimum-entropy choice of the wavelet and
// the cascade graph of a wavelet.
//
// A wavelet is given by its scaling filter h of even length L (wavelet_filters.h);
// its wavelet filter is g[k] = (-1)^k h[L-1-k]. Coefficients are orthonormal: the
// energy of the coefficients equals the energy of the (extended) signal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tarnic {

// ---------------------------------------------------------------------------
// Working length and extension
// ---------------------------------------------------------------------------

// The smallest power of two 2^p with p >= 1 that is not below n: 2 for n <= 2,
// 1024 for 1024, 2048 for 1025. Every transform works on this many samples.
std::size_t workingLength(std::size_t n);

// p for a power of two 2^p.
int binaryExponent(std::size_t powerOfTwo);

// A series extended to a working length: the series is values[offset ..
// offset + n - 1].
struct ExtendedSignal {
    std::vector<double> values;
    std::size_t offset = 0;
};

// Extends signal (n >= 1 samples) to `length` >= n samples by symmetric
// reflection (each end sample repeated), the padding split between the two ends,
// the smaller half in front:
//
//     n = 5, length 8:    1 | 1 2 3 4 5 | 5 4             offset 1
//     n = 6, length 8:    1 | 1 2 3 4 5 6 | 6             offset 1
//     n = 5, length 16:   5 4 3 2 1 | 1 2 3 4 5 | 5 4 3 2 1 1     offset 5
//
// (a padding longer than the series reflects again). The transforms below are
// periodic; on the extended series they join the padding of the right end to
// that of the left end, so the series itself continues smoothly at both ends and
// the jump of the periodic wrap lies inside the padding. A length that is a
// power of two gets no padding and is transformed as one period.
ExtendedSignal extendSymmetric(std::span<const double> signal, std::size_t length);

// ---------------------------------------------------------------------------
// One level of the periodic transform
// ---------------------------------------------------------------------------

// The two-channel filter bank of one wavelet, with scratch buffers of its own
// (one object per thread). For x of even length N >= 2 and o = 0 .. N/2 - 1:
//
//     approx[o] = sum_k h[k] x[(2o + k + 1 - L/2) mod N]
//     detail[o] = sum_k g[k] x[(2o + k + 1 - L/2) mod N]
//
// The shift 1 - L/2 centres each filter, so coefficient o describes the samples
// around 2o; for Haar (L = 2) approx[o] = (x[2o] + x[2o+1]) / sqrt(2). This is
// the "periodization" convention (PyWavelets' mode "periodization").
// synthesise() is the exact inverse (the transpose): it rebuilds x from the two
// halves. An empty span in place of approx or detail counts as all zeros, which
// rebuilds the part of x that one branch carries.
class PeriodicFilterBank {
  public:
    explicit PeriodicFilterBank(std::span<const double> lowPass);
    // Another wavelet; the scratch buffers are kept.
    void setLowPass(std::span<const double> lowPass);

    std::size_t filterLength() const { return lowPass_.size(); }
    std::span<const double> lowPass() const { return lowPass_; }
    std::span<const double> highPass() const { return highPass_; }

    // x.size() even and >= 2; approx and detail have x.size() / 2 elements, or
    // are empty to skip that branch.
    void analyse(std::span<const double> x, std::span<double> approx, std::span<double> detail);
    // x.size() even and >= 2; approx and detail have x.size() / 2 elements or are
    // empty (zeros). x is overwritten.
    void synthesise(std::span<const double> approx, std::span<const double> detail,
                    std::span<double> x);

  private:
    std::vector<double> lowPass_, highPass_;
    std::vector<double> wrapped_;     // analysis: the input wrapped around
    std::vector<double> padA_, padD_; // synthesis: the wrapped coefficients
};

// ---------------------------------------------------------------------------
// The pyramid (the usual discrete wavelet transform)
// ---------------------------------------------------------------------------

// details[j - 1] holds level j (N / 2^j coefficients, level 1 the finest);
// approximation holds level `levels` (N / 2^levels coefficients).
struct WaveletPyramid {
    std::vector<std::vector<double>> details;
    std::vector<double> approximation;
};

// Transforms x (length a power of two, at least 2^levels) over `levels` >= 1 levels.
WaveletPyramid forwardTransform(std::span<const double> x, std::span<const double> lowPass,
                                int levels);

// The inverse of forwardTransform.
std::vector<double> inverseTransform(const WaveletPyramid& pyramid,
                                     std::span<const double> lowPass);

// Levels of the transform of a whole series used by the threshold filter, the
// Donoho-Johnstone level and the minimum-entropy choice: down to an approximation
// of 8 coefficients, log2(length) - 3 levels, at least 1.
int pyramidLevels(std::size_t workingLength);

// ---------------------------------------------------------------------------
// Minimum-entropy choice of the wavelet
// ---------------------------------------------------------------------------

// The entropy cost of the wavelet coefficients of a series, in nats: the mean
// of the series is removed, the series is extended symmetrically to its working
// length and transformed over pyramidLevels() levels; then each detail level j
// gets its Shannon (Coifman-Wickerhauser) entropy, normalised to its own energy,
// and the cost is their sum:
//
//     E = sum_j E_j,   E_j = - sum_i p_ji ln p_ji,   p_ji = d_ji^2 / sum_i d_ji^2,
//
// with 0 ln 0 = 0 and E_j = 0 for a level without energy. E_j is 0 when one
// coefficient carries the level and ln(count) when all carry the same; the
// approximation, the coarse outline that every wavelet draws alike, is left out.
// Why per level: the energy of most series falls steeply from long to short
// periods, so one normalisation over all coefficients lets the few coarsest
// ones decide, and how those happen to fall on the series' large features is
// chance; per level every scale counts for how sparsely the wavelet represents
// it. So a series of steps costs Haar one coefficient per jump and level (the
// minimum), and a smooth series leaves a long filter almost nothing at the fine
// levels. White noise costs about ln(count) - 0.73 per level for every wavelet.
double waveletEntropy(std::span<const double> signal, std::span<const double> lowPass);

// The wave code of minimum waveletEntropy() among all wavelets of the table
// (allWaveCodes()), ties going to the earlier code of that list (so a constant
// series, or steps at multiples of the working length / 8, gives 2: Haar). The candidates are
// evaluated in parallel; the result does not depend on the number of threads. signal must not be
// empty.
std::int32_t minimumEntropyWaveCode(std::span<const double> signal);

// ---------------------------------------------------------------------------
// The graph of a wavelet
// ---------------------------------------------------------------------------

enum class CascadeFunction { Scaling, Wavelet };

// The cascade algorithm for phi (Scaling) or psi (Wavelet) of the filter:
// start from a single coefficient, convolve with g (psi) or h (phi), then
// upsample by two and convolve with h, level - 1 times in all; multiply by
// 2^(level/2). The (L-1)(2^level - 1) + 1 values are spaced 2^-level apart over
// the support [0, L-1]. Value k is 2^(level/2) times the inner product of the
// function with the scaling function of level `level` and shift k, so it
// samples the function near t = (k + m) / 2^level, m = sum_k k h[k] / sqrt 2 the
// centre of phi (0.5 for Haar, 0.634 for the 4-coefficient Daubechies filter).
// The usual plots put value k at t = (k + 1) / 2^level: phi(1) of the
// 4-coefficient Daubechies filter, (1 + sqrt 3)/2 = 1.36603, is value 2^level - 1,
// 1.3546 at level 5 and 1.36594 at level 12; the error falls like 2^-level.
// The sampled psi has sum psi^2 2^-level = 1 and sum psi = 0 exactly.
std::vector<double> cascade(std::span<const double> lowPass, int level, CascadeFunction which);

// psi at `count` >= 2 points evenly spread over its support [0, L-1], both ends
// included: the cascade at level 14, value k placed at its centre (k + m)/2^14,
// linearly interpolated, 0 at both ends of the support.
std::vector<double> waveletGraph(std::span<const double> lowPass, std::size_t count);

// ---------------------------------------------------------------------------
// Parallel helper
// ---------------------------------------------------------------------------

// Calls task(index, worker) once for every index < count, spread over at most
// std::thread::hardware_concurrency() threads (the calling thread among them);
// worker < parallelWorkers(count) tells which thread runs the call, so that a
// caller can keep scratch space per worker. Each index is handled exactly once,
// so results stored per index do not depend on the number of threads. The first
// exception of a task is rethrown after all threads have ended.
std::size_t parallelWorkers(std::size_t count);
void forEachIndex(std::size_t count,
                  const std::function<void(std::size_t index, std::size_t worker)>& task);

} // namespace tarnic
