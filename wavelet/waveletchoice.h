// The wavelet boxes shared by the threshold filter and the Heisenberg boxes
// map: two options (Daubechies, symlet) with an order box each.
#pragma once

#include "core/controls.h"
#include "core/numtext.h"
#include "wavelet/wavelogic.h"

#include <QString>

#include <cstdint>

namespace tarnic {

// Shows the wavelet `waveCode` (as Ford_dll chooses it) in the boxes: its
// option selected, its order in its own box, the other box emptied; the order
// also becomes the default of its family, which the window shows when that
// option is chosen and falls back on when a typed order is no order.
inline void ShowWaveletChoice(std::int32_t waveCode, OptionButton& daubOption,
                              OptionButton& symletOption, TextBox& daubOrder, TextBox& symOrder,
                              std::int32_t& daubDefault, std::int32_t& symDefault) {
    if (!IsSymlet(waveCode)) {
        daubOption.setValue(true);
        daubOrder.setText(QString::fromStdString(NumText(waveCode)));
        symOrder.setText("");
        daubDefault = waveCode;
    } else {
        symletOption.setValue(true);
        symOrder.setText(QString::fromStdString(NumText(waveCode - 100)));
        daubOrder.setText("");
        symDefault = waveCode - 100;
    }
}

} // namespace tarnic
