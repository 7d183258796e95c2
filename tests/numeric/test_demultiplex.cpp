// Splitting a table into one series file per column (numeric/demultiplex.h), and
// the bundled example signals.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric_support.h"
#include "test_support.h"

#include <map>

namespace tarnic {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;
using namespace test;

// Every entry of a folder with its bytes ("/" for a folder).
Files filesIn(const fs::path& dir) {
    Files files;
    for (const auto& entry : fs::directory_iterator(dir))
        files[entry.path().filename().string()] =
            entry.is_directory() ? "/" : readBytes(entry.path());
    return files;
}

TEST(ColumnFileName, RemovesTheFirstDatAndAppendsTheColumn) {
    const std::tuple<const char*, int, const char*> names[] = {
        {"dir/tab.dat", 1, "dir/tab-Col1.dat"}, {"x.txt", 12, "x.txt-Col12.dat"},
        {"a.dat.dat", 2, "a.dat-Col2.dat"}, {"my.data.txt", 1, "mya.txt-Col1.dat"},
        {"A.DAT", 3, "A.DAT-Col3.dat"}};
    for (const auto& [input, column, name] : names)
        EXPECT_EQ(columnFileName(input, column), fs::path(name)) << input;
}

// Each table as t.dat beside a stale t-Col1.dat, split from its first nrec
// records: the columns reported and every file of the folder afterwards. The
// table stays as it was; the stale file is replaced or, when nothing is
// written (also when one column file cannot be written), left alone. Values are written as the
// shortest text that reads back as the same float.
TEST(Demultiplex, WritesOneExactFilePerColumnOrNothing) {
    const std::string mixed = "# h\r\n1 2 3\r\n0.1,-4e-3;5\r\n\r\n7\t8\t9e10";
    // clang-format off
    const std::tuple<std::string, std::int32_t, int, Files> cases[] = {
        {mixed, 3, 3, {{"t-Col1.dat", "1\r\n0.1\r\n7\r\n"}, {"t-Col2.dat", "2\r\n-0.004\r\n8\r\n"},
                       {"t-Col3.dat", "3\r\n5\r\n9e+10\r\n"}}},
        {mixed, 1, 3, {{"t-Col1.dat", "1\r\n"}, {"t-Col2.dat", "2\r\n"}, {"t-Col3.dat", "3\r\n"}}},
        // The float just above 1, the smallest denormal, the largest magnitude, 2^24 + 1.
        {"1.00000012 1e-45\n-1e35 16777217\n", 2, 2,
         {{"t-Col1.dat", "1.0000001\r\n-1e+35\r\n"}, {"t-Col2.dat", "1e-45\r\n16777216\r\n"}}},
        // A decimal-comma table splits at its semicolons.
        {"1,5;-2,25\r\n3;4,5\r\n", 2, 2,
         {{"t-Col1.dat", "1.5\r\n3\r\n"}, {"t-Col2.dat", "-2.25\r\n4.5\r\n"}}},
        // A column stops at its first missing or bad field; one without any value
        // gets no file.
        {"1 2 3\n4 x 6\n7 8\nnan 11 12\n13 14 15\n", 5, 3,
         {{"t-Col1.dat", "1\r\n4\r\n7\r\n"}, {"t-Col2.dat", "2\r\n"},
          {"t-Col3.dat", "3\r\n6\r\n"}}},
        {"1 date\n2 3\n", 2, 1, {{"t-Col1.dat", "1\r\n2\r\n"}}},
        // One column, no records, an empty file, commas that read two ways.
        {"1\r\n2\r\n3\r\n", 3, 0, {}}, {"1 2\n", 0, 0, {}}, {"", 5, 0, {}}, {"1,5 2,5\n", 1, 0, {}},
        // A folder in the place of the temporary of column 2: all or nothing.
        {"1 2\n3 4\n", 2, 0, {{"t-Col2.dat.tmp", "/"}}},
    };
    // clang-format on
    for (const auto& [table, nrec, columns, written] : cases) {
        SCOPED_TRACE(table + " of " + std::to_string(nrec));
        TempDir dir;
        writeBytes(dir / "t.dat", table);
        writeBytes(dir / "t-Col1.dat", "old");
        if (written.contains("t-Col2.dat.tmp")) fs::create_directory(dir / "t-Col2.dat.tmp");
        EXPECT_EQ(demultiplexTable(dir / "t.dat", nrec), columns);
        Files expected = written;
        expected["t.dat"] = table;
        expected.try_emplace("t-Col1.dat", "old");
        EXPECT_EQ(filesIn(dir.path()), expected);
        EXPECT_EQ(demultiplexTable(dir / "missing.dat", 5), 0);
    }
}

TEST(Demultiplex, WideTablesTakeSeveralPassesAndAreCapped) {
    TempDir dir;
    std::string table;
    for (int r = 0; r < 2; ++r) {
        for (int c = 1; c <= kMaxDemultiplexColumns + 6; ++c)
            table += std::to_string(r * 10000 + c) + " ";
        table += "\n";
    }
    writeBytes(dir / "w.dat", table);
    EXPECT_EQ(demultiplexTable(dir / "w.dat", 2), kMaxDemultiplexColumns);
    EXPECT_EQ(readBytes(dir / "w-Col1.dat"), "1\r\n10001\r\n");
    EXPECT_EQ(readBytes(dir / "w-Col65.dat"), "65\r\n10065\r\n");
    EXPECT_EQ(readBytes(dir / "w-Col1024.dat"), "1024\r\n11024\r\n");
    EXPECT_FALSE(fs::exists(dir / "w-Col1025.dat"));
}

// The bundled example signals, as the build wrote them into the application folder.
TEST(Examples, EachFileHasItsRecordsAndStatusAndCrLfLineEnds) {
    const fs::path examples = TARNIC_EXAMPLES_DIR;
    // clang-format off
    const std::pair<const char*, RecordCount> expected[] = {
        {"ar2_peak.dat", {4096, kGoodFile}}, {"two_sines_trend.dat", {5000, kGoodFile}},
        {"random_walk.dat", {10000, kGoodFile}}, {"three_columns.dat", {1000, kGoodFile}},
        {"exactly_32.dat", {32, kGoodFile}}, {"only_31.dat", {31, kGoodFile}},
        {"constant_column.dat", {200, kGoodFile}}, {"broken_record.dat", {249, 250}},
        {"empty.dat", {0, kEmptyFile}}, {"one_sample.dat", {1, kGoodFile}}};
    // clang-format on
    for (const auto& [name, count] : expected) {
        EXPECT_EQ(countFileRecords(examples / name), count) << name;
        const std::string bytes = readBytes(examples / name);
        for (std::size_t at = bytes.find('\n'); at != std::string::npos;
             at = bytes.find('\n', at + 1))
            ASSERT_TRUE(at > 0 && bytes[at - 1] == '\r') << name << " has a bare LF";
    }
    EXPECT_NE(readBytes(examples / "random_walk.dat").front(), '#');
}

} // namespace
} // namespace tarnic
