// "色彩范围": the whole mask from colour alone, by distance from a sampled
// colour (RGB or Lab) through a smooth falloff, by hue family, or by tone.
#include "selection/Selection.h"

#include "core/Image.h"
#include "core/Numeric.h"
#include "core/PixelFormat.h"
#include "core/StartUpTables.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace vm {

namespace {

// Weight of a difference d (table index d + 255): two parabolas that meet at
// half the tolerance, 255 at 0 and 0 from the tolerance on.
std::array<uint8_t, 511> FalloffTable(int32_t tolerance) {
    std::array<uint8_t, 511> table{};
    if (tolerance <= 0) return table;
    const double t = tolerance, k = t * t;
    for (int32_t d = -255; d <= 255; ++d) {
        const double a = std::abs(d);
        double v = 0;
        if (2 * a < t)
            v = k - 2 * a * a;
        else if (a < t)
            v = 2 * (t - a) * (t - a);
        table[d + 255] = static_cast<uint8_t>(RoundHalfEven(v * 255.0 / k));
    }
    return table;
}

inline uint8_t Weight(const std::array<uint8_t, 511>& table, int32_t d) {
    return table[std::clamp(d, -255, 255) + 255];
}

struct Lab {
    int32_t L;
    double A, B;
};

// The editor's fixed-point Lab. The second sum carries the blue-heavy weights
// and L comes out scaled by 2^26, as the system has always computed them;
// sample and pixels go through the same transform, so the distances agree
// with the ones users have tuned their tolerances by.
Lab ToLab(int32_t r, int32_t g, int32_t b) {
    const int32_t xs = 385 * g + 444 * r + 195 * b;
    const int32_t ys = 112 * g + 894 * b + 18 * r;
    const int32_t zs = 218 * r + 732 * g + 74 * b;
    auto f = [](int32_t sum) -> int32_t {
        const int32_t v = sum >> 10;
        // Below the threshold the cube root turns into its linear toe.
        return sum >= 2313 ? LabCubeRootTable[v] : (v * 32020 + 144631) >> 10;
    };
    const int32_t fx = f(xs), fy = f(ys), fz = f(zs);
    Lab lab;
    lab.L = static_cast<int32_t>((int64_t{fy} * 302900 - 42781901) / (int64_t{1} << 26));
    lab.A = (fx - fy) * 500.0 / 1024.0;
    lab.B = (fy - fz) * 200.0 / 1024.0;
    return lab;
}

// Strength of a hue family: how far the leading value stands above the rest,
// weighted towards dark colours so that a dim red still counts as red.
inline uint8_t HueStrength(int32_t lead, int32_t rest) {
    if (lead <= rest) return 0;
    return static_cast<uint8_t>(std::min(255, RoundHalfEven((2.0 - lead / 255.0) * (lead - rest))));
}

// Our tone tables, made with the falloff's shape: shadows full up to 64 and
// gone at 128, highlights the mirror image (full from 191), midtones full at
// 128 and gone 96 away on either side.
std::array<uint8_t, 256> ToneTable(int32_t mode) {
    const auto ends = FalloffTable(64), middle = FalloffTable(96);
    std::array<uint8_t, 256> table{};
    for (int32_t g = 0; g < 256; ++g) {
        switch (mode) {
        case ColorRangeShadows:
            table[g] = g <= 64 ? 255 : Weight(ends, g - 64);
            break;
        case ColorRangeHighlights:
            table[g] = g >= 191 ? 255 : Weight(ends, 191 - g);
            break;
        default:
            table[g] = Weight(middle, g - 128);
            break;
        }
    }
    return table;
}

} // namespace

bool CSelection::ColorRange(const CImage& image, int32_t mode, int32_t x, int32_t y, int32_t tolerance,
                            bool invert, bool preview) {
    if (!bits_ || !image.Pointer()) return false;
    const int step = image.PixelFormat == PixelFormat8bppGray    ? 1
                     : image.PixelFormat == PixelFormat24bppRGB  ? 3
                     : image.PixelFormat == PixelFormat32bppARGB ? 4
                                                                 : 0;
    if (!step) return false;
    const bool sampled = mode == ColorRangeSampledColor || mode == ColorRangeSampledLab;
    const bool hue = mode >= ColorRangeReds && mode <= ColorRangeMagentas;
    const bool tone = mode >= ColorRangeHighlights && mode <= ColorRangeShadows;
    if (!sampled && !hue && !tone) return false;
    if (sampled && (x < 0 || y < 0 || x >= image.Width() || y >= image.Height())) return false;

    RaiseBefore();
    FillBuffer(0);
    Left = 0;
    Top = 0;
    const int32_t w = std::min(width_, image.Width()), h = std::min(height_, image.Height());
    // Channels of a pixel as red, green, blue; grey gives the value thrice.
    auto rgb = [&](const uint8_t* p, int32_t& r, int32_t& g, int32_t& b) {
        if (step == 1)
            r = g = b = p[0];
        else {
            b = p[0];
            g = p[1];
            r = p[2];
        }
    };
    int32_t sr = 0, sg = 0, sb = 0;
    if (sampled) rgb(image.Row(y) + static_cast<int64_t>(x) * step, sr, sg, sb);
    const auto falloff = FalloffTable(tolerance);
    const Lab sample = ToLab(sr, sg, sb);
    const auto tones = tone ? ToneTable(mode) : std::array<uint8_t, 256>{};

    for (int32_t py = 0; py < h; ++py) {
        const uint8_t* p = image.Row(py);
        uint8_t* m = Row(py);
        for (int32_t px = 0; px < w; ++px, p += step) {
            int32_t r, g, b;
            rgb(p, r, g, b);
            uint8_t v = 0;
            switch (mode) {
            case ColorRangeSampledColor:
                v = step == 1 ? Weight(falloff, r - sr)
                              : std::min({Weight(falloff, r - sr), Weight(falloff, g - sg),
                                          Weight(falloff, b - sb)});
                break;
            case ColorRangeSampledLab: {
                const Lab lab = ToLab(r, g, b);
                v = std::min({Weight(falloff, RoundHalfEven((lab.L - sample.L) * 2.55)),
                              Weight(falloff, RoundHalfEven(lab.A - sample.A)),
                              Weight(falloff, RoundHalfEven(lab.B - sample.B))});
                break;
            }
            case ColorRangeReds:
                v = HueStrength(r, std::max(g, b));
                break;
            case ColorRangeGreens:
                v = HueStrength(g, std::max(r, b));
                break;
            case ColorRangeBlues:
                v = HueStrength(b, std::max(r, g));
                break;
            case ColorRangeYellows:
                v = HueStrength(std::min(r, g), b);
                break;
            case ColorRangeCyans:
                v = HueStrength(std::min(g, b), r);
                break;
            case ColorRangeMagentas:
                v = HueStrength(std::min(r, b), g);
                break;
            default:
                v = tones[step == 1 ? r : (r * 299 + g * 587 + b * 114 + 500) / 1000];
                break;
            }
            m[px] = v;
        }
    }
    if (invert)
        for (int32_t py = 0; py < height_; ++py) {
            uint8_t* m = Row(py);
            for (int32_t px = 0; px < width_; ++px)
                m[px] = static_cast<uint8_t>(255 - m[px]);
        }
    useDefaultSetting_ = false;
    if (!preview) {
        CheckSeletion(true);
        UpdateSelectionRegion();
    }
    RaiseChanged();
    return true;
}

} // namespace vm
