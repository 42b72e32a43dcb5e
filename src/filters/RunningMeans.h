#pragma once
// The two running means the filters are built on: the box mean by column sums
// and the triangular mean by the two-pass slope recurrence. Both cost the same
// per pixel whatever the radius. Each works on a band of rows and starts its
// sums afresh at the band's first row; the sums are exact integers, so a row
// comes out the same whichever band computes it.
#include "filters/FilterSupport.h"

#include <limits>

#include <type_traits>

namespace vm::filters {

// Division of a running sum by the kernel's weight: exact multiply-shift for
// 32-bit sums, a plain division for the wide ones.
template <typename Acc> class SumDivider {
  public:
    explicit SumDivider(int64_t d) : fast_(static_cast<uint32_t>(std::min<int64_t>(d, 0x7FFFFFFF))), d_(d) {}
    int32_t operator()(Acc n) const {
        if constexpr (std::is_same_v<Acc, int32_t>)
            return static_cast<int32_t>(fast_(static_cast<uint32_t>(n)));
        else
            return static_cast<int32_t>(n / d_);
    }

  private:
    FastDivider fast_;
    int64_t d_;
};

// Column indices of the clamped positions From..To, relative to Origin and in
// units of Step: the tables that keep clamp tests out of the inner loops.
inline std::vector<int32_t> ClampedIndexTable(int64_t from, int64_t to, int32_t size, int32_t origin,
                                              int step) {
    std::vector<int32_t> t(static_cast<size_t>(to - from + 1));
    for (int64_t i = from; i <= to; ++i)
        t[static_cast<size_t>(i - from)] = (ClampIndex(i, size) - origin) * step;
    return t;
}

// Box mean of (2r + 1)^2 clamped pixels, divisor (2r + 1)^2, over rows Y0..Y1 of
// bound B. Put(y, x, channel, mean) receives each mean of the bound's columns
// in order; EndRow(y) follows each row.
template <typename Acc, int BPP, int CH, class Put, class EndRow>
void BoxMeanBand(const SourceCopy& src, int32_t width, int32_t height, const DealRect& b, int32_t r,
                 int32_t y0, int32_t y1, Put&& put, EndRow&& endRow) {
    const int32_t bandL = ClampIndex(static_cast<int64_t>(b.Left) - r, width);
    const int32_t bandR = ClampIndex(static_cast<int64_t>(b.Right) + r, width);
    const int32_t bw = bandR - bandL + 1;
    std::vector<Acc> col(static_cast<size_t>(bw) * CH, 0);
    for (int64_t k = static_cast<int64_t>(y0) - r; k <= static_cast<int64_t>(y0) + r; ++k) {
        const uint8_t* row = src.Row(ClampIndex(k, height)) + static_cast<ptrdiff_t>(bandL) * BPP;
        for (int32_t c = 0; c < bw; ++c)
            for (int ch = 0; ch < CH; ++ch)
                col[c * CH + ch] += row[c * BPP + ch];
    }
    // Positions b.Left - r - 1 .. b.Right + r, clamped, as offsets into col.
    const int64_t first = static_cast<int64_t>(b.Left) - r - 1;
    const std::vector<int32_t> idx =
        ClampedIndexTable(first, static_cast<int64_t>(b.Right) + r, width, bandL, CH);
    const SumDivider<Acc> divide(static_cast<int64_t>(2 * static_cast<int64_t>(r) + 1) *
                                 (2 * static_cast<int64_t>(r) + 1));
    for (int32_t y = y0; y <= y1; ++y) {
        if (y > y0) {
            const uint8_t* in = src.Row(ClampIndex(static_cast<int64_t>(y) + r, height)) +
                                static_cast<ptrdiff_t>(bandL) * BPP;
            const uint8_t* out = src.Row(ClampIndex(static_cast<int64_t>(y) - r - 1, height)) +
                                 static_cast<ptrdiff_t>(bandL) * BPP;
            for (int32_t c = 0; c < bw; ++c)
                for (int ch = 0; ch < CH; ++ch)
                    col[c * CH + ch] += static_cast<Acc>(in[c * BPP + ch]) - out[c * BPP + ch];
        }
        Acc total[CH] = {};
        for (int64_t j = -static_cast<int64_t>(r); j <= r; ++j) {
            const int32_t o = idx[static_cast<size_t>(b.Left + j - first)];
            for (int ch = 0; ch < CH; ++ch)
                total[ch] += col[o + ch];
        }
        for (int ch = 0; ch < CH; ++ch)
            put(y, b.Left, ch, divide(total[ch]));
        // Entering column x + r sits at idx[x - b.Left + 2r + 1], leaving x - r - 1 at idx[x - b.Left].
        const int32_t* enter = idx.data() + 2 * static_cast<int64_t>(r) + 1;
        const int32_t* leave = idx.data();
        for (int32_t x = b.Left + 1; x <= b.Right; ++x) {
            const int32_t i = x - b.Left;
            const int32_t e = enter[i], l = leave[i];
            for (int ch = 0; ch < CH; ++ch) {
                total[ch] += col[e + ch] - col[l + ch];
                put(y, x, ch, divide(total[ch]));
            }
        }
        endRow(y);
    }
}

// The triangular mean: weights 1, 2, .., r + 1, .., 2, 1 in each direction,
// vertical pass then horizontal, each truncated by (r + 1)^2. The sums move by
// the slope, and the slope by the entering and leaving rows: a constant per
// pixel. Put(y, x, channel, mean) as for the box mean.
template <typename Acc, int BPP, int CH, class Put, class EndRow>
void TriangleMeanBand(const SourceCopy& src, int32_t width, int32_t height, const DealRect& b, int32_t r,
                      int32_t y0, int32_t y1, Put&& put, EndRow&& endRow) {
    const int64_t rr = r;
    const int32_t bandL = ClampIndex(b.Left - rr - 1, width);
    const int32_t bandR = ClampIndex(b.Right + rr + 1, width);
    const int32_t bw = bandR - bandL + 1;
    // K[i] = i + 1 and K[2r - i] = i + 1 for i in 0..r, and a last entry 0.
    std::vector<Acc> k(static_cast<size_t>(2 * rr + 2), 0);
    for (int64_t i = 0; i <= rr; ++i)
        k[i] = k[2 * rr - i] = static_cast<Acc>(i + 1);
    const SumDivider<Acc> divide((rr + 1) * (rr + 1));

    std::vector<Acc> sum(static_cast<size_t>(bw) * CH, 0), slope(static_cast<size_t>(bw) * CH, 0);
    for (int64_t i = y0 - rr; i <= y0 + rr + 1; ++i) {
        const uint8_t* row = src.Row(ClampIndex(i, height)) + static_cast<ptrdiff_t>(bandL) * BPP;
        const Acc w = k[static_cast<size_t>(rr - y0 + i)];
        const bool before = i <= y0;
        for (int32_t c = 0; c < bw; ++c)
            for (int ch = 0; ch < CH; ++ch) {
                const Acc p = row[c * BPP + ch];
                slope[c * CH + ch] += before ? -p : p;
                sum[c * CH + ch] += p * w;
            }
    }
    std::vector<int32_t> v(static_cast<size_t>(bw) * CH);
    // Horizontal tables over x = b.Left .. b.Right: x + r + 1 and x - r - 1, clamped.
    const std::vector<int32_t> enter = ClampedIndexTable(b.Left + rr + 1, b.Right + rr + 1, width, bandL, CH);
    const std::vector<int32_t> leave = ClampedIndexTable(b.Left - rr - 1, b.Right - rr - 1, width, bandL, CH);
    const std::vector<int32_t> start = ClampedIndexTable(b.Left - rr, b.Left + rr + 1, width, bandL, CH);
    for (int32_t y = y0; y <= y1; ++y) {
        if (y == y0) {
            for (size_t i = 0; i < v.size(); ++i)
                v[i] = divide(sum[i]);
        } else {
            const uint8_t* in = src.Row(ClampIndex(y + rr + 1, height)) + static_cast<ptrdiff_t>(bandL) * BPP;
            const uint8_t* out =
                src.Row(ClampIndex(y - rr - 1, height)) + static_cast<ptrdiff_t>(bandL) * BPP;
            const uint8_t* mid = src.Row(y) + static_cast<ptrdiff_t>(bandL) * BPP;
            for (int32_t c = 0; c < bw; ++c)
                for (int ch = 0; ch < CH; ++ch) {
                    const size_t i = static_cast<size_t>(c) * CH + ch;
                    sum[i] += slope[i];
                    v[i] = divide(sum[i]);
                    slope[i] += static_cast<Acc>(in[c * BPP + ch]) + out[c * BPP + ch] -
                                2 * static_cast<Acc>(mid[c * BPP + ch]);
                }
        }
        // Horizontal pass over the vertical means of this row.
        Acc hs[CH] = {}, hl[CH] = {};
        for (int64_t i = 0; i <= 2 * rr + 1; ++i) {
            const int32_t o = start[static_cast<size_t>(i)];
            for (int ch = 0; ch < CH; ++ch) {
                const Acc p = v[o + ch];
                hl[ch] += i <= rr ? -p : p;
                hs[ch] += p * k[static_cast<size_t>(i)];
            }
        }
        for (int ch = 0; ch < CH; ++ch)
            put(y, b.Left, ch, divide(hs[ch]));
        const int32_t self0 = (b.Left - bandL) * CH;
        for (int32_t x = b.Left + 1; x <= b.Right; ++x) {
            const size_t i = static_cast<size_t>(x - b.Left);
            // The slope of x - 1 moves by the columns x + r and x - r - 2 around
            // it, after x - 1 was written; then the sum moves by the slope.
            const int32_t ei = enter[i - 1], li = leave[i - 1], si = self0 + static_cast<int32_t>(i - 1) * CH;
            for (int ch = 0; ch < CH; ++ch) {
                if (i > 1) hl[ch] += v[ei + ch] + v[li + ch] - 2 * v[si + ch];
                hs[ch] += hl[ch];
                put(y, x, ch, divide(hs[ch]));
            }
        }
        endRow(y);
    }
}

// The triangular mean over the frame's selected rows, in parallel bands:
// Value(y, x, channel, mean) gives the byte the first CH channels of pixel
// (x, y) take, and the mask blends it in.
template <int BPP, int CH, class Value>
void TriangleMeanFilter(const ProcessingFrame& frame, const SourceCopy& src, int32_t r, Value value) {
    const CImage& image = frame.Image();
    const DealRect b = frame.Bounds();
    const RowSpans spans(frame.Rects(), b);
    const int32_t bw = b.Right - b.Left + 1;
    const int64_t weight = (static_cast<int64_t>(r) + 1) * (static_cast<int64_t>(r) + 1);
    ParallelRows(b.Top, b.Bottom, bw, [&](int32_t y0, int32_t y1) {
        std::vector<uint8_t> out(static_cast<size_t>(bw) * BPP);
        auto put = [&](int32_t y, int32_t x, int ch, int32_t mean) {
            out[static_cast<size_t>(x - b.Left) * BPP + ch] = static_cast<uint8_t>(value(y, x, ch, mean));
        };
        auto endRow = [&](int32_t y) { WriteBackRow(frame, spans, y, out.data(), b.Left, BPP, CH); };
        // The running sums hold byte times weight; 64 bits where 32 could wrap.
        if (weight <= std::numeric_limits<int32_t>::max() / 255)
            TriangleMeanBand<int32_t, BPP, CH>(src, image.Width(), image.Height(), b, r, y0, y1, put, endRow);
        else
            TriangleMeanBand<int64_t, BPP, CH>(src, image.Width(), image.Height(), b, r, y0, y1, put, endRow);
    });
}

} // namespace vm::filters
