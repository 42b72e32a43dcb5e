#include "CliCommands.h"

#include "core/AppSettings.h"
#include "core/FileFamilies.h"
#include "core/Image.h"
#include "core/MessageBox.h"
#include "formats/ParserRegistry.h"

#include <QFileInfo>
#include <QTextStream>

#include <cstdio>

namespace vmcli {

namespace {

const QString NotThatKind = QStringLiteral("无法完成请求，因为他不是所指类型的文档.");

void Print(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
}

QString Hex(uint32_t v) { return QStringLiteral("0x") + QString::number(v, 16).toUpper(); }

} // namespace

bool LoadInput(const QString& file, int frame, vm::CImage& image) {
    if (!QFileInfo(file).isFile()) {
        vm::MessageBox(QStringLiteral("找不到文件: ") + file);
        return false;
    }
    if (!image.LoadPictureFromFile(file, frame)) {
        vm::MessageBox(NotThatKind);
        return false;
    }
    return true;
}

namespace {

int Info(const Arguments& args) {
    vm::CImage image;
    if (!LoadInput(args.Files[0], args.Frame, image)) return 1;
    int frames = 1;
    if (const vm::ParserEntry* p = vm::ParserFor(image.RawImageFormat); p && p->FrameCount)
        frames = p->FrameCount(args.Files[0]);
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

// Reads an option value as an integer or a Boolean ("1", "0", "true", "false").
static bool OptionInt(const QString& text, int& v) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true")) v = 1;
    else if (t == QLatin1String("false")) v = 0;
    else {
        bool ok = false;
        v = t.toInt(&ok);
        return ok;
    }
    return true;
}

bool ApplyOptions(const QMap<QString, QString>& options, vm::SaveOptions& o, QString& error) {
    for (auto it = options.begin(); it != options.end(); ++it) {
        int v = 0;
        if (!OptionInt(it.value(), v)) {
            error = QStringLiteral("option ") + it.key() + QStringLiteral(" needs a number");
            return false;
        }
        const QString& k = it.key();
        if (k == QLatin1String("FileSystem")) o.FileSystem = v;
        else if (k == QLatin1String("FlipRow")) o.FlipRow = v != 0;
        else if (k == QLatin1String("Rle")) o.Compress = v != 0;
        else if (k == QLatin1String("Bmp16Format")) o.Bmp16Format = v;
        else if (k == QLatin1String("Quality")) o.Quality = v;
        else if (k == QLatin1String("Compression")) o.Compression = v;
        else if (k == QLatin1String("CheckBmp32or16Alpha")) vm::Globals().CheckBmp32or16Alpha = v != 0;
        else if (k == QLatin1String("IgnoreExif")) vm::Globals().IgnoreExif = v != 0;
        else if (k == QLatin1String("UseUpperCase")) vm::Globals().UseUpperCase = v != 0;
        else {
            error = QStringLiteral("unknown option: ") + k;
            return false;
        }
    }
    return true;
}


static int OutputFormat(const Arguments& args, const QString& file) { return args.Format.value_or(FormatOfExtension(file)); }

int CheckOutput(const Arguments& args, const QString& file) {
    const int format = OutputFormat(args, file);
    if (format == 0) {
        std::fprintf(stderr, "vellumark-cli: cannot tell the family of %s; give --format CODE\n",
                     file.toUtf8().constData());
        return 2;
    }
    vm::SaveOptions probe;
    QString error;
    if (!ApplyOptions(args.Options, probe, error)) {
        std::fprintf(stderr, "vellumark-cli: %s\n", error.toUtf8().constData());
        return 2;
    }
    return 0;
}

int SaveOutput(vm::CImage& image, const Arguments& args, const QString& file) {
    const int format = OutputFormat(args, file);
    // Within a family the file's own way of storing is kept unless overridden.
    vm::SaveOptions options = image.RawImageFormat == format ? vm::SaveOptions::Remembered(image) : vm::SaveOptions();
    QString error;
    ApplyOptions(args.Options, options, error);
    const vm::ParserEntry* writer = vm::ParserFor(format);
    if (format < 1 || format > 24 || !writer || !writer->Save) {
        vm::MessageBox(QStringLiteral("不支持保存为此格式: ") + vm::GetExtensionList(format));
        return 1;
    }
    if (!image.SavePictureToFile(file, format, options)) {
        vm::MessageBox(QStringLiteral("保存文件失败: ") + file);
        return 1;
    }
    return 0;
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
    if (args.Command == QLatin1String("info")) return Info(args);
    if (args.Command == QLatin1String("convert")) return Convert(args);
    return RunCatalogueCommand(args);
}

} // namespace vmcli
