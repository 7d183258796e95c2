// Reading a signal from a plain-text table.
//
// A table holds one record a line; the first field of each record is the signal
// value, any further fields are ignored. The format in brief (table_reader.h has
// every detail):
//  - line ends LF, CR LF or CR; the last line needs no line end; an end-of-file
//    byte 0x1A as the very last byte of the file is ignored;
//  - a UTF-8 byte-order mark at the start is ignored;
//  - fields are separated by any run of blanks, tabs, commas or semicolons, and
//    separators at the start of a line are skipped ("1,5" is two fields, 1 and 5);
//  - blank lines (only blanks and separators) and comment lines (first non-blank
//    character '#', '%' or '\'') are skipped and are not records;
//  - a number is [+|-]digits[.digits][(e|E|d|D)[+|-]digits], e.g. "1.5e-3", ".5",
//    "-3.", "+2E+07", "1.0D-3"; it is rounded to float. A first field that is not
//    such a number, or whose float exceeds 1E+35 in magnitude (e.g. "2e35",
//    "-3E+38"), or that spells inf/nan, gives the record a wrong structure.
//    Magnitudes below the smallest float read as zero.
//  - decimal commas: when every record separates its fields by semicolons or tabs
//    and every comma stands between two digits of a number ("5,123;7,5"), the
//    comma is the decimal sign; a table whose commas could be read either way
//    ("5,123" alone on a line, or semicolons mixed with list commas) is refused
//    (ambiguousCommasStatus). table_reader.h has the exact rule.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <span>

namespace tarnic {

namespace detail {
// How a table's commas are read (decided by judgeCommas() in table_reader.h).
enum class CommaRole { separator, decimal, ambiguous };
} // namespace detail

// RecordCount::status of a good file.
inline constexpr std::int32_t kGoodFile = -1;
// RecordCount::status of a file of size zero.
inline constexpr std::int32_t kEmptyFile = 0;

// RecordCount::status of a table refused because its commas can be read both as
// decimal commas and as separators: -1 - line, so -2 and below, with `records` 0.
// `line` is the 1-based line of the file (every line counted) where the
// ambiguity shows; see detail::judgeCommas() in table_reader.h.
constexpr std::int32_t ambiguousCommasStatus(std::int64_t line) {
    return line >= std::numeric_limits<std::int32_t>::max() - 1
               ? std::numeric_limits<std::int32_t>::min()
               : static_cast<std::int32_t>(-1 - line);
}
// The line named by such a status.
constexpr std::int64_t ambiguousCommasLine(std::int32_t status) {
    return -1 - static_cast<std::int64_t>(status);
}

struct RecordCount {
    // Number of good records (all of them for a good file, otherwise those before
    // the bad one).
    std::int32_t records = 0;
    // kGoodFile (-1): a good file of `records` records.
    // kEmptyFile (0): the file has size zero.
    // records + 1: the record of that number (1-based, counting data records only)
    //              has a wrong structure.
    // -2 and below: ambiguousCommasStatus(line), the commas of the table can be
    //              read two ways; records is 0.
    std::int32_t status = 1;

    friend bool operator==(const RecordCount&, const RecordCount&) = default;
};

// Checks a table and counts its records. Reading stops at the first record whose
// first field is not a number. Edge cases:
//  - a file that cannot be opened, or a read that fails, reports a wrong structure
//    within the record being read: {records read so far, records + 1};
//  - a file of size zero gives {0, kEmptyFile};
//  - a file of only blank and comment lines (or only a byte-order mark) has no
//    record at all and gives {0, 1};
//  - a file of more than INT32_MAX - 1 records is reported as a wrong structure
//    within record INT32_MAX.
// Memory stays bounded by one read block whatever the line lengths.
RecordCount countFileRecords(const std::filesystem::path& file);

// Reads the first field of the first signal.size() records into `signal`, with
// the same record rules as countFileRecords. Reading stops at the end of the file
// or at the first record with a wrong structure (e.g. the file changed since it
// was counted); the rest of `signal` is then set to 0. A file that cannot be
// opened leaves all of `signal` 0. Returns the number of values read.
std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal);

// Converts a file name given as UTF-16 code units (no terminator) to a path.
// Surrogate pairs combine into one character. A lone U+DC80 .. U+DCFF is the
// byte 0x80 .. 0xFF of a name that is not UTF-8 (the program lists such names
// with each stray byte carried as U+DC00 + byte) and becomes that byte again;
// any other unpaired surrogate becomes U+FFFD. A null pointer or length <= 0 gives an empty path. A unit 0 is kept as
// a NUL character, so the path names no file rather than the part before it.
std::filesystem::path pathFromCodes(const std::int16_t* codes, std::int32_t length);

namespace detail {
// The routines above with the read block size (bytes) chosen by the caller; the
// tests use tiny blocks to cross every block boundary.
//
// They read the file in blocks and scan each run of whole lines in place: one
// tight loop per record finds the first field, checks it (the count converts only
// numbers that could leave the float range) or converts it (the read), and steps
// to the line end; no allocation per line. A line longer than a block plus 1 MiB
// sends the routine back to the start with the streaming TableReader, which needs
// no memory for it.
RecordCount countFileRecords(const std::filesystem::path& file, std::size_t blockSize);
std::size_t readSignalFile(const std::filesystem::path& file, std::span<float> signal,
                           std::size_t blockSize);

// The same results from the streaming TableReader alone, byte by byte through its
// buffer: the long-line path of the routines above.
// The streaming reader under a given reading of commas, without judging them.
RecordCount countFileRecordsStreaming(const std::filesystem::path& file, std::size_t blockSize,
                                      CommaRole commas = CommaRole::separator);
std::size_t readSignalFileStreaming(const std::filesystem::path& file, std::span<float> signal,
                                    std::size_t blockSize, CommaRole commas = CommaRole::separator);
} // namespace detail

} // namespace tarnic
