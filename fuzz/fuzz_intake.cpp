// libFuzzer target for the table intake of Tarnic.dll: CountFileRecords_dll and
// ReadSignalFile_dll, called the way core/intake.cpp calls them.
//
// Each input is written to a scratch file (one per process, rewritten for every
// input), counted, and, when the count found records, read into a buffer of
// exactly the counted number of samples, so AddressSanitizer reports any write past
// it. What must hold:
//  - the status is one of the documented codes: -1 (good file), 0 (size zero) or
//    nrec + 1 (wrong structure in record nrec + 1), with nrec >= 0;
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
bool modelNumber(std::string field, float& value) {
    if (field.size() > tarnic::detail::kMaxFieldLength) return false;
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

Expected model(const std::uint8_t* data, std::size_t size) {
    Expected e;
    if (size == 0) {
        e.status = tarnic::kEmptyFile;
        return e;
    }
    if (data[size - 1] == 0x1A) --size; // an end-of-file mark closing the file
    std::size_t p = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) p = 3;
    while (p < size) {
        std::size_t lineEnd = p;
        while (lineEnd < size && !isLineEnd(data[lineEnd]))
            ++lineEnd;
        std::size_t q = p;
        while (q < lineEnd && isSeparator(data[q]))
            ++q;
        if (q < lineEnd && data[q] != '#' && data[q] != '%' && data[q] != '\'') {
            std::size_t f = q;
            while (f < lineEnd && !isSeparator(data[f]))
                ++f;
            float v = 0.0f;
            if (!modelNumber(std::string(data + q, data + f), v)) {
                e.status = e.records + 1;
                return e;
            }
            e.values.push_back(v);
            ++e.records;
        }
        p = lineEnd + 1;
    }
    if (e.records == 0) e.status = 1;
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
    INTAKE_CHECK(status == tarnic::kGoodFile || status == tarnic::kEmptyFile || status == nrec + 1,
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
