// The selection's housekeeping and queries: empty and faint masks, moved
// masks, bounds, regions, clones, and masks taken from elsewhere.
#include "MaskReference.h"

#include "core/Image.h"
#include "core/MessageBox.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

TEST(CheckSeletion, EmptyTurnsOffAndFaintWarnsWhateverTheCaller) {
    MessageRecorder messages;
    CSelection s;
    Put(s, 4, 4, Pixels(16, 126));
    EXPECT_TRUE(s.CheckSeletion(false));
    ASSERT_EQ(messages.Requests.size(), 1);
    EXPECT_EQ(messages.LastText(), QStringLiteral("警告，任何像素都不大于50%选择，选区边缘将不可见。"));
    EXPECT_EQ(Snapshot(s), Pixels(16, 126));
    EXPECT_FALSE(s.UseDefaultSetting());

    s.Row(3)[3] = 127;
    EXPECT_TRUE(s.CheckSeletion(true));
    EXPECT_EQ(messages.Requests.size(), 1);

    // Padding bytes do not count as selected.
    Put(s, 3, 2, Pixels(6, 0));
    s.Row(0)[3] = 255;
    s.Left = 2;
    EXPECT_FALSE(s.CheckSeletion(false));
    EXPECT_EQ(messages.Requests.size(), 1);
    EXPECT_TRUE(s.UseDefaultSetting());
    EXPECT_FALSE(s.Visible);
    EXPECT_EQ(s.Left, 0);
    EXPECT_EQ(Snapshot(s), Pixels(6, 255));
}

TEST(ResetSelectionPosoition, AMovedMaskLosesTheLastColumnAndRow) {
    CSelection s;
    s.CreateNewSelection(6, 5);
    s.SelectAll();
    s.Left = -1;
    s.SelectionMode = SelectionModeAdd;
    s.AddRectangle(0, 0, 1, 1);
    EXPECT_EQ(s.Left, 0);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(s.Row(y)[x], (x < 4 && y < 4) ? 255 : 0) << x << "," << y;

    // Down and right by two: the copy overlaps itself.
    Pixels p(36);
    for (int i = 0; i < 36; ++i)
        p[i] = static_cast<uint8_t>(i + 1);
    Put(s, 6, 6, p);
    s.Left = 2;
    s.Top = 2;
    s.ResetSelectionPosoition();
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(s.Row(y)[x], (x >= 2 && x < 5 && y >= 2 && y < 5) ? p[(y - 2) * 6 + x - 2] : 0);
}

TEST(GetSelectionBound, DefaultIsExclusiveAndRealIsInclusive) {
    CSelection s;
    auto bound = [&](int threshold) {
        int l, t, r, b;
        s.GetSelectionBound(l, t, r, b, threshold);
        return QList<int>({l, t, r, b});
    };
    s.CreateNewSelection(10, 8);
    s.SetUseDefaultSetting(true);
    EXPECT_EQ(bound(0), QList<int>({0, 0, 10, 8}));
    s.SelectAll();
    EXPECT_EQ(bound(0), QList<int>({0, 0, 9, 7}));
    Pixels p(80, 0);
    p[2 * 10 + 7] = 100;
    p[5 * 10 + 3] = 200;
    p[6 * 10 + 8] = 151;
    Put(s, 10, 8, p);
    EXPECT_EQ(bound(0), QList<int>({3, 2, 8, 6}));
    EXPECT_EQ(bound(150), QList<int>({3, 5, 8, 6}));
    EXPECT_EQ(bound(200), QList<int>({10, 8, -1, -1}));
}

TEST(SelectionQueries, PointsCountsAndTheCanvasWithAnOffset) {
    CSelection s;
    s.CreateNewSelection(10, 10);
    EXPECT_FALSE(s.IsPtInSelection(3, 3));
    EXPECT_EQ(s.GetSelectedPixelCount(), 100);
    EXPECT_FALSE(s.IsSelectionValidToCanvas());
    s.AddRectangle(0, 0, 2, 2);
    s.Row(1)[1] = 40;
    EXPECT_EQ(s.GetSelectedPixelCount(), 4);
    s.Left = 5;
    s.Top = 5;
    EXPECT_TRUE(s.IsPtInSelection(5, 5));
    EXPECT_TRUE(s.IsPtInSelection(6, 6));
    EXPECT_FALSE(s.IsPtInSelection(6, 6, 40));
    EXPECT_FALSE(s.IsPtInSelection(4, 5));
    EXPECT_TRUE(s.IsSelectionValidToCanvas());
    s.Left = -1; // the two selected columns: one still on the canvas
    EXPECT_TRUE(s.IsSelectionValidToCanvas());
    s.Left = -2;
    EXPECT_FALSE(s.IsSelectionValidToCanvas());
    s.Left = 10;
    EXPECT_FALSE(s.IsSelectionValidToCanvas());
}

TEST(SelectionToRegion, CoversExactlyThePixelsAboveTheThreshold) {
    for (unsigned seed : {1u, 2u, 3u}) {
        const Pixels p = RandomMask(29, 19, seed, true);
        CSelection s;
        Put(s, 29, 19, p);
        for (int threshold : {0, 127}) {
            const QRegion region = s.SelectionToRegion(threshold);
            EXPECT_TRUE(QRect(0, 0, 29, 19).contains(region.boundingRect()));
            for (int y = 0; y < 19; ++y)
                for (int x = 0; x < 29; ++x)
                    EXPECT_EQ(region.contains(QPoint(x, y)), p[y * 29 + x] > threshold) << x << "," << y;
        }
    }
    CSelection s;
    s.CreateNewSelection(50, 40);
    s.AddRectangle(5, 5, 45, 35);
    EXPECT_EQ(s.Region().rectCount(), 1);
    s.SetUseDefaultSetting(true);
    EXPECT_EQ(s.SelectionToRegion(0), QRegion(0, 0, 49, 39));
}

TEST(SelectionCopies, ClonesAndLoadsFromAnotherSelection) {
    MessageRecorder quiet;
    CSelection s;
    Put(s, 6, 4, RandomMask(6, 4, 11, true));
    s.Left = 3;
    s.Visible = false;
    auto clone = s.CloneSelection();
    EXPECT_EQ(Snapshot(*clone), Snapshot(s));
    EXPECT_EQ(clone->Left, 3);
    EXPECT_FALSE(clone->Visible);
    EXPECT_FALSE(clone->UseDefaultSetting());

    CSelection target, other;
    target.CreateNewSelection(6, 4);
    target.AddRectangle(0, 0, 1, 1);
    EXPECT_TRUE(s.CloneToSelection(target));
    EXPECT_EQ(Snapshot(target), Snapshot(s));
    s.SetUseDefaultSetting(true);
    EXPECT_TRUE(s.CloneToSelection(target));
    EXPECT_TRUE(target.UseDefaultSetting());
    EXPECT_EQ(Snapshot(target), Pixels(24, 255));
    other.CreateNewSelection(5, 4);
    EXPECT_FALSE(s.CloneToSelection(other));

    // Combining with another mask raises only the second event.
    const Pixels a = RandomMask(6, 4, 12, false), b = RandomMask(6, 4, 13, false);
    Put(s, 6, 4, a);
    Put(other, 6, 4, b);
    EventLog log;
    s.AddListener(&log);
    s.LoadSeletionFromSelection(other, SelectionModeIntersect);
    Pixels expected(24);
    for (int i = 0; i < 24; ++i)
        expected[i] = std::min(a[i], b[i]);
    EXPECT_EQ(s.UseDefaultSetting() ? Pixels(24, 0) : Snapshot(s), expected);
    EXPECT_EQ(log.Events, QStringList({"C0"}));
    s.RemoveListener(&log);
}

TEST(SelectionCopies, BucketLimitAndAlphaChannel) {
    CSelection s, bucket;
    Put(bucket, 4, 1, {0, 9, 0, 9});
    s.CreateNewSelection(2, 2);
    EventLog log;
    s.AddListener(&log);
    EXPECT_TRUE(s.PaintBucketSelection(bucket)); // default: takes the bucket's mask and size
    EXPECT_EQ(s.Width(), 4);
    EXPECT_EQ(Snapshot(s), Pixels({0, 9, 0, 9}));
    Put(s, 4, 1, {5, 5, 5, 0});
    s.PaintBucketSelection(bucket);
    EXPECT_EQ(Snapshot(s), Pixels({0, 5, 0, 0}));
    EXPECT_TRUE(log.Events.isEmpty());

    CImage rgba;
    rgba.CreateNewImage(4, 1, 32);
    for (int x = 0; x < 4; ++x)
        rgba.Row(0)[4 * x + 3] = static_cast<uint8_t>(60 * x);
    s.GetSelectionFromAlphaChannel(rgba);
    EXPECT_EQ(Snapshot(s), Pixels({0, 60, 120, 180}));
    CImage rgb;
    rgb.CreateNewImage(4, 1, 24);
    s.GetSelectionFromAlphaChannel(rgb);
    EXPECT_EQ(Snapshot(s), Pixels(4, 255));
    EXPECT_FALSE(s.UseDefaultSetting());
    EXPECT_EQ(log.Events, QStringList({"B0", "C0", "B0", "C0"}));
}

TEST(WholeMask, InvertingEverythingLeavesNothing) {
    MessageRecorder messages;
    CSelection s;
    s.CreateNewSelection(5, 3);
    s.AddRectangle(1, 1, 4, 2);
    s.InvertSelect();
    EXPECT_EQ(Snapshot(s), Pixels({255, 255, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255, 255}));
    s.SelectAll();
    s.InvertSelect();
    EXPECT_TRUE(s.UseDefaultSetting());
    EXPECT_EQ(messages.Requests.size(), 1);
}

TEST(SelectionRender, StretchesAndMirrorsOnlyByHeight) {
    CSelection s;
    Put(s, 2, 2, {10, 20, 30, 40});
    QImage out(4, 2, QImage::Format_Grayscale8);
    out.fill(0);
    {
        QPainter p(&out);
        s.Render(p, 0, 0, 4, 2);
    }
    EXPECT_EQ(out.pixelColor(1, 0).red(), 10);
    EXPECT_EQ(out.pixelColor(2, 1).red(), 40);
    {
        // A negative source height turns the picture upside down; a negative
        // source width only means "the whole width".
        QPainter p(&out);
        s.Render(p, 0, 2, 2, 2, 0, 0, -2, -2);
    }
    EXPECT_EQ(out.pixelColor(0, 0).red(), 30);
    EXPECT_EQ(out.pixelColor(1, 1).red(), 20);
}
