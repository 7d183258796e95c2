// The drawing side of the map colouring: one cell, the ColorScale control and
// its tool tip, and the save sequence of the SaveGRD buttons. The bands, the
// palettes and the grid text are in colouring.h.
#pragma once

#include "core/controls.h"
#include "core/plotsurface.h"
#include "maps/colouring.h"

#include <functional>
#include <span>
#include <string>

namespace tarnic {

class Form1;

// Sets the control's ForeColor to `colour` and fills the box from (left, top)
// with the given width and height by Line with the flag 0x2c (twips).
void FillCell(PlotSurface& control, double left, double top, double width, double height,
              Rgb colour);
// The same for a cell of a map that holds `value`: after control.BeginCells(),
// a pixel that several cells share shows the strongest of them.
void FillCell(PlotSurface& control, double left, double top, double width, double height,
              Rgb colour, float value);

// Paints the colour scale: with W, H its ScaleWidth, ScaleHeight and n bands,
// band k is the cell at left 0, top H - H * k / n, width W, height H / n, so
// band 1 lies along the bottom edge and band n along the top edge.
void DrawColorScale(PlotSurface& colorScale, std::span<const Rgb> palette);

// The MouseMove of a colour scale, pointer ordinate y: the tool tip shows the
// NumText of the map value there (ColorScaleValue), zmax at the top edge and
// zmin at the bottom edge. The scale is never disabled, so before the first
// run it shows the start values or those of the last run.
void ColorScaleTip(PlotSurface& colorScale, float y, float zmin, float zmax);

// The sampling interval dT the maps work with: the main window's box as typed
// when it is a positive number that a single-precision time can hold; anything
// else (0, a negative number, letters, an overflow) is repaired to 1 as Launch
// Spectra repairs it, and the box shows the repair. So no mark, tip or grid
// header of a map takes an infinite or NaN time.
double MapDeltaT(Form1& main);

// The save sequence shared by the SaveGRD buttons:
//   1. the button is disabled (a new run of the map enables it again);
//   2. the sub-directory GRID_files of the directory shown by Dir1 of Form1 is
//      made; that it exists already is no failure;
//   3. the name is composed by fileName(directory of the data) and the grid
//      written;
//   4. Dir1 and File1 of Form1 are refreshed, so the new names show at once.
// Every failing file operation is passed over and the next step taken: a save
// shows no message and, when the file could not be written, leaves nothing
// under its name.
void SaveGridFile(Button& saveGRD, Form1& main,
                  const std::function<std::string(const std::string& dataDir)>& fileName,
                  const GridHeader& header, const GridValueText& value);

} // namespace tarnic
