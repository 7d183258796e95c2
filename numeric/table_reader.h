// Streaming reader of plain-text tables, shared by intake and demultiplex.
//
// Internal to the numeric library: the program calls the routines in intake.h and
// demultiplex.h. It lives in a header of its own so the tests can drive it with
// tiny read blocks and so every routine agrees on what a record is.
//
// Table format, byte by byte:
//  - Lines end at LF, at CR, or at the end of the file. CR LF is therefore a line
//    end followed by an empty line, which is skipped like any blank line.
//  - A UTF-8 byte-order mark (EF BB BF) at the very start of the file is ignored.
//  - Fields are separated by runs of blanks, tabs, commas, semicolons, vertical
//    tabs and form feeds; separators at the start of a line are skipped.
//  - A line with no field (only separators) is blank. A line whose first field
//    begins with '#', '%' or '\'' is a comment. Blank and comment lines are
//    skipped; every other line is a data record.
//  - A number is an optional sign (+ or -), digits with an optional decimal point
//    (at least one digit), and an optional exponent introduced by e, E, d or D
//    (Fortran style) with its own optional sign. It is rounded to the nearest
//    float. Values that round to infinity, and "inf"/"nan" spellings, are not
//    numbers; magnitudes too small for a float become a signed zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

namespace tarnic::detail {

// A field longer than this many bytes is never a number; the reader keeps at most
// this much of a field in memory, so a huge garbage line costs no memory.
inline constexpr std::size_t kMaxFieldLength = 4096;

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

// Parses the whole of [first, last) as a number in the table format above and
// stores it, rounded to float, in `value`. Returns false, leaving `value` alone,
// when the text is anything else (empty, trailing characters, not finite, out of
// float range). The text may be modified in place (a Fortran 'd' becomes 'e').
bool parseNumber(char* first, char* last, float& value);

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
    explicit TableReader(const std::filesystem::path& file,
                         std::size_t blockSize = kDefaultBlockSize);

    // True when the file could not be opened or a read failed; what was read
    // before a failed read stays valid.
    bool failed() const noexcept { return failed_; }

    // Number of bytes read from the file so far (zero for a file of size zero).
    std::uint64_t bytesRead() const noexcept { return bytesRead_; }

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
    std::size_t pos_ = 0; // next unread byte in buffer_
    std::size_t end_ = 0; // one past the last valid byte in buffer_
    std::uint64_t bytesRead_ = 0;
    bool exhausted_ = false; // the file has no more bytes (or a read failed)
    bool failed_ = false;
    bool started_ = false;    // the byte-order mark has been looked for
    bool atLineStart_ = true; // the next byte begins a line
};

} // namespace tarnic::detail
