// Blend modes: the integer formulas against a plain floating reference, the
// identities users rely on, opacity and dissolve, and the fast blender
// agreeing with the direct computation in every mode.
#include "core/BlendModes.h"
#include "core/Numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace vm;

namespace {

// Nearest integer of a non-negative real, halves up.
int Near(double v) {
    return static_cast<int>(std::floor(v + 0.5));
}

Rgb RandomRgb(std::mt19937& gen) {
    return {static_cast<int32_t>(gen() & 255), static_cast<int32_t>(gen() & 255),
            static_cast<int32_t>(gen() & 255)};
}

double Luma(const Rgb& c) {
    return 0.3 * c.R + 0.59 * c.G + 0.11 * c.B;
}

} // namespace

TEST(BlendModes, ListsForColourAndGreyPictures) {
    ASSERT_EQ(BlendModeNames().size(), BlendModeCount);
    // Grey pictures: everything but the four colour-component modes.
    const QStringList grey = GreyBlendModeNames();
    EXPECT_EQ(grey.size(), BlendModeCount - 4);
    EXPECT_FALSE(grey.contains(QStringLiteral("色相")) || grey.contains(QStringLiteral("明度")));
    EXPECT_EQ(GreyBlendModes().back(), BlendTexture);
}

TEST(BlendModes, SeparableModesMatchTheirFormulas) {
    std::mt19937 gen(11);
    for (int i = 0; i < 4000; ++i) {
        const int a = static_cast<int>(gen() & 255), b = static_cast<int>(gen() & 255);
        const double A = a / 255.0, B = b / 255.0;
        EXPECT_EQ(BlendChannel(BlendMultiply, a, b), Near(A * B * 255));
        EXPECT_EQ(BlendChannel(BlendScreen, a, b), 255 - Near((1 - A) * (1 - B) * 255));
        EXPECT_EQ(BlendChannel(BlendOverlay, a, b),
                  a < 128 ? Near(2 * A * B * 255) : 255 - Near(2 * (1 - A) * (1 - B) * 255));
        EXPECT_NEAR(BlendChannel(BlendSoftLight, a, b), (A * A * (1 - 2 * B) + 2 * A * B) * 255, 0.5 + 1e-9);
        EXPECT_EQ(BlendChannel(BlendLinearLight, a, b), std::clamp(a + 2 * b - 255, 0, 255));
        EXPECT_EQ(BlendChannel(BlendDifference, a, b), std::abs(a - b));
        EXPECT_EQ(BlendChannel(BlendTexture, a, b), std::clamp(a + b - 128, 0, 255));
        if (b > 0 && a < 255) {
            EXPECT_EQ(BlendChannel(BlendColorBurn, a, b), std::max(0, 255 - (255 - a) * 255 / b));
        }
        if (b < 255 && a > 0) {
            EXPECT_EQ(BlendChannel(BlendColorDodge, a, b), std::min(255, a * 255 / (255 - b)));
        }
        for (int m = 0; m < BlendModeCount; ++m) {
            const int v = BlendChannel(m, a, b);
            ASSERT_TRUE(v >= 0 && v <= 255) << m;
        }
    }
    // The ends of the division modes, the hard mix's threshold, the vivid
    // light's burn half and the pin light.
    const int ends[][4] = {
        {BlendColorBurn, 255, 0, 255},  {BlendColorBurn, 254, 0, 0}, {BlendColorDodge, 0, 255, 0},
        {BlendColorDodge, 1, 255, 255}, {BlendDivide, 0, 0, 0},      {BlendDivide, 9, 0, 255},
        {BlendHardMix, 100, 155, 255},  {BlendHardMix, 100, 154, 0}, {BlendPinLight, 200, 50, 100}};
    for (const auto& e : ends)
        EXPECT_EQ(BlendChannel(e[0], e[1], e[2]), e[3]) << e[0] << " " << e[1] << " " << e[2];
    EXPECT_EQ(BlendChannel(BlendVividLight, 200, 127), BlendChannel(BlendColorBurn, 200, 254));
}

TEST(BlendModes, NeutralColoursLeaveTheBase) {
    std::mt19937 gen(3);
    const Rgb white{255, 255, 255}, black{0, 0, 0}, grey{128, 128, 128};
    for (int i = 0; i < 500; ++i) {
        const Rgb base = RandomRgb(gen);
        EXPECT_EQ(BlendColors(BlendMultiply, base, white, 255), base);
        EXPECT_EQ(BlendColors(BlendScreen, base, black, 255), base);
        EXPECT_EQ(BlendColors(BlendDifference, base, base, 255), black);
        EXPECT_EQ(BlendColors(BlendLinearDodge, base, black, 255), base);
        EXPECT_EQ(BlendColors(BlendDivide, base, white, 255), base);
        EXPECT_EQ(BlendColors(BlendTexture, base, grey, 255), base);
        EXPECT_EQ(BlendColors(BlendSubtract, base, base, 255), black);
        // Opacity 0 never moves anything, in any mode.
        for (int m = 0; m < BlendModeCount; ++m)
            EXPECT_EQ(BlendColors(m, base, RandomRgb(gen), 0), base) << m;
    }
}

TEST(BlendModes, OpacityMovesTheBaseTruncating) {
    std::mt19937 gen(5);
    for (int i = 0; i < 500; ++i) {
        const Rgb a = RandomRgb(gen), b = RandomRgb(gen);
        const int o = static_cast<int>(gen() % 256);
        const Rgb full = MixColors(BlendHardMix, a, b);
        const Rgb got = BlendColors(BlendHardMix, a, b, o);
        EXPECT_EQ(got.R, a.R + (full.R - a.R) * o / 255);
        EXPECT_EQ(got.G, a.G + (full.G - a.G) * o / 255);
        EXPECT_EQ(got.B, a.B + (full.B - a.B) * o / 255);
    }
    // Out-of-range mode or opacity: nothing to do.
    EXPECT_EQ(BlendColors(26, {1, 2, 3}, {200, 200, 200}, 255), (Rgb{1, 2, 3}));
    EXPECT_EQ(BlendColors(BlendMultiply, {1, 2, 3}, {200, 200, 200}, 256), (Rgb{1, 2, 3}));
    EXPECT_FALSE(CBlender(-1, 255).Valid());
}

TEST(BlendModes, DissolveTakesWholePixelsByTheOpacity) {
    SeedRnd(42);
    const Rgb base{10, 20, 30}, blend{200, 100, 0};
    int taken = 0;
    for (int i = 0; i < 20000; ++i) {
        const Rgb r = BlendColors(BlendDissolve, base, blend, 64);
        ASSERT_TRUE(r == base || r == blend);
        taken += r == blend;
    }
    EXPECT_NEAR(taken / 20000.0, 64 / 255.0, 0.02);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(BlendColors(BlendDissolve, base, blend, 255), blend);
        EXPECT_EQ(BlendColors(BlendDissolve, base, blend, 0), base);
    }
}

TEST(BlendModes, ColourComponentModes) {
    // Luminosity: the blend's brightness with the base's hue and saturation.
    std::mt19937 gen(9);
    for (int i = 0; i < 500; ++i) {
        const Rgb a = RandomRgb(gen), b = RandomRgb(gen);
        const Rgb lum = MixColors(BlendLuminosity, a, b);
        EXPECT_NEAR(Luma(lum), Luma(b), 1.0);
        const Rgb col = MixColors(BlendColor, a, b);
        EXPECT_NEAR(Luma(col), Luma(a), 1.0);
        // A grey blend has no hue to give and no saturation: the base's grey.
        const int g = static_cast<int>(gen() & 255);
        const Rgb sat = MixColors(BlendSaturation, a, {g, g, g});
        EXPECT_LE(std::abs(sat.R - sat.G) + std::abs(sat.G - sat.B), 1);
        EXPECT_NEAR(Luma(sat), Luma(a), 1.0);
    }
    // Darker and lighter colour take a whole colour by its sum.
    EXPECT_EQ(MixColors(BlendDarkerColor, {250, 0, 0}, {90, 90, 90}), (Rgb{250, 0, 0}));
    EXPECT_EQ(MixColors(BlendLighterColor, {250, 0, 0}, {90, 90, 90}), (Rgb{90, 90, 90}));
    // Grey fall-backs.
    EXPECT_EQ(BlendGrey(BlendDarkerColor, 90, 40, 255), 40);
    EXPECT_EQ(BlendGrey(BlendLighterColor, 90, 40, 255), 90);
    EXPECT_EQ(BlendGrey(BlendHue, 90, 40, 255), 90);
    EXPECT_EQ(BlendGrey(BlendLuminosity, 90, 40, 255), 40);
}

TEST(BlendModes, PreparedBlenderAgreesWithTheDirectComputation) {
    std::mt19937 gen(17);
    for (int m = 1; m < BlendModeCount; ++m) {
        for (int o : {255, 200, 77}) {
            const CBlender blender(m, o);
            ASSERT_TRUE(blender.Valid());
            for (int i = 0; i < 300; ++i) {
                const Rgb a = RandomRgb(gen), b = RandomRgb(gen);
                ASSERT_EQ(blender.Apply(a, b), BlendColors(m, a, b, o)) << "mode " << m << " opacity " << o;
                ASSERT_EQ(blender.ApplyGrey(a.R, b.R), BlendGrey(m, a.R, b.R, o)) << "mode " << m;
            }
        }
    }
    BlendTable table{};
    EXPECT_FALSE(BuildBlendTable(BlendHue, table)) << "no table for a mode that mixes the channels";
}
