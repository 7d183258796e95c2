#include "core/numtext.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tarnic {
namespace {

// Formats a finite non-zero magnitude with `digits` significant digits.
std::string formatMagnitude(double magnitude, int digits) {
    // %.*e rounds the binary value correctly to `digits` significant digits and
    // tells us the decimal exponent after that rounding.
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*e", digits - 1, magnitude);
    std::string text(buf);
    const auto ePos = text.find('e');
    const int exponent = std::atoi(text.c_str() + ePos + 1);
    std::string mantissaDigits;
    for (std::size_t i = 0; i < ePos; ++i)
        if (std::isdigit(static_cast<unsigned char>(text[i]))) mantissaDigits += text[i];
    while (mantissaDigits.size() > 1 && mantissaDigits.back() == '0') mantissaDigits.pop_back();

    if (exponent >= digits || exponent <= -5) {
        std::string out(1, mantissaDigits[0]);
        if (mantissaDigits.size() > 1) out += "." + mantissaDigits.substr(1);
        char expBuf[16];
        std::snprintf(expBuf, sizeof expBuf, "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
        return out + expBuf;
    }
    const int count = static_cast<int>(mantissaDigits.size());
    if (exponent < 0) // .000ddd
        return "." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + mantissaDigits;
    if (count <= exponent + 1) // whole value
        return mantissaDigits + std::string(static_cast<std::size_t>(exponent + 1 - count), '0');
    return mantissaDigits.substr(0, static_cast<std::size_t>(exponent + 1)) + "." +
           mantissaDigits.substr(static_cast<std::size_t>(exponent + 1));
}

std::string formatReal(double value, int digits) {
    if (std::isnan(value)) return " NaN";
    if (std::isinf(value)) return value > 0 ? " Inf" : "-Inf";
    if (value == 0) return " 0";
    const std::string body = formatMagnitude(std::fabs(value), digits);
    return (value < 0 ? "-" : " ") + body;
}

} // namespace

std::string NumText(std::int32_t value) {
    return value < 0 ? std::to_string(value) : " " + std::to_string(value);
}

std::string NumText(float value) { return formatReal(static_cast<double>(value), 7); }

std::string NumText(double value) { return formatReal(value, 15); }

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
