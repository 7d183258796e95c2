#include "core/form.h"

#include "core/twips.h"
#include "core/workbench.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

namespace tarnic {

FormWindow::FormWindow(Form& form) : QWidget(nullptr), form_(&form) {
    setAttribute(Qt::WA_DeleteOnClose, false);
    setMouseTracking(true);
    setAcceptDrops(form.AcceptsFileDrops());
}

namespace {
QStringList localFiles(const QMimeData* data) {
    QStringList paths;
    if (data && data->hasUrls())
        for (const QUrl& url : data->urls())
            if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}
} // namespace

void FormWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void FormWindow::dropEvent(QDropEvent* event) {
    const QStringList paths = localFiles(event->mimeData());
    if (paths.isEmpty() || !form_) return;
    event->acceptProposedAction();
    form_->Form_FileDrop(paths);
}

void FormWindow::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    if (form_) form_->Form_MouseMove();
}

void FormWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawImage(QPoint(0, 0), canvas_.image());
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (form_) form_->Unload();
}

void FormWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (form_ && event->type() == QEvent::ActivationChange && isActiveWindow())
        form_->runActivate(false);
}

Form::Form(Workbench& workbench, QString name) : workbench_(workbench), name_(std::move(name)) {}

Form::~Form() {
    if (window_) delete window_.data();
}

void Form::Load() {
    if (window_) return;
    auto* w = new FormWindow(*this);
    w->setObjectName(name_);
    window_ = w;
    createControls(*w);
    w->setFixedSize(twipsToPixels(width_), twipsToPixels(height_));
    w->canvas().BackColor = w->palette().color(QPalette::Window);
    w->canvas().resize(twipsToPixels(width_), twipsToPixels(height_));
    Form_Load();
}

void Form::setClientSize(double width, double height) {
    width_ = width;
    height_ = height;
    if (window_) {
        window_->setFixedSize(twipsToPixels(width), twipsToPixels(height));
        window_->canvas().resize(twipsToPixels(width), twipsToPixels(height));
    }
}

void Form::Show() {
    Load();
    if (!window_) return; // Form_Load unloaded the window again
    window_->show();
    window_->raise();
    window_->activateWindow();
    activatePending_ = true;
    // Reaches the form through its window only: a window unloaded in the
    // meantime is detached, and one deleted takes the queued call with it.
    QPointer<FormWindow> target = window_;
    QMetaObject::invokeMethod(
        window_,
        [target] {
            if (target && target->form()) target->form()->runActivate(true);
        },
        Qt::QueuedConnection);
}

void Form::runActivate(bool queued) {
    if (!window_ || unloading_) return;
    if (queued) {
        if (!activatePending_) return;
        activatePending_ = false;
    } else if (activatePending_ || workbench_.activeForm() == this) {
        return;
    }
    workbench_.setActiveForm(this);
    Form_Activate();
}

void Form::Hide() {
    if (window_) window_->hide();
}

void Form::Unload() {
    if (!window_ || unloading_) return;
    unloading_ = true;
    Form_Unload();
    FormWindow* w = window_;
    destroyControls();
    // Stop every signal of the old controls, then let Qt delete them when the
    // present event has been handled (the handler may belong to one of them).
    w->detach();
    w->hide();
    for (QObject* child : w->findChildren<QObject*>()) child->disconnect();
    w->disconnect();
    w->deleteLater();
    window_ = nullptr;
    activatePending_ = false;
    if (workbench_.activeForm() == this) workbench_.setActiveForm(nullptr);
    unloading_ = false;
}

bool Form::Visible() const { return window_ && window_->isVisible(); }

QString Form::Caption() const { return window_ ? window_->windowTitle() : QString(); }

void Form::setCaption(const QString& caption) { window().setWindowTitle(caption); }

QColor Form::ForeColor() const { return window_ ? window_->canvas().ForeColor : QColor(Qt::black); }

void Form::setForeColor(const QColor& color) { window().canvas().ForeColor = color; }

void Form::Line(int flag, double x1, double y1, double x2, double y2, int color) {
    window().canvas().Line(flag, x1, y1, x2, y2, color);
    window_->update();
}

void Form::Cls() {
    window().canvas().Cls();
    window_->update();
}

FormWindow& Form::window() {
    Load();
    return *window_;
}

} // namespace tarnic
