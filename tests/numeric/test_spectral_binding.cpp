// The three spectral routines of Tarnic.dll called as the program calls them:
// loaded by name at run time, every argument a pointer.
#include "numeric/tarnic_api.h"
#include "spectral_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdint>
#include <vector>

namespace tarnic {
namespace {

TEST(SpectralBinding, RoutinesFillWhatTheCallerSized) {
    void* library = dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto down = reinterpret_cast<decltype(&DownSample_dll)>(dlsym(library, "DownSample_dll"));
    const auto welch = reinterpret_cast<decltype(&SpectAn_dll)>(dlsym(library, "SpectAn_dll"));
    const auto burg = reinterpret_cast<decltype(&BurgH_dll)>(dlsym(library, "BurgH_dll"));
    ASSERT_TRUE(down && welch && burg);

    // Downsampling returns the count and the ratio used, and writes no further.
    std::vector<float> ramp(1001);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = 0.5f * static_cast<float>(i);
    std::int32_t nrec = 1001, outLen = 500; // the program's capacity, Int(1001 / 2)
    float step = 2.5f;
    std::vector<float> y(500, -1.0f);
    down(ramp.data(), &nrec, &step, y.data(), &outLen);
    EXPECT_EQ(outLen, 400);
    EXPECT_EQ(step, static_cast<float>(1001.0 / 400.0));
    EXPECT_TRUE(test::isNear(y[399], 500.0, 1e-3)); // the last sample
    EXPECT_EQ(y[400], -1.0f);

    // The spectra: exactly their counts of positive values, an order beyond the
    // stretch included.
    const std::vector<float> x = test::toFloat(test::ar2Noise(3000, 0.75, -0.5));
    std::int32_t lengF = 60, fft = 64, mm = 7;
    nrec = 3000;
    std::vector<float> four(33, -1.0f);
    welch(x.data(), &nrec, &lengF, &fft, &mm, four.data());
    EXPECT_TRUE(test::allFinitePositive(std::span(four).first(32)));
    EXPECT_EQ(four[32], -1.0f);
    for (std::int32_t order : {683, 5000}) {
        std::int32_t count = 2048, nf = 1024;
        std::vector<float> ar(1025, -1.0f);
        burg(x.data(), &count, &nf, &order, ar.data());
        EXPECT_TRUE(test::allFinitePositive(std::span(ar).first(1024)));
        EXPECT_EQ(ar[1024], -1.0f);
    }
    dlclose(library);
}

} // namespace
} // namespace tarnic
