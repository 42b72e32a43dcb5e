#include "filters/OtherFilters.h"

#include "core/MessageBox.h"
#include "filters/Blur.h"
#include "filters/RunningMeans.h"

#include <cmath>
#include <limits>

namespace vm {

using namespace filters;

bool HighPass(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    // The low pass is the Gaussian blur's own routine and announces itself
    // under the blur's name; the refusal names the command the user chose.
    if (image.IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(HighPassTitle), 0, QString(), ButtonsOk, IconNone);
        return false;
    }
    auto frame = ProcessingFrame::Begin(image, GaussianBlurTitle);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (!bpp) return frame.End();
    const SourceCopy src(image);
    ForFormat(bpp, [&](auto B) {
        constexpr int BPP = B(), CH = ColourChannels(BPP);
        // The picture less its low pass, about a neutral 128.
        TriangleMeanFilter<BPP, CH>(frame, src, radius, [&](int32_t y, int32_t x, int ch, int32_t mean) {
            return ClampByte(src.Row(y)[static_cast<ptrdiff_t>(x) * BPP + ch] - mean + 128);
        });
    });
    return frame.End();
}

bool Offset(CImage& image, int32_t horization, int32_t vertical, int32_t edge) {
    if (edge < OffsetEdgeLeave || edge > OffsetEdgeWrap) return false;
    auto frame = ProcessingFrame::Begin(image, OffsetTitle);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (!bpp) return frame.End();
    const SourceCopy src(image);
    const int32_t w = image.Width(), h = image.Height();
    const DealRect b = frame.Bounds();
    const RowSpans spans(frame.Rects(), b);
    // Wrapping is repeated subtraction or addition of the size: a remainder
    // that is never negative.
    auto wrap = [](int64_t v, int32_t size) { return ModPositive(static_cast<int32_t>(v % size), size); };
    ForFormat(bpp, [&](auto B) {
        constexpr int BPP = B(), CH = ColourChannels(BPP);
        ParallelRows(b.Top, b.Bottom, b.Right - b.Left + 1, [&](int32_t y0, int32_t y1) {
            for (int32_t y = y0; y <= y1; ++y) {
                int64_t sy = static_cast<int64_t>(y) - vertical;
                if (sy < 0 || sy >= h) {
                    if (edge == OffsetEdgeLeave) continue;
                    sy = edge == OffsetEdgeClamp ? ClampIndex(sy, h) : wrap(sy, h);
                }
                const uint8_t* source = src.Row(static_cast<int32_t>(sy));
                uint8_t* row = image.Row(y);
                const uint8_t* weights = frame.WeightRow(y);
                for (const Span& s : spans.Row(y))
                    for (int32_t x = s.Left; x <= s.Right; ++x) {
                        const int32_t m = weights ? weights[x] : 255;
                        if (!m) continue;
                        int64_t sx = static_cast<int64_t>(x) - horization;
                        if (sx < 0 || sx >= w) {
                            if (edge == OffsetEdgeLeave) continue;
                            sx = edge == OffsetEdgeClamp ? ClampIndex(sx, w) : wrap(sx, w);
                        }
                        const uint8_t* q = source + sx * BPP;
                        int32_t v[CH];
                        for (int ch = 0; ch < CH; ++ch)
                            v[ch] = q[ch];
                        WriteBackPixel(row + static_cast<ptrdiff_t>(x) * BPP, v, CH, m);
                    }
            }
        });
    });
    return frame.End();
}

namespace {

int32_t LimitRankRadius(int32_t r) {
    return r < 1 ? 1 : (r > 99 ? 100 : r);
}

// The rectangular maximum (or minimum): over the rows first into a buffer of
// the row extended by RadiusX on both sides, then along it. Positions off the
// picture hold the neutral value and so do not count.
template <bool IsMax> bool RankFilter(CImage& image, const QString& title, int32_t radiusX, int32_t radiusY) {
    const int32_t rx = LimitRankRadius(radiusX), ry = LimitRankRadius(radiusY);
    auto frame = ProcessingFrame::Begin(image, title);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (!bpp) return frame.End();
    const SourceCopy src(image);
    const int32_t w = image.Width(), h = image.Height();
    const DealRect b = frame.Bounds();
    const RowSpans spans(frame.Rects(), b);
    const int32_t bw = b.Right - b.Left + 1;
    const uint8_t neutral = IsMax ? 0 : 255;
    auto pick = [](uint8_t a, uint8_t c) { return IsMax ? std::max(a, c) : std::min(a, c); };
    ForFormat(bpp, [&](auto B) {
        constexpr int BPP = B(), CH = ColourChannels(BPP);
        ParallelRows(b.Top, b.Bottom, static_cast<int64_t>(bw) * (rx + ry), [&](int32_t y0, int32_t y1) {
            const int32_t extLeft = b.Left - rx;
            const size_t extBytes = static_cast<size_t>(bw + 2 * rx) * BPP;
            std::vector<uint8_t> ext(extBytes), out(static_cast<size_t>(bw) * BPP);
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
                std::memcpy(out.data(), ext.data(), out.size());
                for (int32_t k = 1; k <= 2 * rx; ++k) {
                    const uint8_t* s = ext.data() + static_cast<size_t>(k) * BPP;
                    for (size_t i = 0; i < out.size(); ++i)
                        out[i] = pick(out[i], s[i]);
                }
                WriteBackRow(frame, spans, y, out.data(), b.Left, BPP, CH);
            }
        });
    });
    return frame.End();
}

} // namespace

bool MaxFilters(CImage& image, int32_t radiusX, int32_t radiusY) {
    return RankFilter<true>(image, MaxFiltersTitle, radiusX, radiusY);
}

bool MinFilters(CImage& image, int32_t radiusX, int32_t radiusY) {
    return RankFilter<false>(image, MinFiltersTitle, radiusX, radiusY);
}

bool ShowMeanSquareError(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    auto frame = ProcessingFrame::Begin(image, ShowMeanSquareErrorTitle);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (!bpp) return frame.End();
    static const std::vector<uint8_t> root = [] {
        std::vector<uint8_t> t(65026);
        for (size_t i = 0; i < t.size(); ++i)
            t[i] = static_cast<uint8_t>(RoundHalfEven(std::sqrt(static_cast<double>(i))));
        return t;
    }();
    const SourceCopy src(image);
    const int32_t w = image.Width(), h = image.Height();
    const DealRect b = frame.Bounds();
    const RowSpans spans(frame.Rects(), b);
    const int32_t bw = b.Right - b.Left + 1;
    const int64_t r = radius, count = (2 * r + 1) * (2 * r + 1);
    const int32_t bandL = ClampIndex(b.Left - r, w), bandR = ClampIndex(b.Right + r, w);
    const int32_t bandW = bandR - bandL + 1;
    ForFormat(bpp, [&](auto B) {
        constexpr int BPP = B(), CH = ColourChannels(BPP);
        const int64_t first = b.Left - r - 1;
        const std::vector<int32_t> idx = ClampedIndexTable(first, b.Right + r, w, bandL, CH);
        ParallelRows(b.Top, b.Bottom, bw, [&](int32_t y0, int32_t y1) {
            // Column sums of values and of squares, as the box blur keeps them.
            std::vector<int64_t> sum(static_cast<size_t>(bandW) * CH, 0), sq(sum.size(), 0);
            auto addRow = [&](int32_t y, int sign) {
                const uint8_t* row = src.Row(y) + static_cast<ptrdiff_t>(bandL) * BPP;
                for (int32_t c = 0; c < bandW; ++c)
                    for (int ch = 0; ch < CH; ++ch) {
                        const int64_t v = row[c * BPP + ch];
                        sum[static_cast<size_t>(c) * CH + ch] += sign * v;
                        sq[static_cast<size_t>(c) * CH + ch] += sign * v * v;
                    }
            };
            for (int64_t k = y0 - r; k <= y0 + r; ++k)
                addRow(ClampIndex(k, h), 1);
            std::vector<uint8_t> out(static_cast<size_t>(bw) * BPP);
            for (int32_t y = y0; y <= y1; ++y) {
                if (y > y0) {
                    addRow(ClampIndex(y + r, h), 1);
                    addRow(ClampIndex(y - r - 1, h), -1);
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
                        const int64_t variance = (squares[ch] - 2 * m * total[ch] + count * m * m) / count;
                        out[i * BPP + ch] =
                            root[static_cast<size_t>(std::clamp<int64_t>(variance, 0, 65025))];
                    }
                }
                WriteBackRow(frame, spans, y, out.data(), b.Left, BPP, CH);
            }
        });
    });
    return frame.End();
}

bool Convolute(CImage& image, const std::array<int32_t, 25>& matrix, int32_t offset, int32_t divider) {
    // The dialog forbids a divider of 0; anyone else gets a refusal.
    if (divider == 0) return false;
    auto frame = ProcessingFrame::Begin(image, ConvoluteTitle);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (!bpp) return frame.End();
    const SourceCopy src(image);
    const int32_t w = image.Width(), h = image.Height();
    const DealRect b = frame.Bounds();
    // The block with a border of two repeated edge pixels, as index tables.
    const std::vector<int32_t> cols = ClampedIndexTable(b.Left - 2, b.Right + 2, w, 0, 1);
    ForFormat(bpp, [&](auto B) {
        constexpr int BPP = B(), CH = ColourChannels(BPP);
        const RowSpans spans(frame.Rects(), b);
        ParallelRows(
            b.Top, b.Bottom, static_cast<int64_t>(b.Right - b.Left + 1) * 25, [&](int32_t y0, int32_t y1) {
                for (int32_t y = y0; y <= y1; ++y) {
                    const uint8_t* rows[5];
                    for (int k = 0; k < 5; ++k)
                        rows[k] = src.Row(ClampIndex(static_cast<int64_t>(y) + k - 2, h));
                    uint8_t* row = image.Row(y);
                    const uint8_t* weights = frame.WeightRow(y);
                    for (const Span& s : spans.Row(y))
                        for (int32_t x = s.Left; x <= s.Right; ++x) {
                            const int32_t m = weights ? weights[x] : 255;
                            if (!m) continue;
                            int64_t sum[CH] = {};
                            for (int ky = 0; ky < 5; ++ky)
                                for (int kx = 0; kx < 5; ++kx) {
                                    const int32_t k = matrix[static_cast<size_t>(ky * 5 + kx)];
                                    if (!k) continue;
                                    const uint8_t* q =
                                        rows[ky] +
                                        static_cast<ptrdiff_t>(cols[static_cast<size_t>(x - b.Left + kx)]) *
                                            BPP;
                                    for (int ch = 0; ch < CH; ++ch)
                                        sum[ch] += static_cast<int64_t>(k) * q[ch];
                                }
                            int32_t v[CH];
                            for (int ch = 0; ch < CH; ++ch)
                                v[ch] = static_cast<int32_t>(
                                    std::clamp<int64_t>(sum[ch] / divider + offset, 0, 255));
                            WriteBackPixel(row + static_cast<ptrdiff_t>(x) * BPP, v, CH, m);
                        }
                }
            });
    });
    return frame.End();
}

} // namespace vm
