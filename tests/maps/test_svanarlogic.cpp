// The arithmetic of the AR spectra evolution map without a display: defaults
// and the shift search, the strict reading of the boxes with their fallbacks
// and clamps, the window count, the frequency cut, the volume limit, the
// ranges and the window loop.
#include "maps/svanarlogic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace tarnic;

TEST(SvanDefaults, FloorsAndTheShiftSearch) {
    // 32 / 8 = 4 is raised to 16.
    EXPECT_EQ(std::tuple(SvanDefaultLength(32), SvanDefaultLength(1000), SvanDefaultLength(100000)),
              std::tuple(16, 125, 2048));
    EXPECT_EQ(std::tuple(SvanDefaultOrder(16), SvanDefaultOrder(2048), SvanDefaultShift(16)),
              std::tuple(1, 204, 1));
    // For 16 of 32, Int(16 / 20) = 0: no search. From 102 down, the first
    // shift leaving at most 2 samples: 1307 windows of shift 75 end at sample
    // 99998; for 1000, 6 leaves 5 samples, 5 none; a tail of 2 is accepted,
    // one of 3 is not.
    for (auto [samples, length, shift] : {std::tuple{32, 16, 1}, {100000, 2048, 75}, {1000, 125, 5},
                                          {60 + 3 * 40 + 2, 60, 3}, {80 + 4 * 10 + 3, 80, 3}})
        EXPECT_EQ(SearchSvanShift(samples, length).shift, shift) << samples;
    EXPECT_EQ(SearchSvanShift(100000, 2048).count, 1307);
}

TEST(SvanBoxes, StrictReadingTakesOnlyAWholeNumber) {
    for (auto [text, value] : {std::pair{"  512 \t", 512}, {" 2048.9", 2048}, {"-0.5", -1},
                               {"1E3", 1000}})
        EXPECT_EQ(StrictInt(text), value) << text;
    for (const char* refused :
         {"", "   ", "512abc", "abc", "5 12", "1E", "-", "2147483648", "1E300"})
        EXPECT_EQ(StrictInt(refused), std::nullopt) << refused;
}

TEST(SvanBoxes, ClampsInOrderAndFallbacksWithoutClamps) {
    for (auto [read, text, bound, fallback, value] :
         {std::tuple{&ReadSvanLength, "5000", 4000, 500, 2048},
          {ReadSvanLength, "5000", 1000, 125, 999}, {ReadSvanLength, "8", 1000, 125, 16},
          {ReadSvanLength, "512abc", 4000, 500, 500},
          {ReadSvanLength, "x", 100, 5000, 5000}, // a fallback is never clamped
          {ReadSvanShift, "0", 1024, 51, 1}, {ReadSvanShift, "5000", 1024, 51, 1024},
          {ReadSvanShift, "", 16, 102, 102}, {ReadSvanOrder, "600", 1024, 102, 256},
          {ReadSvanOrder, "0", 1024, 102, 1}, {ReadSvanOrder, "256", 1025, 102, 256},
          {ReadSvanOrder, "257", 1025, 102, 256}, // 1025 / 4 = 256.25
          {ReadSvanOrder, "7x", 16, 204, 204}})
        EXPECT_EQ(read(text, bound, fallback), value) << text << ", " << bound;
}

TEST(SvanWindows, CountCutVolumeAndRanges) {
    EXPECT_EQ(SvanWindowCount(100000, 2048, 75), 1307);
    EXPECT_EQ(SvanWindowCount(1000, 999, 5), 1);
    // 1000 samples, transform size 128: 2 / 1000 is first reached at k = 2.
    // dT cancels; at 256 samples 2 / 256 is equal, not below, and taken.
    for (auto [samples, dT, cut] :
         {std::tuple{1000, 1.0, 2}, {1000, 0.01, 2}, {200, 1.0, 3}, {256, 1.0, 2}})
        EXPECT_EQ(SvanCutIndex(64, 128, samples, dT), cut) << samples << ", " << dT;
    EXPECT_FALSE(SvanVolumeExceeded(15625, 512));  // exactly 8,000,000
    EXPECT_TRUE(SvanVolumeExceeded(15626, 512));
    EXPECT_TRUE(SvanVolumeExceeded(2000000000, 1024)); // no overflow

    // Times 10 + 0.5 * 255 and 10 + 0.5 * (60 * 64 + 255).
    const SvanRanges r = SvanRangesOf({256, 64, 61, 256, 128, 2, 16}, 10.0, 0.5);
    EXPECT_EQ(std::tuple(r.tmin, r.tmax, r.fmin, r.fmax),
              std::tuple(137.5f, 2057.5f, 1 / 128.0f, 127 / 128.0f));
}

TEST(SvanWindows, TheLoopGivesTheMapOfTheWindowsInTurn) {
    // A stand-in spectrum that depends on every sample of the window, on the
    // order and on the point: value k is (k + 1) * (1 + sum |x| + order), and
    // 0 for a window of zeros.
    auto fake = [](const float* x, std::int32_t n, std::int32_t points, std::int32_t order,
                   float* out) {
        double sum = 0;
        for (int j = 0; j < n; ++j) sum += std::fabs(x[j]);
        for (int k = 0; k < points; ++k) out[k] = sum > 0 ? float((k + 1) * (1 + sum + order)) : 0;
    };
    std::vector<float> input(3000);
    for (std::size_t i = 200; i < input.size(); ++i)
        input[i] = static_cast<float>(std::sin(0.37 * static_cast<double>(i)) * (1 + i % 7));
    const SvanLayout l{100, 13, 224, 128, 64, 2, 5};
    const double dT = 0.25;
    std::vector<float> map(static_cast<std::size_t>(l.count * l.half)), last(64);
    ComputeSpectraEvolution(input, l, dT,
                            [&](float& x, std::int32_t& n, std::int32_t& p, std::int32_t& o,
                                float& out) { fake(&x, n, p, o, &out); },
                            map, last);
    // Window w takes the samples (w - 1) * shift + 1 ... of the input; the
    // windows of zeros sit at the floor ln(1e12) below the largest value, not
    // at the logarithm of 0.
    const double floor = *std::max_element(map.begin(), map.end()) - std::log(1e12);
    EXPECT_EQ(map[0], static_cast<float>(floor));
    std::vector<float> powers(64);
    for (int w = 1; w <= l.count; ++w) {
        fake(input.data() + (w - 1) * l.shift, l.length, l.half, l.order, powers.data());
        for (std::size_t k = 0; k < 64; ++k)
            ASSERT_EQ(map[static_cast<std::size_t>(w - 1) * 64 + k],
                      static_cast<float>(std::max(std::log(dT * double(powers[k])), floor)))
                << "window " << w << ", point " << k + 1;
    }
    EXPECT_EQ(last, powers) << "the spectrum of the last window";
}
