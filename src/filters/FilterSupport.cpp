#include "filters/FilterSupport.h"

#include <thread>

namespace vm::filters {

RowSpans::RowSpans(const std::vector<DealRect>& rects, const DealRect& bounds) : top_(bounds.Top) {
    const int32_t rows = bounds.Bottom >= bounds.Top ? bounds.Bottom - bounds.Top + 1 : 0;
    std::vector<size_t> count(static_cast<size_t>(rows) + 1, 0);
    for (const DealRect& r : rects)
        for (int32_t y = r.Top; y <= r.Bottom; ++y)
            ++count[static_cast<size_t>(y - top_)];
    first_.assign(static_cast<size_t>(rows) + 1, 0);
    for (int32_t i = 0; i < rows; ++i)
        first_[i + 1] = first_[i] + count[i];
    spans_.resize(first_[rows]);
    std::vector<size_t> fill = first_;
    for (const DealRect& r : rects)
        for (int32_t y = r.Top; y <= r.Bottom; ++y)
            spans_[fill[static_cast<size_t>(y - top_)]++] = {r.Left, r.Right};
}

void WriteBackRow(const ProcessingFrame& frame, const RowSpans& spans, int32_t y, const uint8_t* computed,
                  int32_t origin, int bpp, int channels) {
    uint8_t* row = frame.Image().Row(y);
    const uint8_t* weights = frame.WeightRow(y);
    for (const Span& s : spans.Row(y)) {
        uint8_t* p = row + static_cast<ptrdiff_t>(s.Left) * bpp;
        const uint8_t* n = computed + static_cast<ptrdiff_t>(s.Left - origin) * bpp;
        if (!weights) {
            if (channels == bpp) {
                std::memcpy(p, n, static_cast<size_t>(s.Right - s.Left + 1) * bpp);
            } else {
                for (int32_t x = s.Left; x <= s.Right; ++x, p += bpp, n += bpp)
                    for (int c = 0; c < channels; ++c)
                        p[c] = n[c];
            }
            continue;
        }
        for (int32_t x = s.Left; x <= s.Right; ++x, p += bpp, n += bpp) {
            const int32_t m = weights[x];
            if (m == 0) continue;
            for (int c = 0; c < channels; ++c)
                p[c] = static_cast<uint8_t>(BlendByWeight(p[c], n[c], m));
        }
    }
}

void ParallelRows(int32_t first, int32_t last, int64_t pixelsPerRow,
                  const std::function<void(int32_t, int32_t)>& work) {
    const int64_t rows = static_cast<int64_t>(last) - first + 1;
    if (rows <= 0) return;
    // Below some 64 thousand pixels a band is cheaper done than handed out.
    const int64_t byWork = std::max<int64_t>(1, rows * std::max<int64_t>(1, pixelsPerRow) / 65536);
    const int64_t cores = std::max(1u, std::thread::hardware_concurrency());
    const int64_t bands = std::min({cores, byWork, rows});
    if (bands <= 1) {
        work(first, last);
        return;
    }
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(bands - 1));
    for (int64_t b = 1; b < bands; ++b) {
        const int32_t from = static_cast<int32_t>(first + rows * b / bands);
        const int32_t to = static_cast<int32_t>(first + rows * (b + 1) / bands - 1);
        threads.emplace_back(work, from, to);
    }
    work(first, static_cast<int32_t>(first + rows / bands - 1));
    for (auto& t : threads)
        t.join();
}

} // namespace vm::filters
