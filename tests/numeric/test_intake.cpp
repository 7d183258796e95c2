// The table intake: number text, the record and structure rules of a table, the
// block reader against the streaming one, file names from UTF-16 code units, and
// the C binding of Tarnic.dll.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric/table_reader.h"
#include "numeric/tarnic_api.h"
#include "numeric_support.h"
#include "test_support.h"

#include <bit>
#include <cstdio>
#include <optional>

namespace tarnic {
namespace {

using namespace std::literals;
using namespace test;

std::optional<float> parse(std::string text) {
    float value = 0.0f;
    if (!detail::parseNumber(text.data(), text.data() + text.size(), value)) return std::nullopt;
    return value;
}

std::uint32_t bits(float v) {
    return std::bit_cast<std::uint32_t>(v);
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

// Accepted texts with the float they round to, compared bit for bit so that the
// sign of a zero counts, and texts that are no number of a table.
TEST(NumberText, AcceptsDecimalAndExponentFormsRoundedOnceAndNothingElse) {
    // clang-format off
    const std::pair<const char*, float> accepted[] = {
        {"0", 0.0f}, {"1.5e-3", 1.5e-3f}, {".5", 0.5f}, {"-3.", -3.0f}, {"+2E+07", 2e7f},
        {"1.0D-3", 1e-3f}, {"7d2", 700.0f}, {"0.1", 0.1f}, {"1e35", 1e35f},
        {"-1.00000002e35", -1e35f}, // rounds to the limit itself
        {"1e-45", std::numeric_limits<float>::denorm_min()},
        {"000000000000000000000000000000000000000001", 1.0f},
        {"16777217", 16777216.0f}, // a tie goes to even
        // Just above the midpoint between 1 and the next float; rounding through a
        // double would land on the midpoint and then go down to 1.
        {"1.00000005960464477539062500001", std::nextafter(1.0f, 2.0f)},
        // Magnitudes below the smallest float are zeros of their sign.
        {"1e-50", 0.0f}, {"-1e-50", -0.0f}, {"-0", -0.0f}, {"1e-99999999999999999999", 0.0f},
        {"-0.0000000000000000000000000000000000000000000000001e-3", -0.0f}};
    const char* const rejected[] = {
        "", "abc", "1.5x", "nan", "-nan", "inf", "-inf", "infinity", "1e39", "-1e39",
        "3.4028236e38", "3.4028235e38", "-3e38", "1.0000001e35", "2E+35", "1e99999999999999999999",
        "1e", "1e+", ".", "-", "+", "+-1", "++1", "--1", "1.2.3", "0x10", "1e5.5", "1d", "d5", "1 ",
        " 1", "1_000"};
    // clang-format on
    for (const auto& [text, want] : accepted) {
        const std::optional<float> got = parse(text);
        ASSERT_TRUE(got) << text;
        EXPECT_EQ(bits(*got), bits(want)) << text;
    }
    for (const char* text : rejected)
        EXPECT_EQ(parse(text), std::nullopt) << '"' << text << '"';
}

// Each table with its record count and status and the values read from it into
// one slot more than its good records (that slot must come back 0). The block
// scan with blocks of 3 bytes, which splits every field, line end and mark,
// counts the same.
TEST(TableRecords, CountStatusAndValuesFollowTheRecordRules) {
    const RecordCount two{2, kGoodFile}, three{3, kGoodFile};
    const auto ambiguous = [](std::int64_t line) {
        return RecordCount{0, ambiguousCommasStatus(line)};
    };
    // clang-format off
    std::vector<std::tuple<std::string, RecordCount, std::vector<float>>> cases{
        // Line ends of every kind; an end-of-file byte 0x1A only as the last byte.
        {"1\n2\n3\n", three, {1, 2, 3}}, {"1\r\n2\r\n3\r\n", three, {1, 2, 3}},
        {"1\n2\n3", three, {1, 2, 3}}, {"1\r2\r3\r", three, {1, 2, 3}},
        {"1\r\n2\r\n3\r\n\x1A", three, {1, 2, 3}}, {"1\n2\n3\x1A", three, {1, 2, 3}},
        {"1\n2\n3\x1A\x1A", {2, 3}, {1, 2}},
        // A byte-order mark at the start, comments and blank lines are skipped; a
        // mark anywhere else is text.
        {"\xEF\xBB\xBF" "1\n2\n", two, {1, 2}}, {"1\n\xEF\xBB\xBF" "2\n", {1, 2}, {1}},
        {"# head\n\n \t\n% x\n' y\n1 a\n  # indented\n;,\n2\n\n", two, {1, 2}},
        // Only the first field counts.
        {"1, 2\n3;4\n\t5\t6\n ,;7 8\n9 abc nan\n", {5, kGoodFile}, {1, 3, 5, 7, 9}},
        {"1.5 10\n-2.25e1,3\n# c\n+7\n.1\n", {4, kGoodFile}, {1.5f, -22.5f, 7.0f, 0.1f}},
        // A wrong structure names the record among the data records.
        {"# c\n1\n2\n\n# c\n3\nabc\n5\n", {3, 4}, {1, 2, 3}}, {"abc\n1\n", {0, 1}, {}},
        {"1\n2\n\0\0\x01\xff\n3\n"s, {2, 3}, {1, 2}},
        // Empty and recordless files.
        {"", {0, kEmptyFile}, {}}, {"# only a comment\n\n", {0, 1}, {}},
        {"\xEF\xBB\xBF", {0, 1}, {}}, {"\x1A", {0, 1}, {}},
        // Decimal commas are decided by the whole table: the decimal sign when
        // fields are separated by semicolons or tabs and every comma stands between
        // digits; a point in such a table is an error.
        {"5,123;7,5\n-0,25;1\n# a, comment\n1,5e3;2\n", three, {5.123f, -0.25f, 1500.0f}},
        {"5,5\t1,25\r\n6\t2\r\n", two, {5.5f, 6.0f}}, {"1,5 ; 2,5\n3;4\n", two, {1.5f, 3.0f}},
        {"1,5;2\n1.500;3\n", {1, 2}, {1.5f}},
        // Separators: no comma between digits, or list commas without semicolons
        // or tabs.
        {"1, 2\n3 ,4\n", two, {1, 3}}, {"1.5,2.5\n3,4\n", two, {1.5f, 3.0f}},
        {",5;6\n7\n", two, {5, 7}},
        // Ambiguous: refused at the line where the evidence is complete, unless a
        // bad record comes first.
        {"# c\n\n5,123\n6,5\n", ambiguous(3), {}}, {"1 2\n5,1 6,2\n", ambiguous(2), {}},
        {"1,5;2\r\n3,5;4\r\n5,5 6\r\n", ambiguous(3), {}},
        {"1;2\n3,5;4\n1.5,2;3\n", ambiguous(3), {}}, {"1\nx\n5,5\n", {1, 2}, {1}},
    };
    // clang-format on
    for (const char* bad : {"nan", "inf", "1e39", "-3E+38", "1.5x", "1.2.3", "\x1A"})
        cases.push_back({"1\n"s + bad + " 2\n3\n", {1, 2}, {1}});
    TempDir dir;
    for (const auto& [table, count, values] : cases) {
        SCOPED_TRACE(table);
        EXPECT_EQ(countText(dir, table), count);
        EXPECT_EQ(detail::countFileRecords(dir / "t.dat", 3), count);
        std::vector<float> want = values;
        want.push_back(0.0f);
        EXPECT_EQ(readText(dir, table, want.size()), want);
    }
    // Fewer values asked than there are; files that cannot be opened.
    EXPECT_EQ(readText(dir, "1\n2\n3\n4\n", 2), (std::vector<float>{1, 2}));
    EXPECT_EQ(countFileRecords(dir / "missing.dat"), (RecordCount{0, 1}));
    EXPECT_EQ(countFileRecords(dir.path()), (RecordCount{0, 1})); // a directory
    std::vector<float> values(3, 99.0f);
    EXPECT_EQ(readSignalFile(dir / "missing.dat", values), 0u);
    EXPECT_EQ(values, std::vector<float>(3, 0.0f));
}

TEST(TableRecords, HugeLinesNeedNoMemory) {
    TempDir dir;
    const std::string garbage(4 << 20, 'x');
    EXPECT_EQ(countText(dir, garbage), (RecordCount{0, 1}));
    // Lines longer than a block plus 1 MiB: the streaming reader takes over.
    const std::string table = "1\n" + std::string(3 << 20, ' ') + "2\n3 " + garbage + "\n4";
    EXPECT_EQ(countText(dir, table), (RecordCount{4, kGoodFile}));
    EXPECT_EQ(readText(dir, table, 4), (std::vector<float>{1, 2, 3, 4}));
    // A long tail after a good first field is skipped.
    EXPECT_EQ(countText(dir, "1 " + garbage + "\n2\n"), (RecordCount{2, kGoodFile}));
    // First fields are read up to kMaxFieldLength bytes.
    const std::string longest = std::string(detail::kMaxFieldLength - 1, '0') + "1";
    EXPECT_EQ(countText(dir, longest + "\n0" + longest + "\n"), (RecordCount{1, 2}));
}

// The block reader against the streaming one, value bits and counts: tricky
// tables at every block size, so that every field, line end and byte-order mark
// split across two blocks is handled (a line longer than a block plus 1 MiB takes
// the streaming reader itself), and short decimals, which the block scan converts
// itself, at every length and scale, near midpoints between two floats and at the
// ends of the float range.
TEST(TableRecords, BlockReaderMatchesTheStreamingReaderAtEveryBlockSize) {
    TempDir dir;
    std::vector<std::string> tables = {
        "16777217\r\n16777219\r\n-0\r\n+.5\r\n5.\r\n1e-40\r\n1.17549435e-38\r\n"
        "123456789012345\r\n1234567890123456\r\n0.000000000000001\r\n"
        "99999999999999999999999999999\r\n1.5d2\r\n1e35\r\n"
        "1.00000005960464477539062500001 x\r\n0.1;2\r\n\x1A",
        "1\t2\n3, 4\n5;6\n\v7\f8\n-9e-3\n1.5.5\n",
        "\xEF\xBB\xBF-1.25e+1, 2\r\n# c\r\n\r\n  +3.5d-1 ; x\r\n.5",
        "1\r2\r\n\n3 " + std::string(9000, 'y') + "\n4",
        "12345678 \n" + std::string(detail::kMaxFieldLength - 1, '0') + "9\n0" +
            std::string(detail::kMaxFieldLength - 1, '0') + "9\n",
        "\xEF\xBB", // a truncated mark is text
        "1\n2\n3.0e",
        ""};
    std::mt19937_64 random(3);
    char text[64];
    for (int i = 0; i < 20000; ++i) {
        const float v = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!(std::fabs(v) <= detail::kMaxMagnitude)) continue;
        const int digits = 1 + static_cast<int>(random() % 17);
        std::snprintf(text, sizeof text, i % 3 == 0 ? "%.*f\n" : "%.*g\n", digits,
                      static_cast<double>(v));
        tables.back() += text;
        // Decimals of up to 15 digits that sit on or next to midpoints.
        const std::uint64_t m = (std::uint64_t{1} << 24) + 1 + 2 * (random() % 1000000);
        std::snprintf(text, sizeof text, "%llu\n%.*f\n", static_cast<unsigned long long>(m),
                      static_cast<int>(random() % 7), static_cast<double>(m) / 64);
        tables.back() += text;
    }
    for (const std::string& table : tables) {
        SCOPED_TRACE(table.substr(0, 40));
        writeBytes(dir / "t.dat", table);
        const RecordCount expected = detail::countFileRecordsStreaming(dir / "t.dat", 64);
        std::vector<float> want(static_cast<std::size_t>(expected.records) + 1), got(want.size());
        detail::readSignalFileStreaming(dir / "t.dat", want, 64);
        for (std::size_t block :
             std::initializer_list<std::size_t>{detail::kDefaultBlockSize, 1, 2, 3, 5, 7, 64}) {
            if (table.size() > 100000 && block < 64) continue; // the decimals: large blocks only
            EXPECT_EQ(detail::countFileRecords(dir / "t.dat", block), expected) << block;
            detail::readSignalFile(dir / "t.dat", got, block);
            EXPECT_TRUE(std::equal(got.begin(), got.end(), want.begin(),
                                   [](float a, float b) { return bits(a) == bits(b); }))
                << block;
        }
    }
}

// A path from code units: `tail` appended to `file`'s own units.
std::filesystem::path fromCodes(const std::filesystem::path& file, std::u16string_view tail) {
    const std::vector<std::int16_t> codes = codeUnits(file, tail);
    return pathFromCodes(codes.data(), static_cast<std::int32_t>(codes.size()));
}

// Surrogate pairs combine; unpaired surrogates (a lone high one before a letter,
// at the end, a lone low one) become U+FFFD, except U+DC80 .. U+DCFF, which carry
// the byte 0x80 .. 0xFF of a name that is not UTF-8.
TEST(PathFromCodes, ConvertsUtf16ToUtf8) {
    const std::pair<std::u16string_view, std::u8string_view> names[] = {
        {u"a/b", u8"a/b"}, {u"\u00D6l", u8"Öl"}, {u"\u20AC\uFFFF", u8"€\uFFFF"},
        {u"\xD834\xDD1E\xDBFF\xDFFF", u8"𝄞\U0010FFFF"},
        {u"\xD834x\xDD1E\xD834", u8"\uFFFDx\uFFFD\uFFFD"},
        {u"\xDC7F\xDC80\xDCE9\xDCFF\xDD00\xDFFF", u8"\uFFFD\x80\xE9\xFF\uFFFD\uFFFD"}};
    for (const auto& [units, utf8] : names)
        EXPECT_TRUE(fromCodes({}, units).u8string() == utf8);
    const std::int16_t one = 'a';
    EXPECT_TRUE(pathFromCodes(&one, 0).empty() && pathFromCodes(&one, -3).empty() &&
                pathFromCodes(nullptr, 4).empty());
}

// The length, not a terminator, ends a name, so a unit 0 is part of it and such a
// name denotes no file. (Found by fuzz/fuzz_intake: "dir/t" followed by a unit 0
// used to open "dir/t", and splitting "dir/a" 0 ".dat" overwrote "dir/a".)
TEST(PathFromCodes, AUnitZeroInTheNameReachesNoFile) {
    TempDir dir;
    writeBytes(dir / "t", "4\n5\n");
    ASSERT_EQ(countFileRecords(fromCodes(dir / "t", u"")), (RecordCount{2, kGoodFile}));
    for (std::u16string_view tail : {u"\0"sv, u"\0x"sv, u"\0\0\0"sv}) {
        const std::filesystem::path path = fromCodes(dir / "t", tail);
        EXPECT_EQ(path.native().size(), (dir / "t").native().size() + tail.size());
        EXPECT_EQ(countFileRecords(path), (RecordCount{0, 1})) << tail.size();
        std::vector<float> values(2, 99.0f);
        EXPECT_EQ(readSignalFile(path, values), 0u) << tail.size();
        EXPECT_EQ(values, (std::vector<float>{0.0f, 0.0f})) << tail.size();
    }
    // "a" 0 ".dat": the column files "a" 0 "-Col1.dat" would be "a" when cut at the 0.
    writeBytes(dir / "a", "1 2\n3 4\n");
    EXPECT_EQ(demultiplexTable(fromCodes(dir / "a", u"\0.dat"sv), 2), 0);
    EXPECT_EQ(readBytes(dir / "a"), "1 2\n3 4\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);
}

// Tarnic.dll loaded as the program loads it, by name at run time; the C routines
// of the intake called through the resolved pointers, every argument by
// reference and the file name as UTF-16 code units.
TEST(Binding, IntakeRoutinesResolveByTheirCNamesAndOpenNonAsciiNames) {
    const auto count = dllRoutine<decltype(&CountFileRecords_dll)>("CountFileRecords_dll");
    const auto read = dllRoutine<decltype(&ReadSignalFile_dll)>("ReadSignalFile_dll");
    const auto split = dllRoutine<decltype(&DemulplexTable_dll)>("DemulplexTable_dll");
    ASSERT_TRUE(count && read && split) << dlerror();
    TempDir dir;
    const std::filesystem::path folder = dir / std::filesystem::path(u8"Ölmessung"),
                                clef = folder / std::filesystem::path(u8"𝄞.dat");
    std::filesystem::create_directory(folder);
    writeBytes(clef, "# value time\r\n1.5 0\r\n-2 1\r\n3e2 2\r\n");
    writeBytes(folder / "empty.dat", "");
    // The counts and statuses of a good, a missing and an empty file.
    const std::pair<std::filesystem::path, std::array<std::int32_t, 2>> files[] = {
        {clef, {3, -1}}, {folder / "missing.dat", {0, 1}}, {folder / "empty.dat", {0, 0}}};
    for (const auto& [file, expected] : files) {
        std::vector<std::int16_t> units = codeUnits(file);
        std::int32_t length = static_cast<std::int32_t>(units.size()), nrec = -7, status = -7;
        count(units.data(), &length, &nrec, &status);
        EXPECT_EQ((std::array{nrec, status}), expected) << file;
        std::vector<float> signal(4, 99.0f);
        std::int32_t asked = 4;
        read(units.data(), &length, &asked, signal.data());
        EXPECT_EQ(signal, (file == clef ? std::vector<float>{1.5f, -2.0f, 300.0f, 0.0f}
                                        : std::vector<float>(4, 0.0f)));
    }
    std::vector<std::int16_t> units = codeUnits(clef);
    std::int32_t length = static_cast<std::int32_t>(units.size()), nrec = 3;
    split(units.data(), &length, &nrec);
    EXPECT_EQ(readBytes(folder / std::filesystem::path(u8"𝄞-Col2.dat")), "0\r\n1\r\n2\r\n");
}

} // namespace
} // namespace tarnic
