#include "document/CanvasGeometry.h"

#include "core/Numeric.h"
#include "core/StartUpTables.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vm {

int32_t DisplayedExtent(int32_t imageExtent, double zoom) {
    if (imageExtent <= 0 || !(zoom > 0)) return 0;
    const double d = std::floor(imageExtent * zoom);
    return static_cast<int32_t>(std::clamp(d, 1.0, 2147483647.0));
}

AxisLayout FitAxis(int32_t imageExtent, double zoom, int32_t viewExtent) {
    AxisLayout a;
    const int32_t shown = DisplayedExtent(imageExtent, zoom);
    viewExtent = std::max(viewExtent, 0);
    if (shown <= viewExtent) {
        a.ScrollMax = 0;
        a.Show = (viewExtent - shown) / 2;
        a.ShowExtent = shown;
    } else {
        a.ScrollMax = static_cast<double>(shown) - viewExtent;
        a.Show = 0;
        a.ShowExtent = viewExtent;
    }
    return a;
}

double ClampScroll(double value, double scrollMax) {
    if (!(value > 0)) return 0;
    return std::min(value, std::max(scrollMax, 0.0));
}

AxisDraw DrawAxis(int32_t imageExtent, double zoom, int32_t viewExtent, double scroll, double scrollMax) {
    AxisDraw d;
    if (imageExtent <= 0 || !(zoom > 0)) return d;
    if (scrollMax == 0) {
        d.SrcStart = 0;
        d.SrcExtent = imageExtent;
        d.DestStart = 0;
        d.DestExtent = DisplayedExtent(imageExtent, zoom);
        return d;
    }
    const double first = std::trunc(scroll / zoom);
    const double whole = std::trunc(viewExtent / zoom);
    d.SrcStart = static_cast<int32_t>(std::clamp(first, 0.0, static_cast<double>(imageExtent - 1)));
    // Two pixels beyond the whole ones cover the partial pixels at both edges;
    // what lies past the picture's end is not drawn.
    d.SrcExtent = static_cast<int32_t>(std::min(whole + 2, static_cast<double>(imageExtent - d.SrcStart)));
    d.DestExtent = d.SrcExtent * zoom;
    d.DestStart = zoom >= 1 ? -(scroll - first * zoom) : 0;
    return d;
}

void VisibleAxis(int32_t imageExtent, double zoom, int32_t viewExtent, double scroll, double scrollMax,
                 int32_t& start, int32_t& end) {
    if (scrollMax == 0 || !(zoom > 0)) {
        start = 0;
        end = imageExtent;
        return;
    }
    start = static_cast<int32_t>(std::trunc(scroll / zoom));
    end = RoundHalfEven(std::trunc(viewExtent / zoom) + start + 2);
}

int32_t ViewToImage(int32_t viewPos, int32_t show, double scroll, double zoom) {
    if (!(zoom > 0)) return 0;
    return static_cast<int32_t>(std::trunc((viewPos - show + scroll) / zoom));
}

bool AcceptsZoomFactor(double factor, int32_t width, int32_t height) {
    if (!(factor >= 0.02 && factor <= 20)) return false;
    return width * factor >= 1 && height * factor >= 1;
}

bool ZoomInFactor(double current, double& next) {
    const auto& t = ZoomFactorTable;
    // Below the table (a fitted factor can be) the first step is next.
    if (current < t.front()) {
        next = t.front();
        return true;
    }
    for (size_t i = 0; i + 1 < t.size(); ++i) {
        if (t[i] <= current && current < t[i + 1]) {
            next = t[i + 1];
            return true;
        }
    }
    return false;
}

bool ZoomOutFactor(double current, int32_t width, int32_t height, double& next) {
    const auto& t = ZoomFactorTable;
    if (current > t.back()) {
        next = t.back();
        return true;
    }
    for (size_t i = t.size() - 1; i >= 1; --i) {
        if (t[i - 1] < current && current <= t[i]) {
            if (width * t[i - 1] < 1 || height * t[i - 1] < 1) return false;
            next = t[i - 1];
            return true;
        }
    }
    return false;
}

double BestPositionFactor(int32_t width, int32_t height, int32_t viewWidth, int32_t viewHeight) {
    if (width <= viewWidth && height <= viewHeight) return 1.0;
    if (width <= 0 || height <= 0) return 1.0;
    const double ratio =
        std::min(static_cast<double>(viewWidth) / width, static_cast<double>(viewHeight) / height);
    double best = ZoomFactorTable[0];
    for (size_t i = 0; i <= 9; ++i)
        if (ZoomFactorTable[i] <= ratio) best = ZoomFactorTable[i];
    return best;
}

QString ZoomPercentText(double factor) {
    return QString::number(factor * 100.0, 'f', 2) + QLatin1Char('%');
}

double MinZoomPercent(int32_t width, int32_t height) {
    const int32_t shorter = std::min(width, height);
    if (shorter <= 0) return 2.0;
    // Rounded up to the hundredth shown, so that the limit itself is accepted.
    const double exact = 100.0 / shorter;
    return std::max(2.0, std::ceil(exact * 100.0 - 1e-9) / 100.0);
}

ZoomBoxInput ParseZoomBox(const QString& text, double minPercent, double& percent) {
    QString t = text.trimmed();
    if (t.endsWith(QLatin1Char('%'))) t.chop(1);
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (!ok || t.isEmpty() || !std::isfinite(v)) return ZoomBoxInput::NotANumber;
    for (QChar c : t)
        if (!c.isDigit() && c != QLatin1Char('.')) return ZoomBoxInput::NotANumber;
    if (v < minPercent) {
        percent = minPercent;
        return ZoomBoxInput::OutOfRange;
    }
    if (v > 2000.0) {
        percent = 2000.0;
        return ZoomBoxInput::OutOfRange;
    }
    percent = v;
    return ZoomBoxInput::Accepted;
}

void GetBestFitInfo(int32_t width, int32_t height, int32_t maxWidth, int32_t maxHeight, int32_t& outWidth,
                    int32_t& outHeight, int32_t& x, int32_t& y) {
    if (width <= maxWidth && height <= maxHeight) {
        outWidth = width;
        outHeight = height;
    } else {
        const double rx = static_cast<double>(maxWidth) / width;
        const double ry = static_cast<double>(maxHeight) / height;
        if (rx < ry) {
            outWidth = maxWidth;
            outHeight = RoundHalfEven(height * rx);
        } else {
            outHeight = maxHeight;
            outWidth = RoundHalfEven(width * ry);
        }
    }
    x = (maxWidth - outWidth) / 2;
    y = (maxHeight - outHeight) / 2;
}

RulerStrides RulerStridesFor(double zoom) {
    // Chosen so that numbered ticks stand 40 to 100 screen pixels apart and
    // minor ticks at least 5; strides never grow as the zoom grows.
    struct Row {
        double UpTo;
        RulerStrides Strides;
    };
    static constexpr std::array<Row, 12> table = {{
        {0.03, {5000, 1000, 500}},
        {0.07, {2000, 1000, 200}},
        {0.1, {1000, 500, 100}},
        {0.2, {500, 100, 50}},
        {0.4, {200, 100, 20}},
        {0.7, {100, 50, 10}},
        {1.5, {100, 50, 10}},
        {2.5, {50, 10, 5}},
        {4.5, {20, 10, 2}},
        {7.5, {10, 5, 1}},
        {14.0, {5, NoStride, 1}},
        {1e9, {2, NoStride, 1}},
    }};
    for (const Row& r : table)
        if (zoom <= r.UpTo) return r.Strides;
    return table.back().Strides;
}

int RulerTickAt(int32_t position, const RulerStrides& s) {
    if (position % s.Major == 0) return 3;
    if (position % s.Medium == 0) return 2;
    if (position % s.Minor == 0) return 1;
    return 0;
}

} // namespace vm
