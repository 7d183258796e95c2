#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric/table_reader.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace tarnic {
namespace {

namespace fs = std::filesystem;
using test::readBytes;
using test::TempDir;
using test::writeBytes;

std::set<std::string> filesIn(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(ColumnFileName, RemovesTheFirstDatAndAppendsTheColumn) {
    EXPECT_EQ(columnFileName("dir/tab.dat", 1), fs::path("dir/tab-Col1.dat"));
    EXPECT_EQ(columnFileName("x.txt", 12), fs::path("x.txt-Col12.dat"));
    EXPECT_EQ(columnFileName("a.dat.dat", 2), fs::path("a.dat-Col2.dat"));
    EXPECT_EQ(columnFileName("my.data.txt", 1), fs::path("mya.txt-Col1.dat"));
    EXPECT_EQ(columnFileName("A.DAT", 3), fs::path("A.DAT-Col3.dat"));
}

TEST(Demultiplex, WritesOneExactFilePerColumn) {
    TempDir dir;
    const std::string table = "# h\r\n1 2 3\r\n0.1,-4e-3;5\r\n\r\n7\t8\t9e10";
    writeBytes(dir / "tab.dat", table);
    EXPECT_EQ(demultiplexTable(dir / "tab.dat", 3), 3);
    EXPECT_EQ(filesIn(dir.path()),
              (std::set<std::string>{"tab.dat", "tab-Col1.dat", "tab-Col2.dat", "tab-Col3.dat"}));
    EXPECT_EQ(readBytes(dir / "tab-Col1.dat"), "1\r\n0.1\r\n7\r\n");
    EXPECT_EQ(readBytes(dir / "tab-Col2.dat"), "2\r\n-0.004\r\n8\r\n");
    EXPECT_EQ(readBytes(dir / "tab-Col3.dat"), "3\r\n5\r\n9e+10\r\n");
    EXPECT_EQ(readBytes(dir / "tab.dat"), table);

    // Only the first nrec records; existing outputs are replaced.
    EXPECT_EQ(demultiplexTable(dir / "tab.dat", 1), 3);
    EXPECT_EQ(readBytes(dir / "tab-Col2.dat"), "2\r\n");
}

TEST(Demultiplex, SingleColumnOrNoRecordsWritesNothing) {
    TempDir dir;
    const std::string single = "1\r\n2\r\n3\r\n";
    writeBytes(dir / "one.dat", single);
    EXPECT_EQ(demultiplexTable(dir / "one.dat", 3), 0);
    EXPECT_EQ(readBytes(dir / "one.dat"), single);
    writeBytes(dir / "two.dat", "1 2\n");
    EXPECT_EQ(demultiplexTable(dir / "two.dat", 0), 0);
    writeBytes(dir / "empty.dat", "");
    EXPECT_EQ(demultiplexTable(dir / "empty.dat", 5), 0);
    writeBytes(dir / "commas.dat", "1,5 2,5\n"); // decimal commas or four columns
    EXPECT_EQ(demultiplexTable(dir / "commas.dat", 1), 0);
    EXPECT_EQ(filesIn(dir.path()),
              (std::set<std::string>{"one.dat", "two.dat", "empty.dat", "commas.dat"}));
    EXPECT_EQ(demultiplexTable(dir / "missing.dat", 5), 0);
}

TEST(Demultiplex, DecimalCommaTableSplitsAtSemicolons) {
    TempDir dir;
    writeBytes(dir / "eu.dat", "1,5;-2,25\r\n3;4,5\r\n");
    EXPECT_EQ(demultiplexTable(dir / "eu.dat", 2), 2);
    EXPECT_EQ(readBytes(dir / "eu-Col1.dat"), "1.5\r\n3\r\n");
    EXPECT_EQ(readBytes(dir / "eu-Col2.dat"), "-2.25\r\n4.5\r\n");
}

TEST(Demultiplex, ColumnStopsAtItsFirstMissingOrBadField) {
    TempDir dir;
    writeBytes(dir / "t.dat", "1 2 3\n4 x 6\n7 8\nnan 11 12\n13 14 15\n");
    EXPECT_EQ(demultiplexTable(dir / "t.dat", 5), 3);
    EXPECT_EQ(readBytes(dir / "t-Col1.dat"), "1\r\n4\r\n7\r\n");
    EXPECT_EQ(readBytes(dir / "t-Col2.dat"), "2\r\n");
    EXPECT_EQ(readBytes(dir / "t-Col3.dat"), "3\r\n6\r\n");

    // A column without any value gets no file.
    writeBytes(dir / "u.dat", "1 date\n2 3\n");
    EXPECT_EQ(demultiplexTable(dir / "u.dat", 2), 1);
    EXPECT_TRUE(fs::exists(dir / "u-Col1.dat"));
    EXPECT_FALSE(fs::exists(dir / "u-Col2.dat"));
}

TEST(Demultiplex, AllOrNothingWhenAFileCannotBeWritten) {
    TempDir dir;
    writeBytes(dir / "t.dat", "1 2\n3 4\n");
    writeBytes(dir / "t-Col1.dat", "old");
    fs::create_directory(dir / "t-Col2.dat.tmp"); // blocks the temporary of column 2
    EXPECT_EQ(demultiplexTable(dir / "t.dat", 2), 0);
    EXPECT_EQ(readBytes(dir / "t-Col1.dat"), "old");
    EXPECT_EQ(filesIn(dir.path()),
              (std::set<std::string>{"t.dat", "t-Col1.dat", "t-Col2.dat.tmp"}));
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
    const RecordCount count = countFileRecords(dir / "r-Col1.dat");
    ASSERT_EQ(count, (RecordCount{2000, kGoodFile}));
    std::vector<float> got(want.size());
    readSignalFile(dir / "r-Col1.dat", got);
    for (std::size_t i = 0; i < want.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(got[i]), std::bit_cast<std::uint32_t>(want[i])) << i;
}

} // namespace
} // namespace tarnic
