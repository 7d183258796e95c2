// The block scan of tables (numeric/line_scan.h) against the straightforward
// readers: the streaming TableReader with parseNumber() (std::from_chars) for the
// count, the read and the column files, and the byte-by-byte comma judge. Random
// tables of awkward shapes (field lengths around the 16-, 32- and 64-byte windows,
// up to kMaxFieldLength, 1, 2, prime and power-of-two record counts, values next
// to float midpoints, long digit strings, exponents, subnormals, negative zeros,
// decimal commas) and tables with hand-worked answers.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric/line_scan.h"
#include "numeric/table_reader.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace tarnic {
namespace {

using test::TempDir;
using test::writeBytes;

std::vector<std::uint32_t> bitsOf(const std::vector<float>& values) {
    std::vector<std::uint32_t> bits;
    for (float v : values)
        bits.push_back(std::bit_cast<std::uint32_t>(v));
    return bits;
}

// Whether `text` is a number of a table with `decimalSign` (parseNumber() works on
// a copy: it rewrites its text).
bool isNumber(std::string text, char decimalSign) {
    float ignored = 0.0f;
    return detail::parseNumber(text.data(), text.data() + text.size(), ignored, decimalSign);
}

// The count and the values of the block scan (at several block sizes) equal those
// of the streaming reader under the byte-by-byte judge's verdict, bit for bit; a
// table with ambiguous commas is refused unless a bad record comes first.
void expectScanAsStreaming(const std::filesystem::path& file, std::size_t capacity) {
    const detail::CommaVerdict verdict = detail::judgeCommasStreaming(file);
    const detail::CommaRole role =
        verdict.role == detail::CommaRole::decimal ? verdict.role : detail::CommaRole::separator;
    RecordCount expected = detail::countFileRecordsStreaming(file, 4096, role);
    std::vector<float> want(capacity), got(capacity);
    detail::readSignalFileStreaming(file, want, 4096, role);
    if (verdict.role == detail::CommaRole::ambiguous &&
        !(expected.status == expected.records + 1 && expected.status < verdict.record)) {
        expected = {0, ambiguousCommasStatus(verdict.line)};
        want.assign(capacity, 0.0f);
    }
    for (std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{64}, detail::kDefaultBlockSize}) {
        if (block == 1 && capacity > 100) continue; // one read call a byte: small tables only
        SCOPED_TRACE(block);
        EXPECT_EQ(detail::countFileRecords(file, block), expected);
        detail::readSignalFile(file, got, block);
        EXPECT_EQ(bitsOf(got), bitsOf(want));
    }
}

// Whether every comma of `text` stands between two digits (so a decimal-comma
// table stays one).
bool commasBetweenDigits(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == ',' && (i == 0 || i + 1 == text.size() || !std::isdigit(static_cast<unsigned char>(text[i - 1])) ||
                               !std::isdigit(static_cast<unsigned char>(text[i + 1]))))
            return false;
    return true;
}

// A random number text of one of the awkward kinds, with `decimalSign`.
std::string randomNumber(std::mt19937_64& random, char decimalSign) {
    char text[96];
    const auto pick = [&random](std::uint64_t n) { return random() % n; };
    std::string s;
    switch (pick(9)) {
    case 0: { // plain, 1 to 22 digits, point anywhere (or none), optional sign
        const int digits = 1 + static_cast<int>(pick(22));
        const int point = static_cast<int>(pick(static_cast<std::uint64_t>(digits) + 2)) - 1;
        for (int i = 0; i < digits; ++i) {
            if (i == point) s += '.';
            s += static_cast<char>('0' + pick(10));
        }
        if (point == digits) s += '.';
        break;
    }
    case 1: { // float midpoints and their neighbours, as integers or scaled by 10^-k
        const std::uint64_t odd = (std::uint64_t{1} << 24) + 1 + 2 * pick(1 << 22);
        const std::uint64_t m = odd + pick(3) - 1;
        const int shift = static_cast<int>(pick(30));
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(pick(12)),
                      std::ldexp(static_cast<double>(m), -shift));
        s = text;
        break;
    }
    case 2: // the shortest text of a random float of any magnitude
    case 3: {
        const float v = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(v)) return "1";
        s.assign(text, std::to_chars(text, text + sizeof text, v).ptr);
        break;
    }
    case 4: // many digits (up to the 17 of a double)
        std::snprintf(text, sizeof text, "%.*g", 1 + static_cast<int>(pick(17)),
                      std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(pick(80))));
        s = text;
        break;
    case 5: // exponents, Fortran letters, subnormals and beyond the float range
        std::snprintf(text, sizeof text, "%.*e", static_cast<int>(pick(9)),
                      std::ldexp(1.0 + static_cast<double>(pick(1000)) / 1000,
                                 static_cast<int>(pick(280)) - 160));
        s = text;
        if (pick(4) == 0) s[s.find('e')] = "dDE"[pick(3)];
        break;
    case 6: { // zeros of both signs, leading zeros
        const char* const zeros[] = {"0", "-0", "+0", "0.0", "-0.000", "000", "-.0", "0000001.5"};
        s = zeros[pick(8)];
        break;
    }
    case 7: { // not numbers
        const char* const bad[] = {"x", "1.2.3", "nan", "-inf", "1e", "+-1", ".", "1e39", "--2"};
        s = bad[pick(9)];
        break;
    }
    default: // plain 15 to 19 digits, a long run of zeros after the point
        s = "0." + std::string(pick(8), '0') + std::to_string(random() % 10000000000000000000ULL);
        break;
    }
    if (s[0] != '-' && s[0] != '+' && pick(4) == 0) s.insert(s.begin(), "+-"[pick(2)]);
    if (decimalSign == ',') {
        for (char& c : s)
            if (c == '.') c = ',';
        if (!commasBetweenDigits(s)) return randomNumber(random, decimalSign);
    }
    return s;
}

// Random tables, every record a random number and a random tail, in every
// line-end style, with separators of the table's kind, comments and blank lines
// between, for record counts 1, 2, primes and powers of two.
TEST(TableScan, RandomTablesCountAndReadAsTheStreamingReader) {
    TempDir dir;
    std::mt19937_64 random(11);
    const char* const lineEnds[] = {"\n", "\r\n", "\r"};
    for (int records : {1, 2, 3, 97, 1024, 4099}) {
        for (const char decimalSign : {'.', ','}) {
            for (int lineEnd = 0; lineEnd < 3; ++lineEnd) {
                std::string table = random() % 2 ? "\xEF\xBB\xBF" : "";
                for (int r = 0; r < records; ++r) {
                    if (random() % 16 == 0) table += random() % 2 ? "# note, 1,5\t;x" : " \t";
                    if (random() % 16 == 0) table += lineEnds[lineEnd];
                    if (random() % 8 == 0) table += decimalSign == ',' ? "\t" : " ,";
                    std::string number = randomNumber(random, decimalSign);
                    // Bad fields only near the end, so most of the table is read.
                    while (r < records - 2 && !isNumber(number, decimalSign))
                        number = randomNumber(random, decimalSign);
                    table += number;
                    if (random() % 2) {
                        table += decimalSign == ',' ? ";" : " ";
                        table += randomNumber(random, decimalSign);
                    }
                    table += lineEnds[lineEnd];
                }
                if (random() % 2) table.pop_back(); // no line end after the last line
                writeBytes(dir / "t.dat", table);
                SCOPED_TRACE(std::to_string(records) + decimalSign + std::to_string(lineEnd));
                expectScanAsStreaming(dir / "t.dat", static_cast<std::size_t>(records) + 1);
            }
        }
    }
}

// First fields of every length around the windows (16 bytes converted from one
// register, 32 bytes of masks, 64 bytes of the comma judge) and the longest a
// field may be; each field's value is known: its digits are a run of 9s or 1s.
TEST(TableScan, FieldLengthsAroundTheWindowsReadTheirKnownValues) {
    TempDir dir;
    struct Case {
        std::string field;
        float value;
    };
    std::vector<Case> cases;
    for (int length : {1, 2, 15, 16, 17, 19, 20, 31, 32, 33, 63, 64, 65}) {
        const auto n = static_cast<std::size_t>(length);
        // A run of 1s (up to 1.1e32), or "1." and zeros; "-0.000…09" with a sign, a
        // point and length - 3 zeros. strtof (correctly rounded) gives each value.
        const std::string ones = length <= 33 ? std::string(n, '1') : "1." + std::string(n - 2, '0');
        const std::string tiny = "-0." + std::string(n >= 4 ? n - 4 : 0, '0') + "9";
        for (const std::string& field : {ones, tiny})
            cases.push_back({field, std::strtof(field.c_str(), nullptr)});
    }
    const std::string longest(detail::kMaxFieldLength, '0');
    cases.push_back({longest, 0.0f});
    cases.push_back({"-" + longest.substr(1), -0.0f});
    std::string table;
    std::vector<float> want;
    for (const Case& c : cases) {
        table += c.field + " 7\r\n";
        want.push_back(c.value);
    }
    writeBytes(dir / "t.dat", table);
    std::vector<float> got(want.size());
    EXPECT_EQ(countFileRecords(dir / "t.dat"), (RecordCount{static_cast<std::int32_t>(want.size()), kGoodFile}));
    EXPECT_EQ(readSignalFile(dir / "t.dat", got), want.size());
    EXPECT_EQ(bitsOf(got), bitsOf(want));
    // One byte more than the longest field is no number.
    writeBytes(dir / "t.dat", "1\n0" + longest + "\n");
    EXPECT_EQ(countFileRecords(dir / "t.dat"), (RecordCount{1, 2}));
}

// Values whose conversion is known by hand, in both decimal signs: ties to even,
// the first decimal above a midpoint, values just off midpoints at 15 to 19
// digits, the smallest subnormal, signed zeros, the limit 1E+35.
TEST(TableScan, HandWorkedValuesAreReadBitForBit) {
    TempDir dir;
    const float above1 = std::nextafter(1.0f, 2.0f);
    const std::pair<const char*, float> cases[] = {
        {"16777217", 16777216.0f},             // tie to even, down
        {"16777219", 16777220.0f},             // tie to even, up
        {"16777217.000000001", 16777218.0f},   // just above the tie
        {"16777216.999999999", 16777216.0f},   // just below it
        {"1.000000059604644775", 1.0f},        // 19 digits just below the midpoint of 1 and next
        {"1.000000059604644776", above1},      // just above it
        {"1.00000005960464477539062500001", above1},
        {"0.1", 0.1f},
        {"-0.30000001192092896", -0.3f},
        {"123456789012345678", 123456789012345678.0f},
        {"0.0000000000000000001", 1e-19f},
        {"1e-45", std::numeric_limits<float>::denorm_min()},
        {"-1.17549435e-38", -std::numeric_limits<float>::min()},
        {"-0", -0.0f},
        {"-0.0000000000000000000", -0.0f},
        {"1e35", 1e35f},
    };
    for (const char decimalSign : {'.', ','}) {
        std::string table;
        std::vector<float> want;
        for (const auto& [text, value] : cases) {
            std::string field = text;
            if (decimalSign == ',')
                for (char& c : field)
                    if (c == '.') c = ',';
            table += field + (decimalSign == ',' ? ";1\n" : " 1\n");
            want.push_back(value);
        }
        writeBytes(dir / "t.dat", table);
        std::vector<float> got(want.size());
        SCOPED_TRACE(decimalSign);
        EXPECT_EQ(countFileRecords(dir / "t.dat"), (RecordCount{static_cast<std::int32_t>(want.size()), kGoodFile}));
        EXPECT_EQ(readSignalFile(dir / "t.dat", got), want.size());
        EXPECT_EQ(bitsOf(got), bitsOf(want));
    }
}

// The line-at-a-time comma judge gives the verdict, line and record of the
// byte-by-byte judge on random tables built from words that steer it every way
// (decimal-shaped words, list commas, blank and semicolon runs, leading commas,
// comments, lines longer than its 64-byte window), and known verdicts by hand.
TEST(TableScan, CommaJudgeAgreesWithTheByteByByteJudge) {
    TempDir dir;
    using detail::CommaRole;
    const std::pair<const char*, detail::CommaVerdict> known[] = {
        {"1;2\n3;4\n", {CommaRole::separator, 0, 0}},
        {"5,123;7,5\n-0,25;1\n# a, comment\n1,5e3;2\n", {CommaRole::decimal, 0, 0}},
        {"1.5,2.5\n3,4\n", {CommaRole::separator, 0, 0}},
        {"# c\n\n5,123\n6,5\n", {CommaRole::ambiguous, 3, 1}},
        {"1,5;2\r\n3,5;4\r\n5,5 6\r\n", {CommaRole::ambiguous, 3, 3}},
        {"1;2\n3,5;4\n1.5,2;3\n", {CommaRole::ambiguous, 3, 3}},
    };
    for (const auto& [table, verdict] : known) {
        writeBytes(dir / "t.dat", table);
        const detail::CommaVerdict got = detail::judgeCommas(dir / "t.dat");
        EXPECT_EQ((std::array{static_cast<std::int64_t>(got.role), got.line, got.record}),
                  (std::array{static_cast<std::int64_t>(verdict.role), verdict.line, verdict.record}))
            << table;
    }
    const char* const words[] = {"1,5",   "-0,25e3", "12,5d-1", "7",     "1.5",  "1,",     ",5",
                                 "1,2,3", "a,b",     "+3,25",   "1,5e",  "x",    "100000", "2,75"};
    const char* const runs[] = {";", "\t", " ", " ; ", ";;", "\t ", "\v", ","};
    std::mt19937_64 random(5);
    for (int trial = 0; trial < 400; ++trial) {
        std::string table;
        const int lines = 1 + static_cast<int>(random() % 40);
        // Most tables lean to one kind, so the rarer evidence shows late.
        const int bias = static_cast<int>(random() % 3);
        for (int l = 0; l < lines; ++l) {
            if (random() % 12 == 0) table += "# 1,5 x";
            else {
                if (random() % 10 == 0) table += random() % 2 ? " " : ",";
                const int fields = 1 + static_cast<int>(random() % (random() % 8 == 0 ? 12 : 3));
                for (int f = 0; f < fields; ++f) {
                    if (f > 0) table += runs[bias == 0 && random() % 8 ? random() % 2 : random() % 8];
                    table += words[bias == 1 && random() % 8 ? random() % 3 : random() % 14];
                }
                if (random() % 6 == 0) table += runs[random() % 8];
            }
            table += random() % 3 == 0 ? "\r\n" : random() % 2 ? "\n" : "\r";
        }
        writeBytes(dir / "t.dat", table);
        const detail::CommaVerdict want = detail::judgeCommasStreaming(dir / "t.dat");
        const detail::CommaVerdict got = detail::judgeCommas(dir / "t.dat");
        ASSERT_EQ((std::array{static_cast<std::int64_t>(got.role), got.line, got.record}),
                  (std::array{static_cast<std::int64_t>(want.role), want.line, want.record}))
            << table;
    }
}

// Each column file of a random table holds what the streaming reader finds in
// that column (up to its first missing or bad field), each value as the shortest
// text std::to_chars gives, CR LF after each; decimal-comma tables included.
TEST(TableScan, ColumnFilesHoldWhatTheStreamingReaderReads) {
    TempDir dir;
    std::mt19937_64 random(13);
    for (int trial = 0; trial < 24; ++trial) {
        const char decimalSign = trial % 3 == 2 ? ',' : '.';
        const int columns = 2 + static_cast<int>(random() % 4);
        const int records = trial % 4 == 0 ? 1 : 1 + static_cast<int>(random() % 600);
        std::string table;
        for (int r = 0; r < records; ++r) {
            const int fields = r > records / 2 && random() % 40 == 0 ? 1 : columns;
            for (int f = 0; f < fields; ++f) {
                if (f > 0) table += decimalSign == ',' ? (random() % 2 ? ";" : "\t") : (random() % 2 ? " " : "\t");
                std::string number = randomNumber(random, decimalSign);
                if (r < records / 2)
                    while (!isNumber(number, decimalSign))
                        number = randomNumber(random, decimalSign);
                table += number;
            }
            table += "\r\n";
        }
        writeBytes(dir / "t.dat", table);
        const detail::CommaRole role = detail::judgeCommasStreaming(dir / "t.dat").role;
        if (role == detail::CommaRole::ambiguous) continue;
        const std::int32_t nrec = trial % 5 == 0 ? records / 2 + 1 : records;

        // The straightforward split, record by record through the streaming reader.
        std::vector<std::string> expected(static_cast<std::size_t>(columns));
        std::vector<bool> open(static_cast<std::size_t>(columns), true);
        detail::TableReader reader(dir / "t.dat", 4096, role);
        int firstFields = -1;
        for (std::int32_t r = 0; r < nrec && reader.nextRecord(); ++r) {
            int c = 0;
            for (; c < columns; ++c) {
                float value = 0.0f;
                const detail::FieldKind kind = reader.nextField(value);
                if (kind == detail::FieldKind::end) break;
                if (!open[static_cast<std::size_t>(c)]) continue;
                if (kind == detail::FieldKind::bad) {
                    open[static_cast<std::size_t>(c)] = false;
                    continue;
                }
                char text[64];
                expected[static_cast<std::size_t>(c)]
                    .append(text, std::to_chars(text, text + sizeof text, value).ptr)
                    .append("\r\n");
            }
            if (firstFields < 0) firstFields = c;
            for (; c < columns; ++c)
                open[static_cast<std::size_t>(c)] = false;
        }
        int files = 0;
        for (const std::string& column : expected)
            files += column.empty() ? 0 : 1;
        SCOPED_TRACE(trial);
        EXPECT_EQ(demultiplexTable(dir / "t.dat", nrec), firstFields > 1 ? files : 0);
        for (int c = 0; c < columns && firstFields > 1; ++c) {
            const std::filesystem::path column = columnFileName(dir / "t.dat", c + 1);
            EXPECT_EQ(std::filesystem::exists(column) ? test::readBytes(column) : "",
                      expected[static_cast<std::size_t>(c)])
                << c;
            std::filesystem::remove(column);
        }
    }
}

} // namespace
} // namespace tarnic
