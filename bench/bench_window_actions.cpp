// The heavy actions of the windows at the largest sizes the program allows,
// run through the real windows headless, drawing included.
//
//   build/bench/bench_window_actions
#include "core/form1.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "wavelet/wavedecform.h"

#include <QApplication>
#include <QDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

namespace fs = std::filesystem;

fs::path scratch() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / "tarnic-bench-windows";
        fs::create_directories(d);
        std::mt19937 random(11);
        std::normal_distribution<float> noise;
        for (int n : {1000000, 100000, 10000}) {
            std::ofstream out(d / ("s" + std::to_string(n) + ".dat"), std::ios::binary);
            for (int i = 0; i < n; ++i)
                out << std::sin(i * 0.013) + 0.3 * noise(random) << ' ' << i << "\r\n";
        }
        return d;
    }();
    return dir;
}

tarnic::Workbench* workbench = nullptr;

void load(int samples) {
    tarnic::Form1& f = workbench->form1();
    if (f.Nrec == samples) return;
    f.OtherFileButton_Click();
    f.ui().Dir1->setPath(QString::fromStdString(scratch().string()));
    f.ui().File1->selectFile(QString::fromStdString("s" + std::to_string(samples) + ".dat"));
    f.File1_DblClick();
}

void LaunchSpectraMillion(benchmark::State& state) {
    load(1000000);
    for (auto _ : state) workbench->form1().LaunchButton_Click();
}
BENCHMARK(LaunchSpectraMillion)->Unit(benchmark::kMillisecond)->Iterations(3);

void WavePacketsLevel13Split4(benchmark::State& state) {
    load(100000);
    tarnic::Form1& f = workbench->form1();
    for (auto _ : state) {
        f.ui().LevMaxText->setText("13");
        f.ui().Option3->setValue(true);
        f.WavePackButton_Click();
        state.PauseTiming();
        workbench->waveDecForm().Unload();
        QApplication::processEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(WavePacketsLevel13Split4)->Unit(benchmark::kMillisecond)->Iterations(2);

// Opens the fragment window on the whole signal of `samples`.
tarnic::SignalZoomForm& fragment(int samples) {
    load(samples);
    workbench->signalZoomForm().Unload();
    workbench->signalPlot().Unload();
    workbench->form1().ShowSignGrafButton_Click();
    workbench->signalPlot().ZoomButton_Click();
    return workbench->signalZoomForm();
}

void MorletMap10000x200(benchmark::State& state) {
    tarnic::SignalZoomForm& zoom = fragment(10000);
    for (auto _ : state) {
        zoom.MorletSvan_Click();
        state.PauseTiming();
        workbench->morletSvanForm().Unload();
        state.ResumeTiming();
    }
}
BENCHMARK(MorletMap10000x200)->Unit(benchmark::kMillisecond)->Iterations(3);

void HeisenbergBoxes100000Level12Split8(benchmark::State& state) {
    tarnic::SignalZoomForm& zoom = fragment(100000);
    zoom.HeisBoxesButton_Click();
    tarnic::HeisBoxForm& heis = workbench->heisBoxForm();
    for (auto _ : state) {
        heis.ui().LevMaxText->setText("12"); // 96 rows x 50,000 boxes: 4.8 million cells
        heis.ui().Option4->setValue(true);
        heis.WavePackButton_Click();
    }
}
BENCHMARK(HeisenbergBoxes100000Level12Split8)->Unit(benchmark::kMillisecond)->Iterations(2);

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
