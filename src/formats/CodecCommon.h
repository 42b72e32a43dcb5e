#pragma once
// What the parsers built on the codec libraries (JPEG, PNG, GIF, TIFF) and the
// metafile player share: the pixel formats a decoder reports, the one table
// that turns such a format into a block depth, and rows converted for the
// encoders.
#include "core/Image.h"

#include <cstdint>

namespace vm {

// Formats a decoder may report beyond the ones a block can hold. They only
// ever travel between a decoder and the table below.
constexpr uint32_t LibraryFormat16bppGrayScale = 0x101004;
constexpr uint32_t LibraryFormat48bppRGB = 0x10300C;
constexpr uint32_t LibraryFormat64bppARGB = 0x3424010C;
constexpr uint32_t LibraryFormat64bppPARGB = 0x1A400E;
constexpr uint32_t LibraryFormat32bppCMYK = 8207;

// The depth a decoder's format is opened with, and the format its bits are
// asked for in. A depth of 0 refuses the file: 16 bits a channel, among others.
struct LibraryMapping {
    int32_t Depth = 0;
    uint32_t BitsAs = 0;
};
LibraryMapping MapLibraryFormat(uint32_t LibraryFormat);

// Dots per inch a decoder reports for a file that stores no resolution: what
// the desktop reports at its usual scale.
constexpr float LibraryDefaultResolution = 96.0f;

// The reference display of the metafile families: 96 dots per inch in both
// directions, as a 1920 x 1440 screen of 508 x 381 millimetres. Sizes in whole
// millimetres that are exactly 96 dots per inch keep a picture's size through
// a written frame and back.
constexpr int32_t ScreenPixelsX = 1920;
constexpr int32_t ScreenPixelsY = 1440;
constexpr int32_t ScreenMillimetresX = 508;
constexpr int32_t ScreenMillimetresY = 381;
constexpr int32_t ScreenDpi = 96;

// Hundredths of a millimetre to display pixels and back, as picture objects
// report their size.
int32_t HimetricToPixels(int32_t Himetric);

// One row of any block format as B, G, R (3 bytes a pixel) or B, G, R, A
// (4 bytes a pixel). Indexed pixels go through the palette; grey repeats its
// value; 16-bit 5-5-5 widens each channel. Colour formats without alpha give
// 255; palette entries give their own alpha.
void RowToBgr(const CImage& Image, int32_t Y, uint8_t* Out);
void RowToBgra(const CImage& Image, int32_t Y, uint8_t* Out);

// Index of the palette entry nearest to a colour (squared distance, the
// first of equals), as a drawing call into an indexed surface picks it.
int32_t NearestPaletteIndex(const PaletteData& Palette, uint8_t R, uint8_t G, uint8_t B);

} // namespace vm
