#pragma once
// What the neighbourhood filters share: the formats they work on, the private
// copy they read from, the rows of the selection as spans, the write-back
// through the mask, an exact division by a constant, the one border helper,
// and row bands for the cores of the machine.
#include "core/Image.h"
#include "core/Numeric.h"
#include "core/ProcessingFrame.h"

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

// The border rule of every filter here: a coordinate beyond the picture reads
// the nearest edge pixel.
inline int32_t ClampIndex(int64_t v, int32_t size) {
    return v < 0 ? 0 : (v >= size ? size - 1 : static_cast<int32_t>(v));
}

// Exact truncating division of a non-negative 31-bit value by a constant
// divisor, as a multiply and a shift: the divisions per pixel of the running
// means would otherwise cost more than the sums themselves. With l = ceil(log2
// d) and m = floor(2^(31 + l) / d) + 1, (n m) >> (31 + l) equals n / d for every
// n below 2^31, and n m stays below 2^63.
class FastDivider {
  public:
    explicit FastDivider(uint32_t d) : d_(d) {
        int l = 0;
        while ((uint64_t{1} << l) < d)
            ++l;
        shift_ = 31 + l;
        m_ = (uint64_t{1} << shift_) / d + 1;
    }
    uint32_t operator()(uint32_t n) const { return static_cast<uint32_t>((n * m_) >> shift_); }
    uint32_t Divisor() const { return d_; }

  private:
    uint64_t m_ = 0;
    int shift_ = 0;
    uint32_t d_;
};

// A private copy of the pixel block: neighbourhood operations read the old
// picture, never their own results.
class SourceCopy {
  public:
    explicit SourceCopy(const CImage& image)
        : stride_(image.Stride()), bytes_(new uint8_t[image.BlockSize()]) {
        std::memcpy(bytes_.get(), image.Pointer(), image.BlockSize());
    }
    const uint8_t* Row(int32_t y) const { return bytes_.get() + static_cast<ptrdiff_t>(y) * stride_; }

  private:
    int32_t stride_;
    std::unique_ptr<uint8_t[]> bytes_;
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

// Writes a computed row into the picture through the mask. Computed holds the
// new bytes of pixel x at (x - Origin) * Bpp; only the first Channels bytes of
// each pixel are written, so that RGBA 32 keeps its alpha where the filter
// leaves it.
void WriteBackRow(const ProcessingFrame& frame, const RowSpans& spans, int32_t y, const uint8_t* computed,
                  int32_t origin, int bpp, int channels);

// Writes one pixel's computed bytes through weight m (not 0).
inline void WriteBackPixel(uint8_t* p, const int32_t* values, int channels, int32_t m) {
    if (m == 255) {
        for (int c = 0; c < channels; ++c)
            p[c] = static_cast<uint8_t>(values[c]);
    } else {
        for (int c = 0; c < channels; ++c)
            p[c] = static_cast<uint8_t>(BlendByWeight(p[c], values[c], m));
    }
}

// Runs Work(first, last) over bands of the rows First..Last (inclusive), one
// band a core when the picture is large enough to pay for the threads. Every
// filter that uses it computes each row the same way whichever band holds it,
// so that the result does not depend on the number of cores.
void ParallelRows(int32_t first, int32_t last, int64_t pixelsPerRow,
                  const std::function<void(int32_t, int32_t)>& work);

} // namespace vm::filters
