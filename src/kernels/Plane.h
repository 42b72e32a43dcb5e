#pragma once
// A read-only view of interleaved byte samples, row by row: the input of the
// running kernels, whether a picture's copy or a selection mask.
#include <cstddef>
#include <cstdint>

namespace vm::kernels {

struct Plane {
    const uint8_t* Bits = nullptr;
    ptrdiff_t Stride = 0; // bytes from one row to the next
    int32_t Width = 0, Height = 0;
    const uint8_t* Row(int32_t y) const { return Bits + static_cast<ptrdiff_t>(y) * Stride; }
};

} // namespace vm::kernels
