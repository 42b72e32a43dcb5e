// The image object's whole-picture readings on a 24-megapixel picture.
#include "core/Image.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

std::unique_ptr<vm::CImage> Picture(int bits) {
    auto img = std::make_unique<vm::CImage>();
    img->CreateNewImage(6000, 4000, bits);
    std::mt19937 gen(1);
    for (int y = 0; y < img->Height(); ++y) {
        auto* row = reinterpret_cast<uint32_t*>(img->Row(y));
        for (int i = 0; i < img->Stride() / 4; ++i)
            row[i] = gen();
    }
    return img;
}

void BM_Histogram(benchmark::State& state) {
    auto img = Picture(static_cast<int>(state.range(0)));
    std::vector<uint32_t> hist;
    for (auto _ : state) {
        img->GetHistgramArray(hist, 4, 1);
        benchmark::DoNotOptimize(hist.data());
    }
}
BENCHMARK(BM_Histogram)->Arg(24)->Arg(32)->Unit(benchmark::kMillisecond);

void BM_UsedColorAmount(benchmark::State& state) {
    auto img = Picture(24);
    for (auto _ : state)
        benchmark::DoNotOptimize(img->GetUsedColorAmount());
}
BENCHMARK(BM_UsedColorAmount)->Unit(benchmark::kMillisecond);

void BM_CloneImage(benchmark::State& state) {
    auto img = Picture(32);
    for (auto _ : state)
        benchmark::DoNotOptimize(img->CloneImage());
}
BENCHMARK(BM_CloneImage)->Unit(benchmark::kMillisecond);

} // namespace
