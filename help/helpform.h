// HelpForm: the help text of the workbench, and the button to its block scheme.
#pragma once

#include "core/controls.h"
#include "core/form.h"

#include <QPlainTextEdit>

namespace tarnic {

struct HelpFormControls {
    explicit HelpFormControls(FormWindow& window);
    Control<QPlainTextEdit>* HelpFormText;
    Button* Command1;
};

class HelpForm : public FormOf<HelpFormControls> {
  public:
    explicit HelpForm(Workbench& workbench) : FormOf(workbench, "HelpForm") {}

    // The whole help text, its lines joined by carriage return and line feed.
    static QString Text();
    void Command1_Click();

  protected:
    void connectHandlers() override;
    void Form_Unload() override;
};

} // namespace tarnic
