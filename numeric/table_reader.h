// Streaming reader of plain-text tables, shared by intake and demultiplex.
//
// Internal to the numeric library: the program calls the routines in intake.h and
// demultiplex.h. It lives in a header of its own so the tests can drive it with
// tiny read blocks and so every routine agrees on what a record is.
//
// Table format, byte by byte:
//  - An end-of-file byte (0x1A, as old DOS tools write) that is the file's last byte
//    is not part of the table; anywhere else it is an ordinary byte.
//  - Lines end at LF, at CR, or at the end of the file. CR LF is therefore a line
//    end followed by an empty line, which is skipped like any blank line.
//  - A UTF-8 byte-order mark (EF BB BF) at the very start of the file is ignored.
//  - Fields are separated by runs of blanks, tabs, commas, semicolons, vertical
//    tabs and form feeds; separators at the start of a line are skipped.
//  - A line with no field (only separators) is blank. A line whose first field
//    begins with '#', '%' or '\'' is a comment. Blank and comment lines are
//    skipped; every other line is a data record.
//  - Decimal commas: a file whose data records separate their fields by
//    semicolons or tabs and whose commas all stand inside numbers, between two
//    digits ("5,123;7,5"), is read with the comma as the decimal sign (and a
//    point in a number is then an error); judgeCommas() below has the rule.
//  - A number is an optional sign (+ or -), digits with an optional decimal point
//    (at least one digit), and an optional exponent introduced by e, E, d or D
//    (Fortran style) with its own optional sign. It is rounded to the nearest
//    float. Values whose float exceeds kMaxMagnitude (1E+35), and "inf"/"nan"
//    spellings, are not numbers; magnitudes too small for a float become a signed
//    zero.
#pragma once

#include "numeric/intake.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

namespace tarnic::detail {

// What a byte is to the table format: part of a field, a field separator
// (blank, tab, comma, semicolon, vertical tab, form feed) or a line end.
enum ByteClass : unsigned char { kOrdinary = 0, kSeparator = 1, kLineEnd = 2 };

constexpr std::array<unsigned char, 256> makeByteClasses() {
    std::array<unsigned char, 256> classes{};
    for (unsigned char c : {' ', '\t', ',', ';', '\v', '\f'})
        classes[c] = kSeparator;
    classes[static_cast<unsigned char>('\n')] = kLineEnd;
    classes[static_cast<unsigned char>('\r')] = kLineEnd;
    return classes;
}

inline constexpr std::array<unsigned char, 256> kByteClasses = makeByteClasses();

// A field longer than this many bytes is never a number; the reader keeps at most
// this much of a field in memory, so a huge garbage line costs no memory.
inline constexpr std::size_t kMaxFieldLength = 4096;

// Largest magnitude a value may have. The workbench scans a signal for its minimum
// and maximum from the start values +-1E+35 and takes their difference in single
// precision; beyond this bound the scan would keep a start value, and values near
// the float limit (3.4E+38) of both signs would give an infinite range.
inline constexpr float kMaxMagnitude = 1e35f;

// The file's last byte is dropped when it is this end-of-file mark.
inline constexpr char kEndOfFileByte = '\x1A';

// Bytes requested from the file per read.
inline constexpr std::size_t kDefaultBlockSize = std::size_t{1} << 20;

struct FileCloser {
    void operator()(std::FILE* f) const noexcept { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file with an fopen mode ("rb", "wb"); a null pointer when that fails,
// and for a path holding a NUL character, which names no file. Paths are passed
// natively, so non-ASCII names work on every platform.
FilePtr openFile(const std::filesystem::path& file, const char* mode);

// A table file opened for reading: `tableBytes` is how much of it the table holds
// (its size less a final end-of-file byte). A null `file` when it cannot be opened
// or its size cannot be found.
struct TableFile {
    FilePtr file;
    std::uint64_t size = 0;
    std::uint64_t tableBytes = 0;
};
TableFile openTable(const std::filesystem::path& file);

// How the commas of a table are read. Only data records count (leading
// separators, blank and comment lines as above); a record is cut into words at
// blanks, tabs, semicolons, vertical tabs and form feeds, commas staying inside
// words. A word is decimal-shaped when it is [+|-]digits,digits with an optional
// exponent; any other word holding a comma, and a comma before a record's first
// word, shows a comma used as a separator ("list comma"). Between two words the
// run of separators either holds a semicolon or tab, or only blanks; a run after a
// record's last word that holds a semicolon or tab also counts as the former.
//
//  no comma between two digits anywhere            -> separator (as always)
//  decimal-shaped words, no list comma, some
//    semicolon/tab run, no blank-only run            -> decimal
//  list commas and no semicolon/tab run             -> separator ("1.5,2.5")
//  anything else                                    -> ambiguous
//
// So "5,123" alone on its lines is ambiguous (5.123, or the two fields 5 and
// 123), and so are decimal-shaped words separated by blanks, and a mixture of
// semicolons or tabs with list commas. For an ambiguous table `line` is the
// 1-based line (every line counted, CR LF one line end) on which its evidence
// became complete, and `record` the data record on that line.
struct CommaVerdict {
    CommaRole role = CommaRole::separator;
    std::int64_t line = 0;
    std::int64_t record = 0;
};
CommaVerdict judgeCommas(const std::filesystem::path& file);
// The same verdict from a byte-by-byte pass over the whole table: what
// judgeCommas() falls back to for a line longer than its buffer, and its reference.
CommaVerdict judgeCommasStreaming(const std::filesystem::path& file);

// Parses the whole of [first, last) as a number in the table format above and
// stores it, rounded to float, in `value`. Returns false, leaving `value` alone,
// when the text is anything else (empty, trailing characters, not finite, out of
// float range, beyond kMaxMagnitude). The text may be modified in place (a Fortran 'd' becomes
// 'e'). With decimalSign ',' the comma takes the place of the point, and a point makes the text no
// number.
bool parseNumber(char* first, char* last, float& value, char decimalSign = '.');

enum class FieldKind {
    end,    // the record has no more fields
    number, // a field holding a number; its value was stored
    bad,    // a field that is not a number
};

// Reads a table record by record and each record field by field, from a buffer of
// about one read block; it never holds a whole line.
class TableReader {
  public:
    // Opens `file` for reading. A file that cannot be opened reads as having no
    // records and reports failed(). blockSize >= 1 (smaller values are raised to 1).
    // Under CommaRole::decimal commas are part of fields (but still skipped at the
    // start of a line) and numbers take the decimal comma.
    explicit TableReader(const std::filesystem::path& file,
                         std::size_t blockSize = kDefaultBlockSize,
                         CommaRole commas = CommaRole::separator);

    // True when the file could not be opened or a read failed; what was read
    // before a failed read stays valid.
    bool failed() const noexcept { return failed_; }

    // Size of the file in bytes (zero also when it could not be opened).
    std::uint64_t fileSize() const noexcept { return fileSize_; }

    // Moves to the first field of the next data record, skipping what is left of
    // the current one and any blank and comment lines. False at the end of the file.
    bool nextRecord();

    // Reads the next field of the current record. After `end`, the record is
    // finished and further calls keep returning `end` until nextRecord().
    FieldKind nextField(float& value);

  private:
    // Moves the bytes from `keepFrom` on to the front of the buffer (always) and
    // appends up to one block read from the file. False when nothing more could be
    // read.
    bool fill(std::size_t keepFrom);
    // Returns the next byte that is not a separator without consuming it, or -1 at
    // the end of the file.
    int skipSeparators();
    // Consumes bytes through the next line end. False at the end of the file.
    bool skipLine();
    void skipByteOrderMark();

    FilePtr file_;
    std::vector<char> buffer_;
    std::size_t blockSize_;
    bool decimalComma_ = false;
    std::size_t pos_ = 0; // next unread byte in buffer_
    std::size_t end_ = 0; // one past the last valid byte in buffer_
    std::uint64_t fileSize_ = 0;
    std::uint64_t bytesLeft_ = 0; // of the table, not yet read
    bool exhausted_ = false;      // the file has no more bytes (or a read failed)
    bool failed_ = false;
    bool started_ = false;    // the byte-order mark has been looked for
    bool atLineStart_ = true; // the next byte begins a line
};

} // namespace tarnic::detail
