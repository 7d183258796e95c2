// The arithmetic of the AR spectra evolution map that needs no widgets: the
// default parameters and the shift search of Load, the strict reading of the
// three parameter boxes with their fallbacks and clamps, the number of time
// windows, the frequency cut, the volume limit, the ranges of the map, and the
// window loop that fills the map. The window reads its boxes, calls these and
// writes the boxes back.
//
// Time windows lie over the 1-based signal like this (length L, shift s):
//     window 1: samples 1 .. L
//     window 2: samples 1 + s .. L + s
//     window w: samples (w - 1) * s + 1 .. (w - 1) * s + L
// Int is the greatest integer not above a value.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace tarnic {

// The most cells (windows times spectrum points) a map may have.
inline constexpr std::int64_t kSvanMaxCells = 8'000'000;

// Int(samples / 8), then at most 2048, then at least 16.
std::int32_t SvanDefaultLength(std::int32_t samples);
// Int(length / 20), at least 1: the shift a launch falls back on.
std::int32_t SvanDefaultShift(std::int32_t length);
// Int(length / 10), at least 1.
std::int32_t SvanDefaultOrder(std::int32_t length);

// The shift search of Load: from s = Int(length / 20) down to 1, the first s
// whose windows, count = Int((samples - length) / s + 1.0), leave at most 2
// samples unused at the end; a search that runs below 1 gives 1. `count` is
// the window count of the last s tried.
struct SvanShiftSearch {
    std::int32_t shift = 1;
    std::int32_t count = 0;
};
SvanShiftSearch SearchSvanShift(std::int32_t samples, std::int32_t length);

// The strict reading of a box: the text is taken only when the whole of it,
// blanks and tabs at its ends apart, is one number (sign, digits, point,
// exponent as TextNum reads them) whose Int fits a 32-bit integer. Empty text,
// letters behind the digits or a value too large give nullopt.
std::optional<std::int32_t> StrictInt(std::string_view text);

// The three boxes as a launch reads them, in this order. A text that the
// strict reading refuses gives the fallback as it is, without any clamp.
// Window length: Int(value), at most samples - 1, at most 2048, at least 16.
std::int32_t ReadSvanLength(std::string_view text, std::int32_t samples, std::int32_t fallback);
// Shift: Int(value), at most the window length, at least 1.
std::int32_t ReadSvanShift(std::string_view text, std::int32_t length, std::int32_t fallback);
// AR order: Int(value), at least 1; above length / 4 (in real arithmetic) it
// becomes Int(length / 4).
std::int32_t ReadSvanOrder(std::string_view text, std::int32_t length, std::int32_t fallback);

// Int((samples - length) / shift) + 1.
std::int32_t SvanWindowCount(std::int32_t samples, std::int32_t length, std::int32_t shift);

// The first spectrum point k (1 .. half) whose frequency (k - 1) / (dT * fft)
// is not below 2 / (dT * samples), two cycles per signal length: the window's
// transform size on the left, the signal's length on the right. Points below
// it are left out of the map, its colours and its file. `half` when no point
// reaches it (only a dT that is no number does that).
std::int32_t SvanCutIndex(std::int32_t half, std::int32_t fft, std::int32_t samples, double dT);

// True when count * half exceeds kSvanMaxCells; exactly the limit is accepted.
bool SvanVolumeExceeded(std::int32_t count, std::int32_t half);

// The edges of the map, in single precision: the time of the last sample of
// the first and of the last window, and the frequencies of the cut point and
// of the last point.
struct SvanRanges {
    float tmin = 0, tmax = 0, fmin = 0, fmax = 0;
};
struct SvanLayout {
    std::int32_t length = 0; // samples in a window
    std::int32_t shift = 0;  // samples between the starts of neighbouring windows
    std::int32_t count = 0;  // windows
    std::int32_t fft = 0;    // transform size of a window
    std::int32_t half = 0;   // fft / 2, points of one spectrum
    std::int32_t cut = 0;    // first point shown
    std::int32_t order = 0;  // AR order
};
SvanRanges SvanRangesOf(const SvanLayout& layout, double T0, double dT);

// The spectrum of one window, with the arguments of BurgH_dll: samples (1),
// their count, the number of points, the order, result (1).
using WindowSpectrum = std::function<void(float& samples, std::int32_t& count, std::int32_t& points,
                                          std::int32_t& order, float& result)>;

// Fills `map` (count * half values, window by window: point k of window w at
// (w - 1) * half + k - 1) with ln(dT * spectrum), computed in double precision
// and stored in single precision, each at least the map's largest value less
// ln(1e12) (a flat window's spectrum of 0 would otherwise stretch the colour
// scale over dozens of decades), and `lastSpectrum` (half values) with the
// spectrum of the last window as the routine delivered it.
// Window 1 is computed first on the calling thread (so a library routine is
// loaded and resolved before any worker runs), the others on all cores; every
// window writes only its own part of the map, so the result is the one of the
// sequential loop. `spectrum` must be safe to call from several threads.
void ComputeSpectraEvolution(std::span<const float> input, const SvanLayout& layout, double dT,
                             const WindowSpectrum& spectrum, std::span<float> map,
                             std::span<float> lastSpectrum);

} // namespace tarnic
