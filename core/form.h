// The window runtime shared by every window of the workbench.
//
// A window is a C++ object owned by the Workbench for the whole process; its
// public members (the data it was handed, its results) live as long as that.
// Its controls exist only while it is loaded:
//   Load    builds the top-level widget and the controls, then runs Form_Load;
//   Show    loads if needed, shows and raises the window; Form_Activate runs once
//           the handler that called Show has returned (a queued call), so members
//           an opener sets behind Show are in place; it runs again whenever the
//           window becomes the active one after another window was;
//   Hide    hides without unloading;
//   Unload  runs Form_Unload, then destroys the widget and the controls while the
//           public members stay.
// Touching a control of an unloaded window through ui() loads it, as the classic
// forms runtime did. Closing a window with its title-bar button unloads it.
#pragma once

#include "core/canvas.h"

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>

namespace tarnic {

class Workbench;
class Form;

// The top-level widget of a loaded window. Its own drawing (the tick marks
// beside a plot) lies on a Canvas under the child controls.
class FormWindow : public QWidget {
  public:
    explicit FormWindow(Form& form);
    Canvas& canvas() { return canvas_; }
    // The window's form; null once the form has unloaded it. An unloaded window
    // lives on until Qt deletes it later, and may still receive events (and
    // the queued activation of Show) after its form object is gone.
    Form* form() const { return form_; }
    void detach() { form_ = nullptr; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    Form* form_;
    Canvas canvas_;
};

class Form {
  public:
    Form(Workbench& workbench, QString name);
    virtual ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    const QString& name() const { return name_; }
    bool isLoaded() const { return window_ != nullptr; }
    void Load();
    void Show();
    void Hide();
    void Unload();
    bool Visible() const;

    QString Caption() const;
    void setCaption(const QString& caption);
    // Inner size of the window in twips.
    double Width() const { return width_; }
    double Height() const { return height_; }

    // Drawing on the window itself, outside its plot surfaces.
    QColor ForeColor() const;
    void setForeColor(const QColor& color);
    void Line(int flag, double x1, double y1, double x2, double y2, int color = 0);
    void Cls();

    // The loaded widget (loads the window first).
    FormWindow& window();
    Workbench& workbench() { return workbench_; }

  protected:
    // Builds the controls inside the new top-level widget and wires their handlers.
    virtual void createControls(FormWindow& window) = 0;
    virtual void destroyControls() = 0;
    virtual void Form_Load() {}
    virtual void Form_Activate() {}
    virtual void Form_Unload() {}
    // The pointer moves over the window itself, outside its controls.
    virtual void Form_MouseMove() {}
    // Files dragged from a file manager and dropped on the window (local paths,
    // in the order given); only a window that says it accepts them gets them.
    virtual bool AcceptsFileDrops() const { return false; }
    virtual void Form_FileDrop(const QStringList& /*paths*/) {}
    // Sets the window's inner size in twips (called from createControls).
    void setClientSize(double width, double height);

  private:
    friend class FormWindow;
    void runActivate(bool queued);

    Workbench& workbench_;
    QString name_;
    QPointer<FormWindow> window_;
    double width_ = 6000, height_ = 4000;
    bool activatePending_ = false;
    bool unloading_ = false;
};

// A window whose controls are the struct Controls, built by its constructor
// from the top-level widget.
template <class Controls> class FormOf : public Form {
  public:
    using Form::Form;
    Controls& ui() {
        if (!isLoaded()) Load();
        return *ui_;
    }

  protected:
    virtual void connectHandlers() {}
    void createControls(FormWindow& window) override {
        ui_ = std::make_unique<Controls>(window);
        connectHandlers();
    }
    void destroyControls() override { ui_.reset(); }
    std::unique_ptr<Controls> ui_;
};

} // namespace tarnic
