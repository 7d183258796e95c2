#include "numeric/intake.h"

#include "numeric/table_reader.h"

#include <algorithm>
#include <limits>
#include <string>

namespace tarnic {

namespace detail {

RecordCount countFileRecords(const std::filesystem::path& file, std::size_t blockSize) {
    constexpr std::int32_t kMaxRecords = std::numeric_limits<std::int32_t>::max() - 1;
    TableReader reader(file, blockSize);
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

std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal,
                           std::size_t blockSize) {
    std::size_t read = 0;
    if (!signal.empty()) {
        TableReader reader(file, blockSize);
        while (read < signal.size() && reader.nextRecord() &&
               reader.nextField(signal[read]) == FieldKind::number) {
            ++read;
        }
    }
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
        append(unit >= 0xD800 && unit <= 0xDFFF ? kReplacement : unit);
    }
    return std::filesystem::path(utf8);
}

} // namespace tarnic
