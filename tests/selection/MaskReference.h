#pragma once
// Slow, obvious references for the selection tests: every output computed
// straight from its definition over its whole window, with no running sums.
#include "selection/Selection.h"
#include "support/Reference.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace vmtest {

// The mask's pixels, Width a row, without the padding.
using Pixels = std::vector<uint8_t>;

inline Pixels Snapshot(const vm::CSelection& s) {
    Pixels p(static_cast<size_t>(s.Width()) * s.Height());
    for (int y = 0; y < s.Height(); ++y)
        std::memcpy(p.data() + y * s.Width(), s.Row(y), s.Width());
    return p;
}

// A sized real selection holding Pixels.
inline void Put(vm::CSelection& s, int w, int h, const Pixels& p) {
    s.CreateNewSelection(w, h);
    for (int y = 0; y < h; ++y)
        std::memcpy(s.Row(y), p.data() + y * w, w);
    s.RestrainEvent = true;
    s.SetUseDefaultSetting(false);
    s.RestrainEvent = false;
    s.UpdateSelectionRegion();
}

// Blobs of 255 and a few grey ones, some over the edges, on 0. Grey says
// whether soft values appear at all.
inline Pixels RandomMask(int w, int h, unsigned seed, bool grey) {
    std::mt19937 rng(seed);
    Pixels p(static_cast<size_t>(w) * h, 0);
    const int blobs = 2 + static_cast<int>(rng() % 5);
    for (int i = 0; i < blobs; ++i) {
        const int cx = static_cast<int>(rng() % (w + 4)) - 2, cy = static_cast<int>(rng() % (h + 4)) - 2;
        const int rx = 1 + static_cast<int>(rng() % (w / 2 + 1)),
                  ry = 1 + static_cast<int>(rng() % (h / 2 + 1));
        const uint8_t v = (grey && rng() % 3 == 0) ? static_cast<uint8_t>(rng() % 256) : 255;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                if (std::abs(x - cx) <= rx && std::abs(y - cy) <= ry && (x + y + i) % 7 != 0)
                    p[y * w + x] = v;
    }
    if (grey)
        for (auto& v : p)
            if (rng() % 9 == 0) v = static_cast<uint8_t>(rng() % 256);
    return p;
}

inline uint8_t Clamped(const Pixels& p, int w, int h, int x, int y) {
    return p[ClampPosition(y, h) * w + ClampPosition(x, w)];
}

// The feather is the triangular mean of the blurs.
inline Pixels ReferenceFeather(const Pixels& p, int w, int h, int r) {
    const Samples blurred = TriangleMean({w, h, std::vector<int>(p.begin(), p.end())}, r);
    return Pixels(blurred.Values.begin(), blurred.Values.end());
}

// Median of the square window with edges repeated: 255 when at least half
// (rounded half to even) of the window is 255, else 0 when that many are 0,
// else the smallest value whose cumulative count reaches half.
inline Pixels ReferenceSmooth(const Pixels& p, int w, int h, int r) {
    Pixels out(p.size());
    const int n = (2 * r + 1) * (2 * r + 1);
    const int half = static_cast<int>(std::nearbyint(n / 2.0));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int hist[256] = {};
            for (int dy = -r; dy <= r; ++dy)
                for (int dx = -r; dx <= r; ++dx)
                    ++hist[Clamped(p, w, h, x + dx, y + dy)];
            int v = 0;
            if (hist[255] >= half)
                v = 255;
            else if (hist[0] >= half)
                v = 0;
            else
                for (int sum = 0; v < 256; ++v)
                    if ((sum += hist[v]) >= half) break;
            out[y * w + x] = static_cast<uint8_t>(v);
        }
    return out;
}

// Extremum over the window shape, outside counting as 0 (expand) or 255.
// InShape(dx, dy) says whether an offset belongs to the window; CentreDy
// moves the window's centre vertically.
template <typename InShape>
Pixels ReferenceExtremum(const Pixels& p, int w, int h, int r, bool expand, int centreDy, InShape inShape) {
    Pixels out(p.size());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int v = expand ? 0 : 255;
            for (int dy = -r; dy <= r; ++dy)
                for (int dx = -r; dx <= r; ++dx) {
                    if (!inShape(dx, dy)) continue;
                    const int sx = x + dx, sy = y + centreDy + dy;
                    const int s =
                        (sx < 0 || sy < 0 || sx >= w || sy >= h) ? (expand ? 0 : 255) : p[sy * w + sx];
                    v = expand ? std::max(v, s) : std::min(v, s);
                }
            out[y * w + x] = static_cast<uint8_t>(v);
        }
    return out;
}

// Records the events of a selection as "B0", "C1" ... (Before/Changed, nested).
class EventLog : public vm::ISelectionListener {
  public:
    QStringList Events;
    void BeforeSelectionChanged(bool nested) override { Events << QStringLiteral("B%1").arg(nested ? 1 : 0); }
    void SelectionChanged(bool nested) override { Events << QStringLiteral("C%1").arg(nested ? 1 : 0); }
};

inline int CountAbove(const Pixels& p, int threshold) {
    return static_cast<int>(std::count_if(p.begin(), p.end(), [&](uint8_t v) { return v > threshold; }));
}

} // namespace vmtest
