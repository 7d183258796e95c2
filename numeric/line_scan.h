// The block scan of plain-text tables, shared by the intake, the comma judge and
// the demultiplexer.
//
// Internal to the numeric library. A table is read in blocks and handed on as runs
// of whole lines (LineBlocks). The line starts of a run are found 64 bytes at a
// time from masks of its line ends (forEachRecord), so each record is handled on
// its own, not after the scan of the one before it; a record's first field is
// then looked at through a window of 32 bytes turned into bit masks (one bit a
// byte: field ends, digits, decimal signs), which gives its shape without a loop
// per byte, and a plain decimal is converted from its digits. Everything else
// takes the byte-by-byte path of parseNumber(). The record and number rules are
// those of table_reader.h.
#pragma once

#include "numeric/table_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define TARNIC_SCAN_SSE2 1
#endif

namespace tarnic::detail::scan {

// A line longer than this (plus one read block) sends the block scan back to the
// streaming reader, which needs no memory for it.
inline constexpr std::size_t kMaxCarriedLine = std::size_t{1} << 20;

// Bytes read from the file per block by the scans: small enough that a block is
// still in the second-level cache when it is scanned.
inline constexpr std::size_t kScanBlockSize = std::size_t{256} << 10;

// Bytes readable after the last byte handed on, so the windows of up to 64 bytes
// and the word-wise scans may overrun it.
inline constexpr std::size_t kSlack = 64;

inline unsigned char classOf(const char* p) {
    return kByteClasses[static_cast<unsigned char>(*p)];
}

// Where a field ends: with a decimal comma, a comma belongs to the field.
template <bool kDecimalComma> inline bool endsField(const char* p) {
    return classOf(p) != kOrdinary && !(kDecimalComma && *p == ',');
}

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads a table in blocks and hands it on as runs of whole lines, each run ending
// with a line-end byte, so the scanning loops need no bounds checks: every loop
// stops at a line end at the latest. The last line of the file, if it has no line
// end, gets one appended. A byte-order mark at the start is skipped. kSlack bytes
// after every run may be read.
class LineBlocks {
  public:
    LineBlocks(const std::filesystem::path& file, std::size_t blockSize)
        : blockSize_(std::max<std::size_t>(blockSize, 1)) {
        TableFile table = openTable(file);
        file_ = std::move(table.file);
        fileSize_ = table.size;
        bytesLeft_ = table.tableBytes;
        failed_ = !file_;
        if (file_) buffer_.resize(blockSize_ + kMaxCarriedLine + 1 + kSlack);
    }

    bool failed() const noexcept { return failed_; }
    // A line did not fit into the buffer; nothing more is handed on.
    bool tooLong() const noexcept { return tooLong_; }
    std::uint64_t fileSize() const noexcept { return fileSize_; }
    // Whether a comma was met in what has been read so far.
    bool sawComma() const noexcept { return sawComma_; }

    // The next run [first, last) of whole lines; false at the end of the file (or
    // when a read failed or a line was too long).
    bool next(char*& first, char*& last) {
        for (;;) {
            if (done_ || !file_) return false;
            // The unfinished line of the last run moves to the front.
            const std::size_t kept = end_ - carry_;
            if (kept > 0 && carry_ > 0) std::memmove(buffer_.data(), buffer_.data() + carry_, kept);
            carry_ = 0;
            end_ = kept;
            const std::size_t want =
                static_cast<std::size_t>(std::min<std::uint64_t>(blockSize_, bytesLeft_));
            if (kept + want > buffer_.size() - 1 - kSlack) {
                tooLong_ = true;
                return false;
            }
            const std::size_t got =
                want == 0 ? 0 : std::fread(buffer_.data() + end_, 1, want, file_.get());
            if (!sawComma_ && std::memchr(buffer_.data() + end_, ',', got) != nullptr)
                sawComma_ = true;
            end_ += got;
            bytesLeft_ -= got;
            if (got == 0) {
                done_ = true;
                if (want > 0 && std::ferror(file_.get())) failed_ = true;
                if (end_ == 0) return false;
                buffer_[end_++] = '\n'; // the last line has no line end of its own
                carry_ = end_;
                return hand(first, last, end_);
            }
            if (!started_) {
                // The mark needs three bytes; tiny blocks may bring fewer.
                if (end_ < 3 && bytesLeft_ > 0) continue;
                started_ = true;
                if (end_ >= 3 && std::memcmp(buffer_.data(), "\xEF\xBB\xBF", 3) == 0) skip_ = 3;
            }
            // Only the bytes just read can hold a line end: the kept ones are the
            // unfinished line.
            const std::size_t floor = std::max(kept, skip_);
            std::size_t lineEnd = end_;
            while (lineEnd > floor && classOf(&buffer_[lineEnd - 1]) != kLineEnd)
                --lineEnd;
            if (lineEnd > floor) {
                carry_ = lineEnd;
                return hand(first, last, lineEnd);
            }
            carry_ = skip_; // no line end yet: keep reading, without the mark
            skip_ = 0;
        }
    }

    // Whether the table holds a comma anywhere; reads what the scan left unread.
    bool commaInTable() {
        while (!sawComma_ && file_ && bytesLeft_ > 0) {
            const std::size_t want =
                static_cast<std::size_t>(std::min<std::uint64_t>(buffer_.size(), bytesLeft_));
            const std::size_t got = std::fread(buffer_.data(), 1, want, file_.get());
            if (got == 0) break;
            bytesLeft_ -= got;
            sawComma_ = std::memchr(buffer_.data(), ',', got) != nullptr;
        }
        return sawComma_;
    }

  private:
    bool hand(char*& first, char*& last, std::size_t lineEnd) {
        first = buffer_.data() + skip_;
        last = buffer_.data() + lineEnd;
        skip_ = 0;
        return true;
    }

    FilePtr file_;
    std::vector<char> buffer_;
    std::size_t blockSize_;
    std::size_t end_ = 0;   // one past the last byte read into buffer_
    std::size_t carry_ = 0; // start of the unfinished line
    std::size_t skip_ = 0;  // bytes of a byte-order mark before the first line
    std::uint64_t fileSize_ = 0;
    std::uint64_t bytesLeft_ = 0;
    bool failed_ = false;
    bool tooLong_ = false;
    bool started_ = false;
    bool done_ = false;
    bool sawComma_ = false;
};

// The 32 bytes from a field's start as bit masks, bit i for byte i.
struct Window {
    std::uint32_t ends = 0;     // separators and line ends (with a decimal comma, not ',')
    std::uint32_t digits = 0;
    std::uint32_t points = 0; // the decimal sign: '.' or, with a decimal comma, ','
};

#if TARNIC_SCAN_SSE2
template <bool kDecimalComma> inline void maskSixteen(__m128i bytes, int shift, Window& w) {
    const auto eq = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
    const auto bits = [shift](__m128i m) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(m)) << shift;
    };
    // The controls 9 to 13: tab, LF, vertical tab, form feed, CR.
    const __m128i controls = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(8)),
                                           _mm_cmplt_epi8(bytes, _mm_set1_epi8(14)));
    const __m128i ends =
        _mm_or_si128(_mm_or_si128(controls, eq(' ')),
                     _mm_or_si128(kDecimalComma ? _mm_setzero_si128() : eq(','), eq(';')));
    const __m128i digits = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('0' - 1)),
                                         _mm_cmplt_epi8(bytes, _mm_set1_epi8('9' + 1)));
    w.ends |= bits(ends);
    w.digits |= bits(digits);
    w.points |= bits(eq(kDecimalComma ? ',' : '.'));
}
#endif

template <bool kDecimalComma> inline Window windowAt(const char* p) {
    Window w;
#if TARNIC_SCAN_SSE2
    maskSixteen<kDecimalComma>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), 0, w);
    maskSixteen<kDecimalComma>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16)), 16, w);
#else
    for (int i = 0; i < 32; ++i) {
        const std::uint32_t bit = std::uint32_t{1} << i;
        if (endsField<kDecimalComma>(p + i)) w.ends |= bit;
        if (isDigit(p[i])) w.digits |= bit;
        if (p[i] == (kDecimalComma ? ',' : '.')) w.points |= bit;
    }
#endif
    return w;
}

// The first field in a window, when it is [+|-]digits[.digits] with at least one
// digit and ends within the window; otherwise `plain` is false and the caller takes
// the byte-by-byte path.
struct PlainField {
    bool plain = false;
    int length = 0;
    int signLength = 0;
    int point = -1; // offset of the decimal sign, -1 without one
};

inline PlainField plainField(const Window& w, const char* p) {
    PlainField f;
    if (w.ends == 0) return f;
    const int length = std::countr_zero(w.ends);
    const int signLength = (*p == '+' || *p == '-') ? 1 : 0;
    const std::uint32_t field = static_cast<std::uint32_t>((std::uint64_t{1} << length) - 1) &
                                ~((std::uint32_t{1} << signLength) - 1);
    const std::uint32_t points = w.points & field;
    if ((w.digits & field) == 0 || ((w.digits | points) & field) != field ||
        (points & (points - 1)) != 0)
        return f;
    f.plain = true;
    f.length = length;
    f.signLength = signLength;
    f.point = points == 0 ? -1 : std::countr_zero(points);
    return f;
}

// The inverse of 5^k modulo 2^64 for k = 0..16: dividing an exact multiple of 10^k
// by 10^k is then a shift and one multiplication.
constexpr std::uint64_t inverseModulo64(std::uint64_t odd) {
    std::uint64_t inverse = odd; // right in the lowest 3 bits; each step doubles that
    for (int i = 0; i < 5; ++i)
        inverse *= 2 - odd * inverse;
    return inverse;
}

constexpr std::array<std::uint64_t, 17> makeInversePowersOfFive() {
    std::array<std::uint64_t, 17> inverses{};
    std::uint64_t power = 1;
    for (std::size_t k = 0; k < inverses.size(); ++k, power *= 5)
        inverses[k] = inverseModulo64(power);
    return inverses;
}

inline constexpr std::array<std::uint64_t, 17> kInversePowersOfFive = makeInversePowersOfFive();

// The digits of a plain field of at most 16 bytes, as an integer:
// the integer part moves one byte up over the decimal sign, everything outside
// the digits is cleared, and the 16 bytes are read as a 16-digit number (pairs,
// then fours, then eights, by multiply-adds), which is the field's digits times
// 10^(16 - length), divided out exactly.
inline std::uint64_t plainDigits(const char* p, const PlainField& f) {
#if TARNIC_SCAN_SSE2
    const __m128i index = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i beforePoint = _mm_cmplt_epi8(index, _mm_set1_epi8(static_cast<char>(f.point + 1)));
    bytes = _mm_or_si128(_mm_and_si128(beforePoint, _mm_slli_si128(bytes, 1)),
                         _mm_andnot_si128(beforePoint, bytes));
    const int first = f.signLength + (f.point >= 0 ? 1 : 0);
    const __m128i inside =
        _mm_and_si128(_mm_cmpgt_epi8(index, _mm_set1_epi8(static_cast<char>(first - 1))),
                      _mm_cmplt_epi8(index, _mm_set1_epi8(static_cast<char>(f.length))));
    const __m128i digits = _mm_and_si128(inside, _mm_sub_epi8(bytes, _mm_set1_epi8('0')));
    const __m128i zero = _mm_setzero_si128();
    const __m128i tens = _mm_set1_epi32((1 << 16) | 10); // i16 weights 10, 1, 10, 1, ...
    const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(_mm_unpacklo_epi8(digits, zero), tens),
                                          _mm_madd_epi16(_mm_unpackhi_epi8(digits, zero), tens));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32((1 << 16) | 100));
    const __m128i eights =
        _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32((1 << 16) | 10000));
    const std::uint64_t high = static_cast<std::uint32_t>(_mm_cvtsi128_si32(eights));
    const std::uint64_t low = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(eights, 4)));
    const int scaleDown = 16 - f.length;
    return ((high * 100000000 + low) >> scaleDown) *
           kInversePowersOfFive[static_cast<std::size_t>(scaleDown)];
#else
    std::uint64_t n = 0;
    for (int i = f.signLength; i < f.length; ++i)
        if (i != f.point) n = n * 10 + static_cast<unsigned>(p[i] - '0');
    return n;
#endif
}

// Rounds digits / 10^fractionDigits (at most 15 digits, fractionDigits <= 22) to
// float in one correctly rounded double division (both operands are exact
// doubles) and a rounding to float. That second rounding can differ from rounding
// the decimal once only when the double lands exactly on the midpoint between two
// floats; such values, values outside the normal float range and values beyond
// kMaxMagnitude are left to parseNumber() (false).
inline bool roundOnce(std::uint64_t digits, int fractionDigits, bool negative, float& value) {
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const double magnitude = static_cast<double>(digits) / kPowers[fractionDigits];
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(magnitude);
    // The 29 double fraction bits below float precision: 1 followed by zeros is a
    // midpoint between two floats.
    const bool midpoint = (bits & ((std::uint64_t{1} << 29) - 1)) == (std::uint64_t{1} << 28);
    if (magnitude == 0.0 ||
        (!midpoint && magnitude >= static_cast<double>(std::numeric_limits<float>::min()) &&
         magnitude <= static_cast<double>(kMaxMagnitude))) {
        const float f = static_cast<float>(magnitude);
        if (magnitude == 0.0 || std::fabs(f) <= kMaxMagnitude) {
            value = negative ? -f : f;
            return true;
        }
    }
    return false;
}

// The reciprocals 10^-k as doubles, for k = 0..22.
inline constexpr double kReciprocalPowers[] = {
    1e0,   1e-1,  1e-2,  1e-3,  1e-4,  1e-5,  1e-6,  1e-7,  1e-8,  1e-9,  1e-10, 1e-11,
    1e-12, 1e-13, 1e-14, 1e-15, 1e-16, 1e-17, 1e-18, 1e-19, 1e-20, 1e-21, 1e-22};

// Rounds digits / 10^fractionDigits (at most 19 digits, fractionDigits <= 22) to
// float without a division. Such values lie in {0} and [1e-22, 1e19], far inside
// the float range. The product of the digits (as a double) and the rounded
// reciprocal is three roundings of relative size 2^-53 away from the exact
// quotient, less than 3 units in the last place; when it is more than 8 units
// away from a midpoint between two floats, no midpoint lies between it and the
// quotient and both round to the same float. Otherwise false: the caller
// decides by roundOnce() or parseNumber().
inline bool roundPlain(std::uint64_t digits, int fractionDigits, bool negative, float& value) {
    const double product = static_cast<double>(digits) * kReciprocalPowers[fractionDigits];
    const std::uint64_t below = std::bit_cast<std::uint64_t>(product) & ((std::uint64_t{1} << 29) - 1);
    const std::uint64_t midpoint = std::uint64_t{1} << 28;
    if (below - (midpoint - 8) <= 16) return false;
    const float f = static_cast<float>(product);
    value = negative ? -f : f;
    return true;
}

// The digits of a plain field of more than 16 bytes, byte by byte.
inline std::uint64_t longPlainDigits(const char* p, const PlainField& f) {
    std::uint64_t n = 0;
    for (int i = f.signLength; i < f.length; ++i)
        if (i != f.point) n = n * 10 + static_cast<unsigned>(p[i] - '0');
    return n;
}

// Steps from a field start over the field; returns its end.
template <bool kDecimalComma> inline char* fieldEnd(char* p) {
    while (!endsField<kDecimalComma>(p))
        ++p;
    return p;
}

// The text of a plain decimal number read at `p`, byte by byte:
// [+|-]digits[.digits] with its digits as an integer (meaningful up to 19 of
// them) and the power of ten that scales it. `end` is where the text stops.
struct DecimalText {
    char* end;
    std::uint64_t digits;
    int scale;
    int digitCount;
    bool negative;
};

template <bool kDecimalComma> inline DecimalText readDecimal(char* p) {
    DecimalText d{p, 0, 0, 0, false};
    if (*p == '+' || *p == '-') d.negative = (*p++ == '-');
    for (; isDigit(*p); ++p, ++d.digitCount)
        d.digits = d.digits * 10 + static_cast<unsigned>(*p - '0');
    if (*p == (kDecimalComma ? ',' : '.')) {
        for (++p; isDigit(*p); ++p, ++d.digitCount, --d.scale)
            d.digits = d.digits * 10 + static_cast<unsigned>(*p - '0');
    }
    d.end = p;
    return d;
}

// Whether the field starting at `p` is a number, as parseNumber() decides; `end`
// gets the end of the field. A plain decimal within the window (at most 31
// digits) or of at most 30 digits is far inside the float range and needs no
// conversion; anything else (an exponent, more digits, other characters) is
// decided by parseNumber().
template <bool kDecimalComma> inline bool isNumberField(const Window& w, char* p, char*& end) {
    const PlainField f = plainField(w, p);
    if (f.plain) {
        end = p + f.length;
        return true;
    }
    const DecimalText d = readDecimal<kDecimalComma>(p);
    end = fieldEnd<kDecimalComma>(d.end);
    if (end == d.end && d.digitCount > 0 && d.digitCount <= 30) return true;
    if (static_cast<std::size_t>(end - p) > kMaxFieldLength) return false;
    float ignored = 0.0f;
    return parseNumber(p, end, ignored, kDecimalComma ? ',' : '.');
}

// Converts the field starting at `p` as parseNumber() does; `end` gets the end of
// the field. A plain decimal within the window of at most 19 digits is converted
// from its digits (plainDigits for at most 16 bytes) by roundPlain(), or by the
// division of roundOnce() near a float midpoint; a plain decimal beyond the
// window of at most 15 digits is read byte by byte and goes to roundOnce();
// every other form, and what those leave, goes to parseNumber().
template <bool kDecimalComma>
[[gnu::always_inline]] inline bool readNumberField(const Window& w, char* p, char*& end, float& value) {
    const PlainField f = plainField(w, p);
    if (f.plain) {
        const int digitCount = f.length - f.signLength - (f.point >= 0 ? 1 : 0);
        const int fractionDigits = f.point >= 0 ? f.length - 1 - f.point : 0;
        end = p + f.length;
        if (digitCount <= 19) {
            const bool negative = *p == '-';
            const std::uint64_t digits =
                f.length <= 16 ? plainDigits(p, f) : longPlainDigits(p, f);
            if (roundPlain(digits, fractionDigits, negative, value)) return true;
            if (digitCount <= 15 && roundOnce(digits, fractionDigits, negative, value)) return true;
        }
    } else {
        const DecimalText d = readDecimal<kDecimalComma>(p);
        if (endsField<kDecimalComma>(d.end) && d.digitCount > 0 && d.digitCount <= 15 &&
            roundOnce(d.digits, -d.scale, d.negative, value)) {
            end = d.end;
            return true;
        }
        end = fieldEnd<kDecimalComma>(d.end);
    }
    return static_cast<std::size_t>(end - p) <= kMaxFieldLength &&
           parseNumber(p, end, value, kDecimalComma ? ',' : '.');
}

// The line ends among the 64 bytes from `p`, bit i for byte i.
inline std::uint64_t lineEndsOf64(const char* p) {
    std::uint64_t mask = 0;
#if TARNIC_SCAN_SSE2
    for (int part = 0; part < 4; ++part) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * part));
        const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')),
                                          _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
        mask |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(ends)))
                << (16 * part);
    }
#else
    for (int i = 0; i < 64; ++i)
        if (p[i] == '\n' || p[i] == '\r') mask |= std::uint64_t{1} << i;
#endif
    return mask;
}

// Calls record(p) with the first field of every data record of the run
// [first, last) in order, until it returns false (then false). The line starts
// (the run's start and every byte after a line end) are found 64 bytes at a time
// from masks, so no record waits for the scan of the one before it; each line is
// then judged on its own: blank, comment or record, after leading separators.
template <typename Record> inline bool forEachRecord(char* first, char* last, Record&& record) {
    std::uint64_t carry = 1; // `first` starts a line
    for (char* chunk = first; chunk < last; chunk += 64) {
        const std::uint64_t ends = lineEndsOf64(chunk);
        std::uint64_t starts = (ends << 1) | carry;
        carry = ends >> 63;
        if (last - chunk < 64) starts &= (std::uint64_t{1} << (last - chunk)) - 1;
        for (; starts != 0; starts &= starts - 1) {
            char* p = chunk + std::countr_zero(starts);
            while (classOf(p) == kSeparator)
                ++p;
            if (classOf(p) == kLineEnd || *p == '#' || *p == '%' || *p == '\'') continue;
            if (!record(p)) return false;
        }
    }
    return true;
}

} // namespace tarnic::detail::scan
