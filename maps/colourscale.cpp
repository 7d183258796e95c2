#include "maps/colourscale.h"

#include "core/filenames.h"
#include "core/form1.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "spectra/spectrumrun.h"

#include <cmath>

namespace tarnic {

void FillCell(PlotSurface& control, double left, double top, double width, double height,
              Rgb colour) {
    control.setForeColor(QColor::fromRgb(static_cast<QRgb>(colour)));
    control.Line(kLineFilledBox, left, top, width, height);
}

void FillCell(PlotSurface& control, double left, double top, double width, double height,
              Rgb colour, float value) {
    control.setForeColor(QColor::fromRgb(static_cast<QRgb>(colour)));
    control.Cell(left, top, width, height, value);
}

void DrawColorScale(PlotSurface& colorScale, std::span<const Rgb> palette) {
    const double W = colorScale.ScaleWidth(), H = colorScale.ScaleHeight();
    const auto n = static_cast<double>(palette.size());
    for (std::size_t k = 1; k <= palette.size(); ++k)
        FillCell(colorScale, 0, H - H * static_cast<double>(k) / n, W, H / n, palette[k - 1]);
}

void ColorScaleTip(PlotSurface& colorScale, float y, float zmin, float zmax) {
    const float value = ColorScaleValue(y, colorScale.ScaleHeight(), zmin, zmax);
    colorScale.setToolTipText(QString::fromStdString(NumText(value)));
}

double MapDeltaT(Form1& main) {
    TextBox& box = *main.ui().DeltaT_Text;
    const double typed = boxNumber(&box);
    const float single = static_cast<float>(typed);
    if (single > 0 && std::isfinite(single)) return typed;
    const float repaired = ClampDeltaT(typed);
    box.setText(qs(NumText(repaired)));
    return repaired;
}

void SaveGridFile(Button& saveGRD, Form1& main,
                  const std::function<std::string(const std::string& dataDir)>& fileName,
                  const GridHeader& header, const GridValueText& value) {
    saveGRD.setEnabled(false);
    Form1Controls& c = main.ui();
    const std::string D = encodeFileName(main.OutputFolder());
    makeSubdirectory(D, kGridDir);
    WriteGrid(fileName(D), header, value);
    c.Dir1->Refresh();
    c.File1->Refresh();
}

} // namespace tarnic
