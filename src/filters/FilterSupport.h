#pragma once
// What the neighbourhood filters share: the formats they work on, the private
// copy they read from, the rows of the selection as spans, and row bands for
// the cores of the machine. The scaffold (FilterScaffold.h) puts them
// together; the arithmetic is the kernel library's (kernels/).
#include "core/Image.h"
#include "kernels/ParallelRows.h"
#include "kernels/Plane.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

namespace vm::filters {

// Bytes a pixel for the three formats the filters handle; 0 for the others,
// which fall through the frame unchanged.
inline int FilterBytesPerPixel(uint32_t format) {
    switch (format) {
    case PixelFormat8bppGray:
        return 1;
    case PixelFormat24bppRGB:
        return 3;
    case PixelFormat32bppARGB:
        return 4;
    default:
        return 0;
    }
}

// Calls F with the bytes a pixel as a compile-time constant, so that each
// format gets a loop of its own.
template <class F> void ForFormat(int bpp, F&& f) {
    switch (bpp) {
    case 1:
        f(std::integral_constant<int, 1>{});
        break;
    case 3:
        f(std::integral_constant<int, 3>{});
        break;
    case 4:
        f(std::integral_constant<int, 4>{});
        break;
    default:
        break;
    }
}

// Colour channels of a format: alpha is left to the filters that say so.
constexpr int ColourChannels(int bpp) {
    return bpp == 1 ? 1 : 3;
}

// A private copy of the pixel block: neighbourhood operations read the old
// picture, never their own results.
class SourceCopy {
  public:
    explicit SourceCopy(const CImage& image)
        : bytes_(new uint8_t[image.BlockSize()]), plane_{bytes_.get(), image.Stride(), image.Width(),
                                                         image.Height()} {
        std::memcpy(bytes_.get(), image.Pointer(), image.BlockSize());
    }
    const uint8_t* Row(int32_t y) const { return plane_.Row(y); }
    const kernels::Plane& Plane() const { return plane_; }

  private:
    std::unique_ptr<uint8_t[]> bytes_;
    kernels::Plane plane_;
};

struct Span {
    int32_t Left, Right; // inclusive
};

// The visiting rectangles cut into the spans of each row of their bound.
class RowSpans {
  public:
    RowSpans(const std::vector<DealRect>& rects, const DealRect& bounds);
    std::span<const Span> Row(int32_t y) const {
        const size_t i = static_cast<size_t>(y - top_);
        return {spans_.data() + first_[i], spans_.data() + first_[i + 1]};
    }

  private:
    int32_t top_;
    std::vector<size_t> first_;
    std::vector<Span> spans_;
};

using kernels::ParallelRows;

} // namespace vm::filters
