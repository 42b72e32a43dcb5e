#include "core/StartUp.h"

#include <QFileInfo>

#include <chrono>

namespace vm {

bool ParseCommandLine(const QString& CommandLine, QStringList& Files) {
    Files.clear();
    QString line = CommandLine.trimmed();
    line.remove(u'\r');
    line.remove(u'\n');
    if (line.isEmpty()) return false;
    // The closing blank ends the last unquoted name without a special case.
    line += u' ';

    enum class State { Outside, Plain, Quoted } state = State::Outside;
    QString name;
    for (const QChar c : line) {
        switch (state) {
        case State::Outside:
            if (c == u'"')
                state = State::Quoted;
            else if (c != u' ') {
                name = c;
                state = State::Plain;
            }
            break;
        case State::Plain:
            if (c == u' ') {
                Files.append(name);
                name.clear();
                state = State::Outside;
            } else {
                name += c;
            }
            break;
        case State::Quoted:
            if (c == u'"') {
                // An empty pair of quotes names nothing.
                if (!name.isEmpty()) Files.append(name);
                name.clear();
                state = State::Outside;
            } else {
                name += c;
            }
            break;
        }
    }
    if (state == State::Quoted) {
        name.chop(1); // the blank added above
        if (!name.isEmpty()) Files.append(name);
    }
    return !Files.isEmpty();
}

QString JoinCommandLine(const QStringList& Args) {
    QStringList parts;
    for (const QString& a : Args) {
        if (a.isEmpty()) continue;
        parts.append(a.contains(u' ') ? u'"' + a + u'"' : a);
    }
    return parts.join(u' ');
}

bool ParseCommandLine(int Argc, const char* const* Argv, QStringList& Files) {
    QStringList args;
    for (int i = 1; i < Argc; ++i)
        if (Argv[i]) args.append(QString::fromLocal8Bit(Argv[i]));
    return ParseCommandLine(JoinCommandLine(args), Files);
}

double GetTimeStamp() {
    using Clock = std::chrono::steady_clock;
    return std::chrono::duration<double, std::milli>(Clock::now().time_since_epoch()).count();
}

bool FileExists(const QString& Path) {
    if (Path.isEmpty()) return false;
    return QFileInfo::exists(Path);
}

} // namespace vm
