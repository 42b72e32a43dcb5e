#pragma once
// Row bands for the cores of the machine.
#include <cstdint>
#include <functional>

namespace vm::kernels {

// Runs Work(first, last) over bands of the rows First..Last (inclusive), one
// band a core when the picture is large enough to pay for the threads. Every
// kernel that uses it computes each row the same way whichever band holds it,
// so that the result does not depend on the number of cores.
void ParallelRows(int32_t first, int32_t last, int64_t pixelsPerRow,
                  const std::function<void(int32_t, int32_t)>& work);

} // namespace vm::kernels
