// The filters of "其他" against their definitions, their fixed values, and the
// frame around them.
#include "FilterTestSupport.h"

#include "filters/OtherFilters.h"

using namespace vm;
using namespace ftest;

namespace {

std::array<int32_t, 25> Kernel(std::initializer_list<std::pair<int, int32_t>> cells) {
    std::array<int32_t, 25> k{};
    for (auto [i, v] : cells)
        k[static_cast<size_t>(i)] = v;
    return k;
}

} // namespace

TEST(OtherFilters, HighPassIsThePixelLessItsTriangularMean) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(27, 21, bits, 3 + bits);
        for (int r : {1, 5, 30}) {
            const Reference low = RefTriangle(*src, r);
            EXPECT_TRUE(MatchesDefinition(
                *src, [&](CImage& i) { return HighPass(i, r); },
                [&](int x, int y, int c) {
                    return std::clamp(At(*src, x, y, c) - low(x, y, c) + 128, 0, 255);
                }))
                << bits << " " << r;
        }
        auto flat = Picture(9, 9, bits, 1);
        flat->FillSolidColor(201);
        ASSERT_TRUE(HighPass(*flat, 3));
        for (int c = 0; c < Bpp(*flat); ++c)
            EXPECT_EQ(At(*flat, 4, 4, c), c < 3 ? 128 : 201)
                << "colour channels go to middle grey, alpha stays";
    }
    // Its events and its refusal: see the catalogue's test of every row.
}

TEST(OtherFilters, OffsetLeavesClampsOrWrapsWhatComesFromOffThePicture) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(13, 9, bits, 21 + bits);
        const int w = 13, h = 9;
        for (auto [dx, dy] : {std::pair{4, -3}, std::pair{-20, 7}, std::pair{0, 0}, std::pair{27, -19}}) {
            for (int edge : {0, 1, 2})
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return Offset(i, dx, dy, edge); },
                    [&](int x, int y, int c) {
                        const int sx = x - dx, sy = y - dy;
                        if (edge == 0 && (sx < 0 || sy < 0 || sx >= w || sy >= h)) return At(*src, x, y, c);
                        if (edge == 1) return AtClamped(*src, sx, sy, c);
                        return At(*src, (sx % w + w) % w, (sy % h + h) % h, c);
                    }))
                    << bits << " " << dx << "," << dy << " edge " << edge;
        }
    }
    auto img = Picture(4, 4, 24, 1);
    EXPECT_FALSE(Offset(*img, 1, 1, 3));
}

TEST(OtherFilters, RankFiltersTakeTheExtremeOfTheRectangleInsideThePicture) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(24, 17, bits, 50 + bits);
        for (auto [rx, ry] : {std::pair{1, 1}, std::pair{3, 1}, std::pair{2, 6}, std::pair{30, 30}}) {
            for (bool max : {true, false})
                EXPECT_TRUE(MatchesDefinition(
                    *src, [&](CImage& i) { return max ? MaxFilters(i, rx, ry) : MinFilters(i, rx, ry); },
                    [&](int x, int y, int c) { return RefRank(*src, x, y, c, rx, ry, max); }))
                    << (max ? "max " : "min ") << bits << " " << rx << "," << ry;
        }
    }
    // The radii are held to 1..100: one bright pixel at the left reaches
    // column 100 at 100 (and at 150), not at 99; 0 acts as 1.
    auto line = Picture(130, 1, 8, 1);
    line->FillSolidColor(0);
    line->Row(0)[0] = 255;
    auto at = [&](int rx) {
        auto out = Clone(*line);
        EXPECT_TRUE(MaxFilters(*out, rx, 1));
        return std::pair{At(*out, 99, 0, 0), At(*out, 100, 0, 0)};
    };
    EXPECT_EQ(at(99), std::pair(255, 0));
    EXPECT_EQ(at(100), std::pair(255, 255));
    EXPECT_EQ(at(150), std::pair(255, 255));
    auto zero = Clone(*line), one = Clone(*line);
    ASSERT_TRUE(MaxFilters(*zero, 0, -5));
    ASSERT_TRUE(MaxFilters(*one, 1, 1));
    EXPECT_TRUE(SamePixels(*zero, *one));
    EXPECT_EQ(At(*one, 1, 0, 0), 255);
    EXPECT_EQ(At(*one, 2, 0, 0), 0);
}

TEST(OtherFilters, MeanSquareErrorIsTheLocalDeviation) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(22, 15, bits, 60 + bits);
        for (int r : {1, 2, 20, 100})
            EXPECT_TRUE(MatchesDefinition(
                *src, [&](CImage& i) { return ShowMeanSquareError(i, r); },
                [&](int x, int y, int c) { return RefDeviation(*src, x, y, c, r); }))
                << bits << " " << r;
    }
}

TEST(OtherFilters, ConvoluteReadsItsGridRowByRowWithRepeatedEdges) {
    for (int bits : {24, 32, 8}) {
        const auto src = Picture(11, 8, bits, 80 + bits);
        auto identity = Clone(*src);
        ASSERT_TRUE(Convolute(*identity, Kernel({{12, 1}}), 0, 1));
        EXPECT_TRUE(SamePixels(*identity, *src));
        // Row 1, column 4: the pixel one up and two to the right.
        EXPECT_TRUE(MatchesDefinition(
            *src,
            [](CImage& i) {
                return Convolute(i, Kernel({{9, 1}}), 0, 1);
            },
            [&](int x, int y, int c) { return AtClamped(*src, x + 2, y - 1, c); }));
        // A difference kernel: the sum is divided truncating toward zero, then
        // the offset goes on and the value is held to 0..255.
        EXPECT_TRUE(MatchesDefinition(
            *src,
            [](CImage& i) {
                return Convolute(i, Kernel({{11, -2}, {13, 1}, {0, 1}}), 60, 3);
            },
            [&](int x, int y, int c) {
                const int sum = -2 * AtClamped(*src, x - 1, y, c) + AtClamped(*src, x + 1, y, c) +
                                AtClamped(*src, x - 2, y - 2, c);
                return std::clamp(sum / 3 + 60, 0, 255);
            }));
    }
    auto img = Picture(4, 4, 24, 1);
    EventLog log;
    img->AddListener(&log);
    EXPECT_FALSE(Convolute(*img, Kernel({{12, 1}}), 0, 0));
    EXPECT_TRUE(log.Lines.isEmpty());
}

TEST(OtherFilters, MaskWeighsEachResult) {
    CSelection feathered;
    FeatheredEllipse(feathered, 28, 22, 3, 3, 2, 24, 20);
    ExpectMaskBlend({{"HighPass", [](CImage& i) { return HighPass(i, 4); }},
                     {"Offset", [](CImage& i) { return Offset(i, 5, -2, 2); }},
                     {"MaxFilters", [](CImage& i) { return MaxFilters(i, 2, 3); }},
                     {"MinFilters", [](CImage& i) { return MinFilters(i, 3, 1); }},
                     {"ShowMeanSquareError", [](CImage& i) { return ShowMeanSquareError(i, 2); }},
                     {"Convolute",
                      [](CImage& i) {
                          return Convolute(i, Kernel({{6, 2}, {12, 5}, {18, -1}}), 9, 5);
                      }}},
                    feathered, 300);
}
