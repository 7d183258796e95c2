#include "numeric/table_reader.h"

#include "numeric/line_scan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <string>
#include <system_error>
#include <vector>

namespace tarnic::detail {

namespace {


constexpr std::array<unsigned char, 256> makeDecimalCommaClasses() {
    std::array<unsigned char, 256> classes = makeByteClasses();
    classes[static_cast<unsigned char>(',')] = kOrdinary;
    return classes;
}

constexpr std::array<unsigned char, 256> kDecimalCommaClasses = makeDecimalCommaClasses();

inline unsigned char byteClass(char c) {
    return kByteClasses[static_cast<unsigned char>(c)];
}

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// For a well-formed number that from_chars found out of float range: true when its
// magnitude is below one (so it underflowed), false when it overflowed. The value
// lies in [10^(m-1), 10^m) with m = exponent + integer digits (leading zeros
// excluded), or m = exponent - leading fraction zeros when the integer part is 0.
bool magnitudeBelowOne(const char* p, const char* last) {
    if (p != last && *p == '-') ++p;
    long long integerDigits = 0;
    long long leadingFractionZeros = 0;
    bool nonZeroSeen = false;
    for (; p != last && isDigit(*p); ++p) {
        if (nonZeroSeen || *p != '0') {
            nonZeroSeen = true;
            ++integerDigits;
        }
    }
    if (p != last && *p == '.') {
        for (++p; p != last && isDigit(*p); ++p) {
            if (nonZeroSeen) continue;
            if (*p == '0')
                ++leadingFractionZeros;
            else
                nonZeroSeen = true;
        }
    }
    long long exponent = 0;
    if (p != last && (*p == 'e' || *p == 'E')) {
        ++p;
        bool negative = false;
        if (p != last && (*p == '+' || *p == '-')) negative = (*p++ == '-');
        constexpr long long kCap = 1'000'000'000'000LL; // far beyond any float range
        for (; p != last && isDigit(*p); ++p)
            exponent = std::min(kCap, exponent * 10 + (*p - '0'));
        if (negative) exponent = -exponent;
    }
    const long long m = exponent + (integerDigits > 0 ? integerDigits : -leadingFractionZeros);
    return m <= 0;
}

} // namespace

FilePtr openFile(const std::filesystem::path& file, const char* mode) {
    // The native open functions take a terminated string, so a name holding a NUL
    // character would open whatever its part before the NUL names (a path given
    // as code units with a length can hold one). No file has such a name.
    if (file.native().find(std::filesystem::path::value_type{}) !=
        std::filesystem::path::string_type::npos)
        return nullptr;
#if defined(_WIN32)
    std::wstring wideMode(mode, mode + std::strlen(mode));
    return FilePtr(_wfopen(file.c_str(), wideMode.c_str()));
#else
    return FilePtr(std::fopen(file.c_str(), mode));
#endif
}

namespace {

bool seekTo(std::FILE* f, std::uint64_t offset) {
#if defined(_WIN32)
    return _fseeki64(f, static_cast<__int64>(offset), SEEK_SET) == 0;
#else
    return fseeko(f, static_cast<off_t>(offset), SEEK_SET) == 0;
#endif
}

} // namespace

TableFile openTable(const std::filesystem::path& file) {
    TableFile table;
    FilePtr f = openFile(file, "rb");
    if (!f) return table;
    // Reads are whole blocks into the caller's buffer; a stdio buffer only copies.
    std::setvbuf(f.get(), nullptr, _IONBF, 0);
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(file, ec);
    if (ec) return table; // a directory, or gone since it was opened
    table.size = size;
    table.tableBytes = size;
    if (size > 0) {
        char last = 0;
        if (!seekTo(f.get(), size - 1) || std::fread(&last, 1, 1, f.get()) != 1 ||
            !seekTo(f.get(), 0))
            return table;
        if (last == kEndOfFileByte) --table.tableBytes;
    }
    table.file = std::move(f);
    return table;
}

bool parseNumber(char* first, char* last, float& value, char decimalSign) {
    if (first == last) return false;
    if (decimalSign == ',') {
        if (std::find(first, last, '.') != last) return false;
        char* const comma = std::find(first, last, ',');
        if (comma != last) *comma = '.';
    }
    if (*first == '+') {
        // from_chars takes no '+'; a second sign after it is not a number.
        ++first;
        if (first == last || *first == '+' || *first == '-') return false;
    }
    float parsed = 0.0f;
    auto result = std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ptr != last && result.ptr != first && (*result.ptr == 'd' || *result.ptr == 'D')) {
        // Fortran exponent letter: from_chars stopped right at it.
        first[result.ptr - first] = 'e';
        result = std::from_chars(first, last, parsed, std::chars_format::general);
    }
    if (result.ptr != last) return false;
    if (result.ec == std::errc{}) {
        // "inf", "nan" and their spellings, and values beyond the workbench's range
        if (!(std::fabs(parsed) <= kMaxMagnitude)) return false;
        value = parsed;
        return true;
    }
    if (result.ec == std::errc::result_out_of_range && magnitudeBelowOne(first, last)) {
        value = (*first == '-') ? -0.0f : 0.0f;
        return true;
    }
    return false;
}

TableReader::TableReader(const std::filesystem::path& file, std::size_t blockSize, CommaRole commas)
    : blockSize_(std::max<std::size_t>(blockSize, 1)), decimalComma_(commas == CommaRole::decimal) {
    TableFile table = openTable(file);
    if (!table.file) {
        failed_ = true;
        exhausted_ = true;
        return;
    }
    file_ = std::move(table.file);
    fileSize_ = table.size;
    bytesLeft_ = table.tableBytes;
    // A kept partial field (at most kMaxFieldLength bytes) plus one fresh block.
    buffer_.resize(blockSize_ + kMaxFieldLength + 1);
}

bool TableReader::fill(std::size_t keepFrom) {
    const std::size_t kept = end_ - keepFrom;
    if (kept > 0 && keepFrom > 0) std::memmove(buffer_.data(), buffer_.data() + keepFrom, kept);
    pos_ -= keepFrom;
    end_ = kept;
    if (exhausted_) return false;
    const std::size_t want =
        static_cast<std::size_t>(std::min<std::uint64_t>(blockSize_, bytesLeft_));
    const std::size_t got = want == 0 ? 0 : std::fread(buffer_.data() + end_, 1, want, file_.get());
    if (got == 0) {
        exhausted_ = true;
        if (std::ferror(file_.get())) failed_ = true;
        return false;
    }
    end_ += got;
    bytesLeft_ -= got;
    return true;
}

int TableReader::skipSeparators() {
    for (;;) {
        while (pos_ < end_ && byteClass(buffer_[pos_]) == kSeparator)
            ++pos_;
        if (pos_ < end_) return static_cast<unsigned char>(buffer_[pos_]);
        if (!fill(pos_)) return -1;
    }
}

bool TableReader::skipLine() {
    for (;;) {
        while (pos_ < end_ && byteClass(buffer_[pos_]) != kLineEnd)
            ++pos_;
        if (pos_ < end_) {
            ++pos_;
            atLineStart_ = true;
            return true;
        }
        if (!fill(pos_)) return false;
    }
}

void TableReader::skipByteOrderMark() {
    started_ = true;
    while (end_ - pos_ < 3 && fill(pos_)) {
    }
    if (end_ - pos_ >= 3 && std::memcmp(buffer_.data() + pos_, "\xEF\xBB\xBF", 3) == 0) pos_ += 3;
}

bool TableReader::nextRecord() {
    if (!started_) skipByteOrderMark();
    if (!atLineStart_ && !skipLine()) return false;
    for (;;) {
        const int c = skipSeparators();
        if (c < 0) return false;
        if (c == '\n' || c == '\r') {
            ++pos_; // blank line
            continue;
        }
        if (c == '#' || c == '%' || c == '\'') {
            if (!skipLine()) return false;
            continue;
        }
        atLineStart_ = false;
        return true;
    }
}

FieldKind TableReader::nextField(float& value) {
    if (atLineStart_) return FieldKind::end;
    const int c = skipSeparators();
    if (c < 0) {
        atLineStart_ = true; // last line without a line end
        return FieldKind::end;
    }
    if (c == '\n' || c == '\r') {
        ++pos_;
        atLineStart_ = true;
        return FieldKind::end;
    }
    const auto& classes = decimalComma_ ? kDecimalCommaClasses : kByteClasses;
    const auto ordinary = [&classes](char b) {
        return classes[static_cast<unsigned char>(b)] == kOrdinary;
    };
    std::size_t start = pos_;
    for (;;) {
        while (pos_ < end_ && ordinary(buffer_[pos_]))
            ++pos_;
        if (pos_ < end_) break; // stopped at a separator or line end
        if (pos_ - start > kMaxFieldLength) {
            // Far too long for a number: step over the rest without keeping it.
            while (fill(pos_)) {
                while (pos_ < end_ && ordinary(buffer_[pos_]))
                    ++pos_;
                if (pos_ < end_) break;
            }
            return FieldKind::bad;
        }
        const bool more = fill(start);
        start = 0;        // fill() moved the field to the front of the buffer
        if (!more) break; // the field ends with the file
    }
    if (pos_ - start > kMaxFieldLength) return FieldKind::bad;
    return parseNumber(buffer_.data() + start, buffer_.data() + pos_, value,
                       decimalComma_ ? ',' : '.')
               ? FieldKind::number
               : FieldKind::bad;
}

namespace {

// Shape of a word read byte by byte: [+|-]digits,digits[(e|E|d|D)[+|-]digits].
enum class WordShape {
    start,
    sign,
    integer,
    comma,
    fraction,
    exponentLetter,
    exponentSign,
    exponent,
    other
};

WordShape nextShape(WordShape s, char c) {
    const bool digit = c >= '0' && c <= '9';
    switch (s) {
    case WordShape::start:
        return digit                    ? WordShape::integer
               : (c == '+' || c == '-') ? WordShape::sign
                                        : WordShape::other;
    case WordShape::sign:
        return digit ? WordShape::integer : WordShape::other;
    case WordShape::integer:
        return digit ? WordShape::integer : c == ',' ? WordShape::comma : WordShape::other;
    case WordShape::comma:
    case WordShape::fraction:
        if (digit) return WordShape::fraction;
        return s == WordShape::fraction && (c == 'e' || c == 'E' || c == 'd' || c == 'D')
                   ? WordShape::exponentLetter
                   : WordShape::other;
    case WordShape::exponentLetter:
        if (c == '+' || c == '-') return WordShape::exponentSign;
        [[fallthrough]];
    case WordShape::exponentSign:
    case WordShape::exponent:
        return digit ? WordShape::exponent : WordShape::other;
    case WordShape::other:
        break;
    }
    return WordShape::other;
}

// First line (and its data record) on which a kind of evidence appeared; line 0
// when it never did.
struct Evidence {
    std::int64_t line = 0;
    std::int64_t record = 0;
    void note(std::int64_t l, std::int64_t r) {
        if (line == 0) {
            line = l;
            record = r;
        }
    }
};

const Evidence& latest(std::initializer_list<const Evidence*> list) {
    const Evidence* last = *list.begin();
    for (const Evidence* e : list)
        if (e->line > last->line) last = e;
    return *last;
}

} // namespace

namespace {

// The evidence about commas gathered line by line; byte() takes the table byte by
// byte (after the byte-order mark), line() a whole line at once where it can.
class CommaJudge {
  public:
    void byte(char c) {
        const char before = previous_;
        if (c == '\n' || c == '\r') {
            if (line_ == Line::data) {
                if (inWord_)
                    endWord();
                else if (afterWord_ && runSemicolon_)
                    semicolonRun_.note(lineNumber_, record_);
            }
            if (!(c == '\n' && previous_ == '\r')) ++lineNumber_;
            line_ = Line::leading;
            leadingComma_ = inWord_ = afterWord_ = runSemicolon_ = false;
            previous_ = c;
            return;
        }
        previous_ = c;
        const bool separator = c == ' ' || c == '\t' || c == ';' || c == '\v' || c == '\f';
        if (line_ == Line::skipped) return;
        if (line_ == Line::leading) {
            if (separator) return;
            if (c == ',') {
                leadingComma_ = true;
                return;
            }
            if (c == '#' || c == '%' || c == '\'') {
                line_ = Line::skipped;
                return;
            }
            line_ = Line::data;
            ++record_;
            if (leadingComma_) listComma_.note(lineNumber_, record_);
        }
        if (separator) {
            if (inWord_) endWord();
            if (c == ';' || c == '\t') runSemicolon_ = true;
            return;
        }
        const bool digit = c >= '0' && c <= '9';
        if (!inWord_) {
            if (afterWord_) (runSemicolon_ ? semicolonRun_ : blankRun_).note(lineNumber_, record_);
            inWord_ = true;
            wordHasComma_ = false;
            shape_ = WordShape::start;
            commaAfterDigit_ = false;
        } else if (commaAfterDigit_ && digit) {
            digitComma_.note(lineNumber_, record_);
        }
        commaAfterDigit_ = c == ',' && before >= '0' && before <= '9';
        if (c == ',') wordHasComma_ = true;
        shape_ = nextShape(shape_, c);
    }

    // The end of the table: a last line without a line end is finished.
    void finish() {
        if (line_ == Line::data && inWord_)
            endWord();
        else if (line_ == Line::data && afterWord_ && runSemicolon_)
            semicolonRun_.note(lineNumber_, record_);
    }

    // Judges the line starting at `p` (at a line start) through its line end, the
    // first line end at or after `p`; returns the byte after that line end. The
    // kSlack bytes after it may be read. A line within 64 bytes that starts with a
    // word and separates its words by semicolons and tabs only (the lines of a
    // decimal-comma table) is judged from bit masks of its bytes; any other goes
    // byte by byte.
    char* line(char* p) {
        const Masks m = masksAt(p);
        if (m.lineEnds != 0) {
            const int length = std::countr_zero(m.lineEnds);
            const std::uint64_t inLine = (std::uint64_t{1} << length) - 1;
            const std::uint64_t separators = m.separators & inLine;
            if (length > 0 && (m.blanks & inLine) == 0 && (separators & 1) == 0 &&
                (m.commas & 1) == 0) {
                const char c = *p;
                if (c == '#' || c == '%' || c == '\'') {
                    // A comment line: nothing to judge.
                } else {
                    ++record_;
                    if (separators != 0) semicolonRun_.note(lineNumber_, record_);
                    const std::uint64_t commas = m.commas & inLine;
                    if ((commas & (m.digits << 1) & (m.digits >> 1)) != 0)
                        digitComma_.note(lineNumber_, record_);
                    if (commas != 0 && listComma_.line == 0)
                        noteListCommas(p, m, commas, separators, length);
                }
                ++lineNumber_; // the line end follows a byte that is none
                previous_ = p[length];
                return p + length + 1;
            }
        }
        for (;; ++p) {
            byte(*p);
            if (*p == '\n' || *p == '\r') return p + 1;
        }
    }

    // True when every kind of evidence has been seen: the rest of the table
    // cannot change the verdict.
    bool settled() const {
        return digitComma_.line != 0 && listComma_.line != 0 && semicolonRun_.line != 0 &&
               blankRun_.line != 0;
    }

    CommaVerdict verdict() const {
        CommaVerdict verdict;
        const bool digitCommas = digitComma_.line != 0;
        const bool lists = listComma_.line != 0;
        const bool semicolons = semicolonRun_.line != 0;
        const bool blanks = blankRun_.line != 0;
        if (!digitCommas) return verdict;
        if (!lists && semicolons && !blanks) {
            verdict.role = CommaRole::decimal;
            return verdict;
        }
        if (lists && !semicolons) return verdict;
        const Evidence& at = !semicolons ? digitComma_
                             : !lists    ? latest({&digitComma_, &semicolonRun_, &blankRun_})
                                         : latest({&digitComma_, &listComma_, &semicolonRun_});
        verdict.role = CommaRole::ambiguous;
        verdict.line = at.line;
        verdict.record = at.record;
        return verdict;
    }

  private:
    enum class Line { leading, data, skipped };

    // The 64 bytes from `p`, bit i for byte i.
    struct Masks {
        std::uint64_t lineEnds = 0;
        std::uint64_t separators = 0; // blank, tab, ';', vertical tab, form feed
        std::uint64_t blanks = 0;     // blank, vertical tab, form feed
        std::uint64_t commas = 0;
        std::uint64_t digits = 0;
    };

    static Masks masksAt(const char* p) {
        Masks m;
#if TARNIC_SCAN_SSE2
        for (int part = 0; part < 4; ++part) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * part));
            const auto eq = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
            const auto bits = [part](__m128i v) {
                return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(v)))
                       << (16 * part);
            };
            const __m128i blanks = _mm_or_si128(eq(' '), _mm_or_si128(eq('\v'), eq('\f')));
            m.lineEnds |= bits(_mm_or_si128(eq('\n'), eq('\r')));
            m.blanks |= bits(blanks);
            m.separators |= bits(_mm_or_si128(blanks, _mm_or_si128(eq('\t'), eq(';'))));
            m.commas |= bits(eq(','));
            m.digits |= bits(_mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('0' - 1)),
                                           _mm_cmplt_epi8(bytes, _mm_set1_epi8('9' + 1))));
        }
#else
        for (int i = 0; i < 64; ++i) {
            const std::uint64_t bit = std::uint64_t{1} << i;
            const char c = p[i];
            if (c == '\n' || c == '\r') m.lineEnds |= bit;
            if (c == ' ' || c == '\v' || c == '\f') m.blanks |= bit;
            if (c == ' ' || c == '\v' || c == '\f' || c == '\t' || c == ';') m.separators |= bit;
            if (c == ',') m.commas |= bit;
            if (c >= '0' && c <= '9') m.digits |= bit;
        }
#endif
        return m;
    }

    // Notes a list comma when a word of the line holding a comma is not
    // decimal-shaped ([+|-]digits,digits[(e|E|d|D)[+|-]digits]). A word of
    // digits and one comma with a digit on either side, after an optional sign,
    // is decided from the masks; any other goes to decimalShaped().
    void noteListCommas(const char* p, const Masks& m, std::uint64_t commas,
                        std::uint64_t separators, int length) {
        const std::uint64_t wordEnds = separators | (std::uint64_t{1} << length);
        while (commas != 0) {
            const int comma = std::countr_zero(commas);
            const std::uint64_t before = separators & ((std::uint64_t{1} << comma) - 1);
            const int start = before == 0 ? 0 : 64 - std::countl_zero(before);
            const int end = std::countr_zero(wordEnds & ~((std::uint64_t{2} << comma) - 1));
            const int body = start + (p[start] == '+' || p[start] == '-' ? 1 : 0);
            const std::uint64_t word = ((std::uint64_t{1} << end) - 1) & ~((std::uint64_t{1} << body) - 1);
            const std::uint64_t wordCommas = commas & word;
            const bool plain = (wordCommas & (wordCommas - 1)) == 0 && comma > body &&
                               comma < end - 1 && (word & ~(m.digits | wordCommas)) == 0;
            if (!plain && !decimalShaped(p + start, p + end)) {
                listComma_.note(lineNumber_, record_);
                return;
            }
            commas &= ~word;
        }
    }

    static bool decimalShaped(const char* p, const char* last) {
        const auto digits = [&p, last] {
            const char* const from = p;
            while (p != last && *p >= '0' && *p <= '9')
                ++p;
            return p != from;
        };
        if (*p == '+' || *p == '-') ++p;
        if (!digits() || p == last || *p++ != ',' || !digits()) return false;
        if (p == last) return true;
        if (*p != 'e' && *p != 'E' && *p != 'd' && *p != 'D') return false;
        ++p;
        if (p != last && (*p == '+' || *p == '-')) ++p;
        return digits() && p == last;
    }

    void endWord() {
        if (wordHasComma_ && shape_ != WordShape::fraction && shape_ != WordShape::exponent)
            listComma_.note(lineNumber_, record_);
        inWord_ = false;
        afterWord_ = true;
        runSemicolon_ = false;
    }

    Evidence digitComma_, listComma_, semicolonRun_, blankRun_;
    Line line_ = Line::leading;
    std::int64_t lineNumber_ = 1;
    std::int64_t record_ = 0;
    bool leadingComma_ = false;
    bool inWord_ = false;
    bool wordHasComma_ = false;
    WordShape shape_ = WordShape::start;
    bool afterWord_ = false;    // a word of this record has ended
    bool runSemicolon_ = false; // the separator run since then holds ';' or a tab
    char previous_ = 0;
    bool commaAfterDigit_ = false;
};

} // namespace

CommaVerdict judgeCommasStreaming(const std::filesystem::path& file) {
    TableFile table = openTable(file);
    if (!table.file) return {};
    CommaJudge judge;
    std::vector<char> buffer(kDefaultBlockSize);
    std::uint64_t left = table.tableBytes;
    bool first = true;
    while (left > 0) {
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), left));
        const std::size_t got = std::fread(buffer.data(), 1, want, table.file.get());
        if (got == 0) break;
        left -= got;
        std::size_t i = 0;
        if (first) {
            first = false;
            if (got >= 3 && std::memcmp(buffer.data(), "\xEF\xBB\xBF", 3) == 0) i = 3;
        }
        for (; i < got; ++i)
            judge.byte(buffer[i]);
    }
    judge.finish();
    return judge.verdict();
}

CommaVerdict judgeCommas(const std::filesystem::path& file) {
    scan::LineBlocks blocks(file, scan::kScanBlockSize);
    CommaJudge judge;
    char* first = nullptr;
    char* last = nullptr;
    while (!judge.settled() && blocks.next(first, last)) {
        for (char* p = first; p < last;)
            p = judge.line(p);
    }
    if (blocks.tooLong()) return judgeCommasStreaming(file);
    // The last line's end was appended by the blocks when the file had none.
    return judge.verdict();
}

} // namespace tarnic::detail
