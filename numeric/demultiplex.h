// Splitting a table of several columns into one series file per column.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tarnic {

// Tables wider than this are split into their first kMaxDemultiplexColumns columns.
inline constexpr int kMaxDemultiplexColumns = 1024;

// The name of column `column` (1-based) split from the table `input`, in the same
// directory: the first ".dat" (case-sensitive) is removed from the file name and
// "-Col<column>.dat" appended. "tab.dat" -> "tab-Col2.dat",
// "x.txt" -> "x.txt-Col1.dat", "a.dat.bak" -> "a.bak-Col1.dat".
// Never the input's own name: the result is always longer than it.
std::filesystem::path columnFileName(const std::filesystem::path& input, int column);

// Splits the table `input` (same format and record rules as intake.h, decimal
// commas included; a table whose commas are ambiguous is not split) into one
// file per column, named by columnFileName(). The number of columns k is the number
// of fields of the first data record; with k <= 1, or nrec <= 0, nothing is
// written. Only the first `nrec` data records are read.
//
// A column's file holds that column's values, in record order, up to (not
// including) the first record where the field is missing or is not a number; a
// column with no value at all gets no file. Each value is written on its own line
// ending CR LF, as the shortest text that reads back as exactly the same float, so
// every file is again a valid table.
//
// Each file is first written under a temporary name in the same directory; only
// when all of them are complete are they renamed over the final names (replacing
// files of those names). If writing fails, the temporary files are removed and no
// file is written. The input is only ever read.
//
// Returns the number of files written (0 when the input cannot be read).
int demultiplexTable(const std::filesystem::path& input, std::int32_t nrec);

} // namespace tarnic
