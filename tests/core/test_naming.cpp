// Output names and text records, byte for byte.
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "numeric/workers.h"
#include "tests/numeric/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace tarnic;
namespace fs = std::filesystem;

namespace {

using Golden = std::pair<std::string, std::string>; // what the program made, what it must be

void expectGolden(std::initializer_list<Golden> cases) {
    for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

std::ptrdiff_t entries(const fs::path& dir) {
    return std::distance(fs::directory_iterator(dir), fs::directory_iterator());
}

} // namespace

TEST(ShortNumText, CutsToThreeDecimalsWithoutTrailingZeros) {
    // Cut only where "000" stands right behind the point.
    expectGolden({{ShortNumText(12.3456), " 12.345"}, {ShortNumText(2.5), " 2.5"},
                  {ShortNumText(0.00012), " .00012"}, {ShortNumText(1000.00012), " 1000."},
                  {ShortNumText(1.50001E+08f), " 1.5E+08"}, {ShortNumText(250.0), " 250"},
                  {ShortNumText(-0.5), "-.5"}, {ShortNumText(12.3001), " 12.3"},
                  {ShortNumText(1.234567E-05f), " 1.234E-05"}, {ShortNumText(2.0100001), " 2.01"},
                  {ShortNumText(2.000001), " 2.000001"}});
}

TEST(CutDat, RemovesTheFirstDatOfTheWholeComposedText) {
    expectGolden({{names::Winsorized("/d/a.dat"), "/d/a-WINZ.dat"},
                  {names::Winsorized("/d/a.DAT"), "/d/a.DAT-WINZ.dat"},
                  {names::Winsorized("/d/a.dat.dat"), "/d/a.dat-WINZ.dat"},
                  {names::Winsorized("/d/a.txt"), "/d/a.txt-WINZ.dat"},
                  // The search includes the directory: its ".dat" goes, not the file's.
                  {names::Winsorized("/x/run.data/a.dat"), "/x/runa/a.dat-WINZ.dat"},
                  {CutDat("no extension"), "no extension"}});
}

TEST(Names, SeriesBesideTheDataSpectraAndGridsInTheirSubdirectories) {
    using namespace names;
    const std::string S = "/d/x.dat", Sp = "/d/SpectEstimates/", G = "/d/GRID_files/";
    expectGolden({
        {Increments(S), "/d/x-INC.dat"}, {DownSampled(S, NumText(4.0)), "/d/x-DNS= 4.dat"},
        {DownSampledVariance(S, 4.0), "/d/x-Var.DNS= 4.dat"},
        {BandPass(S + "-BPF(", 12.3456, 250.0), "/d/x-BPF(Tmin,max= 12.345, 250).dat"},
        {Trend(S, NumText(std::int32_t{50}), ""), "/d/x-TRN,Rad= 50.dat"},
        {Trend(S, " 50", " 3"), "/d/x-TRN,Rad= 50,Ord= 3.dat"},
        {Residual(S, " 50", " 3"), "/d/x-RSD,Rad= 50,Ord= 3.dat"},
        {Fragment(S, 10.5, 20), "/d/x,PART[10.5,20].dat"},
        {Harmonic(S, false, 12.3456, 0, 99), "/d/x(BestFitHarm,T= 12.345,[ 0, 99]).dat"},
        {Harmonic(S, true, 12.3456, 0, 99), "/d/x,DeTrended(BestFitHarm,T= 12.345,[ 0, 99]).dat"},
        {Component(S + "-WDC(", 2, 4.5), "/d/x-WDC(Tmin,max= 2, 4.5).dat"},
        {ThresholdMain(S, " .75", false, 8), "/d/x-THR-MAIN( .75,Daub 8).dat"},
        {ThresholdResidual(S, " .75", true, 8), "/d/x-THR-RSD( .75,Sym 8).dat"},
        {SpectrumAR("/d", "x.dat", 204, 2048), Sp + "Sp_AR(x) AR= 204,Leng= 2048.dat"},
        {SpectrumFourier("/d", "x.txt", 1, 2048), Sp + "Sp_Four(x.txt) MM= 1,Leng= 2048.dat"},
        {WavePacketSpectrum("/d", "x.dat"), Sp + "WaveSp(x).dat"},
        {SpectraEvolutionGrid("/d", "x.dat", 2048, 75, 204),
         G + "Lg(Sp)_x_Leng= 2048,Shift= 75,AR= 204.grd"},
        {MorletGrid("/d", "x.dat", 0, 99, false), G + "Lg(WaveCoeff^2)_x,PART[0,99].grd"},
        {MorletGrid("/d", "x", 0, 99, true), G + "Lg(WaveCoeff^2)_x,PART[0,99],DeTrended.grd"},
        {MorletSpectrum("/d", "x.dat", 1.5, 3, true),
         Sp + "Sp(WaveCoeff^2)_x,PART[1.5,3],DeTrended.dat"},
        {HeisenbergGrid("/d", "x.dat", 0, 31, false),
         G + "Lg(AbsWaveCoeff_HBoxes)_x,PART[0,31].grd"},
        {SingularitySpectrum("/d", "x.dat", 0, 999), Sp + "F(Alfa)_x,PART[0,999].dat"}});
}

TEST(Records, TwoColumnsNeverTouchAndThreeFieldsStandInZonesOf14) {
    expectGolden(
        {{TwoColumnRecord(-1.5f, -2.0), "-1.5 -2\r\n"}, {TwoColumnRecord(-1.5f, 2.0), "-1.5 2\r\n"},
         {TwoColumnRecord(0.5f, 0.0), " .5 0\r\n"}, {TwoColumnRecord(1e7f, 0.1), " 1E+07 .1\r\n"},
         {ThreeColumnRecord(" 1", "-2", " 3"), " 1 -2 3\r\n"},
         {PlainNumberLine(NumText(std::int32_t{0})), " 0 \r\n"},
         {ZoneRecord(" .5", " 2", " 3.25"), " .5            2             3.25\r\n"},
         // A 13-character number and its blank fill a zone exactly; the next
         // field follows at column 15.
         {ZoneRecord("-1.234568E-05", " 81050.63", "-2"), "-1.234568E-05  81050.63     -2\r\n"},
         {ZoneRecord(1.5f, 0.6666667f, 1e-20f).substr(14), " .6666667      1E-20\r\n"}});
}

TEST(OutputFiles, WrittenWholeUnderTheFinalNameAndReplacingAnOldOne) {
    test::TempDir dir;
    const std::string path = (dir / "a-WINZ.dat").string();
    test::writeBytes(path, "an old and much longer content\r\n");
    OutputFile file(path);
    file.print("1 0\r\n");
    EXPECT_EQ(test::readBytes(path), "an old and much longer content\r\n");
    ASSERT_TRUE(file.close()) << file.error();
    EXPECT_EQ(test::readBytes(path), "1 0\r\n");
    EXPECT_EQ(entries(dir.path()), 1) << "no temporary file is left";
    // Long files are formatted on worker threads; without them, the same bytes.
    std::string bytes[2];
    for (bool refuse : {false, true}) {
        refuseWorkerThreads = refuse;
        OutputFile lines((dir / "many.dat").string());
        lines.printLines(100000, [](int i, std::string& o) { o += std::to_string(i) + "\r\n"; });
        refuseWorkerThreads = false;
        ASSERT_TRUE(lines.close());
        bytes[refuse] = test::readBytes(dir / "many.dat");
    }
    EXPECT_EQ(bytes[0], bytes[1]);
    EXPECT_EQ(bytes[1].substr(bytes[1].size() - 8), "100000\r\n");
    // A final name as long as the system allows (255 bytes) is written too.
    const std::string longest = (dir / (std::string(251, 'n') + ".dat")).string();
    OutputFile named(longest);
    named.print("2 0\r\n");
    ASSERT_TRUE(named.close()) << named.error();
    EXPECT_EQ(test::readBytes(longest), "2 0\r\n");
}

TEST(OutputFiles, AFailureLeavesNothingUnderTheFinalNameAndSubdirectoriesAreMadeOnce) {
    test::TempDir dir;
    // A directory standing where the file should go: the rename fails even for root.
    fs::create_directory(dir / "blocked.dat");
    OutputFile blocked((dir / "blocked.dat").string());
    blocked.print("data\r\n");
    EXPECT_FALSE(blocked.close() || blocked.error().empty());
    EXPECT_TRUE(fs::is_directory(dir / "blocked.dat"));
    OutputFile nowhere((dir / "missing" / "x.dat").string());
    nowhere.print("data");
    EXPECT_FALSE(nowhere.close());
    EXPECT_EQ(entries(dir.path()), 1);
    // An existing subdirectory is no failure; a file in its way is.
    EXPECT_TRUE(makeSubdirectory(dir.path().string(), kSpectraDir) &&
                makeSubdirectory(dir.path().string(), kSpectraDir));
    EXPECT_TRUE(fs::is_directory(dir / "SpectEstimates"));
    test::writeBytes(dir / "GRID_files", "a file in the way");
    EXPECT_FALSE(makeSubdirectory(dir.path().string(), kGridDir));
}
