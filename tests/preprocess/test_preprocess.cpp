// The preprocessing actions of the main window: the files they write, byte for
// byte on small inputs, the state of the buttons afterwards, and what each of
// the three failure treatments does when its file cannot be written.
#include "tests/signal/window_support.h"

#include <cmath>

using namespace tarnic;
using namespace tarnic::test;
namespace fs = std::filesystem;

namespace {

class Preprocessing : public MainWindow {
  protected:
    void load(const std::string& name, const std::string& text) {
        start();
        write(name, text);
        open(name);
        ASSERT_EQ(message(), "");
    }
    std::string file(const std::string& name) { return readBytes(dir / name); }
    long lines(const std::string& name) {
        const std::string text = file(name);
        return std::count(text.begin(), text.end(), '\n');
    }
};

std::string values(std::initializer_list<double> xs) {
    std::string out;
    int t = 0;
    for (double x : xs) out += std::to_string(x) + " " + std::to_string(t++) + "\n";
    return out;
}

} // namespace

TEST_F(Preprocessing, IncrementsAreDatedAtTheirLaterSampleAndEndWithALoneZero) {
    load("x.dat", values({1, 3, 3, 2.5, 10}) + series(40, [](int i) { return i; }));
    // A new time step and start take effect without a spectrum run: the
    // increment of samples 1 and 2 at -1 + 0.5.
    ui().DeltaT_Text->setText("0.5");
    ui().Time0_Text->setText("-1");
    ui().IncremButton->click();
    const std::string text = file("x-INC.dat");
    EXPECT_EQ(text.substr(0, 38), " 2 -.5\r\n 0 0\r\n-.5 .5\r\n 7.5 1\r\n-9 1.5\r\n");
    EXPECT_EQ(text.substr(text.size() - 5), " 0 \r\n");
    EXPECT_EQ(lines("x-INC.dat"), 45) << "one line per sample";
    // Demultiplexing writes one file a column, once.
    ui().DemplxButton->click();
    EXPECT_TRUE(ui().File1->selectFile("x-Col1.dat") && ui().File1->selectFile("x-Col2.dat"));
    expectStage(ui(), Stage::Loaded, {"IncremButton", "DemplxButton"});
    // A start beyond the double range counts as 0, and the box shows the repair.
    ui().Time0_Text->setText("1e400");
    ui().WinzorButton->click();
    EXPECT_EQ(file("x-WINZ.dat").find(" 0\r\n"), file("x-WINZ.dat").find('\n') - 3)
        << "dated from 0, not from infinity";
    ui().LaunchButton->click();
    EXPECT_EQ(ui().Time0_Text->Text(), " 0");
}

TEST_F(Preprocessing, WinsorizationCentresAndPullsAnOutlierInPassAfterPass) {
    load("w.dat", series(32, [](int i) { return i; }));
    ui().WinzorButton->click();
    // All samples lie within 4 s: the file is the signal minus its mean 16.5.
    EXPECT_EQ(file("w-WINZ.dat").substr(0, 22), "-15.5 0\r\n-14.5 1\r\n-13.");
    EXPECT_EQ(lines("w-WINZ.dat"), 32);
    expectStage(ui(), Stage::Loaded, {"WinzorButton"});

    load("o.dat", series(200, [](int i) { return i == 100 ? 1000.0 : std::sin(i); }));
    ui().WinzorButton->click();
    std::istringstream in(file("o-WINZ.dat"));
    double v, t, biggest = 0;
    while (in >> v >> t) biggest = std::max(biggest, std::fabs(v));
    EXPECT_TRUE(biggest > 1.0 && biggest < 10.0) << "the 1000 is clipped far below itself: " << biggest;
}

TEST_F(Preprocessing, AWholeStepMakesBlockMeansAndVariancesAtTheBlockEndsAndOneOnlyRepairs) {
    load("a.dat", values({1, 2, 3, 4, 5, 6, 7, 9, 100}) + series(31, [](int) { return 0.0; }));
    ui().DownStepText->setText("4");
    ui().DownSampButton->click();
    EXPECT_EQ(ui().DownStepText->Text(), " 4");
    EXPECT_EQ(file("a-DNS= 4.dat").substr(0, 21), " 2.5 4\r\n 6.75 8\r\n 25 ");
    // Block 1: deviations 2.25 + .25 + .25 + 2.25 over 3.
    EXPECT_EQ(file("a-Var.DNS= 4.dat").substr(0, 13), " 1.666667 4\r\n");
    EXPECT_EQ(lines("a-DNS= 4.dat") + lines("a-Var.DNS= 4.dat"), 20);
    // Steps of one or beyond the signal only repair the box.
    const auto files = [&] { return std::distance(fs::directory_iterator(dir.path()), {}); };
    const long before = files();
    for (auto [typed, shown] : {std::pair{"1", " 1"}, {"1.0", " 1.0"}, {"0.5", " 1.0"},
                                {"abc", " 1"}, {"-3", " 1"}, {"100", " 100"}}) {
        ui().DownStepText->setText(typed);
        ui().DownSampButton->click();
        EXPECT_EQ(ui().DownStepText->Text(), shown) << typed;
    }
    EXPECT_EQ(files(), before);
    expectStage(ui(), Stage::Loaded);
}

TEST_F(Preprocessing, APointOrAFractionGoesToTheFourierResampling) {
    load("a.dat", series(1000, [](int i) { return std::sin(i * 0.05); }));
    ui().DeltaT_Text->setText("2");
    ui().DownStepText->setText("4.0");
    ui().DownSampButton->click();
    EXPECT_EQ(ui().DownStepText->Text(), " 4.0");
    EXPECT_FALSE(fs::exists(dir / "a-Var.DNS= 4.dat"));
    EXPECT_EQ(lines("a-DNS= 4.0.dat"), form().DownSignal.count());
    // Sample k of the result lies at k steps of 4 samples of 2 time units.
    const std::string four = file("a-DNS= 4.0.dat");
    EXPECT_EQ(four.substr(four.find(' ', 1), 4), " 8\r\n");
    EXPECT_EQ(four.substr(four.size() - 7), " 2000\r\n");

    ui().DownStepText->setText("2.5");
    ui().DownSampButton->click();
    EXPECT_EQ(ui().DownStepText->Text(), " 2.5");
    EXPECT_EQ(form().DownSignal.count(), 500) << "sized by the whole part of the step";
    const std::string text = file("a-DNS= 2.5.dat"); // named by the step used, 1000 / 400
    EXPECT_EQ(lines("a-DNS= 2.5.dat"), 400) << "as many lines as the library returned";
    EXPECT_EQ(text.substr(text.find(' ', 1), 4), " 5\r\n") << "the first at 2.5 samples of 2";
    EXPECT_EQ(text.substr(text.size() - 7), " 2000\r\n");
}

TEST_F(Preprocessing, EachFailureTreatmentKeepsTheSignalLoaded) {
    load("f.dat", series(64, [](int i) { return i % 5; }));
    // Directories standing where the files should go make every write fail.
    for (const char* name : {"f-INC.dat", "f-WINZ.dat", "f-DNS= 2.dat", "f-Var.DNS= 2.dat"})
        fs::create_directory(dir / name);
    MessageBoxes boxes;
    ui().IncremButton->click(); // skips the rest silently
    ui().DownSampButton->click(); // ignored step by step
    EXPECT_TRUE(boxes.empty());
    ui().WinzorButton->click(); // an orderly end with a message naming the file
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].text.contains("f-WINZ.dat"));
    EXPECT_EQ(form().Nrec, 64);
    expectStage(ui(), Stage::Loaded, {"IncremButton", "WinzorButton"});
    for (const auto& entry : fs::directory_iterator(dir.path()))
        EXPECT_EQ(entry.path().filename().string().find(".tarnic-"), std::string::npos);
}
