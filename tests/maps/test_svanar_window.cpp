// The AR spectra evolution window driven through the main window: defaults
// of Load, the boxes' fallbacks and clamps, the refusals, the map's cells,
// the marks and tool tips, and the grid file.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "maps/colouring.h"
#include "maps/svanarform.h"
#include "numeric/workers.h"
#include "tests/core/mainwindow_fixture.h"
#include "tests/numeric/spectral_support.h"

#include <algorithm>
#include <cmath>
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
    const double f = i <= 2048 ? 12 / 256.0 : 48 / 256.0;
    return std::sin(2 * M_PI * f * i) + 0.05 * std::sin(i * i * 0.7 + 0.3);
}

class SvanAr : public MainWindow {
  protected:
    // Loads n samples of f and opens the window from the main window (an
    // open one is closed first, as the user would).
    void openWith(int n, double (*f)(int) = mixture, const std::string& name = "s.dat") {
        if (!wb)
            start();
        else
            svan().Unload();
        write(name, series(n, f));
        open(name);
        ui().SvanArButton->click();
    }
    // Types into the three boxes and launches; message boxes are collected.
    void launch(const QString& length, const QString& shift, const QString& order) {
        c().LengWinText->setText(length);
        c().ShiftText->setText(shift);
        c().ArOrderText->setText(order);
        setMsgBoxHook([this](const QString& t, const QString& h) { text = t, title = h; });
        c().LaunchSvan->click();
        setMsgBoxHook({});
    }
    SvanArForm& svan() { return wb->svanArForm(); }
    SvanArFormControls& c() { return wb->svanArForm().ui(); }
    QString boxes() {
        return c().LengWinText->Text() + "|" + c().ShiftText->Text() + "|" +
               c().ArOrderText->Text();
    }
    // Enabled flags of SvanArMap, SaveGRD, LaunchSvan and SvanParam.
    std::string enabled() {
        std::string s;
        for (QWidget* w :
             {static_cast<QWidget*>(c().SvanArMap), static_cast<QWidget*>(c().SaveGRD),
              static_cast<QWidget*>(c().LaunchSvan), static_cast<QWidget*>(c().SvanParam)})
            s += w->isEnabled() ? '1' : '0';
        return s;
    }

    QString text, title;
};

} // namespace

TEST_F(SvanAr, OpensFromTheMainWindowWithTheDefaultsOfTheSignal) {
    openWith(32);
    EXPECT_FALSE(form().Visible());
    EXPECT_TRUE(svan().Visible());
    EXPECT_EQ(boxes(), " 16| 1| 1"); // the floors: 32 / 8 = 4
    EXPECT_EQ(svan().SvanInput, form().Signal);
    EXPECT_EQ(svan().Caption(), "Log(Spectra) Evolition within Moving Time Window, File=s.dat, "
                                "Number of samples= 32");
    EXPECT_EQ(enabled(), "0011");
    svan().window().close();
    EXPECT_TRUE(form().Visible());

    openWith(100000);
    EXPECT_EQ(boxes(), " 2048| 75| 204");
    EXPECT_EQ(svan().SvanCount, 1307);
}

TEST_F(SvanAr, BoxesShowTheValuesInForce) {
    openWith(4000); // fallbacks from the signal: 500, 25, 50
    launch("5000", "1000", "3");
    EXPECT_EQ(boxes(), " 2048| 1000| 3");
    EXPECT_EQ(enabled(), "1111");
    launch("512abc", "", "7x");
    EXPECT_EQ(boxes(), " 500| 25| 50");
    EXPECT_EQ(svan().SvanCount, 141);
    launch("16", "0", "5");
    EXPECT_EQ(boxes(), " 16| 1| 4");
    // The fallback shift is not the one the search of Load found.
    openWith(1000);
    EXPECT_EQ(boxes(), " 125| 5| 12");
    launch("125", "five", "12");
    EXPECT_EQ(boxes(), " 125| 6| 12");
    // Window 1024 with 1100 samples: the shift is cut to 1024, the order to 256;
    // one window then fits, and the corrected texts stay after the refusal.
    openWith(1100);
    launch("1024", "5000", "600");
    EXPECT_EQ(boxes(), " 1024| 1024| 256");
    EXPECT_EQ(title, "Spectra Evolution Analysis");
}

TEST_F(SvanAr, ASingleTimeWindowIsRefusedWithAMessage) {
    openWith(1000);
    launch("5000", "5", "3");
    EXPECT_EQ(boxes(), " 999| 5| 3");
    EXPECT_EQ(svan().SvanCount, 1);
    EXPECT_EQ(title, "Spectra Evolution Analysis");
    EXPECT_EQ(text, "For this combination of time window length, mutual shift and signal length\r\n"
                    "only one time window fits into the signal, and a map needs at least two\r\n"
                    "Please, choose the less time window or smaller shift");
    EXPECT_TRUE(svan().SvanMap.empty()) << "refused before any array is made";
    EXPECT_EQ(enabled(), "0011");
    text.clear();
    launch(" 999", "1", "3");
    EXPECT_EQ(text, "");
    EXPECT_EQ(svan().SvanCount, 2);
    EXPECT_EQ(enabled(), "1111");
}

TEST_F(SvanAr, TransformSizeAndFrequencyCut) {
    openWith(1000);
    launch("100", "50", "4");
    EXPECT_EQ(svan().SvanFft, 128);
    EXPECT_EQ(svan().SvanCut, 2); // 1 / 128 is above 2 / 1000
    EXPECT_EQ(svan().SvanFmin, 1 / 128.0f);
    EXPECT_EQ(svan().SvanFmax, 63 / 128.0f);
    openWith(2000);
    launch("1024", "500", "2");
    EXPECT_EQ(svan().SvanHalf, 512);
    launch("1025", "500", "2");
    EXPECT_EQ(svan().SvanHalf, 1024);
}

TEST_F(SvanAr, VolumeLimitOfEightMillionPoints) {
    openWith(16649); // 15626 windows of 512 points
    launch("1024", "1", "1");
    EXPECT_EQ(title, "Spectra Evolution Analysis");
    EXPECT_EQ(text,
              "For this combination of time window length, mutual shift and signal length\r\n"
              "Time-Frequency Analysis is impossible because of huge volume of output "
              "information\r\n"
              "Please, downsample time series or choose the less time window and larger shift");
    EXPECT_TRUE(svan().SvanMap.empty());
    EXPECT_EQ(boxes(), " 1024| 1| 1");
    EXPECT_EQ(enabled(), "0011");
    // One sample less: exactly 8,000,000 points are accepted.
    text.clear();
    openWith(16648);
    launch("1024", "1", "1");
    EXPECT_EQ(text, "");
    EXPECT_EQ(svan().SvanMap.count(), 8000000);
    EXPECT_EQ(enabled(), "1111");
}

TEST_F(SvanAr, TheMapShowsAFrequencyJumpInTheRightColumns) {
    openWith(4096, jumpingSine);
    PlotSurface& map = *c().SvanArMap;
    map.canvas().setRecording(true);
    launch("256", "64", "16");
    ASSERT_EQ(svan().SvanCount, 61);
    ASSERT_EQ(svan().SvanCut, 2);
    const int rows = 128 - 2 + 1;
    const auto& ops = map.canvas().record();
    ASSERT_EQ(ops.size(), 1u + 61u * rows) << "a Cls, then one cell per window and point";

    const double W = map.ScaleWidth(), H = map.ScaleHeight(), cellW = W / 60, cellH = H / 126;
    // The cell of window w, point k: its place in the record, its geometry,
    // and the band of its colour (1 .. 12).
    auto band = [&](int w, int k) {
        const DrawOp& op = ops[1 + static_cast<std::size_t>((w - 1) * rows + (k - 2))];
        EXPECT_EQ(op.kind, DrawKind::Box);
        EXPECT_EQ(op.x1, static_cast<float>((w - 1) * cellW)) << w << "," << k;
        EXPECT_EQ(op.y1, static_cast<float>(H - (k - 2) * cellH)) << w << "," << k;
        EXPECT_EQ(op.x2, static_cast<float>(cellW));
        EXPECT_EQ(op.y2, static_cast<float>(cellH));
        return std::find(MapPalette12.begin(), MapPalette12.end(), op.color & 0xFFFFFFu) -
               MapPalette12.begin() + 1;
    };
    EXPECT_EQ(ops[1].y1, static_cast<float>(H)) << "the bottom row lies just outside";
    EXPECT_EQ(ops[rows * 60 + 1].x1, static_cast<float>(W)) << "and the last column";
    EXPECT_NEAR(ops[rows].y1, 0.0f, 1e-3) << "the top row starts at the top edge";

    // Point 13 is 12 / 256, point 49 is 48 / 256. Windows 1 .. 29 end before
    // the jump, windows 33 .. 61 begin behind it.
    for (int w = 1; w <= 29; ++w) {
        EXPECT_GE(band(w, 13), 10) << "window " << w;
        EXPECT_LE(band(w, 49), 6) << "window " << w;
    }
    for (int w = 33; w <= 61; ++w) {
        EXPECT_LE(band(w, 13), 6) << "window " << w;
        EXPECT_GE(band(w, 49), 10) << "window " << w;
    }
    // The first column where the new frequency is darker stands at a window
    // end between the jump and three quarters of a window behind it.
    int first = 1;
    while (first < 61 && band(first, 49) <= band(first, 13))
        ++first;
    EXPECT_GT((first - 1) * 64 + 256, 2048);
    EXPECT_LE((first - 1) * 64 + 256, 2048 + 192);

    // The picture holds the colours: the middle pixels of the cells of
    // windows 10 and 50 at points 13 and 49.
    const QImage& image = map.canvas().image();
    auto pixel = [&](int x, int y) { return image.pixel(x, y) & 0xFFFFFFu; };
    EXPECT_EQ(pixel(88, 328), ops[1 + 9 * rows + 11].color & 0xFFFFFFu);
    EXPECT_EQ(pixel(88, 225), ops[1 + 9 * rows + 47].color & 0xFFFFFFu);
    EXPECT_EQ(pixel(460, 225), ops[1 + 49 * rows + 47].color & 0xFFFFFFu);
    EXPECT_NE(pixel(88, 225), pixel(460, 225));

    // Marks: the ends of the first and the last window, the frequencies of the
    // cut point and of the last point.
    EXPECT_EQ(c().Xmarks[0]->Caption(), "255");
    EXPECT_EQ(c().Xmarks[5]->Caption(), "4095");
    EXPECT_EQ(c().Ymarks[0]->Caption(), "0.00390625");
    EXPECT_EQ(c().Ymarks[5]->Caption(), "0.4960938");
    // The colour scale: band 1 white at the bottom, band 12 black at the top.
    const QImage& scale = c().ColorScale->canvas().image();
    EXPECT_EQ(scale.pixel(5, scale.height() - 1) & 0xFFFFFFu, 0xFFFFFFu);
    EXPECT_EQ(scale.pixel(5, scale.height() - 40) & 0xFFFFFFu, 0xE0E0E0u);
    EXPECT_EQ(scale.pixel(5, 0) & 0xFFFFFFu, 0x000000u);
}

TEST_F(SvanAr, PointsBelowTheCutNeverInfluenceTheColours) {
    // A strong trend puts the largest values at frequency 0, below the cut.
    openWith(3000, [](int i) { return i * 0.05 + mixture(i); });
    launch("200", "100", "8");
    ASSERT_EQ(svan().SvanCut, 2);
    float zero = -1E+35f, shown = -1E+35f, lowest = 1E+35f;
    for (int w = 1; w <= svan().SvanCount; ++w) {
        zero = std::max(zero, svan().SvanMapAt(1, w));
        for (int k = 2; k <= svan().SvanHalf; ++k) {
            shown = std::max(shown, svan().SvanMapAt(k, w));
            lowest = std::min(lowest, svan().SvanMapAt(k, w));
        }
    }
    EXPECT_GT(zero, shown);
    EXPECT_EQ(svan().SvanZmax, shown);
    EXPECT_EQ(svan().SvanZmin, lowest);
}

TEST_F(SvanAr, ToolTipsOfTheMapAndTheColourScale) {
    openWith(4096, jumpingSine);
    launch("256", "64", "16");
    svan().SvanArMap_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(c().SvanArMap->ToolTipText(),
              "Time Window Mark= 255, Period= 2.015748, Freq= .4960938");
    // dT and T0 are read again at each move.
    ui().DeltaT_Text->setText("0.5");
    ui().Time0_Text->setText("100");
    svan().SvanArMap_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(c().SvanArMap->ToolTipText(),
              "Time Window Mark= 227.5, Period= 1.007874, Freq= .9921875");
    // Over the very bottom of a map whose lowest row is frequency 0 the tool
    // tip stays as it was.
    svan().SvanCut = 1;
    const auto H = static_cast<float>(c().SvanArMap->ScaleHeight());
    svan().SvanArMap_MouseMove(0, 0, 100, H);
    EXPECT_EQ(svan().SvanFmin, 0.0f);
    EXPECT_EQ(c().SvanArMap->ToolTipText(),
              "Time Window Mark= 227.5, Period= 1.007874, Freq= .9921875");
    svan().SvanArMap_MouseMove(0, 0, 0, H / 2);
    EXPECT_TRUE(c().SvanArMap->ToolTipText().endsWith("Freq= .4960938"));

    // The colour scale reads the map's natural logarithms at its edges.
    svan().ColorScale_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(c().ColorScale->ToolTipText(), QString::fromStdString(NumText(svan().SvanZmax)));
    svan().ColorScale_MouseMove(0, 0, 0, static_cast<float>(c().ColorScale->ScaleHeight()));
    EXPECT_EQ(c().ColorScale->ToolTipText(), QString::fromStdString(NumText(svan().SvanZmin)));
}

TEST_F(SvanAr, SaveGrdWritesBase10LogarithmsIntoTheGridDirectory) {
    openWith(1000, mixture, "quake.dat");
    ui().DeltaT_Text->setText("0.5");
    ui().Time0_Text->setText("100");
    launch("100", "50", "4");
    ASSERT_EQ(svan().SvanCount, 19);
    c().SaveGRD->click();
    EXPECT_EQ(enabled(), "1011");

    const fs::path file = dir / "GRID_files" / "Lg(Sp)_quake_Leng= 100,Shift= 50,AR= 4.grd";
    const std::string bytes = readBytes(file);
    const double ln10 = std::log(10.0);
    const std::string header =
        "DSAA\r\n"
        " 19  63 \r\n"
        " 149.5 599.5\r\n"       // 100 + 0.5 * 99, 100 + 0.5 * (18 * 50 + 99)
        " .015625 .984375\r\n" + // 1 / (128 * 0.5), 63 / (128 * 0.5)
        TwoColumnRecord(NumText(svan().SvanZmin / ln10), NumText(svan().SvanZmax / ln10));
    ASSERT_EQ(bytes.substr(0, header.size()), header);

    // Rows k = 2 .. 64 of the 19 windows: the value divided by ln 10 to 15
    // digits (a 7-digit text would miss by 1e-7), each text beginning on a
    // print zone, blanks before the line end.
    std::istringstream rows(bytes.substr(header.size()));
    std::string line;
    int k = 2;
    for (; std::getline(rows, line); ++k) {
        ASSERT_EQ(line.substr(line.size() - 2), " \r");
        int w = 0;
        for (std::size_t at = 0; (at = line.find_first_not_of(" \r", at)) != std::string::npos;) {
            const std::size_t end = line.find(' ', at);
            // A text begins with its sign or, when it has none, with a blank.
            EXPECT_EQ((line[at] == '-' ? at : at - 1) % 14, 0u) << line;
            const std::string value = line.substr(at, end - at);
            EXPECT_TRUE(isNear(std::stod(value), svan().SvanMapAt(k, ++w) / ln10, 0, 1e-14));
            at = end;
        }
        EXPECT_EQ(w, 19) << "row of point " << k;
    }
    EXPECT_EQ(k, 65);

    // With the directory there, a new run's grid replaces the file.
    ui().Time0_Text->setText("0");
    launch("100", "50", "4");
    c().SaveGRD->click();
    const std::string replaced = "DSAA\r\n 19  63 \r\n 49.5 499.5\r\n";
    EXPECT_EQ(readBytes(file).substr(0, replaced.size()), replaced);
}

// A dT that is no positive number is repaired to 1 as Launch Spectra repairs
// it: the marks and the grid header hold finite times.
TEST_F(SvanAr, AnInvalidDeltaTIsRepairedBeforeItReachesMarksOrGrids) {
    for (const char* typed : {"0", "-2", "abc", "1e400"}) {
        openWith(1000, mixture, "dt.dat");
        ui().DeltaT_Text->setText(typed);
        launch("100", "50", "4");
        EXPECT_EQ(ui().DeltaT_Text->Text(), " 1") << typed;
        c().SaveGRD->click();
        const std::string header = readBytes(dir / "GRID_files" / "Lg(Sp)_dt_Leng= 100,Shift= 50,AR= 4.grd").substr(0, 60);
        EXPECT_EQ(header.find("NaN"), std::string::npos) << typed << ": " << header;
        EXPECT_EQ(header.find("Inf"), std::string::npos) << typed << ": " << header;
        EXPECT_NE(header.find(" 99 999\r\n"), std::string::npos) << typed << ": " << header;
    }
}

// On a system that refuses new threads the windows' parallel work (the AR
// map's windows, the main spectrum's windows) runs here with the same result.
TEST_F(SvanAr, WithoutWorkerThreadsTheMapAndTheSpectraAreTheSame) {
    openWith(4000);
    ui().AR_Length_Text->setText("512");
    std::vector<std::vector<float>> runs;
    for (bool refuse : {false, true}) {
        refuseWorkerThreads = refuse;
        launch("512", "64", "20");
        ui().LaunchButton->click();
        refuseWorkerThreads = false;
        std::vector<float> values(form().SpAR.span().begin(), form().SpAR.span().end());
        for (int w = 1; w <= svan().SvanCount; ++w)
            for (int k = svan().SvanCut; k <= svan().SvanHalf; ++k) values.push_back(svan().SvanMapAt(k, w));
        runs.push_back(values);
    }
    EXPECT_GT(runs[0].size(), 1000u);
    EXPECT_EQ(runs[0], runs[1]);
}

// A window without variance (here a gap filled with a constant) draws in the
// lowest colour without stretching the colour scale over the whole map.
TEST_F(SvanAr, AFlatWindowKeepsTheColourRangeOfTheRest) {
    openWith(4000, [](int i) { return i > 1000 && i <= 1800 ? 2.0 : mixture(i); });
    launch("256", "64", "16");
    ASSERT_GT(svan().SvanCount, 20);
    EXPECT_GE(svan().SvanZmin, svan().SvanZmax - std::log(1e12) - 1e-3)
        << "the flat windows sit at the floor, not at the smallest float";
    int atFloor = 0;
    for (int w = 1; w <= svan().SvanCount; ++w)
        atFloor += svan().SvanMapAt(svan().SvanHalf / 2, w) <= svan().SvanZmin + 1e-3f;
    EXPECT_GE(atFloor, 5) << "the windows inside the gap";
}
