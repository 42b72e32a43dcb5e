// The histogram panel's numbers: the cache levels, the sample, and the
// statistics against a direct computation from the pixel values.
#include "core/HistogramStats.h"
#include "core/Image.h"
#include "selection/Selection.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace vm;

namespace {

struct Direct {
    double mean, dev;
    int median;
};

// Plain statistics of a list of values; Weight is how many values a pixel
// gave, so that the median's threshold is the share of the pixels' count the
// panel uses (half for one value a pixel, one and a half for three).
Direct Of(std::vector<int> values, int64_t pixels, int weight) {
    double sum = 0;
    for (int v : values)
        sum += v;
    const double mean = sum / values.size();
    double sq = 0;
    for (int v : values)
        sq += (v - mean) * (v - mean);
    std::sort(values.begin(), values.end());
    const double threshold = weight == 3 ? 1.5 * pixels : pixels / 2.0;
    const size_t at = static_cast<size_t>(std::ceil(threshold)) - 1;
    return {mean, std::sqrt(sq / values.size()), values[at]};
}

} // namespace

TEST(HistogramStats, CacheLevelThresholds) {
    for (auto [pixels, level] :
         {std::pair<int64_t, int>{0, 1}, {479999, 1}, {480000, 2}, {1919999, 2}, {1920000, 4}})
        EXPECT_EQ(HistogramCacheLevel(pixels), level) << pixels;
}

TEST(HistogramStats, LargePicturesAreSampledAndNoCacheCountsAll) {
    struct Case {
        int w, h, level;
        int64_t sampled;
    };
    for (const Case& c :
         {Case{100, 100, 1, 10000}, Case{1000, 1000, 2, 250000}, Case{2000, 1000, 4, 125000}}) {
        CImage image;
        ASSERT_TRUE(image.CreateNewImage(c.w, c.h, 24));
        HistogramSample s;
        ASSERT_TRUE(SampleHistogram(image, HistogramRed, false, s));
        EXPECT_EQ(s.CacheLevel, c.level) << c.w;
        EXPECT_EQ(s.HistPixelCount, c.sampled) << c.w;
        EXPECT_EQ(s.Levels[0], static_cast<uint64_t>(c.sampled)) << "a black picture counts at 0";
        ASSERT_TRUE(SampleHistogram(image, HistogramRed, true, s));
        EXPECT_EQ(s.CacheLevel, 1);
        EXPECT_EQ(s.HistPixelCount, int64_t{c.w} * c.h);
    }
}

TEST(HistogramStats, StatisticsOfEachChannelMatchTheirPixels) {
    auto image = vmtest::RandomImage(37, 23, 24, 31);
    CSelection sel;
    sel.CreateNewSelection(37, 23);
    sel.AddEllipse(3, 2, 30, 21);
    image->SetSelection(&sel);
    std::vector<int> red, green, blue, all, lum;
    int64_t n = 0;
    for (int y = 0; y < 23; ++y)
        for (int x = 0; x < 37; ++x) {
            if (!sel.Row(y)[x]) continue;
            const uint8_t* p = image->Row(y) + 3 * x;
            ++n;
            blue.push_back(p[0]);
            green.push_back(p[1]);
            red.push_back(p[2]);
            all.insert(all.end(), {p[0], p[1], p[2]});
            lum.push_back((p[2] + 2 * p[1] + p[0]) / 4);
        }
    ASSERT_GT(n, 300);
    struct Row {
        int channel;
        const std::vector<int>* values;
        int weight;
    };
    for (const Row& row :
         {Row{HistogramRgb, &all, 3}, Row{HistogramRed, &red, 1}, Row{HistogramGreen, &green, 1},
          Row{HistogramBlue, &blue, 1}, Row{HistogramLuminosity, &lum, 1}, Row{HistogramColors, &all, 3}}) {
        HistogramSample s;
        ASSERT_TRUE(SampleHistogram(*image, row.channel, false, s));
        EXPECT_EQ(s.HistPixelCount, n);
        EXPECT_EQ(s.Rows.size(), 768u);
        const HistogramStatistics st = ComputeHistogramStatistics(s.Levels, s.HistPixelCount, s.Triple);
        const Direct d = Of(*row.values, n, row.weight);
        EXPECT_NEAR(st.Mean, d.mean, 1e-9) << row.channel;
        EXPECT_NEAR(st.StdDev, d.dev, 1e-9) << row.channel;
        EXPECT_EQ(st.Median, d.median) << row.channel;
        EXPECT_EQ(st.Pixels, n);
    }
    EXPECT_FALSE(SampleHistogram(*image, 6, false, *std::make_unique<HistogramSample>()));
    EXPECT_FALSE(SampleHistogram(*image, -1, false, *std::make_unique<HistogramSample>()));
}

TEST(HistogramStats, GreyPicturesAndEdgeCases) {
    auto image = std::make_unique<CImage>();
    ASSERT_TRUE(image->CreateNewImage(4, 2, 8));
    const std::vector<int> values = {0, 10, 10, 20, 200, 200, 255, 1};
    for (int i = 0; i < 8; ++i)
        image->Row(i / 4)[i % 4] = static_cast<uint8_t>(values[i]);
    EXPECT_EQ(HistogramChannelNames(true), QStringList{QStringLiteral("灰度")});
    EXPECT_EQ(HistogramChannelNames(false).size(), 6);
    HistogramSample s;
    EXPECT_FALSE(SampleHistogram(*image, 1, false, s)) << "a grey picture has one row";
    ASSERT_TRUE(SampleHistogram(*image, HistogramGrey, false, s));
    EXPECT_EQ(s.Rows.size(), 256u);
    const HistogramStatistics st = ComputeHistogramStatistics(s.Levels, s.HistPixelCount, s.Triple);
    const Direct d = Of(values, 8, 1);
    EXPECT_DOUBLE_EQ(st.Mean, d.mean);
    EXPECT_DOUBLE_EQ(st.StdDev, d.dev);
    EXPECT_EQ(st.Median, 10);

    // Nothing counted: all zero, and the text is "0.00".
    const HistogramStatistics none = ComputeHistogramStatistics({}, 0, true);
    EXPECT_EQ(none.Mean, 0.0);
    EXPECT_EQ(none.Median, 0);
    EXPECT_EQ(FormatStat(none.StdDev), QStringLiteral("0.00"));
    EXPECT_EQ(FormatStat(127.456), QStringLiteral("127.46"));
    EXPECT_EQ(FormatStat(-0.001), QStringLiteral("0.00"));
    EXPECT_EQ(FormatStat(3), QStringLiteral("3.00"));

    // An empty selection leaves the panel blank.
    CSelection sel;
    sel.CreateNewSelection(4, 2);
    sel.SelectAll();
    sel.Left = 40;
    image->SetSelection(&sel);
    HistogramSample kept;
    kept.CacheLevel = 7;
    EXPECT_FALSE(SampleHistogram(*image, 0, true, kept));
    EXPECT_EQ(kept.CacheLevel, 7);
}
