#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <cstdlib>
#include <random>

namespace vmtest {

QString TempDir() {
    static QTemporaryDir dir;
    return dir.path();
}

int Run(const QString& program, const QStringList& args, QByteArray* out, QByteArray* err) {
    QProcess p;
    p.start(program, args);
    if (!p.waitForStarted(10000)) return -1;
    p.closeWriteChannel();
    if (!p.waitForFinished(120000)) {
        p.kill();
        return -1;
    }
    if (out) *out = p.readAllStandardOutput();
    if (err) *err = p.readAllStandardError();
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QImage DecodeWithMagick(const QString& file) {
    QByteArray out;
    // PAM keeps alpha; -depth 8 brings 16-bit channels down the same way for all.
    if (Run("convert", {file + "[0]", "-depth", "8", "-alpha", "on", "pam:-"}, &out) != 0) return {};
    // Parse the PAM header.
    int w = 0, h = 0, depth = 0;
    qsizetype pos = 0;
    while (pos < out.size()) {
        const qsizetype nl = out.indexOf('\n', pos);
        if (nl < 0) return {};
        const QByteArray line = out.mid(pos, nl - pos).trimmed();
        pos = nl + 1;
        if (line.startsWith("WIDTH"))
            w = line.mid(5).trimmed().toInt();
        else if (line.startsWith("HEIGHT"))
            h = line.mid(6).trimmed().toInt();
        else if (line.startsWith("DEPTH"))
            depth = line.mid(5).trimmed().toInt();
        else if (line == "ENDHDR")
            break;
    }
    if (w <= 0 || h <= 0 || depth < 1 || depth > 4 || out.size() - pos < qsizetype(w) * h * depth) return {};
    QImage img(w, h, QImage::Format_RGBA8888);
    const auto* p = reinterpret_cast<const uint8_t*>(out.constData() + pos);
    for (int y = 0; y < h; ++y) {
        uint8_t* d = img.scanLine(y);
        for (int x = 0; x < w; ++x, p += depth) {
            const bool grey = depth <= 2;
            d[4 * x] = p[0];
            d[4 * x + 1] = grey ? p[0] : p[1];
            d[4 * x + 2] = grey ? p[0] : p[2];
            d[4 * x + 3] = depth == 2 ? p[1] : (depth == 4 ? p[3] : 255);
        }
    }
    return img;
}

QImage ToRgba(const vm::CImage& image, bool paletteAlpha) {
    using namespace vm;
    QImage out(image.Width(), image.Height(), QImage::Format_RGBA8888);
    const PaletteData& pal = image.Palette();
    for (int y = 0; y < image.Height(); ++y) {
        const uint8_t* s = image.Row(y);
        uint8_t* d = out.scanLine(y);
        for (int x = 0; x < image.Width(); ++x) {
            int r = 0, g = 0, b = 0, a = 255;
            auto entry = [&](int i) {
                const uint8_t* e = pal.Entry(i);
                b = e[0];
                g = e[1];
                r = e[2];
                if (paletteAlpha) a = e[3];
            };
            switch (image.PixelFormat) {
            case PixelFormat1bppIndexed:
                entry((s[x >> 3] >> (7 - (x & 7))) & 1);
                break;
            case PixelFormat4bppIndexed:
                entry((x & 1) ? (s[x >> 1] & 15) : (s[x >> 1] >> 4));
                break;
            case PixelFormat8bppIndexed:
                entry(s[x]);
                break;
            case PixelFormat8bppGray:
                r = g = b = s[x];
                break;
            case PixelFormat16bppRGB555: {
                const int v = s[2 * x] | (s[2 * x + 1] << 8);
                r = ((v >> 10) & 31) * 255 / 31;
                g = ((v >> 5) & 31) * 255 / 31;
                b = (v & 31) * 255 / 31;
                break;
            }
            case PixelFormat24bppRGB:
                b = s[3 * x];
                g = s[3 * x + 1];
                r = s[3 * x + 2];
                break;
            default:
                b = s[4 * x];
                g = s[4 * x + 1];
                r = s[4 * x + 2];
                a = s[4 * x + 3];
                break;
            }
            d[4 * x] = static_cast<uint8_t>(r);
            d[4 * x + 1] = static_cast<uint8_t>(g);
            d[4 * x + 2] = static_cast<uint8_t>(b);
            d[4 * x + 3] = static_cast<uint8_t>(a);
        }
    }
    return out;
}

long long CountDifferences(const QImage& a, const QImage& b, int tolerance, bool compareAlpha) {
    if (a.size() != b.size()) return -1;
    const QImage ca = a.convertToFormat(QImage::Format_RGBA8888);
    const QImage cb = b.convertToFormat(QImage::Format_RGBA8888);
    long long n = 0;
    for (int y = 0; y < ca.height(); ++y) {
        const uint8_t* p = ca.constScanLine(y);
        const uint8_t* q = cb.constScanLine(y);
        for (int x = 0; x < ca.width(); ++x) {
            for (int c = 0; c < (compareAlpha ? 4 : 3); ++c) {
                if (std::abs(p[4 * x + c] - q[4 * x + c]) > tolerance) {
                    ++n;
                    break;
                }
            }
        }
    }
    return n;
}

std::unique_ptr<vm::CImage> RandomImage(int width, int height, int bitCount, unsigned seed) {
    auto img = std::make_unique<vm::CImage>();
    if (!img->CreateNewImage(width, height, bitCount)) return img;
    std::mt19937 gen(seed);
    for (int y = 0; y < height; ++y) {
        uint8_t* row = img->Row(y);
        const int bytes = (width * bitCount + 7) / 8;
        for (int i = 0; i < bytes; ++i)
            row[i] = static_cast<uint8_t>(gen());
    }
    if (bitCount <= 8) {
        vm::PaletteData pal;
        pal.Count = 1u << bitCount;
        pal.Flags = 0;
        for (uint32_t i = 0; i < pal.Count; ++i)
            pal.SetEntry(static_cast<int>(i), gen() & 255, gen() & 255, gen() & 255, 255);
        img->SetPaletteData(pal);
        if (bitCount == 8) img->PixelFormat = vm::PixelFormat8bppIndexed;
    }
    return img;
}

ConfigHome::ConfigHome() : hadOld_(qEnvironmentVariableIsSet("XDG_CONFIG_HOME")) {
    old_ = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(Dir.path()));
}

ConfigHome::~ConfigHome() {
    if (hadOld_)
        qputenv("XDG_CONFIG_HOME", old_);
    else
        qunsetenv("XDG_CONFIG_HOME");
}

void ImageEventLog::ProgressStart(bool restrain, const QString& name, int kind) {
    Lines << QStringLiteral("start %1 %2 %3").arg(restrain).arg(name).arg(kind);
}

void ImageEventLog::ProgressEnd(bool restrain, const QString& name, int kind, const QString& extra) {
    Lines << QStringLiteral("end %1 %2 %3").arg(restrain).arg(name).arg(kind) +
                 (extra.isEmpty() ? QString() : u' ' + extra);
}

void SetMask(vm::CSelection& sel, int w, int h, const std::function<int(int, int)>& weight) {
    sel.CreateNewSelection(w, h);
    sel.RestrainEvent = true;
    sel.SetUseDefaultSetting(false);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            sel.Row(y)[x] = static_cast<uint8_t>(weight(x, y));
    sel.UpdateSelectionRegion();
    sel.RestrainEvent = false;
}

} // namespace vmtest
