#include "core/numtext.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tarnic {
namespace {

// Powers of ten 1e-64 .. 1e64 for scaling single-precision values.
const double* powersOfTen() {
    static const auto table = [] {
        static double t[129];
        for (int k = -64; k <= 64; ++k) t[k + 64] = std::pow(10.0, k);
        return t;
    }();
    return table;
}

// Mantissa digits and decimal exponent of the shortest text that reads back as
// the same value (of the type T).
template <class T> int shortestDigits(T magnitude, char* mantissa, int& exponent) {
    char buf[48];
    const auto result = std::to_chars(buf, buf + sizeof buf, magnitude, std::chars_format::scientific);
    int count = 0;
    const char* p = buf;
    for (; p < result.ptr && *p != 'e'; ++p)
        if (*p != '.') mantissa[count++] = *p;
    std::from_chars(p + 1 + (p[1] == '+' ? 1 : 0), result.ptr, exponent);
    return count;
}

// The significant digits of `magnitude` rounded correctly to at most `digits`
// digits, with their decimal exponent (value = d.ddd * 10^exponent). `single`
// says the value is a single-precision one.
int roundedDigits(double magnitude, int digits, bool single, char* mantissa, int& exponent) {
    // The shortest text that reads back as the same value: when it has no more
    // digits than wanted it is also the correctly rounded text.
    int count = single ? shortestDigits(static_cast<float>(magnitude), mantissa, exponent)
                       : shortestDigits(magnitude, mantissa, exponent);
    bool done = count <= digits;
    if (!done && single) {
        // Scale to a 7-digit integer in double arithmetic: exact enough unless
        // the value sits on a rounding midpoint, which the slow path settles.
        int e = exponent;
        const int k = digits - 1 - e;
        if (k >= -64 && k <= 64) {
            const double scaled = magnitude * powersOfTen()[k + 64];
            const double frac = scaled - std::floor(scaled);
            if (std::fabs(frac - 0.5) > 1e-6) {
                long long r = std::llround(scaled);
                if (r >= 10000000LL) r /= 10, ++e;
                count = static_cast<int>(std::to_chars(mantissa, mantissa + 24, r).ptr - mantissa);
                exponent = e;
                done = true;
            }
        }
    }
    if (!done) {
        char buf[48];
        const auto result = std::to_chars(buf, buf + sizeof buf, magnitude,
                                          std::chars_format::scientific, digits - 1);
        count = 0;
        const char* p = buf;
        for (; p < result.ptr && *p != 'e'; ++p)
            if (*p != '.') mantissa[count++] = *p;
        std::from_chars(p + 1 + (p[1] == '+' ? 1 : 0), result.ptr, exponent);
    }
    while (count > 1 && mantissa[count - 1] == '0') --count;
    return count;
}

// Writes the text of a finite non-zero magnitude with at most `digits`
// significant digits to `out` and returns the end. No allocation: this runs for
// every number of every file.
char* formatMagnitude(char* out, double magnitude, int digits, bool single) {
    char mantissa[32];
    int exponent = 0;
    const int count = roundedDigits(magnitude, digits, single, mantissa, exponent);

    if (exponent >= digits || exponent <= -5) {
        *out++ = mantissa[0];
        if (count > 1) {
            *out++ = '.';
            for (int i = 1; i < count; ++i) *out++ = mantissa[i];
        }
        *out++ = 'E';
        *out++ = exponent < 0 ? '-' : '+';
        const int e = exponent < 0 ? -exponent : exponent;
        if (e < 10) *out++ = '0';
        return std::to_chars(out, out + 4, e).ptr;
    }
    if (exponent < 0) { // .000ddd
        *out++ = '.';
        for (int i = 0; i < -exponent - 1; ++i) *out++ = '0';
        for (int i = 0; i < count; ++i) *out++ = mantissa[i];
        return out;
    }
    for (int i = 0; i <= exponent; ++i) *out++ = i < count ? mantissa[i] : '0';
    if (count > exponent + 1) {
        *out++ = '.';
        for (int i = exponent + 1; i < count; ++i) *out++ = mantissa[i];
    }
    return out;
}

std::string formatReal(double value, int digits, bool single) {
    if (std::isnan(value)) return " NaN";
    if (std::isinf(value)) return value > 0 ? " Inf" : "-Inf";
    if (value == 0) return " 0";
    char text[40];
    text[0] = value < 0 ? '-' : ' ';
    char* end = formatMagnitude(text + 1, std::fabs(value), digits, single);
    return std::string(text, end);
}

} // namespace

std::string NumText(std::int32_t value) {
    return value < 0 ? std::to_string(value) : " " + std::to_string(value);
}

std::string NumText(float value) { return formatReal(static_cast<double>(value), 7, true); }

std::string NumText(double value) { return formatReal(value, 15, false); }

double TextNum(std::string_view text) {
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
    std::string number;
    if (i < n && (text[i] == '+' || text[i] == '-')) number += text[i++];
    bool anyDigit = false;
    while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
        number += text[i++];
        anyDigit = true;
    }
    if (i < n && text[i] == '.') {
        number += text[i++];
        while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
            number += text[i++];
            anyDigit = true;
        }
    }
    if (!anyDigit) return 0.0;
    if (i < n && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
        std::size_t j = i + 1;
        std::string exponent = "e";
        if (j < n && (text[j] == '+' || text[j] == '-')) exponent += text[j++];
        bool expDigit = false;
        while (j < n && std::isdigit(static_cast<unsigned char>(text[j]))) {
            exponent += text[j++];
            expDigit = true;
        }
        if (expDigit) number += exponent;
    }
    return std::strtod(number.c_str(), nullptr);
}

std::optional<std::int32_t> IntOf(double x) {
    if (!std::isfinite(x)) return std::nullopt;
    const double f = std::floor(x);
    if (f < -2147483648.0 || f > 2147483647.0) return std::nullopt;
    return static_cast<std::int32_t>(f);
}

std::optional<std::int32_t> RoundOf(double x) {
    if (!std::isfinite(x)) return std::nullopt;
    // Halves go to the even neighbour.
    const double r = x - std::floor(x) == 0.5 ? 2.0 * std::round(x / 2.0) : std::round(x);
    if (r < -2147483648.0 || r > 2147483647.0) return std::nullopt;
    return static_cast<std::int32_t>(r);
}

std::int32_t IntClamped(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (x <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return *IntOf(x);
}

std::int32_t RoundClamped(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (x <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return *RoundOf(x);
}

} // namespace tarnic
