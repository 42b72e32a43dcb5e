#include "adjust/Curves.h"

#include "core/Catalogue.h"
#include "core/Numeric.h"
#include "core/ProcessingFrame.h"

#include <QStringList>

#include <vector>

namespace vm {

bool CurveNamed(CImage& image, const ToneTable& red, const ToneTable& green, const ToneTable& blue,
                const QString& name) {
    auto frame = ProcessingFrame::Begin(image, name);
    if (!frame) return false;
    const uint32_t format = image.PixelFormat;
    if (IsPaletteFormat(format)) {
        frame.MapPalette([&](int b, int g, int r, int& nb, int& ng, int& nr) {
            nb = blue[b];
            ng = green[g];
            nr = red[r];
        });
    } else if (format == PixelFormat8bppGray) {
        frame.MapGreyPixels([&](int v) { return blue[v]; });
    } else if (format == PixelFormat24bppRGB || format == PixelFormat32bppARGB) {
        frame.MapColorPixels([&](int b, int g, int r, int& nb, int& ng, int& nr) {
            nb = blue[b];
            ng = green[g];
            nr = red[r];
        });
    }
    return frame.End();
}

bool Curve(CImage& image, const ToneTable& red, const ToneTable& green, const ToneTable& blue) {
    return CurveNamed(image, red, green, blue, RowOf("Curve").Title);
}

ToneTable IdentityTable() {
    ToneTable t;
    for (int i = 0; i < 256; ++i)
        t[i] = static_cast<uint8_t>(i);
    return t;
}

ToneTable ToToneTable(const std::array<int32_t, 256>& table) {
    ToneTable t;
    for (int i = 0; i < 256; ++i)
        t[i] = static_cast<uint8_t>(ClampByte(table[i]));
    return t;
}

namespace {

// Keeps the list as the spline sees it: an active end point stays inside the
// graph and at least 4 away from its inactive neighbour; an active inner point
// outside the graph or within 4 of an inactive neighbour drops out.
std::vector<CurvePoint> Settle(const QList<CurvePoint>& in) {
    std::vector<CurvePoint> out;
    const int n = static_cast<int>(in.size());
    if (n == 0) return out;
    CurvePoint first = in[0];
    if (first.Active) {
        first.Y = std::clamp(first.Y, 0, 255);
        first.X = std::max(first.X, 0);
        for (int j = 1; j < n; ++j)
            if (!in[j].Active && in[j].X - first.X < 4) {
                first.X = in[j].X - 4;
                break;
            }
    }
    out.push_back(first);
    for (int i = 1; i < n - 1; ++i) {
        const CurvePoint& p = in[i];
        if (p.Active) {
            if (p.Y < 0 || p.Y > 255) continue;
            const CurvePoint& prev = in[i - 1];
            const CurvePoint& next = in[i + 1];
            if ((!prev.Active && std::abs(p.X - prev.X) < 4) || (!next.Active && std::abs(next.X - p.X) < 4))
                continue;
        }
        out.push_back(p);
    }
    if (n > 1) {
        CurvePoint last = in[n - 1];
        if (last.Active) {
            last.Y = std::clamp(last.Y, 0, 255);
            last.X = std::min(last.X, 255);
            for (int j = static_cast<int>(out.size()) - 1; j >= 0; --j)
                if (!out[j].Active) {
                    last.X = std::max(last.X, out[j].X + 4);
                    break;
                }
        }
        out.push_back(last);
    }
    return out;
}

} // namespace

std::array<int32_t, 256> TableFromPoints(const QList<CurvePoint>& points) {
    std::array<int32_t, 256> table{};
    const std::vector<CurvePoint> pts = Settle(points);
    const int n = static_cast<int>(pts.size());
    if (n == 0) {
        for (int i = 0; i < 256; ++i)
            table[i] = i;
        return table;
    }
    // One-based arrays, as the equations are written.
    std::vector<int32_t> x(n + 2), y(n + 2), d(n + 2), h(n + 2);
    std::vector<float> w(n + 2), p(n + 2);
    for (int i = 1; i <= n; ++i) {
        x[i] = pts[i - 1].X;
        y[i] = pts[i - 1].Y;
    }
    for (int i = 2; i <= n - 1; ++i)
        d[i] = 2 * (x[i + 1] - x[i - 1]);
    for (int i = 1; i <= n - 1; ++i)
        h[i] = x[i + 1] - x[i];
    auto slope = [&](int i) { return h[i] != 0 ? static_cast<float>(y[i + 1] - y[i]) / h[i] : 0.0f; };
    for (int i = 2; i <= n - 1; ++i)
        w[i] = 6.0f * (slope(i) - slope(i - 1));
    // The diagonal is kept as an integer at every step; the curve so differs
    // slightly from the textbook spline, and users' presets depend on it.
    for (int i = 2; i <= n - 2; ++i) {
        if (d[i] == 0) continue;
        w[i + 1] = w[i + 1] - static_cast<float>(h[i]) * w[i] / static_cast<float>(d[i]);
        d[i + 1] = RoundHalfEven(d[i + 1] - static_cast<double>(h[i]) * h[i] / d[i]);
    }
    for (int i = n - 1; i >= 2; --i)
        p[i] = d[i] != 0 ? (w[i] - h[i] * p[i + 1]) / static_cast<float>(d[i]) : 0.0f;
    p[1] = 0;
    p[n] = 0;

    auto put = [&](int at, double value) {
        if (at < 0 || at > 255) return;
        int32_t v = RoundHalfEven(value);
        if (v > 255) v = 255;
        if (v < 0) v = 1; // kept: a dip below black lands on 1
        table[at] = v;
    };
    if (n == 1) put(x[1], y[1]);
    for (int i = 1; i <= n - 1; ++i) {
        if (h[i] <= 0) {
            put(x[i + 1], y[i + 1]);
            continue;
        }
        for (int xx = x[i]; xx <= x[i + 1]; ++xx) {
            const float t = static_cast<float>(xx - x[i]) / static_cast<float>(h[i]);
            const float u = 1.0f - t;
            const double st = static_cast<double>(t) * t * t - t;
            const double su = static_cast<double>(u) * u * u - u;
            const double value =
                static_cast<double>(u) * y[i] + static_cast<double>(t) * y[i + 1] +
                (st * p[i + 1] + su * p[i]) * static_cast<double>(h[i]) * h[i] * 0.166666666666667;
            put(xx, value);
        }
    }
    const int lo = std::clamp(x[1], 0, 255);
    const int hi = std::clamp(x[n], 0, 255);
    for (int i = 0; i < lo; ++i)
        table[i] = table[lo];
    for (int i = hi + 1; i < 256; ++i)
        table[i] = table[hi];
    return table;
}

bool ParseCurvePoints(const QString& text, QList<CurvePoint>& points) {
    points.clear();
    const QStringList pairs = text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString& pair : pairs) {
        const QStringList xy = pair.split(QLatin1Char(','));
        if (xy.size() != 2) return false;
        bool okX = false, okY = false;
        CurvePoint p;
        p.X = xy[0].trimmed().toInt(&okX);
        p.Y = xy[1].trimmed().toInt(&okY);
        if (!okX || !okY || p.X < 0 || p.X > 255 || p.Y < 0 || p.Y > 255) return false;
        if (!points.isEmpty() && p.X <= points.last().X) return false;
        points.append(p);
    }
    return !points.isEmpty();
}

} // namespace vm
