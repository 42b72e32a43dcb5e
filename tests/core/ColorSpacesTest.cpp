// Colour-space conversions of the panels: known values and round trips.
#include "core/ColorSpaces.h"

#include <gtest/gtest.h>

using namespace vm;

TEST(ColorSpaces, KnownValues) {
    Hsb h = RgbToHsb(255, 0, 0);
    EXPECT_DOUBLE_EQ(h.H, 0.0);
    EXPECT_DOUBLE_EQ(h.S, 100.0);
    EXPECT_DOUBLE_EQ(h.B, 100.0);
    h = RgbToHsb(0, 128, 255);
    EXPECT_NEAR(h.H, 209.88, 0.01);
    h = RgbToHsb(255, 0, 128); // just short of a full turn
    EXPECT_NEAR(h.H, 329.88, 0.01);
    EXPECT_EQ(RgbToHsb(90, 90, 90).S, 0.0);

    Cmyk c = RgbToCmyk(255, 0, 0);
    EXPECT_DOUBLE_EQ(c.C, 0.0);
    EXPECT_DOUBLE_EQ(c.M, 100.0);
    EXPECT_DOUBLE_EQ(c.Y, 100.0);
    EXPECT_DOUBLE_EQ(c.K, 0.0);
    c = RgbToCmyk(0, 0, 0);
    EXPECT_DOUBLE_EQ(c.K, 100.0);
    EXPECT_DOUBLE_EQ(c.C + c.M + c.Y, 0.0);

    Lab l = RgbToLab(255, 255, 255);
    EXPECT_NEAR(l.L, 100.0, 0.01);
    EXPECT_NEAR(l.A, 0.0, 0.01);
    EXPECT_NEAR(l.B, 0.0, 0.01);
    l = RgbToLab(255, 0, 0);
    EXPECT_NEAR(l.L, 53.24, 0.01);
    EXPECT_NEAR(l.A, 80.09, 0.01);
    EXPECT_NEAR(l.B, 67.20, 0.01);
    EXPECT_EQ(GreyValue(255, 255, 255), 255);
    EXPECT_EQ(GreyValue(255, 0, 0), 76);
    int r = 25, g = 26, b = 255;
    NearestWebSafe(r, g, b);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 51);
    EXPECT_EQ(b, 255);
}

TEST(ColorSpaces, RoundTripsGiveTheSameColourBack) {
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 3)
            for (int b = 0; b < 256; b += 7) {
                int r2 = -1, g2 = -1, b2 = -1;
                HsbToRgb(RgbToHsb(r, g, b), r2, g2, b2);
                ASSERT_TRUE(r2 == r && g2 == g && b2 == b) << "HSB " << r << "," << g << "," << b;
                CmykToRgb(RgbToCmyk(r, g, b), r2, g2, b2);
                ASSERT_TRUE(r2 == r && g2 == g && b2 == b) << "CMYK " << r << "," << g << "," << b;
                LabToRgb(RgbToLab(r, g, b), r2, g2, b2);
                ASSERT_TRUE(r2 == r && g2 == g && b2 == b) << "Lab " << r << "," << g << "," << b;
            }
}

TEST(ColorSpaces, OutOfRangeInputsAreHeld) {
    int r, g, b;
    HsbToRgb({720.0 + 120.0, 100.0, 100.0}, r, g, b); // hue wraps round
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 255);
    EXPECT_EQ(b, 0);
    HsbToRgb({-120.0, 300.0, -5.0}, r, g, b);
    EXPECT_EQ(r + g + b, 0);
    CmykToRgb({-10.0, 200.0, 50.0, 0.0}, r, g, b);
    EXPECT_EQ(r, 255);
    EXPECT_EQ(g, 0);
    EXPECT_EQ(b, 128);
}
