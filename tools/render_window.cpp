// render-window: draws a window of the workbench into a PNG, headless.
//
//   QT_QPA_PLATFORM=offscreen render-window OUT.png [FILE]
//
// Starts the workbench in the current directory, double-clicks FILE in the
// main window's file list when one is given, and saves the picture of the main
// window. Used to review the layout before and after a file is loaded.
#include "core/form1.h"
#include "core/workbench.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: render-window OUT.png [FILE]\n");
        return 2;
    }
    QApplication app(argc, argv);
    QApplication::setFont(QFont("DejaVu Sans", 9));
    // The path is taken before the main window moves to the program's directory.
    const QFileInfo file(argc > 2 ? QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath()
                                  : QString());
    tarnic::Workbench workbench;
    workbench.start();
    QApplication::processEvents();
    tarnic::Form1& form1 = workbench.form1();
    if (argc > 2) {
        form1.ui().Dir1->setPath(file.absolutePath());
        if (!form1.ui().File1->selectFile(file.fileName())) {
            std::fprintf(stderr, "no such file in the list: %s\n", argv[2]);
            return 1;
        }
        form1.File1_DblClick();
        QApplication::processEvents();
    }
    const bool ok = form1.window().grab().save(QString::fromLocal8Bit(argv[1]));
    return ok ? 0 : 1;
}
