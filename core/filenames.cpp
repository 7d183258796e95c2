#include "core/filenames.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace tarnic {
namespace {

// Length of the valid UTF-8 sequence at s[i], or 0 when the byte there does not
// start one (overlong forms, surrogates and values above U+10FFFF are invalid).
std::size_t utf8Sequence(std::string_view s, std::size_t i, char32_t& code) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
    const unsigned char b = byte(i);
    std::size_t length = 0;
    char32_t least = 0;
    if (b < 0x80) return code = b, 1;
    if (b >= 0xC2 && b <= 0xDF) length = 2, code = b & 0x1F, least = 0x80;
    else if (b >= 0xE0 && b <= 0xEF) length = 3, code = b & 0x0F, least = 0x800;
    else if (b >= 0xF0 && b <= 0xF4) length = 4, code = b & 0x07, least = 0x10000;
    else return 0;
    if (i + length > s.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
        code = (code << 6) | (byte(i + k) & 0x3F);
    }
    if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
    return length;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

bool isFolder(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) &&
           ::access(path.c_str(), R_OK | X_OK) == 0;
}

} // namespace

QString decodeFileName(std::string_view bytes) {
    QString name;
    name.reserve(static_cast<qsizetype>(bytes.size()));
    for (std::size_t i = 0; i < bytes.size();) {
        char32_t code = 0;
        const std::size_t length = utf8Sequence(bytes, i, code);
        if (length == 0) {
            name.append(QChar(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes[i]))));
            ++i;
            continue;
        }
        if (code >= 0x10000) {
            name.append(QChar(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10))));
            name.append(QChar(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF))));
        } else {
            name.append(QChar(static_cast<char16_t>(code)));
        }
        i += length;
    }
    return name;
}

std::string encodeFileName(const QString& name) {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(name.size()) * 3);
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t unit = name[i].unicode();
        if (QChar::isHighSurrogate(unit) && i + 1 < name.size() &&
            QChar::isLowSurrogate(name[i + 1].unicode())) {
            appendUtf8(bytes, QChar::surrogateToUcs4(unit, name[i + 1].unicode()));
            ++i;
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            bytes.push_back(static_cast<char>(unit - 0xDC00)); // a byte carried through
        } else if (QChar::isSurrogate(unit)) {
            appendUtf8(bytes, 0xFFFD);
        } else {
            appendUtf8(bytes, unit);
        }
    }
    return bytes;
}

QStringList folderEntries(const QString& folder, EntryKind kind) {
    QStringList names;
    const std::string dir = encodeFileName(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(dir.c_str()), ::closedir);
    if (!stream) return names;
    while (const dirent* entry = ::readdir(stream.get())) {
        const std::string_view name(entry->d_name);
        if (name.empty() || name.front() == '.') continue;
        const std::string path = dir + "/" + std::string(name);
        struct stat st {};
        if (::stat(path.c_str(), &st) != 0) continue;
        const bool wanted = kind == EntryKind::Files ? S_ISREG(st.st_mode) : isFolder(path);
        if (wanted) names << decodeFileName(name);
    }
    return names;
}

bool isReadableFolder(const QString& path) { return isFolder(encodeFileName(path)); }

} // namespace tarnic
