// Timings of the multiscale routines at the largest sizes the windows allow, as
// the program calls them: the Morlet map of 10,000 samples on 200 scales, the
// WTMM chains of 8000 samples (chain file included), and MF DFA of 10,000
// samples with 200 scales and 200 q values. Reports only.
#include "numeric/mfdfa.h"
#include "numeric/morlet.h"
#include "numeric/tarnic_api.h"
#include "numeric/wtmm.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

// A random walk with a slow oscillation on it.
std::vector<double> testSignal(std::size_t n) {
    std::mt19937_64 random(2024);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<double> x(n);
    double walk = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
        walk += normal(random);
        x[t] = walk + 20.0 * std::sin(static_cast<double>(t) * 0.01);
    }
    return x;
}

void MorletMap10000x200(benchmark::State& state) {
    const std::vector<double> signal = testSignal(10000);
    const std::vector<float> x(signal.begin(), signal.end());
    std::vector<float> map(200 * 10000), spectrum(200);
    for (auto _ : state) {
        std::int32_t n = 10000, scales = 200;
        float smin = 2.0f, smax = 2500.0f;
        MorletWaveSvan_dll(&n, x.data(), &smin, &smax, &scales, map.data(), spectrum.data());
        benchmark::DoNotOptimize(map.data());
    }
}
BENCHMARK(MorletMap10000x200)->Unit(benchmark::kMillisecond)->UseRealTime();

// The transform alone, in double precision, without the logarithms.
void MorletTransform10000x200(benchmark::State& state) {
    const std::vector<double> x = testSignal(10000);
    const std::vector<double> periods = tarnic::morletPeriods(2.0, 2500.0, 200);
    for (auto _ : state) {
        const tarnic::MorletTransform w = tarnic::morletTransform(x, periods);
        benchmark::DoNotOptimize(w.power.data());
    }
}
BENCHMARK(MorletTransform10000x200)->Unit(benchmark::kMillisecond)->UseRealTime();

void WtmmChains8000(benchmark::State& state) {
    std::vector<double> x = testSignal(8000);
    std::vector<double> detrended(x.size());
    // The chain file goes to the current directory: run in the temporary one.
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    for (auto _ : state) {
        std::int32_t n = 8000, order = 0, counts[7];
        double gamma = 0.25;
        WTMM_FP_dll(x.data(), &n, &order, &gamma, counts, detrended.data());
        benchmark::DoNotOptimize(counts);
    }
    std::filesystem::remove("n12c43k67r13t72c76h18i04");
    std::filesystem::current_path(previous);
}
BENCHMARK(WtmmChains8000)->Unit(benchmark::kMillisecond)->UseRealTime();

void MfdfaWindowRun10000(benchmark::State& state) {
    std::vector<double> x = testSignal(10000);
    std::vector<double> alfa(200), fAlfa(200), table(200 * 200);
    for (auto _ : state) {
        std::int32_t n = 10000, order = static_cast<std::int32_t>(state.range(0)), measure = 1;
        std::int32_t minScale = 20, maxScale = 2000, alfaCount = 200, qCount = 200, scales = 200;
        double qMin = -10.0, qMax = 10.0;
        MF_DFA_dll(x.data(), &n, &order, &measure, &minScale, &maxScale, &alfaCount, alfa.data(),
                   fAlfa.data(), &qMin, &qMax, &qCount, &scales, table.data());
        benchmark::DoNotOptimize(fAlfa.data());
    }
}
BENCHMARK(MfdfaWindowRun10000)->Arg(4)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
