#pragma once
// The command line of vellumark-cli, parsed into plain data before anything
// is loaded, so that a wrong usage never touches a file.
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace vmcli {

// One --select shape and the options that shape it.
struct SelectionOptions {
    QStringList Shapes; // "rect:L,T,R,B", "ellipse:...", "polygon:...", "wand:...", "row:Y", "column:X"
    QString Mode = QStringLiteral("new");
    std::optional<int> Feather;
    std::optional<bool> AntiAlias;
    QString SelectionFile;
    bool Any() const { return !Shapes.isEmpty() || !SelectionFile.isEmpty(); }
};

struct OperationCall {
    QString Operation;
    QMap<QString, QString> Params;
};

struct Arguments {
    QString Command; // info, convert, apply, select, list
    QStringList Files;
    std::optional<int> Format;
    int Frame = 0;
    QMap<QString, QString> Options;
    QList<OperationCall> Operations;
    // Selection options apply to all shapes in order: each --mode before a
    // --select sets how that shape combines.
    QList<QPair<QString, QString>> SelectSteps; // (mode, shape)
    SelectionOptions Selection;
};

// Answers false with a message in Error when the usage is wrong.
bool ParseArguments(const QStringList& Args, Arguments& Out, QString& Error);
QString UsageText();

} // namespace vmcli
