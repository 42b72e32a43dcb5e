#pragma once
// TIFF through libtiff: pages, the decoder formats of CodecCommon, palettes,
// and a writer with a compression and a colour depth.
#include "core/Image.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& TifFamily();

// The compression codes of the TIFF writer, as the save dialog passes them.
enum TiffCompression : int32_t {
    TiffCompressionDefault = 0, // no choice made: LZW, the encoder's default
    TiffCompressionLzw = 2,
    TiffCompressionCcitt3 = 3, // 1-bit pictures only, as the next two
    TiffCompressionCcitt4 = 4,
    TiffCompressionRle = 5,
    TiffCompressionNone = 6,
};

class TifParser {
  public:
    // "II" or "MM", then 42 and a first directory offset of at least 8, all
    // read little-endian: only little-endian files pass.
    bool IsTif(const QString& File);
    // Frame outside 0 .. count - 1 is replaced by count - 1, and the caller
    // sees the page that was opened.
    bool LoadPictureFromFile(const QString& File, CImage& Image, int32_t& Frame);
    // The colour depth follows the block: 1, 4 and 8 bits stay indexed (grey
    // as grey), RGB 24 is 24 bits and everything else RGBA 32. False for a
    // compression the encoder does not know or cannot apply to the depth.
    bool SavePictureToFile(const QString& File, CImage& Image, int32_t Compression);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
    // 0 when the file is no TIFF or does not open.
    int32_t GetFrameCount(const QString& File);
};

} // namespace vm
