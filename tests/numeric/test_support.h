// Scratch directories and whole-file helpers shared by the numeric tests.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace tarnic::test {

// A fresh directory under the system temporary directory, removed with its
// contents when the object goes out of scope.
class TempDir {
  public:
    TempDir() {
        std::random_device seed;
        std::mt19937_64 random((std::uint64_t{seed()} << 32) ^ seed());
        do {
            path_ = std::filesystem::temp_directory_path() /
                    ("tarnic-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_));
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

  private:
    std::filesystem::path path_;
};

inline void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace tarnic::test
