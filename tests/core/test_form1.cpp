// The main window: its stages, the double-click intake with every message, the
// defaults it derives, the first plot and the hand-over to the other windows.
#include "core/form1.h"
#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavespectraform.h"
#include "tests/core/mainwindow_fixture.h"
#include "tests/numeric/test_support.h"

#include <QApplication>
#include <QDir>

#include "tests/core/qt_print.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

using namespace tarnic;
namespace fs = std::filesystem;

using namespace tarnic::test;


TEST_F(MainWindow, LoadFindsTheLibraryAndOpensTheBrowserOnly) {
    start();
    EXPECT_EQ(form().Caption(), "   Varnholt,    Orvane.");
    EXPECT_EQ(ui().Label2->Caption(),
              "Click file to light its long file name\r\nDouble-click file to process it");
    EXPECT_EQ(message(), "Select and read input file");
    EXPECT_EQ(ui().MessLineLabel->ForeColor(), BasicColor(10));
    EXPECT_EQ(form().LevMax, 2);
    expectStage(ui(), Stage::Start);
    EXPECT_EQ(ui().HScroll_Left->Value(), 0);
    EXPECT_EQ(ui().HScroll_Right->Value(), 32767);
    EXPECT_FLOAT_EQ(ui().Line_Left->X1(), 0.0f);
    EXPECT_FLOAT_EQ(ui().Line_Right->X1(), static_cast<float>(ui().Picture1->ScaleWidth()));
    EXPECT_EQ(ui().AR_OrderText->Text(), "10");
    EXPECT_EQ(ui().LogY_Check->Value(), 1);
    EXPECT_EQ(ui().FreqCheck->Value(), 0);
    EXPECT_TRUE(ui().Option3->Value());
}

TEST_F(MainWindow, WithoutTheLibraryInTheListLoadShowsTheRedLine) {
    fs::remove(dir / "Tarnic.dll");
    test::writeBytes(dir / "tarnic.dll", "not it: the test is case-sensitive");
    start();
    EXPECT_EQ(message(), "The file <Tarnic.dll> must be within application directory");
    EXPECT_TRUE(messageIsRed());
    EXPECT_NE(form().LevMax, 2);
}

TEST_F(MainWindow, AGoodFileIsDrawnAndOpensTheWorkControls) {
    start();
    write("wave.dat", series(100, [](int i) { return std::sin(i * 0.3) + 0.01 * i; }));
    open("wave.dat");
    EXPECT_EQ(message(), "");
    expectStage(ui(), Stage::Loaded);
    EXPECT_EQ(form().Caption(), "   Varnholt,   Orvane.");
    EXPECT_EQ(form().Nrec, 100);
    EXPECT_EQ(form().InFileName, "wave.dat");
    EXPECT_EQ(form().InFilePath, QString::fromStdString((dir / "wave.dat").string()));
    ASSERT_EQ(form().PathLen, form().InFilePath.size());
    EXPECT_EQ(form().PathCodes(1), '/');
    EXPECT_EQ(form().Signal(3), static_cast<float>(std::sin(0.9) + 0.03));
    EXPECT_EQ(form().SignalRange, form().SignalMax - form().SignalMin);
    EXPECT_EQ(ui().Y_axis_Label->Caption(), "File = wave.dat,  Number of samples = 100");
    EXPECT_TRUE(ui().Y_axis_Label->Visible());
    EXPECT_EQ(form().SpectraReady, 0);
}

TEST_F(MainWindow, FirstPlotIsOneSegmentPerPairInTheUpperThirdAndARedSeparator) {
    start();
    write("ramp.dat", series(50, [](int i) { return i % 7 == 0 ? -3.0 : i; }));
    ui().Picture1->canvas().setRecording(true);
    open("ramp.dat");
    const auto& ops = ui().Picture1->canvas().record();
    std::vector<DrawOp> segs;
    for (const DrawOp& op : ops)
        if (op.kind == DrawKind::Segment) segs.push_back(op);
    ASSERT_EQ(segs.size(), 50u);
    const double W = ui().Picture1->ScaleWidth(), H = ui().Picture1->ScaleHeight();
    float lowest = 1e9f, highest = -1e9f;
    for (std::size_t i = 0; i + 1 < segs.size(); ++i) {
        EXPECT_EQ(segs[i].color, BasicColor(1).rgb());
        EXPECT_FLOAT_EQ(segs[i].x1, static_cast<float>(W * i / 49));
        EXPECT_FLOAT_EQ(segs[i].x2, static_cast<float>(W * (i + 1) / 49));
        lowest = std::min({lowest, segs[i].y1, segs[i].y2});
        highest = std::max({highest, segs[i].y1, segs[i].y2});
        if (i > 0) {
            EXPECT_EQ(segs[i].x1, segs[i - 1].x2) << "the curve is connected";
        }
    }
    EXPECT_FLOAT_EQ(lowest, 0.0f) << "the maximum lands on the top edge";
    EXPECT_NEAR(highest, H / 3, 1e-3) << "the minimum on the separator";
    const DrawOp& separator = segs.back();
    EXPECT_EQ(separator.color, BasicColor(12).rgb());
    EXPECT_FLOAT_EQ(separator.y1, static_cast<float>(H / 3));
    EXPECT_FLOAT_EQ(separator.x2, static_cast<float>(W));
}

TEST_F(MainWindow, DefaultsFollowTheLengthOfTheFile) {
    start();
    struct Case {
        int n;
        const char* length;
        const char* order;
        int levPow;
        const char* levMax;
    };
    for (const Case& k : {Case{32, " 32", " 10", 5, " 1"}, Case{1024, " 1024", " 159", 10, " 6"},
                          Case{1025, " 1025", " 159", 11, " 7"},
                          Case{2048, " 2048", " 204", 11, " 7"},
                          Case{5000, " 2048", " 204", 13, " 9"}}) {
        const std::string name = "n" + std::to_string(k.n) + ".dat";
        write(name, series(k.n, [](int i) { return std::cos(i * 1.7); }));
        ui().DeltaT_Text->setText("0.25");
        ui().RadiusText->setText("9");
        open(name);
        EXPECT_EQ(ui().TimeLengText->Text(), k.length) << k.n;
        EXPECT_EQ(ui().AR_Length_Text->Text(), k.length) << k.n;
        EXPECT_EQ(ui().AR_OrderText->Text(), k.order) << k.n;
        EXPECT_EQ(ui().RadiusText->Text(), " 1");
        EXPECT_EQ(ui().DeltaT_Text->Text(), " 1");
        EXPECT_EQ(ui().Time0_Text->Text(), " 0");
        EXPECT_EQ(form().LevPow, k.levPow) << k.n;
        EXPECT_EQ(form().LevPowLength, 1 << k.levPow) << k.n;
        EXPECT_EQ(ui().LevMaxText->Text(), k.levMax) << k.n;
        form().OtherFileButton_Click();
    }
}

TEST_F(MainWindow, EveryRejectionIsARedMessageAndLeavesTheBrowserOpen) {
    start();
    write("empty.dat", "");
    write("bad_first.dat", "abc 1\r\n2 3\r\n");
    write("broken.dat", series(10, [](int i) { return i; }) + "1.2.3 4\r\n" +
                            series(5, [](int i) { return i; }));
    write("flat.dat", series(64, [](int) { return 5.0; }));
    write("one.dat", "3.5\r\n");
    write("short.dat", series(31, [](int i) { return i * i; }));
    write("old.BAK", "1\n2\n");
    write("tool.exe", "1\n2\n");
    write("ambiguous.dat", "# a single column\r\n5,123\r\n7,5\r\n");
    const QString flat = QString::fromStdString((dir / "flat.dat").string());
    struct Case {
        const char* file;
        QString text;
    };
    for (const Case& k : {
             Case{"empty.dat", "The input file empty.dat has a zero size - nothing to process."},
             Case{"bad_first.dat", "The input file bad_first.dat has a wrong structure within "
                                   "record #  1"},
             Case{"broken.dat", "The input file broken.dat has a wrong structure within record #  11"},
             Case{"flat.dat", "The 1-st column of the file " + flat +
                                  " presents a constant and could not be analyzed but if input "
                                  "file has more than 1 column it is demultiplexed."},
             Case{"one.dat", "The 1-st column of the file " +
                                 QString::fromStdString((dir / "one.dat").string()) +
                                 " presents a constant and could not be analyzed but if input "
                                 "file has more than 1 column it is demultiplexed."},
             Case{"short.dat", "The input file short.dat has too few (less than 32) samples:  31"},
             Case{"ambiguous.dat",
                  "The input file ambiguous.dat has commas that can be read both as decimal "
                  "commas and as column separators within line #  2. Separate the columns by "
                  "semicolons or tabs, or write the numbers with a decimal point."},
             Case{"old.BAK", "EXE, DLL, COM or BAK-files are not processed"},
             Case{"tool.exe", "EXE, DLL, COM or BAK-files are not processed"},
             Case{"Tarnic.dll", "EXE, DLL, COM or BAK-files are not processed"}}) {
        open(k.file);
        EXPECT_EQ(message(), k.text) << k.file;
        EXPECT_TRUE(messageIsRed()) << k.file;
        expectStage(ui(), Stage::Rejected);
        EXPECT_EQ(form().SpectraReady, 0);
    }
}

TEST_F(MainWindow, AConstantColumnIsSplitIntoItsColumnsAndTheListShowsThem) {
    start();
    write("table.dat", series(40, [](int) { return 2.0; }));
    open("table.dat");
    EXPECT_TRUE(message().contains("presents a constant"));
    QStringList files;
    for (int i = 0; i < ui().File1->ListCount(); ++i) files << ui().File1->List(i);
    EXPECT_TRUE(files.contains("table-Col1.dat")) << files.join(",").toStdString();
    EXPECT_TRUE(files.contains("table-Col2.dat"));
    EXPECT_FALSE(ui().Y_axis_Label->Visible());
    EXPECT_FALSE(ui().Picture1->isEnabled());
}

TEST_F(MainWindow, TooFewSamplesKeepTheCaptionAndTheDefaultsOf32) {
    start();
    write("short.dat", series(31, [](int i) { return i % 3; }));
    open("short.dat");
    EXPECT_EQ(ui().Y_axis_Label->Caption(), "File = short.dat,  Number of samples = 31");
    EXPECT_EQ(ui().TimeLengText->Text(), " 32");
    EXPECT_EQ(ui().AR_Length_Text->Text(), " 32");
    EXPECT_EQ(ui().AR_OrderText->Text(), " 10");
    EXPECT_FALSE(ui().Picture1->isEnabled());
    expectStage(ui(), Stage::Rejected);
}

TEST_F(MainWindow, AMissingLibraryEndsInTheLibraryMessageWithTheBrowserStillOpen) {
    start();
    write("wave.dat", series(64, [](int i) { return std::sin(i); }));
    TarnicLibrary::instance().setPreferredFile(dir / "nowhere" / "Tarnic.dll");
    TarnicLibrary::instance().setPlatformSearch(false);
    open("wave.dat");
    TarnicLibrary::instance().setPlatformSearch(true);
    // The message names what this program needs on Linux, nothing of another system's.
    EXPECT_TRUE(message().startsWith("Files: libfftw3.so.3, libfftw3f.so.3 and the Qt 6 libraries"));
    EXPECT_TRUE(message().endsWith("File Tarnic.dll is necessary within application directory only"));
    EXPECT_FALSE(message().contains("windows"));
    EXPECT_TRUE(messageIsRed());
    EXPECT_EQ(form().Caption(), "   Varnholt,    Orvane.") << "the library was never reached";
    expectStage(ui(), Stage::Rejected);
    EXPECT_FALSE(ui().Y_axis_Label->Visible());

    // A later double-click runs the whole handler again and now succeeds.
    TarnicLibrary::instance().setPreferredFile(TARNIC_DLL_PATH);
    open("wave.dat");
    expectStage(ui(), Stage::Loaded);
}

TEST_F(MainWindow, ARejectionKeepsTheOldSignalInMemory) {
    start();
    write("good.dat", series(40, [](int i) { return i; }));
    write("bad.dat", "x\n");
    open("good.dat");
    form().OtherFileButton_Click();
    open("bad.dat");
    EXPECT_EQ(form().Nrec, 0) << "the count belongs to the rejected file";
    EXPECT_EQ(form().Signal.count(), 40);
    EXPECT_EQ(form().Signal(40), 40.0f);
}

TEST_F(MainWindow, TheSignalAndTheNameStemsAreHandedToTheOtherWindows) {
    start();
    write("hand.over.dat", series(300, [](int i) { return std::sin(i * 0.1); }));
    open("hand.over.dat");
    const QString stem = QString::fromStdString((dir / "hand.over.dat").string());
    SignalPlot& plot = wb->signalPlot();
    EXPECT_EQ(plot.SignalLength, 300);
    EXPECT_EQ(plot.SignalFloor, form().SignalMin);
    EXPECT_EQ(plot.SignalCeil, form().SignalMax);
    EXPECT_EQ(plot.SignalCopy, form().Signal);
    EXPECT_EQ(plot.SignalFilePath, stem);
    EXPECT_EQ(wb->svanArForm().SvanSignal, form().Signal);
    EXPECT_EQ(wb->svanArForm().SvanNrec, 300);
    EXPECT_EQ(wb->svanArForm().SvanFileName, "hand.over.dat");
    EXPECT_EQ(wb->bandPassForm().BpfBaseName, stem + "-BPF(");
    EXPECT_EQ(wb->waveDecForm().WdcStem, stem + "-WDC(");
    EXPECT_EQ(wb->waveSpectForm().WaveSpFileName, "hand.over.dat");
    EXPECT_EQ(wb->waveFiltForm().ThreshFileStem, stem);
    EXPECT_EQ(wb->morletSvanForm().MorletFileName, "hand.over.dat");
    EXPECT_EQ(wb->heisBoxForm().HeisFileName, "hand.over.dat");
    EXPECT_EQ(wb->mfdfaForm().MfdfaFileName, "hand.over.dat");
}

TEST_F(MainWindow, ADoubleClickClosesTheWindowsOfTheOldFileButNotTheHelpOrMfdfa) {
    start();
    write("a.dat", series(64, [](int i) { return i % 5; }));
    wb->signalPlot().Load();
    wb->signalZoomForm().Load();
    wb->heisBoxForm().Load();
    wb->mfdfaForm().Load();
    open("a.dat");
    EXPECT_FALSE(wb->signalPlot().isLoaded());
    EXPECT_FALSE(wb->signalZoomForm().isLoaded());
    EXPECT_FALSE(wb->heisBoxForm().isLoaded());
    EXPECT_TRUE(wb->mfdfaForm().isLoaded());
}

TEST_F(MainWindow, OtherFileReturnsToTheBrowserAndKeepsViewChoices) {
    start();
    write("a.dat", series(64, [](int i) { return i % 5; }));
    open("a.dat");
    ui().LogX_Check->setValue(0);
    ui().Option1->setValue(true);
    ui().AR_OrderText->setText("17");
    ui().HScroll_Left->setValue(9000);
    form().OtherFileButton_Click();
    expectStage(ui(), Stage::Start);
    EXPECT_EQ(ui().Y_axis_Label->Caption(), "");
    EXPECT_FALSE(ui().MessLineLabel->Visible());
    EXPECT_EQ(ui().HScroll_Left->Value(), 0);
    EXPECT_EQ(ui().LogX_Check->Value(), 0);
    EXPECT_TRUE(ui().Option1->Value());
    EXPECT_EQ(ui().AR_OrderText->Text(), "17");
    open("a.dat");
    EXPECT_EQ(ui().AR_OrderText->Text(), " 21") << "a new file overwrites the parameter boxes";
    EXPECT_EQ(ui().LogX_Check->Value(), 0) << "but not the check boxes";
}

TEST_F(MainWindow, PointerReadOutOverTheSignalAndTheSpectra) {
    start();
    write("a.dat", series(101, [](int i) { return i % 9; }));
    open("a.dat");
    ui().DeltaT_Text->setText("0.5");
    ui().Time0_Text->setText("10");
    PlotSurface& pic = *ui().Picture1;
    const float W = static_cast<float>(pic.ScaleWidth());
    form().Picture1_MouseMove(0, 0, W / 2, 10);
    EXPECT_EQ(pic.ToolTipText(), "Sample #  51,  Time= 35");
    form().Picture1_MouseMove(0, 0, 0, 10);
    EXPECT_EQ(pic.ToolTipText(), "Sample #  1,  Time= 10");
    // Before any spectrum run the bounds are 0: e^0 with the default boxes.
    form().Picture1_MouseMove(0, 0, W / 2, static_cast<float>(pic.ScaleHeight()) - 10);
    EXPECT_EQ(pic.ToolTipText(), "Period=  1");
    ui().FreqCheck->setValue(1);
    ui().LogX_Check->setValue(0);
    form().PlotXMin = 0;
    form().PlotXMax = 0.5f;
    form().Picture1_MouseMove(0, 0, W / 2, static_cast<float>(pic.ScaleHeight()) - 10);
    EXPECT_EQ(pic.ToolTipText(), "Frequency=  .25");
}

TEST_F(MainWindow, BrowsingMovesTheFileListAndHidesTheMessage) {
    start();
    fs::create_directory(dir / "sub");
    test::writeBytes(dir / "sub" / "inner.dat", "1\n2\n");
    ui().File1->selectFile("Tarnic.dll");
    form().File1_Click();
    EXPECT_EQ(ui().File1->ToolTipText(), "Tarnic.dll");
    EXPECT_FALSE(ui().MessLineLabel->Visible());
    ASSERT_TRUE(ui().Dir1->setPath(QString::fromStdString((dir / "sub").string())));
    EXPECT_EQ(ui().File1->Path(), ui().Dir1->Path());
    EXPECT_EQ(ui().File1->ListCount(), 1);
    EXPECT_EQ(ui().File1->List(0), "inner.dat");
    EXPECT_EQ(ui().File1->List(1), "");
    EXPECT_EQ(ui().File1->ToolTipText(), "");
    EXPECT_FALSE(ui().Dir1->setPath(QString::fromStdString((dir / "missing").string())));
}

TEST(BundledExamples, EveryIntakeMessageComesFromAnExample) {
    const fs::path examples = TARNIC_EXAMPLES_DIR;
    ASSERT_TRUE(fs::is_directory(examples));
    test::TempDir dir;
    for (const auto& entry : fs::directory_iterator(examples))
        fs::copy_file(entry.path(), dir / entry.path().filename());
    fs::create_symlink(TARNIC_DLL_PATH, dir / "Tarnic.dll");
    TarnicLibrary::instance().setPreferredFile(TARNIC_DLL_PATH);
    QDir::setCurrent(QString::fromStdString(dir.path().string()));
    Workbench wb;
    wb.start();
    Form1& f = wb.form1();
    QStringList seen;
    for (int i = 0; i < f.ui().File1->ListCount(); ++i) {
        const QString name = f.ui().File1->List(i);
        f.ui().File1->selectFile(name);
        f.File1_DblClick();
        const QString text = f.ui().MessLineLabel->Visible() ? f.ui().MessLineLabel->Caption() : "";
        seen << (text.isEmpty() ? "loaded" : text);
        if (text.isEmpty()) f.OtherFileButton_Click();
    }
    const QString all = seen.join("|");
    for (const char* piece : {"has a zero size", "has a wrong structure", "presents a constant",
                              "has too few", "EXE, DLL, COM or BAK", "loaded"})
        EXPECT_TRUE(all.contains(piece)) << piece << " in " << all.toStdString();
    QApplication::processEvents();
}
