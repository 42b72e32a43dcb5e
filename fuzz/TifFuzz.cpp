// Fuzz target of the TIFF parser. Every page of what loads must load, and the
// first must save uncompressed and load back to the same pixels.
#include "formats/ParserCommon.h"
#include "formats/TifParser.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

// The first directory's width and length may ask for gigabytes: memory, not
// safety. Only short and long values of the two tags are looked at.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    ByteReader r(data, size);
    r.Seek(4);
    r.Seek(r.U32());
    const uint16_t count = r.U16();
    int64_t w = 0, h = 0;
    for (uint16_t i = 0; i < count && !r.AtEnd(); ++i) {
        const uint16_t tag = r.U16(), type = r.U16();
        r.U32();
        const uint32_t value = type == 3 ? r.U16() : r.U32();
        if (type == 3) r.U16();
        if (tag == 256) w = value;
        if (tag == 257) h = value;
    }
    return static_cast<double>(w) * static_cast<double>(h) > (1 << 22);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vmfuzz::Files files("tif");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    TifParser parser;
    const int32_t pages = parser.GetFrameCount(input);
    int32_t page = 0;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image, page)) return 0;
    vmfuzz::Check(pages >= 1);
    if (!parser.SavePictureToFile(output, image, TiffCompressionNone)) return 0;
    CImage back;
    int32_t first = 0;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back, first));
    vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    vmfuzz::Check(back.PixelFormat == image.PixelFormat);
    const int bits = GetBitDepth(image.PixelFormat);
    for (int32_t y = 0; y < image.Height(); ++y)
        vmfuzz::Check(std::memcmp(back.Row(y), image.Row(y), static_cast<size_t>(image.Width()) * bits / 8) == 0);
    return 0;
}
