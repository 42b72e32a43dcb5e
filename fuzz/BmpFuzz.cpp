// Fuzz target of the BMP parser. The bytes reach the loader through a file,
// as the editor meets them; whatever loads must save in every flavour and load
// back to the same pixels.
#include "formats/BmpParser.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>

using namespace vm;

namespace {

// A header may ask for up to 2 GiB of pixels, which the loader grants: that
// costs memory, not safety, so such inputs are left to the size tests.
bool DeclaresHugePicture(const uint8_t* data, size_t size) {
    if (size < 26) return false;
    ByteReader r(data, size);
    r.Seek(14);
    int64_t w = 0, h = 0;
    if (r.U32() == 12) {
        w = r.I16();
        h = r.I16();
    } else {
        w = r.I32();
        h = r.I32();
    }
    return std::abs(w * h) > (int64_t{1} << 22);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vmfuzz::Files files("bmp");
    const QString& input = files.Input;
    const QString& output = files.Output;
    if (DeclaresHugePicture(data, size) || !files.Write(data, size)) return 0;

    BmpParser parser;
    CImage image;
    if (!parser.LoadPictureFromFile(input, image)) return 0;
    const int bits = GetBitDepth(image.PixelFormat);

    struct Flavour {
        int32_t FileSystem;
        bool FlipRow, Rle;
    };
    for (const Flavour& f : {Flavour{0, false, false}, Flavour{0, true, true}, Flavour{1, false, false}}) {
        // The OS/2 header holds 16-bit sizes; its writer refuses larger pictures.
        if (f.FileSystem && (image.Width() > 32767 || image.Height() > 32767)) continue;
        vmfuzz::Check(parser.SavePictureToFile(output, image, f.FileSystem, f.FlipRow, f.Rle, 0));
        CImage back;
        vmfuzz::Check(parser.LoadPictureFromFile(output, back));
        vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
        // Uncompressed 1-, 4-, 8- and 24-bit blocks come back byte for byte,
        // row padding included; 16 and 32 bits pass through alpha and depth rules.
        if (!(f.Rle && (bits == 4 || bits == 8)) && (bits <= 8 || bits == 24))
            vmfuzz::Check(std::memcmp(back.Pointer(), image.Pointer(), image.BlockSize()) == 0);
    }
    return 0;
}
