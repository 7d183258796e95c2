// BlockSchemeForm: one picture of the operations of the workbench and how they
// hang together, filling the window.
#pragma once

#include "core/form.h"

#include <QLabel>

namespace tarnic {

struct BlockSchemeFormControls {
    explicit BlockSchemeFormControls(FormWindow& window);
    QLabel* Picture1;
};

class BlockSchemeForm : public FormOf<BlockSchemeFormControls> {
  public:
    explicit BlockSchemeForm(Workbench& workbench) : FormOf(workbench, "BlockSchemeForm") {}

  protected:
    void connectHandlers() override;
};

} // namespace tarnic
