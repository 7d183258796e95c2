// WTMM_Help: the theory of the WTMM skeleton chains, a picture scrolled in a
// viewport.
#pragma once

#include "help/theory.h"

namespace tarnic {

struct WTMM_HelpControls : ScrolledPictureControls {
    explicit WTMM_HelpControls(FormWindow& window)
        : ScrolledPictureControls(window, WtmmTheoryPicture(), 600) {}
};

class WTMM_Help : public FormOf<WTMM_HelpControls> {
  public:
    explicit WTMM_Help(Workbench& workbench) : FormOf(workbench, "WTMM_Help") {}

  protected:
    void connectHandlers() override;
};

} // namespace tarnic
