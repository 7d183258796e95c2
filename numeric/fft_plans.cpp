#include "numeric/fft_plans.h"

#include <deque>
#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace tarnic {
namespace {

// Guards every call into FFTW other than plan execution. Constant-initialised, so
// it outlives the plan cache below, whose destructor still takes it.
std::mutex plannerMutex;

} // namespace

RealFftPlan::RealFftPlan(std::size_t n, FftDirection direction) : n_(n), direction_(direction) {
    if (n == 0 || n > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw std::length_error("FFT length out of range");
    // The planner only needs arrays of the right size and alignment; with
    // FFTW_ESTIMATE it does not touch their contents.
    FftBuffer<double> real(n);
    FftBuffer<fftw_complex> bins(n / 2 + 1);
    const int size = static_cast<int>(n);
    std::lock_guard lock(plannerMutex);
    switch (direction) {
    case FftDirection::Forward:
        plan_ = fftw_plan_dft_r2c_1d(size, real.data(), bins.data(), FFTW_ESTIMATE);
        break;
    case FftDirection::ForwardOverwrite:
        plan_ = fftw_plan_dft_r2c_1d(size, real.data(), bins.data(),
                                     FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
        break;
    case FftDirection::Backward:
        plan_ = fftw_plan_dft_c2r_1d(size, bins.data(), real.data(), FFTW_ESTIMATE);
        break;
    }
    if (!plan_) throw std::bad_alloc();
}

RealFftPlan::~RealFftPlan() {
    std::lock_guard lock(plannerMutex);
    fftw_destroy_plan(plan_);
}

void RealFftPlan::forward(double* in, fftw_complex* out) const {
    if (direction_ == FftDirection::Backward) throw std::logic_error("backward plan run forward");
    fftw_execute_dft_r2c(plan_, in, out);
}

void RealFftPlan::backward(fftw_complex* in, double* out) const {
    if (direction_ != FftDirection::Backward) throw std::logic_error("forward plan run backward");
    fftw_execute_dft_c2r(plan_, in, out);
}

const RealFftPlan& realFftPlan(std::size_t n, FftDirection direction) {
    // Plans are never removed, so a reference handed out stays valid. The map has
    // its own lock: making a plan takes the planner lock inside the constructor.
    static std::mutex cacheMutex;
    static std::map<std::pair<std::size_t, FftDirection>, std::unique_ptr<RealFftPlan>> cache;
    std::lock_guard lock(cacheMutex);
    std::unique_ptr<RealFftPlan>& slot = cache[{n, direction}];
    if (!slot) slot = std::make_unique<RealFftPlan>(n, direction);
    return *slot;
}

std::shared_ptr<const RealFftPlan> recentRealFftPlan(std::size_t n, FftDirection direction) {
    constexpr std::size_t kept = 8;
    struct Entry {
        std::size_t n;
        FftDirection direction;
        std::shared_ptr<const RealFftPlan> plan;
    };
    static std::mutex recentMutex;
    static std::deque<Entry> recent; // most recently used first
    {
        std::lock_guard lock(recentMutex);
        for (auto it = recent.begin(); it != recent.end(); ++it)
            if (it->n == n && it->direction == direction) {
                Entry entry = *it;
                recent.erase(it);
                recent.push_front(entry);
                return entry.plan;
            }
    }
    // Planned outside this lock: another length need not wait for it.
    auto plan = std::make_shared<const RealFftPlan>(n, direction);
    std::shared_ptr<const RealFftPlan> dropped;
    std::lock_guard lock(recentMutex);
    recent.push_front({n, direction, plan});
    if (recent.size() > kept) {
        dropped = std::move(recent.back().plan); // destroyed after the lock is released
        recent.pop_back();
    }
    return plan;
}

ComplexBatchPlan::ComplexBatchPlan(std::size_t m, std::size_t count, BatchLayout layout) {
    const std::size_t limit = static_cast<std::size_t>(std::numeric_limits<int>::max());
    if (m == 0 || count == 0 || m > limit || count > limit || m * count > limit)
        throw std::length_error("FFT batch out of range");
    FftBuffer<fftw_complex> data(m * count);
    const int size = static_cast<int>(m);
    const int howMany = static_cast<int>(count);
    const bool interleaved = layout == BatchLayout::Interleaved;
    const int stride = interleaved ? howMany : 1;
    const int distance = interleaved ? 1 : size;
    std::lock_guard lock(plannerMutex);
    plan_ =
        fftw_plan_many_dft(1, &size, howMany, data.data(), nullptr, stride, distance, data.data(),
                           nullptr, stride, distance, FFTW_BACKWARD, FFTW_ESTIMATE);
    if (!plan_) throw std::bad_alloc();
}

ComplexBatchPlan::~ComplexBatchPlan() {
    std::lock_guard lock(plannerMutex);
    fftw_destroy_plan(plan_);
}

void ComplexBatchPlan::backward(fftw_complex* data) const {
    fftw_execute_dft(plan_, data, data);
}

const ComplexBatchPlan& complexBatchPlan(std::size_t m, std::size_t count, BatchLayout layout) {
    static std::mutex cacheMutex;
    static std::map<std::tuple<std::size_t, std::size_t, BatchLayout>,
                    std::unique_ptr<ComplexBatchPlan>>
        cache;
    std::lock_guard lock(cacheMutex);
    std::unique_ptr<ComplexBatchPlan>& slot = cache[{m, count, layout}];
    if (!slot) slot = std::make_unique<ComplexBatchPlan>(m, count, layout);
    return *slot;
}

} // namespace tarnic
