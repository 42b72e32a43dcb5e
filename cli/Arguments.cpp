#include "Arguments.h"

namespace vmcli {

QString UsageText() {
    return QStringLiteral(
        "用法:\n"
        "  vellumark-cli info FILE\n"
        "  vellumark-cli convert IN OUT [--format CODE] [--frame N] [--option KEY=VALUE]...\n"
        "  vellumark-cli apply IN OUT OPERATION [KEY=VALUE]... [--then OPERATION [KEY=VALUE]...]... "
        "[selection options]\n"
        "  vellumark-cli select IN OUT.Sel [selection options]\n"
        "  vellumark-cli list\n"
        "选区选项:\n"
        "  --select rect:L,T,R,B | ellipse:L,T,R,B | polygon:X,Y,X,Y,... | wand:X,Y[,TOL[,contiguous]]\n"
        "           | row:Y | column:X\n"
        "  --mode new|add|subtract|intersect   --feather N   --antialias 0|1   --selection FILE.Sel\n");
}

static bool ToInt(const QString& s, int& v) {
    bool ok = false;
    v = s.toInt(&ok);
    return ok;
}

bool ParseArguments(const QStringList& args, Arguments& out, QString& error) {
    if (args.isEmpty()) {
        error = QStringLiteral("没有给出命令");
        return false;
    }
    out = Arguments();
    out.Command = args.first();
    static const QStringList commands = {"info", "convert", "apply", "select", "list"};
    if (!commands.contains(out.Command)) {
        error = QStringLiteral("未知的命令: ") + out.Command;
        return false;
    }
    QStringList positional;
    QString currentMode = QStringLiteral("new");
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        auto value = [&](QString& v) {
            if (i + 1 >= args.size()) {
                error = a + QStringLiteral(" 需要一个值");
                return false;
            }
            v = args[++i];
            return true;
        };
        QString v;
        if (a == QLatin1String("--format")) {
            int code = 0;
            if (!value(v) || !ToInt(v, code)) {
                if (error.isEmpty()) error = QStringLiteral("--format 需要一个格式代码");
                return false;
            }
            out.Format = code;
        } else if (a == QLatin1String("--frame")) {
            if (!value(v) || !ToInt(v, out.Frame) || out.Frame < 0) {
                if (error.isEmpty()) error = QStringLiteral("--frame 需要一个帧号");
                return false;
            }
        } else if (a == QLatin1String("--option")) {
            if (!value(v)) return false;
            const qsizetype eq = v.indexOf(QLatin1Char('='));
            if (eq <= 0) {
                error = QStringLiteral("--option 需要 键=值");
                return false;
            }
            out.Options[v.left(eq)] = v.mid(eq + 1);
        } else if (a == QLatin1String("--then")) {
            if (!value(v)) return false;
            out.Operations.append({v, {}});
        } else if (a == QLatin1String("--select")) {
            if (!value(v)) return false;
            out.Selection.Shapes << v;
            out.SelectSteps.append({currentMode, v});
        } else if (a == QLatin1String("--mode")) {
            if (!value(v)) return false;
            static const QStringList modes = {"new", "add", "subtract", "intersect"};
            if (!modes.contains(v)) {
                error = QStringLiteral("--mode 必须是 new、add、subtract 或 intersect");
                return false;
            }
            currentMode = v;
            out.Selection.Mode = v;
        } else if (a == QLatin1String("--feather")) {
            int n = 0;
            if (!value(v) || !ToInt(v, n) || n < 0) {
                if (error.isEmpty()) error = QStringLiteral("--feather 需要一个半径");
                return false;
            }
            out.Selection.Feather = n;
        } else if (a == QLatin1String("--antialias")) {
            if (!value(v) || (v != QLatin1String("0") && v != QLatin1String("1"))) {
                if (error.isEmpty()) error = QStringLiteral("--antialias 必须是 0 或 1");
                return false;
            }
            out.Selection.AntiAlias = v == QLatin1String("1");
        } else if (a == QLatin1String("--selection")) {
            if (!value(v)) return false;
            out.Selection.SelectionFile = v;
        } else if (a.startsWith(QLatin1String("--"))) {
            error = QStringLiteral("未知的选项: ") + a;
            return false;
        } else if (out.Command == QLatin1String("apply") && positional.size() >= 3 &&
                   a.contains(QLatin1Char('='))) {
            const qsizetype eq = a.indexOf(QLatin1Char('='));
            OperationCall& call =
                out.Operations.isEmpty() ? out.Operations.emplaceBack() : out.Operations.last();
            call.Params[a.left(eq)] = a.mid(eq + 1);
        } else {
            positional << a;
            if (out.Command == QLatin1String("apply") && positional.size() == 3)
                out.Operations.prepend({a, {}});
        }
    }
    static const QMap<QString, int> fileCounts = {
        {"info", 1}, {"convert", 2}, {"apply", 3}, {"select", 2}, {"list", 0}};
    if (positional.size() != fileCounts[out.Command]) {
        error = QStringLiteral("命令 %1 的参数个数不对").arg(out.Command);
        return false;
    }
    out.Files = positional.mid(0, out.Command == QLatin1String("apply") ? 2 : positional.size());
    return true;
}

} // namespace vmcli
