// The blur family: the fast kernels against slow references on random
// pictures of every handled format, the exact values the edges and the special
// parameters fix, the frame (mask, events, refusal, other formats).
#include "FilterTestSupport.h"

#include "filters/Blur.h"

#include <random>

using namespace vm;
using namespace ftest;

namespace {

// A small grey map with every kind of value, tiled over the pictures.
std::unique_ptr<CImage> Map() {
    auto map = Picture(7, 5, 8, 99);
    map->Row(0)[0] = 0;
    map->Row(1)[1] = 255;
    return map;
}

using Case = FilterCase;

std::vector<Case> Cases() {
    static const std::shared_ptr<CImage> map(Map().release());
    return {
        {"AverageBlur", [](CImage& i) { return AverageBlur(i); }, false},
        {"BoxBlur", [](CImage& i) { return BoxBlur(i, 3); }},
        {"GaussianBlur", [](CImage& i) { return GaussianBlur(i, 4); }},
        {"SelectiveGaussianBlur", [](CImage& i) { return SelectiveGaussianBlur(i, 2, 40); }},
        {"RadialBlur", [](CImage& i) { return RadialBlur(i, 30, 6, 9, 7); }},
        {"ZoomBlur", [](CImage& i) { return ZoomBlur(i, 60, 9, 12, 5); }},
        {"MotionBlur", [](CImage& i) { return MotionBlur(i, 75, 7); }, false},
        {"SurfaceBlur", [](CImage& i) { return SurfaceBlur(i, 2, 30); }},
        {"FarBlur", [](CImage& i) { return FarBlur(i, 3); }},
        {"Unfocus", [](CImage& i) { return Unfocus(i, 2); }},
        {"VariableBlur", [](CImage& i) { return VariableBlur(i, *map, 150, 80, false); }},
    };
}

// The literal histogram mean of the defocus: per channel 256 entries in units
// of 255, the window added whole at the row's first pixel and moved by columns.
std::unique_ptr<CImage> RefUnfocus(const CImage& s, int r) {
    const int ch = ColourChannels(s);
    auto out = Clone(s);
    for (int y = 0; y < s.Height(); ++y) {
        std::vector<std::array<int, 256>> hist(ch);
        for (auto& h : hist)
            h.fill(0);
        int total = 0;
        auto column = [&](int x, int sign) {
            for (int j = -r; j <= r; ++j) {
                for (int c = 0; c < ch; ++c)
                    hist[c][AtClamped(s, x, y + j, c)] += sign * 255;
                total += sign * 255;
            }
        };
        for (int i = -r; i <= r; ++i)
            column(i, 1);
        for (int x = 0; x < s.Width(); ++x) {
            if (x > 0) {
                column(x - r - 1, -1);
                column(x + r, 1);
            }
            for (int c = 0; c < ch; ++c) {
                long long sum = 0;
                for (int v = 1; v < 256; ++v)
                    sum += static_cast<long long>(v) * hist[c][v];
                out->Row(y)[x * Bpp(s) + c] = static_cast<uint8_t>(sum / total);
            }
        }
    }
    return out;
}

// The variable blur by its definition: per pixel a horizontal window of
// map * RadiusX / 100 on each side, edge pixels repeated, then the same
// vertically over those means.
std::unique_ptr<CImage> RefVariable(const CImage& s, const CImage& map, int rx, int ry) {
    const int ch = ColourChannels(s), w = s.Width(), h = s.Height();
    auto g = [&](int x, int y) { return map.Row(y % map.Height())[x % map.Width()]; };
    std::vector<int> across(static_cast<size_t>(w) * h * ch);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < ch; ++c) {
                const int d = g(x, y) * rx / 100;
                int sum = 0;
                for (int i = x - d; i <= x + d; ++i)
                    sum += AtClamped(s, i, y, c);
                across[(static_cast<size_t>(y) * w + x) * ch + c] = sum / (2 * d + 1);
            }
    return Expected(s, ch, [&](int x, int y, int c) {
        const int d = g(x, y) * ry / 100;
        int sum = 0;
        for (int j = y - d; j <= y + d; ++j)
            sum += across[(static_cast<size_t>(ClampPosition(j, h)) * w + x) * ch + c];
        return sum / (2 * d + 1);
    });
}

} // namespace

TEST(Blur, RunningMeansEqualTheirDefinitionsOnEveryFormat) {
    // The larger picture is cut into bands for the cores; the smaller ones
    // have radii beyond their size, where the border pixel stands in again
    // and again.
    struct Size {
        int W, H;
        unsigned Seed;
    };
    for (const Size sz : {Size{23, 17, 1}, Size{5, 3, 2}, Size{1, 9, 3}, Size{400, 340, 4}}) {
        for (int bits : {24, 32, 8}) {
            const auto src = Picture(sz.W, sz.H, bits, sz.Seed * 31 + bits);
            for (int r : {0, 1, 4, 40}) {
                if (sz.W > 100 && r > 4) continue;
                const std::string what =
                    std::to_string(sz.W) + " bits " + std::to_string(bits) + " r " + std::to_string(r);
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return BoxBlur(i, r); }, RefBox(*src, r)))
                    << "BoxBlur " << what;
                // The triangular blur takes alpha along as a fourth channel.
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return GaussianBlur(i, r); }, RefTriangle(*src, r), Bpp(*src)))
                    << "GaussianBlur " << what;
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return FarBlur(i, r); },
                    [&](int x, int y, int c) { return RefFar(*src, x, y, c, r); }))
                    << "FarBlur " << what;
                if (r <= 7) {
                    auto unfocus = Clone(*src);
                    ASSERT_TRUE(Unfocus(*unfocus, r));
                    EXPECT_TRUE(SamePixels(*unfocus, *RefUnfocus(*src, r))) << "Unfocus " << what;
                }
            }
        }
    }
}

TEST(Blur, NeighbourWeighedBlursEqualTheirDefinitions) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(19, 14, bits, 40 + bits);
        for (int r : {1, 3}) {
            for (int t : {2, 17, 255})
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return SurfaceBlur(i, r, t); },
                    [&](int x, int y, int c) { return RefSurface(*src, x, y, c, r, t); }))
                    << "SurfaceBlur bits " << bits << " r " << r << " t " << t;
            for (int t : {0, 9, 60})
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return SelectiveGaussianBlur(i, r, t); },
                    [&](int x, int y, int c) { return RefSelective(*src, x, y, c, r, t); }))
                    << "SelectiveGaussianBlur bits " << bits << " r " << r << " t " << t;
        }
    }
}

TEST(Blur, VariableBlurFollowsItsMapTiledOrStretched) {
    const auto map = Map();
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(31, 22, bits, 70 + bits);
        for (auto [rx, ry] : {std::pair{100, 100}, std::pair{0, 250}, std::pair{333, 7}}) {
            auto out = Clone(*src);
            ASSERT_TRUE(VariableBlur(*out, *map, rx, ry, false));
            EXPECT_TRUE(SamePixels(*out, *RefVariable(*src, *map, rx, ry))) << bits << " " << rx << " " << ry;
        }
        // A black map leaves everything; a flat map gives the same whether
        // tiled or stretched.
        auto black = Picture(3, 3, 8, 1);
        black->FillSolidColor(0);
        auto out = Clone(*src);
        ASSERT_TRUE(VariableBlur(*out, *black, 500, 500, true));
        EXPECT_TRUE(SamePixels(*out, *src));
        auto flat = Picture(4, 6, 8, 1);
        flat->FillSolidColor(90);
        auto tiled = Clone(*src), stretched = Clone(*src);
        ASSERT_TRUE(VariableBlur(*tiled, *flat, 40, 60, false));
        ASSERT_TRUE(VariableBlur(*stretched, *flat, 40, 60, true));
        EXPECT_TRUE(SamePixels(*tiled, *stretched));
        EXPECT_FALSE(SamePixels(*tiled, *src));
    }
    // A colour map is read through its grey: white gives the full radius.
    auto white = Picture(2, 2, 24, 1);
    white->FillSolidColor(255);
    auto grey = Picture(2, 2, 8, 1);
    grey->FillSolidColor(255);
    const auto src = Picture(12, 12, 24, 5);
    auto a = Clone(*src), b = Clone(*src);
    ASSERT_TRUE(VariableBlur(*a, *white, 10, 10, false));
    ASSERT_TRUE(VariableBlur(*b, *grey, 10, 10, false));
    EXPECT_TRUE(SamePixels(*a, *b));
}

TEST(Blur, FlatPicturesStayFlat) {
    for (int bits : {24, 32, 8}) {
        auto flat = Picture(17, 13, bits, 1);
        const uint8_t colour[4] = {10, 200, 77, 133};
        for (int y = 0; y < flat->Height(); ++y)
            for (int x = 0; x < flat->Width(); ++x)
                for (int c = 0; c < Bpp(*flat); ++c)
                    flat->Row(y)[x * Bpp(*flat) + c] = colour[c];
        for (const Case& c : Cases()) {
            auto out = Clone(*flat);
            ASSERT_TRUE(c.Run(*out)) << c.Name;
            EXPECT_TRUE(SamePixels(*out, *flat)) << c.Name << " bits " << bits;
        }
    }
}

TEST(Blur, BordersStandInAsOftenAsTheClampSays) {
    // One grey row 0, 30, 90: the same three columns fill every row of the window.
    auto row = Picture(3, 1, 8, 1);
    const uint8_t values[3] = {0, 30, 90};
    std::memcpy(row->Row(0), values, 3);
    auto one = Clone(*row), five = Clone(*row);
    ASSERT_TRUE(BoxBlur(*one, 1));
    ASSERT_TRUE(BoxBlur(*five, 5));
    EXPECT_EQ(std::vector<int>({At(*one, 0, 0, 0), At(*one, 1, 0, 0), At(*one, 2, 0, 0)}),
              std::vector<int>({10, 40, 70}));
    // Radius 5 on three columns: columns -5..5 are 0 six times, 30 once, 90
    // four times, all over 121.
    EXPECT_EQ(std::vector<int>({At(*five, 0, 0, 0), At(*five, 1, 0, 0), At(*five, 2, 0, 0)}),
              std::vector<int>({35, 43, 51}));

    // The surface blur's divisor holds only the points inside the picture:
    // at 100 beside 200 with threshold 200 the weights are 255 and 128.
    auto pair = Picture(2, 1, 8, 1);
    pair->Row(0)[0] = 100;
    pair->Row(0)[1] = 200;
    ASSERT_TRUE(SurfaceBlur(*pair, 1, 200));
    EXPECT_EQ(At(*pair, 0, 0, 0), (100 * 255 + 200 * 128) / 383);
    EXPECT_EQ(At(*pair, 1, 0, 0), (200 * 255 + 100 * 128) / 383);
}

TEST(Blur, RadialAndZoomPathsAtTheirFixedPoints) {
    const auto src = Picture(25, 19, 24, 8);
    // Angle 0: every sample is the pixel itself.
    for (int samples : {1, 7, 200}) {
        auto out = Clone(*src);
        ASSERT_TRUE(RadialBlur(*out, 0, samples, 3, 15));
        EXPECT_TRUE(SamePixels(*out, *src)) << samples;
    }
    auto turned = Clone(*src);
    ASSERT_TRUE(RadialBlur(*turned, 20, 5, 12, 9));
    EXPECT_FALSE(SamePixels(*turned, *src));

    // A picture that changes only from column to column: on the centre's own
    // column the zoom path has no sideways motion and changes nothing.
    auto columns = Picture(25, 19, 24, 9);
    for (int y = 1; y < columns->Height(); ++y)
        std::memcpy(columns->Row(y), columns->Row(0), 75);
    auto zoomed = Clone(*columns);
    ASSERT_TRUE(ZoomBlur(*zoomed, 200, 30, 11, 4));
    for (int y = 0; y < 19; ++y)
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(At(*zoomed, 11, y, c), At(*columns, 11, y, c)) << y;
    EXPECT_FALSE(SamePixels(*zoomed, *columns));
}

TEST(Blur, MotionBlurAlongTheAxes) {
    const auto src = Picture(21, 16, 24, 12);
    // The window runs from the pixel Steps steps along (dx, dy), the dial's
    // angle acting at half its value.
    auto check = [&](int angle, int distance, int steps, int dx, int dy) {
        EXPECT_TRUE(MatchesDefinition(
            *src, [&](CImage& i) { return MotionBlur(i, angle, distance); },
            [&](int x, int y, int c) {
                int sum = 0;
                for (int k = 0; k <= steps; ++k)
                    sum += AtClamped(*src, x + k * dx, y + k * dy, c);
                return sum / (steps + 1);
            }))
            << "angle " << angle << " distance " << distance;
    };
    check(0, 1, 1, 1, 0); // two samples a pixel
    check(0, 6, 6, 1, 0);
    check(180, 4, 4, 0, -1);
    check(360, 9, 9, -1, 0);
    check(540, 3, 3, 0, 1);
    check(90, 3, 2, 1, -1); // 45 degrees: 3 cos 45 rounds to 2, both axes every step
}

TEST(Blur, MaskWeighsEachResultOnce) {
    const int w = 30, h = 24;
    CSelection feathered;
    FeatheredEllipse(feathered, w, h, 4, 4, 3, 25, 20);
    // A mask with no zero weight: the bound is the whole picture, so that even
    // the position-bound filters see the same pixels as without a selection.
    CSelection everywhere;
    SetMask(everywhere, w, h, [](int x, int y) { return 1 + (x * 37 + y * 101) % 255; });

    std::vector<Case> positionFree;
    for (const Case& c : Cases())
        if (c.PositionFree) positionFree.push_back(c);
    ExpectMaskBlend(positionFree, feathered, 200);
    ExpectMaskBlend(Cases(), everywhere, 200);
}

TEST(Blur, AverageBlurIsTheRoundedMeanOfTheVisitedPixels) {
    // The weights do not enter the mean; halves go to even.
    auto img = Picture(4, 1, 8, 1);
    const uint8_t values[4] = {1, 2, 100, 100};
    std::memcpy(img->Row(0), values, 4);
    CSelection sel;
    SetMask(sel, 4, 1, [](int x, int) { return x == 0 ? 255 : (x == 1 ? 128 : 0); });
    img->SetSelection(&sel);
    ASSERT_TRUE(AverageBlur(*img));
    EXPECT_EQ(std::vector<int>({At(*img, 0, 0, 0), At(*img, 1, 0, 0), At(*img, 2, 0, 0), At(*img, 3, 0, 0)}),
              std::vector<int>({2, 2, 100, 100}));
    img->Row(0)[0] = 2;
    img->Row(0)[1] = 3;
    ASSERT_TRUE(AverageBlur(*img));
    EXPECT_EQ(At(*img, 0, 0, 0), 2);
    EXPECT_EQ(At(*img, 1, 0, 0), 3 + (2 - 3) * 128 / 255);
}

TEST(Blur, GreyIsOneChannelOfTheColourLoop) {
    const auto grey = Picture(26, 18, 8, 77);
    auto colour = Picture(26, 18, 24, 1);
    for (int y = 0; y < 18; ++y)
        for (int x = 0; x < 26; ++x)
            for (int c = 0; c < 3; ++c)
                colour->Row(y)[x * 3 + c] = grey->Row(y)[x];
    for (const Case& c : Cases()) {
        auto g = Clone(*grey), rgb = Clone(*colour);
        ASSERT_TRUE(c.Run(*g));
        ASSERT_TRUE(c.Run(*rgb));
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 26; ++x)
                for (int ch = 0; ch < 3; ++ch)
                    ASSERT_EQ(At(*rgb, x, y, ch), At(*g, x, y, 0)) << c.Name << " " << x << "," << y;
    }
}

// Empty selections and other formats: see the catalogue's test of every row.
TEST(Blur, ParametersNoDialogGivesAreRefusedBeforeAnythingHappens) {
    auto img = Picture(6, 6, 24, 1);
    EventLog log;
    img->AddListener(&log);
    EXPECT_FALSE(BoxBlur(*img, -1));
    EXPECT_FALSE(SurfaceBlur(*img, 2, 0));
    EXPECT_FALSE(ZoomBlur(*img, 10, 0, 3, 3));
    EXPECT_FALSE(SelectiveGaussianBlur(*img, 2, -1));
    EXPECT_TRUE(log.Lines.isEmpty());
}

TEST(Blur, LineHelpersStepOnceAlongTheLongerSide) {
    std::vector<int32_t> xs, ys;
    BresenhamLine(0, 0, 10, 3, xs, ys);
    ASSERT_EQ(xs.size(), 11u);
    EXPECT_EQ(std::pair(xs.back(), ys.back()), std::pair(10, 3));
    for (size_t i = 1; i < xs.size(); ++i) {
        EXPECT_EQ(xs[i] - xs[i - 1], 1);
        EXPECT_TRUE(ys[i] == ys[i - 1] || ys[i] == ys[i - 1] + 1) << i;
    }
    BresenhamLine(0, 0, -4, 4, xs, ys);
    EXPECT_EQ(xs, std::vector<int32_t>({0, -1, -2, -3, -4}));
    EXPECT_EQ(ys, std::vector<int32_t>({0, 1, 2, 3, 4}));
}
