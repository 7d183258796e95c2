// The fixture of the WTMM and multifractal window tests: a started workbench
// whose current directory is the scratch directory, a fragment handed to the
// fragment window either directly (as ZoomButton hands it) or through the real
// intake and zoom, the stand-in library that dictates the routines' results,
// the message boxes of a test, and the drawing record of surfaces that a
// handler creates and draws on before the test can reach them.
#pragma once

#include "core/msgbox.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <QDir>

#include <dlfcn.h>

#include <functional>
#include <random>
#include <utility>
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

struct Message {
    QString text, title;
};

// A random walk from a fixed seed.
inline std::vector<double> randomWalk(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> step(0.0, 1.0);
    std::vector<double> walk(static_cast<std::size_t>(n));
    double x = 0;
    for (double& v : walk)
        v = (x += step(random));
    return walk;
}

class MultiscaleWindow : public MainWindow {
  protected:
    void SetUp() override {
        MainWindow::SetUp();
        setMsgBoxHook([this](const QString& text, const QString& title) {
            messages.push_back({text, title});
        });
    }
    void TearDown() override {
        setMsgBoxHook({});
        MainWindow::TearDown();
        if (fake_) dlclose(fake_);
    }

    // Starts the workbench with the scratch directory as the current one
    // and the given sampling interval and start time.
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
        for (int i = 1; i <= n; ++i)
            z.FragInput(i) = static_cast<float>(f(i));
        z.FragFirstSample = static_cast<float>(first);
        z.FragLastSample = static_cast<float>(first + n - 1);
        const auto [lo, hi] =
            std::minmax_element(z.FragInput.vector().begin(), z.FragInput.vector().end());
        z.FragMin = *lo;
        z.FragMax = *hi;
        z.Show();
        QApplication::processEvents();
    }

    // Opens a data file of the samples through the intake, the signal window
    // and its zoom over the whole signal, as the user does.
    void zoomWholeSignal(const std::string& name, const std::vector<double>& samples) {
        write(name, series(static_cast<int>(samples.size()),
                           [&](int i) { return samples[static_cast<std::size_t>(i - 1)]; }));
        open(name);
        ASSERT_EQ(message(), "");
        ui().ShowSignGrafButton->click();
        QApplication::processEvents();
        wb->signalPlot().ui().ZoomButton->click();
        QApplication::processEvents();
        ASSERT_TRUE(zoom().Visible());
    }

    // From here on the routines come from the stand-in library.
    void useStandIn() {
        fake_ = dlopen(FAKE_MULTISCALE_DLL_PATH, RTLD_NOW);
        ASSERT_NE(fake_, nullptr) << dlerror();
        TarnicLibrary::instance().setPreferredFile(FAKE_MULTISCALE_DLL_PATH);
        TarnicLibrary::instance().setPlatformSearch(false);
    }
    template <class F> F* standIn(const char* name) {
        void* p = dlsym(fake_, name);
        EXPECT_NE(p, nullptr) << name;
        return reinterpret_cast<F*>(p);
    }

    SignalZoomForm& zoom() { return wb->signalZoomForm(); }
    SignalZoomFormControls& zc() { return wb->signalZoomForm().ui(); }

    static std::vector<const DrawOp*> ops(PlotSurface& s, DrawKind kind) {
        std::vector<const DrawOp*> out;
        for (const DrawOp& op : s.canvas().record())
            if (op.kind == kind) out.push_back(&op);
        return out;
    }

    std::vector<Message> messages;
    void* fake_ = nullptr;
};

// A drawing operation as a test expects it; positions within 0.01 twips.
struct ExpectedOp {
    DrawKind kind;
    double x1, y1, x2, y2;
    QRgb color;
    int width, style;
};

// The operations behind the last Cls of a record.
inline std::vector<DrawOp> afterLastCls(const std::vector<DrawOp>& record) {
    auto last = std::find_if(record.rbegin(), record.rend(),
                             [](const DrawOp& op) { return op.kind == DrawKind::Cls; });
    return {last.base(), record.end()};
}

inline ::testing::AssertionResult sameOps(const std::vector<DrawOp>& actual,
                                          const std::vector<ExpectedOp>& expected) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure()
               << actual.size() << " operations, expected " << expected.size();
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const DrawOp& a = actual[i];
        const ExpectedOp& e = expected[i];
        const bool at = std::abs(a.x1 - e.x1) < 0.01 && std::abs(a.y1 - e.y1) < 0.01 &&
                        std::abs(a.x2 - e.x2) < 0.01 && std::abs(a.y2 - e.y2) < 0.01;
        if (a.kind != e.kind ||
            (e.kind != DrawKind::Cls &&
             (!at || a.color != e.color || a.width != e.width || a.style != e.style)))
            return ::testing::AssertionFailure()
                   << "operation " << i << ": kind " << static_cast<int>(a.kind) << " (" << a.x1
                   << ", " << a.y1 << ")-(" << a.x2 << ", " << a.y2 << ") colour #" << std::hex
                   << (a.color & 0xFFFFFF) << std::dec << " width " << a.width << " style "
                   << a.style << "; expected kind " << static_cast<int>(e.kind) << " (" << e.x1
                   << ", " << e.y1 << ")-(" << e.x2 << ", " << e.y2 << ") colour #" << std::hex
                   << (e.color & 0xFFFFFF) << std::dec << " width " << e.width << " style "
                   << e.style;
    }
    return ::testing::AssertionSuccess();
}

} // namespace tarnic::test
