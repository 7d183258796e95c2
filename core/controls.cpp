#include "core/controls.h"

#include <QHBoxLayout>
#include <QResizeEvent>
#include <QSignalBlocker>

namespace tarnic {

Label::Label(QWidget* parent, const QString& caption) : Control<QLabel>(parent) {
    setText(caption);
    setTextFormat(Qt::PlainText);
}

void Label::setForeColor(const QColor& color) {
    foreColor_ = color;
    QPalette pal = palette();
    pal.setColor(QPalette::WindowText, color);
    setPalette(pal);
}

Button::Button(QWidget* parent, const QString& caption)
    : Control<QPushButton>(parent), face_(new QLabel(this)) {
    face_->setWordWrap(true);
    face_->setAlignment(Qt::AlignCenter);
    face_->setTextFormat(Qt::PlainText);
    face_->setAttribute(Qt::WA_TransparentForMouseEvents);
    // The face fills the button but for a margin at the sides, so two lines of
    // caption fit a button of 420 twips.
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->addWidget(face_);
    setCaption(caption);
    QObject::connect(this, &QPushButton::clicked, [this] {
        if (Click) Click();
    });
}

void Button::setCaption(const QString& caption) {
    caption_ = caption;
    face_->setText(caption);
    setAccessibleName(caption);
}

TextBox::TextBox(QWidget* parent, const QString& text) : Control<QLineEdit>(parent) {
    QLineEdit::setText(text);
    setMouseTracking(true);
    QObject::connect(this, &QLineEdit::textEdited, [this] {
        if (Change) Change();
    });
}

void TextBox::mouseMoveEvent(QMouseEvent* event) {
    QLineEdit::mouseMoveEvent(event);
    if (MouseMove) MouseMove();
}

void TextBox::setText(const QString& text) {
    if (text == QLineEdit::text()) return;
    {
        const QSignalBlocker quiet(this);
        QLineEdit::setText(text);
    }
    if (Change) Change();
}

CheckBox::CheckBox(QWidget* parent, const QString& caption, bool checked)
    : Control<QCheckBox>(parent) {
    setText(caption);
    setChecked(checked);
    QObject::connect(this, &QCheckBox::toggled, [this] {
        if (!assigning_ && Click) Click();
    });
}

void CheckBox::setValue(int value) {
    const bool checked = value != 0;
    if (checked == isChecked()) return;
    assigning_ = true;
    setChecked(checked);
    assigning_ = false;
    if (Click) Click();
}

OptionButton::OptionButton(QWidget* parent, const QString& caption, bool selected)
    : Control<QRadioButton>(parent) {
    setText(caption);
    setChecked(selected);
    setMouseTracking(true);
    QObject::connect(this, &QRadioButton::toggled, [this](bool on) {
        if (on && !assigning_ && Click) Click();
    });
}

void OptionButton::mouseMoveEvent(QMouseEvent* event) {
    QRadioButton::mouseMoveEvent(event);
    if (MouseMove) MouseMove();
}

void OptionButton::setValue(bool selected) {
    if (selected == isChecked()) return;
    assigning_ = true;
    if (selected) {
        setChecked(true); // the other options of the container go off
    } else {
        setAutoExclusive(false);
        setChecked(false);
        setAutoExclusive(true);
    }
    assigning_ = false;
    if (selected && Click) Click();
}

ScrollBar::ScrollBar(QWidget* parent, int min, int max, int value, Qt::Orientation orientation)
    : Control<QScrollBar>(orientation, parent) {
    setRange(min, max);
    QScrollBar::setValue(value);
    setSingleStep(std::max(1, (max - min) / 100));
    setPageStep(std::max(1, (max - min) / 10));
    QObject::connect(this, &QScrollBar::valueChanged, [this] {
        if (!assigning_ && Change) Change();
    });
}

void ScrollBar::setValue(int value) {
    value = std::clamp(value, minimum(), maximum());
    if (value == QScrollBar::value()) return;
    assigning_ = true;
    QScrollBar::setValue(value);
    assigning_ = false;
    if (Change) Change();
}

Frame::Frame(QWidget* parent, const QString& caption) : Control<QGroupBox>(parent) {
    setTitle(caption);
}

} // namespace tarnic
