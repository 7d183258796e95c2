// MFDFA_Help_form: the theory of the multifractal detrended fluctuation
// analysis, a picture scrolled in a viewport.
#pragma once

#include "help/theory.h"

namespace tarnic {

struct MFDFA_Help_formControls : ScrolledPictureControls {
    explicit MFDFA_Help_formControls(FormWindow& window)
        : ScrolledPictureControls(window, MfdfaTheoryPicture(), 640) {}
};

class MFDFA_Help_form : public FormOf<MFDFA_Help_formControls> {
  public:
    explicit MFDFA_Help_form(Workbench& workbench) : FormOf(workbench, "MFDFA_Help_form") {}

  protected:
    void connectHandlers() override;
};

} // namespace tarnic
