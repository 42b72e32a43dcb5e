// Clearing and filling the selected pixels: by format, through partial
// weights, and the refusal of an empty selection.
#include "core/EditOps.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "selection/Selection.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace vm;

namespace {

struct Events : IImageListener {
    QStringList names;
    void ProgressStart(bool, const QString& name, int) override { names << QStringLiteral("start ") + name; }
    void ProgressEnd(bool, const QString& name, int, const QString&) override {
        names << QStringLiteral("end ") + name;
    }
};

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

TEST(EditOps, ClearPaintsTheBackgroundThroughTheWeights) {
    auto image = vmtest::RandomImage(4, 3, 24, 5);
    auto original = image->CloneImage();
    CSelection s;
    WeightColumns(s, *image, {255, 128, 0, 255});
    image->SetSelection(&s);
    Events e;
    image->AddListener(&e);
    ASSERT_TRUE(Clear(*image, Teal));
    EXPECT_EQ(e.names, (QStringList{"start 清除", "end 清除"}));
    for (int y = 0; y < 3; ++y) {
        const uint8_t* p = image->Row(y);
        const uint8_t* o = original->Row(y);
        EXPECT_EQ(p[0], 150);
        EXPECT_EQ(p[1], 200);
        EXPECT_EQ(p[2], 10);
        // Half weight: the byte moves by trunc((n - v) * 128 / 255).
        for (int c = 0; c < 3; ++c) {
            const int target = c == 0 ? 150 : c == 1 ? 200 : 10;
            EXPECT_EQ(p[3 + c], o[3 + c] + (target - o[3 + c]) * 128 / 255);
        }
        EXPECT_EQ(p[6], o[6]);
        EXPECT_EQ(p[7], o[7]);
        EXPECT_EQ(p[8], o[8]);
        EXPECT_EQ(p[9], 150);
    }
}

TEST(EditOps, ClearMakesRgbaPixelsTransparentAndKeepsTheirColour) {
    auto image = vmtest::RandomImage(3, 2, 32, 7);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            image->Row(y)[4 * x + 3] = 200;
    auto original = image->CloneImage();
    CSelection s;
    WeightColumns(s, *image, {255, 51, 0});
    image->SetSelection(&s);
    ASSERT_TRUE(Clear(*image, Teal));
    for (int y = 0; y < 2; ++y) {
        const uint8_t* p = image->Row(y);
        const uint8_t* o = original->Row(y);
        EXPECT_EQ(p[3], 0);
        EXPECT_EQ(p[7], 200 - 200 * 51 / 255);
        EXPECT_EQ(p[11], 200);
        for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
            EXPECT_EQ(p[i], o[i]) << "colour byte " << i;
    }
}

TEST(EditOps, GreyPicturesTakeTheGreyOfTheColour) {
    CImage image;
    image.CreateNewImage(5, 2, 8);
    image.FillSolidColor(40);
    ASSERT_EQ(image.PixelFormat, PixelFormat8bppGray);
    ASSERT_TRUE(Clear(image, Teal));
    EXPECT_EQ(GreyOfColor(Teal), 120);
    EXPECT_EQ(image.Row(1)[4], 120);
}

TEST(EditOps, FillMovesByTheOpacity) {
    auto image = vmtest::RandomImage(2, 2, 32, 9);
    image->Row(0)[0] = 0;   // blue
    image->Row(0)[1] = 100; // green
    image->Row(0)[2] = 255; // red
    image->Row(0)[3] = 50;  // alpha
    ASSERT_TRUE(FillWithColor(*image, Teal, 40));
    const uint8_t* p = image->Row(0);
    EXPECT_EQ(p[0], 60);
    EXPECT_EQ(p[1], 140);
    EXPECT_EQ(p[2], 157); // 255 - 98: the step is truncated toward zero
    EXPECT_EQ(p[3], 132);
    // Full opacity gives the colour itself and an opaque pixel.
    ASSERT_TRUE(FillWithColor(*image, Teal, 100));
    EXPECT_EQ(image->Row(1)[4], 150);
    EXPECT_EQ(image->Row(1)[7], 255);
    // Out-of-range opacities are held to 1..100.
    ASSERT_TRUE(FillWithColor(*image, 0, 1000));
    EXPECT_EQ(image->Row(1)[5], 0);
}

TEST(EditOps, AnEmptySelectionIsRefusedWithTheCommandsName) {
    auto image = vmtest::RandomImage(4, 4, 24, 3);
    auto original = image->CloneImage();
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
    ASSERT_EQ(recorder.Requests.size(), 2);
    EXPECT_EQ(recorder.Requests[0].Text, QStringLiteral("不能完成\"\"清除\"\"命令,因为所选区域是空的."));
    EXPECT_EQ(recorder.Requests[1].Text, QStringLiteral("不能完成\"\"填充\"\"命令,因为所选区域是空的."));
    EXPECT_TRUE(e.names.isEmpty());
    EXPECT_EQ(memcmp(image->Pointer(), original->Pointer(), image->BlockSize()), 0);
}

TEST(EditOps, PaletteAndSixteenBitPicturesPassUnchanged) {
    for (int bits : {1, 4, 16}) {
        auto image = vmtest::RandomImage(6, 3, bits, 2);
        auto original = image->CloneImage();
        Events e;
        image->AddListener(&e);
        EXPECT_TRUE(Clear(*image, Teal)) << bits;
        EXPECT_EQ(e.names.size(), 2) << bits;
        EXPECT_EQ(memcmp(image->Pointer(), original->Pointer(), image->BlockSize()), 0) << bits;
    }
}
