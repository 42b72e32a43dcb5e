#pragma once
// The running means of the neighbourhood kernels: the box mean by column sums
// and the triangular mean by the two-pass slope recurrence. Both cost the same
// per sample whatever the radius, with the edge rule of EdgeClamp.h.
//
// Each works on a band of rows Y0..Y1 and starts its sums afresh at the band's
// first row; the sums are exact integers, so a row comes out the same whichever
// band computes it, and bands may run on different threads. The output columns
// are Left..Right. Put(y, x, channel, mean) receives the means of a row in
// order of x; EndRow(y) follows each row. Both are taken by value, so that
// what they capture stays in registers while they write bytes: capture the
// output pointer by value. BPP is the bytes a pixel of the
// input, CH the channels computed (the first CH bytes of each pixel). Acc is
// the sum type: int32_t where FitsInt32 of the kernel's weight, else int64_t.
#include "kernels/EdgeClamp.h"
#include "kernels/ExactDivision.h"
#include "kernels/Plane.h"

#include <vector>

namespace vm::kernels {

// Running box sums down the columns Left..Left + Count - 1: per column and
// channel, the sum of the clamped rows y - r .. y + r (of the squares of the
// samples with Squares), moved down one row at a time.
template <typename Acc, int BPP, int CH, bool Squares = false> class ColumnSums {
  public:
    ColumnSums(const Plane& src, int32_t left, int32_t count, int64_t r, int32_t y0)
        : src_(src), left_(left), count_(count), r_(r), sums_(static_cast<size_t>(count) * CH, 0) {
        for (int64_t k = y0 - r; k <= y0 + r; ++k)
            Add(Row(k), nullptr);
    }
    // From the window of row y - 1 to that of row y.
    void MoveTo(int32_t y) { Add(Row(y + r_), Row(y - r_ - 1)); }
    // Column c (from Left), channel ch at [c * CH + ch].
    const Acc* Data() const { return sums_.data(); }

  private:
    static Acc Sample(uint8_t v) { return Squares ? static_cast<Acc>(v) * v : static_cast<Acc>(v); }
    // Adds row In and takes row Out (if any) away. The sums are stored through
    // a local pointer and the count read once: a store to the sums must not
    // make the compiler read the members again.
    void Add(const uint8_t* in, const uint8_t* out) {
        Acc* sums = sums_.data();
        const int32_t count = count_;
        if (out) {
            for (int32_t c = 0; c < count; ++c)
                for (int ch = 0; ch < CH; ++ch)
                    sums[c * CH + ch] += Sample(in[c * BPP + ch]) - Sample(out[c * BPP + ch]);
        } else {
            for (int32_t c = 0; c < count; ++c)
                for (int ch = 0; ch < CH; ++ch)
                    sums[c * CH + ch] += Sample(in[c * BPP + ch]);
        }
    }
    const uint8_t* Row(int64_t y) const {
        return src_.Row(ClampIndex(y, src_.Height)) + static_cast<ptrdiff_t>(left_) * BPP;
    }
    Plane src_;
    int32_t left_, count_;
    int64_t r_;
    std::vector<Acc> sums_;
};

// Box mean of (2r + 1)^2 clamped samples, divisor (2r + 1)^2.
template <typename Acc, int BPP, int CH, class Put, class EndRow>
void BoxMeanBand(const Plane& src, int32_t left, int32_t right, int32_t r, int32_t y0, int32_t y1, Put put,
                 EndRow endRow) {
    const int32_t width = src.Width;
    const int32_t bandL = ClampIndex(static_cast<int64_t>(left) - r, width);
    const int32_t bandR = ClampIndex(static_cast<int64_t>(right) + r, width);
    ColumnSums<Acc, BPP, CH> columns(src, bandL, bandR - bandL + 1, r, y0);
    const Acc* col = columns.Data();
    // Positions left - r - 1 .. right + r, clamped, as offsets into col.
    const int64_t first = static_cast<int64_t>(left) - r - 1;
    const std::vector<int32_t> idx =
        ClampedIndexTable(first, static_cast<int64_t>(right) + r, width, bandL, CH);
    const SumDivider<Acc> divide(static_cast<int64_t>(2 * static_cast<int64_t>(r) + 1) *
                                 (2 * static_cast<int64_t>(r) + 1));
    for (int32_t y = y0; y <= y1; ++y) {
        if (y > y0) columns.MoveTo(y);
        Acc total[CH] = {};
        for (int64_t j = -static_cast<int64_t>(r); j <= r; ++j) {
            const int32_t o = idx[static_cast<size_t>(left + j - first)];
            for (int ch = 0; ch < CH; ++ch)
                total[ch] += col[o + ch];
        }
        for (int ch = 0; ch < CH; ++ch)
            put(y, left, ch, divide(total[ch]));
        // Entering column x + r sits at idx[x - left + 2r + 1], leaving x - r - 1 at idx[x - left].
        const int32_t* enter = idx.data() + 2 * static_cast<int64_t>(r) + 1;
        const int32_t* leave = idx.data();
        for (int32_t x = left + 1; x <= right; ++x) {
            const int32_t i = x - left;
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
// the slope, and the slope by the entering and leaving samples.
template <typename Acc, int BPP, int CH, class Put, class EndRow>
void TriangleMeanBand(const Plane& src, int32_t left, int32_t right, int32_t r, int32_t y0, int32_t y1,
                      Put put, EndRow endRow) {
    const int32_t width = src.Width, height = src.Height;
    const int64_t rr = r;
    const int32_t bandL = ClampIndex(left - rr - 1, width);
    const int32_t bandR = ClampIndex(right + rr + 1, width);
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
    // Horizontal tables over x = left .. right: x + r + 1 and x - r - 1, clamped.
    const std::vector<int32_t> enter = ClampedIndexTable(left + rr + 1, right + rr + 1, width, bandL, CH);
    const std::vector<int32_t> leave = ClampedIndexTable(left - rr - 1, right - rr - 1, width, bandL, CH);
    const std::vector<int32_t> start = ClampedIndexTable(left - rr, left + rr + 1, width, bandL, CH);
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
            put(y, left, ch, divide(hs[ch]));
        const int32_t self0 = (left - bandL) * CH;
        for (int32_t x = left + 1; x <= right; ++x) {
            const size_t i = static_cast<size_t>(x - left);
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

} // namespace vm::kernels
