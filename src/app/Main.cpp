// The editor's entry point. For now one window that shows the pictures named
// on the command line, each in a tab, or a small picture of our own.
#include "app/PictureWindow.h"
#include "app/GuiMessageBox.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VelluMark"));
    vm::InstallGuiMessageBox();
    QStringList files = QApplication::arguments();
    files.removeFirst();
    vm::PictureWindow window;
    window.OpenFiles(files);
    window.show();
    return app.exec();
}
