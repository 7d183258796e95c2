// Speed of reading signal tables: counting and reading a two-column file of one
// million records ("value time", CR LF), and once a file of ten million records;
// the same million records as a decimal-comma table ("value;time" with commas),
// whose commas are judged and which is then read with the comma; and splitting
// the million-record table into its two column files.
// The files are written once into a scratch directory and removed at exit.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class ScratchTables {
  public:
    ScratchTables() {
        dir_ =
            fs::temp_directory_path() / ("tarnic-bench-" + std::to_string(std::random_device{}()));
        fs::create_directories(dir_);
    }
    ~ScratchTables() {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }
    // A table of `records` lines "value time" (or "value;time" with decimal
    // commas), written on first use.
    fs::path table(int records, bool decimalComma = false) const {
        fs::path file =
            dir_ / ("table-" + std::to_string(records) + (decimalComma ? "-eu" : "") + ".dat");
        if (!fs::exists(file)) write(file, records, decimalComma);
        return file;
    }

  private:
    static void write(const fs::path& file, int records, bool decimalComma) {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<float> value(-1000.0f, 1000.0f);
        std::string text;
        text.reserve(std::size_t{1} << 24);
        std::ofstream out(file, std::ios::binary);
        char number[32];
        for (int i = 0; i < records; ++i) {
            const std::size_t from = text.size();
            text.append(number, std::to_chars(number, number + sizeof number, value(random)).ptr);
            text += decimalComma ? ';' : ' ';
            text.append(number, std::to_chars(number, number + sizeof number, i * 0.001).ptr);
            if (decimalComma)
                std::replace(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), '.',
                             ',');
            text += "\r\n";
            if (text.size() > (std::size_t{1} << 24) - 64) {
                out.write(text.data(), static_cast<std::streamsize>(text.size()));
                text.clear();
            }
        }
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    fs::path dir_;
};

ScratchTables& tables() {
    static ScratchTables scratch;
    return scratch;
}

void reportRecords(benchmark::State& state, const fs::path& file, std::int64_t records) {
    state.SetItemsProcessed(state.iterations() * records);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(file)));
}

void BM_CountFileRecords(benchmark::State& state) {
    const fs::path file = tables().table(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(tarnic::countFileRecords(file));
    reportRecords(state, file, state.range(0));
}

void BM_ReadSignalFile(benchmark::State& state) {
    const fs::path file = tables().table(static_cast<int>(state.range(0)));
    std::vector<float> signal(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        tarnic::readSignalFile(file, signal);
        benchmark::DoNotOptimize(signal.data());
    }
    reportRecords(state, file, state.range(0));
}

// What loading a signal costs: count, size the array, read. Second argument 1:
// the decimal-comma table.
void BM_CountThenRead(benchmark::State& state) {
    const fs::path file = tables().table(static_cast<int>(state.range(0)), state.range(1) != 0);
    for (auto _ : state) {
        const tarnic::RecordCount count = tarnic::countFileRecords(file);
        std::vector<float> signal(static_cast<std::size_t>(count.records));
        tarnic::readSignalFile(file, signal);
        benchmark::DoNotOptimize(signal.data());
    }
    reportRecords(state, file, state.range(0));
}

// The same two calls into an array allocated once, outside the timing: the
// library's share of BM_CountThenRead, without the caller's fresh array (whose
// page faults alone cost about 0.1 s for ten million floats on the 2-core VM).
void BM_CountThenReadIntoArray(benchmark::State& state) {
    const fs::path file = tables().table(static_cast<int>(state.range(0)));
    std::vector<float> signal(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const tarnic::RecordCount count = tarnic::countFileRecords(file);
        tarnic::readSignalFile(file, std::span(signal).first(static_cast<std::size_t>(count.records)));
        benchmark::DoNotOptimize(signal.data());
    }
    reportRecords(state, file, state.range(0));
}

// DemulplexTable_dll: both column files written in full (temporary names, then
// renamed over the last run's files).
void BM_DemultiplexTable(benchmark::State& state) {
    const fs::path file = tables().table(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            tarnic::demultiplexTable(file, static_cast<std::int32_t>(state.range(0))));
    reportRecords(state, file, state.range(0));
}

BENCHMARK(BM_CountFileRecords)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadSignalFile)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountThenRead)
    ->Args({1'000'000, 0})
    ->Args({1'000'000, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountThenRead)->Args({10'000'000, 0})->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountThenReadIntoArray)->Arg(10'000'000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DemultiplexTable)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
