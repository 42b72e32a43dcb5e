#pragma once
// What every parser shares: the thumbnail box, depth codes, the grey-ramp
// test, a bounds-checked reader and the writer that never destroys a file.
#include "core/Image.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>

class QPainter;

namespace vm {

struct ThumbBox {
    int32_t Left = 0, Top = 0, Width = 0, Height = 0;
};
ThumbBox FitThumbBox(int32_t W, int32_t H, int32_t BoxW, int32_t BoxH);

// 0x61007 answers 32, as callers expect.
int32_t GetBitDepth(uint32_t Format);
uint32_t GetPixelFormatOfDepth(int32_t Depth);
bool IsGrayRamp(const PaletteData& Palette);

// Reads a whole file; an unreadable file gives an empty array and false.
bool ReadWholeFile(const QString& File, QByteArray& Bytes);
// Reads at most Count bytes from the start of a file.
QByteArray ReadFileHead(const QString& File, qint64 Count);

// Writes Bytes to a temporary file in the target's folder and renames it over
// the target only when everything was written. The dispatcher's alone.
bool WriteFileAtomically(const QString& File, const QByteArray& Bytes);

// Little-endian reading over a byte array. Reads past the end yield zeros and
// leave the position at the end: a short file is never read out of bounds.
class ByteReader {
  public:
    explicit ByteReader(const QByteArray& bytes)
        : data_(reinterpret_cast<const uint8_t*>(bytes.constData())),
          size_(static_cast<size_t>(bytes.size())) {}
    ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    size_t Position() const { return pos_; }
    size_t Size() const { return size_; }
    size_t Remaining() const { return pos_ < size_ ? size_ - pos_ : 0; }
    bool AtEnd() const { return pos_ >= size_; }
    void Seek(size_t pos) { pos_ = pos < size_ ? pos : size_; }
    void Skip(size_t n) { Seek(pos_ + std::min(n, Remaining())); }

    uint8_t U8() {
        if (pos_ >= size_) return 0;
        return data_[pos_++];
    }
    uint16_t U16() {
        uint16_t lo = U8();
        return static_cast<uint16_t>(lo | (U8() << 8));
    }
    uint32_t U32() {
        uint32_t lo = U16();
        return lo | (static_cast<uint32_t>(U16()) << 16);
    }
    int16_t I16() { return static_cast<int16_t>(U16()); }
    int32_t I32() { return static_cast<int32_t>(U32()); }
    uint16_t U16BE() {
        uint16_t hi = U8();
        return static_cast<uint16_t>((hi << 8) | U8());
    }
    uint32_t U32BE() {
        uint32_t hi = U16BE();
        return (hi << 16) | U16BE();
    }
    // Copies Count bytes into Dest; whatever lies past the end is zero.
    // Answers the number of bytes that came from the data.
    size_t Read(void* dest, size_t count) {
        const size_t n = std::min(count, Remaining());
        if (n) std::memcpy(dest, data_ + pos_, n);
        if (count > n) std::memset(static_cast<uint8_t*>(dest) + n, 0, count - n);
        pos_ += n;
        return n;
    }
    // Like Read, but what lies past the end is left as Dest had it: a fresh
    // block is already zero, and a huge picture declared by a tiny file must
    // not touch its pages.
    size_t ReadAvailable(void* dest, size_t count) {
        const size_t n = std::min(count, Remaining());
        if (n) std::memcpy(dest, data_ + pos_, n);
        pos_ += n;
        return n;
    }
    // A reader over Length bytes from Offset, both cut to the data; its
    // positions count from the slice's start.
    ByteReader Slice(size_t offset, size_t length) const {
        const size_t from = std::min(offset, size_);
        return ByteReader(data_ + from, std::min(length, size_ - from));
    }
    // A reader over what lies from the position to the end.
    ByteReader Rest() const { return Slice(pos_, Remaining()); }
    // Where the slice starts, for a library that checks a record in place
    // (libuemf); never for reading past the slice.
    const char* Start() const { return reinterpret_cast<const char*>(data_); }
    // A byte at an offset from the slice's start; 0 past the end.
    uint8_t At(size_t offset) const { return offset < size_ ? data_[offset] : 0; }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

// Little-endian writing into a growing byte array.
class ByteWriter {
  public:
    void U8(uint8_t v) { bytes_.append(static_cast<char>(v)); }
    void U16(uint16_t v) {
        U8(v & 0xFF);
        U8(v >> 8);
    }
    void U32(uint32_t v) {
        U16(v & 0xFFFF);
        U16(v >> 16);
    }
    void I32(int32_t v) { U32(static_cast<uint32_t>(v)); }
    void Bytes(const void* p, size_t n) {
        bytes_.append(static_cast<const char*>(p), static_cast<qsizetype>(n));
    }
    void Zeros(size_t n) { bytes_.append(static_cast<qsizetype>(n), '\0'); }
    void PutU32At(size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i)
            bytes_[static_cast<qsizetype>(at) + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
    }
    size_t Size() const { return static_cast<size_t>(bytes_.size()); }
    QByteArray& Data() { return bytes_; }

  private:
    QByteArray bytes_;
};

// CreateNewImage for a loader: false for sizes no block can have, and
// std::bad_alloc when a block that may exist cannot be had, so that the
// boundary of the open says memory is short rather than "not a picture".
bool NewBlock(CImage& Image, int32_t Width, int32_t Height, int32_t BitCount, int32_t BackColor = 0);

// What a writer says when the picture is larger than its family can store.
QString TooLargeMessage(const QString& Family, int64_t Limit);

// The open dialog's preview, the same for every parser with a loader: load
// into a temporary image, draw it into the 128 x 128 box, report size and depth.
bool ThumbAndInfo(const std::function<bool(CImage&)>& Load, QPainter* Graphics, int32_t& Width,
                  int32_t& Height, int32_t& BitDepth);

} // namespace vm
