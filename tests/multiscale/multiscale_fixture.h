// The fixture of the WTMM and multifractal window tests: a started workbench
// whose current directory is the scratch directory, a fragment handed to the
// fragment window as ZoomButton hands it, the stand-in library that dictates
// the routines' results, the message boxes of a test, and the drawing record of
// surfaces that a handler creates and draws on before the test can reach them.
#pragma once

#include "tests/multiscale/fake_multiscale.h"
#include "tests/signal/window_support.h"

#include <dlfcn.h>

#include <functional>
#include <random>
#include <vector>

namespace tarnic::test {

// Turns the drawing record on for every plot surface as it is shown, so that a
// window loaded inside a handler records from its first operation.
class RecordShownSurfaces : public QObject {
  public:
    RecordShownSurfaces() { qApp->installEventFilter(this); }
    ~RecordShownSurfaces() override { qApp->removeEventFilter(this); }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Show)
            if (auto* surface = dynamic_cast<PlotSurface*>(object))
                surface->canvas().setRecording(true);
        return false;
    }
};

// A random walk from a fixed seed.
inline std::vector<double> randomWalk(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> step(0.0, 1.0);
    std::vector<double> walk(static_cast<std::size_t>(n));
    double x = 0;
    for (double& v : walk) v = (x += step(random));
    return walk;
}

class MultiscaleWindow : public AnalysisWindow {
  protected:
    void TearDown() override {
        AnalysisWindow::TearDown();
        if (fake_) dlclose(fake_);
    }

    // Starts the workbench with the scratch directory as the current one (the
    // start moves it) and the given sampling interval and start time.
    void startIn(const char* dT = "1", const char* t0 = "0") {
        start();
        QDir::setCurrent(QString::fromStdString(dir.path().string()));
        ui().DeltaT_Text->setText(dT);
        ui().Time0_Text->setText(t0);
    }

    // Hands n samples f(1) .. f(n), the samples first .. first + n - 1 of a
    // signal, to the fragment window and shows it.
    void handFragment(int n, const std::function<double(int)>& f, int first = 1) {
        SignalZoomForm& z = zoom();
        z.FragCount = n;
        z.FragInput.resize(n);
        for (int i = 1; i <= n; ++i) z.FragInput(i) = static_cast<float>(f(i));
        z.FragFirstSample = static_cast<float>(first);
        z.FragLastSample = static_cast<float>(first + n - 1);
        const auto [lo, hi] = std::ranges::minmax(z.FragInput.vector());
        z.FragMin = lo, z.FragMax = hi;
        z.Show();
        QApplication::processEvents();
    }

    // From here on the routines come from the stand-in library, reset to its
    // own results.
    void useStandIn() {
        fake_ = dlopen(FAKE_MULTISCALE_DLL_PATH, RTLD_NOW);
        ASSERT_NE(fake_, nullptr) << dlerror();
        TarnicLibrary::instance().setPreferredFile(FAKE_MULTISCALE_DLL_PATH);
        TarnicLibrary::instance().setPlatformSearch(false);
        fakeWtmm = static_cast<FakeWtmm*>(dlsym(fake_, "fakeWtmm"));
        fakeMfdfa = static_cast<FakeMfdfa*>(dlsym(fake_, "fakeMfdfa"));
        ASSERT_TRUE(fakeWtmm && fakeMfdfa);
        *fakeWtmm = {}, *fakeMfdfa = {};
    }

    MessageBoxes messages;
    void* fake_ = nullptr;
    FakeWtmm* fakeWtmm = nullptr;
    FakeMfdfa* fakeMfdfa = nullptr;
};

} // namespace tarnic::test
