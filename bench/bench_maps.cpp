// The AR spectra evolution map of a 100,000-sample signal with the default
// parameters (1307 windows of 2048 samples, order 204, 1023 points shown per
// window), run through the real window headless; and its parts: the windows'
// spectra on all cores and on one, the cells of an 8,000,000-cell map, and the
// grid file; and the largest map the limit of 8,000,000 cells lets through.
//
//   build/bench/bench_maps
#include "core/form1.h"
#include "core/tarniclibrary.h"
#include "core/twips.h"
#include "core/workbench.h"
#include "maps/colourscale.h"
#include "maps/svanarform.h"
#include "maps/svanarlogic.h"

#include <QApplication>
#include <QDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

namespace fs = std::filesystem;
constexpr int kSamples = 100000;

fs::path scratch() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / "tarnic-bench-maps";
        fs::create_directories(d);
        // A chirp in noise: the frequency rises along the signal.
        std::ofstream out(d / "chirp.dat", std::ios::binary);
        std::mt19937 random(11);
        std::normal_distribution<float> noise;
        for (int i = 0; i < kSamples; ++i)
            out << std::sin(2 * M_PI * (0.01 + 0.2 * i / kSamples) * i) + 0.3 * noise(random) << ' '
                << i << "\r\n";
        return d;
    }();
    return dir;
}

tarnic::Workbench* workbench = nullptr;

tarnic::SvanArForm& openMap() {
    tarnic::Form1& f = workbench->form1();
    if (f.Nrec != kSamples) {
        f.ui().Dir1->setPath(QString::fromStdString(scratch().string()));
        f.ui().File1->selectFile("chirp.dat");
        f.File1_DblClick();
    }
    tarnic::SvanArForm& svan = workbench->svanArForm();
    if (!svan.Visible()) f.SvanArButton_Click();
    return svan;
}

// The whole Launch: boxes, windows, scan, colour scale, cells, marks.
void LaunchDefaultMap(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    for (auto _ : state)
        svan.LaunchSvan_Click();
    state.counters["windows"] = svan.SvanCount;
    state.counters["cells"] =
        static_cast<double>(svan.SvanCount) * (svan.SvanHalf - svan.SvanCut + 1);
}
BENCHMARK(LaunchDefaultMap)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

// The largest map the window makes of this signal: windows of 1024 samples
// shifted by 7 give 14,140 windows of 511 shown points, 7.2 million cells (a
// shift of 6 would pass the limit of 8 million and be refused).
void LaunchLargestMap(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    svan.ui().LengWinText->setText("1024");
    svan.ui().ShiftText->setText("7");
    svan.ui().ArOrderText->setText("204");
    for (auto _ : state)
        svan.LaunchSvan_Click();
    state.counters["windows"] = svan.SvanCount;
    state.counters["cells"] =
        static_cast<double>(svan.SvanCount) * (svan.SvanHalf - svan.SvanCut + 1);
}
BENCHMARK(LaunchLargestMap)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

tarnic::SvanLayout defaultLayout() {
    return {2048, 75, 1307, 2048, 1024, 2, 204};
}

void WindowsOnAllCores(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    const tarnic::SvanLayout l = defaultLayout();
    std::vector<float> map(static_cast<std::size_t>(l.count) * static_cast<std::size_t>(l.half));
    std::vector<float> last(static_cast<std::size_t>(l.half));
    for (auto _ : state)
        tarnic::ComputeSpectraEvolution(svan.SvanInput.span(), l, 1.0, tarnic::dll::BurgH_dll, map,
                                        last);
    state.SetItemsProcessed(state.iterations() * l.count);
}
BENCHMARK(WindowsOnAllCores)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void WindowsOnOneCore(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    const tarnic::SvanLayout l = defaultLayout();
    std::vector<float> samples(static_cast<std::size_t>(l.length)),
        spectrum(static_cast<std::size_t>(l.half));
    for (auto _ : state)
        for (int w = 1; w <= l.count; ++w) {
            std::copy_n(&svan.SvanInput((w - 1) * l.shift + 1), l.length, samples.begin());
            std::int32_t n = l.length, p = l.half, o = l.order;
            tarnic::dll::BurgH_dll(samples.front(), n, p, o, spectrum.front());
        }
    state.SetItemsProcessed(state.iterations() * l.count);
}
BENCHMARK(WindowsOnOneCore)->Unit(benchmark::kMillisecond)->Iterations(1);

// 15625 columns of 512 cells on the window's map surface, band lookup included.
void EightMillionCells(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    tarnic::PlotSurface& map = *svan.ui().SvanArMap;
    const int columns = 15625, rows = 512;
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    const double cellW = W / (columns - 1), cellH = H / (rows - 1);
    const std::uint64_t before = map.canvas().paintedCount();
    for (auto _ : state) {
        tarnic::BandLookup colour(-1.0f, 1.0f, tarnic::MapPalette12);
        for (int w = 1; w <= columns; ++w)
            for (int k = 1; k <= rows; ++k)
                tarnic::FillCell(map, (w - 1) * cellW, H - (k - 1) * cellH, cellW, cellH,
                                 colour(static_cast<float>(std::sin(w * 0.001 + k * 0.01))));
    }
    state.SetItemsProcessed(state.iterations() * columns * rows);
    state.counters["painted"] = static_cast<double>(map.canvas().paintedCount() - before);
}
BENCHMARK(EightMillionCells)->Unit(benchmark::kMillisecond)->Iterations(2);

// The grid of the default map: 1307 by 1023 values in 15-digit texts.
void SaveDefaultGrid(benchmark::State& state) {
    tarnic::SvanArForm& svan = openMap();
    if (svan.SvanMap.empty()) svan.LaunchSvan_Click();
    for (auto _ : state) {
        svan.ui().SaveGRD->setEnabled(true);
        svan.SaveGRD_Click();
    }
    state.SetItemsProcessed(state.iterations() * svan.SvanCount *
                            (svan.SvanHalf - svan.SvanCut + 1));
}
BENCHMARK(SaveDefaultGrid)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    tarnic::setTwipsPerPixel(15.0);
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
