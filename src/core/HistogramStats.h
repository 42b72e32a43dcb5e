#pragma once
// The histogram panel's numbers: the sampling step (cache level) chosen by
// the size of the selection, the histogram rows counted at that step, and the
// statistics of the chosen channel.
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <vector>

namespace vm {

class CImage;

// Sampling step for a selection of that many pixels: 1 below 480000, 2 below
// 1920000, 4 from there on.
int32_t HistogramCacheLevel(int64_t SelectedPixels);

// The panel's channel list: "RGB", "红", "绿", "蓝", "明度", "颜色" for colour
// pictures, "灰度" for grey ones.
QStringList HistogramChannelNames(bool Grey);

enum HistogramChannel : int32_t {
    HistogramRgb = 0,
    HistogramRed = 1,
    HistogramGreen = 2,
    HistogramBlue = 3,
    HistogramLuminosity = 4,
    HistogramColors = 5,
    HistogramGrey = 0, // the one row of a grey picture
};

struct HistogramStatistics {
    double Mean = 0.0;
    double StdDev = 0.0;
    int32_t Median = 0;
    int64_t Pixels = 0;
};

// Statistics of Levels (h(i), i = 0..255) with n = Pixels. Triple is for a
// histogram holding three counts a pixel (the sum of the red, green and blue
// rows): the median's threshold is 1.5 n instead of n / 2, the mean is divided
// by 3 n and the deviation is the root of (sum / 3) / n. With n of 0 (or less)
// everything is 0; a median never reached is 255.
HistogramStatistics ComputeHistogramStatistics(const std::array<uint64_t, 256>& Levels, int64_t Pixels,
                                               bool Triple);

// The panel's "0.00" text.
QString FormatStat(double Value);

struct HistogramSample {
    int32_t CacheLevel = 1;
    int64_t HistPixelCount = 0;
    // As GetHistgramArray filled them: for colour pictures three rows of 256
    // (blue, green, red), for grey pictures one.
    std::vector<uint32_t> Rows;
    // The chosen channel; for "RGB" and "颜色" the sum of the three rows.
    std::array<uint64_t, 256> Levels{};
    // Whether Levels counts three times a pixel (see ComputeHistogramStatistics).
    bool Triple = false;
};

// Counts the histogram of the image's selected pixels for the panel's channel
// row ChannelIndex (of HistogramChannelNames; grey pictures have only row 0).
// NoCache counts every pixel; otherwise the step follows HistogramCacheLevel
// and HistPixelCount is recounted at that step so that it matches the sample.
// False, and Out left as it was, for an empty selection, a picture without
// pixels or a row the list does not have.
bool SampleHistogram(const CImage& Image, int32_t ChannelIndex, bool NoCache, HistogramSample& Out);

} // namespace vm
