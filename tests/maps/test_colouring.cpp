// The colouring of the maps and the text grid, without a display: bands and
// their borders, the carry of the last colour, the colour scale's values at
// its edges, base-10 logarithms and the grid file byte for byte.
#include "core/numtext.h"
#include "maps/colouring.h"
#include "tests/numeric/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

using namespace tarnic;
using namespace tarnic::test;

namespace {

// A value's text padded with blanks to `width` columns.
std::string padded(const std::string& text, std::size_t width = 14) {
    return text + std::string(width - text.size(), ' ');
}

GridValueText fromTable(std::vector<std::vector<std::string>> rows) {
    return [rows](int row, int column) {
        return rows[static_cast<std::size_t>(row - 1)][static_cast<std::size_t>(column - 1)];
    };
}

} // namespace

TEST(BandLookup, AValueOnABorderTakesTheLowerBandOneOutsideKeepsThePreviousColour) {
    // zmin 0, zmax 12: the bands are [0,1], [1,2], ... [11,12].
    for (auto [value, band] : {std::pair{1.0, 1}, {1.0000001, 2}, {12.0, 12}, {12.0000001, 0},
                               {-0.0000001, 0}})
        EXPECT_EQ(BandOf(value, 0.0, 1.0, 12), band) << value;
    BandLookup twelve(0.0f, 12.0f, MapPalette12);
    for (auto [value, colour] : {std::pair{0.0f, 0xFFFFFFu}, {2.0f, 0xE0E0E0u},
                                 {5.5f, 0xFF8000u}, {12.0f, 0x000000u}})
        EXPECT_EQ(twelve(value), colour) << value;
    // Fifteen bands of 0.2 over -3 .. 0: the first eight share dark blue.
    BandLookup fifteen(-3.0f, 0.0f, MapPalette15);
    for (auto [value, colour] : {std::pair{-1.41f, 0x000080u}, {-1.3f, 0x0000FFu},
                                 {-0.5f, 0xFFFF00u}, {0.0f, 0xFFFFFFu}})
        EXPECT_EQ(fifteen(value), colour) << value;
    // Equal ends: every value takes band 1.
    EXPECT_EQ(BandLookup(3.5f, 3.5f, MapPalette12)(3.5f), 0xFFFFFFu);
    EXPECT_EQ(BandLookup(-7.25f, -7.25f, MapPalette15)(-7.25f), 0x000080u);
    // A value outside every band keeps the previous colour, black at first.
    // With zmin -0.7 and zmax 2.3 (single precision) the twelfth upper bound,
    // built band by band in double precision, ends just below zmax.
    const float zmin = -0.7f, zmax = 2.3f;
    ASSERT_EQ(BandOf(zmax, zmin, (static_cast<double>(zmax) - zmin) / 12, 12), 0);
    BandLookup colour(zmin, zmax, MapPalette12);
    EXPECT_EQ(colour(zmax), 0x000000u) << "no cell before it: black";
    EXPECT_EQ(colour(0.0f), 0xFFFF00u);
    EXPECT_EQ(colour(zmax), 0xFFFF00u) << "the colour of the cell before";
    EXPECT_EQ(colour(zmin), 0xFFFFFFu);
    EXPECT_EQ(colour(zmax), 0xFFFFFFu);
    EXPECT_EQ(BandLookup(zmin, zmax, MapPalette12)(zmax), 0x000000u) << "a new run starts black";
}

TEST(ColorScaleValue, TopEdgeIsZmaxBottomEdgeIsZminAndLgIsLnOverLnTen) {
    for (auto [y, zmin, zmax, value] :
         {std::tuple{0, -3.25f, 7.5f, 7.5f}, {5370, -3.25f, 7.5f, -3.25f}, {2685, -3.25f, 7.5f, 2.125f},
          {5370, -17.123456f, 3.3f, -17.123456f}})
        EXPECT_EQ(ColorScaleValue(y, 5370, zmin, zmax), value) << y;
    EXPECT_EQ(Lg(100.0), 2.0);
    // The quotient is not log10: ln 1000 / ln 10 falls one step below 3.
    EXPECT_EQ(Lg(1000.0), 2.9999999999999996);
}

TEST(GridFile, ValuesStandInZonesOf14ColumnsAndTheFileIsReplacedWhole) {
    TempDir dir;
    const auto path = (dir / "g.grd").string();
    GridHeader h{3, 2, " 10", " 30", "-1", " 1", NumText(1.0 / 3.0), NumText(-2.0 / 3.0)};
    const std::string header =
        "DSAA\r\n 3  2 \r\n 10 30\r\n-1 1\r\n .333333333333333 -.666666666666667\r\n";
    // A 13-character value and its blank fill one zone exactly; 17 characters
    // of double precision run over two zones.
    ASSERT_TRUE(WriteGrid(path, h, fromTable({{" 1", NumText(-1.234567E-05f), "-3"},
                                              {NumText(1.0 / 3.0), NumText(-2.0 / 3.0), " 2.5"}})));
    EXPECT_EQ(readBytes(path), header + padded(" 1") + "-1.234567E-05 " + padded("-3") + "\r\n" +
                                   padded(" .333333333333333", 28) +
                                   padded("-.666666666666667", 28) + padded(" 2.5") + "\r\n");
    h.ny = 1;
    ASSERT_TRUE(WriteGrid(path, h, fromTable({{" 7", " 8", " 9"}})));
    EXPECT_EQ(readBytes(path), "DSAA\r\n 3  1 \r\n" + header.substr(14) + padded(" 7") +
                                   padded(" 8") + padded(" 9") + "\r\n");
    // 27 characters and the blank end on a zone: no further blanks.
    std::string line;
    AppendGridValue(line, 0, std::string(27, '9'));
    EXPECT_EQ(line.size(), 28u);
    // A file that cannot be made leaves nothing behind.
    EXPECT_FALSE(WriteGrid((dir / "missing" / "g.grd").string(), h, fromTable({{" 1", " 2", " 3"}})));
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
}

TEST(GridFile, ManyRowsFormattedInParallelStayInOrder) {
    TempDir dir;
    GridHeader h{2, 100000, " 0", " 1", " 0", " 1", " 0", " 1"}; // several blocks of rows
    const auto path = (dir / "big.grd").string();
    ASSERT_TRUE(WriteGrid(path, h, [](int row, int column) { return NumText(row * 10 + column); }));
    std::string expected = GridHeaderText(h);
    for (int row = 1; row <= h.ny; ++row)
        expected += padded(NumText(row * 10 + 1)) + padded(NumText(row * 10 + 2)) + "\r\n";
    EXPECT_TRUE(readBytes(path) == expected);
}
