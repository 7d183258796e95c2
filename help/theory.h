// The three pictures of the help windows, drawn by the program itself: the block
// scheme of the operations (947 x 673 pixels) and the theory of the WTMM chains
// (688 x 934) and of the multifractal DFA (721 x 1035), with typeset formulas.
#pragma once

#include "core/controls.h"
#include "core/form.h"

#include <QImage>
#include <QLabel>

namespace tarnic {

QImage BlockSchemePicture();
QImage WtmmTheoryPicture();
QImage MfdfaTheoryPicture();

// A picture taller than its viewport, slid under it by a vertical scroll bar:
// Picture1 is the viewport, Picture2 the picture, VScroll1 the bar.
struct ScrolledPictureControls {
    ScrolledPictureControls(FormWindow& window, const QImage& picture, int viewportHeight);
    QWidget* Picture1;
    QLabel* Picture2;
    ScrollBar* VScroll1;
};

// Sets the bar's range to the picture's height minus the viewport's, and slides
// the picture when the bar moves.
void ConnectScrolledPicture(ScrolledPictureControls& controls);

} // namespace tarnic
