#include "filters/Sharpen.h"

#include "core/ColorSpaces.h"
#include "filters/FilterScaffold.h"
#include "kernels/EdgeClamp.h"
#include "kernels/RunningMeans.h"

#include <array>
#include <cmath>
#include <memory>

namespace vm {

using namespace filters;
using kernels::ClampedIndexTable;
using kernels::ClampIndex;

namespace {

// N / D to the nearest integer, halves to even, for any sign of N (D > 0).
int32_t DivideRounded(int32_t n, int32_t d) {
    int32_t q = n / d, rem = n % d;
    if (rem < 0) {
        --q;
        rem += d;
    }
    if (2 * rem > d || (2 * rem == d && (q & 1))) ++q;
    return q;
}

// The 3 x 3 kernel Weights (rows top down) over the clamped neighbourhood,
// divided by Divisor with rounding.
bool Convolve3x3(CImage& image, const Operation& row, const std::array<int32_t, 9>& weights,
                 int32_t divisor) {
    return RunFilter(image, {row}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const DealRect b = pass.Bounds();
        const kernels::Plane& src = pass.Source().Plane();
        // Byte offsets of the columns Left - 1 .. Right + 1.
        const std::vector<int32_t> cols = ClampedIndexTable(b.Left - 1, b.Right + 1, src.Width, 0, BPP);
        pass.ForRowBands(9, [&](int32_t y0, int32_t y1, uint8_t* out) {
            for (int32_t y = y0; y <= y1; ++y) {
                const uint8_t* rows[3] = {src.Row(ClampIndex(y - 1, src.Height)), src.Row(y),
                                          src.Row(ClampIndex(y + 1, src.Height))};
                for (int32_t i = 0; i < pass.BoundWidth(); ++i)
                    for (int ch = 0; ch < CH; ++ch) {
                        int32_t sum = 0;
                        for (int j = 0; j < 3; ++j)
                            for (int k = 0; k < 3; ++k)
                                sum += weights[j * 3 + k] * rows[j][cols[i + k] + ch];
                        out[i * BPP + ch] = static_cast<uint8_t>(ClampByte(DivideRounded(sum, divisor)));
                    }
                pass.WriteRow(y, out);
            }
        });
    });
}

// The value of rank K (from 0) of a sliding histogram, kept up to date as
// samples come and go: Below counts the samples under Value. Moving the
// window changes the rank's value by little, so that settling costs a few
// steps where a search from 0 would cost up to 256.
struct RankTracker {
    int32_t K = 0, Value = 0, Below = 0;
    void Added(uint8_t v) { Below += v < Value; }
    void Removed(uint8_t v) { Below -= v < Value; }
    void Settle(const int32_t* hist) {
        while (Below > K)
            Below -= hist[--Value];
        while (Below + hist[Value] <= K)
            Below += hist[Value++];
    }
};

} // namespace

// Sharpening as the pixel plus its difference from a blur: the 1-2-1 binomial
// mean B = [1 2 1; 2 4 2; 1 2 1] / 16, so p + (p - B) is the 3 x 3 kernel
// [-1 -2 -1; -2 28 -2; -1 -2 -1] / 16. A step of 100 levels overshoots by 25
// on either side.
bool Sharpen(CImage& image) {
    return Convolve3x3(image, RowOf("Sharpen"), {-1, -2, -1, -2, 28, -2, -1, -2, -1}, 16);
}

// Twice the difference, p + 2 (p - B): [-1 -2 -1; -2 20 -2; -1 -2 -1] / 8,
// an overshoot of 50 on a step of 100.
bool SharpenMore(CImage& image) {
    return Convolve3x3(image, RowOf("SharpenMore"), {-1, -2, -1, -2, 20, -2, -1, -2, -1}, 8);
}

// Local histogram sharpening, after the toggle contrast filter: a pixel is
// moved towards the darker or the lighter side of its window, whichever it is
// nearer to, so that a soft edge becomes steep without the overshoot of an
// unsharp mask. The two sides are the 1/8 and 7/8 ranks of the histogram of
// the (2r + 1)^2 window (clamped at the borders), which a lone bright or dark
// pixel does not move. Between them a value goes through the curve t^3 / (t^3 +
// (1 - t)^3) (slope 3 in the middle, flat at the ends); values outside them,
// which the curve would drag in, stay. The radius is the width of the edges it
// steepens and of the neighbourhood whose contrast it raises. It works on the
// luma, and a colour pixel moves all three channels by the luma's change: on
// the channels one by one a wide window would shift the hues. The histogram
// slides along each row, 2 (2r + 1) samples changing a pixel.
bool SharpByHistGram(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    // The cost grows with the radius: beyond the dialog's 50 it would only hang.
    radius = std::min(radius, MaxHistGramRadius);
    const int64_t side = 2 * static_cast<int64_t>(radius) + 1;
    const int32_t count = static_cast<int32_t>(std::min<int64_t>(side * side, INT32_MAX));
    auto steepen = [](int32_t v, int32_t lo, int32_t hi) {
        if (v <= lo || v >= hi) return v;
        const double t = static_cast<double>(v - lo) / (hi - lo);
        const double a = t * t * t, c = (1 - t) * (1 - t) * (1 - t);
        return RoundHalfEven(lo + (hi - lo) * a / (a + c));
    };
    return RunFilter(
        image, {RowOf("SharpByHistGram")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
            const DealRect b = pass.Bounds();
            const kernels::Plane& src = pass.Source().Plane();
            std::vector<uint8_t> lumas;
            kernels::Plane luma = src;
            if constexpr (BPP > 1) {
                lumas.resize(static_cast<size_t>(src.Width) * src.Height);
                ParallelRows(0, src.Height - 1, src.Width, [&](int32_t y0, int32_t y1) {
                    for (int32_t y = y0; y <= y1; ++y) {
                        const uint8_t* p = src.Row(y);
                        uint8_t* l = lumas.data() + static_cast<size_t>(y) * src.Width;
                        for (int32_t x = 0; x < src.Width; ++x, p += BPP)
                            l[x] = static_cast<uint8_t>(GreyValue(p[2], p[1], p[0]));
                    }
                });
                luma = {lumas.data(), src.Width, src.Width, src.Height};
            }
            // Columns Left - r .. Right + r, clamped.
            const std::vector<int32_t> cols =
                ClampedIndexTable(b.Left - static_cast<int64_t>(radius),
                                  b.Right + static_cast<int64_t>(radius), src.Width, 0, 1);
            pass.ForRowBands(2 * side, [&](int32_t y0, int32_t y1, uint8_t* out) {
                std::vector<const uint8_t*> rows(static_cast<size_t>(side));
                int32_t hist[256];
                for (int32_t y = y0; y <= y1; ++y) {
                    for (int64_t j = 0; j < side; ++j)
                        rows[static_cast<size_t>(j)] = luma.Row(ClampIndex(y - radius + j, luma.Height));
                    std::fill(std::begin(hist), std::end(hist), 0);
                    for (int64_t k = 0; k < side; ++k)
                        for (const uint8_t* r : rows)
                            ++hist[r[cols[static_cast<size_t>(k)]]];
                    RankTracker low{count / 8}, high{count - 1 - count / 8};
                    const uint8_t* own = luma.Row(y);
                    const uint8_t* pixels = src.Row(y);
                    for (int32_t i = 0; i < pass.BoundWidth(); ++i) {
                        if (i > 0) {
                            // Column i - 1 - r leaves the window, column i + r enters.
                            const int32_t leave = cols[static_cast<size_t>(i - 1)];
                            const int32_t enter = cols[static_cast<size_t>(i + 2 * radius)];
                            for (const uint8_t* r : rows) {
                                const uint8_t o = r[leave], n = r[enter];
                                --hist[o];
                                ++hist[n];
                                low.Removed(o);
                                high.Removed(o);
                                low.Added(n);
                                high.Added(n);
                            }
                        }
                        low.Settle(hist);
                        high.Settle(hist);
                        const int32_t x = b.Left + i, v = own[x];
                        const int32_t change = steepen(v, low.Value, high.Value) - v;
                        const uint8_t* p = pixels + static_cast<ptrdiff_t>(x) * BPP;
                        for (int ch = 0; ch < CH; ++ch)
                            out[i * BPP + ch] = static_cast<uint8_t>(ClampByte(p[ch] + change));
                    }
                    pass.WriteRow(y, out);
                }
            });
        });
}

// The classic unsharp mask: d = p - blur, the blur being the triangular mean
// of the Gaussian blur (whose cost does not grow with the radius); where |d|
// reaches the threshold the pixel becomes p + Amount / 100 * d, clamped, and
// elsewhere it stays, so that a threshold spares smooth skin and sky their
// noise. The running mean truncates twice, which alone would put the blur up
// to a level low and brighten the picture by Amount times that; the mean of
// the complement, taken back, truncates the other way (it is the mean rounded
// up), so the blur is the middle of the two, in half levels. The change for
// each d is one table.
bool UnsharpMask(CImage& image, int32_t amount, int32_t radius, int32_t threshold) {
    if (amount < 0 || radius < 0 || threshold < 0) return false;
    // The change for a difference of d half levels, at [d + 510].
    std::array<int32_t, 1021> change;
    for (int32_t d = -510; d <= 510; ++d)
        change[d + 510] = std::abs(d) < 2 * threshold ? 0 : RoundHalfEven(amount * d / 200.0);
    return RunFilter(image, {RowOf("UnsharpMask")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const kernels::Plane& src = pass.Source().Plane();
        const size_t size = static_cast<size_t>(src.Stride) * src.Height;
        std::unique_ptr<uint8_t[]> inverse(new uint8_t[size]);
        for (size_t i = 0; i < size; ++i)
            inverse[i] = static_cast<uint8_t>(255 - src.Bits[i]);
        const kernels::Plane complement{inverse.get(), src.Stride, src.Width, src.Height};
        const DealRect b = pass.Bounds();
        const int32_t width = pass.BoundWidth();
        const int64_t weight = (static_cast<int64_t>(radius) + 1) * (static_cast<int64_t>(radius) + 1);
        pass.ForRowBands(2, [&](int32_t y0, int32_t y1, uint8_t* out) {
            // The band's means rounded down, then its pixels as the means rounded up come.
            std::vector<uint8_t> down(static_cast<size_t>(y1 - y0 + 1) * width * CH);
            uint8_t* downs = down.data();
            const int32_t left = b.Left;
            auto keep = [downs, y0, left, width](int32_t y, int32_t x, int ch, int32_t mean) {
                downs[(static_cast<size_t>(y - y0) * width + (x - left)) * CH + ch] =
                    static_cast<uint8_t>(mean);
            };
            auto sharpen = [downs, y0, left, width, out, &src, &change](int32_t y, int32_t x, int ch,
                                                                        int32_t inverseMean) {
                const int32_t p = src.Row(y)[static_cast<ptrdiff_t>(x) * BPP + ch];
                const int32_t twiceBlur =
                    downs[(static_cast<size_t>(y - y0) * width + (x - left)) * CH + ch] + 255 - inverseMean;
                out[static_cast<size_t>(x - left) * BPP + ch] =
                    static_cast<uint8_t>(ClampByte(p + change[2 * p - twiceBlur + 510]));
            };
            auto run = [&](auto acc) {
                using Acc = decltype(acc);
                kernels::TriangleMeanBand<Acc, BPP, CH>(src, b.Left, b.Right, radius, y0, y1, keep,
                                                        [](int32_t) {});
                kernels::TriangleMeanBand<Acc, BPP, CH>(complement, b.Left, b.Right, radius, y0, y1, sharpen,
                                                        [&pass, out](int32_t y) { pass.WriteRow(y, out); });
            };
            if (kernels::FitsInt32(weight))
                run(int32_t{});
            else
                run(int64_t{});
        });
    });
}

} // namespace vm
