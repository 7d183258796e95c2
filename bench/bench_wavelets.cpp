// Timings of the wavelet routines at the sizes the windows meet: the packet
// decomposition of 100,000 samples at level 13 split 4 (52 components), the
// minimum-entropy choice on 100,000 samples, threshold filtering and the
// Donoho-Johnstone level on 1,000,000 samples. Reports only.
#include "numeric/dwt.h"
#include "numeric/tarnic_api.h"
#include "numeric/threshold.h"
#include "numeric/wavelet_filters.h"
#include "numeric/wavepacket.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<double> testSignal(std::size_t n) {
    std::mt19937_64 random(2024);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = std::sin(static_cast<double>(t) * 0.013) * 5.0 + normal(random);
    return x;
}

// As OrthWavePack_dll works: each component normalised straight into the
// caller's single-precision array as it is rebuilt. The argument is the wave code.
void PacketComponentsToFloats100k(benchmark::State& state) {
    const auto x = testSignal(100000);
    const auto h = tarnic::scalingFilter(static_cast<std::int32_t>(state.range(0)));
    std::vector<float> data(52 * x.size());
    for (auto _ : state) {
        auto bands = tarnic::waveletPacketComponents(
            x, h, 1, 13, 4, [&](std::size_t k, std::span<const double> values) {
                if (k < 52)
                    tarnic::normaliseToUnitRange(
                        values, std::span<float>(data).subspan(k * x.size(), x.size()));
            });
        benchmark::DoNotOptimize(bands.data());
        benchmark::DoNotOptimize(data.data());
    }
}
BENCHMARK(PacketComponentsToFloats100k)
    ->Arg(2)
    ->Arg(8)
    ->Arg(20)
    ->Arg(120)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The same, kept in double precision in a fresh PacketDecomposition (41.6 MB).
void PacketDecomposition100k(benchmark::State& state) {
    const auto x = testSignal(100000);
    const auto h = tarnic::scalingFilter(8);
    for (auto _ : state) {
        auto d = tarnic::waveletPacketDecomposition(x, h, 1, 13, 4);
        benchmark::DoNotOptimize(d.components.data());
    }
}
BENCHMARK(PacketDecomposition100k)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole of OrthWavePack_dll for 100,000 samples, level 13, split 4: the
// minimum-entropy choice, the 52 components normalised into the caller's arrays.
void OrthWavePack100k(benchmark::State& state) {
    const auto signal = testSignal(100000);
    std::vector<float> x(signal.begin(), signal.end());
    std::int32_t nrec = 100000, split = 4, levMin = 1, levMax = 13, count = 52, code = 0;
    std::vector<float> tmin(52), tmax(52), mean(52), scale(52), power(52), data(52 * 100000);
    for (auto _ : state) {
        OrthWavePack_dll(x.data(), &nrec, &split, &levMin, &levMax, &count, tmin.data(),
                         tmax.data(), data.data(), &code, mean.data(), scale.data(), power.data());
        benchmark::DoNotOptimize(data.data());
    }
    state.SetLabel("wave code " + std::to_string(code));
}
BENCHMARK(OrthWavePack100k)->Unit(benchmark::kMillisecond)->UseRealTime();

// WaveBasisGraf_dll: the graph of the widest wavelet (symlet of 20
// coefficients) on 1024 points, as the basis window draws it.
void WaveletGraph1024(benchmark::State& state) {
    const auto h = tarnic::scalingFilter(120);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::waveletGraph(h, 1024).data());
}
BENCHMARK(WaveletGraph1024)->Unit(benchmark::kMillisecond);

void MinimumEntropyChoice100k(benchmark::State& state) {
    const auto x = testSignal(100000);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::minimumEntropyWaveCode(x));
}
BENCHMARK(MinimumEntropyChoice100k)->Unit(benchmark::kMillisecond)->UseRealTime();

void MinimumEntropyChoice1M(benchmark::State& state) {
    const auto x = testSignal(1000000);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::minimumEntropyWaveCode(x));
}
BENCHMARK(MinimumEntropyChoice1M)->Unit(benchmark::kMillisecond)->UseRealTime();

void ThresholdFilter1M(benchmark::State& state) {
    const auto x = testSignal(1000000);
    const auto h = tarnic::scalingFilter(static_cast<std::int32_t>(state.range(0)));
    for (auto _ : state) {
        auto y = tarnic::waveletThresholdFilter(x, h, 0.9);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(ThresholdFilter1M)->Arg(8)->Arg(20)->Unit(benchmark::kMillisecond);

// DonohoLevel_dll then WaveFiltThresh_dll on 1,000,000 samples, as the window
// calls them; the argument is the wave code (0: each adds the minimum-entropy
// choice).
void DonohoThenFilterDll1M(benchmark::State& state) {
    const auto signal = testSignal(1000000);
    std::vector<float> x(signal.begin(), signal.end()), y(x.size());
    std::int32_t n = 1000000, code = static_cast<std::int32_t>(state.range(0));
    float level = 0.0f;
    for (auto _ : state) {
        DonohoLevel_dll(x.data(), &n, &code, &level);
        WaveFiltThresh_dll(x.data(), y.data(), &n, &code, &level);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(DonohoThenFilterDll1M)->Arg(8)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

void DonohoLevel1M(benchmark::State& state) {
    const auto x = testSignal(1000000);
    const auto h = tarnic::scalingFilter(8);
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::donohoJohnstoneLevel(x, h).share);
}
BENCHMARK(DonohoLevel1M)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
