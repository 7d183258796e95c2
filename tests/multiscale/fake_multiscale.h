// What the stand-in library for the WTMM and multifractal routines gives back
// and what it last received. The library exports one object of each kind
// (fakeWtmm, fakeMfdfa); a window test reaches them by name and writes the
// results of the next run into them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tarnic::test {

struct FakeWtmm {
    std::array<std::int32_t, 7> counts{};
    const char* fileText = nullptr; // the chain file's text; null: no file is written
    bool constantDetrended = false; // 1.5 throughout rather than the input less its mean
    // What the last call received, its current directory, and the number of calls.
    std::int32_t fragLeng = -1, trendOrder = -1;
    std::string where{};
    double gamma = -1;
    int calls = 0;
};

struct FakeMfdfa {
    // Alfa and F at the first points (0 beyond them); the table given back
    // with the counts qCount and scaleCount (empty: cell (s, j), 0-based,
    // = 0.01 * (j + 1) * (s + 1) for the counts asked).
    std::vector<double> alfa, fAlfa, table;
    std::int32_t qCount = 0, scaleCount = 0;
    // What the last call received: samples, order, measure, minimum and
    // maximum scale, alfa count, scale count, q count, q minimum and maximum.
    std::vector<double> received;
    int calls = 0;
};

} // namespace tarnic::test
