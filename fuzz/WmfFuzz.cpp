// Fuzz target of the WMF parser. What loads must save as one bitmap transfer
// and load back to the same colours.
#include "formats/ParserCommon.h"
#include "formats/WmfParser.h"

#include <QFile>
#include <QGuiApplication>
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

// A placeable box at a few units an inch, or the plain kind's size words, may
// ask for a picture of hundreds of megabytes: memory, not safety.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    ByteReader r(data, size);
    if (r.U32() == 0x9AC6CDD7) {
        r.Seek(6);
        const int64_t left = r.I16(), top = r.I16(), right = r.I16(), bottom = r.I16(), inch = r.U16();
        if (inch == 0) return false;
        return std::abs(right - left) * 96 / inch * std::abs(bottom - top) * 96 / inch > (int64_t{1} << 22);
    }
    r.Seek(32);
    const int64_t h = r.I16(), w = r.I16();
    return w * h > (int64_t{1} << 22);
}

void Check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Text records need the font database of a GUI application; no display.
    static int argc = 1;
    static char name[] = "fuzz_wmf";
    static char* argv[] = {name, nullptr};
    static QGuiApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
    static QTemporaryDir dir;
    static const QString input = dir.filePath("input.wmf");
    static const QString output = dir.filePath("output.wmf");
    if (DeclaresHugePicture(data, size) || !WriteInput(input, data, size)) return 0;

    WmfParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    if (image.Width() > 32767 || image.Height() > 32767) return 0;
    Check(parser.SavePictureToFile(output, image));
    CImage back;
    Check(parser.LoadPictureFromFile(output, back));
    Check(back.Width() == image.Width() && back.Height() == image.Height());
    const int bytes = GetBitDepth(image.PixelFormat) / 8;
    for (int32_t y = 0; y < image.Height(); ++y)
        for (int32_t x = 0; x < image.Width(); ++x)
            Check(std::memcmp(back.Row(y) + 3 * x, image.Row(y) + bytes * x, 3) == 0);
    return 0;
}
