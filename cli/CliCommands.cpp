#include "CliCommands.h"

#include "core/AppSettings.h"
#include "core/FileFamilies.h"
#include "core/Image.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "formats/ParserRegistry.h"

#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>

namespace vmcli {

namespace {

const QString NotThatKind = QStringLiteral("无法完成请求，因为他不是所指类型的文档.");

void Print(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
}

void Usage(const QString& text) {
    std::fprintf(stderr, "vellumark-cli: %s\n", text.toUtf8().constData());
}

QString Hex(uint32_t v) {
    return QStringLiteral("0x") + QString::number(v, 16).toUpper();
}

// The settings an --option may change for one run, besides the writer's own
// options: how files are read and named.
struct SettingOption {
    const char* Key;
    const char* Label;
    bool vm::AppSettings::*Field;
};
const SettingOption SettingOptions[] = {
    {"CheckBmp32or16Alpha", "检查 32 位和 16 位 BMP 的透明通道", &vm::AppSettings::CheckBmp32or16Alpha},
    {"IgnoreExif", "忽略 Exif 信息", &vm::AppSettings::IgnoreExif},
    {"UseUpperCase", "文件名使用大写", &vm::AppSettings::UseUpperCase},
};

// An option value as an integer; a switch also takes "true" and "false".
bool OptionInt(const QString& text, int& v) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true")) {
        v = 1;
        return true;
    }
    if (t == QLatin1String("false")) {
        v = 0;
        return true;
    }
    bool ok = false;
    v = t.toInt(&ok);
    return ok;
}

QString Allowed(const vm::SaveOptionSpec& declared) {
    switch (declared.Type) {
    case vm::SaveOptionSpec::Switch:
        return QStringLiteral("0 或 1");
    case vm::SaveOptionSpec::Choice: {
        QStringList values;
        for (const vm::SaveOptionChoice& c : declared.Choices)
            values << QStringLiteral("%1 (%2)").arg(c.Value).arg(c.Caption);
        return QStringLiteral("以下之一: ") + values.join(QStringLiteral(", "));
    }
    default:
        return QStringLiteral("%1 到 %2 之间的整数").arg(declared.Min).arg(declared.Max);
    }
}

int OutputFormat(const Arguments& args, const QString& file) {
    return args.Format.value_or(FormatOfExtension(file));
}

// The system's message for an open or a save that did not succeed.
void Report(const vm::FileOutcome& outcome, const QString& file, bool saving) {
    switch (outcome.Result) {
    case vm::FileResult::Done:
        return;
    case vm::FileResult::Missing:
        vm::MessageBox((saving ? QStringLiteral("保存文件失败: ") : QStringLiteral("找不到文件: ")) + file);
        return;
    case vm::FileResult::Unrecognised:
        vm::MessageBox(NotThatKind);
        return;
    case vm::FileResult::OutOfMemory:
        vm::MessageBox(vm::OutOfMemoryMessage());
        return;
    case vm::FileResult::NoWriter:
        vm::MessageBox(QStringLiteral("不支持保存为此格式."));
        return;
    case vm::FileResult::Refused:
    case vm::FileResult::WriteFailed:
        if (!outcome.Message.isEmpty()) vm::MessageBox(outcome.Message);
        vm::MessageBox(QStringLiteral("保存文件失败: ") + file);
        return;
    }
}

int Info(const Arguments& args) {
    vm::CImage image;
    if (!LoadInput(args.Files[0], args.Frame, image)) return 1;
    int frames = 1;
    if (const vm::FileFamily* family = vm::ParserFor(image.RawImageFormat))
        frames = vm::FamilyFrameCount(*family, args.Files[0]);
    QString out;
    QTextStream s(&out);
    s << "Width: " << image.Width() << "\n";
    s << "Height: " << image.Height() << "\n";
    s << "PixelFormat: " << Hex(image.PixelFormat) << "\n";
    s << "RawImageFormat: " << image.RawImageFormat << "\n";
    s << "RawPixelFormat: " << Hex(image.RawPixelFormat) << "\n";
    s << "Resolution: " << QString::number(image.Resolution, 'g', 9) << "\n";
    s << "PaletteCount: " << (vm::BitsPerPixel(image.PixelFormat) <= 8 ? image.Palette().Count : 0) << "\n";
    s << "FrameCount: " << frames << "\n";
    s.flush();
    Print(out);
    return 0;
}

int Convert(const Arguments& args) {
    // Everything about the output is checked before anything is loaded: a
    // wrong usage touches nothing.
    if (const int usage = CheckOutput(args, args.Files[1])) return usage;
    vm::CImage image;
    if (!LoadInput(args.Files[0], args.Frame, image)) return 1;
    return SaveOutput(image, args, args.Files[1]);
}

} // namespace

bool LoadInput(const QString& file, int frame, vm::CImage& image) {
    int32_t opened = frame;
    const vm::FileOutcome outcome = vm::OpenPicture(file, image, opened);
    Report(outcome, file, false);
    return outcome.Ok();
}

bool ApplyOptions(int format, const QMap<QString, QString>& options, vm::SaveOptions& out, QString& error) {
    const vm::FileFamily* family = vm::ParserFor(format);
    for (auto it = options.begin(); it != options.end(); ++it) {
        const QString& key = it.key();
        int v = 0;
        const bool number = OptionInt(it.value(), v);
        if (const vm::SaveOptionSpec* declared = family ? family->Option(key) : nullptr) {
            if (!number || !declared->Accepts(v)) {
                error = QStringLiteral("选项 %1 (%2) 的值必须是%3: %4")
                            .arg(key, declared->Label, Allowed(*declared), it.value());
                return false;
            }
            out.Set(key, v);
            continue;
        }
        const auto setting =
            std::find_if(std::begin(SettingOptions), std::end(SettingOptions),
                         [&](const SettingOption& s) { return key == QLatin1String(s.Key); });
        if (setting == std::end(SettingOptions)) {
            error = QStringLiteral("此格式没有选项: ") + key;
            return false;
        }
        if (!number || (v != 0 && v != 1)) {
            error = QStringLiteral("选项 %1 (%2) 的值必须是 0 或 1: %3")
                        .arg(key, QString::fromUtf8(setting->Label), it.value());
            return false;
        }
        vm::Globals().*(setting->Field) = v != 0;
    }
    return true;
}

int CheckOutput(const Arguments& args, const QString& file) {
    const int format = OutputFormat(args, file);
    if (format == 0) {
        Usage(QStringLiteral("无法判断 %1 的文件格式，请用 --format 指定格式代码").arg(file));
        return 2;
    }
    vm::SaveOptions probe;
    QString error;
    if (!ApplyOptions(format, args.Options, probe, error)) {
        Usage(error);
        return 2;
    }
    return 0;
}

int SaveOutput(vm::CImage& image, const Arguments& args, const QString& file) {
    const int format = OutputFormat(args, file);
    const vm::FileFamily* family = vm::ParserFor(format);
    if (format < 1 || format > 24 || !family || !family->Save) {
        vm::MessageBox(QStringLiteral("不支持保存为此格式: ") + vm::GetExtensionList(format));
        return 1;
    }
    // Within a family the file's own way of storing is kept unless overridden;
    // the declarations give the rest.
    vm::SaveOptions given;
    QString error;
    ApplyOptions(format, args.Options, given, error);
    const QString path = vm::SavePathFor(file);
    const vm::SaveOptions options = vm::ResolveSaveOptions(*family, image, given, false);
    const vm::FileOutcome outcome = vm::WritePicture(*family, path, image, options);
    Report(outcome, path, true);
    return outcome.Ok() ? 0 : 1;
}

int FormatOfExtension(const QString& file) {
    const QString ext = QFileInfo(file).suffix().toLower();
    if (ext.isEmpty()) return 0;
    if (ext == QLatin1String("rle")) return vm::RawBmp;
    if (ext == QLatin1String("wbmp")) return vm::RawWbm;
    for (int code = 1; code <= 25; ++code)
        if (vm::GetExtensionList(code).split(QLatin1Char(',')).contains(ext)) return code;
    return 0;
}

int RunCommand(const Arguments& args) {
    try {
        if (args.Command == QLatin1String("info")) return Info(args);
        if (args.Command == QLatin1String("convert")) return Convert(args);
        return RunCatalogueCommand(args);
    } catch (const std::bad_alloc&) {
        // Whatever was under way is dropped whole; nothing was written, since
        // files are written only when complete.
        vm::MessageBox(vm::OutOfMemoryMessage());
        return 1;
    }
}

} // namespace vmcli
