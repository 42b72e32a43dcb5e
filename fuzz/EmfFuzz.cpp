// Fuzz target of the EMF parser. What loads must save as one bitmap transfer
// and load back opaque with the same colours.
#include "formats/EmfParser.h"
#include "formats/ParserCommon.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

// The frame may ask for a picture of hundreds of megabytes: memory, not safety.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    ByteReader r(data, size);
    r.Seek(24);
    const int64_t left = r.I32(), top = r.I32(), right = r.I32(), bottom = r.I32();
    return (right - left) / 26 * ((bottom - top) / 26) > (int64_t{1} << 22);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vmfuzz::EnsureGuiApplication();
    static const vmfuzz::Files files("emf");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    EmfParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    vmfuzz::Check(image.PixelFormat == PixelFormat32bppARGB);
    vmfuzz::Check(parser.SavePictureToFile(output, image));
    CImage back;
    vmfuzz::Check(parser.LoadPictureFromFile(output, back));
    vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    for (int32_t y = 0; y < image.Height(); ++y)
        for (int32_t x = 0; x < image.Width(); ++x) {
            vmfuzz::Check(std::memcmp(back.Row(y) + 4 * x, image.Row(y) + 4 * x, 3) == 0);
            vmfuzz::Check(back.Row(y)[4 * x + 3] == 255);
        }
    return 0;
}
