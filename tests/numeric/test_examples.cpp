// The bundled example signals, as the build wrote them into the application folder.
#include "numeric/demultiplex.h"
#include "numeric/intake.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tarnic {
namespace {

namespace fs = std::filesystem;
const fs::path kExamples = TARNIC_EXAMPLES_DIR;

TEST(Examples, EachFileHasItsRecordsAndStatus) {
    const std::pair<const char*, RecordCount> expected[] = {
        {"ar2_peak.dat", {4096, kGoodFile}},
        {"two_sines_trend.dat", {5000, kGoodFile}},
        {"random_walk.dat", {10000, kGoodFile}},
        {"three_columns.dat", {1000, kGoodFile}},
        {"exactly_32.dat", {32, kGoodFile}},
        {"only_31.dat", {31, kGoodFile}},
        {"constant_column.dat", {200, kGoodFile}},
        {"broken_record.dat", {249, 250}},
        {"empty.dat", {0, kEmptyFile}},
        {"one_sample.dat", {1, kGoodFile}},
    };
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
        const RecordCount count = countFileRecords(dir / name);
        EXPECT_EQ(demultiplexTable(dir / name, count.records), 3) << name;
    }
    std::vector<float> constant(200);
    readSignalFile(dir / "constant_column-Col1.dat", constant);
    EXPECT_TRUE(std::all_of(constant.begin(), constant.end(), [](float v) { return v == 5.0f; }));
    EXPECT_EQ(countFileRecords(dir / "three_columns-Col3.dat"), (RecordCount{1000, kGoodFile}));
}

} // namespace
} // namespace tarnic
