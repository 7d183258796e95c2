// The Morlet map and the Heisenberg boxes map of a fragment: their rules for
// scales, rows and volumes, the cell geometry, the pointer, and the files.
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "numeric/morlet.h"
#include "numeric/significance.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <QAction>
#include <QMenu>

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;

namespace {

class FragmentMaps : public MainWindow {
  protected:
    // Loads a series and opens the fragment window on all of it.
    void openFragment(int n, const std::function<double(int)>& f, const char* name = "s.dat") {
        start();
        write(name, series(n, f));
        open(name);
        ASSERT_EQ(message(), "");
        ui().ShowSignGrafButton->click();
        wb->signalPlot().ui().ZoomButton->click();
        ASSERT_TRUE(zoom().isLoaded());
    }
    SignalZoomForm& zoom() { return wb->signalZoomForm(); }
    MorletSvanForm& morlet() { return wb->morletSvanForm(); }
    HeisBoxForm& heis() { return wb->heisBoxForm(); }
    HeisBoxFormControls& hc() { return wb->heisBoxForm().ui(); }
};

double sine20(int i) { return std::sin(2 * M_PI * i / 20.0); }

} // namespace

TEST(MorletScales, TwoHundredAtMostAnEighthAtLeastFifty) {
    EXPECT_EQ(MorletScaleCount(32), 50);
    EXPECT_EQ(MorletScaleCount(407), 50);
    EXPECT_EQ(MorletScaleCount(800), 100);
    EXPECT_EQ(MorletScaleCount(801), 100);
    EXPECT_EQ(MorletScaleCount(1600), 200);
    EXPECT_EQ(MorletScaleCount(10000), 200);
}

TEST_F(FragmentMaps, TheMorletRidgeStandsAtThePeriodAndTheCellsTileTheMap) {
    openFragment(1000, sine20);
    zoom().ui().MorletSvan->click();
    ASSERT_TRUE(morlet().Visible());
    EXPECT_FALSE(zoom().Visible());
    EXPECT_EQ(morlet().MorletScales, 125);
    EXPECT_EQ(morlet().Caption(), "Lg of Squared Morlet wavelet coefficients, File=s.dat, Number of samples= 1000");
    // The row of the greatest value in the middle column.
    const int n = morlet().MorletSamples, rows = morlet().MorletScales;
    int best = 1;
    for (int i = 1; i <= rows; ++i)
        if (morlet().MorletMap((i - 1) * n + 500) > morlet().MorletMap((best - 1) * n + 500)) best = i;
    const double lg = morlet().MorletLgMin + (best - 1) * (morlet().MorletLgMax - morlet().MorletLgMin) / (rows - 1);
    EXPECT_NEAR(std::pow(10.0, lg), 20.0, 1.0);
    int peak = 1;
    for (int i = 1; i <= rows; ++i)
        if (morlet().MorletSpec(i) > morlet().MorletSpec(peak)) peak = i;
    EXPECT_EQ(peak, best) << "the spectrum peaks on the ridge";

    // Redraw with the record on: one cell per value, the smallest scale along the bottom.
    PlotSurface& map = *morlet().ui().MorletSvanMap;
    map.canvas().setRecording(true);
    zoom().window().show();
    zoom().MorletSvan_Click();
    std::vector<DrawOp> cells;
    for (const DrawOp& op : map.canvas().record())
        if (op.kind == DrawKind::Box) cells.push_back(op);
    ASSERT_EQ(cells.size(), static_cast<std::size_t>(n) * rows);
    const double W = map.ScaleWidth(), H = map.ScaleHeight();
    EXPECT_FLOAT_EQ(cells[0].x1, 0.0f);
    EXPECT_FLOAT_EQ(cells[0].y1, static_cast<float>(H));
    EXPECT_FLOAT_EQ(cells[0].x2, static_cast<float>(W / (n - 1)));
    EXPECT_FLOAT_EQ(cells.back().y1, static_cast<float>(H - (rows - 1) * (H / (rows - 1))));
}

TEST_F(FragmentMaps, TheMorletVolumeLimitAcceptsTwoMillionValues) {
    openFragment(10001, [](int i) { return std::sin(i * 0.01) + 0.001 * (i % 7); });
    QString title;
    setMsgBoxHook([&](const QString&, const QString& h) { title = h; });
    zoom().ui().MorletSvan->click();
    setMsgBoxHook({});
    EXPECT_EQ(title, "CWT Morlet Analysis");
    EXPECT_FALSE(morlet().isLoaded());
    EXPECT_TRUE(zoom().Visible());
    // One sample fewer is exactly 200 x 10,000 values.
    wb->signalZoomForm().window().close();
    wb->signalPlot().ui().HScroll_Left->setValue(1);
    wb->signalPlot().ui().ZoomButton->click();
    ASSERT_EQ(zoom().FragCount, 10000);
    zoom().ui().MorletSvan->click();
    EXPECT_TRUE(morlet().isLoaded());
    EXPECT_EQ(morlet().MorletScales, 200);
}

TEST_F(FragmentMaps, MorletFilesCarryTheTrendAndANegativeLgForSmallSteps) {
    openFragment(400, sine20, "rec.txt");
    ui().DeltaT_Text->setText("0.25");
    zoom().ui().MorletSvan->click();
    QApplication::processEvents();
    EXPECT_LT(morlet().MorletLgMin, 0.0f) << "lg(2 x 0.25)";
    EXPECT_EQ(morlet().ui().Ymarks[0]->Caption(), "0.5") << "the marks show positive periods";
    morlet().ui().SaveGRD->click();
    EXPECT_FALSE(morlet().ui().SaveGRD->isEnabled()) << "one map is saved once";
    const std::string grid = readBytes(dir / "GRID_files" / "Lg(WaveCoeff^2)_rec.txt,PART[0,99.75].grd");
    ASSERT_FALSE(grid.empty());
    std::istringstream lines(grid);
    std::string line;
    for (int i = 0; i < 3; ++i) std::getline(lines, line);
    std::getline(lines, line);
    EXPECT_EQ(line.front(), '-') << "the Y range begins with the negative lg";
    const std::string spectrum =
        readBytes(dir / "SpectEstimates" / "Sp(WaveCoeff^2)_rec.txt,PART[0,99.75].dat");
    EXPECT_EQ(std::count(spectrum.begin(), spectrum.end(), '\n'), morlet().MorletScales);
    EXPECT_EQ(spectrum.substr(0, spectrum.find(' ', 1)), NumText(std::pow(10.0, static_cast<double>(morlet().MorletLgMin))));

    morlet().window().close();
    zoom().window().close();
    wb->signalPlot().ui().SmoothRad->setText("30");
    wb->signalPlot().ui().ReDrawButton->click();
    wb->signalPlot().ui().ZoomButton->click();
    zoom().ui().MorletSvan->click();
    morlet().ui().SaveGRD->click();
    EXPECT_TRUE(fs::exists(dir / "GRID_files" / "Lg(WaveCoeff^2)_rec.txt,PART[0,99.75],DeTrended.grd"));
    EXPECT_TRUE(fs::exists(dir / "SpectEstimates" / "Sp(WaveCoeff^2)_rec.txt,PART[0,99.75],DeTrended.dat"));
}

TEST_F(FragmentMaps, TheMorletPointerReadsTimeAndPeriod) {
    openFragment(500, sine20);
    zoom().ui().MorletSvan->click();
    morlet().MorletSvanMap_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(morlet().ui().MorletSvanMap->ToolTipText(),
              "Time= 0, Period=" + QString::fromStdString(NumText(static_cast<float>(std::pow(10.0, static_cast<double>(morlet().MorletLgMax))))));
}

TEST_F(FragmentMaps, HeisenbergLevelsFollowTheFragmentLength) {
    openFragment(32, sine20);
    zoom().ui().HeisBoxesButton->click();
    EXPECT_EQ(heis().HeisLevels, 5);
    EXPECT_EQ(hc().LevMaxText->Text(), " 1");
    EXPECT_FALSE(hc().SaveGRD->isEnabled());
    EXPECT_FALSE(hc().HeisBoxMap->isEnabled());
    heis().window().close();
    EXPECT_TRUE(zoom().Visible());
    openFragment(33, sine20, "t.dat");
    zoom().ui().HeisBoxesButton->click();
    EXPECT_EQ(hc().LevMaxText->Text(), " 2");
}

TEST_F(FragmentMaps, HeisenbergOrdersLevelsAndRows) {
    openFragment(1001, sine20);
    zoom().ui().HeisBoxesButton->click();
    hc().DaubOption->setValue(true);
    hc().DaubOrder->setText("7");
    hc().Option1->setValue(true);
    hc().LevMaxText->setText("3");
    hc().WavePackButton->click();
    EXPECT_EQ(hc().DaubOrder->Text(), " 6");
    EXPECT_EQ(heis().HeisRows, 3);
    EXPECT_EQ(heis().HeisCols, 500) << "Int(1001 / 2)";
    EXPECT_TRUE(hc().SaveGRD->isEnabled());
    hc().DaubOrder->setText("22");
    EXPECT_FALSE(hc().SaveGRD->isEnabled()) << "a change clears the map";
    hc().WavePackButton->click();
    EXPECT_EQ(hc().DaubOrder->Text(), QString::fromStdString(NumText(heis().HeisDaubOrder)));
    hc().SymletOption->setValue(true);
    hc().SymOrder->setText("6");
    hc().WavePackButton->click();
    EXPECT_EQ(hc().SymOrder->Text(), QString::fromStdString(NumText(heis().HeisSymOrder)));
    hc().SymOrder->setText("9");
    hc().LevMaxText->setText("abc");
    hc().Option4->setValue(true);
    hc().WavePackButton->click();
    EXPECT_EQ(hc().SymOrder->Text(), " 8");
    EXPECT_EQ(hc().LevMaxText->Text(), " 1");
    EXPECT_EQ(heis().HeisRows, 8);
    hc().LevMaxText->setText("6");
    hc().WavePackButton->click();
    EXPECT_EQ(heis().HeisRows, 48);
}

TEST_F(FragmentMaps, HeisenbergRowsAreAsHighAsTheirScaleBands) {
    openFragment(1024, [](int i) { return i > 400 && i < 600 ? std::sin(i * 2.8) : 0.01 * std::sin(i * 0.05); });
    zoom().ui().HeisBoxesButton->click();
    hc().Option2->setValue(true);
    hc().LevMaxText->setText("4");
    PlotSurface& map = *hc().HeisBoxMap;
    map.canvas().setRecording(true);
    hc().WavePackButton->click();
    ASSERT_EQ(heis().HeisRows, 8);
    std::vector<DrawOp> boxes;
    for (const DrawOp& op : map.canvas().record())
        if (op.kind == DrawKind::Box) boxes.push_back(op);
    ASSERT_EQ(boxes.size(), 8u * 512u);
    const double H = map.ScaleHeight();
    double total = 0;
    for (int i = 0; i < 8; ++i) total += boxes[static_cast<std::size_t>(i) * 512].y2;
    EXPECT_NEAR(total, H, 1e-2 * H) << "the rows fill the height between them";
    EXPECT_GT(boxes[0].y1, boxes[7 * 512].y1) << "the smallest scale lies at the bottom";
    // The burst between samples 400 and 600 lights its own boxes in the finest row.
    // Box c covers samples 2c - 1 and 2c: the burst spans the boxes 200 .. 300.
    float inside = -1e30f, outside = -1e30f;
    for (int c = 1; c <= heis().HeisCols; ++c) {
        const float v = heis().HeisMap(c);
        if (c > 210 && c < 290) inside = std::max(inside, v);
        if (c < 180 || c > 320) outside = std::max(outside, v);
    }
    EXPECT_GT(inside, outside + 1.0f);
    heis().HeisBoxMap_MouseMove(0, 0, 0, 0);
    EXPECT_TRUE(map.ToolTipText().startsWith("Time= 0, Scale="));
    hc().SaveGRD->click();
    EXPECT_TRUE(fs::exists(dir / "GRID_files" / "Lg(AbsWaveCoeff_HBoxes)_s,PART[0,1023].grd"));
    EXPECT_FALSE(hc().SaveGRD->isEnabled());
    EXPECT_TRUE(map.isEnabled());
}

TEST_F(FragmentMaps, TheHeisenbergVolumeLimitAcceptsEightMillionCells) {
    openFragment(250002, [](int i) { return std::sin(i * 0.001) + 0.1 * std::sin(i * 0.7); });
    zoom().ui().HeisBoxesButton->click();
    hc().Option4->setValue(true);
    hc().LevMaxText->setText("8");
    QString title;
    setMsgBoxHook([&](const QString&, const QString& h) { title = h; });
    hc().WavePackButton->click();
    setMsgBoxHook({});
    EXPECT_EQ(title, "Orthogonal Wavelet Heisen.Boxes Analysis") << "64 x 125,001 cells";
    EXPECT_FALSE(hc().SaveGRD->isEnabled());
}

// ---- the red-noise overlays of the Morlet map ----

TEST_F(FragmentMaps, MorletOverlaysShadeOutsideTheConeAndOutlineTheRidgeInside) {
    openFragment(1000, sine20);
    PlotSurface& map = *morlet().ui().MorletSvanMap;
    map.canvas().setRecording(true);
    zoom().ui().MorletSvan->click();
    auto ops = [&](DrawKind kind) {
        std::vector<DrawOp> out;
        for (const DrawOp& op : map.canvas().record())
            if (op.kind == kind) out.push_back(op);
        return out;
    };
    const std::vector<DrawOp> plain = ops(DrawKind::Box);
    EXPECT_TRUE(ops(DrawKind::Segment).empty());

    const int n = morlet().MorletSamplesIn, rows = morlet().MorletScalesIn;
    const MorletSignificance sig = morletSignificance(
        std::span<const float>(zoom().Fragment.span()), morletPeriods(2.0, 250.0, rows), 0.95);
    auto inside = [&](int i, int t) {
        return morletPeriods(2.0, 250.0, rows)[std::size_t(i - 1)] <= sig.cone[std::size_t(t - 1)];
    };
    auto halfway = [](QRgb c) {
        return qRgb((qRed(c) + 255) / 2, (qGreen(c) + 255) / 2, (qBlue(c) + 255) / 2);
    };
    QStringList entries;
    const auto menu = map.contextMenu();
    for (QAction* a : menu->actions()) entries << (a->isSeparator() ? "-" : a->text());
    EXPECT_EQ(entries, QStringList({"Cone of Influence", "95 % Significance Contour", "-",
                                    "Save Picture...", "Copy Picture"}));

    map.canvas().clearRecord();
    choose(map, "Cone of Influence");
    const std::vector<DrawOp> shaded = ops(DrawKind::Box);
    ASSERT_EQ(shaded.size(), plain.size());
    for (const auto& [i, t] : {std::pair(1, 1), std::pair(1, 500), std::pair(rows, 500), std::pair(60, 20)})
        EXPECT_EQ(shaded[std::size_t((i - 1) * n + t - 1)].color,
                  inside(i, t) ? plain[std::size_t((i - 1) * n + t - 1)].color
                               : halfway(plain[std::size_t((i - 1) * n + t - 1)].color))
            << i << "," << t;
    const auto edge = ops(DrawKind::Segment);
    ASSERT_EQ(edge.size(), std::size_t(n - 1));
    EXPECT_EQ(edge[0].style, 1);
    EXPECT_FLOAT_EQ(edge[0].y1, static_cast<float>(map.ScaleHeight())) << "held at the lowest row";

    map.canvas().clearRecord();
    choose(map, "95 % Significance Contour");
    EXPECT_TRUE(morlet().ShowSignificanceContour);
    std::vector<DrawOp> contour;
    for (const DrawOp& op : ops(DrawKind::Segment))
        if (op.style == 0 && op.color == qRgb(0, 0, 0)) contour.push_back(op);
    ASSERT_FALSE(contour.empty()) << "the ridge at period 20 is significant";
    // Every edge lies inside the cone: at its middle the period of the layout
    // is at most the cone's at that sample.
    const double W = map.ScaleWidth(), H = map.ScaleHeight(), lg0 = std::log10(2.0),
                 lgRange = std::log10(250.0) - lg0;
    for (const DrawOp& op : contour) {
        const double x = (op.x1 + op.x2) / 2, y = (op.y1 + op.y2) / 2;
        const double period = std::pow(10.0, lg0 + (H - y) / H * lgRange);
        const auto t = static_cast<std::size_t>(std::lround(x / (W / (n - 1))));
        EXPECT_LE(period, sig.cone[std::min(t, std::size_t(n - 1))] * 1.2) << x << "," << y;
    }

    choose(map, "Cone of Influence");
    map.canvas().clearRecord();
    choose(map, "95 % Significance Contour");
    EXPECT_TRUE(ops(DrawKind::Segment).empty());
    const auto back = ops(DrawKind::Box);
    ASSERT_EQ(back.size(), plain.size());
    EXPECT_TRUE(std::equal(plain.begin(), plain.end(), back.begin(),
                           [](const DrawOp& a, const DrawOp& b) { return a.color == b.color; }))
        << "both off, the map is as drawn without them";
}

TEST_F(FragmentMaps, MorletCompanionFilesHoldTheGlobalLevelAndTheCone) {
    openFragment(400, sine20, "rec.txt");
    ui().DeltaT_Text->setText("0.25");
    zoom().ui().MorletSvan->click();
    morlet().ui().SaveGRD->click();
    const fs::path grid = dir / "GRID_files" / "Lg(WaveCoeff^2)_rec.txt,PART[0,99.75].grd";
    const fs::path spectrum = dir / "SpectEstimates" / "Sp(WaveCoeff^2)_rec.txt,PART[0,99.75].dat";
    const fs::path level = dir / "SpectEstimates" / "Sp(WaveCoeff^2)_rec.txt,PART[0,99.75],Level= 95.dat";
    const fs::path cone = dir / "GRID_files" / "Cone(WaveCoeff^2)_rec.txt,PART[0,99.75].dat";
    const std::string gridBytes = readBytes(grid), spectrumBytes = readBytes(spectrum);
    EXPECT_FALSE(fs::exists(level) || fs::exists(cone)) << "no companion while the overlays are off";

    morlet().window().close();
    morlet().ShowConeOfInfluence = morlet().ShowSignificanceContour = true;
    zoom().ui().MorletSvan->click();
    morlet().ui().SaveGRD->click();
    EXPECT_EQ(readBytes(grid), gridBytes);
    EXPECT_EQ(readBytes(spectrum), spectrumBytes);

    const int rows = morlet().MorletScales;
    const MorletSignificance sig = morletSignificance(
        std::span<const float>(zoom().Fragment.span()), morletPeriods(2.0, 100.0, rows), 0.95);
    std::istringstream spectrumLines(spectrumBytes), levelLines(readBytes(level));
    std::string s, l;
    for (int i = 0; i < rows; ++i) {
        ASSERT_TRUE(std::getline(spectrumLines, s) && std::getline(levelLines, l)) << i;
        const std::string period = s.substr(0, s.find(' ', 1));
        EXPECT_EQ(l + "\n", TwoColumnRecord(period, NumText(static_cast<float>(sig.globalLevel[std::size_t(i)]))))
            << "row " << i + 1;
    }
    EXPECT_FALSE(std::getline(levelLines, l));
    std::istringstream coneLines(readBytes(cone));
    int t = 0;
    while (std::getline(coneLines, l)) {
        EXPECT_EQ(l + "\n", TwoColumnRecord(NumText(static_cast<float>(t * 0.25)),
                                            NumText(static_cast<float>(sig.cone[std::size_t(t)] * 0.25))))
            << "sample " << t + 1;
        ++t;
    }
    EXPECT_EQ(t, 400);
}
