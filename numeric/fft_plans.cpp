#include "numeric/fft_plans.h"

#include "numeric/workers.h"

#include <cmath>
#include <cstdint>
#include <deque>
#include <future>
#include <limits>
#include <map>
#include <mutex>
#include <numbers>
#include <new>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnic {
namespace {

// Guards every call into FFTW other than plan execution. Constant-initialised, so
// it outlives the plan cache below, whose destructor still takes it.
std::mutex plannerMutex;

std::uint64_t powerMod(std::uint64_t base, std::uint64_t exponent, std::uint64_t modulus) {
    std::uint64_t result = 1 % modulus;
    base %= modulus;
    for (; exponent > 0; exponent >>= 1) {
        if (exponent & 1) result = result * base % modulus;
        base = base * base % modulus;
    }
    return result;
}

// The smallest primitive root of the prime n: g with g^((n-1)/f) != 1 for every
// prime factor f of n - 1.
std::uint64_t primitiveRoot(std::uint64_t n) {
    std::vector<std::uint64_t> factors;
    std::uint64_t rest = n - 1;
    for (std::uint64_t f = 2; f * f <= rest; ++f)
        if (rest % f == 0) {
            factors.push_back(f);
            while (rest % f == 0)
                rest /= f;
        }
    if (rest > 1) factors.push_back(rest);
    for (std::uint64_t g = 2;; ++g) {
        bool generates = true;
        for (std::uint64_t f : factors)
            generates = generates && powerMod(g, (n - 1) / f, n) != 1;
        if (generates) return g;
    }
}

// The smallest even number >= n with no prime factor above 5.
std::size_t smoothEvenLength(std::size_t n) {
    std::size_t best = std::numeric_limits<std::size_t>::max();
    for (std::size_t p2 = 2; p2 < best; p2 *= 2)
        for (std::size_t p3 = p2; p3 < best; p3 *= 3)
            for (std::size_t p5 = p3; p5 < best; p5 *= 5)
                if (p5 >= n) {
                    best = p5;
                    break;
                }
    return best;
}

// Work arrays of the prime-length transform: a pool of threadScratch slots of
// its own, so that a routine holding its own slots may run such a transform.
// Slots 0 and 1: the two halves.
template <class T> T* primeScratch(std::size_t slot, std::size_t n) {
    return threadScratch<T, 1>(slot, n);
}

} // namespace

// What a prime length n needs besides FFTW (made once per n, shared by the two
// directions). Indices mod n are stored folded: +k for k <= h, -k for n - k, so
// the bin kept by a real transform and whether it is the conjugate are at hand.
struct RealFftPlan::PrimeConvolution {
    std::size_t n = 0;
    std::size_t half = 0; // h = (n - 1) / 2
    std::size_t m = 0;    // convolution length, smooth, >= 2h - 1
    std::vector<std::int32_t> powers;        // g^p,  p = 0 .. h-1, folded
    std::vector<std::int32_t> inversePowers; // g^-q, q = 0 .. h-1, folded
    std::unique_ptr<RealFftPlan> forwardM, backwardM;
    // Transforms of the correlation kernels, scaled by 1 / m: the cosines
    // cos(2 pi g^d / n) and the sines -sin(2 pi g^d / n), d = -f mod (n - 1), at
    // position f mod m for -h < f < h.
    std::unique_ptr<FftBuffer<fftw_complex>> cosines, sines;

    explicit PrimeConvolution(std::size_t length);
    // x (m reals, the first h filled, the rest zero) becomes its circular
    // convolution with the kernel, first h values valid; bins: m/2 + 1 of work.
    void convolve(double* x, fftw_complex* bins, const fftw_complex* kernel) const;
    // Both halves, the second on a worker thread for long lengths.
    void convolveBoth(double* first, double* second) const;
    void forward(const double* in, fftw_complex* out) const;
    void backward(const fftw_complex* in, double* out) const;
};

namespace {

std::shared_ptr<const RealFftPlan::PrimeConvolution> primeConvolutionFor(std::size_t n) {
    // The last few prime lengths met (kernel spectra of 16 MB for n = 10^6).
    constexpr std::size_t kept = 2;
    static std::mutex recentMutex;
    static std::deque<std::shared_ptr<const RealFftPlan::PrimeConvolution>> recent;
    {
        std::lock_guard lock(recentMutex);
        for (const auto& entry : recent)
            if (entry->n == n) return entry;
    }
    auto made = std::make_shared<const RealFftPlan::PrimeConvolution>(n);
    std::shared_ptr<const RealFftPlan::PrimeConvolution> dropped;
    std::lock_guard lock(recentMutex);
    recent.push_front(made);
    if (recent.size() > kept) {
        dropped = std::move(recent.back());
        recent.pop_back();
    }
    return made;
}

} // namespace

RealFftPlan::PrimeConvolution::PrimeConvolution(std::size_t length)
    : n(length), half((length - 1) / 2), m(smoothEvenLength(length - 2)) {
    const std::uint64_t g = primitiveRoot(n);
    const std::uint64_t gInverse = powerMod(g, n - 2, n);
    const auto fold = [&](std::uint64_t k) {
        return k <= half ? static_cast<std::int32_t>(k) : -static_cast<std::int32_t>(n - k);
    };
    powers.resize(half);
    inversePowers.resize(half);
    std::uint64_t up = 1, down = 1;
    for (std::size_t p = 0; p < half; ++p) {
        powers[p] = fold(up);
        inversePowers[p] = fold(down);
        up = up * g % n;
        down = down * gInverse % n;
    }
    forwardM = std::make_unique<RealFftPlan>(m, FftDirection::ForwardOverwrite, FftMethod::Fftw);
    backwardM = std::make_unique<RealFftPlan>(m, FftDirection::Backward, FftMethod::Fftw);

    // Position f >= 0 holds index d = -f, i.e. g^-f; position m - e (e > 0)
    // holds d = e, i.e. g^e.
    FftBuffer<double> cosKernel(m), sinKernel(m);
    // In long double: rounding the angle 2 pi k / n in double errs by up to
    // k / n ulp, with the same sign over a run of k, and such errors add up
    // instead of cancelling.
    // Each k = 1 .. h occurs about twice, so cosines and sines are tabled first.
    const long double turn = 2.0L * std::numbers::pi_v<long double> / static_cast<long double>(n);
    std::vector<double> cosTable(half + 1), sinTable(half + 1);
    for (std::size_t k = 0; k <= half; ++k) {
        const long double angle = turn * static_cast<long double>(k);
        cosTable[k] = static_cast<double>(std::cos(angle));
        sinTable[k] = static_cast<double>(std::sin(angle));
    }
    const auto put = [&](std::size_t position, std::int32_t folded) {
        const auto k = static_cast<std::size_t>(folded < 0 ? -folded : folded);
        cosKernel[position] = cosTable[k];
        sinKernel[position] = folded < 0 ? sinTable[k] : -sinTable[k];
    };
    for (std::size_t f = 0; f < half; ++f)
        put(f, inversePowers[f]);
    for (std::size_t e = 1; e < half; ++e)
        put(m - e, powers[e]);
    const std::size_t bins = m / 2 + 1;
    cosines = std::make_unique<FftBuffer<fftw_complex>>(bins);
    sines = std::make_unique<FftBuffer<fftw_complex>>(bins);
    forwardM->forward(cosKernel.data(), cosines->data());
    forwardM->forward(sinKernel.data(), sines->data());
    const double scale = 1.0 / static_cast<double>(m);
    for (std::size_t k = 0; k < bins; ++k)
        for (int part = 0; part < 2; ++part) {
            (*cosines)[k][part] *= scale;
            (*sines)[k][part] *= scale;
        }
}

void RealFftPlan::PrimeConvolution::convolve(double* x, fftw_complex* bins,
                                             const fftw_complex* kernel) const {
    forwardM->forward(x, bins);
    double* __restrict b = &bins[0][0];
    const double* __restrict k = &kernel[0][0];
    const std::size_t count = m / 2 + 1;
    for (std::size_t i = 0; i < count; ++i) {
        const double re = b[2 * i] * k[2 * i] - b[2 * i + 1] * k[2 * i + 1];
        const double im = b[2 * i] * k[2 * i + 1] + b[2 * i + 1] * k[2 * i];
        b[2 * i] = re;
        b[2 * i + 1] = im;
    }
    backwardM->backward(bins, x);
}

void RealFftPlan::PrimeConvolution::convolveBoth(double* first, double* second) const {
    const std::size_t count = m / 2 + 1;
    fftw_complex* firstBins = primeScratch<fftw_complex>(0, count);
    fftw_complex* secondBins = primeScratch<fftw_complex>(1, count);
    // Below this length a thread costs more than it saves.
    constexpr std::size_t threadFrom = 1 << 15;
    if (m < threadFrom) {
        convolve(first, firstBins, cosines->data());
        convolve(second, secondBins, sines->data());
        return;
    }
    auto other = startWorker([&] { convolve(second, secondBins, sines->data()); });
    convolve(first, firstBins, cosines->data());
    other.get();
}

void RealFftPlan::PrimeConvolution::forward(const double* in, fftw_complex* out) const {
    double* sums = primeScratch<double>(0, m);
    double* differences = primeScratch<double>(1, m);
    double total = in[0];
    for (std::size_t p = 0; p < half; ++p) {
        const std::int32_t folded = powers[p];
        const std::size_t k = static_cast<std::size_t>(folded < 0 ? -folded : folded);
        const double a = in[k], b = in[n - k];
        total += a + b;
        sums[p] = a + b;
        differences[p] = folded < 0 ? b - a : a - b;
    }
    std::fill(sums + half, sums + m, 0.0);
    std::fill(differences + half, differences + m, 0.0);
    convolveBoth(sums, differences);
    const double first = in[0];
    out[0][0] = total;
    out[0][1] = 0.0;
    for (std::size_t q = 0; q < half; ++q) {
        const std::int32_t folded = inversePowers[q];
        const std::size_t k = static_cast<std::size_t>(folded < 0 ? -folded : folded);
        out[k][0] = first + sums[q];
        out[k][1] = folded < 0 ? -differences[q] : differences[q];
    }
}

void RealFftPlan::PrimeConvolution::backward(const fftw_complex* in, double* out) const {
    double* reals = primeScratch<double>(0, m);
    double* imaginaries = primeScratch<double>(1, m);
    double total = 0.0;
    for (std::size_t p = 0; p < half; ++p) {
        const std::int32_t folded = powers[p];
        const std::size_t k = static_cast<std::size_t>(folded < 0 ? -folded : folded);
        reals[p] = in[k][0];
        imaginaries[p] = folded < 0 ? -in[k][1] : in[k][1];
        total += in[k][0];
    }
    std::fill(reals + half, reals + m, 0.0);
    std::fill(imaginaries + half, imaginaries + m, 0.0);
    convolveBoth(reals, imaginaries);
    const double first = in[0][0];
    out[0] = first + 2.0 * total;
    for (std::size_t q = 0; q < half; ++q) {
        const std::int32_t folded = inversePowers[q];
        const std::size_t k = static_cast<std::size_t>(folded < 0 ? -folded : folded);
        const double plus = first + 2.0 * (reals[q] + imaginaries[q]);
        const double minus = first + 2.0 * (reals[q] - imaginaries[q]);
        // Output g^-q gets plus, n - g^-q gets minus.
        out[folded < 0 ? n - k : k] = plus;
        out[folded < 0 ? k : n - k] = minus;
    }
}

bool isPrime(std::size_t n) {
    if (n < 2) return false;
    if (n % 2 == 0) return n == 2;
    for (std::size_t f = 3; f * f <= n; f += 2)
        if (n % f == 0) return false;
    return true;
}

RealFftPlan::RealFftPlan(std::size_t n, FftDirection direction, FftMethod method)
    : n_(n), direction_(direction) {
    if (n == 0 || n > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw std::length_error("FFT length out of range");
    if (method == FftMethod::Automatic)
        method = n >= primeConvolutionFrom && n % 2 == 1 && isPrime(n) ? FftMethod::PrimeConvolution
                                                                       : FftMethod::Fftw;
    if (method == FftMethod::PrimeConvolution) {
        if (n < 3 || !isPrime(n)) throw std::invalid_argument("prime convolution needs an odd prime");
        prime_ = primeConvolutionFor(n);
        return;
    }
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
    if (!plan_) return;
    std::lock_guard lock(plannerMutex);
    fftw_destroy_plan(plan_);
}

void RealFftPlan::forward(double* in, fftw_complex* out) const {
    if (direction_ == FftDirection::Backward) throw std::logic_error("backward plan run forward");
    if (prime_)
        prime_->forward(in, out);
    else
        fftw_execute_dft_r2c(plan_, in, out);
}

void RealFftPlan::backward(fftw_complex* in, double* out) const {
    if (direction_ != FftDirection::Backward) throw std::logic_error("forward plan run backward");
    if (prime_)
        prime_->backward(in, out);
    else
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
