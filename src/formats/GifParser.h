#pragma once
// GIF through giflib. A file of several frames is played as an animation is
// shown: each frame is composed over what the earlier ones left, by their
// disposal methods, and the result is mapped onto the frame's own colour table.
#include "core/Image.h"

#include <QString>

#include <cstdint>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& GifFamily();

class GifParser {
  public:
    bool IsGif(const QString& File);
    // Frame outside 0 .. count - 1 is replaced by count - 1, and the caller
    // sees the frame that was opened.
    bool LoadPictureFromFile(const QString& File, CImage& Image, int32_t& Frame);
    // Indexed and grey blocks keep their palette (an entry of alpha 0 becomes
    // the transparent colour); colour blocks are reduced to 256 colours.
    bool SavePictureToFile(const QString& File, CImage& Image);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
    // 0 when the file is no GIF or does not decode.
    int32_t GetFrameCount(const QString& File);
};

} // namespace vm
