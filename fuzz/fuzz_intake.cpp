// libFuzzer target for the table intake of Tarnic.dll: CountFileRecords_dll and
// ReadSignalFile_dll, called the way core/intake.cpp calls them.
//
// Each input is written to a scratch file (one per process, rewritten for every
// input), counted, and, when the count found records, read into a buffer of
// exactly the counted number of samples, so AddressSanitizer reports any write past
// it. What must hold:
//  - the status is one of the documented codes: -1 (good file), 0 (size zero),
//    nrec + 1 (wrong structure in record nrec + 1), with nrec >= 0, or -1 - line
//    with nrec 0 (commas readable both as decimal commas and as separators);
//  - count and values agree with an independent, whole-buffer model of the table
//    format below (the library streams the file through a fixed-size block);
//  - every sample read is finite, and the read fills exactly the counted records;
//  - the same results come out with a tiny read block, so fields, line ends and
//    the byte-order mark get split across block boundaries;
//  - a file name built from the input reaches the table only when it names it,
//    and otherwise counts as a file that cannot be read.
// Every input is also checked cut at a position taken from its first byte, which
// gives truncated tables (mid-number, mid-line, mid-mark).
#include "numeric/intake.h"
#include "numeric/table_reader.h"
#include "numeric/tarnic_api.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

[[noreturn]] void fail(const char* what, long long a = 0, long long b = 0) {
    std::fprintf(stderr, "fuzz_intake: invariant violated: %s (%lld, %lld)\n", what, a, b);
    std::fflush(stderr);
    std::abort();
}

#define INTAKE_CHECK(cond, ...)                                                                    \
    do {                                                                                           \
        if (!(cond)) fail(#cond __VA_OPT__(, ) __VA_ARGS__);                                       \
    } while (0)

// The scratch table of this process, rewritten for every input and removed at exit
// with its folders. Its folder has a name outside ASCII, one character of it beyond
// the 16-bit range, so every call converts 1- to 4-byte UTF-8 sequences and a
// surrogate pair from the code units.
class Scratch {
  public:
    Scratch() {
        namespace fs = std::filesystem;
        std::string base = (fs::temp_directory_path() / "tarnic-fuzz-intake-XXXXXX").string();
        if (::mkdtemp(base.data()) == nullptr) fail("cannot create the scratch folder", errno);
        base_ = base;
        folder_ = base_ / fs::path(u8"\u00D6lmessung \u20AC\U0001D11E");
        if (!fs::create_directory(folder_)) fail("cannot create the scratch folder");
        file_ = folder_ / "t";
        const std::u16string folderUnits = folder_.u16string();
        folderCodes_.assign(folderUnits.begin(), folderUnits.end());
        const std::u16string fileUnits = file_.u16string();
        fileCodes_.assign(fileUnits.begin(), fileUnits.end());
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(base_, ignored);
    }

    void write(const std::uint8_t* data, std::size_t size) const {
        std::FILE* f = std::fopen(file_.c_str(), "wb");
        if (f == nullptr) fail("cannot open the scratch file", errno);
        if (size > 0 && std::fwrite(data, 1, size, f) != size) fail("short write", errno);
        if (std::fclose(f) != 0) fail("cannot close the scratch file", errno);
    }

    const std::filesystem::path& folder() const { return folder_; }
    const std::filesystem::path& path() const { return file_; }
    const std::vector<std::int16_t>& codes() const { return fileCodes_; }
    const std::vector<std::int16_t>& folderCodes() const { return folderCodes_; }

  private:
    std::filesystem::path base_, folder_, file_;
    std::vector<std::int16_t> folderCodes_, fileCodes_;
};

// --- The model: the table format evaluated on the whole input at once. ---------

bool isSeparator(std::uint8_t c) {
    return c == ' ' || c == '\t' || c == ',' || c == ';' || c == '\v' || c == '\f';
}

bool isLineEnd(std::uint8_t c) {
    return c == '\n' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// [+|-]digits[.digits][(e|E|d|D)[+|-]digits] with at least one mantissa digit, no
// longer than the reader keeps, rounded by strtof, of magnitude at most 1E+35.
bool modelNumber(std::string field, float& value, bool decimalComma = false) {
    if (field.size() > tarnic::detail::kMaxFieldLength) return false;
    if (decimalComma) {
        // The comma is the decimal sign; a point makes it no number.
        if (field.find('.') != std::string::npos) return false;
        if (const std::size_t comma = field.find(','); comma != std::string::npos)
            field[comma] = '.';
    }
    std::size_t i = 0;
    const std::size_t n = field.size();
    if (i < n && (field[i] == '+' || field[i] == '-')) ++i;
    std::size_t mantissaDigits = 0;
    for (; i < n && isDigit(field[i]); ++i)
        ++mantissaDigits;
    if (i < n && field[i] == '.')
        for (++i; i < n && isDigit(field[i]); ++i)
            ++mantissaDigits;
    if (mantissaDigits == 0) return false;
    if (i < n && (field[i] == 'e' || field[i] == 'E' || field[i] == 'd' || field[i] == 'D')) {
        field[i++] = 'e';
        if (i < n && (field[i] == '+' || field[i] == '-')) ++i;
        std::size_t exponentDigits = 0;
        for (; i < n && isDigit(field[i]); ++i)
            ++exponentDigits;
        if (exponentDigits == 0) return false;
    }
    if (i != n) return false;
    char* end = nullptr;
    const float parsed = std::strtof(field.c_str(), &end);
    if (end != field.c_str() + n) fail("strtof disagrees with the grammar", end - field.c_str());
    if (!std::isfinite(parsed) || std::fabs(parsed) > 1e35f) return false;
    value = parsed;
    return true;
}

struct Expected {
    std::int32_t records = 0;
    std::int32_t status = tarnic::kGoodFile;
    std::vector<float> values;
};

// A word that is a number with its one comma as the decimal sign:
// [+|-]digits,digits[(e|E|d|D)[+|-]digits].
bool decimalShaped(const std::string& w) {
    std::size_t i = 0;
    const auto digits = [&] {
        const std::size_t from = i;
        while (i < w.size() && isDigit(w[i]))
            ++i;
        return i > from;
    };
    if (i < w.size() && (w[i] == '+' || w[i] == '-')) ++i;
    if (!digits() || i >= w.size() || w[i++] != ',' || !digits()) return false;
    if (i < w.size() && (w[i] == 'e' || w[i] == 'E' || w[i] == 'd' || w[i] == 'D')) {
        ++i;
        if (i < w.size() && (w[i] == '+' || w[i] == '-')) ++i;
        if (!digits()) return false;
    }
    return i == w.size();
}

// The lines of the table: [begin, end) and the 1-based line number a text editor
// shows (CR LF is one line end; here it also gives an empty line, as the reader's
// CR and LF both end a line).
struct Line {
    std::size_t begin, end;
    std::int64_t number;
};

std::vector<Line> linesOf(const std::uint8_t* data, std::size_t begin, std::size_t size) {
    std::vector<Line> lines;
    std::int64_t number = 1;
    for (std::size_t p = begin; p < size;) {
        std::size_t e = p;
        while (e < size && !isLineEnd(data[e]))
            ++e;
        lines.push_back({p, e, number});
        if (e < size && !(data[e] == '\n' && e > 0 && data[e - 1] == '\r')) ++number;
        p = e + 1;
    }
    return lines;
}

// The records of the table under one reading of commas.
Expected modelRecords(const std::uint8_t* data, const std::vector<Line>& lines, bool decimalComma) {
    Expected e;
    for (const Line& line : lines) {
        std::size_t q = line.begin;
        while (q < line.end && isSeparator(data[q]))
            ++q;
        if (q == line.end || data[q] == '#' || data[q] == '%' || data[q] == '\'') continue;
        std::size_t f = q;
        while (f < line.end && !(isSeparator(data[f]) && !(decimalComma && data[f] == ',')))
            ++f;
        float v = 0.0f;
        if (!modelNumber(std::string(data + q, data + f), v, decimalComma)) {
            e.status = e.records + 1;
            return e;
        }
        e.values.push_back(v);
        ++e.records;
    }
    if (e.records == 0) e.status = 1;
    return e;
}

Expected model(const std::uint8_t* data, std::size_t size) {
    Expected e;
    if (size == 0) {
        e.status = tarnic::kEmptyFile;
        return e;
    }
    if (data[size - 1] == 0x1A) --size; // an end-of-file mark closing the file
    std::size_t start = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) start = 3;
    const std::vector<Line> lines = linesOf(data, start, size);

    // The commas: first line (and its record) of each kind of evidence, 0 if none.
    struct Seen {
        std::int64_t line = 0, record = 0;
    } digitComma, listComma, semicolonRun, blankRun;
    const auto note = [](Seen& s, std::int64_t line, std::int64_t record) {
        if (s.line == 0) s = {line, record};
    };
    std::int64_t record = 0;
    for (const Line& line : lines) {
        std::size_t q = line.begin;
        bool leadingComma = false;
        for (; q < line.end && isSeparator(data[q]); ++q)
            leadingComma = leadingComma || data[q] == ',';
        if (q == line.end || data[q] == '#' || data[q] == '%' || data[q] == '\'') continue;
        ++record;
        if (leadingComma) note(listComma, line.number, record);
        // Words split at separators other than the comma.
        const auto splits = [](std::uint8_t c) { return isSeparator(c) && c != ','; };
        bool afterWord = false;
        for (std::size_t p = q; p < line.end;) {
            bool semicolon = false;
            for (; p < line.end && splits(data[p]); ++p)
                semicolon = semicolon || data[p] == ';' || data[p] == '\t';
            if (p == line.end) {
                if (afterWord && semicolon) note(semicolonRun, line.number, record);
                break;
            }
            if (afterWord) note(semicolon ? semicolonRun : blankRun, line.number, record);
            std::size_t w = p;
            while (w < line.end && !splits(data[w]))
                ++w;
            const std::string word(data + p, data + w);
            for (std::size_t i = 1; i + 1 < word.size(); ++i)
                if (word[i] == ',' && isDigit(word[i - 1]) && isDigit(word[i + 1]))
                    note(digitComma, line.number, record);
            if (word.find(',') != std::string::npos && !decimalShaped(word))
                note(listComma, line.number, record);
            afterWord = true;
            p = w;
        }
    }
    const Expected separated = modelRecords(data, lines, false);
    if (digitComma.line == 0) return separated;
    const bool lists = listComma.line != 0, semicolons = semicolonRun.line != 0;
    if (!lists && semicolons && blankRun.line == 0) return modelRecords(data, lines, true);
    if (lists && !semicolons) return separated;
    Seen at = digitComma;
    for (const Seen* s : {&listComma, &semicolonRun, &blankRun}) {
        const bool counts =
            semicolons && (s == &semicolonRun || (lists ? s == &listComma : s == &blankRun));
        if (counts && s->line > at.line) at = *s;
    }
    // A bad record before the ambiguous one is reported first.
    if (separated.status == separated.records + 1 && separated.status < at.record) return separated;
    e.status = static_cast<std::int32_t>(-1 - at.line);
    return e;
}

bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// --- The checks. -----------------------------------------------------------------

std::int32_t lengthOf(const std::vector<std::int16_t>& codes) {
    return static_cast<std::int32_t>(codes.size());
}

// Counts and reads the table through the binding and returns what the model says
// it holds.
Expected checkTable(const Scratch& scratch, const std::uint8_t* data, std::size_t size) {
    scratch.write(data, size);
    const Expected expected = model(data, size);

    // Every argument by reference, as the program passes them; the routines may
    // overwrite any of them, so each call gets fresh copies.
    std::int32_t pathLen = lengthOf(scratch.codes());
    std::int32_t nrec = -7;
    std::int32_t status = -7;
    CountFileRecords_dll(scratch.codes().data(), &pathLen, &nrec, &status);

    INTAKE_CHECK(nrec >= 0, nrec);
    INTAKE_CHECK(status == tarnic::kGoodFile || status == tarnic::kEmptyFile ||
                     status == nrec + 1 || (status <= -2 && nrec == 0),
                 status, nrec);
    INTAKE_CHECK((status == tarnic::kEmptyFile) == (size == 0), status, size);
    INTAKE_CHECK(nrec == expected.records, nrec, expected.records);
    INTAKE_CHECK(status == expected.status, status, expected.status);

    if (nrec > 0) {
        // Exactly nrec samples (the program's 1-based Array1 holds nrec values and
        // passes its first one), poisoned so an untouched entry shows.
        const std::size_t n = static_cast<std::size_t>(nrec);
        const std::unique_ptr<float[]> signal(new float[n]);
        for (std::size_t i = 0; i < n; ++i)
            signal[i] = std::nanf("");
        pathLen = lengthOf(scratch.codes());
        std::int32_t count = nrec;
        ReadSignalFile_dll(scratch.codes().data(), &pathLen, &count, signal.get());
        for (std::size_t i = 0; i < n; ++i) {
            INTAKE_CHECK(std::isfinite(signal[i]), static_cast<long long>(i));
            INTAKE_CHECK(sameBits(signal[i], expected.values[i]), static_cast<long long>(i));
        }
    }

    // A tiny read block puts block boundaries everywhere in the table: the count
    // must not change, and a read of one sample more than counted must stop at
    // exactly the counted records and zero the rest, whether the file ended there
    // or a bad record followed. (The routines above use the default block, which
    // holds any input the fuzzer makes in one piece.)
    const std::size_t block = size == 0 ? 1 : 1 + data[size - 1] % 16;
    const tarnic::RecordCount small = tarnic::detail::countFileRecords(scratch.path(), block);
    INTAKE_CHECK(small.records == nrec && small.status == status, small.records, small.status);
    std::vector<float> values(static_cast<std::size_t>(nrec) + 1, 99.0f);
    const std::size_t got = tarnic::detail::readSignalFile(scratch.path(), values, block);
    INTAKE_CHECK(got == static_cast<std::size_t>(nrec), static_cast<long long>(got), nrec);
    for (std::size_t i = 0; i < got; ++i)
        INTAKE_CHECK(sameBits(values[i], expected.values[i]), static_cast<long long>(i));
    INTAKE_CHECK(sameBits(values.back(), 0.0f));
    return expected;
}

// The table's folder plus a file name of up to 7 code units taken from the input:
// byte b gives unit b, except 0xD8 and 0xDC, which give a high and a low surrogate.
// Such a name denotes the table itself ("t", "./t", "/t", ...), or nothing that can
// be read (no such file, the folder, its parent). A name with a NUL unit denotes no
// file at all: the length says where the name ends, not a terminator.
void checkDerivedPath(const Scratch& scratch, const std::uint8_t* data, std::size_t size,
                      const Expected& table) {
    if (size < 2) return;
    const std::size_t units = std::min<std::size_t>(data[1] % 8, size - 2);
    std::vector<std::int16_t> codes = scratch.folderCodes();
    codes.push_back('/');
    std::u16string name;
    for (std::size_t i = 0; i < units; ++i) {
        const std::uint8_t b = data[2 + i];
        const char16_t unit = b == 0xD8 ? char16_t{0xD834} : b == 0xDC ? char16_t{0xDD1E} : b;
        codes.push_back(static_cast<std::int16_t>(unit));
        name.push_back(unit);
    }

    bool namesTable = false;
    if (name.find(u'\0') == std::u16string::npos) {
        try {
            const std::filesystem::path derived(scratch.folder().u16string() + u"/" + name);
            std::error_code ec;
            namesTable = std::filesystem::is_regular_file(derived, ec) &&
                         std::filesystem::equivalent(derived, scratch.path(), ec);
        } catch (const std::exception&) {
            // An unpaired surrogate: the library reads it as U+FFFD, and no file
            // in the scratch folder has that character in its name.
        }
    }

    std::int32_t pathLen = lengthOf(codes);
    std::int32_t nrec = -7;
    std::int32_t status = -7;
    CountFileRecords_dll(codes.data(), &pathLen, &nrec, &status);
    if (namesTable) {
        INTAKE_CHECK(nrec == table.records && status == table.status, nrec, status);
    } else {
        // "Wrong structure within record 1", the code of a file that cannot be read.
        INTAKE_CHECK(nrec == 0 && status == 1, nrec, status);
    }

    // The read trusts the caller's count: every sample the file does not supply
    // is zero, all of them when the name denotes nothing readable.
    const std::int32_t asked = std::max<std::int32_t>(table.records, 1);
    std::vector<float> signal(static_cast<std::size_t>(asked), std::nanf(""));
    pathLen = lengthOf(codes);
    std::int32_t count = asked;
    ReadSignalFile_dll(codes.data(), &pathLen, &count, signal.data());
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const float want = namesTable && i < table.values.size() ? table.values[i] : 0.0f;
        INTAKE_CHECK(sameBits(signal[i], want), static_cast<long long>(i));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Scratch scratch;
    if (size > 1) checkTable(scratch, data, data[0] % size);
    const Expected table = checkTable(scratch, data, size);
    checkDerivedPath(scratch, data, size, table);
    return 0;
}
