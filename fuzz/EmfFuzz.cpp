// Fuzz target of the EMF parser. What loads must save as one bitmap transfer
// and load back opaque with the same colours.
#include "formats/EmfParser.h"
#include "formats/ParserCommon.h"

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

// The frame may ask for a picture of hundreds of megabytes: memory, not safety.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    ByteReader r(data, size);
    r.Seek(24);
    const int64_t left = r.I32(), top = r.I32(), right = r.I32(), bottom = r.I32();
    return (right - left) / 26 * ((bottom - top) / 26) > (int64_t{1} << 22);
}

void Check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Text records need the font database of a GUI application; no display.
    static int argc = 1;
    static char name[] = "fuzz_emf";
    static char* argv[] = {name, nullptr};
    static QGuiApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
    static QTemporaryDir dir;
    static const QString input = dir.filePath("input.emf");
    static const QString output = dir.filePath("output.emf");
    if (DeclaresHugePicture(data, size) || !WriteInput(input, data, size)) return 0;

    EmfParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    Check(image.PixelFormat == PixelFormat32bppARGB);
    Check(parser.SavePictureToFile(output, image));
    CImage back;
    Check(parser.LoadPictureFromFile(output, back));
    Check(back.Width() == image.Width() && back.Height() == image.Height());
    for (int32_t y = 0; y < image.Height(); ++y)
        for (int32_t x = 0; x < image.Width(); ++x) {
            Check(std::memcmp(back.Row(y) + 4 * x, image.Row(y) + 4 * x, 3) == 0);
            Check(back.Row(y)[4 * x + 3] == 255);
        }
    return 0;
}
