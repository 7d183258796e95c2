#include "numeric/demultiplex.h"

#include "numeric/table_reader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace tarnic {

namespace {

namespace fs = std::filesystem;
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

// Writes columns [first, last) (0-based) to temporary files; the complete ones
// holding at least one value are appended to `done`. False on any read or write
// failure.
bool writeColumns(const fs::path& input, std::int32_t nrec, detail::CommaRole commas, int first,
                  int last, TemporaryFiles& temporaries,
                  std::vector<std::pair<fs::path, fs::path>>& done) {
    std::vector<ColumnFile> columns;
    columns.reserve(static_cast<std::size_t>(last - first));
    for (int c = first; c < last; ++c) {
        columns.emplace_back(columnFileName(input, c + 1), temporaries);
        if (!columns.back().opened()) return false;
    }

    TableReader reader(input, detail::kDefaultBlockSize, commas);
    int taking = last - first;
    for (std::int32_t r = 0; r < nrec && taking > 0 && reader.nextRecord(); ++r) {
        for (int c = 0; c < last; ++c) {
            float value = 0.0f;
            const FieldKind kind = reader.nextField(value);
            if (kind == FieldKind::end) {
                // The record is short: every column from here on stops.
                for (int m = std::max(c, first); m < last; ++m) {
                    ColumnFile& column = columns[static_cast<std::size_t>(m - first)];
                    if (column.takesValues()) {
                        column.stop();
                        --taking;
                    }
                }
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

    bool ok = true;
    for (ColumnFile& column : columns) {
        ok = column.close() && ok;
        if (ok && column.values() > 0) done.emplace_back(column.tempPath(), column.finalPath());
    }
    return ok;
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
    const detail::CommaRole commas = detail::judgeCommas(input).role;
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
