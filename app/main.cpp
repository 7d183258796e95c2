// tarnic-workbench: a desktop workbench for the analysis of one scalar time
// series. The main window opens on the directory the program is started from.
#include "core/twips.h"
#include "core/workbench.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("tarnic-workbench");
    QApplication::setFont(tarnic::WindowFont());
    tarnic::Workbench workbench;
    workbench.start();
    return QApplication::exec();
}
