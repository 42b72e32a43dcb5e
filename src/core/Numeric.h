#pragma once
// The number rules every operation shares. Keep them here and nowhere else.
#include <cmath>
#include <cstdint>

namespace vm {

// Floating values become integers by rounding to nearest, halves to even.
inline int32_t RoundHalfEven(double v) {
    return static_cast<int32_t>(std::nearbyint(v));
}
inline int64_t RoundHalfEven64(double v) {
    return static_cast<int64_t>(std::nearbyint(v));
}

// Exact truncating division by 255 of a signed 32-bit value, done as a multiply:
// the 64-bit product with 0x80808081, high word plus the dividend, shifted right
// by 7, plus the sign bit. Equal to v / 255 in C++ (truncation toward zero).
inline int32_t Div255(int32_t v) {
    const int64_t prod = static_cast<int64_t>(v) * static_cast<int64_t>(0x80808081LL - 0x100000000LL);
    int32_t hi = static_cast<int32_t>(prod >> 32);
    int32_t q = (hi + v) >> 7;
    return q + static_cast<int32_t>(static_cast<uint32_t>(q) >> 31);
}

// Mask blend of one byte: old value v, new value n (0..255), weight m (0..255).
inline int32_t BlendByWeight(int32_t v, int32_t n, int32_t m) {
    if (m == 255) return n;
    if (m == 0) return v;
    return v + Div255((n - v) * m);
}

inline int32_t ClampByte(int32_t v) {
    return v < 0 ? 0 : (v > 255 ? 255 : v);
}

// Remainders that are never negative.
inline int32_t ModPositive(int32_t a, int32_t b) {
    int32_t r = a % b;
    return r < 0 ? r + b : r;
}
inline double ModPositive(double a, double b) {
    double r = std::fmod(a, b);
    return r < 0 ? r + b : r;
}

// Quadrant-correct arc tangent with the system's own value of pi: 0 at (0, 0),
// pi for a negative x on the axis.
constexpr double SystemPi = 3.1415926535897;
double Atan2System(double y, double x);

// MulDiv: (a * b) / c rounded to nearest, halves away from zero.
int32_t MulDiv(int32_t a, int32_t b, int32_t c);

// The process-wide uniform random source, floats in [0, 1), seeded from the clock.
float Rnd();
void SeedRnd(uint32_t seed);
// Normal random numbers by Marsaglia's polar method from the shared source.
double GausseRnd();

// Splits a COLORREF (red in the low byte) into components. A negative value
// leaves the components as they were.
inline void SplitColor(int32_t color, int32_t& r, int32_t& g, int32_t& b) {
    if (color < 0) return;
    r = color & 0xFF;
    g = (color >> 8) & 0xFF;
    b = (color >> 16) & 0xFF;
}
inline int32_t MakeColorRef(int r, int g, int b) {
    return (r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16);
}

// Shifts on 32-bit values. A count whose low byte has any of bits 5..7 set
// gives 0, for the arithmetic shift too.
inline int32_t ShiftLeft(int32_t value, int32_t count) {
    if (count & 0xE0) return 0;
    return static_cast<int32_t>(static_cast<uint32_t>(value) << (count & 31));
}
inline int32_t ShiftRight(int32_t value, int32_t count) {
    if (count & 0xE0) return 0;
    return static_cast<int32_t>(static_cast<uint32_t>(value) >> (count & 31));
}
inline int32_t ShiftRightArithmetic(int32_t value, int32_t count) {
    if (count & 0xE0) return 0;
    return value >> (count & 31);
}

} // namespace vm
