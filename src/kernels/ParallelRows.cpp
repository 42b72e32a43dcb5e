#include "kernels/ParallelRows.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace vm::kernels {

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

} // namespace vm::kernels
