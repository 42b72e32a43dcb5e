// vellumark-cli: the editor's operations on files, without a window.
// Exit status: 0 success, 1 the file or the operation failed (the system's
// message on standard error), 2 wrong usage. Nothing is written on failure.
#include "Arguments.h"
#include "CliCommands.h"

#include "core/MessageBox.h"

#include <QGuiApplication>

#include <cstdio>

namespace {
// Standard error carries the system's messages and nothing else: the
// platform's own chatter is dropped, real faults still reach the user.
void QuietQtMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}
} // namespace

int main(int argc, char** argv) {
    qInstallMessageHandler(QuietQtMessages);
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
