// The preprocessing actions of the main window: new data files derived from the
// loaded signal (increments, winsorization, demultiplexing, downsampling).
// None of them changes Signal, the plot or the parameters.
#include "core/filenames.h"
#include "core/form1.h"
#include "core/msgbox.h"
#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"
#include "core/tarniclibrary.h"
#include "preprocess/series.h"

#include <cmath>

namespace tarnic {

std::string Form1::dataStem() const {
    return encodeFileName((OutputFolder() + "/" + InFileName));
}

void Form1::endPreprocessing() {
    EnableWorkGroup();
    ui().File1->Refresh();
    if (SpectraReady == 1) ui().FrameHScroll->setEnabled(true);
}

void Form1::IncremButton_Click() {
    Form1Controls& c = ui();
    DisableWorkGroup();
    const double dT = TextNum(c.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(c.Time0_Text);
    {
        // A failure skips the rest of the writing; the action then ends as usual.
        OutputFile file(names::Increments(dataStem()));
        file.printLines(Nrec - 1, [&](int i, std::string& out) {
            AppendTwoColumnRecord(out, Signal(i + 1) - Signal(i), T0 + dT * i);
        });
        file.print(PlainNumberLine(NumText(std::int32_t{0})));
        file.close();
    }
    endPreprocessing();
    c.IncremButton->setEnabled(false);
}

void Form1::WinzorButton_Click() {
    Form1Controls& c = ui();
    const double dT = TextNum(c.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(c.Time0_Text);
    DisableWorkGroup();
    const std::vector<float> y = Winsorize(Signal.span());
    OutputFile file(names::Winsorized(dataStem()));
    file.printLines(Nrec, [&](int i, std::string& out) {
        AppendTwoColumnRecord(out, y[static_cast<std::size_t>(i - 1)], T0 + dT * (i - 1));
    });
    if (!file.close())
        ReportUnwrittenFile(decodeFileName(file.path()), QString::fromStdString(file.error()));
    endPreprocessing();
    c.WinzorButton->setEnabled(false);
}

void Form1::DemplxButton_Click() {
    dll::DemulplexTable_dll(PathCodes.first(), PathLen, Nrec);
    ui().File1->Refresh();
    ui().DemplxButton->setEnabled(false);
}

void Form1::DownSampButton_Click() {
    Form1Controls& c = ui();
    const QString typed = c.DownStepText->Text();
    const int hasPoint = static_cast<int>(typed.indexOf('.')) + 1;
    double step = TextNum(typed.toStdString());
    if (!(step >= 1)) step = 1;
    const double intStep = std::floor(step);
    // The box shows how the value was understood.
    std::string stepText;
    if (step == intStep && hasPoint == 0)
        stepText = NumText(intStep);
    else if (step == intStep)
        stepText = NumText(intStep) + ".0";
    else
        stepText = NumText(step);
    c.DownStepText->setText(QString::fromStdString(stepText));
    if (step == 1) return;

    DisableWorkGroup();
    const double dT = TextNum(c.DeltaT_Text->Text().toStdString());
    const double T0 = TimeOrigin(c.Time0_Text);
    const double wanted = std::floor(Nrec / intStep);
    std::int32_t outLen = wanted >= 1 && wanted <= Nrec ? static_cast<std::int32_t>(wanted) : 0;
    if (outLen == 0) { // nothing sound to write for a step longer than the signal
        endPreprocessing();
        c.DownSampButton->setEnabled(true);
        c.DownStepText->setEnabled(true);
        return;
    }
    DownSignal.resize(outLen);
    std::string nameStep = stepText;
    const bool resampling = step > intStep || hasPoint > 0;
    if (resampling) {
        float ratio = static_cast<float>(step);
        dll::DownSample_dll(Signal.first(), Nrec, ratio, DownSignal.first(), outLen);
        outLen = std::clamp(outLen, std::int32_t{0}, DownSignal.count());
        step = ratio;
        if (step > intStep) nameStep = NumText(ratio);
    } else {
        const BlockStatistics blocks = BlockMeans(Signal.span(), static_cast<long long>(intStep));
        for (int k = 1; k <= outLen; ++k) DownSignal(k) = blocks.means[static_cast<std::size_t>(k - 1)];
        // Failures of the saves are ignored step by step.
        OutputFile variances(names::DownSampledVariance(dataStem(), intStep));
        variances.printLines(outLen, [&](int k, std::string& out) {
            AppendTwoColumnRecord(out, blocks.variances[static_cast<std::size_t>(k - 1)],
                                  T0 + step * dT * k);
        });
        variances.close();
    }
    OutputFile result(names::DownSampled(dataStem(), nameStep));
    result.printLines(outLen, [&](int k, std::string& out) {
        AppendTwoColumnRecord(out, DownSignal(k), T0 + step * dT * k);
    });
    result.close();

    endPreprocessing();
    c.DownSampButton->setEnabled(true);
    c.DownStepText->setEnabled(true);
}

} // namespace tarnic
