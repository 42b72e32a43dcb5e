#include "formats/ParserCommon.h"

#include "core/Numeric.h"

#include <QFile>
#include <QPainter>
#include <QSaveFile>

#include <new>

namespace vm {

ThumbBox FitThumbBox(int32_t w, int32_t h, int32_t boxW, int32_t boxH) {
    ThumbBox t;
    if (w <= boxW && h <= boxH) {
        t.Width = w;
        t.Height = h;
    } else {
        const double rx = static_cast<double>(boxW) / w;
        const double ry = static_cast<double>(boxH) / h;
        if (rx < ry) {
            t.Width = boxW;
            t.Height = RoundHalfEven(h * rx);
        } else {
            t.Height = boxH;
            t.Width = RoundHalfEven(w * ry);
        }
    }
    t.Left = (boxW - t.Width) / 2;
    t.Top = (boxH - t.Height) / 2;
    return t;
}

int32_t GetBitDepth(uint32_t format) {
    return BitsPerPixel(format);
}

uint32_t GetPixelFormatOfDepth(int32_t depth) {
    switch (depth) {
    case 1:
        return PixelFormat1bppIndexed;
    case 4:
        return PixelFormat4bppIndexed;
    case 8:
        return PixelFormat8bppIndexed;
    case 16:
        return PixelFormat16bppRGB555;
    case 24:
        return PixelFormat24bppRGB;
    case 32:
        return PixelFormat32bppARGB;
    default:
        return 0;
    }
}

bool IsGrayRamp(const PaletteData& palette) {
    const uint32_t n = std::min<uint32_t>(palette.Count, 256);
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t* e = palette.Entry(static_cast<int>(i));
        if (e[0] != i || e[1] != i || e[2] != i) return false;
    }
    return true;
}

bool ReadWholeFile(const QString& file, QByteArray& bytes) {
    bytes.clear();
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) return false;
    bytes = f.readAll();
    return true;
}

QByteArray ReadFileHead(const QString& file, qint64 count) {
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return f.read(count);
}

bool WriteFileAtomically(const QString& file, const QByteArray& bytes) {
    QSaveFile f(file);
    if (!f.open(QIODevice::WriteOnly)) return false;
    if (f.write(bytes) != bytes.size()) {
        f.cancelWriting();
        return false;
    }
    return f.commit();
}

bool NewBlock(CImage& image, int32_t width, int32_t height, int32_t bitCount, int32_t backColor) {
    if (image.CreateNewImage(width, height, bitCount, backColor)) return true;
    const int64_t stride = StrideOf(width, bitCount);
    const bool possible = width > 0 && height > 0 && GetPixelFormatOfDepth(bitCount) != 0 &&
                          stride <= MaxBlockBytes && stride * height <= MaxBlockBytes;
    if (possible) throw std::bad_alloc();
    return false;
}

QString TooLargeMessage(const QString& family, int64_t limit) {
    return QStringLiteral("图像太大，无法保存为 %1 格式: 它的宽度和高度最多为 %2 像素。")
        .arg(family)
        .arg(limit);
}

bool ThumbAndInfo(const std::function<bool(CImage&)>& load, QPainter* graphics, int32_t& width,
                  int32_t& height, int32_t& bitDepth) {
    CImage image;
    if (!load(image)) return false;
    width = image.Width();
    height = image.Height();
    const ThumbBox box = FitThumbBox(width, height, 128, 128);
    if (graphics)
        image.Render(*graphics, box.Left, box.Top, box.Width, box.Height, 0, 0, 0, 0,
                     InterpolationHighQualityBicubic, PixelOffsetHalf, 255, true);
    bitDepth = GetBitDepth(image.RawPixelFormat);
    image.DisposeResource();
    return true;
}

} // namespace vm
