// Colour-space conversions of the panels: known values and round trips.
#include "core/ColorSpaces.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace vm;

namespace {

void ExpectNear(const std::vector<double>& got, const std::vector<double>& want) {
    for (size_t i = 0; i < want.size(); ++i)
        EXPECT_NEAR(got[i], want[i], 0.01) << "component " << i;
}

template <typename Colour, typename Convert> std::array<int32_t, 3> Back(const Colour& c, Convert convert) {
    std::array<int32_t, 3> rgb{-1, -1, -1};
    convert(c, rgb[0], rgb[1], rgb[2]);
    return rgb;
}

} // namespace

TEST(ColorSpaces, KnownValues) {
    for (auto [rgb, hsb] : {std::pair<std::array<int, 3>, std::vector<double>>{{255, 0, 0}, {0, 100, 100}},
                            {{0, 128, 255}, {209.88, 100, 100}},
                            {{255, 0, 128}, {329.88, 100, 100}}, // just short of a full turn
                            {{90, 90, 90}, {0, 0, 35.29}}}) {
        const Hsb h = RgbToHsb(rgb[0], rgb[1], rgb[2]);
        ExpectNear({h.H, h.S, h.B}, hsb);
    }
    Cmyk c = RgbToCmyk(255, 0, 0);
    ExpectNear({c.C, c.M, c.Y, c.K}, {0, 100, 100, 0});
    c = RgbToCmyk(0, 0, 0);
    ExpectNear({c.C, c.M, c.Y, c.K}, {0, 0, 0, 100});
    Lab l = RgbToLab(255, 255, 255);
    ExpectNear({l.L, l.A, l.B}, {100, 0, 0});
    l = RgbToLab(255, 0, 0);
    ExpectNear({l.L, l.A, l.B}, {53.24, 80.09, 67.20});
    EXPECT_EQ(GreyValue(255, 255, 255), 255);
    EXPECT_EQ(GreyValue(255, 0, 0), 76);
    int r = 25, g = 26, b = 255;
    NearestWebSafe(r, g, b);
    EXPECT_EQ((std::array{r, g, b}), (std::array{0, 51, 255}));
}

TEST(ColorSpaces, RoundTripsGiveTheSameColourBack) {
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 3)
            for (int b = 0; b < 256; b += 7) {
                const std::array<int32_t, 3> rgb{r, g, b};
                ASSERT_EQ(Back(RgbToHsb(r, g, b), HsbToRgb), rgb) << "HSB";
                ASSERT_EQ(Back(RgbToCmyk(r, g, b), CmykToRgb), rgb) << "CMYK";
                ASSERT_EQ(Back(RgbToLab(r, g, b), LabToRgb), rgb) << "Lab";
            }
}

TEST(ColorSpaces, OutOfRangeInputsAreHeld) {
    EXPECT_EQ(Back(Hsb{720.0 + 120.0, 100.0, 100.0}, HsbToRgb), (std::array{0, 255, 0})); // hue wraps round
    EXPECT_EQ(Back(Hsb{-120.0, 300.0, -5.0}, HsbToRgb), (std::array{0, 0, 0}));
    EXPECT_EQ(Back(Cmyk{-10.0, 200.0, 50.0, 0.0}, CmykToRgb), (std::array{255, 0, 128}));
}
