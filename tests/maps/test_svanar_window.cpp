// The AR spectra evolution window driven through the main window: defaults
// of Load, the boxes in force, the refusals, the map's colours, the marks and
// tool tips, and the grid file. The reading rules of the boxes, the shift
// search and the cut are pinned in test_svanarlogic.cpp.
#include "core/naming.h"
#include "core/numtext.h"
#include "maps/colouring.h"
#include "maps/svanarform.h"
#include "tests/signal/window_support.h"

#include <iterator>
#include <sstream>

using namespace tarnic;
using namespace tarnic::test;

namespace {

double mixture(int i) {
    return std::sin(2 * M_PI * i / 37.0) + 0.3 * std::sin(2 * M_PI * i / 5.3) +
           0.05 * std::sin(i * i * 0.7);
}

// 12 cycles per 256 samples, 48 from sample 2049 on, with a little noise.
double jumpingSine(int i) {
    return std::sin(2 * M_PI * (i <= 2048 ? 12 : 48) / 256.0 * i) + 0.05 * std::sin(i * i * 0.7 + 0.3);
}

class SvanAr : public MainWindow {
  protected:
    // Loads n samples of f and opens the window from the main window (an open
    // one is closed first, as the user would).
    void openWith(int n, double (*f)(int) = mixture, const std::string& name = "s.dat") {
        if (!wb) start();
        else svan().Unload();
        write(name, series(n, f));
        open(name);
        ui().SvanArButton->click();
    }
    // Types into the three boxes and launches; gives back the boxes as then shown.
    QString launch(const QString& length, const QString& shift, const QString& order) {
        c().LengWinText->setText(length);
        c().ShiftText->setText(shift);
        c().ArOrderText->setText(order);
        c().LaunchSvan->click();
        return boxes();
    }
    QString boxes() {
        return c().LengWinText->Text() + "|" + c().ShiftText->Text() + "|" +
               c().ArOrderText->Text();
    }
    SvanArForm& svan() { return wb->svanArForm(); }
    SvanArFormControls& c() { return wb->svanArForm().ui(); }
    // Enabled flags of SvanArMap, SaveGRD, LaunchSvan and SvanParam.
    std::string states() {
        return enabled({c().SvanArMap, c().SaveGRD, c().LaunchSvan, c().SvanParam});
    }
    MessageBoxes messages;
};

const QString kCombination =
    "For this combination of time window length, mutual shift and signal length\r\n";

} // namespace

TEST_F(SvanAr, OpensWithTheDefaultsShowsTheValuesInForceAndRefusesOneWindowOrEightMillionPoints) {
    openWith(32);
    EXPECT_EQ(boxes(), " 16| 1| 1"); // the floors: 32 / 8 = 4
    EXPECT_EQ(svan().SvanInput, form().Signal);
    EXPECT_EQ(states(), "0011");
    // A single time window is refused.
    EXPECT_EQ(launch("5000", "5", "3"), " 31| 5| 3") << "the corrected texts stay";
    messages.expectOne("Spectra Evolution Analysis",
                       kCombination +
                           "only one time window fits into the signal, and a map needs at least "
                           "two\r\nPlease, choose the less time window or smaller shift");
    EXPECT_TRUE(svan().SvanMap.empty()) << "refused before any array is made";
    EXPECT_EQ(states(), "0011");
    launch(" 31", "1", "3");
    EXPECT_EQ(svan().SvanCount, 2);
    EXPECT_EQ(states(), "1111");
    openWith(4000); // fallbacks from the signal: 500, 25, 50
    EXPECT_EQ(launch("512abc", "", "7x"), " 500| 25| 50");
    EXPECT_EQ(svan().SvanCount, 141);
    // The fallback shift is not the one the search of Load found (5).
    openWith(1000);
    EXPECT_EQ(launch("100", "five", "4"), " 100| 6| 4");
    EXPECT_EQ(std::tuple(svan().SvanFft, svan().SvanCut, svan().SvanFmin, svan().SvanFmax),
              std::tuple(128, 2, 1 / 128.0f, 63 / 128.0f)); // 1 / 128 is above 2 / 1000
    // More than eight million points are refused.
    messages.clear();
    openWith(16649); // 15626 windows of 512 points
    launch("1024", "1", "1");
    messages.expectOne("Spectra Evolution Analysis",
                       kCombination +
                           "Time-Frequency Analysis is impossible because of huge volume of "
                           "output information\r\nPlease, downsample time series or choose the "
                           "less time window and larger shift");
    EXPECT_EQ(states(), "0011");
}

TEST_F(SvanAr, TheMapShowsAFrequencyJumpInTheRightColumns) {
    openWith(4096, jumpingSine);
    PlotSurface& map = *c().SvanArMap;
    map.canvas().setRecording(true);
    launch("256", "64", "16");
    ASSERT_EQ(svan().SvanCount, 61);
    const int rows = 128 - 2 + 1; // from the cut point 2 on
    const auto cells = drawn(map, DrawKind::Box);
    ASSERT_EQ(cells.size(), 61u * rows) << "one cell per window and point";
    // The band (1 .. 12) of window w, point k. Point 13 is 12 / 256, point 49
    // is 48 / 256; windows 1 .. 29 end before the jump, 33 .. 61 begin behind it.
    auto band = [&](int w, int k) {
        const QRgb colour = cells[std::size_t((w - 1) * rows + (k - 2))].color & 0xFFFFFF;
        return std::find(MapPalette12.begin(), MapPalette12.end(), colour) - MapPalette12.begin() + 1;
    };
    for (int w = 1; w <= 29; ++w) EXPECT_TRUE(band(w, 13) >= 10 && band(w, 49) <= 6) << w;
    for (int w = 33; w <= 61; ++w) EXPECT_TRUE(band(w, 13) <= 6 && band(w, 49) >= 10) << w;
    // Marks and the pointer: the ends of the first and the last window, the
    // frequencies of the cut point and of the last point.
    EXPECT_EQ(captions(c().Xmarks).first() + "|" + captions(c().Xmarks).last(), "255|4095");
    EXPECT_EQ(captions(c().Ymarks).first() + "|" + captions(c().Ymarks).last(), "0.00390625|0.4960938");
    svan().SvanArMap_MouseMove(0, 0, 0, 0);
    const QString tip = "Time Window Mark= 255, Period= 2.015748, Freq= .4960938";
    EXPECT_EQ(c().SvanArMap->ToolTipText(), tip);
    // Over the very bottom of a map whose lowest row were frequency 0 the tip stays.
    svan().SvanCut = 1;
    svan().SvanArMap_MouseMove(0, 0, 100, float(map.ScaleHeight()));
    EXPECT_EQ(c().SvanArMap->ToolTipText(), tip);
    // The colour scale shows the range white at the bottom, black at the top,
    // reading its ends.
    const QImage& scale = c().ColorScale->canvas().image();
    EXPECT_EQ(scale.pixel(5, scale.height() - 1) & 0xFFFFFFu, 0xFFFFFFu);
    EXPECT_EQ(scale.pixel(5, 0) & 0xFFFFFFu, 0x000000u);
    svan().ColorScale_MouseMove(0, 0, 0, float(c().ColorScale->ScaleHeight()));
    EXPECT_EQ(c().ColorScale->ToolTipText().toStdString(), NumText(svan().SvanZmin));
}

TEST_F(SvanAr, SaveGrdWritesBase10LogarithmsAndTheTimesOfARepairedDeltaT) {
    openWith(1000, mixture, "quake.dat");
    ui().DeltaT_Text->setText("0.5");
    ui().Time0_Text->setText("100");
    launch("100", "50", "4");
    c().SaveGRD->click();
    EXPECT_EQ(states(), "1011");
    const fs::path file = dir / "GRID_files" / "Lg(Sp)_quake_Leng= 100,Shift= 50,AR= 4.grd";
    const double ln10 = std::log(10.0);
    // 19 windows of 63 points; times 100 + 0.5 * 99 and 100 + 0.5 * (18 * 50 + 99);
    // frequencies 1 / (128 * 0.5) and 63 / (128 * 0.5).
    const std::string header = "DSAA\r\n 19  63 \r\n 149.5 599.5\r\n .015625 .984375\r\n" +
        TwoColumnRecord(NumText(svan().SvanZmin / ln10), NumText(svan().SvanZmax / ln10));
    const std::string bytes = readBytes(file);
    ASSERT_EQ(bytes.substr(0, header.size()), header);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 5 + 63) << "a row per point";
    // Rows k = 2 .. 64 of the 19 windows in turn: the value divided by ln 10
    // to 15 digits (a 7-digit text would miss by 1e-7).
    std::istringstream rows(bytes.substr(header.size()));
    const std::vector<double> v{std::istream_iterator<double>(rows), {}};
    ASSERT_EQ(v.size(), 63u * 19u);
    for (auto [k, w] : {std::pair{2, 1}, {2, 19}, {64, 1}, {40, 7}}) {
        const double got = v[std::size_t((k - 2) * 19 + w - 1)];
        EXPECT_NEAR(got, svan().SvanMapAt(k, w) / ln10, 1e-14 * std::fabs(got)) << k << ", " << w;
    }
    // A dT that is no positive number is repaired to 1 as Launch Spectra
    // repairs it: the grid header holds finite times. The file is replaced.
    for (const char* typed : {"0", "abc", "1e400"}) {
        ui().DeltaT_Text->setText(typed);
        launch("100", "50", "4");
        EXPECT_EQ(ui().DeltaT_Text->Text(), " 1") << typed;
        c().SaveGRD->click();
        EXPECT_EQ(readBytes(file).substr(16, 15), " 199 1099\r\n .00") << typed;
    }
}

