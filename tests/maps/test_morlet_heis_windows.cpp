// The Morlet map and the Heisenberg boxes map of a fragment: their rules for
// scales, rows and volumes, the cells, the pointer, the overlays and the files.
#include "core/numtext.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "tests/signal/window_support.h"

using namespace tarnic;
using namespace tarnic::test;

namespace {

class FragmentMaps : public AnalysisWindow {
  protected:
    // Loads a series, opens the fragment window on all of it and presses one of its buttons.
    void openFragment(int n, const std::function<double(int)>& f,
                      Button*(SignalZoomFormControls::*button), const char* name = "s.dat") {
        load(n, f, name);
        ui().ShowSignGrafButton->click();
        plot().ui().ZoomButton->click();
        (zc().*button)->click();
    }
    MorletSvanForm& morlet() { return wb->morletSvanForm(); }
    HeisBoxForm& heis() { return wb->heisBoxForm(); }
    HeisBoxFormControls& hc() { return wb->heisBoxForm().ui(); }
    // Chooses the wavelet, the split and the level, and decomposes.
    void boxes(OptionButton* family, TextBox* order, const char* typed, OptionButton* split,
               const char* level) {
        family->setValue(true);
        order->setText(typed);
        split->setValue(true);
        hc().LevMaxText->setText(level);
        hc().WavePackButton->click();
    }
    // A file of the Morlet map of rec.txt, 400 samples of 0.25.
    std::string morletFile(const std::string& kind, const char* end = "") {
        return readBytes(dir / (kind == "Sp" ? "SpectEstimates" : "GRID_files") /
                         (kind + "(WaveCoeff^2)_rec.txt,PART[0,99.75]" + end +
                          (kind == "Lg" ? ".grd" : ".dat")));
    }
};

const auto kMorlet = &SignalZoomFormControls::MorletSvan;
const auto kHeis = &SignalZoomFormControls::HeisBoxesButton;
double sine20(int i) { return std::sin(2 * M_PI * i / 20.0); }

} // namespace

TEST_F(FragmentMaps, TheMorletRidgeStandsAtThePeriodAndTheConeShadesTheCellsOutsideIt) {
    openFragment(1000, sine20, kMorlet);
    // The row of the greatest value in the middle column lies at period 20,
    // where the spectrum peaks too.
    const int n = morlet().MorletSamples, rows = morlet().MorletScales;
    ASSERT_EQ(rows, 125);
    int best = 1, peak = 1;
    for (int i = 2; i <= rows; ++i) {
        if (morlet().MorletMap((i - 1) * n + 500) > morlet().MorletMap((best - 1) * n + 500)) best = i;
        if (morlet().MorletSpec(i) > morlet().MorletSpec(peak)) peak = i;
    }
    const double lgStep = (morlet().MorletLgMax - morlet().MorletLgMin) / (rows - 1);
    EXPECT_NEAR(std::pow(10.0, morlet().MorletLgMin + (best - 1) * lgStep), 20.0, 1.0);
    EXPECT_EQ(peak, best);
    // Redrawn from the menu with the record on, the cone first on, then off:
    // one cell per value, the smallest scale along the bottom.
    PlotSurface& map = *morlet().ui().MorletSvanMap;
    map.canvas().setRecording(true);
    choose(map, "Cone of Influence");
    const std::vector<DrawOp> shaded = drawn(map, DrawKind::Box), edge = drawn(map, DrawKind::Segment);
    map.canvas().clearRecord();
    choose(map, "Cone of Influence");
    const std::vector<DrawOp> plain = drawn(map, DrawKind::Box);
    EXPECT_TRUE(drawn(map, DrawKind::Segment).empty()) << "off again";
    ASSERT_TRUE(shaded.size() == plain.size() && plain.size() == std::size_t(n) * rows);
    EXPECT_EQ(std::pair(plain[0].y1, plain.back().y1), std::pair(float(map.ScaleHeight()), 0.0f));
    // The longest period at the first sample lies outside the cone and fades
    // half way to white; the shortest in the middle lies inside and stays.
    const QRgb far = plain[std::size_t((rows - 1) * n)].color;
    EXPECT_EQ(shaded[std::size_t((rows - 1) * n)].color,
              qRgb((qRed(far) + 255) / 2, (qGreen(far) + 255) / 2, (qBlue(far) + 255) / 2));
    EXPECT_EQ(shaded[499].color, plain[499].color);
    ASSERT_EQ(edge.size(), std::size_t(n - 1));
    EXPECT_TRUE(edge[0].style == 1 && edge[0].y1 == float(map.ScaleHeight()))
        << "dashed, held at the lowest row";
    // The pointer reads time 0 and the largest period at the top.
    morlet().MorletSvanMap_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(map.ToolTipText().toStdString(),
              "Time= 0, Period=" + NumText(float(std::pow(10.0, double(morlet().MorletLgMax)))));
    // The contour of the significant ridge at period 20 lies near its row.
    map.canvas().clearRecord();
    choose(map, "95 % Significance Contour");
    std::size_t contour = 0;
    const double H = map.ScaleHeight();
    for (const DrawOp& op : drawn(map, DrawKind::Segment, qRgb(0, 0, 0))) {
        if (op.style != 0) continue; // the cone's edge
        const double period =
            std::pow(10.0, std::log10(2.0) + (H - (op.y1 + op.y2) / 2) / H * std::log10(125.0));
        EXPECT_TRUE(period > 10 && period < 40) << period;
        ++contour;
    }
    EXPECT_GT(contour, 0u);
}

TEST_F(FragmentMaps, TheMorletVolumeLimitAcceptsTwoMillionValues) {
    MessageBoxes messages;
    openFragment(10001, [](int i) { return std::sin(i * 0.01) + 0.001 * (i % 7); }, kMorlet);
    EXPECT_EQ(messages.size() == 1 ? messages[0].title : "", "CWT Morlet Analysis");
    EXPECT_TRUE(!morlet().isLoaded() && zoom().Visible());
    // One sample fewer is exactly 200 x 10,000 values.
    zoom().window().close();
    plot().ui().HScroll_Left->setValue(1);
    plot().ui().ZoomButton->click();
    zc().MorletSvan->click();
    EXPECT_EQ(std::pair(zoom().FragCount, morlet().MorletScales), std::pair(10000, 200));
}

TEST_F(FragmentMaps, HeisenbergRowsFollowTheBoxesFillTheHeightAndABurstLightsItsBoxes) {
    openFragment(
        1001, [](int i) { return i > 400 && i < 600 ? std::sin(i * 2.8) : 0.01 * std::sin(i * 0.05); },
        kHeis);
    EXPECT_EQ(hc().LevMaxText->Text(), " 6") << "1001 samples: 2^10, levels up to 10 - 4";
    EXPECT_EQ(enabled({hc().SaveGRD, hc().HeisBoxMap}), "00");
    boxes(hc().DaubOption, hc().DaubOrder, "7", hc().Option1, "3");
    EXPECT_EQ(hc().DaubOrder->Text(), " 6");
    EXPECT_EQ(std::pair(heis().HeisRows, heis().HeisCols), std::pair(3, 500)) << "Int(1001 / 2)";
    EXPECT_TRUE(hc().SaveGRD->isEnabled());
    hc().DaubOrder->setText("22");
    EXPECT_FALSE(hc().SaveGRD->isEnabled()) << "a change clears the map";
    boxes(hc().SymletOption, hc().SymOrder, "9", hc().Option4, "abc");
    EXPECT_EQ(hc().SymOrder->Text() + "|" + hc().LevMaxText->Text() + "|" + hc().DaubOrder->Text(),
              " 8| 1|");
    EXPECT_EQ(heis().HeisRows, 8);
    hc().LevMaxText->setText("6");
    hc().WavePackButton->click();
    EXPECT_EQ(heis().HeisRows, 48);
    // Rows as high as their scale bands fill the height.
    PlotSurface& map = *hc().HeisBoxMap;
    map.canvas().setRecording(true);
    boxes(hc().DaubOption, hc().DaubOrder, "4", hc().Option2, "4");
    ASSERT_EQ(heis().HeisRows, 8);
    const auto cells = drawn(map, DrawKind::Box);
    ASSERT_EQ(cells.size(), 8u * 500u);
    double total = 0;
    for (int i = 0; i < 8; ++i) total += cells[std::size_t(i) * 500].y2;
    EXPECT_NEAR(total, map.ScaleHeight(), 1e-2 * map.ScaleHeight());
    // The burst between samples 400 and 600 lights its own boxes in the finest
    // row: box c covers samples 2c - 1 and 2c, the burst the boxes 200 .. 300.
    float inside = -1e30f, outside = -1e30f;
    for (int c = 1; c <= heis().HeisCols; ++c) {
        if (c > 210 && c < 290) inside = std::max(inside, heis().HeisMap(c));
        if (c < 180 || c > 320) outside = std::max(outside, heis().HeisMap(c));
    }
    EXPECT_GT(inside, outside + 1.0f);
    heis().HeisBoxMap_MouseMove(0, 0, 0, 0);
    EXPECT_TRUE(map.ToolTipText().startsWith("Time= 0, Scale="));
    hc().SaveGRD->click();
    EXPECT_EQ(enabled({hc().SaveGRD, hc().HeisBoxMap}), "01");
    // 64 rows of 125,001 boxes are more than eight million.
    MessageBoxes messages;
    openFragment(250002, [](int i) { return std::sin(i * 0.001) + 0.1 * std::sin(i * 0.7); }, kHeis);
    boxes(hc().DaubOption, hc().DaubOrder, "4", hc().Option4, "8");
    EXPECT_EQ(messages.size() == 1 ? messages[0].title : "", "Orthogonal Wavelet Heisen.Boxes Analysis");
}

TEST_F(FragmentMaps, MorletCompanionFilesComeWithTheOverlaysAndANegativeLgForSmallSteps) {
    openFragment(400, sine20, kMorlet, "rec.txt");
    morlet().window().close();
    ui().DeltaT_Text->setText("0.25");
    morlet().ShowConeOfInfluence = morlet().ShowSignificanceContour = true;
    zc().MorletSvan->click();
    morlet().ui().SaveGRD->click();
    const std::string grid = morletFile("Lg"), spectrum = morletFile("Sp");
    // The spectrum's first period is the smallest; the grid's Y range begins
    // with its negative lg.
    EXPECT_EQ(spectrum.substr(0, spectrum.find(' ', 1)),
              NumText(std::pow(10.0, double(morlet().MorletLgMin))));
    EXPECT_EQ(grid.substr(grid.find("\r\n", grid.find("\r\n", 6) + 2) + 2, 1), "-");
    // The level beside each period of the spectrum; the cone's period at each
    // sample's time, both in time units of 0.25: the last sample at 99.75.
    const std::string level = morletFile("Sp", ",Level= 95"), cone = morletFile("Cone");
    EXPECT_EQ(std::count(level.begin(), level.end(), '\n'), 50) << "an eighth of 400 raised to 50";
    EXPECT_EQ(level.substr(0, level.find(' ', 1)), spectrum.substr(0, spectrum.find(' ', 1)));
    EXPECT_EQ(std::count(cone.begin(), cone.end(), '\n'), 400);
    EXPECT_EQ(cone.substr(cone.rfind('\n', cone.size() - 2) + 1, 7), " 99.75 ");
}
