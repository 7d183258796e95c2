// Helpers shared by the numeric tests only: Tarnic.dll loaded by name as the
// program loads it, file names as UTF-16 code units, and small series tools.
// It also brings the standard headers every numeric test uses.
#pragma once

#include "tests/numeric/spectral_support.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <numeric>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace tarnic::test {

#ifdef TARNIC_DLL_PATH
// The routine `name` of Tarnic.dll, resolved by its C name; nullptr when the
// library or the name is missing. The library is opened at run time and stays
// open until the test program ends (dlopen counts the repeated opens).
template <typename F> F dllRoutine(const char* name) {
    static void* const handle = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
    return handle ? reinterpret_cast<F>(dlsym(handle, name)) : nullptr;
}
#endif

// A path as the program passes it: its UTF-16 code units, followed by `tail`.
inline std::vector<std::int16_t> codeUnits(const std::filesystem::path& path,
                                           std::u16string_view tail = {}) {
    std::u16string units = path.u16string();
    units += tail;
    return {units.begin(), units.end()};
}

inline double energy(std::span<const double> x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
}

inline double sum(std::span<const double> x) {
    return std::accumulate(x.begin(), x.end(), 0.0);
}

inline double largestMagnitude(std::span<const double> x) {
    double largest = 0.0;
    for (double v : x)
        largest = std::max(largest, std::abs(v));
    return largest;
}

// f(t) at t = 0 .. n-1.
template <class F> std::vector<double> sampled(std::size_t n, F f) {
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t)
        x[t] = f(static_cast<double>(t));
    return x;
}

inline std::vector<double> plus(std::vector<double> a, std::span<const double> b) {
    std::transform(a.begin(), a.end(), b.begin(), a.begin(), std::plus<>());
    return a;
}

// The running sum of unit white noise.
inline std::vector<double> randomWalk(std::size_t n, unsigned seed) {
    std::vector<double> x = whiteNoise(n, 1.0, seed);
    std::partial_sum(x.begin(), x.end(), x.begin());
    return x;
}

inline std::vector<double> toDouble(std::span<const float> x) {
    return {x.begin(), x.end()};
}

} // namespace tarnic::test
