// The paint bucket: the refusals, the click outside a made selection, the
// region it floods, and the selection it leaves exactly as it found it.
#include "core/PaintBucket.h"
#include "core/BlendModes.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "selection/Selection.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

using namespace vm;

namespace {

struct Recorder : IImageListener, ISelectionListener {
    QStringList events;
    void ProgressStart(bool, const QString& name, int) override { events << "start " + name; }
    void ProgressEnd(bool, const QString& name, int, const QString&) override { events << "end " + name; }
    void BeforeSelectionChanged(bool) override { events << "before selection"; }
    void SelectionChanged(bool) override { events << "selection"; }
};

using Colour = std::array<int, 3>;
const Colour White{255, 255, 255}, Red{255, 0, 0}, Pink{255, 20, 20}, GreenRgb{0, 255, 0};

// 12 x 8 white RGB picture with two red squares (2..4, 2..4) and (8..10, 2..4)
// and a pink one (2..4, 6..7) that a tolerance of 32 takes for red, with a
// selection of its size attached.
struct Scene {
    std::unique_ptr<CImage> image = std::make_unique<CImage>();
    CSelection s;
    Scene() {
        image->CreateNewImage(12, 8, 24);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 12; ++x) {
                uint8_t* p = image->Row(y) + 3 * x;
                const bool red = y >= 2 && y <= 4 && ((x >= 2 && x <= 4) || (x >= 8 && x <= 10));
                const bool pink = y >= 6 && x >= 2 && x <= 4;
                p[0] = p[1] = red ? 0 : pink ? 20 : 255;
                p[2] = 255;
            }
        s.CreateNewSelection(12, 8);
        image->SetSelection(&s);
    }
    Colour At(int x, int y) const {
        const uint8_t* p = image->Row(y) + 3 * x;
        return {p[2], p[1], p[0]};
    }
};

struct SelectionState {
    std::vector<uint8_t> bytes;
    int32_t left, top;
    bool useDefault;
    QRegion region;
    std::vector<DealRect> rects;
    explicit SelectionState(const CSelection& s, const CImage& image)
        : bytes(s.Pointer(), s.Pointer() + s.BufferSize()), left(s.Left), top(s.Top),
          useDefault(s.UseDefaultSetting()), region(s.Region()), rects(image.SelectionDealRects()) {}
    bool operator==(const SelectionState&) const = default;
};

const int32_t Green = MakeColorRef(0, 255, 0);

} // namespace

TEST(PaintBucket, RefusesBitmapAndIndexedPicturesWithTheirMessages) {
    const QString bitmap =
        QStringLiteral("不能使用油漆桶工具,因为他不用于位图图像(将图像转换为灰度模式再编辑).");
    const QString indexed =
        QStringLiteral("不能使用油漆桶工具,因为他不用于索引颜色图像(将图像转换为RGB颜色模式再编辑).");
    for (int bits : {1, 4, 8}) {
        auto image = vmtest::RandomImage(6, 5, bits, 13);
        auto before = image->CloneImage();
        const PaletteData palette = image->Palette();
        CSelection s;
        s.CreateNewSelection(6, 5);
        image->SetSelection(&s);
        Recorder r;
        image->AddListener(&r);
        s.AddListener(&r);
        MessageRecorder messages;
        EXPECT_FALSE(PaintBucketAt(*image, s, 1, 1, BucketOptions{}));
        ASSERT_EQ(messages.Requests.size(), 1) << bits;
        EXPECT_EQ(messages.LastText(), bits == 1 ? bitmap : indexed);
        EXPECT_TRUE(r.events.isEmpty());
        EXPECT_EQ(memcmp(image->Pointer(), before->Pointer(), image->BlockSize()), 0);
        EXPECT_EQ(memcmp(&image->Palette(), &palette, sizeof palette), 0);
    }
}

TEST(PaintBucket, ContiguousFillsTheClickedRegionOnlyAndOthersEverySimilarPixel) {
    Scene sc;
    Recorder r;
    sc.image->AddListener(&r);
    BucketOptions o;
    o.Color = Green;
    EXPECT_TRUE(PaintBucketAt(*sc.image, sc.s, 3, 3, o));
    EXPECT_EQ(r.events, (QStringList{"start 填充", "end 填充"}));
    EXPECT_EQ(sc.At(2, 2), GreenRgb);
    EXPECT_EQ(sc.At(4, 4), GreenRgb);
    EXPECT_EQ(sc.At(9, 3), Red) << "the other square is not connected";
    EXPECT_EQ(sc.At(3, 6), Pink);
    EXPECT_EQ(sc.At(0, 0), White);

    o.Contiguous = false;
    o.Color = MakeColorRef(0, 0, 255);
    EXPECT_TRUE(PaintBucketAt(*sc.image, sc.s, 9, 3, o));
    EXPECT_EQ(sc.At(10, 4), (Colour{0, 0, 255}));
    EXPECT_EQ(sc.At(2, 7), (Colour{0, 0, 255})) << "pink is within the tolerance";
    EXPECT_EQ(sc.At(3, 3), GreenRgb) << "green is not";
    EXPECT_EQ(sc.At(11, 7), White);
}

TEST(PaintBucket, AMadeSelectionLimitsTheFillAndStaysExactlyAsItWas) {
    Scene sc;
    CSelection& s = sc.s;
    s.FeatherRadius = 0;
    s.AddRectangle(0, 0, 4, 8); // columns 0..3
    s.Row(3)[1] = 100;          // a partial weight, off the square
    s.Row(2)[3] = 128;          // and one on it
    s.UpdateSelectionRegion();
    sc.image->UpdateSelectionDealRect();
    const SelectionState before(s, *sc.image);
    Recorder r;
    sc.image->AddListener(&r);
    s.AddListener(&r);
    BucketOptions o;
    o.Color = Green;
    o.Tolerance = 0;

    // Outside the made selection: nothing at all, not even a message.
    auto original = sc.image->CloneImage();
    MessageRecorder messages;
    EXPECT_FALSE(PaintBucketAt(*sc.image, s, 9, 3, o));
    EXPECT_TRUE(messages.Requests.isEmpty());
    EXPECT_TRUE(r.events.isEmpty());
    EXPECT_EQ(memcmp(sc.image->Pointer(), original->Pointer(), sc.image->BlockSize()), 0);

    ASSERT_TRUE(PaintBucketAt(*sc.image, s, 2, 3, o));
    EXPECT_EQ(r.events, (QStringList{"start 填充", "end 填充"})) << "no selection event";
    EXPECT_EQ(sc.At(2, 4), GreenRgb);
    EXPECT_EQ(sc.At(3, 3), GreenRgb);
    EXPECT_EQ(sc.At(4, 3), Red) << "beyond the selection";
    EXPECT_EQ(sc.At(3, 2), (Colour{127, 128, 0})) << "half weight moves half way";
    EXPECT_EQ(sc.At(1, 3), White) << "white is not the clicked colour";
    EXPECT_EQ(SelectionState(s, *sc.image), before);
    EXPECT_EQ(sc.image->Selection(), &s);
}

TEST(PaintBucket, ADefaultSelectionAndAMovedOneComeBackUntouched) {
    Scene sc;
    CSelection& s = sc.s;
    const SelectionState whole(s, *sc.image);
    BucketOptions o;
    o.BlendMode = BlendMultiply;
    o.Color = MakeColorRef(128, 128, 128);
    ASSERT_TRUE(PaintBucketAt(*sc.image, s, 0, 0, o));
    EXPECT_EQ(sc.At(11, 7), (Colour{128, 128, 128}));
    EXPECT_EQ(sc.At(3, 3), Red);
    EXPECT_EQ(SelectionState(s, *sc.image), whole);

    // A selection dragged two columns right: the click is tested against the
    // moved mask, and the mask keeps its offset.
    s.AddRectangle(0, 0, 3, 8);
    s.Left = 2;
    sc.image->UpdateSelectionDealRect();
    const SelectionState moved(s, *sc.image);
    o.BlendMode = BlendDissolve;
    o.Color = Green;
    EXPECT_FALSE(PaintBucketAt(*sc.image, s, 1, 3, o));
    ASSERT_TRUE(PaintBucketAt(*sc.image, s, 3, 3, o));
    EXPECT_EQ(sc.At(2, 2), GreenRgb);
    EXPECT_EQ(sc.At(4, 3), GreenRgb);
    EXPECT_EQ(sc.At(5, 3), (Colour{128, 128, 128}))
        << "white turned grey by the first click, outside the square";
    EXPECT_EQ(SelectionState(s, *sc.image), moved);
}

TEST(PaintBucket, PatternsAreLaidOnWhiteAndOpacityIsAPercentage) {
    Scene sc;
    QImage pattern(2, 1, QImage::Format_ARGB32);
    pattern.setPixel(0, 0, qRgba(0, 0, 255, 255));
    pattern.setPixel(1, 0, qRgba(0, 0, 0, 0)); // transparent: white
    BucketOptions o;
    o.FillContent = 1;
    o.Pattern = &pattern;
    o.Tolerance = 0;
    ASSERT_TRUE(PaintBucketAt(*sc.image, sc.s, 3, 3, o));
    EXPECT_EQ(sc.At(2, 3), (Colour{0, 0, 255}));
    EXPECT_EQ(sc.At(3, 3), White);
    EXPECT_EQ(sc.At(4, 2), (Colour{0, 0, 255}));

    // No pattern to lay: nothing happens.
    o.Pattern = nullptr;
    EXPECT_FALSE(PaintBucketAt(*sc.image, sc.s, 9, 3, o));
    EXPECT_EQ(sc.At(9, 3), Red);

    // 70 percent is 178 of 255 (a scale of 256 would give 179).
    o.FillContent = 0;
    o.BlendMode = BlendLinearDodge;
    o.Color = MakeColorRef(0, 200, 0);
    o.OpacityPercent = 70;
    ASSERT_TRUE(PaintBucketAt(*sc.image, sc.s, 9, 3, o));
    EXPECT_EQ(sc.At(9, 3), (Colour{255, 200 * 178 / 255, 0}));
    // A click beside the picture does nothing.
    EXPECT_FALSE(PaintBucketAt(*sc.image, sc.s, -1, 3, o));
    EXPECT_FALSE(PaintBucketAt(*sc.image, sc.s, 12, 0, o));
}
