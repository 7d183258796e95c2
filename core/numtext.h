// Conversions between numbers and the texts that boxes, labels and files show.
//
// NumText follows the classic BASIC Str$ form: a non-negative value starts with
// one blank, a negative one with "-"; no zero before the point (" .5", "-.5");
// whole values have no point and no value has trailing zeros. Single-precision
// values keep at most 7 significant digits, double-precision values 15. A value
// whose decimal exponent e (after rounding to those digits) lies outside
// -5 < e < digits takes the scientific form " 1.234567E-05", " 1E+07": a mantissa
// without trailing zeros, "E", a sign and at least two exponent digits.
// So 1234567 (single) stays " 1234567", 12345678 gives " 1.234568E+07",
// .0001 stays " .0001" and .00001 gives " 1E-05".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnic {

std::string NumText(std::int32_t value);
std::string NumText(float value);
std::string NumText(double value);

// Reads a number from text in double precision: leading blanks and tabs are
// skipped and the longest numeric prefix is taken (optional sign, digits, an
// optional point with digits, an optional exponent E/e/D/d with optional sign and
// at least one digit). A text without such a prefix gives 0. Never fails; a
// magnitude beyond the double range reads as +-infinity.
double TextNum(std::string_view text);

// Int: the greatest integer not above x. Round: the nearest integer, halves to
// the even one. Both return nullopt when the result does not fit a 32-bit
// integer (or x is not finite), which is the case where a parameter box falls
// back to its default.
std::optional<std::int32_t> IntOf(double x);
std::optional<std::int32_t> RoundOf(double x);

// IntOf/RoundOf clamped into the 32-bit range instead of failing; NaN gives 0.
std::int32_t IntClamped(double x);
std::int32_t RoundClamped(double x);

} // namespace tarnic
