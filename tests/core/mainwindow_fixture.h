// A fresh workbench started in a scratch directory that holds Tarnic.dll (as a
// link) and the files a test writes there, with the enabled table of the main
// window and small helpers to write series.
#pragma once

#include "core/form1.h"
#include "core/msgbox.h"
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
    const bool shown = stage == Stage::SpectraShown;
    const struct { QWidget* w; bool on; const char* name; } table[] = {
#define ROW(w, on) {c.w, on, #w}
        ROW(File1, browsing), ROW(Dir1, browsing), ROW(Drive1, browsing),
        ROW(OtherFileButton, !browsing), ROW(Frame1, !browsing), ROW(FrameMainParam, !browsing),
        ROW(FrameBackParam, !browsing), ROW(WP_OptionFrame, !browsing), ROW(Picture1, !browsing),
        ROW(LaunchButton, !browsing), ROW(SvanArButton, !browsing), ROW(WavePackButton, !browsing),
        ROW(WaveFiltButton, !browsing), ROW(ShowSignGrafButton, !browsing),
        ROW(DownSampButton, !browsing), ROW(DownStepText, !browsing), ROW(IncremButton, !browsing),
        ROW(WinzorButton, !browsing), ROW(DemplxButton, !browsing), ROW(SaveSpButton, shown),
        ROW(ZoomButton, shown), ROW(FrameSpectraView, shown), ROW(FrameHScroll, shown),
        ROW(HelpButton, true), ROW(ExitButton, true), ROW(DownSampFrame, true)};
#undef ROW
    for (const auto& row : table) {
        const bool usedOff = std::find(usedUp.begin(), usedUp.end(), row.name) != usedUp.end();
        EXPECT_EQ(row.w->isEnabled(), row.on && !usedOff) << row.name;
    }
}

// Chooses the entry `text` of a plot surface's context menu as the user does.
inline void choose(PlotSurface& surface, const QString& text) {
    const auto menu = surface.contextMenu();
    for (QAction* a : menu->actions())
        if (a->text() == text) return a->trigger();
    ADD_FAILURE() << "no menu entry " << text.toStdString();
}

// Types into text boxes of any window, in the order given.
inline void typeIn(std::initializer_list<std::pair<TextBox*, QString>> boxes) {
    for (const auto& [box, text] : boxes) box->setText(text);
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
        setMsgBoxHook({});
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
    // Starts browsing `folder`, the message boxes caught into `messages` till the end.
    void startBrowsing(const fs::path& folder) {
        setMsgBoxHook([this](const QString& text, const QString&) { messages.push_back(text); });
        start();
        ui().Dir1->setPath(QString::fromStdString(folder.string()));
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
    QString message() { return ui().MessLineLabel->Visible() ? ui().MessLineLabel->Caption() : ""; }
    bool messageIsRed() { return ui().MessLineLabel->ForeColor() == BasicColor(12); }

    TempDir dir;
    std::unique_ptr<Workbench> wb;
    std::vector<QString> messages;
};


} // namespace tarnic::test
