// Splitting a table into one series file per column (numeric/demultiplex.h), and
// the bundled example signals.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric/table_reader.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace tarnic {
namespace {

namespace fs = std::filesystem;
using test::readBytes;
using test::TempDir;
using test::writeBytes;

// Every entry of a folder with its bytes ("/" for a folder).
std::map<std::string, std::string> filesIn(const fs::path& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(dir))
        files[entry.path().filename().string()] =
            entry.is_directory() ? "/" : readBytes(entry.path());
    return files;
}

TEST(ColumnFileName, RemovesTheFirstDatAndAppendsTheColumn) {
    EXPECT_EQ(columnFileName("dir/tab.dat", 1), fs::path("dir/tab-Col1.dat"));
    EXPECT_EQ(columnFileName("x.txt", 12), fs::path("x.txt-Col12.dat"));
    EXPECT_EQ(columnFileName("a.dat.dat", 2), fs::path("a.dat-Col2.dat"));
    EXPECT_EQ(columnFileName("my.data.txt", 1), fs::path("mya.txt-Col1.dat"));
    EXPECT_EQ(columnFileName("A.DAT", 3), fs::path("A.DAT-Col3.dat"));
}

// Each table as t.dat beside a stale t-Col1.dat, split from its first nrec
// records: the columns reported and every file of the folder afterwards. The
// table stays as it was; the stale file is replaced or, when nothing is
// written, left alone.
TEST(Demultiplex, WritesOneExactFilePerColumnOrNothing) {
    using Files = std::map<std::string, std::string>;
    struct Case {
        std::string table;
        std::int32_t nrec;
        int columns;
        Files written;
    };
    const std::string mixed = "# h\r\n1 2 3\r\n0.1,-4e-3;5\r\n\r\n7\t8\t9e10";
    // clang-format off
    const Case cases[] = {
        {mixed, 3, 3, {{"t-Col1.dat", "1\r\n0.1\r\n7\r\n"}, {"t-Col2.dat", "2\r\n-0.004\r\n8\r\n"},
                       {"t-Col3.dat", "3\r\n5\r\n9e+10\r\n"}}},
        {mixed, 1, 3, {{"t-Col1.dat", "1\r\n"}, {"t-Col2.dat", "2\r\n"}, {"t-Col3.dat", "3\r\n"}}},
        // A decimal-comma table splits at its semicolons.
        {"1,5;-2,25\r\n3;4,5\r\n", 2, 2,
         {{"t-Col1.dat", "1.5\r\n3\r\n"}, {"t-Col2.dat", "-2.25\r\n4.5\r\n"}}},
        // A column stops at its first missing or bad field; one without any value
        // gets no file.
        {"1 2 3\n4 x 6\n7 8\nnan 11 12\n13 14 15\n", 5, 3,
         {{"t-Col1.dat", "1\r\n4\r\n7\r\n"}, {"t-Col2.dat", "2\r\n"}, {"t-Col3.dat", "3\r\n6\r\n"}}},
        {"1 date\n2 3\n", 2, 1, {{"t-Col1.dat", "1\r\n2\r\n"}}},
        // One column, no records, an empty file, commas that read two ways.
        {"1\r\n2\r\n3\r\n", 3, 0, {}}, {"1 2\n", 0, 0, {}}, {"", 5, 0, {}}, {"1,5 2,5\n", 1, 0, {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.table + " of " + std::to_string(c.nrec));
        TempDir dir;
        writeBytes(dir / "t.dat", c.table);
        writeBytes(dir / "t-Col1.dat", "old");
        EXPECT_EQ(demultiplexTable(dir / "t.dat", c.nrec), c.columns);
        Files expected = c.written;
        expected["t.dat"] = c.table;
        expected.try_emplace("t-Col1.dat", "old");
        EXPECT_EQ(filesIn(dir.path()), expected);
        EXPECT_EQ(demultiplexTable(dir / "missing.dat", 5), 0);
    }
}

TEST(Demultiplex, AllOrNothingWhenAFileCannotBeWritten) {
    TempDir dir;
    writeBytes(dir / "t.dat", "1 2\n3 4\n");
    writeBytes(dir / "t-Col1.dat", "old");
    fs::create_directory(dir / "t-Col2.dat.tmp"); // blocks the temporary of column 2
    EXPECT_EQ(demultiplexTable(dir / "t.dat", 2), 0);
    EXPECT_EQ(filesIn(dir.path()),
              (std::map<std::string, std::string>{
                  {"t.dat", "1 2\n3 4\n"}, {"t-Col1.dat", "old"}, {"t-Col2.dat.tmp", "/"}}));
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

// Any finite float, denormals and extremes included, reads back bit for bit.
TEST(Demultiplex, ColumnsReadBackAsTheSameFloats) {
    TempDir dir;
    std::mt19937 random(11);
    std::vector<float> want;
    std::string table;
    while (want.size() < 2000) {
        const float v = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!(std::fabs(v) <= detail::kMaxMagnitude)) continue; // the range a table may hold
        want.push_back(v);
        char line[64];
        std::snprintf(line, sizeof line, "%.9g %.9g\n", static_cast<double>(v),
                      -static_cast<double>(v));
        table += line;
    }
    writeBytes(dir / "r.dat", table);
    ASSERT_EQ(demultiplexTable(dir / "r.dat", 2000), 2);
    ASSERT_EQ(countFileRecords(dir / "r-Col1.dat"), (RecordCount{2000, kGoodFile}));
    std::vector<float> got(want.size());
    readSignalFile(dir / "r-Col1.dat", got);
    for (std::size_t i = 0; i < want.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(got[i]), std::bit_cast<std::uint32_t>(want[i])) << i;
}

// The bundled example signals, as the build wrote them into the application folder.
const fs::path kExamples = TARNIC_EXAMPLES_DIR;

TEST(Examples, EachFileHasItsRecordsAndStatusAndCrLfLineEnds) {
    // clang-format off
    const std::pair<const char*, RecordCount> expected[] = {
        {"ar2_peak.dat", {4096, kGoodFile}}, {"two_sines_trend.dat", {5000, kGoodFile}},
        {"random_walk.dat", {10000, kGoodFile}}, {"three_columns.dat", {1000, kGoodFile}},
        {"exactly_32.dat", {32, kGoodFile}}, {"only_31.dat", {31, kGoodFile}},
        {"constant_column.dat", {200, kGoodFile}}, {"broken_record.dat", {249, 250}},
        {"empty.dat", {0, kEmptyFile}}, {"one_sample.dat", {1, kGoodFile}}};
    // clang-format on
    for (const auto& [name, count] : expected) {
        EXPECT_EQ(countFileRecords(kExamples / name), count) << name;
        const std::string bytes = test::readBytes(kExamples / name);
        for (std::size_t at = bytes.find('\n'); at != std::string::npos;
             at = bytes.find('\n', at + 1))
            ASSERT_TRUE(at > 0 && bytes[at - 1] == '\r') << name << " has a bare LF";
    }
    EXPECT_NE(test::readBytes(kExamples / "random_walk.dat").front(), '#');
}

TEST(Examples, Ar2HasItsLagOneCorrelation) {
    // For x[t] = a1 x[t-1] + a2 x[t-2] + e[t], rho(1) = a1 / (1 - a2) = 0.5.
    std::vector<float> x(4096);
    ASSERT_EQ(readSignalFile(kExamples / "ar2_peak.dat", x), x.size());
    double mean = 0.0, c0 = 0.0, c1 = 0.0;
    for (float v : x)
        mean += v / static_cast<double>(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        c0 += (x[i] - mean) * (x[i] - mean);
        if (i > 0) c1 += (x[i] - mean) * (x[i - 1] - mean);
    }
    EXPECT_NEAR(c1 / c0, 0.5, 0.05);
}

TEST(Examples, MultiColumnTablesSplit) {
    test::TempDir dir;
    for (const char* name : {"three_columns.dat", "constant_column.dat"}) {
        fs::copy_file(kExamples / name, dir / name);
        EXPECT_EQ(demultiplexTable(dir / name, countFileRecords(dir / name).records), 3) << name;
    }
    std::vector<float> constant(200);
    readSignalFile(dir / "constant_column-Col1.dat", constant);
    EXPECT_EQ(constant, std::vector<float>(200, 5.0f));
    EXPECT_EQ(countFileRecords(dir / "three_columns-Col3.dat"), (RecordCount{1000, kGoodFile}));
}

} // namespace
} // namespace tarnic
