// The window runtime: the frame rule, handlers that run inside assignments only
// when a value really changes, and the Load/Show/Activate/Unload life of a window.
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/workbench.h"
#include "tests/core/qt_print.h"

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

using namespace tarnic;

TEST(FrameRule, DisabledFrameDisablesContentButKeepsItsOwnFlag) {
    QWidget top;
    auto* frame = new Frame(&top, "Frame");
    auto* inner = new Button(frame, "Inner");
    frame->setEnabled(false);
    EXPECT_FALSE(inner->isEnabled());
    EXPECT_TRUE(inner->Enabled());
    inner->setEnabled(false);
    frame->setEnabled(true);
    EXPECT_FALSE(inner->isEnabled()) << "the inner control keeps its own off flag";
    EXPECT_FALSE(inner->Enabled());
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
    int aClicks = 0, bClicks = 0;
    a.Click = [&] { ++aClicks; };
    b.Click = [&] { ++bClicks; };
    a.setValue(true);
    a.setValue(true);
    EXPECT_EQ(aClicks, 1);
    EXPECT_EQ(bClicks, 0) << "the option that goes off runs no handler";
    EXPECT_FALSE(b.Value());
}

TEST(ChangeHandlers, ScrollBarAssignmentsReenterTheOtherBarsHandler) {
    QWidget top;
    ScrollBar left(&top, 0, 100, 0), right(&top, 0, 100, 50);
    std::vector<std::string> trace;
    int depth = 0, deepest = 0;
    // Each bar keeps the other at least 10 away, as the cursor pair does.
    left.Change = [&] {
        deepest = std::max(deepest, ++depth);
        trace.push_back("L" + std::to_string(left.Value()));
        if (left.Value() > right.Value() - 10) right.setValue(std::min(100, left.Value() + 10));
        --depth;
    };
    right.Change = [&] {
        deepest = std::max(deepest, ++depth);
        trace.push_back("R" + std::to_string(right.Value()));
        if (right.Value() < left.Value() + 10) left.setValue(std::max(0, right.Value() - 10));
        --depth;
    };
    left.setValue(95);
    // Left pushes right to its maximum, right pushes left back to 90, and the
    // pair settles because 90 + 10 is where right already stands.
    EXPECT_EQ((std::vector<std::string>{"L95", "R100", "L90"}), trace);
    EXPECT_EQ(deepest, 3) << "each assignment ran its handler inside the caller";
    trace.clear();
    left.setValue(90);
    EXPECT_TRUE(trace.empty()) << "assigning the present value raises no event";
    right.triggerAction(QAbstractSlider::SliderSingleStepSub);
    // A move by the user runs the same handler, which pushes left to 89.
    EXPECT_EQ(trace, (std::vector<std::string>{"R99", "L89"}));
}

namespace {

struct ProbeControls {
    explicit ProbeControls(FormWindow& w) : box(new TextBox(&w, "x")) {}
    TextBox* box;
};

// A window that records its events and what it saw of its members.
class ProbeForm : public FormOf<ProbeControls> {
  public:
    explicit ProbeForm(Workbench& wb) : FormOf(wb, "ProbeForm") {}
    int member = 0;
    std::vector<std::string> events;
    std::vector<int> memberAtActivate;

  protected:
    void Form_Load() override { events.push_back("Load"); }
    void Form_Activate() override {
        events.push_back("Activate");
        memberAtActivate.push_back(member);
    }
    void Form_Unload() override { events.push_back("Unload"); }
};

} // namespace

TEST(FormLife, ControlsLiveWhileLoadedAndMembersForever) {
    Workbench wb;
    ProbeForm form(wb);
    EXPECT_FALSE(form.isLoaded());
    form.member = 7;
    form.ui().box->setText("typed"); // touching a control loads the window
    EXPECT_TRUE(form.isLoaded());
    form.Unload();
    EXPECT_FALSE(form.isLoaded());
    EXPECT_EQ(form.member, 7);
    EXPECT_EQ(form.ui().box->Text(), "x") << "a new Load builds fresh controls with their defaults";
    EXPECT_EQ((std::vector<std::string>{"Load", "Unload", "Load"}), form.events);
    // Unloading from inside the window's own handler is safe.
    form.Show();
    form.ui().box->Change = [&] { form.Unload(); };
    form.ui().box->setText("go");
    EXPECT_FALSE(form.isLoaded());
    QApplication::processEvents(); // the old widget is deleted here
    EXPECT_EQ(form.ui().box->Text(), "x");
    form.Unload();
}

TEST(FormLife, ActivateRunsAfterTheHandlerThatShowedTheWindow) {
    Workbench wb;
    ProbeForm form(wb);
    form.Show();
    form.member = 42; // set behind Show, as an opener does
    EXPECT_EQ((std::vector<std::string>{"Load"}), form.events);
    QApplication::processEvents();
    EXPECT_EQ(form.memberAtActivate, std::vector<int>{42});
    EXPECT_TRUE(form.Visible());
    form.Hide();
    EXPECT_FALSE(form.Visible());
    EXPECT_TRUE(form.isLoaded());
    form.window().close(); // the title-bar button unloads
    EXPECT_FALSE(form.isLoaded());
    EXPECT_EQ(form.events.back(), "Unload");
}

TEST(FormLife, WorkbenchesCanBeMadeAndThrownAwayAndMessagesGoToAHook) {
    for (int i = 0; i < 3; ++i) {
        Workbench wb;
        wb.form1().Load();
        EXPECT_TRUE(wb.form1().isLoaded());
    }
    QApplication::processEvents();
    QString text, title;
    setMsgBoxHook([&](const QString& t, const QString& h) { text = t, title = h; });
    MsgBox("Too short", "Selection"); // no modal loop waits for a click
    setMsgBoxHook({});
    EXPECT_EQ(text, "Too short");
    EXPECT_EQ(title, "Selection");
}
