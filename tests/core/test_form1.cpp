// The main window: its stages, the double-click intake with every message, the
// defaults it derives, the first plot and the hand-over to the other windows.
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
    EXPECT_EQ(ui().HScroll_Right->Value() - ui().HScroll_Left->Value(), 32767);
    EXPECT_EQ(ui().AR_OrderText->Text(), "10");
    EXPECT_TRUE(ui().LogY_Check->Value() == 1 && ui().FreqCheck->Value() == 0);
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

TEST_F(MainWindow, AGoodFileIsDrawnInTheUpperThirdReadOutAndHandedToTheOtherWindows) {
    start();
    write("ramp.dat", series(50, [](int i) { return i % 7 == 0 ? -3.0 : i; }));
    ui().Picture1->canvas().setRecording(true);
    open("ramp.dat");
    EXPECT_EQ(message(), "");
    expectStage(ui(), Stage::Loaded);
    EXPECT_EQ(form().Caption(), "   Varnholt,   Orvane.");
    EXPECT_EQ(form().InFilePath, QString::fromStdString((dir / "ramp.dat").string()));
    EXPECT_TRUE(form().Nrec == 50 && form().Signal(3) == 3.0f && form().Signal(7) == -3.0f);
    EXPECT_EQ(form().SignalRange, 50 + 3);
    // One connected segment per pair of samples, the maximum on the top edge
    // and the minimum on a red separator a third of the way down.
    std::vector<DrawOp> segs;
    for (const DrawOp& op : ui().Picture1->canvas().record())
        if (op.kind == DrawKind::Segment) segs.push_back(op);
    ASSERT_EQ(segs.size(), 50u);
    const float W = static_cast<float>(ui().Picture1->ScaleWidth()),
                H = static_cast<float>(ui().Picture1->ScaleHeight());
    float lowest = 1e9f, highest = -1e9f;
    for (std::size_t i = 0; i < 49; ++i) {
        EXPECT_EQ(segs[i].x1, i ? segs[i - 1].x2 : 0.0f) << "the curve is connected";
        lowest = std::min({lowest, segs[i].y1, segs[i].y2});
        highest = std::max({highest, segs[i].y1, segs[i].y2});
    }
    EXPECT_EQ(segs[0].color, qRgb(0, 0, 0x80)) << "basic colour 1, dark blue";
    EXPECT_FLOAT_EQ(segs[48].x2, W);
    EXPECT_TRUE(lowest == 0.0f && std::fabs(highest - H / 3) < 1e-3f) << lowest << ", " << highest;
    EXPECT_EQ(segs[49].color, qRgb(0xFF, 0, 0));
    EXPECT_TRUE(segs[49].y1 == segs[49].y2 && std::fabs(segs[49].y1 - H / 3) < 1e-3f);
    // The pointer reads sample and time over the signal, the frequency below.
    typeIn({{ui().DeltaT_Text, "0.5"}, {ui().Time0_Text, "10"}});
    form().Picture1_MouseMove(0, 0, W, 10);
    EXPECT_EQ(ui().Picture1->ToolTipText(), "Sample #  50,  Time= 34.5");
    ui().FreqCheck->setValue(1);
    for (int log : {0, 1}) {
        ui().LogX_Check->setValue(log);
        form().PlotXMin = 0; // bounds as a spectrum run leaves them
        form().PlotXMax = 0.5f;
        form().Picture1_MouseMove(0, 0, W / 2, H - 10);
        EXPECT_EQ(ui().Picture1->ToolTipText(),
                  log ? "Frequency=  1.28402541668774" : "Frequency=  .25");
    }
    // The signal goes to the windows that work on it.
    EXPECT_EQ(wb->signalPlot().SignalCopy, form().Signal);
    EXPECT_TRUE(wb->signalPlot().SignalFloor == -3.0f && wb->signalPlot().SignalCeil == 50.0f);
    EXPECT_EQ(wb->svanArForm().SvanSignal, form().Signal);
}

TEST_F(MainWindow, DefaultsFollowTheLengthOfTheFileAndTooFewSamplesKeepThoseOf32) {
    start();
    const struct { int n; const char *length, *order; int levPow; const char* levMax; } cases[] = {
        {31, " 32", " 10", 5, " 1"},       {32, " 32", " 10", 5, " 1"},
        {1024, " 1024", " 159", 10, " 6"}, {1025, " 1025", " 159", 11, " 7"},
        {2048, " 2048", " 204", 11, " 7"}, {5000, " 2048", " 204", 13, " 9"}};
    for (const auto& k : cases) {
        const std::string name = "n" + std::to_string(k.n) + ".dat";
        write(name, series(k.n, [](int i) { return std::cos(i * 1.7); }));
        typeIn({{ui().DeltaT_Text, "0.25"}, {ui().RadiusText, "9"}});
        SCOPED_TRACE(k.n);
        open(name);
        EXPECT_EQ((QStringList{ui().Y_axis_Label->Caption(), ui().TimeLengText->Text(),
                               ui().AR_Length_Text->Text(), ui().AR_OrderText->Text(),
                               ui().RadiusText->Text(), ui().DeltaT_Text->Text(),
                               ui().Time0_Text->Text()}),
                  (QStringList{QString("File = n%1.dat,  Number of samples = %1").arg(k.n),
                               k.length, k.length, k.order, " 1", " 1", " 0"}));
        expectStage(ui(), k.n >= 32 ? Stage::Loaded : Stage::Rejected);
        if (k.n < 32) {
            EXPECT_EQ(message(), "The input file n31.dat has too few (less than 32) samples:  31");
            continue;
        }
        EXPECT_EQ(form().LevPow, k.levPow);
        EXPECT_EQ(ui().LevMaxText->Text(), k.levMax);
        form().OtherFileButton_Click();
    }
}

TEST_F(MainWindow, EveryRejectionIsARedMessageAndLeavesTheBrowserOpen) {
    start();
    write("good.dat", series(40, [](int i) { return i; }));
    open("good.dat");
    form().OtherFileButton_Click();
    const auto constant = [&](const char* file) {
        return "The 1-st column of the file " + QString::fromStdString((dir / file).string()) +
               " presents a constant and could not be analyzed but if input file has more than 1 "
               "column it is demultiplexed.";
    };
    const QString binary = "EXE, DLL, COM or BAK-files are not processed";
    // The bytes are written before the run (Tarnic.dll is the library itself);
    // a file refused before its numbers are read keeps the signal.
    const struct { const char* file; std::string bytes; QString text; bool keeps; } cases[] = {
        {"empty.dat", "", "The input file empty.dat has a zero size - nothing to process.", true},
        {"bad_first.dat", "abc 1\r\n2 3\r\n",
         "The input file bad_first.dat has a wrong structure within record #  1", true},
        {"broken.dat", series(10, [](int i) { return i; }) + "1.2.3 4\r\n5 6\r\n",
         "The input file broken.dat has a wrong structure within record #  11", true},
        {"ambiguous.dat", "# a single column\r\n5,123\r\n7,5\r\n",
         "The input file ambiguous.dat has commas that can be read both as decimal commas and as "
         "column separators within line #  2. Separate the columns by semicolons or tabs, or write "
         "the numbers with a decimal point.",
         true},
        {"old.BAK", "1\n2\n", binary, true}, {"tool.exe", "1\n2\n", binary, true},
        {"Tarnic.dll", "", binary, true},
        {"flat.dat", series(64, [](int) { return 5.0; }), constant("flat.dat"), false},
        {"one.dat", "3.5\r\n", constant("one.dat"), false}};
    for (const auto& k : cases) {
        SCOPED_TRACE(k.file);
        if (std::string(k.file) != "Tarnic.dll") write(k.file, k.bytes);
        open(k.file);
        EXPECT_EQ(message(), k.text);
        EXPECT_TRUE(messageIsRed());
        expectStage(ui(), Stage::Rejected);
        EXPECT_EQ(form().SpectraReady, 0);
        if (k.keeps) EXPECT_EQ(form().Signal(40), 40.0f);
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
    EXPECT_TRUE(said.startsWith("Files: libfftw3.so.3, libfftw3f.so.3 and the Qt 6 libraries") &&
                said.endsWith("File Tarnic.dll is necessary within application directory only") &&
                !said.contains("windows") && messageIsRed()) << said.toStdString();
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
    for (Form* f : std::initializer_list<Form*>{&wb->signalPlot(), &wb->signalZoomForm(),
                                                &wb->heisBoxForm(), &wb->mfdfaForm()})
        f->Load();
    open("a.dat");
    EXPECT_FALSE(wb->signalPlot().isLoaded() || wb->signalZoomForm().isLoaded() ||
                 wb->heisBoxForm().isLoaded());
    EXPECT_TRUE(wb->mfdfaForm().isLoaded());
    ui().LogX_Check->setValue(0);
    ui().Option1->setValue(true);
    ui().AR_OrderText->setText("17");
    ui().HScroll_Left->setValue(9000);
    form().OtherFileButton_Click();
    expectStage(ui(), Stage::Start);
    EXPECT_TRUE(ui().Y_axis_Label->Caption().isEmpty() && !ui().MessLineLabel->Visible());
    EXPECT_TRUE(ui().HScroll_Left->Value() == 0 && ui().LogX_Check->Value() == 0 &&
                ui().Option1->Value() && ui().AR_OrderText->Text() == "17");
    open("a.dat");
    EXPECT_EQ(ui().AR_OrderText->Text(), " 21") << "a new file overwrites the parameter boxes";
    EXPECT_EQ(ui().LogX_Check->Value(), 0) << "but not the check boxes";
}

TEST_F(MainWindow, BrowsingMovesTheFileListAndHidesTheMessage) {
    start();
    fs::create_directory(dir / "sub");
    writeBytes(dir / "sub" / "inner.dat", "1\n2\n");
    ui().File1->selectFile("Tarnic.dll");
    form().File1_Click();
    EXPECT_EQ(ui().File1->ToolTipText(), "Tarnic.dll") << "the long name is lit";
    EXPECT_FALSE(ui().MessLineLabel->Visible());
    EXPECT_FALSE(ui().Dir1->setPath(QString::fromStdString((dir / "missing").string())));
    ASSERT_TRUE(ui().Dir1->setPath(QString::fromStdString((dir / "sub").string())));
    EXPECT_EQ((QStringList{ui().File1->Path(), ui().File1->List(0), ui().File1->List(1),
                           ui().File1->ToolTipText()}),
              (QStringList{ui().Dir1->Path(), "inner.dat", "", ""}));
}
