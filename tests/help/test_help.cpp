// The help windows: the whole help text and the theory pictures, whose texts
// are shown whole (the block scheme closing with the help is on the road).
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/mfdfahelpform.h"
#include "help/wtmmhelp.h"
#include "tests/core/mainwindow_fixture.h"
#include "tests/e2e/layout_faults.h"

using namespace tarnic;
using namespace tarnic::test;

// Each help window shown at its own size: its captions fit their controls, no
// control sticks out or covers another, every picture is shown at its full
// size with its drawing clear of the picture's edges (a text that ran over an
// edge would be cut there), a picture taller than its viewport slides under it
// far enough to show its last line, and a text panel wraps its lines.
TEST_F(MainWindow, TheoryPicturesTextsAreNotCutOff) {
    start();
    // An empty picture size: a text panel.
    const struct { Form* form; const char* caption; QSize picture; } windows[] = {
        {&wb->helpForm(), "Help", {}}, {&wb->blockSchemeForm(), "Block Scheme", {947, 673}},
        {&wb->wtmmHelp(), "What is WTMM skeleton chains", {688, 934}},
        {&wb->mfdfaHelpForm(), "Multifractal Detrended Fluctuation Analysis Help", {721, 1035}}};
    for (const auto& w : windows) {
        SCOPED_TRACE(w.caption);
        w.form->Show();
        if (w.form == &wb->helpForm()) form().HelpButton_Click();
        QApplication::processEvents();
        QWidget& window = w.form->window();
        EXPECT_EQ(w.form->Caption(), w.caption);
        for (const std::string& fault : layoutFaults(window)) ADD_FAILURE() << fault;
        if (w.picture.isEmpty()) {
            // The whole help text, 105 lines joined by CR LF, beside the main window.
            const QString text = HelpForm::Text();
            EXPECT_TRUE(form().Visible());
            EXPECT_EQ(text.count("\r\n"), 104);
            EXPECT_TRUE(text.startsWith("This program:\r\n\r\n1) estimates power spectra"));
            EXPECT_TRUE(text.contains(
                "(MM)min = 0, (MM)max = LengF / 8;  (Nar)min = 1, (Nar)max = LengAR / 4."));
            EXPECT_TRUE(text.endsWith(
                "estimated and visualized for selected (zoomed) fragment of initial time series."));
            auto* panel = window.findChild<QPlainTextEdit*>();
            ASSERT_NE(panel, nullptr);
            EXPECT_EQ(panel->toPlainText().count('\n'), 104);
            EXPECT_EQ(panel->horizontalScrollBar()->maximum(), 0) << "no line runs off";
            EXPECT_GT(panel->verticalScrollBar()->maximum(), 0) << "the rest scrolls into view";
            continue;
        }
        QLabel* label = nullptr;
        for (QLabel* l : window.findChildren<QLabel*>())
            if (!l->pixmap().isNull()) label = l;
        ASSERT_NE(label, nullptr);
        const QImage image = label->pixmap().toImage();
        EXPECT_TRUE(image.size() == w.picture && label->size() == w.picture) << "whole, unscaled";
        // The text is whole when more white follows its last line than lies
        // between any two of its lines, and no ink touches the other edges.
        int dark = 0, edges = 0, widest = 0, run = -image.height();
        for (int y = 0; y < image.height(); ++y) {
            bool inked = false;
            for (int x = 0; x < image.width(); ++x) {
                const bool ink = image.pixel(x, y) != qRgb(255, 255, 255);
                inked = inked || ink;
                dark += qGray(image.pixel(x, y)) < 128;
                edges += ink && (std::min(x, y) < 8 || x >= image.width() - 8);
            }
            if (inked) widest = std::max(widest, run);
            run = inked ? 0 : run + 1;
        }
        EXPECT_GT(dark, 4500) << "text and lines are drawn";
        EXPECT_GT(run, widest) << "the text runs on below the picture's edge";
        EXPECT_EQ(edges, 0) << "the drawing runs into the picture's edge";
        // The picture's frame: the window itself or a viewport inside it.
        QWidget* frame = label->parentWidget();
        EXPECT_LE(label->width(), frame->width()) << "the picture is as wide as its frame";
        if (label->height() <= frame->height()) continue;
        auto* bar = window.findChild<ScrollBar*>();
        ASSERT_NE(bar, nullptr) << "a picture taller than its frame needs a bar";
        EXPECT_EQ(frame->height(), window.height());
        bar->setValue(bar->Max());
        EXPECT_EQ(label->y() + label->height(), frame->height()) << "the last line comes into view";
        w.form->Unload();
        w.form->Show();
        EXPECT_EQ(w.form->window().findChild<QLabel*>()->y(), 0) << "a new load starts at the top";
    }
}
