// A fresh workbench started in a scratch directory that holds Tarnic.dll (as a
// link) and the files a test writes there, with the enabled table of the main
// window and small helpers to write series.
#pragma once

#include "core/form1.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "tests/core/qt_print.h"
#include "tests/numeric/test_support.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>

namespace tarnic::test {

namespace fs = std::filesystem;

enum class Stage { Start, Rejected, Loaded, SpectraShown };

// The enabled table of the main window, control by control, as the user meets it.
// `usedUp` names the one-use buttons that their use has switched off.
inline void expectStage(Form1Controls& c, Stage stage,
                        std::initializer_list<std::string> usedUp = {}) {
    const bool browsing = stage == Stage::Start || stage == Stage::Rejected;
    const bool working = !browsing;
    auto expect = [&](QWidget* w, bool on, const char* name) {
        if (std::find(usedUp.begin(), usedUp.end(), name) != usedUp.end()) on = false;
        EXPECT_EQ(w->isEnabled(), on) << name;
    };
#define STAGE(w, on) expect(c.w, on, #w)
    STAGE(File1, browsing);
    STAGE(Dir1, browsing);
    STAGE(Drive1, browsing);
    STAGE(OtherFileButton, working);
    STAGE(Frame1, working);
    STAGE(FrameMainParam, working);
    STAGE(FrameBackParam, working);
    STAGE(WP_OptionFrame, working);
    STAGE(LaunchButton, working);
    STAGE(SvanArButton, working);
    STAGE(WavePackButton, working);
    STAGE(WaveFiltButton, working);
    STAGE(ShowSignGrafButton, working);
    STAGE(Picture1, working);
    STAGE(DownSampButton, working);
    STAGE(DownStepText, working);
    STAGE(IncremButton, working);
    STAGE(WinzorButton, working);
    STAGE(DemplxButton, working);
    STAGE(SaveSpButton, stage == Stage::SpectraShown);
    STAGE(ZoomButton, stage == Stage::SpectraShown);
    STAGE(FrameSpectraView, stage == Stage::SpectraShown);
    STAGE(FrameHScroll, stage == Stage::SpectraShown);
    STAGE(HelpButton, true);
    STAGE(ExitButton, true);
    STAGE(DownSampFrame, true);
#undef STAGE
}

// Chooses the entry `text` of a plot surface's context menu as the user does.
inline void choose(PlotSurface& surface, const QString& text) {
    const auto menu = surface.contextMenu();
    for (QAction* a : menu->actions())
        if (a->text() == text) return a->trigger();
    ADD_FAILURE() << "no menu entry " << text.toStdString();
}

inline std::string series(int n, const std::function<double(int)>& f) {
    std::ostringstream out;
    out.precision(9);
    for (int i = 1; i <= n; ++i) out << f(i) << ' ' << i - 1 << "\r\n";
    return out.str();
}

// A fresh workbench started in a scratch directory that holds the library
// (as a link) and whatever files a test writes there.
class MainWindow : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_symlink(TARNIC_DLL_PATH, dir / "Tarnic.dll");
        TarnicLibrary::instance().setPreferredFile(TARNIC_DLL_PATH);
        TarnicLibrary::instance().setPlatformSearch(true);
    }
    void TearDown() override {
        wb.reset();
        QApplication::processEvents();
        TarnicLibrary::instance().setPreferredFile(TARNIC_DLL_PATH);
    }
    void start() {
        QDir::setCurrent(QString::fromStdString(dir.path().string()));
        wb = std::make_unique<Workbench>();
        wb->start();
        QApplication::processEvents();
    }
    Form1& form() { return wb->form1(); }
    Form1Controls& ui() { return wb->form1().ui(); }
    void write(const std::string& name, const std::string& text) {
        writeBytes(dir / name, text);
        ui().File1->Refresh();
    }
    void open(const std::string& name) {
        ASSERT_TRUE(ui().File1->selectFile(QString::fromStdString(name))) << name;
        form().File1_DblClick();
    }
    QString message() {
        return ui().MessLineLabel->Visible() ? ui().MessLineLabel->Caption() : QString();
    }
    bool messageIsRed() { return ui().MessLineLabel->ForeColor() == BasicColor(12); }

    TempDir dir;
    std::unique_ptr<Workbench> wb;
};


} // namespace tarnic::test
