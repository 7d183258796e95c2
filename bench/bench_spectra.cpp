// Speed of the spectral routines at the sizes the program meets, called as the
// _dll adapters call them (float in, float out):
//  - BurgH_dll on one window: order 204 (the default), 683 (the largest the
//    clamps allow for 2048) and 20, 2048 samples, 1024 output points (the
//    program calls it once per window, and hundreds of times for a map);
//  - SpectAn_dll on 1,000,000 samples, windows of 2048, smoothing radius 1 and
//    256 (the largest for 2048);
//  - DownSample_dll of 1,000,000 samples by a step of 2.5.
// The inputs are seeded AR(2) noise, so every run measures the same work.
#include "numeric/burg.h"
#include "numeric/resample.h"
#include "numeric/welch.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <span>
#include <vector>

namespace {

std::vector<float> arNoise(std::size_t n) {
    std::mt19937_64 random(7);
    std::normal_distribution<double> normal;
    std::vector<float> x(n);
    double x1 = 0.0, x2 = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        const double v = 0.75 * x1 - 0.5 * x2 + normal(random);
        x[t] = static_cast<float>(v);
        x2 = x1;
        x1 = v;
    }
    return x;
}

void BurgH(benchmark::State& state) {
    const std::vector<float> x = arNoise(2048);
    const auto order = static_cast<std::size_t>(state.range(0));
    std::vector<float> out(1024);
    for (auto _ : state) {
        tarnic::burgSpectrum(x, order, out);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BurgH)->Arg(204)->Arg(683)->Arg(20)->Unit(benchmark::kMicrosecond);

// The Burg work of an AR spectra evolution map on one core: windows of
// range(0) samples shifted by range(1) over 100,000 samples, order 204,
// range(0) / 2 points per window. (2048, 75): the default map, 1307 windows;
// (1024, 7): the largest map the cell limit lets through, 14,140 windows.
void BurgMapWindows(benchmark::State& state) {
    const std::vector<float> x = arNoise(100'000);
    const auto length = static_cast<std::size_t>(state.range(0));
    const auto shift = static_cast<std::size_t>(state.range(1));
    std::vector<float> out(length / 2);
    std::size_t windows = 0;
    for (auto _ : state) {
        windows = 0;
        for (std::size_t start = 0; start + length <= x.size(); start += shift, ++windows) {
            tarnic::burgSpectrum(std::span(x).subspan(start, length), 204, out);
            benchmark::DoNotOptimize(out.data());
        }
    }
    state.counters["windows"] = static_cast<double>(windows);
}
BENCHMARK(BurgMapWindows)->Args({2048, 75})->Args({1024, 7})->Unit(benchmark::kMillisecond);

// The extreme the clamps allow: one window of range(0) samples, the order at
// its clamp of a third of the window, 1024 points. 1,000,000 is the case of a
// whole signal of a million samples; run it alone with
// --benchmark_filter=BurgWholeSignal/1000000.
void BurgWholeSignal(benchmark::State& state) {
    const std::vector<float> x = arNoise(static_cast<std::size_t>(state.range(0)));
    std::vector<float> out(1024);
    for (auto _ : state) {
        tarnic::burgSpectrum(x, x.size() / 3, out);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BurgWholeSignal)->Arg(100'000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BurgWholeSignal)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void SpectAn(benchmark::State& state) {
    const std::vector<float> x = arNoise(1'000'000);
    std::vector<float> out(1024);
    for (auto _ : state) {
        tarnic::backgroundSpectrum(x, 2048, 2048, static_cast<int>(state.range(0)), out);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(SpectAn)->Arg(1)->Arg(256)->Unit(benchmark::kMillisecond);

// One call as the program makes it, repeated on one signal: FFTW's plans for the
// length are kept from the first call (which pays about 50 ms more for them).
// The second length is prime, FFTW's slowest kind.
void DownSample(benchmark::State& state) {
    const std::vector<float> x = arNoise(static_cast<std::size_t>(state.range(0)));
    std::vector<float> out(x.size() / 2);
    for (auto _ : state) {
        const std::vector<double> in(x.begin(), x.end());
        const tarnic::Resampled r = tarnic::fourierResample(in, 2.5f, out.size());
        std::copy(r.values.begin(), r.values.end(), out.begin());
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(DownSample)->Arg(1'000'000)->Arg(999'983)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
