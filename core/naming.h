// Output names and text records: written once, used by every writer.
//
// A result's name records how it was made: the input name, the operation and
// its parameters, with the text of each number as NumText gives it (leading
// blank included). Every writer composes its name in three steps: it joins the
// composed part, applies CutDat (which drops the first ".dat", so "a.dat" gives
// "a-INC.dat" and not "a.dat-INC.dat"), then appends the closing, so a result
// always ends in its extension. In the composers below D is the directory of
// the data file, N the input file name and S = D + "/" + N.
//
// Lines end with carriage return and line feed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnic {

inline constexpr std::string_view kLineEnd = "\r\n";

// A number's text shortened for a file name: at most three decimals, trailing
// zeros removed (a bare point may remain); the scientific form keeps its
// exponent. 12.3456 gives " 12.345", 1.50001E+08 gives " 1.5E+08", .00012 and
// 250 stay as they are, 1000.00012 gives " 1000.".
std::string ShortNumText(const std::string& numText);
std::string ShortNumText(float value);
std::string ShortNumText(double value);

// Removes the first ".dat" (case-sensitive) of the whole composed text.
std::string CutDat(const std::string& composed);

// CutDat(composed) + closing.
std::string ComposeName(const std::string& composed, std::string_view closing);

// NumText without its leading blank (times inside brackets of a name).
std::string BareNumText(double value);
std::string BareNumText(float value);

// The line of a derived series: the value, the time, the line end. A negative
// time gets one blank in front so the fields never touch: "-1.5 -2".
std::string TwoColumnRecord(const std::string& first, const std::string& second);
std::string TwoColumnRecord(float value, double time);
// Appends the same line to `out`.
void AppendTwoColumnRecord(std::string& out, float value, double time);

// Three fields in print zones of 14 columns (columns 1, 15, 29, ...): the first
// two are NumText followed by one blank, the third NumText alone. After a field
// the next one starts at the first zone boundary at or behind the present
// column, so a 13-character number with its blank fills a zone exactly and the
// next field follows in the next zone.
std::string ZoneRecord(const std::string& first, const std::string& second,
                       const std::string& third);
std::string ZoneRecord(float first, float second, float third);

// Three fields joined like the two-column form (the harmonic file).
std::string ThreeColumnRecord(const std::string& first, const std::string& second,
                              const std::string& third);

// A number written without NumText: its NumText followed by one blank.
std::string PlainNumberLine(const std::string& numText);

namespace names {
std::string Increments(const std::string& S);
std::string Winsorized(const std::string& S);
std::string DownSampled(const std::string& S, const std::string& stepText);
std::string DownSampledVariance(const std::string& S, double intStep);
std::string SpectrumAR(const std::string& D, const std::string& N, std::int32_t nar,
                       std::int32_t lengAR);
std::string SpectrumFourier(const std::string& D, const std::string& N, std::int32_t mm,
                            std::int32_t lengF);
// Companions of the two spectrum files, written while an overlay is on: the
// red-noise background of the Burg estimate (",RedNoise") and the background
// and significance level of the Fourier estimate at `percent` (",Level= 95").
std::string SpectrumARRedNoise(const std::string& D, const std::string& N, std::int32_t nar,
                               std::int32_t lengAR);
std::string SpectrumFourierLevel(const std::string& D, const std::string& N, std::int32_t mm,
                                 std::int32_t lengF, std::int32_t percent);
// bpfBaseName: S + "-BPF(", as the intake hands it to the band-pass window.
std::string BandPass(const std::string& bpfBaseName, double firstTime, double lastTime);
// radius and order as their NumText texts; an empty order means the kernel smoother.
std::string Trend(const std::string& S, const std::string& radius, const std::string& order);
std::string Residual(const std::string& S, const std::string& radius, const std::string& order);
std::string Fragment(const std::string& S, double firstTime, double lastTime);
std::string Harmonic(const std::string& S, bool detrended, float period, double firstTime,
                     double lastTime);
// wdcStem: S + "-WDC(", as the intake hands it to the component map.
std::string Component(const std::string& wdcStem, double first, double second);
std::string WavePacketSpectrum(const std::string& D, const std::string& N);
// levelText: the text of the threshold level; symlet chooses ",Sym" over ",Daub".
std::string ThresholdMain(const std::string& S, const std::string& levelText, bool symlet,
                          std::int32_t order);
std::string ThresholdResidual(const std::string& S, const std::string& levelText, bool symlet,
                              std::int32_t order);
std::string SpectraEvolutionGrid(const std::string& D, const std::string& N, std::int32_t length,
                                 std::int32_t shift, std::int32_t order);
std::string MorletGrid(const std::string& D, const std::string& N, float firstTime,
                       float lastTime, bool detrended);
std::string MorletSpectrum(const std::string& D, const std::string& N, float firstTime,
                           float lastTime, bool detrended);
// Companions of the Morlet files: the significance level of the wavelet
// spectrum at `percent` beside it ("Sp(WaveCoeff^2)_..],Level= 95") and the
// cone of influence beside the grid ("Cone(WaveCoeff^2)_..]").
std::string MorletSpectrumLevel(const std::string& D, const std::string& N, float firstTime,
                                float lastTime, bool detrended, std::int32_t percent);
std::string MorletCone(const std::string& D, const std::string& N, float firstTime,
                       float lastTime, bool detrended);
std::string HeisenbergGrid(const std::string& D, const std::string& N, float firstTime,
                           float lastTime, bool detrended);
std::string SingularitySpectrum(const std::string& D, const std::string& N, float firstTime,
                                float lastTime);
} // namespace names

// Sub-directories of the data directory for spectra and grids.
inline constexpr std::string_view kSpectraDir = "SpectEstimates";
inline constexpr std::string_view kGridDir = "GRID_files";

} // namespace tarnic
