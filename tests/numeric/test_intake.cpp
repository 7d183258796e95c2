#include "numeric/intake.h"
#include "numeric/table_reader.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace tarnic {
namespace {

using test::TempDir;
using test::writeBytes;

std::optional<float> parse(std::string text) {
    float value = 0.0f;
    if (!detail::parseNumber(text.data(), text.data() + text.size(), value)) return std::nullopt;
    return value;
}

RecordCount countText(const TempDir& dir, std::string_view text) {
    writeBytes(dir / "t.dat", text);
    return countFileRecords(dir / "t.dat");
}

std::vector<float> readText(const TempDir& dir, std::string_view text, std::size_t n) {
    writeBytes(dir / "t.dat", text);
    std::vector<float> values(n, 99.0f);
    readSignalFile(dir / "t.dat", values);
    return values;
}

TEST(NumberText, AcceptsDecimalAndExponentForms) {
    EXPECT_EQ(parse("0"), 0.0f);
    EXPECT_EQ(parse("1.5e-3"), 1.5e-3f);
    EXPECT_EQ(parse(".5"), 0.5f);
    EXPECT_EQ(parse("-3."), -3.0f);
    EXPECT_EQ(parse("+2E+07"), 2e7f);
    EXPECT_EQ(parse("1.0D-3"), 1e-3f);
    EXPECT_EQ(parse("7d2"), 700.0f);
    EXPECT_EQ(parse("0.1"), 0.1f);
    EXPECT_EQ(parse("1e35"), 1e35f);
    EXPECT_EQ(parse("-1.00000002e35"), -1e35f); // rounds to the limit itself
    EXPECT_EQ(parse("1e-45"), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(parse("000000000000000000000000000000000000000001"), 1.0f);
}

TEST(NumberText, RoundsOnceToNearestFloat) {
    EXPECT_EQ(parse("16777217"), 16777216.0f); // tie goes to even
    // Just above the midpoint between 1 and the next float; rounding through a
    // double would land on the midpoint and then go down to 1.
    EXPECT_EQ(parse("1.00000005960464477539062500001"), std::nextafter(1.0f, 2.0f));
}

TEST(NumberText, TinyMagnitudesBecomeSignedZero) {
    ASSERT_EQ(parse("1e-50"), 0.0f);
    EXPECT_TRUE(std::signbit(*parse("-1e-50")));
    EXPECT_EQ(parse("-0.0000000000000000000000000000000000000000000000001e-3"), 0.0f);
    EXPECT_EQ(parse("1e-99999999999999999999"), 0.0f);
    EXPECT_TRUE(std::signbit(*parse("-0")));
}

TEST(NumberText, RejectsEverythingElse) {
    // clang-format off
    const char* const rejected[] = {
        "", "abc", "1.5x", "nan", "-nan", "inf", "-inf", "infinity", "1e39", "-1e39",
        "3.4028236e38", "3.4028235e38", "-3e38", "1.0000001e35", "2E+35", "1e99999999999999999999", "1e", "1e+", ".", "-", "+", "+-1", "++1",
        "--1", "1.2.3", "0x10", "1e5.5", "1d", "d5", "1 ", " 1", "1_000"};
    // clang-format on
    for (const char* text : rejected)
        EXPECT_EQ(parse(text), std::nullopt) << '"' << text << '"';
}

TEST(CountRecords, LineEndsOfEveryKind) {
    TempDir dir;
    const RecordCount three{3, kGoodFile};
    EXPECT_EQ(countText(dir, "1\n2\n3\n"), three);
    EXPECT_EQ(countText(dir, "1\r\n2\r\n3\r\n"), three);
    EXPECT_EQ(countText(dir, "1\n2\n3"), three);
    EXPECT_EQ(countText(dir, "1\r2\r3\r"), three);
    // An end-of-file byte (0x1A) as the file's last byte is not part of the table.
    EXPECT_EQ(countText(dir, "1\r\n2\r\n3\r\n\x1A"), three);
    EXPECT_EQ(countText(dir, "1\n2\n3\x1A"), three);
    EXPECT_EQ(readText(dir, "1\n2\n3\x1A", 3), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(countText(dir, "1\n2\n3\x1A\x1A"), (RecordCount{2, 3}));
}

TEST(CountRecords, SkipsByteOrderMarkCommentsAndBlankLines) {
    TempDir dir;
    EXPECT_EQ(countText(dir, "\xEF\xBB\xBF"
                             "1\n2\n"),
              (RecordCount{2, kGoodFile}));
    EXPECT_EQ(countText(dir, "# head\n\n \t\n% x\n' y\n1 a\n  # indented\n;,\n2\n\n"),
              (RecordCount{2, kGoodFile}));
    // A byte-order mark anywhere but the start is text.
    EXPECT_EQ(countText(dir, "1\n\xEF\xBB\xBF"
                             "2\n"),
              (RecordCount{1, 2}));
}

TEST(CountRecords, OnlyTheFirstFieldIsChecked) {
    TempDir dir;
    EXPECT_EQ(countText(dir, "1, 2\n3;4\n\t5\t6\n ,;7 8\n9 abc nan\n"),
              (RecordCount{5, kGoodFile}));
    EXPECT_EQ(readText(dir, "1, 2\n3;4\n\t5\t6\n ,;7 8\n9 abc nan\n", 5),
              (std::vector<float>{1, 3, 5, 7, 9}));
}

TEST(CountRecords, WrongStructureNamesTheRecordAmongDataRecords) {
    TempDir dir;
    EXPECT_EQ(countText(dir, "# c\n1\n2\n\n# c\n3\nabc\n5\n"), (RecordCount{3, 4}));
    EXPECT_EQ(countText(dir, "abc\n1\n"), (RecordCount{0, 1}));
    for (const char* bad : {"nan", "inf", "1e39", "-3E+38", "1.5x", "1.2.3", "\x1A"})
        EXPECT_EQ(countText(dir, std::string("1\n") + bad + " 2\n3\n"), (RecordCount{1, 2})) << bad;
}

// Decimal commas are decided by the whole table: read as the decimal sign when
// fields are separated by semicolons or tabs and every comma stands inside a
// number; refused, naming the line, when the commas can be read both ways.
TEST(CountRecords, DecimalCommasAreDecidedByTheTable) {
    TempDir dir;
    struct Case {
        const char* table;
        RecordCount count;
        std::vector<float> values;
    };
    const auto ambiguous = [](std::int64_t line) {
        return RecordCount{0, ambiguousCommasStatus(line)};
    };
    // clang-format off
    const Case cases[] = {
        // decimal: semicolon or tab separated, every comma between digits
        {"5,123;7,5\n-0,25;1\n# a, comment\n1,5e3;2\n", {3, kGoodFile}, {5.123f, -0.25f, 1500.0f}},
        {"5,5\t1,25\r\n6\t2\r\n", {2, kGoodFile}, {5.5f, 6.0f}},
        {"1,5 ; 2,5\n3;4\n", {2, kGoodFile}, {1.5f, 3.0f}},
        {"1,5;2\n1.500;3\n", {1, 2}, {1.5f}}, // a point in a decimal-comma table is an error
        // separator: no comma between digits, or list commas without semicolons or tabs
        {"1, 2\n3 ,4\n", {2, kGoodFile}, {1, 3}},
        {"1.5,2.5\n3,4\n", {2, kGoodFile}, {1.5f, 3.0f}},
        {",5;6\n7\n", {2, kGoodFile}, {5, 7}},
        // ambiguous: refused at the line where the evidence is complete
        {"# c\n\n5,123\n6,5\n", ambiguous(3), {}},
        {"1 2\n5,1 6,2\n", ambiguous(2), {}},
        {"1,5;2\r\n3,5;4\r\n5,5 6\r\n", ambiguous(3), {}},
        {"1;2\n3,5;4\n1.5,2;3\n", ambiguous(3), {}},
        {"1\nx\n5,5\n", {1, 2}, {1}}, // a bad record before the ambiguity comes first
    };
    // clang-format on
    for (const Case& c : cases) {
        EXPECT_EQ(countText(dir, c.table), c.count) << c.table;
        std::vector<float> want = c.values;
        want.push_back(0.0f);
        EXPECT_EQ(readText(dir, c.table, want.size()), want) << c.table;
        EXPECT_EQ(detail::countFileRecords(dir / "t.dat", 3), c.count) << c.table;
    }
}

TEST(CountRecords, EmptyUnreadableAndRecordlessFiles) {
    TempDir dir;
    EXPECT_EQ(countText(dir, ""), (RecordCount{0, kEmptyFile}));
    EXPECT_EQ(countText(dir, "# only a comment\n\n"), (RecordCount{0, 1}));
    EXPECT_EQ(countText(dir, "\xEF\xBB\xBF"), (RecordCount{0, 1}));
    EXPECT_EQ(countText(dir, "\x1A"), (RecordCount{0, 1}));
    EXPECT_EQ(countFileRecords(dir / "missing.dat"), (RecordCount{0, 1}));
    EXPECT_EQ(countFileRecords(dir.path()), (RecordCount{0, 1})); // a directory
}

TEST(CountRecords, BinaryGarbageStopsAtTheFirstBadRecord) {
    TempDir dir;
    EXPECT_EQ(countText(dir, std::string("1\n2\n\0\0\x01\xff\n3\n", 12)), (RecordCount{2, 3}));
    std::mt19937 random(7);
    for (int trial = 0; trial < 20; ++trial) {
        std::string bytes(20000, '\0');
        for (char& b : bytes)
            b = static_cast<char>(random());
        const RecordCount count = countText(dir, bytes);
        ASSERT_NE(count.status, kEmptyFile);
        // The records counted good are exactly the ones that can be read.
        std::vector<float> values(static_cast<std::size_t>(count.records) + 1);
        EXPECT_EQ(readSignalFile(dir / "t.dat", values), static_cast<std::size_t>(count.records));
    }
}

TEST(CountRecords, HugeLinesNeedNoMemory) {
    TempDir dir;
    const std::string garbage(4 << 20, 'x');
    EXPECT_EQ(countText(dir, garbage), (RecordCount{0, 1}));
    // Lines longer than a block plus 1 MiB: the streaming reader takes over.
    const std::string blanks(3 << 20, ' ');
    EXPECT_EQ(countText(dir, "1\n" + blanks + "2\n3 " + garbage + "\n4"),
              (RecordCount{4, kGoodFile}));
    EXPECT_EQ(readText(dir, "1\n" + blanks + "2\n3 " + garbage + "\n4", 4),
              (std::vector<float>{1, 2, 3, 4}));
    // A long tail after a good first field is skipped.
    EXPECT_EQ(countText(dir, "1 " + garbage + "\n2\n"), (RecordCount{2, kGoodFile}));
    // First fields are read up to kMaxFieldLength bytes.
    const std::string longest = std::string(detail::kMaxFieldLength - 1, '0') + "1";
    EXPECT_EQ(countText(dir, longest + "\n0" + longest + "\n"), (RecordCount{1, 2}));
}

// Tricky tables read identically whatever the read block size, so every field,
// line end and byte-order mark split across two blocks is handled, and the block
// scan gives what the streaming reader gives (a line longer than a block plus
// 1 MiB takes the streaming reader itself).
TEST(CountRecords, BlockBoundariesDoNotMatter) {
    TempDir dir;
    const std::string tables[] = {
        "16777217\r\n16777219\r\n-0\r\n+.5\r\n5.\r\n1e-40\r\n1.17549435e-38\r\n"
        "123456789012345\r\n1234567890123456\r\n0."
        "000000000000001\r\n99999999999999999999999999999\r\n"
        "1.5d2\r\n1e35\r\n1.00000005960464477539062500001 x\r\n0.1;2\r\n\x1A",
        "1\t2\n3, 4\n5;6\n\v7\f8\n-9e-3\n1.5.5\n",

        "\xEF\xBB\xBF-1.25e+1, 2\r\n# c\r\n\r\n  +3.5d-1 ; x\r\n.5",
        "1\r2\r\n\n3 " + std::string(9000, 'y') + "\n4",
        "12345678 \n" + std::string(detail::kMaxFieldLength - 1, '0') + "9\n0" +
            std::string(detail::kMaxFieldLength - 1, '0') + "9\n",
        "\xEF\xBB", // a truncated mark is text
        "1\n2\n3.0e",
    };
    for (const std::string& table : tables) {
        writeBytes(dir / "t.dat", table);
        const RecordCount expected = countFileRecords(dir / "t.dat");
        std::vector<float> want(16), got(16);
        readSignalFile(dir / "t.dat", want);
        EXPECT_EQ(detail::countFileRecordsStreaming(dir / "t.dat", 64), expected);
        detail::readSignalFileStreaming(dir / "t.dat", got, 64);
        EXPECT_EQ(got, want);
        for (std::size_t block : {1, 2, 3, 5, 7, 64}) {
            EXPECT_EQ(detail::countFileRecords(dir / "t.dat", block), expected) << block;
            detail::readSignalFile(dir / "t.dat", got, block);
            EXPECT_EQ(got, want) << block;
        }
    }
    EXPECT_EQ(readText(dir, tables[0], 8),
              (std::vector<float>{16777216.0f, 16777220.0f, -0.0f, 0.5f, 5.0f, 1e-40f,
                                  1.17549435e-38f, 123456789012345.0f}));

    EXPECT_EQ(countText(dir, tables[2]), (RecordCount{3, kGoodFile}));
    EXPECT_EQ(readText(dir, tables[2], 3), (std::vector<float>{-12.5f, 0.35f, 0.5f}));
    EXPECT_EQ(countText(dir, tables[4]), (RecordCount{2, 3}));
}

TEST(ReadSignal, ReadsExactValuesAndZeroFillsTheRest) {
    TempDir dir;
    EXPECT_EQ(readText(dir, "1.5 10\n-2.25e1,3\n# c\n+7\n.1\n", 4),
              (std::vector<float>{1.5f, -22.5f, 7.0f, 0.1f}));
    EXPECT_EQ(readText(dir, "1\n2\n3\n", 5), (std::vector<float>{1, 2, 3, 0, 0}));
    EXPECT_EQ(readText(dir, "1\n2\nx\n4\n", 4), (std::vector<float>{1, 2, 0, 0}));
    EXPECT_EQ(readText(dir, "1\n2\n3\n4\n", 2), (std::vector<float>{1, 2}));

    std::vector<float> values(3, 99.0f);
    EXPECT_EQ(readSignalFile(dir / "missing.dat", values), 0u);
    EXPECT_EQ(values, std::vector<float>(3, 0.0f));
}

// The block scan converts short plain decimals itself; every value must have the
// bits parseNumber() gives, at every length and scale, near midpoints between two
// floats, and at the ends of the float range.
TEST(ReadSignal, ShortDecimalsConvertExactlyAsTheStreamingReader) {
    TempDir dir;
    std::mt19937_64 random(3);
    std::string table;
    char text[64];
    for (int i = 0; i < 20000; ++i) {
        const float v = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        const double d = static_cast<double>(v);
        if (!(std::fabs(v) <= detail::kMaxMagnitude)) continue;
        const int digits = 1 + static_cast<int>(random() % 17);
        std::snprintf(text, sizeof text, i % 3 == 0 ? "%.*f\n" : "%.*g\n", digits, d);
        table += text;
        // Decimals of up to 15 digits that sit on or next to midpoints.
        const std::uint64_t m = (std::uint64_t{1} << 24) + 1 + 2 * (random() % 1000000);
        std::snprintf(text, sizeof text, "%llu\n%.*f\n", static_cast<unsigned long long>(m),
                      static_cast<int>(random() % 7), static_cast<double>(m) / 64);
        table += text;
    }
    writeBytes(dir / "t.dat", table);
    const RecordCount count = countFileRecords(dir / "t.dat");
    ASSERT_EQ(count, detail::countFileRecordsStreaming(dir / "t.dat", 4096));
    std::vector<float> fast(static_cast<std::size_t>(count.records));
    std::vector<float> streaming(fast.size());
    readSignalFile(dir / "t.dat", fast);
    detail::readSignalFileStreaming(dir / "t.dat", streaming, 4096);
    for (std::size_t i = 0; i < fast.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(fast[i]), std::bit_cast<std::uint32_t>(streaming[i]))
            << i;
}

// Byte strings, so failures print readably.
std::string bytes(std::u8string_view text) {
    return {text.begin(), text.end()};
}

std::string utf8Of(std::initializer_list<std::uint16_t> units) {
    std::vector<std::int16_t> codes;
    for (std::uint16_t u : units)
        codes.push_back(static_cast<std::int16_t>(u));
    return bytes(pathFromCodes(codes.data(), static_cast<std::int32_t>(codes.size())).u8string());
}

TEST(PathFromCodes, ConvertsUtf16ToUtf8) {
    EXPECT_EQ(utf8Of({'a', '/', 'b'}), bytes(u8"a/b"));
    EXPECT_EQ(utf8Of({0x00D6, 'l'}), bytes(u8"Öl"));
    EXPECT_EQ(utf8Of({0x20AC, 0xFFFF}), bytes(u8"€\uFFFF"));
    EXPECT_EQ(utf8Of({0xD834, 0xDD1E}), bytes(u8"𝄞"));
    // Unpaired surrogates: a lone high one before a letter, at the end, a lone low one.
    EXPECT_EQ(utf8Of({0xD834, 'x', 0xDD1E, 0xD834}), bytes(u8"\uFFFDx\uFFFD\uFFFD"));
    const std::int16_t one = 'a';
    EXPECT_TRUE(pathFromCodes(&one, 0).empty());
    EXPECT_TRUE(pathFromCodes(&one, -3).empty());
    EXPECT_TRUE(pathFromCodes(nullptr, 4).empty());
}

TEST(PathFromCodes, OpensFilesWithNonAsciiNames) {
    TempDir dir;
    const auto folder = dir / std::filesystem::path(u8"Ölmessung");
    std::filesystem::create_directory(folder);
    writeBytes(folder / std::filesystem::path(u8"𝄞.dat"), "4\n5\n");
    const std::u16string name = (folder / std::filesystem::path(u8"𝄞.dat")).u16string();
    const std::vector<std::int16_t> codes(name.begin(), name.end());
    EXPECT_EQ(
        countFileRecords(pathFromCodes(codes.data(), static_cast<std::int32_t>(codes.size()))),
        (RecordCount{2, kGoodFile}));
}

} // namespace
} // namespace tarnic
