#include "help/theory.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextDocument>

namespace tarnic {
namespace {

// A displayed formula: a left side, a fraction and the formula's number.
QString fraction(const QString& left, const QString& top, const QString& bottom,
                 const QString& number) {
    return "<table align='center' cellspacing='0' cellpadding='1'><tr>"
           "<td rowspan='3' valign='middle'>" + left + "&nbsp;</td>"
           "<td align='center'>" + top + "</td>"
           "<td rowspan='3' valign='middle'>&nbsp;&nbsp;&nbsp;&nbsp;" + number + "</td></tr>"
           "<tr><td bgcolor='#202020' style='font-size:1px'>&nbsp;</td></tr>"
           "<tr><td align='center'>" + bottom + "</td></tr></table>";
}

QString display(const QString& formula, const QString& number) {
    return "<p align='center'>" + formula + "&nbsp;&nbsp;&nbsp;&nbsp;" + number + "</p>";
}

// The integral over the whole axis.
const QString kIntegral = "&#8747;<sub>&#8722;&#8734;</sub><sup>+&#8734;</sup>";

QImage render(const QString& html, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QTextDocument doc;
    QFont font("DejaVu Serif");
    font.setPixelSize(14);
    doc.setDefaultFont(font);
    doc.setDocumentMargin(18);
    doc.setTextWidth(width);
    doc.setHtml(html);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, QColor(0x20, 0x20, 0x20));
    doc.documentLayout()->draw(&painter, context);
    return image;
}

} // namespace

QImage WtmmTheoryPicture() {
    const QString x = "<i>x</i>", t = "<i>t</i>", a = "<i>a</i>", tau = "<i>&#964;</i>";
    const QString psi = "<i>&#968;</i>";
    QString h;
    h += "<h3 align='center'>What is the WTMM skeleton</h3>";
    h += "<p>Let " + x + "(" + t + ") be a signal for analysis. At least its mean value is "
         "subtracted before the analysis; in some cases its linear trend, or a trend polynomial "
         "of a higher order, is subtracted instead.</p>";
    h += "<p>A scale-dependent kernel-smoothed signal:</p>";
    h += fraction("<i>c</i><sub>0</sub>(" + t + ", " + a + ") =",
                  kIntegral + " " + x + "(" + t + " &#8722; " + a + tau + ") " + psi +
                      "<sub>0</sub>(" + tau + ") <i>d</i>" + tau,
                  kIntegral + " " + psi + "<sub>0</sub>(" + tau + ") <i>d</i>" + tau, "(1)");
    h += "<p>where " + a + " &gt; 0 is a scale and " + psi + "<sub>0</sub>(" + t +
         ") a fast decaying function; here the Gaussian " + psi + "<sub>0</sub>(" + t +
         ") = exp(&#8722;" + t + "<sup>2</sup>). The wavelet functions are</p>";
    h += display(psi + "<sub><i>n</i></sub>(" + t + ") = (&#8722;1)<sup><i>n</i></sup> <i>d</i><sup><i>n</i></sup>" +
                     psi + "<sub>0</sub>(" + t + ") / <i>dt</i><sup><i>n</i></sup>",
                 "(2)");
    h += "<p>Integrating by parts, with the fast decay of " + psi + "<sub>0</sub>, gives the Taylor "
         "coefficients of the smoothed signal (its <i>n</i>-th derivative divided by <i>n</i>!):</p>";
    h += fraction("<i>c</i><sub><i>n</i></sub>(" + t + ", " + a + ") = <i>d</i><sup><i>n</i></sup><i>c</i><sub>0</sub> / <i>dt</i><sup><i>n</i></sup> =",
                  kIntegral + " " + x + "(" + t + " &#8722; " + a + tau + ") " + psi +
                      "<sub><i>n</i></sub>(" + tau + ") <i>d</i>" + tau,
                  a + "<sup><i>n</i></sup> " + kIntegral + " " + tau + "<sup><i>n</i></sup> " + psi +
                      "<sub><i>n</i></sub>(" + tau + ") <i>d</i>" + tau,
                  "(3)");
    h += "<p>Formula (1) is the case <i>n</i> = 0 of (3). A <b>WTMM point</b> (" + t + ", " + a +
         ") for <i>n</i> &#8805; 1 is a local maximum of |<i>c</i><sub><i>n</i></sub>(" + t + ", " + a +
         ")| over time at a given scale; for <i>n</i> = 0 the WTMM points are the local extremes "
         "(maxima or minima) of the smoothed signal <i>c</i><sub>0</sub>. WTMM points are joined "
         "into chains, and all chains form the <b>WTMM skeleton</b>. With a Gaussian kernel a chain "
         "is never broken off as the scale decreases. The WTMM points of <i>c</i><sub>1</sub> mark "
         "the moments of the steepest rise or fall of the smoothed signal at each scale.</p>";
    h += "<p>Let " + x + "(" + t + ") be given for " + t + " &#8712; [0, <i>T</i>]. Near both ends "
         "transform (3) lacks the signal outside the interval, so its values there are garbled. "
         "Since the Gaussian is nearly 0 for |" + t + "| &#8805; 3, <b>dead intervals</b> are set "
         "at both ends:</p>";
    h += display("<i>c</i><sub><i>n</i></sub>(" + t + ", " + a + ") is excluded if 0 &#8804; " + t +
                     " &#8804; 3" + a + " or <i>T</i> &#8722; 3" + a + " &#8804; " + t +
                     " &#8804; <i>T</i>",
                 "(4)");
    h += "<p>Rule (4) gives the largest usable scale <i>a</i><sub>max</sub> = <i>T</i> / 6, where "
         "only " + t + " = <i>T</i> / 2 is admitted. The ends of the dead intervals bound a cupola "
         "of permissible points in the plane (" + t + ", ln " + a + "). Long chains of extremes of "
         "<i>c</i><sub>0</sub> end either at a bifurcation or at the upper boundary of the cupola.</p>";
    h += "<p>Long chains of the extremes of <i>c</i><sub>0</sub> and of the modulus maxima of "
         "<i>c</i><sub>1</sub> are a <b>fingerprint</b> of the signal at all scales; chains of "
         "<i>c</i><sub>1</sub> are told apart by their sign, as chains of falling and of rising "
         "trends. For a sampling interval <i>dt</i> the smallest scale is the Nyquist period, "
         "<i>a</i><sub>min</sub> = 2<i>dt</i>. A chain is <b>long</b> when it reaches the "
         "threshold &#947; <i>a</i><sub>max</sub>, with</p>";
    h += display("&#947;<sub>0</sub> = <i>a</i><sub>min</sub> / <i>a</i><sub>max</sub> &#8804; &#947; &lt; 1", "");
    h += "<p>The closer &#947; is to 1, the fewer chains are long; for &#947; = &#947;<sub>0</sub> "
         "every chain counts as long.</p>";
    return render(h, 688, 934);
}

QImage MfdfaTheoryPicture() {
    const QString x = "<i>x</i>", t = "<i>t</i>", d = "<i>d</i>", q = "<i>q</i>", s = "<i>s</i>";
    QString h;
    h += "<h3 align='center'>Multifractal Detrended Fluctuation Analysis</h3>";
    h += "<p>Let " + x + "(" + t + ") be a random signal. Its variability on the interval [" + t +
         ", " + t + " + " + d + "] is measured by the absolute increment <i>V</i>(" + t + ", " + d +
         ") = |" + x + "(" + t + " + " + d + ") &#8722; " + x + "(" + t + ")|, and its mean power "
         "is <i>M</i>(" + d + ", " + q + ") = E{<i>V</i>(" + t + ", " + d + ")<sup>" + q + "</sup>}. "
         "The signal is <b>scale invariant</b> if <i>M</i>(" + d + ", " + q + ") ~ |" + d +
         "|<sup>&#961;(" + q + ")</sup> as " + d + " &#8594; 0:</p>";
    h += display("&#961;(" + q + ") = lim<sub>" + d + "&#8594;0</sub> ln <i>M</i>(" + d + ", " + q +
                     ") / ln |" + d + "|",
                 "(1)");
    h += "<p>The measure may also be the range of the signal on the interval:</p>";
    h += display("<i>V</i>(" + t + ", " + d + ") = max<sub>" + t + "&#8804;<i>w</i>&#8804;" + t + "+" + d +
                     "</sub> " + x + "(<i>w</i>) &#8722; min<sub>" + t + "&#8804;<i>w</i>&#8804;" + t + "+" + d +
                     "</sub> " + x + "(<i>w</i>)",
                 "(2)");
    h += "<p>If &#961;(" + q + ") = <i>H</i>" + q + " is linear, 0 &lt; <i>H</i> &lt; 1, the process "
         "is <b>monofractal</b>. From a finite sample " + x + "(" + t + "), " + t + " = 1, &#8230;, "
         "<i>N</i>, &#961;(" + q + ") is estimated by the detrended fluctuation analysis. Let " + s +
         " samples correspond to the scale " + d + " = " + s + "&#183;<i>dt</i>, and split the "
         "sample into non-overlapping intervals</p>";
    h += display("<i>I<sub>k</sub></i> = {" + t + " : 1 + (<i>k</i> &#8722; 1)" + s + " &#8804; " + t +
                     " &#8804; <i>k</i>" + s + "},&nbsp; <i>k</i> = 1, &#8230;, [<i>N</i>/" + s + "]",
                 "(3)");
    h += display("<i>y<sub>k</sub></i>(" + t + ") = " + x + "((<i>k</i> &#8722; 1)" + s + " + " + t +
                     "),&nbsp; " + t + " = 1, &#8230;, " + s,
                 "(4)");
    h += "<p>Let <i>p<sub>k</sub></i>(" + t + ") be the polynomial of order <i>m</i> fitted best to "
         "<i>y<sub>k</sub></i>(" + t + "), and take the deflections from this local trend:</p>";
    h += display("&#948;<i>y<sub>k</sub></i>(" + t + ") = <i>y<sub>k</sub></i>(" + t + ") &#8722; <i>p<sub>k</sub></i>(" +
                     t + "),&nbsp; " + t + " = 1, &#8230;, " + s,
                 "(5)");
    h += "<p>The fluctuation function, an estimate of (<i>M</i>(" + s + "<i>dt</i>, " + q +
         "))<sup>1/" + q + "</sup>, by the range of the deflections</p>";
    h += fraction("<i>Z</i>(" + q + ", " + s + ") = (", "&#8721;<sub><i>k</i>=1</sub><sup>[<i>N</i>/" + s +
                      "]</sup> (max<sub>" + t + "</sub> &#948;<i>y<sub>k</sub></i> &#8722; min<sub>" + t +
                      "</sub> &#948;<i>y<sub>k</sub></i>)<sup>" + q + "</sup>",
                  "[<i>N</i>/" + s + "]", ")<sup>1/" + q + "</sup>&nbsp;&nbsp;&nbsp;(6a)");
    h += "<p>or by their standard deviation:</p>";
    h += fraction("<i>Z</i>(" + q + ", " + s + ") = (", "&#8721;<sub><i>k</i>=1</sub><sup>[<i>N</i>/" + s +
                      "]</sup> ( (1/" + s + ") &#8721;<sub>" + t + "=1</sub><sup>" + s +
                      "</sup> &#948;<i>y<sub>k</sub></i>(" + t + ")<sup>2</sup> )<sup>" + q + "/2</sup>",
                  "[<i>N</i>/" + s + "]", ")<sup>1/" + q + "</sup>&nbsp;&nbsp;&nbsp;(6b)");
    h += "<p>The exponent <i>h</i>(" + q + ") is the slope of the linear regression of ln <i>Z</i>(" +
         q + ", " + s + ") on ln " + s + ", <i>Z</i>(" + q + ", " + s + ") ~ " + s + "<sup><i>h</i>(" +
         q + ")</sup>, for <i>s</i><sub>min</sub> &#8804; " + s + " &#8804; <i>s</i><sub>max</sub>. "
         "Then &#961;(" + q + ") = " + q + "<i>h</i>(" + q + "), and a monofractal has <i>h</i>(" + q +
         ") = <i>H</i>.</p>";
    h += "<p>The <b>singularity spectrum</b> <i>F</i>(&#945;) is the fractal dimension of the set of "
         "moments where the H&#246;lder exponent is &#945;, |" + x + "(" + t + " + " + d + ") &#8722; " + x +
         "(" + t + ")| ~ |" + d + "|<sup>&#945;</sup>. The multifractal formalism takes the Gibbs sum</p>";
    h += display("<i>W</i>(" + q + ", " + s + ") = &#8721;<sub><i>k</i>=1</sub><sup>[<i>N</i>/" + s +
                     "]</sup> (max<sub>" + t + "</sub> &#948;<i>y<sub>k</sub></i> &#8722; min<sub>" + t +
                     "</sub> &#948;<i>y<sub>k</sub></i>)<sup>" + q + "</sup>",
                 "(7)");
    h += "<p>the mass exponent &#964;(" + q + ") from <i>W</i>(" + q + ", " + s + ") ~ " + s +
         "<sup>&#964;(" + q + ")</sup>, and the Legendre transform</p>";
    h += display("<i>F</i>(&#945;) = max{ min<sub>" + q + "</sub> (&#945;" + q + " &#8722; &#964;(" + q + ")), 0 }", "(8)");
    h += "<p>From (6) and (7), &#964;(" + q + ") = &#961;(" + q + ") &#8722; 1 = " + q + "<i>h</i>(" + q +
         ") &#8722; 1, so</p>";
    h += display("<i>F</i>(&#945;) = max{ min<sub>" + q + "</sub> (" + q + "(&#945; &#8722; <i>h</i>(" + q +
                     ")) + 1), 0 }",
                 "");
    h += "<p>For a monofractal <i>F</i>(<i>H</i>) = 1 and <i>F</i>(&#945;) = 0 for &#945; &#8800; <i>H</i>; "
         "an estimate from a finite sample does not keep these strict conditions, of course.</p>";
    return render(h, 721, 1035);
}

QImage BlockSchemePicture() {
    QImage image(947, 673, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font("DejaVu Sans");
    font.setPixelSize(11);
    p.setFont(font);
    const QPen solid(QColor(0x30, 0x30, 0x30), 1.5);
    QPen dashed = solid;
    dashed.setStyle(Qt::DashLine);
    auto box = [&](QRectF r, const QString& text, bool dash = false, bool bold = false) {
        p.setPen(dash ? dashed : solid);
        p.setBrush(bold ? QColor(0xE8, 0xE8, 0xE8) : QColor(0xF7, 0xF7, 0xF7));
        p.drawRoundedRect(r, 6, 6);
        QFont f = font;
        f.setBold(bold);
        p.setFont(f);
        p.setPen(QColor(0x10, 0x10, 0x10));
        p.drawText(r.adjusted(6, 3, -6, -3), Qt::AlignCenter | Qt::TextWordWrap, text);
        p.setFont(font);
        return r;
    };
    auto join = [&](QPointF a, QPointF b) {
        p.setPen(solid);
        p.drawLine(a, b);
    };
    const QRectF main = box({400, 300, 147, 56}, "Main Form", false, true);
    // Preprocessing, top left.
    const QRectF pre = box({40, 40, 180, 40}, "Preprocessing", false, true);
    const QRectF pre1 = box({40, 100, 180, 30}, "DownSampling");
    const QRectF pre2 = box({40, 140, 180, 30}, "Coming to Increments");
    const QRectF pre3 = box({40, 180, 180, 30}, "Winzorization");
    for (const QRectF& r : {pre1, pre2, pre3}) join({20, r.center().y()}, {r.left(), r.center().y()});
    join({20, pre.center().y()}, {20, pre3.center().y()});
    join({20, pre.center().y()}, {pre.left(), pre.center().y()});
    join(pre.bottomRight() - QPointF(20, 0), {pre.right() - 20, 250});
    // Spectral analysis, top right.
    const QRectF analysis = box({620, 40, 290, 40}, "Spectral Analysis", false, true);
    const QRectF s1 = box({620, 100, 290, 44}, "Maximum Entropy AR-estimates and Fourier based estimates");
    const QRectF s2 = box({620, 154, 290, 44}, "Estimates of Lg(Spectra) Evolution within moving time window using AR-model");
    const QRectF s3 = box({620, 208, 290, 44}, "Zooming Spectra Estimates, selecting frequency band and band-pass filtering");
    for (const QRectF& r : {s1, s2, s3}) join({925, r.center().y()}, {r.right(), r.center().y()});
    join({925, analysis.center().y()}, {925, s3.center().y()});
    join({925, analysis.center().y()}, {analysis.right(), analysis.center().y()});
    // Wavelets, middle top.
    const QRectF w1 = box({300, 110, 250, 44}, "Orthogonal Wavelet-Packet Decomposition");
    const QRectF w2 = box({300, 180, 250, 44}, "Nonlinear Wavelet Threshold Filter");
    // Lines from the main form.
    join({main.center().x(), main.top()}, {main.center().x(), w2.bottom()});
    join({w2.center().x(), w2.top()}, {w1.center().x(), w1.bottom()});
    join({main.left(), main.center().y()}, {pre.right() - 20, main.center().y()});
    join({pre.right() - 20, 250}, {pre.right() - 20, main.center().y()});
    join({main.right(), main.center().y()}, {765, main.center().y()});
    join({765, main.center().y()}, {765, s3.bottom()});
    // Fragment operations, bottom.
    const QRectF frag = box({40, 400, 300, 40}, "Operations with selected fragment of the signal", false, true);
    const QRectF smooth = box({40, 460, 300, 56}, "Smoothing and detrending using Gaussian kernels or local polynomials within moving time window");
    const QRectF zoom = box({40, 540, 300, 56}, "Zoom Fragment and operation either with initial or with detrended signal", true);
    join({main.center().x(), main.bottom()}, {main.center().x(), 380});
    join({main.center().x(), 380}, {frag.center().x(), 380});
    join({frag.center().x(), 380}, {frag.center().x(), frag.top()});
    join({frag.center().x(), frag.bottom()}, {frag.center().x(), smooth.top()});
    join({frag.center().x(), smooth.bottom()}, {frag.center().x(), zoom.top()});
    const QStringList analyses = {
        "Seeking the best-fitted low-frequency harmonic with unknown period",
        "Seeking 2 extreme points of the maximum wave",
        "Multifractal Singularity Spectrum Estimate by Detrended Fluctuation Analysis",
        "Continuous Morlet Wavelet Transform 2D-diagram",
        "Long chains of wavelet transform skeletons for 3 types of Gaussian kernel derivatives (of the orders 0, 1 and 2)",
        "Orthogonal Wavelet-Packet Heisenberg Boxes 2D-diagram"};
    const double left = 420, width = 490, height = 36, top0 = 400;
    join({zoom.right(), zoom.center().y()}, {390, zoom.center().y()});
    join({390, top0 + height / 2}, {390, top0 + 5 * (height + 8) + height / 2});
    for (int i = 0; i < analyses.size(); ++i) {
        const QRectF r = box({left, top0 + i * (height + 8), width, height}, analyses[i]);
        join({390, r.center().y()}, {r.left(), r.center().y()});
    }
    return image;
}

ScrolledPictureControls::ScrolledPictureControls(FormWindow& w, const QImage& picture,
                                                 int viewportHeight) {
    const double tpp = twipsPerPixel();
    Picture1 = new QWidget(&w);
    Picture1->setGeometry(0, 0, picture.width(), viewportHeight);
    Picture2 = new QLabel(Picture1);
    Picture2->setPixmap(QPixmap::fromImage(picture));
    Picture2->setGeometry(0, 0, picture.width(), picture.height());
    VScroll1 = new ScrollBar(&w, 0, 1, 0, Qt::Vertical);
    VScroll1->place(picture.width() * tpp, 0, 17 * tpp, viewportHeight * tpp);
}

void ConnectScrolledPicture(ScrolledPictureControls& c) {
    c.VScroll1->setMax(c.Picture2->height() - c.Picture1->height());
    c.VScroll1->setSingleStep(16);
    c.VScroll1->setPageStep(c.Picture1->height() - 40);
    c.VScroll1->Change = [&c] { c.Picture2->move(0, -c.VScroll1->Value()); };
}

} // namespace tarnic
