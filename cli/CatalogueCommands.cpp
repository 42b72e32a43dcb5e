// apply, select and list: the commands that run the operation catalogue and
// build selections the way the editor's tools do.
#include "CliCommands.h"

#include "core/Catalogue.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "document/Document.h"
#include "selection/Selection.h"

#include <QPoint>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace vmcli {

namespace {

void Out(const QString& text) {
    const QByteArray b = text.toUtf8();
    std::fwrite(b.constData(), 1, static_cast<size_t>(b.size()), stdout);
}

int Usage(const QString& message) {
    std::fprintf(stderr, "vellumark-cli: %s\n", message.toUtf8().constData());
    return 2;
}

int ModeIndex(const QString& mode) {
    static const QStringList modes = {"new", "add", "subtract", "intersect"};
    return static_cast<int>(modes.indexOf(mode));
}

bool Numbers(const QString& text, QList<int>& values) {
    values.clear();
    for (const QString& part : text.split(QLatin1Char(','))) {
        bool ok = false;
        values << part.trimmed().toInt(&ok);
        if (!ok) return false;
    }
    return true;
}

// Checks the shapes' syntax before anything is loaded.
bool CheckShape(const QString& shape, QString& error) {
    const qsizetype colon = shape.indexOf(QLatin1Char(':'));
    const QString kind = shape.left(colon);
    QList<int> v;
    if (colon < 0 || !Numbers(shape.mid(colon + 1), v)) {
        error = QStringLiteral("--select 的值不正确：") + shape;
        return false;
    }
    bool ok = false;
    if (kind == QLatin1String("rect") || kind == QLatin1String("ellipse"))
        ok = v.size() == 4;
    else if (kind == QLatin1String("polygon"))
        ok = v.size() >= 6 && v.size() % 2 == 0;
    else if (kind == QLatin1String("wand"))
        ok = v.size() >= 2 && v.size() <= 4 && (v.size() < 3 || (v[2] >= 0 && v[2] <= 255));
    else if (kind == QLatin1String("row") || kind == QLatin1String("column"))
        ok = v.size() == 1;
    if (!ok) error = QStringLiteral("--select 的值不正确：") + shape;
    return ok;
}

// Builds the selection the options describe on a mask of the image's size.
// Answers false when a file could not be read (the message was shown).
bool BuildSelection(const Arguments& args, const vm::CImage& image, vm::CSelection& selection) {
    selection.CreateNewSelection(image.Width(), image.Height());
    if (args.Selection.AntiAlias) selection.SetAntiAlias(*args.Selection.AntiAlias);
    selection.FeatherRadius = args.Selection.Feather.value_or(0);
    if (!args.Selection.SelectionFile.isEmpty()) {
        vm::CSelection loaded;
        if (!loaded.LoadSelctionFromFile(args.Selection.SelectionFile)) {
            vm::MessageBox(QStringLiteral("无法将选定的文件加载为选区."));
            return false;
        }
        selection.SetUseDefaultSetting(false);
        selection.LoadSeletionFromSelection(loaded, 0);
    }
    for (const auto& [mode, shape] : args.SelectSteps) {
        selection.SelectionMode = ModeIndex(mode);
        const qsizetype colon = shape.indexOf(QLatin1Char(':'));
        const QString kind = shape.left(colon);
        QList<int> v;
        Numbers(shape.mid(colon + 1), v);
        if (kind == QLatin1String("rect")) {
            selection.AddRectangle(v[0], v[1], v[2], v[3]);
        } else if (kind == QLatin1String("ellipse")) {
            selection.AddEllipse(v[0], v[1], v[2], v[3]);
        } else if (kind == QLatin1String("polygon")) {
            QList<QPoint> points;
            for (qsizetype i = 0; i + 1 < v.size(); i += 2)
                points << QPoint(v[i], v[i + 1]);
            selection.AddPolygon(points, 0);
        } else if (kind == QLatin1String("wand")) {
            selection.AddMagicWnd(image, v[0], v[1], v.size() > 2 ? v[2] : 32,
                                  v.size() > 3 ? v[3] != 0 : true, true);
        } else if (kind == QLatin1String("row")) {
            selection.AddLine(0, v[0], 1);
        } else if (kind == QLatin1String("column")) {
            selection.AddLine(v[0], 0, 0);
        }
    }
    return true;
}

// The shapes selected no pixel: the selection is empty, and operations must
// refuse it rather than run on the whole picture.
void MakeEmpty(vm::CSelection& selection) {
    selection.RestrainEvent = true;
    selection.SetUseDefaultSetting(false);
    std::memset(selection.Pointer(), 0, static_cast<size_t>(selection.Stride()) * selection.Height());
    selection.UpdateSelectionRegion();
    selection.RestrainEvent = false;
}

int Select(const Arguments& args) {
    QString error;
    for (const QString& shape : args.Selection.Shapes)
        if (!CheckShape(shape, error)) return Usage(error);
    vm::CImage image;
    if (!LoadInput(args.Files[0], args.Frame, image)) return 1;
    vm::CSelection selection;
    if (!BuildSelection(args, image, selection)) return 1;
    if (!selection.SaveSelctionToFile(args.Files[1], true, false)) {
        vm::MessageBox(QStringLiteral("保存文件失败: ") + args.Files[1]);
        return 1;
    }
    return 0;
}

// "Seed=N" repeats a randomised run: the shared random source starts from N
// before the operation. A row with a seed of its own keeps the key.
bool TakeSeed(const vm::Operation& op, QMap<QString, QString>& values, std::optional<uint32_t>& seed,
              QString& error) {
    const QString key = QStringLiteral("Seed");
    if (!values.contains(key)) return true;
    const auto declares = [&key](const auto& specs) {
        return std::any_of(specs.begin(), specs.end(), [&key](const auto& s) { return s.Key == key; });
    };
    if (declares(op.Sliders) || declares(op.Choices) || declares(op.Checks) || declares(op.Texts))
        return true;
    bool ok = false;
    const uint32_t value = values.take(key).toUInt(&ok);
    if (!ok) {
        error = QStringLiteral("种子（Seed）应为 0 到 4294967295 之间的整数。");
        return false;
    }
    seed = value;
    return true;
}

int Apply(const Arguments& args) {
    QString error;
    for (const QString& shape : args.Selection.Shapes)
        if (!CheckShape(shape, error)) return Usage(error);
    QList<const vm::Operation*> ops;
    QList<vm::Params> given;
    QList<std::optional<uint32_t>> seeds;
    for (const OperationCall& call : args.Operations) {
        const vm::Operation* op = vm::FindOperation(call.Operation);
        if (!op)
            return Usage(QStringLiteral("没有名为“%1”的操作（vellumark-cli list 列出所有操作）。")
                             .arg(call.Operation));
        QMap<QString, QString> values = call.Params;
        std::optional<uint32_t> seed;
        if (!TakeSeed(*op, values, seed, error)) return Usage(error);
        if (!op->Validate(vm::Params(values), 0, error)) return Usage(error);
        ops << op;
        given << vm::Params(values);
        seeds << seed;
    }
    if (const int usage = CheckOutput(args, args.Files[1])) return usage;

    auto image = std::make_unique<vm::CImage>();
    if (!LoadInput(args.Files[0], args.Frame, *image)) return 1;
    std::unique_ptr<vm::CSelection> selection;
    if (args.Selection.Any()) {
        selection = std::make_unique<vm::CSelection>();
        if (!BuildSelection(args, *image, *selection)) return 1;
        if (selection->UseDefaultSetting() && !args.Selection.Shapes.isEmpty()) MakeEmpty(*selection);
    }
    // The commands run on a document, as they do in the window; a failure
    // ends the run without writing, so nothing needs taking back.
    vm::Document document;
    document.SetNeedWriteToHistory(false);
    document.SetTakesBackFailures(false);
    document.Attach(std::move(image), std::move(selection));
    vm::CImage& picture = *document.Image();
    for (qsizetype i = 0; i < ops.size(); ++i) {
        const vm::Operation& op = *ops[i];
        // Ranges that depend on the picture (a lower maximum on RGBA 32).
        if (!op.Validate(given[i], picture, error)) return Usage(error);
        if (!op.Run) {
            vm::MessageBox(QStringLiteral("很抱歉，“%1”命令在这个版本中还不能使用。").arg(op.Title));
            return 1;
        }
        if (!op.Accepts(picture.PixelFormat)) {
            vm::MessageBox(QStringLiteral("当前的图像模式不支持“%1”命令。").arg(op.Title));
            return 1;
        }
        // What the menu keeps off: a made selection where the command needs
        // the whole picture.
        if (op.NeedsWholePicture(picture.PixelFormat) && !document.Selection()->UseDefaultSetting()) {
            vm::MessageBox(QStringLiteral("“%1”命令只能作用于整幅图像，请不要指定选区。").arg(op.Title));
            return 1;
        }
        if (seeds[i]) vm::SeedRnd(*seeds[i]);
        if (!document.RunOperation(op, given[i])) return 1;
    }
    return SaveOutput(*document.Image(), args, args.Files[1]);
}

int List() {
    // Keys stay as they are: they are what the user types.
    QString text;
    for (const vm::Operation& op : vm::Catalogue()) {
        text += QStringLiteral("%1（%2）%3 [%4]%5\n")
                    .arg(op.Key, op.Function, op.Title, op.Family,
                         op.Run ? QString() : QStringLiteral(" 尚未实现"));
        auto label = [&op](const QString& key, const QString& unit = QString()) {
            return op.LabelOf(key) +
                   (unit.isEmpty() ? QString() : QStringLiteral("（") + unit + QStringLiteral("）"));
        };
        for (const auto& s : op.Sliders) {
            text += QStringLiteral("  %1=%2..%3 默认 %4").arg(s.Key).arg(s.Min).arg(s.Max).arg(s.Default);
            if (s.MaxOnRgba32) text += QStringLiteral("（RGBA 32 图像上至 %1）").arg(*s.MaxOnRgba32);
            if (s.RangeByPicture != vm::SliderSpec::FixedRange) text += QStringLiteral("（范围随图像大小）");
            text += QStringLiteral("  %1\n").arg(label(s.Key, s.Unit));
        }
        if (op.Dial)
            text += QStringLiteral("  %1=%2..%3 默认 %4  %5\n")
                        .arg(op.Dial->Key)
                        .arg(op.Dial->Min)
                        .arg(op.Dial->Max)
                        .arg(op.Dial->Default)
                        .arg(label(op.Dial->Key, op.Dial->Unit));
        for (const auto& c : op.Choices) {
            QStringList choices;
            for (qsizetype i = 0; i < c.Choices.size(); ++i)
                choices << QStringLiteral("%1 %2").arg(i).arg(c.Choices[i]);
            text += QStringLiteral("  %1=%2 默认 %3  %4\n")
                        .arg(c.Key, choices.join(QStringLiteral("、")))
                        .arg(c.Default)
                        .arg(label(c.Key));
        }
        for (const auto& c : op.Checks)
            text +=
                QStringLiteral("  %1=0|1 默认 %2  %3\n").arg(c.Key).arg(c.Default ? 1 : 0).arg(label(c.Key));
        for (const auto& t : op.Texts)
            text += QStringLiteral("  %1=文本 默认“%2”  %3\n").arg(t.Key, t.Default, label(t.Key));
    }
    Out(text);
    return 0;
}

} // namespace

int RunCatalogueCommand(const Arguments& args) {
    if (args.Command == QLatin1String("select")) return Select(args);
    if (args.Command == QLatin1String("apply")) return Apply(args);
    return List();
}

} // namespace vmcli
