// Fuzz target of the JPEG parser. Whatever loads must save, with its
// property items, and load back at the same size.
#include "formats/JpgParser.h"
#include "formats/ParserCommon.h"
#include "FuzzSupport.h"

#include <cstdlib>

using namespace vm;

namespace {

// A frame header may ask for pictures of gigabytes that the decoder would fill
// with grey: memory, not safety, so such inputs are left to the size tests.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    for (size_t i = 0; i + 9 < size; ++i) {
        if (data[i] != 0xFF || data[i + 1] < 0xC0 || data[i + 1] > 0xCF || data[i + 1] == 0xC4 ||
            data[i + 1] == 0xC8 || data[i + 1] == 0xCC)
            continue;
        ByteReader r(data + i + 5, 4);
        const int64_t h = r.U16BE(), w = r.U16BE();
        if (w * h > (int64_t{1} << 22)) return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vmfuzz::Files files("jpg");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    JpgParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    vmfuzz::Check(static_cast<int32_t>(ParsePropertyBuffer(image.PropertyBuffer()).size()) == image.PropertyCount);
    vmfuzz::Check(parser.SavePictureToFile(output, image, 75));
    CImage back;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back));
    vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    vmfuzz::Check(back.PixelFormat == image.PixelFormat);
    return 0;
}
