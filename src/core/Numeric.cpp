#include "core/Numeric.h"

#include <chrono>
#include <random>

namespace vm {

double Atan2System(double y, double x) {
    if (x > 0) return std::atan(y / x);
    if (x < 0) return y >= 0 ? std::atan(y / x) + SystemPi : std::atan(y / x) - SystemPi;
    if (y > 0) return SystemPi / 2;
    if (y < 0) return -SystemPi / 2;
    return 0;
}

int32_t MulDiv(int32_t a, int32_t b, int32_t c) {
    if (c == 0) return -1;
    const int64_t p = static_cast<int64_t>(a) * b;
    int64_t q = p / c;
    const int64_t r = p % c;
    // Round half away from zero.
    if (2 * (r < 0 ? -r : r) >= (c < 0 ? -static_cast<int64_t>(c) : c)) q += ((p < 0) != (c < 0)) ? -1 : 1;
    return static_cast<int32_t>(q);
}

namespace {
std::mt19937& Generator() {
    static std::mt19937 gen(
        static_cast<uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
    return gen;
}
} // namespace

float Rnd() {
    // 24 random bits give every float of [0, 1) on a uniform grid.
    return static_cast<float>(Generator()() >> 8) * (1.0f / 16777216.0f);
}

void SeedRnd(uint32_t seed) {
    Generator().seed(seed);
}

double GausseRnd() {
    double u = 0, v = 0, s = 2.0;
    while (s >= 1.0) {
        u = 2.0 * Rnd() - 1.0;
        v = 2.0 * Rnd() - 1.0;
        s = u * u + v * v;
    }
    return u * std::sqrt(-2.0 * std::log(s) / s);
}

} // namespace vm
