// Fuzz target of the GIF parser. Every frame of what loads must load, and an
// indexed frame must save and load back to the same indices.
#include "formats/GifParser.h"
#include "formats/ParserCommon.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

// The logical screen or an image descriptor may ask for gigabytes: memory, not
// safety. Descriptors are found by their separator, which errs on the safe side.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    if (size < 10) return false;
    ByteReader screen(data + 6, 4);
    const int64_t sw = screen.U16(), sh = screen.U16();
    if (sw * sh > (int64_t{1} << 22)) return true;
    for (size_t i = 10; i + 9 < size; ++i) {
        if (data[i] != 0x2C) continue;
        ByteReader r(data + i + 5, 4);
        const int64_t w = r.U16(), h = r.U16();
        if (w * h > (int64_t{1} << 22)) return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vmfuzz::Files files("gif");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    GifParser parser;
    const int32_t frames = parser.GetFrameCount(input);
    int32_t frame = -1;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image, frame)) {
        vmfuzz::Check(frames == 0);
        return 0;
    }
    vmfuzz::Check(frame == frames - 1);
    for (int32_t k = 0; k < frames && k < 8; ++k) {
        CImage other;
        int32_t f = k;
        vmfuzz::Check(parser.LoadPictureFromFile(input, other, f) && f == k);
    }
    if (image.PixelFormat != PixelFormat8bppIndexed) return 0;
    vmfuzz::Check(parser.SavePictureToFile(output, image));
    CImage back;
    int32_t first = 0;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back, first));
    for (int32_t y = 0; y < image.Height(); ++y)
        vmfuzz::Check(std::memcmp(back.Row(y), image.Row(y), static_cast<size_t>(image.Width())) == 0);
    return 0;
}
