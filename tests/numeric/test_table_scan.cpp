// The block scan of tables (numeric/line_scan.h) against the straightforward
// readers: the streaming TableReader for the count and the read and the byte-by-byte
// comma judge, on random tables of awkward sizes and shapes and on tables with
// hand-worked values, verdicts and column files.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "numeric/line_scan.h"
#include "numeric/table_reader.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace tarnic {

using enum detail::CommaRole;

// Writes `table`; the verdict, count and values of the block scan at block sizes
// from one byte up equal those of the streaming reader under the byte-by-byte
// judge's verdict, bit for bit (ambiguous commas refuse the table unless a bad
// record comes first). The streaming reader reads `known`, the judge gives `byHand`.
static void expectScanAsStreaming(const std::filesystem::path& file, const std::string& table, std::size_t capacity,
                                  const std::vector<float>& known = {}, const detail::CommaVerdict* byHand = nullptr) {
    const auto bitsOf = [](const auto& v) { return std::string(reinterpret_cast<const char*>(v.data()), 4 * v.size()); };
    const auto fieldsOf = [](detail::CommaVerdict v) { return std::vector{std::int64_t(v.role), v.line, v.record}; };
    test::writeBytes(file, table);
    const detail::CommaVerdict verdict = detail::judgeCommasStreaming(file); // ambiguous: commas read as separators
    RecordCount expected = detail::countFileRecordsStreaming(file, 4096, verdict.role);
    std::vector<float> want(capacity), got(capacity);
    if (verdict.role == ambiguous && (expected.status != expected.records + 1 || expected.status >= verdict.record))
        expected = {0, ambiguousCommasStatus(verdict.line)};
    if (expected.status >= kGoodFile) detail::readSignalFileStreaming(file, want, 4096, verdict.role);
    EXPECT_EQ(bitsOf(want), bitsOf(known.empty() ? want : known));
    EXPECT_EQ(fieldsOf(verdict), fieldsOf(byHand != nullptr ? *byHand : verdict));
    EXPECT_EQ(fieldsOf(detail::judgeCommas(file)), fieldsOf(verdict));
    for (std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{64}, detail::scan::kScanBlockSize}) {
        if (block < 64 && block * 4096 < table.size()) continue; // at most 4096 reads a table
        EXPECT_EQ(detail::countFileRecords(file, block), expected) << block;
        detail::readSignalFile(file, got, block);
        EXPECT_EQ(bitsOf(got), bitsOf(want)) << block;
    }
}

// Comma verdicts by hand (also of an empty table and of one with no record): the
// line and record of the deciding evidence. Values by hand: ties to even, just off
// float midpoints at 15 to 31 digits, the smallest subnormal, signed zeros, Fortran
// exponents, the limit 1E+35, fields of every length around the 16-, 32- and 64-byte
// windows (runs of 1s, "1." and zeros, "-0.0…09", rounded by strtof) up to the
// longest, and one byte longer: no number. Tables: 1, 2, prime and power-of-two
// record counts and the hand-worked values, in both decimal signs and every line-end
// style (with "\r": a comment longer than the scan buffers after record 20), then
// 300 small tables steering the comma judge (comma words, odd separators, mixed line
// ends). Byte-order marks, comments, blank lines, leading separators, 1 to 3 fields,
// bad first fields only near the end, no last line end. Random fields: bad and comma
// words, the hand-worked texts, 1 to 22 digits with a sign or none and the point
// anywhere or none or after "0." and zeros. The column files of the hand-worked
// table, for 40 records: each value as its shortest text and CR LF; the second
// column up to its bad field (the third steps over it), the third up to a short
// record.
TEST(TableScan, TablesAreReadAsByTheStreamingReaderAndAsWorkedOutByHand) {
    const std::pair<const char*, detail::CommaVerdict> verdicts[] = {
        {"1;2\n3;4\n", {separator, 0, 0}}, {"1.5,2.5\n3,4\n", {separator, 0, 0}}, {"", {separator, 0, 0}},
        {"# c\n \n", {separator, 0, 0}}, {"5,123;7,5\n-0,25;1\n# a, comment\n1,5e3;2\n", {decimal, 0, 0}},
        {"# c\n\n5,123\n6,5\n", {ambiguous, 3, 1}}, {"1;2\n3,5;4\n1.5,2;3\n", {ambiguous, 3, 3}},
        {"1,5;2\r\n3,5;4\r\n5,5 6\r\n", {ambiguous, 3, 3}}};
    std::vector<std::pair<std::string, float>> rows = {
        {"16777217", 16777216.0f}, {"16777219", 16777220.0f}, {"16777217.000000001", 16777218.0f},
        {"16777216.999999999", 16777216.0f}, {"1.000000059604644775", 1.0f}, {"0.1", 0.1f}, {"+0", 0.0f},
        {"1.000000059604644776", 0x1.000002p0f}, {"1.00000005960464477539062500001", 0x1.000002p0f},
        {"-0.30000001192092896", -0.3f}, {"123456789012345678", 123456789012345678.0f}, {"1.5d3", 1500.0f},
        {"0.0000000000000000001", 1e-19f}, {"1e-45", 1e-45f}, {"-1.17549435e-38", -1.17549435e-38f},
        {"-0", -0.0f}, {"-0.0000000000000000000", -0.0f}, {"1e35", 1e35f}, {"2E-2", 0.02f}, {"1D-40", 1e-40f}};
    for (std::size_t n : {1, 2, 15, 16, 17, 19, 20, 31, 32, 33, 63, 64, 65})
        for (const std::string& s : {n <= 33 ? std::string(n, '1') : "1." + std::string(n - 2, '0'),
                                     "-0." + std::string(n >= 4 ? n - 4 : 0, '0') + "9"})
            rows.emplace_back(s, std::strtof(s.c_str(), nullptr));
    const std::string longest(detail::kMaxFieldLength, '0');
    rows.insert(rows.end(), {{longest, 0.0f}, {"-" + longest.substr(1), -0.0f}, {"-" + longest, 0.0f}});
    const char* const words[] = {"x", "nan", "-inf", "1e", "+-1", "1e39", "--2", "1.2.3", ".", "-.0", "1,5", "-0,25e3",
                                 "12,5d-1", "1,", ",5", "1,2,3", "a,b", "+3,25", "1,5e"};
    auto pick = [random = std::mt19937_64(11)](std::uint64_t n) mutable { return random() % n; };
    const auto field = [&](char sign, bool steer, bool good) {
        if (pick(3) == 0 && !good) return std::string(words[pick(steer ? std::size(words) : sign == ',' ? 7 : 10)]);
        if (pick(3) == 0) return rows[pick(rows.size() - 1)].first;
        std::string s;
        for (auto digits = 1 + pick(22); digits > 0; --digits) s += char('0' + pick(10));
        const auto at = pick(s.size() + 4); // a decimal comma at either end would be a list comma
        if (at <= s.size() && (sign == '.' || (at > 0 && at < s.size()))) s.insert(at, ".");
        return (pick(4) ? "" : pick(2) ? "+" : "-") + (at == s.size() + 1 ? "0." + std::string(pick(8), '0') + s : s);
    };
    test::TempDir dir;
    const std::filesystem::path file = dir / "t.dat";
    for (const auto& [text, verdict] : verdicts) expectScanAsStreaming(file, text, 4, {}, &verdict);
    std::string split[3] = {"", "7\r\n7\r\n7\r\n", "-0\r\n7\r\n7\r\n7\r\n7\r\n7\r\n"};
    std::vector<float> known;
    for (char text[64]; const auto& [s, value] : rows) {
        known.push_back(value);
        if (known.size() <= 40) split[0].append(text, std::to_chars(text, text + 64, value).ptr).append("\r\n");
    }
    for (int trial = 0; trial < 342; ++trial) {
        const bool steer = trial >= 42, hand = !steer && trial % 7 == 6;
        const int records = steer ? 1 + int(pick(40)) : std::vector{1, 2, 3, 97, 1024, 4099, int(known.size())}[trial % 7];
        const char sign = trial / 7 % 2 ? ',' : '.';
        std::string table = pick(2) ? "\xEF\xBB\xBF" : "";
        for (int r = 0; r < records; ++r) {
            const std::string end = std::vector{"\n", "\r\n", "\r"}[steer ? pick(3) : trial / 14 % 3];
            if (!steer && end == "\r" && r == 20) table += "#" + std::string(3 << 20, 'x') + end;
            if (pick(16) == 0) table += (pick(2) ? "# note, 1,5\t;x" : " \t") + end;
            if (pick(8) == 0) table += sign == ',' ? "\t" : " ,";
            table += hand ? rows[r].first + (r > 5 ? "" : r == 0 ? "\t7\t-0" : r == 3 ? "\tx\t7" : "\t7\t7")
                          : field(sign, steer, r < records - 2 && !steer);
            for (auto f = hand ? 0 : pick(3); f > 0; --f)
                table += (steer ? " ;\t,\v" : sign == ',' ? "\t;" : "\t ")[pick(steer ? 5 : 2)] + field(sign, steer, false);
            table += r + 1 < records || pick(2) ? end : ""; // or no line end after the last line
        }
        if (sign == ',') std::ranges::replace(table, '.', ',');
        SCOPED_TRACE(trial);
        expectScanAsStreaming(file, table, hand ? known.size() : records + 1U,
                              hand ? known : std::vector<float>{});
        EXPECT_EQ(hand ? demultiplexTable(file, 40) : 3, 3);
        for (int c = 0; hand && c < 3; ++c) EXPECT_EQ(test::readBytes(columnFileName(file, c + 1)), split[c]) << c;
    }
}

} // namespace tarnic
