// The main window's controls and what every window may ask of it: the gating
// of its controls, its browser handlers, its pointer read-out and messages.
#include "core/form1.h"

#include "core/numtext.h"
#include "core/tarniclibrary.h"

#include <QApplication>
#include <QDir>

#include <cmath>

namespace tarnic {
namespace {

// Layout of the main window in twips: the browser on the left, the plot in the
// middle, the parameters and the actions on the right.
constexpr double kColBrowser = 120, kBrowserWidth = 3480;
constexpr double kColPlot = 3780, kPlotWidth = 6495, kPlotHeight = 5040;
constexpr double kColRight = 10440, kRightWidth = 5400;
constexpr double kRow = 330; // height of a text box or a label line

Label* makeLabel(QWidget* parent, const QString& text, double l, double t, double w, double h,
                 Qt::Alignment align = Qt::AlignLeft | Qt::AlignVCenter) {
    auto* label = new Label(parent, text);
    label->setAlignment(align);
    label->place(l, t, w, h);
    return label;
}

Button* makeButton(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* button = new Button(parent, caption);
    button->place(l, t, w, h);
    return button;
}

TextBox* makeText(QWidget* parent, const QString& text, double l, double t, double w) {
    auto* box = new TextBox(parent, text);
    box->place(l, t, w, kRow);
    return box;
}

Frame* makeFrame(QWidget* parent, const QString& caption, double l, double t, double w, double h) {
    auto* frame = new Frame(parent, caption);
    frame->place(l, t, w, h);
    return frame;
}

} // namespace

Form1Controls::Form1Controls(FormWindow& w) {
    const QString here = QDir::currentPath();

    // File browser.
    Drive1 = new DriveList(&w);
    Drive1->place(kColBrowser, 120, kBrowserWidth, kRow);
    Dir1 = new DirList(&w, here);
    Dir1->place(kColBrowser, 510, kBrowserWidth, 2100);
    File1 = new FileList(&w, here);
    File1->place(kColBrowser, 2670, kBrowserWidth, 2340);
    File1->setToolTipText("Input File for Processing");
    Label2 = makeLabel(&w, "Click file to light its long file name", kColBrowser, 5070,
                       kBrowserWidth, 480, Qt::AlignLeft | Qt::AlignTop);
    Label2->setWordWrap(true);
    OtherFileButton = makeButton(&w, "Other File", kColBrowser, 5610, 1680, 420);
    HelpButton = makeButton(&w, "Help", kColBrowser + 1800, 5610, 1680, 420);
    ExitButton = makeButton(&w, "Exit", kColBrowser, 6090, 1680, 420);
    MessLineLabel = makeLabel(&w, "", kColBrowser, 6600, kBrowserWidth, 1830,
                              Qt::AlignLeft | Qt::AlignTop);
    MessLineLabel->setWordWrap(true);

    // Plot area and the spectrum cursors.
    Y_axis_Label = makeLabel(&w, "", kColPlot, 60, kPlotWidth, 690, Qt::AlignLeft | Qt::AlignBottom);
    Picture1 = new PlotSurface(&w);
    Picture1->placeSurface(kColPlot, 780, kPlotWidth, kPlotHeight);
    Picture1->setToolTipText("Initial Signal, AR & Fourier-based Estimates");
    Line_Left = &Picture1->addLine(QColor(0xFF, 0, 0));
    Line_Right = &Picture1->addLine(QColor(0xFF, 0, 0));
    Line_Left->setX1(240), Line_Left->setX2(240), Line_Left->setY1(240), Line_Left->setY2(4380);
    Line_Right->setX1(6000), Line_Right->setX2(6000), Line_Right->setY1(240),
        Line_Right->setY2(4380);

    FrameHScroll = makeFrame(&w, "", kColPlot, 5880, kPlotWidth, 660);
    FrameHScroll->setToolTipText("Spectra zooming scroll bars");
    HScroll_Left = new ScrollBar(FrameHScroll, 0, 32767, 0);
    HScroll_Left->place(60, 60, kPlotWidth - 120, 255);
    HScroll_Right = new ScrollBar(FrameHScroll, 0, 32767, 32767);
    HScroll_Right->place(60, 345, kPlotWidth - 120, 255);
    Label1 = makeLabel(&w,
                       "Spectra Estimates Zooming Scroll Bars: choose the frequency band and press "
                       "<Zoom Spectra...>",
                       kColPlot, 6570, kPlotWidth, 480, Qt::AlignLeft | Qt::AlignTop);
    Label1->setWordWrap(true);

    DemplxButton = makeButton(&w, "Demultiplex input table file (if more than 1 column)", kColPlot,
                              7140, 3180, 600);
    WaveFiltButton = makeButton(&w, "Wavelet Threshold Filtering", kColPlot + 3315, 7140, 3180, 600);
    ShowSignGrafButton = makeButton(
        &w, "Signal fragment: smoothing, detrending, CWT, Heisenberg boxes, WTMM-chains and so on",
        kColPlot, 7830, kPlotWidth, 600);

    // Parameters of the spectrum run.
    FrameMainParam = makeFrame(&w, "", kColRight, 60, kRightWidth, 1740);
    const double labelW = 3600, textL = 3780, textW = 1500;
    AR_OrderLabel = makeLabel(FrameMainParam, "Main parameter - AR-order:", 120, 120, labelW, kRow);
    AR_OrderText = makeText(FrameMainParam, "10", textL, 120, textW);
    DeltaT_Label = makeLabel(FrameMainParam, "Sampling time interval dT:", 120, 520, labelW, kRow);
    DeltaT_Text = makeText(FrameMainParam, "1", textL, 520, textW);
    Time0_Label = makeLabel(FrameMainParam, "Initial value of time marks:", 120, 920, labelW, kRow);
    Time0_Text = makeText(FrameMainParam, "0", textL, 920, textW);
    AR_LengthLabel =
        makeLabel(FrameMainParam, "Length of AR-estimate window:", 120, 1320, labelW, kRow);
    AR_Length_Text = makeText(FrameMainParam, "2048", textL, 1320, textW);

    FrameBackParam = makeFrame(&w, "Background Fourier-based estimate parameters: ", kColRight, 1860,
                               kRightWidth, 1140);
    SetLengLabel =
        makeLabel(FrameBackParam, "Length of the moving time window:", 120, 330, labelW, kRow);
    TimeLengText = makeText(FrameBackParam, "2048", textL, 330, textW);
    SetRadLabel = makeLabel(FrameBackParam, "Radius of frequency averaging:", 120, 720, labelW, kRow);
    RadiusText = makeText(FrameBackParam, "0", textL, 720, textW);

    // Spectrum actions and views.
    Frame1 = makeFrame(&w, "", kColRight, 3060, kRightWidth, 2520);
    const double bw = (kRightWidth - 360) / 2;
    LaunchButton = makeButton(Frame1, "Launch Spectra", 120, 120, bw, 510);
    SaveSpButton = makeButton(Frame1, "Save Spectra: <Freq, Period, Spect>", 240 + bw, 120, bw, 510);
    ZoomButton = makeButton(Frame1, "Zoom Spectra and BandPass Filtering", 120, 720, bw, 510);
    SvanArButton = makeButton(Frame1, "Lg(Spectra) Evolution", 240 + bw, 720, bw, 510);
    FrameSpectraView = makeFrame(Frame1, "Choose the axis type for viewing spectra", 120, 1380,
                                 kRightWidth - 240, 1020);
    LogY_Check = new CheckBox(FrameSpectraView, "Lg Y-axis", true);
    LogY_Check->place(240, 420, 1500, kRow);
    LogX_Check = new CheckBox(FrameSpectraView, "Lg X-axis", true);
    LogX_Check->place(1920, 420, 1500, kRow);
    FreqCheck = new CheckBox(FrameSpectraView, "Freq", false);
    FreqCheck->place(3600, 420, 1200, kRow);

    // Preprocessing into new files.
    DownSampFrame = makeFrame(&w, "Preprocessing", kColRight, 5640, kRightWidth, 1140);
    WinzorButton = makeButton(DownSampFrame, "Winzorization", 120, 330, 1560, 330);
    IncremButton = makeButton(DownSampFrame, "Increments", 1800, 330, 1560, 330);
    DownSampButton = makeButton(DownSampFrame, "DownSample", 3480, 330, 1800, 330);
    DownStepLabel = makeLabel(DownSampFrame, "Step:", 3480, 720, 600, kRow);
    DownStepText = makeText(DownSampFrame, "2", 4080, 720, 1200);
    DownStepText->setToolTipText("DownSampling Step, if not integer - then using FFT");

    // Wavelet packets.
    WP_OptionFrame = makeFrame(&w, "Select wavelet -- packet split level: ", kColRight, 6840,
                               kRightWidth, 1290);
    Option1 = new OptionButton(WP_OptionFrame, "1", false);
    Option1->place(120, 330, 700, kRow);
    Option2 = new OptionButton(WP_OptionFrame, "2", false);
    Option2->place(840, 330, 700, kRow);
    Option3 = new OptionButton(WP_OptionFrame, "4", true);
    Option3->place(1560, 330, 700, kRow);
    Option4 = new OptionButton(WP_OptionFrame, "8", false);
    Option4->place(2280, 330, 700, kRow);
    LevMaxLabel = makeLabel(WP_OptionFrame, "Max level:", 3120, 330, 1080, kRow);
    LevMaxText = makeText(WP_OptionFrame, "2", 4200, 330, 1080);
    LevMaxText->setToolTipText("Set Maximum Detail Level #");
    WavePackButton = makeButton(WP_OptionFrame, "Wavelet Packet Decomposition", 120, 780,
                                kRightWidth - 240, 390);

    w.setWindowTitle(Form1::kStartCaption);
}

void Form1::DisableSpectraGroup() {
    Form1Controls& c = ui();
    c.FrameHScroll->setEnabled(false);
    c.FrameSpectraView->setEnabled(false);
    c.LaunchButton->setEnabled(false);
    c.SaveSpButton->setEnabled(false);
    c.ZoomButton->setEnabled(false);
}

void Form1::DisableWorkGroup() {
    Form1Controls& c = ui();
    for (QWidget* w : std::initializer_list<QWidget*>{
             c.FrameMainParam, c.FrameBackParam, c.Picture1, c.WavePackButton, c.WP_OptionFrame,
             c.WaveFiltButton, c.Frame1, c.SvanArButton, c.ShowSignGrafButton, c.OtherFileButton})
        w->setEnabled(false);
}

void Form1::EnableWorkGroup() {
    Form1Controls& c = ui();
    for (QWidget* w : std::initializer_list<QWidget*>{
             c.DownSampButton, c.DownStepText, c.FrameMainParam, c.FrameBackParam, c.Picture1,
             c.WavePackButton, c.WP_OptionFrame, c.WaveFiltButton, c.Frame1, c.SvanArButton,
             c.ShowSignGrafButton, c.OtherFileButton})
        w->setEnabled(true);
}

void Form1::ResetCursors() { ui().cursors->reset(); }

void Form1::Form_Load() {
    Form1Controls& c = *ui_;
    c.Label2->setCaption(
        "Click file to light its long file name\r\nDouble-click file to process it");
    DisableWorkGroup();
    DisableSpectraGroup();
    for (QWidget* w : std::initializer_list<QWidget*>{c.IncremButton, c.WinzorButton,
                                                      c.DownSampButton, c.DownStepText,
                                                      c.DemplxButton})
        w->setEnabled(false);
    // The program works from its own directory.
    QDir::setCurrent(QString::fromStdString(executableDirectory().string()));
    ResetCursors();

    // The library test looks at the list the file control shows now: the
    // directory that was current when the control came up.
    bool found = false;
    for (int i = 0; !c.File1->List(i).isEmpty(); ++i)
        if (c.File1->List(i) == "Tarnic.dll") found = true;
    if (!found) {
        c.MessLineLabel->setForeColor(BasicColor(12));
        c.MessLineLabel->setWordWrap(true);
        c.MessLineLabel->setCaption("The file <Tarnic.dll> must be within application directory");
        return;
    }
    c.File1->setEnabled(true);
    c.File1->Refresh();
    c.Drive1->setEnabled(true);
    c.Dir1->setEnabled(true);
    LevMax = 2;
    c.MessLineLabel->setForeColor(BasicColor(10));
    c.MessLineLabel->setWordWrap(true);
    c.MessLineLabel->setCaption("Select and read input file");
}

void Form1::File1_Click() {
    Form1Controls& c = ui();
    c.File1->setToolTipText(c.File1->FileName());
    c.MessLineLabel->setVisible(false);
}

void Form1::Dir1_Change() {
    Form1Controls& c = ui();
    c.File1->setPath(c.Dir1->Path());
    c.File1->setToolTipText("");
    c.MessLineLabel->setVisible(false);
}

void Form1::Drive1_Change() {
    // Every failure in these steps is ignored: an unreadable drive leaves the
    // directory list where it was.
    Form1Controls& c = ui();
    const QString drive = c.Drive1->Drive();
    QDir::setCurrent(drive);
    c.Dir1->setPath(drive);
    c.File1->setToolTipText("");
    c.MessLineLabel->setVisible(false);
}

void Form1::OtherFileButton_Click() {
    Form1Controls& c = ui();
    c.File1->setToolTipText("");
    c.MessLineLabel->setVisible(false);
    c.Y_axis_Label->setCaption("");
    DisableWorkGroup();
    DisableSpectraGroup();
    c.DemplxButton->setEnabled(false);
    c.Drive1->setEnabled(true);
    c.Dir1->setEnabled(true);
    c.File1->setEnabled(true);
    c.File1->Refresh();
    c.Picture1->Cls();
    c.Picture1->Refresh();
    c.Picture1->setEnabled(false);
    for (QWidget* w : std::initializer_list<QWidget*>{c.IncremButton, c.WinzorButton,
                                                      c.DownSampButton, c.DownStepText})
        w->setEnabled(false);
    ResetCursors();
}

void Form1::Picture1_MouseMove(int, int, float x, float y) {
    Form1Controls& c = ui();
    PlotSurface& pic = *c.Picture1;
    if (pic.ScaleHeight() / 3 > y) {
        const double k = 1 + static_cast<double>(x) * (Nrec - 1) / pic.ScaleWidth();
        const std::int32_t i = IntClamped(k);
        const double t = TimeOrigin(c.Time0_Text) +
                         (i - 1) * TextNum(c.DeltaT_Text->Text().toStdString());
        pic.setToolTipText(QString::fromStdString("Sample # " + NumText(i) + ",  Time=" + NumText(t)));
        return;
    }
    const float v = PlotXMin + (PlotXMax - PlotXMin) * x / static_cast<float>(pic.ScaleWidth());
    const QString head = c.FreqCheck->Value() == 1 ? "Frequency= " : "Period= ";
    const std::string number = c.LogX_Check->Value() == 1
                                   ? NumText(std::exp(static_cast<double>(v)))
                                   : NumText(v);
    pic.setToolTipText(head + QString::fromStdString(number));
}

QString Form1::OutputFolder() const {
    return OutputRedirect.isEmpty() ? ui_->Dir1->Path() : OutputRedirect;
}

void Form1::showMessage(const QString& text) {
    Form1Controls& c = ui();
    c.MessLineLabel->setVisible(true);
    c.MessLineLabel->setForeColor(BasicColor(12));
    c.MessLineLabel->setWordWrap(true);
    c.MessLineLabel->setCaption(text);
}

} // namespace tarnic
