// The editor's entry point, in the order the program has always started: the
// read-only tables, the settings, the main window with its accelerators, the
// files named on the command line, the event loop, and the settings written
// back when the window has closed.
#include "app/AppIcon.h"
#include "app/FrmMain.h"
#include "app/GuiMessageBox.h"
#include "core/AppSettings.h"
#include "core/StartUp.h"
#include "core/StartUpTables.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VelluMark"));
    QApplication::setWindowIcon(vm::MakeAppIcon());
    // Qt's own dialogs and buttons speak the editor's language.
    QTranslator qtChinese;
    if (qtChinese.load(QStringLiteral("qtbase_zh_CN"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtChinese);
    vm::InstallGuiMessageBox();
    vm::BuildStartUpTables();
    vm::LoadSettings(vm::Globals());

    QStringList files;
    vm::ParseCommandLine(vm::JoinCommandLine(QApplication::arguments().mid(1)), files);
    vm::FrmMain window;
    window.show();
    window.OpenFiles(files);
    const int code = app.exec();
    vm::SaveSettings(vm::Globals());
    return code;
}
