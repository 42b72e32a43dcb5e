#pragma once
// PNG through libpng. Every colour type and depth opens through the decoder
// formats of CodecCommon: palettes and grey of 1 to 8 bits stay indexed (grey
// becomes a palette of its levels, 2 bits widen to 4), 16-bit grey opens as
// RGB 24, and the other 16-bit-a-channel files are refused.
#include "core/Image.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& PngFamily();

class PngParser {
  public:
    bool IsPng(const QString& File);
    bool LoadPictureFromFile(const QString& File, CImage& Image);
    // Writes any block format: RGBA 32, RGB 24, grey 8 as grey, indexed 1, 4
    // and 8 as a palette (with its alpha), 16-bit 5-5-5 widened to RGB.
    bool SavePictureToFile(const QString& File, CImage& Image);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
};

} // namespace vm
