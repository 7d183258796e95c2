#include "numeric/intake.h"

#include "numeric/line_scan.h"
#include "numeric/table_reader.h"

#include <algorithm>
#include <limits>
#include <string>

namespace tarnic {

namespace detail {

namespace {

constexpr std::int32_t kMaxRecords = std::numeric_limits<std::int32_t>::max() - 1;

using scan::LineBlocks;
using scan::Window;

// How a block scan ended: at the end of the table (or of what was asked), at a
// line too long for its buffer, or at the first run holding a comma when asked to
// stop there (the table's commas must then be judged before it is read).
enum class Outcome { done, tooLong, comma };

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
// be judged); with `stopAtComma` the scan ends before the first run holding one.
template <bool kDecimalComma>
Outcome countFast(const std::filesystem::path& file, std::size_t blockSize, RecordCount& count,
                  bool& commaSeen, bool stopAtComma) {
    LineBlocks blocks(file, blockSize);
    count = {0, kGoodFile};
    char* first = nullptr;
    char* last = nullptr;
    while (count.status == kGoodFile && blocks.next(first, last)) {
        if (stopAtComma && blocks.sawComma()) {
            commaSeen = true;
            return Outcome::comma;
        }
        scan::forEachRecord(first, last, [&count](char* p) {
            const Window w = scan::windowAt<kDecimalComma>(p);
            char* end = nullptr;
            if (count.records == kMaxRecords || !scan::isNumberField<kDecimalComma>(w, p, end)) {
                count.status = count.records + 1;
                return false;
            }
            ++count.records;
            return true;
        });
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
                 std::size_t& read, bool& commaSeen, bool stopAtComma) {
    LineBlocks blocks(file, blockSize);
    read = 0;
    bool bad = false;
    char* first = nullptr;
    char* last = nullptr;
    float* const out = signal.data();
    const std::size_t size = signal.size();
    while (!bad && read < size && blocks.next(first, last)) {
        if (stopAtComma && blocks.sawComma()) {
            commaSeen = true;
            return Outcome::comma;
        }
        scan::forEachRecord(first, last, [&](char* p) {
            const Window w = scan::windowAt<kDecimalComma>(p);
            char* end = nullptr;
            if (!scan::readNumberField<kDecimalComma>(w, p, end, out[read])) {
                bad = true;
                return false;
            }
            return ++read < size;
        });
    }
    commaSeen = blocks.commaInTable();
    return blocks.tooLong() ? Outcome::tooLong : Outcome::done;
}

// The count under a given reading of commas, whatever commas the table holds.
RecordCount countAs(const std::filesystem::path& file, std::size_t blockSize, CommaRole commas) {
    RecordCount count;
    bool ignored = false;
    const Outcome outcome = commas == CommaRole::decimal
                                ? countFast<true>(file, blockSize, count, ignored, false)
                                : countFast<false>(file, blockSize, count, ignored, false);
    if (outcome == Outcome::tooLong) count = countWithReader(file, blockSize, commas);
    return count;
}

std::size_t readAs(const std::filesystem::path& file, std::span<float> signal,
                   std::size_t blockSize, CommaRole commas) {
    std::size_t read = 0;
    bool ignored = false;
    const Outcome outcome = commas == CommaRole::decimal
                                ? readFast<true>(file, signal, blockSize, read, ignored, false)
                                : readFast<false>(file, signal, blockSize, read, ignored, false);
    if (outcome == Outcome::tooLong) read = readWithReader(file, signal, blockSize, commas);
    return read;
}

} // namespace

// The table is first scanned with commas as separators, and that scan is the
// answer when the table holds no comma. At the first run holding a comma the scan
// stops: the commas are judged, and the table is scanned again as they read.
RecordCount countFileRecords(const std::filesystem::path& file, std::size_t blockSize) {
    bool commaSeen = false;
    RecordCount count;
    const Outcome outcome = countFast<false>(file, blockSize, count, commaSeen, true);
    if (outcome == Outcome::tooLong) count = countWithReader(file, blockSize, CommaRole::separator);
    if (!commaSeen) return count;
    const CommaVerdict verdict = judgeCommas(file);
    if (verdict.role == CommaRole::decimal) return countAs(file, blockSize, CommaRole::decimal);
    if (outcome == Outcome::comma) count = countAs(file, blockSize, CommaRole::separator);
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
        const Outcome outcome = readFast<false>(file, signal, blockSize, read, commaSeen, true);
        if (outcome == Outcome::tooLong)
            read = readWithReader(file, signal, blockSize, CommaRole::separator);
        if (commaSeen) {
            const CommaVerdict verdict = judgeCommas(file);
            if (verdict.role == CommaRole::decimal) {
                read = readAs(file, signal, blockSize, CommaRole::decimal);
            } else {
                if (outcome == Outcome::comma)
                    read = readAs(file, signal, blockSize, CommaRole::separator);
                if (verdict.role == CommaRole::ambiguous) {
                    // The records before a bad one that precedes the ambiguity are
                    // what the count reports; otherwise the count refuses the file.
                    const RecordCount count = countAs(file, blockSize, CommaRole::separator);
                    if (!(count.status == count.records + 1 && count.status < verdict.record))
                        read = 0;
                }
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
    return detail::countFileRecords(file, detail::scan::kScanBlockSize);
}

std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal) {
    return detail::readSignalFile(file, signal, detail::scan::kScanBlockSize);
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
