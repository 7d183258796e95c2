// The help text, the block scheme and the two theory pictures.
#include "core/form1.h"
#include "core/workbench.h"
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/helptext.h"
#include "help/theory.h"
#include "help/mfdfahelpform.h"
#include "help/wtmmhelp.h"

namespace tarnic {

void Form1::HelpButton_Click() {
    HelpForm& help = workbench().helpForm();
    help.Show();
    help.ui().HelpFormText->setPlainText(HelpForm::Text());
}

QString HelpForm::Text() {
    QStringList lines;
    for (std::string_view line : kHelpLines)
        lines << QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()));
    return lines.join("\r\n");
}

HelpFormControls::HelpFormControls(FormWindow& w) {
    HelpFormText = new Control<QPlainTextEdit>(&w);
    HelpFormText->place(120, 120, 14400, 8400);
    HelpFormText->setReadOnly(true);
    HelpFormText->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    HelpFormText->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    Command1 = new Button(&w, "Block Scheme");
    Command1->place(120, 8640, 2400, 420);
    w.setWindowTitle("Help");
}

void HelpForm::connectHandlers() {
    setClientSize(14640, 9180);
    ui_->Command1->Click = [this] { Command1_Click(); };
}

void HelpForm::Command1_Click() { workbench().blockSchemeForm().Show(); }

void HelpForm::Form_Unload() { workbench().blockSchemeForm().Unload(); }

BlockSchemeFormControls::BlockSchemeFormControls(FormWindow& w) {
    Picture1 = new QLabel(&w);
    Picture1->setPixmap(QPixmap::fromImage(BlockSchemePicture()));
    Picture1->setGeometry(0, 0, 947, 673);
    w.setWindowTitle("Block Scheme");
}

void BlockSchemeForm::connectHandlers() { setClientSize(947 * twipsPerPixel(), 673 * twipsPerPixel()); }

void WTMM_Help::connectHandlers() {
    window().setWindowTitle("What is WTMM skeleton chains");
    setClientSize((688 + 17) * twipsPerPixel(), 600 * twipsPerPixel());
    ConnectScrolledPicture(*ui_);
}

void MFDFA_Help_form::connectHandlers() {
    window().setWindowTitle("Multifractal Detrended Fluctuation Analysis Help");
    setClientSize((721 + 17) * twipsPerPixel(), 640 * twipsPerPixel());
    ConnectScrolledPicture(*ui_);
}

} // namespace tarnic
