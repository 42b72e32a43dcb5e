#pragma once
// What the filter tests share: pictures of the three handled formats, masks
// written by hand, byte comparison, and the slow, obvious references the fast
// kernels are held against. A reference computes one output value at a time
// straight from its definition, with no running sums and no tables.
#include "support/Reference.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ftest {

using vm::CImage;
using EventLog = vmtest::ImageEventLog;
using vmtest::SetMask;

inline int Bpp(const CImage& img) {
    return img.PixelFormat == vm::PixelFormat8bppGray ? 1
                                                      : (img.PixelFormat == vm::PixelFormat32bppARGB ? 4 : 3);
}
inline int ColourChannels(const CImage& img) {
    return Bpp(img) == 1 ? 1 : 3;
}

// A random picture: 24 or 32 bits, or 8 for grey.
inline std::unique_ptr<CImage> Picture(int w, int h, int bits, unsigned seed) {
    auto img = vmtest::RandomImage(w, h, bits, seed);
    if (bits == 8) img->PixelFormat = vm::PixelFormat8bppGray;
    return img;
}

inline std::unique_ptr<CImage> Clone(const CImage& img) {
    auto c = img.CloneImage();
    c->PixelFormat = img.PixelFormat;
    return c;
}

inline int At(const CImage& img, int x, int y, int c) {
    return img.Row(y)[x * Bpp(img) + c];
}
using vmtest::ClampPosition;
inline int AtClamped(const CImage& img, int x, int y, int c) {
    return At(img, ClampPosition(x, img.Width()), ClampPosition(y, img.Height()), c);
}

// The source with the first Channels bytes of every pixel replaced by F.
inline std::unique_ptr<CImage> Expected(const CImage& src, int channels,
                                        const std::function<int(int, int, int)>& f) {
    auto out = Clone(src);
    for (int y = 0; y < src.Height(); ++y)
        for (int x = 0; x < src.Width(); ++x)
            for (int c = 0; c < channels; ++c)
                out->Row(y)[x * Bpp(src) + c] = static_cast<uint8_t>(f(x, y, c));
    return out;
}

// Pixel bytes equal (the row padding is not compared); names the first difference.
inline ::testing::AssertionResult SamePixels(const CImage& a, const CImage& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height() || a.PixelFormat != b.PixelFormat)
        return ::testing::AssertionFailure() << "different pictures";
    const int bpp = Bpp(a);
    for (int y = 0; y < a.Height(); ++y)
        for (int i = 0; i < a.Width() * bpp; ++i)
            if (a.Row(y)[i] != b.Row(y)[i])
                return ::testing::AssertionFailure()
                       << "pixel " << i / bpp << "," << y << " channel " << i % bpp << ": "
                       << int(a.Row(y)[i]) << " vs " << int(b.Row(y)[i]);
    return ::testing::AssertionSuccess();
}

// Runs Filter on a copy of Src and holds the result against Ref on the first
// Channels bytes of every pixel (0: the colour channels); the rest must stay.
inline ::testing::AssertionResult MatchesDefinition(const CImage& src,
                                                    const std::function<bool(CImage&)>& filter,
                                                    const std::function<int(int, int, int)>& ref,
                                                    int channels = 0) {
    auto out = Clone(src);
    if (!filter(*out)) return ::testing::AssertionFailure() << "the filter refused";
    return SamePixels(*out, *Expected(src, channels ? channels : ColourChannels(src), ref));
}

// A filter with its parameters. PositionFree: a pixel's result depends only
// on the picture, not on which pixels are selected.
struct FilterCase {
    const char* Name;
    std::function<bool(CImage&)> Run;
    bool PositionFree = true;
};

// A soft-rimmed ellipse, weights between 0 and 255 on its rim.
inline void FeatheredEllipse(vm::CSelection& sel, int w, int h, int radius, int l, int t, int r, int b) {
    sel.CreateNewSelection(w, h);
    sel.FeatherRadius = radius;
    sel.AddEllipse(l, t, r, b);
}

// Under Sel every case must give, on each handled format, its result on the
// whole picture laid over the source by the mask's weights, each weight once.
inline void ExpectMaskBlend(const std::vector<FilterCase>& cases, vm::CSelection& sel, unsigned seed) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(sel.Width(), sel.Height(), bits, seed + bits);
        for (const FilterCase& c : cases) {
            auto full = Clone(*src), masked = Clone(*src);
            ASSERT_TRUE(c.Run(*full)) << c.Name;
            masked->SetSelection(&sel);
            ASSERT_TRUE(c.Run(*masked)) << c.Name;
            masked->SetSelection(nullptr);
            EXPECT_TRUE(SamePixels(*masked, *Expected(*src, Bpp(*src),
                                                      [&](int x, int y, int ch) {
                                                          return vmtest::Blend(At(*src, x, y, ch),
                                                                               At(*full, x, y, ch),
                                                                               sel.Row(y)[x]);
                                                      })))
                << c.Name << " bits " << bits;
        }
    }
}

// ---- references, one value at a time

// Each byte of a pixel as a channel of samples.
inline std::vector<vmtest::Samples> ChannelsOf(const CImage& img) {
    std::vector<vmtest::Samples> planes(static_cast<size_t>(Bpp(img)));
    for (int c = 0; c < Bpp(img); ++c) {
        planes[c] = {img.Width(), img.Height(), {}};
        for (int y = 0; y < img.Height(); ++y)
            for (int x = 0; x < img.Width(); ++x)
                planes[c].Values.push_back(At(img, x, y, c));
    }
    return planes;
}

using Reference = std::function<int(int, int, int)>;

// (2r + 1)^2 mean with clamped coordinates, as a function of (x, y, channel).
inline Reference RefBox(const CImage& s, int r) {
    return [planes = ChannelsOf(s), r](int x, int y, int c) { return vmtest::BoxMean(planes[c], x, y, r); };
}

// The triangular mean, as a function of (x, y, channel).
inline Reference RefTriangle(const CImage& s, int r) {
    std::vector<vmtest::Samples> planes = ChannelsOf(s);
    for (auto& p : planes)
        p = vmtest::TriangleMean(p, r);
    return [planes](int x, int y, int c) { return planes[c].At(x, y); };
}

// The mean of the frame: columns x - r and x + r over rows y - r .. y + r,
// averaged with rows y - r - 1 and y + r over columns x - r .. x + r.
inline int RefFar(const CImage& s, int x, int y, int c, int r) {
    long long columns = 0, rows = 0;
    for (int k = -r; k <= r; ++k) {
        columns += AtClamped(s, x - r, y + k, c) + AtClamped(s, x + r, y + k, c);
        rows += AtClamped(s, x + k, y - r - 1, c) + AtClamped(s, x + k, y + r, c);
    }
    return static_cast<int>((rows / (4 * r + 2) + columns / (4 * r + 2)) / 2);
}

// Neighbours inside the picture, weighed by closeness in value to the centre.
inline int RefSurface(const CImage& s, int x, int y, int c, int r, int threshold) {
    const int centre = At(s, x, y, c);
    long long sum = 0, weight = 0;
    for (int j = y - r; j <= y + r; ++j)
        for (int i = x - r; i <= x + r; ++i) {
            if (i < 0 || j < 0 || i >= s.Width() || j >= s.Height()) continue;
            const int v = At(s, i, j, c);
            const int w = std::max(
                0, static_cast<int>(std::nearbyint(255.0 - std::abs(v - centre) * 255.0 / threshold)));
            sum += static_cast<long long>(v) * w;
            weight += w;
        }
    return static_cast<int>(sum / weight);
}

inline int RefSelective(const CImage& s, int x, int y, int c, int r, int threshold) {
    const int centre = At(s, x, y, c);
    int sum = 0, count = 0;
    for (int j = y - r; j <= y + r; ++j)
        for (int i = x - r; i <= x + r; ++i) {
            if (i < 0 || j < 0 || i >= s.Width() || j >= s.Height()) continue;
            const int v = At(s, i, j, c);
            if (std::abs(v - centre) <= threshold) {
                sum += v;
                ++count;
            }
        }
    return sum / count;
}

// Extreme over the rectangle's positions inside the picture.
inline int RefRank(const CImage& s, int x, int y, int c, int rx, int ry, bool max) {
    int best = max ? 0 : 255;
    for (int j = std::max(0, y - ry); j <= std::min(s.Height() - 1, y + ry); ++j)
        for (int i = std::max(0, x - rx); i <= std::min(s.Width() - 1, x + rx); ++i)
            best = max ? std::max(best, At(s, i, j, c)) : std::min(best, At(s, i, j, c));
    return best;
}

// Rounded square root of the truncated variance about the truncated mean.
inline int RefDeviation(const CImage& s, int x, int y, int c, int r) {
    const long long n = (2LL * r + 1) * (2LL * r + 1);
    long long sum = 0;
    for (int j = -r; j <= r; ++j)
        for (int i = -r; i <= r; ++i)
            sum += AtClamped(s, x + i, y + j, c);
    const long long m = sum / n;
    long long squares = 0;
    for (int j = -r; j <= r; ++j)
        for (int i = -r; i <= r; ++i) {
            const long long d = AtClamped(s, x + i, y + j, c) - m;
            squares += d * d;
        }
    return static_cast<int>(std::nearbyint(std::sqrt(static_cast<double>(squares / n))));
}

} // namespace ftest
