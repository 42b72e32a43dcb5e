// Fuzz target of the PNG parser. Whatever loads must save and load back to the
// same format and the same pixels.
#include "formats/ParserCommon.h"
#include "formats/PngParser.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

bool WriteInput(const QString& path, const uint8_t* data, size_t size) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           f.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size)) ==
               static_cast<qint64>(size);
}

// IHDR may ask for gigabytes of pixels: memory, not safety.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    if (size < 24) return false;
    ByteReader r(data + 16, 8);
    const int64_t w = r.U32BE(), h = r.U32BE();
    return static_cast<double>(w) * static_cast<double>(h) > (1 << 22);
}

void Check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    static const QString input = dir.filePath("input.png");
    static const QString output = dir.filePath("output.png");
    if (DeclaresHugePicture(data, size) || !WriteInput(input, data, size)) return 0;

    PngParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    Check(parser.SavePictureToFile(output, image));
    CImage back;
    Check(parser.LoadPictureFromFile(output, back));
    Check(back.Width() == image.Width() && back.Height() == image.Height());
    // A palette that happens to be a grey ramp opens as grey either way.
    Check(GetBitDepth(back.PixelFormat) == GetBitDepth(image.PixelFormat));
    const int bits = GetBitDepth(image.PixelFormat);
    const size_t rowBytes = (static_cast<size_t>(image.Width()) * bits + 7) / 8;
    for (int32_t y = 0; y < image.Height(); ++y) {
        // Only whole pixels: the padding bits of the last byte are not stored.
        const size_t whole = bits < 8 ? static_cast<size_t>(image.Width()) * bits / 8 : rowBytes;
        Check(std::memcmp(back.Row(y), image.Row(y), whole) == 0);
    }
    return 0;
}
