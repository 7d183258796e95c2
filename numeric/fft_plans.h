// FFTW plans and aligned buffers shared by the numeric routines.
//
// FFTW's planner (and fftw_destroy_plan) may run on one thread at a time only;
// executing an existing plan with the new-array functions is safe from any number
// of threads at once. So every plan is made here, under one process-wide mutex,
// and the routines execute it on buffers of their own:
//
//     const RealFftPlan& plan = realFftPlan(n, FftDirection::Forward); // kept
//     FftBuffer<double> x(n);  FftBuffer<fftw_complex> X(n / 2 + 1);
//     plan.forward(x.data(), X.data());               // any thread
//
// All plans are out of place and made with FFTW_ESTIMATE: no trial runs, and the
// chosen algorithm, hence every rounding, is the same on every run. Long odd
// prime lengths take a convolution of their own instead (see RealFftPlan).
// Buffers come from fftw_malloc, so they have the alignment the plan was made for.
//
// Transforms are unnormalised, as in FFTW:
//     forward   X_k = sum_j x_j exp(-2 pi i jk/n),       k = 0 .. n/2
//     backward  x_j = sum_k X_k exp(+2 pi i jk/n),       j = 0 .. n-1
// (the backward sum runs over all n bins, the missing half being the conjugates;
// the imaginary parts of X_0 and, for even n, of X_{n/2} are ignored).
#pragma once

#include <fftw3.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace tarnic {

// An fftw_malloc'd array of n elements, zero-initialised, freed on destruction.
template <class T> class FftBuffer {
  public:
    explicit FftBuffer(std::size_t n)
        : size_(n), data_(static_cast<T*>(fftw_malloc(sizeof(T) * (n > 0 ? n : 1)))) {
        if (!data_) throw std::bad_alloc();
        std::fill_n(reinterpret_cast<unsigned char*>(data_.get()), sizeof(T) * size_, 0);
    }
    T* data() { return data_.get(); }
    const T* data() const { return data_.get(); }
    std::size_t size() const { return size_; }
    T& operator[](std::size_t i) { return data_[i]; }
    const T& operator[](std::size_t i) const { return data_[i]; }
    std::span<T> span() { return {data_.get(), size_}; }

  private:
    struct Free {
        void operator()(T* p) const { fftw_free(p); }
    };
    std::size_t size_;
    std::unique_ptr<T[], Free> data_;
};

// Work arrays of the calling thread that outlive the call: slot 0 .. 3 of each
// element type, at least n elements, aligned as FftBuffer's, contents left from
// the last use. For the transforms of a whole signal: a fresh array of several
// megabytes costs more in page faults and zeroing than the FFT itself. A slot
// grows to the largest size asked for and is kept until the thread ends.
// A routine owns its slots for the length of one call and calls no other
// routine that uses the same element type's slots.
// Pool numbers a set of slots of its own (each pool is separate storage), for
// work that may run while another routine holds the slots of pool 0.
template <class T, int Pool = 0> T* threadScratch(std::size_t slot, std::size_t n) {
    thread_local std::unique_ptr<FftBuffer<T>> slots[4];
    std::unique_ptr<FftBuffer<T>>& buffer = slots[slot];
    if (!buffer || buffer->size() < n) {
        buffer.reset();
        buffer = std::make_unique<FftBuffer<T>>(n);
    }
    return buffer->data();
}

enum class FftDirection {
    Forward,          // n reals to n/2 + 1 bins
    Backward,         // n/2 + 1 bins to n reals (overwrites its input)
    ForwardOverwrite, // as Forward, but the n reals are overwritten: FFTW may then
                      // take algorithms that work in the input (for n = 10^6 about
                      // 1.6 times faster)
};

// How a plan computes its transform.
enum class FftMethod {
    Automatic,        // PrimeConvolution for an odd prime n >= primeConvolutionFrom,
                      // FFTW for every other length
    Fftw,             // FFTW's own plan, whatever the length
    PrimeConvolution, // odd prime n only (n >= 3): see below
};

// From this length on an odd prime length is transformed by PrimeConvolution.
// FFTW's own algorithm for a prime p (Rader's, with a convolution of length
// p - 1 computed by transforms of that exact length) is fast when p - 1 is
// smooth and slow when p - 1 has large prime factors again: for p = 999,983
// (p - 1 = 2 x 79 x 6329) it costs 40 times a real transform of 10^6.
inline constexpr std::size_t primeConvolutionFrom = 2048;

// A plan for real data of length n in one direction. Making one is the costly
// part (for n = 10^6 about a tenth of a second, and the first execution as much
// again while FFTW settles its tables); executing it again is cheap.
//
// PrimeConvolution, for an odd prime n, computes the same exact DFT of length n
// by Rader's reordering, whose cost does not depend on how n - 1 factors. With g
// a primitive root mod n and h = (n - 1) / 2, every nonzero index is g^p mod n
// and X_(g^-q) = x_0 + sum_p x_(g^p) w^(g^(p-q)), w = exp(-2 pi i / n): a cyclic
// correlation of length n - 1. As g^h = -1, the kernel's real part repeats
// after h steps and its imaginary part changes sign, so for real data the
// correlation splits into two real ones of length h: the sums
// x_(g^p) + x_(n-g^p) with the cosines (cyclic), and the differences with the
// sines (negacyclic). Each is one circular convolution of a smooth length
// m >= 2h - 1 = n - 2 (zero-padded, so nothing wraps), by real FFTW transforms
// of length m, against kernel spectra made once per n. The backward transform
// splits the same way (real and imaginary parts of the bins). The two halves are
// independent: for long lengths the second runs on a worker thread, with the
// same arithmetic, so the result does not depend on the number of threads.
// Cost: four real transforms of about n, against two for a round n.
class RealFftPlan {
  public:
    RealFftPlan(std::size_t n, FftDirection direction, FftMethod method = FftMethod::Automatic);
    ~RealFftPlan();
    RealFftPlan(const RealFftPlan&) = delete;
    RealFftPlan& operator=(const RealFftPlan&) = delete;

    std::size_t size() const { return n_; }
    bool usesPrimeConvolution() const { return prime_ != nullptr; }
    // Forward and ForwardOverwrite plans. in: n reals (garbage afterwards for
    // ForwardOverwrite), out: n/2 + 1 bins; both from FftBuffer.
    void forward(double* in, fftw_complex* out) const;
    // Backward plans only. in: n/2 + 1 bins (destroyed), out: n reals; both from
    // FftBuffer.
    void backward(fftw_complex* in, double* out) const;

    struct PrimeConvolution;

  private:
    std::size_t n_;
    FftDirection direction_;
    fftw_plan plan_ = nullptr;
    std::shared_ptr<const PrimeConvolution> prime_; // set for FftMethod::PrimeConvolution
};

// Whether n is prime (by trial division; n < 2^31 takes at most 23,000 of them).
bool isPrime(std::size_t n);

// The plan for length n (n >= 1), made on first use and kept for the life of the
// process. Meant for the few sizes that recur (transform sizes of spectra); a
// routine that meets an arbitrary length once should own a RealFftPlan instead.
const RealFftPlan& realFftPlan(std::size_t n, FftDirection direction);

// The plan for length n for a routine that meets arbitrary lengths (that of a
// loaded signal): the last few (length, direction) pairs asked for are kept, so
// repeated calls on one signal plan once, and older plans are freed once no
// caller holds them any more.
std::shared_ptr<const RealFftPlan> recentRealFftPlan(std::size_t n, FftDirection direction);

// How the transforms of a batch lie in their shared array of m * count bins:
// element j of transform r at
enum class BatchLayout {
    Interleaved, // j * count + r  (the transforms woven together; FFTW runs
                 //                 them side by side, fast for few long ones)
    Consecutive, // r * m + j      (one after another; fast for many short ones)
};

// A batch of `count` complex backward transforms of length m, in place:
//     y_r[t] = sum_j z_r[j] exp(+2 pi i jt/m),   t = 0 .. m-1,
// planned with FFTW_ESTIMATE like the real plans.
class ComplexBatchPlan {
  public:
    ComplexBatchPlan(std::size_t m, std::size_t count, BatchLayout layout);
    ~ComplexBatchPlan();
    ComplexBatchPlan(const ComplexBatchPlan&) = delete;
    ComplexBatchPlan& operator=(const ComplexBatchPlan&) = delete;

    // data: m * count bins from FftBuffer, transformed in place. Any thread.
    void backward(fftw_complex* data) const;

  private:
    fftw_plan plan_ = nullptr;
};

// The batch plan for (m, count, layout), made on first use and kept for the
// life of the process, as realFftPlan() keeps its plans.
const ComplexBatchPlan& complexBatchPlan(std::size_t m, std::size_t count, BatchLayout layout);

} // namespace tarnic
