// The editor's entry point: the read-only tables, the settings, the window,
// the files named on the command line, and the settings written back at exit.
#include "app/GuiMessageBox.h"
#include "app/PictureWindow.h"
#include "core/AppSettings.h"
#include "core/StartUp.h"
#include "core/StartUpTables.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VelluMark"));
    vm::InstallGuiMessageBox();
    vm::BuildStartUpTables();
    vm::LoadSettings(vm::Globals());

    QStringList files;
    vm::ParseCommandLine(vm::JoinCommandLine(QApplication::arguments().mid(1)), files);
    vm::PictureWindow window;
    window.OpenFiles(files);
    window.show();
    const int code = app.exec();
    vm::SaveSettings(vm::Globals());
    return code;
}
