// Fuzz target of the WMF parser. What loads must save as one bitmap transfer
// and load back to the same colours.
#include "formats/ParserCommon.h"
#include "formats/WmfParser.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vmfuzz::EnsureGuiApplication();
    static const vmfuzz::Files files("wmf");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    WmfParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    if (image.Width() > 32767 || image.Height() > 32767) return 0;
    vmfuzz::Check(parser.SavePictureToFile(output, image));
    CImage back;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back));
    vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    const int bytes = GetBitDepth(image.PixelFormat) / 8;
    for (int32_t y = 0; y < image.Height(); ++y)
        for (int32_t x = 0; x < image.Width(); ++x)
            vmfuzz::Check(std::memcmp(back.Row(y) + 3 * x, image.Row(y) + bytes * x, 3) == 0);
    return 0;
}
