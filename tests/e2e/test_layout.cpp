// Every window after a realistic action, looked at as the user sees it at 9
// points: no control covers another, none sticks out of its window or frame,
// and every caption of a button, option, check box or one-line label fits.
#include "core/msgbox.h"
#include "help/blockschemeform.h"
#include "help/helpform.h"
#include "maps/heisboxform.h"
#include "maps/morletsvanform.h"
#include "maps/svanarform.h"
#include "multiscale/mfdfaform.h"
#include "help/mfdfahelpform.h"
#include "multiscale/wtmmform.h"
#include "help/wtmmhelp.h"
#include "signal/signalplot.h"
#include "signal/signalzoomform.h"
#include "spectra/bandpassform.h"
#include "spectra/spectrazoomform.h"
#include "tests/core/mainwindow_fixture.h"
#include "wavelet/wavebasisform.h"
#include "wavelet/wavedecform.h"
#include "wavelet/wavefiltform.h"
#include "wavelet/wavefiltzoomform.h"
#include "wavelet/wavespectraform.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionGroupBox>

#include <optional>

using namespace tarnic;
using namespace tarnic::test;

namespace {

std::string describe(const QWidget* w) {
    QString text;
    if (auto* b = qobject_cast<const QAbstractButton*>(w)) text = b->text();
    if (auto* l = qobject_cast<const QLabel*>(w)) text = l->text();
    if (auto* g = qobject_cast<const QGroupBox*>(w)) text = g->title();
    if (text.isEmpty()) text = w->accessibleName(); // a button's caption lies on its face
    return (QString(w->metaObject()->className()) + " \"" + text.left(40) + "\"").toStdString();
}

// The room a caption needs beside the check mark or inside the button frame.
int chrome(const QWidget* w) {
    if (qobject_cast<const QCheckBox*>(w) || qobject_cast<const QRadioButton*>(w))
        return w->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
               w->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing) + 2;
    if (qobject_cast<const QPushButton*>(w)) return 6;
    return 0;
}

// The controls a user reads or operates: what may not overlap another. Plain
// containers (the frames that hold axis marks) are transparent and are looked
// through; captioned frames count, since their border and caption are drawn.
bool isItem(const QWidget* w) {
    return qobject_cast<const QAbstractButton*>(w) || qobject_cast<const QLabel*>(w) ||
           qobject_cast<const QLineEdit*>(w) || qobject_cast<const QAbstractSlider*>(w) ||
           qobject_cast<const QComboBox*>(w) || qobject_cast<const QAbstractScrollArea*>(w) ||
           qobject_cast<const QGroupBox*>(w) || dynamic_cast<const PlotSurface*>(w);
}

// Whether the text of a control fits its box: one line within the width, or
// wrapped lines within the height.
std::optional<std::string> cutText(const QWidget* w, const QString& text, bool wraps) {
    if (text.isEmpty()) return std::nullopt;
    const QFontMetrics fm(w->font());
    const int room = w->width() - chrome(w);
    if (!wraps) {
        const int need = fm.horizontalAdvance(text);
        if (need <= room) return std::nullopt;
        return "is cut: needs " + std::to_string(need) + " px, has " + std::to_string(room);
    }
    const int need = fm.boundingRect(QRect(0, 0, room, 10000), Qt::TextWordWrap, text).height();
    if (need <= w->height() + 2) return std::nullopt;
    return "is cut below: needs " + std::to_string(need) + " px, has " +
           std::to_string(w->height());
}

// The faults of one window's layout, as lines of text.
std::vector<std::string> layoutFaults(QWidget& window) {
    std::vector<std::string> faults;
    // Each item with the boxes it draws in, in window coordinates. A captioned
    // frame draws its caption and its border; the rest of its caption row is free.
    std::vector<std::pair<QWidget*, std::vector<QRect>>> items;
    auto drawnBoxes = [&](QWidget* w) {
        const QPoint at = w->mapTo(&window, QPoint(0, 0));
        if (auto* g = qobject_cast<QGroupBox*>(w); g && !g->title().isEmpty()) {
            QStyleOptionGroupBox option;
            option.initFrom(g);
            option.text = g->title();
            option.subControls = QStyle::SC_GroupBoxLabel;
            const QRect title = g->style()->subControlRect(QStyle::CC_GroupBox, &option,
                                                           QStyle::SC_GroupBoxLabel, g);
            const QRect body = g->rect().adjusted(0, title.bottom() + 1, 0, 0);
            return std::vector<QRect>{title.translated(at), body.translated(at)};
        }
        return std::vector<QRect>{QRect(at, w->size())};
    };
    std::function<void(QWidget&)> walk = [&](QWidget& parent) {
        for (QObject* o : parent.children()) {
            auto* w = qobject_cast<QWidget*>(o);
            if (!w || w->isWindow() || !w->isVisibleTo(&window)) continue;
            // A picture larger than its frame is scrolled inside it.
            auto* picture = qobject_cast<QLabel*>(w);
            const bool scrolled = picture && !picture->pixmap().isNull();
            if (!scrolled && !parent.rect().contains(w->geometry()))
                faults.push_back(describe(w) + " sticks out of " + describe(&parent));
            std::optional<std::string> cut;
            if (auto* b = qobject_cast<QPushButton*>(w)) {
                // A button shows its caption on a word-wrapped face of its own.
                for (QLabel* face : b->findChildren<QLabel*>(Qt::FindDirectChildrenOnly)) {
                    if (!b->rect().contains(face->geometry()))
                        faults.push_back(describe(face) + " sticks out of its button");
                    if (auto c = cutText(face, face->text(), true))
                        faults.push_back(describe(face) + " " + *c);
                }
                if (auto c = cutText(b, b->text(), false)) cut = c;
            } else if (auto* b = qobject_cast<QAbstractButton*>(w)) {
                cut = cutText(b, b->text(), false);
            } else if (auto* l = qobject_cast<QLabel*>(w)) {
                cut = cutText(l, l->text(), l->wordWrap() || l->text().contains('\n'));
            }
            if (cut) faults.push_back(describe(w) + " " + *cut);
            if (isItem(w)) items.emplace_back(w, drawnBoxes(w));
            // Inside buttons, scroll areas and plots Qt and the surface lay out.
            if (!qobject_cast<QAbstractButton*>(w) && !qobject_cast<QAbstractScrollArea*>(w) &&
                !dynamic_cast<PlotSurface*>(w))
                walk(*w);
        }
    };
    walk(window);
    for (std::size_t i = 0; i < items.size(); ++i)
        for (std::size_t j = i + 1; j < items.size(); ++j) {
            QWidget* a = items[i].first;
            QWidget* b = items[j].first;
            if (a->isAncestorOf(b) || b->isAncestorOf(a)) continue;
            bool overlap = false;
            for (const QRect& p : items[i].second)
                for (const QRect& q : items[j].second)
                    overlap = overlap || p.intersects(q);
            if (overlap) {
                std::string where;
                for (const auto* item : {&items[i], &items[j]})
                    for (const QRect& r : item->second)
                        where += " [" + std::to_string(r.x()) + "," + std::to_string(r.y()) + " " +
                                 std::to_string(r.width()) + "x" + std::to_string(r.height()) + "]";
                faults.push_back(describe(a) + " overlaps " + describe(b) + where);
            }
        }
    return faults;
}

class Layout : public MainWindow {
  protected:
    void SetUp() override {
        MainWindow::SetUp();
        setMsgBoxHook([](const QString& text, const QString&) {
            ADD_FAILURE() << "unexpected message: " << text.toStdString();
        });
    }
    void TearDown() override {
        setMsgBoxHook(nullptr);
        MainWindow::TearDown();
    }
    void expectClean(Form& form) {
        ASSERT_TRUE(form.isLoaded()) << form.name().toStdString();
        QApplication::processEvents();
        for (const std::string& fault : layoutFaults(form.window()))
            ADD_FAILURE() << form.name().toStdString() << ": " << fault;
    }
    void load(const char* name, int n, const std::function<double(int)>& f) {
        start();
        write(name, series(n, f));
        open(name);
        ASSERT_EQ(message(), "");
    }
};

double tones(int i) {
    return std::sin(2 * M_PI * i / 50.0) + 0.4 * std::sin(2 * M_PI * i / 9.0) + 1e-3 * i;
}

} // namespace

TEST_F(Layout, TheMainWindowAndTheSpectrumWindows) {
    start();
    expectClean(form());
    write("s.dat", series(3000, tones));
    open("s.dat");
    ui().LaunchButton->click();
    expectClean(form());
    ui().ZoomButton->click();
    expectClean(wb->spectraZoomForm());
    wb->spectraZoomForm().ui().BandPassButton->click();
    expectClean(wb->bandPassForm());
}

TEST_F(Layout, TheSignalWindowAndEveryWindowOfAFragment) {
    load("s.dat", 3000, tones);
    ui().ShowSignGrafButton->click();
    SignalPlot& plot = wb->signalPlot();
    plot.ui().LocPolynomOption->setValue(true);
    plot.ui().SmoothRad->setText("100");
    plot.ui().ReDrawButton->click();
    expectClean(plot);
    plot.ui().HScroll_Right->setValue(32767 / 4); // a fragment short enough for the max wave
    plot.ui().ZoomButton->click();
    SignalZoomForm& zoom = wb->signalZoomForm();
    zoom.ui().FindHarm->click();
    zoom.ui().FindMaxWave->click();
    expectClean(zoom);
    zoom.ui().MorletSvan->click();
    expectClean(wb->morletSvanForm());
    wb->morletSvanForm().window().close();
    zoom.ui().HeisBoxesButton->click();
    wb->heisBoxForm().ui().WavePackButton->click();
    expectClean(wb->heisBoxForm());
    wb->heisBoxForm().window().close();
    zoom.ui().WTMM_button->click();
    expectClean(wb->wtmmForm());
    wb->wtmmForm().ui().WTMM_HelpButton->click();
    expectClean(wb->wtmmHelp());
    wb->wtmmForm().window().close();
    plot.ui().HScroll_Left->setValue(0);
    plot.ui().HScroll_Right->setValue(32767);
    plot.ui().ZoomButton->click();
    wb->signalZoomForm().ui().MFDFA_button->click();
    wb->mfdfaForm().ui().LaunchMFDFA_btn->click();
    expectClean(wb->mfdfaForm());
    wb->mfdfaForm().ui().MFDFA_Help_button->click();
    expectClean(wb->mfdfaHelpForm());
}

TEST_F(Layout, TheWaveletWindowsTheMapAndTheHelp) {
    load("s.dat", 3000, tones);
    ui().WavePackButton->click();
    expectClean(wb->waveDecForm());
    expectClean(wb->waveSpectForm());
    expectClean(wb->waveBasisForm());
    wb->waveDecForm().window().close();
    ui().WaveFiltButton->click();
    WaveFiltForm& filt = wb->waveFiltForm();
    filt.ui().LaunchDonoho->click();
    filt.ui().LaunchThreshButton->click();
    expectClean(filt);
    filt.ui().ZoomGrafButton->click();
    expectClean(wb->waveFiltZoomForm());
    filt.window().close();
    ui().SvanArButton->click();
    wb->svanArForm().ui().LaunchSvan->click();
    expectClean(wb->svanArForm());
    wb->svanArForm().window().close();
    ui().HelpButton->click();
    expectClean(wb->helpForm());
    wb->helpForm().ui().Command1->click();
    expectClean(wb->blockSchemeForm());
}
