// File names that cross the binding as UTF-16 code units plus a length. The length,
// not a terminator, ends the name, so a unit 0 is part of it; such a name denotes no
// file. (Found by fuzz/fuzz_intake: "dir/t" followed by a unit 0 used to open
// "dir/t", and splitting "dir/a" + 0 + ".dat" overwrote "dir/a".)
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace tarnic {
namespace {

using test::readBytes;
using test::TempDir;
using test::writeBytes;

// The path the program would pass for `file` followed by the units `tail`.
std::filesystem::path fromCodes(const std::filesystem::path& file,
                                std::initializer_list<char16_t> tail = {}) {
    std::u16string units = file.u16string();
    units.append(tail.begin(), tail.end());
    const std::vector<std::int16_t> codes(units.begin(), units.end());
    return pathFromCodes(codes.data(), static_cast<std::int32_t>(codes.size()));
}

TEST(CodeUnitPaths, AUnitZeroInTheNameReachesNoFile) {
    TempDir dir;
    writeBytes(dir / "t", "4\n5\n");
    // The same units without the 0 do name the table.
    ASSERT_EQ(countFileRecords(fromCodes(dir / "t")), (RecordCount{2, kGoodFile}));

    for (const auto& tail : {std::initializer_list<char16_t>{0}, {0, 'x'}, {0, 0, 0}}) {
        const std::filesystem::path path = fromCodes(dir / "t", tail);
        EXPECT_EQ(path.native().size(), (dir / "t").native().size() + tail.size());
        // Like any file that cannot be opened: wrong structure within record 1.
        EXPECT_EQ(countFileRecords(path), (RecordCount{0, 1})) << tail.size();
        std::vector<float> values(2, 99.0f);
        EXPECT_EQ(readSignalFile(path, values), 0u) << tail.size();
        EXPECT_EQ(values, (std::vector<float>{0.0f, 0.0f})) << tail.size();
    }
}

TEST(CodeUnitPaths, SplittingANameWithAUnitZeroWritesNothing) {
    TempDir dir;
    const std::string table = "1 2\n3 4\n";
    writeBytes(dir / "a", table);
    // "a" 0 ".dat": the column files would be "a" 0 "-Col1.dat" and so on, which
    // a terminated string cuts back to "a", the table itself.
    EXPECT_EQ(demultiplexTable(fromCodes(dir / "a", {0, '.', 'd', 'a', 't'}), 2), 0);
    EXPECT_EQ(readBytes(dir / "a"), table);
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        files.push_back(entry.path().filename());
    EXPECT_EQ(files, (std::vector<std::filesystem::path>{"a"}));
}

} // namespace
} // namespace tarnic
