// The colouring shared by the three time-frequency maps and the text grid in
// which each map is saved. No Qt: colours are plain 0xRRGGBB values, the grid
// is text. The drawing of cells and of the colour scale lies in colourscale.h.
#pragma once

#include "core/numtext.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace tarnic {

// A colour as 0xRRGGBB.
using Rgb = std::uint32_t;

// Palettes, index 0 being band 1, the lowest values.
// MapPalette12 (the AR spectra evolution) runs from white to black.
inline constexpr std::array<Rgb, 12> MapPalette12 = {0xFFFFFF, 0xE0E0E0, 0xFFFF00, 0x00FFFF,
                                                     0xC0C0FF, 0xFF8000, 0x00C000, 0xFF0000,
                                                     0x008000, 0xC000C0, 0x0000FF, 0x000000};
// MapPalette15 (Morlet and Heisenberg maps) runs from dark blue to white; its
// first eight bands share one colour.
inline constexpr std::array<Rgb, 15> MapPalette15 = {
    0x000080, 0x000080, 0x000080, 0x000080, 0x000080, 0x000080, 0x000080, 0x000080,
    0x0000FF, 0xC000C0, 0x80FFFF, 0x00C000, 0xFFFF00, 0xFF0000, 0xFFFFFF};

// The band (1 .. bands) holding `value`, 0 when none does. Band k spans
//     lower = zmin + (k - 1) * step  ..  upper = lower + step,
// both computed in double precision and both ends inclusive, searched from
// k = 1 up, so a value on a border takes the lower band:
//     zmin      zmin+step   zmin+2*step  ...
//      [ band 1 ][  band 2  ][  band 3  ]
//               ^ belongs to band 1
// With step 0 every value equal to zmin lies in band 1. Rounding can leave
// the top of the range (zmax itself) just above the last upper bound.
int BandOf(double value, double zmin, double step, int bands);

// The colour of a run of cells over one map: the value range zmin .. zmax is
// divided into as many equal bands as the palette has entries, with
// step = (zmax - zmin) / bands in double precision. A value that no band
// holds takes the colour of the cell looked up before it, black (0x000000)
// before the first cell of the run; so a run is one BandLookup object, used
// in the order the cells are drawn.
class BandLookup {
  public:
    BandLookup(float zmin, float zmax, std::span<const Rgb> palette);
    Rgb operator()(float value);
    double step() const { return step_; }

  private:
    double zmin_;
    double step_;
    std::span<const Rgb> palette_;
    Rgb previous_ = 0x000000;
};

// The value the colour scale shows at ordinate y (0 at its top edge) of a
// scale `scaleHeight` high: zmax - (zmax - zmin) * (y / scaleHeight). The top
// edge gives zmax, the bottom edge zmin.
float ColorScaleValue(float y, double scaleHeight, float zmin, float zmax);

// Base-10 logarithms are made as ln(x) / ln(10), with ln(10) taken from the
// same logarithm function at run time, so that a value and the bounds of its
// range are divided by one and the same number.
double LnTen();
double Lg(double x);

// A text grid file ("DSAA"): five header lines, then ny rows of nx values.
// Each bound is given as the NumText of the number in the precision the map
// keeps it (single: 7 digits, double: 15).
struct GridHeader {
    std::int32_t nx = 0; // values in a row (along X)
    std::int32_t ny = 0; // rows (along Y), from the lowest Y up
    std::string xlo, xhi, ylo, yhi, zlo, zhi;
};

// The header of a map of nx values to a row and ny rows over [xlo, xhi] x
// [ylo, yhi], its values within [zlo, zhi]: each bound in the precision of the
// type it is given in.
template <class X, class Y, class Z>
GridHeader MapGridHeader(std::int32_t nx, std::int32_t ny, X xlo, X xhi, Y ylo, Y yhi, Z zlo,
                         Z zhi) {
    return {nx, ny, NumText(xlo), NumText(xhi), NumText(ylo), NumText(yhi), NumText(zlo),
            NumText(zhi)};
}

// The text of grid value (row, column), both 1-based: NumText of the value.
// WriteGrid calls it from several threads at once.
using GridValueText = std::function<std::string(int row, int column)>;

// The value texts of a map held row after row, nx values to a row.
GridValueText RowMajorValues(const float* values, std::int32_t nx);

// The five header lines:
//     DSAA
//     <nx>  <ny>         each NumText followed by one blank: " 63  129 "
//     <xlo><xhi>         NumText directly joined; a negative second number
//     <ylo><yhi>         gets one blank in front: " 2.5 3.25", "-2.5 -1.25"
//     <zlo><zhi>
// Lines end with carriage return and line feed.
std::string GridHeaderText(const GridHeader& header);

// Appends one value of a row whose line starts at out[lineStart]: the text,
// then blanks up to the next print zone (zones start every 14 columns, at
// columns 1, 15, 29, ...), at least one blank. A 13-character text and its
// blank fill one zone; a longer one runs into the following zones.
void AppendGridValue(std::string& out, std::size_t lineStart, const std::string& text);

// Appends row `row` (nx values, each with its blanks) and the line end.
void AppendGridRow(std::string& out, int row, std::int32_t nx, const GridValueText& value);

// Writes the grid file at `path`, replacing an old one: the header, then rows
// 1 .. ny. Rows are formatted on all cores and written in order. The file is
// written whole or not at all; false when it could not be.
bool WriteGrid(const std::string& path, const GridHeader& header, const GridValueText& value);

} // namespace tarnic
