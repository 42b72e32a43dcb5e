// The editor's tests run with a QApplication on the offscreen platform, and
// with a settings folder of their own, so that nothing they store reaches the
// user's settings.
#include "core/StartUpTables.h"

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toLocal8Bit());
    QApplication app(argc, argv);
    vm::BuildStartUpTables();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
