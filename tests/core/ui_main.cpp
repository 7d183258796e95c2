// Entry point of the window tests: one QApplication on the offscreen platform
// with a fixed font and a fixed 15 twips to the pixel, so pictures and
// geometry are the same on every machine.
#include "core/twips.h"

#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setFont(tarnic::WindowFont());
    tarnic::setTwipsPerPixel(15.0);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
