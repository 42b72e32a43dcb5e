#pragma once
// Windows metafiles: records parsed with libuemf's checks and played onto a
// QPainter by MetafilePlayer; written as one bitmap transfer.
//
// The placeable kind (a 22-byte header with the picture's size) opens as
// RGBA 32: what the records paint is opaque, the rest transparent. The plain
// kind opens as RGB 24 on black, one logical unit a pixel.
#include "core/Image.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& WmfFamily();

class WmfParser {
  public:
    // Placeable says which of the two kinds was found.
    bool IsWmf(const QString& File, bool& Placeable);
    bool IsWmf(const QString& File) {
        bool placeable = false;
        return IsWmf(File, placeable);
    }
    bool LoadPictureFromFile(const QString& File, CImage& Image);
    // A plain metafile whose one record copies the whole picture; pictures
    // wider or higher than 32767 pixels do not fit its coordinates.
    bool SavePictureToFile(const QString& File, CImage& Image);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
};

} // namespace vm
