#pragma once
// The sharpen family. Each filter runs in the processing frame: it refuses an
// empty selection with its row's title, reads a private copy of the picture
// and writes back through the mask. RGB 24, RGBA 32 (alpha left as it is) and
// 8-bit grey are handled, each channel on its own; other formats pass through
// unchanged with both events. A parameter no dialog can give (a negative
// radius, amount or threshold) is refused with false before anything happens.
#include "core/Image.h"

#include <cstdint>

namespace vm {

// A mild 3 x 3 sharpening: the pixel plus its difference from the 1-2-1
// binomial mean of its neighbourhood.
bool Sharpen(CImage& Image);
// The same with twice the difference.
bool SharpenMore(CImage& Image);
// Steepens the transitions between the dark and the light of each pixel's
// (2 Radius + 1)^2 neighbourhood, as its local histogram gives them, without
// halos and without leaving the neighbourhood's range. A radius above
// MaxHistGramRadius counts as that.
constexpr int32_t MaxHistGramRadius = 50;
bool SharpByHistGram(CImage& Image, int32_t Radius);
// The unsharp mask: the pixel plus Amount % of its difference from the
// triangular mean of Radius (the Gaussian blur's), where that difference is
// at least Threshold levels.
bool UnsharpMask(CImage& Image, int32_t Amount, int32_t Radius, int32_t Threshold);

} // namespace vm
