// tarnic-workbench: a desktop workbench for the analysis of one scalar time
// series. The main window opens on the directory the program is started from.
#include "app/overlaysettings.h"
#include "core/twips.h"
#include "core/workbench.h"

#include <QApplication>
#include <QSettings>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("tarnic-workbench");
    QApplication::setFont(tarnic::WindowFont());
    tarnic::Workbench workbench;
    // The overlay choices of the last session; kept again when the program ends.
    QSettings settings;
    tarnic::LoadOverlayChoices(workbench, settings);
    workbench.start();
    const int status = QApplication::exec();
    tarnic::SaveOverlayChoices(workbench, settings);
    return status;
}
