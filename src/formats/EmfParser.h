#pragma once
// Enhanced metafiles: records checked by libuemf and played onto a QPainter by
// MetafilePlayer, the picture frame mapped onto the picture's pixels. What the
// records paint is opaque, the rest transparent. Written as one bitmap
// transfer with a frame sized for the reference display.
#include "core/Image.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& EmfFamily();

class EmfParser {
  public:
    // A header record (type 1) with " EMF" at offset 40; or, failing that, a
    // first value of 1 with the placeable metafile's XOR check over the first
    // 22 bytes. The second kind is passed on to the loader, which then decides.
    bool IsEmf(const QString& File);
    bool LoadPictureFromFile(const QString& File, CImage& Image);
    bool SavePictureToFile(const QString& File, CImage& Image);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
};

} // namespace vm
