#include "core/outputfile.h"

#include "numeric/workers.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <future>
#include <thread>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace tarnic {
namespace fs = std::filesystem;
namespace {

std::function<void(const std::string&)> finishedObserver;

// The permissions a file created by the program gets, as the umask allows.
mode_t newFileMode() {
    static const mode_t mode = [] {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return static_cast<mode_t>(0666 & ~mask);
    }();
    return mode;
}

} // namespace

void setFinishedFileObserver(std::function<void(const std::string&)> observer) {
    finishedObserver = std::move(observer);
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    // The temporary name is short and unique whatever the final name: a final
    // name as long as the system allows can still be written, and two programs
    // writing into one folder never meet.
    const fs::path final(path_);
    const fs::path dir = final.has_parent_path() ? final.parent_path() : fs::path(".");
    std::string pattern = (dir / ".tarnic-XXXXXX").string();
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) {
        fail("cannot be created");
        return;
    }
    temporary_ = pattern;
    ::fchmod(fd, newFileMode());
    file_ = ::fdopen(fd, "wb");
    if (!file_) {
        fail("cannot be created");
        ::close(fd);
        return;
    }
    std::setvbuf(file_, nullptr, _IOFBF, 1 << 20);
}

OutputFile::~OutputFile() {
    if (!closed_) close();
}

void OutputFile::fail(const char* what) {
    if (error_.empty()) error_ = std::string(what) + ": " + std::strerror(errno);
}

void OutputFile::print(std::string_view text) {
    if (!file_ || failed()) return;
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail("cannot be written");
}

void OutputFile::printLines(int count, const std::function<void(int, std::string&)>& formatLine) {
    constexpr int kBlock = 1 << 15;
    auto formatBlock = [&](int first) {
        std::string text;
        text.reserve(static_cast<std::size_t>(kBlock) * 24);
        for (int i = first; i < first + kBlock && i <= count; ++i) formatLine(i, text);
        return text;
    };
    if (count <= kBlock) {
        print(formatBlock(1));
        return;
    }
    const int workers = std::max(1u, std::min(8u, std::thread::hardware_concurrency()));
    std::deque<std::future<std::string>> pending;
    int next = 1;
    while (next <= count || !pending.empty()) {
        while (next <= count && static_cast<int>(pending.size()) < workers) {
            pending.push_back(startWorker([&formatBlock, next] { return formatBlock(next); }));
            next += kBlock;
        }
        print(pending.front().get());
        pending.pop_front();
    }
}

bool OutputFile::close() {
    if (closed_) return !failed();
    closed_ = true;
    if (file_) {
        if (std::fclose(file_) != 0) fail("cannot be written");
        file_ = nullptr;
    }
    std::error_code ec;
    if (!failed()) {
        fs::rename(temporary_, path_, ec);
        if (ec) error_ = "cannot be renamed into place: " + ec.message();
    }
    if (failed() && !temporary_.empty()) fs::remove(temporary_, ec);
    if (!failed() && finishedObserver) finishedObserver(path_);
    return !failed();
}

bool makeSubdirectory(const std::string& directory, std::string_view name) {
    std::error_code ec;
    const fs::path dir = fs::path(directory) / std::string(name);
    fs::create_directory(dir, ec);
    return fs::is_directory(dir, ec);
}

} // namespace tarnic
