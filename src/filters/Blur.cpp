#include "filters/Blur.h"

#include "filters/FilterScaffold.h"
#include "filters/RunningMeans.h"
#include "kernels/EdgeClamp.h"
#include "kernels/ExactDivision.h"
#include "kernels/Window.h"

#include <QImage>

#include <array>
#include <cmath>

namespace vm {

using namespace filters;
using kernels::ClampedIndexTable;
using kernels::ClampIndex;
using kernels::FastDivider;
using kernels::SumDivider;

bool AverageBlur(CImage& image) {
    return RunFilter(
        image, {RowOf("AverageBlur"), nullptr, false}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
            // Every visited pixel counts, whatever its weight. The totals are wide:
            // a large picture overflows 32 bits long before the mean would.
            int64_t total[CH] = {}, count = 0;
            for (const DealRect& r : pass.Frame().Rects()) {
                count += static_cast<int64_t>(r.Right - r.Left + 1) * (r.Bottom - r.Top + 1);
                for (int32_t y = r.Top; y <= r.Bottom; ++y) {
                    const uint8_t* p = image.Row(y) + static_cast<ptrdiff_t>(r.Left) * BPP;
                    for (int32_t x = r.Left; x <= r.Right; ++x, p += BPP)
                        for (int c = 0; c < CH; ++c)
                            total[c] += p[c];
                }
            }
            int32_t mean[CH];
            for (int c = 0; c < CH; ++c)
                mean[c] = RoundHalfEven(static_cast<double>(total[c]) / static_cast<double>(count));
            pass.Frame().VisitPixels(BPP, [&](int32_t, int32_t, int32_t m, uint8_t* p) {
                ProcessingFrame::BlendPixel(p, mean, CH, m);
            });
        });
}

bool BoxBlur(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    return RunFilter(image, {RowOf("BoxBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        BoxMeanRows(pass, radius, MeanItself);
    });
}

// The window's histogram holds each sample with weight 255 and the total in
// the same unit, so that sum(v * entry[v]) / total is exactly the truncated
// mean of the window's bytes, and the window is the box blur's clamped square.
// The result is the box mean's, computed at the box mean's cost.
bool Unfocus(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    return RunFilter(image, {RowOf("Unfocus")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        BoxMeanRows(pass, radius, MeanItself);
    });
}

bool GaussianBlur(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    // Alpha is blurred as a fourth channel.
    return RunFilter<FilterAlpha::AsChannel>(image, {RowOf("GuassBlur")},
                                             [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
                                                 TriangleMeanRows(pass, radius, MeanItself);
                                             });
}

bool SelectiveGaussianBlur(CImage& image, int32_t radius, int32_t threshold) {
    // A negative threshold would drop even the centre and leave nothing to divide by.
    if (radius < 0 || threshold < 0) return false;
    const int64_t side = 2 * static_cast<int64_t>(radius) + 1;
    return RunFilter(image, {RowOf("SelectiveGuassBlur")},
                     [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
                         const SourceCopy& src = pass.Source();
                         pass.ForPixels(side * side, [&](int32_t x, int32_t y, int32_t* v) {
                             const uint8_t* c = src.Row(y) + static_cast<ptrdiff_t>(x) * BPP;
                             int32_t sum[CH] = {}, count[CH] = {};
                             // Rows and columns beyond the picture are left out, not clamped.
                             kernels::ForEachInside<BPP>(src.Plane(), x, y, radius, [&](const uint8_t* q) {
                                 for (int ch = 0; ch < CH; ++ch) {
                                     const int32_t d = q[ch] - c[ch];
                                     if (d >= -threshold && d <= threshold) {
                                         sum[ch] += q[ch];
                                         ++count[ch];
                                     }
                                 }
                             });
                             for (int ch = 0; ch < CH; ++ch)
                                 v[ch] = sum[ch] / count[ch];
                             return true;
                         });
                     });
}

bool SurfaceBlur(CImage& image, int32_t radius, int32_t threshold) {
    if (radius < 0 || threshold <= 0) return false;
    // Weight of a difference d, at weight[d + 255].
    std::array<int32_t, 511> weight;
    for (int d = -255; d <= 255; ++d)
        weight[d + 255] = std::max(0, RoundHalfEven(255.0 - std::abs(d) * 255.0 / threshold));
    const int64_t side = 2 * static_cast<int64_t>(radius) + 1;
    return RunFilter(image, {RowOf("SurfaceBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const SourceCopy& src = pass.Source();
        pass.ForPixels(side * side, [&](int32_t x, int32_t y, int32_t* v) {
            const uint8_t* c = src.Row(y) + static_cast<ptrdiff_t>(x) * BPP;
            int32_t sum[CH] = {}, total[CH] = {};
            const int32_t* centred[CH];
            for (int ch = 0; ch < CH; ++ch)
                centred[ch] = weight.data() + 255 - c[ch];
            kernels::ForEachInside<BPP>(src.Plane(), x, y, radius, [&](const uint8_t* q) {
                for (int ch = 0; ch < CH; ++ch) {
                    const int32_t wt = centred[ch][q[ch]];
                    sum[ch] += q[ch] * wt;
                    total[ch] += wt;
                }
            });
            for (int ch = 0; ch < CH; ++ch)
                v[ch] = sum[ch] / total[ch];
            return true;
        });
    });
}

// The paths are those of 32-bit fixed point with truncating shifts. They are
// computed in 64 bits so that a wide picture or a steep angle cannot wrap; where
// the 32-bit values do not overflow the results are the same.
bool RadialBlur(CImage& image, int32_t angle, int32_t sampleRadius, int32_t centreX, int32_t centreY) {
    if (sampleRadius < 0) return false;
    const int32_t w = image.Width(), h = image.Height();
    const int64_t a = RoundHalfEven64(angle * 3.1415926 * 65536 / 360);
    const int64_t n = (a * a) / (int64_t{1} << 19);
    const int64_t cx = static_cast<int64_t>(centreX) * 65536, cy = static_cast<int64_t>(centreY) * 65536;
    const FastDivider divide(static_cast<uint32_t>(2 * sampleRadius + 1));
    return RunFilter(image, {RowOf("RadialBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const SourceCopy& src = pass.Source();
        pass.ForPixels(2 * static_cast<int64_t>(sampleRadius) + 1, [&](int32_t x, int32_t y, int32_t* v) {
            int32_t sum[CH];
            const uint8_t* self = src.Row(y) + static_cast<ptrdiff_t>(x) * BPP;
            for (int ch = 0; ch < CH; ++ch)
                sum[ch] = self[ch];
            auto add = [&](int64_t fx, int64_t fy) {
                const int32_t sx = ClampIndex((cx + 32768 + fx) / 65536, w);
                const int32_t sy = ClampIndex((cy + 32768 + fy) / 65536, h);
                const uint8_t* q = src.Row(sy) + static_cast<ptrdiff_t>(sx) * BPP;
                for (int ch = 0; ch < CH; ++ch)
                    sum[ch] += q[ch];
            };
            int64_t fx = static_cast<int64_t>(x) * 65536 - cx, fy = static_cast<int64_t>(y) * 65536 - cy;
            int64_t bx = fx, by = fy;
            for (int32_t i = 1; i <= sampleRadius; ++i) {
                fx += -(fx / 16384) * n - ((fy / 256) * a) / 256;
                fy += ((fx / 256) * a) / 256 - (fy / 16384) * n;
                add(fx, fy);
                bx += ((by / 256) * a) / 256 - (bx / 16384) * n;
                by += -(by / 16384) * n - ((bx / 256) * a) / 256;
                add(bx, by);
            }
            for (int ch = 0; ch < CH; ++ch)
                v[ch] = static_cast<int32_t>(divide(static_cast<uint32_t>(sum[ch])));
            return true;
        });
    });
}

bool ZoomBlur(CImage& image, int32_t amount, int32_t sampleRadius, int32_t centreX, int32_t centreY) {
    if (sampleRadius < 1) return false;
    const int32_t w = image.Width(), h = image.Height();
    const int64_t cx = static_cast<int64_t>(centreX) * 65536, cy = static_cast<int64_t>(centreY) * 65536;
    const FastDivider divide(static_cast<uint32_t>(sampleRadius));
    return RunFilter(image, {RowOf("ZoomBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        const SourceCopy& src = pass.Source();
        pass.ForPixels(sampleRadius, [&](int32_t x, int32_t y, int32_t* v) {
            int32_t sum[CH] = {};
            int64_t fx = static_cast<int64_t>(x) * 65536 - cx, fy = static_cast<int64_t>(y) * 65536 - cy;
            for (int32_t i = 1; i <= sampleRadius; ++i) {
                fx += (-(fx / 16) * amount) / 1024;
                fy += (-(fy / 16) * amount) / 1024;
                // The path runs toward a centre inside the picture and needs no
                // clamp; a centre given from outside gets one all the same.
                const int32_t sx = ClampIndex((fx + cx) / 65536, w);
                const int32_t sy = ClampIndex((fy + cy) / 65536, h);
                const uint8_t* q = src.Row(sy) + static_cast<ptrdiff_t>(sx) * BPP;
                for (int ch = 0; ch < CH; ++ch)
                    sum[ch] += q[ch];
            }
            for (int ch = 0; ch < CH; ++ch)
                v[ch] = static_cast<int32_t>(divide(static_cast<uint32_t>(sum[ch])));
            return true;
        });
    });
}

void BresenhamLine(int32_t x0, int32_t y0, int32_t x1, int32_t y1, std::vector<int32_t>& xs,
                   std::vector<int32_t>& ys) {
    const int32_t dx = std::abs(x1 - x0), dy = std::abs(y1 - y0);
    const int32_t sx = x1 >= x0 ? 1 : -1, sy = y1 >= y0 ? 1 : -1;
    const int32_t steps = std::max(dx, dy);
    xs.resize(static_cast<size_t>(steps) + 1);
    ys.resize(static_cast<size_t>(steps) + 1);
    int32_t x = x0, y = y0, error = 0;
    for (int32_t i = 0; i <= steps; ++i) {
        xs[i] = x;
        ys[i] = y;
        if (dx > dy) {
            x += sx;
            error += dy;
            if (error >= dx) {
                y += sy;
                error -= dx;
            }
        } else if (dy > dx) {
            y += sy;
            error += dx;
            if (error >= dy) {
                x += sx;
                error -= dy;
            }
        } else {
            x += sx;
            y += sy;
        }
    }
}

void GetLineOffsets(int32_t angle, double length, std::vector<int32_t>& xs, std::vector<int32_t>& ys) {
    const double a = angle * 3.1415926 / 360;
    BresenhamLine(0, 0, RoundHalfEven(length * std::cos(a)), RoundHalfEven(-length * std::sin(a)), xs, ys);
}

// The window is Count points of a long line at the same angle, Count being the
// number of points of the line of Distance. The long line is laid from a start
// on the side where the lines enter the bound, one start for each row (or
// column) through which a line can cross the bound, and the window slides
// along it: the point Count ahead enters, the point behind leaves. The starts
// are translates of one another across the line's minor axis and the line
// steps once along its major axis at every point, so each pixel of the bound
// lies on exactly one walk and is written exactly once, in constant time
// whatever the distance.
namespace {

template <int BPP, int CH>
void MotionWalks(const FilterPass<BPP, CH>& pass, int32_t angle, int32_t distance) {
    const SourceCopy& src = pass.Source();
    const int32_t w = pass.Width(), h = pass.Height();
    const DealRect b = pass.Bounds();

    std::vector<int32_t> lx, ly;
    GetLineOffsets(angle, distance, lx, ly);
    const int32_t count = static_cast<int32_t>(lx.size());

    // The long line: the picture's diagonal plus the window, and longer still
    // when the bound's major extent needs it.
    std::vector<int32_t> qx, qy;
    const int32_t extent = std::max(b.Right - b.Left, b.Bottom - b.Top);
    double length = std::sqrt(static_cast<double>(w) * w + static_cast<double>(h) * h) + distance + 4;
    for (;;) {
        GetLineOffsets(angle, length, qx, qy);
        if (qx.size() >= static_cast<size_t>(extent) + count + 1) break;
        length *= 2;
    }
    const size_t last = qx.size() - 1;
    const bool xMajor = std::abs(qx[last]) >= std::abs(qy[last]);
    // Coordinates along the major axis (u) and the minor one (v).
    const std::vector<int32_t>& qu = xMajor ? qx : qy;
    const std::vector<int32_t>& qv = xMajor ? qy : qx;
    const int32_t uMin = xMajor ? b.Left : b.Top, uMax = xMajor ? b.Right : b.Bottom;
    const int32_t vMin = xMajor ? b.Top : b.Left, vMax = xMajor ? b.Bottom : b.Right;
    const int32_t span = uMax - uMin;
    const bool uForward = qu[last] >= 0, vForward = qv[last] >= 0;
    const int32_t u0 = uForward ? uMin : uMax;
    const int32_t reach = std::abs(qv[static_cast<size_t>(span)]);
    // First point at which the minor offset reaches k, for k = 0..reach.
    std::vector<int32_t> firstAt(static_cast<size_t>(reach) + 1, 0);
    for (int32_t j = static_cast<int32_t>(span); j >= 0; --j)
        firstAt[static_cast<size_t>(std::abs(qv[j]))] = j;
    // Starts v0 from vMin - reach (or vMin) to vMax (or vMax + reach).
    const int32_t vFirst = vForward ? vMin - reach : vMin;
    const int32_t walks = vMax - vMin + 1 + reach;
    const FastDivider divide(static_cast<uint32_t>(count));

    ParallelRows(0, walks - 1, span + 1, [&](int32_t first, int32_t lastWalk) {
        for (int32_t walk = first; walk <= lastWalk; ++walk) {
            const int32_t v0 = vFirst + walk;
            const int32_t need = vForward ? vMin - v0 : v0 - vMax;
            const int32_t entry = need > 0 ? firstAt[static_cast<size_t>(need)] : 0;
            auto pixelOf = [&](size_t t, int32_t& x, int32_t& y) {
                const int32_t u = u0 + qu[t], v = v0 + qv[t];
                x = xMajor ? u : v;
                y = xMajor ? v : u;
            };
            auto sample = [&](size_t t) {
                int32_t x, y;
                pixelOf(t, x, y);
                return src.Row(ClampIndex(y, h)) + static_cast<ptrdiff_t>(ClampIndex(x, w)) * BPP;
            };
            int32_t sum[CH] = {};
            for (int32_t k = 0; k < count; ++k) {
                const uint8_t* q = sample(static_cast<size_t>(entry + k));
                for (int ch = 0; ch < CH; ++ch)
                    sum[ch] += q[ch];
            }
            for (int32_t j = entry; j <= span; ++j) {
                if (j > entry) {
                    const uint8_t* in = sample(static_cast<size_t>(j + count - 1));
                    const uint8_t* out = sample(static_cast<size_t>(j - 1));
                    for (int ch = 0; ch < CH; ++ch)
                        sum[ch] += in[ch] - out[ch];
                }
                int32_t x, y;
                pixelOf(static_cast<size_t>(j), x, y);
                const int32_t v = xMajor ? y : x;
                if (v < vMin || v > vMax) break;
                int32_t value[CH];
                for (int ch = 0; ch < CH; ++ch)
                    value[ch] = static_cast<int32_t>(divide(static_cast<uint32_t>(sum[ch])));
                pass.Frame().BlendAt(x, y, value, BPP, CH);
            }
        }
    });
}

} // namespace

bool MotionBlur(CImage& image, int32_t angle, int32_t distance) {
    if (distance < 0) return false;
    return RunFilter(image, {RowOf("MotionBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        MotionWalks(pass, angle, distance);
    });
}

namespace {

// FarBlur over rows Y0..Y1: the first pass sums the clamped columns x - r and
// x + r over rows y - r .. y + r, the second the clamped rows y - r - 1 and
// y + r over columns x - r .. x + r; each is truncated by 4r + 2 and the two
// means are averaged.
template <typename Acc, int BPP, int CH>
void FarBand(const FilterPass<BPP, CH>& pass, int64_t r, int32_t y0, int32_t y1, uint8_t* __restrict out) {
    const SourceCopy& src = pass.Source();
    const int32_t w = pass.Width(), h = pass.Height();
    const DealRect b = pass.Bounds();
    const int32_t bandL = ClampIndex(b.Left - r, w), bandR = ClampIndex(b.Right + r, w);
    const int32_t bandW = bandR - bandL + 1;
    const SumDivider<Acc> divide(4 * r + 2);
    // Columns x - r and x + r of the first pass, as offsets into the column sums.
    const std::vector<int32_t> leftCol = ClampedIndexTable(b.Left - r, b.Right - r, w, bandL, CH);
    const std::vector<int32_t> rightCol = ClampedIndexTable(b.Left + r, b.Right + r, w, bandL, CH);
    // Positions b.Left - r - 1 .. b.Right + r along a row, as byte offsets.
    const int64_t first = b.Left - r - 1;
    const std::vector<int32_t> along = ClampedIndexTable(first, b.Right + r, w, 0, BPP);

    kernels::ColumnSums<Acc, BPP, CH> columns(src.Plane(), bandL, bandW, r, y0);
    const Acc* col = columns.Data();
    for (int32_t y = y0; y <= y1; ++y) {
        if (y > y0) columns.MoveTo(y);
        const uint8_t* top = src.Row(ClampIndex(y - r - 1, h));
        const uint8_t* bottom = src.Row(ClampIndex(y + r, h));
        Acc across[CH] = {};
        for (int64_t j = -r; j <= r; ++j) {
            const int32_t o = along[static_cast<size_t>(b.Left + j - first)];
            for (int ch = 0; ch < CH; ++ch)
                across[ch] += static_cast<Acc>(top[o + ch]) + bottom[o + ch];
        }
        for (int32_t x = b.Left; x <= b.Right; ++x) {
            const size_t i = static_cast<size_t>(x - b.Left);
            if (x > b.Left) {
                const int32_t e = along[i + static_cast<size_t>(2 * r + 1)], l = along[i];
                for (int ch = 0; ch < CH; ++ch)
                    across[ch] +=
                        static_cast<Acc>(top[e + ch]) + bottom[e + ch] - top[l + ch] - bottom[l + ch];
            }
            for (int ch = 0; ch < CH; ++ch) {
                const int32_t firstPass = divide(col[leftCol[i] + ch] + col[rightCol[i] + ch]);
                const int32_t secondPass = divide(across[ch]);
                out[i * BPP + ch] = static_cast<uint8_t>((secondPass + firstPass) / 2);
            }
        }
        pass.WriteRow(y, out);
    }
}

} // namespace

bool FarBlur(CImage& image, int32_t radius) {
    if (radius < 0) return false;
    const int64_t r = radius;
    return RunFilter(image, {RowOf("FarBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        pass.ForRowBands(1, [&](int32_t y0, int32_t y1, uint8_t* __restrict out) {
            if (kernels::FitsInt32(4 * r + 2))
                FarBand<int32_t, BPP, CH>(pass, r, y0, y1, out);
            else
                FarBand<int64_t, BPP, CH>(pass, r, y0, y1, out);
        });
    });
}

namespace {

// The map's grey, by the first of the grey conversion's weightings (Rec. 709
// on values raised to 2.2), with a picture's colours first laid over white.
std::vector<uint8_t> MapGrey(const CImage& map) {
    const int32_t mw = map.Width(), mh = map.Height();
    std::vector<uint8_t> grey(static_cast<size_t>(mw) * mh);
    if (map.PixelFormat == PixelFormat8bppGray) {
        for (int32_t y = 0; y < mh; ++y)
            std::memcpy(grey.data() + static_cast<size_t>(y) * mw, map.Row(y), mw);
        return grey;
    }
    QImage rgb;
    std::unique_ptr<CImage> converted;
    if (map.PixelFormat == PixelFormat4bppIndexed) {
        if (auto eight = map.Get8BppIndexedImage()) converted = eight->GetRGB24Image(0xFFFFFF);
    } else if (map.PixelFormat == PixelFormat8bppIndexed || map.PixelFormat == PixelFormat24bppRGB ||
               map.PixelFormat == PixelFormat32bppARGB) {
        converted = map.GetRGB24Image(0xFFFFFF);
    } else if (!map.Image().isNull()) {
        rgb = map.Image().convertToFormat(QImage::Format_BGR888);
    }
    std::array<double, 256> tr, tg, tb;
    for (int i = 0; i < 256; ++i) {
        const double e = std::pow(static_cast<double>(i), 2.2);
        tr[i] = e * 0.2126;
        tg[i] = e * 0.7152;
        tb[i] = e * 0.0722;
    }
    for (int32_t y = 0; y < mh; ++y) {
        const uint8_t* s = converted ? converted->Row(y) : (rgb.isNull() ? nullptr : rgb.constScanLine(y));
        for (int32_t x = 0; x < mw; ++x) {
            if (!s) continue;
            const uint8_t* p = s + 3 * x;
            const double l = std::pow(tr[p[2]] + tg[p[1]] + tb[p[0]] + 0.000001, 1.0 / 2.2);
            grey[static_cast<size_t>(y) * mw + x] = static_cast<uint8_t>(std::min(255, RoundHalfEven(l)));
        }
    }
    return grey;
}

// The grey map laid over the picture: tiles from the top left, or stretched.
std::vector<uint8_t> FittedMap(const CImage& map, int32_t w, int32_t h, bool stretch) {
    const int32_t mw = map.Width(), mh = map.Height();
    const std::vector<uint8_t> grey = MapGrey(map);
    std::vector<uint8_t> fitted(static_cast<size_t>(w) * h);
    if (stretch) {
        const QImage source(grey.data(), mw, mh, mw, QImage::Format_Grayscale8);
        const QImage scaled = source.scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (int32_t y = 0; y < h; ++y)
            std::memcpy(fitted.data() + static_cast<size_t>(y) * w, scaled.constScanLine(y), w);
    } else {
        for (int32_t y = 0; y < h; ++y) {
            const uint8_t* s = grey.data() + static_cast<size_t>(y % mh) * mw;
            uint8_t* d = fitted.data() + static_cast<size_t>(y) * w;
            for (int32_t x = 0; x < w; ++x)
                d[x] = s[x % mw];
        }
    }
    return fitted;
}

} // namespace

namespace {

template <int BPP, int CH>
void VariableWindows(const FilterPass<BPP, CH>& pass, const std::vector<uint8_t> radii, int32_t radiusX,
                     int32_t radiusY) {
    const SourceCopy& src = pass.Source();
    const int32_t w = pass.Width(), h = pass.Height();
    const DealRect b = pass.Bounds();
    const int32_t bw = pass.BoundWidth();
    // Half-widths per grey value, and the exact division by each window.
    std::array<int32_t, 256> dx, dy;
    std::vector<FastDivider> divX, divY;
    for (int g = 0; g < 256; ++g) {
        dx[g] = static_cast<int32_t>(static_cast<int64_t>(g) * radiusX / 100);
        dy[g] = static_cast<int32_t>(static_cast<int64_t>(g) * radiusY / 100);
        divX.emplace_back(static_cast<uint32_t>(2 * dx[g] + 1));
        divY.emplace_back(static_cast<uint32_t>(2 * dy[g] + 1));
    }
    const int32_t rowTop = ClampIndex(static_cast<int64_t>(b.Top) - dy[255], h);
    const int32_t rowBottom = ClampIndex(static_cast<int64_t>(b.Bottom) + dy[255], h);
    const int32_t rows = rowBottom - rowTop + 1;

    {
        // Horizontal pass into the copy, for the bound's columns and every row
        // the vertical windows reach.
        std::vector<uint8_t> across(static_cast<size_t>(rows) * bw * CH);
        ParallelRows(rowTop, rowBottom, w, [&](int32_t y0, int32_t y1) {
            std::vector<int32_t> prefix((static_cast<size_t>(w) + 1) * CH);
            for (int32_t y = y0; y <= y1; ++y) {
                const uint8_t* row = src.Row(y);
                for (int32_t x = 0; x < w; ++x)
                    for (int ch = 0; ch < CH; ++ch)
                        prefix[(static_cast<size_t>(x) + 1) * CH + ch] =
                            prefix[static_cast<size_t>(x) * CH + ch] + row[x * BPP + ch];
                const uint8_t* g = radii.data() + static_cast<size_t>(y) * w;
                uint8_t* out = across.data() + static_cast<size_t>(y - rowTop) * bw * CH;
                for (int32_t x = b.Left; x <= b.Right; ++x) {
                    const int32_t d = dx[g[x]];
                    const int64_t lo = static_cast<int64_t>(x) - d, hi = static_cast<int64_t>(x) + d;
                    const int32_t a = static_cast<int32_t>(std::max<int64_t>(lo, 0));
                    const int32_t z = static_cast<int32_t>(std::min<int64_t>(hi, w - 1));
                    for (int ch = 0; ch < CH; ++ch) {
                        // Beyond an edge the end pixel counts as often as the window overhangs.
                        const int64_t s = prefix[(static_cast<size_t>(z) + 1) * CH + ch] -
                                          prefix[static_cast<size_t>(a) * CH + ch] + (a - lo) * row[ch] +
                                          (hi - z) * row[(w - 1) * BPP + ch];
                        out[static_cast<size_t>(x - b.Left) * CH + ch] =
                            static_cast<uint8_t>(divX[g[x]](static_cast<uint32_t>(s)));
                    }
                }
            }
        });
        // Vertical pass in strips of columns, from the copy into the picture.
        constexpr int32_t Strip = 64;
        const int32_t strips = (bw + Strip - 1) / Strip;
        ParallelRows(0, strips - 1, static_cast<int64_t>(rows) * Strip, [&](int32_t s0, int32_t s1) {
            std::vector<int32_t> prefix((static_cast<size_t>(rows) + 1) * Strip * CH);
            // Held in locals: the bytes written below would otherwise make the
            // compiler read each of them again for every pixel.
            const int32_t top = rowTop, last = h - 1, left = b.Left;
            const int32_t* dys = dy.data();
            const FastDivider* divs = divY.data();
            for (int32_t s = s0; s <= s1; ++s) {
                const int32_t c0 = s * Strip, cw = std::min(Strip, bw - c0);
                const size_t pitch = static_cast<size_t>(Strip) * CH;
                std::fill(prefix.begin(), prefix.begin() + static_cast<ptrdiff_t>(pitch), 0);
                for (int32_t i = 0; i < rows; ++i) {
                    const uint8_t* in = across.data() + (static_cast<size_t>(i) * bw + c0) * CH;
                    const int32_t* above = prefix.data() + static_cast<size_t>(i) * pitch;
                    int32_t* below = prefix.data() + static_cast<size_t>(i + 1) * pitch;
                    for (int32_t k = 0; k < cw * CH; ++k)
                        below[k] = above[k] + in[k];
                }
                const uint8_t* firstRow = across.data() + static_cast<size_t>(c0) * CH;
                const uint8_t* lastRow = across.data() + (static_cast<size_t>(rows - 1) * bw + c0) * CH;
                for (int32_t y = b.Top; y <= b.Bottom; ++y) {
                    const uint8_t* weights = pass.Frame().WeightRow(y);
                    uint8_t* row = pass.Image().Row(y);
                    const uint8_t* g = radii.data() + static_cast<size_t>(y) * w;
                    for (int32_t k = 0; k < cw; ++k) {
                        const int32_t x = left + c0 + k;
                        const int32_t m = ProcessingFrame::WeightIn(weights, x);
                        if (!m) continue;
                        const int32_t d = dys[g[x]];
                        const int64_t lo = static_cast<int64_t>(y) - d, hi = static_cast<int64_t>(y) + d;
                        // The window stays within the rows of the copy but where
                        // it overhangs the picture's first or last row.
                        const int32_t a = static_cast<int32_t>(std::max<int64_t>(lo, 0)) - top;
                        const int32_t z = static_cast<int32_t>(std::min<int64_t>(hi, last)) - top;
                        int32_t value[CH];
                        for (int ch = 0; ch < CH; ++ch) {
                            const size_t o = static_cast<size_t>(k) * CH + ch;
                            const int64_t sum = prefix[(static_cast<size_t>(z) + 1) * pitch + o] -
                                                prefix[static_cast<size_t>(a) * pitch + o] +
                                                (std::max<int64_t>(lo, 0) - lo) * firstRow[o] +
                                                (hi - std::min<int64_t>(hi, last)) * lastRow[o];
                            value[ch] = static_cast<int32_t>(divs[g[x]](static_cast<uint32_t>(sum)));
                        }
                        ProcessingFrame::BlendPixel(row + static_cast<ptrdiff_t>(x) * BPP, value, CH, m);
                    }
                }
            }
        });
    }
}

} // namespace

bool VariableBlur(CImage& image, const CImage& map, int32_t radiusX, int32_t radiusY, bool stretch) {
    if (!map.Handle() || radiusX < 0 || radiusY < 0) return false;
    return RunFilter(image, {RowOf("VariableBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
        VariableWindows(pass, FittedMap(map, pass.Width(), pass.Height(), stretch), radiusX, radiusY);
    });
}

} // namespace vm
