#pragma once
// One-shot point operations without a dialog of their own.
#include "core/Image.h"

#include <array>

namespace vm {

// "反相": every channel to 255 minus itself; palette pictures (1, 4 and
// 8 bits) invert their entries; alpha stays.
bool Invert(CImage& Image);
// "色调分离": Levels steps per channel, through Curve as one command.
bool Posterize(CImage& Image, int32_t Levels);
// The Posterize table for a number of levels.
std::array<uint8_t, 256> PosterizeTable(int32_t Levels);
// "阈值": black where (R + 2G + B) / 4 is at most Level, white elsewhere.
bool Threshold(CImage& Image, int32_t Level);
// "去色": each pixel to the middle of its largest and smallest channel.
bool Desaturate(CImage& Image);

} // namespace vm
