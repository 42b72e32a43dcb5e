#pragma once
// The filters of the menu "其他": high pass, offset, the rectangular maximum
// and minimum, the local standard deviation and the user's 5 x 5 kernel. Each
// runs in the processing frame on RGB 24, RGBA 32 (alpha left alone) and grey.
#include "core/Image.h"

#include <array>
#include <cstdint>

namespace vm {

// What Offset does with a source position off the picture.
enum OffsetEdge : int32_t {
    OffsetEdgeLeave = 0, // the pixel stays as it is
    OffsetEdgeClamp = 1, // the nearest edge pixel
    OffsetEdgeWrap = 2,  // wraps around
};

// Pixel minus its triangular mean (the Gaussian blur's) plus 128. Refuses an
// empty selection under its own row's title; its events carry the blur's.
bool HighPass(CImage& Image, int32_t Radius);
// Moves the picture by (Horization, Vertical) within the selection.
bool Offset(CImage& Image, int32_t Horization, int32_t Vertical, int32_t Edge);
// Maximum and minimum over a (2 RadiusX + 1) x (2 RadiusY + 1) rectangle;
// each radius below 1 counts as 1 and above 99 as 100.
bool MaxFilters(CImage& Image, int32_t RadiusX, int32_t RadiusY);
bool MinFilters(CImage& Image, int32_t RadiusX, int32_t RadiusY);
// The local standard deviation over a (2r + 1)^2 window.
bool ShowMeanSquareError(CImage& Image, int32_t Radius);
// A 5 x 5 kernel, row by row; the sum is divided by Divider (truncating) and
// Offset is added. A Divider of 0 is refused.
bool Convolute(CImage& Image, const std::array<int32_t, 25>& Matrix, int32_t Offset, int32_t Divider);

} // namespace vm
