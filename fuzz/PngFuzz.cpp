// Fuzz target of the PNG parser. Whatever loads must save and load back to the
// same format and the same pixels.
#include "formats/ParserCommon.h"
#include "formats/PngParser.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

// IHDR may ask for gigabytes of pixels: memory, not safety.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    if (size < 24) return false;
    ByteReader r(data + 16, 8);
    const int64_t w = r.U32BE(), h = r.U32BE();
    return static_cast<double>(w) * static_cast<double>(h) > (1 << 22);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vmfuzz::Files files("png");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    PngParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    vmfuzz::Check(parser.SavePictureToFile(output, image));
    CImage back;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back));
    vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    // A palette that happens to be a grey ramp opens as grey either way.
    vmfuzz::Check(GetBitDepth(back.PixelFormat) == GetBitDepth(image.PixelFormat));
    const int bits = GetBitDepth(image.PixelFormat);
    const size_t rowBytes = (static_cast<size_t>(image.Width()) * bits + 7) / 8;
    for (int32_t y = 0; y < image.Height(); ++y) {
        // Only whole pixels: the padding bits of the last byte are not stored.
        const size_t whole = bits < 8 ? static_cast<size_t>(image.Width()) * bits / 8 : rowBytes;
        vmfuzz::Check(std::memcmp(back.Row(y), image.Row(y), whole) == 0);
    }
    return 0;
}
