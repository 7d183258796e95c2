#include "numeric/fft_plans.h"

#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>

namespace tarnic {
namespace {

// Guards every call into FFTW other than plan execution. Constant-initialised, so
// it outlives the plan cache below, whose destructor still takes it.
std::mutex plannerMutex;

} // namespace

RealFftPlan::RealFftPlan(std::size_t n) : n_(n) {
    if (n == 0 || n > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw std::length_error("FFT length out of range");
    // The planner only needs arrays of the right size and alignment; with
    // FFTW_ESTIMATE it does not touch their contents.
    FftBuffer<double> real(n);
    FftBuffer<fftw_complex> bins(n / 2 + 1);
    const int size = static_cast<int>(n);
    std::lock_guard lock(plannerMutex);
    forward_ = fftw_plan_dft_r2c_1d(size, real.data(), bins.data(), FFTW_ESTIMATE);
    backward_ = fftw_plan_dft_c2r_1d(size, bins.data(), real.data(), FFTW_ESTIMATE);
    if (!forward_ || !backward_) {
        if (forward_) fftw_destroy_plan(forward_);
        if (backward_) fftw_destroy_plan(backward_);
        throw std::bad_alloc();
    }
}

RealFftPlan::~RealFftPlan() {
    std::lock_guard lock(plannerMutex);
    fftw_destroy_plan(forward_);
    fftw_destroy_plan(backward_);
}

void RealFftPlan::forward(double* in, fftw_complex* out) const {
    fftw_execute_dft_r2c(forward_, in, out);
}

void RealFftPlan::backward(fftw_complex* in, double* out) const {
    fftw_execute_dft_c2r(backward_, in, out);
}

const RealFftPlan& realFftPlan(std::size_t n) {
    // Plans are never removed, so a reference handed out stays valid. The map has
    // its own lock: making a plan takes the planner lock inside the constructor.
    static std::mutex cacheMutex;
    static std::map<std::size_t, std::unique_ptr<RealFftPlan>> cache;
    std::lock_guard lock(cacheMutex);
    std::unique_ptr<RealFftPlan>& slot = cache[n];
    if (!slot) slot = std::make_unique<RealFftPlan>(n);
    return *slot;
}

} // namespace tarnic
