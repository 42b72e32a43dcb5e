// Clearing and filling the selected pixels: by format, through partial
// weights, and the refusal of an empty selection.
#include "core/EditOps.h"
#include "core/BlendModes.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "selection/Selection.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace vm;

namespace {

using Events = vmtest::ImageEventLog;

// A selection over an image of the same size: column x has weight Weights[x]
// on every row (0 none, 255 full, anything between partial).
void WeightColumns(CSelection& s, const CImage& image, std::initializer_list<int> weights) {
    s.CreateNewSelection(image.Width(), image.Height());
    s.SelectAll();
    for (int y = 0; y < s.Height(); ++y) {
        int x = 0;
        for (int w : weights)
            s.Row(y)[x++] = static_cast<uint8_t>(w);
    }
    s.UpdateSelectionRegion();
}

const int32_t Teal = MakeColorRef(10, 200, 150); // red 10, green 200, blue 150

} // namespace

TEST(EditOps, ClearMakesRgbaPixelsTransparentAndKeepsTheirColour) {
    auto image = vmtest::RandomImage(3, 2, 32, 7);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            image->Row(y)[4 * x + 3] = 200;
    auto original = image->CloneImage();
    CSelection s;
    WeightColumns(s, *image, {255, 51, 0});
    image->SetSelection(&s);
    Events e;
    image->AddListener(&e);
    ASSERT_TRUE(Clear(*image, Teal));
    EXPECT_EQ(e.Lines, (QStringList{"start 0 清除 0", "end 0 清除 0"}));
    const int weights[3] = {255, 51, 0};
    for (int y = 0; y < 2; ++y)
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(image->Row(y)[i], i % 4 == 3 ? 200 - 200 * weights[i / 4] / 255 : original->Row(y)[i])
                << i;
}

TEST(EditOps, FillMovesByTheOpacity) {
    auto image = vmtest::RandomImage(2, 2, 32, 9);
    const uint8_t bgra[4] = {0, 100, 255, 50};
    std::memcpy(image->Row(0), bgra, 4);
    ASSERT_TRUE(FillWithColor(*image, Teal, 40));
    // 255 - 98 for red: the step is truncated toward zero.
    EXPECT_EQ(std::vector<int>(image->Row(0), image->Row(0) + 4), (std::vector<int>{60, 140, 157, 132}));
    // Full opacity gives the colour itself and an opaque pixel.
    ASSERT_TRUE(FillWithColor(*image, Teal, 100));
    EXPECT_EQ(image->Row(1)[4], 150);
    EXPECT_EQ(image->Row(1)[7], 255);
    // Out-of-range opacities are held to 1..100.
    ASSERT_TRUE(FillWithColor(*image, 0, 1000));
    EXPECT_EQ(image->Row(1)[5], 0);
}

TEST(EditOps, PatternIsTiledFromTheImagesOrigin) {
    CImage pattern;
    ASSERT_TRUE(pattern.CreateNewImage(2, 3, 24));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 2; ++x)
            for (int c = 0; c < 3; ++c)
                pattern.Row(y)[3 * x + c] = static_cast<uint8_t>(40 * y + 100 * x + c);
    for (int bits : {24, 32}) {
        auto image = vmtest::RandomImage(7, 5, bits, 4);
        if (bits == 32) image->SetAlphaChannelToMaxValue();
        auto original = image->CloneImage();
        CSelection s;
        WeightColumns(s, *image, {255, 255, 255, 255, 255, 0, 51});
        image->SetSelection(&s);
        // Dissolve at full opacity lays the pattern as it is.
        ASSERT_TRUE(FillWithPattern(*image, pattern, BlendDissolve, 255));
        const int bpp = bits / 8;
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x)
                for (int c = 0; c < 3; ++c) {
                    const int v = original->Row(y)[bpp * x + c];
                    const int n = pattern.Row(y % 3)[3 * (x % 2) + c];
                    const int w = x == 5 ? 0 : x == 6 ? 51 : 255;
                    ASSERT_EQ(image->Row(y)[bpp * x + c], v + (n - v) * w / 255)
                        << bits << ": " << x << "," << y;
                }
    }
}

TEST(EditOps, BlendedFillOnGreyAndTranslucentPixels) {
    // Grey pictures take the mean of the pattern's pixel, or the grey of a colour.
    CImage pattern;
    ASSERT_TRUE(pattern.CreateNewImage(1, 1, 24));
    pattern.Row(0)[0] = 30;
    pattern.Row(0)[1] = 60;
    pattern.Row(0)[2] = 100; // mean 63.33
    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(3, 2, 8));
    grey.FillSolidColor(200);
    ASSERT_TRUE(FillWithPattern(grey, pattern, BlendDarken, 255));
    EXPECT_EQ(grey.Row(1)[2], 63);
    ASSERT_TRUE(Clear(grey, Teal)); // the grey of the colour
    EXPECT_EQ(grey.Row(1)[2], 120);
    ASSERT_TRUE(FillWithColor(grey, MakeColorRef(255, 255, 255), BlendLinearDodge, 255));
    EXPECT_EQ(grey.Row(0)[0], 255);

    // A fully transparent pixel shows nothing to blend with: it takes the
    // colour and the opacity as its alpha. An opaque one blends as usual.
    CImage rgba;
    ASSERT_TRUE(rgba.CreateNewImage(2, 1, 32));
    uint8_t* p = rgba.Row(0);
    p[0] = p[1] = p[2] = 77;
    p[3] = 0;
    p[4] = p[5] = p[6] = 100;
    p[7] = 255;
    ASSERT_TRUE(FillWithColor(rgba, Teal, BlendMultiply, 255));
    auto multiply = [](int a, int b) { return (a * b * 2 + 255) / 510; };
    EXPECT_EQ(std::vector<int>(p, p + 8), (std::vector<int>{150, 200, 10, 255, multiply(100, 150),
                                                            multiply(100, 200), multiply(100, 10), 255}));
    p[3] = 0;
    ASSERT_TRUE(FillWithColor(rgba, Teal, BlendScreen, 102));
    EXPECT_EQ(p[3], 102);
    EXPECT_EQ(p[2], 10);
}

TEST(EditOps, EmptySelectionsAreRefusedAndOtherFormatsPassUnchanged) {
    auto image = vmtest::RandomImage(4, 4, 24, 3);
    auto original = image->CloneImage();
    CImage pattern;
    ASSERT_TRUE(pattern.CreateNewImage(2, 2, 24));
    CSelection s;
    s.CreateNewSelection(4, 4);
    s.SelectAll();
    s.Left = 10; // the whole mask moved off the picture
    image->SetSelection(&s);
    ASSERT_TRUE(image->IsSelectionEmpty());
    Events e;
    image->AddListener(&e);
    MessageRecorder recorder;
    EXPECT_FALSE(Clear(*image, Teal));
    EXPECT_FALSE(FillWithColor(*image, Teal, 100));
    EXPECT_FALSE(FillWithColor(*image, Teal, BlendScreen, 255));
    EXPECT_FALSE(FillWithPattern(*image, pattern, BlendScreen, 255));
    const QString fill = QStringLiteral("不能完成\"\"填充\"\"命令,因为所选区域是空的.");
    ASSERT_EQ(recorder.Requests.size(), 4);
    EXPECT_EQ(recorder.Requests[0].Text, QStringLiteral("不能完成\"\"清除\"\"命令,因为所选区域是空的."));
    for (int i : {1, 2, 3})
        EXPECT_EQ(recorder.Requests[i].Text, fill);
    // Nothing to tile: refused before anything is raised or asked.
    CImage none;
    image->SetSelection(nullptr);
    EXPECT_FALSE(FillWithPattern(*image, none, BlendScreen, 255));
    EXPECT_EQ(recorder.Requests.size(), 4);
    EXPECT_TRUE(e.Lines.isEmpty());
    EXPECT_EQ(memcmp(image->Pointer(), original->Pointer(), image->BlockSize()), 0);

    // Palette and 16-bit pictures raise both events and stay as they are.
    for (int bits : {1, 4, 16}) {
        auto other = vmtest::RandomImage(6, 3, bits, 2);
        auto before = other->CloneImage();
        Events steps;
        other->AddListener(&steps);
        EXPECT_TRUE(Clear(*other, Teal)) << bits;
        EXPECT_TRUE(FillWithPattern(*other, pattern, BlendMultiply, 255)) << bits;
        EXPECT_EQ(steps.Lines.size(), 4) << bits;
        EXPECT_EQ(memcmp(other->Pointer(), before->Pointer(), other->BlockSize()), 0) << bits;
    }
}
