// The window runtime: the frame rule, handlers that run inside assignments only
// when a value really changes (the scroll bars' in the cursor pair's tests), and
// the Load/Show/Activate/Unload life of a window.
#include "core/controls.h"
#include "core/form.h"
#include "core/workbench.h"
#include "tests/core/qt_print.h"

#include <QApplication>
#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using namespace tarnic;

TEST(FrameRule, DisabledFrameDisablesContentButKeepsItsOwnFlag) {
    QWidget top;
    auto* frame = new Frame(&top, "Frame");
    auto* inner = new Button(frame, "Inner");
    frame->setEnabled(false);
    EXPECT_TRUE(!inner->isEnabled() && inner->Enabled());
    inner->setEnabled(false);
    frame->setEnabled(true);
    EXPECT_FALSE(inner->isEnabled() || inner->Enabled()) << "the inner control keeps its flag";
    frame->setEnabled(false);
    inner->setEnabled(true); // switched on while the frame is off
    EXPECT_FALSE(inner->isEnabled());
    frame->setEnabled(true);
    EXPECT_TRUE(inner->isEnabled());
}

TEST(ChangeHandlers, TextBoxCheckAndOptionRunTheirHandlerInsideTheAssignmentOnARealChange) {
    QWidget top;
    TextBox box(&top, "2");
    std::vector<QString> seen;
    box.Change = [&] { seen.push_back(box.Text()); };
    box.setText("2");
    EXPECT_TRUE(seen.empty());
    box.setText("3");
    ASSERT_EQ(seen, std::vector<QString>{"3"}) << "the handler ran before setText returned";
    QTest::keyClicks(&box, "4");
    EXPECT_EQ(seen, (std::vector<QString>{"3", "34"})) << "typing runs it once per edit";

    CheckBox check(&top, "Lg", true);
    std::vector<int> values; // as each click handler saw the box
    check.Click = [&] { values.push_back(check.Value()); };
    check.setValue(1);
    check.setValue(0);
    check.click(); // as the user's click
    EXPECT_EQ(values, (std::vector<int>{0, 1}));

    OptionButton a(&top, "1", false), b(&top, "2", true);
    std::vector<QString> clicked;
    a.Click = [&] { clicked.push_back("a"); };
    b.Click = [&] { clicked.push_back("b"); };
    for (int twice = 0; twice < 2; ++twice) a.setValue(true);
    EXPECT_EQ(clicked, std::vector<QString>{"a"}) << "the option that goes off runs no handler";
    EXPECT_FALSE(b.Value());
}

namespace {

struct ProbeControls {
    explicit ProbeControls(FormWindow& w) : box(new TextBox(&w, "x")) {}
    TextBox* box;
};

// A window that records its events and what it saw of its members.
struct ProbeForm : FormOf<ProbeControls> {
    explicit ProbeForm(Workbench& wb) : FormOf(wb, "ProbeForm") {}
    int member = 0;
    std::vector<std::string> events;
    std::vector<int> memberAtActivate;
    void Form_Load() override { events.push_back("Load"); }
    void Form_Activate() override {
        events.push_back("Activate");
        memberAtActivate.push_back(member);
    }
    void Form_Unload() override { events.push_back("Unload"); }
};

} // namespace

TEST(FormLife, ControlsLiveWhileLoadedMembersForeverAndActivateFollowsTheShowingHandler) {
    Workbench wb;
    ProbeForm form(wb);
    form.member = 7;
    form.ui().box->setText("typed"); // touching a control loads the window
    EXPECT_TRUE(form.isLoaded());
    form.Unload();
    EXPECT_TRUE(!form.isLoaded() && form.member == 7);
    EXPECT_EQ(form.ui().box->Text(), "x") << "a new Load builds fresh controls with their defaults";
    form.Show();
    form.member = 42; // set behind Show, as an opener does
    EXPECT_EQ((std::vector<std::string>{"Load", "Unload", "Load"}), form.events);
    QApplication::processEvents();
    EXPECT_EQ(form.memberAtActivate, std::vector<int>{42});
    form.Hide();
    EXPECT_TRUE(!form.Visible() && form.isLoaded());
    form.window().close(); // the title-bar button unloads
    EXPECT_TRUE(!form.isLoaded() && form.events.back() == "Unload");
    // Unloading from inside the window's own handler is safe.
    form.Show();
    form.ui().box->Change = [&] { form.Unload(); };
    form.ui().box->setText("go");
    EXPECT_FALSE(form.isLoaded());
    QApplication::processEvents(); // the old widget is deleted here
    EXPECT_EQ(form.ui().box->Text(), "x");
    form.Unload();
    // A form may go before its unloaded window: the window and the queued
    // activation of Show must no longer reach it.
    auto gone = std::make_unique<ProbeForm>(wb);
    gone->Show();
    const QPointer<FormWindow> orphan = &gone->window();
    gone->Unload();
    gone.reset();
    ASSERT_TRUE(orphan && orphan->form() == nullptr);
    QApplication::processEvents(); // runs the queued activation
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(orphan.isNull()) << "deleted later, without touching the form";
}
