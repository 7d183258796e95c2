#include "numeric/demultiplex.h"

#include "numeric/line_scan.h"
#include "numeric/table_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace tarnic {

namespace {

namespace fs = std::filesystem;
namespace scan = detail::scan;
using detail::FieldKind;
using detail::TableReader;

// Columns written per pass over the input; wider tables take several passes so
// the number of open files stays small.
constexpr int kColumnsPerPass = 64;
constexpr std::size_t kOutputBufferSize = 64 * 1024;
// Room for the longest shortest-round-trip float text plus CR LF.
constexpr std::size_t kMaxValueText = 64;

// Temporary files of one split; those not handed on by release() are removed.
class TemporaryFiles {
  public:
    TemporaryFiles() = default;
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;
    ~TemporaryFiles() {
        for (const fs::path& p : paths_) {
            std::error_code ignored;
            fs::remove(p, ignored);
        }
    }
    void add(fs::path p) { paths_.push_back(std::move(p)); }
    void forget(const fs::path& p) { std::erase(paths_, p); }

  private:
    std::vector<fs::path> paths_;
};

// One column's output, written under a temporary name.
class ColumnFile {
  public:
    ColumnFile(fs::path finalPath, TemporaryFiles& temporaries)
        : finalPath_(std::move(finalPath)), tempPath_(finalPath_) {
        tempPath_ += ".tmp";
        file_ = detail::openFile(tempPath_, "wb");
        if (file_) temporaries.add(tempPath_);
        buffer_.resize(kOutputBufferSize);
    }

    bool opened() const { return file_ != nullptr; }
    bool takesValues() const { return takesValues_; }
    void stop() { takesValues_ = false; }
    std::size_t values() const { return values_; }
    const fs::path& finalPath() const { return finalPath_; }
    const fs::path& tempPath() const { return tempPath_; }

    void append(float value) {
        if (buffer_.size() - used_ < kMaxValueText) flush();
        char* out = buffer_.data() + used_;
        char* const last = buffer_.data() + buffer_.size();
        out = std::to_chars(out, last, value).ptr; // shortest text that reads back exactly
        *out++ = '\r';
        *out++ = '\n';
        used_ = static_cast<std::size_t>(out - buffer_.data());
        ++values_;
    }

    // Writes what is buffered and closes the file; false if any write failed.
    bool close() {
        flush();
        const bool closed = std::fclose(file_.release()) == 0;
        return ok_ && closed;
    }

  private:
    void flush() {
        if (used_ > 0 && std::fwrite(buffer_.data(), 1, used_, file_.get()) != used_) ok_ = false;
        used_ = 0;
    }

    fs::path finalPath_;
    fs::path tempPath_;
    detail::FilePtr file_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
    std::size_t values_ = 0;
    bool takesValues_ = true;
    bool ok_ = true;
};

// Number of fields of the first data record (capped at kMaxDemultiplexColumns);
// -1 when the input cannot be read.
int countColumns(const fs::path& input, detail::CommaRole commas) {
    TableReader reader(input, detail::kDefaultBlockSize, commas);
    int columns = 0;
    if (reader.nextRecord()) {
        float ignored = 0.0f;
        while (columns < kMaxDemultiplexColumns && reader.nextField(ignored) != FieldKind::end)
            ++columns;
    }
    return reader.failed() ? -1 : columns;
}

// Opens the temporary files of columns [first, last) (0-based); false when one
// cannot be opened.
bool openColumns(const fs::path& input, int first, int last, TemporaryFiles& temporaries,
                 std::vector<ColumnFile>& columns) {
    columns.clear();
    columns.reserve(static_cast<std::size_t>(last - first));
    for (int c = first; c < last; ++c) {
        columns.emplace_back(columnFileName(input, c + 1), temporaries);
        if (!columns.back().opened()) return false;
    }
    return true;
}

// Closes the column files; the complete ones holding at least one value are
// appended to `done`. False when a write failed.
bool closeColumns(std::vector<ColumnFile>& columns,
                  std::vector<std::pair<fs::path, fs::path>>& done) {
    bool ok = true;
    for (ColumnFile& column : columns) {
        ok = column.close() && ok;
        if (ok && column.values() > 0) done.emplace_back(column.tempPath(), column.finalPath());
    }
    return ok;
}

// Columns [first, last) of a record that has only `fields` fields stop taking
// values from `fields` on; returns how many stopped.
int stopShortColumns(std::vector<ColumnFile>& columns, int first, int last, int fields) {
    int stopped = 0;
    for (int m = std::max(fields, first); m < last; ++m) {
        ColumnFile& column = columns[static_cast<std::size_t>(m - first)];
        if (column.takesValues()) {
            column.stop();
            ++stopped;
        }
    }
    return stopped;
}

// Writes columns [first, last) (0-based) to temporary files; the complete ones
// holding at least one value are appended to `done`. False on any read or write
// failure. The streaming reader's path, for tables with a line longer than the
// block scan's buffer.
bool writeColumnsStreaming(const fs::path& input, std::int32_t nrec, detail::CommaRole commas,
                           int first, int last, TemporaryFiles& temporaries,
                           std::vector<std::pair<fs::path, fs::path>>& done) {
    std::vector<ColumnFile> columns;
    if (!openColumns(input, first, last, temporaries, columns)) return false;

    TableReader reader(input, detail::kDefaultBlockSize, commas);
    int taking = last - first;
    for (std::int32_t r = 0; r < nrec && taking > 0 && reader.nextRecord(); ++r) {
        for (int c = 0; c < last; ++c) {
            float value = 0.0f;
            const FieldKind kind = reader.nextField(value);
            if (kind == FieldKind::end) {
                taking -= stopShortColumns(columns, first, last, c);
                break;
            }
            if (c < first) continue;
            ColumnFile& column = columns[static_cast<std::size_t>(c - first)];
            if (!column.takesValues()) continue;
            if (kind == FieldKind::number) {
                column.append(value);
            } else {
                column.stop();
                --taking;
            }
        }
    }
    if (reader.failed()) return false;
    return closeColumns(columns, done);
}

enum class Written { ok, failed, tooLong };

// writeColumnsStreaming() by the block scan of the intake: whole lines in place,
// each field found and converted from its window of bit masks.
template <bool kDecimalComma>
Written writeColumnsFast(const fs::path& input, std::int32_t nrec, int first, int last,
                         TemporaryFiles& temporaries,
                         std::vector<std::pair<fs::path, fs::path>>& done) {
    std::vector<ColumnFile> columns;
    if (!openColumns(input, first, last, temporaries, columns)) return Written::failed;

    scan::LineBlocks blocks(input, scan::kScanBlockSize);
    int taking = last - first;
    std::int32_t records = 0;
    char* begin = nullptr;
    char* stop = nullptr;
    while (records < nrec && taking > 0 && blocks.next(begin, stop)) {
        scan::forEachRecord(begin, stop, [&](char* p) {
            ++records;
            for (int c = 0; c < last; ++c) {
                // Separators before a field, commas included as the streaming
                // reader skips them.
                while (scan::classOf(p) == detail::kSeparator)
                    ++p;
                if (scan::classOf(p) == detail::kLineEnd) {
                    taking -= stopShortColumns(columns, first, last, c);
                    break;
                }
                ColumnFile* const column =
                    c < first ? nullptr : &columns[static_cast<std::size_t>(c - first)];
                char* end = nullptr;
                if (column == nullptr || !column->takesValues()) {
                    end = scan::fieldEnd<kDecimalComma>(p);
                } else {
                    float value = 0.0f;
                    const scan::Window w = scan::windowAt<kDecimalComma>(p);
                    if (scan::readNumberField<kDecimalComma>(w, p, end, value)) {
                        column->append(value);
                    } else {
                        column->stop();
                        --taking;
                    }
                }
                p = end;
            }
            return records < nrec && taking > 0;
        });
    }
    if (blocks.tooLong()) return Written::tooLong;
    if (blocks.failed()) return Written::failed;
    return closeColumns(columns, done) ? Written::ok : Written::failed;
}

bool writeColumns(const fs::path& input, std::int32_t nrec, detail::CommaRole commas, int first,
                  int last, TemporaryFiles& temporaries,
                  std::vector<std::pair<fs::path, fs::path>>& done) {
    const Written written =
        commas == detail::CommaRole::decimal
            ? writeColumnsFast<true>(input, nrec, first, last, temporaries, done)
            : writeColumnsFast<false>(input, nrec, first, last, temporaries, done);
    if (written == Written::tooLong)
        return writeColumnsStreaming(input, nrec, commas, first, last, temporaries, done);
    return written == Written::ok;
}

// Whether the table holds a comma anywhere (only then are its commas judged).
bool holdsComma(const fs::path& input) {
    detail::TableFile table = detail::openTable(input);
    if (!table.file) return false;
    std::vector<char> buffer(detail::kDefaultBlockSize);
    for (std::uint64_t left = table.tableBytes; left > 0;) {
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), left));
        const std::size_t got = std::fread(buffer.data(), 1, want, table.file.get());
        if (got == 0) break;
        if (std::memchr(buffer.data(), ',', got) != nullptr) return true;
        left -= got;
    }
    return false;
}

} // namespace

fs::path columnFileName(const fs::path& input, int column) {
    // Work on the native string so names in any script pass through unchanged.
    auto widen = [](std::string_view ascii) {
        return fs::path::string_type(ascii.begin(), ascii.end());
    };
    fs::path::string_type name = input.filename().native();
    const fs::path::string_type dat = widen(".dat");
    if (const auto at = name.find(dat); at != fs::path::string_type::npos)
        name.erase(at, dat.size());
    name += widen("-Col" + std::to_string(column) + ".dat");
    return input.parent_path() / fs::path(std::move(name));
}

int demultiplexTable(const fs::path& input, std::int32_t nrec) {
    if (nrec <= 0) return 0;
    // Decimal commas as the intake reads them; a table whose commas can be read
    // two ways is not split.
    const detail::CommaRole commas =
        holdsComma(input) ? detail::judgeCommas(input).role : detail::CommaRole::separator;
    if (commas == detail::CommaRole::ambiguous) return 0;
    const int columns = countColumns(input, commas);
    if (columns <= 1) return 0;

    TemporaryFiles temporaries;
    std::vector<std::pair<fs::path, fs::path>> done; // (temporary, final)
    for (int first = 0; first < columns; first += kColumnsPerPass) {
        if (!writeColumns(input, nrec, commas, first, std::min(columns, first + kColumnsPerPass),
                          temporaries, done))
            return 0;
    }

    int written = 0;
    for (const auto& [temporary, final] : done) {
        std::error_code error;
        fs::rename(temporary, final, error);
        if (!error) {
            temporaries.forget(temporary);
            ++written;
        }
    }
    return written;
}

} // namespace tarnic
