#pragma once
// Windows and OS/2 bitmaps: every header size the editor has ever written or
// met (12, 40, 56, 108, 124 bytes), palettes, RLE4/RLE8, 16-bit bit fields.
#include "core/Image.h"
#include "formats/ParserCommon.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

class BmpParser {
  public:
    bool IsBmp(const QString& File);
    bool LoadPictureFromFile(const QString& File, CImage& Image);
    // FileSystem non-zero writes the OS/2 flavour. Bmp16Format picks the bit
    // fields of a 16-bit picture (0 plain 5-5-5, 1 to 6 a 56-byte header).
    bool SavePictureToFile(const QString& File, CImage& Image, int32_t FileSystem, bool FlipRow, bool Rle,
                           int32_t Bmp16Format);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);

  private:
    // The Windows info header up to and including the alpha mask; the larger
    // headers' colour-space fields are never consulted.
    struct InfoHeader {
        uint32_t Size = 40;
        int32_t Width = 0;
        int32_t Height = 0;
        uint16_t Planes = 1;
        uint16_t BitCount = 0;
        uint32_t Compression = 0;
        uint32_t SizeImage = 0;
        int32_t XPelsPerMeter = 0;
        int32_t YPelsPerMeter = 0;
        uint32_t ClrUsed = 0;
        uint32_t ClrImportant = 0;
        uint32_t RedMask = 0;
        uint32_t GreenMask = 0;
        uint32_t BlueMask = 0;
        uint32_t AlphaMask = 0;
    };

    bool LoadWindowsBitmap(ByteReader& Reader, const QString& File, CImage& Image);
    bool LoadOs2Bitmap(ByteReader& Reader, const QString& File, CImage& Image);
    bool SaveWindowsBitmap(const QString& File, const CImage& Image, bool FlipRow, bool Rle,
                           int32_t Bmp16Format);
    bool SaveOs2Bitmap(const QString& File, const CImage& Image);

    static void SetBitfieldHeader(InfoHeader& Header, int32_t Bmp16Format);
    static void WriteInfoHeader(ByteWriter& Writer, const InfoHeader& Header);
    // Reads the pixel block as it lies in the file: top row first in one piece
    // or bottom row first row by row. What the file lacks stays zero.
    static void ReadRawRows(ByteReader& Reader, CImage& Image, bool TopDown);
    // Converts 16-bit pixels through the header's masks into a 24- or 32-bit
    // image, rebuilding alpha when RebuildAlpha is set.
    static void Convert16BitPixels(ByteReader& Reader, const InfoHeader& Header, CImage& Image,
                                   bool RebuildAlpha);
    // BI_RLE8 (Bits 8) or BI_RLE4 (Bits 4) into an indexed image of the same
    // depth. Stream row 0 lands on the bottom row, or on the top row when
    // TopRowFirst. Runs and deltas that leave the image are clipped.
    static void DecodeRle(const uint8_t* Data, size_t Size, CImage& Image, int Bits, bool TopRowFirst);
    // Encodes a 4- or 8-bit indexed image bottom row first.
    static QByteArray EncodeRle(const CImage& Image, int Bits);
};

} // namespace vm
