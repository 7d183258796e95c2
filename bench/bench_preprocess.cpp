// The preprocessing actions of the main window on a 1,000,000-sample signal,
// run through the real window headless, plus the two costs inside a save:
// formatting the records and writing them to disk.
//
//   build/bench/bench_preprocess
#include "core/form1.h"
#include "core/naming.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "core/twips.h"
#include "core/workbench.h"

#include <QApplication>
#include <QDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

namespace fs = std::filesystem;
constexpr int kSamples = 1000000;

fs::path scratch() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / "tarnic-bench-preprocess";
        fs::create_directories(d);
        std::ofstream out(d / "big.dat", std::ios::binary);
        std::mt19937 random(7);
        std::normal_distribution<float> noise;
        for (int i = 0; i < kSamples; ++i)
            out << std::sin(i * 0.01) + 0.1 * noise(random) << ' ' << i << "\r\n";
        return d;
    }();
    return dir;
}

std::vector<float> signal() {
    std::vector<float> x(kSamples);
    for (int i = 0; i < kSamples; ++i) x[static_cast<std::size_t>(i)] = std::sin(i * 0.01f) * 3.25f;
    return x;
}

void FormatMillionRecords(benchmark::State& state) {
    const auto x = signal();
    for (auto _ : state) {
        std::size_t bytes = 0;
        for (int i = 0; i < kSamples; ++i)
            bytes += tarnic::TwoColumnRecord(x[static_cast<std::size_t>(i)], 0.5 * i).size();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetItemsProcessed(state.iterations() * kSamples);
}
BENCHMARK(FormatMillionRecords)->Unit(benchmark::kMillisecond);

void WriteMillionRecords(benchmark::State& state) {
    const auto x = signal();
    for (auto _ : state) {
        tarnic::OutputFile file((scratch() / "records.dat").string());
        file.printLines(kSamples, [&](int i, std::string& out) {
            tarnic::AppendTwoColumnRecord(out, x[static_cast<std::size_t>(i - 1)], 0.5 * i);
        });
        file.close();
    }
    state.SetItemsProcessed(state.iterations() * kSamples);
}
BENCHMARK(WriteMillionRecords)->Unit(benchmark::kMillisecond);

void WriteMillionLinesPreformatted(benchmark::State& state) {
    const std::string line = " 1.234567 123456.5\r\n";
    for (auto _ : state) {
        tarnic::OutputFile file((scratch() / "lines.dat").string());
        for (int i = 0; i < kSamples; ++i) file.print(line);
        file.close();
    }
    state.SetBytesProcessed(state.iterations() * kSamples * static_cast<long>(line.size()));
}
BENCHMARK(WriteMillionLinesPreformatted)->Unit(benchmark::kMillisecond);

tarnic::Workbench* workbench = nullptr;

void loadBigFile() {
    tarnic::Form1& f = workbench->form1();
    if (f.Nrec == kSamples) return;
    f.ui().Dir1->setPath(QString::fromStdString(scratch().string()));
    f.ui().File1->selectFile("big.dat");
    f.File1_DblClick();
}

template <class Action> void runAction(benchmark::State& state, Action action) {
    loadBigFile();
    for (auto _ : state) {
        action(workbench->form1());
        state.PauseTiming();
        tarnic::Form1Controls& c = workbench->form1().ui();
        c.IncremButton->setEnabled(true);
        c.WinzorButton->setEnabled(true);
        state.ResumeTiming();
    }
}

void IncrementsAction(benchmark::State& s) {
    runAction(s, [](tarnic::Form1& f) { f.IncremButton_Click(); });
}
void WinsorizationAction(benchmark::State& s) {
    runAction(s, [](tarnic::Form1& f) { f.WinzorButton_Click(); });
}
void BlockDownsampleAction(benchmark::State& s) {
    runAction(s, [](tarnic::Form1& f) {
        f.ui().DownStepText->setText("4");
        f.DownSampButton_Click();
    });
}
void FourierDownsampleAction(benchmark::State& s) {
    runAction(s, [](tarnic::Form1& f) {
        f.ui().DownStepText->setText("2.5");
        f.DownSampButton_Click();
    });
}
BENCHMARK(IncrementsAction)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(WinsorizationAction)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BlockDownsampleAction)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(FourierDownsampleAction)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    tarnic::TarnicLibrary::instance().setPreferredFile(TARNIC_DLL_PATH);
    QDir::setCurrent(QString::fromStdString(scratch().string()));
    tarnic::Workbench wb;
    workbench = &wb;
    wb.start();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::error_code ec;
    fs::remove_all(scratch(), ec);
    return 0;
}
