// Controls of the windows, mapped onto Qt widgets.
//
// Geometry is kept in twips. The enabled flag follows the frame rule: a disabled
// container disables its content while each inner control keeps its own flag
// (Qt's WA_ForceDisabled), which Enabled() reports; isEnabled() is the effective
// state the user meets.
//
// Assigning a value by code (setText, setValue) runs the control's Change or Click
// handler at once, inside the assignment, and only when the value really changes.
// The wrappers do this themselves instead of relying on Qt's signals, and they
// keep Qt's own signal quiet during the assignment, so a handler never runs twice.
// A change made by the user runs the same handler from Qt's signal.
#pragma once

#include "core/numtext.h"
#include "core/twips.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

#include <cmath>
#include <functional>
#include <string>
#include <utility>

namespace tarnic {

using Handler = std::function<void()>;

template <class QtBase> class Control : public QtBase {
  public:
    template <class... Args>
    explicit Control(Args&&... args) : QtBase(std::forward<Args>(args)...) {}

    void place(double left, double top, double width, double height) {
        left_ = left;
        top_ = top;
        width_ = width;
        height_ = height;
        this->setGeometry(twipsRect(left, top, width, height));
    }
    double Left() const { return left_; }
    double Top() const { return top_; }
    double Width() const { return width_; }
    double Height() const { return height_; }
    void setLeft(double v) { place(v, top_, width_, height_); }
    void setTop(double v) { place(left_, v, width_, height_); }
    void setWidth(double v) { place(left_, top_, v, height_); }
    void setHeight(double v) { place(left_, top_, width_, v); }

    // The control's own flag, whatever its containers say.
    bool Enabled() const { return !this->testAttribute(Qt::WA_ForceDisabled); }
    bool Visible() const { return !this->isHidden(); }
    QString ToolTipText() const { return this->toolTip(); }
    void setToolTipText(const QString& text) { this->setToolTip(text); }

  private:
    double left_ = 0, top_ = 0, width_ = 0, height_ = 0;
};

class Label : public Control<QLabel> {
  public:
    explicit Label(QWidget* parent, const QString& caption = {});
    QString Caption() const { return text(); }
    void setCaption(const QString& caption) { setText(caption); }
    void setForeColor(const QColor& color);
    QColor ForeColor() const { return foreColor_; }
    bool WordWrap() const { return wordWrap(); }

  private:
    QColor foreColor_{Qt::black};
};

// A push button whose caption wraps onto several lines when it is long.
class Button : public Control<QPushButton> {
  public:
    explicit Button(QWidget* parent, const QString& caption = {});
    QString Caption() const { return caption_; }
    void setCaption(const QString& caption);
    Handler Click;

  private:
    QString caption_;
    QLabel* face_;
};

class TextBox : public Control<QLineEdit> {
  public:
    explicit TextBox(QWidget* parent, const QString& text = {});
    QString Text() const { return text(); }
    void setText(const QString& text);
    Handler Change;
    Handler MouseMove;

  protected:
    void mouseMoveEvent(QMouseEvent* event) override;
};

class CheckBox : public Control<QCheckBox> {
  public:
    CheckBox(QWidget* parent, const QString& caption, bool checked);
    int Value() const { return isChecked() ? 1 : 0; }
    void setValue(int value);
    QString Caption() const { return text(); }
    Handler Click;

  private:
    bool assigning_ = false;
};

class OptionButton : public Control<QRadioButton> {
  public:
    OptionButton(QWidget* parent, const QString& caption, bool selected);
    bool Value() const { return isChecked(); }
    void setValue(bool selected);
    QString Caption() const { return text(); }
    Handler Click;
    Handler MouseMove;

  protected:
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    bool assigning_ = false;
};

class ScrollBar : public Control<QScrollBar> {
  public:
    ScrollBar(QWidget* parent, int min, int max, int value,
              Qt::Orientation orientation = Qt::Horizontal);
    void setMax(int max) { setMaximum(max); }
    int Min() const { return minimum(); }
    int Max() const { return maximum(); }
    int Value() const { return value(); }
    void setValue(int value);
    Handler Change;

  private:
    bool assigning_ = false;
};

class Frame : public Control<QGroupBox> {
  public:
    explicit Frame(QWidget* parent, const QString& caption = {});
    QString Caption() const { return title(); }
};

// A std::string (a number text, a file name) as a QString.
inline QString qs(const std::string& s) { return QString::fromStdString(s); }

// The number a box holds, read as the program reads every typed number.
inline double boxNumber(const TextBox* box) { return TextNum(box->Text().toStdString()); }

// The initial time of the time marks from the main window's box: a text that
// overflows the double range counts as 0, the box's start value, like any
// other text that is no time, so no infinite time reaches a mark or a file.
inline double TimeOrigin(const TextBox* box) {
    const double t0 = boxNumber(box);
    return std::isfinite(t0) ? t0 : 0.0;
}

} // namespace tarnic
