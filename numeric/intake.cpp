#include "numeric/intake.h"

#include "numeric/table_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace tarnic {

namespace detail {

namespace {

constexpr std::int32_t kMaxRecords = std::numeric_limits<std::int32_t>::max() - 1;

// A line longer than this (plus one read block) sends the fast path back to the
// streaming reader, which needs no memory for it.
constexpr std::size_t kMaxCarriedLine = std::size_t{1} << 20;


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

constexpr std::uint64_t byteSwapped(std::uint64_t x) {
    std::uint64_t y = 0;
    for (int i = 0; i < 8; ++i, x >>= 8)
        y = (y << 8) | (x & 0xFF);
    return y;
}

// Bytes readable after the last byte handed on, so word-wise scans may overrun it.
constexpr std::size_t kSlack = 16;

// Reads a table in blocks and hands it on as runs of whole lines, each run ending
// with a line-end byte, so the scanning loops need no bounds checks: every loop
// stops at a line end at the latest. The last line of the file, if it has no line
// end, gets one appended. A byte-order mark at the start is skipped.
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

// Steps from a field start over the field; returns its end.
template <bool kDecimalComma> inline char* fieldEnd(char* p) {
    while (!endsField<kDecimalComma>(p))
        ++p;
    return p;
}

// The text of a plain decimal number read at `p`: [+|-]digits[.digits] with its
// digits (at most 19, else `exact` is false) as an integer and the power of ten
// that scales it. `end` is where the text stops.
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

// The shape of a short field at `p`, found 16 bytes at a time: its length and
// where its decimal point is, when it is [+|-]digits[.digits] with at least one
// digit and ends (at a separator or line end) within 16 bytes. Otherwise
// `plain` is false and the caller takes the byte-by-byte path. The buffer has 16
// spare bytes after every run, so the load may reach past the run.
struct FieldShape {
    bool plain = false;
    int length = 0;
    int signLength = 0;
    int point = -1; // offset of the decimal point, -1 without one
};

template <bool kDecimalComma> inline FieldShape shapeOf(const char* p) {
    FieldShape shape;
#if defined(__SSE2__) || defined(_M_X64)
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const auto eq = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
    // Separators and line ends: blank, ',', ';' and the controls 9 to 13 (tab, LF,
    // vertical tab, form feed, CR).
    const __m128i controls = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(8)),
                                           _mm_cmplt_epi8(bytes, _mm_set1_epi8(14)));
    const unsigned ends = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_or_si128(_mm_or_si128(controls, eq(' ')),
                     _mm_or_si128(kDecimalComma ? _mm_setzero_si128() : eq(','), eq(';')))));
    if (ends == 0) return shape;
    const int length = std::countr_zero(ends);
    const unsigned digits = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('0' - 1)),
                                        _mm_cmplt_epi8(bytes, _mm_set1_epi8('9' + 1)))));
    const unsigned points = static_cast<unsigned>(_mm_movemask_epi8(eq(kDecimalComma ? ',' : '.')));
    const int signLength = (*p == '+' || *p == '-') ? 1 : 0;
    const unsigned field = ((1u << length) - 1) & ~((1u << signLength) - 1);
    const unsigned fieldPoints = points & field;
    if ((digits & field) == 0 || ((digits | fieldPoints) & field) != field ||
        (fieldPoints & (fieldPoints - 1)) != 0)
        return shape;
    shape.plain = true;
    shape.length = length;
    shape.signLength = signLength;
    shape.point = fieldPoints == 0 ? -1 : std::countr_zero(fieldPoints);
#else
    (void)p;
#endif
    return shape;
}

// Whether the field starting at `p` is a number, as parseNumber() decides; `end`
// gets the end of the field. A plain decimal of at most 30 digits is far inside
// the float range and needs no conversion; anything else (an exponent, more
// digits, other characters) is decided by parseNumber().
template <bool kDecimalComma> inline bool isNumberField(char* p, char*& end) {
    const FieldShape shape = shapeOf<kDecimalComma>(p);
    if (shape.plain) {
        end = p + shape.length;
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
// the field. A plain decimal of at most 15 digits, scaled by at most 10^22 either
// way, is converted in double precision by one correctly rounded operation (both
// operands are exact doubles) and then rounded to float. That second rounding can
// differ from rounding the decimal once only when the double lands exactly on the
// midpoint between two floats; such values, values outside the normal float
// range and every other form go to parseNumber().
template <bool kDecimalComma> inline bool readNumberField(char* p, char*& end, float& value) {
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const FieldShape shape = shapeOf<kDecimalComma>(p);
    DecimalText d{};
    if (shape.plain) {
        // Digits at known places: no test of what each byte is.
        const char* q = p + shape.signLength;
        const char* const last = p + shape.length;
        d.negative = *p == '-';
        d.end = const_cast<char*>(last);
        d.digitCount = static_cast<int>(last - q) - (shape.point >= 0 ? 1 : 0);
        d.scale = shape.point >= 0 ? shape.point + 1 - shape.length : 0;
        for (; q != last; ++q)
            if (q != p + shape.point) d.digits = d.digits * 10 + static_cast<unsigned>(*q - '0');
    } else {
        d = readDecimal<kDecimalComma>(p);
    }
    if (endsField<kDecimalComma>(d.end) && d.digitCount > 0 && d.digitCount <= 15) {
        end = d.end;
        const double magnitude = static_cast<double>(d.digits) / kPowers[-d.scale];
        const std::uint64_t bits = std::bit_cast<std::uint64_t>(magnitude);
        // The 29 double fraction bits below float precision: 1 followed by zeros is
        // a midpoint between two floats.
        const bool midpoint = (bits & ((std::uint64_t{1} << 29) - 1)) == (std::uint64_t{1} << 28);
        if (magnitude == 0.0 ||
            (!midpoint && magnitude >= static_cast<double>(std::numeric_limits<float>::min()) &&
             magnitude <= static_cast<double>(kMaxMagnitude))) {
            const float f = static_cast<float>(magnitude);
            if (magnitude == 0.0 || std::fabs(f) <= kMaxMagnitude) {
                value = d.negative ? -f : f;
                return true;
            }
        }
    }
    end = fieldEnd<kDecimalComma>(d.end);
    return static_cast<std::size_t>(end - p) <= kMaxFieldLength &&
           parseNumber(p, end, value, kDecimalComma ? ',' : '.');
}

// Skips blank and comment lines from `p`; returns the start of the next record's
// first field, or `last` when the run has no more records.
inline char* nextRecord(char* p, char* last) {
    // `p` may stand one past `last`: the LF of a CR LF split between two runs.
    while (p < last) {
        while (classOf(p) == kSeparator)
            ++p;
        const char c = *p;
        if (classOf(p) == kLineEnd) {
            ++p; // blank line
        } else if (c == '#' || c == '%' || c == '\'') {
            while (classOf(p) != kLineEnd)
                ++p;
            ++p;
        } else {
            return p;
        }
    }
    return last;
}

// Steps to the byte after the line end that closes the line holding `p`, eight
// bytes at a time: a byte of the word equals LF or CR when its XOR with the
// repeated byte is zero. The buffer has eight spare bytes after every run, and the
// run ends with a line end, so the first match lies inside the run.
inline char* pastLineEnd(char* p) {
    constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
    constexpr std::uint64_t kHighs = 0x8080808080808080ULL;
    for (;; p += 8) {
        std::uint64_t word;
        std::memcpy(&word, p, 8);
        if constexpr (std::endian::native != std::endian::little) word = byteSwapped(word);
        const std::uint64_t lf = word ^ (kOnes * '\n');
        const std::uint64_t cr = word ^ (kOnes * '\r');
        const std::uint64_t found = ((lf - kOnes) & ~lf & kHighs) | ((cr - kOnes) & ~cr & kHighs);
        if (found != 0) {
            p += std::countr_zero(found) / 8;
            // CR LF: the LF would only begin a blank line.
            return p + (p[0] == '\r' && p[1] == '\n' ? 2 : 1);
        }
    }
}

enum class Outcome { done, tooLong };

// Counts records until the first bad one; the count of the streaming reader.
RecordCount countWithReader(const std::filesystem::path& file, std::size_t blockSize,
                            CommaRole commas) {
    TableReader reader(file, blockSize, commas);
    RecordCount count{0, kGoodFile};
    float value = 0.0f;
    while (reader.nextRecord()) {
        if (count.records == kMaxRecords || reader.nextField(value) != FieldKind::number) {
            count.status = count.records + 1;
            return count;
        }
        ++count.records;
    }
    if (reader.failed()) {
        count.status = count.records + 1;
    } else if (reader.fileSize() == 0) {
        count.status = kEmptyFile;
    } else if (count.records == 0) {
        count.status = 1; // blank and comment lines only: record 1 is missing
    }
    return count;
}

std::size_t readWithReader(const std::filesystem::path& file, std::span<float> signal,
                           std::size_t blockSize, CommaRole commas) {
    std::size_t read = 0;
    TableReader reader(file, blockSize, commas);
    while (read < signal.size() && reader.nextRecord() &&
           reader.nextField(signal[read]) == FieldKind::number) {
        ++read;
    }
    return read;
}

// `commaSeen` is set when the table holds a comma anywhere (then its commas must
// be judged).
template <bool kDecimalComma>
Outcome countFast(const std::filesystem::path& file, std::size_t blockSize, RecordCount& count,
                  bool& commaSeen) {
    LineBlocks blocks(file, blockSize);
    count = {0, kGoodFile};
    char* first = nullptr;
    char* last = nullptr;
    while (count.status == kGoodFile && blocks.next(first, last)) {
        for (char* p = nextRecord(first, last); p != last; p = nextRecord(p, last)) {
            char* end = nullptr;
            if (count.records == kMaxRecords || !isNumberField<kDecimalComma>(p, end)) {
                count.status = count.records + 1;
                break;
            }
            ++count.records;
            p = pastLineEnd(end);
        }
    }
    commaSeen = blocks.commaInTable();
    if (blocks.tooLong()) return Outcome::tooLong;
    if (count.status != kGoodFile) return Outcome::done;
    if (blocks.failed()) {
        count.status = count.records + 1;
    } else if (blocks.fileSize() == 0) {
        count.status = kEmptyFile;
    } else if (count.records == 0) {
        count.status = 1; // blank and comment lines only: record 1 is missing
    }
    return Outcome::done;
}

template <bool kDecimalComma>
Outcome readFast(const std::filesystem::path& file, std::span<float> signal, std::size_t blockSize,
                 std::size_t& read, bool& commaSeen) {
    LineBlocks blocks(file, blockSize);
    read = 0;
    bool bad = false;
    char* first = nullptr;
    char* last = nullptr;
    while (!bad && read < signal.size() && blocks.next(first, last)) {
        for (char* p = nextRecord(first, last); p != last && read < signal.size();
             p = nextRecord(p, last)) {
            char* end = nullptr;
            if (!readNumberField<kDecimalComma>(p, end, signal[read])) {
                bad = true;
                break;
            }
            ++read;
            p = pastLineEnd(end);
        }
    }
    commaSeen = blocks.commaInTable();
    return blocks.tooLong() ? Outcome::tooLong : Outcome::done;
}

RecordCount countAs(const std::filesystem::path& file, std::size_t blockSize, CommaRole commas,
                    bool& commaSeen) {
    RecordCount count;
    const Outcome outcome = commas == CommaRole::decimal
                                ? countFast<true>(file, blockSize, count, commaSeen)
                                : countFast<false>(file, blockSize, count, commaSeen);
    if (outcome == Outcome::tooLong) count = countWithReader(file, blockSize, commas);
    return count;
}

std::size_t readAs(const std::filesystem::path& file, std::span<float> signal,
                   std::size_t blockSize, CommaRole commas, bool& commaSeen) {
    std::size_t read = 0;
    const Outcome outcome = commas == CommaRole::decimal
                                ? readFast<true>(file, signal, blockSize, read, commaSeen)
                                : readFast<false>(file, signal, blockSize, read, commaSeen);
    if (outcome == Outcome::tooLong) read = readWithReader(file, signal, blockSize, commas);
    return read;
}

} // namespace

RecordCount countFileRecords(const std::filesystem::path& file, std::size_t blockSize) {
    bool commaSeen = false;
    RecordCount count = countAs(file, blockSize, CommaRole::separator, commaSeen);
    if (!commaSeen) return count;
    const CommaVerdict verdict = judgeCommas(file);
    if (verdict.role == CommaRole::decimal)
        return countAs(file, blockSize, CommaRole::decimal, commaSeen);
    if (verdict.role == CommaRole::ambiguous &&
        !(count.status == count.records + 1 && count.status < verdict.record))
        return {0, ambiguousCommasStatus(verdict.line)};
    return count;
}

std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal,
                           std::size_t blockSize) {
    std::size_t read = 0;
    if (!signal.empty()) {
        bool commaSeen = false;
        read = readAs(file, signal, blockSize, CommaRole::separator, commaSeen);
        if (commaSeen) {
            const CommaVerdict verdict = judgeCommas(file);
            if (verdict.role == CommaRole::decimal) {
                read = readAs(file, signal, blockSize, CommaRole::decimal, commaSeen);
            } else if (verdict.role == CommaRole::ambiguous) {
                // The records before a bad one that precedes the ambiguity are what
                // the count reports; otherwise the count refuses the whole file.
                const RecordCount count = countAs(file, blockSize, CommaRole::separator, commaSeen);
                if (!(count.status == count.records + 1 && count.status < verdict.record)) read = 0;
            }
        }
    }
    std::fill(signal.begin() + static_cast<std::ptrdiff_t>(read), signal.end(), 0.0f);
    return read;
}

RecordCount countFileRecordsStreaming(const std::filesystem::path& file, std::size_t blockSize,
                                      CommaRole commas) {
    return countWithReader(file, blockSize, commas);
}

std::size_t readSignalFileStreaming(const std::filesystem::path& file, std::span<float> signal,
                                    std::size_t blockSize, CommaRole commas) {
    const std::size_t read = readWithReader(file, signal, blockSize, commas);
    std::fill(signal.begin() + static_cast<std::ptrdiff_t>(read), signal.end(), 0.0f);
    return read;
}

} // namespace detail

RecordCount countFileRecords(const std::filesystem::path& file) {
    return detail::countFileRecords(file, detail::kDefaultBlockSize);
}

std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal) {
    return detail::readSignalFile(file, signal, detail::kDefaultBlockSize);
}

std::filesystem::path pathFromCodes(const std::int16_t* codes, std::int32_t length) {
    if (codes == nullptr || length <= 0) return {};
    std::u8string utf8;
    utf8.reserve(static_cast<std::size_t>(length) * 3);
    auto append = [&utf8](char32_t c) {
        if (c < 0x80) {
            utf8.push_back(static_cast<char8_t>(c));
        } else if (c < 0x800) {
            utf8.push_back(static_cast<char8_t>(0xC0 | (c >> 6)));
            utf8.push_back(static_cast<char8_t>(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            utf8.push_back(static_cast<char8_t>(0xE0 | (c >> 12)));
            utf8.push_back(static_cast<char8_t>(0x80 | ((c >> 6) & 0x3F)));
            utf8.push_back(static_cast<char8_t>(0x80 | (c & 0x3F)));
        } else {
            utf8.push_back(static_cast<char8_t>(0xF0 | (c >> 18)));
            utf8.push_back(static_cast<char8_t>(0x80 | ((c >> 12) & 0x3F)));
            utf8.push_back(static_cast<char8_t>(0x80 | ((c >> 6) & 0x3F)));
            utf8.push_back(static_cast<char8_t>(0x80 | (c & 0x3F)));
        }
    };
    constexpr char32_t kReplacement = 0xFFFD;
    for (std::int32_t i = 0; i < length; ++i) {
        const char32_t unit = static_cast<std::uint16_t>(codes[i]);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length) {
            const char32_t next = static_cast<std::uint16_t>(codes[i + 1]);
            if (next >= 0xDC00 && next <= 0xDFFF) {
                append(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
                ++i;
                continue;
            }
        }
        if (unit >= 0xDC80 && unit <= 0xDCFF) {
            // A byte of a name that is not UTF-8, carried as U+DC00 + byte.
            utf8.push_back(static_cast<char8_t>(unit - 0xDC00));
            continue;
        }
        append(unit >= 0xD800 && unit <= 0xDFFF ? kReplacement : unit);
    }
    return std::filesystem::path(utf8);
}

} // namespace tarnic
