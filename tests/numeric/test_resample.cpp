// Fourier resampling to a coarser step (numeric/resample.h), and the spectral
// routines of the C binding.
#include "numeric/resample.h"
#include "numeric/tarnic_api.h"
#include "numeric_support.h"

#include <functional>

namespace tarnic {
namespace {

constexpr double kPi = std::numbers::pi;
using Curve = std::function<double(double)>;
using namespace test;

// Largest |y_k - f(t_k)| over outputs whose position t_k = k * step - 1 lies at
// least `margin` samples inside the record of n samples.
double worstError(const Resampled& r, std::size_t n, double margin, const Curve& f) {
    double worst = 0.0;
    for (std::size_t k = 1; k <= r.values.size(); ++k) {
        const double t = static_cast<double>(k) * r.step - 1.0;
        if (t >= margin && t <= n - 1.0 - margin)
            worst = std::max(worst, std::abs(r.values[k - 1] - f(t)));
    }
    return worst;
}

TEST(FourierResample, LengthStepAndCapacity) {
    const Curve ramp = [](double t) { return 2.0 - 0.01 * t; };
    const std::vector<double> x = sampled(1001, ramp);
    // Step 2.5 and a whole step 2; a smaller capacity stretches the step, and
    // positions stay at k * step - 1.
    const std::tuple<double, std::size_t, std::size_t, double> cases[] = {
        {2.5, 10000, 400, 1001.0 / 400.0}, {2.0, 10000, 500, 1001.0 / 500.0},
        {2.5, 100, 100, 10.01}};
    for (const auto& [step, capacity, count, used] : cases) {
        const Resampled r = fourierResample(x, step, capacity);
        EXPECT_EQ(std::pair(r.values.size(), r.step), std::pair(count, used))
            << step << " " << capacity;
        EXPECT_LT(worstError(r, x.size(), 0.0, ramp), 1e-12) << step << " " << capacity;
    }
    // A step rounded to float, 2.2f, still gives floor(22 / 2.2) = 10.
    EXPECT_EQ(fourierResample(std::vector<double>(22, 0.0), 2.2f, 100).values.size(), 10u);
    // By hand: positions 1.5, 4, 6.5, 9 of 3 + t/2.
    EXPECT_TRUE(
        allNear(fourierResample(sampled(10, [](double t) { return 3 + t / 2; }), 2.5, 4).values,
                std::vector<double>{3.75, 5.0, 6.25, 7.5}, 1e-13));
    // Step 1 or below gives the record back; a step beyond it, nothing.
    const std::vector<double> noise = ar2Noise(257, 0.75, -0.5);
    EXPECT_TRUE(allNear(fourierResample(noise, 0.5, 1000).values, noise, 1e-12));
    EXPECT_TRUE(fourierResample(noise, 300.0, 1000).values.empty());
    EXPECT_TRUE(fourierResample(noise, 2.0, 0).values.empty());
}

// The definition by plain sums: the line through the ends removed, bins 0 .. m/2
// of the rest (the bin m/2 of an even m once, the others as +- pairs) evaluated
// at t = k n/m - 1, the line added back.
TEST(FourierResample, EqualsTheKeptBinsSummedAtTheNewPositions) {
    auto direct = [](const std::vector<double>& x, std::size_t m) {
        const std::size_t n = x.size();
        const double slope = n > 1 ? (x.back() - x.front()) / (n - 1) : 0.0;
        std::vector<double> rest(n), y(m);
        for (std::size_t t = 0; t < n; ++t)
            rest[t] = x[t] - x.front() - slope * t;
        for (std::size_t j = 0; j < m; ++j) {
            const double at = (j + 1) * (static_cast<double>(n) / m) - 1.0;
            double sum = 0.0;
            for (std::size_t k = 0; k <= m / 2; ++k) {
                double re = 0.0, im = 0.0;
                for (std::size_t t = 0; t < n; ++t) {
                    re += rest[t] * std::cos(2.0 * kPi * k * t / n);
                    im -= rest[t] * std::sin(2.0 * kPi * k * t / n);
                }
                const double w = 2.0 * kPi * k * at / n;
                const bool single = k == 0 || (m % 2 == 0 && k == m / 2);
                sum += (single ? 1.0 : 2.0) * (re * std::cos(w) - im * std::sin(w));
            }
            y[j] = sum / n + x.front() + slope * at;
        }
        return y;
    };
    const std::pair<std::size_t, double> cases[] = {{1, 1.0},  {2, 1.0},  {3, 1.5},   {13, 2.5},
                                                    {64, 1.0}, {97, 3.3}, {128, 2.0}, {521, 1.7}};
    for (const auto& [n, step] : cases) {
        const std::vector<double> x = ar2Noise(n, 0.75, -0.5);
        const Resampled r = fourierResample(x, step, n);
        EXPECT_TRUE(allNear(r.values, direct(x, r.values.size()), 1e-11)) << "n = " << n;
    }
}

// What the new step can hold comes back, the rest is removed: a slow sinusoid
// on a trend (not a whole number of periods) within 1 % of its amplitude away
// from the ends and 5 % at them; of a sum with a component above the new Nyquist
// frequency (0.2 cycles per input sample for step 2.5) the slow part. Exactly at
// the new Nyquist frequency of step 2 a component would read (-1)^k cos(pi/4) at
// positions 2k - 1; its bin enters once for the +- pair, so half of that remains.
TEST(FourierResample, KeepsWhatTheNewStepCanHoldAndRemovesTheRest) {
    const Curve slow = [](double t) { return 3 * std::cos(2 * kPi * 0.02 * t + 0.7) + 0.001 * t; };
    const Curve low = [](double t) { return std::cos(2.0 * kPi * 0.02 * t); };
    const auto withHigh = [&low](double f) {
        return Curve([&low, f](double t) { return low(t) + std::cos(2.0 * kPi * f * t + 1.1); });
    };
    const Curve nyquist = [](double t) { return std::cos(kPi * t / 2.0 + kPi / 4.0); };
    const Curve half = [&nyquist](double t) { return 0.5 * nyquist(t); };
    // clang-format off
    const std::tuple<Curve, std::size_t, double, double, Curve, double> cases[] = {
        {slow, 10001, 2.5, 200, slow, 0.03}, {slow, 10001, 2.0, 200, slow, 0.03},
        {slow, 10001, 3.7, 200, slow, 0.03}, {slow, 10001, 2.5, 0, slow, 0.15},
        {slow, 10001, 2.0, 0, slow, 0.15}, {slow, 10001, 3.7, 0, slow, 0.15},
        {withHigh(0.23), 10000, 2.5, 200, low, 0.01}, {withHigh(0.3), 10000, 2.5, 200, low, 0.01},
        {withHigh(0.45), 10000, 2.5, 200, low, 0.01}, {nyquist, 1000, 2.0, 0, half, 1e-12}};
    // clang-format on
    for (const auto& [input, n, step, margin, kept, tolerance] : cases)
        EXPECT_LT(worstError(fourierResample(sampled(n, input), step, n), n, margin, kept),
                  tolerance)
            << "n " << n << ", step " << step << ", margin " << margin;
}

// The three spectral routines of Tarnic.dll called as the program calls them:
// loaded by name at run time, every argument a pointer.
TEST(SpectralBinding, RoutinesFillWhatTheCallerSized) {
    const auto down = dllRoutine<decltype(&DownSample_dll)>("DownSample_dll");
    const auto welch = dllRoutine<decltype(&SpectAn_dll)>("SpectAn_dll");
    const auto burg = dllRoutine<decltype(&BurgH_dll)>("BurgH_dll");
    ASSERT_TRUE(down && welch && burg);
    // Downsampling returns the count and the ratio used, and writes no further.
    const std::vector<float> ramp = toFloat(sampled(1001, [](double t) { return t / 2; }));
    std::int32_t nrec = 1001, outLen = 500; // the program's capacity, Int(1001 / 2)
    float step = 2.5f;
    std::vector<float> y(500, -1.0f);
    down(ramp.data(), &nrec, &step, y.data(), &outLen);
    EXPECT_EQ(std::tuple(outLen, step, y[400]), std::tuple(400, float(1001.0 / 400.0), -1.0f));
    EXPECT_NEAR(y[399], 500.0, 1e-3); // the last sample
    // The spectra: exactly their counts of positive values, an order beyond the
    // stretch included.
    const std::vector<float> x = toFloat(ar2Noise(3000, 0.75, -0.5));
    std::int32_t lengF = 60, fft = 64, mm = 7;
    nrec = 3000;
    std::vector<float> four(33, -1.0f);
    welch(x.data(), &nrec, &lengF, &fft, &mm, four.data());
    EXPECT_TRUE(allFinitePositive(std::span(four).first(32)) && four[32] == -1.0f);
    for (std::int32_t order : {683, 5000}) {
        std::int32_t count = 2048, nf = 1024;
        std::vector<float> ar(1025, -1.0f);
        burg(x.data(), &count, &nf, &order, ar.data());
        EXPECT_TRUE(allFinitePositive(std::span(ar).first(1024)) && ar[1024] == -1.0f) << order;
    }
}

} // namespace
} // namespace tarnic
