#pragma once
// The square window of the filters that skip, rather than repeat, what lies
// beyond the edges: their divisor counts only the samples inside.
#include "kernels/Plane.h"

#include <algorithm>

namespace vm::kernels {

// Calls Sample(q) for each pixel of the square of side 2r + 1 about (x, y)
// that lies inside the plane, q its first byte, BPP bytes a pixel; rows top
// down, each left to right.
template <int BPP, class F>
void ForEachInside(const Plane& src, int32_t x, int32_t y, int32_t r, F&& sample) {
    const int32_t x0 = static_cast<int32_t>(std::max<int64_t>(0, int64_t{x} - r));
    const int32_t x1 = static_cast<int32_t>(std::min<int64_t>(src.Width - 1, int64_t{x} + r));
    const int32_t y0 = static_cast<int32_t>(std::max<int64_t>(0, int64_t{y} - r));
    const int32_t y1 = static_cast<int32_t>(std::min<int64_t>(src.Height - 1, int64_t{y} + r));
    for (int32_t yy = y0; yy <= y1; ++yy) {
        const uint8_t* q = src.Row(yy) + static_cast<ptrdiff_t>(x0) * BPP;
        for (int32_t xx = x0; xx <= x1; ++xx, q += BPP)
            sample(q);
    }
}

} // namespace vm::kernels
