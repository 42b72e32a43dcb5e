// The shape frame: rasterised shapes against independent geometry, the four
// combine modes with and without feather, the default state, and the events.
#include "MaskReference.h"

#include "core/MessageBox.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vm;
using namespace vmtest;

namespace {

Pixels RectPixels(int w, int h, int l, int t, int r, int b) {
    Pixels p(static_cast<size_t>(w) * h, 0);
    for (int y = std::max(t, 0); y < std::min(b, h); ++y)
        for (int x = std::max(l, 0); x < std::min(r, w); ++x)
            p[y * w + x] = 255;
    return p;
}

Pixels Combine(const Pixels& a, const Pixels& b, int mode) {
    Pixels out(a.size());
    for (size_t i = 0; i < a.size(); ++i)
        out[i] = mode == 1   ? std::max(a[i], b[i])
                 : mode == 2 ? std::max(0, a[i] - b[i])
                             : std::min(a[i], b[i]);
    return out;
}

} // namespace

TEST(Shapes, EllipseAgreesWithTheAnalyticEllipse) {
    // Inscribed in (3, 4)-(63, 44): centre (33, 24), half axes 30 and 20.
    const double cx = 33, cy = 24, a = 30, b = 20;
    auto inside = [&](double x, double y) { return std::pow((x - cx) / a, 2) + std::pow((y - cy) / b, 2); };
    for (bool aa : {false, true}) {
        CSelection s;
        s.CreateNewSelection(70, 50);
        s.SetAntiAlias(aa);
        s.AddEllipse(63, 44, 3, 4);
        const Pixels p = Snapshot(s);
        double covered = 0;
        for (int y = 0; y < 50; ++y)
            for (int x = 0; x < 70; ++x) {
                const uint8_t v = p[y * 70 + x];
                covered += v / 255.0;
                EXPECT_TRUE(v != 252 && v != 4);
                // Pixel centres well inside or outside are exact either way.
                const double e = inside(x + 0.5, y + 0.5);
                if (e < 0.85) {
                    EXPECT_EQ(v, 255) << x << "," << y;
                } else if (e > 1.15) {
                    EXPECT_EQ(v, 0) << x << "," << y;
                }
                if (!aa) {
                    EXPECT_TRUE(v == 0 || v == 255);
                    // Without smoothing a pixel is in when its centre is, up to
                    // the curve's flattening right at the edge.
                    if (std::abs(e - 1) > 0.03) {
                        EXPECT_EQ(v == 255, e <= 1) << x << "," << y;
                    }
                }
            }
        EXPECT_NEAR(covered, M_PI * a * b, M_PI * a * b * 0.01) << aa;
    }
}

TEST(Shapes, EllipseSnapsGreysOfTheWholeMask) {
    CSelection s;
    s.CreateNewSelection(20, 10);
    s.AddRectangle(0, 0, 1, 1);
    s.Row(9)[19] = 252;
    s.Row(9)[18] = 4;
    s.Row(9)[17] = 251;
    s.SelectionMode = SelectionModeAdd;
    s.AddEllipse(2, 2, 6, 6);
    EXPECT_EQ(s.Row(9)[19], 255);
    EXPECT_EQ(s.Row(9)[18], 0);
    EXPECT_EQ(s.Row(9)[17], 251);
}

TEST(Shapes, PolygonFillModesDifferOnASelfCrossingStar) {
    QList<QPoint> star;
    for (int i = 0; i < 5; ++i) {
        const double t = -M_PI / 2 + i * 4 * M_PI / 5;
        star << QPoint(qRound(50 + 45 * std::cos(t)), qRound(50 + 45 * std::sin(t)));
    }
    CSelection odd, winding;
    odd.CreateNewSelection(100, 100);
    winding.CreateNewSelection(100, 100);
    odd.AddPolygon(star, FillModeAlternate);
    winding.AddPolygon(star, FillModeWinding);
    EXPECT_EQ(odd.Row(50)[50], 0);
    EXPECT_EQ(winding.Row(50)[50], 255);
    EXPECT_EQ(odd.Row(20)[50], 255); // a point of the star
    // The pair form is the same polygon.
    std::vector<int32_t> pairs;
    for (const QPoint& p : star)
        pairs.insert(pairs.end(), {p.x(), p.y()});
    CSelection fromPairs;
    fromPairs.CreateNewSelection(100, 100);
    fromPairs.AddPolygon(pairs.data(), 5, FillModeWinding);
    EXPECT_EQ(Snapshot(fromPairs), Snapshot(winding));
}

TEST(Shapes, CombineModesWithAndWithoutFeather) {
    MessageRecorder quiet;
    const int w = 40, h = 30;
    const Pixels base = RectPixels(w, h, 0, 0, 25, 20);
    const Pixels shape = RectPixels(w, h, 10, 8, 38, 28);
    for (int feather : {0, 3})
        for (int mode : {1, 2, 3}) {
            CSelection s;
            Put(s, w, h, base);
            s.FeatherRadius = feather;
            s.SelectionMode = mode;
            s.AddRectangle(10, 8, 38, 28);
            const Pixels t = feather ? ReferenceFeather(shape, w, h, feather) : shape;
            EXPECT_EQ(Snapshot(s), Combine(base, t, mode)) << "mode " << mode << " feather " << feather;
        }
    // A new shape is feathered on the mask itself.
    CSelection s;
    s.CreateNewSelection(w, h);
    s.FeatherRadius = 4;
    s.AddRectangle(10, 8, 38, 28);
    EXPECT_EQ(Snapshot(s), ReferenceFeather(shape, w, h, 4));
}

TEST(Shapes, RectanglesSortTheirCornersAndActAsNewOnTheDefaultState) {
    for (int mode : {0, 1, 2})
        for (bool aa : {false, true}) {
            CSelection s;
            s.CreateNewSelection(13, 9);
            s.SetUseDefaultSetting(true);
            s.SetAntiAlias(aa);
            s.SelectionMode = mode;
            s.AddRectangle(7, 5, 2, 3);
            EXPECT_EQ(Snapshot(s), RectPixels(13, 9, 2, 3, 7, 5));
            EXPECT_EQ(s.Region(), QRegion(2, 3, 5, 2));
        }
}

TEST(Shapes, SubtractingEverythingTurnsTheSelectionOff) {
    MessageRecorder messages;
    CSelection s;
    s.CreateNewSelection(20, 20);
    s.AddRectangle(2, 2, 5, 5);
    s.SelectionMode = SelectionModeSubtract;
    s.AddRectangle(0, 0, 20, 20);
    EXPECT_TRUE(s.UseDefaultSetting());
    EXPECT_FALSE(s.Visible);
    EXPECT_EQ(s.GetSelectedPixelCount(), 400);
    EXPECT_EQ(Snapshot(s), Pixels(400, 255));
    ASSERT_EQ(messages.Requests.size(), 1);
    EXPECT_EQ(messages.LastText(), QStringLiteral("警告，未选择任何像素。"));
    EXPECT_EQ(messages.Requests[0].Icon, IconCritical);
}

TEST(Shapes, FeatherInsideAShapeArrivesNested) {
    MessageRecorder quiet;
    CSelection s;
    s.CreateNewSelection(30, 30);
    EventLog log;
    s.AddListener(&log);
    s.AddRectangle(2, 2, 20, 20);
    EXPECT_EQ(log.Events, QStringList({"B0", "C0"}));
    log.Events.clear();
    s.FeatherRadius = 2;
    s.AddEllipse(2, 2, 20, 20);
    EXPECT_EQ(log.Events, QStringList({"B0", "B1", "C1", "C0"}));
    // Combining feathers a temporary, which nobody listens to.
    log.Events.clear();
    s.SelectionMode = SelectionModeAdd;
    s.AddRectangle(22, 22, 28, 28);
    EXPECT_EQ(log.Events, QStringList({"B0", "C0"}));
    // The setter speaks for itself, unless restrained.
    log.Events.clear();
    s.SetUseDefaultSetting(true);
    s.RestrainEvent = true;
    s.SetUseDefaultSetting(false);
    EXPECT_EQ(log.Events, QStringList({"C0"}));
}

TEST(Shapes, LinesCrossTheCanvasAndLeaveTheOffsetAlone) {
    CSelection s;
    s.CreateNewSelection(8, 6);
    s.AddLine(3, 2, LineColumn);
    EXPECT_EQ(Snapshot(s), RectPixels(8, 6, 3, 0, 4, 6));
    s.AddLine(3, 2, LineRow);
    EXPECT_EQ(Snapshot(s), RectPixels(8, 6, 0, 2, 8, 3));
    s.AddLine(3, 2, 7);
    EXPECT_EQ(Snapshot(s), Combine(RectPixels(8, 6, 3, 0, 4, 6), RectPixels(8, 6, 0, 2, 8, 3), 1));
    s.SelectionMode = SelectionModeIntersect;
    s.Left = 1; // the caller's own offset survives
    s.FeatherRadius = 9;
    s.AddLine(5, 2, LineRow);
    EXPECT_EQ(Snapshot(s), RectPixels(8, 6, 0, 2, 8, 3));
    EXPECT_EQ(s.Left, 1);
}
