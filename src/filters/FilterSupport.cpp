#include "filters/FilterSupport.h"

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

} // namespace vm::filters
