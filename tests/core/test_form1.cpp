// The main window: its stages, the double-click intake with every message, the
// defaults it derives, the first plot and the hand-over to the other windows.
#include "core/form1.h"
#include "core/numtext.h"
#include "core/tarniclibrary.h"
#include "core/workbench.h"
#include "maps/heisboxform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "tests/core/mainwindow_fixture.h"

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;

TEST_F(MainWindow, LoadFindsTheLibraryAndOpensTheBrowserOnly) {
    start();
    EXPECT_EQ(form().Caption(), "   Varnholt,    Orvane.");
    EXPECT_EQ(ui().Label2->Caption(),
              "Click file to light its long file name\r\nDouble-click file to process it");
    EXPECT_EQ(message(), "Select and read input file");
    EXPECT_EQ(ui().MessLineLabel->ForeColor(), QColor(0, 0xFF, 0)) << "basic colour 10, green";
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
    writeBytes(dir / "tarnic.dll", "not it: the test is case-sensitive");
    start();
    EXPECT_EQ(message(), "The file <Tarnic.dll> must be within application directory");
    EXPECT_EQ(ui().MessLineLabel->ForeColor(), QColor(0xFF, 0, 0)) << "basic colour 12, red";
    EXPECT_NE(form().LevMax, 2);
}

TEST_F(MainWindow, AGoodFileIsDrawnInTheUpperThirdAndHandedToTheOtherWindows) {
    start();
    write("ramp.dat", series(50, [](int i) { return i % 7 == 0 ? -3.0 : i; }));
    ui().Picture1->canvas().setRecording(true);
    open("ramp.dat");
    EXPECT_EQ(message(), "");
    expectStage(ui(), Stage::Loaded);
    EXPECT_EQ(form().Caption(), "   Varnholt,   Orvane.");
    EXPECT_EQ(form().Nrec, 50);
    EXPECT_EQ(form().InFileName, "ramp.dat");
    EXPECT_EQ(form().InFilePath, QString::fromStdString((dir / "ramp.dat").string()));
    ASSERT_EQ(form().PathLen, form().InFilePath.size());
    EXPECT_EQ(form().PathCodes(1), '/');
    EXPECT_EQ(form().Signal(3), 3.0f);
    EXPECT_EQ(form().Signal(7), -3.0f);
    EXPECT_EQ(form().SignalRange, 50 + 3);
    EXPECT_EQ(ui().Y_axis_Label->Caption(), "File = ramp.dat,  Number of samples = 50");
    EXPECT_TRUE(ui().Y_axis_Label->Visible());
    EXPECT_EQ(form().SpectraReady, 0);
    // One connected segment per pair of samples, the maximum on the top edge
    // and the minimum on a red separator a third of the way down.
    std::vector<DrawOp> segs;
    for (const DrawOp& op : ui().Picture1->canvas().record())
        if (op.kind == DrawKind::Segment) segs.push_back(op);
    ASSERT_EQ(segs.size(), 50u);
    const float W = static_cast<float>(ui().Picture1->ScaleWidth());
    const float H = static_cast<float>(ui().Picture1->ScaleHeight());
    float lowest = 1e9f, highest = -1e9f;
    for (std::size_t i = 0; i < 49; ++i) {
        EXPECT_EQ(segs[i].x1, i ? segs[i - 1].x2 : 0.0f) << "the curve is connected";
        lowest = std::min({lowest, segs[i].y1, segs[i].y2});
        highest = std::max({highest, segs[i].y1, segs[i].y2});
    }
    EXPECT_EQ(segs[0].color, qRgb(0, 0, 0x80)) << "basic colour 1, dark blue";
    EXPECT_FLOAT_EQ(segs[48].x2, W);
    EXPECT_FLOAT_EQ(lowest, 0.0f);
    EXPECT_NEAR(highest, H / 3, 1e-3);
    EXPECT_EQ(segs[49].color, qRgb(0xFF, 0, 0));
    EXPECT_FLOAT_EQ(segs[49].y1, H / 3);
    EXPECT_FLOAT_EQ(segs[49].x2, W);
    // The signal goes to the windows that work on it.
    EXPECT_EQ(wb->signalPlot().SignalCopy, form().Signal);
    EXPECT_EQ(wb->signalPlot().SignalFloor, -3.0f);
    EXPECT_EQ(wb->signalPlot().SignalCeil, 50.0f);
    EXPECT_EQ(wb->signalPlot().SignalLength, 50);
    EXPECT_EQ(wb->svanArForm().SvanSignal, form().Signal);
    EXPECT_EQ(wb->svanArForm().SvanNrec, 50);
}

TEST_F(MainWindow, DefaultsFollowTheLengthOfTheFileAndTooFewSamplesKeepThoseOf32) {
    start();
    const struct {
        int n;
        const char *length, *order;
        int levPow;
        const char* levMax;
    } cases[] = {{31, " 32", " 10", 5, " 1"},         {32, " 32", " 10", 5, " 1"},
                 {1024, " 1024", " 159", 10, " 6"},   {1025, " 1025", " 159", 11, " 7"},
                 {2048, " 2048", " 204", 11, " 7"},   {5000, " 2048", " 204", 13, " 9"}};
    for (const auto& k : cases) {
        const std::string name = "n" + std::to_string(k.n) + ".dat";
        write(name, series(k.n, [](int i) { return std::cos(i * 1.7); }));
        ui().DeltaT_Text->setText("0.25");
        ui().RadiusText->setText("9");
        open(name);
        EXPECT_EQ(ui().Y_axis_Label->Caption(),
                  QString::fromStdString("File = " + name + ",  Number of samples = " +
                                         std::to_string(k.n)));
        EXPECT_EQ(ui().TimeLengText->Text(), k.length) << k.n;
        EXPECT_EQ(ui().AR_Length_Text->Text(), k.length) << k.n;
        EXPECT_EQ(ui().AR_OrderText->Text(), k.order) << k.n;
        EXPECT_EQ(ui().RadiusText->Text(), " 1");
        EXPECT_EQ(ui().DeltaT_Text->Text(), " 1");
        EXPECT_EQ(ui().Time0_Text->Text(), " 0");
        EXPECT_EQ(ui().Picture1->isEnabled(), k.n >= 32) << k.n;
        expectStage(ui(), k.n >= 32 ? Stage::Loaded : Stage::Rejected);
        if (k.n < 32) continue;
        EXPECT_EQ(form().LevPow, k.levPow) << k.n;
        EXPECT_EQ(form().LevPowLength, 1 << k.levPow) << k.n;
        EXPECT_EQ(ui().LevMaxText->Text(), k.levMax) << k.n;
        form().OtherFileButton_Click();
    }
}

TEST_F(MainWindow, EveryRejectionIsARedMessageAndLeavesTheBrowserOpen) {
    start();
    write("good.dat", series(40, [](int i) { return i; }));
    write("empty.dat", "");
    write("bad_first.dat", "abc 1\r\n2 3\r\n");
    write("broken.dat", series(10, [](int i) { return i; }) + "1.2.3 4\r\n" +
                            series(5, [](int i) { return i; }));
    write("flat.dat", series(64, [](int) { return 5.0; }));
    write("one.dat", "3.5\r\n");
    write("old.BAK", "1\n2\n");
    write("tool.exe", "1\n2\n");
    write("ambiguous.dat", "# a single column\r\n5,123\r\n7,5\r\n");
    open("good.dat");
    form().OtherFileButton_Click();
    const auto constant = [&](const char* file) {
        return "The 1-st column of the file " + QString::fromStdString((dir / file).string()) +
               " presents a constant and could not be analyzed but if input file has more than 1 "
               "column it is demultiplexed.";
    };
    const QString binary = "EXE, DLL, COM or BAK-files are not processed";
    const struct {
        const char* file;
        QString text;
        bool keepsSignal; // a file refused before its numbers are read
    } cases[] = {
        {"empty.dat", "The input file empty.dat has a zero size - nothing to process.", true},
        {"bad_first.dat", "The input file bad_first.dat has a wrong structure within record #  1",
         true},
        {"broken.dat", "The input file broken.dat has a wrong structure within record #  11", true},
        {"ambiguous.dat",
         "The input file ambiguous.dat has commas that can be read both as decimal commas and as "
         "column separators within line #  2. Separate the columns by semicolons or tabs, or write "
         "the numbers with a decimal point.",
         true},
        {"old.BAK", binary, true}, {"tool.exe", binary, true}, {"Tarnic.dll", binary, true},
        {"flat.dat", constant("flat.dat"), false}, {"one.dat", constant("one.dat"), false}};
    for (const auto& k : cases) {
        open(k.file);
        EXPECT_EQ(message(), k.text) << k.file;
        EXPECT_TRUE(messageIsRed()) << k.file;
        expectStage(ui(), Stage::Rejected);
        EXPECT_FALSE(ui().Picture1->isEnabled());
        EXPECT_EQ(form().SpectraReady, 0);
        if (k.keepsSignal) EXPECT_EQ(form().Signal(40), 40.0f) << k.file;
    }
    EXPECT_EQ(form().Signal.count(), 1) << "the constant's samples were read";
    // The constant column was split for the user to look at the others.
    QStringList files;
    for (int i = 0; i < ui().File1->ListCount(); ++i) files << ui().File1->List(i);
    EXPECT_TRUE(files.contains("flat-Col1.dat") && files.contains("flat-Col2.dat"))
        << files.join(",").toStdString();
}

TEST_F(MainWindow, AMissingLibraryEndsInTheLibraryMessageWithTheBrowserStillOpen) {
    start();
    write("wave.dat", series(64, [](int i) { return std::sin(i); }));
    TarnicLibrary::instance().setPreferredFile(dir / "nowhere" / "Tarnic.dll");
    TarnicLibrary::instance().setPlatformSearch(false);
    open("wave.dat");
    TarnicLibrary::instance().setPlatformSearch(true);
    // The message names what this program needs on Linux, nothing of another system's.
    const QString said = message();
    EXPECT_TRUE(said.startsWith("Files: libfftw3.so.3, libfftw3f.so.3 and the Qt 6 libraries"));
    EXPECT_TRUE(said.endsWith("File Tarnic.dll is necessary within application directory only"));
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

TEST_F(MainWindow, ANewFileClosesTheWindowsOfTheOldButNotMfdfaAndOtherFileKeepsViewChoices) {
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
    const float low = static_cast<float>(pic.ScaleHeight()) - 10;
    const struct {
        float x, y;
        const char* tip;
    } reads[] = {{W / 2, 10, "Sample #  51,  Time= 35"}, {0, 10, "Sample #  1,  Time= 10"},
                 // Before any spectrum run the bounds are 0: e^0 with the default boxes.
                 {W / 2, low, "Period=  1"}};
    for (const auto& r : reads) {
        form().Picture1_MouseMove(0, 0, r.x, r.y);
        EXPECT_EQ(pic.ToolTipText(), r.tip);
    }
    ui().FreqCheck->setValue(1);
    ui().LogX_Check->setValue(0);
    form().PlotXMin = 0;
    form().PlotXMax = 0.5f;
    form().Picture1_MouseMove(0, 0, W / 2, low);
    EXPECT_EQ(pic.ToolTipText(), "Frequency=  .25");
}

TEST_F(MainWindow, BrowsingMovesTheFileListAndHidesTheMessage) {
    start();
    fs::create_directory(dir / "sub");
    writeBytes(dir / "sub" / "inner.dat", "1\n2\n");
    ui().File1->selectFile("Tarnic.dll");
    form().File1_Click();
    EXPECT_EQ(ui().File1->ToolTipText(), "Tarnic.dll") << "the long name is lit";
    EXPECT_FALSE(ui().MessLineLabel->Visible());
    ASSERT_TRUE(ui().Dir1->setPath(QString::fromStdString((dir / "sub").string())));
    EXPECT_EQ(ui().File1->Path(), ui().Dir1->Path());
    EXPECT_EQ(ui().File1->ListCount(), 1);
    EXPECT_EQ(ui().File1->List(0), "inner.dat");
    EXPECT_EQ(ui().File1->List(1), "");
    EXPECT_EQ(ui().File1->ToolTipText(), "");
    EXPECT_FALSE(ui().Dir1->setPath(QString::fromStdString((dir / "missing").string())));
}
