// Morphology of the mask against direct computations of each definition, on
// random masks that touch the canvas' edges, widths that are no multiple of 4
// and radii beyond the mask's size.
#include "MaskReference.h"

#include "core/MessageBox.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

struct Size {
    int W, H;
};
const Size Sizes[] = {{1, 1}, {1, 9}, {7, 1}, {13, 9}, {37, 23}};

} // namespace

TEST(Feather, EqualsTheTwoPassTriangleMeanWithRepeatedEdges) {
    MessageRecorder quiet;
    unsigned seed = 1;
    for (const Size sz : Sizes)
        for (int r : {1, 2, 5, 40}) {
            const Pixels p = RandomMask(sz.W, sz.H, seed++, true);
            CSelection s;
            Put(s, sz.W, sz.H, p);
            int radius = r;
            ASSERT_TRUE(s.Feather(radius));
            const Pixels expected = ReferenceFeather(p, sz.W, sz.H, r);
            if (CountAbove(expected, 0) == 0) {
                EXPECT_TRUE(s.UseDefaultSetting()); // blurred away
            } else {
                EXPECT_EQ(Snapshot(s), expected) << sz.W << "x" << sz.H << " r" << r;
            }
        }
}

TEST(Feather, ClampsTheRadiusAndWritesItBackAndZeroDoesNothing) {
    MessageRecorder quiet;
    const Pixels p = RandomMask(40, 30, 7, true);
    CSelection s;
    Put(s, 40, 30, p);
    EventLog log;
    s.AddListener(&log);

    int zero = 0;
    s.Feather(zero);
    EXPECT_TRUE(log.Events.isEmpty());
    EXPECT_EQ(Snapshot(s), p);

    int big = 300;
    s.Feather(big);
    EXPECT_EQ(big, 250);
    EXPECT_EQ(Snapshot(s), ReferenceFeather(p, 40, 30, 250));
    EXPECT_EQ(log.Events, QStringList({"B0", "C0"}));

    Put(s, 40, 30, p);
    int negative = -3;
    s.Feather(negative);
    EXPECT_EQ(negative, 1);
    EXPECT_EQ(Snapshot(s), ReferenceFeather(p, 40, 30, 1));
}

TEST(Smooth, IsTheLowerMedianThatFavoursFullPixels) {
    MessageRecorder quiet;
    unsigned seed = 100;
    for (const Size sz : Sizes)
        for (int r : {1, 2, 4, 12})
            for (bool grey : {false, true}) {
                const Pixels p = RandomMask(sz.W, sz.H, seed++, grey);
                CSelection s;
                Put(s, sz.W, sz.H, p);
                ASSERT_TRUE(s.Smooth(r));
                if (s.UseDefaultSetting()) continue; // smoothed away entirely
                EXPECT_EQ(Snapshot(s), ReferenceSmooth(p, sz.W, sz.H, r)) << sz.W << "x" << sz.H << " r" << r;
            }
    // Of nine pixels, four at 255 and five at 0 give 255: the test for full
    // pixels comes first and needs only four.
    CSelection s;
    Put(s, 3, 3, {255, 255, 0, 255, 255, 0, 0, 0, 0});
    s.Smooth(1);
    EXPECT_EQ(s.Row(1)[1], 255);
    EXPECT_FALSE(s.Smooth(0));
}

// The square's window is centred on the pixel, the disc's one row higher.
TEST(Morphology, IsTheWindowsExtremumWithOutsideNeutral) {
    MessageRecorder quiet;
    unsigned seed = 200;
    for (const Size sz : Sizes)
        for (int r : {0, 1, 3, 7, 60})
            for (int kind = 0; kind < 4; ++kind) {
                const bool expand = kind % 2 == 0, round = kind >= 2;
                // The square's radius is clamped by the width only; on one column it is 0.
                if (!round && (sz.W == 1 || r == 0)) continue;
                const Pixels p = RandomMask(sz.W, sz.H, seed++, true);
                CSelection s;
                Put(s, sz.W, sz.H, p);
                if (round)
                    expand ? s.ExpandRound(r) : s.ShrinkRound(r);
                else
                    expand ? s.ExpandRect(r) : s.ShrinkRect(r);
                if (s.UseDefaultSetting()) continue;
                const auto shape = [&](int dx, int dy) { return !round || dx * dx + dy * dy <= r * r; };
                EXPECT_EQ(Snapshot(s), ReferenceExtremum(p, sz.W, sz.H, round ? r : std::min(r, sz.W - 1),
                                                         expand, round ? -1 : 0, shape))
                    << sz.W << "x" << sz.H << " r" << r << " kind " << kind;
            }
}

TEST(Border, IsTheExpandedMaskLessTheShrunkCopyAndKeepsThinShapes) {
    MessageRecorder quiet;
    for (bool round : {true, false}) {
        const Pixels p = RandomMask(31, 17, round ? 5u : 6u, false);
        CSelection s, expanded, shrunk;
        Put(s, 31, 17, p);
        Put(expanded, 31, 17, p);
        Put(shrunk, 31, 17, p);
        EventLog log;
        s.AddListener(&log);
        s.Border(3, round);
        round ? expanded.ExpandRound(3) : expanded.ExpandRect(3);
        round ? shrunk.ShrinkRound(3) : shrunk.ShrinkRect(3);
        const Pixels e = Snapshot(expanded),
                     k = shrunk.UseDefaultSetting() ? Pixels(e.size(), 0) : Snapshot(shrunk);
        Pixels band(e.size());
        for (size_t i = 0; i < e.size(); ++i)
            band[i] = static_cast<uint8_t>(std::max(0, e[i] - k[i]));
        EXPECT_EQ(Snapshot(s), band);
        EXPECT_EQ(log.Events, QStringList({"B0", "B1", "C1", "C0"}));
    }
    // A line thinner than the radius shrinks to nothing: its border is the band
    // around it, not an empty selection.
    MessageRecorder messages;
    Pixels line(20 * 20, 0);
    for (int x = 0; x < 20; ++x)
        line[10 * 20 + x] = 255;
    CSelection s;
    Put(s, 20, 20, line);
    s.Border(2, false);
    EXPECT_FALSE(s.UseDefaultSetting());
    EXPECT_EQ(s.GetSelectedPixelCount(), 20 * 5);
    EXPECT_TRUE(messages.Requests.isEmpty());
}
