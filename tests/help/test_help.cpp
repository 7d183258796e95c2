// The help windows: the whole text, the block scheme that closes with it, and
// the two theory pictures scrolled under their viewports.
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "help/theory.h"
#include "help/mfdfahelpform.h"
#include "help/wtmmhelp.h"
#include "tests/core/mainwindow_fixture.h"

using namespace tarnic;
using namespace tarnic::test;

TEST_F(MainWindow, TheHelpTextIsShownWholeBesideTheMainWindow) {
    start();
    ui().HelpButton->click();
    HelpForm& help = wb->helpForm();
    EXPECT_TRUE(help.Visible());
    EXPECT_TRUE(form().Visible()) << "the main window stays usable";
    EXPECT_EQ(help.Caption(), "Help");
    const QString text = help.ui().HelpFormText->toPlainText();
    EXPECT_TRUE(text.startsWith("This program:\n\n1) estimates power spectra"));
    EXPECT_EQ(HelpForm::Text().count("\r\n"), 104) << "105 lines joined by CR LF";
    EXPECT_TRUE(HelpForm::Text().contains(
        "(MM)min = 0, (MM)max = LengF / 8;  (Nar)min = 1, (Nar)max = LengAR / 4."));
    EXPECT_TRUE(HelpForm::Text().endsWith("estimated and visualized for selected (zoomed) fragment "
                                          "of initial time series."));
    help.ui().Command1->click();
    EXPECT_TRUE(wb->blockSchemeForm().Visible());
    EXPECT_EQ(wb->blockSchemeForm().Caption(), "Block Scheme");
    help.window().close();
    EXPECT_FALSE(wb->blockSchemeForm().isLoaded()) << "the block scheme closes with the help";
    ui().HelpButton->click();
    EXPECT_EQ(help.ui().HelpFormText->toPlainText(), text) << "reopened, the whole text again";
}

TEST(TheoryPictures, HaveTheirSizesAndAreNotBlank) {
    const struct {
        QImage image;
        int width, height;
    } pictures[] = {{BlockSchemePicture(), 947, 673},
                    {WtmmTheoryPicture(), 688, 934},
                    {MfdfaTheoryPicture(), 721, 1035}};
    for (const auto& p : pictures) {
        EXPECT_EQ(p.image.width(), p.width);
        EXPECT_EQ(p.image.height(), p.height);
        int dark = 0;
        for (int y = 0; y < p.height; y += 3)
            for (int x = 0; x < p.width; x += 3) dark += qGray(p.image.pixel(x, y)) < 128;
        EXPECT_GT(dark, 500) << p.width << " x " << p.height << ": text and lines are drawn";
    }
}

TEST_F(MainWindow, TheTheoryPicturesSlideUnderTheirViewports) {
    start();
    for (Form* form : {static_cast<Form*>(&wb->wtmmHelp()), static_cast<Form*>(&wb->mfdfaHelpForm())}) {
        form->Show();
        auto& c = form == &wb->wtmmHelp() ? static_cast<ScrolledPictureControls&>(wb->wtmmHelp().ui())
                                          : static_cast<ScrolledPictureControls&>(wb->mfdfaHelpForm().ui());
        EXPECT_EQ(c.VScroll1->Max(), c.Picture2->height() - c.Picture1->height());
        EXPECT_GT(c.VScroll1->Max(), 0);
        c.VScroll1->setValue(120);
        EXPECT_EQ(c.Picture2->y(), -120);
        form->Unload();
        form->Show();
        auto& again = form == &wb->wtmmHelp() ? static_cast<ScrolledPictureControls&>(wb->wtmmHelp().ui())
                                              : static_cast<ScrolledPictureControls&>(wb->mfdfaHelpForm().ui());
        EXPECT_EQ(again.Picture2->y(), 0) << "a new load starts at the top";
    }
    EXPECT_EQ(wb->wtmmHelp().Caption(), "What is WTMM skeleton chains");
    EXPECT_EQ(wb->mfdfaHelpForm().Caption(), "Multifractal Detrended Fluctuation Analysis Help");
}
