// Loads Tarnic.dll as the program does, by name at run time, and calls the C
// routines through the resolved pointers.
#include "numeric/tarnic_api.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>
#include <vector>

namespace tarnic {
namespace {

using test::TempDir;
using test::writeBytes;
namespace fs = std::filesystem;

struct Library {
    Library() : handle(dlopen(TARNIC_DLL_PATH, RTLD_NOW | RTLD_LOCAL)) {}
    ~Library() {
        if (handle) dlclose(handle);
    }
    template <typename F> F resolve(const char* name) const {
        return reinterpret_cast<F>(dlsym(handle, name));
    }
    void* handle;
};

// The path as the program passes it: UTF-16 code units and their number.
struct Codes {
    explicit Codes(const fs::path& p) {
        for (char16_t u : p.u16string())
            units.push_back(static_cast<std::int16_t>(u));
        length = static_cast<std::int32_t>(units.size());
    }
    std::vector<std::int16_t> units;
    std::int32_t length;
};

TEST(Binding, RoutinesResolveByTheirCNames) {
    const Library tarnic;
    ASSERT_NE(tarnic.handle, nullptr) << dlerror();
    const auto count = tarnic.resolve<decltype(&CountFileRecords_dll)>("CountFileRecords_dll");
    const auto read = tarnic.resolve<decltype(&ReadSignalFile_dll)>("ReadSignalFile_dll");
    const auto split = tarnic.resolve<decltype(&DemulplexTable_dll)>("DemulplexTable_dll");
    ASSERT_NE(count, nullptr);
    ASSERT_NE(read, nullptr);
    ASSERT_NE(split, nullptr);

    TempDir dir;
    const fs::path folder = dir / fs::path(u8"Ölmessung");
    fs::create_directory(folder);
    writeBytes(folder / "signal.dat", "# value time\r\n1.5 0\r\n-2 1\r\n3e2 2\r\n");

    Codes path(folder / "signal.dat");
    std::int32_t nrec = -7, status = -7;
    count(path.units.data(), &path.length, &nrec, &status);
    EXPECT_EQ(nrec, 3);
    EXPECT_EQ(status, -1);

    std::int32_t asked = 4;
    std::vector<float> signal(4, 99.0f);
    read(path.units.data(), &path.length, &asked, signal.data());
    EXPECT_EQ(signal, (std::vector<float>{1.5f, -2.0f, 300.0f, 0.0f}));

    split(path.units.data(), &path.length, &nrec);
    EXPECT_EQ(test::readBytes(folder / "signal-Col2.dat"), "0\r\n1\r\n2\r\n");

    Codes missing(folder / "missing.dat");
    count(missing.units.data(), &missing.length, &nrec, &status);
    EXPECT_EQ(nrec, 0);
    EXPECT_EQ(status, 1);

    writeBytes(folder / "empty.dat", "");
    Codes empty(folder / "empty.dat");
    count(empty.units.data(), &empty.length, &nrec, &status);
    EXPECT_EQ(nrec, 0);
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace tarnic
