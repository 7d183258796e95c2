// Output text files, written whole or not at all.
//
// An OutputFile is opened for output (an old file of the same name is replaced,
// never appended to). Its text goes to a hidden temporary file of a short unique
// name (".tarnic-XXXXXX") in the final name's folder and is renamed over the final name only when everything was written, so
// a failure (a full disk, a read-only directory, a name the system refuses)
// never leaves a half-written file under the final name.
//
// What a writer does about a failure is one of three treatments:
//   IgnoreEachStep  the save goes on with its next statement and ends normally
//                   (spectra, downsampled series, grids, singularity spectra);
//   SkipRest        the rest of the writing is skipped and the handler goes on
//                   behind the closing of the file (increments);
//   Report          the handler ends in an orderly way: the loaded signal is
//                   kept and the user is told which file failed and why (every
//                   other writer).
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace tarnic {

enum class OnWriteFailure { IgnoreEachStep, SkipRest, Report };

class OutputFile {
  public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Appends text; after the first failure further prints do nothing.
    void print(std::string_view text);
    // Appends the lines 1..count, formatLine(i, out) appending line i to out.
    // Long files are formatted in blocks on all cores and written in order, so
    // a million-line file is limited by the disk rather than by number texts.
    void printLines(int count, const std::function<void(int, std::string&)>& formatLine);
    // Finishes the file under its final name. False (and the reason in error())
    // when opening, writing or renaming failed; no partial file remains then.
    bool close();
    bool failed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& path() const { return path_; }

  private:
    void fail(const char* what);
    std::string path_;
    std::string temporary_;
    std::FILE* file_ = nullptr;
    std::string error_;
    bool closed_ = false;
};

// Calls `observer` with the final path of every file that close() finished,
// in the order they were finished (the batch tool lists what a run wrote); an
// empty function stops it.
void setFinishedFileObserver(std::function<void(const std::string&)> observer);

// Creates the sub-directory `name` of `directory`; that it exists already is no
// failure. Returns false only when it cannot be made.
bool makeSubdirectory(const std::string& directory, std::string_view name);

} // namespace tarnic
