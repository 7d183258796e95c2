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
// chosen algorithm, hence every rounding, is the same on every run.
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
template <class T> T* threadScratch(std::size_t slot, std::size_t n) {
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

// A plan for real data of length n in one direction. Making one is the costly
// part (for n = 10^6 about a tenth of a second, and the first execution as much
// again while FFTW settles its tables); executing it again is cheap.
class RealFftPlan {
  public:
    RealFftPlan(std::size_t n, FftDirection direction);
    ~RealFftPlan();
    RealFftPlan(const RealFftPlan&) = delete;
    RealFftPlan& operator=(const RealFftPlan&) = delete;

    std::size_t size() const { return n_; }
    // Forward and ForwardOverwrite plans. in: n reals (garbage afterwards for
    // ForwardOverwrite), out: n/2 + 1 bins; both from FftBuffer.
    void forward(double* in, fftw_complex* out) const;
    // Backward plans only. in: n/2 + 1 bins (destroyed), out: n reals; both from
    // FftBuffer.
    void backward(fftw_complex* in, double* out) const;

  private:
    std::size_t n_;
    FftDirection direction_;
    fftw_plan plan_ = nullptr;
};

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
