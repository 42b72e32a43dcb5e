#pragma once
// Scanning mask rows eight bytes at a time: masks are mostly long runs of 0
// and of 255, and every selection command ends by scanning the whole mask
// (the emptiness check, the region).
#include <cstdint>
#include <cstring>

namespace vm::maskscan {

inline uint64_t Word(const uint8_t* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}

inline bool HasZeroByte(uint64_t w) {
    return ((w - 0x0101010101010101ull) & ~w & 0x8080808080808080ull) != 0;
}

// First position from x on whose byte is not 0, or n.
inline int32_t SkipZeros(const uint8_t* m, int32_t x, int32_t n) {
    while (x + 8 <= n && Word(m + x) == 0)
        x += 8;
    while (x < n && m[x] == 0)
        ++x;
    return x;
}

// First position from x on whose byte is 0, or n.
inline int32_t SkipNonZeros(const uint8_t* m, int32_t x, int32_t n) {
    while (x + 8 <= n && !HasZeroByte(Word(m + x)))
        x += 8;
    while (x < n && m[x] != 0)
        ++x;
    return x;
}

} // namespace vm::maskscan
