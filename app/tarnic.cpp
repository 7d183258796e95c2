// tarnic: the workbench's analyses from the command line (app/batch.h). It
// never shows a window, so it needs no display: the windows live on Qt's
// offscreen platform whatever the environment says.
#include "app/batch.h"
#include "core/tarniclibrary.h"
#include "core/twips.h"

#include <QApplication>

#include <cstdio>

namespace {
// Qt's own notes (a missing runtime folder, a window that cannot be raised on
// the offscreen platform) are not the tool's messages: stderr carries only
// what a window would show. Errors still pass.
void quietQtNotes(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "tarnic: %s\n", text.toLocal8Bit().constData());
}
} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(quietQtNotes);
    QApplication app(argc, argv);
    QApplication::setApplicationName("tarnic");
    QApplication::setFont(tarnic::WindowFont());
    // The same geometry on every machine, as on a 96 dpi screen: the cursors
    // and marks the actions place do not depend on a screen there is none of.
    tarnic::setTwipsPerPixel(15.0);
    QStringList args = QApplication::arguments();
    args.removeFirst();
    return tarnic::RunBatch(args, stdout, stderr);
}
