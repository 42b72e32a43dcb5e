// The magic wand's difference rules, its soft rim and how it spreads, and
// "select similar".
#include "MaskReference.h"

#include "core/Image.h"
#include "core/MessageBox.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

std::unique_ptr<CImage> GreyRow(const std::vector<int>& values) {
    auto img = std::make_unique<CImage>();
    img->CreateNewImage(static_cast<int>(values.size()), 1, 8);
    for (size_t i = 0; i < values.size(); ++i)
        img->Row(0)[i] = static_cast<uint8_t>(values[i]);
    return img;
}

Pixels Wand(const CImage& img, int x, int y, int tolerance, bool contiguous, bool aa = true) {
    MessageRecorder quiet;
    CSelection s;
    s.CreateNewSelection(img.Width(), img.Height());
    s.SetAntiAlias(aa);
    s.AddMagicWnd(img, x, y, tolerance, contiguous, false);
    return s.UseDefaultSetting() ? Pixels() : Snapshot(s);
}

} // namespace

TEST(MagicWand, SoftRimBandLimitAndHardEdges) {
    // Seed 100, tolerance 10: the band runs to 1.5 x 10 = 15, exclusive.
    std::vector<int> row;
    for (int d = 0; d <= 16; ++d)
        row.push_back(100 + d);
    EXPECT_EQ(Wand(*GreyRow(row), 0, 0, 10, true),
              Pixels({255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 205, 154, 103, 52, 0, 0}));
    // The rim carries the flood on; a pixel outside the band stops it.
    EXPECT_EQ(Wand(*GreyRow({100, 112, 100, 130, 100}), 0, 0, 10, true), Pixels({255, 154, 255, 0, 0}));
    EXPECT_EQ(Wand(*GreyRow({100, 112, 100, 130, 100}), 0, 0, 10, false), Pixels({255, 154, 255, 0, 255}));
    // The band's limit rounds half to even: 1.5 x 3 = 4.5 becomes 4, so a
    // difference of 4 is already out; 1.5 x 5 = 7.5 becomes 8, so 7 is the
    // last rim value, 768 - 716 = 52.
    EXPECT_EQ(Wand(*GreyRow({50, 53, 54}), 0, 0, 3, true), Pixels({255, 255, 0}));
    EXPECT_EQ(Wand(*GreyRow({50, 56, 57, 58}), 0, 0, 5, true), Pixels({255, 154, 52, 0}));
    // No rim without anti-aliasing or without tolerance.
    EXPECT_EQ(Wand(*GreyRow({50, 50, 51, 50}), 0, 0, 0, false, true), Pixels({255, 255, 0, 255}));
    EXPECT_EQ(Wand(*GreyRow({50, 60, 61, 50}), 0, 0, 10, true, false), Pixels({255, 255, 0, 0}));
}

TEST(MagicWand, ColourDifferenceIsTheRangeWithZeroForcedIn) {
    CImage img;
    img.CreateNewImage(3, 1, 24);
    // The second pixel has one channel up and one down: D = 20; the third two
    // up by 10: D = 10.
    const uint8_t px[] = {100, 100, 100, 90, 110, 100, 110, 110, 100};
    std::memcpy(img.Row(0), px, sizeof px);
    EXPECT_EQ(Wand(img, 0, 0, 15, false, false), Pixels({255, 0, 255}));
}

TEST(MagicWand, TransparencyRulesOfThirtyTwoBitImages) {
    CImage img;
    img.CreateNewImage(5, 1, 32);
    // Pixels as B, G, R, A.
    const uint8_t px[] = {10, 10, 10, 0, 200, 30, 90, 0, 1, 2, 3, 20, 9, 9, 9, 200, 10, 10, 10, 0};
    std::memcpy(img.Row(0), px, sizeof px);
    // A transparent seed takes every transparent pixel whatever its colour and
    // the others by their alpha.
    EXPECT_EQ(Wand(img, 0, 0, 32, false, false), Pixels({255, 255, 255, 0, 255}));
    EXPECT_EQ(Wand(img, 0, 0, 32, true, false), Pixels({255, 255, 255, 0, 0}));
    // An opaque seed never takes a transparent pixel, and cannot pass one.
    img.Row(0)[3] = 255;
    img.Row(0)[19] = 255;
    img.Row(0)[7] = 0;
    EXPECT_EQ(Wand(img, 0, 0, 40, true, false), Pixels({255, 0, 0, 0, 0}));
    EXPECT_EQ(Wand(img, 0, 0, 40, false, false), Pixels({255, 0, 255, 255, 255}));
}

TEST(MagicWand, IndexedImagesAreRefusedWithoutAnEvent) {
    MessageRecorder messages;
    CImage img;
    img.CreateNewImage(4, 4, 8);
    img.PixelFormat = PixelFormat8bppIndexed;
    CSelection s;
    s.CreateNewSelection(4, 4);
    s.AddRectangle(1, 1, 3, 3);
    EventLog log;
    s.AddListener(&log);
    EXPECT_FALSE(s.AddMagicWnd(img, 0, 0, 10, true, true));
    EXPECT_TRUE(log.Events.isEmpty());
    EXPECT_EQ(messages.LastText(), QStringLiteral("暂时不支持该模式下的魔术棒工具."));
    EXPECT_EQ(s.GetSelectedPixelCount(), 4);
}

TEST(MagicWand, SeedOutsideTheImageChangesNothingButTheEventsFire) {
    auto img = GreyRow({1, 2, 3, 4});
    CSelection s;
    s.CreateNewSelection(4, 1);
    s.AddRectangle(1, 0, 3, 1);
    EventLog log;
    s.AddListener(&log);
    for (int mode : {0, 1, 2, 3}) {
        s.SelectionMode = mode;
        s.AddMagicWnd(*img, 9, 0, 10, true, true);
        s.AddMagicWnd(*img, 0, -1, 10, true, true);
    }
    EXPECT_EQ(Snapshot(s), Pixels({0, 255, 255, 0}));
    EXPECT_EQ(log.Events.size(), 16);
    EXPECT_EQ(log.Events.mid(0, 2), QStringList({"B0", "C0"}));
}

TEST(MagicWand, CombinesLikeTheShapesAndFloodsPastSixteenBitCoordinates) {
    auto img = GreyRow({10, 10, 90, 90, 10, 10});
    CSelection s;
    s.CreateNewSelection(6, 1);
    s.SelectAll();
    s.SelectionMode = SelectionModeSubtract;
    s.AddMagicWnd(*img, 2, 0, 5, true, true);
    EXPECT_EQ(Snapshot(s), Pixels({255, 255, 0, 0, 255, 255}));

    CImage wide;
    wide.CreateNewImage(40000, 2, 8);
    wide.Row(1)[39999] = 200;
    CSelection big;
    big.CreateNewSelection(40000, 2);
    big.AddMagicWnd(wide, 0, 0, 0, true, true);
    EXPECT_EQ(big.GetSelectedPixelCount(), 79999);
    EXPECT_EQ(big.Row(1)[39998], 255);
}

TEST(SelectedSimilar, SelectsByTheRoundedMeanOfTheSelection) {
    CImage img;
    img.CreateNewImage(4, 1, 24);
    // Two selected pixels of 10 and 11: the mean 10.5 rounds to 10.
    const uint8_t px[] = {10, 10, 10, 11, 11, 11, 10, 10, 10, 200, 10, 10};
    std::memcpy(img.Row(0), px, sizeof px);
    CSelection s;
    s.CreateNewSelection(4, 1);
    s.AddRectangle(0, 0, 2, 1);
    EventLog log;
    s.AddListener(&log);
    ASSERT_TRUE(s.SelectedSimilar(img, 0));
    EXPECT_EQ(Snapshot(s), Pixels({255, 0, 255, 0}));
    EXPECT_EQ(log.Events, QStringList({"B0", "C0"}));
    s.SelectedSimilar(img, 1);
    EXPECT_EQ(Snapshot(s), Pixels({255, 255, 255, 0}));
}
