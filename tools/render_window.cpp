// render-window: draws a window of the workbench into a PNG, headless.
//
//   QT_QPA_PLATFORM=offscreen render-window OUT.png [FILE [STEP ...]]
//
// Starts the workbench in the current directory, double-clicks FILE in the
// main window's file list when one is given, then performs the STEPs in order
// (listed in app/steps.cpp) and saves the picture of the window that is in
// front at the end.
#include "app/steps.h"
#include "core/form1.h"
#include "core/tarniclibrary.h"
#include "core/twips.h"
#include "core/workbench.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <filesystem>

using namespace tarnic;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: render-window OUT.png [FILE [STEP ...]]\n");
        return 2;
    }
    QApplication app(argc, argv);
    QApplication::setFont(tarnic::WindowFont());
    // The path is taken before the main window moves to the program's directory.
    const QFileInfo file(argc > 2 ? QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath()
                                  : QString());
    // The tool lives in build/tools, away from the library: it uses the
    // Tarnic.dll of the directory it starts the workbench in, as the program
    // would find it beside itself.
    TarnicLibrary::instance().setPreferredFile(std::filesystem::current_path() / "Tarnic.dll");
    Workbench workbench;
    workbench.start();
    QApplication::processEvents();
    Form1& form1 = workbench.form1();
    Form* front = &form1;
    if (argc > 2 && !OpenFromBrowser(workbench, file)) {
        std::fprintf(stderr, "no such file in the list: %s\n", argv[2]);
        return 1;
    }
    for (int i = 3; i < argc; ++i) {
        if (!PerformStep(workbench, QString(argv[i]), front)) {
            std::fprintf(stderr, "unknown step: %s\n", argv[i]);
            return 2;
        }
    }
    // Quality 0: the smallest PNG, for pictures kept in the documentation.
    const bool ok = front->window().grab().save(QString::fromLocal8Bit(argv[1]), nullptr, 0);
    return ok ? 0 : 1;
}
