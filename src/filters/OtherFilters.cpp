#include "filters/OtherFilters.h"

#include "filters/FilterScaffold.h"
#include "filters/RunningMeans.h"
#include "kernels/EdgeClamp.h"

#include <cmath>

namespace vm {

using namespace filters;
using kernels::ClampedIndexTable;
using kernels::ClampIndex;

bool HighPass(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    // The low pass is the Gaussian blur's own routine and announces itself
    // under the blur's name; the refusal names the command the user chose.
    return RunFilter(image, {RowOf("HighPass"), &RowOf("GuassBlur")},
                     [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
                         // The picture less its low pass, about a neutral 128.
                         TriangleMeanRows(pass, radius, [&](int32_t y, int32_t x, int ch, int32_t mean) {
                             return ClampByte(pass.Source().Row(y)[static_cast<ptrdiff_t>(x) * BPP + ch] -
                                              mean + 128);
                         });
                     });
}

bool Offset(CImage& image, int32_t horization, int32_t vertical, int32_t edge) {
    if (edge < OffsetEdgeLeave || edge > OffsetEdgeWrap) return false;
    // Wrapping is repeated subtraction or addition of the size: a remainder
    // that is never negative. -1: the pixel stays as it is.
    auto source = [edge](int64_t v, int32_t size) -> int32_t {
        if (v >= 0 && v < size) return static_cast<int32_t>(v);
        if (edge == OffsetEdgeLeave) return -1;
        return edge == OffsetEdgeClamp ? ClampIndex(v, size)
                                       : ModPositive(static_cast<int32_t>(v % size), size);
    };
    return RunFilter(image, {RowOf("Offset")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const DealRect b = pass.Bounds();
        // Source columns of the bound's columns, -1 where the pixel stays.
        std::vector<int32_t> columns(static_cast<size_t>(pass.BoundWidth()));
        for (int32_t x = b.Left; x <= b.Right; ++x)
            columns[static_cast<size_t>(x - b.Left)] =
                source(static_cast<int64_t>(x) - horization, pass.Width());
        pass.ForRowBands(1, [&](int32_t y0, int32_t y1, uint8_t* __restrict out) {
            for (int32_t y = y0; y <= y1; ++y) {
                // A pixel that stays takes its own old value, which the blend keeps.
                const uint8_t* own = pass.Source().Row(y) + static_cast<ptrdiff_t>(b.Left) * BPP;
                const int32_t sy = source(static_cast<int64_t>(y) - vertical, pass.Height());
                if (sy < 0) {
                    std::memcpy(out, own, static_cast<size_t>(pass.BoundWidth()) * BPP);
                } else {
                    const uint8_t* from = pass.Source().Row(sy);
                    for (size_t i = 0; i < columns.size(); ++i) {
                        const uint8_t* q =
                            columns[i] < 0 ? own + i * BPP : from + static_cast<ptrdiff_t>(columns[i]) * BPP;
                        for (int ch = 0; ch < BPP; ++ch)
                            out[i * BPP + ch] = q[ch];
                    }
                }
                pass.WriteRow(y, out);
            }
        });
    });
}

namespace {

int32_t LimitRankRadius(int32_t r) {
    return r < 1 ? 1 : (r > 99 ? 100 : r);
}

// The rectangular maximum (or minimum): over the rows first into a buffer of
// the row extended by RadiusX on both sides, then along it. Positions off the
// picture hold the neutral value and so do not count.
template <bool IsMax> bool RankFilter(CImage& image, const Operation& row, int32_t radiusX, int32_t radiusY) {
    const int32_t rx = LimitRankRadius(radiusX), ry = LimitRankRadius(radiusY);
    const uint8_t neutral = IsMax ? 0 : 255;
    auto pick = [](uint8_t a, uint8_t c) { return IsMax ? std::max(a, c) : std::min(a, c); };
    return RunFilter(image, {row}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const SourceCopy& src = pass.Source();
        const int32_t w = pass.Width(), h = pass.Height();
        const DealRect b = pass.Bounds();
        const int32_t bw = pass.BoundWidth();
        pass.ForRowBands(rx + ry, [&](int32_t y0, int32_t y1, uint8_t* __restrict out) {
            const int32_t extLeft = b.Left - rx;
            const size_t extBytes = static_cast<size_t>(bw + 2 * rx) * BPP,
                         outBytes = static_cast<size_t>(bw) * BPP;
            std::vector<uint8_t> ext(extBytes);
            const int32_t cA = std::max(0, extLeft), cB = std::min(w - 1, b.Right + rx);
            const size_t inside = static_cast<size_t>(cB - cA + 1) * BPP;
            uint8_t* column = ext.data() + static_cast<size_t>(cA - extLeft) * BPP;
            for (int32_t y = y0; y <= y1; ++y) {
                std::fill(ext.begin(), ext.end(), neutral);
                const int32_t ya = std::max(0, y - ry), yb = std::min(h - 1, y + ry);
                std::memcpy(column, src.Row(ya) + static_cast<ptrdiff_t>(cA) * BPP, inside);
                for (int32_t yy = ya + 1; yy <= yb; ++yy) {
                    const uint8_t* s = src.Row(yy) + static_cast<ptrdiff_t>(cA) * BPP;
                    for (size_t i = 0; i < inside; ++i)
                        column[i] = pick(column[i], s[i]);
                }
                std::memcpy(out, ext.data(), outBytes);
                for (int32_t k = 1; k <= 2 * rx; ++k) {
                    const uint8_t* s = ext.data() + static_cast<size_t>(k) * BPP;
                    for (size_t i = 0; i < outBytes; ++i)
                        out[i] = pick(out[i], s[i]);
                }
                pass.WriteRow(y, out);
            }
        });
    });
}

} // namespace

bool MaxFilters(CImage& image, int32_t radiusX, int32_t radiusY) {
    return RankFilter<true>(image, RowOf("MaxFilter"), radiusX, radiusY);
}

bool MinFilters(CImage& image, int32_t radiusX, int32_t radiusY) {
    return RankFilter<false>(image, RowOf("MinFilter"), radiusX, radiusY);
}

bool ShowMeanSquareError(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    static const std::vector<uint8_t> root = [] {
        std::vector<uint8_t> t(65026);
        for (size_t i = 0; i < t.size(); ++i)
            t[i] = static_cast<uint8_t>(RoundHalfEven(std::sqrt(static_cast<double>(i))));
        return t;
    }();
    const int64_t r = radius, count = (2 * r + 1) * (2 * r + 1);
    return RunFilter(
        image, {RowOf("ShowMeanSquareError")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
            const int32_t w = pass.Width();
            const DealRect b = pass.Bounds();
            const int32_t bandL = ClampIndex(b.Left - r, w), bandR = ClampIndex(b.Right + r, w);
            const int32_t bandW = bandR - bandL + 1;
            const int64_t first = b.Left - r - 1;
            const std::vector<int32_t> idx = ClampedIndexTable(first, b.Right + r, w, bandL, CH);
            pass.ForRowBands(1, [&](int32_t y0, int32_t y1, uint8_t* __restrict out) {
                // Column sums of values and of squares, as the box blur keeps them.
                kernels::ColumnSums<int64_t, BPP, CH> sums(pass.Source().Plane(), bandL, bandW, r, y0);
                kernels::ColumnSums<int64_t, BPP, CH, true> squareSums(pass.Source().Plane(), bandL, bandW, r,
                                                                       y0);
                const int64_t* sum = sums.Data();
                const int64_t* sq = squareSums.Data();
                for (int32_t y = y0; y <= y1; ++y) {
                    if (y > y0) {
                        sums.MoveTo(y);
                        squareSums.MoveTo(y);
                    }
                    int64_t total[CH] = {}, squares[CH] = {};
                    for (int64_t j = -r; j <= r; ++j) {
                        const int32_t o = idx[static_cast<size_t>(b.Left + j - first)];
                        for (int ch = 0; ch < CH; ++ch) {
                            total[ch] += sum[o + ch];
                            squares[ch] += sq[o + ch];
                        }
                    }
                    for (int32_t x = b.Left; x <= b.Right; ++x) {
                        const size_t i = static_cast<size_t>(x - b.Left);
                        if (x > b.Left) {
                            const int32_t e = idx[i + static_cast<size_t>(2 * r + 1)], l = idx[i];
                            for (int ch = 0; ch < CH; ++ch) {
                                total[ch] += sum[e + ch] - sum[l + ch];
                                squares[ch] += sq[e + ch] - sq[l + ch];
                            }
                        }
                        for (int ch = 0; ch < CH; ++ch) {
                            const int64_t m = total[ch] / count;
                            const int64_t variance =
                                (squares[ch] - 2 * m * total[ch] + count * m * m) / count;
                            out[i * BPP + ch] =
                                root[static_cast<size_t>(std::clamp<int64_t>(variance, 0, 65025))];
                        }
                    }
                    pass.WriteRow(y, out);
                }
            });
        });
}

bool Convolute(CImage& image, const std::array<int32_t, 25>& matrix, int32_t offset, int32_t divider) {
    // The dialog forbids a divider of 0; anyone else gets a refusal.
    if (divider == 0) return false;
    return RunFilter(image, {RowOf("Convolute")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const DealRect b = pass.Bounds();
        // The block with a border of two repeated edge pixels, as tables.
        const std::vector<int32_t> cols = ClampedIndexTable(b.Left - 2, b.Right + 2, pass.Width(), 0, BPP);
        std::vector<const uint8_t*> rows;
        for (int64_t y = b.Top - 2; y <= b.Bottom + 2; ++y)
            rows.push_back(pass.Source().Row(ClampIndex(y, pass.Height())));
        pass.ForPixels(25, [&](int32_t x, int32_t y, int32_t* v) {
            int64_t sum[CH] = {};
            const uint8_t* const* window = rows.data() + (y - b.Top);
            const int32_t* across = cols.data() + (x - b.Left);
            for (int ky = 0; ky < 5; ++ky)
                for (int kx = 0; kx < 5; ++kx) {
                    const int32_t k = matrix[static_cast<size_t>(ky * 5 + kx)];
                    if (!k) continue;
                    const uint8_t* q = window[ky] + across[kx];
                    for (int ch = 0; ch < CH; ++ch)
                        sum[ch] += static_cast<int64_t>(k) * q[ch];
                }
            for (int ch = 0; ch < CH; ++ch)
                v[ch] = static_cast<int32_t>(std::clamp<int64_t>(sum[ch] / divider + offset, 0, 255));
            return true;
        });
    });
}

} // namespace vm
