// vellumark-cli: the editor's operations on files, without a window.
// Exit status: 0 success, 1 the file or the operation failed (the system's
// message on standard error), 2 wrong usage. Nothing is written on failure.
#include "Arguments.h"
#include "CliCommands.h"

#include "core/MessageBox.h"

#include <QGuiApplication>

#include <cstdio>

int main(int argc, char** argv) {
    // Painting (metafiles, text in bar codes) needs a GUI application, but
    // never a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    vm::SetMessageHandler(vm::StdErrMessageHandler);

    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    vmcli::Arguments parsed;
    QString error;
    if (!vmcli::ParseArguments(args, parsed, error)) {
        std::fprintf(stderr, "vellumark-cli: %s\n%s", error.toUtf8().constData(),
                     vmcli::UsageText().toUtf8().constData());
        return 2;
    }
    return vmcli::RunCommand(parsed);
}
