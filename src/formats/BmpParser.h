#pragma once
// Windows and OS/2 bitmaps: every header size the editor has ever written or
// met (12, 40, 56, 108, 124 bytes), palettes, RLE4/RLE8, 16-bit bit fields.
// The pixels go through the DIB codec; this family adds where a file's bytes
// lie and its writer options.
#include "core/Image.h"
#include "formats/ParserCommon.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& BmpFamily();

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
};

} // namespace vm
