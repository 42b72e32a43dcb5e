#pragma once
// The device-independent bitmap, as BMP files, the metafiles' bitmap records
// and icons all store it: the info header, the colour table, and rows of 1 to
// 32 bits, uncompressed, in bit fields or run-length coded. One codec serves
// them all; each family adds only where its bytes lie.
#include "core/Image.h"
#include "formats/ParserCommon.h"

#include <QByteArray>

#include <cstdint>

namespace vm {

constexpr uint32_t DibRgb = 0;
constexpr uint32_t DibRle8 = 1;
constexpr uint32_t DibRle4 = 2;
constexpr uint32_t DibBitfields = 3;

// The info header up to and including the alpha mask; the larger headers'
// colour-space fields are never consulted. A 12-byte core header fills the
// size fields and the bit count.
struct DibHeader {
    uint32_t Size = 40;
    int32_t Width = 0;
    int32_t Height = 0;
    uint16_t Planes = 1;
    uint16_t BitCount = 0;
    uint32_t Compression = DibRgb;
    uint32_t SizeImage = 0;
    int32_t XPelsPerMeter = 0;
    int32_t YPelsPerMeter = 0;
    uint32_t ClrUsed = 0;
    uint32_t ClrImportant = 0;
    uint32_t RedMask = 0;
    uint32_t GreenMask = 0;
    uint32_t BlueMask = 0;
    uint32_t AlphaMask = 0;

    bool IsCore() const { return Size == 12; }
    bool TopDown() const { return Height < 0; }
    int64_t Rows() const { return Height < 0 ? -static_cast<int64_t>(Height) : Height; }
};

// Reads a header of Size bytes from the reader's position (12, or 40 and
// more); what the data lacks reads as zero. False for a size below 12 or
// between 12 and 40.
bool ReadDibHeader(ByteReader& Reader, DibHeader& Header);
void WriteDibHeader(ByteWriter& Writer, const DibHeader& Header);

// The colour table: Count entries of four bytes (blue, green, red, unused),
// three for a core header, and with Indices (a metafile's DIB_PAL_COLORS) two
// bytes of a palette index each, shown as the grey of that index. Alpha is 255.
PaletteData ReadDibPalette(ByteReader& Reader, uint32_t Count, int EntryBytes, bool Indices = false);

// Bytes the stored pixels take, from the first to the last pixel of the last
// row: a file that holds fewer cannot be the picture its header declares.
uint64_t DibStoredBytes(int64_t Width, int64_t Rows, int Bits);
// The stored row length: a multiple of four bytes.
uint64_t DibStride(int64_t Width, int Bits);

// Uncompressed rows of the image's own depth, the bottom row first unless
// TopDown. What the data lacks stays as the block had it.
void ReadDibRows(ByteReader& Reader, CImage& Image, bool TopDown);
// 16- or 32-bit pixels through bit-field masks into a 24- or 32-bit image;
// with RebuildAlpha the alpha mask gives the alpha by the editor's own rule.
void ReadDibBitfields(ByteReader& Reader, const DibHeader& Header, int Bits, CImage& Image,
                      bool RebuildAlpha);
// BI_RLE8 (Bits 8) or BI_RLE4 (Bits 4) into an indexed image of the same
// depth. Stream row 0 lands on the bottom row, or on the top row when
// TopRowFirst. Runs and deltas that leave the image are clipped.
void DecodeDibRle(ByteReader Reader, CImage& Image, int Bits, bool TopRowFirst);
// A 4- or 8-bit indexed image coded bottom row first.
QByteArray EncodeDibRle(const CImage& Image, int Bits);

// A whole DIB as the metafiles hold it, into a block of its own depth: 1, 4
// and 8 bits stay indexed, 16 bits and bit fields become 24 bits, 32 bits
// opaque. The bits follow the table within Info, or lie in BitsApart. Table
// Indices as ReadDibPalette. False for what cannot be read: compressed
// bitmaps and bits shorter than the header declares among them.
bool DecodeDib(ByteReader Info, const ByteReader* BitsApart, bool Indices, CImage& Image,
               bool* BottomUp = nullptr);
// The largest bitmap a metafile record may carry.
constexpr int64_t MaxEmbeddedDibPixels = int64_t(1) << 26;

// The picture as a metafile's bitmap transfer stores it: a 40-byte header
// with the palette of an indexed block, and the rows bottom row first.
QByteArray BuildDibInfo(const CImage& Image);
QByteArray BuildDibBits(const CImage& Image);

} // namespace vm
