// Timings of the smoothing routines at the sizes the program meets: trends of a
// whole signal of 10^6 samples, the harmonic of a fragment as long as the whole
// signal, the band-pass of the whole signal at a smooth and a prime length.
// Reports only. Run: build/bench/bench_smoothing --benchmark_min_time=0.2s
#include "numeric/bandpass.h"
#include "numeric/harmonic.h"
#include "numeric/kernsmooth.h"
#include "numeric/localpoly.h"
#include "numeric/peaktrough.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace {

// A slow wave, a faster one and white noise, from a fixed seed.
std::vector<double> testSignal(std::size_t n) {
    std::mt19937_64 random(2024);
    std::normal_distribution<double> noise(0.0, 0.3);
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) {
        const double u = static_cast<double>(t);
        x[t] = std::sin(2.0 * std::numbers::pi * u / 5000.0) +
               0.5 * std::sin(2.0 * std::numbers::pi * u / 37.3) + noise(random);
    }
    return x;
}

void KernelSmooth(benchmark::State& state) {
    const std::vector<double> x = testSignal(1000000);
    std::vector<double> y(x.size());
    tarnic::gaussianKernelSmooth(x, static_cast<double>(state.range(0)), y);
    for (auto _ : state) {
        tarnic::gaussianKernelSmooth(x, static_cast<double>(state.range(0)), y);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(KernelSmooth)
    ->Arg(10)
    ->Arg(32)
    ->Arg(33)
    ->Arg(1000)
    ->Arg(500000)
    ->Unit(benchmark::kMillisecond);

void LocalPolynomial(benchmark::State& state) {
    const std::vector<double> x = testSignal(1000000);
    std::vector<double> y(x.size());
    tarnic::localPolynomialSmooth(x, static_cast<std::size_t>(state.range(0)),
                                  static_cast<std::size_t>(state.range(1)), y);
    for (auto _ : state) {
        tarnic::localPolynomialSmooth(x, static_cast<std::size_t>(state.range(0)),
                                      static_cast<std::size_t>(state.range(1)), y);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(LocalPolynomial)
    ->Args({10, 3})
    ->Args({1000, 3})
    ->Args({1000, 10})
    ->Args({400000, 10})
    ->Args({500000, 3})
    ->Args({500000, 10})
    ->Unit(benchmark::kMillisecond);

void BestFitHarmonic(benchmark::State& state) {
    const std::vector<double> x = testSignal(static_cast<std::size_t>(state.range(0)));
    benchmark::DoNotOptimize(tarnic::bestFitHarmonic(x).period);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::bestFitHarmonic(x).period);
}
BENCHMARK(BestFitHarmonic)->Arg(500)->Arg(65536)->Arg(1000000)->Unit(benchmark::kMillisecond);

void MaximumWave(benchmark::State& state) {
    const std::vector<double> x = testSignal(500);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::maximumWave(x).height);
}
BENCHMARK(MaximumWave)->Unit(benchmark::kMicrosecond);

void FourierBandPass(benchmark::State& state) {
    const std::vector<double> x = testSignal(static_cast<std::size_t>(state.range(0)));
    std::vector<double> y = x;
    tarnic::fourierBandPass(y, 20.0, 200.0);
    for (auto _ : state) {
        y = x;
        benchmark::DoNotOptimize(tarnic::fourierBandPass(y, 20.0, 200.0).shortest);
    }
}
BENCHMARK(FourierBandPass)->Arg(1000000)->Arg(999983)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
