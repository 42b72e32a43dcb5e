// "色彩范围": the falloff's values, the sample modes, the hue families and
// the tone ranges, inversion and preview.
#include "MaskReference.h"

#include "core/Image.h"
#include "core/MessageBox.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

std::unique_ptr<CImage> Colours(const std::vector<std::array<int, 3>>& rgb) {
    auto img = std::make_unique<CImage>();
    img->CreateNewImage(static_cast<int>(rgb.size()), 1, 24);
    for (size_t i = 0; i < rgb.size(); ++i) {
        img->Row(0)[3 * i] = static_cast<uint8_t>(rgb[i][2]);
        img->Row(0)[3 * i + 1] = static_cast<uint8_t>(rgb[i][1]);
        img->Row(0)[3 * i + 2] = static_cast<uint8_t>(rgb[i][0]);
    }
    return img;
}

Pixels Range(const CImage& img, int mode, int x, int tolerance, bool invert = false, bool preview = true) {
    CSelection s;
    s.CreateNewSelection(img.Width(), img.Height());
    s.ColorRange(img, mode, x, 0, tolerance, invert, preview);
    return Snapshot(s);
}

} // namespace

TEST(ColorRange, FalloffTableOnAGreyRamp) {
    CImage ramp;
    ramp.CreateNewImage(256, 1, 8);
    for (int v = 0; v < 256; ++v)
        ramp.Row(0)[v] = static_cast<uint8_t>(v);
    // Tolerance 40: 1600 - 2d^2 below 20, 2 (40 - d)^2 from there, scaled by 255/1600.
    const Pixels p = Range(ramp, ColorRangeSampledColor, 100, 40);
    EXPECT_EQ(p[100], 255);
    EXPECT_EQ(p[110], 223); // 223.125
    EXPECT_EQ(p[90], 223);
    EXPECT_EQ(p[120], 128); // 127.5, half to even, where the two pieces meet
    EXPECT_EQ(p[130], 32);  // 31.875
    EXPECT_EQ(p[139], 0);   // 0.32
    EXPECT_EQ(p[60], 0);
    EXPECT_EQ(CountAbove(p, 0), 77);
    // An odd tolerance splits at the true half, 2.5: d = 2 is still on the
    // inner piece (17 x 255 / 25 = 173.4), d = 3 on the outer (81.6).
    const Pixels q = Range(ramp, ColorRangeSampledColor, 100, 5);
    EXPECT_EQ(Pixels(q.begin() + 98, q.begin() + 106), Pixels({173, 235, 255, 235, 173, 82, 20, 0}));
    // Tolerance 0 selects nothing; a picked colour outside the picture is refused.
    CSelection s;
    s.CreateNewSelection(256, 1);
    EventLog log;
    s.AddListener(&log);
    EXPECT_FALSE(s.ColorRange(ramp, ColorRangeSampledColor, 256, 0, 40, false, false));
    EXPECT_TRUE(log.Events.isEmpty());
    EXPECT_EQ(Range(ramp, ColorRangeSampledColor, 100, 0), Pixels(256, 0));
}

TEST(ColorRange, SampleModesTakeTheWeakestChannel) {
    auto img = Colours({{100, 100, 100}, {110, 100, 100}, {110, 80, 100}, {0, 255, 0}});
    EXPECT_EQ(Range(*img, ColorRangeSampledColor, 0, 40), Pixels({255, 223, 128, 0}));
    const Pixels lab = Range(*img, ColorRangeSampledLab, 0, 40);
    EXPECT_EQ(lab[0], 255);
    EXPECT_EQ(lab[3], 0);
    EXPECT_GT(lab[1], lab[3]);
}

TEST(ColorRange, HueFamilies) {
    // clang-format off
    auto img = Colours({{200, 50, 100}, {50, 200, 100}, {20, 100, 200}, {200, 180, 20}, {20, 180, 200},
                        {200, 20, 180}, {90, 90, 90}});
    // clang-format on
    // (2 - lead / 255) x (lead - rest): 200 over 100 gives 121.57.
    EXPECT_EQ(Range(*img, ColorRangeReds, 0, 0), Pixels({122, 0, 0, 24, 0, 24, 0}));
    EXPECT_EQ(Range(*img, ColorRangeGreens, 0, 0), Pixels({0, 122, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Range(*img, ColorRangeBlues, 0, 0), Pixels({0, 0, 122, 0, 24, 0, 0}));
    // Yellow: the smaller of red and green over blue, 180 over 20 gives 207.06.
    EXPECT_EQ(Range(*img, ColorRangeYellows, 0, 0), Pixels({0, 0, 0, 207, 0, 0, 0}));
    // Cyan: 100 over 50 gives 80.39, 100 over 20 gives 128.63.
    EXPECT_EQ(Range(*img, ColorRangeCyans, 0, 0), Pixels({0, 80, 129, 0, 207, 0, 0}));
    EXPECT_EQ(Range(*img, ColorRangeMagentas, 0, 0), Pixels({80, 0, 0, 0, 0, 207, 0}));
}

TEST(ColorRange, TonesInversionAndPreview) {
    auto img = Colours({{10, 10, 10}, {128, 128, 128}, {250, 250, 250}});
    EXPECT_EQ(Range(*img, ColorRangeShadows, 0, 0), Pixels({255, 0, 0}));
    EXPECT_EQ(Range(*img, ColorRangeMidtones, 0, 0), Pixels({0, 255, 0}));
    EXPECT_EQ(Range(*img, ColorRangeHighlights, 0, 0), Pixels({0, 0, 255}));
    EXPECT_EQ(Range(*img, ColorRangeShadows, 0, 0, true), Pixels({0, 255, 255}));
    EXPECT_EQ(Range(*img, 2, 0, 0), Pixels(3, 0)); // a separator of the list

    // Without preview an empty result is checked like any selection.
    MessageRecorder messages;
    CSelection s;
    s.CreateNewSelection(3, 1);
    EventLog log;
    s.AddListener(&log);
    s.ColorRange(*img, ColorRangeGreens, 0, 0, 0, false, true);
    EXPECT_FALSE(s.UseDefaultSetting());
    EXPECT_TRUE(messages.Requests.isEmpty());
    s.ColorRange(*img, ColorRangeGreens, 0, 0, 0, false, false);
    EXPECT_TRUE(s.UseDefaultSetting());
    EXPECT_EQ(messages.Requests.size(), 1);
    EXPECT_EQ(log.Events, QStringList({"B0", "C0", "B0", "C0"}));
}
