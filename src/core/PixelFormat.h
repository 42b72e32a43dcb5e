#pragma once
#include <cstdint>

namespace vm {

// Pixel format codes. 0x30804 is ours: an 8-bit grey block; the others are the
// codes of the common imaging libraries.
enum : uint32_t {
    PixelFormat1bppIndexed = 0x30101,
    PixelFormat4bppIndexed = 0x30402,
    PixelFormat8bppIndexed = 0x30803,
    PixelFormat8bppGray = 0x30804,
    PixelFormat16bppRGB555 = 0x21005,
    PixelFormat16bppRGB565 = 0x21006,
    PixelFormat24bppRGB = 0x21808,
    PixelFormat32bppRGB = 0x22009,
    PixelFormat32bppARGB = 0x26200A,
    PixelFormat32bppPARGB = 0xE200B,
    PixelFormat16bppARGB1555 = 0x61007,
};

// File family codes, also the Format argument of the writers.
enum RawFormat : int32_t {
    RawNone = 0,
    RawBmp = 1,
    RawJpeg,
    RawPng,
    RawGif,
    RawTiff,
    RawIco,
    RawWmf,
    RawEmf,
    RawPsd,
    RawTga,
    RawPcx,
    RawDds,
    RawPnm,
    RawSct,
    RawSgi,
    RawRas,
    RawRsb,
    RawWbm,
    RawIff,
    RawXbm,
    RawXwd,
    RawSka,
    RawPcd,
    RawFits,
    RawDicom,
};

// Bits a pixel of a format code. 0x61007 answers 32 although it is a 16-bit
// code; callers depend on that.
inline int BitsPerPixel(uint32_t format) {
    switch (format) {
    case PixelFormat1bppIndexed:
        return 1;
    case PixelFormat4bppIndexed:
        return 4;
    case PixelFormat8bppIndexed:
    case PixelFormat8bppGray:
        return 8;
    case PixelFormat16bppRGB555:
    case PixelFormat16bppRGB565:
        return 16;
    case PixelFormat24bppRGB:
        return 24;
    case PixelFormat32bppRGB:
    case PixelFormat32bppARGB:
    case PixelFormat32bppPARGB:
    case PixelFormat16bppARGB1555:
        return 32;
    default:
        return 0;
    }
}

// The palette index of pixel X in a row of 1-, 4- or 8-bit pixels, the
// leftmost pixel in the high bits.
inline int IndexInRow(const uint8_t* row, int32_t x, int bits) {
    if (bits == 1) return (row[x >> 3] >> (7 - (x & 7))) & 1;
    if (bits == 4) return (x & 1) ? (row[x >> 1] & 15) : (row[x >> 1] >> 4);
    return row[x];
}

// Bytes from one row to the next for a width and bit count: rounded up to 4.
inline int64_t StrideOf(int64_t width, int bitCount) {
    return ((width * bitCount + 31) / 32) * 4;
}

} // namespace vm
