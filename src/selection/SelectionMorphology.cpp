// The morphology of the mask: median smoothing, square and disc dilation and
// erosion, the border band and the triangle feather. Every kernel costs the
// same per pixel whatever the radius (the disc nearly so): users try radii of
// a hundred on pictures of many million pixels and expect no wait.
#include "selection/Selection.h"

#include "core/Numeric.h"
#include "kernels/EdgeClamp.h"
#include "kernels/ParallelRows.h"
#include "kernels/RunningMeans.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace vm {

namespace {

template <bool Expand> inline uint8_t Ext(uint8_t a, uint8_t b) {
    return Expand ? std::max(a, b) : std::min(a, b);
}

template <bool Expand> inline bool Beats(uint8_t candidate, uint8_t current) {
    return Expand ? candidate > current : candidate < current;
}

using kernels::ClampIndex;
using kernels::ForEachClamped;

// Sixteen bins of one histogram minus another's, added to a third.
inline void AddDifference(int32_t* __restrict sum, const uint16_t* __restrict plus,
                          const uint16_t* __restrict minus) {
    for (int b = 0; b < 16; ++b)
        sum[b] += static_cast<int32_t>(plus[b]) - static_cast<int32_t>(minus[b]);
}

int64_t ISqrt(int64_t n) {
    int64_t r = static_cast<int64_t>(std::sqrt(static_cast<double>(n)));
    while (r * r > n)
        --r;
    while ((r + 1) * (r + 1) <= n)
        ++r;
    return r;
}

// Running extremum over windows of k entries of an already padded array (van
// Herk / Gil-Werman): three comparisons a position whatever k is. Writes the
// n - k + 1 window results; Scratch is reused between calls.
template <bool Expand>
void WindowExtremum(const uint8_t* v, int64_t n, int64_t k, uint8_t* out, std::vector<uint8_t>& scratch) {
    scratch.resize(2 * static_cast<size_t>(n));
    uint8_t* suffix = scratch.data();
    uint8_t* prefix = suffix + n;
    for (int64_t start = 0; start < n; start += k) {
        const int64_t end = std::min(start + k, n) - 1;
        suffix[end] = v[end];
        for (int64_t q = end - 1; q >= start; --q)
            suffix[q] = Ext<Expand>(v[q], suffix[q + 1]);
        prefix[start] = v[start];
        for (int64_t q = start + 1; q <= end; ++q)
            prefix[q] = Ext<Expand>(prefix[q - 1], v[q]);
    }
    for (int64_t i = 0, e = n - k; i <= e; ++i)
        out[i] = Ext<Expand>(suffix[i], prefix[i + k - 1]);
}

// ---- square dilation and erosion, separable, outside counting as Fill.
template <bool Expand> void RectKernel(uint8_t* bits, int32_t w, int32_t h, int32_t stride, int32_t radius) {
    const uint8_t fill = Expand ? 0 : 255;
    // A window taller than the mask sees every row plus the outside, as one
    // of exactly the mask's height does.
    const int64_t rv = std::min(radius, h);
    const int64_t k = 2 * rv + 1, rows = h + 2 * rv;
    std::vector<uint8_t> fillRow(static_cast<size_t>(w), fill);
    auto in = [&](int64_t q) -> const uint8_t* {
        const int64_t y = q - rv;
        return (y >= 0 && y < h) ? bits + y * stride : fillRow.data();
    };
    // Block suffixes of the rows the outputs start at; the prefixes are
    // carried along in one row during the forward walk.
    std::vector<uint8_t> suffix(static_cast<size_t>(w) * h), run(static_cast<size_t>(w));
    for (int64_t q = rows - 1; q >= 0; --q) {
        const uint8_t* src = in(q);
        if (q == rows - 1 || (q + 1) % k == 0)
            std::memcpy(run.data(), src, w);
        else
            for (int32_t x = 0; x < w; ++x)
                run[x] = Ext<Expand>(src[x], run[x]);
        if (q < h) std::memcpy(suffix.data() + q * w, run.data(), w);
    }
    std::vector<uint8_t> prefix(static_cast<size_t>(w)), padded(static_cast<size_t>(w) + 2 * radius), scratch;
    std::memset(padded.data(), fill, padded.size());
    for (int64_t q = 0; q < rows; ++q) {
        const uint8_t* src = in(q);
        if (q % k == 0)
            std::memcpy(prefix.data(), src, w);
        else
            for (int32_t x = 0; x < w; ++x)
                prefix[x] = Ext<Expand>(prefix[x], src[x]);
        if (q < 2 * rv) continue;
        // Rows read later lie below this one, so the result may go in place.
        const int64_t y = q - 2 * rv;
        const uint8_t* s = suffix.data() + y * w;
        uint8_t* row = padded.data() + radius;
        for (int32_t x = 0; x < w; ++x)
            row[x] = Ext<Expand>(s[x], prefix[x]);
        WindowExtremum<Expand>(padded.data(), static_cast<int64_t>(padded.size()), 2 * int64_t{radius} + 1,
                               bits + y * stride, scratch);
    }
}

// ---- disc dilation and erosion. The result at row y is centred on mask row
// y - 1: the work buffer has one row of margin at the top and the table's
// row 0 is read from it, so every disc result lands one row lower. The
// editor has always behaved so and files made with it depend on it.
template <bool Expand> bool RoundKernel(uint8_t* bits, int32_t w, int32_t h, int32_t stride, int32_t radius) {
    const uint8_t fill = Expand ? 0 : 255, sat = Expand ? 255 : 0;
    const int64_t r = radius;
    // A disc that reaches every mask pixel from every centre gives every pixel
    // the extremum of the whole mask.
    if (r * r >= int64_t{w - 1} * (w - 1) + int64_t{h} * h) {
        uint8_t v = fill;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x)
                v = Ext<Expand>(v, bits[int64_t{y} * stride + x]);
        for (int32_t y = 0; y < h; ++y)
            std::memset(bits + int64_t{y} * stride, v, w);
        return true;
    }
    const int64_t tw = w + 2 * r;
    if ((r + 1) * tw > (int64_t{1} << 31)) return false;
    std::vector<uint8_t> src(static_cast<size_t>(w) * h);
    for (int32_t y = 0; y < h; ++y)
        std::memcpy(src.data() + int64_t{y} * w, bits + int64_t{y} * stride, w);
    auto maskRow = [&](int64_t y) -> const uint8_t* {
        return (y >= 0 && y < h) ? src.data() + y * w : nullptr;
    };

    // Table row j, for the current output row y: per column, the extremum of
    // mask rows y - 1 - j .. y - 1 + j. Columns of the margins stay the fill.
    std::vector<uint8_t> table(static_cast<size_t>((r + 1) * tw), fill);
    auto mid = [&](int64_t j) { return table.data() + j * tw + r; };
    for (int64_t j = 1; j <= r; ++j) {
        uint8_t* d = mid(j);
        const uint8_t* above = mid(j - 1);
        const uint8_t* m = maskRow(j - 1);
        if (m)
            for (int32_t x = 0; x < w; ++x)
                d[x] = Ext<Expand>(above[x], m[x]);
        else
            std::memcpy(d, above, w);
    }
    // Disc profile: column dx reads table row h(dx).
    std::vector<const uint8_t*> column(static_cast<size_t>(2 * r + 1));
    for (int64_t dx = -r; dx <= r; ++dx)
        column[dx + r] = table.data() + ISqrt(r * r - dx * dx) * tw + r + dx;
    const uint8_t* centre = table.data() + r * tw + r;

    std::vector<uint8_t> bound(static_cast<size_t>(w)), scratch;
    for (int32_t y = 0; y < h; ++y) {
        if (y > 0) {
            for (int64_t j = r; j >= 1; --j) {
                uint8_t* d = mid(j);
                const uint8_t* old = mid(j - 1);
                const uint8_t* a = maskRow(y + j - 1);
                const uint8_t* b = maskRow(y + j - 2);
                if (a && b)
                    for (int32_t x = 0; x < w; ++x)
                        d[x] = Ext<Expand>(Ext<Expand>(old[x], a[x]), b[x]);
                else if (b)
                    for (int32_t x = 0; x < w; ++x)
                        d[x] = Ext<Expand>(old[x], b[x]);
                else
                    std::memcpy(d, old, w);
            }
            std::memcpy(mid(0), maskRow(y - 1), w);
        }
        // The bounding square's extremum caps every disc value: a scan stops
        // as soon as it is reached, and where the centre column already holds
        // it there is nothing to scan.
        WindowExtremum<Expand>(table.data() + r * tw, tw, 2 * r + 1, bound.data(), scratch);
        uint8_t* out = bits + int64_t{y} * stride;
        uint8_t last = fill;
        int64_t p = -1; // where the last value was found, relative to the centre
        for (int32_t x = 0; x < w; ++x) {
            const uint8_t u = bound[x];
            uint8_t v;
            if (x > 0) --p;
            if (u == fill) {
                v = fill;
                p = r;
            } else if (centre[x] == u) {
                v = u;
                p = 0;
            } else if (x > 0 && p >= 0 && last == sat) {
                v = sat;
            } else {
                // Moving right, a column left of the centre only loses height, so
                // while the last extremum lies at or right of the centre the left
                // half cannot beat it and only the right half needs a look.
                const int64_t from = (x > 0 && p >= 0) ? 0 : -r;
                v = fill;
                int64_t at = from;
                for (int64_t dx = from; dx <= r; ++dx) {
                    const uint8_t e = column[dx + r][x];
                    if (Beats<Expand>(e, v)) {
                        v = e;
                        at = dx;
                        if (v == u) break;
                    }
                }
                p = at;
            }
            out[x] = v;
            last = v;
        }
    }
    return true;
}

} // namespace

// ---------------------------------------------------------------- kernels

void CSelection::FeatherPixels(int32_t radius) {
    // The triangle of the blurs, read from a copy since its rows are written
    // back into the mask as they come.
    const int32_t w = width_, h = height_;
    std::vector<uint8_t> copy(static_cast<size_t>(w) * h);
    for (int32_t y = 0; y < h; ++y)
        std::memcpy(copy.data() + int64_t{y} * w, Row(y), w);
    const kernels::Plane source{copy.data(), w, w, h};
    kernels::ParallelRows(0, h - 1, w, [&](int32_t y0, int32_t y1) {
        // Weights up to 251^2 times 255 fit 32-bit sums.
        kernels::TriangleMeanBand<int32_t, 1, 1>(
            source, 0, w - 1, radius, y0, y1,
            [bits = bits_, stride = ptrdiff_t{stride_}](int32_t y, int32_t x, int, int32_t mean) {
                bits[y * stride + x] = static_cast<uint8_t>(mean);
            },
            [](int32_t) {});
    });
}

bool CSelection::SmoothPixels(int32_t radius) {
    const int32_t w = width_, h = height_;
    const int64_t r = radius;
    // Half the window, rounded half to even: one below the true median rank.
    // Together with the 255-first test below this leans towards keeping a
    // selection rather than eating it.
    const int32_t threshold =
        static_cast<int32_t>(RoundHalfEven64(static_cast<double>((2 * r + 1) * (2 * r + 1)) / 2.0));

    std::vector<uint8_t> src(static_cast<size_t>(w) * h);
    for (int32_t y = 0; y < h; ++y)
        std::memcpy(src.data() + int64_t{y} * w, Row(y), w);
    auto srcRow = [&](int64_t y) { return src.data() + int64_t{ClampIndex(y, h)} * w; };

    // One histogram per column over the window's rows, moved down a row at a
    // time. The window's histogram moves right by adding the entering column's
    // and removing the leaving column's. Only the counts of 0 and 255 follow
    // every step: they answer the mostly binary windows at once. The sixteen
    // coarse bins, and the fine bins of one coarse bin, are brought up to date
    // only when a rank query needs them, from the columns passed since.
    std::vector<uint16_t> colCoarse(static_cast<size_t>(w) * 16, 0), colFine(static_cast<size_t>(w) * 256, 0);
    std::vector<uint16_t> colZero(static_cast<size_t>(w), 0), colFull(static_cast<size_t>(w), 0);
    auto move = [&](int32_t x, uint8_t v, int32_t weight) {
        uint16_t& fineBin = colFine[static_cast<size_t>(x) * 256 + v];
        uint16_t& coarseBin = colCoarse[static_cast<size_t>(x) * 16 + (v >> 4)];
        fineBin = static_cast<uint16_t>(fineBin + weight);
        coarseBin = static_cast<uint16_t>(coarseBin + weight);
        if (v == 0)
            colZero[x] = static_cast<uint16_t>(colZero[x] + weight);
        else if (v == 255)
            colFull[x] = static_cast<uint16_t>(colFull[x] + weight);
    };
    ForEachClamped(-r, r, h, [&](int64_t i, int64_t weight) {
        const uint8_t* m = srcRow(i);
        for (int32_t x = 0; x < w; ++x)
            move(x, m[x], static_cast<int32_t>(weight));
    });

    // A table of bins (16 coarse, or the 16 fine of one coarse bin) of the
    // window centred at At, caught up or rebuilt when asked for another centre.
    struct LazyBins {
        int32_t Bin[16];
        int64_t At;
    };
    constexpr int64_t invalid = std::numeric_limits<int64_t>::min();
    LazyBins coarse{}, fine[16]{};
    const int64_t windowColumns = std::min<int64_t>(2 * r + 1, w) + 2;
    auto ensure = [&](LazyBins& bins, const uint16_t* cols, size_t colStride, int64_t x) {
        if (bins.At == x) return;
        if (bins.At == invalid || 2 * (x - bins.At) > windowColumns) {
            std::fill(bins.Bin, bins.Bin + 16, 0);
            ForEachClamped(x - r, x + r, w, [&](int64_t i, int64_t weight) {
                const uint16_t* c = cols + static_cast<size_t>(i) * colStride;
                for (int b = 0; b < 16; ++b)
                    bins.Bin[b] += static_cast<int32_t>(weight) * c[b];
            });
        } else {
            for (int64_t s = bins.At + 1; s <= x; ++s) {
                const int64_t enter = ClampIndex(s + r, w), leave = ClampIndex(s - r - 1, w);
                if (enter != leave)
                    AddDifference(bins.Bin, cols + static_cast<size_t>(enter) * colStride,
                                  cols + static_cast<size_t>(leave) * colStride);
            }
        }
        bins.At = x;
    };

    for (int32_t y = 0; y < h; ++y) {
        if (y > 0) {
            const int64_t leave = ClampIndex(y - 1 - r, h), enter = ClampIndex(y + r, h);
            if (leave != enter) {
                // Most columns of a mask see the same value leave and enter.
                const uint8_t* out = srcRow(leave);
                const uint8_t* in = srcRow(enter);
                for (int32_t x = 0; x < w; ++x) {
                    if (out[x] == in[x]) continue;
                    move(x, out[x], -1);
                    move(x, in[x], 1);
                }
            }
        }
        int32_t zero = 0, full = 0;
        ForEachClamped(-r, r, w, [&](int64_t i, int64_t weight) {
            zero += static_cast<int32_t>(weight) * colZero[i];
            full += static_cast<int32_t>(weight) * colFull[i];
        });
        coarse.At = invalid;
        for (auto& f : fine)
            f.At = invalid;

        uint8_t* out = Row(y);
        for (int32_t x = 0; x < w; ++x) {
            if (x > 0) {
                const int64_t enter = ClampIndex(x + r, w), leave = ClampIndex(x - r - 1, w);
                zero += colZero[enter] - colZero[leave];
                full += colFull[enter] - colFull[leave];
            }
            if (full >= threshold) {
                out[x] = 255;
                continue;
            }
            if (zero >= threshold) {
                out[x] = 0;
                continue;
            }
            ensure(coarse, colCoarse.data(), 16, x);
            int32_t sum = 0;
            int value = 255;
            for (int g = 0; g < 16; ++g) {
                if (sum + coarse.Bin[g] < threshold) {
                    sum += coarse.Bin[g];
                    continue;
                }
                ensure(fine[g], colFine.data() + 16 * g, 256, x);
                for (int b = 0; b < 16; ++b) {
                    sum += fine[g].Bin[b];
                    if (sum >= threshold) {
                        value = 16 * g + b;
                        break;
                    }
                }
                break;
            }
            out[x] = static_cast<uint8_t>(value);
        }
    }
    return true;
}

bool CSelection::RectMorphologyPixels(int32_t radius, bool expand) {
    if (radius < 1) radius = 1;
    if (radius >= width_) radius = width_ - 1;
    if (radius < 1) return true;
    if (expand)
        RectKernel<true>(bits_, width_, height_, stride_, radius);
    else
        RectKernel<false>(bits_, width_, height_, stride_, radius);
    return true;
}

bool CSelection::RoundMorphologyPixels(int32_t radius, bool expand) {
    if (radius < 0) return false;
    return expand ? RoundKernel<true>(bits_, width_, height_, stride_, radius)
                  : RoundKernel<false>(bits_, width_, height_, stride_, radius);
}

// ---------------------------------------------------------------- commands

template <typename Work> bool CSelection::MorphologyFrame(Work&& work) {
    RaiseBefore();
    ResetSelectionPosoition();
    const bool done = work();
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return done;
}

namespace {
// Column histograms hold counts up to 2 x Radius + 1 in 16 bits.
constexpr int32_t MaxSmoothRadius = 16383;
} // namespace

bool CSelection::Smooth(int32_t radius) {
    if (!bits_ || radius < 1 || radius > MaxSmoothRadius) return false;
    return MorphologyFrame([&] { return SmoothPixels(radius); });
}

bool CSelection::ExpandRect(int32_t radius) {
    if (!bits_) return false;
    return MorphologyFrame([&] { return RectMorphologyPixels(radius, true); });
}

bool CSelection::ShrinkRect(int32_t radius) {
    if (!bits_) return false;
    return MorphologyFrame([&] { return RectMorphologyPixels(radius, false); });
}

bool CSelection::ExpandRound(int32_t radius) {
    if (!bits_ || radius < 0) return false;
    return MorphologyFrame([&] { return RoundMorphologyPixels(radius, true); });
}

bool CSelection::ShrinkRound(int32_t radius) {
    if (!bits_ || radius < 0) return false;
    return MorphologyFrame([&] { return RoundMorphologyPixels(radius, false); });
}

bool CSelection::Border(int32_t radius, bool round) {
    if (!bits_ || radius < 0) return false;
    // The shrunk copy is a work buffer: it is never checked for emptiness, so
    // that a band thinner than the radius borders on nothing rather than on
    // everything.
    CSelection inner;
    if (!inner.CreateNewSelection(width_, height_)) return false;
    RaiseBefore();
    ResetSelectionPosoition();
    std::memcpy(inner.bits_, bits_, BufferSize());
    nestedChange_ = true;
    if (round) {
        inner.RoundMorphologyPixels(radius, false);
        ExpandRound(radius);
    } else {
        inner.RectMorphologyPixels(radius, false);
        ExpandRect(radius);
    }
    nestedChange_ = false;
    CombineWith(inner.bits_, inner.stride_, SelectionModeSubtract);
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

bool CSelection::Feather(int32_t& radius) {
    if (radius == 0) return true;
    radius = std::clamp(radius, 1, 250);
    if (!bits_) return false;
    RaiseBefore();
    ResetSelectionPosoition();
    FeatherPixels(radius);
    if (!nestedChange_) CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

} // namespace vm
