#include "core/msgbox.h"

#include <QApplication>
#include <QMessageBox>

namespace tarnic {
namespace {
MsgBoxHook& hook() {
    static MsgBoxHook h;
    return h;
}
} // namespace

void setMsgBoxHook(MsgBoxHook h) { hook() = std::move(h); }

void MsgBox(const QString& text, const QString& title) {
    if (hook()) {
        hook()(text, title);
        return;
    }
    QMessageBox box(QMessageBox::NoIcon, title, text, QMessageBox::Ok, QApplication::activeWindow());
    box.exec();
}

void ReportUnwrittenFile(const QString& path, const QString& reason) {
    MsgBox("The file " + path + " was not written (" + reason +
               "). The loaded signal and all other results are kept.",
           "File not written");
}

} // namespace tarnic
