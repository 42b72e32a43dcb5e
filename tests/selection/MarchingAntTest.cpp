// The outline of a selection: its brushes and their stutter, the outline
// region, zooming without gaps, and painting.
#include "selection/MarchingAnt.h"
#include "selection/Selection.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace vm;

TEST(MarchingAnt, BrushPhasesStutterAndTurnRound) {
    CMarchingAnt ants;
    ants.Init(10, 10, 1);
    using P = CMarchingAnt::Pattern;
    EXPECT_EQ(ants.BrushPattern(0), P({240, 120, 60, 30, 15, 135, 195, 225}));
    // Row 7 of phase 1 is the table's row 1 again, not row 0.
    EXPECT_EQ(ants.BrushPattern(1), P({120, 60, 30, 15, 135, 195, 225, 120}));
    EXPECT_EQ(ants.BrushPattern(3), P({30, 15, 135, 195, 225, 120, 60, 30}));
    ants.Init(10, 10, 0);
    EXPECT_EQ(ants.BrushPattern(0), P({225, 195, 135, 15, 30, 60, 120, 240}));
    // Directions 2 and 3 march the other way: phase 1 sits in slot 7.
    CMarchingAnt forward, backward;
    forward.Init(10, 10, 1);
    backward.Init(10, 10, 2);
    EXPECT_EQ(backward.BrushPattern(7), forward.BrushPattern(1));
    EXPECT_EQ(backward.BrushPattern(0), forward.BrushPattern(0));

    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(ants.Phase(), i);
        ants.RotateBrush();
    }
    EXPECT_EQ(ants.Phase(), 0);
}

TEST(MarchingAnt, OutlineIsTheInnerRingClippedToTheCanvas) {
    const QRegion ring = CMarchingAnt::OutlineRegion(QRegion(2, 2, 5, 4));
    EXPECT_EQ(ring, QRegion(2, 2, 5, 4).subtracted(QRegion(3, 3, 3, 2)));
    // An L shape: the inner corner is outline too, through its diagonal.
    const QRegion l = QRegion(0, 0, 3, 6).united(QRegion(0, 3, 6, 3));
    const QRegion outline = CMarchingAnt::OutlineRegion(l);
    EXPECT_TRUE(outline.contains(QPoint(2, 3)));
    EXPECT_FALSE(outline.contains(QPoint(1, 4)));

    CMarchingAnt ants;
    ants.Init(8, 8);
    ants.SetMarchingAntRegion(QRegion(4, 4, 10, 10));
    EXPECT_EQ(ants.GetMarchingAntRegion(), CMarchingAnt::OutlineRegion(QRegion(4, 4, 4, 4)));
    ants.SetScaleFactor(2);
    ants.Offset(10, 20);
    ants.SetMarchingAntRegion(QRegion(1, 1, 1, 1));
    EXPECT_EQ(ants.GetMarchingAntRegion(), QRegion(12, 22, 2, 2));
}

TEST(MarchingAnt, ZoomLeavesNoGapsAtFractionalScales) {
    CSelection s;
    s.CreateNewSelection(120, 90);
    s.AddEllipse(3, 5, 117, 88);
    const QRegion disc = s.Region();
    ASSERT_GT(disc.rectCount(), 20);
    for (double zoom : {0.0833, 0.37, 0.67, 1.63, 2.5}) {
        const QRegion z = CMarchingAnt::ZoomRegion(disc, zoom, zoom, 7, -3);
        // A convex shape stays one span a row, and every source pixel's scaled
        // centre is covered.
        const QRect box = z.boundingRect();
        for (int y = box.top(); y <= box.bottom(); ++y)
            EXPECT_LE(z.intersected(QRect(box.left(), y, box.width(), 1)).rectCount(), 1)
                << zoom << " row " << y;
        for (const QRect& r : disc)
            for (int y = r.top(); y <= r.bottom(); ++y)
                for (int x = r.left(); x <= r.right(); ++x)
                    ASSERT_TRUE(z.contains(QPoint(int((x + 0.5) * zoom) + 7, int((y + 0.5) * zoom) - 3)))
                        << zoom;
    }
    EXPECT_TRUE(CMarchingAnt::ZoomRegion(disc, 0, 1, 0, 0).isEmpty());
}

TEST(MarchingAnt, DefaultSelectionHasNoOutlineAndPaintingFollowsThePattern) {
    CSelection s;
    s.CreateNewSelection(20, 20);
    s.SetUseDefaultSetting(true);
    CMarchingAnt ants;
    ants.Init(20, 20, 1);
    ants.SetMarchingAntRegion(s);
    EXPECT_TRUE(ants.IsEmptyRgn());
    s.AddRectangle(2, 2, 18, 18);
    ants.SetMarchingAntRegion(s);
    EXPECT_FALSE(ants.IsEmptyRgn());

    ants.RotateBrush();
    QImage view(30, 30, QImage::Format_RGB32);
    view.fill(Qt::gray);
    {
        QPainter p(&view);
        ants.PaintToDC(p, 5, 5, false, Qt::red, Qt::blue);
    }
    const CMarchingAnt::Pattern& pattern = ants.BrushPattern(1);
    const QRegion painted = ants.GetMarchingAntRegion().translated(5, 5);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x) {
            const QColor c = view.pixelColor(x, y);
            if (!painted.contains(QPoint(x, y))) {
                EXPECT_EQ(c, QColor(Qt::gray));
                continue;
            }
            const bool set = (pattern[y & 7] >> (7 - (x & 7))) & 1;
            EXPECT_EQ(c, set ? QColor(Qt::red) : QColor(Qt::blue)) << x << "," << y;
        }
    ants.Visible = false;
    QImage untouched(30, 30, QImage::Format_RGB32);
    untouched.fill(Qt::gray);
    {
        QPainter p(&untouched);
        ants.PaintToDC(p, 0, 0, false, Qt::red, Qt::blue);
    }
    EXPECT_EQ(untouched.pixelColor(2, 2), QColor(Qt::gray));
}
