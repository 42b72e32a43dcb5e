#include "core/HistogramStats.h"

#include "core/Image.h"
#include "core/PixelFormat.h"

#include <cmath>

namespace vm {

int32_t HistogramCacheLevel(int64_t selectedPixels) {
    if (selectedPixels < 480000) return 1;
    if (selectedPixels < 1920000) return 2;
    return 4;
}

QStringList HistogramChannelNames(bool grey) {
    if (grey) return {QStringLiteral("灰度")};
    return {QStringLiteral("RGB"), QStringLiteral("红"),   QStringLiteral("绿"),
            QStringLiteral("蓝"),  QStringLiteral("明度"), QStringLiteral("颜色")};
}

HistogramStatistics ComputeHistogramStatistics(const std::array<uint64_t, 256>& levels, int64_t pixels,
                                               bool triple) {
    HistogramStatistics s;
    s.Pixels = pixels;
    if (pixels <= 0) return s;
    const double n = static_cast<double>(pixels);
    double sum = 0.0;
    for (int i = 0; i < 256; ++i)
        sum += static_cast<double>(i) * static_cast<double>(levels[i]);
    s.Mean = sum / (triple ? 3.0 * n : n);
    double squares = 0.0;
    for (int i = 0; i < 256; ++i) {
        const double d = i - s.Mean;
        squares += d * d * static_cast<double>(levels[i]);
    }
    s.StdDev = std::sqrt((triple ? squares / 3.0 : squares) / n);
    const double half = triple ? 1.5 * n : n / 2.0;
    double running = 0.0;
    s.Median = 255;
    for (int i = 0; i < 256; ++i) {
        running += static_cast<double>(levels[i]);
        if (running >= half) {
            s.Median = i;
            break;
        }
    }
    return s;
}

QString FormatStat(double value) {
    const QString text = QString::number(value, 'f', 2);
    // A tiny negative value would otherwise print as "-0.00".
    return text == QStringLiteral("-0.00") ? QStringLiteral("0.00") : text;
}

bool SampleHistogram(const CImage& image, int32_t channelIndex, bool noCache, HistogramSample& out) {
    const bool grey = image.PixelFormat == PixelFormat8bppGray;
    if (!image.Pointer() || image.IsSelectionEmpty()) return false;
    if (channelIndex < 0 || channelIndex >= (grey ? 1 : 6)) return false;

    HistogramSample s;
    if (noCache) {
        s.CacheLevel = 1;
        s.HistPixelCount = image.GetSelectedPixelCount(1);
    } else {
        const int64_t all = image.GetSelectedPixelCount(1);
        s.CacheLevel = HistogramCacheLevel(all);
        s.HistPixelCount = s.CacheLevel == 1 ? all : image.GetSelectedPixelCount(s.CacheLevel);
    }
    if (!image.GetHistgramArray(s.Rows, grey ? 0 : 6, s.CacheLevel)) return false;

    if (grey) {
        for (int i = 0; i < 256; ++i)
            s.Levels[i] = s.Rows[static_cast<size_t>(i)];
    } else if (channelIndex == HistogramLuminosity) {
        std::vector<uint32_t> luminosity;
        if (!image.GetHistgramArray(luminosity, 5, s.CacheLevel)) return false;
        for (int i = 0; i < 256; ++i)
            s.Levels[i] = luminosity[static_cast<size_t>(i)];
    } else if (channelIndex == HistogramRgb || channelIndex == HistogramColors) {
        s.Triple = true;
        for (int i = 0; i < 256; ++i)
            s.Levels[i] = uint64_t{s.Rows[static_cast<size_t>(i)]} + s.Rows[static_cast<size_t>(256 + i)] +
                          s.Rows[static_cast<size_t>(512 + i)];
    } else {
        // The rows lie blue, green, red; the list says red, green, blue.
        const size_t row = channelIndex == HistogramRed ? 2 : channelIndex == HistogramGreen ? 1 : 0;
        for (int i = 0; i < 256; ++i)
            s.Levels[i] = s.Rows[row * 256 + static_cast<size_t>(i)];
    }
    out = std::move(s);
    return true;
}

} // namespace vm
