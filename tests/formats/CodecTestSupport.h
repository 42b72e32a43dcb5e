#pragma once
// Helpers of the tests of the codec-backed parsers: files made by other
// programs (ImageMagick, exiftool, pstoedit, files shipped in Debian packages)
// and their decodings. A missing program or sample fails the test that needs
// it: these tests never skip.
#include "core/Image.h"
#include "formats/ParserCommon.h"
#include "support/TestSupport.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <ostream>
#include <type_traits>

// Readable QString values in failure messages.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace vmtest {

inline QString TempFile(const QString& name) {
    return TempDir() + "/" + name;
}

// A sample of libsdl2-image-tests.
inline QString SdlSample(const QString& name) {
    return QStringLiteral("/usr/libexec/installed-tests/SDL2_image/") + name;
}

inline bool WriteBytes(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

inline QByteArray ReadBytes(const QString& path) {
    QByteArray bytes;
    vm::ReadWholeFile(path, bytes);
    return bytes;
}

// Bytes with With written over them from At on.
inline QByteArray Patched(QByteArray bytes, qsizetype at, const QByteArray& with) {
    return bytes.replace(at, with.size(), with);
}

// Value as four little-endian bytes.
inline QByteArray Le32(uint32_t value) {
    vm::ByteWriter w;
    w.U32(value);
    return w.Data();
}

// A random picture of Bits; with Grey an 8-bit one in the grey format.
inline std::unique_ptr<vm::CImage> RandomPicture(int w, int h, int bits, unsigned seed, bool grey) {
    auto image = RandomImage(w, h, bits, seed);
    if (!grey) return image;
    auto out = std::make_unique<vm::CImage>();
    out->CreateNewImage(w, h, 8);
    for (int y = 0; y < h; ++y)
        std::memcpy(out->Row(y), image->Row(y), w);
    return out;
}

// File as Parser alone reads it (Frame for the parsers of several pictures);
// null when it refuses.
template <typename Parser, typename... Frame>
std::unique_ptr<vm::CImage> LoadWith(const QString& file, Frame... frame) {
    auto image = std::make_unique<vm::CImage>();
    if (!Parser().LoadPictureFromFile(file, *image, frame...)) return nullptr;
    return image;
}

// Bytes as Parser reads them from a file of their own.
template <typename Parser, typename... Frame>
std::unique_ptr<vm::CImage> LoadBytesWith(const QByteArray& bytes, Frame... frame) {
    return WriteBytes(TempFile("loaded.bin"), bytes) ? LoadWith<Parser>(TempFile("loaded.bin"), frame...)
                                                     : nullptr;
}

// Whether Parser refuses File and leaves the image it was given empty; with
// no parser (void) the whole chain of parsers must refuse it.
template <typename Parser, typename... Frame> bool Refuses(const QString& file, Frame... frame) {
    vm::CImage image;
    bool loaded = false;
    if constexpr (std::is_void_v<Parser>)
        loaded = image.LoadPictureFromFile(file);
    else
        loaded = Parser().LoadPictureFromFile(file, image, frame...);
    return !loaded && image.Pointer() == nullptr;
}
template <typename Parser, typename... Frame> bool Refuses(const QByteArray& bytes, Frame... frame) {
    return WriteBytes(TempFile("refused.bin"), bytes) && Refuses<Parser>(TempFile("refused.bin"), frame...);
}

// The open dialog's preview of File by Parser: "<width>x<height> <depth>
// rows <first>-<last>" with the rows of the 128 x 128 box's middle column that
// it painted; empty when the parser refused the file.
template <typename Parser> QString ThumbOf(const QString& file) {
    QImage box(128, 128, QImage::Format_ARGB32);
    box.fill(Qt::transparent);
    int32_t w = 0, h = 0, depth = 0;
    QPainter painter(&box);
    if (!Parser().GetImageThumbAndInfo(file, &painter, w, h, depth)) return {};
    painter.end();
    int first = -1, last = -1;
    for (int y = 0; y < 128; ++y)
        if (qAlpha(box.pixel(64, y))) {
            first = first < 0 ? y : first;
            last = y;
        }
    return QStringLiteral("%1x%2 %3 rows %4-%5").arg(w).arg(h).arg(depth).arg(first).arg(last);
}

// Runs ImageMagick's convert with Args and answers the output file, the last
// argument without a "FORMAT:" prefix, when it was written.
inline QString Magick(const QStringList& args) {
    QByteArray err;
    if (Run("convert", args, nullptr, &err) != 0) {
        ADD_FAILURE() << "convert " << args.join(' ').toStdString() << " failed: " << err.toStdString();
        return {};
    }
    QString out = args.last();
    const qsizetype colon = out.indexOf(':');
    if (colon > 0 && !out.startsWith('/')) out = out.mid(colon + 1);
    if (!QFileInfo::exists(out)) {
        ADD_FAILURE() << "convert wrote no " << out.toStdString();
        return {};
    }
    return out;
}

// One property of a file as ImageMagick's identify reports it.
inline QString Identify(const QString& format, const QString& file) {
    QByteArray out;
    if (Run("identify", {"-format", format, file}, &out) != 0) return QStringLiteral("<identify failed>");
    return QString::fromUtf8(out).trimmed();
}

// Pixels differing from ImageMagick's decoding of the same file by more than
// Tolerance; -1 when the sizes differ or ImageMagick refused the file.
inline long long DifferencesFromMagick(const QString& file, const vm::CImage& image, int tolerance = 0,
                                       bool compareAlpha = true) {
    const QImage reference = DecodeWithMagick(file);
    if (reference.isNull()) return -1;
    return CountDifferences(ToRgba(image), reference, tolerance, compareAlpha);
}

} // namespace vmtest
